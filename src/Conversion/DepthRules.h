// Depth conversions: the per-sample rules and the scalar kernels, the
// reference every vector kernel must match byte for byte.
//
// The 12-bit fixed-point conversions (Planar16Q12, 4096 = 1.0) are channel
// transforms of the planar/interleaved layouts (LayoutRules.h): their members
// run the layouts' checks, split and row walk with these transforms. The
// 16-bit unsigned plane conversions go one plane into another.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Conversion/LayoutRules.h"
#include "Core/KernelPair.h"

namespace quorin::layout {

// ---- The per-sample rules ----------------------------------------------------------

// Q12 to 8 bits: negative values give 0; otherwise the value clamped to 4096,
// scaled by 255 and rounded half up at the 12th bit.
constexpr uint8_t Q12ToByteRule(int16_t v) {
    if (v < 0) return 0;
    const uint32_t clamped = std::min<uint32_t>(static_cast<uint32_t>(v), 4096u);
    return static_cast<uint8_t>((clamped * 255u + 2048u) >> 12);
}

// 8 bits to Q12: (v * 4096 + 127) / 255, truncating; 255 gives 4096.
constexpr int16_t ByteToQ12Rule(uint8_t v) { return static_cast<int16_t>((v * 4096u + 127u) / 255u); }

// 16-bit unsigned to 8 bits and back.
constexpr uint8_t Word16ToByteRule(uint16_t v) { return static_cast<uint8_t>((v * 255u + 32767u) / 65535u); }
constexpr uint16_t ByteToWord16Rule(uint8_t v) { return static_cast<uint16_t>((v * 65535u + 127u) / 255u); }

// ---- Channel transforms of the layouts ------------------------------------------------

// A transform that is one rule per sample, the same for every channel.
template <class F, class T, T (*kRule)(F)>
struct SampleRule {
    using From = F;
    using To = T;
    static constexpr bool kTakesRanges = false;
    explicit SampleRule(const Ranges& = {}) {}
    static constexpr bool vectorKernelsApply() { return true; }
    T operator()(size_t, F v) const { return kRule(v); }
};

struct Q12ToByte : SampleRule<int16_t, uint8_t, &Q12ToByteRule> {
    using SampleRule::SampleRule;
};
struct ByteToQ12 : SampleRule<uint8_t, int16_t, &ByteToQ12Rule> {
    using SampleRule::SampleRule;
};

// The vector kernels convert whole vectors and the scalar rule takes the
// tail; when a row's planes and pixels share bytes, the scalar rule takes the
// whole row, so the result is the one its pixel-by-pixel order gives.
inline bool BytesOverlap(const void* a, size_t aBytes, const void* b, size_t bBytes) {
    const auto x = reinterpret_cast<uintptr_t>(a), y = reinterpret_cast<uintptr_t>(b);
    return aBytes != 0 && bBytes != 0 && x < y + bBytes && y < x + aBytes;
}

template <size_t C, class From, class To>
bool RowsOverlap(const From* const* planes, const To* pixels, size_t n) {
    for (size_t c = 0; c < C; ++c)
        if (planes[c] && BytesOverlap(planes[c], n * sizeof(From), pixels, n * C * sizeof(To))) return true;
    return false;
}
template <size_t C, class From, class To>
bool RowsOverlap(const From* pixels, To* const* planes, size_t n) {
    for (size_t c = 0; c < C; ++c)
        if (planes[c] && BytesOverlap(planes[c], n * sizeof(To), pixels, n * C * sizeof(From))) return true;
    return false;
}

template <>
struct LayoutKernels<4, Q12ToByte> {
    static const KernelPair<MergeRowKernel<4, Q12ToByte>> merge;
};
template <>
struct LayoutKernels<3, Q12ToByte> {
    static const KernelPair<MergeRowKernel<3, Q12ToByte>> merge;
};
template <>
struct LayoutKernels<4, ByteToQ12> {
    static const KernelPair<SplitRowKernel<4, ByteToQ12>> split;
};
template <>
struct LayoutKernels<3, ByteToQ12> {
    static const KernelPair<SplitRowKernel<3, ByteToQ12>> split;
};

// ---- One plane into another ------------------------------------------------------------

template <class From, class To>
using PlaneRowKernel = void (*)(const From* src, To* dst, size_t n);

inline void Word16ToByteScalar(const uint16_t* src, uint8_t* dst, size_t n) {
    for (size_t i = 0; i < n; ++i) dst[i] = Word16ToByteRule(src[i]);
}
inline void ByteToWord16Scalar(const uint8_t* src, uint16_t* dst, size_t n) {
    for (size_t i = 0; i < n; ++i) dst[i] = ByteToWord16Rule(src[i]);
}

struct DepthKernels {
    static const KernelPair<PlaneRowKernel<uint16_t, uint8_t>> word16ToByte;
    static const KernelPair<PlaneRowKernel<uint8_t, uint16_t>> byteToWord16;
};

}  // namespace quorin::layout
