// The counting rules of the histograms, as plain loops: the scalar kernels,
// and what the vector twins (HistogramKernels.cpp) count exactly alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorin::histogram {

// The 8-bit counters of one band: several sub-tables per channel, which the
// vector twin fills in turn so that repeated values do not wait on each
// other's stores, summed into the caller's counters at the band's end. The
// scalar rule fills sub-table 0 only.
//
// Each table is padded by kPad counters: unpadded, the tables would lie a
// multiple of 4 KiB apart, and the processor takes a load from one for a
// load of the store just made to the same bin of another (their addresses
// agree in the low 12 bits), so a flat image would stall as if it had one
// table per channel. With the padding every bin of every table has its own
// low 12 address bits.
struct Tally8 {
    static constexpr size_t kSubTables = 4;
    static constexpr size_t kPad = 16;
    uint32_t counts[kSubTables][4][256 + kPad];

    // Adds every sub-table's counts of channels first..3 to `counters`.
    void addTo(uint32_t* const counters[4], unsigned first) const {
        for (unsigned c = first; c < 4; ++c)
            for (size_t v = 0; v < 256; ++v) {
                uint32_t sum = counters[c][v];
                for (size_t s = 0; s < kSubTables; ++s) sum += counts[s][c][v];
                counters[c][v] = sum;
            }
    }
};

// Every channel of every pixel (alpha too: skipping it costs more than
// counting it into a sub-table nobody reads).
inline void CountPixels8(const uint8_t* pixels, size_t count, Tally8& tally) {
    for (size_t i = 0; i < 4 * count; i += 4)
        for (size_t c = 0; c < 4; ++c) ++tally.counts[0][c][pixels[i + c]];
}

// The float binning, fixed once per call: scale = entries / (maxVal - minVal)
// in single precision.
struct Binning {
    float minVal;
    float scale;
    uint32_t last;  // entries - 1

    static Binning Make(uint32_t entries, float minVal, float maxVal) {
        return {minVal, static_cast<float>(entries) / (maxVal - minVal), entries - 1};
    }
};

// scale x (v - minVal) converted to an unsigned 32-bit integer, truncating
// toward zero and saturating (negative and NaN give 0, too large the largest
// integer), then limited to the last bin.
inline uint32_t FloatBin(float v, const Binning& b) {
    const float x = b.scale * (v - b.minVal);
    uint32_t bin;
    if (!(x > 0.0f)) bin = 0;
    else if (x >= 4294967296.0f) bin = 0xFFFFFFFFu;
    else bin = static_cast<uint32_t>(x);
    return bin < b.last ? bin : b.last;
}

// Adds the bins of channels first..3 of `count` pixels to `counters`.
inline void CountPixelsF(const float* pixels, size_t count, const Binning& b, uint32_t* const counters[4],
                         unsigned first) {
    for (size_t i = 0; i < count; ++i) {
        float px[4];
        std::memcpy(px, pixels + 4 * i, sizeof px);
        for (unsigned c = first; c < 4; ++c) ++counters[c][FloatBin(px[c], b)];
    }
}

}  // namespace quorin::histogram
