// The kernel pairs of the flatten members: the rule of FlattenRules.h and
// its vector twins (FlattenKernels.cpp), one pair per sample type, each
// taking the call's layout, background and premultiplied flag.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Conversion/FlattenRules.h"
#include "Core/KernelPair.h"

namespace quorin::channels {

template <class T>
using FlattenKernel = void (*)(const T* src, T* dst, size_t pixels, const FlattenArgs<T>& args, bool stream);

extern const KernelPair<FlattenKernel<uint8_t>> kFlatten8Kernels;
extern const KernelPair<FlattenKernel<uint16_t>> kFlatten16Kernels;
extern const KernelPair<FlattenKernel<int16_t>> kFlattenQ12Kernels;
extern const KernelPair<FlattenKernel<float>> kFlattenFKernels;

template <class T>
const KernelPair<FlattenKernel<T>>& FlattenKernels() {
    if constexpr (std::is_same_v<T, uint8_t>) return kFlatten8Kernels;
    else if constexpr (std::is_same_v<T, uint16_t>) return kFlatten16Kernels;
    else if constexpr (std::is_same_v<T, int16_t>) return kFlattenQ12Kernels;
    else return kFlattenFKernels;
}

}  // namespace quorin::channels
