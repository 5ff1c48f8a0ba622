// The one NaN that float rules write. Which operand's payload an operation
// passes on when several are NaN depends on the order of its operands, and
// compilers order the operands of the scalar code as they please, so a
// computed NaN is written as this one quiet NaN by the scalar and the vector
// kernels alike: identical bytes for every input. Values a rule only copies
// or selects keep their bits.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace quorin {

inline constexpr uint32_t kCanonicalNaNBits = 0x7FC00000;  // positive, quiet, no payload

inline float CanonicalNaN(float f) { return std::isnan(f) ? std::bit_cast<float>(kCanonicalNaNBits) : f; }

}  // namespace quorin
