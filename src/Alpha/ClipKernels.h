// The kernel pairs of clip to alpha: a scalar kernel (a loop over the rule in
// ClipRules.h) and its vector twin (ClipKernels.cpp). Kernels take pointers
// to the first pixel of each buffer and a pixel count; `stream` asks for
// streaming stores, decided once per call from the whole destination.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/KernelPair.h"

namespace quorin::alpha {

// src -> dest, four channels per pixel.
template <class T>
using InterleavedClipKernel = void (*)(const T* src, T* dest, size_t pixels, bool stream);

// Colour plane clipped to a separate alpha plane.
template <class T>
using PlanarClipKernel = void (*)(const T* src, const T* alpha, T* dest, size_t count, bool stream);

// Clip to alpha.
extern const KernelPair<InterleavedClipKernel<uint8_t>> kClipARGB8888;
extern const KernelPair<InterleavedClipKernel<uint8_t>> kClipRGBA8888;
extern const KernelPair<InterleavedClipKernel<float>> kClipARGBFFFF;
extern const KernelPair<InterleavedClipKernel<float>> kClipRGBAFFFF;
extern const KernelPair<PlanarClipKernel<uint8_t>> kClipPlanar8;
extern const KernelPair<PlanarClipKernel<float>> kClipPlanarF;

}  // namespace quorin::alpha
