// The kernel pair of the three-channel matrix: one scalar kernel and one
// vector twin for all 76 cells, each taking the cell's index in the table
// (PackedRules.h) and giving identical bytes for every input and count.
// `stream` is the call's streaming decision.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Conversion/PackedRules.h"
#include "Core/KernelPair.h"

namespace quorin::packed {

using MatrixKernel = void (*)(size_t cell, const uint8_t* src, uint8_t* dst, size_t pixels, bool stream);

extern const KernelPair<MatrixKernel> kMatrixKernels;

// The alpha-adding group: `plane` is null or one alpha byte a pixel.
using AlphaKernel = void (*)(size_t cell, const uint8_t* src, const uint8_t* plane, uint8_t* dst, size_t pixels,
                             AlphaConstant constant, bool premultiply, bool stream);

extern const KernelPair<AlphaKernel> kAlphaKernels;

}  // namespace quorin::packed
