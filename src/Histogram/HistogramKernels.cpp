// Vector twins of the histogram rules (HistogramRules.h).
//
// 8 bits: counting is stores, not arithmetic: one store per channel and
// pixel, and a processor that retires one store per cycle cannot count
// faster than that, whatever the order. Two things help all the same. Each
// group of sixteen pixels is first compared with its first pixel, as one
// vector: a run of one colour (flat areas, borders, saturated regions) then
// costs four additions of 16 instead of 64 increments, and the comparison
// is lost in the stores when it fails. And four consecutive pixels go to
// four sub-tables, so that where a processor makes each increment wait for
// the store of the one before to the same counter, the same counter is met
// at most once every four pixels.
//
// Float: the bins of a whole vector of samples (four channels of several
// pixels) are computed at once with the rule's single-precision steps and
// saturating conversion, then counted one by one a few vectors later.
#include <bit>
#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Histogram/HistogramKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "Histogram/HistogramKernels.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
namespace {

constexpr size_t kRun = 16;  // pixels tested at once for a run of one colour

// Whether the kRun pixels at `p` all equal `pixel`.
HWY_INLINE bool AllPixelsAre(const uint8_t* p, uint32_t pixel) {
    const hn::CappedTag<uint32_t, kRun> du;
    const hn::Repartition<uint8_t, decltype(du)> d8;
    const size_t lanes = hn::Lanes(du);
    const auto want = hn::Set(du, pixel);
    auto same = hn::Eq(hn::BitCast(du, hn::LoadU(d8, p)), want);
    for (size_t k = lanes; k < kRun; k += lanes) same = hn::And(same, hn::Eq(hn::BitCast(du, hn::LoadU(d8, p + 4 * k)), want));
    return hn::AllTrue(du, same);
}

}  // namespace
#endif

void CountPixels8Vector(const uint8_t* pixels, size_t count, histogram::Tally8& tally) {
    static_assert(histogram::Tally8::kSubTables == 4);
    static_assert(std::endian::native == std::endian::little, "channel c is byte c of a pixel's word");
    auto& t = tally.counts;
    // Pixel k of each group of four counts into sub-table k.
    const auto count4 = [&t](size_t k, uint32_t px) {
        ++t[k][0][px & 0xFF];
        ++t[k][1][(px >> 8) & 0xFF];
        ++t[k][2][(px >> 16) & 0xFF];
        ++t[k][3][px >> 24];
    };
    // Two pixels per load, held in registers: the counter stores cannot make
    // the compiler read the pixels again, and the loads leave the load ports
    // to the counters.
    const auto countGroup = [&count4](const uint8_t* p) {
        uint64_t a, b;
        std::memcpy(&a, p, 8);
        std::memcpy(&b, p + 8, 8);
        count4(0, static_cast<uint32_t>(a));
        count4(1, static_cast<uint32_t>(a >> 32));
        count4(2, static_cast<uint32_t>(b));
        count4(3, static_cast<uint32_t>(b >> 32));
    };
    size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    for (; i + kRun <= count; i += kRun) {
        const uint8_t* p = pixels + 4 * i;
        uint32_t first;
        std::memcpy(&first, p, 4);
        if (AllPixelsAre(p, first)) {
            for (size_t c = 0; c < 4; ++c) t[0][c][(first >> (8 * c)) & 0xFF] += kRun;
            continue;
        }
        for (size_t k = 0; k < kRun; k += 4) countGroup(p + 4 * k);
    }
#endif
    for (; i + 4 <= count; i += 4) countGroup(pixels + 4 * i);
    histogram::CountPixels8(pixels + 4 * i, count - i, tally);
}

#if HWY_TARGET != HWY_SCALAR
namespace {

using DF = hn::ScalableTag<float>;
using DU = hn::RebindToUnsigned<DF>;
using DI = hn::RebindToSigned<DF>;

// FloatBin of every lane.
struct BinBody {
    hn::Vec<DF> minVal, scale;
    hn::Vec<DU> last;

    HWY_INLINE hn::Vec<DU> operator()(hn::Vec<DF> v) const {
        const DF df;
        const DU du;
        const auto x = hn::Mul(scale, hn::Sub(v, minVal));
        const auto two31 = hn::Set(df, 2147483648.0f);
        // From 2^31 on, the integer part is x - 2^31 (exact there) with the top bit set.
        const auto high = hn::Ge(x, two31);
        auto bin = hn::BitCast(du, hn::ConvertTo(DI(), hn::IfThenElse(high, hn::Sub(x, two31), x)));
        bin = hn::Or(bin, hn::IfThenElseZero(hn::RebindMask(du, high), hn::Set(du, 0x80000000u)));
        bin = hn::IfThenElse(hn::RebindMask(du, hn::Ge(x, hn::Set(df, 4294967296.0f))), hn::Set(du, 0xFFFFFFFFu), bin);
        bin = hn::IfThenElseZero(hn::RebindMask(du, hn::Gt(x, hn::Zero(df))), bin);  // negative and NaN: 0
        return hn::Min(bin, last);
    }
};

}  // namespace
#endif

// The bins go through a small ring of stored vectors and are counted
// kDelay vectors after they were stored: read back at once, each narrow
// load would wait on the wide store still in flight (the processor cannot
// forward part of it), which cost more than the binning and the counting
// together.
template <unsigned kFirst>
void CountBinnedF(const float* pixels, size_t count, const histogram::Binning& b, uint32_t* const counters[4]) {
    size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const DF df;
    const DU du;
    const size_t lanes = hn::Lanes(df), perVector = lanes / 4;
    const BinBody body{hn::Set(df, b.minVal), hn::Set(df, b.scale), hn::Set(du, b.last)};
    constexpr size_t kDelay = 4;
    alignas(HWY_MAX_BYTES) uint32_t bins[kDelay][HWY_MAX_BYTES / sizeof(uint32_t)];
    uint32_t* const c0 = counters[0];
    uint32_t* const c1 = counters[1];
    uint32_t* const c2 = counters[2];
    uint32_t* const c3 = counters[3];
    const auto countVector = [&](const uint32_t* q) {
        for (size_t p = 0; p < lanes; p += 4) {
            if constexpr (kFirst == 0) ++c0[q[p]];
            ++c1[q[p + 1]];
            ++c2[q[p + 2]];
            ++c3[q[p + 3]];
        }
    };
    size_t stored = 0;
    for (; perVector != 0 && i + perVector <= count; i += perVector, ++stored) {
        if (stored >= kDelay) countVector(bins[stored % kDelay]);
        hn::Store(body(hn::LoadU(df, pixels + 4 * i)), du, bins[stored % kDelay]);
    }
    for (size_t k = stored > kDelay ? stored - kDelay : 0; k < stored; ++k) countVector(bins[k % kDelay]);
#endif
    histogram::CountPixelsF(pixels + 4 * i, count - i, b, counters, kFirst);
}

void CountPixelsFVector(const float* pixels, size_t count, const histogram::Binning& b, uint32_t* const counters[4],
                        unsigned first) {
    if (first == 0) return CountBinnedF<0>(pixels, count, b, counters);
    CountBinnedF<1>(pixels, count, b, counters);
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::histogram {

HWY_EXPORT(CountPixels8Vector);
HWY_EXPORT(CountPixelsFVector);

const KernelPair<Count8Kernel> kCount8Kernels{&CountPixels8, HWY_DISPATCH_TABLE(CountPixels8Vector)};
const KernelPair<CountFKernel> kCountFKernels{&CountPixelsF, HWY_DISPATCH_TABLE(CountPixelsFVector)};

}  // namespace quorin::histogram
#endif
