// Planar and interleaved layouts: planes into interleaved pixels and back, at
// the same depth or between 8-bit and float through per-channel ranges.
//
// Each entry point names its planes in channel-position order, its constant
// and its ranges; MergePlanes and SplitPixels (LayoutCall.h) check them in
// the family's order, pick the scalar or vector row kernel, and hand the rows
// to the rows dispatcher from 64000 destination pixels unless single-threaded.
#include <bit>

#include "Conversion/LayoutCall.h"
#include "quorin/Conversion.h"

namespace quorin::layout {
namespace {

// The 8-bit interleave worker behind the ARGB and XRGB forms: the alpha
// channel comes from the alpha plane or, when none is given, the constant.
// The alpha plane is never tested for null, and only the three colour
// planes' rowBytes are tested: the destination's deliberately is not.
Quorin_Error InterleavePlanar8(const Quorin_Buffer* alphaPlane, uint8_t alpha, const Quorin_Buffer* srcR,
                               const Quorin_Buffer* srcG, const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                               Quorin_Flags flags) {
    return MergePlanes<Copy<uint8_t>, 4>({.planes = {OptionalPlane(alphaPlane), srcR, srcG, srcB},
                                          .dest = dest,
                                          .constant = {alpha},
                                          .requiredPlanesRowBytesOnly = true},
                                        flags);
}

// The float interleave worker behind the ARGB and XRGB forms, in the same
// manner (an absent alpha plane gives the constant), with every rowBytes tested.
Quorin_Error InterleavePlanarF(const Quorin_Buffer* alphaPlane, float alpha, const Quorin_Buffer* srcR,
                               const Quorin_Buffer* srcG, const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                               Quorin_Flags flags) {
    return MergePlanes<Copy<uint32_t>, 4>({.planes = {OptionalPlane(alphaPlane), srcR, srcG, srcB},
                                           .dest = dest,
                                           .constant = {std::bit_cast<uint32_t>(alpha)}},
                                         flags);
}

// The float-to-8-bit interleave worker behind the ARGB and XRGB forms: an
// absent alpha plane gives the constant, converted through channel 0's range.
Quorin_Error InterleavePlanarFTo8888(const Quorin_Buffer* alphaPlane, float alpha, const Quorin_Buffer* srcR,
                                     const Quorin_Buffer* srcG, const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                     const float* maxFloat, const float* minFloat, Quorin_Flags flags) {
    return MergePlanes<FloatToByte, 4>({.planes = {OptionalPlane(alphaPlane), srcR, srcG, srcB},
                                        .dest = dest,
                                        .constant = {.throughChannel0 = alpha},
                                        .ranges = {maxFloat, minFloat}},
                                      flags);
}

}  // namespace
}  // namespace quorin::layout

using namespace quorin::layout;

extern "C" {

// ---- Planes into interleaved pixels, same depth -------------------------------------

QUORIN_API Quorin_Error QuorinConvert_Planar8toARGB8888(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return InterleavePlanar8(srcA, 0, srcR, srcG, srcB, dest, flags);
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToXRGB8888(uint8_t alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return InterleavePlanar8(nullptr, alpha, srcR, srcG, srcB, dest, flags);
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToBGRX8888(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, uint8_t alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return MergePlanes<Copy<uint8_t>, 4>(
        {.planes = {srcB, srcG, srcR, kConstantChannel}, .dest = dest, .constant = {alpha}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFtoARGBFFFF(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return InterleavePlanarF(srcA, 0.0f, srcR, srcG, srcB, dest, flags);
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToXRGBFFFF(float alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return InterleavePlanarF(nullptr, alpha, srcR, srcG, srcB, dest, flags);
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToBGRXFFFF(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, float alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return MergePlanes<Copy<uint32_t>, 4>(
        {.planes = {srcB, srcG, srcR, kConstantChannel}, .dest = dest, .constant = {std::bit_cast<uint32_t>(alpha)}},
        flags);
}

QUORIN_API Quorin_Error QuorinConvert_Planar16UtoARGB16U(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                         const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                         const Quorin_Buffer* dest, Quorin_Flags flags) {
    return MergePlanes<Copy<uint16_t>, 4>({.planes = {srcA, srcR, srcG, srcB}, .dest = dest}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_Planar16UtoRGB16U(const Quorin_Buffer* srcR, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return MergePlanes<Copy<uint16_t>, 3>({.planes = {srcR, srcG, srcB}, .dest = dest}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_Planar8toRGB888(const Quorin_Buffer* srcR, const Quorin_Buffer* srcG,
                                                      const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return MergePlanes<Copy<uint8_t>, 3>({.planes = {srcR, srcG, srcB}, .dest = dest}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFtoRGBFFF(const Quorin_Buffer* srcR, const Quorin_Buffer* srcG,
                                                      const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return MergePlanes<Copy<uint32_t>, 3>({.planes = {srcR, srcG, srcB}, .dest = dest}, flags);
}

// ---- Planes into interleaved pixels, 8-bit to float ---------------------------------

QUORIN_API Quorin_Error QuorinConvert_Planar8ToARGBFFFF(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return MergePlanes<ByteToFloat, 4>(
        {.planes = {srcA, srcR, srcG, srcB}, .dest = dest, .ranges = {maxFloat, minFloat}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToXRGBFFFF(float alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return MergePlanes<ByteToFloat, 4>({.planes = {kConstantChannel, srcR, srcG, srcB},
                                        .dest = dest,
                                        .constant = {alpha},
                                        .ranges = {maxFloat, minFloat}},
                                      flags);
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToBGRXFFFF(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, float alpha,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return MergePlanes<ByteToFloat, 4>({.planes = {srcB, srcG, srcR, kConstantChannel},
                                        .dest = dest,
                                        .constant = {alpha},
                                        .ranges = {maxFloat, minFloat}},
                                      flags);
}

// ---- Planes into interleaved pixels, float to 8-bit ---------------------------------

QUORIN_API Quorin_Error QuorinConvert_PlanarFToARGB8888(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return InterleavePlanarFTo8888(srcA, 0.0f, srcR, srcG, srcB, dest, maxFloat, minFloat, flags);
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToXRGB8888(float alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return InterleavePlanarFTo8888(nullptr, alpha, srcR, srcG, srcB, dest, maxFloat, minFloat, flags);
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToBGRX8888(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, uint8_t alpha,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return MergePlanes<FloatToByte, 4>({.planes = {srcB, srcG, srcR, kConstantChannel},
                                        .dest = dest,
                                        .constant = {alpha},
                                        .ranges = {maxFloat, minFloat}},
                                      flags);
}

// ---- Interleaved pixels into planes, same depth -------------------------------------

QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, Quorin_Flags flags) {
    return SplitPixels<Copy<uint8_t>, 4>({.src = src, .planes = {destA, destR, destG, destB}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, Quorin_Flags flags) {
    return SplitPixels<Copy<uint32_t>, 4>({.src = src, .planes = {destA, destR, destG, destB}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_ARGB16UtoPlanar16U(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                         const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                         const Quorin_Buffer* destB, Quorin_Flags flags) {
    return SplitPixels<Copy<uint16_t>, 4>({.src = src, .planes = {destA, destR, destG, destB}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_RGB16UtoPlanar16U(const Quorin_Buffer* src, const Quorin_Buffer* destR,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destB,
                                                        Quorin_Flags flags) {
    return SplitPixels<Copy<uint16_t>, 3>({.src = src, .planes = {destR, destG, destB}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_XRGB8888ToPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destR,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destB,
                                                        Quorin_Flags flags) {
    return SplitPixels<Copy<uint8_t>, 4>({.src = src, .planes = {kSkippedChannel, destR, destG, destB}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_BGRX8888ToPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destB,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destR,
                                                        Quorin_Flags flags) {
    return SplitPixels<Copy<uint8_t>, 4>({.src = src, .planes = {destB, destG, destR, kSkippedChannel}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_XRGBFFFFToPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destR,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destB,
                                                        Quorin_Flags flags) {
    return SplitPixels<Copy<uint32_t>, 4>({.src = src, .planes = {kSkippedChannel, destR, destG, destB}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_BGRXFFFFToPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destB,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destR,
                                                        Quorin_Flags flags) {
    return SplitPixels<Copy<uint32_t>, 4>({.src = src, .planes = {destB, destG, destR, kSkippedChannel}}, flags);
}

// ---- Interleaved pixels into planes, with a depth change ----------------------------

QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return SplitPixels<ByteToFloat, 4>(
        {.src = src, .planes = {destA, destR, destG, destB}, .ranges = {maxFloat, minFloat}}, flags);
}

QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return SplitPixels<FloatToByte, 4>(
        {.src = src, .planes = {destA, destR, destG, destB}, .ranges = {maxFloat, minFloat}}, flags);
}

}  // extern "C"
