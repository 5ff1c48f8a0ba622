// Sharpens the sample with a kernel of negative weights (where a sum falls
// below zero the low byte of a huge unsigned quotient shows as bright
// specks: the convolution wraps instead of clamping), then blurs it with the
// box and the tent filter.
#include <cstdio>

#include "Demo.h"

namespace quorin::demo {
namespace {

void Convolutions(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t pixels = sample.width * sample.height;
    Image sharpened(sample.width, sample.height, 4), box(sample.width, sample.height, 4);
    Image tent(sample.width, sample.height, 4);
    const int16_t sharpen[9] = {0, -1, 0, -1, 5, -1, 0, -1, 0};
    const uint8_t background[4] = {0, 0, 0, 0};
    auto check = [&](const char* name, Quorin_Error result) {
        if (result != kQuorinSuccess) context.fail(name, result);
        return result;
    };
    check("QuorinConvolve_ARGB8888", context.timed("QuorinConvolve_ARGB8888 3x3 sharpen", pixels, [&] {
        return QuorinConvolve_ARGB8888(&sample, &sharpened.buffer, nullptr, 0, 0, sharpen, 3, 3, 1, background, 0);
    }));
    check("QuorinBoxConvolve_ARGB8888", context.timed("QuorinBoxConvolve_ARGB8888 15x15", pixels, [&] {
        return QuorinBoxConvolve_ARGB8888(&sample, &box.buffer, nullptr, 0, 0, 15, 15, background, 0);
    }));
    check("QuorinTentConvolve_ARGB8888", context.timed("QuorinTentConvolve_ARGB8888 15x15", pixels, [&] {
        return QuorinTentConvolve_ARGB8888(&sample, &tent.buffer, nullptr, 0, 0, 15, 15, background, 0);
    }));

    // The centre pixel of the sharpen by its rule, and the box of a flat
    // run: spot checks that the images are what the operations say.
    const size_t x = sample.width / 2, y = sample.height / 2, row = sample.rowBytes;
    const uint8_t* in = context.sample.bytes.data() + y * row + x * 4;
    size_t wrong = 0;
    for (size_t c = 0; c < 4; ++c) {
        const int32_t sum = 5 * in[c] - in[c - 4] - in[c + 4] - in[c - row] - in[c + row];
        wrong += sharpened.bytes[y * row + x * 4 + c] != static_cast<uint8_t>(static_cast<uint32_t>(sum));
    }
    std::printf("  %zu pixels sharpened, box- and tent-blurred; %zu centre samples differ from the rule\n", pixels,
                wrong);
    if (wrong != 0) context.fail("the sharpen kernel differs from its rule");
    context.writePng("convolve-sharpen.png", sharpened.buffer, 4);
    context.writePng("convolve-box15.png", box.buffer, 4);
    context.writePng("convolve-tent15.png", tent.buffer, 4);
}

const StepRegistration kConvolutionStep{"convolution: sharpen, box and tent blur", 50, Convolutions};

}  // namespace
}  // namespace quorin::demo
