// The planar and interleaved conversions described as data, so one test can
// drive all of them: which channel each plane argument feeds, what happens on
// the way (copy, 8-bit to float, float to 8-bit), and what fills a channel
// without a plane. The expected values are computed here from the written
// rules, independently of the library's tables and kernels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "quorin/Conversion.h"

namespace quorin::test {

enum class Depth { Same, ByteToFloat, FloatToByte, Q12ToByte, ByteToQ12 };

// The constants and ranges every member call in the tests uses. Channel 2 has
// min > max; channel 3 maps bytes onto 0..255.
inline constexpr uint8_t kAlphaByte = 0xC3;
inline constexpr float kAlphaFloat = 0.8125f;
inline constexpr float kMax[4] = {1.0f, 2.0f, -1.0f, 255.0f};
inline constexpr float kMin[4] = {0.0f, -2.0f, 1.0f, 0.0f};

using Planes = std::vector<const Quorin_Buffer*>;
// Calls the member; `max` and `min` reach only the members that take ranges.
using Invoke = std::function<Quorin_Error(const Quorin_Buffer* image, const Planes& planes, const float* max,
                                          const float* min, Quorin_Flags flags)>;

struct Member {
    std::string name;
    bool merge;                     // planes into pixels (else pixels into planes)
    Depth depth;
    size_t channels;                // of the interleaved image
    size_t planeBytes, pixelBytes;  // bytes per plane sample / per interleaved pixel
    std::vector<int> planeChannel;  // channel of each plane argument, in argument order
    bool alphaPlaneOptional;        // plane argument 0 may be null: alpha then comes from 0
    bool destRowBytesUnchecked;     // the 8-bit interleave worker: neither the alpha plane's nor dest's rowBytes
    bool refusesOtherFlags;         // flags outside single-threaded and the size query get -21775
    Invoke invoke;

    bool takesRanges() const { return depth == Depth::ByteToFloat || depth == Depth::FloatToByte; }

    size_t interleavedSample() const { return pixelBytes / channels; }
    // Bytes of the converted sample of channel c, from the source sample's bytes.
    void convert(int c, const uint8_t* from, uint8_t* to) const;
    // Bytes of the merged channel that has no plane (alphaPlaneMissing: ARGB form with a null alpha plane).
    std::vector<uint8_t> constantChannel(bool alphaPlaneMissing) const;
};

const std::vector<Member>& LayoutMembers();

// The rules as the description writes them.
float ExpectedByteToFloat(uint8_t v, float max, float min);
uint8_t ExpectedFloatToByte(float f, float max, float min);
// The 12-bit fixed-point rules, computed in double precision apart from the
// library's integer arithmetic.
uint8_t ExpectedQ12ToByte(int16_t v);
int16_t ExpectedByteToQ12(uint8_t v);

}  // namespace quorin::test
