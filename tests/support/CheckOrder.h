// Drives any family's check list (Core/CheckList.h) against its entry point:
// for every step and every buffer the step tests, an input that fails that
// step, with every later step failing too wherever a fault can be planted
// without a null pointer, must return the step's code and leave the
// destination and its guards untouched. A list whose order differs from the
// entry point's, a missing step, or a wrong code fails here.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Core/CheckList.h"
#include "support/GuardedImage.h"

namespace quorin::test {

// One call of the member under test: the records in operand order (any may
// be null) and the flags.
using CheckedEntry = std::function<Quorin_Error(const std::vector<const Quorin_Buffer*>& records, Quorin_Flags)>;

// `images` are valid operands in argument order, each with the pixel size
// its check uses; `destinations` are the indices of the buffers the member
// writes. Returns the number of faulty inputs tried (every step must have
// produced at least one).
size_t ExpectCheckOrder(std::span<const CheckStep> steps, const std::vector<GuardedImage*>& images,
                        const std::vector<size_t>& destinations, const CheckedEntry& entry);

}  // namespace quorin::test
