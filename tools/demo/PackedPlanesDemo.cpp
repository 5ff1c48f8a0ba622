// The sample's grey plane (its luma) packed into 1-, 2- and 4-bit
// planes and expanded again: each round trip must land on the level nearest
// to the grey (within half a step: 127, 42 and 8), and the expanded planes
// show the banding of 2, 4 and 16 levels.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Demo.h"

namespace quorin::demo {
namespace {

struct Depth {
    unsigned bits;
    Quorin_Error (*pack)(const Quorin_Buffer*, const Quorin_Buffer*);
    Quorin_Error (*unpack)(const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
};

const Depth kDepths[] = {
    {1, [](const Quorin_Buffer* s, const Quorin_Buffer* d) { return QuorinConvert_Planar8toPlanar1(s, d, nullptr, 0); },
     &QuorinConvert_Planar1toPlanar8},
    {2, [](const Quorin_Buffer* s, const Quorin_Buffer* d) { return QuorinConvert_Planar8toPlanar2(s, d, 0); },
     &QuorinConvert_Planar2toPlanar8},
    {4, [](const Quorin_Buffer* s, const Quorin_Buffer* d) { return QuorinConvert_Planar8toPlanar4(s, d, 0); },
     &QuorinConvert_Planar4toPlanar8},
};

void PackedPlanes(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t width = sample.width, height = sample.height, pixels = width * height;
    Image grey(width, height, 1);
    for (size_t i = 0; i < pixels; ++i) {
        const uint8_t* argb = context.sample.bytes.data() + i * 4;
        grey.bytes[i] = static_cast<uint8_t>((77 * argb[1] + 150 * argb[2] + 29 * argb[3]) >> 8);
    }
    for (const Depth& depth : kDepths) {
        const size_t per = 8 / depth.bits, packedBytes = (width + per - 1) / per;
        // Both planes are as wide as the packed rows' bytes cover, so every
        // byte converted belongs to the image.
        Image plane(packedBytes * per, height, 1), packed(packedBytes, height, 1), back(packedBytes * per, height, 1);
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < packedBytes * per; ++x)
                plane.bytes[y * plane.buffer.rowBytes + x] = grey.bytes[y * grey.buffer.rowBytes + std::min(x, width - 1)];
        plane.buffer.width = packed.buffer.width = back.buffer.width = width;
        const std::string bits = std::to_string(depth.bits);
        context.timed("QuorinConvert_Planar8toPlanar" + bits, pixels,
                      [&] { return depth.pack(&plane.buffer, &packed.buffer); });
        context.timed("QuorinConvert_Planar" + bits + "toPlanar8", pixels,
                      [&] { return depth.unpack(&packed.buffer, &back.buffer, 0); });
        const int half = 255 / ((1 << depth.bits) - 1) / 2;
        size_t wrong = 0;
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x)
                wrong += std::abs(back.bytes[y * back.buffer.rowBytes + x] - plane.bytes[y * plane.buffer.rowBytes + x]) >
                         half;
        std::printf("  %u-bit plane: %zu pixels more than half a step from the grey\n", depth.bits, wrong);
        if (wrong != 0) context.fail("a packed-plane round trip left its level");
        context.writePng("planes-grey-" + bits + "bit.png", back.buffer, 1);
    }
    context.writePng("planes-grey.png", grey.buffer, 1);
}

const StepRegistration kPlanesStep{"packed planes: grey to 1, 2 and 4 bits and back", 46, PackedPlanes};

}  // namespace
}  // namespace quorin::demo
