// Top over bottom for straight (non-premultiplied) colour with its own alpha:
// the result alpha is aT + (1 - aT) aB and the colour is renormalised by it.
// Bands of rows go to a dispatch group from 64000 pixels up.
#include "Core/Checks.h"
#include "Core/Dispatch.h"
#include "Core/Walk.h"
#include "Alpha/BlendKernels.h"
#include "quorin/Alpha.h"

namespace quorin::alpha {
namespace {

template <class T>
Quorin_Error StraightBlendInterleaved(const Quorin_Buffer* top, const Quorin_Buffer* bottom,
                                      const Quorin_Buffer* dest, Quorin_Flags flags,
                                      const KernelPair<InterleavedBlendKernel<T>>& kernels) {
    if (AnyMissing(top, bottom, dest)) return kQuorinError_NullPointer;
    if (SizesDiffer(top, bottom, dest)) return kQuorinError_BadArgument;
    if (AnyCannotDescribeImage(4 * sizeof(T), top, bottom, dest)) return kQuorinError_BadArgument;
    const size_t width = dest->width;
    const Plane<T, 4> topPlane(top), bottomPlane(bottom), destPlane(dest);
    const auto kernel = ChooseStreaming(kernels, width * dest->height * 4 * sizeof(T));
    return RunBandsOnGroup(flags, width, dest->height, OverRows(width, kernel, topPlane, bottomPlane, destPlane));
}

// Only the top colour, the bottom colour and the result-alpha plane are
// checked; the two source alpha planes and the colour destination are taken
// to match them, and are refused only when the walk would leave them.
template <class T>
Quorin_Error StraightBlendPlanar(const Quorin_Buffer* top, const Quorin_Buffer* topAlpha,
                                 const Quorin_Buffer* bottom, const Quorin_Buffer* bottomAlpha,
                                 const Quorin_Buffer* dest, const Quorin_Buffer* destAlpha, Quorin_Flags flags,
                                 const KernelPair<PlanarStraightKernel<T>>& kernels) {
    if (AnyMissing(top, bottom, destAlpha)) return kQuorinError_NullPointer;
    if (SizesDiffer(top, bottom, destAlpha)) return kQuorinError_BadArgument;
    const size_t width = top->width, height = top->height;
    if (AnyCannotDescribeImage(sizeof(T), top, bottom, destAlpha) ||
        CannotHoldRegion(topAlpha, sizeof(T), width, height) ||
        CannotHoldRegion(bottomAlpha, sizeof(T), width, height) || CannotHoldRegion(dest, sizeof(T), width, height))
        return kQuorinError_BadArgument;
    const Plane<T> planes[] = {top, topAlpha, bottom, bottomAlpha, dest, destAlpha};
    return RunBandsOnGroup(flags, width, height,
                           OverRows(width, kernels.choose(), planes[0], planes[1], planes[2], planes[3], planes[4],
                                    planes[5]));
}

}  // namespace
}  // namespace quorin::alpha

using namespace quorin::alpha;

extern "C" {

QUORIN_API Quorin_Error QuorinAlphaBlend_ARGB8888(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcBottom,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return StraightBlendInterleaved(srcTop, srcBottom, dest, flags, kStraightBlendARGB8888);
}

QUORIN_API Quorin_Error QuorinAlphaBlend_ARGBFFFF(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcBottom,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return StraightBlendInterleaved(srcTop, srcBottom, dest, flags, kStraightBlendARGBFFFF);
}

QUORIN_API Quorin_Error QuorinAlphaBlend_Planar8(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcTopAlpha,
                                                 const Quorin_Buffer* srcBottom, const Quorin_Buffer* srcBottomAlpha,
                                                 const Quorin_Buffer* dest, const Quorin_Buffer* destAlpha,
                                                 Quorin_Flags flags) {
    return StraightBlendPlanar(srcTop, srcTopAlpha, srcBottom, srcBottomAlpha, dest, destAlpha, flags,
                               kStraightBlendPlanar8);
}

QUORIN_API Quorin_Error QuorinAlphaBlend_PlanarF(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcTopAlpha,
                                                 const Quorin_Buffer* srcBottom, const Quorin_Buffer* srcBottomAlpha,
                                                 const Quorin_Buffer* dest, const Quorin_Buffer* destAlpha,
                                                 Quorin_Flags flags) {
    return StraightBlendPlanar(srcTop, srcTopAlpha, srcBottom, srcBottomAlpha, dest, destAlpha, flags,
                               kStraightBlendPlanarF);
}

}  // extern "C"
