// Vector twins of the flatten rule (FlattenRules.h). Pixels are split into
// channel vectors, widened to lanes that hold every intermediate, and the
// divisions are replaced by identities proven equal to the truncating
// division over the whole range they meet (FlattenTest.cpp):
//   t / 255   = (t + 1 + (t >> 8)) >> 8             for t <= 65152 (u16 lanes)
//   t / 65535 = (s + (s >> 16)) >> 16, s = t + 1    for t <= 65535^2 + 32767 (u32)
//   t / 4096  = (t + (t < 0 ? 4095 : 0)) >> 12      (signed, toward zero; i32)
// With unsigned samples a premultiplied colour is c + (M/2 + (M - a) bg) / M,
// the same value as the rule's (c M + M/2 + (M - a) bg) / M, whose terms are
// all non-negative; the sum fits the lanes where c M would not.
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/FlattenKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "Conversion/FlattenKernels.h"
#include "Core/CanonicalNaN-inl.h"
#include "Core/RowLoop-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
namespace {

// Per depth: the sample vectors (N), the wide lanes (W), and the rule.
struct Bytes8 {
    using T = uint8_t;
    using W = hn::ScalableTag<uint16_t>;
    using N = hn::Rebind<uint8_t, W>;
    static hn::Vec<W> Widen(hn::Vec<N> v) { return hn::PromoteTo(W(), v); }
    static hn::Vec<N> Narrow(hn::Vec<W> v) { return hn::DemoteTo(N(), hn::BitCast(hn::RebindToSigned<W>(), v)); }
    static hn::Vec<W> Alpha(hn::Vec<W> a) { return a; }
    static hn::Vec<W> Divide(hn::Vec<W> t) {
        return hn::ShiftRight<8>(hn::Add(hn::Add(t, hn::Set(W(), 1)), hn::ShiftRight<8>(t)));
    }
};

struct Words16 {
    using T = uint16_t;
    using W = hn::ScalableTag<uint32_t>;
    using N = hn::Rebind<uint16_t, W>;
    static hn::Vec<W> Widen(hn::Vec<N> v) { return hn::PromoteTo(W(), v); }
    static hn::Vec<N> Narrow(hn::Vec<W> v) { return hn::DemoteTo(N(), hn::BitCast(hn::RebindToSigned<W>(), v)); }
    static hn::Vec<W> Alpha(hn::Vec<W> a) { return a; }
    static hn::Vec<W> Divide(hn::Vec<W> t) {
        const auto s = hn::Add(t, hn::Set(W(), 1));
        return hn::ShiftRight<16>(hn::Add(s, hn::ShiftRight<16>(s)));
    }
};

struct Q12 {
    using T = int16_t;
    using W = hn::ScalableTag<int32_t>;
    using N = hn::Rebind<int16_t, W>;
    static hn::Vec<W> Widen(hn::Vec<N> v) { return hn::PromoteTo(W(), v); }
    static hn::Vec<N> Narrow(hn::Vec<W> v) { return hn::DemoteTo(N(), v); }
    static hn::Vec<W> Alpha(hn::Vec<W> a) { return hn::Min(hn::Max(a, hn::Zero(W())), hn::Set(W(), 4096)); }
    static hn::Vec<W> Divide(hn::Vec<W> t) {
        return hn::ShiftRight<12>(hn::Add(t, hn::And(hn::ShiftRight<31>(t), hn::Set(W(), 4095))));
    }
};

// The integer rule on wide lanes; a is clamped already.
template <class Depth>
struct IntegerMath {
    using W = typename Depth::W;
    using V = hn::Vec<W>;
    static constexpr int64_t kMax = channels::FlattenMax<typename Depth::T>();
    V max, half;
    // Written out: an implicit constructor would not be compiled for the target.
    HWY_INLINE IntegerMath()
        : max(hn::Set(W(), static_cast<hn::TFromD<W>>(kMax))), half(hn::Set(W(), static_cast<hn::TFromD<W>>(kMax / 2))) {}

    // (c k + M/2 + (M - a) bg) / M; `whole` says k = M.
    V operator()(V c, V a, V bg, bool whole) const {
        const V fill = hn::Mul(hn::Sub(max, a), bg);
        if constexpr (std::is_signed_v<typename Depth::T>) {
            const V product = whole ? hn::ShiftLeft<12>(c) : hn::Mul(c, a);
            return Depth::Divide(hn::Add(hn::Add(product, half), fill));
        } else {
            if (whole) return hn::Add(c, Depth::Divide(hn::Add(half, fill)));
            return Depth::Divide(hn::Add(hn::Add(hn::Mul(c, a), half), fill));
        }
    }
};

template <class Depth, channels::FlattenLayout kLayout>
void FlattenIntegerRun(const typename Depth::T* src, typename Depth::T* dst, size_t pixels,
                       const channels::FlattenArgs<typename Depth::T>& args) {
    using T = typename Depth::T;
    using W = typename Depth::W;
    constexpr channels::FlattenShape kShape = channels::ShapeOf(kLayout);
    const typename Depth::N dn;
    const IntegerMath<Depth> math;
    hn::Vec<W> bg[4];
    for (size_t c = 0; c < 4; ++c) bg[c] = hn::Set(W(), static_cast<hn::TFromD<W>>(args.background[c]));
    const size_t done = WholeSteps(pixels, hn::Lanes(dn), [&](size_t i) {
        hn::Vec<decltype(dn)> v[4], out[4];
        hn::LoadInterleaved4(dn, src + 4 * i, v[0], v[1], v[2], v[3]);
        const hn::Vec<W> a = Depth::Alpha(Depth::Widen(v[kShape.alpha]));
        for (size_t k = 0; k < kShape.outputs; ++k) {
            const size_t from = kShape.from[k];
            const bool alpha = from == kShape.alpha;
            out[k] = Depth::Narrow(math(alpha ? a : Depth::Widen(v[from]), a, bg[from], alpha || args.premultiplied));
        }
        if constexpr (kShape.outputs == 4) hn::StoreInterleaved4(out[0], out[1], out[2], out[3], dn, dst + 4 * i);
        else hn::StoreInterleaved3(out[0], out[1], out[2], dn, dst + 3 * i);
    });
    channels::FlattenPixels<T>(src + 4 * done, dst + kShape.outputs * done, pixels - done, args, false);
}

template <channels::FlattenLayout kLayout>
void FlattenFloatRun(const float* src, float* dst, size_t pixels, const channels::FlattenArgs<float>& args) {
    constexpr channels::FlattenShape kShape = channels::ShapeOf(kLayout);
    const hn::ScalableTag<float> d;
    using V = hn::Vec<decltype(d)>;
    const V one = hn::Set(d, 1.0f);
    V bg[4];
    for (size_t c = 0; c < 4; ++c) bg[c] = hn::Set(d, args.background[c]);
    const size_t done = WholeSteps(pixels, hn::Lanes(d), [&](size_t i) {
        V v[4], out[4];
        hn::LoadInterleaved4(d, src + 4 * i, v[0], v[1], v[2], v[3]);
        const V a = v[kShape.alpha], inv = hn::Sub(one, a);
        for (size_t k = 0; k < kShape.outputs; ++k) {
            const size_t from = kShape.from[k];
            const V fill = hn::Mul(inv, bg[from]);
            const V base = from == kShape.alpha || args.premultiplied ? v[from] : hn::Mul(v[from], a);
            out[k] = CanonicalNaNs(hn::Add(base, fill));
        }
        if constexpr (kShape.outputs == 4) hn::StoreInterleaved4(out[0], out[1], out[2], out[3], d, dst + 4 * i);
        else hn::StoreInterleaved3(out[0], out[1], out[2], d, dst + 3 * i);
    });
    channels::FlattenPixels<float>(src + 4 * done, dst + kShape.outputs * done, pixels - done, args, false);
}

// The run for the call's layout, as a template argument.
template <class T, template <channels::FlattenLayout> class Run>
void ForLayout(const T* src, T* dst, size_t pixels, const channels::FlattenArgs<T>& args) {
    using L = channels::FlattenLayout;
    switch (args.layout) {
        case L::AlphaFirst: return Run<L::AlphaFirst>::Go(src, dst, pixels, args);
        case L::AlphaLast: return Run<L::AlphaLast>::Go(src, dst, pixels, args);
        case L::AlphaFirstToRGB: return Run<L::AlphaFirstToRGB>::Go(src, dst, pixels, args);
        case L::AlphaLastToRGB: return Run<L::AlphaLastToRGB>::Go(src, dst, pixels, args);
        case L::BGRAToRGB: return Run<L::BGRAToRGB>::Go(src, dst, pixels, args);
    }
}

template <class Depth>
struct IntegerRuns {
    template <channels::FlattenLayout kLayout>
    struct Run {
        template <class... A>
        static void Go(A... a) { FlattenIntegerRun<Depth, kLayout>(a...); }
    };
};
template <channels::FlattenLayout kLayout>
struct FloatRun {
    template <class... A>
    static void Go(A... a) { FlattenFloatRun<kLayout>(a...); }
};

}  // namespace
#endif

// The one-lane HWY_SCALAR target keeps the rules.
#if HWY_TARGET == HWY_SCALAR
#define QUORIN_FLATTEN_TWIN(Name, T, Runs) \
    void Name(const T* src, T* dst, size_t n, const channels::FlattenArgs<T>& args, bool stream) { \
        channels::FlattenPixels<T>(src, dst, n, args, stream);                                     \
    }
#else
#define QUORIN_FLATTEN_TWIN(Name, T, Runs) \
    void Name(const T* src, T* dst, size_t n, const channels::FlattenArgs<T>& args, bool) { \
        ForLayout<T, Runs>(src, dst, n, args);                                              \
    }
#endif
QUORIN_FLATTEN_TWIN(FlattenBytesVector, uint8_t, IntegerRuns<Bytes8>::Run)
QUORIN_FLATTEN_TWIN(FlattenWordsVector, uint16_t, IntegerRuns<Words16>::Run)
QUORIN_FLATTEN_TWIN(FlattenQ12Vector, int16_t, IntegerRuns<Q12>::Run)
QUORIN_FLATTEN_TWIN(FlattenFloatsVector, float, FloatRun)
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
