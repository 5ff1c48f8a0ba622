// Top over bottom for straight (non-premultiplied) colour with its own alpha:
// the result alpha is aT + (1 - aT) aB and the colour is renormalised by it.
// Each entry point runs its row of the member table (BlendMembers.h).
#include "Alpha/BlendKernels.h"
#include "Alpha/BlendMembers.h"
#include "Core/Walk.h"

namespace quorin::alpha {
namespace {

template <const Member& kMember, class T>
Quorin_Error StraightBlendInterleaved(const Quorin_Buffer* top, const Quorin_Buffer* bottom,
                                      const Quorin_Buffer* dest, Quorin_Flags flags,
                                      const KernelPair<InterleavedBlendKernel<T>>& kernels) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    if (const Quorin_Error error = RunChecks(kMember.checks, {{top, kBytes}, {bottom, kBytes}, {dest, kBytes}}, flags))
        return error;
    const size_t width = dest->width;
    const Plane<T, 4> topPlane(top), bottomPlane(bottom), destPlane(dest);
    const auto kernel = ChooseStreaming(kernels, width * dest->height * kBytes);
    return RunSplit<kMember.split>(flags, width, dest->height,
                                   OverRows(width, kernel, topPlane, bottomPlane, destPlane));
}

template <const Member& kMember, class T>
Quorin_Error StraightBlendPlanar(const Quorin_Buffer* top, const Quorin_Buffer* topAlpha,
                                 const Quorin_Buffer* bottom, const Quorin_Buffer* bottomAlpha,
                                 const Quorin_Buffer* dest, const Quorin_Buffer* destAlpha, Quorin_Flags flags,
                                 const KernelPair<PlanarStraightKernel<T>>& kernels) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    const Operand operands[] = {{top, kBytes},         {topAlpha, kBytes}, {bottom, kBytes},
                                {bottomAlpha, kBytes}, {dest, kBytes},     {destAlpha, kBytes}};
    if (const Quorin_Error error = RunChecks(kMember.checks, operands, flags)) return error;
    const size_t width = top->width;
    const Plane<T> planes[] = {top, topAlpha, bottom, bottomAlpha, dest, destAlpha};
    return RunSplit<kMember.split>(flags, width, top->height,
                                   OverRows(width, kernels.choose(), planes[0], planes[1], planes[2], planes[3],
                                            planes[4], planes[5]));
}

}  // namespace
}  // namespace quorin::alpha

using namespace quorin::alpha;

extern "C" {

QUORIN_API Quorin_Error QuorinAlphaBlend_ARGB8888(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcBottom,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return StraightBlendInterleaved<kStraightBlendARGB8888Member>(srcTop, srcBottom, dest, flags,
                                                                  kStraightBlendARGB8888);
}

QUORIN_API Quorin_Error QuorinAlphaBlend_ARGBFFFF(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcBottom,
                                                  const Quorin_Buffer* dest, Quorin_Flags flags) {
    return StraightBlendInterleaved<kStraightBlendARGBFFFFMember>(srcTop, srcBottom, dest, flags,
                                                                  kStraightBlendARGBFFFF);
}

QUORIN_API Quorin_Error QuorinAlphaBlend_Planar8(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcTopAlpha,
                                                 const Quorin_Buffer* srcBottom, const Quorin_Buffer* srcBottomAlpha,
                                                 const Quorin_Buffer* dest, const Quorin_Buffer* destAlpha,
                                                 Quorin_Flags flags) {
    return StraightBlendPlanar<kStraightBlendPlanar8Member>(srcTop, srcTopAlpha, srcBottom, srcBottomAlpha, dest,
                                                            destAlpha, flags, kStraightBlendPlanar8);
}

QUORIN_API Quorin_Error QuorinAlphaBlend_PlanarF(const Quorin_Buffer* srcTop, const Quorin_Buffer* srcTopAlpha,
                                                 const Quorin_Buffer* srcBottom, const Quorin_Buffer* srcBottomAlpha,
                                                 const Quorin_Buffer* dest, const Quorin_Buffer* destAlpha,
                                                 Quorin_Flags flags) {
    return StraightBlendPlanar<kStraightBlendPlanarFMember>(srcTop, srcTopAlpha, srcBottom, srcBottomAlpha, dest,
                                                            destAlpha, flags, kStraightBlendPlanarF);
}

}  // extern "C"
