// Planar and interleaved layouts: the per-channel rules and the scalar row
// kernels. Everything here is the reference the vector kernels must match
// byte for byte.
//
// A row kernel moves `n` pixels between C planes and one interleaved row.
// Planes are given in channel-position order (plane c feeds or receives
// channel c of each pixel). On the way every value goes through a channel
// transform: a plain copy, 8-bit to float through a per-call table, or float
// to 8-bit through the range rule.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Core/CanonicalNaN.h"
#include "Core/KernelPair.h"

namespace quorin::layout {

// ---- The per-channel rules ---------------------------------------------------

// 8-bit to float over [min, max]: the product v * (max - min) in single
// precision, the division by 255 and the addition of min in double, one
// rounding to float at the end.
inline float ByteToFloatRule(uint8_t v, float max, float min) {
    const float product = static_cast<float>(v) * (max - min);
    return static_cast<float>(static_cast<double>(min) + static_cast<double>(product) / 255.0);
}

// Float to 8-bit over [min, min + range], all in single precision:
// t = ((f - min) * 255) / range + 0.5; below 0 (and NaN) gives 0, otherwise
// min(t, 255) truncated. Values below the range give 0, values above 255, and
// the result rounds half up. A zero range divides by zero: nothing guards it.
inline uint8_t FloatToByteRule(float f, float min, float range) {
    const float t = ((f - min) * 255.0f) / range + 0.5f;
    if (!(t >= 0.0f)) return 0;  // t < 0, or NaN
    return static_cast<uint8_t>(std::min(t, 255.0f));
}

// ---- Channel transforms ----------------------------------------------------------
// Each has From and To (the plane and pixel sample types for a merge; the
// other way round for a split) and operator()(channel, value). Ranges are the
// caller's maxFloat / minFloat: four floats indexed by channel position.

struct Ranges {
    const float* max = nullptr;
    const float* min = nullptr;
};

// Same depth: the value as is. Float formats move as 32-bit words, so every
// bit pattern (NaN payloads included) arrives unchanged.
template <class T>
struct Copy {
    using From = T;
    using To = T;
    static constexpr bool kTakesRanges = false;
    explicit Copy(const Ranges& = {}) {}
    static constexpr bool vectorKernelsApply() { return true; }
    T operator()(size_t, T v) const { return v; }
};

// 8-bit to float. Every result depends only on the byte and the channel's
// range, so the scalar kernel reads one 256-entry table per channel position,
// built once per call with the rule: exact by construction.
//
// The vector kernels compute instead. The rule's own steps need a division
// in double precision; the same steps with the division by 255 in single
// precision (product, quotient and sum each rounded to float) are much
// cheaper, and when they give every one of the 256 table entries of every
// channel (as they do for the usual ranges starting at 0) they are the same
// function, so `singlePrecisionExact` lets the vector kernels take them.
//
// Ranges that are NaN or infinite can give NaN entries. The table holds them
// as the canonical NaN, and such a call runs the scalar kernel: which payload
// a computed NaN keeps depends on operand order, which differs between the
// compiled scalar rule and the vector steps.
struct ByteToFloat {
    using From = uint8_t;
    using To = float;
    static constexpr bool kTakesRanges = true;
    float min[4];
    float range[4];  // max - min in single precision, as the rule's product uses it
    bool singlePrecisionExact = true;
    bool givesNaN = false;
    alignas(64) float table[4][256];

    static float SinglePrecisionSteps(uint8_t v, float min, float range) {
        return min + (static_cast<float>(v) * range) / 255.0f;
    }

    explicit ByteToFloat(const Ranges& ranges) {
        for (size_t c = 0; c < 4; ++c) {
            min[c] = ranges.min[c];
            range[c] = ranges.max[c] - ranges.min[c];
            for (unsigned v = 0; v < 256; ++v) {
                const float exact = ByteToFloatRule(static_cast<uint8_t>(v), ranges.max[c], ranges.min[c]);
                const float single = SinglePrecisionSteps(static_cast<uint8_t>(v), min[c], range[c]);
                table[c][v] = CanonicalNaN(exact);
                givesNaN = givesNaN || std::isnan(exact);
                singlePrecisionExact = singlePrecisionExact && std::memcmp(&exact, &single, sizeof exact) == 0;
            }
        }
    }
    bool vectorKernelsApply() const { return !givesNaN; }
    float operator()(size_t c, uint8_t v) const { return table[c][v]; }
};

// Float to 8-bit: the rule per value, with max - min taken once per call
// (the same single-precision difference the rule computes for every pixel).
// When every range is a power of two whose reciprocal is a normal float,
// multiplying by that reciprocal rounds the same exact value the division
// does, once, so it gives the same bits: `reciprocal` is then set for the
// vector kernels (and all zero otherwise).
struct FloatToByte {
    using From = float;
    using To = uint8_t;
    static constexpr bool kTakesRanges = true;
    float min[4];
    float range[4];
    float reciprocal[4] = {};

    static bool PowerOfTwoWithNormalReciprocal(float f) {
        uint32_t bits;
        std::memcpy(&bits, &f, sizeof bits);
        const uint32_t exponent = (bits >> 23) & 0xFF;
        return (bits & 0x7FFFFF) == 0 && exponent >= 1 && exponent <= 253;
    }

    explicit FloatToByte(const Ranges& ranges) {
        bool exactReciprocals = true;
        for (size_t c = 0; c < 4; ++c) {
            min[c] = ranges.min[c];
            range[c] = ranges.max[c] - ranges.min[c];
            exactReciprocals = exactReciprocals && PowerOfTwoWithNormalReciprocal(range[c]);
        }
        for (size_t c = 0; exactReciprocals && c < 4; ++c) reciprocal[c] = 1.0f / range[c];
    }
    static constexpr bool vectorKernelsApply() { return true; }  // bytes: a NaN gives 0 either way
    bool multiplies() const { return reciprocal[0] != 0.0f; }
    bool unitRangesFromZero() const {
        for (size_t c = 0; c < 4; ++c)
            if (range[c] != 1.0f || min[c] != 0.0f) return false;
        return true;
    }
    uint8_t operator()(size_t c, float f) const { return FloatToByteRule(f, min[c], range[c]); }
};

// ---- Row kernels -------------------------------------------------------------------

// Planes into C-channel pixels: channel c comes from plane c through the
// transform, or is `fill` when plane c is null.
//
// `stream` asks for streaming stores, which bypass the caches: for
// destinations too large to be read back from them, where they also spare
// the memory system reading each destination line in first. The vector
// kernels use them where the destination's alignment allows, and fence them
// before returning; the scalar kernels ignore the request.
template <size_t C, class Transform>
using MergeRowKernel = void (*)(const typename Transform::From* const* planes, typename Transform::To fill,
                                const Transform& transform, typename Transform::To* pixels, size_t n, bool stream);

// When a split may stream. Streaming stores that leave each plane's lines
// partly written a step at a time (narrower vectors than a cache line, one
// per plane) lose to plain stores while one processor works: ARGB8888 into
// four byte planes with AVX2 on Zen 3, 4096 x 4096, 1977 megapixels/s
// against 2362 plain, 16-bit channels 1051 against 1190. With two
// processors sharing the memory, sparing it the destination lines' reads
// wins instead: 3283 against 3096, 1680 against 1470. Splits that widen
// (bytes into float planes, writing four times what they read) stream on
// one processor too: 708-764 against 556-602 plain.
enum class SplitStreaming : uint8_t {
    kNever,           // the destination fits the caches
    kWholeLinesOnly,  // one processor: only stores that fill whole lines stream
    kAlways,          // the call is split over processors
};

// C-channel pixels into planes: plane c receives channel c through the
// transform; a null plane skips its channel.
template <size_t C, class Transform>
using SplitRowKernel = void (*)(const typename Transform::From* pixels, typename Transform::To* const* planes,
                                const Transform& transform, size_t n, SplitStreaming stream);

template <size_t C, class Transform>
void MergeRowScalar(const typename Transform::From* const* planes, typename Transform::To fill,
                    const Transform& transform, typename Transform::To* pixels, size_t n, bool = false) {
    for (size_t i = 0; i < n; ++i)
        for (size_t c = 0; c < C; ++c) pixels[i * C + c] = planes[c] ? transform(c, planes[c][i]) : fill;
}

template <size_t C, class Transform>
void SplitRowScalar(const typename Transform::From* pixels, typename Transform::To* const* planes,
                    const Transform& transform, size_t n, SplitStreaming = SplitStreaming::kNever) {
    for (size_t i = 0; i < n; ++i)
        for (size_t c = 0; c < C; ++c)
            if (planes[c]) planes[c][i] = transform(c, pixels[i * C + c]);
}

// The kernel pairs of the shapes the family uses: the scalar kernels above
// and their vector twins (LayoutKernels.cpp).
template <size_t C, class Transform>
struct LayoutKernels;

template <>
struct LayoutKernels<4, Copy<uint8_t>> {
    static const KernelPair<MergeRowKernel<4, Copy<uint8_t>>> merge;
    static const KernelPair<SplitRowKernel<4, Copy<uint8_t>>> split;
};
template <>
struct LayoutKernels<3, Copy<uint8_t>> {
    static const KernelPair<MergeRowKernel<3, Copy<uint8_t>>> merge;
    static const KernelPair<SplitRowKernel<3, Copy<uint8_t>>> split;
};
template <>
struct LayoutKernels<4, Copy<uint16_t>> {
    static const KernelPair<MergeRowKernel<4, Copy<uint16_t>>> merge;
    static const KernelPair<SplitRowKernel<4, Copy<uint16_t>>> split;
};
template <>
struct LayoutKernels<3, Copy<uint16_t>> {
    static const KernelPair<MergeRowKernel<3, Copy<uint16_t>>> merge;
    static const KernelPair<SplitRowKernel<3, Copy<uint16_t>>> split;
};
template <>
struct LayoutKernels<4, Copy<uint32_t>> {
    static const KernelPair<MergeRowKernel<4, Copy<uint32_t>>> merge;
    static const KernelPair<SplitRowKernel<4, Copy<uint32_t>>> split;
};
template <>
struct LayoutKernels<3, Copy<uint32_t>> {
    static const KernelPair<MergeRowKernel<3, Copy<uint32_t>>> merge;
    static const KernelPair<SplitRowKernel<3, Copy<uint32_t>>> split;
};
template <>
struct LayoutKernels<4, ByteToFloat> {
    static const KernelPair<MergeRowKernel<4, ByteToFloat>> merge;
    static const KernelPair<SplitRowKernel<4, ByteToFloat>> split;
};
template <>
struct LayoutKernels<4, FloatToByte> {
    static const KernelPair<MergeRowKernel<4, FloatToByte>> merge;
    static const KernelPair<SplitRowKernel<4, FloatToByte>> split;
};

}  // namespace quorin::layout
