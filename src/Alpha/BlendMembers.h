// The blends and clip to alpha, written down once: every member's entry
// point, the format of its buffers, the buffers it writes, its split and its
// check list. The entry points (Blend.cpp, BlendPremultiplied.cpp,
// ClipToAlpha.cpp) run their rows; the tests and the benchmark walk
// kBlendMembers through each row's `invoke`, which takes the buffers in
// argument order and the blend's constant where it has one.
#pragma once

#include <cstdint>
#include <span>

#include "Core/CheckList.h"
#include "Core/PixelFormat.h"
#include "Core/SplitRule.h"
#include "quorin/Alpha.h"

namespace quorin::alpha {

// Every buffer is tested: a null record or pixels, then any width or height
// that differs, then a record that cannot describe its image. No flag is
// tested; an empty image succeeds untouched.
inline constexpr CheckStep kBlendChecks[] = {
    {"a record or its pixel data is null", Check::Missing, kQuorinError_NullPointer},
    {"a width or height differs between the buffers", Check::SizesDiffer, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};

// The planar straight blend (top, topAlpha, bottom, bottomAlpha, dest,
// destAlpha) tests only the top colour, the bottom colour and the result
// alpha plane; the other three are taken to match them, and are refused
// only when the walk would leave them.
inline constexpr OperandMask kStraightPlanarChecked = Operands({0, 2, 5});
inline constexpr CheckStep kStraightPlanarChecks[] = {
    {"top, bottom or result alpha, or its pixel data, is null", Check::Missing, kQuorinError_NullPointer,
     kStraightPlanarChecked},
    {"a width or height differs among top, bottom and result alpha", Check::SizesDiffer, kQuorinError_BadArgument,
     kStraightPlanarChecked},
    {"top, bottom or result alpha cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument,
     kStraightPlanarChecked},
    {"an alpha plane or the colour destination cannot hold the region", Check::CannotHoldRegion,
     kQuorinError_BadArgument, Operands({1, 3, 4})},
};

using Invoke = Quorin_Error (*)(const Quorin_Buffer* const* buffers, double constant, Quorin_Flags flags);

struct Member {
    const char* name;
    PixelFormat format;  // of every buffer
    uint8_t buffers;
    OperandMask destinations;
    SplitRule split;
    std::span<const CheckStep> checks;
    bool takesConstant;
    Invoke invoke;

    size_t pixelBytes() const { return format.pixelBytes(); }
    bool writes(size_t buffer) const { return (destinations >> buffer & 1) != 0; }
};

using B = const Quorin_Buffer* const*;
using F = Quorin_Flags;

inline constexpr Member kStraightBlendARGB8888Member{
    "QuorinAlphaBlend_ARGB8888", kARGB8888, 3, Operands({2}), SplitRule::GroupBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinAlphaBlend_ARGB8888(b[0], b[1], b[2], f); }};
inline constexpr Member kStraightBlendARGBFFFFMember{
    "QuorinAlphaBlend_ARGBFFFF", kARGBFFFF, 3, Operands({2}), SplitRule::GroupBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinAlphaBlend_ARGBFFFF(b[0], b[1], b[2], f); }};
inline constexpr Member kStraightBlendPlanar8Member{
    "QuorinAlphaBlend_Planar8", kPlanar8, 6, Operands({4, 5}), SplitRule::GroupBands, kStraightPlanarChecks, false,
    [](B b, double, F f) { return QuorinAlphaBlend_Planar8(b[0], b[1], b[2], b[3], b[4], b[5], f); }};
inline constexpr Member kStraightBlendPlanarFMember{
    "QuorinAlphaBlend_PlanarF", kPlanarF, 6, Operands({4, 5}), SplitRule::GroupBands, kStraightPlanarChecks, false,
    [](B b, double, F f) { return QuorinAlphaBlend_PlanarF(b[0], b[1], b[2], b[3], b[4], b[5], f); }};
inline constexpr Member kDarkenMember{
    "QuorinPremultipliedAlphaBlendDarken_RGBA8888", kRGBA8888, 3, Operands({2}), SplitRule::ApplyBands,
    kBlendChecks, false,
    [](B b, double, F f) { return QuorinPremultipliedAlphaBlendDarken_RGBA8888(b[0], b[1], b[2], f); }};
inline constexpr Member kLightenMember{
    "QuorinPremultipliedAlphaBlendLighten_RGBA8888", kRGBA8888, 3, Operands({2}), SplitRule::ApplyBands,
    kBlendChecks, false,
    [](B b, double, F f) { return QuorinPremultipliedAlphaBlendLighten_RGBA8888(b[0], b[1], b[2], f); }};
inline constexpr Member kMultiplyMember{
    "QuorinPremultipliedAlphaBlendMultiply_RGBA8888", kRGBA8888, 3, Operands({2}), SplitRule::RowWork,
    kBlendChecks, false,
    [](B b, double, F f) { return QuorinPremultipliedAlphaBlendMultiply_RGBA8888(b[0], b[1], b[2], f); }};
inline constexpr Member kScreenMember{
    "QuorinPremultipliedAlphaBlendScreen_RGBA8888", kRGBA8888, 3, Operands({2}), SplitRule::RowWork,
    kBlendChecks, false,
    [](B b, double, F f) { return QuorinPremultipliedAlphaBlendScreen_RGBA8888(b[0], b[1], b[2], f); }};
// Arguments top, constant, topAlpha, bottom, dest; `invoke` takes the four buffers in that order.
inline constexpr Member kConstAlphaBlendPlanar8Member{
    "QuorinPremultipliedConstAlphaBlend_Planar8", kPlanar8, 4, Operands({3}), SplitRule::Rows, kBlendChecks, true,
    [](B b, double k, F f) {
        return QuorinPremultipliedConstAlphaBlend_Planar8(b[0], static_cast<uint8_t>(k), b[1], b[2], b[3], f);
    }};
inline constexpr Member kConstAlphaBlendPlanarFMember{
    "QuorinPremultipliedConstAlphaBlend_PlanarF", kPlanarF, 4, Operands({3}), SplitRule::Rows, kBlendChecks, true,
    [](B b, double k, F f) {
        return QuorinPremultipliedConstAlphaBlend_PlanarF(b[0], static_cast<float>(k), b[1], b[2], b[3], f);
    }};
inline constexpr Member kClipPlanar8Member{
    "QuorinClipToAlpha_Planar8", kPlanar8, 3, Operands({2}), SplitRule::ApplyBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinClipToAlpha_Planar8(b[0], b[1], b[2], f); }};
inline constexpr Member kClipPlanarFMember{
    "QuorinClipToAlpha_PlanarF", kPlanarF, 3, Operands({2}), SplitRule::ApplyBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinClipToAlpha_PlanarF(b[0], b[1], b[2], f); }};
inline constexpr Member kClipARGB8888Member{
    "QuorinClipToAlpha_ARGB8888", kARGB8888, 2, Operands({1}), SplitRule::ApplyBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinClipToAlpha_ARGB8888(b[0], b[1], f); }};
inline constexpr Member kClipRGBA8888Member{
    "QuorinClipToAlpha_RGBA8888", kRGBA8888, 2, Operands({1}), SplitRule::ApplyBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinClipToAlpha_RGBA8888(b[0], b[1], f); }};
inline constexpr Member kClipARGBFFFFMember{
    "QuorinClipToAlpha_ARGBFFFF", kARGBFFFF, 2, Operands({1}), SplitRule::ApplyBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinClipToAlpha_ARGBFFFF(b[0], b[1], f); }};
inline constexpr Member kClipRGBAFFFFMember{
    "QuorinClipToAlpha_RGBAFFFF", kRGBAFFFF, 2, Operands({1}), SplitRule::ApplyBands, kBlendChecks, false,
    [](B b, double, F f) { return QuorinClipToAlpha_RGBAFFFF(b[0], b[1], f); }};

inline constexpr const Member* kBlendMembers[] = {
    &kStraightBlendARGB8888Member, &kStraightBlendARGBFFFFMember, &kStraightBlendPlanar8Member,
    &kStraightBlendPlanarFMember,  &kDarkenMember,                &kLightenMember,
    &kMultiplyMember,              &kScreenMember,                &kConstAlphaBlendPlanar8Member,
    &kConstAlphaBlendPlanarFMember, &kClipPlanar8Member,          &kClipPlanarFMember,
    &kClipARGB8888Member,          &kClipRGBA8888Member,          &kClipARGBFFFFMember,
    &kClipRGBAFFFFMember,
};

}  // namespace quorin::alpha
