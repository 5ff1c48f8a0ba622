// Histogram calculation: both members run one driver, given the member's
// counting of a band of rows. Small images (or single-threaded calls) are
// counted straight into the caller's cleared counters with nothing
// allocated; large ones into private partial counters per task, which are
// then summed into the caller's counters.
//
// Each task's band is cut into pieces that whichever task is free takes
// next (BandPieces): a worker that wakes late leaves its share to the
// others instead of holding the call back with a whole band, which matters
// most for a flat image, counted at several gigapixels a second. A piece
// is counted into the partial of the task that took it; the sums do not
// depend on who counted what.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Core/Checks.h"
#include "Core/Dispatch.h"
#include "Core/ProcessorChunks.h"
#include "Core/Reduce.h"
#include "Core/Walk.h"
#include "Histogram/HistogramKernels.h"
#include "Histogram/HistogramMembers.h"

namespace quorin::histogram {
namespace {

// The partial counters of the parallel path: a small array of four block
// pointers, then for each counted channel one zero-filled block of
// tasks x stride counters; task k owns counters k x stride onward. The
// stride is the entries rounded up to a cache line and one line more, so
// that no two tasks' counters share a line wherever the block starts: the
// float kernel counts straight into them, and random values in 0..1 put
// the last bins of one task beside the first of the next, which bounced
// that line between the processors and made two of them slower than one.
template <class CountBand>
class Partials {
public:
    Partials(const CountBand& count, uint32_t* const* histograms, size_t entries, unsigned first)
        : count_(count),
          histograms_(histograms),
          entries_(entries),
          stride_(entries > SIZE_MAX - 2 * kLine ? 0 : (entries + kLine - 1) / kLine * kLine + kLine),
          first_(first) {}
    ~Partials() { release(); }
    Partials(const Partials&) = delete;
    Partials& operator=(const Partials&) = delete;

    bool allocate(size_t tasks) {
        blocks_ = static_cast<uint32_t**>(AllocatePartial(4 * sizeof(uint32_t*)));
        if (!blocks_) return false;
        tasks_ = tasks;
        const std::optional<size_t> counters = stride_ ? CheckedProduct(tasks, stride_) : std::nullopt;
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

    // Task k's share of the rows, as count() takes it.
    template <class ForEachBand>
    void task(size_t k, const ForEachBand& forEachBand) const {
        uint32_t* counters[4] = {};
        for (unsigned c = first_; c < 4; ++c) counters[c] = blocks_[c] + k * stride_;
        count_(forEachBand, counters);
    }

    // Overwrites the caller's counters of these bins with the tasks' sums.
    void merge(size_t firstBin, size_t bins) const {
        for (unsigned c = first_; c < 4; ++c)
            for (size_t b = firstBin; b < firstBin + bins; ++b) {
                uint32_t sum = 0;
                for (size_t k = 0; k < tasks_; ++k) sum += blocks_[c][k * stride_ + b];
                histograms_[c][b] = sum;
            }
    }

private:
    static constexpr size_t kLine = 64 / sizeof(uint32_t);

    void release() {
        if (!blocks_) return;
        for (unsigned c = first_; c < 4; ++c) std::free(blocks_[c]);
        std::free(blocks_);
        blocks_ = nullptr;
    }

    const CountBand& count_;
    uint32_t* const* histograms_;
    size_t entries_, stride_, tasks_ = 0;
    unsigned first_;
    uint32_t** blocks_ = nullptr;
};

// Merges of fewer counters than this run on the calling thread: a second
// parallel apply costs more than summing them.
constexpr size_t kSerialMergeCounters = size_t{1} << 16;

// count(forEachBand, counters) adds the bins of channels first..3 of the
// rows of every band(firstRow, rows) that forEachBand(band) calls to
// counters[first..3]: one task's pieces add up in one set of counters (the
// 8-bit member's sub-tables are cleared and summed once per task, not per
// piece).
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
        count([height](auto& band) { band(size_t{0}, height); }, counters);
        return kQuorinSuccess;
    }
    // n = P bands when P divides the rows, else P - 1, and a task for the
    // rows left over; each band shared out in pieces when large.
    const ChunkPlan rows = PlanChunks(processors, height, ChunkRemainder::ExtraChunk);
    Partials<CountBand> partials(count, histograms, entries, first);
    if (!partials.allocate(rows.chunks)) return kQuorinError_InternalFault;
    BandPieces pieces(rows.chunks, rows.rows, rows.lastRows, width);
    ParallelApply(rows.chunks, [&](size_t task) {
        partials.task(task, [&pieces, task](auto& band) { pieces.run(task, band); });
    });
    if (entries < kSerialMergeCounters / (rows.chunks * (4 - first))) {
        partials.merge(0, entries);
        return kQuorinSuccess;
    }
    // Large histograms: the bins cut over the processors as the rows were.
    const ChunkPlan bins = PlanChunks(processors, entries, ChunkRemainder::ExtraChunk);
    ParallelApply(bins.chunks, [&](size_t k) { partials.merge(bins.firstRowOf(k), bins.rowsOf(k)); });
    return kQuorinSuccess;
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
        const auto count = [=](const auto& forEachBand, uint32_t* const counters[4]) {
            Tally8 tally{};
            auto band = [&](size_t firstRow, size_t rows) {
                WalkRegion(0, firstRow, width, rows, [&](uint8_t* p, size_t n) { kernel(p, n, tally); },
                           Plane<uint8_t, 4>(src));
            };
            forEachBand(band);
            tally.addTo(counters, first);
        };
        return Count(count, width, src->height, call.histograms, 256, call.flags);
    } else {
        const CountFKernel kernel = kCountFKernels.choose();
        const Binning binning = Binning::Make(call.entries, call.minVal, call.maxVal);
        const auto count = [=](const auto& forEachBand, uint32_t* const counters[4]) {
            auto band = [&](size_t firstRow, size_t rows) {
                WalkRegion(0, firstRow, width, rows,
                           [&](float* p, size_t n) { kernel(p, n, binning, counters, first); },
                           Plane<float, 4>(src));
            };
            forEachBand(band);
        };
        return Count(count, width, src->height, call.histograms, call.entries, call.flags);
    }
}

// The tests, the benchmark and the fuzzer call the members through their
// rows, which the entry points below may have inlined away.
template Quorin_Error Run<kHistogramARGB8888>(const Call&);
template Quorin_Error Run<kHistogramARGBFFFF>(const Call&);

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
