// The splitting rule a member names in its family's table, and the one call
// that runs a band function under it. Each rule is one of the named
// splitters of Dispatch.h; this only lets a table choose among them.
#pragma once

#include <cstddef>

#include "Core/Dispatch.h"
#include "Core/ProcessorChunks.h"
#include "Core/Streaming.h"
#include "quorin/Types.h"

namespace quorin {

enum class SplitRule : uint8_t {
    GroupBands,  // P or P - 1 bands on an awaited dispatch group (RunBandsOnGroup); can fail with -21771
    ApplyBands,  // the same bands through a parallel apply of P iterations (RunBandsOnApply)
    RowWork,     // the row-work object dispatcher (QuorinRunRowWork)
    Rows,        // the rows dispatcher (RunRows), from 64000 destination pixels
    Grid,        // the grid dispatcher (RunGrid), from 64000 destination pixels
    Chunks,      // one chunk per processor through one parallel apply (RunProcessorChunks)
    Serial,      // always on the calling thread
};

inline const char* NameOf(SplitRule rule) {
    switch (rule) {
        case SplitRule::GroupBands: return "group bands";
        case SplitRule::ApplyBands: return "apply bands";
        case SplitRule::RowWork: return "row work";
        case SplitRule::Rows: return "rows";
        case SplitRule::Grid: return "grid";
        case SplitRule::Chunks: return "processor chunks";
        case SplitRule::Serial: return "serial";
    }
    return "?";
}

// Runs band(firstRow, rows) over `height` rows of `width` pixels under kRule.
// Only GroupBands can fail (kQuorinError_OutOfMemory, before any band runs).
// Each band's streaming stores are fenced once, when the band ends.
template <SplitRule kRule, class BandFn>
Quorin_Error RunSplit(Quorin_Flags flags, size_t width, size_t height, BandFn&& rowsBand) {
    const auto band = [&rowsBand](size_t firstRow, size_t rows) {
        const StreamFenceScope fence;
        rowsBand(firstRow, rows);
    };
    if constexpr (kRule == SplitRule::GroupBands) {
        return RunBandsOnGroup(flags, width, height, band);
    } else if constexpr (kRule == SplitRule::ApplyBands) {
        RunBandsOnApply(flags, width, height, band);
    } else if constexpr (kRule == SplitRule::RowWork) {
        QuorinRunRowWork(BandWork(width, height, band), flags);
    } else if constexpr (kRule == SplitRule::Serial) {
        band(size_t{0}, height);
    } else if constexpr (kRule == SplitRule::Chunks) {
        RunProcessorChunks(flags, width, height, band);
    } else if constexpr (kRule == SplitRule::Grid) {
        // Bands of whole rows do not fit tiles: a grid member walks pieces.
        static_assert(kRule != SplitRule::Grid, "a grid member runs its pieces through RunGrid");
    } else {
        // The rows dispatcher's pieces are whole rows (x = 0, w = width).
        RunRows(flags, width, height, [&band](size_t, size_t y, size_t, size_t h) { band(y, h); });
    }
    return kQuorinSuccess;
}

}  // namespace quorin
