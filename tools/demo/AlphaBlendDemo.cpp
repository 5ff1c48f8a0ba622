// Composites the sample over the background: as straight colour with the
// straight-alpha blend, and premultiplied in each separable blend mode; then
// damages a premultiplied image (colour above alpha) and repairs it with clip
// to alpha. Every result is written as a PNG.
#include <algorithm>
#include <cstdio>
#include <string>

#include "Demo.h"

namespace quorin::demo {
namespace {

// Channel c of each output pixel is channel (c + shift) % 4 of the input:
// shift 1 turns ARGB8888 into RGBA8888 (what the blend modes take), 3 turns it back.
void RotateChannels(const Image& from, Image& to, size_t shift) {
    for (size_t i = 0; i < from.bytes.size(); i += 4)
        for (size_t c = 0; c < 4; ++c) to.bytes[i + c] = from.bytes[i + (c + shift) % 4];
}

// Pixels with some colour channel above alpha (ARGB8888).
size_t ColourAboveAlpha(const Image& image) {
    size_t count = 0;
    for (size_t i = 0; i < image.bytes.size(); i += 4) {
        const uint8_t* p = &image.bytes[i];
        count += std::max({p[1], p[2], p[3]}) > p[0];
    }
    return count;
}

void BlendAndClip(Context& context) {
    const size_t width = context.sample.buffer.width, height = context.sample.buffer.height, pixels = width * height;
    const Quorin_Buffer& sample = context.sample.buffer;
    const Quorin_Buffer& background = context.background.buffer;

    // Straight colour: the result stays straight, as PNG wants it.
    Image straight(width, height, 4);
    context.timed("QuorinAlphaBlend_ARGB8888", pixels,
                  [&] { return QuorinAlphaBlend_ARGB8888(&sample, &background, &straight.buffer, 0); });
    size_t opaqueMismatch = 0;  // an opaque top pixel must come out as itself
    for (size_t i = 0; i < straight.bytes.size(); i += 4)
        if (context.sample.bytes[i] == 255)
            opaqueMismatch += !std::equal(&straight.bytes[i], &straight.bytes[i] + 4, &context.sample.bytes[i]);
    std::printf("  straight blend expected: where the top is opaque the result is the top pixel; found %zu pixels "
                "that differ%s\n", opaqueMismatch, opaqueMismatch == 0 ? ": as expected" : "");
    if (opaqueMismatch) context.fail(std::to_string(opaqueMismatch) + " opaque pixels changed by the blend");
    context.writePng("blend-straight.png", straight.buffer, 4);

    // Premultiplied RGBA for the blend modes.
    Image top(width, height, 4), bottom(width, height, 4), topRgba(width, height, 4), bottomRgba(width, height, 4);
    if (QuorinPremultiplyData_ARGB8888(&sample, &top.buffer, 0) != kQuorinSuccess ||
        QuorinPremultiplyData_ARGB8888(&background, &bottom.buffer, 0) != kQuorinSuccess)
        return context.fail("premultiply for the blend modes");
    RotateChannels(top, topRgba, 1);
    RotateChannels(bottom, bottomRgba, 1);

    using ModeCall = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
    const std::pair<const char*, ModeCall> modes[] = {
        {"darken", QuorinPremultipliedAlphaBlendDarken_RGBA8888},
        {"lighten", QuorinPremultipliedAlphaBlendLighten_RGBA8888},
        {"multiply", QuorinPremultipliedAlphaBlendMultiply_RGBA8888},
        {"screen", QuorinPremultipliedAlphaBlendScreen_RGBA8888},
    };
    Image blended(width, height, 4), straightRgba(width, height, 4), argb(width, height, 4);
    for (const auto& [name, call] : modes) {
        context.timed(std::string("premultiplied ") + name + " RGBA8888", pixels,
                      [&, call = call] { return call(&topRgba.buffer, &bottomRgba.buffer, &blended.buffer, 0); });
        QuorinUnpremultiplyData_RGBA8888(&blended.buffer, &straightRgba.buffer, 0);
        RotateChannels(straightRgba, argb, 3);
        context.writePng(std::string("blend-") + name + ".png", argb.buffer, 4);
    }

    // Damage the premultiplied sample (colour raised above alpha where the
    // sample is thin), then clip it back: no colour may exceed alpha after.
    Image damaged(width, height, 4), clipped(width, height, 4), shown(width, height, 4);
    damaged.bytes = top.bytes;
    for (size_t i = 0; i < damaged.bytes.size(); i += 4)
        for (int c = 1; c < 4; ++c) damaged.bytes[i + c] = uint8_t(std::min(255, damaged.bytes[i + c] + 80));
    const size_t before = ColourAboveAlpha(damaged);
    context.timed("QuorinClipToAlpha_ARGB8888", pixels,
                  [&] { return QuorinClipToAlpha_ARGB8888(&damaged.buffer, &clipped.buffer, 0); });
    const size_t after = ColourAboveAlpha(clipped);
    std::printf("  clip to alpha expected: no colour above its alpha after; found %zu pixels with colour above alpha "
                "before, %zu after%s\n", before, after, after == 0 ? ": as expected" : "");
    if (after != 0) context.fail("clip to alpha left colour above alpha");
    QuorinUnpremultiplyData_ARGB8888(&clipped.buffer, &shown.buffer, 0);
    context.writePng("clip-to-alpha.png", shown.buffer, 4);
}

const StepRegistration kBlendStep{"blend and clip to alpha", 30, BlendAndClip};

}  // namespace
}  // namespace quorin::demo
