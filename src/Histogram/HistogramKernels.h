// The kernel pairs of the histograms: the scalar rules of HistogramRules.h
// and their vector twins (HistogramKernels.cpp), which count alike for every
// input and count.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/KernelPair.h"
#include "Histogram/HistogramRules.h"

namespace quorin::histogram {

using Count8Kernel = void (*)(const uint8_t* pixels, size_t count, Tally8& tally);
using CountFKernel = void (*)(const float* pixels, size_t count, const Binning& b, uint32_t* const counters[4],
                              unsigned first);

extern const KernelPair<Count8Kernel> kCount8Kernels;
extern const KernelPair<CountFKernel> kCountFKernels;

}  // namespace quorin::histogram
