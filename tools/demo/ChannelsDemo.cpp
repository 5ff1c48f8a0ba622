// Swaps the sample's red and blue channels, pulls its alpha out as a gray
// plane, and makes it opaque by overwriting its alpha with a scalar.
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

const StepRegistration kChannelsStep{"channel permute, extract and overwrite", 40, ChannelOperations};

}  // namespace
}  // namespace quorin::demo
