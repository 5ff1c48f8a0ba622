#include "Core/Dispatch.h"

#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>

#if !QUORIN_WITHOUT_LIBDISPATCH
#include "Core/DispatchLibrary.h"
#endif
#include "quorin/Utilities.h"

namespace quorin {
namespace {

std::atomic<unsigned> gProcessorCountOverride{0};
std::atomic<void (*)()> gWorkerStartHook{nullptr};

#if !QUORIN_WITHOUT_LIBDISPATCH

dispatch_queue_t GlobalQueue() { return dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0); }

constexpr std::chrono::microseconds kWatchBeforeSleeping{100};

// What the caller of one parallel call shares with its workers. The caller
// takes indices from the front, its workers from the back, so that a call
// repeated on the same image gives each thread the same part each time and
// finds it still in that processor's cache (taking them in turns from one
// counter let a quick worker take index 0 as often as the caller did, and
// moving half an image of L2-sized data between processors cost more than a
// call just above the parallel threshold). The caller keeps taking them
// rather than sleeping once it has woken the workers: a caller that sleeps
// lets Linux queue the workers on its own processor while another idles (for
// up to a scheduler tick), and a worker that wakes late (20-40 µs is usual,
// longer on a loaded virtual machine) would otherwise hold the whole call
// back. So the caller runs every index no worker has started, and waits only
// for those that workers are running. A late worker may then run after the
// call has returned: it finds no index left and never touches the caller's
// context, but it still reads the record, which is why records live in a
// static table and are reused only once every thread that was handed one has
// let go of it. One cache line each, so that calls under way at once on
// other threads do not slow each other's counters.
struct alignas(64) SharedRun {
    std::atomic<uint32_t> holders{0};  // 0: free; else the caller and the workers not yet done with it
    // The indices not yet taken: [front, back), front in the low half.
    std::atomic<uint64_t> untaken{0};
    std::atomic<size_t> finished{0};
    size_t count = 0;
    void* context = nullptr;
    detail::ApplyFunction function = nullptr;

    // Calls that can use a record: their indices fit the halves of `untaken`.
    static bool Fits(size_t tasks) { return static_cast<uint64_t>(tasks) <= UINT32_MAX; }
    void start(size_t tasks) {
        untaken.store(static_cast<uint64_t>(tasks) << 32, std::memory_order_relaxed);
        finished.store(0, std::memory_order_relaxed);
        count = tasks;
    }
    // The next index from the front (the caller) or the back (a worker), or
    // `count` when none is left.
    size_t take(bool fromFront) {
        uint64_t ends = untaken.load(std::memory_order_relaxed);
        for (;;) {
            const uint64_t front = ends & UINT32_MAX, back = ends >> 32;
            if (front >= back) return count;
            const uint64_t after = fromFront ? ends + 1 : ends - (uint64_t{1} << 32);
            if (untaken.compare_exchange_weak(ends, after, std::memory_order_relaxed))
                return static_cast<size_t>(fromFront ? front : back - 1);
        }
    }
    void runUntilNoneLeft(bool fromFront) {
        for (size_t i = take(fromFront); i < count; i = take(fromFront)) {
            function(context, i);
            if (finished.fetch_add(1, std::memory_order_acq_rel) + 1 == count) finished.notify_all();
        }
    }
    // The indices left are ones a worker started while the caller was still
    // running its own, so they end soon: the caller watches for that rather
    // than sleeping at once, since being woken again costs it more (tens of
    // microseconds here) than most of those indices take.
    void waitForAll() {
        const auto giveUp = std::chrono::steady_clock::now() + kWatchBeforeSleeping;
        for (unsigned n = 1; finished.load(std::memory_order_acquire) != count; ++n) {
            if (n % 64 == 0 && std::chrono::steady_clock::now() > giveUp) break;
        }
        for (size_t done = finished.load(std::memory_order_acquire); done != count;
             done = finished.load(std::memory_order_acquire)) {
            finished.wait(done, std::memory_order_acquire);
        }
    }
    void release() { holders.fetch_sub(1, std::memory_order_acq_rel); }
};

// More records than calls can overlap in practice (each is held for one call
// and, at most, a late worker's wake-up after it); when every one is taken
// the call runs on the caller alone, with the same result.
SharedRun gSharedRuns[detail::kSharedRuns];

SharedRun* ClaimSharedRun(uint32_t holders) {
    for (SharedRun& run : gSharedRuns) {
        uint32_t free = 0;
        if (run.holders.compare_exchange_strong(free, holders, std::memory_order_acquire, std::memory_order_relaxed))
            return &run;
    }
    return nullptr;
}

void RunAsWorker(SharedRun* run) {
    if (void (*hook)() = gWorkerStartHook.load(std::memory_order_acquire)) hook();
    run->runUntilNoneLeft(/*fromFront=*/false);
    run->release();
}

// A worker that has run its share stays on for a moment, watching a mailbox
// for the next call's share, before it goes back to libdispatch. Calls made
// in quick succession (a loop over images or rows, a pipeline of steps) then
// hand their share to a worker that is already awake with one atomic
// exchange, instead of waking a sleeping thread: that costs the caller 1-2 µs
// of system call and the worker 20-40 µs of scheduling, more than a whole
// call just above the parallel threshold takes on one thread. The watch is
// short, so a worker never keeps a processor long from anything else.
constexpr std::chrono::microseconds kLingerAfterRun{100};

// Mailbox states: nobody watching, a worker watching, or (any other value)
// the SharedRun handed to the watching worker, which owns the box until it
// marks itself watching again.
constexpr uintptr_t kNobodyWatching = 0, kWatching = 1;
struct alignas(64) Mailbox {
    std::atomic<uintptr_t> state{kNobodyWatching};
};
// Workers that can watch at once; one more goes straight back to libdispatch.
Mailbox gMailboxes[8];

void RelaxWhileSpinning() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__) || defined(__arm__)
    asm volatile("yield");
#endif
}

void Linger(Mailbox& box) {
    auto giveUp = std::chrono::steady_clock::now() + kLingerAfterRun;
    for (unsigned n = 1;; ++n) {
        uintptr_t state = box.state.load(std::memory_order_acquire);
        if (state == kWatching) {
            RelaxWhileSpinning();
            if (n % 64 != 0 || std::chrono::steady_clock::now() < giveUp) continue;
            // Leave, unless a caller handed over a share in the meantime.
            if (box.state.compare_exchange_strong(state, kNobodyWatching, std::memory_order_acq_rel)) return;
        }
        RunAsWorker(reinterpret_cast<SharedRun*>(state));
        box.state.store(kWatching, std::memory_order_release);
        giveUp = std::chrono::steady_clock::now() + kLingerAfterRun;
    }
}

void WorkerEntry(void* shared) {
    RunAsWorker(static_cast<SharedRun*>(shared));
    for (Mailbox& box : gMailboxes) {
        uintptr_t nobody = kNobodyWatching;
        if (box.state.compare_exchange_strong(nobody, kWatching, std::memory_order_acq_rel)) {
            Linger(box);
            return;
        }
    }
}

// Hands `run` to a worker watching its mailbox: false when none is.
bool HandToWatchingWorker(SharedRun* run) {
    for (Mailbox& box : gMailboxes) {
        uintptr_t watching = kWatching;
        if (box.state.load(std::memory_order_relaxed) == kWatching &&
            box.state.compare_exchange_strong(watching, reinterpret_cast<uintptr_t>(run), std::memory_order_acq_rel))
            return true;
    }
    return false;
}
#endif  // !QUORIN_WITHOUT_LIBDISPATCH

}  // namespace

// The processors this thread may run on, read afresh from the affinity mask
// (or, should the mask be too small for the machine's processors, from the
// online count) at most every few milliseconds. Asked on every parallel call,
// so it must be cheap: the mask is one system call, 0.2 µs on a quiet machine
// but 1-2 µs on this one when loaded, a fifth of a conversion just above the
// parallel threshold; reading the online count reads a file (5.6 µs).
unsigned ActiveProcessorCount() {
    if (const unsigned forced = gProcessorCountOverride.load(std::memory_order_relaxed)) return forced;
    constexpr auto kRefresh = std::chrono::milliseconds(10);
    thread_local unsigned count = 0;
    thread_local std::chrono::steady_clock::time_point readAt;
    const auto now = std::chrono::steady_clock::now();
    if (count != 0 && now - readAt < kRefresh) return count;
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0 && CPU_COUNT(&allowed) > 0) {
        count = static_cast<unsigned>(CPU_COUNT(&allowed));
    } else {
        const long online = sysconf(_SC_NPROCESSORS_ONLN);
        count = online > 0 ? static_cast<unsigned>(online) : 1u;
    }
    readAt = now;
    return count;
}

void SetProcessorCountForTest(unsigned count) { gProcessorCountOverride.store(count, std::memory_order_relaxed); }

namespace detail {

#if QUORIN_WITHOUT_LIBDISPATCH
// Built without libdispatch (systems that lack it): the same pieces, in index
// order, on the calling thread, so every call gives the bytes it gives in
// parallel. There is no group to make, so none can fail.
bool RunShared(size_t tasks, void* context, ApplyFunction function, Submission) {
    for (size_t i = 0; i < tasks; ++i) function(context, i);
    return true;
}
#else
bool RunShared(size_t tasks, void* context, ApplyFunction function, Submission submission) {
    const size_t workers = tasks > 1 ? tasks - 1 : 0;
    // The group only carries the workers; the call never waits on it (a late
    // worker would hold it back), and releasing it while they are queued is
    // safe, since each submission keeps it alive until it has run.
    dispatch_group_t group = nullptr;
    if (submission == Submission::Group && workers != 0 && (group = dispatch_group_create()) == nullptr) return false;
    SharedRun* run = workers != 0 && SharedRun::Fits(tasks) ? ClaimSharedRun(static_cast<uint32_t>(workers + 1)) : nullptr;
    if (run == nullptr) {
        for (size_t i = 0; i < tasks; ++i) function(context, i);
    } else {
        run->start(tasks);
        run->context = context;
        run->function = function;
        for (size_t w = 0; w < workers; ++w) {
            if (HandToWatchingWorker(run)) continue;
            if (group != nullptr) dispatch_group_async_f(group, GlobalQueue(), run, WorkerEntry);
            else dispatch_async_f(GlobalQueue(), run, WorkerEntry);
        }
        run->runUntilNoneLeft(/*fromFront=*/true);
        run->waitForAll();
        run->release();
    }
    if (group != nullptr) dispatch_release(group);
    return true;
}
#endif

void SetWorkerStartHookForTest(void (*hook)()) { gWorkerStartHook.store(hook, std::memory_order_release); }

void ApplyOnRows(size_t processors, size_t width, size_t height, const Quorin_PieceClosure& closure) {
    const size_t band = height / processors;
    const size_t lastBand = height - band * processors + band;
    ParallelApply(processors, [&](size_t i) {
        closure.function(closure.context, i, 0, band * i, width, i == processors - 1 ? lastBand : band);
    });
}

}  // namespace detail

void QuorinRunRowWork(const QuorinRowWork& work, Quorin_Flags flags) {
    const size_t processors = ActiveProcessorCount();
    const size_t rows = work.rowCount();
    auto runBand = [&work](size_t firstRow, size_t count) {
        std::unique_ptr<QuorinRowJob> job(work.makeJob(firstRow, count));
        job->run();
    };
    if (!WantsBands(flags, processors, static_cast<uint32_t>(work.pixelCount()), rows)) {
        runBand(0, rows);
        return;
    }
    const BandPlan plan = PlanBands(processors, rows);
    ParallelApply(processors, [&](size_t i) { runBand(plan.firstRowOf(i), plan.rowsOf(i)); });
}

}  // namespace quorin

using quorin::ActiveProcessorCount;
using quorin::ParallelApply;

extern "C" {

QUORIN_API Quorin_Error _QuorinDispatchApplyOnRows(size_t width, size_t height,
                                                   const Quorin_PieceClosure* closure) {
    if (closure == nullptr || closure->function == nullptr) return kQuorinError_InternalFault;
    quorin::detail::ApplyOnRows(ActiveProcessorCount(), width, height, *closure);
    return kQuorinSuccess;
}

QUORIN_API Quorin_Error _QuorinDispatchApplyOnGrid(size_t tilesAcross, size_t tilesDown, size_t width,
                                                   size_t height, const Quorin_PieceClosure* closure) {
    if (closure == nullptr || closure->function == nullptr) return kQuorinError_InternalFault;
    if (tilesAcross == 0 || tilesDown == 0) {
        const unsigned n = ActiveProcessorCount();
        tilesDown = static_cast<size_t>(std::sqrt(static_cast<double>(n)));
        tilesAcross = n / tilesDown;
    }
    const size_t tileW = width / tilesAcross, lastW = tileW + width % tilesAcross;
    const size_t tileH = height / tilesDown, lastH = tileH + height % tilesDown;
    ParallelApply(tilesAcross * tilesDown, [&](size_t i) {
        const size_t c = i % tilesAcross, r = i / tilesAcross;
        closure->function(closure->context, i, tileW * c, tileH * r,
                          c == tilesAcross - 1 ? lastW : tileW, r == tilesDown - 1 ? lastH : tileH);
    });
    return kQuorinSuccess;
}

}  // extern "C"
