// A reduce step after a parallel split, for the operations that gather
// rather than write pixels (histograms): each task adds its band of rows into
// a private partial result, and the partials are merged into the caller's
// result in task order once all have finished, so the result never depends
// on which thread ran what.
//
// The family keeps its own rules: it decides the task count (1 or less, or
// more tasks than rows, means serial, and then nothing is allocated: the
// single band goes straight into the caller's result) and the code to return when the partials cannot be
// allocated (a histogram reports kQuorinError_InternalFault there, not
// kQuorinError_OutOfMemory). Partials are value-initialised (zero counts).
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>

#include "Core/Dispatch.h"
#include "quorin/Types.h"

namespace quorin {

namespace detail {
// Test hook: the number of partial allocations still to fail.
inline std::atomic<int> gFailPartialAllocations{0};
}  // namespace detail

// Test hook: the next `count` partial allocations fail, so a family's test can
// prove its allocation-failure code without exhausting memory.
inline void FailPartialAllocationsForTest(int count) { detail::gFailPartialAllocations.store(count); }

struct ReducePlan {
    size_t tasks;                  // bands of rows; <= 1 runs serially with no allocation
    Quorin_Error allocationFailed;  // returned, before any band runs, when the partials cannot be allocated
};

// Runs band(partial, firstRow, rows) over `height` rows cut into plan.tasks
// bands (height / tasks rows each, the last taking the rest) through a
// parallel apply, then merge(total, partial) for each task in order.
template <class Partial, class BandFn, class MergeFn>
Quorin_Error ReduceRows(const ReducePlan& plan, size_t height, Partial& total, BandFn&& band, MergeFn&& merge) {
    if (plan.tasks <= 1 || height < plan.tasks) {
        band(total, size_t{0}, height);
        return kQuorinSuccess;
    }
    if (detail::gFailPartialAllocations.load(std::memory_order_relaxed) > 0) {
        detail::gFailPartialAllocations.fetch_sub(1);
        return plan.allocationFailed;
    }
    const std::unique_ptr<Partial[]> partials(new (std::nothrow) Partial[plan.tasks]());
    if (!partials) return plan.allocationFailed;
    const size_t chunk = height / plan.tasks;
    ParallelApply(plan.tasks, [&](size_t i) {
        const size_t first = i * chunk, rows = i + 1 == plan.tasks ? height - first : chunk;
        band(partials[i], first, rows);
    });
    for (size_t i = 0; i < plan.tasks; ++i) merge(total, partials[i]);
    return kQuorinSuccess;
}

}  // namespace quorin
