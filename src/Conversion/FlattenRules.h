// The flatten rule: a pixel with alpha laid over an opaque background, as
// plain loops (the scalar kernels) that the vector twins
// (FlattenKernels.cpp) reproduce byte for byte.
//
// Integer samples, with M the sample's maximum (255, 65535, or 4096 for
// Q12), a the alpha, bg the background value of the same channel position,
// in 64-bit arithmetic with division truncating toward zero:
//   alpha  = (a * M + M / 2 + (M - a) * bg) / M
//   colour = (c * k + M / 2 + (M - a) * bg) / M,  k = M premultiplied, else a.
// Q12 alpha is clamped to 0..4096 first and the arithmetic is signed.
// Results outside the sample's range (only inputs that are not valid
// premultiplied or Q12 values reach them) are saturated to it.
//
// Floats (M = 1), in single precision, each step rounded, in this order:
//   alpha  = a + (1 - a) * bg
//   colour = c * a + (1 - a) * bg   (straight colour)
//   colour = c + (1 - a) * bg       (premultiplied)
// alpha is not clamped, and a NaN result is written as the canonical quiet
// NaN (CanonicalNaN.h).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "Conversion/ChannelRules.h"
#include "Core/CanonicalNaN.h"

namespace quorin::channels {

// Where a flatten finds alpha and which source positions its output takes.
enum class FlattenLayout : uint8_t {
    AlphaFirst,       // ARGB in, ARGB out
    AlphaLast,        // RGBA in, RGBA out
    AlphaFirstToRGB,  // ARGB in, RGB out
    AlphaLastToRGB,   // RGBA in, RGB out
    BGRAToRGB,        // BGRA in, RGB out
};

struct FlattenShape {
    size_t alpha;    // source position of alpha
    size_t outputs;  // channels written a pixel
    size_t from[4];  // source position of each output channel
};

constexpr FlattenShape ShapeOf(FlattenLayout layout) {
    switch (layout) {
        case FlattenLayout::AlphaFirst: return {0, 4, {0, 1, 2, 3}};
        case FlattenLayout::AlphaLast: return {3, 4, {0, 1, 2, 3}};
        case FlattenLayout::AlphaFirstToRGB: return {0, 3, {1, 2, 3, 0}};
        case FlattenLayout::AlphaLastToRGB: return {3, 3, {0, 1, 2, 0}};
        case FlattenLayout::BGRAToRGB: return {3, 3, {2, 1, 0, 0}};
    }
    return {0, 4, {0, 1, 2, 3}};
}

template <class T>
struct FlattenArgs {
    T background[4];  // by source position
    bool premultiplied;
    FlattenLayout layout;
};

// M of a sample type; Q12 samples are the signed 16-bit ones.
template <class T>
constexpr int64_t FlattenMax() {
    if constexpr (std::is_same_v<T, uint8_t>) return 255;
    else if constexpr (std::is_same_v<T, uint16_t>) return 65535;
    else return 4096;
}

template <class T>
T FlattenInteger(int64_t c, int64_t k, int64_t a, int64_t bg) {
    constexpr int64_t m = FlattenMax<T>();
    const int64_t value = (c * k + m / 2 + (m - a) * bg) / m;
    return static_cast<T>(std::clamp<int64_t>(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

template <class T>
void FlattenPixels(const T* src, T* dst, size_t pixels, const FlattenArgs<T>& args, bool /*stream*/) {
    const FlattenShape shape = ShapeOf(args.layout);
    for (size_t x = 0; x < pixels; ++x) {
        const T* p = src + 4 * x;
        T out[4];
        if constexpr (std::is_floating_point_v<T>) {
            const float a = LoadElement(p + shape.alpha), inv = 1.0f - a;
            for (size_t i = 0; i < shape.outputs; ++i) {
                const size_t from = shape.from[i];
                const float c = LoadElement(p + from), fill = inv * args.background[from];
                const float value = from == shape.alpha ? a + fill : args.premultiplied ? c + fill : c * a + fill;
                out[i] = CanonicalNaN(value);
            }
        } else {
            constexpr int64_t m = FlattenMax<T>();
            int64_t a = LoadElement(p + shape.alpha);
            if constexpr (std::is_signed_v<T>) a = std::clamp<int64_t>(a, 0, m);
            for (size_t i = 0; i < shape.outputs; ++i) {
                const size_t from = shape.from[i];
                // Alpha is the colour rule with c = a and k = M.
                const bool whole = from == shape.alpha || args.premultiplied;
                const int64_t c = from == shape.alpha ? a : int64_t{LoadElement(p + from)};
                out[i] = FlattenInteger<T>(c, whole ? m : a, a, args.background[from]);
            }
        }
        for (size_t i = 0; i < shape.outputs; ++i) StoreElement(dst + shape.outputs * x + i, out[i]);
    }
}

}  // namespace quorin::channels
