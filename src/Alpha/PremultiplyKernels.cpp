// Vector kernels of the premultiply and unpremultiply rules (PremultiplyRules.h),
// compiled for every Highway target and chosen at run time. Each gives the
// same bytes as its scalar rule for every input.
//
// Layouts. Interleaved pixels stay where they are in whole vectors; nothing
// moves across 128-bit blocks:
//  - 8-bit: one pixel per u32 lane. Its even bytes (channels 0, 2) and odd
//    bytes (1, 3) become u16 lanes, multiplied there by the pixel's alpha,
//    which is spread into both u16 halves of the lane. (The AVX2 unpremultiply
//    widens each channel to the whole lane and divides in single precision.)
//  - 16-bit: one pixel per u64 lane; its even and odd channels become u32
//    lanes beside a copy of the alpha in both u32 lanes of the pixel.
//  - float: one pixel per 128-bit block; alpha is broadcast within the block.
// The alpha channel is computed along with the colour and then replaced by
// the alpha the rule writes. Alpha may sit in any of the four channels.
// Every kernel is a body for the core row loop (Core/RowLoop-inl.h): one
// vector of bytes per step, the ends on padded copies, streaming stores for
// large destinations (except the 8-bit unpremultiply, measured faster with
// plain ones).
#include <cstdint>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Alpha/PremultiplyKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Alpha/PremultiplyKernels.h"
#include "Alpha/PremultiplyMath-inl.h"
#include "Core/CanonicalNaN-inl.h"
#include "Core/Intrinsics-inl.h"
#include "Core/Opaque.h"
#include "Core/RowLoop-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using premultiply::Premultiply16Q12;
using premultiply::Premultiply16U;
using premultiply::Premultiply8;
using premultiply::PremultiplyF;
using premultiply::Unpremultiply16Q12;
using premultiply::Unpremultiply16U;
using premultiply::Unpremultiply8;
using premultiply::UnpremultiplyF;

namespace {

using Bytes = hn::Vec<hn::ScalableTag<uint8_t>>;

// One body per rule: a template over the alpha channel for interleaved
// pixels, and a plane body for the rules with planar members. The one-lane HWY_SCALAR target
// cannot hold a pixel: there the scalar rule serves and the bodies are only
// declared.
template <size_t kAlpha> struct Premultiply8Body;
template <size_t kAlpha> struct Unpremultiply8Body;
template <size_t kAlpha> struct Premultiply16UBody;
template <size_t kAlpha> struct Unpremultiply16UBody;
template <size_t kAlpha> struct Premultiply16Q12Body;
template <size_t kAlpha> struct Unpremultiply16Q12Body;
template <size_t kAlpha> struct PremultiplyFBody;
template <size_t kAlpha> struct UnpremultiplyFBody;
struct Premultiply8PlaneBody;
struct Unpremultiply8PlaneBody;
struct PremultiplyFPlaneBody;
struct UnpremultiplyFPlaneBody;

template <class Rule, template <size_t> class Body>
void RunPixels(const typename Rule::Sample* src, typename Rule::Sample* dst, size_t pixels, size_t alpha,
               bool stream) {
#if HWY_TARGET == HWY_SCALAR
    premultiply::ApplyToPixels<Rule>(src, dst, pixels, alpha, stream);
#else
    switch (alpha) {
        case 0: return ForEachVector(dst, pixels * 4, 4, stream, Body<0>(), src);
        case 1: return ForEachVector(dst, pixels * 4, 4, stream, Body<1>(), src);
        case 2: return ForEachVector(dst, pixels * 4, 4, stream, Body<2>(), src);
        default: return ForEachVector(dst, pixels * 4, 4, stream, Body<3>(), src);
    }
#endif
}

template <class Rule, class Body>
void RunPlane(const typename Rule::Sample* src, const typename Rule::Sample* alpha, typename Rule::Sample* dst,
              size_t count, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    premultiply::ApplyToPlane<Rule>(src, alpha, dst, count, stream);
#else
    ForEachVector(dst, count, 1, stream, Body(), src, alpha);
#endif
}

#if HWY_TARGET != HWY_SCALAR

using D8 = hn::ScalableTag<uint8_t>;
using D16 = hn::ScalableTag<uint16_t>;
using D32 = hn::ScalableTag<uint32_t>;
using D64 = hn::ScalableTag<uint64_t>;
using DI32 = hn::ScalableTag<int32_t>;
using DF = hn::ScalableTag<float>;
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;
using V64 = hn::Vec<D64>;
using VI32 = hn::Vec<DI32>;

// Replaces the bits set in `keep` of `computed` by those of `original`.
template <class V>
HWY_INLINE V Keep(V keep, V original, V computed) {
    return hn::Or(hn::And(original, keep), hn::AndNot(keep, computed));
}

// u32 value as float (exact below 2^24).
HWY_INLINE hn::Vec<DF> ToFloat(V32 v) { return hn::ConvertTo(DF(), hn::BitCast(DI32(), v)); }

// ---- 8-bit pixels: one per u32 lane -----------------------------------------

// Byte shuffle within each 16-byte block (four pixels): alpha (byte kAlpha of
// each pixel) zero-extended into both u16 halves of the pixel's lane.
template <size_t kAlpha>
struct SpreadAlpha8 {
    static constexpr uint8_t k = kAlpha, z = 0x80;
    alignas(16) static constexpr uint8_t kIndices[16] = {k,     z, k,     z, k + 4,  z, k + 4,  z,
                                                         k + 8, z, k + 8, z, k + 12, z, k + 12, z};
};

template <size_t kAlpha>
HWY_INLINE V16 AlphaBothHalves(hn::Vec<D8> pixels) {
    return hn::BitCast(D16(), hn::TableLookupBytesOr0(pixels, hn::LoadDup128(D8(), SpreadAlpha8<kAlpha>::kIndices)));
}

// Channels 0 and 2 (even) and 1 and 3 (odd) of each pixel as u16 lanes, and back.
HWY_INLINE V16 EvenBytes(V32 pixels) { return hn::And(hn::BitCast(D16(), pixels), hn::Set(D16(), 0xFF)); }
HWY_INLINE V16 OddBytes(V32 pixels) { return hn::ShiftRight<8>(hn::BitCast(D16(), pixels)); }
HWY_INLINE V32 JoinBytes(V16 even, V16 odd) { return hn::BitCast(D32(), hn::Or(even, hn::ShiftLeft<8>(odd))); }

template <size_t kAlpha>
HWY_INLINE V32 AlphaByte() { return hn::Set(D32(), 0xFFu << (8 * kAlpha)); }

template <size_t kAlpha>
struct Premultiply8Body {
    Bytes operator()(const uint8_t* src) const {
        const D8 d8;
        const auto bytes = hn::LoadU(d8, src);
        const V32 pixels = hn::BitCast(D32(), bytes);
        const V16 alpha = AlphaBothHalves<kAlpha>(bytes);
        // 255 in alpha's own position: (a * 255 + 127) / 255 gives back a.
        const V16 full = hn::BitCast(D16(), AlphaByte<kAlpha>());
        const V16 evenFactor = hn::Or(alpha, hn::And(full, hn::Set(D16(), 0xFF)));
        const V16 oddFactor = hn::Or(alpha, hn::ShiftRight<8>(full));
        const V16 even = DivideBy255Rounded(hn::Mul(EvenBytes(pixels), evenFactor));
        const V16 odd = DivideBy255Rounded(hn::Mul(OddBytes(pixels), oddFactor));
        return hn::BitCast(D8(), JoinBytes(even, odd));
    }
};

#if HWY_TARGET != HWY_AVX2
// (min(c, a) * 255 + a / 2) / a for u16 lanes, given a, d = max(a, 1), d - 1
// and the reciprocal of d (DivideByAlpha, whose dividends may reach 255.5 d).
// min(c, a) keeps the quotient within 255, which is also the rule's result
// for a colour at or above its alpha; alpha 0 gives 0 through divisor 1.
HWY_INLINE V16 Unpremultiply8Quotient(V16 colour, V16 alpha, V16 divisor, V16 belowDivisor, V16 reciprocal) {
    // Opaque: GCC turns a multiplication by 255 into a shift and a
    // subtraction, one instruction more than the multiplication.
    const V16 n = hn::Add(hn::Mul(hn::Min(colour, alpha), Opaque(hn::Set(D16(), 255))), hn::ShiftRight<1>(alpha));
    return DivideByAlpha(n, divisor, belowDivisor, reciprocal);
}

template <size_t kAlpha>
struct Unpremultiply8Body {
    Bytes operator()(const uint8_t* src) const {
        const D8 d8;
        const auto bytes = hn::LoadU(d8, src);
        const V32 pixels = hn::BitCast(D32(), bytes);
        const V16 alpha = AlphaBothHalves<kAlpha>(bytes);
        const V16 divisor = hn::Max(alpha, hn::Set(D16(), 1));
        const V16 below = hn::SaturatedSub(alpha, hn::Set(D16(), 1));
        const V16 reciprocal = ReciprocalOfAlpha(divisor);
        const V16 even = Unpremultiply8Quotient(EvenBytes(pixels), alpha, divisor, below, reciprocal);
        const V16 odd = Unpremultiply8Quotient(OddBytes(pixels), alpha, divisor, below, reciprocal);
        // One byte blend (AND, AND-NOT and OR before it): 7 % of the AVX2
        // kernel's time in the first-level cache.
        return hn::IfThenElse(hn::MaskFromVec(hn::BitCast(d8, AlphaByte<kAlpha>())), bytes,
                              hn::BitCast(d8, JoinBytes(even, odd)));
    }
};

#else
// Channel k of each pixel zero-extended into the pixel's u32 lane: the last
// by a shift, the first by a mask, a middle one by one byte shuffle (a shift
// and a mask would take two instructions).
template <size_t k>
struct ChannelToLane8 {
    static constexpr uint8_t z = 0x80;
    alignas(16) static constexpr uint8_t kIndices[16] = {k,     z, z, z, k + 4,  z, z, z,
                                                         k + 8, z, z, z, k + 12, z, z, z};
};

template <size_t k>
HWY_INLINE V32 Channel8(V32 pixels) {
    if constexpr (k == 3) return hn::ShiftRight<24>(pixels);
    else if constexpr (k == 0) return hn::And(pixels, hn::Set(D32(), 0xFFu));
    else
        return hn::BitCast(D32(), hn::TableLookupBytesOr0(hn::BitCast(D8(), pixels),
                                                          hn::LoadDup128(D8(), ChannelToLane8<k>::kIndices)));
}

// One pixel per u32 lane, in single precision: q = trunc(c s + 1/2) with
// s = 255 / (a - d), d = 2^-12, every operation rounded. For a > 0 this is
// the rule's (c * 255 + a / 2) / a: for whole numbers floor((255 c + a / 2) / a)
// equals floor((255 c + floor(a / 2)) / a), which is floor(t) for
// t = 255 c / a + 1/2, a multiple of 1 / (2 a). Lowering the divisor by d
// raises t by 255 c d / (a (a - d)), under 1 / (2 a) for c <= a, so never to
// the next multiple, yet by more than the three roundings (each within
// 2^-24 of t) can take from a t that is a whole number. The tests try every
// colour with every alpha; any d from 1.5e-5 to 2e-3 gives the rule's
// bytes. A colour above its alpha only raises q past 255, which saturates
// as in the rule. Alpha 0 gives s = -255 x 2^12 and q <= 0 for every
// colour: the rule's 0, with no infinity or NaN. Every q lies far inside
// the int32 range, and the pack saturates each to 0..255. Against the 16-bit
// division with its exact correction: no multiplication of integers, one
// division per eight pixels instead of per sixteen slots. Zen 3, 1024 x 1024
// ARGB8888 single-threaded, 41 interleaved calls each (medians): 532 us
// against 613 for the 16-bit division (libyuv's unattenuate 589). The other
// targets keep the 16-bit division: on SSE4, where the conversion and the
// pack take several instructions each, this body measured 519 megapixels/s
// against 746; AVX-512 was not measured.
template <size_t kAlpha>
struct Unpremultiply8Body {
    Bytes operator()(const uint8_t* src) const {
        const DF df;
        const DI32 di;
        const V32 pixels = hn::BitCast(D32(), hn::LoadU(D8(), src));
        const V32 alpha = Channel8<kAlpha>(pixels);
        const auto scale = hn::Div(hn::Set(df, 255.0f), hn::Sub(ToFloat(alpha), hn::Set(df, 1.0f / 4096)));
        const auto channel = [&](auto k) {
            if constexpr (k == kAlpha) return hn::BitCast(di, alpha);
            else return TruncateInRange(di, hn::Add(hn::Mul(ToFloat(Channel8<k>(pixels)), scale), hn::Set(df, 0.5f)));
        };
        return hn::BitCast(D8(), PackClampedPixelBytes(di, channel(std::integral_constant<size_t, 0>()),
                                                        channel(std::integral_constant<size_t, 1>()),
                                                        channel(std::integral_constant<size_t, 2>()),
                                                        channel(std::integral_constant<size_t, 3>())));
    }
};
#endif  // HWY_TARGET != HWY_AVX2

struct Premultiply8PlaneBody {
    Bytes operator()(const uint8_t* src, const uint8_t* alpha) const {
        const D8 d8;
        const V32 c = hn::BitCast(D32(), hn::LoadU(d8, src));
        const V32 a = hn::BitCast(D32(), hn::LoadU(d8, alpha));
        const V16 even = DivideBy255Rounded(hn::Mul(EvenBytes(c), EvenBytes(a)));
        const V16 odd = DivideBy255Rounded(hn::Mul(OddBytes(c), OddBytes(a)));
        return hn::BitCast(D8(), JoinBytes(even, odd));
    }
};

// (min(c, a) * 255 + a / 2) / max(a, 1) for u32 lanes below 256, by a single-
// precision division: numerator and divisor are exact, and the correctly
// rounded quotient (below 256) is closer to the true one than 1 / a, so its
// truncation is the integer quotient.
HWY_INLINE V32 Unpremultiply8PlaneQuotient(V32 c, V32 a) {
    const D32 d32;
    const V32 m = hn::Min(c, a);
    const V32 n = hn::Add(hn::Sub(hn::ShiftLeft<8>(m), m), hn::ShiftRight<1>(a));
    const auto q = hn::Div(ToFloat(n), ToFloat(hn::Max(a, hn::Set(d32, 1u))));
    return hn::BitCast(d32, hn::ConvertTo(DI32(), q));
}

struct Unpremultiply8PlaneBody {
    Bytes operator()(const uint8_t* src, const uint8_t* alpha) const {
        const D8 d8;
        const D32 d32;
        const V32 c = hn::BitCast(d32, hn::LoadU(d8, src));
        const V32 a = hn::BitCast(d32, hn::LoadU(d8, alpha));
        const V32 byte = hn::Set(d32, 0xFFu);
        const V32 q0 = Unpremultiply8PlaneQuotient(hn::And(c, byte), hn::And(a, byte));
        const V32 q1 = Unpremultiply8PlaneQuotient(hn::And(hn::ShiftRight<8>(c), byte),
                                                   hn::And(hn::ShiftRight<8>(a), byte));
        const V32 q2 = Unpremultiply8PlaneQuotient(hn::And(hn::ShiftRight<16>(c), byte),
                                                   hn::And(hn::ShiftRight<16>(a), byte));
        const V32 q3 = Unpremultiply8PlaneQuotient(hn::ShiftRight<24>(c), hn::ShiftRight<24>(a));
        const V32 joined = hn::Or(hn::Or(q0, hn::ShiftLeft<8>(q1)), hn::Or(hn::ShiftLeft<16>(q2), hn::ShiftLeft<24>(q3)));
        return hn::BitCast(D8(), joined);
    }
};

// ---- 16-bit pixels: one per u64 lane ----------------------------------------

// The alpha of each pixel, zero-extended, in both u32 lanes of the pixel.
template <size_t kAlpha>
HWY_INLINE V32 Alpha16(V64 pixels) {
    V64 a = hn::ShiftRight<16 * kAlpha>(pixels);
    if constexpr (kAlpha != 3) a = hn::And(a, hn::Set(D64(), 0xFFFFu));
    return hn::BitCast(D32(), hn::Or(a, hn::ShiftLeft<32>(a)));
}

// The same, sign-extended.
template <size_t kAlpha>
HWY_INLINE VI32 AlphaQ12(V64 pixels) {
    V64 high = hn::ShiftLeft<48 - 16 * kAlpha>(pixels);
    if constexpr (kAlpha != 0) high = hn::And(high, hn::Set(D64(), 0xFFFFull << 48));
    return hn::ShiftRight<16>(hn::BitCast(DI32(), hn::Or(high, hn::ShiftRight<32>(high))));
}

// The bits of alpha's channel, as u32 lanes.
template <size_t kAlpha>
HWY_INLINE V32 AlphaChannel16() { return hn::BitCast(D32(), hn::Set(D64(), 0xFFFFull << (16 * kAlpha))); }

// Channels 0 and 2 (even) and 1 and 3 (odd) of each pixel as u32 lanes, and back
// (keeping the low 16 bits of each).
HWY_INLINE V32 EvenHalves(V32 pixels) { return hn::And(pixels, hn::Set(D32(), 0xFFFFu)); }
HWY_INLINE V32 OddHalves(V32 pixels) { return hn::ShiftRight<16>(pixels); }
HWY_INLINE V32 JoinHalves(V32 even, V32 odd) { return hn::Or(EvenHalves(even), hn::ShiftLeft<16>(odd)); }

template <size_t kAlpha>
struct Premultiply16UBody {
    Bytes operator()(const uint16_t* src) const {
        const D16 d16;
        const V32 pixels = hn::BitCast(D32(), hn::LoadU(d16, src));
        const V32 alpha = Alpha16<kAlpha>(hn::BitCast(D64(), pixels));
        // 65535 in alpha's own position gives back a.
        const V32 full = AlphaChannel16<kAlpha>();
        const V32 even = DivideBy65535Rounded(hn::Mul(EvenHalves(pixels), hn::Or(alpha, EvenHalves(full))));
        const V32 odd = DivideBy65535Rounded(hn::Mul(OddHalves(pixels), hn::Or(alpha, OddHalves(full))));
        return hn::BitCast(D8(), JoinHalves(even, odd));
    }
};

// (min(c, a) * 65535 + a / 2) / max(a, 1) for u32 lanes below 65536, given
// 1 / max(a, 1) in single precision. The float estimate carries four roundings
// of at most 2^-24 each on a quotient below 65536, so it is within 1/64 of the
// true quotient and truncates to it or a neighbour; the exact remainder picks
// the right one.
HWY_INLINE V32 Unpremultiply16UQuotient(V32 c, V32 a, V32 divisor, hn::Vec<DF> reciprocal) {
    const DF df;
    const DI32 di;
    const V32 one = hn::Set(D32(), 1u);
    const V32 m = hn::Min(c, a);
    const V32 half = hn::ShiftRight<1>(a);
    const V32 n = hn::Add(hn::Sub(hn::ShiftLeft<16>(m), m), half);
    const auto estimate = hn::Mul(hn::Add(hn::Mul(ToFloat(m), hn::Set(df, 65535.0f)), ToFloat(half)), reciprocal);
    V32 q = hn::BitCast(D32(), hn::ConvertTo(di, estimate));
    const VI32 remainder = hn::BitCast(di, hn::Sub(n, hn::Mul(q, divisor)));
    q = hn::IfThenElse(hn::RebindMask(D32(), hn::Lt(remainder, hn::Zero(di))), hn::Sub(q, one), q);
    return hn::IfThenElse(hn::RebindMask(D32(), hn::Lt(remainder, hn::BitCast(di, divisor))), q, hn::Add(q, one));
}

template <size_t kAlpha>
struct Unpremultiply16UBody {
    Bytes operator()(const uint16_t* src) const {
        const D16 d16;
        const V32 pixels = hn::BitCast(D32(), hn::LoadU(d16, src));
        const V32 alpha = Alpha16<kAlpha>(hn::BitCast(D64(), pixels));
        const V32 divisor = hn::Max(alpha, hn::Set(D32(), 1u));
        const auto reciprocal = hn::Div(hn::Set(DF(), 1.0f), ToFloat(divisor));
        const V32 even = Unpremultiply16UQuotient(EvenHalves(pixels), alpha, divisor, reciprocal);
        const V32 odd = Unpremultiply16UQuotient(OddHalves(pixels), alpha, divisor, reciprocal);
        return hn::BitCast(D8(), Keep(AlphaChannel16<kAlpha>(), pixels, JoinHalves(even, odd)));
    }
};

// Signed channels 0 and 2 (even) and 1 and 3 (odd) of each pixel as i32 lanes.
HWY_INLINE VI32 EvenSigned(VI32 pixels) { return hn::ShiftRight<16>(hn::ShiftLeft<16>(pixels)); }
HWY_INLINE VI32 OddSigned(VI32 pixels) { return hn::ShiftRight<16>(pixels); }
HWY_INLINE V32 JoinSigned(VI32 even, VI32 odd) { return JoinHalves(hn::BitCast(D32(), even), hn::BitCast(D32(), odd)); }

// (c * a + 2048) / 4096 truncating toward zero: negative sums get 4095 added
// before the arithmetic shift. |c * a + 2048| / 4096 stays within 32767.5
// for a in 0..4096, so the rule's saturation to int16 never acts here.
HWY_INLINE VI32 PremultiplyQ12(VI32 c, VI32 a) {
    const DI32 di;
    const VI32 sum = hn::Add(hn::Mul(c, a), hn::Set(di, 2048));
    return hn::ShiftRight<12>(hn::Add(sum, hn::And(hn::ShiftRight<31>(sum), hn::Set(di, 4095))));
}

template <size_t kAlpha>
struct Premultiply16Q12Body {
    Bytes operator()(const int16_t* src) const {
        const hn::ScalableTag<int16_t> d16;
        const DI32 di;
        const VI32 pixels = hn::BitCast(di, hn::LoadU(d16, src));
        const VI32 alpha = hn::Min(hn::Max(AlphaQ12<kAlpha>(hn::BitCast(D64(), pixels)), hn::Zero(di)), hn::Set(di, 4096));
        const V32 colour = JoinSigned(PremultiplyQ12(EvenSigned(pixels), alpha), PremultiplyQ12(OddSigned(pixels), alpha));
        // The clamped alpha (0..4096) moved into alpha's half of its u32 lane.
        const V32 clamped = hn::ShiftLeft<16 * (kAlpha & 1)>(hn::BitCast(D32(), alpha));
        return hn::BitCast(D8(), Keep(AlphaChannel16<kAlpha>(), clamped, colour));
    }
};

#if HWY_HAVE_FLOAT64  // DivideTruncating divides in double precision
// (min(c, a) * 4096 + a / 2) / a, both divisions truncating, for i32 lanes.
HWY_INLINE VI32 UnpremultiplyQ12(VI32 c, VI32 a, VI32 half) {
    return DivideTruncating(hn::Add(hn::ShiftLeft<12>(hn::Min(c, a)), half), a);
}

template <size_t kAlpha>
struct Unpremultiply16Q12Body {
    Bytes operator()(const int16_t* src) const {
        const hn::ScalableTag<int16_t> d16;
        const DI32 di;
        const VI32 pixels = hn::BitCast(di, hn::LoadU(d16, src));
        const VI32 alpha = AlphaQ12<kAlpha>(hn::BitCast(D64(), pixels));
        // a / 2 toward zero: add the sign bit before the arithmetic shift.
        const VI32 half = hn::ShiftRight<1>(hn::Add(alpha, hn::BitCast(di, hn::ShiftRight<31>(hn::BitCast(D32(), alpha)))));
        // The quotients are stored modulo 2^16, as the scalar rule stores them;
        // those of alpha 0 (unspecified) are replaced by 0.
        const V32 colour = JoinSigned(UnpremultiplyQ12(EvenSigned(pixels), alpha, half),
                                      UnpremultiplyQ12(OddSigned(pixels), alpha, half));
        const V32 result = hn::IfThenZeroElse(hn::RebindMask(D32(), hn::Eq(alpha, hn::Zero(di))), colour);
        return hn::BitCast(D8(), Keep(AlphaChannel16<kAlpha>(), hn::BitCast(D32(), pixels), result));
    }
};
#endif  // HWY_HAVE_FLOAT64

// ---- float pixels: one per 128-bit block ------------------------------------

template <size_t kAlpha>
HWY_INLINE auto AlphaLanes() {
    const D32 d32;
    return hn::RebindMask(DF(), hn::Eq(hn::And(hn::Iota(d32, 0), hn::Set(d32, 3u)), hn::Set(d32, uint32_t{kAlpha})));
}

// 1 / a, or 0 where a compares equal to 0 (either sign).
HWY_INLINE hn::Vec<DF> ReciprocalOrZero(hn::Vec<DF> a) {
    const DF df;
    return hn::IfThenZeroElse(hn::Eq(a, hn::Zero(df)), hn::Div(hn::Set(df, 1.0f), a));
}

template <size_t kAlpha>
struct PremultiplyFBody {
    Bytes operator()(const float* src) const {
        const DF df;
        const auto pixels = hn::LoadU(df, src);
        const auto colour = CanonicalNaNs(hn::Mul(pixels, hn::Broadcast<kAlpha>(pixels)));
        return hn::BitCast(D8(), hn::IfThenElse(AlphaLanes<kAlpha>(), pixels, colour));
    }
};

template <size_t kAlpha>
struct UnpremultiplyFBody {
    Bytes operator()(const float* src) const {
        const DF df;
        const auto pixels = hn::LoadU(df, src);
        const auto colour = CanonicalNaNs(hn::Mul(pixels, ReciprocalOrZero(hn::Broadcast<kAlpha>(pixels))));
        return hn::BitCast(D8(), hn::IfThenElse(AlphaLanes<kAlpha>(), pixels, colour));
    }
};

struct PremultiplyFPlaneBody {
    Bytes operator()(const float* src, const float* alpha) const {
        const DF df;
        return hn::BitCast(D8(), CanonicalNaNs(hn::Mul(hn::LoadU(df, src), hn::LoadU(df, alpha))));
    }
};

struct UnpremultiplyFPlaneBody {
    Bytes operator()(const float* src, const float* alpha) const {
        const DF df;
        return hn::BitCast(D8(),
                           CanonicalNaNs(hn::Mul(hn::LoadU(df, src), ReciprocalOrZero(hn::LoadU(df, alpha)))));
    }
};

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace

// The vector twins, one per rule and shape.
void Premultiply8Pixels(const uint8_t* src, uint8_t* dst, size_t pixels, size_t alpha, bool stream) {
    RunPixels<Premultiply8, Premultiply8Body>(src, dst, pixels, alpha, stream);
}
// Plain stores even for large destinations. On a Zen 4 processor, 4096 x 4096
// single-threaded on a loaded machine, nine interleaved pairs of medians of
// three: on the AVX2 target 6.4-7.4 ms (median 6.9) with plain stores against
// 6.6-9.0 ms (8.2) streaming, faster in eight pairs; with AVX-512 5.8-7.9 ms
// (6.4) against 6.0-7.5 ms (7.1), faster in six.
void Unpremultiply8Pixels(const uint8_t* src, uint8_t* dst, size_t pixels, size_t alpha, bool) {
    RunPixels<Unpremultiply8, Unpremultiply8Body>(src, dst, pixels, alpha, false);
}
void Premultiply16UPixels(const uint16_t* src, uint16_t* dst, size_t pixels, size_t alpha, bool stream) {
    RunPixels<Premultiply16U, Premultiply16UBody>(src, dst, pixels, alpha, stream);
}
void Unpremultiply16UPixels(const uint16_t* src, uint16_t* dst, size_t pixels, size_t alpha, bool stream) {
    RunPixels<Unpremultiply16U, Unpremultiply16UBody>(src, dst, pixels, alpha, stream);
}
void Premultiply16Q12Pixels(const int16_t* src, int16_t* dst, size_t pixels, size_t alpha, bool stream) {
    RunPixels<Premultiply16Q12, Premultiply16Q12Body>(src, dst, pixels, alpha, stream);
}
void Unpremultiply16Q12Pixels(const int16_t* src, int16_t* dst, size_t pixels, size_t alpha, bool stream) {
#if HWY_HAVE_FLOAT64
    RunPixels<Unpremultiply16Q12, Unpremultiply16Q12Body>(src, dst, pixels, alpha, stream);
#else
    // Targets without 64-bit float lanes have no exact vector division here.
    premultiply::ApplyToPixels<Unpremultiply16Q12>(src, dst, pixels, alpha, stream);
#endif
}
void PremultiplyFPixels(const float* src, float* dst, size_t pixels, size_t alpha, bool stream) {
    RunPixels<PremultiplyF, PremultiplyFBody>(src, dst, pixels, alpha, stream);
}
void UnpremultiplyFPixels(const float* src, float* dst, size_t pixels, size_t alpha, bool stream) {
    RunPixels<UnpremultiplyF, UnpremultiplyFBody>(src, dst, pixels, alpha, stream);
}
void Premultiply8Plane(const uint8_t* src, const uint8_t* alpha, uint8_t* dst, size_t count, bool stream) {
    RunPlane<Premultiply8, Premultiply8PlaneBody>(src, alpha, dst, count, stream);
}
void Unpremultiply8Plane(const uint8_t* src, const uint8_t* alpha, uint8_t* dst, size_t count, bool stream) {
    RunPlane<Unpremultiply8, Unpremultiply8PlaneBody>(src, alpha, dst, count, stream);
}
void PremultiplyFPlane(const float* src, const float* alpha, float* dst, size_t count, bool stream) {
    RunPlane<PremultiplyF, PremultiplyFPlaneBody>(src, alpha, dst, count, stream);
}
void UnpremultiplyFPlane(const float* src, const float* alpha, float* dst, size_t count, bool stream) {
    RunPlane<UnpremultiplyF, UnpremultiplyFPlaneBody>(src, alpha, dst, count, stream);
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::premultiply {

HWY_EXPORT(Premultiply8Pixels);
HWY_EXPORT(Unpremultiply8Pixels);
HWY_EXPORT(Premultiply16UPixels);
HWY_EXPORT(Unpremultiply16UPixels);
HWY_EXPORT(Premultiply16Q12Pixels);
HWY_EXPORT(Unpremultiply16Q12Pixels);
HWY_EXPORT(PremultiplyFPixels);
HWY_EXPORT(UnpremultiplyFPixels);
HWY_EXPORT(Premultiply8Plane);
HWY_EXPORT(Unpremultiply8Plane);
HWY_EXPORT(PremultiplyFPlane);
HWY_EXPORT(UnpremultiplyFPlane);

const KernelPair<PixelKernel<uint8_t>> Kernels<Premultiply8>::pixels{&ApplyToPixels<Premultiply8>,
                                                                     HWY_DISPATCH_TABLE(Premultiply8Pixels)};
const KernelPair<PlaneKernel<uint8_t>> Kernels<Premultiply8>::plane{&ApplyToPlane<Premultiply8>,
                                                                    HWY_DISPATCH_TABLE(Premultiply8Plane)};
const KernelPair<PixelKernel<uint8_t>> Kernels<Unpremultiply8>::pixels{&ApplyToPixels<Unpremultiply8>,
                                                                       HWY_DISPATCH_TABLE(Unpremultiply8Pixels)};
const KernelPair<PlaneKernel<uint8_t>> Kernels<Unpremultiply8>::plane{&ApplyToPlane<Unpremultiply8>,
                                                                      HWY_DISPATCH_TABLE(Unpremultiply8Plane)};
const KernelPair<PixelKernel<uint16_t>> Kernels<Premultiply16U>::pixels{&ApplyToPixels<Premultiply16U>,
                                                                        HWY_DISPATCH_TABLE(Premultiply16UPixels)};
const KernelPair<PixelKernel<uint16_t>> Kernels<Unpremultiply16U>::pixels{
    &ApplyToPixels<Unpremultiply16U>, HWY_DISPATCH_TABLE(Unpremultiply16UPixels)};
const KernelPair<PixelKernel<int16_t>> Kernels<Premultiply16Q12>::pixels{&ApplyToPixels<Premultiply16Q12>,
                                                                         HWY_DISPATCH_TABLE(Premultiply16Q12Pixels)};
const KernelPair<PixelKernel<int16_t>> Kernels<Unpremultiply16Q12>::pixels{
    &ApplyToPixels<Unpremultiply16Q12>, HWY_DISPATCH_TABLE(Unpremultiply16Q12Pixels)};
const KernelPair<PixelKernel<float>> Kernels<PremultiplyF>::pixels{&ApplyToPixels<PremultiplyF>,
                                                                   HWY_DISPATCH_TABLE(PremultiplyFPixels)};
const KernelPair<PlaneKernel<float>> Kernels<PremultiplyF>::plane{&ApplyToPlane<PremultiplyF>,
                                                                  HWY_DISPATCH_TABLE(PremultiplyFPlane)};
const KernelPair<PixelKernel<float>> Kernels<UnpremultiplyF>::pixels{&ApplyToPixels<UnpremultiplyF>,
                                                                     HWY_DISPATCH_TABLE(UnpremultiplyFPixels)};
const KernelPair<PlaneKernel<float>> Kernels<UnpremultiplyF>::plane{&ApplyToPlane<UnpremultiplyF>,
                                                                    HWY_DISPATCH_TABLE(UnpremultiplyFPlane)};

}  // namespace quorin::premultiply
#endif  // HWY_ONCE
