/* Quorin: the buffer record, result codes and flag bits shared by every
 * entry point. Plain C99; safe to include from C++. */
#ifndef QUORIN_TYPES_H
#define QUORIN_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define QUORIN_EXTERN_C_BEGIN extern "C" {
#define QUORIN_EXTERN_C_END }
#else
#define QUORIN_EXTERN_C_BEGIN
#define QUORIN_EXTERN_C_END
#endif

#if defined(__GNUC__) || defined(__clang__)
#define QUORIN_API __attribute__((visibility("default")))
#define QUORIN_NORETURN __attribute__((noreturn))
#else
#define QUORIN_API
#define QUORIN_NORETURN
#endif

QUORIN_EXTERN_C_BEGIN

/* One image plane or one interleaved image. Never owned by an operation.
 * Pixel (x, y) of a buffer with P bytes per pixel starts at
 * data + y * rowBytes + x * P; bytes past width * P in a row are never
 * touched. */
typedef struct Quorin_Buffer {
    void *data;
    size_t height;
    size_t width;
    size_t rowBytes;
} Quorin_Buffer;

/* 0 on success, a negative code on failure, a non-negative byte count for
 * temporary-size queries: test result < 0 for failure. */
typedef int32_t Quorin_Error;

/* Independent option bits, always the last argument. */
typedef uint32_t Quorin_Flags;

enum {
    kQuorinSuccess = 0,
    kQuorinError_RegionExceedsSource = -21766,
    kQuorinError_OutOfMemory = -21771,
    kQuorinError_NullPointer = -21772,
    kQuorinError_BadArgument = -21773,
    kQuorinError_SizeMismatch = -21774,
    kQuorinError_UnsupportedFlags = -21775,
    kQuorinError_InternalFault = -21776,
    kQuorinError_InvalidRowBytes = -21777,
    kQuorinError_UnsupportedFormat = -21778
};

enum {
    kQuorinFlag_SkipAlpha = 0x1,
    kQuorinFlag_SingleThreaded = 0x10,
    kQuorinFlag_HighQualityResampling = 0x20,
    kQuorinFlag_QueryTempSize = 0x80,
    kQuorinFlag_Verbose = 0x100,
    kQuorinFlag_NoAllocate = 0x200
};

QUORIN_EXTERN_C_END

#endif /* QUORIN_TYPES_H */
