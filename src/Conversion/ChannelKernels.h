// The kernel pairs of the channel operations: the scalar rules of
// ChannelRules.h and their vector twins (ChannelKernels.cpp), identical in
// bytes for every input and count. `stream` is the call's streaming decision.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Conversion/ChannelRules.h"
#include "Core/KernelPair.h"
#include "Core/SourcePrefetch.h"

namespace quorin::channels {

using FillKernel = void (*)(uint8_t* dst, size_t bytes, const uint8_t* pattern, size_t pixelBytes, bool stream);
using SelectKernel = void (*)(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* pattern,
                              const uint8_t* mask, size_t pixelBytes, bool stream);
using PermuteKernel = void (*)(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* order,
                               size_t pixelBytes, bool stream);
template <class T>
using ExtractKernel = void (*)(const T* src, T* dst, size_t count, size_t channel, bool stream);
using ClipKernel = void (*)(const float* src, float* dst, size_t count, float upper, float lower, bool stream);
// Copies `bytes` bytes of each of `rows` rows between buffers that do not overlap.
using CopyKernel = void (*)(const uint8_t* src, size_t srcRowBytes, uint8_t* dst, size_t dstRowBytes, size_t bytes,
                            size_t rows, bool stream);

using SelectTwoKernel = void (*)(const uint8_t* a, const uint8_t* b, uint8_t* dst, size_t bytes, const uint8_t* mask,
                                 size_t pixelBytes, bool stream);
template <class T>
using FromPlaneKernel = void (*)(const T* plane, const T* src, T* dst, size_t count, const Selected& selected,
                                 bool stream);
using LookUpKernel = void (*)(const uint8_t* src, uint8_t* dst, size_t bytes, const Tables& tables);

extern const KernelPair<FillKernel> kFillKernels;
extern const KernelPair<SelectKernel> kSelectKernels;
extern const KernelPair<ClipKernel> kClipKernels;
extern const KernelPair<PermuteKernel> kPermuteKernels;
extern const KernelPair<CopyKernel> kCopyKernels;
// The vector twins read whole pixels for all but the last element, which
// may lie in the last bytes of a buffer.
extern const KernelPair<ExtractKernel<uint8_t>> kExtract8Kernels;
extern const KernelPair<ExtractKernel<uint16_t>> kExtract16Kernels;
extern const KernelPair<ExtractKernel<float>> kExtractFKernels;

extern const KernelPair<SelectTwoKernel> kSelectTwoKernels;
extern const KernelPair<FromPlaneKernel<uint8_t>> kFromPlane8Kernels;
extern const KernelPair<FromPlaneKernel<float>> kFromPlaneFKernels;
extern const KernelPair<LookUpKernel> kLookUpKernels;

template <class T>
const KernelPair<FromPlaneKernel<T>>& FromPlaneKernels() {
    if constexpr (sizeof(T) == 1) return kFromPlane8Kernels;
    else return kFromPlaneFKernels;
}

template <class T>
const KernelPair<ExtractKernel<T>>& ExtractKernels() {
    if constexpr (sizeof(T) == 1) return kExtract8Kernels;
    else if constexpr (sizeof(T) == 2) return kExtract16Kernels;
    else return kExtractFKernels;
}

}  // namespace quorin::channels
