// The kernel pairs of the convolution family: the scalar rules of
// ConvolutionRules.h and their vector twins (ConvolutionKernels.cpp),
// identical in bytes for every input.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Convolution/ConvolutionRules.h"
#include "Core/KernelPair.h"

namespace quorin::convolution {

// Pixels [first, first + count) of one output row of the general convolution.
using ConvolveRowKernel = void (*)(const uint8_t* const* rows, uint8_t* out, size_t first, size_t count,
                                   const ConvolveShape& shape);
// One whole pass of the box filter (BoxPass).
using BoxPassKernel = void (*)(const uint8_t* in, uint8_t* out, size_t n, size_t lines, size_t r,
                               size_t pixelBytes);

extern const KernelPair<ConvolveRowKernel> kConvolveRowKernels;
extern const KernelPair<BoxPassKernel> kBoxPassKernels;

}  // namespace quorin::convolution
