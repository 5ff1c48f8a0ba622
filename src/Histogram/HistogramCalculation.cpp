// Histogram calculation: both members run one driver, given the member's
// counting of a band of rows. Small images (or single-threaded calls) are
// counted straight into the caller's cleared counters with nothing
// allocated; large ones into private partial counters per band, which a
// second parallel pass sums into the caller's counters (ReduceRows).
#include <cstdlib>
#include <cstring>

#include "Core/Checks.h"
#include "Core/ProcessorChunks.h"
#include "Core/Reduce.h"
#include "Core/Walk.h"
#include "Histogram/HistogramKernels.h"
#include "Histogram/HistogramMembers.h"

namespace quorin::histogram {
namespace {

// The partial counters of the parallel path: a small array of four block
// pointers, then for each counted channel one zero-filled block of
// tasks x entries counters; task k owns counters k x entries onward.
template <class CountBand>
class Partials {
public:
    Partials(const CountBand& count, uint32_t* const* histograms, size_t entries, unsigned first)
        : count_(count), histograms_(histograms), entries_(entries), first_(first) {}
    ~Partials() { release(); }
    Partials(const Partials&) = delete;
    Partials& operator=(const Partials&) = delete;

    bool allocate(size_t tasks) {
        blocks_ = static_cast<uint32_t**>(AllocatePartial(4 * sizeof(uint32_t*)));
        if (!blocks_) return false;
        tasks_ = tasks;
        const std::optional<size_t> counters = CheckedProduct(tasks, entries_);
        const std::optional<size_t> bytes = counters ? CheckedProduct(*counters, sizeof(uint32_t)) : std::nullopt;
        for (unsigned c = first_; c < 4; ++c) {
            blocks_[c] = bytes ? static_cast<uint32_t*>(AllocatePartial(*bytes)) : nullptr;
            if (!blocks_[c]) {
                release();
                return false;
            }
        }
        return true;
    }

    void band(size_t task, size_t firstRow, size_t rows) const {
        uint32_t* counters[4] = {};
        for (unsigned c = first_; c < 4; ++c) counters[c] = blocks_[c] + task * entries_;
        count_(firstRow, rows, counters);
    }

    // Overwrites the caller's counters of these bins with the tasks' sums.
    void merge(size_t firstBin, size_t bins) const {
        for (unsigned c = first_; c < 4; ++c)
            for (size_t b = firstBin; b < firstBin + bins; ++b) {
                uint32_t sum = 0;
                for (size_t k = 0; k < tasks_; ++k) sum += blocks_[c][k * entries_ + b];
                histograms_[c][b] = sum;
            }
    }

private:
    void release() {
        if (!blocks_) return;
        for (unsigned c = first_; c < 4; ++c) std::free(blocks_[c]);
        std::free(blocks_);
        blocks_ = nullptr;
    }

    const CountBand& count_;
    uint32_t* const* histograms_;
    size_t entries_, tasks_ = 0;
    unsigned first_;
    uint32_t** blocks_ = nullptr;
};

// count(firstRow, rows, counters) adds the bins of channels first..3 of
// those rows to counters[first..3].
template <class CountBand>
Quorin_Error Count(const CountBand& count, size_t width, size_t height, uint32_t* const* histograms, size_t entries,
                   Quorin_Flags flags) {
    const unsigned first = (flags & kQuorinFlag_SkipAlpha) ? 1 : 0;
    const size_t processors = ActiveProcessorCount();
    if (!WantsChunks(flags, processors, width, height)) {
        uint32_t* counters[4] = {};
        for (unsigned c = first; c < 4; ++c) {
            std::memset(histograms[c], 0, entries * sizeof(uint32_t));
            counters[c] = histograms[c];
        }
        count(size_t{0}, height, counters);
        return kQuorinSuccess;
    }
    Partials<CountBand> partials(count, histograms, entries, first);
    return ReduceRows(ReducePlan{processors, kQuorinError_InternalFault}, height, entries, partials);
}

}  // namespace

template <const Member& kMember>
Quorin_Error Run(const Call& call) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kBytes = kFormat.pixelBytes();
    const std::span<const CheckStep> checks = kMember.checks;
    const Operand operands[] = {{call.src, kBytes}};
    if (const Quorin_Error error = RunChecks(checks.first(1), operands, call.flags)) return error;
    if constexpr (kFormat.sample == SampleKind::F32) {
        if (call.entries == 0 || call.maxVal < call.minVal) return kQuorinError_BadArgument;
    }
    if (const Quorin_Error error = RunChecks(checks.subspan(1), operands, call.flags)) return error;
    const Quorin_Buffer* src = call.src;
    const size_t width = src->width;
    const unsigned first = (call.flags & kQuorinFlag_SkipAlpha) ? 1 : 0;
    if constexpr (kFormat.sample == SampleKind::U8) {
        const Count8Kernel kernel = kCount8Kernels.choose();
        const auto count = [=](size_t firstRow, size_t rows, uint32_t* const counters[4]) {
            Tally8 tally{};
            WalkRegion(0, firstRow, width, rows, [&](uint8_t* p, size_t n) { kernel(p, n, tally); },
                       Plane<uint8_t, 4>(src));
            tally.addTo(counters, first);
        };
        return Count(count, width, src->height, call.histograms, 256, call.flags);
    } else {
        const CountFKernel kernel = kCountFKernels.choose();
        const Binning binning = Binning::Make(call.entries, call.minVal, call.maxVal);
        const auto count = [=](size_t firstRow, size_t rows, uint32_t* const counters[4]) {
            WalkRegion(0, firstRow, width, rows,
                       [&](float* p, size_t n) { kernel(p, n, binning, counters, first); }, Plane<float, 4>(src));
        };
        return Count(count, width, src->height, call.histograms, call.entries, call.flags);
    }
}

}  // namespace quorin::histogram

using namespace quorin::histogram;  // NOLINT: the entry points below only name members

extern "C" {

QUORIN_API Quorin_Error QuorinHistogramCalculation_ARGB8888(const Quorin_Buffer* src, uint32_t* const histograms[4],
                                                            Quorin_Flags flags) {
    return kHistogramARGB8888.run({src, histograms, 256, 0.0f, 255.0f, flags});
}

QUORIN_API Quorin_Error QuorinHistogramCalculation_ARGBFFFF(const Quorin_Buffer* src, uint32_t* const histograms[4],
                                                            uint32_t histogramEntries, float minVal, float maxVal,
                                                            Quorin_Flags flags) {
    return kHistogramARGBFFFF.run({src, histograms, histogramEntries, minVal, maxVal, flags});
}

}  // extern "C"
