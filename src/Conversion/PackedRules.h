// The packed RGB formats and the three-channel conversion matrix, written
// once over format descriptions: which bytes or bit fields hold red, green
// and blue, how deep each channel is, and the one depth rule that takes a
// channel from one depth to another. Every cell of the matrix is a pair of
// formats in QUORIN_PACKED_MATRIX; its scalar kernel (ConvertPixels) and
// vector twin (PackedKernels.cpp) are the same template for all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "Core/CanonicalNaN.h"
#include "Core/PixelFormat.h"

namespace quorin::packed {

// ---- The formats ---------------------------------------------------------------
// 16-bit words, fields most significant first in the order of the letters.
inline constexpr PixelFormat kBGR565{SampleKind::U16, 3, "BGR", kNoAlpha, 2, {{11, 5}, {5, 6}, {0, 5}}};
inline constexpr PixelFormat kRGBA5551{SampleKind::U16, 4, "RGBA", kAlphaLast, 2, {{11, 5}, {6, 5}, {1, 5}, {0, 1}}};
inline constexpr PixelFormat kBGR888{SampleKind::U8, 3, "BGR"};
inline constexpr PixelFormat kBGR16U{SampleKind::U16, 3, "BGR"};
inline constexpr PixelFormat kBGRFFF{SampleKind::F32, 3, "BGR"};
using quorin::kARGB1555;
using quorin::kARGB16U;
using quorin::kARGB8888;
using quorin::kARGBFFFF;
using quorin::kRGB16U;
using quorin::kRGB565;
using quorin::kRGB888;
using quorin::kRGBA16U;
using quorin::kRGBA8888;
using quorin::kRGBAFFFF;
using quorin::kRGBFFF;

// The channels a matrix cell carries, in this order; a source's alpha is dropped.
inline constexpr char kColours[3] = {'R', 'G', 'B'};

// Bits of the channel at `position`; 0 for a float channel.
constexpr unsigned DepthOf(const PixelFormat& f, int position) {
    if (f.packed()) return f.fields[position].bits;
    return f.sample == SampleKind::F32 ? 0u : static_cast<unsigned>(8 * f.sampleBytes());
}

constexpr uint32_t MaxOf(unsigned depth) { return (uint32_t{1} << depth) - 1; }

// An integer channel of `from` bits at `to` bits: v x (2^to - 1) / (2^from - 1),
// with (divisor - 1) / 2 added before the truncating division, so halves go
// down. Every pair the formats meet has this form (5 to 6 bits included).
constexpr uint32_t Rescale(uint32_t v, unsigned from, unsigned to) {
    if (from == to) return v;
    const uint32_t divisor = MaxOf(from);
    return (v * MaxOf(to) + (divisor - 1) / 2) / divisor;
}

// An integer channel as a float: multiplied by the single-precision
// reciprocal of its maximum (1/255 is 0.003921569f), by both kernels, so a
// row's tail and its vector steps give the same bits.
constexpr float ReciprocalOf(unsigned depth) { return 1.0f / static_cast<float>(MaxOf(depth)); }
inline float ToFloat(uint32_t v, unsigned depth) { return static_cast<float>(v) * ReciprocalOf(depth); }

// A cell of the matrix: where each colour channel lies in the two formats.
template <PixelFormat kFrom, PixelFormat kTo>
struct Cell {
    static constexpr int from[3] = {kFrom.positionOf('R'), kFrom.positionOf('G'), kFrom.positionOf('B')};
    static constexpr int to[3] = {kTo.positionOf('R'), kTo.positionOf('G'), kTo.positionOf('B')};
    static constexpr bool floats = kFrom.sample == SampleKind::F32;
    static_assert(!floats || kTo.sample == SampleKind::F32, "float sources convert only to float destinations");
    // Whole samples of one depth on both sides: the cell only reorders.
    static constexpr bool reorders = !kFrom.packed() && !kTo.packed() && kFrom.sample == kTo.sample;
};

// Channel `position` of a pixel: its field of the little-endian word, or its sample.
template <PixelFormat kFormat>
uint32_t ReadChannel(const uint8_t* pixel, int position) {
    if constexpr (kFormat.packed()) {
        const uint32_t word = pixel[0] | uint32_t{pixel[1]} << 8;
        return word >> kFormat.fields[position].shift & MaxOf(kFormat.fields[position].bits);
    } else if constexpr (kFormat.sample == SampleKind::U8) {
        return pixel[position];
    } else {
        uint16_t sample;
        std::memcpy(&sample, pixel + 2 * position, 2);
        return sample;
    }
}

// The scalar kernel of every cell: `pixels` pixels of kFrom at src into kTo at dst.
template <PixelFormat kFrom, PixelFormat kTo>
void ConvertPixels(const uint8_t* src, uint8_t* dst, size_t pixels) {
    using C = Cell<kFrom, kTo>;
    constexpr size_t kIn = kFrom.pixelBytes(), kOut = kTo.pixelBytes();
    for (size_t i = 0; i < pixels; ++i, src += kIn, dst += kOut) {
        if constexpr (C::floats) {
            for (int k = 0; k < 3; ++k) std::memcpy(dst + 4 * C::to[k], src + 4 * C::from[k], 4);
            continue;
        } else {
            uint32_t word = 0;
            for (int k = 0; k < 3; ++k) {
                const uint32_t v = ReadChannel<kFrom>(src, C::from[k]);
                const unsigned depth = DepthOf(kFrom, C::from[k]), out = DepthOf(kTo, C::to[k]);
                if constexpr (kTo.sample == SampleKind::F32) {
                    const float f = ToFloat(v, depth);
                    std::memcpy(dst + 4 * C::to[k], &f, 4);
                } else if constexpr (kTo.packed()) {
                    word |= Rescale(v, depth, out) << kTo.fields[C::to[k]].shift;
                } else if constexpr (kTo.sample == SampleKind::U8) {
                    dst[C::to[k]] = static_cast<uint8_t>(Rescale(v, depth, out));
                } else {
                    const auto sample = static_cast<uint16_t>(Rescale(v, depth, out));
                    std::memcpy(dst + 2 * C::to[k], &sample, 2);
                }
            }
            if constexpr (kTo.packed()) dst[0] = static_cast<uint8_t>(word), dst[1] = static_cast<uint8_t>(word >> 8);
        }
    }
}

// The cells: exported name, source format, destination format. The twelve
// names of the public set carry the QuorinConvert_ prefix, the others
// xQuorinConvert_; all are complete entry points with one contract.
#define QUORIN_PACKED_MATRIX(X) \
    X(QuorinConvert_RGB565toRGB888, kRGB565, kRGB888) \
    X(xQuorinConvert_RGB565toBGR888, kRGB565, kBGR888) \
    X(xQuorinConvert_RGB16UtoBGR565, kRGB16U, kBGR565) \
    X(xQuorinConvert_RGB16UtoBGR888, kRGB16U, kBGR888) \
    X(xQuorinConvert_RGB16UtoBGR16U, kRGB16U, kBGR16U) \
    X(xQuorinConvert_RGB16UtoBGRFFF, kRGB16U, kBGRFFF) \
    X(xQuorinConvert_RGB16UtoRGB565, kRGB16U, kRGB565) \
    X(xQuorinConvert_RGB16UtoRGB888, kRGB16U, kRGB888) \
    X(xQuorinConvert_RGB16UtoRGB16U, kRGB16U, kRGB16U) \
    X(xQuorinConvert_RGB16UtoRGBFFF, kRGB16U, kRGBFFF) \
    X(xQuorinConvert_RGB565toBGR565, kRGB565, kBGR565) \
    X(xQuorinConvert_RGB565toBGR16U, kRGB565, kBGR16U) \
    X(xQuorinConvert_RGB565toBGRFFF, kRGB565, kBGRFFF) \
    X(xQuorinConvert_RGB565toRGB565, kRGB565, kRGB565) \
    X(xQuorinConvert_RGB565toRGB16U, kRGB565, kRGB16U) \
    X(xQuorinConvert_RGB565toRGBFFF, kRGB565, kRGBFFF) \
    X(xQuorinConvert_RGB888toBGR565, kRGB888, kBGR565) \
    X(xQuorinConvert_RGB888toBGR888, kRGB888, kBGR888) \
    X(xQuorinConvert_RGB888toBGR16U, kRGB888, kBGR16U) \
    X(xQuorinConvert_RGB888toBGRFFF, kRGB888, kBGRFFF) \
    X(xQuorinConvert_RGB888toRGB565, kRGB888, kRGB565) \
    X(xQuorinConvert_RGB888toRGB888, kRGB888, kRGB888) \
    X(xQuorinConvert_RGB888toRGB16U, kRGB888, kRGB16U) \
    X(xQuorinConvert_RGB888toRGBFFF, kRGB888, kRGBFFF) \
    X(xQuorinConvert_ARGB1555toBGR565, kARGB1555, kBGR565) \
    X(xQuorinConvert_ARGB1555toBGR888, kARGB1555, kBGR888) \
    X(xQuorinConvert_ARGB1555toBGR16U, kARGB1555, kBGR16U) \
    X(xQuorinConvert_ARGB1555toBGRFFF, kARGB1555, kBGRFFF) \
    X(QuorinConvert_ARGB1555toRGB565, kARGB1555, kRGB565) \
    X(xQuorinConvert_ARGB1555toRGB888, kARGB1555, kRGB888) \
    X(xQuorinConvert_ARGB1555toRGB16U, kARGB1555, kRGB16U) \
    X(xQuorinConvert_ARGB1555toRGBFFF, kARGB1555, kRGBFFF) \
    X(xQuorinConvert_ARGB8888toBGR565, kARGB8888, kBGR565) \
    X(xQuorinConvert_ARGB8888toBGR888, kARGB8888, kBGR888) \
    X(xQuorinConvert_ARGB8888toBGR16U, kARGB8888, kBGR16U) \
    X(xQuorinConvert_ARGB8888toBGRFFF, kARGB8888, kBGRFFF) \
    X(QuorinConvert_ARGB8888toRGB565, kARGB8888, kRGB565) \
    X(QuorinConvert_ARGB8888toRGB888, kARGB8888, kRGB888) \
    X(xQuorinConvert_ARGB8888toRGB16U, kARGB8888, kRGB16U) \
    X(xQuorinConvert_ARGB8888toRGBFFF, kARGB8888, kRGBFFF) \
    X(xQuorinConvert_ARGB16UtoBGR565, kARGB16U, kBGR565) \
    X(xQuorinConvert_ARGB16UtoBGR888, kARGB16U, kBGR888) \
    X(xQuorinConvert_ARGB16UtoBGR16U, kARGB16U, kBGR16U) \
    X(xQuorinConvert_ARGB16UtoBGRFFF, kARGB16U, kBGRFFF) \
    X(xQuorinConvert_ARGB16UtoRGB565, kARGB16U, kRGB565) \
    X(xQuorinConvert_ARGB16UtoRGB888, kARGB16U, kRGB888) \
    X(QuorinConvert_ARGB16UtoRGB16U, kARGB16U, kRGB16U) \
    X(xQuorinConvert_ARGB16UtoRGBFFF, kARGB16U, kRGBFFF) \
    X(xQuorinConvert_ARGBFFFFtoBGRFFF, kARGBFFFF, kBGRFFF) \
    X(QuorinConvert_ARGBFFFFtoRGBFFF, kARGBFFFF, kRGBFFF) \
    X(xQuorinConvert_RGBA5551toBGR565, kRGBA5551, kBGR565) \
    X(xQuorinConvert_RGBA5551toBGR888, kRGBA5551, kBGR888) \
    X(xQuorinConvert_RGBA5551toBGR16U, kRGBA5551, kBGR16U) \
    X(xQuorinConvert_RGBA5551toBGRFFF, kRGBA5551, kBGRFFF) \
    X(QuorinConvert_RGBA5551toRGB565, kRGBA5551, kRGB565) \
    X(xQuorinConvert_RGBA5551toRGB888, kRGBA5551, kRGB888) \
    X(xQuorinConvert_RGBA5551toRGB16U, kRGBA5551, kRGB16U) \
    X(xQuorinConvert_RGBA5551toRGBFFF, kRGBA5551, kRGBFFF) \
    X(xQuorinConvert_RGBA8888toBGR565, kRGBA8888, kBGR565) \
    X(xQuorinConvert_RGBA8888toBGR888, kRGBA8888, kBGR888) \
    X(xQuorinConvert_RGBA8888toBGR16U, kRGBA8888, kBGR16U) \
    X(xQuorinConvert_RGBA8888toBGRFFF, kRGBA8888, kBGRFFF) \
    X(QuorinConvert_RGBA8888toRGB565, kRGBA8888, kRGB565) \
    X(QuorinConvert_RGBA8888toRGB888, kRGBA8888, kRGB888) \
    X(xQuorinConvert_RGBA8888toRGB16U, kRGBA8888, kRGB16U) \
    X(xQuorinConvert_RGBA8888toRGBFFF, kRGBA8888, kRGBFFF) \
    X(xQuorinConvert_RGBA16UtoBGR565, kRGBA16U, kBGR565) \
    X(xQuorinConvert_RGBA16UtoBGR888, kRGBA16U, kBGR888) \
    X(QuorinConvert_RGBA16UtoBGR16U, kRGBA16U, kBGR16U) \
    X(xQuorinConvert_RGBA16UtoBGRFFF, kRGBA16U, kBGRFFF) \
    X(xQuorinConvert_RGBA16UtoRGB565, kRGBA16U, kRGB565) \
    X(xQuorinConvert_RGBA16UtoRGB888, kRGBA16U, kRGB888) \
    X(QuorinConvert_RGBA16UtoRGB16U, kRGBA16U, kRGB16U) \
    X(xQuorinConvert_RGBA16UtoRGBFFF, kRGBA16U, kRGBFFF) \
    X(xQuorinConvert_RGBAFFFFtoBGRFFF, kRGBAFFFF, kBGRFFF) \
    X(QuorinConvert_RGBAFFFFtoRGBFFF, kRGBAFFFF, kRGBFFF)

// The cells' formats in table order, for the kernels (which know no names).
struct CellFormats {
    PixelFormat from, to;
};
#define QUORIN_PACKED_FORMATS(name, from, to) CellFormats{from, to},
inline constexpr CellFormats kCellFormats[] = {QUORIN_PACKED_MATRIX(QUORIN_PACKED_FORMATS)};
#undef QUORIN_PACKED_FORMATS
inline constexpr size_t kCellCount = std::size(kCellFormats);
static_assert(kCellCount == 76, "eleven sources to eight destinations, the float ones to two");

// ---- Adding alpha ----------------------------------------------------------------
// Three channels into four: the colours reordered (565 expanded to bytes by
// the depth rule), alpha from a plane of bytes (at the destination's depth
// by the same rule) or a constant, and, when asked, the colours premultiplied.

inline constexpr PixelFormat kBGRA16U{SampleKind::U16, 4, "BGRA", kAlphaLast};
inline constexpr PixelFormat kBGRAFFFF{SampleKind::F32, 4, "BGRA", kAlphaLast};
using quorin::kBGRA8888;

// The constant alpha at the destination's depth (integers) or as a float.
struct AlphaConstant {
    uint32_t integer;
    float real;
};

// (c x a + (max - 1) / 2) / max at the destination's depth; for floats c x a.
constexpr uint32_t Premultiplied(uint32_t c, uint32_t a, unsigned depth) {
    const uint32_t max = MaxOf(depth);
    return (c * a + (max - 1) / 2) / max;
}

// `pixels` pixels of kFrom at src into kTo at dst; `plane` (or null) holds
// one alpha byte a pixel.
template <PixelFormat kFrom, PixelFormat kTo>
void AddAlphaPixels(const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels, AlphaConstant constant,
                    bool premultiply) {
    using C = Cell<kFrom, kTo>;
    constexpr size_t kIn = kFrom.pixelBytes(), kOut = kTo.pixelBytes(), kSample = kTo.sampleBytes();
    constexpr unsigned kDepth = static_cast<unsigned>(8 * kSample);
    if constexpr (C::floats) {
        // Copied colours move as bytes, never as floats: a compiler may turn
        // "multiply or not" into a multiply by 1, which quiets a signalling NaN.
        // A NaN product is written as the canonical NaN: processors differ in
        // the NaN they make of infinity times 0.
        const auto run = [&](auto multiply) {
            for (size_t i = 0; i < pixels; ++i, src += kIn, dst += kOut) {
                const float a = plane ? ToFloat(plane[i], 8) : constant.real;
                for (int k = 0; k < 3; ++k) {
                    if constexpr (multiply) {
                        float c;
                        std::memcpy(&c, src + 4 * C::from[k], 4);
                        c = CanonicalNaN(c * a);
                        std::memcpy(dst + 4 * C::to[k], &c, 4);
                    } else {
                        std::memcpy(dst + 4 * C::to[k], src + 4 * C::from[k], 4);
                    }
                }
                std::memcpy(dst + 4 * kTo.alpha, &a, 4);
            }
        };
        if (premultiply) run(std::true_type{});
        else run(std::false_type{});
        return;
    }
    for (size_t i = 0; i < pixels; ++i, src += kIn, dst += kOut) {
        const uint32_t a = plane ? Rescale(plane[i], 8, kDepth) : constant.integer;
        uint32_t out[4];
        out[kTo.alpha] = a;
        for (int k = 0; k < 3; ++k) {
            const uint32_t c = Rescale(ReadChannel<kFrom>(src, C::from[k]), DepthOf(kFrom, C::from[k]), kDepth);
            out[C::to[k]] = premultiply ? Premultiplied(c, a, kDepth) : c;
        }
        for (int k = 0; k < 4; ++k) {
            if constexpr (kSample == 1) {
                dst[k] = static_cast<uint8_t>(out[k]);
            } else {
                const auto sample = static_cast<uint16_t>(out[k]);
                std::memcpy(dst + 2 * k, &sample, 2);
            }
        }
    }
}

// The alpha-adding members: exported name, source, destination. The 565
// ones take (alpha, src, dest, flags); the others (src, alpha plane,
// constant, dest, premultiply, flags).
#define QUORIN_ALPHA_ADDING(X)                              \
    X(QuorinConvert_RGB888toRGBA8888, kRGB888, kRGBA8888)   \
    X(QuorinConvert_BGR888toARGB8888, kBGR888, kARGB8888)   \
    X(QuorinConvert_RGB888toARGB8888, kRGB888, kARGB8888)   \
    X(QuorinConvert_RGB888toBGRA8888, kRGB888, kBGRA8888)   \
    X(QuorinConvert_RGB16UtoARGB16U, kRGB16U, kARGB16U)     \
    X(QuorinConvert_RGB16UtoRGBA16U, kRGB16U, kRGBA16U)     \
    X(QuorinConvert_RGB16UtoBGRA16U, kRGB16U, kBGRA16U)     \
    X(QuorinConvert_RGB565toARGB8888, kRGB565, kARGB8888)   \
    X(QuorinConvert_RGB565toRGBA8888, kRGB565, kRGBA8888)   \
    X(QuorinConvert_RGB565toBGRA8888, kRGB565, kBGRA8888)   \
    X(QuorinConvert_RGBFFFtoARGBFFFF, kRGBFFF, kARGBFFFF)   \
    X(QuorinConvert_RGBFFFtoRGBAFFFF, kRGBFFF, kRGBAFFFF)   \
    X(QuorinConvert_RGBFFFtoBGRAFFFF, kRGBFFF, kBGRAFFFF)

#define QUORIN_PACKED_FORMATS(name, from, to) CellFormats{from, to},
inline constexpr CellFormats kAlphaFormats[] = {QUORIN_ALPHA_ADDING(QUORIN_PACKED_FORMATS)};
#undef QUORIN_PACKED_FORMATS
inline constexpr size_t kAlphaCount = std::size(kAlphaFormats);

}  // namespace quorin::packed
