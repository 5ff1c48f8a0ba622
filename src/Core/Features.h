// Processor features and the speed-up switch: whether the vector kernels may run.
#pragma once

#include <atomic>
#include <cstdint>

namespace quorin {

// Bit 0 of the probed mask: the vector kernels may run on this processor.
inline constexpr uint64_t kFeatureVectorKernels = 1;

namespace detail {
// Written once by ProbeFeatures at load; read by every feature test.
extern uint64_t gProbedFeatures;
// The speed-up switch: 0 (speed-ups off), all ones (probed features govern),
// anything else is unsupported. A plain word: clients set it before image work.
extern std::atomic<uint64_t> gSpeedupSwitch;
[[noreturn]] void UnsupportedSpeedupSwitch();
}  // namespace detail

// The feature test every variant-choosing call makes: 1 when `mask` shares a
// bit with the effective features. An unsupported switch value is fatal.
inline bool HasFeature(uint64_t mask) {
    const uint64_t speedup = detail::gSpeedupSwitch.load(std::memory_order_relaxed);
    if (speedup == 0) return false;
    if (speedup != ~uint64_t{0}) detail::UnsupportedSpeedupSwitch();
    return (mask & detail::gProbedFeatures) != 0;
}

// What a kernel pair asks before choosing its vector twin.
inline bool UseVectorKernels() { return HasFeature(kFeatureVectorKernels); }

// The one-time probe run at load; later calls do nothing.
void ProbeFeatures();

// Reads the processor's feature mask; false when the facility fails.
bool ReadProcessorFeatures(uint64_t* mask);

// Test hook: replace the probed mask (the value a failed probe leaves is 0).
void SetProbedFeaturesForTest(uint64_t mask);

}  // namespace quorin
