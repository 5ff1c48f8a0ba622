// Planar and interleaved layouts: planes into interleaved pixels and back, at
// the same depth or between 8-bit and float through per-channel ranges.
//
// Each entry point runs its row of the member table (LayoutMembers.h):
// Run builds the call's planes in channel-position order, its constant and
// its ranges from the row, and MergePlanes and SplitPixels (LayoutCall.h)
// check them in the family's order, pick the scalar or vector row kernel,
// and hand the rows to the rows dispatcher from 64000 destination pixels
// unless single-threaded.
#include "Conversion/LayoutRun.h"
#include "quorin/Conversion.h"

using namespace quorin::layout;

extern "C" {

// ---- Planes into interleaved pixels, same depth -------------------------------------

QUORIN_API Quorin_Error QuorinConvert_Planar8toARGB8888(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanar8toARGB8888>({.buffers = {srcA, srcR, srcG, srcB, dest}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToXRGB8888(uint8_t alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanar8ToXRGB8888>({.buffers = {srcR, srcG, srcB, dest}, .byteConstant = alpha, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToBGRX8888(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, uint8_t alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanar8ToBGRX8888>({.buffers = {srcB, srcG, srcR, dest}, .byteConstant = alpha, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFtoARGBFFFF(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanarFtoARGBFFFF>({.buffers = {srcA, srcR, srcG, srcB, dest}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToXRGBFFFF(float alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanarFToXRGBFFFF>({.buffers = {srcR, srcG, srcB, dest}, .floatConstant = alpha, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToBGRXFFFF(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, float alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanarFToBGRXFFFF>({.buffers = {srcB, srcG, srcR, dest}, .floatConstant = alpha, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar16UtoARGB16U(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                         const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                         const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanar16UtoARGB16U>({.buffers = {srcA, srcR, srcG, srcB, dest}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar16UtoRGB16U(const Quorin_Buffer* srcR, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return Run<kPlanar16UtoRGB16U>({.buffers = {srcR, srcG, srcB, dest}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar8toRGB888(const Quorin_Buffer* srcR, const Quorin_Buffer* srcG,
                                                      const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return Run<kPlanar8toRGB888>({.buffers = {srcR, srcG, srcB, dest}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFtoRGBFFF(const Quorin_Buffer* srcR, const Quorin_Buffer* srcG,
                                                      const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return Run<kPlanarFtoRGBFFF>({.buffers = {srcR, srcG, srcB, dest}, .flags = flags});
}

// ---- Planes into interleaved pixels, 8-bit to float ---------------------------------

QUORIN_API Quorin_Error QuorinConvert_Planar8ToARGBFFFF(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kPlanar8ToARGBFFFF>({.buffers = {srcA, srcR, srcG, srcB, dest}, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToXRGBFFFF(float alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kPlanar8ToXRGBFFFF>({.buffers = {srcR, srcG, srcB, dest}, .floatConstant = alpha, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar8ToBGRXFFFF(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, float alpha,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kPlanar8ToBGRXFFFF>({.buffers = {srcB, srcG, srcR, dest}, .floatConstant = alpha, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

// ---- Planes into interleaved pixels, float to 8-bit ---------------------------------

QUORIN_API Quorin_Error QuorinConvert_PlanarFToARGB8888(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kPlanarFToARGB8888>({.buffers = {srcA, srcR, srcG, srcB, dest}, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToXRGB8888(float alpha, const Quorin_Buffer* srcR,
                                                        const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kPlanarFToXRGB8888>({.buffers = {srcR, srcG, srcB, dest}, .floatConstant = alpha, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_PlanarFToBGRX8888(const Quorin_Buffer* srcB, const Quorin_Buffer* srcG,
                                                        const Quorin_Buffer* srcR, uint8_t alpha,
                                                        const Quorin_Buffer* dest, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kPlanarFToBGRX8888>({.buffers = {srcB, srcG, srcR, dest}, .byteConstant = alpha, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

// ---- Interleaved pixels into planes, same depth -------------------------------------

QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, Quorin_Flags flags) {
    return Run<kARGB8888toPlanar8>({.buffers = {src, destA, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, Quorin_Flags flags) {
    return Run<kARGBFFFFtoPlanarF>({.buffers = {src, destA, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_ARGB16UtoPlanar16U(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                         const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                         const Quorin_Buffer* destB, Quorin_Flags flags) {
    return Run<kARGB16UtoPlanar16U>({.buffers = {src, destA, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_RGB16UtoPlanar16U(const Quorin_Buffer* src, const Quorin_Buffer* destR,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destB,
                                                        Quorin_Flags flags) {
    return Run<kRGB16UtoPlanar16U>({.buffers = {src, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_XRGB8888ToPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destR,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destB,
                                                        Quorin_Flags flags) {
    return Run<kXRGB8888ToPlanar8>({.buffers = {src, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_BGRX8888ToPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destB,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destR,
                                                        Quorin_Flags flags) {
    return Run<kBGRX8888ToPlanar8>({.buffers = {src, destB, destG, destR}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_XRGBFFFFToPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destR,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destB,
                                                        Quorin_Flags flags) {
    return Run<kXRGBFFFFToPlanarF>({.buffers = {src, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_BGRXFFFFToPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destB,
                                                        const Quorin_Buffer* destG, const Quorin_Buffer* destR,
                                                        Quorin_Flags flags) {
    return Run<kBGRXFFFFToPlanarF>({.buffers = {src, destB, destG, destR}, .flags = flags});
}

// ---- Interleaved pixels into planes, with a depth change ----------------------------

QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanarF(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kARGB8888toPlanarF>({.buffers = {src, destA, destR, destG, destB}, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                        const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                        const Quorin_Buffer* destB, const float maxFloat[4],
                                                        const float minFloat[4], Quorin_Flags flags) {
    return Run<kARGBFFFFtoPlanar8>({.buffers = {src, destA, destR, destG, destB}, .maxFloat = maxFloat, .minFloat = minFloat, .flags = flags});
}

}  // extern "C"
