// Blends of premultiplied colour: the separable modes Darken, Lighten,
// Multiply and Screen on RGBA8888, and a top plane faded by one constant
// alpha over a bottom plane. Darken and Lighten split their rows through a
// parallel apply, Multiply and Screen through the row-work dispatcher, and
// the constant-alpha blends through the rows dispatcher.
#include "Core/Checks.h"
#include "Core/Dispatch.h"
#include "Core/Walk.h"
#include "Alpha/BlendKernels.h"
#include "quorin/Alpha.h"

namespace quorin::alpha {
namespace {

enum class Split { ParallelApply, RowWork };

Quorin_Error BlendModeRGBA8888(const Quorin_Buffer* top, const Quorin_Buffer* bottom, const Quorin_Buffer* dest,
                               Quorin_Flags flags, const KernelPair<InterleavedBlendKernel<uint8_t>>& kernels,
                               Split split) {
    if (AnyMissing(top, bottom, dest)) return kQuorinError_NullPointer;
    if (SizesDiffer(top, bottom, dest)) return kQuorinError_BadArgument;
    if (AnyCannotDescribeImage(4, top, bottom, dest)) return kQuorinError_BadArgument;
    const size_t width = top->width, height = top->height;
    const Plane<uint8_t, 4> topPlane(top), bottomPlane(bottom), destPlane(dest);
    auto band = OverRows(width, ChooseStreaming(kernels, width * height * 4), topPlane, bottomPlane, destPlane);
    if (split == Split::RowWork) {
        QuorinRunRowWork(BandWork(width, height, band), flags);
    } else {
        RunBandsOnApply(flags, width, height, band);
    }
    return kQuorinSuccess;
}

template <class T>
Quorin_Error ConstAlphaBlendPlanar(const Quorin_Buffer* top, T constAlpha, const Quorin_Buffer* topAlpha,
                                   const Quorin_Buffer* bottom, const Quorin_Buffer* dest, Quorin_Flags flags,
                                   const KernelPair<PlanarConstKernel<T>>& kernels) {
    if (AnyMissing(top, topAlpha, bottom, dest)) return kQuorinError_NullPointer;
    if (SizesDiffer(top, topAlpha, bottom, dest)) return kQuorinError_BadArgument;
    if (AnyCannotDescribeImage(sizeof(T), top, topAlpha, bottom, dest)) return kQuorinError_BadArgument;
    const PlanarConstKernel<T> kernel = kernels.choose();
    const auto withAlpha = [kernel, constAlpha](const T* t, const T* a, const T* b, T* d, size_t count) {
        kernel(t, a, b, d, count, constAlpha);
    };
    const Plane<T> topPlane(top), alphaPlane(topAlpha), bottomPlane(bottom), destPlane(dest);
    RunRows(flags, top->width, top->height, OverPieces(withAlpha, topPlane, alphaPlane, bottomPlane, destPlane));
    return kQuorinSuccess;
}

}  // namespace
}  // namespace quorin::alpha

using namespace quorin::alpha;

extern "C" {

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendDarken_RGBA8888(const Quorin_Buffer* srcTop,
                                                                     const Quorin_Buffer* srcBottom,
                                                                     const Quorin_Buffer* dest, Quorin_Flags flags) {
    return BlendModeRGBA8888(srcTop, srcBottom, dest, flags, kDarkenRGBA8888, Split::ParallelApply);
}

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendLighten_RGBA8888(const Quorin_Buffer* srcTop,
                                                                      const Quorin_Buffer* srcBottom,
                                                                      const Quorin_Buffer* dest, Quorin_Flags flags) {
    return BlendModeRGBA8888(srcTop, srcBottom, dest, flags, kLightenRGBA8888, Split::ParallelApply);
}

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendMultiply_RGBA8888(const Quorin_Buffer* srcTop,
                                                                       const Quorin_Buffer* srcBottom,
                                                                       const Quorin_Buffer* dest,
                                                                       Quorin_Flags flags) {
    return BlendModeRGBA8888(srcTop, srcBottom, dest, flags, kMultiplyRGBA8888, Split::RowWork);
}

QUORIN_API Quorin_Error QuorinPremultipliedAlphaBlendScreen_RGBA8888(const Quorin_Buffer* srcTop,
                                                                     const Quorin_Buffer* srcBottom,
                                                                     const Quorin_Buffer* dest, Quorin_Flags flags) {
    return BlendModeRGBA8888(srcTop, srcBottom, dest, flags, kScreenRGBA8888, Split::RowWork);
}

QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_Planar8(const Quorin_Buffer* srcTop, uint8_t constAlpha,
                                                                   const Quorin_Buffer* srcTopAlpha,
                                                                   const Quorin_Buffer* srcBottom,
                                                                   const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ConstAlphaBlendPlanar(srcTop, constAlpha, srcTopAlpha, srcBottom, dest, flags, kConstAlphaBlendPlanar8);
}

QUORIN_API Quorin_Error QuorinPremultipliedConstAlphaBlend_PlanarF(const Quorin_Buffer* srcTop, float constAlpha,
                                                                   const Quorin_Buffer* srcTopAlpha,
                                                                   const Quorin_Buffer* srcBottom,
                                                                   const Quorin_Buffer* dest, Quorin_Flags flags) {
    return ConstAlphaBlendPlanar(srcTop, constAlpha, srcTopAlpha, srcBottom, dest, flags, kConstAlphaBlendPlanarF);
}

}  // extern "C"
