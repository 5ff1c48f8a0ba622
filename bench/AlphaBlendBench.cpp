// The blends beside their peers on the same images in the same run: the
// straight-alpha blend beside libyuv's ARGBBlend, the premultiplied blend
// modes beside pixman's separable operators (composited into a copy of the
// bottom image, as pixman works in place), and clip to alpha beside memcpy.
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Alpha/BlendMembers.h"
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

#if QUORIN_BENCH_PIXMAN
#define QUORIN_PIXMAN_OP(name) int(PIXMAN_OP_##name)
#else
#define QUORIN_PIXMAN_OP(name) 0
#endif

struct Peer {
    const char* member;  // the member's name in the family table
    const char* peer;
    int pixmanOp;  // 0: the peer is not pixman
};

const Peer kPeers[] = {
    {"QuorinAlphaBlend_ARGB8888", "libyuv ARGBBlend", 0},
    {"QuorinPremultipliedAlphaBlendMultiply_RGBA8888", "pixman MULTIPLY", QUORIN_PIXMAN_OP(MULTIPLY)},
    {"QuorinPremultipliedAlphaBlendScreen_RGBA8888", "pixman SCREEN", QUORIN_PIXMAN_OP(SCREEN)},
    {"QuorinPremultipliedAlphaBlendDarken_RGBA8888", "pixman DARKEN", QUORIN_PIXMAN_OP(DARKEN)},
    {"QuorinPremultipliedAlphaBlendLighten_RGBA8888", "pixman LIGHTEN", QUORIN_PIXMAN_OP(LIGHTEN)},
};

// The row name of a member: its entry point without "Quorin" and, for the
// premultiplied modes, without "PremultipliedAlphaBlend".
std::string OperationOf(const alpha::Member& m) {
    std::string name = std::string(m.name).substr(6);
    const std::string modes = "PremultipliedAlphaBlend";
    return name.rfind(modes, 0) == 0 ? name.substr(modes.size()) : name;
}

// The table's members on four-channel 8-bit pixels: blends of top over
// bottom into dest, and clip to alpha of bottom into dest.
std::vector<const alpha::Member*> InterleavedBytes() {
    std::vector<const alpha::Member*> members;
    for (const alpha::Member* m : alpha::kBlendMembers)
        if (m->format.sample == SampleKind::U8 && m->format.channels == 4) members.push_back(m);
    return members;
}

Quorin_Error Run(const alpha::Member& m, const Quorin_Buffer& top, const Quorin_Buffer& bottom,
                 const Quorin_Buffer& dest, Quorin_Flags flags) {
    const Quorin_Buffer* buffers[] = {&top, &bottom, &dest};
    const Quorin_Buffer* const* first = m.buffers == 2 ? buffers + 1 : buffers;
    return m.invoke(first, 0, flags);
}

const char* PeerOf(const alpha::Member& m) {
    for (const Peer& p : kPeers)
        if (std::strcmp(p.member, m.name) == 0) return p.peer;
    return "";
}

const RegisterFamily kAlphaBlend([] {
    for (size_t side : StandardSizes()) {
        const size_t pixels = side * side;
        for (Split split : {Split::Single, Split::Default}) {
            for (const alpha::Member* m : InterleavedBytes()) {
                auto images = ImagesOf(side);
                const RowShape shape{OperationOf(*m), side, side, split, pixels * 4 * m->buffers};
                const auto call = [images, m, flags = FlagsOf(split)] {
                    Run(*m, images->top.buffer, images->bottom.buffer, images->dest.buffer, flags);
                };
                RegisterRow(shape, call, PeerOf(*m));
                if (split == Split::Single) RegisterScalarRow(shape, call);
            }
        }
        if (WantsPairRow(side)) {
            for (const alpha::Member* m : InterleavedBytes()) {
                auto images = ImagesOf(side);
                RegisterPairRow({OperationOf(*m), side, side, Split::Pair, pixels * 4 * m->buffers},
                                [images, m](size_t first, size_t count) {
                                    Run(*m, RowsOf(images->top.buffer, first, count),
                                        RowsOf(images->bottom.buffer, first, count),
                                        RowsOf(images->dest.buffer, first, count), kQuorinFlag_SingleThreaded);
                                });
            }
        }

        // Peers run on one thread only.
        const size_t moved = pixels * 12;  // two images read, one written
        auto images = ImagesOf(side);
        const int s = int(side), stride = int(side * 4);
#if QUORIN_BENCH_LIBYUV
        RegisterRow({"libyuv ARGBBlend", side, side, Split::Single, moved}, [images, s, stride] {
            libyuv::ARGBBlend(images->top.bytes.data(), stride, images->bottom.bytes.data(), stride,
                              images->dest.bytes.data(), stride, s, s);
        });
#endif
#if QUORIN_BENCH_PIXMAN
        for (const Peer& row : kPeers) {
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
