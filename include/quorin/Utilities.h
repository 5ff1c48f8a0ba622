/* Quorin: buffers, processor features, the parallel dispatchers, and the
 * image formats and converters of the host frameworks. */
#ifndef QUORIN_UTILITIES_H
#define QUORIN_UTILITIES_H

#include "Conversion.h"
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
 * any foundation object (strings, data), a graphics colour space, a
 * graphics image and a video pixel buffer. On this platform the foundation
 * objects are the library's own (see the bridge tables below); the others
 * are whatever the client's bridge functions make of them. */
typedef struct QuorinHostObject QuorinHostObject;
typedef struct QuorinHostOrlColorSpace QuorinHostOrlColorSpace;
typedef struct QuorinHostOrlImage QuorinHostOrlImage;
typedef struct QuorinHostMekPixelBuffer QuorinHostMekPixelBuffer;

/* The pixel layout of a host graphics image. The fields are those of seven
 * 32-bit words on 32-bit builds; colorSpace and decode are pointers and keep
 * their natural width and alignment, so on 64-bit builds the record is 40
 * bytes (checked below). Copied by value; the library never retains the
 * colour space of a record or reads decode beyond the pointer. */
typedef struct QuorinOrlImageFormat {
    uint32_t bitsPerComponent;          /* bits of one channel */
    uint32_t bitsPerPixel;              /* bits of one pixel */
    QuorinHostOrlColorSpace *colorSpace; /* NULL counts as RGB */
    uint32_t bitmapInfo;                /* low 5 bits alpha placement, 0x100 float
                                           components, bits 12-14 byte order */
    uint32_t version;                   /* must be 0 */
    const float *decode;                /* decode array or NULL */
    uint32_t renderingIntent;           /* 0..4 */
} QuorinOrlImageFormat;

typedef char QuorinOrlImageFormat_SizeCheck
    [sizeof(QuorinOrlImageFormat) == (sizeof(void *) == 8 ? 40 : 28) ? 1 : -1];

/* Colour-space models of the host graphics framework that the checks name. */
enum {
    kQuorinOrlColorSpaceModel_Monochrome = 0,
    kQuorinOrlColorSpaceModel_RGB = 1,
    kQuorinOrlColorSpaceModel_Indexed = 5
};

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

/* ---- Bridges to the host frameworks ------------------------------------- */

/* The host graphics functions the library calls. The table starts all NULL;
 * a client that has the host framework installs its functions by assigning
 * the entries it has, before any call that needs them and never while such
 * a call runs on another thread:
 *
 *     _sQuorinOrlBridgeSymbolTable.ColorSpaceGetModel = MyColorSpaceGetModel;
 *
 * Each function tests its entries first and gives its documented answer
 * (0, NULL or a code) when one is missing; nothing is called through NULL.
 * Entries may be set back to NULL the same way. */
typedef struct QuorinOrlBridgeSymbolTable {
    /* Colour spaces: the model (kQuorinOrlColorSpaceModel_...), the base
     * space of an indexed space (not retained: owned by space), the number
     * of colour components, and retain/release (retain returns space). */
    int32_t (*ColorSpaceGetModel)(const QuorinHostOrlColorSpace *space);
    QuorinHostOrlColorSpace *(*ColorSpaceGetBaseColorSpace)(const QuorinHostOrlColorSpace *space);
    size_t (*ColorSpaceGetNumberOfComponents)(const QuorinHostOrlColorSpace *space);
    QuorinHostOrlColorSpace *(*ColorSpaceRetain)(QuorinHostOrlColorSpace *space);
    void (*ColorSpaceRelease)(QuorinHostOrlColorSpace *space);

    /* Image queries. The colour space and decode array are not retained:
     * they live as long as the image. */
    size_t (*ImageGetBitsPerComponent)(const QuorinHostOrlImage *image);
    size_t (*ImageGetBitsPerPixel)(const QuorinHostOrlImage *image);
    QuorinHostOrlColorSpace *(*ImageGetColorSpace)(const QuorinHostOrlImage *image);
    uint32_t (*ImageGetBitmapInfo)(const QuorinHostOrlImage *image);
    const float *(*ImageGetDecode)(const QuorinHostOrlImage *image);
    uint32_t (*ImageGetRenderingIntent)(const QuorinHostOrlImage *image);
    size_t (*ImageGetWidth)(const QuorinHostOrlImage *image);
    size_t (*ImageGetHeight)(const QuorinHostOrlImage *image);
    size_t (*ImageGetBytesPerRow)(const QuorinHostOrlImage *image);
    /* The image's pixel bytes and their count in *length; NULL when the host
     * cannot give them. They stay valid while the caller holds the image. */
    const void *(*ImageGetBytes)(const QuorinHostOrlImage *image, size_t *length);

    /* A new image (the caller owns its one reference) over `length` pixel
     * bytes laid out by format, width, height and bytesPerRow. On success
     * the host calls release(info) exactly once, when it no longer needs
     * the bytes; on failure it returns NULL and never calls release. */
    QuorinHostOrlImage *(*ImageCreate)(const QuorinOrlImageFormat *format, size_t width, size_t height,
                                       size_t bytesPerRow, const void *bytes, size_t length,
                                       void (*release)(void *info), void *info);
} QuorinOrlBridgeSymbolTable;

/* The host video functions that the pixel-buffer entry points will call;
 * installed like the graphics table. No implemented function reads it yet. */
typedef struct QuorinMekBridgeSymbolTable {
    uint32_t (*PixelBufferGetPixelFormatType)(const QuorinHostMekPixelBuffer *pixelBuffer);
    size_t (*PixelBufferGetWidth)(const QuorinHostMekPixelBuffer *pixelBuffer);
    size_t (*PixelBufferGetHeight)(const QuorinHostMekPixelBuffer *pixelBuffer);
    size_t (*PixelBufferGetPlaneCount)(const QuorinHostMekPixelBuffer *pixelBuffer);
    size_t (*PixelBufferGetBytesPerRowOfPlane)(const QuorinHostMekPixelBuffer *pixelBuffer, size_t plane);
    void *(*PixelBufferGetBaseAddressOfPlane)(const QuorinHostMekPixelBuffer *pixelBuffer, size_t plane);
    int32_t (*PixelBufferLockBaseAddress)(QuorinHostMekPixelBuffer *pixelBuffer, uint64_t lockFlags);
    int32_t (*PixelBufferUnlockBaseAddress)(QuorinHostMekPixelBuffer *pixelBuffer, uint64_t lockFlags);
} QuorinMekBridgeSymbolTable;

QUORIN_API extern QuorinOrlBridgeSymbolTable _sQuorinOrlBridgeSymbolTable;
QUORIN_API extern QuorinMekBridgeSymbolTable _sQuorinMekBridgeSymbolTable;

/* ---- Host image formats -------------------------------------------------- */

/* Whether format's colour space counts as RGB: 1 when colorSpace is NULL;
 * else 0 without the bridge's ColorSpaceGetModel; else 1 exactly when the
 * model is RGB. A NULL format gives 0. Reads only the record. */
QUORIN_API int _QuorinOrlImageFormat_IsRGBColorSpace(const QuorinOrlImageFormat *format);

/* 1 when a and b have the same colour-space object, or both count as RGB by
 * the rule above; otherwise 1 only when both spaces are non-NULL, the model
 * query is installed and both models are equal. A NULL format gives 0. */
QUORIN_API int _QuorinOrlImageFormat_IsSameColorSpace(const QuorinOrlImageFormat *a,
                                                      const QuorinOrlImageFormat *b);

/* Fills *format from the host image's queries (bits per component and
 * pixel, colour space, bitmap info, decode, rendering intent; version 0) and
 * returns 1. Returns 0, writing nothing, for a NULL format or image or when
 * any of those six image queries is missing from the bridge. The colour
 * space is not retained: the record borrows it from the image. */
QUORIN_API int _QuorinOrlImageFormat_InitFromOrlImage(QuorinOrlImageFormat *format,
                                                      const QuorinHostOrlImage *image);

/* 1 when format is usable as a source (asDestination 0) or a destination
 * (non-zero), 0 at the first rule it breaks, in this order:
 *  1. format non-NULL and version 0;
 *  2. bitsPerComponent one of 1, 2, 4, 5, 8, 12, 16, 32;
 *  3. bitmapInfo & 24 clear, byte order (bits 12-14) at most 4, and with the
 *     float bit 0x100 bitsPerComponent 16 or 32;
 *  4. renderingIntent at most 4;
 *  5. with a colour space: the bridge has ColorSpaceGetModel and
 *     ColorSpaceGetBaseColorSpace; for an indexed space bitsPerComponent in
 *     1..31 but not 5, 12 or 16, bitsPerPixel equal to it, alpha placement
 *     0, and as a destination a non-NULL base space of model 0;
 *  6. bitsPerPixel one of 1, 2, 4, 8, 16, 32. */
QUORIN_API int _QuorinOrlImageFormat_Check(const QuorinOrlImageFormat *format, int asDestination);

/* Number of colour components: 0 for a NULL record, when the bridge lacks
 * ColorSpaceGetNumberOfComponents (even for a NULL colour space), or for a
 * version other than 0; else 3 when colorSpace is NULL, and otherwise the
 * bridge's count for the colour space. */
QUORIN_API size_t QuorinOrlImageFormat_GetComponentCount(const QuorinOrlImageFormat *format);

/* The fields in which a and b differ, as a mask of the bits below,
 * restricted to the fields named in compareMask. The colour spaces differ
 * when _QuorinOrlImageFormat_IsSameColorSpace says they are not the same;
 * decode arrays differ unless both are NULL, the same pointer, or hold the
 * same 2 x GetComponentCount(a) floats (compared bit for bit; with a
 * component count of 0, as pointers). Bits of compareMask outside
 * kQuorinOrlFormatDifference_All are logged at level 3 as
 * "Unsupported diff mask: %d" (with those bits) and ignored. Two NULL
 * records do not differ; one NULL record differs in every compared field. */
enum {
    kQuorinOrlFormatDifference_BitsPerComponent = 0x1,
    kQuorinOrlFormatDifference_BitsPerPixel = 0x2,
    kQuorinOrlFormatDifference_ColorSpace = 0x4,
    kQuorinOrlFormatDifference_BitmapInfo = 0x8,
    kQuorinOrlFormatDifference_Version = 0x10,
    kQuorinOrlFormatDifference_Decode = 0x20,
    kQuorinOrlFormatDifference_RenderingIntent = 0x40,
    kQuorinOrlFormatDifference_All = 0x7F
};
QUORIN_API uint32_t _QuorinOrlImageFormat_GetDifferences(const QuorinOrlImageFormat *a,
                                                         const QuorinOrlImageFormat *b,
                                                         uint32_t compareMask);

/* 1 when a and b differ in no field (GetDifferences with every field gives
 * 0), else 0. */
QUORIN_API int QuorinOrlImageFormat_IsEqual(const QuorinOrlImageFormat *a, const QuorinOrlImageFormat *b);

/* Fills *buffer with a copy of the host image's pixels, laid out as
 * QuorinBuffer_Init lays out rows, in the image's own format (format
 * conversion is not available yet). format is in and out: a record with
 * bitsPerPixel 0 asks for the image's format and receives it; any other
 * record must equal the image's format. backgroundColor is for the
 * conversion and is not read. With kQuorinFlag_NoAllocate only the record is
 * filled (data NULL) and the row alignment returned, as QuorinBuffer_Init
 * does; nothing is copied. The caller frees buffer->data with free().
 * Accepted flags: SingleThreaded, Verbose, NoAllocate.
 * Runs on the calling thread. Codes in order, each before anything is
 * written (except that QuorinBuffer_Init's kQuorinError_OutOfMemory comes
 * after it filled the record): a NULL buffer, format or image
 * kQuorinError_NullPointer; other flags kQuorinError_UnsupportedFlags;
 * the image's format unreadable (image queries missing from the bridge) or
 * unusable as a source, a requested format unusable as a destination or
 * different from the image's kQuorinError_UnsupportedFormat; the bridge
 * lacks the size or byte queries, or the host gives no bytes,
 * kQuorinError_OutOfMemory; bytesPerRow shorter than a row, or bytes fewer
 * than the rows need, kQuorinError_BadArgument; then QuorinBuffer_Init's
 * codes (kQuorinError_BadArgument, kQuorinError_OutOfMemory). The image
 * stays the caller's. */
QUORIN_API Quorin_Error QuorinBuffer_InitWithOrlImage(Quorin_Buffer *buffer, QuorinOrlImageFormat *format,
                                                      const float *backgroundColor,
                                                      const QuorinHostOrlImage *image, Quorin_Flags flags);

/* Called when a host image made with kQuorinFlag_NoAllocate lets go of the
 * buffer's pixels: userData and the buffer's data pointer. */
typedef void (*Quorin_ReleaseBufferFunction)(void *userData, void *bufferData);

/* A new host image of buffer's pixels described by format (the caller owns
 * its one reference). Without flags the pixels are copied into storage laid
 * out by QuorinBuffer_Init, which the image owns; with
 * kQuorinFlag_NoAllocate the image wraps buffer->data without copying: the
 * pixels must then outlive the image, and releaseCallback (if not NULL) is
 * called once with userData and buffer->data when the host lets them go,
 * never when the call fails. Runs on the calling thread; the host's
 * release may come on any thread. Accepted flags: SingleThreaded, Verbose,
 * NoAllocate. Returns NULL on failure and stores the code in *error when
 * error is not NULL (0 on success). Codes in order: a NULL buffer, format or
 * buffer->data kQuorinError_NullPointer; other flags
 * kQuorinError_UnsupportedFlags; format unusable as a source
 * kQuorinError_UnsupportedFormat; a zero width or height, or rowBytes shorter
 * than a row of bitsPerPixel x width bits, kQuorinError_BadArgument; no
 * ImageCreate in the bridge kQuorinError_OutOfMemory; for a copy,
 * QuorinBuffer_Init's codes (a row of more than 2^32 bits
 * kQuorinError_BadArgument, no storage kQuorinError_OutOfMemory); no data
 * object, or the host refusing the image, kQuorinError_OutOfMemory. */
QUORIN_API QuorinHostOrlImage *QuorinCreateOrlImageFromBuffer(const Quorin_Buffer *buffer,
                                                              const QuorinOrlImageFormat *format,
                                                              Quorin_ReleaseBufferFunction releaseCallback,
                                                              void *userData, Quorin_Flags flags,
                                                              Quorin_Error *error);

/* ---- Converters ------------------------------------------------------------ */

/* A converter from source to destination (the caller owns its one
 * reference), with one 32-bit background value per source component copied
 * from background (their bits, unchanged), or zeros when background is NULL.
 * background must hold GetComponentCount(source) values. Both buffer orders
 * are (24, 0): one interleaved buffer each. Accepted flags: SingleThreaded,
 * Verbose. Returns NULL on failure, storing the code in *error when error is
 * not NULL (0 on success). Codes in order: a NULL source or destination
 * kQuorinError_NullPointer; other flags kQuorinError_UnsupportedFlags; source
 * failing _QuorinOrlImageFormat_Check as a source, or destination as a
 * destination, kQuorinError_UnsupportedFormat; the block not to be had
 * kQuorinError_OutOfMemory. The formats are copied; their colour spaces are
 * not retained and must outlive the converter. A converter may be shared
 * between threads: only its reference count changes after creation. */
QUORIN_API QuorinConverter *QuorinConverter_CreateWithOrlImageFormat(const QuorinOrlImageFormat *source,
                                                                     const QuorinOrlImageFormat *destination,
                                                                     const float *background, Quorin_Flags flags,
                                                                     Quorin_Error *error);

/* Adds a reference; NULL is ignored. Any thread, atomic. */
QUORIN_API void QuorinConverter_Retain(QuorinConverter *converter);

/* Drops a reference between full fences; the call that drops the last one
 * frees the converter. NULL is ignored. Any thread. */
QUORIN_API void QuorinConverter_Release(QuorinConverter *converter);

/* 1 for a converter, 0 for NULL. */
QUORIN_API uint32_t QuorinConverter_GetNumberOfSourceBuffers(const QuorinConverter *converter);
QUORIN_API uint32_t QuorinConverter_GetNumberOfDestinationBuffers(const QuorinConverter *converter);

/* The converter's 0-terminated list of buffer-type codes (24: one
 * interleaved buffer), owned by the converter; NULL for NULL. */
QUORIN_API const uint32_t *QuorinConverter_GetSourceBufferOrder(const QuorinConverter *converter);
QUORIN_API const uint32_t *QuorinConverter_GetDestinationBufferOrder(const QuorinConverter *converter);

/* ---- Video image formats ----------------------------------------------------- */

/* YpCbCr <-> RGB matrices of ITU-R BT.601-4 and BT.709-2 (pointers to
 * constant records), and a decode array for 16Q12 samples (zeros; the
 * library neither reads nor writes it). A YpCbCr -> RGB record is followed
 * by zeros up to 32 bytes, so any of the four may be handed to
 * QuorinMekImageFormat_Create or _CopyConversionMatrix, which read 32. */
QUORIN_API extern const Quorin_YpCbCrToARGBMatrix *const kQuorin_YpCbCrToARGBMatrix_ITU_R_601_4;
QUORIN_API extern const Quorin_YpCbCrToARGBMatrix *const kQuorin_YpCbCrToARGBMatrix_ITU_R_709_2;
QUORIN_API extern const Quorin_ARGBToYpCbCrMatrix *const kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4;
QUORIN_API extern const Quorin_ARGBToYpCbCrMatrix *const kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2;
QUORIN_API extern float kQuorinDecodeArray_16Q12Format[6];

/* Conversion-matrix types of a video image format. */
enum { kQuorinMekMatrixType_None = 0, kQuorinMekMatrixType_YpCbCr = 1 };

/* Releases userData when it is replaced or its record destroyed. */
typedef void (*QuorinMekImageFormat_ReleaseUserData)(QuorinMekImageFormat *format, void *userData);

/* A new video image format (the caller owns its one reference; NULL when
 * the object cannot be made): formatCode, a copy of the 32 bytes at matrix
 * (matrix type 1) or a zero matrix of type 0 for NULL, and alphaHint; no
 * channels, no user data. chromaSiting (a foundation string) is retained.
 * colorSpace is retained through the bridge's ColorSpaceRetain; without
 * that entry it is stored unretained, and then it is not released either
 * (ColorSpaceRelease is likewise skipped when missing), so the caller must
 * keep it alive as long as the record. */
QUORIN_API QuorinMekImageFormat *QuorinMekImageFormat_Create(uint32_t formatCode, const void *matrix,
                                                             QuorinHostObject *chromaSiting,
                                                             QuorinHostOrlColorSpace *colorSpace,
                                                             uint32_t alphaHint);

/* A new record (one reference, the caller's) with format's code, channel
 * names and descriptions (own copies), alpha hint, matrix and type, and new
 * retains of its chroma siting and colour space (as in _Create). The user
 * data and its release function are not copied. NULL for NULL or when
 * memory is short. */
QUORIN_API QuorinMekImageFormat *QuorinMekImageFormat_Copy(const QuorinMekImageFormat *format);

/* Add and drop a reference (atomic, any thread); NULL is ignored. Dropping
 * the last one calls the user-data release function (if any) with the
 * record and its data, frees the channel arrays, and releases the chroma
 * siting and the colour space. */
QUORIN_API void QuorinMekImageFormat_Retain(QuorinMekImageFormat *format);
QUORIN_API void QuorinMekImageFormat_Release(QuorinMekImageFormat *format);

/* The fields; 0 or NULL for a NULL record. Returned objects and arrays are
 * the record's (not retained). */
QUORIN_API uint32_t QuorinMekImageFormat_GetFormatCode(const QuorinMekImageFormat *format);
QUORIN_API uint32_t QuorinMekImageFormat_GetChannelCount(const QuorinMekImageFormat *format);
QUORIN_API const uint32_t *QuorinMekImageFormat_GetChannelNames(const QuorinMekImageFormat *format);
QUORIN_API QuorinHostOrlColorSpace *QuorinMekImageFormat_GetColorSpace(const QuorinMekImageFormat *format);
QUORIN_API QuorinHostObject *QuorinMekImageFormat_GetChromaSiting(const QuorinMekImageFormat *format);
QUORIN_API uint32_t QuorinMekImageFormat_GetAlphaHint(const QuorinMekImageFormat *format);
QUORIN_API void *QuorinMekImageFormat_GetUserData(const QuorinMekImageFormat *format);

/* Replace the colour space (release the old through the bridge, retain the
 * new; each skipped when its entry is missing) or the chroma siting
 * (foundation release and retain). NULL format: kQuorinError_UnsupportedFormat;
 * else 0. Not thread-safe on one record. */
QUORIN_API Quorin_Error QuorinMekImageFormat_SetColorSpace(QuorinMekImageFormat *format,
                                                           QuorinHostOrlColorSpace *colorSpace);
QUORIN_API Quorin_Error QuorinMekImageFormat_SetChromaSiting(QuorinMekImageFormat *format,
                                                             QuorinHostObject *chromaSiting);

/* Stores the hint. NULL format: kQuorinError_BadArgument (not
 * kQuorinError_UnsupportedFormat like the other setters); else 0. */
QUORIN_API Quorin_Error QuorinMekImageFormat_SetAlphaHint(QuorinMekImageFormat *format, uint32_t alphaHint);

/* Calls the previous release function (if any) with the record and the
 * previous data, then stores userData and release. NULL format:
 * kQuorinError_UnsupportedFormat; else 0. */
QUORIN_API Quorin_Error QuorinMekImageFormat_SetUserData(QuorinMekImageFormat *format, void *userData,
                                                         QuorinMekImageFormat_ReleaseUserData release);

/* The record's 32-byte matrix storage (never NULL for a record, even of
 * type 0) with its type in *matrixType when matrixType is not NULL. A NULL
 * format gives NULL and type 0. */
QUORIN_API const void *QuorinMekImageFormat_GetConversionMatrix(const QuorinMekImageFormat *format,
                                                                uint32_t *matrixType);

/* Sets the matrix: type 0 sets the type and copies nothing; type 1 copies
 * 32 bytes from matrix. Codes: NULL format kQuorinError_UnsupportedFormat;
 * type 1 with a NULL matrix kQuorinError_NullPointer; any other type is
 * logged at level 3 as "Unhandled matrix type %d" and gives
 * kQuorinError_BadArgument; the record is unchanged on failure. */
QUORIN_API Quorin_Error QuorinMekImageFormat_CopyConversionMatrix(QuorinMekImageFormat *format,
                                                                  const void *matrix, uint32_t matrixType);

/* The 16-byte description of the first channel named name (a linear
 * search), owned by the record; NULL for a NULL record, no channels or no
 * match. */
QUORIN_API const void *QuorinMekImageFormat_GetChannelDescription(const QuorinMekImageFormat *format,
                                                                  uint32_t name);

/* Copies 16 bytes from description into the first channel named name.
 * Codes in order: NULL format kQuorinError_UnsupportedFormat; no channels,
 * or no channel of that name, kQuorinError_BadArgument; a NULL description
 * kQuorinError_NullPointer; else 0. */
QUORIN_API Quorin_Error QuorinMekImageFormat_CopyChannelDescription(QuorinMekImageFormat *format,
                                                                    const void *description, uint32_t name);

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
