// Running a row of a layout member table: the transform its two sample
// kinds name, the channel without a plane, and the call through the merge or
// split shape (LayoutCall.h). The layouts' entry points and the depth
// conversions' Q12 members (which name their own transforms) use it.
#pragma once

#include <bit>
#include <type_traits>

#include "Conversion/LayoutCall.h"
#include "Conversion/LayoutMembers.h"

namespace quorin::layout {

template <SampleKind kKind>
using Word = std::conditional_t<BytesOf(kKind) == 1, uint8_t, std::conditional_t<BytesOf(kKind) == 2, uint16_t, uint32_t>>;

// The channel transform a row's two sample kinds name. Same-depth floats
// move as 32-bit words, so every bit pattern arrives unchanged.
template <const Member& kMember>
using TransformOf = std::conditional_t<
    kMember.image.sample == kMember.planes.sample, Copy<Word<kMember.image.sample>>,
    std::conditional_t<(kMember.image.sample == SampleKind::F32) == kMember.merge(), ByteToFloat, FloatToByte>>;

// The merged channel without a plane: the call's constant as a pixel sample,
// except that float to 8-bit takes a float constant (and an absent alpha
// plane's 0) through channel 0's range.
template <class Transform>
Constant<Transform> ConstantOf(const Member& m, const Call& call) {
    if constexpr (std::is_same_v<Transform, FloatToByte>) {
        if (m.constant != ConstantKind::Byte) return {.throughChannel0 = call.floatConstant};
        return {call.byteConstant};
    } else if constexpr (std::is_same_v<Transform, Copy<uint8_t>>) {
        return {call.byteConstant};
    } else if constexpr (std::is_same_v<typename Transform::To, float>) {
        return {call.floatConstant};
    } else if constexpr (std::is_same_v<Transform, Copy<uint32_t>>) {
        return {std::bit_cast<uint32_t>(call.floatConstant)};
    } else {
        return {};
    }
}

// Runs a member row: its planes in channel-position order, its constant and
// ranges, through the merge or split shape with the row's check list.
template <const Member& kMember, class Transform = TransformOf<kMember>>
Quorin_Error Run(const Call& call) {
    constexpr size_t C = kMember.image.channels;
    const PlaneArg absent = kMember.merge() ? kConstantChannel : kSkippedChannel;
    std::array<PlaneArg, C> planes;
    planes.fill(absent);
    for (size_t k = 0; k < kMember.planeCount(); ++k) {
        const Quorin_Buffer* plane = call.buffers[kMember.planeArgument(k)];
        planes[kMember.planeChannel(k)] = k == 0 && kMember.alphaPlaneOptional ? OptionalPlane(plane) : plane;
    }
    const Quorin_Buffer* image = call.buffers[kMember.imageArgument()];
    const Ranges ranges{call.maxFloat, call.minFloat};
    if constexpr (kMember.merge()) {
        return MergePlanes<Transform, C>({.planes = planes,
                                          .dest = image,
                                          .constant = ConstantOf<Transform>(kMember, call),
                                          .ranges = ranges,
                                          .requiredPlanesRowBytesOnly = kMember.requiredPlanesRowBytesOnly},
                                         kMember.checks, call.flags);
    } else {
        return SplitPixels<Transform, C>({.src = image, .planes = planes, .ranges = ranges}, kMember.checks,
                                         call.flags);
    }
}

}  // namespace quorin::layout
