// Vector twins of the channel rules (ChannelRules.h). A pixel pattern of 1,
// 2, 4 or 16 bytes is repeated through every 128-bit block, so a vector that
// starts on a pixel boundary holds whole pixels in the pattern's phase; the
// core row loop starts every step on one and runs the ends on padded copies.
#include <algorithm>
#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/ChannelKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "Conversion/ChannelKernels.h"
#include "Core/RowLoop-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The one-lane HWY_SCALAR target cannot hold a pattern: the rules serve there.
#if HWY_TARGET != HWY_SCALAR
namespace {

using D8 = hn::ScalableTag<uint8_t>;
using Bytes = hn::Vec<D8>;

struct FillBody {
    Bytes pattern;
    Bytes operator()(const uint8_t*) const { return pattern; }
};

struct SelectBody {
    Bytes pattern, mask;
    Bytes operator()(const uint8_t* src) const {
        return hn::Or(hn::And(pattern, mask), hn::AndNot(mask, hn::LoadU(D8(), src)));
    }
};

struct PermuteBody {
    Bytes order;
    Bytes operator()(const uint8_t* src) const { return hn::TableLookupBytes(hn::LoadU(D8(), src), order); }
};

// Vector steps load whole pixels, so they stop before the last element,
// whose pixel may end past the buffer (the walk reads only up to the
// channel); the rule takes it and any other rest.
template <class D, class T, class Step>
void ExtractAllButLast(D d, const T* src, T* dst, size_t count, size_t channel, bool stream, const Step& step) {
    if (count == 0) return;
    StoreRun(d, stream, dst, count - 1, sizeof(T), hn::Lanes(d), step, [&](size_t first, size_t n) {
        channels::ExtractElements(src + 4 * first, dst + first, n, channel);
    });
    channels::ExtractElements(src + 4 * (count - 1), dst + count - 1, 1, channel);
}

// 8- and 16-bit channels: each pixel is one lane of the unsigned type four
// times as wide. Shifting the channel to the low bits of its lane and
// keeping the even halves twice packs four vectors of pixels into one vector
// of the channel, two shuffles where deinterleaving takes a dozen.
template <class T>
void ExtractPackedSteps(const T* src, T* dst, size_t count, size_t channel, bool stream) {
    using Pixel = hwy::MakeUnsigned<hwy::MakeWide<hwy::MakeWide<T>>>;
    const hn::ScalableTag<T> d;
    const hn::Repartition<Pixel, decltype(d)> dp;
    const hn::Repartition<hwy::MakeWide<T>, decltype(d)> dh;
    const size_t pixels = hn::Lanes(dp);
    const int shift = static_cast<int>(channel * 8 * sizeof(T));
    const SourceReadAhead readAhead(src, count == 0 ? 0 : 4 * (count - 1) * sizeof(T), 4 * hn::Lanes(d) * sizeof(T));
    auto step = [&](size_t k, auto store) {
        const T* from = src + 4 * k;
        if (stream) readAhead(from);
        auto low = [&](size_t i) {
            return hn::BitCast(dh, hn::ShiftRightSame(hn::BitCast(dp, hn::LoadU(d, from + i * 4 * pixels)), shift));
        };
        const auto first = hn::ConcatEven(dh, low(1), low(0)), second = hn::ConcatEven(dh, low(3), low(2));
        store(hn::ConcatEven(d, hn::BitCast(d, second), hn::BitCast(d, first)), dst + k);
    };
    ExtractAllButLast(d, src, dst, count, channel, stream, step);
}

// 32-bit channels: keeping the even or odd lanes of two vectors of pixels
// halves them to the channel pairs (0, 2) or (1, 3), and once more to the
// channel, three shuffles for four vectors. The samples move as bits.
template <class T>
void ExtractWideSteps(const T* src, T* dst, size_t count, size_t channel, bool stream) {
    const hn::ScalableTag<T> d;
    const hn::RebindToUnsigned<decltype(d)> du;
    const size_t lanes = hn::Lanes(d);
    const auto keep = [du](bool odd, auto hi, auto lo) { return odd ? hn::ConcatOdd(du, hi, lo) : hn::ConcatEven(du, hi, lo); };
    const bool oddChannel = channel & 1, upperPair = channel >> 1;
    auto step = [&](size_t k, auto store) {
        const T* from = src + 4 * k;
        auto load = [&](size_t i) { return hn::BitCast(du, hn::LoadU(d, from + i * lanes)); };
        const auto first = keep(oddChannel, load(1), load(0)), second = keep(oddChannel, load(3), load(2));
        store(hn::BitCast(d, keep(upperPair, second, first)), dst + k);
    };
    ExtractAllButLast(d, src, dst, count, channel, stream, step);
}

struct SelectTwoBody {
    Bytes mask;
    Bytes operator()(const uint8_t* a, const uint8_t* b) const {
        return hn::Or(hn::And(mask, hn::LoadU(D8(), a)), hn::AndNot(mask, hn::LoadU(D8(), b)));
    }
};

// Whole vectors of pixels: each plane element repeated over its pixel's
// four lanes, then the selected lanes taken from it by a bit mask (floats
// move as bits). Bytes are repeated by widening each to a 32-bit lane and
// multiplying by 0x01010101; 32-bit elements by a lane table, from a whole
// vector of the plane, so those steps stop where that load would pass the
// row. The rule takes the rest.
template <class T>
void OverwriteFromPlaneSteps(const T* plane, const T* src, T* dst, size_t count, const channels::Selected& selected,
                             bool stream) {
    using U = hwy::MakeUnsigned<T>;
    const hn::ScalableTag<U> du;
    const size_t lanes = hn::Lanes(du), pixels = lanes / 4;
    HWY_ALIGN U maskBits[hn::MaxLanes(du)];
    for (size_t i = 0; i < lanes; ++i) maskBits[i] = selected.channel[i % 4] ? static_cast<U>(~U{0}) : U{0};
    const auto mask = hn::Load(du, maskBits);
    const auto* const from = reinterpret_cast<const U*>(src);
    const auto* const elements = reinterpret_cast<const U*>(plane);
    auto* const to = reinterpret_cast<U*>(dst);
    const auto scalar = [&](size_t first, size_t n) {
        channels::OverwriteFromPlane(plane + first, src + 4 * first, dst + 4 * first, n, selected);
    };
    if constexpr (sizeof(T) == 1) {
        const hn::Repartition<uint32_t, decltype(du)> d32;
        const hn::Rebind<uint8_t, decltype(d32)> dq;
        StoreRun(du, stream, dst, count, 4 * sizeof(T), pixels, [&](size_t x, auto store) {
            const auto repeated = hn::BitCast(du, hn::Mul(hn::PromoteTo(d32, hn::LoadU(dq, elements + x)),
                                                          hn::Set(d32, 0x01010101u)));
            const auto v = hn::LoadU(du, from + 4 * x);
            store(hn::Or(hn::And(mask, repeated), hn::AndNot(mask, v)), to + 4 * x);
        }, scalar);
    } else {
        HWY_ALIGN hwy::MakeSigned<U> spread[hn::MaxLanes(du)];
        for (size_t i = 0; i < lanes; ++i) spread[i] = static_cast<hwy::MakeSigned<U>>(i / 4);
        const auto indices = hn::SetTableIndices(du, spread);
        const size_t reach = lanes - pixels;  // plane elements a whole load takes beyond its step's
        const size_t steps = count > reach ? count - reach : 0;
        const SourceReadAhead pixelsAhead(src, 4 * steps * sizeof(T), lanes * sizeof(T));
        const SourceReadAhead planeAhead(plane, steps * sizeof(T), pixels * sizeof(T));
        StoreRun(du, stream, dst, steps, 4 * sizeof(T), pixels, [&](size_t x, auto store) {
            if (stream) pixelsAhead(from + 4 * x), planeAhead(elements + x);
            const auto repeated = hn::TableLookupLanes(hn::LoadU(du, elements + x), indices);
            const auto v = hn::LoadU(du, from + 4 * x);
            store(hn::Or(hn::And(mask, repeated), hn::AndNot(mask, v)), to + 4 * x);
        }, scalar);
        scalar(steps, count - steps);
    }
}

// A 256-entry table as sixteen 16-entry blocks, each repeated through every
// 128-bit block of a vector: a byte's high nibble picks the block, its low
// nibble the entry.
struct Table256 {
    Bytes block[16];
    explicit Table256(const uint8_t* table) {
        for (size_t j = 0; j < 16; ++j) block[j] = hn::LoadDup128(D8(), table + 16 * j);
    }
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4
    // The byte blend chooses by each mask byte's top bit alone, so the high
    // nibble picks its block bit by bit, from its top bit down, one level of
    // blends a bit: 15 blends and 3 shifts where matching the nibble against
    // each block's number takes 15 compares and 15 blends.
    Bytes operator()(Bytes v) const {
        const D8 d;
        const hn::RebindToSigned<D8> di;
        const hn::Repartition<uint16_t, D8> d16;
        const auto topBitPicks = [&](Bytes choice, Bytes ifSet, Bytes ifClear) {
            return hn::BitCast(d, hn::IfNegativeThenElse(hn::BitCast(di, choice), hn::BitCast(di, ifSet),
                                                         hn::BitCast(di, ifClear)));
        };
        const Bytes low = hn::And(v, hn::Set(d, 0x0F));
        Bytes picked[8];
        for (size_t j = 0; j < 8; ++j)
            picked[j] = topBitPicks(v, hn::TableLookupBytes(block[j + 8], low), hn::TableLookupBytes(block[j], low));
        Bytes choice = v;
        for (size_t half = 4; half != 0; half /= 2) {
            // Shifted as 16-bit lanes: the bit carried in from the byte below
            // lands at the bottom, out of the blend's sight.
            choice = hn::BitCast(d, hn::ShiftLeft<1>(hn::BitCast(d16, choice)));
            for (size_t j = 0; j < half; ++j) picked[j] = topBitPicks(choice, picked[j + half], picked[j]);
        }
        return picked[0];
    }
#else
    Bytes operator()(Bytes v) const {
        const D8 d;
        const Bytes low = hn::And(v, hn::Set(d, 0x0F)), high = hn::ShiftRight<4>(v);
        Bytes out = hn::TableLookupBytes(block[0], low);
        for (size_t j = 1; j < 16; ++j)
            out = hn::IfThenElse(hn::Eq(high, hn::Set(d, static_cast<uint8_t>(j))), hn::TableLookupBytes(block[j], low),
                                 out);
        return out;
    }
#endif
};

struct LookUpBody {
    Table256 table;
    Bytes operator()(const uint8_t* src) const { return table(hn::LoadU(D8(), src)); }
};

// Four tables: whole pixels split into their four bytes, each looked up in
// its table; the bytes no whole pixel covers by the rule.
void LookUpPixels(const uint8_t* src, uint8_t* dst, size_t bytes, const channels::Tables& tables) {
    const D8 d;
    const Table256 table[4] = {Table256(tables.table[0]), Table256(tables.table[1]), Table256(tables.table[2]),
                               Table256(tables.table[3])};
    const size_t done = 4 * WholeSteps(bytes / 4, hn::Lanes(d), [&](size_t x) {
        Bytes v[4];
        hn::LoadInterleaved4(d, src + 4 * x, v[0], v[1], v[2], v[3]);
        hn::StoreInterleaved4(table[0](v[0]), table[1](v[1]), table[2](v[2]), table[3](v[3]), d, dst + 4 * x);
    });
    channels::LookUpBytes(src + done, dst + done, bytes - done, tables);
}

struct ClipBody {
    hn::Vec<hn::ScalableTag<float>> upper, lower;
    Bytes operator()(const float* src) const {
        const hn::ScalableTag<float> df;
        const auto x = hn::LoadU(df, src);
        const auto clipped = hn::IfThenElse(hn::Lt(x, lower), lower, hn::IfThenElse(hn::Gt(x, upper), upper, x));
        return hn::BitCast(D8(), clipped);
    }
};

}  // namespace
#endif

// The destination is also handed to the row loop as the source it walks by,
// so its alignment decides the head; FillBody never loads it.
void FillBytesVector(uint8_t* dst, size_t bytes, const uint8_t* pattern, size_t pixelBytes, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::FillBytes(dst, bytes, pattern, pixelBytes, stream);
#else
    ForEachVector(dst, bytes, pixelBytes, stream, FillBody{hn::LoadDup128(D8(), pattern)}, dst);
#endif
}

void SelectBytesVector(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* pattern, const uint8_t* mask,
                       size_t pixelBytes, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::SelectBytes(src, dst, bytes, pattern, mask, pixelBytes, stream);
#else
    ForEachVector(dst, bytes, pixelBytes, stream,
                  SelectBody{hn::LoadDup128(D8(), pattern), hn::LoadDup128(D8(), mask)}, src);
#endif
}

void PermuteBytesVector(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* order, size_t pixelBytes,
                        bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::PermuteBytes(src, dst, bytes, order, pixelBytes, stream);
#else
    ForEachVector(dst, bytes, pixelBytes, stream, PermuteBody{hn::LoadDup128(D8(), order)}, src);
#endif
}

// The library's own copy only to stream: a row copy that stays in the
// caches is the C library's to do, and it does it better. The rows'
// streaming stores are fenced once, after the last row.
void CopyRowsVector(const uint8_t* src, size_t srcRowBytes, uint8_t* dst, size_t dstRowBytes, size_t bytes,
                    size_t rows, bool stream) {
#if HWY_TARGET != HWY_SCALAR
    if (stream) {
        const D8 d;
        const size_t lanes = hn::Lanes(d);
        for (size_t r = 0; r < rows; ++r) {
            const uint8_t* from = src + r * srcRowBytes;
            uint8_t* to = dst + r * dstRowBytes;
            const size_t head = std::min(bytes, (lanes - reinterpret_cast<uintptr_t>(to) % lanes) % lanes);
            std::memcpy(to, from, head);
            size_t k = head;
            for (; k + lanes <= bytes; k += lanes) hn::Stream(hn::LoadU(d, from + k), d, to + k);
            std::memcpy(to + k, from + k, bytes - k);
        }
        hwy::FlushStream();
        return;
    }
#endif
    channels::CopyRows(src, srcRowBytes, dst, dstRowBytes, bytes, rows, stream);
}

template <class T>
void Extract(const T* src, T* dst, size_t count, size_t channel, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::ExtractElements<T>(src, dst, count, channel, stream);
#else
    if constexpr (sizeof(T) < 4) {
        ExtractPackedSteps<T>(src, dst, count, channel, stream);
    } else {
        ExtractWideSteps<T>(src, dst, count, channel, stream);
    }
#endif
}
void ExtractBytesVector(const uint8_t* src, uint8_t* dst, size_t count, size_t channel, bool stream) {
    Extract(src, dst, count, channel, stream);
}
void ExtractWordsVector(const uint16_t* src, uint16_t* dst, size_t count, size_t channel, bool stream) {
    Extract(src, dst, count, channel, stream);
}
void ExtractFloatsVector(const float* src, float* dst, size_t count, size_t channel, bool stream) {
    Extract(src, dst, count, channel, stream);
}

void ClipFloatsVector(const float* src, float* dst, size_t count, float upper, float lower, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::ClipFloats(src, dst, count, upper, lower, stream);
#else
    const hn::ScalableTag<float> df;
    ForEachVector(dst, count, 1, stream, ClipBody{hn::Set(df, upper), hn::Set(df, lower)}, src);
#endif
}

void SelectTwoBytesVector(const uint8_t* a, const uint8_t* b, uint8_t* dst, size_t bytes, const uint8_t* mask,
                          size_t pixelBytes, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::SelectTwoBytes(a, b, dst, bytes, mask, pixelBytes, stream);
#else
    ForEachVector(dst, bytes, pixelBytes, stream, SelectTwoBody{hn::LoadDup128(D8(), mask)}, a, b);
#endif
}

template <class T>
void FromPlane(const T* plane, const T* src, T* dst, size_t count, const channels::Selected& selected, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::OverwriteFromPlane(plane, src, dst, count, selected, stream);
#else
    OverwriteFromPlaneSteps(plane, src, dst, count, selected, stream);
#endif
}
void OverwriteFromPlaneBytesVector(const uint8_t* plane, const uint8_t* src, uint8_t* dst, size_t count,
                                   const channels::Selected& selected, bool stream) {
    FromPlane(plane, src, dst, count, selected, stream);
}
void OverwriteFromPlaneFloatsVector(const float* plane, const float* src, float* dst, size_t count,
                                    const channels::Selected& selected, bool stream) {
    FromPlane(plane, src, dst, count, selected, stream);
}

// One table runs on whole vectors of bytes, whatever their positions.
void LookUpBytesVector(const uint8_t* src, uint8_t* dst, size_t bytes, const channels::Tables& tables) {
#if HWY_TARGET == HWY_SCALAR
    channels::LookUpBytes(src, dst, bytes, tables);
#else
    if (!tables.single()) return LookUpPixels(src, dst, bytes, tables);
    ForEachVector(dst, bytes, 1, false, LookUpBody{Table256(tables.table[0])}, src);
#endif
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::channels {

HWY_EXPORT(FillBytesVector);
HWY_EXPORT(SelectBytesVector);
HWY_EXPORT(ClipFloatsVector);
HWY_EXPORT(PermuteBytesVector);
HWY_EXPORT(CopyRowsVector);
HWY_EXPORT(ExtractBytesVector);
HWY_EXPORT(ExtractWordsVector);
HWY_EXPORT(ExtractFloatsVector);
HWY_EXPORT(SelectTwoBytesVector);
HWY_EXPORT(OverwriteFromPlaneBytesVector);
HWY_EXPORT(OverwriteFromPlaneFloatsVector);
HWY_EXPORT(LookUpBytesVector);

const KernelPair<FillKernel> kFillKernels{&FillBytes, HWY_DISPATCH_TABLE(FillBytesVector)};
const KernelPair<SelectKernel> kSelectKernels{&SelectBytes, HWY_DISPATCH_TABLE(SelectBytesVector)};
const KernelPair<ClipKernel> kClipKernels{&ClipFloats, HWY_DISPATCH_TABLE(ClipFloatsVector)};
const KernelPair<PermuteKernel> kPermuteKernels{&PermuteBytes, HWY_DISPATCH_TABLE(PermuteBytesVector)};
const KernelPair<CopyKernel> kCopyKernels{&CopyRows, HWY_DISPATCH_TABLE(CopyRowsVector)};
const KernelPair<ExtractKernel<uint8_t>> kExtract8Kernels{&ExtractElements<uint8_t>,
                                                          HWY_DISPATCH_TABLE(ExtractBytesVector)};
const KernelPair<ExtractKernel<uint16_t>> kExtract16Kernels{&ExtractElements<uint16_t>,
                                                            HWY_DISPATCH_TABLE(ExtractWordsVector)};
const KernelPair<ExtractKernel<float>> kExtractFKernels{&ExtractElements<float>,
                                                       HWY_DISPATCH_TABLE(ExtractFloatsVector)};
const KernelPair<SelectTwoKernel> kSelectTwoKernels{&SelectTwoBytes, HWY_DISPATCH_TABLE(SelectTwoBytesVector)};
const KernelPair<FromPlaneKernel<uint8_t>> kFromPlane8Kernels{&OverwriteFromPlane<uint8_t>,
                                                              HWY_DISPATCH_TABLE(OverwriteFromPlaneBytesVector)};
const KernelPair<FromPlaneKernel<float>> kFromPlaneFKernels{&OverwriteFromPlane<float>,
                                                            HWY_DISPATCH_TABLE(OverwriteFromPlaneFloatsVector)};
const KernelPair<LookUpKernel> kLookUpKernels{&LookUpBytes, HWY_DISPATCH_TABLE(LookUpBytesVector)};

}  // namespace quorin::channels
#endif
