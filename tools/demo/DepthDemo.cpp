// Takes the sample to 12-bit fixed-point planes and back, and its channels
// to 16-bit planes and back; both round trips must give the sample again.
// A darkened copy made in fixed point (each Q12 value scaled by 3/4) shows
// the planes hold real intensities.
#include <cstdio>
#include <cstring>
#include <vector>

#include "Demo.h"

namespace quorin::demo {
namespace {

void DepthRoundTrips(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t width = sample.width, height = sample.height, pixels = width * height;
    Image q12[4], back(width, height, 4), darker(width, height, 4);
    const Quorin_Buffer* planes[4];
    for (size_t c = 0; c < 4; ++c) {
        q12[c] = Image(width, height, 2);
        planes[c] = &q12[c].buffer;
    }
    context.timed("QuorinConvert_ARGB8888toPlanar16Q12", pixels, [&] {
        return QuorinConvert_ARGB8888toPlanar16Q12(&sample, planes[0], planes[1], planes[2], planes[3], 0);
    });
    context.timed("QuorinConvert_Planar16Q12toARGB8888", pixels, [&] {
        return QuorinConvert_Planar16Q12toARGB8888(planes[0], planes[1], planes[2], planes[3], &back.buffer, 0);
    });
    const size_t q12Wrong = std::memcmp(back.bytes.data(), context.sample.bytes.data(), back.bytes.size()) != 0;
    for (size_t c = 1; c < 4; ++c)
        for (size_t i = 0; i < pixels; ++i) {
            int16_t v;
            std::memcpy(&v, q12[c].bytes.data() + 2 * i, 2);
            v = static_cast<int16_t>(v * 3 / 4);
            std::memcpy(q12[c].bytes.data() + 2 * i, &v, 2);
        }
    const Quorin_Error darkened =
        QuorinConvert_Planar16Q12toARGB8888(planes[0], planes[1], planes[2], planes[3], &darker.buffer, 0);
    if (darkened != kQuorinSuccess) context.fail("QuorinConvert_Planar16Q12toARGB8888", darkened);

    // The sample's bytes as one plane of 4 x width samples a row.
    const Quorin_Buffer bytes{sample.data, height, 4 * width, sample.rowBytes};
    Image words(4 * width, height, 2), again(width, height, 4);
    Quorin_Buffer againBytes = again.buffer;
    againBytes.width = 4 * width;
    context.timed("QuorinConvert_Planar8To16U", pixels,
                  [&] { return QuorinConvert_Planar8To16U(&bytes, &words.buffer, 0); });
    context.timed("QuorinConvert_16UToPlanar8", pixels,
                  [&] { return QuorinConvert_16UToPlanar8(&words.buffer, &againBytes, 0); });
    const size_t wordWrong = std::memcmp(again.bytes.data(), context.sample.bytes.data(), again.bytes.size()) != 0;

    std::printf("  %zu pixels through Q12 planes and 16-bit samples; round trips %s\n", pixels,
                q12Wrong || wordWrong ? "DIFFER" : "give the sample");
    if (q12Wrong) context.fail("the Q12 round trip differs from the sample");
    if (wordWrong) context.fail("the 16-bit round trip differs from the sample");
    context.writePng("depth-q12-round-trip.png", back.buffer, 4);
    context.writePng("depth-q12-darkened.png", darker.buffer, 4);
    context.writePng("depth-16u-round-trip.png", again.buffer, 4);
}

const StepRegistration kDepthStep{"depth: 12-bit fixed point and 16-bit planes", 46, DepthRoundTrips};

}  // namespace
}  // namespace quorin::demo
