// Channel operations beside memcpy and, where installed, libyuv, OpenCV and
// libvips doing the same job: fills against ARGBRect and Mat::setTo, permutes
// against ARGBShuffle and mixChannels, extracts against ARGBExtractAlpha and
// extractChannel, lookups against ARGBColorTable and LUT, selects and
// overwrites from a plane against mixChannels, flattens to RGB888 against
// vips_flatten. Rows come from the family's member table.
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
#ifdef QUORIN_BENCH_VIPS
#include <vips/vips.h>
#endif

namespace quorin::bench {
namespace {

using channels::Member;
using channels::Shape;

const char kRect[] = "libyuv ARGBRect";
const char kShuffle[] = "libyuv ARGBShuffle";
const char kExtractAlpha[] = "libyuv ARGBExtractAlpha";
// The extract member writes rows as long as its source's (see Images), a
// quarter of each filled; the peer's own row writes a packed plane, which it
// walks as one row. This one writes the member's rows.
const char kExtractAlphaSameRows[] = "libyuv ARGBExtractAlpha.same-rows";
const char kSetTo[] = "OpenCV setTo 8UC4";
const char kMix[] = "OpenCV mixChannels 8UC4";
const char kExtractChannel[] = "OpenCV extractChannel 8UC4";
const char kColorTable[] = "libyuv ARGBColorTable";
const char kLut[] = "OpenCV LUT 8UC1";
const char kMixSelect[] = "OpenCV mixChannels select 8UC4";
const char kMixPlane[] = "OpenCV mixChannels plane 8UC4";
const char kVipsFlatten[] = "libvips flatten RGBA to RGB";
// The 8-bit pixel overwrite reaches the first quarter of each row. The
// quarter-rows ceiling row runs on buffers of its own, whose page backing
// differs from run to run; this one copies the member's own quarter rows
// with the same streaming stores, in the same run.
const char kQuarterRowsCopy[] = "ceiling.stream-copy-quarter-rows.same-images";

const char* PeerOf(const Member& m) {
    const std::string name = m.name;
    if (name == "QuorinBufferFill_ARGB8888") return kRect;
    if (name == "QuorinPermuteChannels_ARGB8888") return kShuffle;
    if (name == "QuorinExtractChannel_ARGB8888") return kExtractAlpha;
    if (name == "QuorinTableLookUp_ARGB8888") return kColorTable;
    if (name == "QuorinTableLookUp_Planar8") return kLut;
    if (name == "QuorinSelectChannels_ARGB8888") return kMixSelect;
    if (name == "QuorinOverwriteChannelsWithPixel_ARGB8888") return kQuarterRowsCopy;
    if (name == "QuorinOverwriteChannels_ARGB8888") return kMixPlane;
    if (name == "QuorinFlatten_RGBA8888ToRGB888" || name == "QuorinFlatten_ARGB8888ToRGB888") return kVipsFlatten;
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
        case Shape::Select: return pixels * bytes * 3;
        case Shape::OverwritePlanes: return pixels * (bytes * 2 + m.format.sampleBytes());
        case Shape::Flatten: return pixels * (bytes + m.output.pixelBytes());
        default: return pixels * bytes * 2;
    }
}

struct Images {
    size_t width, height;
    std::unique_ptr<OwnedImage> src, dest, other;  // other: the new source of a select or overwrite

    void prepare(const Member& m) {
        if (src) return;
        // The copy moves width bytes of rows of four-byte pixels. The
        // extract writes rowBytes / (pixel bytes) samples a row, so its
        // plane gets rows as long as the source's to receive whole rows.
        const size_t bytes = m.shape == Shape::Copy ? 4 : m.format.pixelBytes();
        src = std::make_unique<OwnedImage>(width, height, bytes, 1);
        dest = std::make_unique<OwnedImage>(width, height, m.shape == Shape::Flatten ? m.output.pixelBytes() : bytes, 2);
        const size_t otherBytes = m.shape == Shape::OverwritePlanes ? m.format.sampleBytes() : bytes;
        other = std::make_unique<OwnedImage>(width, height, otherBytes, 3);
        if (m.format.sample == SampleKind::F32) src->fillUnitFloats(), other->fillUnitFloats();
    }
};

const uint32_t kValue[4] = {0x3F000000u, 0x3F800000u, 0x3E800000u, 0x3F400000u};  // 0.5, 1, 0.25, 0.75 as floats
const uint8_t kMap[4] = {3, 2, 1, 0};
const float kBounds[2] = {0.75f, 0.25f};

uint8_t kTable[256];  // a reversing table: every entry differs from its index
const uint8_t* const kTables[4] = {kTable, kTable, kTable, kTable};

Quorin_Error RunOn(const Member& m, const Quorin_Buffer& src, const Quorin_Buffer& dest, const Quorin_Buffer& other,
                   Quorin_Flags flags) {
    const void* value = m.shape == Shape::Permute ? static_cast<const void*>(kMap)
                        : m.shape == Shape::Clip  ? static_cast<const void*>(kBounds)
                        : m.shape == Shape::LookUp ? static_cast<const void*>(kTables)
                                                   : static_cast<const void*>(kValue);
    channels::Call call{&src, &dest, value, 0x6, 4, flags, 0, &other};
    if (m.shape == Shape::Flatten) call.channel = 0;  // straight colour
    const Quorin_Error error = m.run(call);
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
            auto images = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
            const auto prepare = [images, &m] { images->prepare(m); };
            for (const Split split : {Split::Single, Split::Default}) {
                const Quorin_Flags flags = FlagsOf(split);
                RegisterRow({operation, size, size, split, BytesMoved(m, pixels)},
                            [images, &m, flags] {
                                RunOn(m, images->src->buffer, images->dest->buffer, images->other->buffer, flags);
                            },
                            PeerOf(m), prepare);
            }
            if (&m == &channels::kOverwritePixelARGB8888)
                RegisterRow({kQuarterRowsCopy, size, size, Split::Single, BytesMoved(m, pixels)},
                            [images, size] {
                                const size_t reached = (size + 3) / 4 * 4;  // bytes: the member's pixels a row
                                Quorin_Buffer src = images->src->buffer, dest = images->dest->buffer;
                                src.width = dest.width = reached;
                                if (QuorinCopyBuffer(&src, &dest, 1, kQuorinFlag_SingleThreaded) != kQuorinSuccess)
                                    std::abort();
                            },
                            {}, prepare);
            // The members with a peer also on each vector target and with the speed-ups off.
            if (PeerOf(m)[0] != '\0')
                RegisterScalarRow({operation, size, size, Split::Single, BytesMoved(m, pixels)},
                                  [images, &m] {
                                      RunOn(m, images->src->buffer, images->dest->buffer, images->other->buffer,
                                            kQuorinFlag_SingleThreaded);
                                  },
                                  prepare);
            if (WantsPairRow(size)) {
                RegisterPairRow({operation, size, size, Split::Pair, BytesMoved(m, pixels)},
                                [images, &m](size_t first, size_t rows) {
                                    RunOn(m, RowsOf(images->src->buffer, first, rows),
                                          RowsOf(images->dest->buffer, first, rows),
                                          RowsOf(images->other->buffer, first, rows), kQuorinFlag_SingleThreaded);
                                },
                                prepare);
            }
        }
        // Peers, single-threaded, on ARGB8888 images of the same size.
        auto peer = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
        auto alpha = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
        auto gray = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
        auto flat = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
        auto pick = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
        const auto preparePeer = [peer] {
            for (size_t i = 0; i < 256; ++i) kTable[i] = static_cast<uint8_t>(255 - i);
            peer->prepare(channels::kOverwritePlanesARGB8888);
        };
        const auto prepareAlpha = [alpha] { alpha->prepare(channels::kExtractARGB8888); };
        const auto prepareGray = [gray] {
            for (size_t i = 0; i < 256; ++i) kTable[i] = static_cast<uint8_t>(255 - i);
            gray->prepare(channels::kLookUpPlanar8);
        };
        const auto prepareFlat = [flat] { flat->prepare(channels::kFlattenRGBA8888ToRGB888); };
        const auto preparePick = [pick] { pick->prepare(channels::kSelectARGB8888); };
        const int side = static_cast<int>(size), stride = side * 4;
        (void)side, (void)stride, (void)preparePeer, (void)prepareAlpha, (void)prepareGray, (void)prepareFlat, (void)preparePick;
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
        RegisterRow({kExtractAlphaSameRows, size, size, Split::Single, pixels * 5},
                    [alpha, side, stride] {
                        libyuv::ARGBExtractAlpha(static_cast<const uint8_t*>(alpha->src->buffer.data), stride,
                                                 static_cast<uint8_t*>(alpha->dest->buffer.data), stride, side, side);
                    },
                    {}, prepareAlpha);
        RegisterRow({kColorTable, size, size, Split::Single, pixels * 8},
                    [peer, side, stride] {
                        // The peer looks up in place; its table holds four entries an index.
                        static uint8_t table[1024];
                        for (size_t i = 0; i < 1024; ++i) table[i] = kTable[i / 4];
                        uint8_t* dest = static_cast<uint8_t*>(peer->dest->buffer.data);
                        libyuv::ARGBColorTable(dest, stride, table, 0, 0, side, side);
                    },
                    {}, preparePeer);
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
        RegisterRow({kLut, size, size, Split::Single, pixels * 2},
                    [gray, side] {
                        const cv::Mat src(side, side, CV_8UC1, gray->src->buffer.data);
                        cv::Mat dest(side, side, CV_8UC1, gray->dest->buffer.data);
                        static const cv::Mat table(1, 256, CV_8UC1, kTable);
                        cv::LUT(src, table, dest);
                    },
                    // LUT splits large images over OpenCV's threads: one thread against ours.
                    {}, [prepareGray] { prepareGray(), cv::setNumThreads(1); }, [] { cv::setNumThreads(-1); });
        RegisterRow({kMixSelect, size, size, Split::Single, pixels * 12},
                    [pick, side] {
                        // Alpha and red from one image, green and blue from the other.
                        const cv::Mat in[2] = {cv::Mat(side, side, CV_8UC4, pick->src->buffer.data),
                                               cv::Mat(side, side, CV_8UC4, pick->other->buffer.data)};
                        cv::Mat dest(side, side, CV_8UC4, pick->dest->buffer.data);
                        static const int pairs[] = {0, 0, 1, 1, 6, 2, 7, 3};
                        cv::mixChannels(in, 2, &dest, 1, pairs, 4);
                    },
                    {}, preparePick);
        RegisterRow({kMixPlane, size, size, Split::Single, pixels * 9},
                    [peer, side] {
                        const cv::Mat in[2] = {cv::Mat(side, side, CV_8UC1, peer->other->buffer.data),
                                               cv::Mat(side, side, CV_8UC4, peer->src->buffer.data)};
                        cv::Mat dest(side, side, CV_8UC4, peer->dest->buffer.data);
                        static const int pairs[] = {1, 0, 0, 1, 0, 2, 4, 3};
                        cv::mixChannels(in, 2, &dest, 1, pairs, 4);
                    },
                    {}, preparePeer);
#endif
#ifdef QUORIN_BENCH_VIPS
        RegisterRow({kVipsFlatten, size, size, Split::Single, pixels * 7},
                    [flat, side] {
                        RunVips(flat->src->buffer.data, static_cast<size_t>(side), static_cast<size_t>(side), 4,
                                VIPS_FORMAT_UCHAR, [](VipsImage* in, VipsImage** out) {
                                    VipsArrayDouble* background = vips_array_double_newv(3, 10.0, 20.0, 30.0);
                                    const int failed = vips_flatten(in, out, "background", background, nullptr);
                                    vips_area_unref(VIPS_AREA(background));
                                    return failed;
                                });
                    },
                    {}, [flat] { StartVips(), flat->prepare(channels::kFlattenRGBA8888ToRGB888); });
#endif
    }
});

}  // namespace
}  // namespace quorin::bench
