// Premultiply and unpremultiply: the per-pixel rules of every depth, and the
// scalar kernels that apply them. The vector kernels (PremultiplyKernels.cpp)
// must give the same bytes as these for every input.
//
// A rule is a small type with
//   Sample            the channel type,
//   FactorOf(a)       what a pixel's alpha becomes once per pixel (the alpha
//                     itself, a clamped alpha, or a reciprocal),
//   Alpha(a)          the alpha written to the destination,
//   Colour(c, f)      one colour channel given the pixel's factor.
// Kernels<Rule> (PremultiplyKernels.h) names each rule's kernel pairs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Core/CanonicalNaN.h"

namespace quorin::premultiply {

// The common case: alpha is the per-pixel factor and is written unchanged.
template <class SampleType, class FactorType>
struct AlphaAsFactor {
    using Sample = SampleType;
    using Factor = FactorType;
    static Factor FactorOf(Sample a) { return a; }
    static Sample Alpha(Sample a) { return a; }
};

// 8-bit: c' = (c * a + 127) / 255. Never exceeds a.
struct Premultiply8 : AlphaAsFactor<uint8_t, uint32_t> {
    static Sample Colour(Sample c, Factor a) { return static_cast<Sample>((c * a + 127u) / 255u); }
};

// 8-bit: 0 when a is 0, else (c * 255 + a / 2) / a saturated at 255 (a colour
// above its alpha saturates; it is not clamped first).
struct Unpremultiply8 : AlphaAsFactor<uint8_t, uint32_t> {
    static Sample Colour(Sample c, Factor a) {
        if (a == 0) return 0;
        return static_cast<Sample>(std::min((c * 255u + (a >> 1)) / a, 255u));
    }
};

// 16-bit unsigned: c' = (c * a + 32767) / 65535 in 32-bit unsigned arithmetic
// (65535 * 65535 + 32767 fits).
struct Premultiply16U : AlphaAsFactor<uint16_t, uint32_t> {
    static Sample Colour(Sample c, Factor a) { return static_cast<Sample>((c * a + 32767u) / 65535u); }
};

// 16-bit unsigned: 0 when a is 0, else (min(c, a) * 65535 + a / 2) / a. Unlike
// the 8-bit rule the colour is clamped to alpha first, so the quotient never
// exceeds 65535.
struct Unpremultiply16U : AlphaAsFactor<uint16_t, uint32_t> {
    static Sample Colour(Sample c, Factor a) {
        if (a == 0) return 0;
        return static_cast<Sample>((std::min<uint32_t>(c, a) * 65535u + (a >> 1)) / a);
    }
};

// Signed 16-bit with 12 fraction bits (4096 = 1.0): alpha is clamped to
// 0..4096 and written clamped; c' = (c * a' + 2048) / 4096 with C's division
// (truncating toward zero), saturated to the int16 range.
struct Premultiply16Q12 {
    using Sample = int16_t;
    using Factor = int32_t;
    static Factor FactorOf(Sample a) { return std::clamp<int32_t>(a, 0, 4096); }
    static Sample Alpha(Sample a) { return static_cast<Sample>(FactorOf(a)); }
    static Sample Colour(Sample c, Factor a) {
        return static_cast<Sample>(std::clamp<int32_t>((c * a + 2048) / 4096, INT16_MIN, INT16_MAX));
    }
};

// 16Q12: 0 when a is 0, else (min(c, a) * 4096 + a / 2) / a, signed, both
// divisions truncating toward zero; alpha copied unclamped. The quotient is
// stored as a 16-bit channel, that is modulo 2^16: no saturation is part of
// this rule (only data that is not valid premultiplied 16Q12, a negative
// colour over a small alpha, can leave the int16 range).
struct Unpremultiply16Q12 : AlphaAsFactor<int16_t, int32_t> {
    static Sample Colour(Sample c, Factor a) {
        if (a == 0) return 0;
        return static_cast<Sample>((std::min<int32_t>(c, a) * 4096 + a / 2) / a);
    }
};

// Float: c' = c * a in single precision, no clamp; a NaN product is written
// as the canonical NaN.
struct PremultiplyF : AlphaAsFactor<float, float> {
    static Sample Colour(Sample c, Factor a) { return CanonicalNaN(c * a); }
};

// Float: one reciprocal per pixel, 0 for an alpha that compares equal to 0
// (either sign), then one multiplication per channel; a NaN product is
// written as the canonical NaN.
struct UnpremultiplyF : AlphaAsFactor<float, float> {
    static Factor FactorOf(Sample a) { return a == 0.0f ? 0.0f : 1.0f / a; }
    static Sample Colour(Sample c, Factor r) { return CanonicalNaN(c * r); }
};

// ---- Scalar kernels ---------------------------------------------------------
// Each has the signature of its vector twin (PremultiplyKernels.h); the
// `stream` flag is only for the twin's stores.

// Four-channel pixels with alpha in channel kAlpha. Each pixel is read whole
// before it is written, so dst may equal src.
template <class Rule, size_t kAlpha>
void ApplyToPixels(const typename Rule::Sample* src, typename Rule::Sample* dst, size_t pixels) {
    using Sample = typename Rule::Sample;
    for (size_t i = 0; i < pixels; ++i, src += 4, dst += 4) {
        const Sample a = src[kAlpha];
        const typename Rule::Factor factor = Rule::FactorOf(a);
        Sample out[4];
        for (size_t c = 0; c < 4; ++c) out[c] = c == kAlpha ? Rule::Alpha(a) : Rule::Colour(src[c], factor);
        for (size_t c = 0; c < 4; ++c) dst[c] = out[c];
    }
}

// The same with the alpha position (any of the four) known only at run time.
template <class Rule>
void ApplyToPixels(const typename Rule::Sample* src, typename Rule::Sample* dst, size_t pixels, size_t alpha,
                   bool /*stream*/) {
    switch (alpha) {
        case 0: return ApplyToPixels<Rule, 0>(src, dst, pixels);
        case 1: return ApplyToPixels<Rule, 1>(src, dst, pixels);
        case 2: return ApplyToPixels<Rule, 2>(src, dst, pixels);
        default: return ApplyToPixels<Rule, 3>(src, dst, pixels);
    }
}

// A colour plane with a separate alpha plane; dst may equal either source.
template <class Rule>
void ApplyToPlane(const typename Rule::Sample* src, const typename Rule::Sample* alpha, typename Rule::Sample* dst,
                  size_t count, bool /*stream*/) {
    for (size_t i = 0; i < count; ++i) dst[i] = Rule::Colour(src[i], Rule::FactorOf(alpha[i]));
}

}  // namespace quorin::premultiply
