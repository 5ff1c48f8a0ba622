// The kernel pairs of the blends: a scalar kernel (a loop over the rule in
// BlendRules.h) and its vector twin (Highway,
// chosen per instruction set at run time). Every kernel takes pointers to the
// first pixel of each buffer and a pixel count, and never cares whether that
// count spans one row or a whole contiguous image. Kernels that take `stream`
// write with streaming stores when it is set: the caller decides once per
// call, from the whole destination (WantsStreaming).
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/KernelPair.h"

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

}  // namespace quorin::alpha
