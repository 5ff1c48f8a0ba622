// Clipping premultiplied colour to its alpha: the scalar rules and kernels.
// The vector kernels in ClipKernels.cpp reproduce them byte for byte.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Alpha/BlendRules.h"

namespace quorin::alpha {

inline uint8_t ClipToAlpha8(uint8_t colour, uint8_t alpha) { return std::min(colour, alpha); }
// Exactly "alpha less than colour": a NaN colour or alpha leaves the colour.
inline float ClipToAlphaFloat(float colour, float alpha) { return alpha < colour ? alpha : colour; }

template <class T>
inline T ClipToAlpha(T colour, T alpha) {
    if constexpr (sizeof(T) == 1) return ClipToAlpha8(colour, alpha);
    else return ClipToAlphaFloat(colour, alpha);
}

template <size_t kAlpha, class T>
inline void ClipToAlphaInterleavedScalar(const T* src, T* dest, size_t pixels, bool = false) {
    for (size_t i = 0; i < pixels; ++i, src += 4, dest += 4) {
        const T a = src[kAlpha];
        for (size_t c = 0; c < 4; ++c) dest[c] = c == kAlpha ? a : ClipToAlpha(src[c], a);
    }
}

template <class T>
inline void ClipToAlphaPlanarScalar(const T* src, const T* alpha, T* dest, size_t count, bool = false) {
    for (size_t i = 0; i < count; ++i) dest[i] = ClipToAlpha(src[i], alpha[i]);
}

}  // namespace quorin::alpha
