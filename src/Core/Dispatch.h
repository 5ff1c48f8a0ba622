// The parallel frame: processor count, the parallel runner, and
// the splitting rules the families share. Every use of libdispatch goes
// through here.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

#include "quorin/Types.h"
#include "quorin/Utilities.h"

namespace quorin {

// Pixels below which an operation stays on the calling thread.
inline constexpr uint32_t kParallelPixelThreshold = 64000;

// Number of processors the calling thread may run on (at least 1), as read
// at most 10 ms ago.
unsigned ActiveProcessorCount();

// Test hook: pretend the machine has `count` processors (0 restores the truth).
void SetProcessorCountForTest(unsigned count);

namespace detail {
using ApplyFunction = void (*)(void* context, size_t iteration);
// Calls function(context, i) once for each i in [0, tasks), on the calling
// thread and on up to tasks - 1 workers of the default-priority global queue,
// and returns when every call has returned. The workers take indices
// in order from the same counter as the caller, and the caller waits only for
// the indices a worker has started: a worker that wakes after the caller has
// taken the rest finds nothing to do and does not hold the call back. A worker
// stays awake for 100 µs after its share, and a call made meanwhile hands it
// the next share directly rather than queueing a new one.
// Submission::Group submits the workers to a dispatch group made for the
// call, for the splits that report -21771 when none can be made: false then,
// before any call of `function`. Otherwise always true. Built without
// libdispatch (QUORIN_WITHOUT_LIBDISPATCH), the caller runs every index in
// order itself and always returns true.
enum class Submission { Queue, Group };
bool RunShared(size_t tasks, void* context, ApplyFunction function, Submission submission = Submission::Queue);
// Calls that can share work with workers at once; one more runs on its caller
// alone until a record is free again.
inline constexpr size_t kSharedRuns = 64;
// Test hook: every worker calls `hook` before it takes an index (null: none).
void SetWorkerStartHookForTest(void (*hook)());
}  // namespace detail

// Calls fn(i) for i in [0, iterations) concurrently, on the calling thread and
// the global queue's workers, and returns when all have returned. Up to one
// thread per iteration: every caller cuts about one piece per processor, and
// has read the processor count already (a system call, not read again here).
template <class Fn>
void ParallelApply(size_t iterations, Fn&& fn) {
    detail::RunShared(iterations, &fn,
                      [](void* context, size_t i) { (*static_cast<std::remove_reference_t<Fn>*>(context))(i); });
}

// The same with the workers submitted to a dispatch group made for the call:
// false, with nothing run, when the group cannot be made.
template <class Fn>
[[nodiscard]] bool ParallelApplyOnGroup(size_t iterations, Fn&& fn) {
    return detail::RunShared(
        iterations, &fn, [](void* context, size_t i) { (*static_cast<std::remove_reference_t<Fn>*>(context))(i); },
        detail::Submission::Group);
}

// ---- Splitting rules --------------------------------------------------------

// Rows and grid dispatchers: go parallel unless single-threaded or the
// destination has fewer than 64000 pixels. The pixel count is a 32-bit
// product, as every caller of these dispatchers computes it.
inline bool WantsRowsOrGrid(Quorin_Flags flags, size_t width, size_t height) {
    if (flags & kQuorinFlag_SingleThreaded) return false;
    return static_cast<uint32_t>(static_cast<uint32_t>(height) * static_cast<uint32_t>(width)) >=
           kParallelPixelThreshold;
}

// Bands cut by processor count: n = P when P divides the rows, else P - 1,
// each of `chunk` rows, and the rows left over after n chunks.
struct BandPlan {
    size_t processors;  // P
    size_t bands;       // n
    size_t chunk;       // rows per band
    size_t remainder;   // rows - n * chunk

    // Rows of band i (i in 0..n); band n exists only when remainder != 0.
    size_t rowsOf(size_t i) const { return i < bands ? chunk : remainder; }
    // Bands with at least one row: n, and the remainder band if it has rows.
    size_t bandsWithRows() const { return bands + (remainder != 0 ? 1 : 0); }
    size_t firstRowOf(size_t i) const { return i * chunk; }
};

inline BandPlan PlanBands(size_t processors, size_t rows) {
    BandPlan plan{};
    plan.processors = processors;
    plan.bands = (rows % processors == 0) ? processors : processors - 1;
    plan.chunk = rows / plan.bands;
    plan.remainder = rows - plan.bands * plan.chunk;
    return plan;
}

// The band-splitting families split only with at least two processors, at
// least one row per processor and more than 63999 pixels (written as the
// pixel count shifted right by 9 exceeding 124), and never when single-threaded.
// The pixel count is an unsigned 32-bit product, as these families compute it.
inline bool WantsBands(Quorin_Flags flags, size_t processors, uint32_t pixels, size_t rows) {
    if (flags & kQuorinFlag_SingleThreaded) return false;
    if (processors < 2 || rows < processors) return false;
    return (pixels >> 9) > 124;
}

// The rows of a split's bands, cut into pieces when the bands are large:
// each band into up to kMaxPiecesPerBand runs of consecutive rows of at least
// kMinPiecePixels, handed out in order to whichever of the split's threads
// asks next. A worker that starts late (waking an idle processor of a virtual
// machine takes from tens of microseconds to more than a band's time) then
// leaves the others its share of what is left rather than its whole band to
// run after them. Bands too small for two pieces stay whole, one per thread:
// their work is shorter than a worker's usual lateness, so sharing them out
// has nothing to win.
class BandPieces {
public:
    static constexpr size_t kMaxPiecesPerBand = 16;
    static constexpr size_t kMinPiecePixels = 32768;

    // `bands` bands of `chunk` rows of `width` pixels from row 0, the last of
    // `lastRows` rows.
    BandPieces(size_t bands, size_t chunk, size_t lastRows, size_t width)
        : bands_(bands),
          chunk_(chunk),
          lastRows_(lastRows),
          perBand_(std::clamp<size_t>(std::max(chunk, lastRows) * width / kMinPiecePixels, 1, kMaxPiecesPerBand)) {}
    // The bands of a plan that have rows.
    BandPieces(const BandPlan& plan, size_t width)
        : BandPieces(plan.bandsWithRows(), plan.chunk, plan.remainder != 0 ? plan.remainder : plan.chunk, width) {}

    // The share of the split's thread number `taker` (0 to the number of
    // bands, once each): its own band when bands stay whole; otherwise, for
    // as many takers as there are bands with rows, pieces nobody has taken
    // until none is left. Calls bandFn(firstRow, rows), never with 0 rows.
    template <class BandFn>
    void run(size_t taker, BandFn& bandFn) {
        if (!cut()) {
            if (taker < bands_ && rowsOf(taker) != 0) bandFn(taker * chunk_, rowsOf(taker));
            return;
        }
        if (taker >= (chunk_ == 0 ? 1 : bands_)) return;  // only the last band has rows
        for (size_t p = next_.fetch_add(1); p < bands_ * perBand_; p = next_.fetch_add(1)) {
            const size_t band = p / perBand_, part = p % perBand_, rows = rowsOf(band);
            const size_t begin = rows * part / perBand_, end = rows * (part + 1) / perBand_;
            if (end > begin) bandFn(band * chunk_ + begin, end - begin);
        }
    }

    // Whether the bands are cut into pieces.
    bool cut() const { return perBand_ > 1; }

private:
    size_t rowsOf(size_t band) const { return band + 1 < bands_ ? chunk_ : lastRows_; }

    size_t bands_, chunk_, lastRows_, perBand_;
    std::atomic<size_t> next_{0};
};

// Runs bandFn(firstRow, rows) over `height` rows. Serial (one call over all
// rows) unless WantsBands; otherwise one task for each of the n bands and the
// remainder band, run by the caller and workers submitted to a dispatch group,
// the bands shared out in pieces when large. kQuorinError_OutOfMemory, with
// nothing run, when the group cannot be made.
template <class BandFn>
Quorin_Error RunBandsOnGroup(Quorin_Flags flags, size_t width, size_t height, BandFn&& bandFn) {
    const size_t processors = ActiveProcessorCount();
    if (!WantsBands(flags, processors, static_cast<uint32_t>(width * height), height)) {
        bandFn(size_t{0}, height);
        return kQuorinSuccess;
    }
    const BandPlan plan = PlanBands(processors, height);
    BandPieces pieces(plan, width);
    if (!ParallelApplyOnGroup(plan.bandsWithRows(), [&](size_t i) { pieces.run(i, bandFn); }))
        return kQuorinError_OutOfMemory;
    return kQuorinSuccess;
}

// Same bands through a parallel apply of P iterations; iteration n has
// nothing to do when there is no remainder.
template <class BandFn>
void RunBandsOnApply(Quorin_Flags flags, size_t width, size_t height, BandFn&& bandFn) {
    const size_t processors = ActiveProcessorCount();
    if (!WantsBands(flags, processors, static_cast<uint32_t>(width * height), height)) {
        bandFn(size_t{0}, height);
        return;
    }
    const BandPlan plan = PlanBands(processors, height);
    BandPieces pieces(plan, width);
    ParallelApply(processors, [&](size_t i) { pieces.run(i, bandFn); });
}

// Runs pieceFn(x, y, w, h) once over the whole destination on this thread,
// or through the rows dispatcher when WantsRowsOrGrid.
template <class PieceFn>
void RunRows(Quorin_Flags flags, size_t width, size_t height, PieceFn&& pieceFn);

// ---- Row-range work objects -------------------------------------------------

// One band of a row-range job, made by QuorinRowWork::makeJob.
class QuorinRowJob {
public:
    virtual ~QuorinRowJob() = default;
    virtual void run() = 0;
};

// A job over rows that the object-based dispatcher cuts into bands.
class QuorinRowWork {
public:
    virtual ~QuorinRowWork() = default;
    virtual size_t pixelCount() const = 0;
    virtual size_t rowCount() const = 0;
    virtual QuorinRowJob* makeJob(size_t firstRow, size_t rows) const = 0;
};

// A row-range job whose bands run a band function.
template <class BandFn>
class BandWork final : public QuorinRowWork {
public:
    BandWork(size_t width, size_t height, BandFn band) : width_(width), height_(height), band_(std::move(band)) {}

    size_t pixelCount() const override { return width_ * height_; }
    size_t rowCount() const override { return height_; }
    QuorinRowJob* makeJob(size_t firstRow, size_t rows) const override { return Job::Make(band_, firstRow, rows); }

private:
    // A band's job lives in its thread's one slot, not on the heap: making it
    // cannot fail on the C entry points' path, where an allocation failure
    // would otherwise throw through C callers or leave some bands written and
    // others not. The dispatcher makes, runs and destroys each job on one
    // thread before that thread makes another, and a band never dispatches
    // another job of its own type, so one slot per thread is enough.
    class Job final : public QuorinRowJob {
    public:
        static Job* Make(const BandFn& band, size_t firstRow, size_t rows) {
            alignas(Job) static thread_local unsigned char slot[sizeof(Job)];
            return new (static_cast<void*>(slot)) Job(band, firstRow, rows);
        }
        static void* operator new(size_t, void* slot) noexcept { return slot; }
        // Destroying the job leaves its slot for the thread's next job.
        static void operator delete(void*) noexcept {}
        static void operator delete(void*, void*) noexcept {}

        void run() override { band_(firstRow_, rows_); }

    private:
        Job(const BandFn& band, size_t firstRow, size_t rows) : band_(band), firstRow_(firstRow), rows_(rows) {}

        const BandFn& band_;
        size_t firstRow_, rows_;
    };

    size_t width_, height_;
    BandFn band_;
};

// Runs `work` serially (one job over all rows) with fewer than two
// processors, fewer rows than processors, fewer than 64000 pixels or the
// single-threaded flag; otherwise P jobs through a parallel apply, cut by the
// P-or-P-1 rule (the last may be empty and still runs).
void QuorinRunRowWork(const QuorinRowWork& work, Quorin_Flags flags);

namespace detail {
// The rows dispatcher's bands for `processors` processors.
void ApplyOnRows(size_t processors, size_t width, size_t height, const Quorin_PieceClosure& closure);
}  // namespace detail

// The rows dispatcher calls the closure once per band (height / P rows, the
// last band taking the rest); large bands are shared out in pieces as the
// band splitters do, so pieceFn sees full-width runs of rows that may be
// shorter than a band.
template <class PieceFn>
void RunRows(Quorin_Flags flags, size_t width, size_t height, PieceFn&& pieceFn) {
    if (!WantsRowsOrGrid(flags, width, height)) {
        pieceFn(size_t{0}, size_t{0}, width, height);
        return;
    }
    struct Shared {
        BandPieces pieces;
        size_t width;
        PieceFn& pieceFn;
    };
    const size_t processors = ActiveProcessorCount(), chunk = height / processors;
    Shared shared{BandPieces(processors, chunk, height - chunk * (processors - 1), width), width, pieceFn};
    const Quorin_PieceClosure closure{
        [](void* context, size_t band, size_t x, size_t y, size_t w, size_t h) {
            auto& all = *static_cast<Shared*>(context);
            if (!all.pieces.cut()) {
                all.pieceFn(x, y, w, h);
                return;
            }
            auto rows = [&all](size_t firstRow, size_t count) { all.pieceFn(size_t{0}, firstRow, all.width, count); };
            all.pieces.run(band, rows);
        },
        &shared};
    detail::ApplyOnRows(processors, width, height, closure);
}

// Runs pieceFn(x, y, w, h) over width x height: once, here, unless `split`;
// then through _QuorinDispatchApplyOnGrid with the grid it chooses, whose
// pieces share the work out among themselves: each takes bands of whole
// rows of about 32768 pixels from one counter until none is left. A worker
// that wakes late, or a piece whose part costs more, then leaves its share
// to whoever is free instead of holding the call back with a whole tile
// (two tiles side by side also made each thread skip half of every row).
// pieceFn must give each pixel the same bytes whichever piece computes it.
template <class PieceFn>
void RunOnGrid(bool split, size_t width, size_t height, PieceFn&& pieceFn) {
    if (!split) {
        pieceFn(size_t{0}, size_t{0}, width, height);
        return;
    }
    constexpr size_t kBandPixels = 32768;
    struct Shared {
        std::remove_reference_t<PieceFn>& pieceFn;
        size_t width, height, bandRows, bands;
        std::atomic<size_t> next{0};
    };
    const size_t bandRows = std::max<size_t>(1, kBandPixels / std::max<size_t>(1, width));
    Shared shared{pieceFn, width, height, bandRows, (height + bandRows - 1) / bandRows};
    const Quorin_PieceClosure closure{
        [](void* context, size_t, size_t, size_t, size_t, size_t) {
            Shared& all = *static_cast<Shared*>(context);
            for (size_t band = all.next.fetch_add(1); band < all.bands; band = all.next.fetch_add(1)) {
                const size_t first = band * all.bandRows;
                all.pieceFn(size_t{0}, first, all.width, std::min(all.height, first + all.bandRows) - first);
            }
        },
        &shared};
    _QuorinDispatchApplyOnGrid(0, 0, width, height, &closure);
}

// The same, split when WantsRowsOrGrid (the flags and the pixel count).
template <class PieceFn>
void RunGrid(Quorin_Flags flags, size_t width, size_t height, PieceFn&& pieceFn) {
    RunOnGrid(WantsRowsOrGrid(flags, width, height), width, height, std::forward<PieceFn>(pieceFn));
}

}  // namespace quorin
