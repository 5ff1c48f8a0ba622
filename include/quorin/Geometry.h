/* Quorin: geometry — scaling, rotation, reflection, shearing and warping.
 * Plain C99; safe to include from C++. */
#ifndef QUORIN_GEOMETRY_H
#define QUORIN_GEOMETRY_H

#include "Types.h"

QUORIN_EXTERN_C_BEGIN

/* A resampling filter for the shears: made by QuorinNewResamplingFilter (and
 * released with QuorinDestroyResamplingFilter) or built in caller storage by
 * QuorinNewResamplingFilterForFunctionUsingBuffer. */
typedef struct QuorinResamplingFilter QuorinResamplingFilter;

/* A caller's resampling kernel: writes the kernel's value at each of the
 * count positions xArray[i] into yArray[i]. */
typedef void (*Quorin_KernelFunction)(const float *xArray, float *yArray, size_t count,
                                      void *userData);

/* An affine map (x, y) -> (a x + c y + tx, b x + d y + ty). */
typedef struct Quorin_AffineTransform {
    float a;
    float b;
    float c;
    float d;
    float tx;
    float ty;
} Quorin_AffineTransform;

/* The host graphics framework's own affine transform record, in the host's
 * native float type (32-bit on the library's target). */
typedef struct Quorin_OrlAffineTransform {
    float a;
    float b;
    float c;
    float d;
    float tx;
    float ty;
} Quorin_OrlAffineTransform;

/* ---- Scale ----------------------------------------------------------------
 * Resizes the whole source to the whole destination (its width and height
 * are the target size). Each axis whose length changes is resampled by its
 * own pass, horizontal first: a shrinking axis with a 5-tap cubic B-spline,
 * a growing one with a 7-tap Lanczos-3 (the kernel is not widened when
 * shrinking, so strong reductions skip source samples). Output sample i of
 * an axis of S source samples and D destination samples sits at i * S / D
 * less min(S/D, D/S): the library's own alignment, not the pixel-centre
 * rule. Edges repeat the first and last samples; weights are not
 * renormalised. Channels are filtered independently, alpha like the others.
 *
 * Arithmetic: integer formats sum 14-bit fixed-point weights (truncated from
 * x 16384) in 32 bits and store (sum + 16383) >> 14, clamped to 0 .. the
 * format's maximum (signed 16-bit results below 0 are stored as 0). With
 * kQuorinFlag_HighQualityResampling they sum float weights in float, in
 * tap order, and store (int)((double)sum + 0.5), clamped. Float formats sum
 * in float (default) or double (high quality), unclamped; a NaN result is
 * stored as the quiet NaN 0x7FC00000.
 *
 * tempBuffer: null, or caller memory of at least the queried size (no
 * alignment needed), used as it is and never kept or freed; with null the
 * call allocates (zero-filled) and frees its own.
 * kQuorinFlag_QueryTempSize returns the size: 0 when the sizes are equal,
 * else each changing axis's table (16 + count x taps x 8 bytes; for double
 * weights the 16 + count x taps x 4 bytes of head and indices rounded up to
 * 8, plus count x taps x 8; 5 taps when the axis shrinks, 7 when it grows)
 * plus, when both axes change, dest.rowBytes x src.height bytes of
 * intermediate image.
 *
 * Flags: kQuorinFlag_HighQualityResampling and kQuorinFlag_QueryTempSize act;
 * no bit is refused; kQuorinFlag_SingleThreaded has no effect.
 * Failures, first match wins, nothing written or allocated before they pass:
 *   1. kQuorinError_BadArgument (-21773): src is null or has null data, or
 *      dest is null;
 *   2. kQuorinError_InvalidRowBytes (-21777): a rowBytes is shorter than
 *      width x bytes per pixel;
 *   3. kQuorinError_InvalidRowBytes (-21777): 16-bit members, a rowBytes is
 *      odd; float members, a rowBytes is not a multiple of 4;
 *   4. kQuorinError_BadArgument (-21773): a width or height is 0;
 *   (the size query is answered here, with a null dest.data too; a size
 *    beyond 2^31 - 1 bytes cannot be reported and gives -21773)
 *   5. kQuorinError_BadArgument (-21773): dest has null data;
 *   6. kQuorinError_InvalidRowBytes (-21777): height x rowBytes wraps or
 *      exceeds any object;
 *   7. kQuorinError_BadArgument (-21773): a width or height beyond 2^32 - 1;
 *   8. kQuorinError_OutOfMemory (-21771): the scratch allocation failed
 *      (dest untouched).
 * Equal sizes are a copy (one block when the rowBytes match, padding
 * included, else row by row). In place: not supported (src and dest must not
 * overlap unless the sizes are equal).
 * Threading: each pass whose output has at least 64000 pixels (a 32-bit
 * product) is cut into about one tile per processor by
 * _QuorinDispatchApplyOnGrid; smaller passes run on the calling thread. The
 * bytes do not depend on the split or on the vector unit. */
QUORIN_API Quorin_Error QuorinScale_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_Planar16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_Planar16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);

/* ---- Quarter turns ----------------------------------------------------------
 * Turns the source counter-clockwise by rotationConstant x 90 degrees (0..3)
 * and centres it on the destination, moving whole pixels: where the turned
 * source is larger it is cropped, where it is smaller it is offset. An odd
 * difference puts its extra pixel as follows: along x, the crop gains 1 for
 * turns 2 and 3, the offset only for turn 2; along y, both gain 1 for every
 * turn but 3 (turns 2 and 3 count their x offset from the right edge, turns
 * 1 and 2 their y offset from the bottom). With rotation 1 the source's top
 * edge becomes the left edge read upward; with rotation 3 the right edge
 * read downward.
 * backgroundColor (one pixel, may be null): when given and dest is wider
 * than src, or not wider but taller (the unrotated sizes, so a quarter turn
 * into a destination of exactly swapped size still fills), the whole
 * destination is first filled through QuorinBufferFill_ARGB8888 /
 * _ARGBFFFF with flags, and a failure of that fill is returned. Without it,
 * pixels the image does not cover keep their bytes.
 * Flags: only kQuorinFlag_QueryTempSize acts (the answer is 0); no bit is
 * refused.
 * Failures, first match wins, nothing written before they pass (all
 * kQuorinError_BadArgument, -21773):
 *   1. src or dest is null;
 *   2. a width or height is 0;
 *   3. src.rowBytes is 0;
 *   4. rotationConstant is above 3;
 *   5. dest.rowBytes is 0;
 *   (the size query is answered here)
 *   6. src or dest has null data;
 *   7. a record cannot describe its image (rowBytes shorter than width x
 *      bytes per pixel, or height x rowBytes wrapping or exceeding any
 *      object).
 * In place: not supported. Threading: the calling thread only (the fill
 * splits as the fills do). */
QUORIN_API Quorin_Error QuorinRotate90_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint8_t rotationConstant,
    const uint8_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate90_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint8_t rotationConstant,
    const float backgroundColor[4], Quorin_Flags flags);

/* ======================================================================== */
/* Not yet implemented: each of these writes the fatal record               */
/* "NOT YET IMPLEMENTED" and aborts the process, whatever its arguments.    */
/* ======================================================================== */

/* BEGIN GENERATED by scripts/gen_stub_declarations.py: do not edit. Source:
 * src/Geometry/Rotate_ARGB8888.def
 * src/Geometry/GeometryStubs.def */

/* Rotation by an arbitrary angle about the image centre, resampled; uncovered destination pixels
 * take backColor (one pixel of the format). */
QUORIN_API Quorin_Error QuorinRotate_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, float angleInRadians,
    const uint8_t backColor[4], Quorin_Flags flags);

/* Rotation of the other formats by an arbitrary angle. */
QUORIN_API Quorin_Error QuorinRotate_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, float angleInRadians,
    uint8_t backColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, float angleInRadians,
    float backColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, float angleInRadians,
    const uint16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, float angleInRadians,
    const int16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, float angleInRadians,
    const float backColor[4], Quorin_Flags flags);

/* Warps by a general affine transform (six floats), for skew and arbitrary placement in one
 * pass. */
QUORIN_API Quorin_Error QuorinAffineWarp_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_AffineTransform *transform, uint8_t backColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarp_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_AffineTransform *transform, float backColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarp_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_AffineTransform *transform, const uint16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarp_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_AffineTransform *transform, const int16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarp_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_AffineTransform *transform, const float backColor[4], Quorin_Flags flags);

/* The affine warp with the transform given in the host graphics framework's own record, so host
 * transforms pass through unconverted. */
QUORIN_API Quorin_Error QuorinAffineWarpOrl_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_OrlAffineTransform *transform, uint8_t backColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarpOrl_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_OrlAffineTransform *transform, float backColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarpOrl_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_OrlAffineTransform *transform, const uint16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarpOrl_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_OrlAffineTransform *transform, const int16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinAffineWarpOrl_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer,
    const Quorin_OrlAffineTransform *transform, const float backColor[4], Quorin_Flags flags);

/* Mirrors about the vertical axis (left becomes right). */
QUORIN_API Quorin_Error QuorinHorizontalReflect_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalReflect_Planar16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalReflect_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalReflect_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalReflect_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalReflect_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalReflect_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);

/* Mirrors about the horizontal axis (top becomes bottom). */
QUORIN_API Quorin_Error QuorinVerticalReflect_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalReflect_Planar16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalReflect_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalReflect_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalReflect_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalReflect_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalReflect_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, Quorin_Flags flags);

/* Exact quarter turns of the other pixel formats (rotationConstant 0..3 counter-clockwise),
 * centred on the destination, with an optional background pixel for uncovered areas. */
QUORIN_API Quorin_Error QuorinRotate90_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint8_t rotationConstant,
    const uint8_t *backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate90_Planar16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint8_t rotationConstant,
    const uint16_t *backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate90_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint8_t rotationConstant,
    const float *backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate90_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint8_t rotationConstant,
    const uint16_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRotate90_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint8_t rotationConstant,
    const int16_t backgroundColor[4], Quorin_Flags flags);

/* Shears rows sideways by xTranslate + y * shearSlope while resampling through filter: the
 * building block of high-quality rotations and skews. */
QUORIN_API Quorin_Error QuorinHorizontalShear_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter, uint8_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_Planar16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter, int16_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_Planar16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter, uint16_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter, float backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint8_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const int16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const float backColor[4], Quorin_Flags flags);

/* Shears columns by yTranslate + x * shearSlope while resampling through filter. */
QUORIN_API Quorin_Error QuorinVerticalShear_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter, uint8_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_Planar16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter, int16_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_Planar16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter, uint16_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter, float backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint8_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const int16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const float backColor[4], Quorin_Flags flags);

/* The horizontal shear with double-precision placement, for large images where float offsets
 * drift. */
QUORIN_API Quorin_Error QuorinHorizontalShearD_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double xTranslate, double shearSlope, const QuorinResamplingFilter *filter, uint8_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShearD_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double xTranslate, double shearSlope, const QuorinResamplingFilter *filter, float backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShearD_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double xTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const uint8_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShearD_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double xTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const uint16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShearD_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double xTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const int16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShearD_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double xTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const float backColor[4], Quorin_Flags flags);

/* The vertical shear with double-precision placement. */
QUORIN_API Quorin_Error QuorinVerticalShearD_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double yTranslate, double shearSlope, const QuorinResamplingFilter *filter, uint8_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShearD_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double yTranslate, double shearSlope, const QuorinResamplingFilter *filter, float backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShearD_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double yTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const uint8_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShearD_ARGB16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double yTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const uint16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShearD_ARGB16S(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double yTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const int16_t backColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShearD_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    double yTranslate, double shearSlope, const QuorinResamplingFilter *filter,
    const float backColor[4], Quorin_Flags flags);

/* Resampling filters for the shears: a default filter for a scale factor, or one built from a
 * caller's kernel function in caller-provided storage of QuorinGetResamplingFilterSize bytes. */
QUORIN_API QuorinResamplingFilter *QuorinNewResamplingFilter(float scale, Quorin_Flags flags);
QUORIN_API void QuorinDestroyResamplingFilter(QuorinResamplingFilter *filter);
QUORIN_API Quorin_Error QuorinNewResamplingFilterForFunctionUsingBuffer(
    QuorinResamplingFilter *filter, float scale, Quorin_KernelFunction kernelFunction,
    float kernelWidth, void *userData, Quorin_Flags flags);
QUORIN_API size_t QuorinGetResamplingFilterSize(
    float scale, Quorin_KernelFunction kernelFunction, float kernelWidth, Quorin_Flags flags);
QUORIN_API size_t QuorinGetResamplingFilterExtent(
    const QuorinResamplingFilter *filter, Quorin_Flags flags);

/* Scaling of the two-channel chroma planes of video formats and of the wide-gamut 10-bit format. */
QUORIN_API Quorin_Error QuorinScale_CbCr8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_CbCr16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinScale_XRGB2101010W(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, Quorin_Flags flags);

/* Shears of the chroma and 10-bit formats. */
QUORIN_API Quorin_Error QuorinHorizontalShear_CbCr16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint16_t backColor[2], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_CbCr8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint8_t backColor[2], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinHorizontalShear_XRGB2101010W(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float xTranslate, float shearSlope, const QuorinResamplingFilter *filter, uint32_t backColor,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_CbCr8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint8_t backColor[2], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_CbCr16U(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter,
    const uint16_t backColor[2], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinVerticalShear_XRGB2101010W(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
    float yTranslate, float shearSlope, const QuorinResamplingFilter *filter, uint32_t backColor,
    Quorin_Flags flags);
/* END GENERATED */

QUORIN_EXTERN_C_END

#endif /* QUORIN_GEOMETRY_H */
