/* The C side of the binding-cost measure: the median time of one
 * QuorinPremultiplyData_ARGB8888 call on a width x height image, over rounds
 * of calls, in nanoseconds.
 * Usage: ccall WIDTH HEIGHT CALLS_PER_ROUND ROUNDS FLAGS */
#define _GNU_SOURCE
#include <quorin/Quorin.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <time.h>

static double now(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1e9 + t.tv_nsec;
}

static int compare(const void *a, const void *b) {
    double x = *(const double *)a, y = *(const double *)b;
    return (x > y) - (x < y);
}

int main(int argc, char **argv) {
    if (argc != 6) return 2;
    size_t width = strtoul(argv[1], 0, 10), height = strtoul(argv[2], 0, 10);
    long calls = strtol(argv[3], 0, 10), rounds = strtol(argv[4], 0, 10);
    Quorin_Flags flags = (Quorin_Flags)strtoul(argv[5], 0, 0);
    /* Aligned, backed by huge pages where the kernel allows and touched
     * before timing, as numpy's arrays of this size are. */
    size_t bytes = (width * height * 4 + (2u << 20) - 1) / (2u << 20) * (2u << 20);
    unsigned char *src = aligned_alloc(2u << 20, bytes), *dst = aligned_alloc(2u << 20, bytes);
    double *times = malloc(sizeof(double) * rounds);
    if (!src || !dst || !times) return 1;
    madvise(src, bytes, MADV_HUGEPAGE);
    madvise(dst, bytes, MADV_HUGEPAGE);
    for (size_t i = 0; i < bytes; ++i) src[i] = (unsigned char)(i * 2654435761u >> 24), dst[i] = 0;
    Quorin_Buffer s = {src, height, width, width * 4}, d = {dst, height, width, width * 4};
    for (long r = 0; r < rounds; ++r) {
        double start = now();
        for (long i = 0; i < calls; ++i)
            if (QuorinPremultiplyData_ARGB8888(&s, &d, flags) < 0) return 1;
        times[r] = (now() - start) / calls;
    }
    qsort(times, rounds, sizeof(double), compare);
    printf("%.1f\n", times[rounds / 2]);
    return 0;
}
