#include "LayoutMembers.h"

#include <cmath>
#include <cstring>

#include "Conversion/LayoutMembers.h"

namespace quorin::test {

float ExpectedByteToFloat(uint8_t v, float max, float min) {
    const float product = static_cast<float>(v) * (max - min);  // single precision
    const double scaled = static_cast<double>(product) / 255.0;  // double from here on
    return static_cast<float>(min + scaled);                       // one rounding
}

uint8_t ExpectedFloatToByte(float f, float max, float min) {
    const float t = ((f - min) * 255.0f) / (max - min) + 0.5f;
    if (std::isnan(t) || t < 0.0f) return 0;
    if (t >= 255.0f) return 255;
    return static_cast<uint8_t>(std::trunc(t));
}

void Member::convert(int c, const uint8_t* from, uint8_t* to) const {
    switch (depth) {
        case Depth::Same: std::memcpy(to, from, planeBytes); return;
        case Depth::ByteToFloat: {
            const float f = ExpectedByteToFloat(*from, kMax[c], kMin[c]);
            std::memcpy(to, &f, sizeof f);
            return;
        }
        case Depth::FloatToByte: {
            float f;
            std::memcpy(&f, from, sizeof f);
            *to = ExpectedFloatToByte(f, kMax[c], kMin[c]);
            return;
        }
    }
}

std::vector<uint8_t> Member::constantChannel(bool alphaPlaneMissing) const {
    const size_t sample = interleavedSample();
    std::vector<uint8_t> bytes(sample);
    // The XRGB float-to-8-bit form converts its float constant through
    // channel 0's range; the ARGB front ends with a null alpha plane pass 0.
    if (depth == Depth::FloatToByte && (alphaPlaneMissing || planeChannel.front() == 1)) {
        bytes[0] = ExpectedFloatToByte(alphaPlaneMissing ? 0.0f : kAlphaFloat, kMax[0], kMin[0]);
    } else if (!alphaPlaneMissing && sample == 1) {
        bytes[0] = kAlphaByte;
    } else if (!alphaPlaneMissing) {
        std::memcpy(bytes.data(), &kAlphaFloat, sizeof kAlphaFloat);
    }
    return bytes;
}

// The library's member table read into the test's terms: the channels and
// sample sizes come from the table's formats, the expected values from the
// rules above.
const std::vector<Member>& LayoutMembers() {
    static const std::vector<Member> members = [] {
        std::vector<Member> all;
        for (const layout::Member* m : layout::kLayoutMembers) {
            const bool fromBytes = m->merge() ? m->planes.sampleBytes() == 1 : m->image.sampleBytes() == 1;
            const Depth depth = !m->takesRanges ? Depth::Same : fromBytes ? Depth::ByteToFloat : Depth::FloatToByte;
            std::vector<int> channels;
            for (size_t k = 0; k < m->planeCount(); ++k) channels.push_back(static_cast<int>(m->planeChannel(k)));
            const std::string name = std::string(m->name).substr(std::string("QuorinConvert_").size());
            all.push_back({name, m->merge(), depth, m->image.channels, m->planes.sampleBytes(), m->image.pixelBytes(),
                           channels, m->alphaPlaneOptional, m->requiredPlanesRowBytesOnly,
                           [m](const Quorin_Buffer* image, const Planes& planes, const float* max, const float* min,
                               Quorin_Flags flags) {
                               layout::Call call{{}, kAlphaByte, kAlphaFloat, max, min, flags};
                               call.buffers[m->imageArgument()] = image;
                               for (size_t k = 0; k < m->planeCount(); ++k)
                                   call.buffers[m->planeArgument(k)] = planes[k];
                               return m->invoke(call);
                           }});
        }
        return all;
    }();
    return members;
}

}  // namespace quorin::test
