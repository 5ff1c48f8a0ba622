// The vector twins of the premultiply and unpremultiply rules, chosen at run
// time for the best instruction set of the processor (PremultiplyKernels.cpp).
// Each gives the same bytes as the scalar kernel of its rule for every input,
// any count, and dst equal to src.
#pragma once

#include <cstddef>

#include "Alpha/PremultiplyRules.h"

// Rules with a four-channel vector kernel, and rules with a planar one.
#define QUORIN_PREMULTIPLY_PIXEL_RULES(X) \
    X(Premultiply8)                       \
    X(Unpremultiply8)                     \
    X(Premultiply16U)                     \
    X(Unpremultiply16U)                   \
    X(Premultiply16Q12)                   \
    X(Unpremultiply16Q12)                 \
    X(PremultiplyF)                       \
    X(UnpremultiplyF)
#define QUORIN_PREMULTIPLY_PLANE_RULES(X) \
    X(Premultiply8)                       \
    X(Unpremultiply8)                     \
    X(PremultiplyF)                       \
    X(UnpremultiplyF)

namespace quorin::premultiply {

// VectorPixels(Rule{}, src, dst, pixels, alpha, stream): four-channel pixels,
// alpha in channel `alpha` (0 or 3). VectorPlane(Rule{}, src, alpha, dst,
// count, stream). `stream` (decided once per call, by the whole destination)
// asks for streaming stores where dst reaches vector alignment.
#define QUORIN_DECLARE_PIXEL_KERNEL(Rule)                                                    \
    void VectorPixels(Rule, const Rule::Sample* src, Rule::Sample* dst, size_t pixels, \
                      size_t alpha, bool stream);
#define QUORIN_DECLARE_PLANE_KERNEL(Rule)                                                \
    void VectorPlane(Rule, const Rule::Sample* src, const Rule::Sample* alpha, Rule::Sample* dst, \
                     size_t count, bool stream);
QUORIN_PREMULTIPLY_PIXEL_RULES(QUORIN_DECLARE_PIXEL_KERNEL)
QUORIN_PREMULTIPLY_PLANE_RULES(QUORIN_DECLARE_PLANE_KERNEL)
#undef QUORIN_DECLARE_PIXEL_KERNEL
#undef QUORIN_DECLARE_PLANE_KERNEL

}  // namespace quorin::premultiply
