// Whether a kernel writes its destination with streaming stores: one policy
// for every family. A destination larger than half the last-level cache that
// one processor uses will not be read back from it, so streaming stores,
// which bypass the caches, also spare the memory system reading every
// destination line in before it is overwritten.
#pragma once

#include <cstddef>

#include <hwy/cache_control.h>

namespace quorin {

bool WantsStreaming(size_t destinationBytes);

// Test hook: stream destinations of at least `bytes` (0 restores the cache-based threshold).
void SetStreamingThresholdForTest(size_t bytes);

// Streaming stores must be fenced before a piece of work is reported done,
// but a fence waits for every pending line to drain, which costs a third of
// the speed when it follows every 4 KB row. Within a StreamFenceScope the row
// loops leave their streaming stores unfenced and the scope fences them once
// when it ends, on the thread that made them; the split rules open one
// around each band.
namespace detail {
inline thread_local bool tStreamFenceDeferred = false;
}
inline bool StreamFenceDeferred() { return detail::tStreamFenceDeferred; }

class StreamFenceScope {
public:
    StreamFenceScope() : outer_(detail::tStreamFenceDeferred) { detail::tStreamFenceDeferred = true; }
    ~StreamFenceScope() {
        detail::tStreamFenceDeferred = outer_;
        if (!outer_) hwy::FlushStream();
    }
    StreamFenceScope(const StreamFenceScope&) = delete;
    StreamFenceScope& operator=(const StreamFenceScope&) = delete;

private:
    bool outer_;
};

}  // namespace quorin
