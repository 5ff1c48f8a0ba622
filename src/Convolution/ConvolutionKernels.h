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
// Rows [first, last) of the image's convolution (ConvolveBand).
using ConvolveBandKernel = void (*)(const Quorin_Buffer& src, const Quorin_Buffer& dest, size_t first, size_t last,
                                    size_t width, const ConvolveShape& shape);
// The whole box filter (Box): both passes, the first into the scratch.
using BoxKernel = void (*)(const uint8_t* src, uint8_t* dest, uint8_t* scratch, size_t width, size_t height,
                           size_t rAcross, size_t rDown, size_t pixelBytes);

extern const KernelPair<ConvolveRowKernel> kConvolveRowKernels;
extern const KernelPair<BoxKernel> kBoxKernels;
extern const KernelPair<ConvolveBandKernel> kConvolveBandKernels;

}  // namespace quorin::convolution
