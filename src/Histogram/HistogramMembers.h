// The histogram family, written down once: each member's entry point, pixel
// format and check list. The entry points (HistogramCalculation.cpp) are
// made from these rows; the tests, the benchmark and the fuzzer walk
// kHistogramMembers.
#pragma once

#include <cstdint>
#include <span>

#include "Core/MemberRow.h"
#include "quorin/Histogram.h"

namespace quorin::histogram {

// One call of either member; the 8-bit member takes 256 entries over 0..255.
struct Call {
    const Quorin_Buffer* src;
    uint32_t* const* histograms;
    uint32_t entries;
    float minVal, maxVal;
    Quorin_Flags flags;
};

using Member = MemberRow<Call>;

// The source alone; the histogram pointers are not tested. The float
// member's own tests (no entries: -21773; maxVal below minVal: -21773) come
// between the two steps.
inline constexpr CheckStep kHistogramChecks[] = {
    {"the source record or its pixel data is null", Check::Missing, kQuorinError_NullPointer},
    {"the source cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

template <const Member& kMember>
Quorin_Error Run(const Call& call);

// The split: serial below the processor-count chunking's bounds, else the
// reduce step's bands into private counters.
inline constexpr Member kHistogramARGB8888{"QuorinHistogramCalculation_ARGB8888", kARGB8888, SplitRule::Chunks,
                                           kHistogramChecks, &Run<kHistogramARGB8888>};
inline constexpr Member kHistogramARGBFFFF{"QuorinHistogramCalculation_ARGBFFFF", kARGBFFFF, SplitRule::Chunks,
                                           kHistogramChecks, &Run<kHistogramARGBFFFF>};

inline constexpr const Member* kHistogramMembers[] = {&kHistogramARGB8888, &kHistogramARGBFFFF};

}  // namespace quorin::histogram
