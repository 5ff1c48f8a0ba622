// The 16-bit plane conversions beside memcpy of the same bytes and, where
// OpenCV is installed, cv::Mat::convertTo over the same elements: 8U to 16U
// scaled by 257 is the same function; 16U to 8U scaled by 255/65535 is the
// same job but rounds half to even on the exact quotient, so a few values
// differ from the library's (v * 255 + 32767) / 65535. The Q12 members run
// with the planar and interleaved rows (ConversionBench.cpp).
//
// These members run on the calling thread whatever the flags, so the
// default-mode row measures the same call and no pair row is registered.
#include <cstdlib>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "Conversion/DepthMembers.h"

#if QUORIN_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace quorin::bench {
namespace {

struct PlaneBuffers {
    std::unique_ptr<OwnedImage> src, dest;
};

void RegisterPlaneMember(const layout::PlaneDepthMember& m, size_t size, Split split) {
    const size_t srcBytes = m.src.pixelBytes(), destBytes = m.dest.pixelBytes();
    const RowShape shape{std::string(m.name).substr(std::string("QuorinConvert_").size()), size, size, split,
                         size * size * (srcBytes + destBytes)};
    const auto buffers = std::make_shared<PlaneBuffers>();
    const auto prepare = [buffers, size, srcBytes, destBytes] {
        if (buffers->src) return;
        buffers->src = std::make_unique<OwnedImage>(size, size, srcBytes, 7);
        buffers->dest = std::make_unique<OwnedImage>(size, size, destBytes, 8);
    };
    const auto call = [&m, buffers, split] {
        const CallArguments args{.buffers = {&buffers->src->buffer, &buffers->dest->buffer}, .flags = FlagsOf(split)};
        if (m.invoke(args) != kQuorinSuccess) std::abort();
    };
    const bool down = srcBytes == 2;
    RegisterRow(shape, call, down ? "cv.convertTo.16U-8U.rounding-differs" : "cv.convertTo.8U-16U.x257", prepare);
    if (split == Split::Single) RegisterScalarRow(shape, call, prepare);
}

#if QUORIN_BENCH_OPENCV
struct PeerBuffers {
    std::unique_ptr<OwnedImage> src, dest;
    cv::Mat from, to;
};

void RegisterPeer(bool down, size_t size, Split split) {
    const auto buffers = std::make_shared<PeerBuffers>();
    RegisterRow(
        {down ? "cv.convertTo.16U-8U.rounding-differs" : "cv.convertTo.8U-16U.x257", size, size, split, size * size * 3},
        [buffers, down] { buffers->from.convertTo(buffers->to, down ? CV_8U : CV_16U, down ? 255.0 / 65535.0 : 257.0); },
        {},
        [buffers, size, split, down] {
            cv::setNumThreads(split == Split::Single ? 1 : -1);
            if (buffers->src) return;
            buffers->src = std::make_unique<OwnedImage>(size, size, down ? 2 : 1, 7);
            buffers->dest = std::make_unique<OwnedImage>(size, size, down ? 1 : 2, 8);
            const int n = static_cast<int>(size);
            buffers->from = cv::Mat(n, n, down ? CV_16U : CV_8U, buffers->src->buffer.data);
            buffers->to = cv::Mat(n, n, down ? CV_8U : CV_16U, buffers->dest->buffer.data);
        });
}
#endif

const RegisterFamily kDepth([] {
    for (size_t size : {size_t{4096}, size_t{1024}})
        for (Split split : {Split::Single, Split::Default}) {
            for (const layout::PlaneDepthMember* m : layout::kPlaneDepthMembers) RegisterPlaneMember(*m, size, split);
#if QUORIN_BENCH_OPENCV
            RegisterPeer(true, size, split);
            RegisterPeer(false, size, split);
#endif
        }
});

}  // namespace
}  // namespace quorin::bench
