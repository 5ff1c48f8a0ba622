// The grid split: an operation whose output has at least 64000 pixels (an
// unsigned 32-bit product) hands its piece routine to the grid dispatcher,
// which cuts the output into about one tile per processor; a smaller output
// is one piece on the calling thread. Callers that also honour the
// single-threaded flag test it before asking for the split.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/Dispatch.h"
#include "quorin/Utilities.h"

namespace quorin {

// Whether an output of width x height pixels is split (RunOnGrid, in
// Core/Dispatch.h, runs the pieces): the count is formed
// in 32 bits, as the dispatchers' callers form it.
inline bool WantsGrid(size_t width, size_t height) {
    return static_cast<uint32_t>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height)) >=
           kParallelPixelThreshold;
}

}  // namespace quorin
