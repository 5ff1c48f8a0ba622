// Clip to alpha: premultiplied colour limited to its pixel's alpha, alpha
// copied. Rows split through a parallel apply from 64000 pixels up.
#include "Core/Checks.h"
#include "Core/Dispatch.h"
#include "Core/Walk.h"
#include "Alpha/BlendKernels.h"
#include "quorin/Alpha.h"

namespace quorin::alpha {
namespace {

template <class T>
Quorin_Error ClipInterleaved(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags,
                             const KernelPair<InterleavedClipKernel<T>>& kernels) {
    if (AnyMissing(src, dest)) return kQuorinError_NullPointer;
    if (SizesDiffer(src, dest)) return kQuorinError_BadArgument;
    if (AnyCannotDescribeImage(4 * sizeof(T), src, dest)) return kQuorinError_BadArgument;
    const Plane<T, 4> srcPlane(src), destPlane(dest);
    const auto kernel = ChooseStreaming(kernels, src->width * src->height * 4 * sizeof(T));
    RunBandsOnApply(flags, src->width, src->height, OverRows(src->width, kernel, srcPlane, destPlane));
    return kQuorinSuccess;
}

template <class T>
Quorin_Error ClipPlanar(const Quorin_Buffer* src, const Quorin_Buffer* alpha, const Quorin_Buffer* dest,
                        Quorin_Flags flags, const KernelPair<PlanarClipKernel<T>>& kernels) {
    if (AnyMissing(src, alpha, dest)) return kQuorinError_NullPointer;
    if (SizesDiffer(src, alpha, dest)) return kQuorinError_BadArgument;
    if (AnyCannotDescribeImage(sizeof(T), src, alpha, dest)) return kQuorinError_BadArgument;
    const Plane<T> srcPlane(src), alphaPlane(alpha), destPlane(dest);
    const auto kernel = ChooseStreaming(kernels, src->width * src->height * sizeof(T));
    RunBandsOnApply(flags, src->width, src->height, OverRows(src->width, kernel, srcPlane, alphaPlane, destPlane));
    return kQuorinSuccess;
}

}  // namespace
}  // namespace quorin::alpha

using namespace quorin::alpha;

extern "C" {

QUORIN_API Quorin_Error QuorinClipToAlpha_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ClipPlanar(src, alpha, dest, flags, kClipPlanar8);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ClipPlanar(src, alpha, dest, flags, kClipPlanarF);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved(src, dest, flags, kClipARGB8888);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_RGBA8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved(src, dest, flags, kClipRGBA8888);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved(src, dest, flags, kClipARGBFFFF);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_RGBAFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved(src, dest, flags, kClipRGBAFFFF);
}

}  // extern "C"
