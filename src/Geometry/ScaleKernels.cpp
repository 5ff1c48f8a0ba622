// Vector twins of the scaling passes (ScaleRules.h), compiled for every
// Highway target. Fixed-point sums are integer sums, exact in any order;
// float sums keep the table's order, one multiply and one add per tap, no
// fused multiply-add.
//
// Layouts:
//  - vertical pass: the lanes are consecutive samples of the output row;
//    each tap adds one source row's samples times the tap's weight;
//  - horizontal pass, four channels: one output pixel per 128-bit vector,
//    its channels in the lanes (two vectors of two lanes for doubles); this
//    measured faster than gathering the taps of several outputs' pixels;
//  - horizontal pass, one channel: the lanes are consecutive output pixels,
//    whose taps' samples and weights are gathered lane by lane.
// Samples that do not fill a vector are done by the scalar rule. The one-lane
// HWY_SCALAR target keeps the scalar passes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Geometry/ScaleKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Core/CanonicalNaN-inl.h"
#include "Core/Intrinsics-inl.h"
#include "Core/Streaming.h"
#include "Geometry/ScaleKernels.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::scale::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using quorin::HWY_NAMESPACE::CanonicalNaNs;

#if HWY_TARGET != HWY_SCALAR

// The accumulator's lane type of an arithmetic.
template <Arithmetic A> struct AccLaneOf { using Type = float; };
template <> struct AccLaneOf<Arithmetic::Fixed> { using Type = int32_t; };
template <> struct AccLaneOf<Arithmetic::Double> { using Type = double; };

// trunc((double)acc + 0.5) of float sums, as 32-bit integers, for results
// clamped to the sample's range afterwards: trunc(acc + h) in float, h the
// float below one half, 0.5 - 2^-25. Adding 0.5 itself in float fails only
// for acc = h, whose sum ties to 1; with h, a fraction of one half or more
// still reaches the next whole number (at worst a tie to it, broken towards
// the even 1.0 for sums below 1), and a smaller fraction stays more than half
// a step short of it. Checked against the double rule for every finite float
// of magnitude up to 10^9, clamped to 8 and to 16 bits. A sum below 0 gives
// at most 0 either way. Sums are bounded by the largest sample times the
// weights' absolute sum, far inside the int32 range.
template <class DF>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> RoundedSums(DF df, hn::Vec<DF> acc) {
    return quorin::HWY_NAMESPACE::TruncateInRange(hn::RebindToSigned<DF>(), hn::Add(acc, hn::Set(df, 0x1.fffffep-2f)));
}

// One arithmetic's sum over vectors whose lanes are independent outputs:
// the rule of SumRule<A, T> lane by lane.
template <Arithmetic A, class T, class D>
struct VectorSum {
    using Lane = typename AccLaneOf<A>::Type;
    using V = hn::Vec<D>;
    using DT = hn::Rebind<T, D>;

    // Lanes(d) samples from p, as accumulator lanes.
    static HWY_INLINE V Load(D d, const uint8_t* p) {
        const auto samples = hn::LoadU(DT(), reinterpret_cast<const T*>(p));
        if constexpr (A == Arithmetic::Fixed) {
            return hn::PromoteTo(d, samples);
        } else if constexpr (A == Arithmetic::Float) {
            return hn::ConvertTo(d, hn::PromoteTo(hn::RebindToSigned<D>(), samples));
        } else if constexpr (A == Arithmetic::Double) {
            return hn::PromoteTo(d, samples);
        } else {
            return samples;
        }
    }
    static HWY_INLINE Lane Convert(T sample) { return static_cast<Lane>(sample); }

    static HWY_INLINE V Add(V acc, V w, V x) { return hn::Add(acc, hn::Mul(w, x)); }
    // The first tap's sum, 0 + w * x: w * x itself for integer formats (the
    // sign of a zero sum is lost in their stored result); float formats
    // store a zero's sign, so theirs adds.
    static HWY_INLINE V Start(V w, V x) {
        if constexpr (A == Arithmetic::Fixed || A == Arithmetic::Float) {
            return hn::Mul(w, x);
        } else {
            return hn::Add(hn::Zero(hn::DFromV<V>()), hn::Mul(w, x));
        }
    }
    // How many leading taps of a table entry a float sum of integer samples
    // must add: a last weight of 0 adds +0 to it, which changes no stored
    // result. Every tap elsewhere.
    template <size_t kTaps, class W>
    static HWY_INLINE size_t TapsAdded(const W* weights) {
        if constexpr (A == Arithmetic::Float) {
            return weights[kTaps - 1] == 0.0f ? kTaps - 1 : kTaps;
        } else {
            return kTaps;
        }
    }

    // Stores Lanes(d) results at out.
    static HWY_INLINE void Store(D d, V acc, uint8_t* out) {
        T* o = reinterpret_cast<T*>(out);
        if constexpr (A == Arithmetic::Fixed) {
            const hn::RebindToSigned<D> di;
            const auto v = hn::ShiftRight<14>(hn::Add(acc, hn::Set(di, 16383)));
            hn::StoreU(hn::DemoteTo(DT(), hn::Min(hn::Max(v, hn::Zero(di)), hn::Set(di, kMaxSample<T>))), DT(), o);
        } else if constexpr (A == Arithmetic::Float) {
            // The narrowing saturates to the sample's range; signed samples
            // are clamped at 0 first.
            const hn::RebindToSigned<D> di;
            auto rounded = RoundedSums(d, acc);
            if constexpr (std::is_signed_v<T>) rounded = hn::Max(rounded, hn::Zero(di));
            if constexpr (std::is_same_v<T, uint8_t>) {
                // Through 16 bits: two signed saturations make the same bytes
                // with one instruction fewer than x86's direct narrowing.
                hn::StoreU(hn::DemoteTo(DT(), hn::DemoteTo(hn::Rebind<int16_t, D>(), rounded)), DT(), o);
            } else {
                hn::StoreU(hn::DemoteTo(DT(), rounded), DT(), o);
            }
        } else if constexpr (A == Arithmetic::Double) {
            hn::StoreU(CanonicalNaNs(hn::DemoteTo(DT(), acc)), DT(), o);
        } else {
            hn::StoreU(CanonicalNaNs(acc), d, o);
        }
    }
};

template <Arithmetic A>
using AccTag = hn::ScalableTag<typename AccLaneOf<A>::Type>;

template <PixelFormat F, Arithmetic A, size_t kTaps>
void VerticalPassVector(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    using T = Sample<F>;
    using W = Weight<A>;
    const AccTag<A> d;
    using Sum = VectorSum<A, T, AccTag<A>>;
    const size_t N = hn::Lanes(d);
    const size_t first = x0 * F.channels, end = (x0 + w) * F.channels;
    for (size_t y = y0; y < y0 + h; ++y) {
        const uint8_t* rows[kTaps];
        TapRows<kTaps>(job, y, rows);
        const uint8_t* weights = job.weights + y * kTaps * sizeof(W);
        W tap[kTaps];
        hn::Vec<AccTag<A>> wv[kTaps];
        for (size_t j = 0; j < kTaps; ++j) {
            tap[j] = ReadUnaligned<W>(weights + j * sizeof(W));
            wv[j] = hn::Set(d, static_cast<typename Sum::Lane>(tap[j]));
        }
        uint8_t* out = job.dst + y * job.dstRowBytes;
        size_t s = first;
        const auto samples = [&](auto taps) {
            for (; s + N <= end; s += N) {
                auto acc = Sum::Start(wv[0], Sum::Load(d, rows[0] + s * sizeof(T)));
                for (size_t j = 1; j < taps(); ++j) acc = Sum::Add(acc, wv[j], Sum::Load(d, rows[j] + s * sizeof(T)));
                Sum::Store(d, acc, out + s * sizeof(T));
            }
        };
        if (Sum::template TapsAdded<kTaps>(tap) == kTaps) {
            samples(std::integral_constant<size_t, kTaps>());
        } else {
            samples(std::integral_constant<size_t, kTaps - 1>());
        }
        ScalarSamples<F, A, kTaps>(rows, weights, s, end - s, out);
    }
}

// 8-bit samples in fixed point: a row's terms go in pairs (a, b), each
// term's samples widened to 16 bits and interleaved with the other's, so
// that a pairwise widening multiply-add by the pair's weights (a, b) adds
// both terms' products. A term is one source row, or, where the row's
// weights are the same read from either end (as in every exact halving and
// doubling), the sum of the two rows that take the same weight: at most 510,
// so one multiply-add serves two taps. Taps of weight 0 are left out. Weights
// fit in 16 bits and terms are below 2^9, so every product and sum is exact
// in 32 bits and equals the rule's wrapped unsigned sum in any order. The
// interleave takes each 128-bit block's lower or upper half; the narrowing
// of the two halves' sums puts each block's samples back in order.
template <size_t kTaps>
struct VerticalTerms {
    static constexpr size_t kMaxPairs = (kTaps + 1) / 2;
    const uint8_t* rows[2 * kMaxPairs][2];  // a term's row, and its second row when folded
    int32_t weights[2 * kMaxPairs];
    size_t pairs = 0;
    bool folded = false;

    // False when a weight does not fit 16 bits.
    bool plan(const uint8_t* const* tapRows, const int32_t* tap) {
        // The taps of weight other than 0; past them, any row with weight 0.
        const uint8_t* used[2 * kMaxPairs];
        int32_t weight[2 * kMaxPairs] = {};
        std::fill(std::begin(used), std::end(used), tapRows[0]);
        size_t n = 0;
        for (size_t j = 0; j < kTaps; ++j) {
            if (tap[j] < INT16_MIN || tap[j] > INT16_MAX) return false;
            if (tap[j] != 0) used[n] = tapRows[j], weight[n++] = tap[j];
        }
        folded = n % 2 == 0 && n > 0;
        for (size_t j = 0; folded && j < n / 2; ++j) folded = weight[j] == weight[n - 1 - j];
        const size_t terms = folded ? n / 2 : std::max<size_t>(n, 1);
        for (size_t t = 0; t < 2 * kMaxPairs; ++t) {
            const bool real = t < terms;
            rows[t][0] = real ? used[t] : tapRows[0];
            rows[t][1] = real && folded ? used[n - 1 - t] : rows[t][0];
            weights[t] = real ? weight[t] : 0;
        }
        pairs = (terms + 1) / 2;
        return true;
    }
};

template <PixelFormat F, size_t kTaps>
void VerticalBytesFixed(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    using Terms = VerticalTerms<kTaps>;
    const hn::ScalableTag<int16_t> d16;
    const hn::RebindToUnsigned<decltype(d16)> du16;
    const hn::Repartition<int32_t, decltype(d16)> d32;
    const hn::Rebind<uint8_t, decltype(d16)> d8;
    const size_t N = hn::Lanes(d16);
    const size_t first = x0 * F.channels, end = (x0 + w) * F.channels;
    // A streaming store writes a whole vector: not the half vector of bytes
    // that 128-bit vectors narrow to.
    const bool stream = job.stream && N >= 16;
    for (size_t y = y0; y < y0 + h; ++y) {
        const uint8_t* rows[kTaps];
        TapRows<kTaps>(job, y, rows);
        const uint8_t* weights = job.weights + y * kTaps * 4;
        int32_t tap[kTaps];
        for (size_t j = 0; j < kTaps; ++j) tap[j] = ReadUnaligned<int32_t>(weights + j * 4);
        Terms terms;
        if (!terms.plan(rows, tap)) {
            VerticalPassVector<F, Arithmetic::Fixed, kTaps>(job, x0, y, w, 1);
            continue;
        }
        hn::Vec<decltype(d16)> pairs[Terms::kMaxPairs];
        for (size_t p = 0; p < terms.pairs; ++p) {
            const uint32_t pair = (static_cast<uint32_t>(terms.weights[2 * p + 1]) << 16) |
                                  (static_cast<uint32_t>(terms.weights[2 * p]) & 0xFFFFu);
            pairs[p] = hn::BitCast(d16, hn::Set(d32, static_cast<int32_t>(pair)));
        }
        uint8_t* out = job.dst + y * job.dstRowBytes;
        size_t s = first;
        if (stream) {
            // Streaming stores want whole aligned vectors: the samples before
            // the first aligned one take the scalar rule.
            const size_t before = std::min((N - reinterpret_cast<uintptr_t>(out + s) % N) % N, end - s);
            ScalarSamples<F, Arithmetic::Fixed, kTaps>(rows, weights, s, before, out);
            s += before;
        }
        // Runs whole vectors from sample `at` on; returns where it stopped.
        const auto samples = [&](size_t at, auto pairCount, auto fold) {
            constexpr size_t kTerms = 2 * decltype(pairCount)::value;
            // Locals, not the plan's fields, which the stores could alias.
            const uint8_t* termRows[kTerms][2];
            for (size_t t = 0; t < kTerms; ++t) termRows[t][0] = terms.rows[t][0], termRows[t][1] = terms.rows[t][1];
            const auto term = [&](size_t t) {
                const auto a = hn::BitCast(d16, hn::PromoteTo(du16, hn::LoadU(d8, termRows[t][0] + at)));
                if constexpr (!decltype(fold)::value) return a;
                return hn::Add(a, hn::BitCast(d16, hn::PromoteTo(du16, hn::LoadU(d8, termRows[t][1] + at))));
            };
            for (; at + N <= end; at += N) {
                // Each sum has a second accumulator, which x86 leaves at zero.
                auto lower = hn::Zero(d32), upper = hn::Zero(d32), lowerMore = hn::Zero(d32), upperMore = hn::Zero(d32);
                for (size_t p = 0; p < kTerms / 2; ++p) {
                    const auto a = term(2 * p), b = term(2 * p + 1);
                    lower = hn::ReorderWidenMulAccumulate(d32, hn::InterleaveLower(d16, a, b), pairs[p], lower, lowerMore);
                    upper = hn::ReorderWidenMulAccumulate(d32, hn::InterleaveUpper(d16, a, b), pairs[p], upper, upperMore);
                }
                lower = hn::RearrangeToOddPlusEven(lower, lowerMore);
                upper = hn::RearrangeToOddPlusEven(upper, upperMore);
                const auto round = [&](hn::Vec<decltype(d32)> sum) { return hn::ShiftRight<14>(hn::Add(sum, hn::Set(d32, 16383))); };
                const auto bytes = hn::DemoteTo(d8, hn::ReorderDemote2To(d16, round(lower), round(upper)));
                if (stream) {
                    hn::Stream(bytes, d8, out + at);
                } else {
                    hn::StoreU(bytes, d8, out + at);
                }
            }
            return at;
        };
        const auto withFold = [&](auto pairCount) {
            return terms.folded ? samples(s, pairCount, std::true_type()) : samples(s, pairCount, std::false_type());
        };
        switch (terms.pairs) {
            case 1: s = withFold(std::integral_constant<size_t, 1>()); break;
            case 2: s = withFold(std::integral_constant<size_t, 2>()); break;
            case 3: s = withFold(std::integral_constant<size_t, 3>()); break;
            default: s = withFold(std::integral_constant<size_t, Terms::kMaxPairs>()); break;
        }
        ScalarSamples<F, Arithmetic::Fixed, kTaps>(rows, weights, s, end - s, out);
    }
    if (stream && !StreamFenceDeferred()) hwy::FlushStream();
}

// Whether a float sum's 8-bit results go out through x86's per-block
// saturating packs (VerticalBytesFloat); elsewhere VerticalPassVector serves.
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4
constexpr bool kBlockPacks = true;
#else
constexpr bool kBlockPacks = false;
#endif

// Four vectors of rounded sums as bytes: two signed packs to 16 bits and an
// unsigned pack to 8, which saturate as the rule's clamp does. Block b of
// the result holds block b of q0, then of q1, q2 and q3.
template <class D8, class VI>
HWY_INLINE hn::Vec<D8> PackBlocks(D8, VI q0, VI q1, VI q2, VI q3) {
#if HWY_TARGET == HWY_AVX2
    return hn::Vec<D8>{_mm256_packus_epi16(_mm256_packs_epi32(q0.raw, q1.raw), _mm256_packs_epi32(q2.raw, q3.raw))};
#elif HWY_TARGET == HWY_SSE4
    return hn::Vec<D8>{_mm_packus_epi16(_mm_packs_epi32(q0.raw, q1.raw), _mm_packs_epi32(q2.raw, q3.raw))};
#else
    // The same order and saturation lane by lane; the kernels take it only
    // where kBlockPacks holds.
    const hn::Repartition<int32_t, D8> d32;
    HWY_ALIGN int32_t sums[4][HWY_MAX_BYTES / 4];
    HWY_ALIGN uint8_t bytes[HWY_MAX_BYTES];
    hn::Store(q0, d32, sums[0]), hn::Store(q1, d32, sums[1]), hn::Store(q2, d32, sums[2]), hn::Store(q3, d32, sums[3]);
    for (size_t i = 0; i < hn::Lanes(D8()); ++i)
        bytes[i] = static_cast<uint8_t>(std::clamp(sums[i / 4 % 4][i / 16 * 4 + i % 4], 0, 255));
    return hn::Load(D8(), bytes);
#endif
}

// 8-bit samples in float, a whole vector of bytes a step: quarter q of the
// step's sums holds bytes 4q..4q+3 of every block of the source rows, widened
// by one byte shuffle and converted, so that PackBlocks puts the results back
// in order and one store (streamed where the job asks) writes them all.
template <PixelFormat F, size_t kTaps>
void VerticalBytesFloat(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    const hn::ScalableTag<uint8_t> d8;
    const hn::Repartition<float, decltype(d8)> df;
    const hn::Repartition<int32_t, decltype(d8)> d32;
    using Sum = VectorSum<Arithmetic::Float, uint8_t, decltype(df)>;
    const size_t N = hn::Lanes(d8);
    const size_t first = x0 * F.channels, end = (x0 + w) * F.channels;
    hn::Vec<decltype(d8)> quarters[4];
    for (size_t q = 0; q < 4; ++q) {
        HWY_ALIGN uint8_t bytes[16];
        for (size_t k = 0; k < 16; ++k) bytes[k] = k % 4 == 0 ? static_cast<uint8_t>(4 * q + k / 4) : 0x80;
        quarters[q] = hn::LoadDup128(d8, bytes);
    }
    for (size_t y = y0; y < y0 + h; ++y) {
        const uint8_t* rows[kTaps];
        TapRows<kTaps>(job, y, rows);
        const uint8_t* weights = job.weights + y * kTaps * sizeof(float);
        float tap[kTaps];
        hn::Vec<decltype(df)> wv[kTaps];
        for (size_t j = 0; j < kTaps; ++j) {
            tap[j] = ReadUnaligned<float>(weights + j * sizeof(float));
            wv[j] = hn::Set(df, tap[j]);
        }
        uint8_t* out = job.dst + y * job.dstRowBytes;
        size_t s = first;
        if (job.stream) {
            const size_t before = std::min((N - reinterpret_cast<uintptr_t>(out + s) % N) % N, end - s);
            ScalarSamples<F, Arithmetic::Float, kTaps>(rows, weights, s, before, out);
            s += before;
        }
        const auto samples = [&](auto taps) {
            for (; s + N <= end; s += N) {
                hn::Vec<decltype(df)> acc[4];
                const auto quarter = [&](hn::Vec<decltype(d8)> v, size_t q) {
                    return hn::ConvertTo(df, hn::BitCast(d32, hn::TableLookupBytesOr0(v, quarters[q])));
                };
                const auto v0 = hn::LoadU(d8, rows[0] + s);
                for (size_t q = 0; q < 4; ++q) acc[q] = Sum::Start(wv[0], quarter(v0, q));
                for (size_t j = 1; j < taps(); ++j) {
                    const auto v = hn::LoadU(d8, rows[j] + s);
                    for (size_t q = 0; q < 4; ++q) acc[q] = Sum::Add(acc[q], wv[j], quarter(v, q));
                }
                const auto bytes = PackBlocks(d8, RoundedSums(df, acc[0]), RoundedSums(df, acc[1]),
                                              RoundedSums(df, acc[2]), RoundedSums(df, acc[3]));
                if (job.stream) {
                    hn::Stream(bytes, d8, out + s);
                } else {
                    hn::StoreU(bytes, d8, out + s);
                }
            }
        };
        if (Sum::template TapsAdded<kTaps>(tap) == kTaps) {
            samples(std::integral_constant<size_t, kTaps>());
        } else {
            samples(std::integral_constant<size_t, kTaps - 1>());
        }
        ScalarSamples<F, Arithmetic::Float, kTaps>(rows, weights, s, end - s, out);
    }
    if (job.stream && !StreamFenceDeferred()) hwy::FlushStream();
}

// Four channels: one pixel's channels in the lanes of 128-bit vectors.
template <PixelFormat F, Arithmetic A, size_t kTaps>
void HorizontalPixelsVector(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    using T = Sample<F>;
    using W = Weight<A>;
    using Lane = typename AccLaneOf<A>::Type;
    const hn::CappedTag<Lane, 4> d;
    using Sum = VectorSum<A, T, hn::CappedTag<Lane, 4>>;
    const size_t N = hn::Lanes(d);  // 4, or 2 for doubles
    constexpr size_t kPixel = F.pixelBytes();
    for (size_t y = y0; y < y0 + h; ++y) {
        const uint8_t* src = job.src + y * job.srcRowBytes;
        uint8_t* dst = job.dst + y * job.dstRowBytes;
        for (size_t x = x0; x < x0 + w; ++x) {
            const uint8_t* indices = job.indices + x * kTaps * 4;
            const uint8_t* weights = job.weights + x * kTaps * sizeof(W);
            for (size_t c = 0; c < 4; c += N) {
                auto acc = hn::Zero(d);
                for (size_t j = 0; j < kTaps; ++j) {
                    const size_t index = static_cast<size_t>(ReadUnaligned<int32_t>(indices + j * 4));
                    const auto wv = hn::Set(d, static_cast<Lane>(ReadUnaligned<W>(weights + j * sizeof(W))));
                    acc = Sum::Add(acc, wv, Sum::Load(d, src + index * kPixel + c * sizeof(T)));
                }
                Sum::Store(d, acc, dst + x * kPixel + c * sizeof(T));
            }
        }
    }
}

// Four 8-bit channels: one output pixel per 128-bit block, so a vector holds
// as many outputs as it has blocks. Where an output's taps are consecutive
// pixels (everywhere but near the edges), its block loads the 16 bytes of
// its first four taps and the 16 bytes ending at its last tap, and byte
// shuffles spread each tap's samples over the block's lanes, the four
// channels in memory order; each lane then sums its taps as the rule does,
// and the lanes are the outputs' channels in memory order.
//
// Fixed point: a shuffle puts a pair of taps' samples in the 16-bit halves
// (a, b) of each channel's 32-bit lane, and a pairwise widening
// multiply-add by the pair's weights (a, b) adds both products. Weights are
// at most 16384 in magnitude and samples at most 255, so every product and
// sum is exact in 32 bits and equals the rule's wrapped unsigned sum.
// Float: a shuffle widens one tap's samples to 32-bit lanes, which are
// converted, multiplied by the tap's weight and added in table order.
template <size_t kTaps>
struct TapBytes {
    static_assert(kTaps >= 5 && kTaps <= 8, "two 4-pixel loads cover the taps");
    static constexpr size_t kSecond = kTaps - 4;  // the second load's first tap
    static constexpr size_t kPairs = (kTaps + 1) / 2;
    static constexpr bool InSecond(size_t tap) { return tap >= 4; }
    static constexpr size_t Position(size_t tap) { return InSecond(tap) ? tap - kSecond : tap; }
    // Byte k of a block of 32-bit lanes holding the samples of taps
    // `low` (low 16 bits) and `high` (high 16 bits, or none when >= kTaps).
    static constexpr uint8_t Byte(size_t low, size_t high, size_t k) {
        const size_t channel = k / 4, part = k % 4;
        const size_t tap = part < 2 ? low : high;
        if (part % 2 == 1 || tap >= kTaps) return 0x80;  // a zero byte
        return static_cast<uint8_t>(4 * Position(tap) + channel);
    }
};

// Lanes(d) / 16 blocks of 16 bytes, block k from row + offsets[k].
template <class D>
HWY_INLINE hn::VFromD<D> LoadBlocks(D d, const uint8_t* row, const size_t* offsets) {
    if constexpr (hn::MaxLanes(D()) <= 16) {
        return hn::LoadU(d, row + offsets[0]);
    } else {
        const hn::Half<D> dh;
        return hn::Combine(d, LoadBlocks(dh, row, offsets + hn::MaxLanes(dh) / 16), LoadBlocks(dh, row, offsets));
    }
}

// The byte shuffles of a block: entry p takes taps (2p, 2p + 1) into the
// halves of 32-bit lanes when `pairs`, else tap p alone.
template <size_t kTaps, size_t kCount, class D>
HWY_INLINE void TapShuffles(D d8, bool pairs, hn::VFromD<D> (&shuffles)[kCount]) {
    for (size_t p = 0; p < kCount; ++p) {
        HWY_ALIGN uint8_t bytes[16];
        for (size_t k = 0; k < 16; ++k)
            bytes[k] = pairs ? TapBytes<kTaps>::Byte(2 * p, 2 * p + 1, k) : TapBytes<kTaps>::Byte(p, kTaps, k);
        shuffles[p] = hn::LoadDup128(d8, bytes);
    }
}

// Runs the columns in chunks of kChunk outputs. For each chunk, `prepare(i,
// weights)` takes output cx + i's weights in table order; then, row by row,
// `group(src, first, second, i, out)` makes the outputs from i on, a vector's
// worth, from the blocks at src + first[k] and src + second[k]. Outputs that
// do not fill a vector of such outputs take the scalar rule.
template <Arithmetic A, size_t kTaps, size_t kChunk, class Prepare, class Group>
HWY_INLINE void OverTapBlocks(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h, size_t blocks,
                              Prepare&& prepare, Group&& group) {
    using W = Weight<A>;
    size_t offsets[2][kChunk];
    bool direct[kChunk], vector[kChunk];
    for (size_t cx = x0; cx < x0 + w; cx += kChunk) {
        const size_t n = std::min(kChunk, x0 + w - cx);
        for (size_t i = 0; i < n; ++i) {
            const uint8_t* entry = job.indices + (cx + i) * kTaps * 4;
            const int32_t first = ReadUnaligned<int32_t>(entry);
            offsets[0][i] = static_cast<size_t>(first) * 4;
            offsets[1][i] = (static_cast<size_t>(first) + TapBytes<kTaps>::kSecond) * 4;
            W weights[kTaps];
            for (size_t j = 0; j < kTaps; ++j) weights[j] = ReadUnaligned<W>(job.weights + ((cx + i) * kTaps + j) * sizeof(W));
            direct[i] = ReadUnaligned<int32_t>(entry + (kTaps - 1) * 4) - first == static_cast<int32_t>(kTaps - 1) &&
                        prepare(i, weights);
        }
        for (size_t i = 0; i < n; ++i) {
            bool whole = i + blocks <= n;
            for (size_t k = 0; whole && k < blocks; ++k) whole = direct[i + k];
            vector[i] = whole;
        }
        for (size_t y = y0; y < y0 + h; ++y) {
            const uint8_t* src = job.src + y * job.srcRowBytes;
            uint8_t* dst = job.dst + y * job.dstRowBytes;
            // The next row's bytes are asked for while this row is computed:
            // rows are too far apart for the processor to guess them.
            const uint8_t* next = y + 1 < y0 + h ? src + job.srcRowBytes : src;
            size_t i = 0;
            while (i < n) {
                if (!vector[i]) {
                    HorizontalPassScalar<kARGB8888, A, kTaps>(job, cx + i, y, 1, 1);
                    ++i;
                    continue;
                }
                hwy::Prefetch(next + offsets[0][i]);
                group(src, offsets[0] + i, offsets[1] + i, i, dst + (cx + i) * 4);
                i += blocks;
            }
        }
    }
}

template <Arithmetic A, size_t kTaps>
void HorizontalBytePixels(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    using Taps = TapBytes<kTaps>;
    constexpr bool kFixed = A == Arithmetic::Fixed;
    // Fixed point takes the taps in pairs, float one by one.
    constexpr size_t kSteps = kFixed ? Taps::kPairs : kTaps, kChunk = kFixed ? 512 : 256;
    const hn::ScalableTag<uint8_t> d8;
    const hn::Repartition<int16_t, decltype(d8)> d16;
    const hn::Repartition<int32_t, decltype(d8)> d32;
    const hn::Repartition<float, decltype(d8)> df;
    using DA = std::conditional_t<kFixed, decltype(d32), decltype(df)>;
    using Sum = VectorSum<A, uint8_t, DA>;
    hn::VFromD<decltype(d8)> shuffles[kSteps];
    TapShuffles<kTaps>(d8, kFixed, shuffles);
    // Each step's weight (fixed point: the pair's weights (a, b) in the
    // halves of a lane), repeated over a block so that consecutive outputs'
    // blocks follow each other.
    HWY_ALIGN typename Sum::Lane steps[kSteps][kChunk][4];
    const auto prepare = [&](size_t i, const Weight<A>* weights) {
        for (size_t p = 0; p < kSteps; ++p) {
            typename Sum::Lane step = weights[p];
            if constexpr (kFixed) {
                for (size_t j = 2 * p; j < 2 * p + 2 && j < kTaps; ++j)
                    if (weights[j] < INT16_MIN || weights[j] > INT16_MAX) return false;
                const uint32_t b = 2 * p + 1 < kTaps ? static_cast<uint32_t>(weights[2 * p + 1]) : 0u;
                step = static_cast<int32_t>((b << 16) | (static_cast<uint32_t>(weights[2 * p]) & 0xFFFFu));
            }
            for (size_t k = 0; k < 4; ++k) steps[p][i][k] = step;
        }
        return true;
    };
    const auto group = [&](const uint8_t* src, const size_t* first, const size_t* second, size_t i, uint8_t* out) {
        const auto low = LoadBlocks(d8, src, first);
        const auto high = LoadBlocks(d8, src, second);
        const auto taps = [&](size_t p) {
            return hn::TableLookupBytesOr0(Taps::InSecond(kFixed ? 2 * p : p) ? high : low, shuffles[p]);
        };
        if constexpr (kFixed) {
            auto sum0 = hn::Zero(d32), sum1 = hn::Zero(d32);
            for (size_t p = 0; p < kSteps; ++p)
                sum0 = hn::ReorderWidenMulAccumulate(d32, hn::BitCast(d16, taps(p)),
                                                     hn::BitCast(d16, hn::LoadU(d32, &steps[p][i][0])), sum0, sum1);
            Sum::Store(d32, hn::RearrangeToOddPlusEven(sum0, sum1), out);
        } else {
            auto acc = hn::Zero(df);
            for (size_t j = 0; j < kSteps; ++j)
                acc = Sum::Add(acc, hn::LoadU(df, &steps[j][i][0]), hn::ConvertTo(df, hn::BitCast(d32, taps(j))));
            Sum::Store(df, acc, out);
        }
    };
    OverTapBlocks<A, kTaps, kChunk>(job, x0, y0, w, h, hn::Lanes(d8) / 16, prepare, group);
}

// The part of output columns [x0, x0 + w) in an exact halving's run
// (PassJob::runFirst..runEnd) that fills whole groups of `group` outputs goes
// to `run(begin, end, weights)`, with the run's weights in table order; the
// rest, and every column when the run's weights do not suit (`suits`), takes
// HorizontalBytePixels.
template <Arithmetic A, size_t kTaps, class Suits, class Run>
HWY_INLINE void OverHalvingRun(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h, size_t group,
                               Suits&& suits, Run&& run) {
    const size_t begin = std::max<size_t>(x0, job.runFirst), end0 = std::min<size_t>(x0 + w, job.runEnd);
    Weight<A> weights[kTaps] = {};
    if (kTaps == 5 && end0 >= begin + group)
        for (size_t j = 0; j < kTaps; ++j) weights[j] = ReadUnaligned<Weight<A>>(job.weights + (begin * kTaps + j) * sizeof(Weight<A>));
    if (kTaps != 5 || end0 < begin + group || !suits(weights))
        return HorizontalBytePixels<A, kTaps>(job, x0, y0, w, h);
    const size_t end = begin + (end0 - begin) / group * group;
    if (begin > x0) HorizontalBytePixels<A, kTaps>(job, x0, y0, begin - x0, h);
    if (x0 + w > end) HorizontalBytePixels<A, kTaps>(job, end, y0, x0 + w - end, h);
    run(begin, end, weights);
}

// The source bytes a halving's loads reach a page later, asked for now: the
// processor's own prefetcher stops at page boundaries, and without this the
// halvings read their source at half the rate a box filter does. Past the
// end of the row's run, the next row's run of the block, if any, is asked for.
class HalvingAhead {
public:
    static constexpr size_t kBytes = 4096;

    HalvingAhead(const PassJob& job, const uint8_t* run, bool nextInBlock, size_t outputs)
        : run_(run), next_(nextInBlock ? run + job.srcRowBytes : nullptr), runBytes_(outputs * 8) {}

    // Asks for the byte kBytes on from byte `at` of the run.
    HWY_INLINE void ask(size_t at) const {
        const size_t ahead = at + kBytes;
        if (ahead < runBytes_) {
            hwy::Prefetch(run_ + ahead);
        } else if (next_ != nullptr && ahead - runBytes_ < runBytes_) {
            hwy::Prefetch(next_ + (ahead - runBytes_));
        }
    }

private:
    const uint8_t* run_;
    const uint8_t* next_;
    size_t runBytes_;
};

// Four 8-bit channels in fixed point over an exact halving's run: every
// output takes the same weights on the five pixels from two after the
// previous output's first, and the fifth weight is 0 (the B-spline at 2.5
// pixels). A block of 16 bytes holds four pixels, two pairs;
// a shuffle puts a pair's two samples of each channel in the 16-bit halves
// of that channel's 32-bit lane, and a pairwise widening multiply-add by the
// pair's weights adds both products. Block k of a load at output o's first
// pixel holds pairs 0 and 1 of output o + 2k, whose pair 1 is pair 0 of
// output o + 2k + 1; a load four pixels on holds the pairs after those. So
// two loads make 2 outputs a block with no per-pixel gather, and narrowing
// the even and odd outputs' sums together puts them back in order block by
// block. Exact for the reasons given for HorizontalBytePixels.
template <size_t kTaps>
void HalvingBytesFixed(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    const hn::ScalableTag<uint8_t> d8;
    const hn::Repartition<int16_t, decltype(d8)> d16;
    const hn::Repartition<int32_t, decltype(d8)> d32;
    const hn::Rebind<uint8_t, decltype(d16)> dOut;
    const size_t group = hn::Lanes(d8) / 8;  // outputs per step: two per block
    const auto suits = [](const int32_t* weights) {
        bool fits = true;
        for (size_t j = 0; j < kTaps; ++j)
            fits = fits && (j == 4 ? weights[j] == 0 : weights[j] >= INT16_MIN && weights[j] <= INT16_MAX);
        return fits;
    };
    OverHalvingRun<Arithmetic::Fixed, kTaps>(job, x0, y0, w, h, group, suits, [&](size_t begin, size_t end,
                                                                                const int32_t* weights) {
        hn::Vec<decltype(d16)> pairs[2];
        for (size_t p = 0; p < 2; ++p) {
            const uint32_t pair = (static_cast<uint32_t>(weights[2 * p + 1]) << 16) | (static_cast<uint32_t>(weights[2 * p]) & 0xFFFFu);
            pairs[p] = hn::BitCast(d16, hn::Set(d32, static_cast<int32_t>(pair)));
        }
        // Byte k of a block's 32-bit lanes: channel k / 4 of the pair's first
        // pixel (part 0) or second (part 2), each widened by a zero byte.
        HWY_ALIGN uint8_t low[16], high[16];
        for (size_t k = 0; k < 16; ++k) {
            const size_t channel = k / 4, part = k % 4;
            low[k] = part % 2 == 1 ? 0x80 : static_cast<uint8_t>(channel + 2 * part);
            high[k] = part % 2 == 1 ? 0x80 : static_cast<uint8_t>(channel + 2 * part + 8);
        }
        const auto lowPair = hn::LoadDup128(d8, low), highPair = hn::LoadDup128(d8, high);
        const auto round = hn::Set(d32, 16383);
        const size_t firstPixel = static_cast<size_t>(ReadUnaligned<int32_t>(job.indices + begin * kTaps * 4));
        for (size_t y = y0; y < y0 + h; ++y) {
            const uint8_t* src = job.src + y * job.srcRowBytes + firstPixel * 4;
            uint8_t* dst = job.dst + y * job.dstRowBytes;
            const HalvingAhead ahead(job, src, y + 1 < y0 + h, end - begin);
            for (size_t x = begin; x < end; x += group) {
                const uint8_t* s = src + (x - begin) * 8;
                ahead.ask((x - begin) * 8);
                const auto a = hn::LoadU(d8, s), b = hn::LoadU(d8, s + 16);
                const auto shared = hn::BitCast(d16, hn::TableLookupBytesOr0(a, highPair));
                // Each sum has a second accumulator, which x86 leaves at zero.
                auto even = hn::Zero(d32), odd = hn::Zero(d32), evenMore = hn::Zero(d32), oddMore = hn::Zero(d32);
                even = hn::ReorderWidenMulAccumulate(d32, hn::BitCast(d16, hn::TableLookupBytesOr0(a, lowPair)),
                                                     pairs[0], even, evenMore);
                even = hn::ReorderWidenMulAccumulate(d32, shared, pairs[1], even, evenMore);
                odd = hn::ReorderWidenMulAccumulate(d32, shared, pairs[0], odd, oddMore);
                odd = hn::ReorderWidenMulAccumulate(d32, hn::BitCast(d16, hn::TableLookupBytesOr0(b, lowPair)),
                                                    pairs[1], odd, oddMore);
                even = hn::RearrangeToOddPlusEven(even, evenMore);
                odd = hn::RearrangeToOddPlusEven(odd, oddMore);
                const auto evenOut = hn::ShiftRight<14>(hn::Add(even, round));
                const auto oddOut = hn::ShiftRight<14>(hn::Add(odd, round));
                hn::StoreU(hn::DemoteTo(dOut, hn::ReorderDemote2To(d16, evenOut, oddOut)), dOut, dst + x * 4);
            }
        }
    });
}

// Four 8-bit channels in float over an exact halving's run, where the
// fifth weight is 0 (VectorSum::TapsAdded leaves four taps): output o's taps
// are the four pixels from its first, two pixels after output o - 1's
// first. Block k of a load at output o's first pixel holds the taps of
// output o + 2k, and its last two pixels are the first two taps of output
// o + 2k + 1, whose last two are the first two of block k of a load four
// pixels on. Byte shuffles widen a block's pixel to 32-bit lanes, each
// converted once and taken by both outputs, multiplied by the tap's weight
// and added in table order. The narrowing of the even and odd outputs'
// results takes block k of each in turn, which puts them back in order.
// A step's last load ends at the pixel after its last output's fifth
// tap, which the run keeps inside the row.
template <size_t kTaps>
void HalvingBytesFloat(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    const hn::ScalableTag<uint8_t> d8;
    const hn::Repartition<float, decltype(d8)> df;
    const hn::Repartition<int32_t, decltype(d8)> d32;
    const hn::Repartition<int16_t, decltype(d8)> d16;
    const hn::Rebind<uint8_t, decltype(d16)> dOut;
    using Sum = VectorSum<Arithmetic::Float, uint8_t, decltype(df)>;
    constexpr size_t kUsed = 4;
    // Outputs per step: four per block where PackBlocks serves, two elsewhere.
    const size_t group = hn::Lanes(d8) / (kBlockPacks ? 4 : 8);
    const auto suits = [](const float* weights) { return Sum::template TapsAdded<kTaps>(weights) == kUsed; };
    OverHalvingRun<Arithmetic::Float, kTaps>(job, x0, y0, w, h, group, suits, [&](size_t begin, size_t end,
                                                                                const float* weights) {
        hn::Vec<decltype(df)> wv[kUsed];
        hn::Vec<decltype(d8)> shuffles[kUsed];
        for (size_t j = 0; j < kUsed; ++j) {
            wv[j] = hn::Set(df, weights[j]);
            HWY_ALIGN uint8_t bytes[16];
            for (size_t k = 0; k < 16; ++k) bytes[k] = k % 4 == 0 ? static_cast<uint8_t>(4 * j + k / 4) : 0x80;
            shuffles[j] = hn::LoadDup128(d8, bytes);
        }
        const auto pixel = [&](hn::Vec<decltype(d8)> pixels, size_t j) {
            return hn::ConvertTo(df, hn::BitCast(d32, hn::TableLookupBytesOr0(pixels, shuffles[j])));
        };
        const auto rounded = [&](const hn::Vec<decltype(df)>(&taps)[kUsed]) {
            auto acc = Sum::Start(wv[0], taps[0]);
            for (size_t j = 1; j < kUsed; ++j) acc = Sum::Add(acc, wv[j], taps[j]);
            return RoundedSums(df, acc);
        };
        const size_t firstPixel = static_cast<size_t>(ReadUnaligned<int32_t>(job.indices + begin * kTaps * 4));
        for (size_t y = y0; y < y0 + h; ++y) {
            const uint8_t* const src = job.src + y * job.srcRowBytes + firstPixel * 4;
            uint8_t* const dst = job.dst + y * job.dstRowBytes;
            const HalvingAhead ahead(job, src, y + 1 < y0 + h, end - begin);
            if constexpr (kBlockPacks) {
                // Four outputs a block: block b of every vector serves outputs
                // o + 4b .. o + 4b + 3, whose taps start at pixel 2o + 8b, so
                // block b of load k holds pixels 2o + 8b + 4k .. + 3. Load 0
                // makes the taps of output o + 4b, load 1 those of o + 4b + 2,
                // and the outputs between and after take the two pixels
                // their neighbours share; PackBlocks then leaves each block's
                // four outputs in order, for one store.
                const hn::Half<decltype(d8)> dHalf;
                const auto blocks = [&](const uint8_t* p) {
                    if constexpr (HWY_TARGET == HWY_AVX2) {
                        return hn::Combine(d8, hn::LoadU(dHalf, p + 32), hn::LoadU(dHalf, p));
                    } else {
                        return hn::LoadU(d8, p);
                    }
                };
                for (size_t x = begin; x < end; x += group) {
                    const uint8_t* s = src + (x - begin) * 8;
                    ahead.ask((x - begin) * 8);
                    const auto first = blocks(s), second = blocks(s + 16), third = blocks(s + 32);
                    const hn::Vec<decltype(df)> evenFirst[kUsed] = {pixel(first, 0), pixel(first, 1), pixel(first, 2),
                                                                    pixel(first, 3)};
                    const hn::Vec<decltype(df)> evenSecond[kUsed] = {pixel(second, 0), pixel(second, 1),
                                                                     pixel(second, 2), pixel(second, 3)};
                    const hn::Vec<decltype(df)> oddFirst[kUsed] = {evenFirst[2], evenFirst[3], evenSecond[0],
                                                                   evenSecond[1]};
                    const hn::Vec<decltype(df)> oddSecond[kUsed] = {evenSecond[2], evenSecond[3], pixel(third, 0),
                                                                    pixel(third, 1)};
                    hn::StoreU(PackBlocks(d8, rounded(evenFirst), rounded(oddFirst), rounded(evenSecond),
                                          rounded(oddSecond)),
                               d8, dst + x * 4);
                }
                continue;
            }
            for (size_t x = begin; x < end; x += group) {
                const uint8_t* s = src + (x - begin) * 8;
                ahead.ask((x - begin) * 8);
                const auto here = hn::LoadU(d8, s), on = hn::LoadU(d8, s + 16);
                const hn::Vec<decltype(df)> even[kUsed] = {pixel(here, 0), pixel(here, 1), pixel(here, 2), pixel(here, 3)};
                const hn::Vec<decltype(df)> odd[kUsed] = {even[2], even[3], pixel(on, 0), pixel(on, 1)};
                hn::StoreU(hn::DemoteTo(dOut, hn::ReorderDemote2To(d16, rounded(even), rounded(odd))), dOut, dst + x * 4);
            }
        }
    });
}

// One channel: consecutive output pixels in the lanes; each tap's samples
// and weights are gathered into a lane array first.
template <PixelFormat F, Arithmetic A, size_t kTaps>
void HorizontalPlaneVector(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    using T = Sample<F>;
    using W = Weight<A>;
    using Lane = typename AccLaneOf<A>::Type;
    const AccTag<A> d;
    using Sum = VectorSum<A, T, AccTag<A>>;
    const size_t N = hn::Lanes(d);
    HWY_ALIGN Lane samples[HWY_LANES(Lane)];
    HWY_ALIGN Lane weights[HWY_LANES(Lane)];
    size_t positions[kTaps][HWY_LANES(Lane)];
    // Each group of N outputs reads its taps' positions and weights once and
    // walks every row with them.
    size_t x = x0;
    for (; x + N <= x0 + w; x += N) {
        hn::Vec<AccTag<A>> wv[kTaps];
        for (size_t j = 0; j < kTaps; ++j) {
            for (size_t k = 0; k < N; ++k) {
                const size_t entry = (x + k) * kTaps + j;
                positions[j][k] = static_cast<size_t>(ReadUnaligned<int32_t>(job.indices + entry * 4));
                weights[k] = static_cast<Lane>(ReadUnaligned<W>(job.weights + entry * sizeof(W)));
            }
            wv[j] = hn::Load(d, weights);
        }
        for (size_t y = y0; y < y0 + h; ++y) {
            const uint8_t* src = job.src + y * job.srcRowBytes;
            auto acc = hn::Zero(d);
            for (size_t j = 0; j < kTaps; ++j) {
                for (size_t k = 0; k < N; ++k) samples[k] = Sum::Convert(SampleAt<T>(src, positions[j][k]));
                acc = Sum::Add(acc, wv[j], hn::Load(d, samples));
            }
            Sum::Store(d, acc, job.dst + y * job.dstRowBytes + x * sizeof(T));
        }
    }
    if (x < x0 + w) HorizontalPassScalar<F, A, kTaps>(job, x, y0, x0 + w - x, h);
}

void HorizontalPass(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    WithPass(job, [&]<PixelFormat F, Arithmetic A, size_t kTaps>() {
        if constexpr (F.sample == SampleKind::U8 && F.channels == 4 && A == Arithmetic::Fixed) {
            HalvingBytesFixed<kTaps>(job, x0, y0, w, h);
        } else if constexpr (F.sample == SampleKind::U8 && F.channels == 4) {
            HalvingBytesFloat<kTaps>(job, x0, y0, w, h);
        } else if constexpr (F.channels == 4) {
            HorizontalPixelsVector<F, A, kTaps>(job, x0, y0, w, h);
        } else {
            HorizontalPlaneVector<F, A, kTaps>(job, x0, y0, w, h);
        }
    });
}

void VerticalPass(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    WithPass(job, [&]<PixelFormat F, Arithmetic A, size_t kTaps>() {
        if constexpr (F.sample == SampleKind::U8 && A == Arithmetic::Fixed) {
            VerticalBytesFixed<F, kTaps>(job, x0, y0, w, h);
        } else if constexpr (F.sample == SampleKind::U8 && A == Arithmetic::Float && kBlockPacks) {
            VerticalBytesFloat<F, kTaps>(job, x0, y0, w, h);
        } else {
            VerticalPassVector<F, A, kTaps>(job, x0, y0, w, h);
        }
    });
}

#else  // HWY_SCALAR: one lane holds no pixel; the scalar passes serve.

void HorizontalPass(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    HorizontalPassScalarAny(job, x0, y0, w, h);
}
void VerticalPass(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    VerticalPassScalarAny(job, x0, y0, w, h);
}

#endif

}  // namespace quorin::scale::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::scale {

HWY_EXPORT(HorizontalPass);
HWY_EXPORT(VerticalPass);

const KernelPair<PassKernel> kHorizontalPass{&HorizontalPassScalarAny, HWY_DISPATCH_TABLE(HorizontalPass)};
const KernelPair<PassKernel> kVerticalPass{&VerticalPassScalarAny, HWY_DISPATCH_TABLE(VerticalPass)};

}  // namespace quorin::scale
#endif
