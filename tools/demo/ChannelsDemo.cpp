// Swaps the sample's red and blue channels, pulls its alpha out as a gray
// plane, and makes it opaque by overwriting its alpha with a scalar; lays it
// over a background and passes it through lookup tables.
#include <cstdio>
#include <cstring>

#include "Demo.h"

namespace quorin::demo {
namespace {

void ChannelOperations(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t pixels = sample.width * sample.height;
    // The extract writes rowBytes / 4 samples a row (rounded up), so the gray
    // plane's rows are given four bytes a pixel to receive a whole row.
    Image swapped(sample.width, sample.height, 4), alpha(sample.width, sample.height, 4);
    Image opaque(sample.width, sample.height, 4);
    const uint8_t swapRedBlue[4] = {0, 3, 2, 1};
    context.timed("QuorinPermuteChannels_ARGB8888", pixels,
                  [&] { return QuorinPermuteChannels_ARGB8888(&sample, &swapped.buffer, swapRedBlue, 0); });
    context.timed("QuorinExtractChannel_ARGB8888", pixels,
                  [&] { return QuorinExtractChannel_ARGB8888(&sample, &alpha.buffer, 0, 0); });
    context.timed("QuorinOverwriteChannelsWithScalar_ARGB8888", pixels, [&] {
        return QuorinOverwriteChannelsWithScalar_ARGB8888(255, &sample, &opaque.buffer, 0x8, 0);
    });

    size_t wrong = 0;
    for (size_t i = 0; i < pixels; ++i) {
        const uint8_t* in = context.sample.bytes.data() + i * 4;
        const uint8_t* out = swapped.bytes.data() + i * 4;
        const uint8_t* solid = opaque.bytes.data() + i * 4;
        wrong += out[0] != in[0] || out[1] != in[3] || out[2] != in[2] || out[3] != in[1];
        wrong += alpha.bytes[i / sample.width * alpha.buffer.rowBytes + i % sample.width] != in[0];
        wrong += solid[0] != 255 || std::memcmp(solid + 1, in + 1, 3) != 0;
    }
    std::printf("  %zu pixels permuted, extracted and made opaque; %zu differ from the rule\n", pixels, wrong);
    if (wrong != 0) context.fail("a channel operation differs from its rule");
    context.writePng("channels-swapped.png", swapped.buffer, 4);
    context.writePng("channels-alpha.png", alpha.buffer, 1);
    context.writePng("channels-opaque.png", opaque.buffer, 4);
}

// Lays the sample over an opaque background as RGB888, and makes a negative
// of its colours (alpha kept) through four lookup tables.
void FlattenAndLookUp(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t pixels = sample.width * sample.height;
    Image flat(sample.width, sample.height, 3), negative(sample.width, sample.height, 4);
    const uint8_t background[4] = {255, 40, 90, 160};
    uint8_t same[256], inverse[256];
    for (int i = 0; i < 256; ++i) same[i] = static_cast<uint8_t>(i), inverse[i] = static_cast<uint8_t>(255 - i);
    context.timed("QuorinFlatten_ARGB8888ToRGB888", pixels, [&] {
        return QuorinFlatten_ARGB8888ToRGB888(&sample, &flat.buffer, background, 0, 0);
    });
    context.timed("QuorinTableLookUp_ARGB8888", pixels, [&] {
        return QuorinTableLookUp_ARGB8888(&sample, &negative.buffer, same, inverse, inverse, inverse, 0);
    });

    size_t wrong = 0;
    for (size_t i = 0; i < pixels; ++i) {
        const uint8_t* in = context.sample.bytes.data() + i * 4;
        const uint8_t* out = flat.bytes.data() + i * 3;
        const uint8_t* neg = negative.bytes.data() + i * 4;
        for (size_t c = 1; c < 4; ++c) {
            const unsigned want = (in[c] * in[0] + 127 + (255 - in[0]) * background[c]) / 255;
            wrong += out[c - 1] != want || neg[c] != 255 - in[c];
        }
        wrong += neg[0] != in[0];
    }
    std::printf("  %zu pixels flattened and looked up; %zu samples differ from the rule\n", pixels, wrong);
    if (wrong != 0) context.fail("a flatten or lookup differs from its rule");
    context.writePng("channels-flattened.png", flat.buffer, 3);
    context.writePng("channels-negative.png", negative.buffer, 4);
}

const StepRegistration kChannelsStep{"channel permute, extract and overwrite", 40, ChannelOperations};
const StepRegistration kFlattenStep{"flatten over a background and table lookup", 41, FlattenAndLookUp};

}  // namespace
}  // namespace quorin::demo
