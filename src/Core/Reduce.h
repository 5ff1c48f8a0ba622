// A reduce step after a parallel split, for the operations that gather
// rather than write pixels (histograms): each task adds its band of rows into
// its own private partial result, and once all have finished the partials
// are summed into the caller's result by a second parallel pass over the
// result's items, so no counter is ever shared between threads and the
// result never depends on which thread ran what.
//
// The family keeps its own rules: when to stay serial (then nothing is
// allocated and its single band goes straight into the caller's result), the
// layout of its partials, and the code to return when they cannot be
// allocated (a histogram reports kQuorinError_InternalFault there, not
// kQuorinError_OutOfMemory). Partials come from AllocatePartial, zero-filled.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>

#include "Core/Dispatch.h"
#include "Core/ProcessorChunks.h"
#include "quorin/Types.h"

namespace quorin {

namespace detail {
// Test hook: allocations to let through, then the number to fail.
inline std::atomic<int> gPartialAllocationsBeforeFailure{0};
inline std::atomic<int> gFailPartialAllocations{0};
}  // namespace detail

// Test hook: after `after` more partial allocations succeed, the next `count`
// fail, so a family's test can prove its allocation-failure code, and that
// what it had allocated is freed, without exhausting memory.
inline void FailPartialAllocationsForTest(int count, int after = 0) {
    detail::gPartialAllocationsBeforeFailure.store(after);
    detail::gFailPartialAllocations.store(count);
}

// `bytes` of zeros for a partial result (free with std::free), or null.
inline void* AllocatePartial(size_t bytes) {
    if (detail::gFailPartialAllocations.load(std::memory_order_relaxed) > 0) {
        if (detail::gPartialAllocationsBeforeFailure.load(std::memory_order_relaxed) > 0)
            detail::gPartialAllocationsBeforeFailure.fetch_sub(1);
        else {
            detail::gFailPartialAllocations.fetch_sub(1);
            return nullptr;
        }
    }
    return std::calloc(bytes == 0 ? 1 : bytes, 1);
}

struct ReducePlan {
    size_t processors;              // P, at least 2: the split is decided before
    Quorin_Error allocationFailed;  // returned, before any band runs, when the partials cannot be allocated
};

// `partials` provides:
//   bool allocate(size_t tasks)   zero-filled partials for that many tasks,
//                                 or false with everything it got freed
//   void band(size_t task, size_t firstRow, size_t rows)
//   void merge(size_t firstItem, size_t items)   sums every task's partial
//                                 into those items of the caller's result
// The rows are cut into n = P bands when P divides them, else P - 1, and a
// task for the rows left over when there are any (ChunkRemainder::ExtraChunk);
// the merge cuts the `items` of the result the same way. Both passes are parallel applies;
// the merge starts once every band has finished.
template <class Partials>
Quorin_Error ReduceRows(const ReducePlan& plan, size_t height, size_t items, Partials& partials) {
    const ChunkPlan rows = PlanChunks(plan.processors, height, ChunkRemainder::ExtraChunk);
    if (!partials.allocate(rows.chunks)) return plan.allocationFailed;
    ParallelApply(rows.chunks, [&](size_t k) { partials.band(k, rows.firstRowOf(k), rows.rowsOf(k)); });
    if (items == 0) return kQuorinSuccess;
    const ChunkPlan cut = PlanChunks(plan.processors, items, ChunkRemainder::ExtraChunk);
    ParallelApply(cut.chunks, [&](size_t k) { partials.merge(cut.firstRowOf(k), cut.rowsOf(k)); });
    return kQuorinSuccess;
}

}  // namespace quorin
