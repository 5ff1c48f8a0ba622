// Premultiply and unpremultiply beside memcpy and, where installed, libyuv's
// attenuate / unattenuate (its ARGB keeps alpha in the last byte, as our
// RGBA8888 does; the work per pixel is the same for ARGB8888).
#include <memory>

#include "BenchSupport.h"

#ifdef QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace quorin::bench {
namespace {

using PixelsFn = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
using PlanesFn = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);

struct Member {
    const char* operation;
    size_t sampleBytes;
    PixelsFn pixels;        // four-channel members, or
    PlanesFn planes;        // planar members
    PixelsFn premultiply;   // for unpremultiply: makes the source valid premultiplied data
    const char* peer;

    size_t pixelBytes() const { return planes ? sampleBytes : sampleBytes * 4; }
    size_t bytesMoved(size_t pixels) const { return pixels * pixelBytes() * (planes ? 3 : 2); }
};

const char kAttenuate[] = "libyuv ARGBAttenuate";
const char kUnattenuate[] = "libyuv ARGBUnattenuate";

const Member kMembers[] = {
    {"PremultiplyData_ARGB8888", 1, QuorinPremultiplyData_ARGB8888, nullptr, nullptr, kAttenuate},
    {"UnpremultiplyData_ARGB8888", 1, QuorinUnpremultiplyData_ARGB8888, nullptr, QuorinPremultiplyData_ARGB8888, kUnattenuate},
    {"PremultiplyData_RGBA8888", 1, QuorinPremultiplyData_RGBA8888, nullptr, nullptr, kAttenuate},
    {"UnpremultiplyData_RGBA8888", 1, QuorinUnpremultiplyData_RGBA8888, nullptr, QuorinPremultiplyData_RGBA8888, kUnattenuate},
    {"PremultiplyData_ARGB16U", 2, QuorinPremultiplyData_ARGB16U, nullptr, nullptr, ""},
    {"UnpremultiplyData_ARGB16U", 2, QuorinUnpremultiplyData_ARGB16U, nullptr, QuorinPremultiplyData_ARGB16U, ""},
    {"PremultiplyData_ARGBFFFF", 4, QuorinPremultiplyData_ARGBFFFF, nullptr, nullptr, ""},
    {"UnpremultiplyData_ARGBFFFF", 4, QuorinUnpremultiplyData_ARGBFFFF, nullptr, QuorinPremultiplyData_ARGBFFFF, ""},
    {"PremultiplyData_Planar8", 1, nullptr, QuorinPremultiplyData_Planar8, nullptr, ""},
    {"UnpremultiplyData_Planar8", 1, nullptr, QuorinUnpremultiplyData_Planar8, nullptr, ""},
};

// Source, alpha plane and destination, made before a row's first timed run so
// that runs filtered to other families do not pay for them.
struct Images {
    size_t width, height;
    std::unique_ptr<OwnedImage> src, alpha, dest;

    void prepare(const Member& m) {
        if (src) return;
        src = std::make_unique<OwnedImage>(width, height, m.pixelBytes(), 1);
        alpha = std::make_unique<OwnedImage>(width, height, m.sampleBytes, 2);
        dest = std::make_unique<OwnedImage>(width, height, m.pixelBytes(), 3);
        if (m.sampleBytes == 4) src->fillUnitFloats(), alpha->fillUnitFloats();
        if (m.premultiply) m.premultiply(&src->buffer, &src->buffer, 0);
    }
};

const RegisterFamily kPremultiply([] {
    for (const size_t size : StandardSizes()) {
        for (const Member& m : kMembers) {
            auto images = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
            for (const Split split : {Split::Single, Split::Default}) {
                const Quorin_Flags flags = FlagsOf(split);
                const RowShape shape{m.operation, size, size, split, m.bytesMoved(size * size)};
                const auto call = [images, &m, flags] {
                    if (m.planes) m.planes(&images->src->buffer, &images->alpha->buffer, &images->dest->buffer, flags);
                    else m.pixels(&images->src->buffer, &images->dest->buffer, flags);
                };
                const auto prepare = [images, &m] { images->prepare(m); };
                RegisterRow(shape, call, m.peer, prepare);
                if (split == Split::Single) RegisterScalarRow(shape, call, prepare);
            }
            if (WantsPairRow(size)) {
                RegisterPairRow(
                    {m.operation, size, size, Split::Pair, m.bytesMoved(size * size)},
                    [images, &m](size_t first, size_t rows) {
                        const Quorin_Buffer src = RowsOf(images->src->buffer, first, rows);
                        const Quorin_Buffer dest = RowsOf(images->dest->buffer, first, rows);
                        if (m.planes) {
                            const Quorin_Buffer alpha = RowsOf(images->alpha->buffer, first, rows);
                            m.planes(&src, &alpha, &dest, kQuorinFlag_SingleThreaded);
                        } else {
                            m.pixels(&src, &dest, kQuorinFlag_SingleThreaded);
                        }
                    },
                    [images, &m] { images->prepare(m); });
            }
        }
#ifdef QUORIN_BENCH_LIBYUV
        // libyuv runs on the calling thread only; its input is laid out as our RGBA8888.
        for (const bool attenuate : {true, false}) {
            const Member& m = kMembers[attenuate ? 2 : 3];
            auto images = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
            RegisterRow({attenuate ? kAttenuate : kUnattenuate, size, size, Split::Single, m.bytesMoved(size * size)},
                        [images, attenuate, size] {
                            const auto* from = static_cast<const uint8_t*>(images->src->buffer.data);
                            auto* to = static_cast<uint8_t*>(images->dest->buffer.data);
                            const int side = static_cast<int>(size), stride = side * 4;
                            if (attenuate) libyuv::ARGBAttenuate(from, stride, to, stride, side, side);
                            else libyuv::ARGBUnattenuate(from, stride, to, stride, side, side);
                        },
                        {}, [images, &m] { images->prepare(m); });
        }
#endif
    }
});

}  // namespace
}  // namespace quorin::bench
