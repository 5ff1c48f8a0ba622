// A scalar kernel and its vector twin, and the one place that chooses between
// them.
//
// The vector twin is a function compiled once per Highway target in a
// foreach_target source and exported with HWY_EXPORT under its own name; the
// pair keeps that export's dispatch table (HWY_DISPATCH_TABLE), so a pair is
// declared in three lines a search for the kernel's name finds:
//
//   // in namespace quorin::HWY_NAMESPACE, once per target:
//   void PremultiplyPixels8(const uint8_t* src, uint8_t* dst, size_t pixels, ...) { ... }
//   // under HWY_ONCE:
//   HWY_EXPORT(PremultiplyPixels8);
//   const KernelPair<PixelKernel<uint8_t>> kPremultiply8{&ApplyToPixels<Premultiply8>,
//                                                        HWY_DISPATCH_TABLE(PremultiplyPixels8)};
//
// choose() is the call's dispatch point: it asks the feature switch
// (Quorin_Decelerate turns every pair scalar) and, for the vector twin,
// Highway's chosen target. Both are atomics, and the table's first entry
// (Highway's "choose, then call" stub, taken only before any target has been
// chosen) stores the choice atomically too, so a pair may be chosen once per
// call on the calling thread or again inside each parallel band: either way
// every piece runs the same kernel.
#pragma once

#include <hwy/targets.h>

#include <cstddef>

#include "Core/Features.h"
#include "Core/Streaming.h"

namespace quorin {

template <class Kernel>
struct KernelPair;

template <class Result, class... Args>
struct KernelPair<Result (*)(Args...)> {
    using Kernel = Result (*)(Args...);

    Kernel scalar;
    // HWY_DISPATCH_TABLE of the vector twin: one entry per compiled target.
    const Kernel* vectorTable;

    // The vector twin for the target Highway chose (or will choose on its first call).
    // A build with a single target (aarch64's NEON alone) gets a table of one
    // entry from HWY_EXPORT, which the chosen target's index would overrun.
    Kernel vector() const {
        if constexpr ((HWY_TARGETS & (HWY_TARGETS - 1)) == 0) return vectorTable[0];
        return vectorTable[hwy::GetChosenTarget().GetIndex()];
    }
    // The kernel this call runs.
    Kernel choose() const { return pick(UseVectorKernels()); }
    // For calls that also decide other things (streaming) by the same answer.
    Kernel pick(bool useVector) const { return useVector ? vector() : scalar; }
};


// The kernel a pair chooses, with the call's streaming decision for a
// destination of `destinationBytes` bound as its last argument.
template <class... Params>
auto ChooseStreaming(const KernelPair<void (*)(Params...)>& kernels, size_t destinationBytes) {
    return [kernel = kernels.choose(), stream = WantsStreaming(destinationBytes)](auto... args) {
        kernel(args..., stream);
    };
}

}  // namespace quorin
