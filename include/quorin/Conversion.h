/* Quorin: conversions between channel layouts and depths, and channel
 * operations. Plain C99; safe to include from C++.
 *
 * Planar images use one buffer per channel; interleaved channel order is the
 * order of the letters in the format tag (ARGB8888: A, R, G, B in bytes 0..3).
 * maxFloat / minFloat are four floats indexed by the channel's position in
 * the interleaved pixel: they map the byte range 0..255 onto a float range. */
#ifndef QUORIN_CONVERSION_H
#define QUORIN_CONVERSION_H

#include "Types.h"

QUORIN_EXTERN_C_BEGIN

/* ======================================================================== */
/* Planar and interleaved layouts                                           */
/* ======================================================================== */

/* Accepted flags: kQuorinFlag_SingleThreaded and kQuorinFlag_QueryTempSize
 * (the query answers 0 and writes nothing: none of these needs a temporary
 * buffer). The destination's size is the region converted (for the
 * interleaved-to-planes forms, the first destination plane's); larger
 * buffers are read and written in their top-left corner only. An empty
 * region succeeds and writes nothing. Samples wider than a byte (16-bit and
 * float) must be naturally aligned: data and rowBytes multiples of the
 * sample size.
 * Failures, first match wins: a null record or range array
 * (kQuorinError_NullPointer), null data (kQuorinError_BadArgument), a
 * region wider, then taller, than a buffer (kQuorinError_RegionExceedsSource),
 * a rowBytes shorter than its row (kQuorinError_BadArgument; the 8-bit ARGB
 * and XRGB interleaves do not test their destination's or alpha plane's
 * here), another flag bit (kQuorinError_UnsupportedFlags, even the bits
 * other families accept); the forms that split into four planes test the
 * fourth plane's size and rowBytes only after the flags. A size query
 * returns 0 at this point and touches no pixel. Last, before any work:
 * kQuorinError_BadArgument for a record whose byte extent (height x
 * rowBytes) wraps or exceeds the address space, or whose untested rowBytes
 * is shorter than its row (the 8-bit ARGB interleave's alpha plane).
 * Irregular: a destination of the 8-bit ARGB and XRGB interleaves whose
 * rowBytes is shorter than its row is not refused; each row's first
 * rowBytes bytes are written (its last pixel cut where the row ends), what
 * a row-by-row walk would leave, and nothing past height x rowBytes.
 * In place: not supported; no destination may overlap a source.
 * Threading: bands of rows through the rows dispatcher on libdispatch's
 * global queue when kQuorinFlag_SingleThreaded is clear and the region has
 * 64000 pixels or more (a 32-bit product); otherwise on the calling thread.
 * The bytes are those of the single-threaded call. */

/* ---- Planes to interleaved, same depth ---------------------------------- */

/* Four planes, in the order of the format's letters, into one image. The
 * alpha plane of the 8-bit and float forms may be null: alpha is then 0. */
QUORIN_API Quorin_Error QuorinConvert_Planar8toARGB8888(const Quorin_Buffer *srcA,
                                                        const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFtoARGBFFFF(const Quorin_Buffer *srcA,
                                                        const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar16UtoARGB16U(const Quorin_Buffer *srcA,
                                                         const Quorin_Buffer *srcR,
                                                         const Quorin_Buffer *srcG,
                                                         const Quorin_Buffer *srcB,
                                                         const Quorin_Buffer *dest,
                                                         Quorin_Flags flags);

/* Three colour planes plus a constant for the filler (X) channel: the
 * constant comes first for XRGB (where X is the first letter) and after the
 * planes for BGRX, following the letters of the format. */
QUORIN_API Quorin_Error QuorinConvert_Planar8ToXRGB8888(uint8_t alpha, const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8ToBGRX8888(const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcR, uint8_t alpha,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFToXRGBFFFF(float alpha, const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFToBGRXFFFF(const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcR, float alpha,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);

/* Three planes into a three-channel image. */
QUORIN_API Quorin_Error QuorinConvert_Planar16UtoRGB16U(const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8toRGB888(const Quorin_Buffer *srcR,
                                                      const Quorin_Buffer *srcG,
                                                      const Quorin_Buffer *srcB,
                                                      const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFtoRGBFFF(const Quorin_Buffer *srcR,
                                                      const Quorin_Buffer *srcG,
                                                      const Quorin_Buffer *srcB,
                                                      const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);

/* ---- Planes to interleaved, with a depth change -------------------------- */

/* 8-bit planes into float pixels: byte v of channel c becomes
 * minFloat[c] + v * (maxFloat[c] - minFloat[c]) / 255. The filler constant is
 * a float, since it is written as is into a float channel. */
/* NaN results of NaN or infinite ranges are written as the quiet NaN 0x7FC00000 by every kernel. */
QUORIN_API Quorin_Error QuorinConvert_Planar8ToARGBFFFF(const Quorin_Buffer *srcA,
                                                        const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8ToXRGBFFFF(float alpha, const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8ToBGRXFFFF(const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcR, float alpha,
                                                        const Quorin_Buffer *dest,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);

/* Float planes into 8-bit pixels: the inverse mapping, rounded half up and
 * saturated (NaN gives 0). The BGRX filler constant is a byte written as is;
 * the XRGB alpha constant is a float that goes through channel 0's range like
 * an alpha plane value. The ARGB form with a null alpha plane writes the
 * conversion of 0.0 instead. */
QUORIN_API Quorin_Error QuorinConvert_PlanarFToARGB8888(const Quorin_Buffer *srcA,
                                                        const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFToXRGB8888(float alpha, const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFToBGRX8888(const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcR, uint8_t alpha,
                                                        const Quorin_Buffer *dest,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);

/* ---- Interleaved to planes ----------------------------------------------- */

/* One image split into one plane per channel, in the order of the format's
 * letters; the XRGB / BGRX forms skip the filler channel. */
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanar8(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destA,
                                                        const Quorin_Buffer *destR,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destB,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoPlanarF(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destA,
                                                        const Quorin_Buffer *destR,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destB,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UtoPlanar16U(const Quorin_Buffer *src,
                                                         const Quorin_Buffer *destA,
                                                         const Quorin_Buffer *destR,
                                                         const Quorin_Buffer *destG,
                                                         const Quorin_Buffer *destB,
                                                         Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB16UtoPlanar16U(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destR,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destB,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_XRGB8888ToPlanar8(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destR,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destB,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_BGRX8888ToPlanar8(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destB,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destR,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_XRGBFFFFToPlanarF(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destR,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destB,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_BGRXFFFFToPlanarF(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destB,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destR,
                                                        Quorin_Flags flags);

/* ---- Interleaved to planes, with a depth change -------------------------- */

/* 8-bit pixels into float planes and float pixels into 8-bit planes, with
 * the same per-channel ranges as the planes-to-interleaved members. */
/* NaN results of NaN or infinite ranges are written as the quiet NaN 0x7FC00000 by every kernel. */
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanarF(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destA,
                                                        const Quorin_Buffer *destR,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destB,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoPlanar8(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *destA,
                                                        const Quorin_Buffer *destR,
                                                        const Quorin_Buffer *destG,
                                                        const Quorin_Buffer *destB,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);

/* ======================================================================== */
/* Not yet implemented: each of these writes the fatal record               */
/* "NOT YET IMPLEMENTED" and aborts the process, whatever its arguments.    */
/* ======================================================================== */

/* YpCbCr -> RGB matrix: R = Yp + Cr_R * Cr, G = Yp + Cr_G * Cr + Cb_G * Cb,
 * B = Yp + Cb_B * Cb (Yp scaled by Yp). */
typedef struct Quorin_YpCbCrToARGBMatrix {
    float Yp;
    float Cr_R;
    float Cr_G;
    float Cb_G;
    float Cb_B;
} Quorin_YpCbCrToARGBMatrix;

/* RGB -> YpCbCr matrix; B_Cb_R_Cr is both the B weight of Cb and the R weight
 * of Cr (they are equal in every standard matrix). */
typedef struct Quorin_ARGBToYpCbCrMatrix {
    float R_Yp;
    float G_Yp;
    float B_Yp;
    float R_Cb;
    float G_Cb;
    float B_Cb_R_Cr;
    float G_Cr;
    float B_Cr;
} Quorin_ARGBToYpCbCrMatrix;

/* The code-value ranges of a YpCbCr encoding (video or full range, biases). */
typedef struct Quorin_YpCbCrPixelRange Quorin_YpCbCrPixelRange;

/* A prepared YpCbCr -> RGB (or RGB -> YpCbCr) conversion, made once by the
 * _GenerateConversion entry points and applied by the layout conversions. */
typedef struct Quorin_YpCbCrToARGB Quorin_YpCbCrToARGB;
typedef struct Quorin_ARGBToYpCbCr Quorin_ARGBToYpCbCr;

/* BEGIN GENERATED by scripts/gen_stub_declarations.py: do not edit. Source:
 * src/Conversion/ConvertPlanartoARGB.def
 * src/Conversion/ConvertPlanartoPlanar.def
 * src/Conversion/ConversionStubs.def */

/* 12-bit fixed-point planes into half-float pixels. */
QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toARGB16F(
    const Quorin_Buffer *srcA, const Quorin_Buffer *srcR, const Quorin_Buffer *srcG,
    const Quorin_Buffer *srcB, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toRGB16F(
    const Quorin_Buffer *srcR, const Quorin_Buffer *srcG, const Quorin_Buffer *srcB,
    const Quorin_Buffer *dest, Quorin_Flags flags);

/* Packs an 8-bit plane into one bit a pixel; only mode 0 (thresholding) exists, the third
 * argument is reserved for the other modes. */
QUORIN_API Quorin_Error QuorinConvert_Planar8toPlanar1(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, int mode);

/* Depth changes of one plane between bytes and floats through a float range (byte 0 stands for
 * minFloat, 255 for maxFloat); the dithered forms trade banding for noise (dither picks the
 * method). */
QUORIN_API Quorin_Error QuorinConvert_Planar8toPlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, float maxFloat, float minFloat,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFtoPlanar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, float maxFloat, float minFloat,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFtoPlanar8_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, float maxFloat, float minFloat, int dither,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBFFFtoRGB888_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const float maxFloat[3],
    const float minFloat[3], int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoARGB8888_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const float maxFloat[4],
    const float minFloat[4], int dither, const uint8_t permuteMap[4], Quorin_Flags flags);

/* Generic gathers and scatters between any number of planes and channels at any stride, for
 * layouts the named conversions do not cover. */
QUORIN_API Quorin_Error QuorinConvert_ChunkyToPlanar8(
    const void *const srcChannels[], const Quorin_Buffer *const destPlanarBuffers[],
    uint32_t channelCount, size_t srcStrideBytes, size_t srcWidth, size_t srcHeight,
    size_t srcRowBytes, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarToChunky8(
    const Quorin_Buffer *const srcPlanarBuffers[], void *const destChannels[],
    uint32_t channelCount, size_t destStrideBytes, size_t destWidth, size_t destHeight,
    size_t destRowBytes, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ChunkyToPlanarF(
    const void *const srcChannels[], const Quorin_Buffer *const destPlanarBuffers[],
    uint32_t channelCount, size_t srcStrideBytes, size_t srcWidth, size_t srcHeight,
    size_t srcRowBytes, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarToChunkyF(
    const Quorin_Buffer *const srcPlanarBuffers[], void *const destChannels[],
    uint32_t channelCount, size_t destStrideBytes, size_t destWidth, size_t destHeight,
    size_t destRowBytes, Quorin_Flags flags);

/* Integer and float planes with a linear map (float = offset + scale * integer, and back). */
QUORIN_API Quorin_Error QuorinConvert_16SToF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, float offset, float scale,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16UToF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, float offset, float scale,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_FTo16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, float offset, float scale,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_FTo16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, float offset, float scale,
    Quorin_Flags flags);

/* Half-float planes and 16-bit integers. */
QUORIN_API Quorin_Error QuorinConvert_16Uto16F(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16Fto16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);

/* Channel operations of the 16-bit formats: fill, permute, and permute with a masked insert of a
 * constant background. */
QUORIN_API Quorin_Error QuorinBufferFill_ARGB16S(
    const Quorin_Buffer *dest, const int16_t color[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPermuteChannels_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[4],
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPermuteChannelsWithMaskedInsert_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[4],
    uint32_t copyMask, const uint8_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPermuteChannelsWithMaskedInsert_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[4],
    uint32_t copyMask, const float backgroundColor[4], Quorin_Flags flags);

/* Packed 16-bit RGB formats to and from 8-bit channels. */
QUORIN_API Quorin_Error QuorinConvert_ARGB1555toARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toARGB1555(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB565toPlanar8(
    const Quorin_Buffer *src, const Quorin_Buffer *destR, const Quorin_Buffer *destG,
    const Quorin_Buffer *destB, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB565toRGBA5551(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB565toARGB1555(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);

/* Half-float planes to and from float and 8-bit planes. */
QUORIN_API Quorin_Error QuorinConvert_Planar16FtoPlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFtoPlanar16F(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8toPlanar16F(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar16FtoPlanar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);

/* Three-channel images into three planes. */
QUORIN_API Quorin_Error QuorinConvert_RGB888toPlanar8(
    const Quorin_Buffer *src, const Quorin_Buffer *destR, const Quorin_Buffer *destG,
    const Quorin_Buffer *destB, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBFFFtoPlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *destR, const Quorin_Buffer *destG,
    const Quorin_Buffer *destB, Quorin_Flags flags);

/* 16-bit and 8-bit four-channel images, with a channel permutation and a masked insert of a
 * background colour on the way. */
QUORIN_API Quorin_Error QuorinConvert_ARGB16UToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[4],
    uint32_t copyMask, const uint8_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888ToARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[4],
    uint32_t copyMask, const uint16_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB16UToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[4],
    uint32_t copyMask, const uint8_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888ToRGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[3],
    uint32_t copyMask, const uint16_t backgroundColor[3], Quorin_Flags flags);

/* Swaps the two bytes of every 16-bit sample (endianness repair). */
QUORIN_API Quorin_Error QuorinByteSwap_Planar16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);

/* Palette images (1, 2 or 4 bits an index) to and from 8-bit planes; the reverse direction picks
 * the nearest palette entry, optionally dithered. */
QUORIN_API Quorin_Error QuorinConvert_Indexed1toPlanar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t colors[2],
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Indexed2toPlanar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t colors[4],
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Indexed4toPlanar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t colors[16],
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8toIndexed1(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, const uint8_t colors[2],
    int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8toIndexed2(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, const uint8_t colors[4],
    int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8toIndexed4(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, const uint8_t colors[16],
    int dither, Quorin_Flags flags);

/* Planes between 12-bit fixed point and 8-bit, float and 16-bit integers. */
QUORIN_API Quorin_Error QuorinConvert_8to16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16Q12to8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16Q12toF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Fto16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16Q12to16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16Uto16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);

/* Prepares a YpCbCr <-> RGB conversion (matrix, value ranges and layouts) once, so that the per-
 * image conversions below only apply it. */
QUORIN_API Quorin_Error QuorinConvert_YpCbCrToARGB_GenerateConversion(
    const Quorin_YpCbCrToARGBMatrix *matrix, const Quorin_YpCbCrPixelRange *pixelRange,
    Quorin_YpCbCrToARGB *outInfo, uint32_t inYpCbCrType, uint32_t outARGBType, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGBToYpCbCr_GenerateConversion(
    const Quorin_ARGBToYpCbCrMatrix *matrix, const Quorin_YpCbCrPixelRange *pixelRange,
    Quorin_ARGBToYpCbCr *outInfo, uint32_t inARGBType, uint32_t outYpCbCrType, Quorin_Flags flags);

/* Video YpCbCr layouts (4:2:2, 4:4:4 and 4:2:0, 8, 10 and 16 bits) to and from RGB with a
 * prepared conversion; permuteMap orders the RGB side, alpha fills it where the video side has
 * none. */
QUORIN_API Quorin_Error QuorinConvert_422YpCbYpCr8ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], uint8_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To422YpCbYpCr8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_422CbYpCrYp8ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], uint8_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To422CbYpCrYp8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_422CbYpCrYp8_AA8ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *srcA, const Quorin_Buffer *dest,
    const Quorin_YpCbCrToARGB *info, const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To422CbYpCrYp8_AA8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_Buffer *destA,
    const Quorin_ARGBToYpCbCr *info, const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_444AYpCbCr8ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To444AYpCbCr8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_444CbYpCrA8ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To444CbYpCrA8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_444CrYpCb8ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], uint8_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To444CrYpCb8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_420Yp8_Cb8_Cr8ToARGB8888(
    const Quorin_Buffer *srcYp, const Quorin_Buffer *srcCb, const Quorin_Buffer *srcCr,
    const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info, const uint8_t permuteMap[4],
    uint8_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To420Yp8_Cb8_Cr8(
    const Quorin_Buffer *src, const Quorin_Buffer *destYp, const Quorin_Buffer *destCb,
    const Quorin_Buffer *destCr, const Quorin_ARGBToYpCbCr *info, const uint8_t permuteMap[4],
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_420Yp8_CbCr8ToARGB8888(
    const Quorin_Buffer *srcYp, const Quorin_Buffer *srcCbCr, const Quorin_Buffer *dest,
    const Quorin_YpCbCrToARGB *info, const uint8_t permuteMap[4], uint8_t alpha,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To420Yp8_CbCr8(
    const Quorin_Buffer *src, const Quorin_Buffer *destYp, const Quorin_Buffer *destCbCr,
    const Quorin_ARGBToYpCbCr *info, const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_444AYpCbCr16ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To444AYpCbCr16(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_444AYpCbCr16ToARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UTo444AYpCbCr16(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_444CrYpCb10ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], uint8_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To444CrYpCb10(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_444CrYpCb10ToARGB16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], int16_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16Q12To444CrYpCb10(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_422CrYpCbYpCbYpCbYpCrYpCrYp10ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], uint8_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To422CrYpCbYpCbYpCbYpCrYpCrYp10(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_422CrYpCbYpCbYpCbYpCrYpCrYp10ToARGB16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], int16_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16Q12To422CrYpCbYpCbYpCbYpCrYpCrYp10(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_422CbYpCrYp16ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], uint8_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888To422CbYpCrYp16(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_422CbYpCrYp16ToARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_YpCbCrToARGB *info,
    const uint8_t permuteMap[4], uint16_t alpha, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UTo422CbYpCrYp16(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const Quorin_ARGBToYpCbCr *info,
    const uint8_t permuteMap[4], Quorin_Flags flags);

/* 10-bit packed RGB (wide-gamut and HDR surfaces) to and from 8-bit, 16-bit, 12-bit fixed-point
 * and float channels; the range maps the 10-bit code values. */
QUORIN_API Quorin_Error QuorinConvert_RGBA1010102ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888ToRGBA1010102(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA1010102ToARGB16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16Q12ToRGBA1010102(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA1010102ToARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UToRGBA1010102(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);

/* Reorders the three channels of RGB888. */
QUORIN_API Quorin_Error QuorinPermuteChannels_RGB888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[3],
    Quorin_Flags flags);

/* Fills two-channel chroma planes. */
QUORIN_API Quorin_Error QuorinBufferFill_CbCr16U(
    const Quorin_Buffer *dest, const uint16_t color[2], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinBufferFill_CbCr8(
    const Quorin_Buffer *dest, const uint8_t color[2], Quorin_Flags flags);

/* Plane depth changes between 12-bit, 16-bit, half-float and 12-bit fixed point. */
QUORIN_API Quorin_Error QuorinConvert_12UTo16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16Fto16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16Q12to16F(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_16UTo12U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);

/* More conversions of the 10-bit packed formats, and dithered reductions to fewer bits, which
 * trade banding for noise. */
QUORIN_API Quorin_Error QuorinConvert_ARGB16Q12ToARGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16Q12ToXRGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UToARGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UtoARGB8888_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, const uint8_t permuteMap[4],
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UToXRGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB2101010ToARGB16F(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB2101010ToARGB16Q12(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB2101010ToARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB2101010ToARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB2101010ToARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toARGB1555_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888ToARGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toRGB565_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888ToXRGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFToARGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFToXRGB2101010(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int32_t rangeMin, int32_t rangeMax,
    const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_BGRA8888toRGB565_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar16UtoPlanar8_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB16UtoRGB888_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB888toRGB565_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);

/* Packed 16-bit RGBA5551 to and from 8-bit channels. */
QUORIN_API Quorin_Error QuorinConvert_RGBA5551toRGBA8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA8888toRGB565_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA8888toRGBA5551(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA8888toRGBA5551_dithered(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, int dither, Quorin_Flags flags);

/* XRGB 10-bit packed pixels into four-channel formats, alpha from a constant. */
QUORIN_API Quorin_Error QuorinConvert_XRGB2101010ToARGB16F(
    const Quorin_Buffer *src, uint16_t alpha, const Quorin_Buffer *dest, int32_t rangeMin,
    int32_t rangeMax, const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_XRGB2101010ToARGB16Q12(
    const Quorin_Buffer *src, int16_t alpha, const Quorin_Buffer *dest, int32_t rangeMin,
    int32_t rangeMax, const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_XRGB2101010ToARGB16U(
    const Quorin_Buffer *src, uint16_t alpha, const Quorin_Buffer *dest, int32_t rangeMin,
    int32_t rangeMax, const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_XRGB2101010ToARGB8888(
    const Quorin_Buffer *src, uint8_t alpha, const Quorin_Buffer *dest, int32_t rangeMin,
    int32_t rangeMax, const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_XRGB2101010ToARGBFFFF(
    const Quorin_Buffer *src, float alpha, const Quorin_Buffer *dest, int32_t rangeMin,
    int32_t rangeMax, const uint8_t permuteMap[4], Quorin_Flags flags);

/* Permute with a masked background insert for ARGB16U. */
QUORIN_API Quorin_Error QuorinPermuteChannelsWithMaskedInsert_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, const uint8_t permuteMap[4],
    uint32_t copyMask, const uint16_t backgroundColor[4], Quorin_Flags flags);
/* END GENERATED */

QUORIN_EXTERN_C_END

#endif /* QUORIN_CONVERSION_H */
