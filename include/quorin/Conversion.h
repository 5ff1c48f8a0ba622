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
/* Depth conversions: 12-bit fixed point and 16-bit planes                   */
/* ======================================================================== */

/* Planar16Q12 samples are signed 16-bit with 12 fraction bits: 4096 is full
 * intensity, 0 none; values outside 0..4096 occur and are clamped going
 * down. Per sample:
 *   Q12 to 8 bits: a negative value gives 0, else
 *     (min(v, 4096) * 255 + 2048) >> 12 (4096 and above give 255, 2048 128);
 *   8 bits to Q12: (v * 4096 + 127) / 255, truncating (255 gives 4096,
 *     128 gives 2056, 1 gives 16).
 * Checks, first match wins, as for the planar and interleaved layouts above:
 * a null record (kQuorinError_NullPointer), null data
 * (kQuorinError_BadArgument), a region wider, then taller, than a buffer
 * (kQuorinError_RegionExceedsSource), a rowBytes shorter than its row (2 x
 * width for a Q12 plane; kQuorinError_BadArgument), then the flags. The
 * planes-to-interleaved forms accept kQuorinFlag_SingleThreaded and
 * kQuorinFlag_QueryTempSize only (kQuorinError_UnsupportedFlags for any
 * other bit); the interleaved-to-planes forms read those two and refuse no
 * flag. ARGB8888toPlanar16Q12 tests its fourth plane's size and rowBytes
 * after the flags. A size query returns 0 there and writes nothing. Last,
 * before any work: kQuorinError_BadArgument for a record whose byte extent
 * wraps or exceeds the address space.
 * In place: a row whose planes and pixels share bytes is converted pixel by
 * pixel in order, channel by channel, by every kernel (the bytes a scalar
 * loop leaves); other overlaps are not supported.
 * Threading: bands of rows through the rows dispatcher from 64000 region
 * pixels unless kQuorinFlag_SingleThreaded; the bytes are those of the
 * single-threaded call. */
QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toARGB8888(const Quorin_Buffer *srcA,
                                                            const Quorin_Buffer *srcR,
                                                            const Quorin_Buffer *srcG,
                                                            const Quorin_Buffer *srcB,
                                                            const Quorin_Buffer *dest,
                                                            Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toRGB888(const Quorin_Buffer *srcR,
                                                          const Quorin_Buffer *srcG,
                                                          const Quorin_Buffer *srcB,
                                                          const Quorin_Buffer *dest,
                                                          Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanar16Q12(const Quorin_Buffer *src,
                                                            const Quorin_Buffer *destA,
                                                            const Quorin_Buffer *destR,
                                                            const Quorin_Buffer *destG,
                                                            const Quorin_Buffer *destB,
                                                            Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB888toPlanar16Q12(const Quorin_Buffer *src,
                                                          const Quorin_Buffer *destR,
                                                          const Quorin_Buffer *destG,
                                                          const Quorin_Buffer *destB,
                                                          Quorin_Flags flags);

/* One 16-bit unsigned plane into an 8-bit plane and back, over dest's
 * height x width elements:
 *   16UToPlanar8: (v * 255 + 32767) / 65535;
 *   Planar8To16U: (v * 65535 + 127) / 255, which is v * 257.
 * No flag is read and no size is compared; both return 0, except that a
 * record that cannot be walked is refused with kQuorinError_BadArgument
 * before anything is written: a null dest or src, null data, a record
 * whose rowBytes is shorter than its row or whose byte extent wraps or
 * exceeds the address space, or a source shorter or narrower than dest.
 * In place: src and dest may share bytes (each row is then converted
 * element by element in order). Threading: on the calling thread. */
QUORIN_API Quorin_Error QuorinConvert_16UToPlanar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                   Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8To16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                   Quorin_Flags flags);

/* ======================================================================== */
/* Channel operations and fills                                             */
/* ======================================================================== */

/* Channel positions are positions inside an interleaved pixel (position 0
 * is the first letter of the format tag). copyMask selects channels with
 * four bits in reverse order: 0x8 the first position, 0x4 the second, 0x2
 * the third, 0x1 the fourth; higher bits are ignored. Colours and scalars
 * are stored as given, byte for byte: a float NaN keeps its bits.
 *
 * Memory: no member reads or writes outside the height x rowBytes bytes of
 * any buffer it is given. A record that cannot describe its image (rowBytes
 * shorter than width x bytes per pixel, or height x rowBytes wrapping or
 * larger than any object) is refused before any work, as each member says.
 *
 * Processor chunks (permute, the fills and the four-channel overwrite with
 * a scalar):
 * on the calling thread with kQuorinFlag_SingleThreaded, fewer than two
 * processors, fewer rows than processors, or fewer than 64000 pixels;
 * otherwise one chunk per processor (height / n rows when n divides the
 * height, else n - 1 chunks of height / (n - 1) rows and a last chunk with
 * the rest) through one parallel apply. The bytes are those of the
 * single-threaded call. An empty image succeeds and writes nothing. */

/* ---- Fills -------------------------------------------------------------- */

/* Every pixel of the width x height area receives the colour (four values
 * in the buffer's channel order) or the value; the bytes past a row's last
 * pixel are untouched. No flag bit is refused.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_NullPointer (-21772): dest is null or has null data;
 *   2. kQuorinError_NullPointer (-21772): color is null (four-channel fills);
 *   3. kQuorinError_BadArgument (-21773): dest cannot describe its image.
 * Threading: processor chunks. */
QUORIN_API Quorin_Error QuorinBufferFill_ARGB8888(const Quorin_Buffer *dest, const uint8_t color[4],
                                                  Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinBufferFill_ARGBFFFF(const Quorin_Buffer *dest, const float color[4],
                                                  Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinBufferFill_Planar8(const Quorin_Buffer *dest, uint8_t value, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinBufferFill_PlanarF(const Quorin_Buffer *dest, float value, Quorin_Flags flags);

/* ---- Overwrite channels with a scalar ----------------------------------- */

/* Four channels: the channels copyMask selects take the scalar, the others
 * src's value, over the width x height area. dest may be src. No flag bit
 * is refused. Every refusal is kQuorinError_BadArgument (-21773), in this
 * order, nothing written before: src or dest is null or has null data; the
 * two differ in width or height; either cannot describe its image.
 * Threading: processor chunks. */
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_ARGB8888(uint8_t scalar, const Quorin_Buffer *src,
                                                                   const Quorin_Buffer *dest, uint32_t copyMask,
                                                                   Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_ARGBFFFF(float scalar, const Quorin_Buffer *src,
                                                                   const Quorin_Buffer *dest, uint32_t copyMask,
                                                                   Quorin_Flags flags);

/* ---- Overwrite channels with a pixel ------------------------------------ */

/* The channels copyMask selects take the pixel's value for that channel,
 * the others src's, pixel by pixel along each of dest's height rows, with
 * the pixel count taken from dest's rowBytes (padding included), not its
 * width: rowBytes / 8 pixels a row (ARGB16U), rowBytes / 16 (ARGBFFFF).
 * The 8-bit member is deliberately different: its loop counts bytes in
 * steps of 4 against rowBytes / 4, so it rewrites only the first
 * ceil((rowBytes / 4) / 4) pixels of each row (4 of the 16 pixels of a
 * 64-byte row) and nothing when rowBytes < 4; the rest of the row keeps its
 * bytes. src is read at the same positions of its own rows (its rowBytes).
 * dest may be src. No flag is tested; the call runs on the calling thread.
 * These check nothing else and return 0, except that these are refused
 * with kQuorinError_BadArgument (-21773) before any write, in this order:
 * a null pixel; src or dest null or with null data; either unable to
 * describe its image; a src whose height x rowBytes bytes are fewer than
 * the walk reads. */
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithPixel_ARGB8888(const uint8_t pixel[4], const Quorin_Buffer *src,
                                                                  const Quorin_Buffer *dest, uint32_t copyMask,
                                                                  Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithPixel_ARGB16U(const uint16_t pixel[4], const Quorin_Buffer *src,
                                                                 const Quorin_Buffer *dest, uint32_t copyMask,
                                                                 Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithPixel_ARGBFFFF(const float pixel[4], const Quorin_Buffer *src,
                                                                  const Quorin_Buffer *dest, uint32_t copyMask,
                                                                  Quorin_Flags flags);

/* One plane: the scalar is written over every whole element of each of the
 * height rows up to rowBytes, padding included (rowBytes, rowBytes / 2 or
 * rowBytes / 4 elements a row; the bytes of a partial last element are
 * untouched). No flag is tested, nothing is split: the call runs on the
 * calling thread. These check nothing else and return 0, except that a dest
 * that is null, has null data or cannot describe its image is refused with
 * kQuorinError_BadArgument (-21773) before any write. */
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_Planar8(uint8_t scalar, const Quorin_Buffer *dest,
                                                                  Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_PlanarF(float scalar, const Quorin_Buffer *dest,
                                                                  Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_Planar16S(int16_t scalar, const Quorin_Buffer *dest,
                                                                    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_Planar16U(uint16_t scalar, const Quorin_Buffer *dest,
                                                                    Quorin_Flags flags);

/* ---- Permute ------------------------------------------------------------- */

/* Each dest pixel: channel i receives src channel permuteMap[i] & 3 (a map
 * value above 3 is folded, never refused: 7 acts as 3). dest may be src.
 * No flag bit is refused.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_NullPointer (-21772): src or dest is null or has null data;
 *   2. kQuorinError_NullPointer (-21772): permuteMap is null;
 *   3. kQuorinError_BadArgument (-21773): src and dest differ in width or in
 *      height (a smaller dest is refused too);
 *   4. kQuorinError_BadArgument (-21773): a record cannot describe its image.
 * Threading: processor chunks. */
QUORIN_API Quorin_Error QuorinPermuteChannels_ARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const uint8_t permuteMap[4], Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinPermuteChannels_ARGBFFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const uint8_t permuteMap[4], Quorin_Flags flags);

/* ---- Extract one channel ------------------------------------------------- */

/* dest is a plane of src's samples. Each dest row receives the sample at
 * channelIndex of successive src pixels while the src byte offset is below
 * dest's rowBytes: ceil(dest rowBytes / src pixel bytes) samples a row,
 * padding included, whatever dest's width (this count is kept as it is); a
 * dest whose rows are longer than src's reads on into src's next rows. No
 * flag bit is refused; the call runs on the calling thread.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_BadArgument (-21773): src is null or has null data, or
 *      channelIndex is outside 0..3 (a negative index too);
 *   2. kQuorinError_BadArgument (-21773): dest is null or has null data (not
 *      -21772);
 *   3. kQuorinError_RegionExceedsSource (-21766): dest wider or taller than src;
 *   4. kQuorinError_BadArgument (-21773): src rowBytes below its width of
 *      pixels, or dest rowBytes below its width of samples;
 *   5. kQuorinError_BadArgument (-21773): a byte extent that wraps or is
 *      larger than any object;
 *   then dest height 0 returns 0, and
 *   6. kQuorinError_BadArgument (-21773): the walk would write past dest's
 *      rowBytes (a rowBytes below one sample) or read past src's last byte. */
QUORIN_API Quorin_Error QuorinExtractChannel_ARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      int channelIndex, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinExtractChannel_ARGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     int channelIndex, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinExtractChannel_ARGBFFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      int channelIndex, Quorin_Flags flags);

/* ---- Copy ---------------------------------------------------------------- */

/* For each of dest's height rows, dest's width BYTES (not width x
 * pixelSize) from the start of src's row to the start of dest's row: the
 * copy of a 10 x 10 ARGB8888 image moves 10 bytes a row. This byte count is
 * kept as it is. pixelSize only scales a piece's first column, which is
 * always 0 (pieces are whole rows). Rows that overlap are copied as by
 * memmove. No flag other than kQuorinFlag_SingleThreaded has an effect.
 * Checks nothing else and returns 0, except that these are refused with
 * kQuorinError_BadArgument (-21773) before any write: src or dest null or
 * with null data; either unable to describe its image with pixels of
 * max(pixelSize, 1) bytes; src whose height x rowBytes bytes do not hold
 * dest's width bytes on each of dest's height rows.
 * Threading: the rows dispatcher from 64000 destination pixels. */
QUORIN_API Quorin_Error QuorinCopyBuffer(const Quorin_Buffer *src, const Quorin_Buffer *dest, size_t pixelSize,
                                         Quorin_Flags flags);

/* ---- Clip ---------------------------------------------------------------- */

/* Each element of dest's width x height area: below minFloat gives
 * minFloat, else above maxFloat gives maxFloat, else the element; a NaN
 * passes unchanged, and when minFloat > maxFloat the lower bound wins for
 * values below it. dest may be src; a run whose source and destination
 * overlap in any other way is computed element by element in order.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_BadArgument (-21773): a flag other than
 *      kQuorinFlag_SingleThreaded is set (kQuorinFlag_QueryTempSize too);
 *   2. kQuorinError_BadArgument (-21773): src or dest is null or has null
 *      data (the description tests only src's data; a null dest is refused
 *      here rather than written);
 *   3. kQuorinError_BadArgument (-21773): src or dest has width or height 0;
 *   4. kQuorinError_RegionExceedsSource (-21766): dest wider or taller than src;
 *   5. kQuorinError_BadArgument (-21773): a rowBytes below 4 x its width;
 *   6. kQuorinError_BadArgument (-21773): a byte extent that wraps or is
 *      larger than any object.
 * Threading: the rows dispatcher from 64000 destination pixels. */
QUORIN_API Quorin_Error QuorinClip_PlanarF(const Quorin_Buffer *src, const Quorin_Buffer *dest, float maxFloat,
                                           float minFloat, Quorin_Flags flags);

/* ---- Table lookups ------------------------------------------------------- */

/* Each byte is replaced by its entry in a 256-entry table: the ARGB8888
 * member looks byte k of a row (counted from the row's first byte) up in
 * tableA, tableR, tableG or tableB as k % 4 is 0, 1, 2 or 3; the Planar8
 * member uses one table for every byte. Each row is walked four bytes a step
 * up to dest's rowBytes, padding included, whatever dest's width: when
 * rowBytes is not a multiple of 4, a row's last step writes up to 3 bytes
 * into the next row's start (which that row then rewrites; in place, it
 * reads them back and looks them up again), and on the buffer's last row
 * the last step writes only the bytes inside the buffer. Each row reads as
 * many bytes from the start of src's row. dest may be src. No flag is
 * tested; the call runs on the calling thread.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_BadArgument (-21773): src or dest is null or has null
 *      data (not -21772);
 *   2. kQuorinError_BadArgument (-21773): a table is null;
 *   3. kQuorinError_RegionExceedsSource (-21766): dest wider or taller than src;
 *   4. kQuorinError_BadArgument (-21773): a rowBytes below its width of
 *      pixels (4 x width, or width for Planar8);
 *   5. kQuorinError_BadArgument (-21773): a byte extent that wraps or is
 *      larger than any object;
 *   6. kQuorinError_BadArgument (-21773): src's height x rowBytes bytes are
 *      fewer than the walk reads. */
QUORIN_API Quorin_Error QuorinTableLookUp_ARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                   const uint8_t tableA[256], const uint8_t tableR[256],
                                                   const uint8_t tableG[256], const uint8_t tableB[256],
                                                   Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinTableLookUp_Planar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                  const uint8_t table[256], Quorin_Flags flags);

/* ---- Select channels from two images ------------------------------------ */

/* Over dest's width x height, the channels copyMask selects come from
 * newSrc's pixel, the others from origSrc's pixel at the same place. dest
 * may be either source. No flag bit is refused.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_BadArgument (-21773): newSrc, origSrc or dest is null or
 *      has null data (not -21772);
 *   2. kQuorinError_BadArgument (-21773): origSrc has width or height 0;
 *   3. kQuorinError_BadArgument (-21773): newSrc's width differs from origSrc's;
 *   4. kQuorinError_RegionExceedsSource (-21766): dest wider or taller than origSrc;
 *   5. kQuorinError_BadArgument (-21773): a rowBytes below 4 x its width
 *      (16 x width for ARGBFFFF);
 *   6. kQuorinError_BadArgument (-21773): a byte extent that wraps or is
 *      larger than any object;
 *   7. kQuorinError_BadArgument (-21773): newSrc has fewer rows than dest.
 * Threading, from 64000 destination pixels: the rows dispatcher (ARGB8888),
 * the grid dispatcher (ARGBFFFF). */
QUORIN_API Quorin_Error QuorinSelectChannels_ARGB8888(const Quorin_Buffer *newSrc, const Quorin_Buffer *origSrc,
                                                      const Quorin_Buffer *dest, uint32_t copyMask,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinSelectChannels_ARGBFFFF(const Quorin_Buffer *newSrc, const Quorin_Buffer *origSrc,
                                                      const Quorin_Buffer *dest, uint32_t copyMask,
                                                      Quorin_Flags flags);

/* ---- Overwrite channels from a plane ------------------------------------ */

/* newSrc is a plane of the pixels' samples. For each of dest's height rows
 * and each pixel up to dest's rowBytes / 4 (ARGB8888) or rowBytes / 16
 * (ARGBFFFF), padding included, not dest's width: the channels copyMask
 * selects take newSrc's element at the pixel's column, the others origSrc's
 * sample at the same position (each source read at its own rowBytes). dest
 * may be origSrc. No flag is tested; the call runs on the calling thread.
 * These check nothing else and return 0, except that these are refused
 * with kQuorinError_BadArgument (-21773) before any write, in this order:
 * a buffer null or with null data; a record unable to describe its image;
 * a source whose height x rowBytes bytes are fewer than the walk reads. */
QUORIN_API Quorin_Error QuorinOverwriteChannels_ARGB8888(const Quorin_Buffer *newSrc, const Quorin_Buffer *origSrc,
                                                         const Quorin_Buffer *dest, uint32_t copyMask,
                                                         Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinOverwriteChannels_ARGBFFFF(const Quorin_Buffer *newSrc, const Quorin_Buffer *origSrc,
                                                         const Quorin_Buffer *dest, uint32_t copyMask,
                                                         Quorin_Flags flags);

/* ---- Flatten over a background -------------------------------------------- */

/* Each pixel of dest's width x height is laid over the opaque background
 * (four values in the source's channel order and depth) and written in
 * dest's format. Integer samples, with M the maximum (255, 65535, 4096 for
 * Q12), a the pixel's alpha and bg the background value of the same channel
 * position, in 64-bit arithmetic with division truncating toward zero:
 *   alpha  = (a x M + M / 2 + (M - a) x bg) / M
 *   colour = (c x k + M / 2 + (M - a) x bg) / M,
 * k = M when isPremultiplied is non-zero, else a. The Q12 members clamp a
 * to 0..4096 first and compute signed. A result outside the sample's range
 * (only colours above their alpha, or Q12 values outside 0..1, reach one)
 * is saturated to it.
 * Floats (M = 1), in single precision, each step rounded, in this order:
 *   alpha = a + (1 - a) x bg;   colour = c x a + (1 - a) x bg, or
 *   c + (1 - a) x bg when premultiplied.
 * Float alpha is not clamped; a NaN result is written as the quiet NaN
 * 0x7FC00000 by every kernel.
 * The ToRGB888 and ToRGBFFF members write three samples R, G, B a pixel
 * (from positions 1-3 of ARGB, 0-2 of RGBA, 2, 1, 0 of BGRA) and drop the
 * alpha result. A four-channel dest may be src.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_NullPointer (-21772): src or dest is null or has null data;
 *   2. kQuorinError_NullPointer (-21772): backgroundColor is null;
 *   3. kQuorinError_UnsupportedFlags (-21775): a flag outside
 *      kQuorinFlag_SingleThreaded | kQuorinFlag_QueryTempSize;
 *   4. kQuorinError_RegionExceedsSource (-21766): dest wider or taller than src;
 *   5. kQuorinError_BadArgument (-21773): src or dest has width or height 0;
 *   then kQuorinFlag_QueryTempSize returns 0 (no temporary buffer), and
 *   6. kQuorinError_BadArgument (-21773): a record unable to describe its
 *      image (rowBytes below its width of pixels, or an extent that wraps or
 *      is larger than any object).
 * Threading, from 64000 destination pixels: the grid dispatcher, except
 * QuorinFlatten_ARGB16Q12, which uses the rows dispatcher. */
QUORIN_API Quorin_Error QuorinFlatten_ARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                               const uint8_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_RGBA8888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                               const uint8_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_ARGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                              const uint16_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_RGBA16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                              const uint16_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_ARGB16Q12(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                const int16_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_RGBA16Q12(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                const int16_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_ARGBFFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                               const float backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_RGBAFFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                               const float backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_ARGB8888ToRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const uint8_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_RGBA8888ToRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const uint8_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_BGRA8888ToRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const uint8_t backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_ARGBFFFFToRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const float backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_RGBAFFFFToRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const float backgroundColor[4], int isPremultiplied, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinFlatten_BGRAFFFFToRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       const float backgroundColor[4], int isPremultiplied, Quorin_Flags flags);

/* ======================================================================== */
/* Packed RGB formats                                                       */
/* ======================================================================== */

/* RGB565, BGR565, ARGB1555 and RGBA5551 pixels are little-endian 16-bit
 * words, fields most significant first in the order of the tag's letters
 * (RGB565: red in bits 15..11, green 10..5, blue 4..0; RGBA5551: red
 * 15..11, green 10..6, blue 5..1, alpha bit 0). Byte, 16-bit and float
 * formats store their channels in the order of the tag's letters.
 *
 * ---- The three-channel matrix ----------------------------------------------
 * Every source among RGB16U, RGB565, RGB888, ARGB1555, ARGB8888, ARGB16U,
 * ARGBFFFF, RGBA5551, RGBA8888, RGBA16U and RGBAFFFF converts to each of
 * BGR565, BGR888, BGR16U, BGRFFF, RGB565, RGB888, RGB16U and RGBFFF (the
 * float sources only to the two float destinations). The twelve cells of
 * the public set are named QuorinConvert_; the others xQuorinConvert_, with
 * the same contract. A source's alpha is dropped; red, green and blue each
 * change depth by one rule, (v x (2^to - 1) + (2^from - 1 - 1) / 2) /
 * (2^from - 1) with a truncating division, so results round to nearest
 * with halves going down: 5 to 8 bits (v x 255 + 15) / 31, 6 to 8 bits
 * (v x 255 + 31) / 63, 8 to 5 bits (v x 31 + 127) / 255, 8 to 6 bits
 * (v x 63 + 127) / 255, 16 to 8 bits (v x 255 + 32767) / 65535, 8 to 16
 * bits v x 257, 5 and 6 to 16 bits (v x 65535 + 15) / 31 and
 * (v x 65535 + 31) / 63, 16 to 5 and 6 bits (v x 31 + 32767) / 65535 and
 * (v x 63 + 32767) / 65535. Choice: a 5-bit green (ARGB1555, RGBA5551)
 * into a 565 destination takes the same form, (v x 63 + 15) / 31. Same
 * depths are copied, only reordered (float channels bit for bit).
 * Choice: an integer channel becomes a float by a single-precision
 * multiplication with the single-precision reciprocal of its maximum
 * (1/255 is 0.003921569f, 1/31 is 0.032258064f, 1/63, 1/65535), in every
 * kernel and for every pixel of a row, tail included: the bits of a pixel
 * never depend on where it lies in the row.
 * No flag bit is refused; kQuorinFlag_SingleThreaded keeps the work on the
 * calling thread.
 * Failures, first match wins, nothing written before they pass:
 *   1. kQuorinError_NullPointer (-21772): src or dest is null;
 *   then kQuorinFlag_QueryTempSize returns 0 (no temporary buffer), even
 *   with null pixel data or records that cannot describe their image;
 *   2. kQuorinError_BadArgument (-21773): src and dest differ in width, then
 *      in height (a smaller dest is refused too);
 *   3. kQuorinError_BadArgument (-21773): a record cannot describe its image
 *      (rowBytes shorter than width x its pixel size, or height x rowBytes
 *      wrapping or larger than any object);
 *   4. kQuorinError_BadArgument (-21773): src or dest has null pixel data.
 * An empty image succeeds and writes nothing.
 * Irregular: when src's rowBytes is exactly width x its pixel size and
 * dest's rowBytes equals src's (not width x dest's pixel size), the image
 * is converted as one run of height x width pixels: the output is packed
 * from dest's first byte on, across its row ends (ARGB8888 to RGB888 with
 * both rowBytes 4 x width writes the first 3 x width x height bytes).
 * Otherwise each row is converted into its own row.
 * In place: not supported; dest may not overlap src.
 * Threading: processor chunks (see the channel operations): on the calling
 * thread with kQuorinFlag_SingleThreaded, fewer than two processors, fewer
 * rows than processors, or fewer than 64000 pixels; otherwise one chunk of
 * rows per processor through one parallel apply. The bytes are those of the
 * single-threaded call. */
QUORIN_API Quorin_Error QuorinConvert_RGB565toRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB565toBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB16UtoRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB565toBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB565toBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB565toBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB565toRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB565toRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB565toRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGB888toRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB1555toBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB1555toBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB1555toBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB1555toBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB1555toRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB1555toRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB1555toRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB1555toRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB8888toBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB8888toBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB8888toBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB8888toBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB8888toRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB8888toRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB8888toRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB16UtoBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB16UtoBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB16UtoBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB16UtoBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB16UtoRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB16UtoRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGB16UtoRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGB16UtoRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_ARGBFFFFtoBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_ARGBFFFFtoRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA5551toBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA5551toBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA5551toBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA5551toBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA5551toRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA5551toRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA5551toRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA5551toRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA8888toBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA8888toBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA8888toBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA8888toBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA8888toRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA8888toRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA8888toRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA8888toRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA16UtoBGR565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA16UtoBGR888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA16UtoBGR16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA16UtoBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA16UtoRGB565(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA16UtoRGB888(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBA16UtoRGB16U(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                      Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBA16UtoRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);
QUORIN_API Quorin_Error xQuorinConvert_RGBAFFFFtoBGRFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                        Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBAFFFFtoRGBFFF(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                       Quorin_Flags flags);

/* ---- Adding alpha ---------------------------------------------------------
 * Three channels into four: RGB888 (and BGR888) into RGBA8888, ARGB8888 and
 * BGRA8888, RGB16U into ARGB16U, RGBA16U and BGRA16U, RGBFFF into ARGBFFFF,
 * RGBAFFFF and BGRAFFFF, RGB565 into ARGB8888, RGBA8888 and BGRA8888. The
 * colours keep their values in the destination's order (565 fields expanded
 * by the matrix's 5- and 6-to-8-bit rules; floats bit for bit). Alpha is
 * read from the alpha plane when one is given, one byte a pixel along the
 * same rows (its width and height at least src's), else it is the constant.
 * Choice: for the 16-bit and float members a plane's byte is taken to the
 * destination's depth by the matrix's rules (v x 257; v x 0.003921569f);
 * the constant is written as given.
 * When premultiply equals exactly 1, each colour c becomes
 * (c x alpha + 127) / 255 (8-bit), (c x alpha + 32767) / 65535 (16-bit),
 * or c x alpha in single precision (float); any other value leaves it.
 * The 565 members take (alpha, src, dest, flags): no plane, no switch.
 * No flag bit is refused. Order, nothing written before it passes:
 *   1. kQuorinFlag_QueryTempSize in the low byte of flags: return 0 at once
 *      (nothing is tested, nothing written);
 *   2. kQuorinError_BadArgument (-21773): src or dest is null or has null
 *      data (memory safety; no pointer test is described);
 *   3. kQuorinError_BadArgument (-21773): src and dest differ in width,
 *      then in height;
 *   4. kQuorinError_BadArgument (-21773): src or dest cannot describe its
 *      image; then an alpha plane that is missing its data, cannot describe
 *      its image, or is narrower or shorter than src.
 * An empty image succeeds and writes nothing. Rows are walked as one run
 * when no buffer has padding, else row by row; the bytes are the same.
 * In place: not supported.
 * Threading: the 8-bit (888) members use processor chunks as the matrix
 * does; the 565, 16-bit and float members run on the calling thread. */
QUORIN_API Quorin_Error QuorinConvert_RGB888toRGBA8888(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     uint8_t constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_BGR888toARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     uint8_t constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB888toARGB8888(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     uint8_t constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB888toBGRA8888(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     uint8_t constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB16UtoARGB16U(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     uint16_t constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB16UtoRGBA16U(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     uint16_t constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB16UtoBGRA16U(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     uint16_t constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBFFFtoARGBFFFF(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     float constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBFFFtoRGBAFFFF(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     float constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGBFFFtoBGRAFFFF(const Quorin_Buffer *src, const Quorin_Buffer *alpha,
                                                     float constant, const Quorin_Buffer *dest, int premultiply,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB565toARGB8888(uint8_t alpha, const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB565toRGBA8888(uint8_t alpha, const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_RGB565toBGRA8888(uint8_t alpha, const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);

/* Custom conversion of three-byte pixels: RGB888 src into ARGB8888 dest, the
 * alpha-adding rule of QuorinConvert_RGB888toARGB8888 with no premultiply.
 * The third argument is an optional alpha plane (Planar8, one byte a pixel
 * along the same rows, its width and height at least src's); when it is null
 * every alpha byte is 255. Colours are copied unchanged. Flags: only
 * kQuorinFlag_QueryTempSize in the low byte is read (nothing is needed, so
 * the answer is 0); no bit is refused. Order, nothing written before it
 * passes:
 *   1. kQuorinFlag_QueryTempSize in the low byte: return 0 at once;
 *   2. kQuorinError_BadArgument (-21773): src or dest is null or has null
 *      data;
 *   3. kQuorinError_BadArgument (-21773): src and dest differ in width, then
 *      in height;
 *   4. kQuorinError_BadArgument (-21773): src or dest cannot describe its
 *      image; then an alpha plane with null data, one that cannot describe
 *      its image, or one narrower or shorter than src.
 * Rows whose buffers have padding are walked row by row; the pixels are the
 * same either way, and no temporary table is built.
 * In place: not supported. Threading: processor chunks, as the 888
 * alpha-adding members. */
QUORIN_API Quorin_Error _customConvertImage(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                            const Quorin_Buffer *alpha, Quorin_Flags flags);

/* ======================================================================== */
/* Packed planes: 1, 2 and 4 bits a pixel                                  */
/* ======================================================================== */
/* Planar1, Planar2 and Planar4 rows pack 8, 4 and 2 pixels a byte, the first
 * pixel in the most significant bits. The conversions work on whole packed
 * bytes: the packed bytes converted per row are the packed buffer's
 * rowBytes, not derived from width, and the rows are dest's height.
 * Unpacking writes, for each packed byte, 8, 4 or 2 plane bytes: a Planar1
 * bit becomes 255 when set, 0 when clear; a Planar2 field f becomes f x 85;
 * a Planar4 nibble n becomes n x 17 (high nibble first).
 * Packing reads 8, 4 or 2 plane bytes for each packed byte: s becomes
 * (s + 127) / 255 (1 for 128 and above), (s + 42) / 85 or (s + 8) / 17, the
 * first into the highest bits.
 * No flag bit is read, no colour table is taken. Order, nothing written
 * before it passes:
 *   1. kQuorinError_NullPointer (-21772): src or dest is null (not tested by
 *      QuorinConvert_Planar4toPlanar8, which starts at step 2: there a null
 *      record counts as null data);
 *   2. kQuorinError_BadArgument (-21773): src data null, then dest data null;
 *   3. kQuorinError_RegionExceedsSource (-21766): dest wider than src, then
 *      taller;
 *   4. kQuorinError_RegionExceedsSource (-21766): unpacking, dest rowBytes
 *      below src rowBytes x 8, x 4 or x 2; packing, dest rowBytes above src
 *      rowBytes / 8, / 4 or / 2 (integer division);
 *   5. kQuorinError_BadArgument (-21773): src or dest cannot describe its
 *      image (rowBytes shorter than a row of its width, at 1, 2, 4 or 8
 *      bits a pixel, or height x rowBytes beyond any object);
 *   6. dest height 0: return 0.
 * Irregularity: the width is tested only against the other buffer's; the
 * bytes past a row's pixels (the packed row's last byte's unused fields, or
 * the plane bytes those fields give) are converted like the others.
 * In place: not supported. Threading: the calling thread. */
QUORIN_API Quorin_Error QuorinConvert_Planar1toPlanar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar2toPlanar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar4toPlanar8(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8toPlanar2(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar8toPlanar4(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     Quorin_Flags flags);
/* Packing into one bit a pixel takes a third argument that mode 0 does not
 * read, and a mode. Only mode 0 (the threshold above) exists: after the
 * checks 1 to 5, any other mode writes the fatal record "NOT YET
 * IMPLEMENTED" (QuorinConvert_Planar8toPlanar1,
 * Conversion/ConvertPlanartoPlanar:205) and aborts. */
QUORIN_API Quorin_Error QuorinConvert_Planar8toPlanar1(const Quorin_Buffer *src, const Quorin_Buffer *dest,
                                                     void *tempBuffer, int mode);

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
 * src/Conversion/ConversionStubs.def */

/* 12-bit fixed-point planes into half-float pixels. */
QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toARGB16F(
    const Quorin_Buffer *srcA, const Quorin_Buffer *srcR, const Quorin_Buffer *srcG,
    const Quorin_Buffer *srcB, const Quorin_Buffer *dest, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toRGB16F(
    const Quorin_Buffer *srcR, const Quorin_Buffer *srcG, const Quorin_Buffer *srcB,
    const Quorin_Buffer *dest, Quorin_Flags flags);

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
