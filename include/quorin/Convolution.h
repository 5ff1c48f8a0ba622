/* Quorin: convolution — general kernels, box and tent blurs, deconvolution.
 * Plain C99; safe to include from C++.
 *
 * roiOffsetX / roiOffsetY place the destination inside the source (the
 * region of interest); kernels are row-major, top row first. */
#ifndef QUORIN_CONVOLUTION_H
#define QUORIN_CONVOLUTION_H

#include "Types.h"

QUORIN_EXTERN_C_BEGIN

/* ======================================================================== */
/* Implemented                                                              */
/* ======================================================================== */

/* ---- General convolution with an integer kernel --------------------------- */

/* Each output sample is the sum of kernel[i * kernelWidth + j] x
 * src[r + i - kernelHeight/2][c + j - kernelWidth/2] (a correlation: the
 * kernel is not flipped) over the taps inside the image, formed as a signed
 * 32-bit sum that wraps, divided as an unsigned 32-bit number by divisor also
 * taken as unsigned (a negative sum, or a negative divisor, acts as a value of
 * 2^31 or more), truncated, and stored as its low 8 bits without clamping;
 * divisor 0 stores 0. Taps outside the image contribute nothing and the
 * divisor is not adjusted near the edges. The ARGB8888 member filters its
 * four channels apart, alpha included, with the same kernel.
 *
 * Offsets: the region covered is (src width - roiOffsetX) x (src height -
 * roiOffsetY) cells, and cell (x, y) is output row roiOffsetX + y, column
 * roiOffsetY + x, with taps above row roiOffsetY or left of column roiOffsetX
 * left out: the two offsets act crosswise, which is invisible when they are
 * equal (the usual 0, 0). Output pixels outside the region are not written.
 * Calls whose region would leave the image (unequal offsets over a non-empty
 * region, or an offset beyond the image) are refused, see step 6.
 *
 * Flags: only kQuorinFlag_QueryTempSize (0x80) is read; every other bit is
 * ignored, kQuorinFlag_SingleThreaded included. tempBuffer and
 * backgroundColor are accepted and ignored.
 * Failures, first match wins, nothing written before they pass:
 *   0. flags & 0x80: the size query answers at once, 1 for Planar8 and 0 for
 *      ARGB8888, before anything else is looked at;
 *   1. kQuorinError_NullPointer (-21772): src or dest is null (Planar8 only;
 *      ARGB8888 refuses a null record with -21773 at step 3);
 *   2. kQuorinError_BadArgument (-21773): kernelHeight or kernelWidth outside
 *      1..255, then either of them even;
 *   3. kQuorinError_BadArgument (-21773): src narrower than kernelWidth or
 *      shorter than kernelHeight;
 *   4. kQuorinError_SizeMismatch (-21774): dest's width or height differs
 *      from src's;
 *   5. kQuorinError_BadArgument (-21773): null pixel data or kernel, or a
 *      record that cannot describe its image (rowBytes below a row, or a byte
 *      extent that wraps or exceeds the address space);
 *   6. kQuorinError_BadArgument (-21773): an offset larger than the image's
 *      size it is taken from, or unequal offsets over a non-empty region.
 * In place: not supported (pieces would read pixels already written).
 * Threading: always the grid dispatcher (tiles 0, 0), whatever the size and
 * flags; the bytes are those of a single piece. */
QUORIN_API Quorin_Error QuorinConvolve_Planar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                               void *tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                               const int16_t *kernel, uint32_t kernelHeight,
                                               uint32_t kernelWidth, int32_t divisor,
                                               uint8_t backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvolve_ARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                void *tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                                const int16_t *kernel, uint32_t kernelHeight,
                                                uint32_t kernelWidth, int32_t divisor,
                                                const uint8_t backgroundColor[4], Quorin_Flags flags);

/* ---- Box blur --------------------------------------------------------------- */

/* The mean over a box, by running sums in two passes (rows, then columns),
 * each written transposed into the next; the first pass's results are
 * truncated to 8 bits before the second. For a kernel size k the span is
 * 2r = 2 (1 + k/2) samples, x - r + 1 .. x + r: one wider than k and reaching
 * one further right (down) than left (up); samples before a line read its
 * first sample and samples after it its last (edge extension). The sum is
 * divided by 2r, truncated. A 1 x 1 kernel averages each pixel with its right
 * and lower neighbours. The ARGB8888 member sums its channels apart, alpha
 * included, and accepts even sizes (k = 4: span 6).
 * When a line is exactly k samples long (k + 1 for an even ARGB8888 size too),
 * the first loop reads 2r - n samples past its end: the next line's first
 * samples, which are kept; past the image's last line (of rows in the first
 * pass, of columns in the second) that line's own last sample is read
 * instead of the bytes after the buffer.
 *
 * Scratch: width x height x bytes per pixel; the caller's tempBuffer when
 * not null, else a zero-filled allocation freed before return. It holds the
 * transposed first pass, or, when the image is at least 2r long both ways
 * (so no line is read past its end), a ring of first-pass rows that the
 * second pass follows closely: the same bytes in dest, with one read of src
 * and one write of dest. Its contents after the call are unspecified. Flags: only kQuorinFlag_QueryTempSize is read; the size
 * query is answered at step 4. roiOffsetX is ignored; backgroundColor is
 * ignored.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_NullPointer (-21772): src or dest is null (Planar8 only;
 *      ARGB8888 refuses a null record with -21773 at step 3);
 *   2. kQuorinError_BadArgument (-21773): kernelHeight or kernelWidth outside
 *      1..255, or (Planar8 only) even;
 *   3. kQuorinError_BadArgument (-21773): src narrower than kernelWidth or
 *      shorter than kernelHeight;
 *   4. with kQuorinFlag_QueryTempSize: return the scratch size (-21773 when it
 *      does not fit the result), even when dest's size differs;
 *   5. kQuorinError_SizeMismatch (-21774): dest's width or height differs;
 *   6. kQuorinError_SizeMismatch (-21774): src's or dest's rowBytes is not
 *      exactly width x bytes per pixel (both packed);
 *   7. kQuorinError_BadArgument (-21773): roiOffsetY is not 0;
 *   8. kQuorinError_BadArgument (-21773): null pixel data, or a byte extent
 *      that wraps or exceeds the address space;
 *   9. kQuorinError_OutOfMemory (-21771): the scratch cannot be allocated.
 * In place: not supported. Threading: always the calling thread. */
QUORIN_API Quorin_Error QuorinBoxConvolve_Planar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                  void *tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                                  uint32_t kernelHeight, uint32_t kernelWidth,
                                                  uint8_t backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinBoxConvolve_ARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                   void *tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                                   uint32_t kernelHeight, uint32_t kernelWidth,
                                                   const uint8_t backgroundColor[4], Quorin_Flags flags);

/* ---- Tent blur ---------------------------------------------------------------- */

/* Triangular weights 1, 2, .., h + 1, .., 2, 1 (h = size / 2) with divisor
 * (h + 1)^2 in each direction, run as two passes of the general convolution
 * above (kernel 1 x kernelWidth into an intermediate image with rowBytes of
 * width x bytes per pixel, then kernelHeight x 1 into dest), with the
 * caller's offsets and flags. Taps outside the image contribute nothing and
 * nothing is renormalised, so a flat image comes out darker near its edges.
 *
 * Scratch: width x height x bytes per pixel (the intermediate image), the
 * caller's tempBuffer or a zero-filled allocation; two small kernels are
 * allocated too. All are freed before return. Flags: only
 * kQuorinFlag_QueryTempSize is read.
 * Failures, first match wins, nothing written before they pass: steps 1 to
 * 5 of the box blur above, except that even sizes are refused by both
 * members; then
 *   6. kQuorinError_BadArgument (-21773): as steps 5 and 6 of the general
 *      convolution (null data, records that cannot describe their image,
 *      offsets that would leave the image);
 *   7. kQuorinError_OutOfMemory (-21771): a kernel or the scratch cannot be
 *      allocated (whatever was allocated is freed).
 * rowBytes is not compared with the width. In place: not supported.
 * Threading: each pass through the grid dispatcher, the second after the
 * first. */
QUORIN_API Quorin_Error QuorinTentConvolve_Planar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                   void *tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                                   uint32_t kernelHeight, uint32_t kernelWidth,
                                                   uint8_t backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinTentConvolve_ARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                    void *tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                                    uint32_t kernelHeight, uint32_t kernelWidth,
                                                    const uint8_t backgroundColor[4], Quorin_Flags flags);

/* ======================================================================== */
/* Not yet implemented: each of these writes the fatal record               */
/* "NOT YET IMPLEMENTED" and aborts the process, whatever its arguments.    */
/* ======================================================================== */

/* BEGIN GENERATED by scripts/gen_stub_declarations.py: do not edit. Source:
 * src/Convolution/ConvolutionStubs.def */

/* General convolution with a caller kernel: float members, and integer members with a bias added
 * before the division. */
QUORIN_API Quorin_Error QuorinConvolve_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const float *kernel, uint32_t kernelHeight, uint32_t kernelWidth,
    float backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvolve_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const float *kernel, uint32_t kernelHeight, uint32_t kernelWidth,
    const float backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvolveWithBias_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const int16_t *kernel, uint32_t kernelHeight, uint32_t kernelWidth,
    int32_t divisor, int32_t bias, uint8_t backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvolveWithBias_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const float *kernel, uint32_t kernelHeight, uint32_t kernelWidth,
    float bias, float backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvolveWithBias_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const int16_t *kernel, uint32_t kernelHeight, uint32_t kernelWidth,
    int32_t divisor, int32_t bias, const uint8_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvolveWithBias_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const float *kernel, uint32_t kernelHeight, uint32_t kernelWidth,
    float bias, const float backgroundColor[4], Quorin_Flags flags);

/* Convolution with a different kernel, divisor and bias per channel. */
QUORIN_API Quorin_Error QuorinConvolveMultiKernel_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const int16_t *const kernels[4], uint32_t kernelHeight,
    uint32_t kernelWidth, const int32_t divisors[4], const int32_t biases[4],
    const uint8_t backgroundColor[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvolveMultiKernel_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const float *const kernels[4], uint32_t kernelHeight, uint32_t kernelWidth,
    const float biases[4], const float backgroundColor[4], Quorin_Flags flags);

/* Iterative Richardson-Lucy deconvolution: sharpens an image blurred by a known kernel (kernel2
 * is its transpose or a second estimate). */
QUORIN_API Quorin_Error QuorinRichardsonLucyDeConvolve_Planar8(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const int16_t *kernel, const int16_t *kernel2, uint32_t kernelHeight,
    uint32_t kernelWidth, uint32_t kernelHeight2, uint32_t kernelWidth2, int32_t divisor,
    int32_t divisor2, uint8_t backgroundColor, uint32_t iterationCount, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRichardsonLucyDeConvolve_PlanarF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const float *kernel, const float *kernel2, uint32_t kernelHeight,
    uint32_t kernelWidth, uint32_t kernelHeight2, uint32_t kernelWidth2, float backgroundColor,
    uint32_t iterationCount, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRichardsonLucyDeConvolve_ARGB8888(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const int16_t *kernel, const int16_t *kernel2, uint32_t kernelHeight,
    uint32_t kernelWidth, uint32_t kernelHeight2, uint32_t kernelWidth2, int32_t divisor,
    int32_t divisor2, const uint8_t backgroundColor[4], uint32_t iterationCount,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinRichardsonLucyDeConvolve_ARGBFFFF(
    const Quorin_Buffer *src, const Quorin_Buffer *dest, void *tempBuffer, uint32_t roiOffsetX,
    uint32_t roiOffsetY, const float *kernel, const float *kernel2, uint32_t kernelHeight,
    uint32_t kernelWidth, uint32_t kernelHeight2, uint32_t kernelWidth2,
    const float backgroundColor[4], uint32_t iterationCount, Quorin_Flags flags);
/* END GENERATED */

QUORIN_EXTERN_C_END

#endif /* QUORIN_CONVOLUTION_H */
