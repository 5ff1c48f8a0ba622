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
    static const struct {
        Quorin_Error code;
        Quorin_ErrorText text;
    } kTexts[] = {
        {kQuorinSuccess, {"kQuorinSuccess", "success"}},
        {kQuorinError_RegionExceedsSource,
         {"kQuorinError_RegionExceedsSource", "the destination is wider or taller than a source"}},
        {kQuorinError_OutOfMemory,
         {"kQuorinError_OutOfMemory", "an allocation failed (temporary buffer, pixel storage or dispatch group)"}},
        {kQuorinError_NullPointer, {"kQuorinError_NullPointer", "a required pointer is null"}},
        {kQuorinError_BadArgument,
         {"kQuorinError_BadArgument", "an argument is out of range: an empty image, a rowBytes too short for its "
                                      "row, sizes that differ (alpha family) or a size that overflows"}},
        {kQuorinError_SizeMismatch,
         {"kQuorinError_SizeMismatch", "source and destination differ in size or in rowBytes"}},
        {kQuorinError_UnsupportedFlags,
         {"kQuorinError_UnsupportedFlags", "a flag bit this operation does not accept is set"}},
        {kQuorinError_InternalFault,
         {"kQuorinError_InternalFault", "the dispatcher was given no work, or an internal step failed"}},
        {kQuorinError_InvalidRowBytes,
         {"kQuorinError_InvalidRowBytes", "a rowBytes is too short for its row or not a multiple of the sample size"}},
        {kQuorinError_UnsupportedFormat,
         {"kQuorinError_UnsupportedFormat", "an image-format record is missing, inconsistent or cannot be converted"}},
    };
    const Quorin_ErrorText positive = {"(size)", "not an error: a temporary-buffer size or a row alignment"};
    const Quorin_ErrorText unknown = {"unknown", "not a result code of this library"};
    size_t i;
    if (code > 0) return positive;
    for (i = 0; i < sizeof kTexts / sizeof kTexts[0]; ++i)
        if (kTexts[i].code == code) return kTexts[i].text;
    return unknown;
}

/* The constant's spelling, for example "kQuorinError_BadArgument". */
static inline const char *Quorin_ErrorName(Quorin_Error code) { return Quorin_DescribeError(code).name; }

/* A short explanation without a final full stop, for example "a required
 * pointer is null". */
static inline const char *Quorin_ErrorMessage(Quorin_Error code) { return Quorin_DescribeError(code).message; }

QUORIN_EXTERN_C_END

#endif /* QUORIN_ERROR_NAMES_H */
