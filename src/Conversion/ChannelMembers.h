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
    LookUp,             // src, dest, tables (four, or one), flags: four bytes a step up to dest's rowBytes
    Select,             // newSrc (interleaved), origSrc, dest, copyMask, flags
    OverwritePlanes,    // newSrc (a plane), origSrc, dest, copyMask, flags: pixels counted from dest's rowBytes
    Flatten,            // src, dest, backgroundColor, isPremultiplied, flags
};

// One call of any member: the arguments its shape takes, the rest unused.
struct Call {
    const Quorin_Buffer* src;
    const Quorin_Buffer* dest;
    const void* value;  // fill pixel or value, overwrite scalar, clip bounds {max, min}, permute map
    uint32_t copyMask;
    size_t pixelSize;
    Quorin_Flags flags;
    int channel = 0;    // extract; isPremultiplied (flatten)
    const Quorin_Buffer* newSrc = nullptr;  // select and overwrite from a plane
};

using Entry = Quorin_Error (*)(const Call& call);

struct Member {
    const char* name;
    Shape shape;
    PixelFormat format;
    SplitRule split;
    std::span<const CheckStep> checks;
    Entry entry;
    PixelFormat output = {};  // flatten: the destination's format

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

// Copy: dest (the region), src; pixels of max(pixelSize, 1) bytes. A
// source too short for the rows the copy reads is refused after the list.
inline constexpr CheckStep kCopyChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
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

// Table lookups: dest (the region), src, then the tables. A source too
// short for the walk is refused after the list.
inline constexpr CheckStep kLookUpChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"a table is null", Check::NullArgument, kQuorinError_BadArgument},
    {"the destination is wider or taller than the source", Check::ExceedsRegion, kQuorinError_RegionExceedsSource,
     Operands({1})},
    {"a row is shorter than its pixels", Check::RowBytesShort, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// Select: dest (the region), origSrc, newSrc.
inline constexpr CheckStep kSelectChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"the original source has no rows or no columns", Check::Empty, kQuorinError_BadArgument, Operands({1})},
    {"the new source's width differs from the original source's", Check::WidthDiffers, kQuorinError_BadArgument,
     Operands({2})},
    {"the destination is wider or taller than the original source", Check::ExceedsRegion,
     kQuorinError_RegionExceedsSource, Operands({1})},
    {"a row is shorter than its pixels", Check::RowBytesShort, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
    {"the new source cannot hold the destination's rows", Check::CannotHoldRegion, kQuorinError_BadArgument,
     Operands({2})},
};

// Overwrite from a plane: newSrc, origSrc, dest. These check nothing of
// their own; a record that cannot describe its image is refused, and (after
// the list) a source too short for the walk.
inline constexpr CheckStep kOverwritePlanesChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// Flatten: dest (the region), src, then the background. The temporary-size
// query returns 0 after the first five steps (kFlattenQuerySteps).
inline constexpr CheckStep kFlattenChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_NullPointer},
    {"the background is null", Check::NullArgument, kQuorinError_NullPointer},
    {"a flag other than single-threaded or the size query is set", Check::FlagsOutside,
     kQuorinError_UnsupportedFlags, kAllOperands, kQuorinFlag_SingleThreaded | kQuorinFlag_QueryTempSize},
    {"the destination is wider or taller than the source", Check::ExceedsRegion, kQuorinError_RegionExceedsSource,
     Operands({1})},
    // An empty source is caught by the step before unless dest is empty too.
    {"the destination has no rows or no columns", Check::Empty, kQuorinError_BadArgument, Operands({0})},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};
inline constexpr size_t kFlattenQuerySteps = 5;

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

inline constexpr Member kLookUpARGB8888{"QuorinTableLookUp_ARGB8888", Shape::LookUp, kARGB8888, SplitRule::Serial,
                                        kLookUpChecks, &Run<kLookUpARGB8888>};
inline constexpr Member kLookUpPlanar8{"QuorinTableLookUp_Planar8", Shape::LookUp, kPlanar8, SplitRule::Serial,
                                       kLookUpChecks, &Run<kLookUpPlanar8>};
inline constexpr Member kSelectARGB8888{"QuorinSelectChannels_ARGB8888", Shape::Select, kARGB8888, SplitRule::Rows,
                                        kSelectChecks, &Run<kSelectARGB8888>};
inline constexpr Member kSelectARGBFFFF{"QuorinSelectChannels_ARGBFFFF", Shape::Select, kARGBFFFF, SplitRule::Grid,
                                        kSelectChecks, &Run<kSelectARGBFFFF>};
inline constexpr Member kOverwritePlanesARGB8888{"QuorinOverwriteChannels_ARGB8888", Shape::OverwritePlanes,
                                                 kARGB8888, SplitRule::Serial, kOverwritePlanesChecks,
                                                 &Run<kOverwritePlanesARGB8888>};
inline constexpr Member kOverwritePlanesARGBFFFF{"QuorinOverwriteChannels_ARGBFFFF", Shape::OverwritePlanes,
                                                 kARGBFFFF, SplitRule::Serial, kOverwritePlanesChecks,
                                                 &Run<kOverwritePlanesARGBFFFF>};

// Flatten: the source's format, then the destination's.
inline constexpr PixelFormat kBGRAFFFF{SampleKind::F32, 4, "BGRA", kAlphaLast};
inline constexpr PixelFormat kRGBFFF{SampleKind::F32, 3, "RGB"};
#define QUORIN_FLATTEN(member, name, from, to, split) \
    inline constexpr Member member{name, Shape::Flatten, from, split, kFlattenChecks, &Run<member>, to};
QUORIN_FLATTEN(kFlattenARGB8888, "QuorinFlatten_ARGB8888", kARGB8888, kARGB8888, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenRGBA8888, "QuorinFlatten_RGBA8888", kRGBA8888, kRGBA8888, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenARGB16U, "QuorinFlatten_ARGB16U", kARGB16U, kARGB16U, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenRGBA16U, "QuorinFlatten_RGBA16U", kRGBA16U, kRGBA16U, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenARGB16Q12, "QuorinFlatten_ARGB16Q12", kARGB16Q12, kARGB16Q12, SplitRule::Rows)
QUORIN_FLATTEN(kFlattenRGBA16Q12, "QuorinFlatten_RGBA16Q12", kRGBA16Q12, kRGBA16Q12, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenARGBFFFF, "QuorinFlatten_ARGBFFFF", kARGBFFFF, kARGBFFFF, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenRGBAFFFF, "QuorinFlatten_RGBAFFFF", kRGBAFFFF, kRGBAFFFF, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenARGB8888ToRGB888, "QuorinFlatten_ARGB8888ToRGB888", kARGB8888, kRGB888, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenRGBA8888ToRGB888, "QuorinFlatten_RGBA8888ToRGB888", kRGBA8888, kRGB888, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenBGRA8888ToRGB888, "QuorinFlatten_BGRA8888ToRGB888", kBGRA8888, kRGB888, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenARGBFFFFToRGBFFF, "QuorinFlatten_ARGBFFFFToRGBFFF", kARGBFFFF, kRGBFFF, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenRGBAFFFFToRGBFFF, "QuorinFlatten_RGBAFFFFToRGBFFF", kRGBAFFFF, kRGBFFF, SplitRule::Grid)
QUORIN_FLATTEN(kFlattenBGRAFFFFToRGBFFF, "QuorinFlatten_BGRAFFFFToRGBFFF", kBGRAFFFF, kRGBFFF, SplitRule::Grid)
#undef QUORIN_FLATTEN

inline constexpr const Member* kChannelMembers[] = {
    &kFillARGB8888,      &kFillARGBFFFF,      &kFillPlanar8,       &kFillPlanarF,
    &kOverwriteScalarARGB8888, &kOverwriteScalarARGBFFFF, &kOverwritePlanar8, &kOverwritePlanarF,
    &kOverwritePlanar16S, &kOverwritePlanar16U, &kCopyBuffer, &kClipPlanarF,
    &kPermuteARGB8888, &kPermuteARGBFFFF, &kExtractARGB8888, &kExtractARGB16U, &kExtractARGBFFFF,
    &kOverwritePixelARGB8888, &kOverwritePixelARGB16U, &kOverwritePixelARGBFFFF,
    &kLookUpARGB8888, &kLookUpPlanar8, &kSelectARGB8888, &kSelectARGBFFFF,
    &kOverwritePlanesARGB8888, &kOverwritePlanesARGBFFFF,
    &kFlattenARGB8888, &kFlattenRGBA8888, &kFlattenARGB16U, &kFlattenRGBA16U, &kFlattenARGB16Q12,
    &kFlattenRGBA16Q12, &kFlattenARGBFFFF, &kFlattenRGBAFFFF, &kFlattenARGB8888ToRGB888,
    &kFlattenRGBA8888ToRGB888, &kFlattenBGRA8888ToRGB888, &kFlattenARGBFFFFToRGBFFF,
    &kFlattenRGBAFFFFToRGBFFF, &kFlattenBGRAFFFFToRGBFFF,
};

}  // namespace quorin::channels
