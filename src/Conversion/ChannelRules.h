// The per-element rules of the channel operations, as plain loops: the
// scalar kernels, and what every vector twin (ChannelKernels.cpp) must
// reproduce byte for byte.
//
// Fills and channel overwrites work on bytes: a pixel of `pixelBytes` bytes
// (1, 2, 4 or 16) is a pattern, and an overwrite takes the pattern's bytes
// where a byte mask is set and the source's elsewhere, so floats (NaN
// included) are moved as their bits, never through arithmetic.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorin::channels {

// A pixel repeated over 16 bytes (its size divides 16).
using Pattern = std::array<uint8_t, 16>;

inline Pattern Repeat(const void* pixel, size_t pixelBytes) {
    Pattern out{};
    for (size_t k = 0; k < out.size(); ++k) out[k] = static_cast<const uint8_t*>(pixel)[k % pixelBytes];
    return out;
}

// `bytes` (a whole number of pixels) of dst receive the pattern.
inline void FillBytes(uint8_t* dst, size_t bytes, const uint8_t* pattern, size_t pixelBytes, bool /*stream*/) {
    for (size_t i = 0; i < bytes; i += pixelBytes) std::memcpy(dst + i, pattern, pixelBytes);
}

// Each byte: the pattern's where the mask is set, else the source's.
inline void SelectBytes(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* pattern, const uint8_t* mask,
                        size_t pixelBytes, bool /*stream*/) {
    for (size_t i = 0; i < bytes; ++i) {
        const size_t k = i % pixelBytes;
        dst[i] = static_cast<uint8_t>((pattern[k] & mask[k]) | (src[i] & ~mask[k]));
    }
}

// Each pixel of `pixelBytes` takes, at byte k, its own byte order[k]: the
// first `pixelBytes` entries of a shuffle whose later entries repeat them
// for the following pixels of a 16-byte block (ShuffleOf).
inline void PermuteBytes(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* order, size_t pixelBytes,
                         bool /*stream*/) {
    uint8_t pixel[16];
    for (size_t i = 0; i < bytes; i += pixelBytes) {
        std::memcpy(pixel, src + i, pixelBytes);  // dst may be src
        for (size_t k = 0; k < pixelBytes; ++k) dst[i + k] = pixel[order[k]];
    }
}

// The shuffle of a 16-byte block for a map of four channel positions, each
// folded to 0..3: destination channel c receives source channel map[c] & 3.
inline Pattern ShuffleOf(const uint8_t map[4], size_t sampleBytes) {
    Pattern order{};
    const size_t pixelBytes = 4 * sampleBytes;
    for (size_t k = 0; k < order.size(); ++k) {
        const size_t pixel = k / pixelBytes, channel = k % pixelBytes / sampleBytes, b = k % sampleBytes;
        order[k] = static_cast<uint8_t>(pixel * pixelBytes + (map[channel] & 3u) * sampleBytes + b);
    }
    return order;
}

// Elements are moved as bytes: rows need not be aligned to their samples.
template <class T>
T LoadElement(const T* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <class T>
void StoreElement(T* p, T v) {
    std::memcpy(p, &v, sizeof v);
}

// Element `channel` of successive four-element pixels.
template <class T>
void ExtractElements(const T* src, T* dst, size_t count, size_t channel, bool /*stream*/ = false) {
    for (size_t k = 0; k < count; ++k) StoreElement(dst + k, LoadElement(src + 4 * k + channel));
}

inline void CopyRows(const uint8_t* src, size_t srcRowBytes, uint8_t* dst, size_t dstRowBytes, size_t bytes,
                     size_t rows, bool /*stream*/) {
    for (size_t r = 0; r < rows; ++r) std::memcpy(dst + r * dstRowBytes, src + r * srcRowBytes, bytes);
}

// Below the lower bound gives the lower bound, else above the upper bound
// gives the upper bound: a NaN fails both tests and passes, and when the
// bounds cross the lower one wins for values below it.
inline float Clip(float x, float upper, float lower) { return x < lower ? lower : x > upper ? upper : x; }

inline void ClipFloats(const float* src, float* dst, size_t count, float upper, float lower, bool /*stream*/) {
    for (size_t i = 0; i < count; ++i) StoreElement(dst + i, Clip(LoadElement(src + i), upper, lower));
}

// Each byte: a's where the mask is set, else b's (two sources, one pattern).
inline void SelectTwoBytes(const uint8_t* a, const uint8_t* b, uint8_t* dst, size_t bytes, const uint8_t* mask,
                           size_t pixelBytes, bool /*stream*/) {
    for (size_t i = 0; i < bytes; ++i) {
        const size_t k = i % pixelBytes;
        dst[i] = static_cast<uint8_t>((a[i] & mask[k]) | (b[i] & ~mask[k]));
    }
}

// Four pixels' worth of channel flags: selected[c] for channel c.
struct Selected {
    bool channel[4];
};

// Each of `count` four-element pixels: the selected channels take the
// plane's element at the pixel's column, the others the source pixel's.
template <class T>
void OverwriteFromPlane(const T* plane, const T* src, T* dst, size_t count, const Selected& selected,
                        bool /*stream*/ = false) {
    for (size_t x = 0; x < count; ++x) {
        const T p = LoadElement(plane + x);
        for (size_t c = 0; c < 4; ++c)
            StoreElement(dst + 4 * x + c, selected.channel[c] ? p : LoadElement(src + 4 * x + c));
    }
}

// The tables of a lookup: byte k of a walk (counted from the row's first
// byte) is looked up in table k % 4; a single-table lookup names it four
// times.
struct Tables {
    const uint8_t* table[4];
    bool single() const { return table[0] == table[1] && table[0] == table[2] && table[0] == table[3]; }
};

inline void LookUpBytes(const uint8_t* src, uint8_t* dst, size_t bytes, const Tables& tables) {
    for (size_t i = 0; i < bytes; ++i) dst[i] = tables.table[i & 3][src[i]];
}

}  // namespace quorin::channels
