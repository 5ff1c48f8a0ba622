// The per-pixel arithmetic of the blends, written once as the scalar rules,
// and the scalar kernels: plain loops over those rules. The vector kernels in
// BlendKernels.cpp reproduce these functions byte for byte.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Core/CanonicalNaN.h"
#include "Core/PixelFormat.h"

namespace quorin::alpha {

// ---- Straight (non-premultiplied) colour, top over bottom -------------------

// What the top's alpha leaves of the bottom: the bottom's effective weight and
// the result alpha, which equals topAlpha + bottomWeight.
struct StraightCover {
    uint32_t bottomWeight;
    uint32_t alpha;
};

inline StraightCover StraightCover8(uint32_t topAlpha, uint32_t bottomAlpha) {
    const uint32_t t = (255 - topAlpha) * bottomAlpha + 127;
    return {t / 255, (topAlpha * 255 + t) / 255};
}

// A colour channel renormalised by the result alpha, truncated; 0 where
// nothing covers the pixel.
inline uint8_t StraightColour8(uint32_t top, uint32_t topAlpha, uint32_t bottom, StraightCover cover) {
    if (cover.alpha == 0) return 0;
    return static_cast<uint8_t>((bottom * cover.bottomWeight + top * topAlpha) / cover.alpha);
}

struct StraightCoverF {
    float bottomWeight;
    float alpha;
};

// The result alpha is written as computed, a NaN as the canonical NaN.
inline StraightCoverF StraightCoverFloat(float topAlpha, float bottomAlpha) {
    const float w = (1.0f - topAlpha) * bottomAlpha;
    return {w, CanonicalNaN(topAlpha + w)};
}

// No clamping; colour 0 unless the result alpha is positive (a NaN alpha too),
// a NaN colour the canonical NaN.
inline float StraightColourFloat(float top, float topAlpha, float bottom, StraightCoverF cover) {
    if (!(cover.alpha > 0.0f)) return 0.0f;
    return CanonicalNaN((top * topAlpha + bottom * cover.bottomWeight) / cover.alpha);
}

// One interleaved pixel (alpha at kAlpha): T is uint8_t or float.
template <size_t kAlpha, class T>
inline void StraightBlendPixel(const T* top, const T* bottom, T* dest) {
    const T aT = top[kAlpha], aB = bottom[kAlpha];
    if constexpr (sizeof(T) == 1) {
        const StraightCover cover = StraightCover8(aT, aB);
        T out[4];
        for (size_t c = 0; c < 4; ++c)
            out[c] = c == kAlpha ? static_cast<T>(cover.alpha) : StraightColour8(top[c], aT, bottom[c], cover);
        std::copy(out, out + 4, dest);
    } else {
        const StraightCoverF cover = StraightCoverFloat(aT, aB);
        T out[4];
        for (size_t c = 0; c < 4; ++c)
            out[c] = c == kAlpha ? cover.alpha : StraightColourFloat(top[c], aT, bottom[c], cover);
        std::copy(out, out + 4, dest);
    }
}

template <class T>
inline void StraightBlendInterleavedScalar(const T* top, const T* bottom, T* dest, size_t pixels, bool = false) {
    for (size_t i = 0; i < pixels; ++i) StraightBlendPixel<kAlphaFirst>(top + 4 * i, bottom + 4 * i, dest + 4 * i);
}

// Planar: colour to `dest`, result alpha to `destAlpha`. Each position is read
// completely before it is written, so dest may alias any source plane.
template <class T>
inline void StraightBlendPlanarScalar(const T* top, const T* topAlpha, const T* bottom, const T* bottomAlpha,
                                      T* dest, T* destAlpha, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const T cT = top[i], aT = topAlpha[i], cB = bottom[i], aB = bottomAlpha[i];
        if constexpr (sizeof(T) == 1) {
            const StraightCover cover = StraightCover8(aT, aB);
            dest[i] = StraightColour8(cT, aT, cB, cover);
            destAlpha[i] = static_cast<T>(cover.alpha);
        } else {
            const StraightCoverF cover = StraightCoverFloat(aT, aB);
            dest[i] = StraightColourFloat(cT, aT, cB, cover);
            destAlpha[i] = cover.alpha;
        }
    }
}

// ---- Separable blend modes on premultiplied RGBA8888 ------------------------

// What `alpha` leaves uncovered of `colour`, rounded: ((255 - alpha) x colour + 127) / 255.
inline uint32_t Uncovered(uint32_t colour, uint32_t alpha) { return ((255 - alpha) * colour + 127) / 255; }

// The result alpha of every mode: sA + ((255 - sA) x dA + 127) / 255.
inline uint32_t ModeAlpha(uint32_t sA, uint32_t dA) { return sA + Uncovered(dA, sA); }

enum class BlendMode { Darken, Lighten, Multiply, Screen };

// One colour channel; the result is stored as its low 8 bits.
template <BlendMode kMode>
inline uint32_t ModeColour(uint32_t s, uint32_t sA, uint32_t d, uint32_t dA) {
    if constexpr (kMode == BlendMode::Darken) return std::min(d + Uncovered(s, dA), s + Uncovered(d, sA));
    if constexpr (kMode == BlendMode::Lighten) return std::max(d + Uncovered(s, dA), s + Uncovered(d, sA));
    if constexpr (kMode == BlendMode::Multiply) return ((255 - sA) * d + (d + 255 - dA) * s + 127) / 255;
    if constexpr (kMode == BlendMode::Screen) return s + d - (s * d + 127) / 255;
}

template <BlendMode kMode>
inline void BlendModeScalar(const uint8_t* top, const uint8_t* bottom, uint8_t* dest, size_t pixels, bool = false) {
    for (size_t i = 0; i < pixels; ++i, top += 4, bottom += 4, dest += 4) {
        const uint32_t sA = top[kAlphaLast], dA = bottom[kAlphaLast];
        uint8_t out[4];
        for (size_t c = 0; c < 3; ++c) out[c] = static_cast<uint8_t>(ModeColour<kMode>(top[c], sA, bottom[c], dA));
        out[kAlphaLast] = static_cast<uint8_t>(ModeAlpha(sA, dA));
        std::copy(out, out + 4, dest);
    }
}

// ---- Premultiplied planes under one constant alpha --------------------------

// (255 k T + (6375 - A k) B + 32385) / 65025 in unsigned 32-bit arithmetic:
// the bottom's weight wraps whenever A k exceeds 6375, and the stored byte is
// the low 8 bits of the quotient. That is the operation's defined output.
inline uint8_t ConstAlphaBlend8(uint32_t top, uint32_t topAlpha, uint32_t bottom, uint32_t constAlpha) {
    const uint32_t n = 255u * constAlpha * top + (6375u - topAlpha * constAlpha) * bottom + 32385u;
    return static_cast<uint8_t>(n / 65025u);
}

inline float ConstAlphaBlendFloat(float top, float topAlpha, float bottom, float constAlpha) {
    return CanonicalNaN(top * constAlpha + bottom * (1.0f - topAlpha * constAlpha));
}

template <class T>
inline void ConstAlphaBlendScalar(const T* top, const T* topAlpha, const T* bottom, T* dest, size_t count,
                                  T constAlpha) {
    for (size_t i = 0; i < count; ++i) {
        if constexpr (sizeof(T) == 1) dest[i] = ConstAlphaBlend8(top[i], topAlpha[i], bottom[i], constAlpha);
        else dest[i] = ConstAlphaBlendFloat(top[i], topAlpha[i], bottom[i], constAlpha);
    }
}

}  // namespace quorin::alpha
