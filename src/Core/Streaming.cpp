// When kernels write with streaming stores: destinations of more than half
// the last-level cache that one processor uses.
#include "Core/Streaming.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>

namespace quorin {
namespace {

std::atomic<size_t> gThresholdForTest{0};

// The last-level cache one processor uses, in bytes; 0 when unknown. Linux
// describes the cache a processor sees under sysfs; the C library's figure
// can be the whole package's (every chiplet's caches added up), which would
// put the threshold far too high.
size_t LastLevelCacheBytes() {
    if (FILE* file = std::fopen("/sys/devices/system/cpu/cpu0/cache/index3/size", "r")) {
        unsigned long size = 0;
        char unit = 0;
        const int fields = std::fscanf(file, "%lu%c", &size, &unit);
        std::fclose(file);
        if (fields >= 1 && size > 0) return unit == 'K' ? size << 10 : unit == 'M' ? size << 20 : size;
    }
    long cache = 0;
#ifdef _SC_LEVEL3_CACHE_SIZE
    cache = sysconf(_SC_LEVEL3_CACHE_SIZE);
#endif
    return cache > 0 ? static_cast<size_t>(cache) : 0;
}

}  // namespace

bool WantsStreaming(size_t destinationBytes) {
    static const size_t threshold = std::max(LastLevelCacheBytes() / 2, size_t{4} << 20);
    const size_t forced = gThresholdForTest.load(std::memory_order_relaxed);
    return destinationBytes >= (forced ? forced : threshold);
}

void SetStreamingThresholdForTest(size_t bytes) { gThresholdForTest.store(bytes, std::memory_order_relaxed); }

}  // namespace quorin
