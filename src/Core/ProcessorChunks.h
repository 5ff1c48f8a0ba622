// Processor-count chunking: the families that cut their rows themselves into
// one chunk per processor and hand the chunks to a single parallel apply
// (permute, fills, overwrite with a scalar, the packed-RGB conversions, the
// matrix multiply, and the histogram with its own remainder rule).
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/Dispatch.h"
#include "Core/Streaming.h"
#include "quorin/Types.h"

namespace quorin {

// Where the rows left over after whole chunks go.
enum class ChunkRemainder : uint8_t {
    // n chunks of rows / n when n divides the rows; otherwise n - 1 chunks of
    // rows / (n - 1) and a last chunk holding the rest: n chunks in all, the
    // last possibly empty (it still runs).
    LastOfN,
    // n chunks of rows / n, n as above, and one chunk more holding the rest
    // only when there is a rest: no empty chunk (the histogram's counting
    // tasks and its merge's cut of the bins; ReduceRows).
    ExtraChunk,
};

struct ChunkPlan {
    size_t chunks;    // chunks handed to the parallel apply
    size_t rows;      // rows of every chunk but the last
    size_t lastRows;  // rows of the last chunk

    size_t firstRowOf(size_t i) const { return i * rows; }
    size_t rowsOf(size_t i) const { return i + 1 == chunks ? lastRows : rows; }
};

constexpr ChunkPlan PlanChunks(size_t processors, size_t height, ChunkRemainder remainder) {
    if (height % processors == 0) return {processors, height / processors, height / processors};
    const size_t whole = processors - 1, rows = height / whole, rest = height - whole * rows;
    if (remainder == ChunkRemainder::ExtraChunk && rest == 0) return {whole, rows, rows};
    return {processors, rows, rest};
}

// Serial (as if single-threaded) with fewer than two processors, fewer rows
// than processors, or fewer than 64000 pixels, tested as the pixel count
// shifted right by 9 being below 125. A count too large for 64 bits is large.
constexpr bool WantsChunks(Quorin_Flags flags, size_t processors, size_t width, size_t height) {
    if ((flags & kQuorinFlag_SingleThreaded) || processors < 2 || height < processors) return false;
    uint64_t pixels = 0;
    if (__builtin_mul_overflow(uint64_t{width}, uint64_t{height}, &pixels)) return true;
    return (pixels >> 9) >= 125;
}

// Runs band(firstRow, rows) over `height` rows of `width` pixels: once on
// the calling thread, or once per chunk through one parallel apply on the
// default global queue (empty chunks included), returning when all are done.
// Each chunk's streaming stores are fenced once, when it ends.
template <ChunkRemainder kRemainder = ChunkRemainder::LastOfN, class BandFn>
void RunProcessorChunks(Quorin_Flags flags, size_t width, size_t height, BandFn&& chunkBand) {
    const auto band = [&chunkBand](size_t firstRow, size_t rows) {
        const StreamFenceScope fence;
        chunkBand(firstRow, rows);
    };
    const size_t processors = ActiveProcessorCount();
    if (!WantsChunks(flags, processors, width, height)) {
        band(size_t{0}, height);
        return;
    }
    const ChunkPlan plan = PlanChunks(processors, height, kRemainder);
    ParallelApply(plan.chunks, [&](size_t i) { band(plan.firstRowOf(i), plan.rowsOf(i)); });
}

}  // namespace quorin
