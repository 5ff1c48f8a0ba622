// Pixel formats as values: what a pixel is made of, written once per format
// and read by the checks (bytes per pixel), the kernels (sample type, alpha
// position), the tests and the benchmarks. A format is a structural literal
// type, so it can also be a template argument: `Sample<kARGB8888>` is
// uint8_t and `kARGB8888.alpha` is 0 at compile time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorin {

// How one channel of a pixel is stored.
enum class SampleKind : uint8_t {
    U8,      // unsigned 8-bit
    U16,     // unsigned 16-bit
    S16Q12,  // signed 16-bit with 12 fraction bits (4096 is 1.0)
    F32,     // single-precision float
};

template <SampleKind> struct SampleTypeOf;
template <> struct SampleTypeOf<SampleKind::U8> { using Type = uint8_t; };
template <> struct SampleTypeOf<SampleKind::U16> { using Type = uint16_t; };
template <> struct SampleTypeOf<SampleKind::S16Q12> { using Type = int16_t; };
template <> struct SampleTypeOf<SampleKind::F32> { using Type = float; };

constexpr size_t BytesOf(SampleKind kind) {
    return kind == SampleKind::U8 ? 1 : kind == SampleKind::F32 ? 4 : 2;
}

// A bit field of a packed pixel (RGB565, ARGB1555, ...): `bits` bits from bit
// `shift` of the pixel's word.
struct PackedField {
    uint8_t shift = 0;
    uint8_t bits = 0;
};

inline constexpr int8_t kNoAlpha = -1;

struct PixelFormat {
    SampleKind sample;
    uint8_t channels;
    // Channel letters in memory order ("ARGB", "BGRX", "A" for an alpha
    // plane, "C" for a colour plane), NUL-padded.
    char order[5];
    // The channel that holds alpha, or kNoAlpha. Any position is allowed.
    int8_t alpha = kNoAlpha;
    // Packed formats: the fields of channels 0..3 inside one pixel word of
    // `packedBytes` bytes; 0 for formats of whole samples.
    uint8_t packedBytes = 0;
    PackedField fields[4] = {};

    constexpr size_t sampleBytes() const { return BytesOf(sample); }
    constexpr size_t pixelBytes() const { return packedBytes ? packedBytes : sampleBytes() * channels; }
    constexpr bool hasAlpha() const { return alpha != kNoAlpha; }
    constexpr bool packed() const { return packedBytes != 0; }
    constexpr bool planar() const { return channels == 1; }
    // Position of the channel `letter` in memory order, or -1.
    constexpr int positionOf(char letter) const {
        for (int c = 0; c < channels; ++c)
            if (order[c] == letter) return c;
        return -1;
    }
    // Samples per row of `width` pixels (packed pixels count one word each).
    constexpr size_t samplesPer(size_t width) const { return packed() ? width : width * channels; }
};

// The sample type of a format, for templates over a format value.
template <PixelFormat kFormat>
using Sample = typename SampleTypeOf<kFormat.sample>::Type;

// Interleaved four-channel formats name their alpha position through these
// two (ARGB: first; RGBA: last).
inline constexpr int8_t kAlphaFirst = 0;
inline constexpr int8_t kAlphaLast = 3;

// ---- The formats --------------------------------------------------------------

inline constexpr PixelFormat kARGB8888{SampleKind::U8, 4, "ARGB", kAlphaFirst};
inline constexpr PixelFormat kRGBA8888{SampleKind::U8, 4, "RGBA", kAlphaLast};
inline constexpr PixelFormat kBGRA8888{SampleKind::U8, 4, "BGRA", kAlphaLast};
inline constexpr PixelFormat kXRGB8888{SampleKind::U8, 4, "XRGB"};
inline constexpr PixelFormat kBGRX8888{SampleKind::U8, 4, "BGRX"};
inline constexpr PixelFormat kRGB888{SampleKind::U8, 3, "RGB"};
inline constexpr PixelFormat kARGB16U{SampleKind::U16, 4, "ARGB", kAlphaFirst};
inline constexpr PixelFormat kRGBA16U{SampleKind::U16, 4, "RGBA", kAlphaLast};
inline constexpr PixelFormat kRGB16U{SampleKind::U16, 3, "RGB"};
inline constexpr PixelFormat kARGB16Q12{SampleKind::S16Q12, 4, "ARGB", kAlphaFirst};
inline constexpr PixelFormat kRGBA16Q12{SampleKind::S16Q12, 4, "RGBA", kAlphaLast};
inline constexpr PixelFormat kARGBFFFF{SampleKind::F32, 4, "ARGB", kAlphaFirst};
inline constexpr PixelFormat kRGBAFFFF{SampleKind::F32, 4, "RGBA", kAlphaLast};
inline constexpr PixelFormat kRGBFFF{SampleKind::F32, 3, "RGB"};
inline constexpr PixelFormat kXRGBFFFF{SampleKind::F32, 4, "XRGB"};
inline constexpr PixelFormat kBGRXFFFF{SampleKind::F32, 4, "BGRX"};
inline constexpr PixelFormat kPlanar8{SampleKind::U8, 1, "C"};
inline constexpr PixelFormat kPlanar16U{SampleKind::U16, 1, "C"};
inline constexpr PixelFormat kPlanarF{SampleKind::F32, 1, "C"};
// 16-bit words, red in the high five bits.
inline constexpr PixelFormat kRGB565{SampleKind::U16, 3, "RGB", kNoAlpha, 2, {{11, 5}, {5, 6}, {0, 5}}};
inline constexpr PixelFormat kARGB1555{SampleKind::U16, 4, "ARGB", kAlphaFirst, 2, {{15, 1}, {10, 5}, {5, 5}, {0, 5}}};

// Facts every format must keep, checked where they are written.
static_assert(kARGB8888.pixelBytes() == 4 && kARGBFFFF.pixelBytes() == 16 && kARGB16U.pixelBytes() == 8);
static_assert(kRGB565.pixelBytes() == 2 && kRGB888.pixelBytes() == 3 && kPlanarF.pixelBytes() == 4);
static_assert(kRGBA8888.positionOf('A') == kRGBA8888.alpha && kARGB8888.positionOf('A') == kARGB8888.alpha);

}  // namespace quorin
