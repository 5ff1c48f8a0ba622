/* Quorin: alpha compositing — blending straight and premultiplied colour,
 * premultiplying and unpremultiplying, clipping colour to alpha.
 * Plain C99; safe to include from C++. */
#ifndef QUORIN_ALPHA_H
#define QUORIN_ALPHA_H

#include <stdbool.h>

#include "Types.h"

QUORIN_EXTERN_C_BEGIN

/* ======================================================================== */
/* Implemented next (alpha family)                                          */
/* ======================================================================== */

/* ---- Alpha blend of straight colour ------------------------------------- */

/* Top over bottom when both carry straight (non-premultiplied) colour: the
 * result keeps straight colour, renormalised by the result alpha, so it can
 * be composited again without a premultiply pass. All buffers must have the
 * same size; dest may alias either source. */
QUORIN_API Quorin_Error QuorinAlphaBlend_ARGB8888(const Quorin_Buffer *srcTop,
                                                  const Quorin_Buffer *srcBottom,
                                                  const Quorin_Buffer *dest, Quorin_Flags flags);
/* Float: every kernel writes a computed NaN (colour or alpha) as the quiet NaN 0x7FC00000. */
QUORIN_API Quorin_Error QuorinAlphaBlend_ARGBFFFF(const Quorin_Buffer *srcTop,
                                                  const Quorin_Buffer *srcBottom,
                                                  const Quorin_Buffer *dest, Quorin_Flags flags);

/* The same blend on separate colour and alpha planes: the result colour goes
 * to dest, the result alpha to destAlpha. Only srcTop, srcBottom and
 * destAlpha are checked (null, equal sizes); the other three planes must
 * match them. */
QUORIN_API Quorin_Error QuorinAlphaBlend_Planar8(const Quorin_Buffer *srcTop,
                                                 const Quorin_Buffer *srcTopAlpha,
                                                 const Quorin_Buffer *srcBottom,
                                                 const Quorin_Buffer *srcBottomAlpha,
                                                 const Quorin_Buffer *dest,
                                                 const Quorin_Buffer *destAlpha,
                                                 Quorin_Flags flags);
/* Float: every kernel writes a computed NaN (colour or alpha) as the quiet NaN 0x7FC00000. */
QUORIN_API Quorin_Error QuorinAlphaBlend_PlanarF(const Quorin_Buffer *srcTop,
                                                 const Quorin_Buffer *srcTopAlpha,
                                                 const Quorin_Buffer *srcBottom,
                                                 const Quorin_Buffer *srcBottomAlpha,
                                                 const Quorin_Buffer *dest,
                                                 const Quorin_Buffer *destAlpha,
                                                 Quorin_Flags flags);

/* ---- Premultiplied blend modes ------------------------------------------ */

/* Separable blend modes on premultiplied RGBA8888 (alpha in channel 3); the
 * result stays premultiplied, so chains of blends need no conversions. */
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendDarken_RGBA8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendLighten_RGBA8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendMultiply_RGBA8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendScreen_RGBA8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);

/* A premultiplied top plane over a bottom plane, the top faded by one
 * constant alpha (a layer opacity) on top of its own alpha plane.
 * Planar8: (255 k T + (6375 - A k) B + 32385) / 65025 in unsigned 32-bit
 * arithmetic, low 8 bits stored; the bottom's weight wraps when A k > 6375.
 * PlanarF: T k + B (1 - A k). */
QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_Planar8(
    const Quorin_Buffer *srcTop, uint8_t constAlpha, const Quorin_Buffer *srcTopAlpha,
    const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest, Quorin_Flags flags);
/* Float: every kernel writes a computed NaN as the quiet NaN 0x7FC00000. */
QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_PlanarF(
    const Quorin_Buffer *srcTop, float constAlpha, const Quorin_Buffer *srcTopAlpha,
    const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest, Quorin_Flags flags);

/* ---- Premultiply and unpremultiply -------------------------------------- */

/* Straight colour to colour multiplied by alpha (what the blends and
 * resamplers want), alpha copied. src and dest have equal sizes and may be
 * the same buffer. ARGB formats keep alpha in channel 0, RGBA in channel 3. */
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB8888(const Quorin_Buffer *src,
                                                       const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA8888(const Quorin_Buffer *src,
                                                       const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
/* Float: every kernel writes a computed NaN as the quiet NaN 0x7FC00000; alpha keeps its bits. */
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGBFFFF(const Quorin_Buffer *src,
                                                       const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBAFFFF(const Quorin_Buffer *src,
                                                       const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB16U(const Quorin_Buffer *src,
                                                      const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA16U(const Quorin_Buffer *src,
                                                      const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
/* 16Q12 clamps alpha to 0..1.0 (0..4096) first and writes the clamped alpha. */
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB16Q12(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA16Q12(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
/* Planar: the colour plane src is multiplied by the separate alpha plane. */
QUORIN_API Quorin_Error QuorinPremultiplyData_Planar8(const Quorin_Buffer *src,
                                                      const Quorin_Buffer *alpha,
                                                      const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
/* Float: every kernel writes a computed NaN as the quiet NaN 0x7FC00000. */
QUORIN_API Quorin_Error QuorinPremultiplyData_PlanarF(const Quorin_Buffer *src,
                                                      const Quorin_Buffer *alpha,
                                                      const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);

/* The inverse: premultiplied colour back to straight colour; alpha 0 gives
 * colour 0. The 8-bit rule saturates a colour above its alpha at 255, the
 * 16-bit rules clamp colour to alpha before dividing. */
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB8888(const Quorin_Buffer *src,
                                                         const Quorin_Buffer *dest,
                                                         Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA8888(const Quorin_Buffer *src,
                                                         const Quorin_Buffer *dest,
                                                         Quorin_Flags flags);
/* Float: every kernel writes a computed NaN as the quiet NaN 0x7FC00000; alpha keeps its bits. */
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGBFFFF(const Quorin_Buffer *src,
                                                         const Quorin_Buffer *dest,
                                                         Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBAFFFF(const Quorin_Buffer *src,
                                                         const Quorin_Buffer *dest,
                                                         Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB16U(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA16U(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB16Q12(const Quorin_Buffer *src,
                                                          const Quorin_Buffer *dest,
                                                          Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA16Q12(const Quorin_Buffer *src,
                                                          const Quorin_Buffer *dest,
                                                          Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinUnpremultiplyData_Planar8(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *alpha,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
/* Float: every kernel writes a computed NaN as the quiet NaN 0x7FC00000. */
QUORIN_API Quorin_Error QuorinUnpremultiplyData_PlanarF(const Quorin_Buffer *src,
                                                        const Quorin_Buffer *alpha,
                                                        const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);

/* ---- Clip to alpha ------------------------------------------------------- */

/* Repairs premultiplied data whose colour exceeds its alpha (colour becomes
 * min(colour, alpha)), so that a later unpremultiply never saturates. Alpha
 * is copied; the planar members take the alpha plane separately and write
 * only the colour plane. */
QUORIN_API Quorin_Error QuorinClipToAlpha_Planar8(const Quorin_Buffer *src,
                                                  const Quorin_Buffer *alpha,
                                                  const Quorin_Buffer *dest, Quorin_Flags flags);
/* Float: values are only selected, never computed, so NaNs keep their bits. */
QUORIN_API Quorin_Error QuorinClipToAlpha_PlanarF(const Quorin_Buffer *src,
                                                  const Quorin_Buffer *alpha,
                                                  const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinClipToAlpha_ARGB8888(const Quorin_Buffer *src,
                                                   const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinClipToAlpha_RGBA8888(const Quorin_Buffer *src,
                                                   const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinClipToAlpha_ARGBFFFF(const Quorin_Buffer *src,
                                                   const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinClipToAlpha_RGBAFFFF(const Quorin_Buffer *src,
                                                   const Quorin_Buffer *dest, Quorin_Flags flags);

/* ======================================================================== */
/* Not yet implemented: each of these writes the fatal record               */
/* "NOT YET IMPLEMENTED" and aborts the process, whatever its arguments.    */
/* ======================================================================== */

/* The float member of the straight-over-premultiplied blend (its siblings
 * are in the generated block below). */
QUORIN_API Quorin_Error QuorinAlphaBlend_NonpremultipliedToPremultiplied_ARGBFFFF(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);

/* BEGIN GENERATED by scripts/gen_stub_declarations.py: do not edit. Source:
 * src/Alpha/AlphaStubs.def */

/* Top over bottom when both are premultiplied (the classic "over" operator). Premultiplied data
 * needs no division, so these are the cheap blends for compositing chains. */
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlend_Planar8(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcTopAlpha, const Quorin_Buffer *srcBottom,
    const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlend_PlanarF(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcTopAlpha, const Quorin_Buffer *srcBottom,
    const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlend_ARGB8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlend_BGRA8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlend_ARGBFFFF(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlend_BGRAFFFF(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);

/* The premultiplied blend with the top's channels reordered on the fly, for tops stored in
 * another channel order; makeDestAlphaOpaque forces the result alpha to full scale. */
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendWithPermute_ARGB8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    const uint8_t permuteMap[4], bool makeDestAlphaOpaque, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendWithPermute_RGBA8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    const uint8_t permuteMap[4], bool makeDestAlphaOpaque, Quorin_Flags flags);

/* The premultiplied blend with the top faded by one constant alpha (a layer opacity). */
QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_ARGB8888(
    const Quorin_Buffer *srcTop, uint8_t constAlpha, const Quorin_Buffer *srcBottom,
    const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_ARGBFFFF(
    const Quorin_Buffer *srcTop, float constAlpha, const Quorin_Buffer *srcBottom,
    const Quorin_Buffer *dest, Quorin_Flags flags);

/* A straight-colour top over a premultiplied bottom, giving a premultiplied result: composites
 * an unpremultiplied layer onto an accumulating canvas without converting it first. */
QUORIN_API Quorin_Error QuorinAlphaBlend_NonpremultipliedToPremultiplied_Planar8(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcTopAlpha, const Quorin_Buffer *srcBottom,
    const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAlphaBlend_NonpremultipliedToPremultiplied_PlanarF(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcTopAlpha, const Quorin_Buffer *srcBottom,
    const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAlphaBlend_NonpremultipliedToPremultiplied_ARGB8888(
    const Quorin_Buffer *srcTop, const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest,
    Quorin_Flags flags);
/* END GENERATED */

QUORIN_EXTERN_C_END

#endif /* QUORIN_ALPHA_H */
