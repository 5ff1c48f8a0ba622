// Vector twins of the blend rules in BlendRules.h, compiled once per
// instruction set and chosen at run time. Each gives the bytes of its scalar
// rule for every input; the last pixels that do not fill a vector go through
// the scalar rule itself. Where a rule divides, the reason the vector method
// reproduces the integer quotient is written beside it, and the tests check
// it over every dividend and divisor that can occur.
//
// The one-lane fallback target lacks the block shuffles and widening
// multiplies used here, so on it the scalar kernels serve.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Alpha/BlendKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Alpha/BlendKernels.h"
#include "Alpha/BlendRules.h"
#include "Alpha/BlendVector-inl.h"
#include "Alpha/PremultiplyMath-inl.h"
#include "Core/CanonicalNaN-inl.h"
#include "Core/Intrinsics-inl.h"
#include "Core/SourcePrefetch.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::alpha::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

void StraightBlendARGB8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool) {
    StraightBlendInterleavedScalar(top, bottom, dest, pixels);
}
void StraightBlendARGBFFFF(const float* top, const float* bottom, float* dest, size_t pixels, bool) {
    StraightBlendInterleavedScalar(top, bottom, dest, pixels);
}
void StraightBlendPlanar8(const uint8_t* top, const uint8_t* topAlpha, const uint8_t* bottom,
                          const uint8_t* bottomAlpha, uint8_t* dest, uint8_t* destAlpha, size_t count) {
    StraightBlendPlanarScalar(top, topAlpha, bottom, bottomAlpha, dest, destAlpha, count);
}
void StraightBlendPlanarF(const float* top, const float* topAlpha, const float* bottom, const float* bottomAlpha,
                          float* dest, float* destAlpha, size_t count) {
    StraightBlendPlanarScalar(top, topAlpha, bottom, bottomAlpha, dest, destAlpha, count);
}
template <BlendMode kMode>
void BlendModeRGBA8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool) {
    BlendModeScalar<kMode>(top, bottom, dest, pixels);
}
void ConstAlphaBlendPlanar8(const uint8_t* top, const uint8_t* topAlpha, const uint8_t* bottom, uint8_t* dest,
                            size_t count, uint8_t constAlpha) {
    ConstAlphaBlendScalar(top, topAlpha, bottom, dest, count, constAlpha);
}
void ConstAlphaBlendPlanarF(const float* top, const float* topAlpha, const float* bottom, float* dest, size_t count,
                            float constAlpha) {
    ConstAlphaBlendScalar(top, topAlpha, bottom, dest, count, constAlpha);
}

#else  // HWY_TARGET != HWY_SCALAR

using D32 = hn::ScalableTag<uint32_t>;
using V32 = hn::VFromD<D32>;
using D16 = hn::Repartition<uint16_t, D32>;
using V16 = hn::VFromD<D16>;
using D8 = hn::Repartition<uint8_t, D32>;
using V8 = hn::VFromD<D8>;
using DF = hn::RebindToFloat<D32>;
using VF = hn::VFromD<DF>;

// floor(t / 255) for every 16-bit t: (t x 0x8081) >> 23, since
// 0x8081 x 255 = 2^23 + 127 and the excess stays below the gap of 1/255 that
// a remainder of 254 leaves.
HWY_INLINE V16 Div255(V16 t) { return hn::ShiftRight<7>(hn::MulHigh(t, hn::Set(D16(), 0x8081))); }

// ---- 8-bit straight blend: 16-bit slots, two per 32-bit lane -----------------
//
// Each 32-bit lane holds one pixel: both 16-bit slots carry its alphas, and
// the slots of the colour vectors carry one or two of its channels, so every
// 16-bit operation serves two channels.

using quorin::HWY_NAMESPACE::DivideByAlpha;

struct StraightCover8 {
    V16 aT, w, alpha, divisor, belowDivisor, r;

    // aT and aB in both slots of each lane.
    StraightCover8(V16 topAlpha, V16 bottomAlpha) : aT(topAlpha) {
        const D16 d16;
        // t = (255 - aT) aB + 127, w = t / 255, aR = aT + w.
        w = Div255(hn::Add(hn::Mul(hn::Xor(aT, hn::Set(d16, 255)), bottomAlpha), hn::Set(d16, 127)));
        alpha = hn::Add(aT, w);
        // An alpha of 0 comes with dividends of 0 and is divided by as it
        // is, which keeps a maximum off the chain to the reciprocal: its
        // float reciprocal is +inf, whose low 16 bits give r = 0, so the
        // quotient and the remainder are 0 and, below the divisor clamped to
        // 0, nothing is added: the rule's 0.
        divisor = alpha;
        belowDivisor = hn::SaturatedSub(alpha, hn::Set(d16, 1));
        r = quorin::HWY_NAMESPACE::ReciprocalOfAlpha(divisor);
    }

    // bottom w + top aT per slot: within 255 aR.
    V16 dividend(V16 top, V16 bottom) const { return hn::Add(hn::Mul(bottom, w), hn::Mul(top, aT)); }
    // (bottom w + top aT) / aR truncated, per slot.
    V16 colour(V16 top, V16 bottom) const { return DivideByAlpha(dividend(top, bottom), divisor, belowDivisor, r); }
};

// ARGB8888 (bytes A R G B): slots [A, A] for the alphas, [A, G] and [R, B] for
// the colours (the A slot of [A, G] is discarded). The colour slots are the
// even and odd bytes of each 16-bit word (a mask and a shift, which leave the
// byte shuffles' ports to the alphas and the reciprocals), and the result is
// joined by one shift, one OR and one byte blend.
class StraightARGB8888Steps {
public:
    StraightARGB8888Steps()
        : alphas_(GroupBytes(D8(), 0, 0x80, 0, 0x80)),
          lowBytes_(hn::Set(D16(), 0x00FF)),
          alphaBytes_(hn::MaskFromVec(hn::BitCast(D8(), hn::Set(D32(), 0xFFu)))) {}

    // A block up to its division: its dividends and reciprocals (the long
    // chain). Carrying dividends rather than pixels keeps a block to six
    // live vectors (the cover's weights die here).
    struct Block {
        V16 agDividend, rbDividend, alpha, divisor, belowDivisor, r;
    };

    Block start(const uint8_t* top, const uint8_t* bottom) const {
        const V8 vt = hn::LoadU(D8(), top), vb = hn::LoadU(D8(), bottom);
        const StraightCover8 c(alphaSlots(vt), alphaSlots(vb));
        return {c.dividend(evenSlots(vt), evenSlots(vb)), c.dividend(oddSlots(vt), oddSlots(vb)), c.alpha, c.divisor,
                c.belowDivisor, c.r};
    }

    template <bool kStream>
    void finish(const Block& b, uint8_t* dest) const {
        const V16 ag = DivideByAlpha(b.agDividend, b.divisor, b.belowDivisor, b.r);
        const V16 rb = DivideByAlpha(b.rbDividend, b.divisor, b.belowDivisor, b.r);
        // Quotients are below 256: R and B move up a byte beside G; byte A
        // (the discarded quotient) takes the result alpha.
        const V8 colours = hn::BitCast(D8(), hn::Or(hn::ShiftLeft<8>(rb), ag));
        const V8 out = hn::IfThenElse(alphaBytes_, hn::BitCast(D8(), b.alpha), colours);
        if constexpr (kStream) hn::Stream(out, D8(), dest);
        else hn::StoreU(out, D8(), dest);
    }

private:
    V16 alphaSlots(V8 pixels) const { return hn::BitCast(D16(), hn::TableLookupBytesOr0(pixels, alphas_)); }
    V16 evenSlots(V8 pixels) const { return hn::And(hn::BitCast(D16(), pixels), lowBytes_); }
    static V16 oddSlots(V8 pixels) { return hn::ShiftRight<8>(hn::BitCast(D16(), pixels)); }
    V8 alphas_;
    V16 lowBytes_;
    hn::Mask<D8> alphaBytes_;
};

// With 32 vector registers each block's division is started two blocks
// before its colours are needed, so that its latency overlaps other blocks'
// arithmetic. With 16 (AVX2 and below) three blocks in flight do not fit in
// them and their spills cost more than the overlap gains, but one block
// started ahead does (a block is six vectors): 4 % faster on Zen 3 than the
// plain loop, whose long chains fill the scheduler before the next block's
// division can start. (Every block is loaded before an earlier one is
// stored: dest may alias a source.) Streamed runs below AVX-512 prefetch
// both sources once a line (kSourcePrefetchBytes).
template <bool kStream>
void StraightBlendARGB8888Blocks(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t blocks) {
    const size_t blockBytes = 4 * hn::Lanes(D32());
    const StraightARGB8888Steps steps;
    constexpr bool kPrefetch = kStream && HWY_TARGET != HWY_AVX3 && HWY_TARGET != HWY_AVX3_DL;
    const size_t aheadBlocks = kSourcePrefetchBytes / blockBytes;
    const size_t prefetchedBlocks = kPrefetch && blocks > aheadBlocks ? blocks - aheadBlocks : 0;
    const auto start = [&](size_t b) {
        const size_t at = b * blockBytes;
        if (b < prefetchedBlocks && at % 64 == 0) {
            PrefetchSourceAhead(top + at);
            PrefetchSourceAhead(bottom + at);
        }
        return steps.start(top + at, bottom + at);
    };
    const size_t step = hn::Lanes(D32());
    size_t b = 0;
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if (blocks >= 2) {
        auto first = start(0), second = start(1);
        for (b = 2; b < blocks; ++b) {
            const auto next = start(b);
            steps.finish<kStream>(first, dest + 4 * (b - 2) * step);
            first = second;
            second = next;
        }
        steps.finish<kStream>(first, dest + 4 * (b - 2) * step);
        steps.finish<kStream>(second, dest + 4 * (b - 1) * step);
    }
#else
    if (blocks >= 1) {
        auto current = start(0);
        for (b = 1; b < blocks; ++b) {
            const auto next = start(b);
            steps.finish<kStream>(current, dest + 4 * (b - 1) * step);
            current = next;
        }
        steps.finish<kStream>(current, dest + 4 * (b - 1) * step);
    }
#endif
    for (; b < blocks; ++b) steps.finish<kStream>(start(b), dest + 4 * b * step);
}

void StraightBlendARGB8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool stream) {
    const size_t step = hn::Lanes(D32());
    const size_t head = StreamingHead(stream, dest, pixels, 4, 4 * step);  // pixels before the first whole vector
    if (head != kNoStreaming) {
        StraightBlendInterleavedScalar(top, bottom, dest, head);
        StraightBlendARGB8888Blocks<true>(top + 4 * head, bottom + 4 * head, dest + 4 * head, (pixels - head) / step);
        if (!StreamFenceDeferred()) hwy::FlushStream();  // else the band fences its rows once
    } else {
        StraightBlendARGB8888Blocks<false>(top, bottom, dest, pixels / step);
    }
    const size_t start = head == kNoStreaming ? 0 : head;
    const size_t done = start + (pixels - start) / step * step;
    StraightBlendInterleavedScalar(top + 4 * done, bottom + 4 * done, dest + 4 * done, pixels - done);
}

// Planar8: one value per lane, in the low slot (both slots for the alphas).
void StraightBlendPlanar8(const uint8_t* top, const uint8_t* topAlpha, const uint8_t* bottom,
                          const uint8_t* bottomAlpha, uint8_t* dest, uint8_t* destAlpha, size_t count) {
    const D32 d32;
    const hn::Rebind<uint8_t, D32> d8;
    const auto lowSlot = [&](const uint8_t* p) { return hn::BitCast(D16(), hn::PromoteTo(d32, hn::LoadU(d8, p))); };
    const auto bothSlots = [&](const uint8_t* p) {
        const V32 v = hn::PromoteTo(d32, hn::LoadU(d8, p));
        return hn::BitCast(D16(), hn::Or(v, hn::ShiftLeft<16>(v)));
    };
    const size_t done = WholeSteps(count, hn::Lanes(d32), [&](size_t i) {
        const StraightCover8 cover(bothSlots(topAlpha + i), bothSlots(bottomAlpha + i));
        // The high slots hold zero dividends, hence zero quotients.
        const V32 colour = hn::BitCast(d32, cover.colour(lowSlot(top + i), lowSlot(bottom + i)));
        hn::StoreU(hn::U8FromU32(colour), d8, dest + i);
        hn::StoreU(hn::U8FromU32(hn::And(hn::BitCast(d32, cover.alpha), hn::Set(d32, 0xFFu))), d8, destAlpha + i);
    });
    StraightBlendPlanarScalar(top + done, topAlpha + done, bottom + done, bottomAlpha + done, dest + done,
                              destAlpha + done, count - done);
}

// ---- Float straight blend ------------------------------------------------------

// The float rule on whole lanes: colour where the result alpha is positive,
// else 0 (a NaN alpha compares false). Operation order as in the rule, no
// fused multiply-add, a true division; NaN results canonical as in the rule.
struct StraightCoverFloatVec {
    VF weight, alpha;
    StraightCoverFloatVec(VF aT, VF aB) {
        weight = hn::Mul(hn::Sub(hn::Set(DF(), 1.0f), aT), aB);
        alpha = quorin::HWY_NAMESPACE::CanonicalNaNs(hn::Add(aT, weight));
    }
    VF colour(VF top, VF aT, VF bottom) const {
        const VF c = hn::Div(hn::Add(hn::Mul(top, aT), hn::Mul(bottom, weight)), alpha);
        return hn::IfThenElseZero(hn::Gt(alpha, hn::Zero(DF())), quorin::HWY_NAMESPACE::CanonicalNaNs(c));
    }
};

// ARGBFFFF: one pixel per 128-bit block, so Broadcast<0> spreads each pixel's alpha.
void StraightBlendARGBFFFF(const float* top, const float* bottom, float* dest, size_t pixels, bool) {
    const DF df;
    const auto alphaLanes = ChannelLanes(df, kAlphaFirst);
    const size_t done = WholeSteps(pixels, hn::Lanes(df) / 4, [&](size_t i) {
        const VF vt = hn::LoadU(df, top + 4 * i), vb = hn::LoadU(df, bottom + 4 * i);
        const VF aT = hn::Broadcast<0>(vt);
        const StraightCoverFloatVec cover(aT, hn::Broadcast<0>(vb));
        hn::StoreU(hn::IfThenElse(alphaLanes, cover.alpha, cover.colour(vt, aT, vb)), df, dest + 4 * i);
    });
    StraightBlendInterleavedScalar(top + 4 * done, bottom + 4 * done, dest + 4 * done, pixels - done);
}

void StraightBlendPlanarF(const float* top, const float* topAlpha, const float* bottom, const float* bottomAlpha,
                          float* dest, float* destAlpha, size_t count) {
    const DF df;
    const size_t done = WholeSteps(count, hn::Lanes(df), [&](size_t i) {
        const VF aT = hn::LoadU(df, topAlpha + i);
        const StraightCoverFloatVec cover(aT, hn::LoadU(df, bottomAlpha + i));
        const VF colour = cover.colour(hn::LoadU(df, top + i), aT, hn::LoadU(df, bottom + i));
        hn::StoreU(colour, df, dest + i);
        hn::StoreU(cover.alpha, df, destAlpha + i);
    });
    StraightBlendPlanarScalar(top + done, topAlpha + done, bottom + done, bottomAlpha + done, dest + done,
                              destAlpha + done, count - done);
}

// ---- Blend modes: one 8-bit channel per 16-bit lane ---------------------------

// One mode on S (top) and D (bottom) channels with each pixel's alphas spread
// over its four lanes. The alpha lanes need no separate rule: every mode's
// colour formula applied to the two alphas gives the alpha rule's
// sA + ((255 - sA) dA + 127) / 255. Both Darken and Lighten terms reduce to
// (255 sA + 255 dA - sA dA + 127) / 255; Screen's
// sA + dA - (sA dA + 127) / 255 is the same value; and Multiply's
// ((255 - sA) dA + 255 sA + 127) / 255 is the rule itself.
template <BlendMode kMode>
HWY_INLINE V16 ModeVec(V16 s, V16 sA, V16 d, V16 dA) {
    const D16 d16;
    const V16 k255 = hn::Set(d16, 255), k127 = hn::Set(d16, 127);
    if constexpr (kMode == BlendMode::Darken || kMode == BlendMode::Lighten) {
        const V16 bottomTerm = hn::Add(d, Div255(hn::Add(hn::Mul(hn::Xor(dA, k255), s), k127)));
        const V16 topTerm = hn::Add(s, Div255(hn::Add(hn::Mul(hn::Xor(sA, k255), d), k127)));
        if constexpr (kMode == BlendMode::Darken) return hn::Min(bottomTerm, topTerm);
        else return hn::Max(bottomTerm, topTerm);
    } else if constexpr (kMode == BlendMode::Screen) {
        (void)sA, (void)dA;
        return hn::Sub(hn::Add(s, d), Div255(hn::Add(hn::Mul(s, d), k127)));
    } else {
        // n = (255 - sA) d + (d + 255 - dA) s + 127 reaches 3 x 2^16 when colour
        // exceeds alpha, so it is carried as (hi, s16): n = hi x 2^16 + s16.
        // With H = n >> 8 and L = n & 255, n / 255 = H + (H + L) / 255, and
        // H + L stays far below 2^16.
        const V16 uncoveredTop = hn::Add(hn::Mul(hn::Xor(sA, k255), d), k127);  // (255 - sA) d + 127
        const V16 u = hn::Add(d, hn::Xor(dA, k255));                               // d + 255 - dA <= 510
        const V16 productLow = hn::Mul(u, s);
        const V16 productHigh = hn::MulHigh(u, s);
        const V16 sum = hn::Add(uncoveredTop, productLow);
        // A carry out of the low word adds 1 (subtracting the all-ones mask).
        const V16 high = hn::Sub(productHigh, hn::VecFromMask(d16, hn::Lt(sum, productLow)));
        const V16 h = hn::Or(hn::ShiftLeft<8>(high), hn::ShiftRight<8>(sum));
        return hn::Add(h, Div255(hn::Add(h, hn::And(sum, k255))));
    }
}

template <BlendMode kMode>
void BlendModeRGBA8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool stream) {
    const D16 d16;
    const hn::Rebind<uint8_t, D16> d8;            // one byte per 16-bit lane
    const hn::Repartition<uint8_t, D16> d8Bytes;  // the bytes of a 16-bit vector
    const hn::RebindToSigned<D16> di16;
    const V16 alphaIndices = hn::BitCast(d16, AlphaBytesOf16BitPixels(d8Bytes, kAlphaLast));
    const V16 lowByte = hn::Set(d16, 0xFF);
    StoreRun(
        d8, stream, dest, pixels, 4, hn::Lanes(d16) / 4,
        [&](size_t i, auto store) {
            const V16 s = hn::PromoteTo(d16, hn::LoadU(d8, top + 4 * i));
            const V16 d = hn::PromoteTo(d16, hn::LoadU(d8, bottom + 4 * i));
            const V16 sA = hn::TableLookupBytes(s, alphaIndices);
            const V16 dA = hn::TableLookupBytes(d, alphaIndices);
            // Results above 255 are stored as their low 8 bits.
            const V16 r = hn::And(ModeVec<kMode>(s, sA, d, dA), lowByte);
            store(hn::DemoteTo(d8, hn::BitCast(di16, r)), dest + 4 * i);
        },
        [&](size_t first, size_t count) {
            BlendModeScalar<kMode>(top + 4 * first, bottom + 4 * first, dest + 4 * first, count);
        });
}

// ---- Constant-alpha blend of premultiplied planes ----------------------------

// The high 32 bits of a x m for every 32-bit lane, from the 64-bit products of
// the even lanes and of the odd lanes shifted down.
HWY_INLINE V32 MulHigh32(V32 a, uint32_t m) {
    const D32 d;
    const hn::Repartition<uint64_t, D32> d64;
    const V32 mv = hn::Set(d, m);
    const auto even = hn::MulEven(a, mv);
    const auto odd = hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(d64, a))), mv);
    return hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, hn::ShiftRight<32>(even)));
}

// floor(n / 65025) for every 32-bit n: the round-up multiplier of 2^48 / 65025
// needs 33 bits, so its low 32 bits m' = 0x02030406 are used with the
// add-back step t = mulhi(n, m'), q = (t + ((n - t) >> 1)) >> 15 (the
// Granlund-Montgomery method for divisors whose multiplier exceeds a word).
HWY_INLINE V32 DivideBy65025(V32 n) {
    const V32 t = MulHigh32(n, 0x02030406u);
    return hn::ShiftRight<15>(hn::Add(t, hn::ShiftRight<1>(hn::Sub(n, t))));
}

void ConstAlphaBlendPlanar8(const uint8_t* top, const uint8_t* topAlpha, const uint8_t* bottom, uint8_t* dest,
                            size_t count, uint8_t constAlpha) {
    const D32 d;
    const hn::Rebind<uint8_t, D32> d8;
    const V32 k = hn::Set(d, constAlpha);
    const V32 topWeight = hn::Set(d, 255u * constAlpha);
    const size_t done = WholeSteps(count, hn::Lanes(d), [&](size_t i) {
        const V32 t = hn::PromoteTo(d, hn::LoadU(d8, top + i));
        const V32 a = hn::PromoteTo(d, hn::LoadU(d8, topAlpha + i));
        const V32 b = hn::PromoteTo(d, hn::LoadU(d8, bottom + i));
        // A k fits 16 bits (one 16-bit multiply: the high slots are zero);
        // 6375 - A k wraps modulo 2^32 like the rule, and so do the products and sums.
        const V32 ak = hn::BitCast(d, hn::Mul(hn::BitCast(D16(), a), hn::BitCast(D16(), k)));
        const V32 bottomWeight = hn::Sub(hn::Set(d, 6375u), ak);
        const V32 n = hn::Add(hn::Add(hn::Mul(t, topWeight), hn::Mul(bottomWeight, b)), hn::Set(d, 32385u));
        hn::StoreU(hn::U8FromU32(hn::And(DivideBy65025(n), hn::Set(d, 0xFFu))), d8, dest + i);
    });
    ConstAlphaBlendScalar(top + done, topAlpha + done, bottom + done, dest + done, count - done, constAlpha);
}

void ConstAlphaBlendPlanarF(const float* top, const float* topAlpha, const float* bottom, float* dest, size_t count,
                            float constAlpha) {
    const DF df;
    const VF k = hn::Set(df, constAlpha), one = hn::Set(df, 1.0f);
    const size_t done = WholeSteps(count, hn::Lanes(df), [&](size_t i) {
        const VF bottomWeight = hn::Sub(one, hn::Mul(hn::LoadU(df, topAlpha + i), k));
        const VF r = hn::Add(hn::Mul(hn::LoadU(df, top + i), k), hn::Mul(hn::LoadU(df, bottom + i), bottomWeight));
        hn::StoreU(quorin::HWY_NAMESPACE::CanonicalNaNs(r), df, dest + i);
    });
    ConstAlphaBlendScalar(top + done, topAlpha + done, bottom + done, dest + done, count - done, constAlpha);
}

#endif  // HWY_TARGET != HWY_SCALAR

void DarkenRGBA8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool stream) {
    BlendModeRGBA8888<BlendMode::Darken>(top, bottom, dest, pixels, stream);
}
void LightenRGBA8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool stream) {
    BlendModeRGBA8888<BlendMode::Lighten>(top, bottom, dest, pixels, stream);
}
void MultiplyRGBA8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool stream) {
    BlendModeRGBA8888<BlendMode::Multiply>(top, bottom, dest, pixels, stream);
}
void ScreenRGBA8888(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool stream) {
    BlendModeRGBA8888<BlendMode::Screen>(top, bottom, dest, pixels, stream);
}

}  // namespace quorin::alpha::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::alpha {

HWY_EXPORT(StraightBlendARGB8888);
HWY_EXPORT(StraightBlendARGBFFFF);
HWY_EXPORT(StraightBlendPlanar8);
HWY_EXPORT(StraightBlendPlanarF);
HWY_EXPORT(DarkenRGBA8888);
HWY_EXPORT(LightenRGBA8888);
HWY_EXPORT(MultiplyRGBA8888);
HWY_EXPORT(ScreenRGBA8888);
HWY_EXPORT(ConstAlphaBlendPlanar8);
HWY_EXPORT(ConstAlphaBlendPlanarF);

const KernelPair<InterleavedBlendKernel<uint8_t>> kStraightBlendARGB8888{&StraightBlendInterleavedScalar<uint8_t>,
                                                                         HWY_DISPATCH_TABLE(StraightBlendARGB8888)};
const KernelPair<InterleavedBlendKernel<float>> kStraightBlendARGBFFFF{&StraightBlendInterleavedScalar<float>,
                                                                       HWY_DISPATCH_TABLE(StraightBlendARGBFFFF)};
const KernelPair<PlanarStraightKernel<uint8_t>> kStraightBlendPlanar8{&StraightBlendPlanarScalar<uint8_t>,
                                                                      HWY_DISPATCH_TABLE(StraightBlendPlanar8)};
const KernelPair<PlanarStraightKernel<float>> kStraightBlendPlanarF{&StraightBlendPlanarScalar<float>,
                                                                    HWY_DISPATCH_TABLE(StraightBlendPlanarF)};
const KernelPair<InterleavedBlendKernel<uint8_t>> kDarkenRGBA8888{&BlendModeScalar<BlendMode::Darken>,
                                                                  HWY_DISPATCH_TABLE(DarkenRGBA8888)};
const KernelPair<InterleavedBlendKernel<uint8_t>> kLightenRGBA8888{&BlendModeScalar<BlendMode::Lighten>,
                                                                   HWY_DISPATCH_TABLE(LightenRGBA8888)};
const KernelPair<InterleavedBlendKernel<uint8_t>> kMultiplyRGBA8888{&BlendModeScalar<BlendMode::Multiply>,
                                                                    HWY_DISPATCH_TABLE(MultiplyRGBA8888)};
const KernelPair<InterleavedBlendKernel<uint8_t>> kScreenRGBA8888{&BlendModeScalar<BlendMode::Screen>,
                                                                  HWY_DISPATCH_TABLE(ScreenRGBA8888)};
const KernelPair<PlanarConstKernel<uint8_t>> kConstAlphaBlendPlanar8{&ConstAlphaBlendScalar<uint8_t>,
                                                                     HWY_DISPATCH_TABLE(ConstAlphaBlendPlanar8)};
const KernelPair<PlanarConstKernel<float>> kConstAlphaBlendPlanarF{&ConstAlphaBlendScalar<float>,
                                                                   HWY_DISPATCH_TABLE(ConstAlphaBlendPlanarF)};

}  // namespace quorin::alpha
#endif  // HWY_ONCE
