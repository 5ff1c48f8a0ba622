// The kernel pairs of the colour-matrix multiply: the scalar rules of
// MatrixRules.h and their vector twins (MatrixKernels.cpp), identical in
// bytes for every input and count. `stream` is the call's streaming decision.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/KernelPair.h"
#include "Transform/MatrixRules.h"

namespace quorin::matrix {

using Multiply8Kernel = void (*)(const uint8_t* src, uint8_t* dst, size_t pixels, const Matrix8& p, bool stream);
using MultiplyFKernel = void (*)(const float* src, float* dst, size_t pixels, const MatrixF& p, bool stream);

extern const KernelPair<Multiply8Kernel> kMultiply8Kernels;
extern const KernelPair<MultiplyFKernel> kMultiplyFKernels;

}  // namespace quorin::matrix
