// Premultiplies the sample, unpremultiplies it back and reports how far the
// round trip moved the colours.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "Demo.h"

namespace quorin::demo {
namespace {

void PremultiplyRoundTrip(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t pixels = sample.width * sample.height;
    Image premultiplied(sample.width, sample.height, 4), restored(sample.width, sample.height, 4);
    context.timed("QuorinPremultiplyData_ARGB8888", pixels,
                  [&] { return QuorinPremultiplyData_ARGB8888(&sample, &premultiplied.buffer, 0); });
    context.timed("QuorinUnpremultiplyData_ARGB8888", pixels,
                  [&] { return QuorinUnpremultiplyData_ARGB8888(&premultiplied.buffer, &restored.buffer, 0); });

    // Premultiplied 8-bit colour keeps only alpha + 1 levels a channel: it
    // lands within 127/255 of c * a / 255, and unpremultiplying scales that by
    // 255 / a and rounds once more, so a colour comes back within 127 / a + 1/2
    // of where it started: exactly at alpha 255, to 0 at alpha 0, and at alpha 1
    // only as 0 or 255. Large differences at small alpha are the format's, not a fault.
    int maxDifference = 0, alphaOfMax = 0, maxOpaqueDifference = 0;
    size_t outOfBound = 0, transparent = 0;
    for (size_t i = 0; i < pixels; ++i) {
        const uint8_t* before = context.sample.bytes.data() + i * 4;
        const uint8_t* after = restored.bytes.data() + i * 4;
        const int alpha = before[0];
        if (after[0] != alpha) ++outOfBound;
        if (alpha == 0) {
            transparent += after[1] != 0 || after[2] != 0 || after[3] != 0;
            continue;
        }
        const int bound = static_cast<int>(std::floor(127.0 / alpha + 0.5));
        for (int ch = 1; ch < 4; ++ch) {
            const int difference = std::abs(before[ch] - after[ch]);
            if (difference > maxDifference) maxDifference = difference, alphaOfMax = alpha;
            if (alpha == 255) maxOpaqueDifference = std::max(maxOpaqueDifference, difference);
            outOfBound += difference > bound;
        }
    }
    std::printf("  round trip expected: each colour back within 127/alpha + 1/2 (0 at alpha 255; small alpha keeps "
                "few levels), alpha unchanged, colour 0 under alpha 0\n");
    std::printf("  round trip found: largest difference %d (at alpha %d), %d at alpha 255, %zu values beyond the "
                "bound, %zu transparent pixels with colour%s\n",
                maxDifference, alphaOfMax, maxOpaqueDifference, outOfBound, transparent,
                outOfBound == 0 && maxOpaqueDifference == 0 && transparent == 0 ? ": as expected" : "");
    if (outOfBound != 0 || maxOpaqueDifference != 0) context.fail("premultiply round trip beyond its bound");
    if (transparent != 0) context.fail("unpremultiply left colour under alpha 0");
    context.writePng("premultiplied.png", premultiplied.buffer, 4);
    context.writePng("unpremultiplied.png", restored.buffer, 4);
}

const StepRegistration kPremultiplyStep{"premultiply and unpremultiply", 20, PremultiplyRoundTrip};

}  // namespace
}  // namespace quorin::demo
