// Exact integer divisions for vector kernels of the alpha family: the rounded
// divisions by 255 and 65535 of a channel product, the division of a 16-bit
// dividend by a per-pixel alpha, and a truncating 32-bit division by a
// per-lane divisor. Each equals the C expression it names for
// every input in its stated range (the premultiply tests prove it
// exhaustively). Include after <hwy/highway.h> from a foreach_target source;
// none of these exist on the one-lane HWY_SCALAR target except the first two.
//
// Per-target include guard (Highway's toggle idiom).
#if defined(QUORIN_ALPHA_PREMULTIPLY_MATH_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORIN_ALPHA_PREMULTIPLY_MATH_INL_H_
#undef QUORIN_ALPHA_PREMULTIPLY_MATH_INL_H_
#else
#define QUORIN_ALPHA_PREMULTIPLY_MATH_INL_H_
#endif

#include <hwy/highway.h>

#include "Core/Intrinsics-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// (p + 127) / 255 for u16 lanes p <= 255 * 255, that is (x * y + 127) / 255 of
// two 8-bit values: with t = p + 127, the high half of t * 0x8081 shifted right
// by 7.
template <class V>
HWY_INLINE V DivideBy255Rounded(V p) {
    const hn::DFromV<V> d;
    return hn::ShiftRight<7>(hn::MulHigh(hn::Add(p, hn::Set(d, 127)), hn::Set(d, 0x8081)));
}

// (p + 32767) / 65535 for u32 lanes p <= 65535 * 65535, that is the rounded
// product of two 16-bit values: with t = p + 32768, (t + (t >> 16)) >> 16.
template <class V>
HWY_INLINE V DivideBy65535Rounded(V p) {
    const hn::DFromV<V> d;
    const V t = hn::Add(p, hn::Set(d, 32768u));
    return hn::ShiftRight<16>(hn::Add(t, hn::ShiftRight<16>(t)));
}

#if HWY_TARGET != HWY_SCALAR
// For u16 lanes d in 1..255, the same d in both halves of each u32 lane: in
// both halves an r with 65279.5 / d < r <= 65536 / d, for DivideByAlpha. It is
// r = round(65407.75 / d), the middle of that range, whose half-width
// 128.25 / d exceeds the 1/2 of rounding by 0.0029 at d = 255 and the two
// float roundings (2^-23 relative, 0.008 / d) by more. Read as a 32-bit
// integer the lane is d x 65537, exact in float; adding 1.5 x 2^23 rounds the
// quotient to an integer in the low 16 bits, which one byte shuffle copies
// into the high half. One division, one addition and one shuffle: no
// clamping, since the range admits r = 65408 for d = 1. A lane of 0 gives
// r = 0: its quotient is +inf, whose low 16 bits are 0.
template <class V>
HWY_INLINE V ReciprocalOfAlpha(V divisor) {
    const hn::DFromV<V> d16;
    const hn::Repartition<uint8_t, decltype(d16)> d8;
    const hn::Repartition<float, decltype(d16)> df;
    const auto x = hn::Div(hn::Set(df, 65407.75f * 65537.0f),
                           hn::ConvertTo(df, hn::BitCast(hn::Repartition<int32_t, decltype(d16)>(), divisor)));
    alignas(16) static constexpr uint8_t kLowHalfTwice[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
    const auto bits = hn::BitCast(d8, hn::Add(x, hn::Set(df, 12582912.0f)));
    return hn::BitCast(d16, hn::TableLookupBytes(bits, hn::LoadDup128(d8, kLowHalfTwice)));
}

// floor(n / d) for u16 lanes with 1 <= d <= 255 and n <= 255.5 d, given
// d - 1 and r from ReciprocalOfAlpha: n r / 2^16 lies in (n / d - 1, n / d]
// (n / d - n r / 2^16 < 255.5 x 256.5 / 65536 < 1), so q = (n r) >> 16 is the
// quotient or one less, and the remainder n - q d (below 2 d) tells which.
// Remainder and divisor are below 2^15, so a signed comparison serves:
// without AVX-512 an unsigned one and a blend take four instructions more.
template <class V>
HWY_INLINE V DivideByAlpha(V n, V divisor, V belowDivisor, V reciprocal) {
    const hn::DFromV<V> d16;
    const hn::RebindToSigned<decltype(d16)> di16;
    const V q = hn::MulHigh(n, reciprocal);
    const V remainder = hn::Sub(n, hn::Mul(q, divisor));
    return AddOneWhere(hn::RebindMask(d16, hn::Lt(hn::BitCast(di16, belowDivisor), hn::BitCast(di16, remainder))), q);
}
#endif  // HWY_TARGET != HWY_SCALAR

#if HWY_TARGET != HWY_SCALAR && HWY_HAVE_FLOAT64
// n / d for i32 lanes with C's truncation toward zero, d != 0 and not
// (n == INT32_MIN and d == -1). Computed in double precision: both operands
// are exact there, and a correctly rounded quotient of 32-bit integers lies
// closer to its true value than 1 / |d|, the least distance from a non-integer
// quotient to an integer, so truncating it gives the integer quotient. Lanes
// with d == 0 give an unspecified value.
template <class V>
HWY_INLINE V DivideTruncating(V n, V d) {
    const hn::DFromV<V> di;
    const hn::Half<decltype(di)> dh;
    const hn::Repartition<double, decltype(di)> dd;
    const auto lower = hn::Div(hn::PromoteTo(dd, hn::LowerHalf(dh, n)), hn::PromoteTo(dd, hn::LowerHalf(dh, d)));
    const auto upper = hn::Div(hn::PromoteTo(dd, hn::UpperHalf(dh, n)), hn::PromoteTo(dd, hn::UpperHalf(dh, d)));
    return hn::Combine(di, hn::DemoteTo(dh, upper), hn::DemoteTo(dh, lower));
}
#endif

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // QUORIN_ALPHA_PREMULTIPLY_MATH_INL_H_
