// Planar and interleaved layouts on the sample: split it into planes, take the
// planes to float through a range and back, interleave them again, and check
// that every round trip returns the sample byte for byte.
#include <cstring>
#include <string>

#include "Demo.h"

namespace quorin::demo {
namespace {

bool SamePixels(const Quorin_Buffer& a, const Quorin_Buffer& b, size_t pixelBytes) {
    for (size_t y = 0; y < a.height; ++y)
        if (std::memcmp(static_cast<const uint8_t*>(a.data) + y * a.rowBytes,
                        static_cast<const uint8_t*>(b.data) + y * b.rowBytes, a.width * pixelBytes) != 0)
            return false;
    return true;
}

void RunLayouts(Context& c) {
    const Quorin_Buffer& sample = c.sample.buffer;
    const size_t width = sample.width, height = sample.height, pixels = width * height;
    const char* names[4] = {"alpha", "red", "green", "blue"};

    Image planes8[4] = {{width, height, 1}, {width, height, 1}, {width, height, 1}, {width, height, 1}};
    c.timed("ARGB8888toPlanar8", pixels, [&] {
        return QuorinConvert_ARGB8888toPlanar8(&sample, &planes8[0].buffer, &planes8[1].buffer, &planes8[2].buffer,
                                               &planes8[3].buffer, 0);
    });
    for (size_t k = 0; k < 4; ++k) c.writePng(std::string("layout-plane-") + names[k] + ".png", planes8[k].buffer, 1);

    Image merged(width, height, 4);
    c.timed("Planar8toARGB8888", pixels, [&] {
        return QuorinConvert_Planar8toARGB8888(&planes8[0].buffer, &planes8[1].buffer, &planes8[2].buffer,
                                               &planes8[3].buffer, &merged.buffer, 0);
    });
    const bool sameMerged = SamePixels(merged.buffer, sample, 4);
    std::printf("  split then interleave expected: the sample byte for byte; found %s\n",
                sameMerged ? "the sample: as expected" : "other bytes");
    if (!sameMerged) c.fail("split then interleave does not give the sample back");

    // Bytes onto [0, 1] and back: the rounding half up makes this exact.
    const float max[4] = {1, 1, 1, 1}, min[4] = {0, 0, 0, 0};
    Image planesF[4] = {{width, height, 4}, {width, height, 4}, {width, height, 4}, {width, height, 4}};
    c.timed("ARGB8888toPlanarF [0, 1]", pixels, [&] {
        return QuorinConvert_ARGB8888toPlanarF(&sample, &planesF[0].buffer, &planesF[1].buffer, &planesF[2].buffer,
                                               &planesF[3].buffer, max, min, 0);
    });
    Image pixelsF(width, height, 16);
    c.timed("PlanarFtoARGBFFFF", pixels, [&] {
        return QuorinConvert_PlanarFtoARGBFFFF(&planesF[0].buffer, &planesF[1].buffer, &planesF[2].buffer,
                                               &planesF[3].buffer, &pixelsF.buffer, 0);
    });
    Image back8[4] = {{width, height, 1}, {width, height, 1}, {width, height, 1}, {width, height, 1}};
    c.timed("ARGBFFFFtoPlanar8 [0, 1]", pixels, [&] {
        return QuorinConvert_ARGBFFFFtoPlanar8(&pixelsF.buffer, &back8[0].buffer, &back8[1].buffer, &back8[2].buffer,
                                               &back8[3].buffer, max, min, 0);
    });
    for (size_t k = 0; k < 4; ++k)
        if (!SamePixels(back8[k].buffer, planes8[k].buffer, 1))
            c.fail(std::string("the ") + names[k] + " plane does not survive the trip through float");
    Image roundTrip(width, height, 4);
    c.timed("PlanarFToARGB8888 [0, 1]", pixels, [&] {
        return QuorinConvert_PlanarFToARGB8888(&planesF[0].buffer, &planesF[1].buffer, &planesF[2].buffer,
                                               &planesF[3].buffer, &roundTrip.buffer, max, min, 0);
    });
    const bool sameRoundTrip = SamePixels(roundTrip.buffer, sample, 4);
    std::printf("  bytes -> floats in [0, 1] -> bytes expected: the sample byte for byte (rounding half up undoes "
                "v / 255 exactly); found %s\n", sameRoundTrip ? "the sample: as expected" : "other bytes");
    if (!sameRoundTrip) c.fail("8-bit -> float -> 8-bit does not give the sample back");
    c.writePng("layout-round-trip.png", roundTrip.buffer, 4);

    // A range with min > max for the colour channels gives the negative.
    const float invertedMax[4] = {1, 0, 0, 0}, invertedMin[4] = {0, 1, 1, 1};
    Image negative(width, height, 4);
    c.timed("PlanarFToARGB8888 inverted colour range", pixels, [&] {
        return QuorinConvert_PlanarFToARGB8888(&planesF[0].buffer, &planesF[1].buffer, &planesF[2].buffer,
                                               &planesF[3].buffer, &negative.buffer, invertedMax, invertedMin, 0);
    });
    c.writePng("layout-negative.png", negative.buffer, 4);

    // The colour planes with a constant opaque alpha.
    Image opaque(width, height, 4);
    c.timed("Planar8ToXRGB8888 alpha 255", pixels, [&] {
        return QuorinConvert_Planar8ToXRGB8888(255, &planes8[1].buffer, &planes8[2].buffer, &planes8[3].buffer,
                                               &opaque.buffer, 0);
    });
    c.writePng("layout-opaque.png", opaque.buffer, 4);
}

const StepRegistration kStep{"planar and interleaved layouts", 10, RunLayouts};

}  // namespace
}  // namespace quorin::demo
