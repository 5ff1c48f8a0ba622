// Vector twins of the flatten rule (FlattenRules.h). A step loads whole
// 8- or 16-bit pixels and, without moving a byte, splits their samples into
// those at even positions (0 and 2) and those at odd ones (1 and 3), each in
// a lane of twice the sample's width; one byte shuffle puts the pixel's
// alpha beside every sample, each lane follows the rule on its own, and the
// two halves join back into pixels where they were. Q12 pairs each sample
// with its background instead (LanesQ12). Three-channel outputs then drop
// the unwanted sample of each pixel.
//
// With M the maximum, a the alpha and C = M bg + M/2, the unsigned rule
// needs one multiplication a lane:
//   straight colour  c a + M/2 + (M - a) bg = C + a (c - bg)
//   alpha            a M + M/2 + (M - a) bg = C + a (M - bg)
// The sum is at most M^2 + M/2, so lanes of twice the sample's width hold
// it exactly even though c - bg wraps. A premultiplied colour (or alpha) is
// c + (C - a bg) / M, whose terms are all non-negative, saturated to M.
// The divisions are replaced by identities proven equal to the truncating
// division over the range they meet (FlattenTest.cpp), the + 1 folded into C:
//   t / 255   = ((t + 1) * 257) >> 16                for t <= 65152 (u16)
//   t / 65535 = (s + (s >> 16)) >> 16, s = t + 1     for t <= 65535^2 + 32767 (u32)
//   t / 4096  = (t + (t < 0 ? 4095 : 0)) >> 12       (signed, toward zero; i32)
#include <cstdint>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/FlattenKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "Conversion/ChannelKernels.h"
#include "Conversion/FlattenKernels.h"
#include "Core/CanonicalNaN-inl.h"
#include "Core/Intrinsics-inl.h"
#include "Core/RowLoop-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
namespace {

using D8 = hn::ScalableTag<uint8_t>;
using Bytes = hn::Vec<D8>;

// A 16-byte pattern repeated through every block of a vector.
template <class ByteAt>
Bytes BlockPattern(const ByteAt& byteAt) {
    HWY_ALIGN uint8_t block[16];
    for (size_t b = 0; b < 16; ++b) block[b] = static_cast<uint8_t>(byteAt(b));
    return hn::LoadDup128(D8(), block);
}

// Vectors of whole unsigned pixels of T flattened in place, samples in
// source order.
template <class T, size_t kAlpha, bool kPremultiplied>
struct IntegerLanes {
    using DT = hn::ScalableTag<T>;
    using W = hn::Repartition<hwy::MakeWide<T>, DT>;
    using L = hn::TFromD<W>;
    using V = hn::Vec<W>;
    static constexpr int kBits = 8 * sizeof(T);
    static constexpr int64_t kMax = channels::FlattenMax<T>();

    Bytes alphaIndex;
    hn::Mask<W> alphaLane;     // in the half holding alpha, its lanes
    V background[2], base[2];  // per half: bg, and C + 1

    HWY_INLINE explicit IntegerLanes(const T* bg) {
        // Alpha's bytes into the low half of each lane.
        alphaIndex = BlockPattern([](size_t b) -> size_t {
            const size_t pixel = b / (4 * sizeof(T)) * (4 * sizeof(T)), at = b % (2 * sizeof(T));
            return at < sizeof(T) ? pixel + kAlpha * sizeof(T) + at : 0x80;
        });
        const W w;
        HWY_ALIGN L backgroundLanes[hn::MaxLanes(W())], baseLanes[hn::MaxLanes(W())], alphaBits[hn::MaxLanes(W())];
        for (size_t half = 0; half < 2; ++half) {
            for (size_t i = 0; i < hn::Lanes(w); ++i) {
                const int64_t value = bg[2 * (i % 2) + half];
                backgroundLanes[i] = static_cast<L>(value);
                baseLanes[i] = static_cast<L>(kMax * value + kMax / 2 + 1);
                alphaBits[i] = static_cast<L>(i % 2 == kAlpha / 2 ? -1 : 0);
            }
            background[half] = hn::Load(w, backgroundLanes);
            base[half] = hn::Load(w, baseLanes);
        }
        alphaLane = hn::MaskFromVec(hn::Load(w, alphaBits));
    }

    static V Divide(V t) {
        if constexpr (sizeof(T) == 1) return hn::MulHigh(t, hn::Set(W(), L{257}));
        else return hn::ShiftRight<16>(hn::Add(t, hn::ShiftRight<16>(t)));
    }

    // The samples of one half (0 even, 1 odd), each in its lane.
    template <size_t kHalf>
    static V Samples(V p) {
        if constexpr (kHalf == 1) return hn::ShiftRight<kBits>(p);
        else return hn::And(p, hn::Set(W(), static_cast<L>((L{1} << kBits) - 1)));
    }

    template <size_t kHalf>
    V Flatten(V c, V a) const {
        if constexpr (kHalf == kAlpha % 2) c = hn::IfThenElse(alphaLane, hn::Set(W(), static_cast<L>(kMax)), c);
        return Divide(hn::Add(base[kHalf], hn::Mul(a, hn::Sub(c, background[kHalf]))));
    }

    template <size_t kHalf>
    V Fill(V a) const { return Divide(hn::Sub(base[kHalf], hn::Mul(a, background[kHalf]))); }

    static V Join(V even, V odd) { return hn::Or(even, hn::ShiftLeft<kBits>(odd)); }

    Bytes operator()(Bytes pixels) const {
        const V a = hn::BitCast(W(), hn::TableLookupBytesOr0(pixels, alphaIndex));
        if constexpr (kPremultiplied) {
            const DT dt;
            const V fill = Join(Fill<0>(a), Fill<1>(a));
            return hn::BitCast(D8(), hn::SaturatedAdd(hn::BitCast(dt, pixels), hn::BitCast(dt, fill)));
        } else {
            const V p = hn::BitCast(W(), pixels);
            return hn::BitCast(D8(), Join(Flatten<0>(Samples<0>(p), a), Flatten<1>(Samples<1>(p), a)));
        }
    }
};

template <size_t kAlpha, bool kPremultiplied>
using Lanes8 = IntegerLanes<uint8_t, kAlpha, kPremultiplied>;
template <size_t kAlpha, bool kPremultiplied>
using Lanes16 = IntegerLanes<uint16_t, kAlpha, kPremultiplied>;

// Q12 keeps its samples in their 16-bit lanes. Each sample is zipped with
// its background, and its factor k with 4096 - a, so that one pairwise
// multiply-add of 16-bit lanes gives c k + (4096 - a) bg in a 32-bit lane
// (at most 2^28 in size: no pair overflows), and the saturating narrowing
// to 16 bits is the clamp. Alpha takes the colour rule as (4096, a) when
// straight, (a, 4096) when premultiplied.
template <size_t kAlpha, bool kPremultiplied>
struct LanesQ12 {
    using D16 = hn::ScalableTag<int16_t>;
    using D32 = hn::Repartition<int32_t, D16>;
    using V16 = hn::Vec<D16>;
    using V32 = hn::Vec<D32>;

    Bytes alphaIndex;
    hn::Mask<D16> alphaLane;
    V16 background, whole;  // bg by sample position; 4096

    HWY_INLINE explicit LanesQ12(const int16_t* bg) {
        alphaIndex = BlockPattern([](size_t b) { return b / 8 * 8 + 2 * kAlpha + b % 2; });
        const D16 d;
        HWY_ALIGN int16_t backgroundLanes[hn::MaxLanes(D16())], alphaBits[hn::MaxLanes(D16())];
        for (size_t i = 0; i < hn::Lanes(d); ++i) {
            backgroundLanes[i] = bg[i % 4];
            alphaBits[i] = static_cast<int16_t>(i % 4 == kAlpha ? -1 : 0);
        }
        background = hn::Load(d, backgroundLanes);
        alphaLane = hn::MaskFromVec(hn::Load(d, alphaBits));
        whole = hn::Set(d, int16_t{4096});
    }

    // (sum of the lane's two products + 2048) / 4096, truncated toward zero.
    static V32 Quotients(V16 samples, V16 factors) {
        const D32 d32;
        V32 odd = hn::Zero(d32);
        const V32 even = hn::ReorderWidenMulAccumulate(d32, samples, factors, hn::Zero(d32), odd);
        const V32 t = hn::Add(hn::RearrangeToOddPlusEven(even, odd), hn::Set(d32, 2048));
        return hn::ShiftRight<12>(hn::Add(t, hn::And(hn::ShiftRight<31>(t), hn::Set(d32, 4095))));
    }

    // The lower and upper quotients' lanes back in sample order, saturated:
    // x86 narrows two vectors block by block, as the zips split them; one
    // block a vector elsewhere.
    static V16 Narrow(V32 lower, V32 upper) {
        const D16 d;
#if HWY_ARCH_X86
        return hn::ReorderDemote2To(d, lower, upper);
#else
        static_assert(hn::MaxLanes(D16()) <= 8, "zips work block by block");
        const hn::Half<D16> half;
        return hn::Combine(d, hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
#endif
    }

    Bytes operator()(Bytes pixels) const {
        const D16 d;
        const V16 a = hn::Min(hn::Max(hn::BitCast(d, hn::TableLookupBytes(pixels, alphaIndex)), hn::Zero(d)), whole);
        const V16 k = kPremultiplied ? whole : a, rest = hn::Sub(whole, a);
        const V16 c = hn::IfThenElse(alphaLane, kPremultiplied ? a : whole, hn::BitCast(d, pixels));
        const V32 lower = Quotients(hn::InterleaveLower(d, c, background), hn::InterleaveLower(d, k, rest));
        const V32 upper = Quotients(hn::InterleaveUpper(d, c, background), hn::InterleaveUpper(d, k, rest));
        return hn::BitCast(D8(), Narrow(lower, upper));
    }
};

// Floats: a pixel is a block, so alpha reaches its channels by one
// broadcast within the block.
template <size_t kAlpha, bool kPremultiplied>
struct FloatLanes {
    using DF = hn::ScalableTag<float>;
    using V = hn::Vec<DF>;
    V background, one;
    hn::Mask<DF> alphaLane;

    HWY_INLINE explicit FloatLanes(const float* bg) {
        const DF df;
        background = hn::LoadDup128(df, bg);
        one = hn::Set(df, 1.0f);
        HWY_ALIGN const float alphaBits[4] = {kAlpha == 0 ? 1.0f : 0.0f, 0.0f, 0.0f, kAlpha == 3 ? 1.0f : 0.0f};
        alphaLane = hn::Eq(hn::LoadDup128(df, alphaBits), one);
    }

    Bytes operator()(Bytes pixels) const {
        const V v = hn::BitCast(DF(), pixels), a = hn::Broadcast<static_cast<int>(kAlpha)>(v);
        const V fill = hn::Mul(hn::Sub(one, a), background);
        if constexpr (kPremultiplied) return hn::BitCast(D8(), CanonicalNaNs(hn::Add(v, fill)));
        return hn::BitCast(D8(), CanonicalNaNs(hn::Add(hn::IfThenElse(alphaLane, v, hn::Mul(v, a)), fill)));
    }
};

// Streamed runs read their source ahead (SourceReadAhead). Measured on Zen
// 3 with AVX2, 4096 x 4096 single-threaded, medians of five interleaved runs
// against the streaming copy of the same process: RGBA8888 79 % of the
// copy's speed without, 88-104 % with 1 KB ahead (three processes); RGBA16U
// 76 % against 81-101 %, RGBAFFFF to RGBFFF 67 % against 80-101 %. 2048
// bytes ahead did as well, 4096 worse.

// The run: whole steps of one vector (four outputs) or four vectors (three
// outputs, each block's pixels packed into its first twelve bytes and the
// blocks joined), streamed when the call asks; the rule takes the ends.
template <class T, channels::FlattenLayout kLayout, class Lanes>
void FlattenSteps(const T* src, T* dst, size_t pixels, const channels::FlattenArgs<T>& args, bool stream,
                  const Lanes& lanes) {
    static constexpr channels::FlattenShape kShape = channels::ShapeOf(kLayout);
    constexpr size_t kIn = 4 * sizeof(T), kOut = kShape.outputs * sizeof(T);
    const D8 d8;
    const size_t bytes = hn::Lanes(d8), vectors = kShape.outputs == 4 ? 1 : 4, step = vectors * bytes / kIn;
    const Bytes keep = BlockPattern([](size_t b) -> size_t {
        if (b >= 16 / kIn * kOut) return 0x80;
        const size_t sample = b % kOut / sizeof(T);
        return b / kOut * kIn + kShape.from[sample] * sizeof(T) + b % sizeof(T);
    });
    const auto* const from = reinterpret_cast<const uint8_t*>(src);
    auto* const to = reinterpret_cast<uint8_t*>(dst);
    const SourceReadAhead readAhead(src, pixels * kIn, step * kIn);
    RunWholeSteps(
        stream, dst, pixels, kOut, step,
        [&](size_t i, auto stores) {
            const uint8_t* s = from + i * kIn;
            uint8_t* o = to + i * kOut;
            if constexpr (std::is_same_v<decltype(stores), StreamingStores>) readAhead(s);
            if constexpr (kShape.outputs == 4) {
                stores(lanes(hn::LoadU(d8, s)), d8, o);
            } else {
                Bytes c[4], out[3];
                for (size_t j = 0; j < 4; ++j) c[j] = hn::TableLookupBytesOr0(lanes(hn::LoadU(d8, s + j * bytes)), keep);
                ConcatBlockTriples<false>(d8, c[0], c[1], c[2], c[3], out[0], out[1], out[2]);
                for (size_t j = 0; j < 3; ++j) stores(out[j], d8, o + j * bytes);
            }
        },
        [&](size_t first, size_t n) {
            channels::FlattenPixels<T>(src + 4 * first, dst + kShape.outputs * first, n, args, false);
        });
}

template <class T, channels::FlattenLayout kLayout, template <size_t, bool> class LanesOf>
void FlattenLayoutRun(const T* src, T* dst, size_t pixels, const channels::FlattenArgs<T>& args, bool stream) {
    constexpr size_t kAlpha = channels::ShapeOf(kLayout).alpha;
    if (args.premultiplied) {
        FlattenSteps<T, kLayout>(src, dst, pixels, args, stream, LanesOf<kAlpha, true>(args.background));
    } else {
        FlattenSteps<T, kLayout>(src, dst, pixels, args, stream, LanesOf<kAlpha, false>(args.background));
    }
}

template <class T, template <size_t, bool> class LanesOf>
void FlattenRun(const T* src, T* dst, size_t pixels, const channels::FlattenArgs<T>& args, bool stream) {
    using L = channels::FlattenLayout;
    switch (args.layout) {
        case L::AlphaFirst: return FlattenLayoutRun<T, L::AlphaFirst, LanesOf>(src, dst, pixels, args, stream);
        case L::AlphaLast: return FlattenLayoutRun<T, L::AlphaLast, LanesOf>(src, dst, pixels, args, stream);
        case L::AlphaFirstToRGB: return FlattenLayoutRun<T, L::AlphaFirstToRGB, LanesOf>(src, dst, pixels, args, stream);
        case L::AlphaLastToRGB: return FlattenLayoutRun<T, L::AlphaLastToRGB, LanesOf>(src, dst, pixels, args, stream);
        case L::BGRAToRGB: return FlattenLayoutRun<T, L::BGRAToRGB, LanesOf>(src, dst, pixels, args, stream);
    }
}

}  // namespace
#endif

// The one-lane HWY_SCALAR target keeps the rules.
#if HWY_TARGET == HWY_SCALAR
#define QUORIN_FLATTEN_TWIN(Name, T, Lanes) \
    void Name(const T* src, T* dst, size_t n, const channels::FlattenArgs<T>& args, bool stream) { \
        channels::FlattenPixels<T>(src, dst, n, args, stream);                                     \
    }
#else
#define QUORIN_FLATTEN_TWIN(Name, T, Lanes) \
    void Name(const T* src, T* dst, size_t n, const channels::FlattenArgs<T>& args, bool stream) { \
        FlattenRun<T, Lanes>(src, dst, n, args, stream);                                           \
    }
#endif
QUORIN_FLATTEN_TWIN(FlattenBytesVector, uint8_t, Lanes8)
QUORIN_FLATTEN_TWIN(FlattenWordsVector, uint16_t, Lanes16)
QUORIN_FLATTEN_TWIN(FlattenQ12Vector, int16_t, LanesQ12)
QUORIN_FLATTEN_TWIN(FlattenFloatsVector, float, FloatLanes)
#undef QUORIN_FLATTEN_TWIN

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::channels {

HWY_EXPORT(FlattenBytesVector);
HWY_EXPORT(FlattenWordsVector);
HWY_EXPORT(FlattenQ12Vector);
HWY_EXPORT(FlattenFloatsVector);

const KernelPair<FlattenKernel<uint8_t>> kFlatten8Kernels{&FlattenPixels<uint8_t>,
                                                       HWY_DISPATCH_TABLE(FlattenBytesVector)};
const KernelPair<FlattenKernel<uint16_t>> kFlatten16Kernels{&FlattenPixels<uint16_t>,
                                                         HWY_DISPATCH_TABLE(FlattenWordsVector)};
const KernelPair<FlattenKernel<int16_t>> kFlattenQ12Kernels{&FlattenPixels<int16_t>,
                                                         HWY_DISPATCH_TABLE(FlattenQ12Vector)};
const KernelPair<FlattenKernel<float>> kFlattenFKernels{&FlattenPixels<float>,
                                                     HWY_DISPATCH_TABLE(FlattenFloatsVector)};

}  // namespace quorin::channels
#endif
