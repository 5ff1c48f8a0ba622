// Vector twins of the histogram rules (HistogramRules.h).
//
// 8 bits: counting is stores, not arithmetic, and a run of equal values
// makes each increment wait for the one before it to leave the store
// buffer. Four consecutive pixels go to four sub-tables, so the same
// counter is touched at most once every four pixels and the increments of
// a flat image overlap as those of a random one do.
//
// Float: the bins of a whole vector of samples (four channels of several
// pixels) are computed at once with the rule's single-precision steps and
// saturating conversion, then counted one by one.
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

void CountPixels8Vector(const uint8_t* pixels, size_t count, histogram::Tally8& tally) {
    static_assert(histogram::Tally8::kSubTables == 4);
    auto& t = tally.counts;
    size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        // A copy the counters cannot alias, so the stores do not make the
        // compiler load the pixels again.
        uint8_t p[16];
        std::memcpy(p, pixels + 4 * i, sizeof p);
        for (size_t k = 0; k < 4; ++k) {
            ++t[k][0][p[4 * k]];
            ++t[k][1][p[4 * k + 1]];
            ++t[k][2][p[4 * k + 2]];
            ++t[k][3][p[4 * k + 3]];
        }
    }
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

void CountPixelsFVector(const float* pixels, size_t count, const histogram::Binning& b, uint32_t* const counters[4],
                        unsigned first) {
    size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const DF df;
    const DU du;
    const size_t lanes = hn::Lanes(df), perVector = lanes / 4;
    const BinBody body{hn::Set(df, b.minVal), hn::Set(df, b.scale), hn::Set(du, b.last)};
    alignas(HWY_MAX_BYTES) uint32_t bins[HWY_MAX_BYTES / sizeof(uint32_t)];
    for (; perVector != 0 && i + perVector <= count; i += perVector) {
        hn::Store(body(hn::LoadU(df, pixels + 4 * i)), du, bins);
        for (size_t p = 0; p < lanes; p += 4)
            for (unsigned c = first; c < 4; ++c) ++counters[c][bins[p + c]];
    }
#endif
    histogram::CountPixelsF(pixels + 4 * i, count - i, b, counters, first);
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
