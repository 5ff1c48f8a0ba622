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

// Whether an output of width x height pixels is split: the count is formed
// in 32 bits, as the dispatchers' callers form it.
inline bool WantsGrid(size_t width, size_t height) {
    return static_cast<uint32_t>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height)) >=
           kParallelPixelThreshold;
}

// Runs pieceFn(x, y, w, h) over width x height: once, here, unless `split`;
// then through _QuorinDispatchApplyOnGrid with the grid it chooses (tiles
// may be empty; pieceFn must accept them).
template <class PieceFn>
void RunOnGrid(bool split, size_t width, size_t height, PieceFn&& pieceFn) {
    if (!split) {
        pieceFn(size_t{0}, size_t{0}, width, height);
        return;
    }
    const Quorin_PieceClosure closure{
        [](void* context, size_t, size_t x, size_t y, size_t w, size_t h) {
            (*static_cast<std::remove_reference_t<PieceFn>*>(context))(x, y, w, h);
        },
        &pieceFn};
    _QuorinDispatchApplyOnGrid(0, 0, width, height, &closure);
}

}  // namespace quorin
