// The depth conversions written down once. The Q12 members are rows of the
// layouts' member type (LayoutMembers.h), run by the layouts' shapes with
// the Q12 transforms; the 16-bit plane conversions have rows of their own.
// Tests, benchmark, fuzzer and safety rows walk these tables.
#pragma once

#include <span>

#include "Conversion/LayoutMembers.h"
#include "Core/CheckList.h"
#include "Core/PixelFormat.h"
#include "Core/Signature.h"
#include "quorin/Conversion.h"

namespace quorin::layout {

inline constexpr PixelFormat kPlanar16Q12{SampleKind::S16Q12, 1, "C"};

// Pixels into Q12 planes read the single-threaded and query flags but
// refuse none: the layouts' checks without the flag step.
inline constexpr CheckStep kDepthSplitChecks[] = {
    kLayoutChecks[0], kLayoutChecks[1], kLayoutChecks[2], kLayoutChecks[3],
    kLayoutChecks[4], kLayoutChecks[6], kLayoutChecks[7],
};

#define QUORIN_DEPTH_ROW(entry, ...) Row<&entry>(#entry, __VA_ARGS__)

inline constexpr Member kPlanar16Q12toARGB8888 =
    QUORIN_DEPTH_ROW(QuorinConvert_Planar16Q12toARGB8888, kMerge, kARGB8888, kPlanar16Q12);
inline constexpr Member kPlanar16Q12toRGB888 =
    QUORIN_DEPTH_ROW(QuorinConvert_Planar16Q12toRGB888, kMerge, kRGB888, kPlanar16Q12);
inline constexpr Member kARGB8888toPlanar16Q12 = QUORIN_DEPTH_ROW(
    QuorinConvert_ARGB8888toPlanar16Q12, kSplit, kARGB8888, kPlanar16Q12, Worker::None, kDepthSplitChecks);
inline constexpr Member kRGB888toPlanar16Q12 = QUORIN_DEPTH_ROW(
    QuorinConvert_RGB888toPlanar16Q12, kSplit, kRGB888, kPlanar16Q12, Worker::None, kDepthSplitChecks);

#undef QUORIN_DEPTH_ROW

inline constexpr const Member* kQ12Members[] = {&kPlanar16Q12toARGB8888, &kPlanar16Q12toRGB888,
                                                &kARGB8888toPlanar16Q12, &kRGB888toPlanar16Q12};

// ---- One plane into another ----------------------------------------------------------

// dest (the region) first, then src: nothing the description tests, only
// what a walk over dest's rows needs.
inline constexpr CheckStep kPlaneDepthChecks[] = {
    {"the destination is null or has no pixels", Check::Missing, kQuorinError_BadArgument, Operands({0})},
    {"a buffer cannot hold the destination's region", Check::CannotHoldRegion, kQuorinError_BadArgument},
};

using PlaneInvoke = Quorin_Error (*)(const CallArguments& call);

struct PlaneDepthMember {
    const char* name;
    PixelFormat src, dest;
    std::span<const CheckStep> checks;
    PlaneInvoke invoke;  // buffers: src, dest
};

inline constexpr PlaneDepthMember k16UToPlanar8{"QuorinConvert_16UToPlanar8", kPlanar16U, kPlanar8,
                                                kPlaneDepthChecks, &CallExported<&QuorinConvert_16UToPlanar8>};
inline constexpr PlaneDepthMember kPlanar8To16U{"QuorinConvert_Planar8To16U", kPlanar8, kPlanar16U,
                                                kPlaneDepthChecks, &CallExported<&QuorinConvert_Planar8To16U>};

inline constexpr const PlaneDepthMember* kPlaneDepthMembers[] = {&k16UToPlanar8, &kPlanar8To16U};

}  // namespace quorin::layout
