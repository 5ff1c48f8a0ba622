#include "LayoutMembers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Conversion/DepthMembers.h"
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

// 4096 is 1.0: the value scaled to 0..255 and rounded half up, clamped.
uint8_t ExpectedQ12ToByte(int16_t v) {
    const double scaled = std::floor(std::clamp(static_cast<double>(v), 0.0, 4096.0) * 255.0 / 4096.0 + 0.5);
    return static_cast<uint8_t>(scaled);
}

int16_t ExpectedByteToQ12(uint8_t v) { return static_cast<int16_t>(std::floor((v * 4096.0 + 127.0) / 255.0)); }

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
        case Depth::Q12ToByte: {
            int16_t v;
            std::memcpy(&v, from, sizeof v);
            *to = ExpectedQ12ToByte(v);
            return;
        }
        case Depth::ByteToQ12: {
            const int16_t v = ExpectedByteToQ12(*from);
            std::memcpy(to, &v, sizeof v);
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
        const auto add = [&](const layout::Member* m) {
            const bool fromBytes = m->merge() ? m->planes.sampleBytes() == 1 : m->image.sampleBytes() == 1;
            const bool q12 = m->planes.sample == SampleKind::S16Q12;
            const Depth depth = q12               ? (fromBytes ? Depth::ByteToQ12 : Depth::Q12ToByte)
                                : !m->takesRanges ? Depth::Same
                                : fromBytes       ? Depth::ByteToFloat
                                                  : Depth::FloatToByte;
            const bool refusesFlags = std::any_of(m->checks.begin(), m->checks.end(), [](const CheckStep& step) {
                return step.check == Check::FlagsOutside;
            });
            std::vector<int> channels;
            for (size_t k = 0; k < m->planeCount(); ++k) channels.push_back(static_cast<int>(m->planeChannel(k)));
            const std::string name = std::string(m->name).substr(std::string("QuorinConvert_").size());
            all.push_back({name, m->merge(), depth, m->image.channels, m->planes.sampleBytes(), m->image.pixelBytes(),
                           channels, m->alphaPlaneOptional, m->requiredPlanesRowBytesOnly, refusesFlags,
                           [m](const Quorin_Buffer* image, const Planes& planes, const float* max, const float* min,
                               Quorin_Flags flags) {
                               layout::Call call{{}, kAlphaByte, kAlphaFloat, max, min, flags};
                               call.buffers[m->imageArgument()] = image;
                               for (size_t k = 0; k < m->planeCount(); ++k)
                                   call.buffers[m->planeArgument(k)] = planes[k];
                               return m->invoke(call);
                           }});
        };
        for (const layout::Member* m : layout::kLayoutMembers) add(m);
        for (const layout::Member* m : layout::kQ12Members) add(m);
        return all;
    }();
    return members;
}

}  // namespace quorin::test
