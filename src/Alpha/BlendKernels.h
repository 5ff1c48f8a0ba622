// The kernel pairs of the blends and of clip to alpha: a scalar kernel (a loop
// over the rule in BlendRules.h / ClipRules.h) and its vector twin (Highway,
// chosen per instruction set at run time). Every kernel takes pointers to the
// first pixel of each buffer and a pixel count, and never cares whether that
// count spans one row or a whole contiguous image. Kernels that take `stream`
// write with streaming stores when it is set: the caller decides once per
// call, from the whole destination (WantsStreaming).
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/Features.h"
#include "Core/Streaming.h"

namespace quorin::alpha {

// top, bottom -> dest, four channels per pixel.
template <class T>
using InterleavedBlendKernel = void (*)(const T* top, const T* bottom, T* dest, size_t pixels, bool stream);

// Straight blend of separate colour and alpha planes: colour to dest, alpha to destAlpha.
template <class T>
using PlanarStraightKernel = void (*)(const T* top, const T* topAlpha, const T* bottom, const T* bottomAlpha, T* dest,
                                      T* destAlpha, size_t count);

// Premultiplied planes under one constant alpha.
template <class T>
using PlanarConstKernel = void (*)(const T* top, const T* topAlpha, const T* bottom, T* dest, size_t count,
                                   T constAlpha);

// src -> dest, four channels per pixel.
template <class T>
using InterleavedClipKernel = void (*)(const T* src, T* dest, size_t pixels, bool stream);

// Colour plane clipped to a separate alpha plane.
template <class T>
using PlanarClipKernel = void (*)(const T* src, const T* alpha, T* dest, size_t count, bool stream);

// The kernel `kernels` chooses, with the call's streaming decision for a
// destination of `destinationBytes` bound as its last argument.
template <class... Params>
auto ChooseStreaming(const KernelPair<void (*)(Params...)>& kernels, size_t destinationBytes) {
    return [kernel = kernels.choose(), stream = WantsStreaming(destinationBytes)](auto... args) {
        kernel(args..., stream);
    };
}

// Straight-alpha blend.
extern const KernelPair<InterleavedBlendKernel<uint8_t>> kStraightBlendARGB8888;
extern const KernelPair<InterleavedBlendKernel<float>> kStraightBlendARGBFFFF;
extern const KernelPair<PlanarStraightKernel<uint8_t>> kStraightBlendPlanar8;
extern const KernelPair<PlanarStraightKernel<float>> kStraightBlendPlanarF;

// Premultiplied blend modes, RGBA8888.
extern const KernelPair<InterleavedBlendKernel<uint8_t>> kDarkenRGBA8888;
extern const KernelPair<InterleavedBlendKernel<uint8_t>> kLightenRGBA8888;
extern const KernelPair<InterleavedBlendKernel<uint8_t>> kMultiplyRGBA8888;
extern const KernelPair<InterleavedBlendKernel<uint8_t>> kScreenRGBA8888;

// Constant-alpha blend of premultiplied planes.
extern const KernelPair<PlanarConstKernel<uint8_t>> kConstAlphaBlendPlanar8;
extern const KernelPair<PlanarConstKernel<float>> kConstAlphaBlendPlanarF;

// Clip to alpha.
extern const KernelPair<InterleavedClipKernel<uint8_t>> kClipARGB8888;
extern const KernelPair<InterleavedClipKernel<uint8_t>> kClipRGBA8888;
extern const KernelPair<InterleavedClipKernel<float>> kClipARGBFFFF;
extern const KernelPair<InterleavedClipKernel<float>> kClipRGBAFFFF;
extern const KernelPair<PlanarClipKernel<uint8_t>> kClipPlanar8;
extern const KernelPair<PlanarClipKernel<float>> kClipPlanarF;

}  // namespace quorin::alpha
