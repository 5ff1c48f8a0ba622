// Depth conversions: Planar16Q12 planes to and from 8-bit interleaved
// images, and 16-bit unsigned planes to and from 8-bit planes.
//
// The Q12 members run their rows of the member table (DepthMembers.h)
// through the layouts' merge and split shapes with the Q12 transforms: the
// layouts' checks (the split forms without the flag step), their size query,
// their row walk and their split. The 16-bit plane members walk dest's rows
// on the calling thread.
#include <cstddef>

#include "Conversion/DepthMembers.h"
#include "Conversion/DepthRules.h"
#include "Conversion/LayoutRun.h"
#include "Core/Walk.h"
#include "quorin/Conversion.h"

namespace quorin::layout {
namespace {

template <const PlaneDepthMember& kMember, class From, class To>
Quorin_Error ConvertPlane(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                          const KernelPair<PlaneRowKernel<From, To>>& kernels) {
    const Operand operands[] = {{dest, sizeof(To)}, {src, sizeof(From)}};
    if (const Quorin_Error error = RunChecks(kMember.checks, std::span<const Operand>(operands), 0)) return error;
    const auto kernel = kernels.choose();
    const Plane<const From, 1> from(src);
    const Plane<To, 1> to(dest);
    for (size_t y = 0; y < dest->height; ++y) kernel(from.at(0, y), to.at(0, y), dest->width);
    return kQuorinSuccess;
}

}  // namespace
}  // namespace quorin::layout

using namespace quorin::layout;

extern "C" {

QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toARGB8888(const Quorin_Buffer* srcA, const Quorin_Buffer* srcR,
                                                            const Quorin_Buffer* srcG, const Quorin_Buffer* srcB,
                                                            const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Run<kPlanar16Q12toARGB8888, Q12ToByte>({.buffers = {srcA, srcR, srcG, srcB, dest}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_Planar16Q12toRGB888(const Quorin_Buffer* srcR, const Quorin_Buffer* srcG,
                                                          const Quorin_Buffer* srcB, const Quorin_Buffer* dest,
                                                          Quorin_Flags flags) {
    return Run<kPlanar16Q12toRGB888, Q12ToByte>({.buffers = {srcR, srcG, srcB, dest}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_ARGB8888toPlanar16Q12(const Quorin_Buffer* src, const Quorin_Buffer* destA,
                                                            const Quorin_Buffer* destR, const Quorin_Buffer* destG,
                                                            const Quorin_Buffer* destB, Quorin_Flags flags) {
    return Run<kARGB8888toPlanar16Q12, ByteToQ12>({.buffers = {src, destA, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_RGB888toPlanar16Q12(const Quorin_Buffer* src, const Quorin_Buffer* destR,
                                                          const Quorin_Buffer* destG, const Quorin_Buffer* destB,
                                                          Quorin_Flags flags) {
    return Run<kRGB888toPlanar16Q12, ByteToQ12>({.buffers = {src, destR, destG, destB}, .flags = flags});
}

QUORIN_API Quorin_Error QuorinConvert_16UToPlanar8(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags /*flags: none is read*/) {
    return ConvertPlane<k16UToPlanar8>(src, dest, DepthKernels::word16ToByte);
}

QUORIN_API Quorin_Error QuorinConvert_Planar8To16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   Quorin_Flags /*flags: none is read*/) {
    return ConvertPlane<kPlanar8To16U>(src, dest, DepthKernels::byteToWord16);
}

}  // extern "C"
