// The kernel pairs of premultiply and unpremultiply: each rule's scalar
// kernel (PremultiplyRules.h) and its vector twin (PremultiplyKernels.cpp),
// which gives the same bytes for every input, any count, and dst equal to a
// source. Kernels<Rule>::pixels takes four-channel pixels with alpha in the
// channel `alpha` (any of the four); Kernels<Rule>::plane a colour plane and
// its alpha plane, for the rules that have planar members. `stream` is the
// call's streaming decision (WantsStreaming of the whole destination).
#pragma once

#include <cstddef>
#include <cstdint>

#include "Alpha/PremultiplyRules.h"
#include "Core/KernelPair.h"

namespace quorin::premultiply {

template <class Sample>
using PixelKernel = void (*)(const Sample* src, Sample* dst, size_t pixels, size_t alpha, bool stream);
template <class Sample>
using PlaneKernel = void (*)(const Sample* src, const Sample* alpha, Sample* dst, size_t count, bool stream);

template <class Rule>
struct Kernels;

template <>
struct Kernels<Premultiply8> {
    static const KernelPair<PixelKernel<uint8_t>> pixels;
    static const KernelPair<PlaneKernel<uint8_t>> plane;
};
template <>
struct Kernels<Unpremultiply8> {
    static const KernelPair<PixelKernel<uint8_t>> pixels;
    static const KernelPair<PlaneKernel<uint8_t>> plane;
};
template <>
struct Kernels<Premultiply16U> {
    static const KernelPair<PixelKernel<uint16_t>> pixels;
};
template <>
struct Kernels<Unpremultiply16U> {
    static const KernelPair<PixelKernel<uint16_t>> pixels;
};
template <>
struct Kernels<Premultiply16Q12> {
    static const KernelPair<PixelKernel<int16_t>> pixels;
};
template <>
struct Kernels<Unpremultiply16Q12> {
    static const KernelPair<PixelKernel<int16_t>> pixels;
};
template <>
struct Kernels<PremultiplyF> {
    static const KernelPair<PixelKernel<float>> pixels;
    static const KernelPair<PlaneKernel<float>> plane;
};
template <>
struct Kernels<UnpremultiplyF> {
    static const KernelPair<PixelKernel<float>> pixels;
    static const KernelPair<PlaneKernel<float>> plane;
};

}  // namespace quorin::premultiply
