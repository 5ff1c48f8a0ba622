// Whether a kernel writes its destination with streaming stores: one policy
// for every family. A destination larger than half the last-level cache that
// one processor uses will not be read back from it, so streaming stores,
// which bypass the caches, also spare the memory system reading every
// destination line in before it is overwritten.
#pragma once

#include <cstddef>

namespace quorin {

bool WantsStreaming(size_t destinationBytes);

// Test hook: stream destinations of at least `bytes` (0 restores the cache-based threshold).
void SetStreamingThresholdForTest(size_t bytes);

}  // namespace quorin
