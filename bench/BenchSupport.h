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

namespace quorin::bench {

enum class Split { Single, Default };

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
// can make their images only when they are selected.
void RegisterRow(const RowShape& shape, std::function<void()> body, const std::string& peer = {},
                 std::function<void()> prepare = {});

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

// The sizes every family benchmarks.
inline const std::vector<size_t>& StandardSizes() {
    static const std::vector<size_t> sizes{4096, 1024};
    return sizes;
}

}  // namespace quorin::bench
