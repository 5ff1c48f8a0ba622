// Packs the sample's colours into RGB565 words and expands them again to
// RGB888, and drops its alpha into RGB888: the round trip through 565 keeps
// every channel within the half step of its five or six bits, and back to
// ARGB8888 with an opaque alpha.
#include <cstdio>
#include <cstdlib>

#include "Demo.h"

namespace quorin::demo {
namespace {

void PackedFormats(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t pixels = sample.width * sample.height;
    Image rgb(sample.width, sample.height, 3), packed(sample.width, sample.height, 2);
    Image expanded(sample.width, sample.height, 3), back(sample.width, sample.height, 4);
    context.timed("QuorinConvert_ARGB8888toRGB888", pixels,
                  [&] { return QuorinConvert_ARGB8888toRGB888(&sample, &rgb.buffer, 0); });
    context.timed("QuorinConvert_ARGB8888toRGB565", pixels,
                  [&] { return QuorinConvert_ARGB8888toRGB565(&sample, &packed.buffer, 0); });
    context.timed("QuorinConvert_RGB565toRGB888", pixels,
                  [&] { return QuorinConvert_RGB565toRGB888(&packed.buffer, &expanded.buffer, 0); });
    context.timed("QuorinConvert_RGB565toARGB8888", pixels,
                  [&] { return QuorinConvert_RGB565toARGB8888(255, &packed.buffer, &back.buffer, 0); });

    size_t wrong = 0;
    for (size_t i = 0; i < pixels; ++i) {
        const uint8_t* in = context.sample.bytes.data() + i * 4;
        for (size_t c = 0; c < 3; ++c) {
            const int step = c == 1 ? 2 : 4;  // half of 255/63 and of 255/31, rounded down
            wrong += rgb.bytes[i * 3 + c] != in[c + 1];
            wrong += std::abs(expanded.bytes[i * 3 + c] - in[c + 1]) > step;
            wrong += back.bytes[i * 4 + c + 1] != expanded.bytes[i * 3 + c];
        }
        wrong += back.bytes[i * 4] != 255;
    }
    std::printf("  %zu pixels to RGB888 and through RGB565; %zu samples differ from the rule\n", pixels, wrong);
    if (wrong != 0) context.fail("a packed conversion differs from its rule");
    context.writePng("packed-rgb888.png", rgb.buffer, 3);
    context.writePng("packed-rgb565-expanded.png", expanded.buffer, 3);
    context.writePng("packed-rgb565-argb.png", back.buffer, 4);
}

const StepRegistration kPackedStep{"packed RGB formats: to RGB888 and through RGB565", 45, PackedFormats};

}  // namespace
}  // namespace quorin::demo
