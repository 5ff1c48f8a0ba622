// Colour-matrix multiply beside memcpy and, where installed, libyuv's
// ARGBColorMatrix (8-bit coefficients, no biases, a shift instead of a
// division: less work than ours) and OpenCV's transform on 8UC4 and 32FC4.
// Rows come from the family's member table.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "Transform/MatrixMembers.h"

#ifdef QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef QUORIN_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace quorin::bench {
namespace {

using matrix::Member;

// A sepia-like mix with biases and a divisor that is no power of two.
const int16_t kMatrix8[16] = {1610, 1430, 1110, 0, 3150, 2810, 2190, 0, 770, 690, 530, 0, 0, 0, 0, 4000};
const int16_t kPre8[4] = {0, -3, 2, 0};
const int32_t kPost8[4] = {500, 0, -500, 0};
const float kMatrixF[16] = {0.393f, 0.349f, 0.272f, 0.0f, 0.769f, 0.686f, 0.534f, 0.0f,
                            0.189f, 0.168f, 0.131f, 0.0f, 0.0f,   0.0f,   0.0f,   1.0f};

struct Images {
    size_t side;
    size_t pixelBytes;
    std::unique_ptr<OwnedImage> src, dest;
    void prepare() {
        if (src) return;
        src = std::make_unique<OwnedImage>(side, side, pixelBytes, 1);
        dest = std::make_unique<OwnedImage>(side, side, pixelBytes, 2);
        if (pixelBytes == 16) src->fillUnitFloats();
    }
};

void Run(const Member& m, const Quorin_Buffer& src, const Quorin_Buffer& dest, Quorin_Flags flags) {
    const bool f = m.format.sample == SampleKind::F32;
    const Quorin_Error error = f ? m.run({&src, &dest, kMatrixF, 0, nullptr, nullptr, flags})
                                 : m.run({&src, &dest, kMatrix8, 4093, kPre8, kPost8, flags});
    if (error != kQuorinSuccess) {
        std::fprintf(stderr, "%s refused the benchmark's images: %d\n", m.name, error);
        std::abort();
    }
}

const RegisterFamily kMatrices([] {
    for (const size_t size : {size_t{4096}, size_t{1024}}) {
        const size_t pixels = size * size;
        for (const Member* member : matrix::kMatrixMembers) {
            const Member& m = *member;
            const bool f = m.format.sample == SampleKind::F32;
            const std::string operation = std::string(m.name).substr(6);
            const size_t bytes = pixels * m.format.pixelBytes() * 2;
            RegisterMemcpy(bytes);
            auto images = std::make_shared<Images>(Images{size, m.format.pixelBytes(), nullptr, nullptr});
            const auto prepare = [images] { images->prepare(); };
            const std::string peer = f ? "OpenCV transform 32FC4" : "libyuv ARGBColorMatrix";
            for (const Split split : {Split::Single, Split::Default})
                RegisterRow({operation, size, size, split, bytes},
                            [images, &m, flags = FlagsOf(split)] {
                                Run(m, images->src->buffer, images->dest->buffer, flags);
                            },
                            peer, prepare);
            if (size == 4096) {
                RegisterPairRow({operation, size, size, Split::Pair, bytes},
                                [images, &m](size_t first, size_t rows) {
                                    Run(m, RowsOf(images->src->buffer, first, rows),
                                        RowsOf(images->dest->buffer, first, rows), kQuorinFlag_SingleThreaded);
                                },
                                prepare);
                RegisterScalarRow({operation, size, size, Split::Single, bytes},
                                  [images, &m] {
                                      Run(m, images->src->buffer, images->dest->buffer, kQuorinFlag_SingleThreaded);
                                  },
                                  prepare);
            }
            const int side = static_cast<int>(size);
            (void)side;
#ifdef QUORIN_BENCH_LIBYUV
            if (!f)
                RegisterRow({peer, size, size, Split::Single, bytes},
                            [images, side] {
                                static const int8_t matrix[16] = {25, 22, 17, 0, 49, 43, 34, 0,
                                                                  12, 11, 8,  0, 0,  0,  0,  64};
                                libyuv::ARGBColorMatrix(static_cast<const uint8_t*>(images->src->buffer.data),
                                                        side * 4, static_cast<uint8_t*>(images->dest->buffer.data),
                                                        side * 4, matrix, side, side);
                            },
                            "OpenCV transform 8UC4", prepare);
#endif
#ifdef QUORIN_BENCH_OPENCV
            RegisterRow({f ? peer : "OpenCV transform 8UC4", size, size, Split::Single, bytes},
                        [images, side, f] {
                            const cv::Mat src(side, side, f ? CV_32FC4 : CV_8UC4, images->src->buffer.data);
                            cv::Mat dest(side, side, f ? CV_32FC4 : CV_8UC4, images->dest->buffer.data);
                            cv::Mat m(4, 4, CV_32F);
                            for (int j = 0; j < 4; ++j)
                                for (int i = 0; i < 4; ++i) m.at<float>(j, i) = kMatrixF[4 * i + j];
                            cv::transform(src, dest, m);
                        },
                        {}, prepare);
#endif
        }
    }
});

}  // namespace
}  // namespace quorin::bench
