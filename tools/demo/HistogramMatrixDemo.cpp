// Draws the sample's four histograms as a chart (one band per channel, alpha
// on top) and applies a sepia matrix to the sample, in 8 bits and in float.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "Demo.h"

namespace quorin::demo {
namespace {

void Histograms(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t pixels = sample.width * sample.height;
    std::vector<uint32_t> counts(4 * 256);
    uint32_t* const histograms[4] = {&counts[0], &counts[256], &counts[512], &counts[768]};
    if (const Quorin_Error e = context.timed("QuorinHistogramCalculation_ARGB8888", pixels, [&] {
            return QuorinHistogramCalculation_ARGB8888(&sample, histograms, 0);
        }))
        return context.fail("QuorinHistogramCalculation_ARGB8888", e);
    size_t wrong = 0;
    for (size_t c = 0; c < 4; ++c) {
        size_t total = 0;
        for (size_t v = 0; v < 256; ++v) total += histograms[c][v];
        wrong += total != pixels;
    }
    std::printf("  %zu channels whose counts do not add up to the %zu pixels\n", wrong, pixels);
    if (wrong != 0) context.fail("a histogram does not count every pixel once");

    // Four bands of 100 rows, 256 columns each; bars scaled to the channel's
    // largest count, in the channel's colour on white.
    const size_t band = 100;
    Image chart(256, 4 * band, 4);
    const uint8_t colours[4][4] = {{255, 90, 90, 90}, {255, 220, 40, 40}, {255, 40, 170, 40}, {255, 40, 80, 230}};
    for (size_t c = 0; c < 4; ++c) {
        const uint32_t top = std::max<uint32_t>(1, *std::max_element(histograms[c], histograms[c] + 256));
        for (size_t v = 0; v < 256; ++v) {
            const size_t bar = static_cast<size_t>(uint64_t{histograms[c][v]} * (band - 4) / top);
            for (size_t y = 0; y < band; ++y) {
                uint8_t* px = chart.bytes.data() + (c * band + y) * chart.buffer.rowBytes + 4 * v;
                const bool filled = band - 1 - y < bar;
                const uint8_t white[4] = {255, 255, 255, 255};
                std::memcpy(px, filled ? colours[c] : white, 4);
            }
        }
    }
    context.writePng("histograms.png", chart.buffer, 4);
}

void Sepia(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t pixels = sample.width * sample.height;
    // Destination channel j from source channel i: coefficient 4 * i + j, in
    // ARGB order; alpha passes through. 1/1024 units.
    const int16_t sepia[16] = {1024, 0, 0, 0, 0, 402, 357, 279, 0, 787, 702, 547, 0, 194, 172, 134};
    Image toned(sample.width, sample.height, 4);
    if (const Quorin_Error e = context.timed("QuorinMatrixMultiply_ARGB8888", pixels, [&] {
            return QuorinMatrixMultiply_ARGB8888(&sample, &toned.buffer, sepia, 1024, nullptr, nullptr, 0);
        }))
        return context.fail("QuorinMatrixMultiply_ARGB8888", e);

    // The same matrix in float over the sample as values 0..1, back to bytes.
    Image floats(sample.width, sample.height, 16), tonedF(sample.width, sample.height, 16);
    float matrix[16];
    for (int k = 0; k < 16; ++k) matrix[k] = sepia[k] / 1024.0f;
    for (size_t i = 0; i < pixels * 4; ++i) {
        const float f = context.sample.bytes[i / 4 / sample.width * sample.rowBytes + i % (sample.width * 4)] / 255.0f;
        std::memcpy(floats.bytes.data() + 4 * i, &f, 4);
    }
    if (const Quorin_Error e = context.timed("QuorinMatrixMultiply_ARGBFFFF", pixels, [&] {
            return QuorinMatrixMultiply_ARGBFFFF(&floats.buffer, &tonedF.buffer, matrix, nullptr, nullptr, 0);
        }))
        return context.fail("QuorinMatrixMultiply_ARGBFFFF", e);
    // Both agree to within the 8-bit member's truncation.
    size_t apart = 0;
    for (size_t i = 0; i < pixels * 4; ++i) {
        float f;
        std::memcpy(&f, tonedF.bytes.data() + 4 * i, 4);
        const float clamped = std::clamp(f * 255.0f, 0.0f, 255.0f);
        const uint8_t b = toned.bytes[i / 4 / sample.width * toned.buffer.rowBytes + i % (sample.width * 4)];
        apart += clamped - b < -0.01f || clamped - b > 1.01f;
    }
    std::printf("  %zu samples where the 8-bit and float sepia differ by more than the truncation\n", apart);
    if (apart != 0) context.fail("the 8-bit and float matrices disagree");
    context.writePng("sepia.png", toned.buffer, 4);
}

const StepRegistration kHistogramStep{"histograms", 60, Histograms};
const StepRegistration kSepiaStep{"sepia colour matrix", 61, Sepia};

}  // namespace
}  // namespace quorin::demo
