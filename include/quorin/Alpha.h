/* Quorin: alpha compositing — blending straight and premultiplied colour,
 * premultiplying and unpremultiplying, clipping colour to alpha.
 * Plain C99; safe to include from C++. */
#ifndef QUORIN_ALPHA_H
#define QUORIN_ALPHA_H

#include <stdbool.h>

#include "Types.h"

QUORIN_EXTERN_C_BEGIN

/* ======================================================================== */
/* Implemented                                                              */
/* ======================================================================== */

/* What every implemented member below shares (each group adds its own):
 *
 * Flags: only kQuorinFlag_SingleThreaded has an effect. Every other bit is
 * ignored, kQuorinFlag_QueryTempSize included: such a call does its work and
 * returns 0 (none of these needs a temporary buffer), it does not answer a
 * size query.
 *
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_NullPointer (-21772): a checked record is null or has
 *      null data;
 *   2. kQuorinError_BadArgument (-21773): the checked records differ in
 *      width or in height (never kQuorinError_SizeMismatch in this family);
 *   3. kQuorinError_BadArgument (-21773): a record's rowBytes cannot hold a
 *      row (shorter than width x bytes per pixel) or its byte extent
 *      (height x rowBytes) wraps or exceeds the address space;
 *   then, for the members that say so, kQuorinError_OutOfMemory (-21771)
 *   when the dispatch group for a split cannot be made.
 * An empty image (width or height 0) succeeds and touches nothing.
 *
 * In place: the destination may be the same buffer as a source of the same
 * pixel size (each pixel is read before it is written and no kernel reads a
 * neighbour); buffers that overlap in any other way are not supported.
 *
 * Walk: one run of width x height pixels when every buffer's rowBytes is
 * exactly width x bytes per pixel, otherwise row by row; the bytes past a
 * row's last pixel are never read or written.
 *
 * Threading: bands of rows run on libdispatch's global queue when
 * kQuorinFlag_SingleThreaded is clear, the image has 64000 pixels or more
 * (a 32-bit product), the process has two processors or more and the image
 * at least as many rows as processors; otherwise the call runs on the
 * calling thread. Each group names its splitter. The bytes are those of the
 * single-threaded call. */

/* ---- Alpha blend of straight colour ------------------------------------- */

/* Top over bottom when both carry straight (non-premultiplied) colour: the
 * result keeps straight colour, renormalised by the result alpha, so it can
 * be composited again without a premultiply pass. Alpha in channel 0.
 * Checked: srcTop, srcBottom, dest (all three, sizes equal). dest may be
 * srcTop or srcBottom. Splits through a dispatch group, so -21771 is
 * possible after the checks. 8-bit colour is divided by the result alpha
 * truncating; float colour is 0 where the result alpha is not above 0
 * (NaN included), and nothing is clamped. */
QUORIN_API Quorin_Error QuorinAlphaBlend_ARGB8888(const Quorin_Buffer *srcTop,
                                                  const Quorin_Buffer *srcBottom,
                                                  const Quorin_Buffer *dest, Quorin_Flags flags);
/* Float: every kernel writes a computed NaN (colour or alpha) as the quiet NaN 0x7FC00000. */
QUORIN_API Quorin_Error QuorinAlphaBlend_ARGBFFFF(const Quorin_Buffer *srcTop,
                                                  const Quorin_Buffer *srcBottom,
                                                  const Quorin_Buffer *dest, Quorin_Flags flags);

/* The same blend on separate colour and alpha planes: the result colour goes
 * to dest, the result alpha to destAlpha. Irregular checks: only srcTop,
 * srcBottom and destAlpha are tested for null and compared in size;
 * srcTopAlpha, srcBottomAlpha and dest are not compared, and one of them
 * that is null, has null data or cannot hold the region (too few rows, rows
 * too short) is refused only at step 3, with kQuorinError_BadArgument.
 * dest may be srcTop or srcBottom, destAlpha either alpha plane. Splits
 * through a dispatch group (-21771 possible after the checks). */
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
 * result stays premultiplied, so chains of blends need no conversions.
 * Checked: srcTop, srcBottom, dest. dest may be either source. Darken and
 * Lighten split through a parallel apply, Multiply and Screen through the
 * row-work dispatcher; neither can fail after the checks. */
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
 * arithmetic, low 8 bits stored. Irregular on purpose: the bottom's weight
 * uses 6375, not 65025, and wraps once A k > 6375 (an opaque top with k of
 * 26 or more), so the result is not an "over" blend there. PlanarF:
 * T k + B (1 - A k), unclamped.
 * Checked: srcTop, srcTopAlpha, srcBottom, dest. dest may be srcTop or
 * srcBottom. Splits through the rows dispatcher, from 64000 pixels (a 32-bit
 * product) whenever kQuorinFlag_SingleThreaded is clear; cannot fail after
 * the checks. */
QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_Planar8(
    const Quorin_Buffer *srcTop, uint8_t constAlpha, const Quorin_Buffer *srcTopAlpha,
    const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest, Quorin_Flags flags);
/* Float: every kernel writes a computed NaN as the quiet NaN 0x7FC00000. */
QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_PlanarF(
    const Quorin_Buffer *srcTop, float constAlpha, const Quorin_Buffer *srcTopAlpha,
    const Quorin_Buffer *srcBottom, const Quorin_Buffer *dest, Quorin_Flags flags);

/* ---- Premultiply and unpremultiply -------------------------------------- */

/* Straight colour to colour multiplied by alpha (what the blends and
 * resamplers want), alpha copied. ARGB formats keep alpha in channel 0, RGBA
 * in channel 3. Checked: src and dest (planar: src, alpha, dest); dest may
 * be src. 8-bit: (c a + 127) / 255; 16U: (c a + 32767) / 65535; float: c a,
 * unclamped. The 8-bit, float and planar members split through a dispatch
 * group (-21771 possible after the checks), the 16-bit ones through a
 * parallel apply (no failure after the checks). */
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
/* 16Q12 clamps alpha to 0..1.0 (0..4096) first and writes the clamped alpha;
 * colour is (c a + 2048) / 4096 truncated toward zero, saturated to int16. */
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
 * 16-bit rules clamp colour to alpha before dividing (an asymmetry kept on
 * purpose). Float multiplies colour by 1 / a, or by 0 where a is +0 or -0
 * (so a NaN or infinite colour over alpha 0 gives NaN, not 0).
 * Checked as premultiply; dest may be src. Every member splits through a
 * dispatch group (-21771 possible after the checks). 8-bit straight colour
 * keeps only a + 1 levels a channel, so a premultiply round trip returns a
 * colour within 127 / a + 1/2 of where it started. */
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
 * only the colour plane. Float: a colour becomes a only where a < colour, so
 * NaN colour or alpha leaves the colour as it was. Checked: src and dest
 * (planar: src, alpha, dest); dest may be src. Splits through a parallel
 * apply; cannot fail after the checks. */
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
