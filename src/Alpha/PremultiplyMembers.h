// The premultiply family, written down once: every member's entry point,
// direction, pixel format, split and check list. The entry points
// (Premultiply.cpp) are made from these rows, and the tests and the
// benchmark walk kPremultiplyMembers, so a member added here is checked,
// tested and measured without being listed again.
#pragma once

#include <cstdint>
#include <span>

#include "Core/CheckList.h"
#include "Core/PixelFormat.h"
#include "Core/SplitRule.h"
#include "quorin/Alpha.h"

namespace quorin::premultiply {

enum class Direction : uint8_t { Premultiply, Unpremultiply };

using PixelsEntry = Quorin_Error (*)(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags);
using PlanesEntry = Quorin_Error (*)(const Quorin_Buffer* src, const Quorin_Buffer* alpha, const Quorin_Buffer* dest,
                                     Quorin_Flags flags);

// Operands in argument order: src, dest; or src, alpha, dest. No flag is
// tested (bits other than single-threaded are ignored) and an empty image
// succeeds without touching anything.
inline constexpr CheckStep kPremultiplyChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_NullPointer},
    {"a width or height differs between the buffers", Check::SizesDiffer, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

struct Member {
    const char* name;
    Direction direction;
    // Of the source and the destination; a planar member's alpha plane has
    // the same sample type.
    PixelFormat format;
    SplitRule split;
    std::span<const CheckStep> checks;
    PixelsEntry pixels;  // four-channel members
    PlanesEntry planes;  // planar members

    bool planar() const { return planes != nullptr; }
    Quorin_Error run(const Quorin_Buffer* src, const Quorin_Buffer* alpha, const Quorin_Buffer* dest,
                     Quorin_Flags flags) const {
        return planar() ? planes(src, alpha, dest, flags) : pixels(src, dest, flags);
    }
};

constexpr Member PixelsMember(const char* name, Direction direction, PixelFormat format, SplitRule split,
                              PixelsEntry entry) {
    return {name, direction, format, split, kPremultiplyChecks, entry, nullptr};
}
constexpr Member PlanesMember(const char* name, Direction direction, PixelFormat format, PlanesEntry entry) {
    return {name, direction, format, SplitRule::GroupBands, kPremultiplyChecks, nullptr, entry};
}

constexpr Direction kPre = Direction::Premultiply, kUnpre = Direction::Unpremultiply;
constexpr SplitRule kGroup = SplitRule::GroupBands, kApply = SplitRule::ApplyBands;

// The 16-bit premultiply members split through a parallel apply, every other
// member through a dispatch group.
inline constexpr Member kPremultiplyARGB8888 =
    PixelsMember("QuorinPremultiplyData_ARGB8888", kPre, kARGB8888, kGroup, &QuorinPremultiplyData_ARGB8888);
inline constexpr Member kPremultiplyRGBA8888 =
    PixelsMember("QuorinPremultiplyData_RGBA8888", kPre, kRGBA8888, kGroup, &QuorinPremultiplyData_RGBA8888);
inline constexpr Member kPremultiplyARGBFFFF =
    PixelsMember("QuorinPremultiplyData_ARGBFFFF", kPre, kARGBFFFF, kGroup, &QuorinPremultiplyData_ARGBFFFF);
inline constexpr Member kPremultiplyRGBAFFFF =
    PixelsMember("QuorinPremultiplyData_RGBAFFFF", kPre, kRGBAFFFF, kGroup, &QuorinPremultiplyData_RGBAFFFF);
inline constexpr Member kPremultiplyARGB16U =
    PixelsMember("QuorinPremultiplyData_ARGB16U", kPre, kARGB16U, kApply, &QuorinPremultiplyData_ARGB16U);
inline constexpr Member kPremultiplyRGBA16U =
    PixelsMember("QuorinPremultiplyData_RGBA16U", kPre, kRGBA16U, kApply, &QuorinPremultiplyData_RGBA16U);
inline constexpr Member kPremultiplyARGB16Q12 =
    PixelsMember("QuorinPremultiplyData_ARGB16Q12", kPre, kARGB16Q12, kApply, &QuorinPremultiplyData_ARGB16Q12);
inline constexpr Member kPremultiplyRGBA16Q12 =
    PixelsMember("QuorinPremultiplyData_RGBA16Q12", kPre, kRGBA16Q12, kApply, &QuorinPremultiplyData_RGBA16Q12);
inline constexpr Member kPremultiplyPlanar8 =
    PlanesMember("QuorinPremultiplyData_Planar8", kPre, kPlanar8, &QuorinPremultiplyData_Planar8);
inline constexpr Member kPremultiplyPlanarF =
    PlanesMember("QuorinPremultiplyData_PlanarF", kPre, kPlanarF, &QuorinPremultiplyData_PlanarF);
inline constexpr Member kUnpremultiplyARGB8888 =
    PixelsMember("QuorinUnpremultiplyData_ARGB8888", kUnpre, kARGB8888, kGroup, &QuorinUnpremultiplyData_ARGB8888);
inline constexpr Member kUnpremultiplyRGBA8888 =
    PixelsMember("QuorinUnpremultiplyData_RGBA8888", kUnpre, kRGBA8888, kGroup, &QuorinUnpremultiplyData_RGBA8888);
inline constexpr Member kUnpremultiplyARGBFFFF =
    PixelsMember("QuorinUnpremultiplyData_ARGBFFFF", kUnpre, kARGBFFFF, kGroup, &QuorinUnpremultiplyData_ARGBFFFF);
inline constexpr Member kUnpremultiplyRGBAFFFF =
    PixelsMember("QuorinUnpremultiplyData_RGBAFFFF", kUnpre, kRGBAFFFF, kGroup, &QuorinUnpremultiplyData_RGBAFFFF);
inline constexpr Member kUnpremultiplyARGB16U =
    PixelsMember("QuorinUnpremultiplyData_ARGB16U", kUnpre, kARGB16U, kGroup, &QuorinUnpremultiplyData_ARGB16U);
inline constexpr Member kUnpremultiplyRGBA16U =
    PixelsMember("QuorinUnpremultiplyData_RGBA16U", kUnpre, kRGBA16U, kGroup, &QuorinUnpremultiplyData_RGBA16U);
inline constexpr Member kUnpremultiplyARGB16Q12 = PixelsMember(
    "QuorinUnpremultiplyData_ARGB16Q12", kUnpre, kARGB16Q12, kGroup, &QuorinUnpremultiplyData_ARGB16Q12);
inline constexpr Member kUnpremultiplyRGBA16Q12 = PixelsMember(
    "QuorinUnpremultiplyData_RGBA16Q12", kUnpre, kRGBA16Q12, kGroup, &QuorinUnpremultiplyData_RGBA16Q12);
inline constexpr Member kUnpremultiplyPlanar8 =
    PlanesMember("QuorinUnpremultiplyData_Planar8", kUnpre, kPlanar8, &QuorinUnpremultiplyData_Planar8);
inline constexpr Member kUnpremultiplyPlanarF =
    PlanesMember("QuorinUnpremultiplyData_PlanarF", kUnpre, kPlanarF, &QuorinUnpremultiplyData_PlanarF);

inline constexpr const Member* kPremultiplyMembers[] = {
    &kPremultiplyARGB8888,   &kPremultiplyRGBA8888,   &kPremultiplyARGBFFFF,    &kPremultiplyRGBAFFFF,
    &kPremultiplyARGB16U,    &kPremultiplyRGBA16U,    &kPremultiplyARGB16Q12,   &kPremultiplyRGBA16Q12,
    &kPremultiplyPlanar8,    &kPremultiplyPlanarF,    &kUnpremultiplyARGB8888,  &kUnpremultiplyRGBA8888,
    &kUnpremultiplyARGBFFFF, &kUnpremultiplyRGBAFFFF, &kUnpremultiplyARGB16U,   &kUnpremultiplyRGBA16U,
    &kUnpremultiplyARGB16Q12, &kUnpremultiplyRGBA16Q12, &kUnpremultiplyPlanar8, &kUnpremultiplyPlanarF,
};

}  // namespace quorin::premultiply
