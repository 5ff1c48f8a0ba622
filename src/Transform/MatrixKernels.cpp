// Vector twins of the matrix rules (MatrixRules.h).
//
// 8 bits: one pixel per 32-bit lane. Each channel's sum is two pairwise
// 16-bit multiply-adds (the pre-biases are folded into the biases, so the
// bytes are multiplied alone) and wraps in 32-bit lanes as the rule's does;
// the division is the call's magic multiply (the high words of even and odd
// lanes from two widening multiplies), exact for every sum, and the clamp is
// the saturating narrowing to bytes. The division is most of the work, so
// the loop is compiled once per form of it: an arithmetic shift for a
// positive power of two (1 included); a single-precision multiply by a
// reciprocal where the divisor and the matrix keep that exact
// (FloatDivider); else the magic multiply with its correction by n added,
// subtracted or absent, instead of a multiply by the correction's -1, 0 or 1.
//
// Float: one pixel per 128-bit block, each source channel broadcast through
// its block and multiplied by that channel's row of coefficients, summed in
// the rule's order with separate multiplies and adds (never fused).
#include <bit>
#include <cmath>
#include <cstdint>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Transform/MatrixKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Core/CanonicalNaN-inl.h"
#include "Core/Intrinsics-inl.h"
#include "Core/RowLoop-inl.h"
#include "Transform/MatrixKernels.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The one-lane HWY_SCALAR target has neither the widening multiplies nor
// blocks of four floats: the rules serve there.
#if HWY_TARGET != HWY_SCALAR
namespace {

using D8 = hn::ScalableTag<uint8_t>;
using DI = hn::ScalableTag<int32_t>;
using DU = hn::ScalableTag<uint32_t>;
using DF = hn::ScalableTag<float>;
using Bytes = hn::Vec<D8>;
using VI = hn::Vec<DI>;

// The high 32 bits of each lane's 64-bit product n x magic.
HWY_INLINE VI MulHighSigned(VI n, VI magic) {
    const DI di;
    const hn::RepartitionToWide<DI> d64;
    const auto even = hn::MulEven(n, magic);
    const auto odd = hn::MulEven(hn::BitCast(di, hn::ShiftRight<32>(hn::BitCast(d64, n))), magic);
    return hn::OddEven(hn::BitCast(di, odd), hn::BitCast(di, hn::ShiftRight<32>(even)));
}

// Coefficients a (low) and b (high) as the two signed 16-bit halves of a lane.
HWY_INLINE VI PairOf(int32_t a, int32_t b) {
    const uint32_t pair = static_cast<uint16_t>(a) | static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16;
    return hn::Set(DI(), static_cast<int32_t>(pair));
}

// floor(n / divisor) for a positive power-of-two divisor 2^shift.
struct ShiftDivider {
    int shift;
    HWY_INLINE VI operator()(VI n) const { return hn::ShiftRightSame(n, shift); }
};

// floor(n / divisor) by the call's magic multiply; kAddend is the magic's
// correction (SignedMagic::addend), so its multiply by n disappears.
template <int kAddend>
struct MagicDivider {
    VI magic;
    int shift;

    explicit MagicDivider(const matrix::SignedMagic& m)
        : magic(hn::Set(DI(), m.magic)), shift(static_cast<int>(m.shift)) {}

    HWY_INLINE VI operator()(VI n) const {
        VI high = MulHighSigned(n, magic);
        if constexpr (kAddend > 0) high = hn::Add(high, n);
        if constexpr (kAddend < 0) high = hn::Sub(high, n);
        return hn::ShiftRightSame(high, shift);
    }
};

// floor(n / divisor) in single precision, for divisors 1..kFloatDivisors
// and sums that cannot leave +-2^24 (so they neither wrap nor lose bits
// converted). The reciprocal r is 1 / divisor raised by a relative 2^-23
// to 2^-22, so the product n x r rounded to nearest (relative error under
// 2^-24) lies in [n / divisor, (n / divisor)(1 + 3e-7)] for n >= 0. A
// quotient k + f below 256 has f at most 1 - 1 / divisor, and
// 256 x 3e-7 < 1 / divisor keeps the product below k + 1: truncation gives
// k. Quotients of 256 or more come out at 256 or more and negative sums at
// 0 or below, which the clamp makes right.
constexpr int32_t kFloatDivisors = 8192;
constexpr int64_t kFloatSums = int64_t{1} << 24;

struct FloatDivider {
    hn::Vec<DF> reciprocal;

    explicit FloatDivider(int32_t divisor) {
        const double wanted = (1.0 / divisor) * (1.0 + 0x1p-23);
        float r = static_cast<float>(wanted);
        if (static_cast<double>(r) < wanted) r = std::nextafter(r, 1.0f);
        reciprocal = hn::Set(DF(), r);
    }

    HWY_INLINE VI operator()(VI n) const {
        return TruncateInRange(DI(), hn::Mul(hn::ConvertTo(DF(), n), reciprocal));
    }
};

// The quotients are rounded down: they differ from the truncated ones only
// when negative, and the clamp makes both 0.
template <class Divider>
struct Multiply8Body {
    // Per destination channel j: (m[j], m[8 + j]) against the even bytes of
    // a pixel, (m[4 + j], m[12 + j]) against the odd ones.
    VI evenPairs[4], oddPairs[4], bias[4];
    Divider divide;

    Multiply8Body(const matrix::Matrix8& p, const Divider& divider) : divide(divider) {
        for (int j = 0; j < 4; ++j) {
            evenPairs[j] = PairOf(p.m[j], p.m[8 + j]);
            oddPairs[j] = PairOf(p.m[4 + j], p.m[12 + j]);
            bias[j] = hn::Set(DI(), p.bias[j]);
        }
    }

    Bytes operator()(const uint8_t* src) const {
        const DI di;
        const hn::Repartition<int16_t, DI> d16;
        // Bytes 0 and 2 of each pixel, and bytes 1 and 3, widened to 16 bits.
        // (A shift of the 16-bit halves clears their top bytes itself.)
        const hn::Repartition<uint16_t, DI> du16;
        const VI v = hn::BitCast(di, hn::LoadU(D8(), src));
        const auto even = hn::BitCast(d16, hn::And(v, hn::Set(di, 0x00FF00FF)));
        const auto odd = hn::BitCast(d16, hn::ShiftRight<8>(hn::BitCast(du16, v)));
        // Two products of a byte and a 16-bit coefficient add up to less
        // than 2^24 in magnitude: the pairwise multiply-adds are exact, and
        // the sum wraps modulo 2^32 as the rule's does.
        VI q[4];
        for (int j = 0; j < 4; ++j) {
            // The accumulators' lanes hold products in an order of the
            // processor's choosing (pairs on x86, halves on ARM) until they
            // are rearranged: the bias joins after that.
            VI odds = hn::Zero(di);
            VI sum = hn::ReorderWidenMulAccumulate(di, even, hn::BitCast(d16, evenPairs[j]), hn::Zero(di), odds);
            sum = hn::ReorderWidenMulAccumulate(di, odd, hn::BitCast(d16, oddPairs[j]), sum, odds);
            q[j] = divide(hn::Add(hn::RearrangeToOddPlusEven(sum, odds), bias[j]));
        }
        return PackClampedPixelBytes(di, q[0], q[1], q[2], q[3]);
    }
};

struct MultiplyFBody {
    hn::Vec<DF> m[4], pre, post;

    explicit MultiplyFBody(const matrix::MatrixF& p) {
        for (int i = 0; i < 4; ++i) m[i] = hn::LoadDup128(DF(), p.m + 4 * i);
        pre = hn::LoadDup128(DF(), p.pre);
        post = hn::LoadDup128(DF(), p.post);
    }

    Bytes operator()(const float* src) const {
        const DF df;
        const auto s = hn::Add(hn::LoadU(df, src), pre);
        auto sum = hn::Mul(hn::Broadcast<0>(s), m[0]);
        sum = hn::Add(sum, hn::Mul(hn::Broadcast<1>(s), m[1]));
        sum = hn::Add(sum, hn::Mul(hn::Broadcast<2>(s), m[2]));
        sum = hn::Add(sum, hn::Mul(hn::Broadcast<3>(s), m[3]));
        return hn::BitCast(D8(), CanonicalNaNs(hn::Add(post, sum)));
    }
};

// The float body's dozen operations between its load and its store slow the
// hardware's own fetching of the source on Zen 3, so with AVX2 (all that was
// measured) each step asks for the source 4 KB ahead itself while that lies
// inside it; the padded copies of the row's ends lie outside and ask nothing.
template <class Body>
struct FetchingAhead {
    static constexpr uintptr_t kAhead = 4096;
    Body body;
    uintptr_t first, fetched;  // the source's start; the bytes whose steps fetch

    FetchingAhead(const Body& b, const float* src, size_t elements)
        : body(b), first(reinterpret_cast<uintptr_t>(src)),
          fetched(elements * sizeof(float) > kAhead ? elements * sizeof(float) - kAhead : 0) {}

    Bytes operator()(const float* src) const {
        const uintptr_t at = reinterpret_cast<uintptr_t>(src);
        if (at - first < fetched) hwy::Prefetch(reinterpret_cast<const void*>(at + kAhead));
        return body(src);
    }
};

}  // namespace
#endif

void MultiplyPixels8Vector(const uint8_t* src, uint8_t* dst, size_t pixels, const matrix::Matrix8& p, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    matrix::MultiplyPixels8(src, dst, pixels, p, stream);
#else
    const auto run = [&](const auto& divide) {
        ForEachVector(dst, pixels * 4, 4, stream, Multiply8Body<std::decay_t<decltype(divide)>>(p, divide), src);
    };
    const uint32_t d = static_cast<uint32_t>(p.divisor);
    if (p.divisor > 0 && std::has_single_bit(d)) return run(ShiftDivider{std::countr_zero(d)});
    if (p.divisor > 0 && p.divisor <= kFloatDivisors && p.SumBound() <= kFloatSums) return run(FloatDivider(p.divisor));
    switch (p.division.addend) {
        case 1: return run(MagicDivider<1>(p.division));
        case -1: return run(MagicDivider<-1>(p.division));
        default: return run(MagicDivider<0>(p.division));
    }
#endif
}

void MultiplyPixelsFVector(const float* src, float* dst, size_t pixels, const matrix::MatrixF& p, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    matrix::MultiplyPixelsF(src, dst, pixels, p, stream);
#elif HWY_TARGET == HWY_AVX2
    ForEachVector(dst, pixels * 4, 4, stream, FetchingAhead<MultiplyFBody>(MultiplyFBody(p), src, pixels * 4), src);
#else
    ForEachVector(dst, pixels * 4, 4, stream, MultiplyFBody(p), src);
#endif
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::matrix {

HWY_EXPORT(MultiplyPixels8Vector);
HWY_EXPORT(MultiplyPixelsFVector);

const KernelPair<Multiply8Kernel> kMultiply8Kernels{&MultiplyPixels8, HWY_DISPATCH_TABLE(MultiplyPixels8Vector)};
const KernelPair<MultiplyFKernel> kMultiplyFKernels{&MultiplyPixelsF, HWY_DISPATCH_TABLE(MultiplyPixelsFVector)};

}  // namespace quorin::matrix
#endif
