#include "Core/Features.h"

#include <hwy/targets.h>

#include "platform/Log.h"
#include "quorin/Utilities.h"

namespace quorin {
namespace detail {
uint64_t gProbedFeatures = 0;
std::atomic<uint64_t> gSpeedupSwitch{~uint64_t{0}};

void UnsupportedSpeedupSwitch() {
    ReportFatal("GetCPUFeatures", "Utilities/CPUFeatures", 66,
                "unsupported processor feature requested; maintainers, please add support for it");
}
}  // namespace detail

namespace {
std::atomic<uint32_t> gProbeStarts{0};
}

bool ReadProcessorFeatures(uint64_t* mask) {
    // Highway knows which of its compiled targets this processor runs; any
    // target above the portable fallback means the vector kernels may run.
    const int64_t targets = hwy::SupportedTargets();
    if (targets == 0) return false;
    const int64_t vectorTargets = targets & ~static_cast<int64_t>(HWY_SCALAR | HWY_EMU128);
    *mask = vectorTargets != 0 ? kFeatureVectorKernels : 0;
    return true;
}

void ProbeFeatures() {
    // Only the call that raises the counter to 1 probes.
    if (gProbeStarts.fetch_add(1, std::memory_order_relaxed) != 0) return;
    uint64_t mask = 0;
    detail::gProbedFeatures = ReadProcessorFeatures(&mask) ? mask : 0;
}

void SetProbedFeaturesForTest(uint64_t mask) { detail::gProbedFeatures = mask; }

namespace {
// At load, right after the platform's constant-string fix-up (101).
__attribute__((constructor(102))) void ProbeFeaturesAtLoad() { ProbeFeatures(); }
}  // namespace

}  // namespace quorin

extern "C" {

QUORIN_API int Quorin_HasFeature(uint64_t mask) { return quorin::HasFeature(mask) ? 1 : 0; }

QUORIN_API void Quorin_Boosten(uint64_t mask) {
    quorin::detail::gSpeedupSwitch.store(mask, std::memory_order_relaxed);
}

QUORIN_API void Quorin_Decelerate(void) { quorin::detail::gSpeedupSwitch.store(0, std::memory_order_relaxed); }

QUORIN_API void _printCPUInfo(void) {
    const uint64_t speedup = quorin::detail::gSpeedupSwitch.load(std::memory_order_relaxed);
    if (speedup != 0 && speedup != ~uint64_t{0}) quorin::detail::UnsupportedSpeedupSwitch();
}

}  // extern "C"
