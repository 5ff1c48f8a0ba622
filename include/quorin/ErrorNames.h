/* Quorin: the name and a short explanation of a result code, for messages:
 *
 *   Quorin_Error e = QuorinPremultiplyData_ARGB8888(&src, &dest, 0);
 *   if (e < 0) fprintf(stderr, "premultiply: %s (%d): %s\n",
 *                      Quorin_ErrorName(e), (int)e, Quorin_ErrorMessage(e));
 *
 * Header only: these are static inline functions, so the library exports
 * nothing for them and any version of the headers describes its own codes.
 * The texts are plain ASCII and never change at run time. Plain C99; safe to
 * include from C++. */
#ifndef QUORIN_ERROR_NAMES_H
#define QUORIN_ERROR_NAMES_H

#include "Types.h"

QUORIN_EXTERN_C_BEGIN

typedef struct Quorin_ErrorText {
    const char *name;    /* the constant's spelling: "kQuorinError_NullPointer" */
    const char *message; /* what a caller should look at, in a few words */
} Quorin_ErrorText;

/* Both texts of a result. A positive result is not an error: it is a
 * temporary-buffer size, or the row alignment QuorinBuffer_Init returns with
 * kQuorinFlag_NoAllocate. A negative value this library never returns gets
 * "unknown". */
static inline Quorin_ErrorText Quorin_DescribeError(Quorin_Error code) {
    Quorin_ErrorText text = {"unknown", "not a result code of this library"};
    if (code > 0) {
        text.name = "(size)";
        text.message = "not an error: a temporary-buffer size or a row alignment";
        return text;
    }
    switch (code) {
    case kQuorinSuccess:
        text.name = "kQuorinSuccess";
        text.message = "success";
        break;
    case kQuorinError_RegionExceedsSource:
        text.name = "kQuorinError_RegionExceedsSource";
        text.message = "the destination is wider or taller than a source";
        break;
    case kQuorinError_OutOfMemory:
        text.name = "kQuorinError_OutOfMemory";
        text.message = "an allocation failed (temporary buffer, pixel storage or dispatch group)";
        break;
    case kQuorinError_NullPointer:
        text.name = "kQuorinError_NullPointer";
        text.message = "a required pointer is null";
        break;
    case kQuorinError_BadArgument:
        text.name = "kQuorinError_BadArgument";
        text.message = "an argument is out of range: an empty image, a rowBytes too short for its row, "
                       "sizes that differ (alpha family) or a size that overflows";
        break;
    case kQuorinError_SizeMismatch:
        text.name = "kQuorinError_SizeMismatch";
        text.message = "source and destination differ in size or in rowBytes";
        break;
    case kQuorinError_UnsupportedFlags:
        text.name = "kQuorinError_UnsupportedFlags";
        text.message = "a flag bit this operation does not accept is set";
        break;
    case kQuorinError_InternalFault:
        text.name = "kQuorinError_InternalFault";
        text.message = "the dispatcher was given no work, or an internal step failed";
        break;
    case kQuorinError_InvalidRowBytes:
        text.name = "kQuorinError_InvalidRowBytes";
        text.message = "a rowBytes is too short for its row or not a multiple of the sample size";
        break;
    case kQuorinError_UnsupportedFormat:
        text.name = "kQuorinError_UnsupportedFormat";
        text.message = "an image-format record is missing, inconsistent or cannot be converted";
        break;
    default:
        break;
    }
    return text;
}

/* The constant's spelling, for example "kQuorinError_BadArgument". */
static inline const char *Quorin_ErrorName(Quorin_Error code) { return Quorin_DescribeError(code).name; }

/* A short explanation without a final full stop, for example "a required
 * pointer is null". */
static inline const char *Quorin_ErrorMessage(Quorin_Error code) { return Quorin_DescribeError(code).message; }

QUORIN_EXTERN_C_END

#endif /* QUORIN_ERROR_NAMES_H */
