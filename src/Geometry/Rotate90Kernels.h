// The pixel moves of the quarter turns. Pixels are copied as whole groups
// of bytes (the rows and the caller's pointers need no alignment).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Core/KernelPair.h"

namespace quorin::geometry {

template <size_t kBytes>
inline void CopyPixel(uint8_t* d, const uint8_t* s) {
    std::memcpy(d, s, kBytes);
}

// dest[count - 1 - i] = src[i]: a row turned end for end.
template <size_t kBytes>
void ReverseRow(const uint8_t* src, uint8_t* dest, size_t count) {
    for (size_t i = 0; i < count; ++i) CopyPixel<kBytes>(dest + (count - 1 - i) * kBytes, src + i * kBytes);
}

// Square blocks of this many pixels keep a block's source rows and
// destination rows in the first-level cache together (32 x 32 x 4 bytes,
// or 16 x 16 x 16 bytes, on each side).
template <size_t kBytes>
inline constexpr size_t kTransposeBlock = kBytes <= 4 ? 32 : 16;

// For i < across and j < down: the pixel at src + i * srcRowBytes + j * kBytes
// goes to dest + j * destRowStep + i * destPixelStep. The steps may be
// negative: the quarter turns walk the destination upward or leftward.
// `stream` asks for stores that bypass the caches where the kernel has them.
template <size_t kBytes>
void TransposeBlocked(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                      ptrdiff_t destPixelStep, size_t across, size_t down, bool /*stream*/) {
    constexpr size_t B = kTransposeBlock<kBytes>;
    for (size_t j0 = 0; j0 < down; j0 += B) {
        const size_t j1 = j0 + B < down ? j0 + B : down;
        for (size_t i0 = 0; i0 < across; i0 += B) {
            const size_t i1 = i0 + B < across ? i0 + B : across;
            for (size_t j = j0; j < j1; ++j) {
                uint8_t* out = dest + static_cast<ptrdiff_t>(j) * destRowStep;
                const uint8_t* in = src + j * kBytes;
                for (size_t i = i0; i < i1; ++i)
                    CopyPixel<kBytes>(out + static_cast<ptrdiff_t>(i) * destPixelStep, in + i * srcRowBytes);
            }
        }
    }
}

// The vector transpose's strips: this many source rows walked together.
inline constexpr size_t kTransposeStrip = 64;

using TransposeKernel = void (*)(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                                 ptrdiff_t destPixelStep, size_t across, size_t down, bool stream);

// Four-byte pixels: TransposeBlocked<4> and its vector twin of 4 x 4 and
// 8 x 8 tiles (Rotate90Kernels.cpp), the same bytes either way.
extern const KernelPair<TransposeKernel> kTransposeWords;
// Sixteen-byte pixels: TransposeBlocked<16> and its vector twin, which
// streams large destinations whole lines at a time where vectors hold 256 bits.
extern const KernelPair<TransposeKernel> kTransposeQuads;

}  // namespace quorin::geometry
