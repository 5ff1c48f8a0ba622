// The colour-matrix family, written down once: each member's entry point,
// pixel format, split and check list. The entry points (MatrixMultiply.cpp)
// are made from these rows; the tests, the benchmark and the fuzzer walk
// kMatrixMembers.
#pragma once

#include <cstdint>
#include <span>

#include "Core/MemberRow.h"
#include "quorin/Transform.h"

namespace quorin::matrix {

// One call of either member: the 8-bit member reads int16_t coefficients and
// pre-biases and int32_t post-biases, the float member floats; the float
// member has no divisor.
struct Call {
    const Quorin_Buffer* src;
    const Quorin_Buffer* dest;
    const void* matrix;
    int32_t divisor;
    const void* preBias;
    const void* postBias;
    Quorin_Flags flags;
};

using Member = MemberRow<Call>;

// src, dest, then the matrix pointer. The size test is the only one the
// operation has (no flag is refused, nothing else fails); the rest are
// memory-safety refusals of what the kernels could not walk or read without
// crashing, all with -21773 as the size test does. A zero divisor never
// reads the matrix, but is refused with it all the same.
inline constexpr CheckStep kMatrixChecks[] = {
    {"the buffers differ in width or height", Check::SizesDiffer, kQuorinError_BadArgument},
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
    {"the matrix is null", Check::NullArgument, kQuorinError_BadArgument},
};

template <const Member& kMember>
Quorin_Error Run(const Call& call);

inline constexpr Member kMatrixARGB8888{"QuorinMatrixMultiply_ARGB8888", kARGB8888, SplitRule::ApplyBands,
                                        kMatrixChecks, &Run<kMatrixARGB8888>};
inline constexpr Member kMatrixARGBFFFF{"QuorinMatrixMultiply_ARGBFFFF", kARGBFFFF, SplitRule::ApplyBands,
                                        kMatrixChecks, &Run<kMatrixARGBFFFF>};

inline constexpr const Member* kMatrixMembers[] = {&kMatrixARGB8888, &kMatrixARGBFFFF};

}  // namespace quorin::matrix
