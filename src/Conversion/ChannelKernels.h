// The kernel pairs of the channel operations: the scalar rules of
// ChannelRules.h and their vector twins (ChannelKernels.cpp), identical in
// bytes for every input and count. `stream` is the call's streaming decision.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Conversion/ChannelRules.h"
#include "Core/KernelPair.h"

namespace quorin::channels {

using FillKernel = void (*)(uint8_t* dst, size_t bytes, const uint8_t* pattern, size_t pixelBytes, bool stream);
using SelectKernel = void (*)(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* pattern,
                              const uint8_t* mask, size_t pixelBytes, bool stream);
using ClipKernel = void (*)(const float* src, float* dst, size_t count, float upper, float lower, bool stream);

extern const KernelPair<FillKernel> kFillKernels;
extern const KernelPair<SelectKernel> kSelectKernels;
extern const KernelPair<ClipKernel> kClipKernels;

}  // namespace quorin::channels
