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
 * the caller releases with free(). With kQuorinFlag_NoAllocate only the record
 * is filled (data = NULL) and the row alignment (16 or 64) is returned: a
 * positive result there is not an error. */
QUORIN_API Quorin_Error QuorinBuffer_Init(Quorin_Buffer *buffer, size_t height, size_t width,
                                          uint32_t pixelBits, Quorin_Flags flags);

/* The buffer's width and height as floats that never exceed the integers. */
QUORIN_API Quorin_Size QuorinBuffer_GetSize(const Quorin_Buffer *buffer);

/* ---- Processor features ------------------------------------------------- */

/* 1 when the effective feature mask shares a bit with mask. Bit 0 means the
 * vector kernels may run on this processor. */
QUORIN_API int Quorin_HasFeature(uint64_t mask);

/* Sets the speed-up switch: all ones (the default) lets the probed processor
 * features govern; any other value except 0 is unsupported and ends the
 * process at the next feature test. */
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
 * last band takes the remainder) and runs them concurrently; returns when all
 * have finished. A null closure (or function) gives kQuorinError_InternalFault. */
QUORIN_API Quorin_Error _QuorinDispatchApplyOnRows(size_t width, size_t height,
                                                   const Quorin_PieceClosure *closure);

/* Cuts width x height into tilesAcross x tilesDown tiles (the last column and
 * row take the remainders) and runs them concurrently. When either count is 0
 * the grid is chosen from the processor count. */
QUORIN_API Quorin_Error _QuorinDispatchApplyOnGrid(size_t tilesAcross, size_t tilesDown,
                                                   size_t width, size_t height,
                                                   const Quorin_PieceClosure *closure);

QUORIN_EXTERN_C_END

#endif /* QUORIN_UTILITIES_H */
