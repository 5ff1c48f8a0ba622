// Vector twins of the matrix cells (PackedRules.h), one template for all of
// them. A cell that only reorders samples of one depth moves whole vectors
// of its sample type through de-interleaving loads and interleaving stores;
// an integer cell carries each channel in 16-bit lanes, a cell into floats
// in 32-bit lanes, one pixel a lane, through the same depth rule as the
// scalar kernel. The pixels no whole step
// covers go to the scalar kernel (the core's RunSteps), so no byte outside
// the run is read or written.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/PackedKernels.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Conversion/PackedKernels.h"
#include "Core/CanonicalNaN-inl.h"
#include "Core/Intrinsics-inl.h"
#include "Core/RowLoop-inl.h"
#include "Core/SourcePrefetch.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::packed::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using quorin::HWY_NAMESPACE::CanonicalNaNs;
using quorin::HWY_NAMESPACE::RunWholeSteps;
using quorin::HWY_NAMESPACE::StoreRun;

#if HWY_TARGET != HWY_SCALAR
using quorin::HWY_NAMESPACE::ConcatBlockTriples;
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "packed words and byte pixels are read as little-endian words");

// Sources are read a kilobyte ahead of the steps: single-threaded, the
// hardware's own prefetching leaves reads that outnumber the streamed writes
// short of the streaming-copy speed. Measured on the 16-bit-to-bytes cell,
// 4096 x 4096 single-threaded with AVX2 on a Zen 3 processor (medians of
// five interleaved runs, each beside the streaming-copy row of its run):
// 63 % of the copy's speed without, 66 % at 512 bytes ahead, 77 and 82 % at
// 1024, 73 % at 2048.
HWY_INLINE void ReadAhead(const void* from, size_t bytes = 1) { PrefetchAhead(from, kReadAheadBytes, bytes); }

template <PixelFormat kFrom, PixelFormat kTo>
void ScalarPart(const uint8_t* src, uint8_t* dst, size_t first, size_t count) {
    ConvertPixels<kFrom, kTo>(src + first * kFrom.pixelBytes(), dst + first * kTo.pixelBytes(), count);
}

// A byte shuffle for every 16-byte block of pixels of four samples: the
// block's pixels as three samples each, R, G and B where the destination
// puts them, in the block's first twelve bytes (the rest zero).
struct BlockPick {
    uint8_t bytes[16];
};
template <PixelFormat kFrom, PixelFormat kTo>
constexpr BlockPick PickTriples() {
    using C = Cell<kFrom, kTo>;
    constexpr size_t sample = kFrom.sampleBytes(), perBlock = 16 / kFrom.pixelBytes();
    static_assert(kFrom.channels == 4 && kTo.channels == 3 && kTo.sampleBytes() == sample && perBlock >= 1);
    BlockPick pick{};
    for (uint8_t& b : pick.bytes) b = 0x80;
    for (size_t p = 0; p < perBlock; ++p)
        for (int c = 0; c < 3; ++c)
            for (size_t b = 0; b < sample; ++b)
                pick.bytes[(3 * p + C::to[c]) * sample + b] = static_cast<uint8_t>((4 * p + C::from[c]) * sample + b);
    return pick;
}

// Samples of one type on both sides, three of them picked from three or four.
template <PixelFormat kFrom, PixelFormat kTo>
void Reorder(const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
    using T = Sample<kFrom>;
    const hn::ScalableTag<T> d;
    const size_t lanes = hn::Lanes(d);
    if constexpr (kFrom.channels == 4) {
        // Four-sample pixels into three: whole vectors of pixels, one byte
        // shuffle per block keeping and placing three samples of each, and
        // the blocks' kept bytes joined (ConcatBlockTriples).
        const hn::ScalableTag<uint8_t> d8;
        const size_t n = hn::Lanes(d8);
        const auto pick = hn::LoadDup128(d8, PickTriples<kFrom, kTo>().bytes);
        RunWholeSteps<true>(stream, dst, pixels, kTo.pixelBytes(), lanes, [&](size_t i, auto stores) {
            const uint8_t* in = src + i * kFrom.pixelBytes();
            ReadAhead(in, lanes * kFrom.pixelBytes());
            uint8_t* out = dst + i * kTo.pixelBytes();
            const auto c = [&](size_t v) { return hn::TableLookupBytesOr0(hn::LoadU(d8, in + v * n), pick); };
            auto o0 = hn::Zero(d8), o1 = o0, o2 = o0;
            ConcatBlockTriples<false>(d8, c(0), c(1), c(2), c(3), o0, o1, o2);
            stores(o0, d8, out);
            stores(o1, d8, out + n);
            stores(o2, d8, out + 2 * n);
        }, [&](size_t first, size_t count) { ScalarPart<kFrom, kTo>(src, dst, first, count); });
    } else {
        using C = Cell<kFrom, kTo>;
        const T* from = reinterpret_cast<const T*>(src);
        T* to = reinterpret_cast<T*>(dst);
        RunWholeSteps<true>(stream, dst, pixels, kTo.pixelBytes(), lanes, [&](size_t i, auto stores) {
            auto v0 = hn::Zero(d), v1 = v0, v2 = v0;
            hn::LoadInterleaved3(d, from + 3 * i, v0, v1, v2);
            const decltype(v0) in[3] = {v0, v1, v2};
            decltype(v0) out[3] = {v0, v0, v0};
            for (int c = 0; c < 3; ++c) out[C::to[c]] = in[C::from[c]];
            stores.Interleaved(d, to + 3 * i, out[0], out[1], out[2]);
        }, [&](size_t first, size_t count) { ScalarPart<kFrom, kTo>(src, dst, first, count); });
    }
}

using D32 = hn::ScalableTag<uint32_t>;
using V32 = hn::Vec<D32>;

// floor(x / divisor) for x below 2^24, exact: a single-precision estimate,
// which such an x and quotient keep within one of the answer, then corrected
// by the remainder.
HWY_INLINE V32 DivideExactly(V32 x, uint32_t divisor) {
    const D32 d;
    const hn::RebindToSigned<D32> di;
    const hn::Rebind<float, D32> df;
    const auto xi = hn::BitCast(di, x);
    const auto estimate = hn::Mul(hn::ConvertTo(df, xi), hn::Set(df, 1.0f / static_cast<float>(divisor)));
    auto q = hn::ConvertTo(di, estimate);
    const auto dv = hn::Set(di, static_cast<int32_t>(divisor));
    const auto r = hn::Sub(xi, hn::Mul(q, dv));
    q = hn::IfThenElse(hn::Lt(r, hn::Zero(di)), hn::Sub(q, hn::Set(di, 1)), q);
    q = hn::IfThenElse(hn::Gt(r, hn::Sub(dv, hn::Set(di, 1))), hn::Add(q, hn::Set(di, 1)), q);
    return hn::BitCast(d, q);
}

// floor(x / (2^depth - 1)) as a 16-bit high multiply and a shift: the
// multiplier is 2^(15 + depth) / (2^depth - 1) rounded up. For depths 2 to 8
// it is exact for every x below 2^15, and for depth 8 below 2^16, which
// covers every x a change between depths of at most 8 bits produces
// (x < 2^depth x 2^8); the exhaustive packed tests check each of them.
struct ShortDivision {
    uint32_t multiplier;
    int shift;
};
constexpr ShortDivision ShortDivisionBy(unsigned depth) {
    const uint64_t power = uint64_t{1} << (15 + depth);
    return {static_cast<uint32_t>((power + MaxOf(depth) - 1) / MaxOf(depth)), static_cast<int>(depth) - 1};
}

// The depth rule between the depths the formats meet (5, 6, 8 and 16 bits)
// in 16-bit lanes, in one of three forms whose constants come from a search
// over every source value:
//  - Narrow: MulHigh((v << shift) + addend, multiplier), between 5, 6 and
//    8 bits (a low multiply by a constant would become a string of shifts);
//  - From16: (MulHigh(v, multiplier) + addend) >> shift;
//  - To16: v x multiplier + ((v x fraction + addend) >> shift).
// Every rule from 8 bits or fewer is checked against the depth rule for
// every value when this file compiles; the 16-bit sources' 65536 values
// are too many for a compile-time loop under every compiler, and the matrix
// tests' sources hold each of them in every channel.
enum class WordForm : uint8_t { Same, Narrow, From16, To16 };
struct WordRescale {
    unsigned from, to;
    WordForm form;
    int shift;
    uint16_t addend, multiplier, fraction;
};
inline constexpr WordRescale kWordRescales[] = {
    {5, 8, WordForm::Narrow, 4, 1, 33687, 0},   {6, 8, WordForm::Narrow, 3, 1, 33154, 0},
    {8, 5, WordForm::Narrow, 0, 4, 7971, 0},    {8, 6, WordForm::Narrow, 0, 2, 16192, 0},
    {5, 6, WordForm::Narrow, 2, 0, 33792, 0},   {6, 5, WordForm::Narrow, 0, 0, 32768, 0},
    {16, 5, WordForm::From16, 11, 1024, 63489, 0}, {16, 6, WordForm::From16, 10, 512, 64513, 0},
    {16, 8, WordForm::From16, 8, 128, 65281, 0},   {5, 16, WordForm::To16, 4, 0, 2114, 1},
    {6, 16, WordForm::To16, 8, 121, 1040, 61},     {8, 16, WordForm::To16, 0, 0, 257, 0}};
// The rule on one value with 16-bit lanes' arithmetic; ~0u where a step
// would leave 16 bits.
constexpr uint32_t ApplyWordRescale(const WordRescale& r, uint32_t v) {
    const auto fits = [](uint32_t x) { return x <= 0xFFFF; };
    switch (r.form) {
        case WordForm::Same: return v;
        case WordForm::Narrow: {
            const uint32_t x = (v << r.shift) + r.addend;
            return fits(x) ? (x * r.multiplier) >> 16 : ~0u;
        }
        case WordForm::From16: {
            const uint32_t x = ((v * r.multiplier) >> 16) + r.addend;
            return fits(x) ? x >> r.shift : ~0u;
        }
        case WordForm::To16: {
            const uint32_t whole = v * r.multiplier, part = v * r.fraction + r.addend;
            return fits(whole) && fits(part) && fits(whole + (part >> r.shift)) ? whole + (part >> r.shift) : ~0u;
        }
    }
    return ~0u;
}
static_assert([] {
    for (const WordRescale& r : kWordRescales)
        if (r.from <= 8)
            for (uint32_t v = 0; v <= MaxOf(r.from); ++v)
                if (ApplyWordRescale(r, v) != packed::Rescale(v, r.from, r.to)) return false;
    return true;
}());
// The rule's index in kWordRescales, or -1 (an index, not an address: the
// sanitizer build rejects comparing addresses in constant expressions).
constexpr int WordRescaleIndex(unsigned from, unsigned to) {
    for (int k = 0; k < static_cast<int>(std::size(kWordRescales)); ++k)
        if (kWordRescales[k].from == from && kWordRescales[k].to == to) return k;
    return -1;
}
// Whether each colour of a cell keeps its depth or has a word rescale.
template <PixelFormat kFrom, PixelFormat kTo>
constexpr bool RescalesInWords() {
    if (kFrom.sample == SampleKind::F32 || kTo.sample == SampleKind::F32) return false;
    for (int n = 0; n < 3; ++n) {
        const unsigned from = DepthOf(kFrom, Cell<kFrom, kTo>::from[n]), to = DepthOf(kTo, Cell<kFrom, kTo>::to[n]);
        if (from != to && WordRescaleIndex(from, to) < 0) return false;
    }
    return true;
}
// Each colour's rule of a cell, R, G, B, fixed when the cell compiles.
template <PixelFormat kFrom, PixelFormat kTo>
struct WordRescales {
    static constexpr WordRescale Of(int n) {
        const unsigned from = DepthOf(kFrom, Cell<kFrom, kTo>::from[n]), to = DepthOf(kTo, Cell<kFrom, kTo>::to[n]);
        return from == to ? WordRescale{from, to, WordForm::Same, 0, 0, 0, 0} : kWordRescales[WordRescaleIndex(from, to)];
    }
    static constexpr WordRescale rules[3] = {Of(0), Of(1), Of(2)};
};
template <class V>
HWY_INLINE V RescaleWordLanes(V v, const WordRescale& r) {
    const hn::DFromV<V> d;
    switch (r.form) {
        case WordForm::Same: return v;
        case WordForm::Narrow:
            if (r.shift != 0) v = hn::ShiftLeftSame(v, r.shift);
            if (r.addend != 0) v = hn::Add(v, hn::Set(d, r.addend));
            return hn::MulHigh(v, hn::Set(d, r.multiplier));
        case WordForm::From16:
            return hn::ShiftRightSame(hn::Add(hn::MulHigh(v, hn::Set(d, r.multiplier)), hn::Set(d, r.addend)), r.shift);
        case WordForm::To16:
            return hn::Add(hn::Mul(v, hn::Set(d, r.multiplier)),
                           hn::ShiftRightSame(hn::Add(hn::Mul(v, hn::Set(d, r.fraction)), hn::Set(d, r.addend)), r.shift));
    }
    return v;
}

// The scalar kernel's Rescale, lane by lane (every product is below 2^24).
// Between depths of at most 8 bits every value fits the low half of its
// lane, so 16-bit multiplies do the work: the constants have zero high
// halves, which keeps the high halves zero.
HWY_INLINE V32 RescaleLanes(V32 v, unsigned from, unsigned to) {
    const D32 d;
    if (from == to) return v;
    const uint32_t divisor = MaxOf(from);
    if (from < 2 || from > 8 || to > 8)
        return DivideExactly(hn::Add(hn::Mul(v, hn::Set(d, MaxOf(to))), hn::Set(d, (divisor - 1) / 2)), divisor);
    const hn::Repartition<uint16_t, D32> d16;
    const auto lowHalves = [&](uint32_t c) { return hn::BitCast(d16, hn::Set(d, c)); };
    const auto x = hn::Add(hn::Mul(hn::BitCast(d16, v), lowHalves(MaxOf(to))), lowHalves((divisor - 1) / 2));
    const ShortDivision by = ShortDivisionBy(from);
    return hn::ShiftRightSame(hn::BitCast(d, hn::MulHigh(x, lowHalves(by.multiplier))), by.shift);
}

// The three colour channels of the pixels from `i` on, R, G, B, one pixel a lane.
template <PixelFormat kFrom>
HWY_INLINE void LoadColours(const uint8_t* src, size_t i, const int (&position)[3], V32 (&c)[3]) {
    const D32 d;
    if constexpr (kFrom.packed()) {
        const hn::Rebind<uint16_t, D32> d16;
        const V32 w = hn::PromoteTo(d, hn::LoadU(d16, reinterpret_cast<const uint16_t*>(src) + i));
        for (int k = 0; k < 3; ++k) {
            const PackedField field = kFrom.fields[position[k]];
            c[k] = hn::And(hn::ShiftRightSame(w, field.shift), hn::Set(d, MaxOf(field.bits)));
        }
    } else if constexpr (kFrom.sample == SampleKind::U8 && kFrom.channels == 4) {
        const V32 w = hn::LoadU(d, reinterpret_cast<const uint32_t*>(src) + i);
        for (int k = 0; k < 3; ++k) c[k] = hn::And(hn::ShiftRightSame(w, 8 * position[k]), hn::Set(d, 0xFFu));
    } else {
        using T = Sample<kFrom>;
        const hn::Rebind<T, D32> dt;
        const T* from = reinterpret_cast<const T*>(src) + kFrom.channels * i;
        auto v0 = hn::Zero(dt), v1 = v0, v2 = v0, v3 = v0;
        if constexpr (kFrom.channels == 4) hn::LoadInterleaved4(dt, from, v0, v1, v2, v3);
        else hn::LoadInterleaved3(dt, from, v0, v1, v2);
        const decltype(v0) in[4] = {v0, v1, v2, v3};
        for (int k = 0; k < 3; ++k) c[k] = hn::PromoteTo(d, in[position[k]]);
    }
}

// Integer cells into floats: each channel in 32-bit lanes, converted and
// multiplied by its depth's reciprocal, then interleaved.
template <PixelFormat kFrom, PixelFormat kTo>
void ToFloats(const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
    static_assert(kTo.sample == SampleKind::F32, "integer destinations take the 16-bit-lane path");
    using C = Cell<kFrom, kTo>;
    const D32 d;
    const hn::RebindToSigned<D32> di;
    const size_t lanes = hn::Lanes(d);
    // Interleaved steps stream only when they fill whole vectors (three
    // vectors of 32-bit lanes).
    RunWholeSteps<true>(stream, dst, pixels, kTo.pixelBytes(), lanes, [&](size_t i, auto stores) {
        V32 c[3];
        LoadColours<kFrom>(src, i, C::from, c);
        const hn::Rebind<float, D32> df;
        auto f0 = hn::Zero(df);
        decltype(f0) out[3] = {f0, f0, f0};
        for (int n = 0; n < 3; ++n)
            out[C::to[n]] = hn::Mul(hn::ConvertTo(df, hn::BitCast(di, c[n])),
                                    hn::Set(df, ReciprocalOf(DepthOf(kFrom, C::from[n]))));
        stores.Interleaved(df, reinterpret_cast<float*>(dst) + 3 * i, out[0], out[1], out[2]);
    }, [&](size_t first, size_t count) { ScalarPart<kFrom, kTo>(src, dst, first, count); });
}

// The colour channels of a step of pixels, one pixel a 16-bit lane, as two
// vectors of words (the step's first and second halves) per channel:
// de-interleaved and widened from byte samples, or taken from packed words.
template <PixelFormat kFrom, class D16, class V16 = hn::Vec<D16>>
HWY_INLINE void LoadColourWords(D16 d16, const uint8_t* src, size_t i, const int (&position)[3], V16 (&c)[3][2]) {
    const size_t half = hn::Lanes(d16);
    if constexpr (kFrom.packed()) {
        const auto* words = reinterpret_cast<const uint16_t*>(src) + i;
        const V16 w[2] = {hn::LoadU(d16, words), hn::LoadU(d16, words + half)};
        for (int k = 0; k < 3; ++k) {
            const PackedField field = kFrom.fields[position[k]];
            for (int h = 0; h < 2; ++h)
                c[k][h] = hn::And(hn::ShiftRightSame(w[h], field.shift), hn::Set(d16, MaxOf(field.bits)));
        }
    } else if constexpr (kFrom.sample == SampleKind::U16) {
        const auto* samples = reinterpret_cast<const uint16_t*>(src) + kFrom.channels * i;
        for (int h = 0; h < 2; ++h) {
            auto v0 = hn::Zero(d16), v1 = v0, v2 = v0, v3 = v0;
            if constexpr (kFrom.channels == 4) hn::LoadInterleaved4(d16, samples + 4 * h * half, v0, v1, v2, v3);
            else hn::LoadInterleaved3(d16, samples + 3 * h * half, v0, v1, v2);
            const decltype(v0) in[4] = {v0, v1, v2, v3};
            for (int k = 0; k < 3; ++k) c[k][h] = in[position[k]];
        }
    } else {
        const hn::Repartition<uint8_t, D16> d8;
        const hn::Half<decltype(d8)> dh8;
        auto v0 = hn::Zero(d8), v1 = v0, v2 = v0, v3 = v0;
        if constexpr (kFrom.channels == 4) hn::LoadInterleaved4(d8, src + 4 * i, v0, v1, v2, v3);
        else hn::LoadInterleaved3(d8, src + 3 * i, v0, v1, v2);
        const decltype(v0) in[4] = {v0, v1, v2, v3};
        for (int k = 0; k < 3; ++k) {
            c[k][0] = hn::PromoteTo(d16, hn::LowerHalf(dh8, in[position[k]]));
            c[k][1] = hn::PromoteTo(d16, hn::UpperHalf(dh8, in[position[k]]));
        }
    }
}

// A field of packed words through its word rule. A narrowing or widening
// between 5, 6 and 8 bits starts from the field times 2^shift, which one
// shift of the word and a mask give (a field at the top of the word,
// shifted to the bottom, needs no mask), in place of extracting the field
// and then shifting it.
template <class V>
HWY_INLINE V RescaleField(V w, PackedField field, const WordRescale& r) {
    const hn::DFromV<V> d;
    if (r.form != WordForm::Narrow)
        return RescaleWordLanes(hn::And(hn::ShiftRightSame(w, field.shift), hn::Set(d, MaxOf(field.bits))), r);
    const int move = field.shift - r.shift;
    V x = move > 0 ? hn::ShiftRightSame(w, move) : move < 0 ? hn::ShiftLeftSame(w, -move) : w;
    if (r.shift != 0 || field.shift + field.bits < 16) x = hn::And(x, hn::Set(d, MaxOf(field.bits) << r.shift));
    if (r.addend != 0) x = hn::Add(x, hn::Set(d, r.addend));
    return hn::MulHigh(x, hn::Set(d, r.multiplier));
}

// Integer cells whose every colour has a word rule (WordRescale): the depth
// rule in 16-bit lanes, twice the pixels a vector of the 32-bit path, and
// whole vectors of bytes or 16-bit samples de-interleaved and interleaved
// in place of half and quarter vectors.
template <PixelFormat kFrom, PixelFormat kTo>
void RescaleWords(const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
    using C = Cell<kFrom, kTo>;
    const hn::ScalableTag<uint16_t> d16;
    const hn::ScalableTag<uint8_t> d8;
    using V16 = hn::Vec<decltype(d16)>;
    const size_t half = hn::Lanes(d16), step = hn::Lanes(d8);
    // Three-byte destinations: the shuffle that keeps three bytes of each
    // four-byte pixel.
    static constexpr uint8_t kKeepThree[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0x80, 0x80, 0x80, 0x80};
    [[maybe_unused]] const auto pick = hn::LoadDup128(d8, kKeepThree);
    RunWholeSteps<true>(stream, dst, pixels, kTo.pixelBytes(), step, [&](size_t i, auto stores) {
        ReadAhead(src + i * kFrom.pixelBytes(), step * kFrom.pixelBytes());
        V16 c[3][2];
        if constexpr (kFrom.packed()) {
            const auto* words = reinterpret_cast<const uint16_t*>(src) + i;
            for (int h = 0; h < 2; ++h) {
                const V16 w = hn::LoadU(d16, words + h * half);
                for (int n = 0; n < 3; ++n)
                    c[n][h] = RescaleField(w, kFrom.fields[C::from[n]], WordRescales<kFrom, kTo>::rules[n]);
            }
        } else {
            LoadColourWords<kFrom>(d16, src, i, C::from, c);
            for (int n = 0; n < 3; ++n)
                for (V16& v : c[n]) v = RescaleWordLanes(v, WordRescales<kFrom, kTo>::rules[n]);
        }
        if constexpr (kTo.packed()) {
            auto* const out = reinterpret_cast<uint16_t*>(dst) + i;
            for (int h = 0; h < 2; ++h) {
                V16 word = hn::Zero(d16);
                for (int n = 0; n < 3; ++n)
                    word = hn::Or(word, hn::ShiftLeftSame(c[n][h], kTo.fields[C::to[n]].shift));
                stores(word, d16, out + h * half);
            }
        } else if constexpr (kTo.sample == SampleKind::U16) {
            auto* const out = reinterpret_cast<uint16_t*>(dst) + 3 * i;
            for (int h = 0; h < 2; ++h) {
                V16 o[3] = {c[0][h], c[0][h], c[0][h]};
                for (int n = 0; n < 3; ++n) o[C::to[n]] = c[n][h];
                stores.Interleaved(d16, out + 3 * h * half, o[0], o[1], o[2]);
            }
        } else {
            // Each pixel's first two bytes as one word and its
            // third in the next: zipped, four-byte pixels,
            // whose three bytes ConcatBlockTriples joins.
            hn::Vec<decltype(d8)> words[4];
            for (int h = 0; h < 2; ++h) {
                V16 o[3] = {c[0][h], c[0][h], c[0][h]};
                for (int n = 0; n < 3; ++n) o[C::to[n]] = c[n][h];
                const V16 low = hn::Or(o[0], hn::ShiftLeft<8>(o[1])), high = o[2];
                words[2 * h] = hn::TableLookupBytesOr0(hn::BitCast(d8, hn::InterleaveLower(d16, low, high)), pick);
                words[2 * h + 1] = hn::TableLookupBytesOr0(hn::BitCast(d8, hn::InterleaveUpper(d16, low, high)), pick);
            }
            auto o0 = hn::Zero(d8), o1 = o0, o2 = o0;
            ConcatBlockTriples<true>(d8, words[0], words[1], words[2], words[3], o0, o1, o2);
            stores(o0, d8, dst + 3 * i);
            stores(o1, d8, dst + 3 * i + step);
            stores(o2, d8, dst + 3 * i + 2 * step);
        }
    }, [&](size_t first, size_t count) { ScalarPart<kFrom, kTo>(src, dst, first, count); });
}

// Four-byte pixels of bytes into words of fields, each pixel worked in
// place as its two 16-bit halves rather than de-interleaved: one saturating
// add puts every byte's rounding addend in, the bytes of each parity (0 and
// 2, 1 and 3) are brought to the bottom of their halves and multiplied high
// by their rule's multiplier (0 for the alpha byte), and a multiply-add of
// each 32-bit lane's halves by powers of two places the fields in the low
// half, which one narrow keeps. It takes the narrowing rules that multiply
// the byte itself (no shift) and give at 255 what they give at every sum
// past it.
template <PixelFormat kFrom, PixelFormat kTo>
constexpr bool PacksInPlace() {
    if constexpr (kFrom.sample != SampleKind::U8 || kFrom.channels != 4 || kFrom.packed() || !kTo.packed() ||
                  !RescalesInWords<kFrom, kTo>()) {
        return false;
    } else {
        for (const WordRescale& r : WordRescales<kFrom, kTo>::rules) {
            if (r.form != WordForm::Narrow || r.shift != 0) return false;
            for (uint32_t v = 0; v <= 255; ++v)
                if ((std::min(v + r.addend, 255u) * r.multiplier) >> 16 != packed::Rescale(v, 8, r.to)) return false;
        }
        return true;
    }
}
static_assert(PacksInPlace<kARGB8888, kRGB565>() && PacksInPlace<kARGB8888, kBGR565>() &&
              PacksInPlace<kRGBA8888, kRGB565>() && PacksInPlace<kRGBA8888, kBGR565>());

template <PixelFormat kFrom, PixelFormat kTo>
void PackInPlace(const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
    using C = Cell<kFrom, kTo>;
    const D32 d;
    const hn::Repartition<uint8_t, D32> d8;
    const hn::Repartition<uint16_t, D32> d16;
    const hn::Repartition<int16_t, D32> di16;
    const hn::RebindToSigned<D32> di;
    using V16 = hn::Vec<decltype(d16)>;
    const size_t quarter = hn::Lanes(d), step = hn::Lanes(d16);
    // Per byte of a pixel: its rule's addend; per parity, per half: the
    // multiplier and the field's weight 2^shift (0 and 0 for alpha).
    uint32_t addends = 0, multipliers[2] = {0, 0}, weights[2] = {0, 0};
    for (int n = 0; n < 3; ++n) {
        const WordRescale& r = WordRescales<kFrom, kTo>::rules[n];
        const int byte = C::from[n], half = 16 * (byte / 2);
        addends |= uint32_t{r.addend} << (8 * byte);
        multipliers[byte % 2] |= uint32_t{r.multiplier} << half;
        weights[byte % 2] |= (uint32_t{1} << kTo.fields[C::to[n]].shift) << half;
    }
    const auto addend = hn::BitCast(d8, hn::Set(d, addends));
    const V16 multiplier[2] = {hn::BitCast(d16, hn::Set(d, multipliers[0])), hn::BitCast(d16, hn::Set(d, multipliers[1]))};
    const hn::Vec<decltype(di16)> weight[2] = {hn::BitCast(di16, hn::Set(d, weights[0])),
                                               hn::BitCast(di16, hn::Set(d, weights[1]))};
    const auto words = [&](const uint8_t* in) {
        const V16 q = hn::BitCast(d16, hn::SaturatedAdd(hn::LoadU(d8, in), addend));
        const V16 even = hn::MulHigh(hn::And(q, hn::Set(d16, 0xFF)), multiplier[0]);
        const V16 odd = hn::MulHigh(hn::ShiftRight<8>(q), multiplier[1]);
        auto more = hn::Zero(di);
        const auto sum = hn::ReorderWidenMulAccumulate(
            di, hn::BitCast(di16, odd), weight[1],
            hn::ReorderWidenMulAccumulate(di, hn::BitCast(di16, even), weight[0], hn::Zero(di), more), more);
        return hn::BitCast(d16, hn::RearrangeToOddPlusEven(sum, more));
    };
    auto* const out = reinterpret_cast<uint16_t*>(dst);
    RunWholeSteps<true>(stream, dst, pixels, 2, step, [&](size_t i, auto stores) {
        const uint8_t* in = src + 4 * i;
        ReadAhead(in, 4 * step);
        stores(hn::ConcatEven(d16, words(in + 4 * quarter), words(in)), d16, out + i);
    }, [&](size_t first, size_t count) { ScalarPart<kFrom, kTo>(src, dst, first, count); });
}

// Whether a cell maps each source sample to the destination sample in its
// place by one depth rule: three whole samples a pixel on both sides, in
// one order, of one depth each (or a copy).
template <PixelFormat kFrom, PixelFormat kTo>
constexpr bool MapsSamples() {
    using C = Cell<kFrom, kTo>;
    if (kFrom.packed() || kTo.packed() || kFrom.channels != 3 || C::floats || kTo.sample == SampleKind::F32)
        return false;
    for (int n = 0; n < 3; ++n)
        if (C::from[n] != C::to[n]) return false;
    return RescalesInWords<kFrom, kTo>();
}

// Such a cell as a run of 3 x pixels samples, without de-interleaving: a
// step is three vectors of bytes on the narrower side, taken from or widened
// into twice as many words on a 16-bit side.
template <PixelFormat kFrom, PixelFormat kTo>
void MapSamples(const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
    constexpr WordRescale kRule = WordRescales<kFrom, kTo>::rules[0];
    constexpr size_t kInBytes = kFrom.sampleBytes(), kOutBytes = kTo.sampleBytes();
    const hn::ScalableTag<uint8_t> d8;
    const hn::Half<decltype(d8)> dh8;
    const hn::Repartition<uint16_t, decltype(d8)> d16;
    const size_t n = hn::Lanes(d8), half = hn::Lanes(d16);
    RunWholeSteps<true>(stream, dst, pixels, kTo.pixelBytes(), n, [&](size_t i, auto stores) {
        const size_t first = 3 * i;
        for (size_t v = 0; v < 3 * std::min(kInBytes, kOutBytes); ++v) {
            const size_t at = first * std::min(kInBytes, kOutBytes) + v * n;
            ReadAhead(src + at * kInBytes / std::min(kInBytes, kOutBytes));
            if constexpr (kInBytes == kOutBytes) {
                stores(hn::LoadU(d8, src + at), d8, dst + at);
            } else if constexpr (kInBytes == 2) {
                const auto* words = reinterpret_cast<const uint16_t*>(src) + at;
                const auto lower = RescaleWordLanes(hn::LoadU(d16, words), kRule);
                const auto upper = RescaleWordLanes(hn::LoadU(d16, words + half), kRule);
                stores(hn::ConcatEven(d8, hn::BitCast(d8, upper), hn::BitCast(d8, lower)), d8, dst + at);
            } else {
                const auto bytes = hn::LoadU(d8, src + at);
                auto* const words = reinterpret_cast<uint16_t*>(dst) + at;
                stores(RescaleWordLanes(hn::PromoteTo(d16, hn::LowerHalf(dh8, bytes)), kRule), d16, words);
                stores(RescaleWordLanes(hn::PromoteTo(d16, hn::UpperHalf(dh8, bytes)), kRule), d16,
                       words + half);
            }
        }
    }, [&](size_t first, size_t count) { ScalarPart<kFrom, kTo>(src, dst, first, count); });
}

// Samples into samples of the same size, colours unchanged (nothing to
// premultiply): each vector of four-sample pixels comes from one load of
// three-sample pixels, its 32-bit words spread so that every 128-bit block
// holds the twelve bytes of its pixels (four of bytes, two of 16-bit
// samples), then one byte shuffle per block places the colours and leaves
// the alpha zero for the alpha to be or-ed in. The load takes a whole
// vector, a third more than its pixels, so the steps stop where that would
// pass the end of the run and the scalar rule takes the rest.
template <PixelFormat kFrom, PixelFormat kTo>
void AddAlphaSamples(const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels, AlphaConstant constant,
                     bool stream) {
    using C = Cell<kFrom, kTo>;
    constexpr size_t kSample = kTo.sampleBytes();
    using Pixel = std::conditional_t<kSample == 1, uint32_t, uint64_t>;
    const D32 d;
    const hn::Repartition<uint8_t, D32> d8;
    const hn::Repartition<Pixel, D32> dp;
    const hn::Rebind<uint32_t, decltype(dp)> dw;
    const hn::Rebind<uint8_t, decltype(dp)> dq;
    const size_t lanes = hn::Lanes(d), step = hn::Lanes(dp);
    HWY_ALIGN uint32_t spread[hn::MaxLanes(d)];
    for (size_t i = 0; i < lanes; ++i) spread[i] = static_cast<uint32_t>(i / 4 * 3 + (i % 4 < 3 ? i % 4 : 2));
    const auto indices = hn::SetTableIndices(d, spread);
    constexpr int kAlpha = kTo.positionOf('A');
    HWY_ALIGN uint8_t order[16];
    for (size_t p = 0; p < 4 / kSample; ++p)
        for (size_t byte = 0; byte < kSample; ++byte) {
            order[kSample * (4 * p + kAlpha) + byte] = 0x80;
            for (int n = 0; n < 3; ++n)
                order[kSample * (4 * p + C::to[n]) + byte] = static_cast<uint8_t>(kSample * (3 * p + C::from[n]) + byte);
        }
    const auto shuffle = hn::LoadDup128(d8, order);
    const auto fixedAlpha = hn::Set(dp, Pixel{constant.integer} << (8 * kSample * kAlpha));
    const auto planeAlpha = [&](size_t i) {
        const auto bytes = hn::PromoteTo(dw, hn::LoadU(dq, plane + i));
        if constexpr (kSample == 1) {
            return hn::ShiftLeft<8 * kAlpha>(bytes);
        } else {  // an 8-bit alpha at 16 bits is v x 65535 / 255 = v x 257, exactly
            return hn::ShiftLeft<16 * kAlpha>(hn::PromoteTo(dp, hn::Mul(bytes, hn::Set(dw, 257u))));
        }
    };
    const size_t overread = (step + 2) / 3;
    const size_t steps = pixels > overread ? pixels - overread : 0;
    auto* const out = reinterpret_cast<Pixel*>(dst);
    const auto body = [&](size_t i, auto store) {
        const V32 words = hn::TableLookupLanes(hn::BitCast(d, hn::LoadU(d8, src + 3 * kSample * i)), indices);
        const auto colours = hn::BitCast(dp, hn::TableLookupBytesOr0(hn::BitCast(d8, words), shuffle));
        store(hn::Or(colours, plane ? planeAlpha(i) : fixedAlpha), out + i);
    };
    const auto scalar = [&](size_t first, size_t count) {
        AddAlphaPixels<kFrom, kTo>(src + 3 * kSample * first, plane ? plane + first : nullptr,
                                   dst + 4 * kSample * first, count, constant, false);
    };
    StoreRun<true>(dp, stream, dst, steps, 4 * kSample, step, body, scalar);
    scalar(steps, pixels - steps);
}

// Packed words into bytes, colours unchanged by any premultiplication: one
// pixel a 16-bit lane rather than a 32-bit one, since every step of the
// depth rule between depths of at most 8 bits fits 16 bits (as in
// RescaleLanes); each pair of byte channels becomes one 16-bit half of the
// four-byte pixel, and the halves are widened into words.
template <PixelFormat kFrom, PixelFormat kTo>
void AddAlphaFromWords(const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels, AlphaConstant constant,
                       bool stream) {
    using C = Cell<kFrom, kTo>;
    const D32 d;
    const hn::Repartition<uint16_t, D32> d16;
    const hn::Rebind<uint16_t, D32> dh;
    const hn::Rebind<uint8_t, decltype(d16)> d8;
    const size_t lanes = hn::Lanes(d16), half = hn::Lanes(d);
    const auto* const words = reinterpret_cast<const uint16_t*>(src);
    auto* const out = reinterpret_cast<uint32_t*>(dst);
    const auto scalar = [&](size_t first, size_t count) {
        AddAlphaPixels<kFrom, kTo>(src + 2 * first, plane ? plane + first : nullptr, dst + 4 * first, count, constant,
                                   false);
    };
    RunWholeSteps<true>(stream, dst, pixels, 4, lanes, [&](size_t i, auto stores) {
        const auto w = hn::LoadU(d16, words + i);
        const auto a = plane ? hn::PromoteTo(d16, hn::LoadU(d8, plane + i))
                             : hn::Set(d16, static_cast<uint16_t>(constant.integer));
        std::remove_const_t<decltype(a)> byte[4] = {a, a, a, a};
        for (int n = 0; n < 3; ++n) {
            const PackedField field = kFrom.fields[C::from[n]];
            const auto c = hn::And(hn::ShiftRightSame(w, field.shift), hn::Set(d16, MaxOf(field.bits)));
            byte[C::to[n]] = RescaleWordLanes(c, WordRescales<kFrom, kTo>::rules[n]);
        }
        const auto low = hn::Or(byte[0], hn::ShiftLeft<8>(byte[1]));
        const auto high = hn::Or(byte[2], hn::ShiftLeft<8>(byte[3]));
        const auto join = [&](auto lowHalf, auto highHalf) {
            return hn::Or(hn::PromoteTo(d, lowHalf), hn::ShiftLeft<16>(hn::PromoteTo(d, highHalf)));
        };
        stores(join(hn::LowerHalf(dh, low), hn::LowerHalf(dh, high)), d, out + i);
        stores(join(hn::UpperHalf(dh, low), hn::UpperHalf(dh, high)), d, out + i + half);
    }, scalar);
}

// Adding alpha to integer pixels: colours and alpha in 32-bit lanes at the
// destination's depth, premultiplied by the exact rules, then packed into
// four-byte words or narrowed and interleaved.
template <PixelFormat kFrom, PixelFormat kTo>
void AddAlphaLanes(const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels, AlphaConstant constant,
                   bool premultiply, bool stream) {
    if constexpr (!kFrom.packed() && !kTo.packed() && kFrom.sample == kTo.sample &&
                  (kTo.sample == SampleKind::U8 || kTo.sample == SampleKind::U16)) {
        if (!premultiply) return AddAlphaSamples<kFrom, kTo>(src, plane, dst, pixels, constant, stream);
    }
    if constexpr (kFrom.packed() && kTo.sample == SampleKind::U8 && !kTo.packed() && RescalesInWords<kFrom, kTo>()) {
        if (!premultiply) return AddAlphaFromWords<kFrom, kTo>(src, plane, dst, pixels, constant, stream);
    }
    using C = Cell<kFrom, kTo>;
    constexpr unsigned kDepth = static_cast<unsigned>(8 * kTo.sampleBytes());
    const D32 d;
    const hn::RebindToSigned<D32> di;
    const hn::Rebind<uint8_t, D32> d8;
    const size_t lanes = hn::Lanes(d);
    const auto scalar = [&](size_t first, size_t count) {
        AddAlphaPixels<kFrom, kTo>(src + first * kFrom.pixelBytes(), plane ? plane + first : nullptr,
                                   dst + first * kTo.pixelBytes(), count, constant, premultiply);
    };
    RunWholeSteps<true>(stream, dst, pixels, kTo.pixelBytes(), lanes, [&](size_t i, auto stores) {
        V32 c[3];
        LoadColours<kFrom>(src, i, C::from, c);
        const V32 a = plane ? RescaleLanes(hn::PromoteTo(d, hn::LoadU(d8, plane + i)), 8, kDepth)
                            : hn::Set(d, constant.integer);
        V32 out[4] = {a, a, a, a};
        for (int n = 0; n < 3; ++n) {
            V32 v = RescaleLanes(c[n], DepthOf(kFrom, C::from[n]), kDepth);
            if (premultiply && kDepth == 8) {
                v = DivideExactly(hn::Add(hn::Mul(v, a), hn::Set(d, 127u)), 255);
            } else if (premultiply) {  // (t + (t >> 16)) >> 16 of t = c x a + 32768
                const V32 t = hn::Add(hn::Mul(v, a), hn::Set(d, 32768u));
                v = hn::ShiftRight<16>(hn::Add(t, hn::ShiftRight<16>(t)));
            }
            out[C::to[n]] = v;
        }
        if constexpr (kDepth == 8) {
            const V32 word = hn::Or(hn::Or(out[0], hn::ShiftLeft<8>(out[1])),
                                    hn::Or(hn::ShiftLeft<16>(out[2]), hn::ShiftLeft<24>(out[3])));
            stores(word, d, reinterpret_cast<uint32_t*>(dst) + i);
        } else {
            const hn::Rebind<uint16_t, D32> d16;
            stores.Interleaved(d16, reinterpret_cast<uint16_t*>(dst) + 4 * i,
                               hn::DemoteTo(d16, hn::BitCast(di, out[0])),
                               hn::DemoteTo(d16, hn::BitCast(di, out[1])),
                               hn::DemoteTo(d16, hn::BitCast(di, out[2])),
                               hn::DemoteTo(d16, hn::BitCast(di, out[3])));
        }
    }, scalar);
}

// Adding alpha to float pixels: whole vectors of floats.
template <PixelFormat kFrom, PixelFormat kTo>
void AddAlphaFloats(const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels, AlphaConstant constant,
                    bool premultiply, bool stream) {
    using C = Cell<kFrom, kTo>;
    const hn::ScalableTag<float> df;
    const hn::Rebind<int32_t, decltype(df)> di;
    const hn::Rebind<uint8_t, decltype(df)> d8;
    const size_t lanes = hn::Lanes(df);
    const float* from = reinterpret_cast<const float*>(src);
    float* to = reinterpret_cast<float*>(dst);
    const auto scalar = [&](size_t first, size_t count) {
        AddAlphaPixels<kFrom, kTo>(src + first * kFrom.pixelBytes(), plane ? plane + first : nullptr,
                                   dst + first * kTo.pixelBytes(), count, constant, premultiply);
    };
    // As in the scalar rule, the copying variant has no multiply in it at all.
    const auto run = [&](auto multiply) {
        RunWholeSteps<true>(stream, dst, pixels, kTo.pixelBytes(), lanes, [&](size_t i, auto stores) {
            auto v0 = hn::Zero(df), v1 = v0, v2 = v0;
            hn::LoadInterleaved3(df, from + 3 * i, v0, v1, v2);
            const auto a = plane ? hn::Mul(hn::ConvertTo(df, hn::PromoteTo(di, hn::LoadU(d8, plane + i))),
                                           hn::Set(df, ReciprocalOf(8)))
                                 : hn::Set(df, constant.real);
            const decltype(v0) in[3] = {v0, v1, v2};
            decltype(v0) out[4] = {a, a, a, a};
            for (int n = 0; n < 3; ++n) {
                if constexpr (multiply) out[C::to[n]] = CanonicalNaNs(hn::Mul(in[C::from[n]], a));
                else out[C::to[n]] = in[C::from[n]];
            }
            stores.Interleaved(df, to + 4 * i, out[0], out[1], out[2], out[3]);
        }, scalar);
    };
    if (premultiply) run(std::true_type{});
    else run(std::false_type{});
}
#endif

template <PixelFormat kFrom, PixelFormat kTo>
void AddAlphaRun(const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels, AlphaConstant constant,
                 bool premultiply, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    (void)stream;
    AddAlphaPixels<kFrom, kTo>(src, plane, dst, pixels, constant, premultiply);
#else
    if constexpr (Cell<kFrom, kTo>::floats)
        AddAlphaFloats<kFrom, kTo>(src, plane, dst, pixels, constant, premultiply, stream);
    else AddAlphaLanes<kFrom, kTo>(src, plane, dst, pixels, constant, premultiply, stream);
#endif
}

using AlphaRun = void (*)(const uint8_t*, const uint8_t*, uint8_t*, size_t, AlphaConstant, bool, bool);
template <size_t... kCell>
constexpr std::array<AlphaRun, sizeof...(kCell)> AlphaRunsOf(std::index_sequence<kCell...>) {
    return {&AddAlphaRun<kAlphaFormats[kCell].from, kAlphaFormats[kCell].to>...};
}

void AddAlphaPixelsOf(size_t cell, const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels,
                      AlphaConstant constant, bool premultiply, bool stream) {
    static constexpr std::array<AlphaRun, kAlphaCount> kRuns = AlphaRunsOf(std::make_index_sequence<kAlphaCount>());
    kRuns[cell](src, plane, dst, pixels, constant, premultiply, stream);
}

template <PixelFormat kFrom, PixelFormat kTo>
void ConvertRun(const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    (void)stream;
    ConvertPixels<kFrom, kTo>(src, dst, pixels);
#else
    if constexpr (MapsSamples<kFrom, kTo>()) MapSamples<kFrom, kTo>(src, dst, pixels, stream);
    else if constexpr (Cell<kFrom, kTo>::reorders) Reorder<kFrom, kTo>(src, dst, pixels, stream);
    else if constexpr (PacksInPlace<kFrom, kTo>()) PackInPlace<kFrom, kTo>(src, dst, pixels, stream);
    else if constexpr (RescalesInWords<kFrom, kTo>()) RescaleWords<kFrom, kTo>(src, dst, pixels, stream);
    else ToFloats<kFrom, kTo>(src, dst, pixels, stream);
#endif
}

using Run = void (*)(const uint8_t*, uint8_t*, size_t, bool);
template <size_t... kCell>
constexpr std::array<Run, sizeof...(kCell)> RunsOf(std::index_sequence<kCell...>) {
    return {&ConvertRun<kCellFormats[kCell].from, kCellFormats[kCell].to>...};
}

void ConvertCellPixels(size_t cell, const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
    static constexpr std::array<Run, kCellCount> kRuns = RunsOf(std::make_index_sequence<kCellCount>());
    kRuns[cell](src, dst, pixels, stream);
}

}  // namespace quorin::packed::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::packed {
namespace {

template <PixelFormat kFrom, PixelFormat kTo>
void ScalarRun(const uint8_t* src, uint8_t* dst, size_t pixels, bool) {
    ConvertPixels<kFrom, kTo>(src, dst, pixels);
}
using Run = void (*)(const uint8_t*, uint8_t*, size_t, bool);
template <size_t... kCell>
constexpr std::array<Run, sizeof...(kCell)> ScalarRunsOf(std::index_sequence<kCell...>) {
    return {&ScalarRun<kCellFormats[kCell].from, kCellFormats[kCell].to>...};
}

void ConvertCellScalar(size_t cell, const uint8_t* src, uint8_t* dst, size_t pixels, bool stream) {
    static constexpr std::array<Run, kCellCount> kRuns = ScalarRunsOf(std::make_index_sequence<kCellCount>());
    kRuns[cell](src, dst, pixels, stream);
}

using AlphaRun = void (*)(const uint8_t*, const uint8_t*, uint8_t*, size_t, AlphaConstant, bool);
template <size_t... kCell>
constexpr std::array<AlphaRun, sizeof...(kCell)> ScalarAlphaRunsOf(std::index_sequence<kCell...>) {
    return {&AddAlphaPixels<kAlphaFormats[kCell].from, kAlphaFormats[kCell].to>...};
}

void AddAlphaScalar(size_t cell, const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels,
                    AlphaConstant constant, bool premultiply, bool /*stream*/) {
    static constexpr std::array<AlphaRun, kAlphaCount> kRuns =
        ScalarAlphaRunsOf(std::make_index_sequence<kAlphaCount>());
    kRuns[cell](src, plane, dst, pixels, constant, premultiply);
}

}  // namespace

HWY_EXPORT(AddAlphaPixelsOf);
const KernelPair<AlphaKernel> kAlphaKernels{&AddAlphaScalar, HWY_DISPATCH_TABLE(AddAlphaPixelsOf)};
HWY_EXPORT(ConvertCellPixels);
const KernelPair<MatrixKernel> kMatrixKernels{&ConvertCellScalar, HWY_DISPATCH_TABLE(ConvertCellPixels)};

}  // namespace quorin::packed
#endif
