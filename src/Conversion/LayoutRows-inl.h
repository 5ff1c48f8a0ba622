// The layout row kernels' vector side, shared by every family that moves
// pixels between planes and interleaved rows through a channel transform:
// the vector rules, the four-channel shuffles of 64-byte vectors, and the
// MergeRow / SplitRow loops over RunSteps. A family adds its own vector rule
// (a `Lanes` tag and operator()(d, c, v)) and a WithVectorRule overload for
// its transform in its kernels file, which MergeRow and SplitRow find through
// the body they are handed, then instantiates them for its shapes.
// Compiled once per Highway target: include after <hwy/foreach_target.h>
// and <hwy/highway.h>.
//
// Per-target include guard (Highway's toggle idiom).
#if defined(QUORIN_CONVERSION_LAYOUT_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORIN_CONVERSION_LAYOUT_ROWS_INL_H_
#undef QUORIN_CONVERSION_LAYOUT_ROWS_INL_H_
#else
#define QUORIN_CONVERSION_LAYOUT_ROWS_INL_H_
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <cstdint>
#include <type_traits>

#include "Conversion/LayoutRules.h"
#include "Core/Intrinsics-inl.h"
#include "Core/Opaque.h"
#include "Core/RowLoop-inl.h"
#include "Core/SourcePrefetch.h"

#ifndef QUORIN_LAYOUT_ROWS_ONCE
#define QUORIN_LAYOUT_ROWS_ONCE
namespace quorin::layout {

// Byte c of a four-byte pixel read as one 32-bit word is at this shift.
constexpr int ByteShift(size_t c) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return static_cast<int>(8 * (3 - c));
#else
    return static_cast<int>(8 * c);
#endif
}

}  // namespace quorin::layout
#endif

HWY_BEFORE_NAMESPACE();
namespace quorin::layout::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using quorin::HWY_NAMESPACE::RunSteps;
using quorin::HWY_NAMESPACE::StreamingHeadOf;

// ---- Vector rules -----------------------------------------------------------------
// Each applies a transform to vectors. `Lanes` sets a kernel's lane count:
// full vectors of the widest type the rule computes in, so every narrower
// type is a whole-vector Rebind and no halves are split or combined.
// operator()(d, c, v) converts channel c of `Lanes` pixels into a vector for
// descriptor d; Flat(d, v) converts interleaved samples, lane l holding
// channel l mod 4 (lane counts are multiples of 4 wherever it is used).

// Four per-channel values repeated across the lanes, for the flat forms.
template <class T>
struct Pattern {
    HWY_ALIGN T lane[HWY_MAX_BYTES / sizeof(T) < 4 ? 4 : HWY_MAX_BYTES / sizeof(T)];
    explicit Pattern(const float (&values)[4]) {
        for (size_t l = 0; l < sizeof(lane) / sizeof(T); ++l) lane[l] = static_cast<T>(values[l % 4]);
    }
};

template <class T>
struct CopyRule {
    using Lanes = hn::ScalableTag<T>;
    template <class D, class V>
    V operator()(D, size_t, V v) const { return v; }
};

// 8-bit to float in the rule's own steps: the single-precision product, then
// the division by 255 and the addition of min in double precision, one
// rounding to float.
struct ByteToFloatInDouble {
    using Lanes = hn::ScalableTag<double>;
    const ByteToFloat& rule;
    Pattern<float> range{rule.range};
    Pattern<double> min{rule.min};

    template <class D>
    static hn::VFromD<D> Values(D d, hn::VFromD<hn::Rebind<uint32_t, D>> bytes, hn::VFromD<D> range,
                                hn::VFromD<hn::Rebind<double, D>> min) {
        const hn::Rebind<double, D> dd;
        const auto value = hn::ConvertTo(d, hn::BitCast(hn::RebindToSigned<D>(), bytes));  // exact
        const auto quotient = hn::Div(hn::PromoteTo(dd, hn::Mul(value, range)), hn::Set(dd, 255.0));
        return hn::DemoteTo(d, hn::Add(min, quotient));
    }
    template <class D>
    hn::VFromD<D> operator()(D d, size_t c, hn::VFromD<hn::Rebind<uint32_t, D>> bytes) const {
        return Values(d, bytes, hn::Set(d, rule.range[c]), hn::Set(hn::Rebind<double, D>(), rule.min[c]));
    }
    template <class D>
    hn::VFromD<D> operator()(D d, size_t c, hn::VFromD<hn::Rebind<uint8_t, D>> bytes) const {
        return (*this)(d, c, hn::PromoteTo(hn::Rebind<uint32_t, D>(), bytes));
    }
    template <class D>
    hn::VFromD<D> Flat(D d, hn::VFromD<hn::Rebind<uint8_t, D>> bytes) const {
        const hn::Rebind<double, D> dd;
        return Values(d, hn::PromoteTo(hn::Rebind<uint32_t, D>(), bytes), hn::Load(d, range.lane),
                      hn::Load(dd, min.lane));
    }
};

// 8-bit to float with the division in single precision: taken only when the
// per-call check found these steps exact for all 256 bytes of every channel.
struct ByteToFloatInSingle {
    using Lanes = hn::ScalableTag<float>;
    const ByteToFloat& rule;
    Pattern<float> range{rule.range}, min{rule.min};

    template <class D>
    static hn::VFromD<D> Values(D d, hn::VFromD<hn::Rebind<uint32_t, D>> bytes, hn::VFromD<D> range,
                                hn::VFromD<D> min) {
        const auto value = hn::ConvertTo(d, hn::BitCast(hn::RebindToSigned<D>(), bytes));  // exact
        return hn::Add(min, hn::Div(hn::Mul(value, range), hn::Set(d, 255.0f)));
    }
    template <class D>
    hn::VFromD<D> operator()(D d, size_t c, hn::VFromD<hn::Rebind<uint32_t, D>> bytes) const {
        return Values(d, bytes, hn::Set(d, rule.range[c]), hn::Set(d, rule.min[c]));
    }
    template <class D>
    hn::VFromD<D> operator()(D d, size_t c, hn::VFromD<hn::Rebind<uint8_t, D>> bytes) const {
        return (*this)(d, c, hn::PromoteTo(hn::Rebind<uint32_t, D>(), bytes));
    }
    template <class D>
    hn::VFromD<D> Flat(D d, hn::VFromD<hn::Rebind<uint8_t, D>> bytes) const {
        return Values(d, hn::PromoteTo(hn::Rebind<uint32_t, D>(), bytes), hn::Load(d, range.lane),
                      hn::Load(d, min.lane));
    }
};

// Float to 8-bit in the rule's order, each step an IEEE single-precision
// operation (a true division, the multiplication by an exact reciprocal
// that rounds the same value, or, from [0, 1], neither; no fused
// multiply-add). Negative and NaN results are zeroed before Min, so Min never
// sees a NaN and its per-target NaN behaviour does not matter; the
// conversion truncates.
enum class RangeStep {
    Divide,                // by the range
    MultiplyByReciprocal,  // exact: every range is a power of two with a normal reciprocal
    // Every range is 1 and every minimum 0 (either sign): t = f * 255 + 0.5.
    // x / 1 is x, and f - 0 is f but for the sign of a zero f, whose t is
    // 0.5 either way. The subtraction saved is a third of the additions that
    // bound the four-channel split.
    UnitFromZero,
};

template <RangeStep kStep>
struct FloatToByteVector {
    static constexpr bool kMultiply = kStep == RangeStep::MultiplyByReciprocal;
    using Lanes = hn::ScalableTag<float>;
    const FloatToByte& rule;
    Pattern<float> min{rule.min}, scale{kMultiply ? rule.reciprocal : rule.range};

    // The rule's t, before its range test and truncation.
    template <class V>
    static V Scaled(V f, V min, V scale) {
        const hn::DFromV<V> df;
        if constexpr (kStep == RangeStep::UnitFromZero) {
            (void)min;
            (void)scale;
            return hn::Add(hn::Mul(f, hn::Set(df, 255.0f)), hn::Set(df, 0.5f));
        }
        const V shifted = hn::Mul(hn::Sub(f, min), hn::Set(df, 255.0f));
        const V scaled = kMultiply ? hn::Mul(shifted, scale) : hn::Div(shifted, scale);
        return hn::Add(scaled, hn::Set(df, 0.5f));
    }
    template <class D, class V>
    static hn::VFromD<D> Bytes(D d, V t) {
        const hn::DFromV<V> df;
        const V inRange = hn::IfThenElseZero(t >= hn::Zero(df), t);
        const V clamped = hn::Min(inRange, hn::Set(df, 255.0f));
        return hn::DemoteTo(d, hn::ConvertTo(hn::RebindToSigned<decltype(df)>(), clamped));
    }
    // t for channel c in every lane, or for lane l's channel l mod 4.
    template <class V>
    V ChannelScaled(size_t c, V f) const {
        const hn::DFromV<V> df;
        return Scaled(f, hn::Set(df, rule.min[c]), hn::Set(df, kMultiply ? rule.reciprocal[c] : rule.range[c]));
    }
    template <class V>
    V FlatScaled(V f) const {
        const hn::DFromV<V> df;
        return Scaled(f, hn::Load(df, min.lane), hn::Load(df, scale.lane));
    }
    template <class D, class V>
    hn::VFromD<D> operator()(D d, size_t c, V f) const { return Bytes(d, ChannelScaled(c, f)); }
    template <class D, class V>
    hn::VFromD<D> Flat(D d, V f) const { return Bytes(d, FlatScaled(f)); }
};

// Calls body(rule) with the vector rule this call's transform asks for.
template <class T, class Body>
void WithVectorRule(const Copy<T>&, Body&& body) { body(CopyRule<T>{}); }
template <class Body>
void WithVectorRule(const ByteToFloat& transform, Body&& body) {
    if (transform.singlePrecisionExact) body(ByteToFloatInSingle{transform});
    else body(ByteToFloatInDouble{transform});
}
template <class Body>
void WithVectorRule(const FloatToByte& transform, Body&& body) {
    if (transform.unitRangesFromZero()) body(FloatToByteVector<RangeStep::UnitFromZero>{transform});
    else if (transform.multiplies()) body(FloatToByteVector<RangeStep::MultiplyByReciprocal>{transform});
    else body(FloatToByteVector<RangeStep::Divide>{transform});
}

// ---- Four channels on 64-byte vectors -----------------------------------------------
// A 64-byte vector holds 16 / s pixels of four s-byte samples, and one
// 16-byte block holds one channel of as many pixels. Going between the two
// takes at most one byte shuffle within blocks and one lane permutation,
// where the general interleaving needs two-source block shuffles, which are
// slow on some of these processors.
#undef QUORIN_LAYOUT_FOUR_CHANNELS  // set anew for each target
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
#define QUORIN_LAYOUT_FOUR_CHANNELS 1

template <class T>
class FourChannels {
public:
    using D = hn::Full512<T>;
    using Q = hn::Full128<T>;
    using V = hn::VFromD<D>;
    using VQ = hn::VFromD<Q>;
    static constexpr size_t kPixels = 16 / sizeof(T);

    FourChannels()
        : lanes_(hn::SetTableIndices(Words(), kLaneTranspose)),
          toPixels_(hn::LoadDup128(Bytes(), kToPixels[sizeof(T) == 1 ? 0 : 1])),  // (unused for 4-byte samples)
          toChannels_(hn::LoadDup128(Bytes(), kToChannels[sizeof(T) == 1 ? 0 : 1])) {}

    // Four blocks, the first lowest.
    static V Join(VQ b0, VQ b1, VQ b2, VQ b3) {
        const hn::Half<D> h;
        return hn::Combine(D(), hn::Combine(h, b3, b2), hn::Combine(h, b1, b0));
    }
    // One channel per block -> whole pixels.
    V Pixels(VQ c0, VQ c1, VQ c2, VQ c3) const {
        const V v = TransposeLanes(Join(c0, c1, c2, c3));
        return sizeof(T) == 4 ? v : Shuffle(v, toPixels_);
    }
    // Whole pixels -> one channel per block (block c holds channel c).
    V ChannelBlocks(V pixels) const {
        return TransposeLanes(sizeof(T) == 4 ? pixels : Shuffle(pixels, toChannels_));
    }
    // Bytes of the float-to-byte rule from four vectors of its t, lane l of
    // vector j for sample l of part j: block k holds samples 4k..4k+3 of each
    // vector in turn, in 32-bit lanes 4k..4k+3.
    static V PackScaled(hn::Vec512<float> t0, hn::Vec512<float> t1, hn::Vec512<float> t2, hn::Vec512<float> t3) {
        static_assert(sizeof(T) == 1);
        return quorin::HWY_NAMESPACE::PackTruncatedBytes(hn::Full512<float>(), t0, t1, t2, t3);
    }
    // PackScaled of four channels' samples (one vector per channel) -> whole pixels.
    V PixelsOfPacked(V packed) const { return Shuffle(packed, toPixels_); }
    // PackScaled of four parts of whole pixels, where lane j of block k holds
    // pixel 4j + k -> one channel per block, as ChannelBlocks gives.
    V ChannelBlocksOfPacked(V packed) const {
        return Shuffle(TransposeLanes(Shuffle(packed, toChannels_)), toChannels_);
    }
    // Block c of ChannelBlocks as its own vector.
    static VQ Block(V v, size_t c) {
        const hn::Half<D> h;
        const auto half = c < 2 ? hn::LowerHalf(h, v) : hn::UpperHalf(h, v);
        return c % 2 == 0 ? hn::LowerHalf(Q(), half) : hn::UpperHalf(Q(), half);
    }
    // Four vectors of four blocks each, transposed as a 4 x 4 matrix of
    // blocks: afterwards v[c] holds block c of every input, in order. The
    // halves first (v0 with v2, v1 with v3), then the blocks within them.
    static void TransposeBlocks(V (&v)[4]) {
        const D d;
        const V x0 = hn::ConcatLowerLower(d, v[2], v[0]), x2 = hn::ConcatUpperUpper(d, v[2], v[0]);
        const V x1 = hn::ConcatLowerLower(d, v[3], v[1]), x3 = hn::ConcatUpperUpper(d, v[3], v[1]);
        v[0] = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(x1), x0);
        v[1] = hn::OddEvenBlocks(x1, hn::SwapAdjacentBlocks(x0));
        v[2] = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(x3), x2);
        v[3] = hn::OddEvenBlocks(x3, hn::SwapAdjacentBlocks(x2));
    }

private:
    using Bytes = hn::Full512<uint8_t>;
    using Words = hn::Full512<uint32_t>;
    // 32-bit lane 4j + c <-> 4c + j: its own inverse.
    static constexpr int32_t kLaneTranspose[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
    // Within a block, for 1- and 2-byte samples: the samples of each channel
    // together (one 32-bit lane per channel) <-> pixel by pixel.
    static constexpr uint8_t kToPixels[2][16] = {{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15},
                                                 {0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15}};
    static constexpr uint8_t kToChannels[2][16] = {{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15},
                                                   {0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15}};

    static V Shuffle(V v, hn::VFromD<Bytes> table) {
        return hn::BitCast(D(), hn::TableLookupBytes(hn::BitCast(Bytes(), v), table));
    }
    V TransposeLanes(V v) const { return hn::BitCast(D(), hn::TableLookupLanes(hn::BitCast(Words(), v), lanes_)); }

    hn::Indices512<uint32_t> lanes_;
    hn::VFromD<Bytes> toPixels_, toChannels_;
};

// Merges FourChannels<P>::kPixels pixels at a time; returns the pixels done.
// P is the sample type the channels are interleaved in: the pixels' own, or
// bytes for the 8-bit to float rule, which then converts the interleaved
// bytes in place (lane l holding channel l mod 4) with no wide shuffles.
template <class Rule, class Transform, class Stores>
size_t MergeFourChannels(const Rule& apply, const typename Transform::From* const* planes,
                         typename Transform::To fill, typename Transform::To* pixels, size_t i, size_t n,
                         const Stores& store) {
    using From = typename Transform::From;
    using To = typename Transform::To;
    using P = std::conditional_t<(sizeof(From) < sizeof(To)), From, To>;
    using Four = FourChannels<P>;
    const Four four;
    const typename Four::Q q;
    const hn::Rebind<From, typename Four::Q> dFrom;  // one channel's samples
    const From* source[4] = {planes[0], planes[1], planes[2], planes[3]};
    // A float constant goes into the pixels as it is, not through the rule:
    // that case stays with the general kernel.
    if (!std::is_same_v<P, To> && !(source[0] && source[1] && source[2] && source[3])) return i;
    const auto channel = [&](size_t c, size_t at) {
        if constexpr (std::is_same_v<P, To>) {
            return source[c] ? apply(q, c, hn::LoadU(dFrom, source[c] + at)) : hn::Set(q, fill);
        } else {
            return hn::LoadU(q, source[c] + at);
        }
    };
    // Float planes into bytes: the rule's t for each channel, packed at once.
    const auto pixelsAt = [&](size_t at) {
        if constexpr (std::is_same_v<From, float> && std::is_same_v<To, uint8_t>) {
            const hn::Full512<float> df;
            const auto t = [&](size_t c) {
                return source[c] ? apply.ChannelScaled(c, hn::LoadU(df, source[c] + at))
                                 : hn::Set(df, static_cast<float>(fill));  // a byte passes through exactly
            };
            return four.PixelsOfPacked(Four::PackScaled(t(0), t(1), t(2), t(3)));
        } else {
            return four.Pixels(channel(0, at), channel(1, at), channel(2, at), channel(3, at));
        }
    };
    for (; i + Four::kPixels <= n; i += Four::kPixels) {
        const auto interleaved = pixelsAt(i);
        if constexpr (std::is_same_v<P, To>) {
            store(interleaved, typename Four::D(), pixels + i * 4);
        } else {
            const typename Rule::Lanes dw;
            const hn::Rebind<To, decltype(dw)> dTo;
            const hn::Rebind<P, decltype(dw)> dP;
            HWY_ALIGN P bytes[4 * Four::kPixels];
            hn::Store(interleaved, typename Four::D(), bytes);
            for (size_t k = 0; k < 4 * Four::kPixels; k += hn::Lanes(dw))
                store(apply.Flat(dTo, hn::Load(dP, bytes + k)), dTo, pixels + i * 4 + k);
        }
    }
    return i;
}

// Splits FourChannels<To>::kPixels pixels at a time (float pixels becoming
// bytes are converted in place first); returns the pixels done.
template <class Rule, class Transform, class Stores>
size_t SplitFourChannels(const Rule& apply, const typename Transform::From* pixels,
                         typename Transform::To* const* planes, size_t i, size_t n, const Stores& store) {
    using From = typename Transform::From;
    using To = typename Transform::To;
    using Four = FourChannels<To>;
    const Four four;
    const typename Four::Q q;
    To* out[4] = {planes[0], planes[1], planes[2], planes[3]};
    // The kPixels pixels from `at` on, one channel per block.
    const auto channelBlocksAt = [&](size_t at) {
        if constexpr (std::is_same_v<From, To>) {
            return four.ChannelBlocks(hn::LoadU(typename Four::D(), pixels + at * 4));
        } else {
            const hn::Full512<From> df;
            const auto t = [&](size_t k) { return apply.FlatScaled(hn::LoadU(df, pixels + at * 4 + k * 16)); };
            return four.ChannelBlocksOfPacked(Four::PackScaled(t(0), t(1), t(2), t(3)));
        }
    };
    // Four steps at a time, transposed so that each plane gets one whole
    // 64-byte vector: a full cache line in one store.
    constexpr size_t kGroup = 4 * Four::kPixels;
    for (; i + kGroup <= n; i += kGroup) {
        typename Four::V group[4];
        for (size_t k = 0; k < 4; ++k) group[k] = channelBlocksAt(i + k * Four::kPixels);
        Four::TransposeBlocks(group);
        for (size_t c = 0; c < 4; ++c)
            if (out[c]) store(group[c], typename Four::D(), out[c] + i);
    }
    for (; i + Four::kPixels <= n; i += Four::kPixels) {
        const auto blocks = channelBlocksAt(i);
        for (size_t c = 0; c < 4; ++c)
            if (out[c]) store(Four::Block(blocks, c), q, out[c] + i);
    }
    return i;
}
#endif  // 64-byte vectors

// ---- Float pixels into four byte planes on 32-byte vectors ---------------------------
// The general loop converts each channel of 8 pixels on its own and narrows
// it to 8 bytes through lane-crossing steps, then stores 8 bytes per plane.
// Here 32 pixels go at once: the rule's t of 8 pixels packed into one vector
// (PackTruncatedBytes, whose 128-bit blocks hold pixels 0 2 4 6 and 1 3 5 7),
// put in pixel order and then channel by channel with two 32-bit lane
// permutations and one byte shuffle, and four such vectors transposed as
// 64-bit quarters, so that each plane gets one whole 32-byte store.
#undef QUORIN_LAYOUT_FLOAT_SPLIT_256  // set anew for each target
#if HWY_TARGET == HWY_AVX2
#define QUORIN_LAYOUT_FLOAT_SPLIT_256 1

template <class Rule, class Stores>
size_t SplitFloatsToBytes256(const Rule& apply, const float* pixels, uint8_t* const* planes, size_t i, size_t n,
                             const Stores& store) {
    const hn::Full256<float> df;
    const hn::Full256<uint8_t> d8;
    const hn::Full256<uint32_t> d32;
    const hn::Full256<uint64_t> d64;
    // Word 4k + m <-> 2m + k: the packed pixels in order, and then the two
    // words of each channel side by side.
    alignas(32) static constexpr int32_t kPairBlocks[8] = {0, 4, 1, 5, 2, 6, 3, 7};
    alignas(16) static constexpr uint8_t kToChannels[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
    const auto pairBlocks = hn::SetTableIndices(d32, kPairBlocks);
    const auto toChannels = hn::LoadDup128(d8, kToChannels);
    uint8_t* out[4] = {planes[0], planes[1], planes[2], planes[3]};
    for (; i + 32 <= n; i += 32) {
        hn::VFromD<decltype(d64)> q[4];  // quarter c: channel c of 8 pixels
        for (size_t g = 0; g < 4; ++g) {
            const float* from = pixels + (i + 8 * g) * 4;
            const auto t = [&](size_t m) { return apply.FlatScaled(hn::LoadU(df, from + 8 * m)); };
            const auto packed = quorin::HWY_NAMESPACE::PackTruncatedBytes(df, t(0), t(1), t(2), t(3));
            const auto inOrder = hn::TableLookupLanes(hn::BitCast(d32, packed), pairBlocks);
            const auto grouped = hn::TableLookupBytes(hn::BitCast(d8, inOrder), toChannels);
            q[g] = hn::BitCast(d64, hn::TableLookupLanes(hn::BitCast(d32, grouped), pairBlocks));
        }
        const auto t0 = hn::InterleaveLower(d64, q[0], q[1]), t1 = hn::InterleaveUpper(d64, q[0], q[1]);
        const auto t2 = hn::InterleaveLower(d64, q[2], q[3]), t3 = hn::InterleaveUpper(d64, q[2], q[3]);
        const hn::VFromD<decltype(d64)> channel[4] = {hn::ConcatLowerLower(d64, t2, t0), hn::ConcatLowerLower(d64, t3, t1),
                                                      hn::ConcatUpperUpper(d64, t2, t0), hn::ConcatUpperUpper(d64, t3, t1)};
        for (size_t c = 0; c < 4; ++c)
            if (out[c]) store(hn::BitCast(d8, channel[c]), d8, out[c] + i);
    }
    return i;
}
#endif  // 32-byte vectors

// ---- Kernels ----------------------------------------------------------------------

template <size_t C, class Transform>
void MergeRow(const typename Transform::From* const* planes, typename Transform::To fill, const Transform& transform,
              typename Transform::To* pixels, size_t n, bool stream) {
    using From = typename Transform::From;
    const auto scalar = [&](size_t first, size_t count) {
        const From* rest[C];
        for (size_t c = 0; c < C; ++c) rest[c] = planes[c] ? planes[c] + first : nullptr;
        MergeRowScalar<C>(rest, fill, transform, pixels + first * C, count);
    };
#if HWY_TARGET == HWY_SCALAR  // one lane gains nothing over the scalar kernel
    (void)stream;
    scalar(0, n);
#else
    WithVectorRule(transform, [&](const auto& apply) {
        using Rule = std::remove_cvref_t<decltype(apply)>;
        using To = typename Transform::To;
        const typename Rule::Lanes dw;
        const hn::Rebind<From, decltype(dw)> dFrom;
        const hn::Rebind<To, decltype(dw)> dTo;
        const size_t lanes = hn::Lanes(dw);
        const size_t head = StreamingHeadOf(stream, &pixels, 1, n, C * sizeof(To),
                                            hn::Lanes(hn::ScalableTag<uint8_t>()), lanes * C * sizeof(To));
        const auto steps = [&](size_t i, const auto& stores) {
#ifdef QUORIN_LAYOUT_FOUR_CHANNELS
            if constexpr (C == 4) i = MergeFourChannels<Rule, Transform>(apply, planes, fill, pixels, i, n, stores);
#endif
            // Local copies: stores through `pixels` may not alias them, so they stay in registers.
            const From* source[C];
            for (size_t c = 0; c < C; ++c) source[c] = planes[c];
            // Each plane's vector is loaded once and kept in a register: GCC would
            // fold the load into every instruction of the interleave that uses it,
            // and repeated 64-byte loads across cache lines (planes off a 64-byte
            // boundary, as malloc gives) made the three-plane float merge 25 %
            // slower on this kind of processor.
            const auto channel = [&](size_t c, size_t at) {
                return source[c] ? apply(dTo, c, Opaque(hn::LoadU(dFrom, source[c] + at))) : hn::Set(dTo, fill);
            };
            // Streamed runs below AVX-512 prefetch every plane (kSourcePrefetchBytes).
            constexpr bool kPrefetch =
                std::is_same_v<std::remove_cvref_t<decltype(stores)>, quorin::HWY_NAMESPACE::StreamingStores> &&
                HWY_TARGET != HWY_AVX3 && HWY_TARGET != HWY_AVX3_DL;
            const size_t aheadPixels = kSourcePrefetchBytes / sizeof(From);
            const size_t prefetchedEnd = kPrefetch && n > aheadPixels ? n - aheadPixels : 0;
            for (; i + lanes <= n; i += lanes) {
                if (i < prefetchedEnd)
                    for (size_t c = 0; c < C; ++c)
                        if (source[c]) PrefetchSourceAhead(source[c] + i);
                if constexpr (C == 4) {
                    stores.Interleaved(dTo, pixels + i * C, channel(0, i), channel(1, i), channel(2, i), channel(3, i));
                } else {
                    static_assert(C == 3);
                    stores.Interleaved(dTo, pixels + i * C, channel(0, i), channel(1, i), channel(2, i));
                }
            }
            return i;
        };
        RunSteps(head, n, steps, scalar);
    });
#endif
}

template <size_t C, class Transform>
void SplitRow(const typename Transform::From* pixels, typename Transform::To* const* planes, const Transform& transform,
              size_t n, SplitStreaming stream) {
    using To = typename Transform::To;
    const auto scalar = [&](size_t first, size_t count) {
        To* rest[C];
        for (size_t c = 0; c < C; ++c) rest[c] = planes[c] ? planes[c] + first : nullptr;
        SplitRowScalar<C>(pixels + first * C, rest, transform, count);
    };
#if HWY_TARGET == HWY_SCALAR
    (void)stream;
    scalar(0, n);
#else
    WithVectorRule(transform, [&](const auto& apply) {
        using Rule = std::remove_cvref_t<decltype(apply)>;
        using From = typename Transform::From;
        const typename Rule::Lanes dw;
        const hn::Rebind<From, decltype(dw)> dFrom;
        const hn::Rebind<To, decltype(dw)> dTo;
        const size_t lanes = hn::Lanes(dw);
        // Four channels on 64-byte vectors, except 8-bit pixels into float
        // planes, which the general loop below does better.
        constexpr bool kFourChannels =
#ifdef QUORIN_LAYOUT_FOUR_CHANNELS
            C == 4 && sizeof(To) <= sizeof(From);
#else
            false;
#endif
        // The planes must reach a boundary of the stores' width (64 bytes
        // for the four-channel kernel's joined stores) after the same
        // number of pixels.
        constexpr bool kFloatSplit256 =
#ifdef QUORIN_LAYOUT_FLOAT_SPLIT_256
            C == 4 && std::is_same_v<From, float> && std::is_same_v<To, uint8_t>;
#else
            false;
#endif
        const size_t planeBytes = kFourChannels ? 64 : kFloatSplit256 ? 32 : lanes * sizeof(To);
        // Planes narrower than the pixels they come from (float channels
        // into bytes) are written with plain stores unless each store fills
        // a whole cache line. Their destination is a quarter of the bytes
        // read, so streaming spares little, and streaming stores that leave
        // four planes' lines half written at once held the row to 628-689
        // megapixels/s against 826-978 with plain stores (AVX2 on Zen 3,
        // 4096 x 4096, one thread; 1086 against 1277 on two).
        constexpr bool kPartialLinesIntoNarrowPlanes = !kFourChannels && C > 1 && sizeof(To) < sizeof(From);
        const bool streamed =
            stream == SplitStreaming::kAlways ||
            (stream == SplitStreaming::kWholeLinesOnly && (planeBytes % 64 == 0 || sizeof(To) > sizeof(From)));
        const size_t head = StreamingHeadOf(streamed && !kPartialLinesIntoNarrowPlanes &&
                                                (planeBytes & (planeBytes - 1)) == 0,
                                            planes, C, n, sizeof(To), planeBytes, planeBytes);
        const auto steps = [&](size_t i, const auto& store) {
#ifdef QUORIN_LAYOUT_FOUR_CHANNELS
            if constexpr (kFourChannels) i = SplitFourChannels<Rule, Transform>(apply, pixels, planes, i, n, store);
#endif
#ifdef QUORIN_LAYOUT_FLOAT_SPLIT_256
            if constexpr (kFloatSplit256) {
                i = SplitFloatsToBytes256(apply, pixels, planes, i, n, store);
                // Streaming stores write whole 32-byte vectors: the scalar tail takes the rest.
                if constexpr (std::is_same_v<std::remove_cvref_t<decltype(store)>,
                                             quorin::HWY_NAMESPACE::StreamingStores>)
                    return i;
            }
#endif
            // Local copies: stores through the planes may not alias them, so they stay in registers.
            To* out[C];
            for (size_t c = 0; c < C; ++c) out[c] = planes[c];
            for (; i + lanes <= n; i += lanes) {
                const size_t at = i;
                const auto put = [&](size_t c, auto v) { store(v, dTo, out[c] + at); };
                if constexpr (C == 4 && sizeof(From) == 1 && sizeof(To) == 4) {
                    // Whole pixels as 32-bit words, each channel shifted down: the
                    // rule widens the bytes to 32 bits anyway.
                    const hn::Rebind<uint32_t, decltype(dw)> dWords;
                    const auto words = hn::LoadU(dWords, reinterpret_cast<const uint32_t*>(pixels + at * C));
                    for (size_t c = 0; c < C; ++c) {
                        if (!out[c]) continue;
                        const auto bytes = hn::And(hn::ShiftRightSame(words, ByteShift(c)), hn::Set(dWords, 0xFFu));
                        put(c, apply(dTo, c, bytes));
                    }
                } else if constexpr (C == 4) {
                    hn::VFromD<decltype(dFrom)> v0, v1, v2, v3;
                    hn::LoadInterleaved4(dFrom, pixels + at * C, v0, v1, v2, v3);
                    if (out[0]) put(0, apply(dTo, 0, v0));
                    if (out[1]) put(1, apply(dTo, 1, v1));
                    if (out[2]) put(2, apply(dTo, 2, v2));
                    if (out[3]) put(3, apply(dTo, 3, v3));
                } else {
                    static_assert(C == 3);
                    hn::VFromD<decltype(dFrom)> v0, v1, v2;
                    hn::LoadInterleaved3(dFrom, pixels + at * C, v0, v1, v2);
                    if (out[0]) put(0, apply(dTo, 0, v0));
                    if (out[1]) put(1, apply(dTo, 1, v1));
                    if (out[2]) put(2, apply(dTo, 2, v2));
                }
            }
            return i;
        };
        RunSteps(head, n, steps, scalar);
    });
#endif
}

}  // namespace quorin::layout::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
