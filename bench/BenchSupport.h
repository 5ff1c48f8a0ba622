// Shared benchmark frame. Each row is a Google Benchmark run whose counters
// give megapixels/s and GB/s; a row names the memcpy row and the peer row it
// is compared with, and the reporter prints the ratios in one table at the end.
//
//   RegisterRow({"Planar8toARGB8888", 4096, 4096, Split::Single, pixelBytesMoved},
//               [&](benchmark::State&) { ... one call ... }, "OpenCV merge 8U");
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "quorin/Quorin.h"

#ifdef QUORIN_BENCH_VIPS
#include <vips/vips.h>
#endif

namespace quorin::bench {

// Single: flag single-threaded. Default: no flags, the library splits.
// Pair: two threads that never sleep, each running half the rows
// single-threaded: what two processors give an operation without any
// dispatch cost, to set beside its default-mode row.
enum class Split { Single, Default, Pair };

struct RowShape {
    std::string operation;  // "Planar8toARGB8888", "OpenCV merge 8U", ...
    size_t width, height;
    Split split;
    size_t bytesMoved;      // bytes read + written per call, for GB/s and the memcpy row
};

// The name a row is registered under: "<operation>/<w>x<h>/<st|mt>".
std::string RowName(const RowShape& shape);

// Registers one row. `body` performs one call per invocation. `peer` is the
// operation name of the peer row to compare with (same size and split), or empty.
// `prepare`, if given, runs before each timed run (outside the timing), so rows
// can make their images only when they are selected; `finish` after it.
void RegisterRow(const RowShape& shape, std::function<void()> body, const std::string& peer = {},
                 std::function<void()> prepare = {}, std::function<void()> finish = {});

// Registers the Pair row of `shape` (whose split is ignored): each timed call
// runs half(firstRow, rows), which must be single-threaded, over the top half
// on the calling thread and over the bottom half on a helper thread that spins
// between calls. Only for images of at least two rows.
void RegisterPairRow(const RowShape& shape, std::function<void(size_t firstRow, size_t rows)> half,
                     std::function<void()> prepare = {});

// Registers the scalar-kernel row beside the single-threaded row of `shape`
// (whose split is ignored): "<operation>.scalar", timed with the speed-ups
// switched off, and compared with the vector row as its peer. `body` must be
// single-threaded. At the sizes past the caches (1024 and up) it also registers
// the row once per other vector target the run measures ("<operation>@AVX2",
// timed with the vector kernels limited to that target, compared with the
// vector row's peer); the per-target table sets them side by side.
void RegisterScalarRow(const RowShape& shape, std::function<void()> body, std::function<void()> prepare = {});

// Rows [firstRow, firstRow + rows) of an image, as a record of its own.
inline Quorin_Buffer RowsOf(const Quorin_Buffer& image, size_t firstRow, size_t rows) {
    return Quorin_Buffer{static_cast<uint8_t*>(image.data) + firstRow * image.rowBytes, rows, image.width,
                         image.rowBytes};
}

// Registers the memcpy row for `bytes` (half read, half written) if not already there.
void RegisterMemcpy(size_t bytes);

// The Quorin flags of a split.
inline Quorin_Flags FlagsOf(Split split) { return split == Split::Single ? kQuorinFlag_SingleThreaded : 0; }

// A tight owned buffer with reproducible contents.
struct OwnedImage {
    std::vector<uint8_t> bytes;
    Quorin_Buffer buffer{};
    OwnedImage(size_t width, size_t height, size_t pixelBytes, uint32_t seed = 1);
    // Fills as floats in [0, 1].
    void fillUnitFloats();
};

// Functions a family file runs at start-up to register its rows.
std::vector<std::function<void()>>& Registrars();
struct RegisterFamily {
    explicit RegisterFamily(std::function<void()> registrar) { Registrars().push_back(std::move(registrar)); }
};

// The sizes every family benchmarks: two larger than the caches, and two just
// above the 64000-pixel parallel threshold, where waking a second thread costs
// most against the work; the 256x256 images of a four-byte format (source and
// destination, 512 KiB) stay in one core's 1 MiB L2.
inline const std::vector<size_t>& StandardSizes() {
    static const std::vector<size_t> sizes{4096, 1024, 512, 256};
    return sizes;
}

// Pair rows are measured at the largest standard size only.
inline bool WantsPairRow(size_t side) { return side == StandardSizes().front(); }

#ifdef QUORIN_BENCH_VIPS
// libvips rows: runs operation(in, &out) on an image over `data` (`bands`
// samples of `format` a pixel, rows packed), computes the result into memory
// and frees it; aborts when libvips fails, so that a refusal is never timed.
// Call StartVips() in the row's preparation: libvips on one thread.
void StartVips();
void RunVips(const void* data, size_t width, size_t height, int bands, VipsBandFormat format,
             const std::function<int(VipsImage*, VipsImage**)>& operation);
#endif

}  // namespace quorin::bench
