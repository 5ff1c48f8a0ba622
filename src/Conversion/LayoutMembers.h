// The planar and interleaved conversions, written down once: every member's
// entry point, direction, image and plane formats, split and check list. The
// entry points (Layout.cpp) are made from these rows; the tests, the
// benchmark and the fuzzer walk kLayoutMembers through each row's `invoke`,
// which calls the exported function, so a member added here is checked,
// tested and measured without being listed again.
//
// Which channel each plane argument feeds (or receives) follows from the
// image format: the channels in memory order, a filler ('X') taking no plane.
// The depth change follows from the two sample kinds.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "Core/CheckList.h"
#include "Core/PixelFormat.h"
#include "Core/Signature.h"
#include "Core/SplitRule.h"
#include "quorin/Conversion.h"

namespace quorin::layout {

// The family's checks, in order; the first failure decides. There is no
// zero-size test: an empty region converts nothing and succeeds.
inline constexpr CheckStep kLayoutChecks[] = {
    {"a required buffer is null", Check::NullRecord, kQuorinError_NullPointer, kAllOperands, 0, kRoleRequired},
    {"a range array the call takes is null", Check::NullArgument, kQuorinError_NullPointer},
    {"a buffer has null pixel data", Check::NullData, kQuorinError_BadArgument},
    {"the region is wider or taller than a buffer of the first group", Check::ExceedsRegion,
     kQuorinError_RegionExceedsSource, kAllOperands, 0, kRoleFirstGroup},
    {"a tested rowBytes of the first group is shorter than its row", Check::RowBytesShort, kQuorinError_BadArgument,
     kAllOperands, 0, kRoleFirstGroup | kRoleRowBytesTested},
    {"a flag other than single-threaded or size query", Check::FlagsOutside, kQuorinError_UnsupportedFlags,
     kAllOperands, kCommonFlags},
    {"the region is wider or taller than the second group's plane", Check::ExceedsRegion,
     kQuorinError_RegionExceedsSource, kAllOperands, 0, kRoleSecondGroup},
    {"the second group's rowBytes is shorter than its row", Check::RowBytesShort, kQuorinError_BadArgument,
     kAllOperands, 0, kRoleSecondGroup},
};

enum class Direction : uint8_t {
    Merge,  // planes into pixels: the planes, then the image (the region)
    Split,  // pixels into planes: the image, then the planes (the first is the region)
};

// What a merge's signature gives the channel that has no plane.
enum class ConstantKind : uint8_t { None, Byte, Float };

// One call of any member: its buffers in argument order and the arguments
// its signature takes besides them (the byte or float constant, the ranges,
// the flags), the rest unused.
using Call = CallArguments;

using Invoke = Quorin_Error (*)(const Call& call);

struct Member {
    const char* name;
    Direction direction;
    PixelFormat image;   // the interleaved pixels
    PixelFormat planes;  // every plane
    ConstantKind constant;
    bool takesRanges;
    // The ARGB forms of the interleave workers: a null first plane gives
    // the alpha channel 0 (through channel 0's range for float to 8-bit).
    bool alphaPlaneOptional;
    // The 8-bit interleave worker tests only its required planes' rowBytes:
    // neither an alpha plane's nor the destination's.
    bool requiredPlanesRowBytesOnly;
    SplitRule split;
    std::span<const CheckStep> checks;
    Invoke invoke;  // through the exported function

    constexpr bool merge() const { return direction == Direction::Merge; }
    constexpr size_t planeCount() const {
        size_t count = 0;
        for (size_t c = 0; c < image.channels; ++c) count += image.order[c] != 'X';
        return count;
    }
    // The channel plane argument k feeds or receives.
    constexpr size_t planeChannel(size_t k) const {
        for (size_t c = 0; c < image.channels; ++c)
            if (image.order[c] != 'X' && k-- == 0) return c;
        return image.channels;
    }
    constexpr size_t bufferCount() const { return planeCount() + 1; }
    constexpr size_t imageArgument() const { return merge() ? planeCount() : 0; }
    constexpr size_t planeArgument(size_t k) const { return merge() ? k : k + 1; }
};

// ---- Rows made from the exported signatures ------------------------------------

// The ARGB and XRGB forms share an interleave worker per depth: its ARGB
// form takes an optional alpha plane, and the 8-bit one tests only the
// required planes' rowBytes.
enum class Worker : uint8_t { None, Interleave, Interleave8 };

template <auto kEntry>
constexpr Member Row(const char* name, Direction direction, PixelFormat image, PixelFormat planes,
                     Worker worker = Worker::None, std::span<const CheckStep> checks = kLayoutChecks) {
    const Member m{name,
                   direction,
                   image,
                   planes,
                   ParametersOf<uint8_t>(kEntry)  ? ConstantKind::Byte
                   : ParametersOf<float>(kEntry) ? ConstantKind::Float
                                                 : ConstantKind::None,
                   ParametersOf<const float*>(kEntry) == 2,
                   worker != Worker::None && image.hasAlpha(),
                   worker == Worker::Interleave8,
                   SplitRule::Rows,
                   checks,
                   &CallExported<kEntry>};
    if (m.bufferCount() != ParametersOf<const Quorin_Buffer*>(kEntry)) throw "the row's formats differ from the signature";
    return m;
}

#define QUORIN_LAYOUT_ROW(entry, ...) Row<&entry>(#entry, __VA_ARGS__)

constexpr Direction kMerge = Direction::Merge, kSplit = Direction::Split;

// ---- Members ---------------------------------------------------------------------

// Planes into interleaved pixels, same depth.
inline constexpr Member kPlanar8toARGB8888 = QUORIN_LAYOUT_ROW(QuorinConvert_Planar8toARGB8888, kMerge, kARGB8888,
                                                               kPlanar8, Worker::Interleave8);
inline constexpr Member kPlanar8ToXRGB8888 = QUORIN_LAYOUT_ROW(QuorinConvert_Planar8ToXRGB8888, kMerge, kXRGB8888,
                                                               kPlanar8, Worker::Interleave8);
inline constexpr Member kPlanar8ToBGRX8888 =
    QUORIN_LAYOUT_ROW(QuorinConvert_Planar8ToBGRX8888, kMerge, kBGRX8888, kPlanar8);
inline constexpr Member kPlanarFtoARGBFFFF =
    QUORIN_LAYOUT_ROW(QuorinConvert_PlanarFtoARGBFFFF, kMerge, kARGBFFFF, kPlanarF, Worker::Interleave);
inline constexpr Member kPlanarFToXRGBFFFF =
    QUORIN_LAYOUT_ROW(QuorinConvert_PlanarFToXRGBFFFF, kMerge, kXRGBFFFF, kPlanarF, Worker::Interleave);
inline constexpr Member kPlanarFToBGRXFFFF =
    QUORIN_LAYOUT_ROW(QuorinConvert_PlanarFToBGRXFFFF, kMerge, kBGRXFFFF, kPlanarF);
inline constexpr Member kPlanar16UtoARGB16U =
    QUORIN_LAYOUT_ROW(QuorinConvert_Planar16UtoARGB16U, kMerge, kARGB16U, kPlanar16U);
inline constexpr Member kPlanar16UtoRGB16U =
    QUORIN_LAYOUT_ROW(QuorinConvert_Planar16UtoRGB16U, kMerge, kRGB16U, kPlanar16U);
inline constexpr Member kPlanar8toRGB888 = QUORIN_LAYOUT_ROW(QuorinConvert_Planar8toRGB888, kMerge, kRGB888, kPlanar8);
inline constexpr Member kPlanarFtoRGBFFF =
    QUORIN_LAYOUT_ROW(QuorinConvert_PlanarFtoRGBFFF, kMerge, kRGBFFF, kPlanarF);
// Planes into interleaved pixels, with a depth change.
inline constexpr Member kPlanar8ToARGBFFFF =
    QUORIN_LAYOUT_ROW(QuorinConvert_Planar8ToARGBFFFF, kMerge, kARGBFFFF, kPlanar8);
inline constexpr Member kPlanar8ToXRGBFFFF =
    QUORIN_LAYOUT_ROW(QuorinConvert_Planar8ToXRGBFFFF, kMerge, kXRGBFFFF, kPlanar8);
inline constexpr Member kPlanar8ToBGRXFFFF =
    QUORIN_LAYOUT_ROW(QuorinConvert_Planar8ToBGRXFFFF, kMerge, kBGRXFFFF, kPlanar8);
inline constexpr Member kPlanarFToARGB8888 =
    QUORIN_LAYOUT_ROW(QuorinConvert_PlanarFToARGB8888, kMerge, kARGB8888, kPlanarF, Worker::Interleave);
inline constexpr Member kPlanarFToXRGB8888 =
    QUORIN_LAYOUT_ROW(QuorinConvert_PlanarFToXRGB8888, kMerge, kXRGB8888, kPlanarF, Worker::Interleave);
inline constexpr Member kPlanarFToBGRX8888 =
    QUORIN_LAYOUT_ROW(QuorinConvert_PlanarFToBGRX8888, kMerge, kBGRX8888, kPlanarF);
// Interleaved pixels into planes, same depth.
inline constexpr Member kARGB8888toPlanar8 =
    QUORIN_LAYOUT_ROW(QuorinConvert_ARGB8888toPlanar8, kSplit, kARGB8888, kPlanar8);
inline constexpr Member kARGBFFFFtoPlanarF =
    QUORIN_LAYOUT_ROW(QuorinConvert_ARGBFFFFtoPlanarF, kSplit, kARGBFFFF, kPlanarF);
inline constexpr Member kARGB16UtoPlanar16U =
    QUORIN_LAYOUT_ROW(QuorinConvert_ARGB16UtoPlanar16U, kSplit, kARGB16U, kPlanar16U);
inline constexpr Member kRGB16UtoPlanar16U =
    QUORIN_LAYOUT_ROW(QuorinConvert_RGB16UtoPlanar16U, kSplit, kRGB16U, kPlanar16U);
inline constexpr Member kXRGB8888ToPlanar8 =
    QUORIN_LAYOUT_ROW(QuorinConvert_XRGB8888ToPlanar8, kSplit, kXRGB8888, kPlanar8);
inline constexpr Member kBGRX8888ToPlanar8 =
    QUORIN_LAYOUT_ROW(QuorinConvert_BGRX8888ToPlanar8, kSplit, kBGRX8888, kPlanar8);
inline constexpr Member kXRGBFFFFToPlanarF =
    QUORIN_LAYOUT_ROW(QuorinConvert_XRGBFFFFToPlanarF, kSplit, kXRGBFFFF, kPlanarF);
inline constexpr Member kBGRXFFFFToPlanarF =
    QUORIN_LAYOUT_ROW(QuorinConvert_BGRXFFFFToPlanarF, kSplit, kBGRXFFFF, kPlanarF);
// Interleaved pixels into planes, with a depth change.
inline constexpr Member kARGB8888toPlanarF =
    QUORIN_LAYOUT_ROW(QuorinConvert_ARGB8888toPlanarF, kSplit, kARGB8888, kPlanarF);
inline constexpr Member kARGBFFFFtoPlanar8 =
    QUORIN_LAYOUT_ROW(QuorinConvert_ARGBFFFFtoPlanar8, kSplit, kARGBFFFF, kPlanar8);

#undef QUORIN_LAYOUT_ROW

inline constexpr const Member* kLayoutMembers[] = {
    &kPlanar8toARGB8888,  &kPlanarFtoARGBFFFF,  &kPlanar16UtoARGB16U, &kPlanar8ToXRGB8888,  &kPlanar8ToBGRX8888,
    &kPlanarFToXRGBFFFF,  &kPlanarFToBGRXFFFF,  &kPlanar16UtoRGB16U,  &kPlanar8toRGB888,    &kPlanarFtoRGBFFF,
    &kPlanar8ToARGBFFFF,  &kPlanar8ToXRGBFFFF,  &kPlanar8ToBGRXFFFF,  &kPlanarFToARGB8888,  &kPlanarFToXRGB8888,
    &kPlanarFToBGRX8888,  &kARGB8888toPlanar8,  &kARGBFFFFtoPlanarF,  &kARGB16UtoPlanar16U, &kRGB16UtoPlanar16U,
    &kXRGB8888ToPlanar8,  &kBGRX8888ToPlanar8,  &kXRGBFFFFToPlanarF,  &kBGRXFFFFToPlanarF,  &kARGB8888toPlanarF,
    &kARGBFFFFtoPlanar8,
};

}  // namespace quorin::layout
