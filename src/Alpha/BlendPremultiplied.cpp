// Blends of premultiplied colour: the separable modes Darken, Lighten,
// Multiply and Screen on RGBA8888, and a top plane faded by one constant
// alpha over a bottom plane. Each entry point runs its row of the member
// table (BlendMembers.h), which names its split: a parallel apply for
// Darken and Lighten, the row-work dispatcher for Multiply and Screen, the
// rows dispatcher for the constant-alpha blends.
#include "Alpha/BlendKernels.h"
#include "Alpha/BlendMembers.h"
#include "Core/Walk.h"

namespace quorin::alpha {
namespace {

template <const Member& kMember>
Quorin_Error BlendModeRGBA8888(const Quorin_Buffer* top, const Quorin_Buffer* bottom, const Quorin_Buffer* dest,
                               Quorin_Flags flags, const KernelPair<InterleavedBlendKernel<uint8_t>>& kernels) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    if (const Quorin_Error error = RunChecks(kMember.checks, {{top, kBytes}, {bottom, kBytes}, {dest, kBytes}}, flags))
        return error;
    const size_t width = top->width, height = top->height;
    const Plane<uint8_t, 4> topPlane(top), bottomPlane(bottom), destPlane(dest);
    return RunSplit<kMember.split>(
        flags, width, height,
        OverRows(width, ChooseStreaming(kernels, width * height * kBytes), topPlane, bottomPlane, destPlane));
}

template <const Member& kMember, class T>
Quorin_Error ConstAlphaBlendPlanar(const Quorin_Buffer* top, T constAlpha, const Quorin_Buffer* topAlpha,
                                   const Quorin_Buffer* bottom, const Quorin_Buffer* dest, Quorin_Flags flags,
                                   const KernelPair<PlanarConstKernel<T>>& kernels) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    if (const Quorin_Error error =
            RunChecks(kMember.checks, {{top, kBytes}, {topAlpha, kBytes}, {bottom, kBytes}, {dest, kBytes}}, flags))
        return error;
    const PlanarConstKernel<T> kernel = kernels.choose();
    const auto withAlpha = [kernel, constAlpha](const T* t, const T* a, const T* b, T* d, size_t count) {
        kernel(t, a, b, d, count, constAlpha);
    };
    const Plane<T> topPlane(top), alphaPlane(topAlpha), bottomPlane(bottom), destPlane(dest);
    return RunSplit<kMember.split>(flags, top->width, top->height,
                                   OverRows(top->width, withAlpha, topPlane, alphaPlane, bottomPlane, destPlane));
}

}  // namespace
}  // namespace quorin::alpha

using namespace quorin::alpha;

extern "C" {

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendDarken_RGBA8888(const Quorin_Buffer* srcTop,
                                                                     const Quorin_Buffer* srcBottom,
                                                                     const Quorin_Buffer* dest, Quorin_Flags flags) {
    return BlendModeRGBA8888<kDarkenMember>(srcTop, srcBottom, dest, flags, kDarkenRGBA8888);
}

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendLighten_RGBA8888(const Quorin_Buffer* srcTop,
                                                                      const Quorin_Buffer* srcBottom,
                                                                      const Quorin_Buffer* dest, Quorin_Flags flags) {
    return BlendModeRGBA8888<kLightenMember>(srcTop, srcBottom, dest, flags, kLightenRGBA8888);
}

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendMultiply_RGBA8888(const Quorin_Buffer* srcTop,
                                                                       const Quorin_Buffer* srcBottom,
                                                                       const Quorin_Buffer* dest,
                                                                       Quorin_Flags flags) {
    return BlendModeRGBA8888<kMultiplyMember>(srcTop, srcBottom, dest, flags, kMultiplyRGBA8888);
}

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendScreen_RGBA8888(const Quorin_Buffer* srcTop,
                                                                     const Quorin_Buffer* srcBottom,
                                                                     const Quorin_Buffer* dest, Quorin_Flags flags) {
    return BlendModeRGBA8888<kScreenMember>(srcTop, srcBottom, dest, flags, kScreenRGBA8888);
}

QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_Planar8(const Quorin_Buffer* srcTop, uint8_t constAlpha,
                                                                   const Quorin_Buffer* srcTopAlpha,
                                                                   const Quorin_Buffer* srcBottom,
                                                                   const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ConstAlphaBlendPlanar<kConstAlphaBlendPlanar8Member>(srcTop, constAlpha, srcTopAlpha, srcBottom, dest,
                                                                flags, kConstAlphaBlendPlanar8);
}

QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_PlanarF(const Quorin_Buffer* srcTop, float constAlpha,
                                                                   const Quorin_Buffer* srcTopAlpha,
                                                                   const Quorin_Buffer* srcBottom,
                                                                   const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ConstAlphaBlendPlanar<kConstAlphaBlendPlanarFMember>(srcTop, constAlpha, srcTopAlpha, srcBottom, dest,
                                                                flags, kConstAlphaBlendPlanarF);
}

}  // extern "C"
