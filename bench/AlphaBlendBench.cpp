// The blends beside their peers on the same images in the same run: the
// straight-alpha blend beside libyuv's ARGBBlend, the premultiplied blend
// modes beside pixman's separable operators (composited into a copy of the
// bottom image, as pixman works in place), and clip to alpha beside memcpy.
#include <map>
#include <memory>

#include "BenchSupport.h"

#if QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif
#if QUORIN_BENCH_PIXMAN
#include <pixman.h>
#endif

namespace quorin::bench {
namespace {

// Top, bottom and destination of one size. The bottom and top carry
// premultiplied colour (colour <= alpha), which every peer expects.
struct BlendImages {
    OwnedImage top, bottom, dest, peerDest;
    explicit BlendImages(size_t side)
        : top(side, side, 4, 11), bottom(side, side, 4, 12), dest(side, side, 4, 13), peerDest(side, side, 4, 14) {
        for (OwnedImage* image : {&top, &bottom}) {
            for (size_t i = 0; i < image->bytes.size(); i += 4) {
                uint8_t* p = &image->bytes[i];
                const uint32_t alpha = p[3];  // alpha of both the RGBA and the little-endian a8r8g8b8 reading
                for (int c = 0; c < 3; ++c) p[c] = uint8_t(p[c] * alpha / 255);
            }
        }
        peerDest.bytes = bottom.bytes;
    }
};

std::shared_ptr<BlendImages> ImagesOf(size_t side) {
    static std::map<size_t, std::weak_ptr<BlendImages>> cache;
    if (auto images = cache[side].lock()) return images;
    auto images = std::make_shared<BlendImages>(side);
    cache[side] = images;
    return images;
}

using BlendCall = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);

#if QUORIN_BENCH_PIXMAN
#define QUORIN_PIXMAN_OP(name) int(PIXMAN_OP_##name)
#else
#define QUORIN_PIXMAN_OP(name) 0
#endif

struct Row {
    const char* operation;
    BlendCall call;
    const char* peer;
    int pixmanOp;  // 0: the peer is not pixman
};

const RegisterFamily kAlphaBlend([] {
    const Row rows[] = {
        {"AlphaBlend_ARGB8888", QuorinAlphaBlend_ARGB8888, "libyuv ARGBBlend", 0},
        {"Multiply_RGBA8888", QuorinPremultipliedAlphaBlendMultiply_RGBA8888, "pixman MULTIPLY",
         QUORIN_PIXMAN_OP(MULTIPLY)},
        {"Screen_RGBA8888", QuorinPremultipliedAlphaBlendScreen_RGBA8888, "pixman SCREEN", QUORIN_PIXMAN_OP(SCREEN)},
        {"Darken_RGBA8888", QuorinPremultipliedAlphaBlendDarken_RGBA8888, "pixman DARKEN", QUORIN_PIXMAN_OP(DARKEN)},
        {"Lighten_RGBA8888", QuorinPremultipliedAlphaBlendLighten_RGBA8888, "pixman LIGHTEN",
         QUORIN_PIXMAN_OP(LIGHTEN)},
    };
    for (size_t side : StandardSizes()) {
        const size_t pixels = side * side, moved = pixels * 12;  // two images read, one written
        for (Split split : {Split::Single, Split::Default}) {
            for (const Row& row : rows) {
                auto images = ImagesOf(side);
                const RowShape shape{row.operation, side, side, split, moved};
                const auto blend = [images, call = row.call, flags = FlagsOf(split)] {
                    call(&images->top.buffer, &images->bottom.buffer, &images->dest.buffer, flags);
                };
                RegisterRow(shape, blend, row.peer);
                if (split == Split::Single) RegisterScalarRow(shape, blend);
            }
            auto images = ImagesOf(side);
            const RowShape shape{"ClipToAlpha_ARGB8888", side, side, split, pixels * 8};
            const auto clip = [images, flags = FlagsOf(split)] {
                QuorinClipToAlpha_ARGB8888(&images->bottom.buffer, &images->dest.buffer, flags);
            };
            RegisterRow(shape, clip);
            if (split == Split::Single) RegisterScalarRow(shape, clip);
        }
        if (WantsPairRow(side)) {
            for (const Row& row : rows) {
                auto images = ImagesOf(side);
                RegisterPairRow({row.operation, side, side, Split::Pair, moved},
                                [images, call = row.call](size_t first, size_t count) {
                                    const Quorin_Buffer top = RowsOf(images->top.buffer, first, count);
                                    const Quorin_Buffer bottom = RowsOf(images->bottom.buffer, first, count);
                                    const Quorin_Buffer dest = RowsOf(images->dest.buffer, first, count);
                                    call(&top, &bottom, &dest, kQuorinFlag_SingleThreaded);
                                });
            }
            auto images = ImagesOf(side);
            RegisterPairRow({"ClipToAlpha_ARGB8888", side, side, Split::Pair, pixels * 8},
                            [images](size_t first, size_t count) {
                                const Quorin_Buffer src = RowsOf(images->bottom.buffer, first, count);
                                const Quorin_Buffer dest = RowsOf(images->dest.buffer, first, count);
                                QuorinClipToAlpha_ARGB8888(&src, &dest, kQuorinFlag_SingleThreaded);
                            });
        }

        // Peers run on one thread only.
        auto images = ImagesOf(side);
        const int s = int(side), stride = int(side * 4);
#if QUORIN_BENCH_LIBYUV
        RegisterRow({"libyuv ARGBBlend", side, side, Split::Single, moved}, [images, s, stride] {
            libyuv::ARGBBlend(images->top.bytes.data(), stride, images->bottom.bytes.data(), stride,
                              images->dest.bytes.data(), stride, s, s);
        });
#endif
#if QUORIN_BENCH_PIXMAN
        for (const Row& row : rows) {
            if (row.pixmanOp == 0) continue;
            auto* src = pixman_image_create_bits(PIXMAN_a8r8g8b8, s, s,
                                                 reinterpret_cast<uint32_t*>(images->top.bytes.data()), stride);
            auto* dst = pixman_image_create_bits(PIXMAN_a8r8g8b8, s, s,
                                                 reinterpret_cast<uint32_t*>(images->peerDest.bytes.data()), stride);
            // The images live as long as the process, like the rows that use them.
            RegisterRow({row.peer, side, side, Split::Single, moved}, [images, src, dst, s, op = pixman_op_t(row.pixmanOp)] {
                pixman_image_composite32(op, src, nullptr, dst, 0, 0, 0, 0, 0, 0, s, s);
            });
        }
#endif
    }
});

}  // namespace
}  // namespace quorin::bench
