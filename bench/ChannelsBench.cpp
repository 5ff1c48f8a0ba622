// Channel operations beside memcpy and, where installed, libyuv and OpenCV
// doing the same job: fills against ARGBRect and Mat::setTo, permutes against
// ARGBShuffle and mixChannels, extracts against ARGBExtractAlpha and
// extractChannel. Rows come from the family's member table.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "Conversion/ChannelMembers.h"

#ifdef QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef QUORIN_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace quorin::bench {
namespace {

using channels::Member;
using channels::Shape;

const char kRect[] = "libyuv ARGBRect";
const char kShuffle[] = "libyuv ARGBShuffle";
const char kExtractAlpha[] = "libyuv ARGBExtractAlpha";
const char kSetTo[] = "OpenCV setTo 8UC4";
const char kMix[] = "OpenCV mixChannels 8UC4";
const char kExtractChannel[] = "OpenCV extractChannel 8UC4";

const char* PeerOf(const Member& m) {
    const std::string name = m.name;
    if (name == "QuorinBufferFill_ARGB8888") return kRect;
    if (name == "QuorinPermuteChannels_ARGB8888") return kShuffle;
    if (name == "QuorinExtractChannel_ARGB8888") return kExtractAlpha;
    return "";
}

// Bytes read and written by one call over width x height pixels.
size_t BytesMoved(const Member& m, size_t pixels) {
    const size_t bytes = m.format.pixelBytes();
    switch (m.shape) {
        case Shape::Fill:
        case Shape::OverwritePlane: return pixels * bytes;
        case Shape::Copy: return pixels * 2;  // width bytes a row, read and written
        case Shape::Extract: return pixels * (bytes + m.format.sampleBytes());
        // The 8-bit member reaches a quarter of each row's pixels.
        case Shape::OverwritePixel: return pixels * bytes * 2 / (bytes == 4 ? 4 : 1);
        default: return pixels * bytes * 2;
    }
}

struct Images {
    size_t width, height;
    std::unique_ptr<OwnedImage> src, dest;

    void prepare(const Member& m) {
        if (src) return;
        // The copy moves width bytes of rows of four-byte pixels. The
        // extract writes rowBytes / (pixel bytes) samples a row, so its
        // plane gets rows as long as the source's to receive whole rows.
        const size_t bytes = m.shape == Shape::Copy ? 4 : m.format.pixelBytes();
        src = std::make_unique<OwnedImage>(width, height, bytes, 1);
        dest = std::make_unique<OwnedImage>(width, height, bytes, 2);
        if (m.format.sample == SampleKind::F32) src->fillUnitFloats();
    }
};

const uint32_t kValue[4] = {0x3F000000u, 0x3F800000u, 0x3E800000u, 0x3F400000u};  // 0.5, 1, 0.25, 0.75 as floats
const uint8_t kMap[4] = {3, 2, 1, 0};
const float kBounds[2] = {0.75f, 0.25f};

Quorin_Error RunOn(const Member& m, const Quorin_Buffer& src, const Quorin_Buffer& dest, Quorin_Flags flags) {
    const void* value = m.shape == Shape::Permute ? static_cast<const void*>(kMap)
                        : m.shape == Shape::Clip  ? static_cast<const void*>(kBounds)
                                                  : static_cast<const void*>(kValue);
    const Quorin_Error error = m.run({&src, &dest, value, 0x6, 4, flags, 0});
    if (error != kQuorinSuccess) {  // a refused call would be timed as a fast one
        std::fprintf(stderr, "%s refused the benchmark's images: %d\n", m.name, error);
        std::abort();
    }
    return error;
}

const RegisterFamily kChannels([] {
    for (const size_t size : StandardSizes()) {
        const size_t pixels = size * size;
        for (const Member* member : channels::kChannelMembers) {
            const Member& m = *member;
            const std::string operation = std::string(m.name).substr(6);
            auto images = std::make_shared<Images>(Images{size, size, nullptr, nullptr});
            const auto prepare = [images, &m] { images->prepare(m); };
            for (const Split split : {Split::Single, Split::Default}) {
                const Quorin_Flags flags = FlagsOf(split);
                RegisterRow({operation, size, size, split, BytesMoved(m, pixels)},
                            [images, &m, flags] { RunOn(m, images->src->buffer, images->dest->buffer, flags); },
                            PeerOf(m), prepare);
            }
            if (WantsPairRow(size)) {
                RegisterPairRow({operation, size, size, Split::Pair, BytesMoved(m, pixels)},
                                [images, &m](size_t first, size_t rows) {
                                    RunOn(m, RowsOf(images->src->buffer, first, rows),
                                          RowsOf(images->dest->buffer, first, rows), kQuorinFlag_SingleThreaded);
                                },
                                prepare);
            }
        }
        // Peers, single-threaded, on ARGB8888 images of the same size.
        auto peer = std::make_shared<Images>(Images{size, size, nullptr, nullptr});
        auto alpha = std::make_shared<Images>(Images{size, size, nullptr, nullptr});
        const auto preparePeer = [peer] { peer->prepare(channels::kPermuteARGB8888); };
        const auto prepareAlpha = [alpha] { alpha->prepare(channels::kExtractARGB8888); };
        const int side = static_cast<int>(size), stride = side * 4;
        (void)side, (void)stride, (void)preparePeer, (void)prepareAlpha;
#ifdef QUORIN_BENCH_LIBYUV
        RegisterRow({kRect, size, size, Split::Single, pixels * 4},
                    [peer, side, stride] {
                        libyuv::ARGBRect(static_cast<uint8_t*>(peer->dest->buffer.data), stride, 0, 0, side, side,
                                         0x11223344u);
                    },
                    kSetTo, preparePeer);
        RegisterRow({kShuffle, size, size, Split::Single, pixels * 8},
                    [peer, side, stride] {
                        static const uint8_t shuffler[16] = {3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12};
                        libyuv::ARGBShuffle(static_cast<const uint8_t*>(peer->src->buffer.data), stride,
                                            static_cast<uint8_t*>(peer->dest->buffer.data), stride, shuffler, side,
                                            side);
                    },
                    kMix, preparePeer);
        RegisterRow({kExtractAlpha, size, size, Split::Single, pixels * 5},
                    [alpha, side, stride] {
                        libyuv::ARGBExtractAlpha(static_cast<const uint8_t*>(alpha->src->buffer.data), stride,
                                                 static_cast<uint8_t*>(alpha->dest->buffer.data), side, side, side);
                    },
                    kExtractChannel, prepareAlpha);
#endif
#ifdef QUORIN_BENCH_OPENCV
        RegisterRow({kSetTo, size, size, Split::Single, pixels * 4},
                    [peer, side] {
                        cv::Mat dest(side, side, CV_8UC4, peer->dest->buffer.data);
                        dest.setTo(cv::Scalar(0x11, 0x22, 0x33, 0x44));
                    },
                    {}, preparePeer);
        RegisterRow({kMix, size, size, Split::Single, pixels * 8},
                    [peer, side] {
                        const cv::Mat src(side, side, CV_8UC4, peer->src->buffer.data);
                        cv::Mat dest(side, side, CV_8UC4, peer->dest->buffer.data);
                        static const int pairs[] = {0, 3, 1, 2, 2, 1, 3, 0};
                        cv::mixChannels(&src, 1, &dest, 1, pairs, 4);
                    },
                    {}, preparePeer);
        RegisterRow({kExtractChannel, size, size, Split::Single, pixels * 5},
                    [alpha, side] {
                        const cv::Mat src(side, side, CV_8UC4, alpha->src->buffer.data);
                        cv::Mat dest(side, side, CV_8UC1, alpha->dest->buffer.data);
                        cv::extractChannel(src, dest, 0);
                    },
                    {}, prepareAlpha);
#endif
    }
});

}  // namespace
}  // namespace quorin::bench
