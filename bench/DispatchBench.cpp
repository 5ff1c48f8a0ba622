// What the parallel frame itself costs: one rows dispatch with empty pieces,
// and how a compute-bound piece scales from one processor to all of them.
#include <cmath>

#include "BenchSupport.h"
#include "Core/Dispatch.h"

namespace quorin::bench {
namespace {

void EmptyPiece(void*, size_t, size_t, size_t, size_t, size_t) {}

// A deliberately compute-bound piece: a dependent chain of float operations per row.
void BusyPiece(void* context, size_t, size_t, size_t, size_t, size_t h) {
    float x = 1.0f;
    for (size_t i = 0; i < h * 20000; ++i) x = std::sqrt(x + 1.0f);
    benchmark::DoNotOptimize(x);
    (void)context;
}

const RegisterFamily kDispatch([] {
    benchmark::RegisterBenchmark("dispatch/rows-empty-pieces", [](benchmark::State& state) {
        const Quorin_PieceClosure closure{&EmptyPiece, nullptr};
        for (auto _ : state) _QuorinDispatchApplyOnRows(4096, 4096, &closure);
    })->UseRealTime()->Unit(benchmark::kMicrosecond);
    for (unsigned processors : {1u, 0u}) {
        const std::string name = processors == 1 ? "dispatch/compute-bound-1-processor" : "dispatch/compute-bound-all-processors";
        benchmark::RegisterBenchmark(name.c_str(), [processors](benchmark::State& state) {
            SetProcessorCountForTest(processors);
            const Quorin_PieceClosure closure{&BusyPiece, nullptr};
            for (auto _ : state) _QuorinDispatchApplyOnRows(1, 64, &closure);
            SetProcessorCountForTest(0);
        })->UseRealTime()->Unit(benchmark::kMillisecond);
    }
});

}  // namespace
}  // namespace quorin::bench
