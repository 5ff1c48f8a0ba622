// Reading the bridge tables. A client may change an entry between calls, so
// each function reads an entry once into a local, tests it, and calls that.
#pragma once

#include "quorin/Utilities.h"

namespace quorin::host {

inline const QuorinOrlBridgeSymbolTable& OrlBridge() { return _sQuorinOrlBridgeSymbolTable; }

// The colour-space retain and release that video formats use on their
// colour space. A missing entry skips the retain or release: the host gave
// no way to keep the space alive, so the caller must (documented at the
// video-format constructors).
inline QuorinHostOrlColorSpace* RetainColorSpace(QuorinHostOrlColorSpace* space) {
    const auto retain = OrlBridge().ColorSpaceRetain;
    if (space != nullptr && retain != nullptr) retain(space);
    return space;
}

inline void ReleaseColorSpace(QuorinHostOrlColorSpace* space) {
    const auto release = OrlBridge().ColorSpaceRelease;
    if (space != nullptr && release != nullptr) release(space);
}

}  // namespace quorin::host
