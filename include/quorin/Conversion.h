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
/* Implemented next (planar and interleaved layouts)                        */
/* ======================================================================== */

/* Accepted flags: kQuorinFlag_SingleThreaded and kQuorinFlag_QueryTempSize
 * (the query answers 0: none of these needs a temporary buffer). The
 * destination's size is the region converted; larger sources are read in
 * their top-left corner. */

/* ---- Planes to interleaved, same depth ---------------------------------- */

/* Four planes, in the order of the format's letters, into one image. */
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
 * saturated (NaN gives 0). The filler constant is a byte, like the channel it
 * fills. */
QUORIN_API Quorin_Error QuorinConvert_PlanarFToARGB8888(const Quorin_Buffer *srcA,
                                                        const Quorin_Buffer *srcR,
                                                        const Quorin_Buffer *srcG,
                                                        const Quorin_Buffer *srcB,
                                                        const Quorin_Buffer *dest,
                                                        const float maxFloat[4],
                                                        const float minFloat[4],
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_PlanarFToXRGB8888(uint8_t alpha, const Quorin_Buffer *srcR,
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
/* Not yet implemented: these report "NOT YET IMPLEMENTED" and abort.       */
/* ======================================================================== */

QUORIN_EXTERN_C_END

#endif /* QUORIN_CONVERSION_H */
