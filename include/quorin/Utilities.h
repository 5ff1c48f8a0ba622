/* Quorin: buffers, processor features and the parallel dispatchers. */
#ifndef QUORIN_UTILITIES_H
#define QUORIN_UTILITIES_H

#include "Types.h"

QUORIN_EXTERN_C_BEGIN

/* ---- Buffers ------------------------------------------------------------ */

/* A width and a height as single-precision floats, width first. */
typedef struct Quorin_Size {
    float width;
    float height;
} Quorin_Size;

/* Fills *buffer for height x width pixels of pixelBits bits each, with a
 * rowBytes chosen for vector access, and allocates zero-filled storage that
 * the caller releases with free(). rowBytes is a multiple of the row
 * alignment: 16 for rows under 32 bytes, else 64. Storage under a page is
 * aligned to the row alignment; storage of a page or more comes from calloc
 * and is only guaranteed 16-byte aligned. A width of 0 or pixelBits of 0
 * gives rowBytes 0, data NULL and 0.
 * With kQuorinFlag_NoAllocate only the record is filled (data = NULL) and the
 * row alignment (16 or 64) is returned: a positive result there is not an
 * error, and it says how rowBytes was rounded, not how storage the caller
 * allocates must be aligned.
 * Codes in order: NULL buffer kQuorinError_NullPointer; a flag other than
 * kQuorinFlag_NoAllocate kQuorinError_UnsupportedFlags; a width x pixelBits
 * of more than 32 bits kQuorinError_BadArgument, before the record is
 * touched (this also refuses products that pass the bit-length test of
 * width and pixelBits but do not fit 32 bits, which would otherwise wrap
 * and describe rows too short for their width); a byte extent whose
 * rowBytes and height have bit lengths adding up to more than 32 (never
 * below 2^33 bytes, always from 2^34), or storage that cannot be had,
 * kQuorinError_OutOfMemory, after the record is filled. */
QUORIN_API Quorin_Error QuorinBuffer_Init(Quorin_Buffer *buffer, size_t height, size_t width,
                                          uint32_t pixelBits, Quorin_Flags flags);

/* The buffer's width and height as floats that never exceed the integers
 * (below 2^24 they are exact; above, the step down from a float that rounded
 * up is coarse on purpose: 16777219 gives 16776964.0). A null buffer gives
 * (0, 0). No flags, no failure code; reads only the record. */
QUORIN_API Quorin_Size QuorinBuffer_GetSize(const Quorin_Buffer *buffer);

/* ---- Processor features ------------------------------------------------- */

/* 1 when the effective feature mask shares a bit with mask. Bit 0 means the
 * vector kernels may run on this processor. Thread-safe; the processor is
 * probed once when the library loads. */
QUORIN_API int Quorin_HasFeature(uint64_t mask);

/* Sets the speed-up switch: all ones (the default) lets the probed processor
 * features govern; any other value except 0 is unsupported and ends the
 * process at the next feature test. Process-wide and unlocked: set it before
 * operations run, not while they do. */
QUORIN_API void Quorin_Boosten(uint64_t mask);

/* Turns every speed-up off: each operation then runs its scalar kernel. */
QUORIN_API void Quorin_Decelerate(void);

/* Diagnostic: returns quietly unless the speed-up switch holds an unsupported
 * value, in which case it reports and ends the process. */
QUORIN_API void _printCPUInfo(void);

/* ---- Parallel dispatch -------------------------------------------------- */

/* Work for one piece: a rectangle (x, y, width, height) of the destination.
 * A piece may be empty (width or height 0). */
typedef void (*Quorin_PieceFunction)(void *context, size_t pieceIndex, size_t x, size_t y,
                                     size_t width, size_t height);

/* A piece function with its context; it must stay valid for the whole call. */
typedef struct Quorin_PieceClosure {
    Quorin_PieceFunction function;
    void *context;
} Quorin_PieceClosure;

/* Cuts width x height into one horizontal band per active processor (the
 * last band takes the remainder) and runs them concurrently on libdispatch's
 * global queue, the calling thread taking part; returns when all have
 * finished. No flags and no size threshold: callers decide whether to split.
 * Every band is called, even with 0 rows (height below the processor count
 * gives empty bands and one band of all rows), so the piece function must
 * accept empty pieces and be safe to run on several threads at once.
 * Failure: a null closure (or function) gives kQuorinError_InternalFault
 * before any piece runs; otherwise 0. */
QUORIN_API Quorin_Error _QuorinDispatchApplyOnRows(size_t width, size_t height,
                                                   const Quorin_PieceClosure *closure);

/* Cuts width x height into tilesAcross x tilesDown tiles (the last column and
 * row take the remainders) and runs them concurrently, as the rows
 * dispatcher does. When either count is 0 both are chosen from the processor
 * count P: floor(sqrt(P)) rows of tiles, P / that many across. Tiles may be
 * empty. Failure: a null closure (or function) gives
 * kQuorinError_InternalFault before any piece runs; otherwise 0. */
QUORIN_API Quorin_Error _QuorinDispatchApplyOnGrid(size_t tilesAcross, size_t tilesDown,
                                                   size_t width, size_t height,
                                                   const Quorin_PieceClosure *closure);

/* ======================================================================== */
/* Host image formats, converters and video pixel buffers                   */
/* (this block is maintained with the host-format and stub tables)          */
/* ======================================================================== */

/* Objects of the host frameworks, which the library only passes through:
 * any foundation object (strings, code fragments), a graphics colour space,
 * and a video pixel buffer. */
typedef struct QuorinHostObject QuorinHostObject;
typedef struct QuorinHostOrlColorSpace QuorinHostOrlColorSpace;
typedef struct QuorinHostMekPixelBuffer QuorinHostMekPixelBuffer;

/* The pixel layout of a host graphics image (bits per component and pixel,
 * colour space, bitmap info, decode array, rendering intent). */
typedef struct QuorinOrlImageFormat QuorinOrlImageFormat;

/* The pixel layout of a host video image: a reference-counted record with
 * the format code, channels, YpCbCr matrix, colour space and chroma siting. */
typedef struct QuorinMekImageFormat QuorinMekImageFormat;

/* A reference-counted converter between a source and a destination format. */
typedef struct QuorinConverter QuorinConverter;

/* Inputs of the colour-space constructors: RGB primaries, a white point and
 * a parametric transfer function. */
typedef struct Quorin_RGBPrimaries Quorin_RGBPrimaries;
typedef struct Quorin_WhitePoint Quorin_WhitePoint;
typedef struct Quorin_TransferFunction Quorin_TransferFunction;

/* Not yet implemented beyond their argument checks: each returns the first
 * failing check's code, then writes the fatal record "NOT YET IMPLEMENTED"
 * and aborts where the work would start. */

/* Runs a converter over its source buffers into its destination buffers (one
 * array of records each, in the converter's buffer order). Checks: a null
 * converter, srcs or dests gives kQuorinError_NullPointer; flag bits other
 * than SingleThreaded, QueryTempSize and Verbose give
 * kQuorinError_UnsupportedFlags. */
QUORIN_API Quorin_Error QuorinConvert_AnyToAny(const QuorinConverter *converter,
                                               const Quorin_Buffer *srcs,
                                               const Quorin_Buffer *dests, void *tempBuffer,
                                               Quorin_Flags flags);

/* Whether converter must run with sources and destinations that do not
 * share memory. Same checks as QuorinConvert_AnyToAny. */
QUORIN_API Quorin_Error QuorinConverter_MustOperateOutOfPlace(const QuorinConverter *converter,
                                                              const Quorin_Buffer *srcs,
                                                              const Quorin_Buffer *dests,
                                                              Quorin_Flags flags);

/* A converter whose colour transform is a host colour-management code
 * fragment. backgroundColor holds one value per source component (or is
 * null). Returns null on failure and stores the code in *error when error is
 * not null: a null code fragment or format gives kQuorinError_NullPointer,
 * flag bits other than SingleThreaded and Verbose kQuorinError_UnsupportedFlags. */
QUORIN_API QuorinConverter *QuorinConverter_CreateWithTintweaveCodeFragment(
    const QuorinHostObject *codeFragment, const QuorinOrlImageFormat *srcFormat,
    const QuorinOrlImageFormat *destFormat, const float *backgroundColor, Quorin_Flags flags,
    Quorin_Error *error);

/* The video image format that describes a host video pixel buffer; null for
 * a null pixel buffer. The caller owns the one reference it returns. */
QUORIN_API QuorinMekImageFormat *QuorinMekImageFormat_CreateWithMekPixelBuffer(
    QuorinHostMekPixelBuffer *pixelBuffer);

/* Not yet implemented: each of these writes the fatal record "NOT YET
 * IMPLEMENTED" and aborts the process, whatever its arguments. */

/* BEGIN GENERATED by scripts/gen_stub_declarations.py: do not edit. Source:
 * src/Utilities/BasicImageTypes.def
 * src/Utilities/MekUtilitiesStubs.def */

/* Undoes the PNG row filters (sub, up, average, Paeth) in place on scanlineCount rows from
 * startScanline. */
QUORIN_API Quorin_Error QuorinPNGDecompressionFilter(
    const Quorin_Buffer *buffer, size_t startScanline, size_t scanlineCount, uint32_t bitsPerPixel,
    uint32_t filterMethod, Quorin_Flags flags);

/* Moving pixels between buffers and host video pixel buffers, converting on the way. */
QUORIN_API Quorin_Error QuorinBuffer_InitWithMekPixelBuffer(
    Quorin_Buffer *buffer, QuorinOrlImageFormat *desiredFormat,
    QuorinHostMekPixelBuffer *pixelBuffer, QuorinMekImageFormat *pixelBufferFormat,
    const float *backgroundColor, Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinBuffer_CopyToMekPixelBuffer(
    const Quorin_Buffer *buffer, const QuorinOrlImageFormat *bufferFormat,
    QuorinHostMekPixelBuffer *pixelBuffer, QuorinMekImageFormat *pixelBufferFormat,
    const float *backgroundColor, Quorin_Flags flags);

/* Host colour spaces built from primaries (or a white point) and a transfer function. */
QUORIN_API QuorinHostOrlColorSpace *QuorinCreateRGBColorSpaceWithPrimariesAndTransferFunction(
    const Quorin_RGBPrimaries *primaries, const Quorin_TransferFunction *transferFunction,
    int32_t renderingIntent, Quorin_Flags flags, Quorin_Error *error);
QUORIN_API QuorinHostOrlColorSpace *QuorinCreateMonochromeColorSpaceWithWhitePointAndTransferFunction(
    const Quorin_WhitePoint *whitePoint, const Quorin_TransferFunction *transferFunction,
    int32_t renderingIntent, Quorin_Flags flags, Quorin_Error *error);

/* Converters between host graphics image formats and host video image formats. */
QUORIN_API QuorinConverter *QuorinConverter_CreateForOrlToMekImageFormat(
    const QuorinOrlImageFormat *srcFormat, QuorinMekImageFormat *destFormat,
    const float *backgroundColor, Quorin_Flags flags, Quorin_Error *error);
QUORIN_API QuorinConverter *QuorinConverter_CreateForMekToOrlImageFormat(
    QuorinMekImageFormat *srcFormat, const QuorinOrlImageFormat *destFormat,
    const float *backgroundColor, Quorin_Flags flags, Quorin_Error *error);

/* Buffer records describing the planes of a host video pixel buffer, ready for a converter. */
QUORIN_API Quorin_Error QuorinBuffer_InitForCopyToMekPixelBuffer(
    Quorin_Buffer *buffers, const QuorinConverter *converter, QuorinHostMekPixelBuffer *pixelBuffer,
    Quorin_Flags flags);
QUORIN_API Quorin_Error QuorinBuffer_InitForCopyFromMekPixelBuffer(
    Quorin_Buffer *buffers, const QuorinConverter *converter, QuorinHostMekPixelBuffer *pixelBuffer,
    Quorin_Flags flags);
/* END GENERATED */

QUORIN_EXTERN_C_END

#endif /* QUORIN_UTILITIES_H */
