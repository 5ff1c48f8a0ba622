// The kernel pairs of the scaling passes: the scalar passes of ScaleRules.h
// and their vector twins (ScaleKernels.cpp), one pair per direction. A pass
// job names its format, arithmetic and tap count; each pair runs the kernel
// made for that combination, with the same bytes from both sides.
#pragma once

#include "Core/KernelPair.h"
#include "Geometry/ScaleRules.h"

namespace quorin::scale {

extern const KernelPair<PassKernel> kHorizontalPass;
extern const KernelPair<PassKernel> kVerticalPass;

inline const KernelPair<PassKernel>& PassPair(Direction direction) {
    return direction == Direction::Horizontal ? kHorizontalPass : kVerticalPass;
}

}  // namespace quorin::scale
