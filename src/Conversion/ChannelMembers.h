// The channel-operation family, written down once: every member's entry
// point, call shape, pixel format, split and check list. The entry points
// (Channels.cpp) are made from these rows; the tests and the benchmark walk
// kChannelMembers, so a member added here is checked, tested and measured
// without being listed again.
#pragma once

#include <cstdint>
#include <span>

#include "Core/CheckList.h"
#include "Core/PixelFormat.h"
#include "Core/SplitRule.h"
#include "quorin/Conversion.h"

namespace quorin::channels {

enum class Shape : uint8_t {
    Fill,               // dest, value (a pixel for four channels), flags
    OverwriteScalar,    // scalar, src, dest, copyMask, flags
    OverwritePlane,     // scalar, dest, flags: every element up to rowBytes
    Copy,               // src, dest, pixelSize, flags
    Clip,               // src, dest, maxFloat, minFloat, flags
    Permute,            // src, dest, permuteMap, flags
    Extract,            // src, dest (a plane), channelIndex, flags
    OverwritePixel,     // pixel, src, dest, copyMask, flags: pixels counted from dest's rowBytes
};

// One call of any member: the arguments its shape takes, the rest unused.
struct Call {
    const Quorin_Buffer* src;
    const Quorin_Buffer* dest;
    const void* value;  // fill pixel or value, overwrite scalar, clip bounds {max, min}, permute map
    uint32_t copyMask;
    size_t pixelSize;
    Quorin_Flags flags;
    int channel = 0;    // extract
};

using Entry = Quorin_Error (*)(const Call& call);

struct Member {
    const char* name;
    Shape shape;
    PixelFormat format;
    SplitRule split;
    std::span<const CheckStep> checks;
    Entry entry;

    Quorin_Error run(const Call& call) const { return entry(call); }
};

// ---- Check lists (operands in the order the entry points hand them over) -----

// Fills: the destination, then the colour pointer.
inline constexpr CheckStep kFillPixelChecks[] = {
    {"the destination record or its pixel data is null", Check::Missing, kQuorinError_NullPointer},
    {"the colour is null", Check::NullArgument, kQuorinError_NullPointer},
    {"the destination cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};
inline constexpr CheckStep kFillValueChecks[] = {
    {"the destination record or its pixel data is null", Check::Missing, kQuorinError_NullPointer},
    {"the destination cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// Overwrite with a scalar, four channels: src, dest; every refusal is -21773.
inline constexpr CheckStep kOverwriteScalarChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"the buffers differ in width or height", Check::SizesDiffer, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// The members that check nothing refuse only a destination that cannot
// describe the bytes they walk.
inline constexpr CheckStep kOverwritePlaneChecks[] = {
    {"the destination record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"the destination cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// Copy: dest (the region), src; pixels of max(pixelSize, 1) bytes.
inline constexpr CheckStep kCopyChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
    {"the source cannot hold the destination's rows", Check::CannotHoldRegion, kQuorinError_BadArgument,
     Operands({1})},
};

// Clip: dest (the region), src.
inline constexpr CheckStep kClipChecks[] = {
    {"a flag other than single-threaded is set", Check::FlagsOutside, kQuorinError_BadArgument, kAllOperands,
     kQuorinFlag_SingleThreaded},
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"a buffer has no rows or no columns", Check::Empty, kQuorinError_BadArgument},
    {"the destination is wider or taller than the source", Check::ExceedsRegion, kQuorinError_RegionExceedsSource,
     Operands({1})},
    {"a row is shorter than its pixels", Check::RowBytesShort, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// Permute: src, dest, then the map pointer.
inline constexpr CheckStep kPermuteChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_NullPointer},
    {"the map is null", Check::NullArgument, kQuorinError_NullPointer},
    {"the buffers differ in width or height", Check::SizesDiffer, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// Extract: dest (the region, a plane), src. A channel index outside 0..3 is
// refused with -21773 before these (the first step's code); the walk's
// bounds after them.
inline constexpr CheckStep kExtractChecks[] = {
    {"the source is null or has null data", Check::Missing, kQuorinError_BadArgument, Operands({1})},
    {"the destination is null or has null data", Check::Missing, kQuorinError_BadArgument, Operands({0})},
    {"the destination is wider or taller than the source", Check::ExceedsRegion, kQuorinError_RegionExceedsSource,
     Operands({1})},
    {"a row is shorter than its pixels", Check::RowBytesShort, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// Overwrite with a pixel: src, dest. These check nothing of their own; a
// record that cannot describe its image is refused, and (after the list)
// a source too short for the walk.
inline constexpr CheckStep kOverwritePixelChecks[] = {
    {"the pixel is null", Check::NullArgument, kQuorinError_BadArgument},
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// ---- Members ---------------------------------------------------------------------

template <const Member& kMember>
Quorin_Error Run(const Call& call);

constexpr SplitRule kChunks = SplitRule::Chunks;

inline constexpr Member kFillARGB8888{"QuorinBufferFill_ARGB8888", Shape::Fill, kARGB8888, kChunks, kFillPixelChecks,
                                      &Run<kFillARGB8888>};
inline constexpr Member kFillARGBFFFF{"QuorinBufferFill_ARGBFFFF", Shape::Fill, kARGBFFFF, kChunks, kFillPixelChecks,
                                      &Run<kFillARGBFFFF>};
inline constexpr Member kFillPlanar8{"QuorinBufferFill_Planar8", Shape::Fill, kPlanar8, kChunks, kFillValueChecks,
                                     &Run<kFillPlanar8>};
inline constexpr Member kFillPlanarF{"QuorinBufferFill_PlanarF", Shape::Fill, kPlanarF, kChunks, kFillValueChecks,
                                     &Run<kFillPlanarF>};
inline constexpr Member kOverwriteScalarARGB8888{"QuorinOverwriteChannelsWithScalar_ARGB8888", Shape::OverwriteScalar,
                                                 kARGB8888, kChunks, kOverwriteScalarChecks,
                                                 &Run<kOverwriteScalarARGB8888>};
inline constexpr Member kOverwriteScalarARGBFFFF{"QuorinOverwriteChannelsWithScalar_ARGBFFFF", Shape::OverwriteScalar,
                                                 kARGBFFFF, kChunks, kOverwriteScalarChecks,
                                                 &Run<kOverwriteScalarARGBFFFF>};
inline constexpr PixelFormat kPlanar16S{SampleKind::S16Q12, 1, "C"};
inline constexpr Member kOverwritePlanar8{"QuorinOverwriteChannelsWithScalar_Planar8", Shape::OverwritePlane,
                                          kPlanar8, SplitRule::Serial, kOverwritePlaneChecks,
                                          &Run<kOverwritePlanar8>};
inline constexpr Member kOverwritePlanarF{"QuorinOverwriteChannelsWithScalar_PlanarF", Shape::OverwritePlane,
                                          kPlanarF, SplitRule::Serial, kOverwritePlaneChecks,
                                          &Run<kOverwritePlanarF>};
inline constexpr Member kOverwritePlanar16S{"QuorinOverwriteChannelsWithScalar_Planar16S", Shape::OverwritePlane,
                                            kPlanar16S, SplitRule::Serial, kOverwritePlaneChecks,
                                            &Run<kOverwritePlanar16S>};
inline constexpr Member kOverwritePlanar16U{"QuorinOverwriteChannelsWithScalar_Planar16U", Shape::OverwritePlane,
                                            kPlanar16U, SplitRule::Serial, kOverwritePlaneChecks,
                                            &Run<kOverwritePlanar16U>};
inline constexpr Member kCopyBuffer{"QuorinCopyBuffer", Shape::Copy, kPlanar8, SplitRule::Rows, kCopyChecks,
                                    &Run<kCopyBuffer>};
inline constexpr Member kClipPlanarF{"QuorinClip_PlanarF", Shape::Clip, kPlanarF, SplitRule::Rows, kClipChecks,
                                     &Run<kClipPlanarF>};

inline constexpr Member kPermuteARGB8888{"QuorinPermuteChannels_ARGB8888", Shape::Permute, kARGB8888, kChunks,
                                         kPermuteChecks, &Run<kPermuteARGB8888>};
inline constexpr Member kPermuteARGBFFFF{"QuorinPermuteChannels_ARGBFFFF", Shape::Permute, kARGBFFFF, kChunks,
                                         kPermuteChecks, &Run<kPermuteARGBFFFF>};
// The source's format; the destination is a plane of its samples.
inline constexpr Member kExtractARGB8888{"QuorinExtractChannel_ARGB8888", Shape::Extract, kARGB8888,
                                         SplitRule::Serial, kExtractChecks, &Run<kExtractARGB8888>};
inline constexpr Member kExtractARGB16U{"QuorinExtractChannel_ARGB16U", Shape::Extract, kARGB16U, SplitRule::Serial,
                                        kExtractChecks, &Run<kExtractARGB16U>};
inline constexpr Member kExtractARGBFFFF{"QuorinExtractChannel_ARGBFFFF", Shape::Extract, kARGBFFFF,
                                         SplitRule::Serial, kExtractChecks, &Run<kExtractARGBFFFF>};

inline constexpr Member kOverwritePixelARGB8888{"QuorinOverwriteChannelsWithPixel_ARGB8888", Shape::OverwritePixel,
                                                kARGB8888, SplitRule::Serial, kOverwritePixelChecks,
                                                &Run<kOverwritePixelARGB8888>};
inline constexpr Member kOverwritePixelARGB16U{"QuorinOverwriteChannelsWithPixel_ARGB16U", Shape::OverwritePixel,
                                               kARGB16U, SplitRule::Serial, kOverwritePixelChecks,
                                               &Run<kOverwritePixelARGB16U>};
inline constexpr Member kOverwritePixelARGBFFFF{"QuorinOverwriteChannelsWithPixel_ARGBFFFF", Shape::OverwritePixel,
                                                kARGBFFFF, SplitRule::Serial, kOverwritePixelChecks,
                                                &Run<kOverwritePixelARGBFFFF>};

inline constexpr const Member* kChannelMembers[] = {
    &kFillARGB8888,      &kFillARGBFFFF,      &kFillPlanar8,       &kFillPlanarF,
    &kOverwriteScalarARGB8888, &kOverwriteScalarARGBFFFF, &kOverwritePlanar8, &kOverwritePlanarF,
    &kOverwritePlanar16S, &kOverwritePlanar16U, &kCopyBuffer, &kClipPlanarF,
    &kPermuteARGB8888, &kPermuteARGBFFFF, &kExtractARGB8888, &kExtractARGB16U, &kExtractARGBFFFF,
    &kOverwritePixelARGB8888, &kOverwritePixelARGB16U, &kOverwritePixelARGBFFFF,
};

}  // namespace quorin::channels
