// Clip to alpha: premultiplied colour limited to its pixel's alpha, alpha
// copied. Each entry point runs its row of the member table (BlendMembers.h).
#include "Alpha/BlendMembers.h"
#include "Alpha/ClipKernels.h"
#include "Core/Walk.h"

namespace quorin::alpha {
namespace {

template <const Member& kMember, class T>
Quorin_Error ClipInterleaved(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags,
                             const KernelPair<InterleavedClipKernel<T>>& kernels) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    if (const Quorin_Error error = RunChecks(kMember.checks, {{src, kBytes}, {dest, kBytes}}, flags)) return error;
    const Plane<T, 4> srcPlane(src), destPlane(dest);
    const auto kernel = ChooseStreaming(kernels, src->width * src->height * kBytes);
    return RunSplit<kMember.split>(flags, src->width, src->height, OverRows(src->width, kernel, srcPlane, destPlane));
}

template <const Member& kMember, class T>
Quorin_Error ClipPlanar(const Quorin_Buffer* src, const Quorin_Buffer* alpha, const Quorin_Buffer* dest,
                        Quorin_Flags flags, const KernelPair<PlanarClipKernel<T>>& kernels) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    if (const Quorin_Error error = RunChecks(kMember.checks, {{src, kBytes}, {alpha, kBytes}, {dest, kBytes}}, flags))
        return error;
    const Plane<T> srcPlane(src), alphaPlane(alpha), destPlane(dest);
    const auto kernel = ChooseStreaming(kernels, src->width * src->height * kBytes);
    return RunSplit<kMember.split>(flags, src->width, src->height,
                                   OverRows(src->width, kernel, srcPlane, alphaPlane, destPlane));
}

}  // namespace
}  // namespace quorin::alpha

using namespace quorin::alpha;

extern "C" {

QUORIN_API Quorin_Error QuorinClipToAlpha_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ClipPlanar<kClipPlanar8Member>(src, alpha, dest, flags, kClipPlanar8);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ClipPlanar<kClipPlanarFMember>(src, alpha, dest, flags, kClipPlanarF);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved<kClipARGB8888Member>(src, dest, flags, kClipARGB8888);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_RGBA8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved<kClipRGBA8888Member>(src, dest, flags, kClipRGBA8888);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved<kClipARGBFFFFMember>(src, dest, flags, kClipARGBFFFF);
}

QUORIN_API Quorin_Error QuorinClipToAlpha_RGBAFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags flags) {
    return ClipInterleaved<kClipRGBAFFFFMember>(src, dest, flags, kClipRGBAFFFF);
}

}  // extern "C"
