#include "Core/Dispatch.h"

#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <memory>

#include "Core/DispatchLibrary.h"
#include "quorin/Utilities.h"

namespace quorin {
namespace {

std::atomic<unsigned> gProcessorCountOverride{0};

dispatch_queue_t GlobalQueue() { return dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0); }

// The tasks of one group, taken in order by whichever thread comes first: the
// group's workers, and the caller, which would otherwise only wait. A caller
// that sleeps right after waking the workers lets Linux queue them both on its
// own processor while the other one idles, for milliseconds (up to a
// scheduler tick); a caller that keeps working keeps them apart, and picks up
// any task whose worker is late.
struct GroupTasks {
    void* context;
    detail::ApplyFunction function;
    size_t count;
    std::atomic<size_t> next{0};

    void runUntilNoneLeft() {
        for (size_t i = next.fetch_add(1); i < count; i = next.fetch_add(1)) function(context, i);
    }
};

}  // namespace

// The processors this process may run on. Asked on every parallel call, so
// it must be cheap: the affinity mask is one system call (0.2 µs here), where
// counting the online processors reads a file (5.6 µs), which is what a
// mask too small for the machine's processors falls back to.
unsigned ActiveProcessorCount() {
    if (const unsigned forced = gProcessorCountOverride.load(std::memory_order_relaxed)) return forced;
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) {
        const int count = CPU_COUNT(&allowed);
        if (count > 0) return static_cast<unsigned>(count);
    }
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<unsigned>(online) : 1u;
}

void SetProcessorCountForTest(unsigned count) { gProcessorCountOverride.store(count, std::memory_order_relaxed); }

namespace detail {

void ApplyOnGlobalQueue(size_t iterations, void* context, ApplyFunction function) {
    dispatch_apply_f(iterations, GlobalQueue(), context, function);
}

bool RunOnGroup(size_t tasks, void* context, ApplyFunction function) {
    dispatch_group_t group = dispatch_group_create();
    if (group == nullptr) return false;
    // Lives until the group has been awaited, so every submitted task finds it.
    GroupTasks shared{context, function, tasks};
    for (size_t i = 0; i < tasks; ++i) {
        dispatch_group_async_f(group, GlobalQueue(), &shared,
                               [](void* all) { static_cast<GroupTasks*>(all)->runUntilNoneLeft(); });
    }
    shared.runUntilNoneLeft();
    dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
    dispatch_release(group);
    return true;
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
    const size_t n = ActiveProcessorCount();
    const size_t band = height / n;
    const size_t lastBand = height - band * n + band;
    ParallelApply(n, [&](size_t i) {
        closure->function(closure->context, i, 0, band * i, width, i == n - 1 ? lastBand : band);
    });
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
