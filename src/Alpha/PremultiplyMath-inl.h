// Exact integer divisions for vector kernels of the alpha family: the rounded
// divisions by 255 and 65535 of a channel product, and a truncating 32-bit
// division by a per-lane divisor. Each equals the C expression it names for
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
