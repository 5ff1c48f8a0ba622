#include "Members.h"

#include "quorin/Alpha.h"
#include "quorin/Conversion.h"

namespace quorin::test {
namespace {

using B = const Quorin_Buffer* const*;
using F = Quorin_Flags;
using R = const float*;
using Two = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
using Three = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
using Six = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, const Quorin_Buffer*, const Quorin_Buffer*,
                             const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);


constexpr Arg In(size_t bytes) { return {bytes, Use::Read}; }
constexpr Arg Out(size_t bytes) { return {bytes, Use::Written}; }

SafetyMember Pixels(std::string name, Two fn, size_t bytes) {
    return {std::move(name), {In(bytes), Out(bytes)}, false, [fn](B b, F f, R, R) { return fn(b[0], b[1], f); }};
}
// src or top, alpha or bottom, dest
SafetyMember Planes(std::string name, Three fn, size_t bytes) {
    return {std::move(name), {In(bytes), In(bytes), Out(bytes)}, false, [fn](B b, F f, R, R) { return fn(b[0], b[1], b[2], f); }};
}
SafetyMember StraightPlanes(std::string name, Six fn, size_t bytes) {
    return {std::move(name),
            {In(bytes), In(bytes), In(bytes), In(bytes), Out(bytes), Out(bytes)},
            false,
            [fn](B b, F f, R, R) { return fn(b[0], b[1], b[2], b[3], b[4], b[5], f); }};
}

std::vector<SafetyMember> AlphaMembers() {
    return {
        Planes("QuorinAlphaBlend_ARGB8888", QuorinAlphaBlend_ARGB8888, 4),
        Planes("QuorinAlphaBlend_ARGBFFFF", QuorinAlphaBlend_ARGBFFFF, 16),
        StraightPlanes("QuorinAlphaBlend_Planar8", QuorinAlphaBlend_Planar8, 1),
        StraightPlanes("QuorinAlphaBlend_PlanarF", QuorinAlphaBlend_PlanarF, 4),
        Planes("QuorinPremultipliedAlphaBlendDarken_RGBA8888", QuorinPremultipliedAlphaBlendDarken_RGBA8888, 4),
        Planes("QuorinPremultipliedAlphaBlendLighten_RGBA8888", QuorinPremultipliedAlphaBlendLighten_RGBA8888, 4),
        Planes("QuorinPremultipliedAlphaBlendMultiply_RGBA8888", QuorinPremultipliedAlphaBlendMultiply_RGBA8888, 4),
        Planes("QuorinPremultipliedAlphaBlendScreen_RGBA8888", QuorinPremultipliedAlphaBlendScreen_RGBA8888, 4),
        {"QuorinPremultipliedConstAlphaBlend_Planar8", {In(1), In(1), In(1), Out(1)}, false,
         [](B b, F f, R, R) { return QuorinPremultipliedConstAlphaBlend_Planar8(b[0], 0x9C, b[1], b[2], b[3], f); }},
        {"QuorinPremultipliedConstAlphaBlend_PlanarF", {In(4), In(4), In(4), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinPremultipliedConstAlphaBlend_PlanarF(b[0], 0.6f, b[1], b[2], b[3], f); }},
        Pixels("QuorinPremultiplyData_ARGB8888", QuorinPremultiplyData_ARGB8888, 4),
        Pixels("QuorinPremultiplyData_RGBA8888", QuorinPremultiplyData_RGBA8888, 4),
        Pixels("QuorinPremultiplyData_ARGBFFFF", QuorinPremultiplyData_ARGBFFFF, 16),
        Pixels("QuorinPremultiplyData_RGBAFFFF", QuorinPremultiplyData_RGBAFFFF, 16),
        Pixels("QuorinPremultiplyData_ARGB16U", QuorinPremultiplyData_ARGB16U, 8),
        Pixels("QuorinPremultiplyData_RGBA16U", QuorinPremultiplyData_RGBA16U, 8),
        Pixels("QuorinPremultiplyData_ARGB16Q12", QuorinPremultiplyData_ARGB16Q12, 8),
        Pixels("QuorinPremultiplyData_RGBA16Q12", QuorinPremultiplyData_RGBA16Q12, 8),
        Planes("QuorinPremultiplyData_Planar8", QuorinPremultiplyData_Planar8, 1),
        Planes("QuorinPremultiplyData_PlanarF", QuorinPremultiplyData_PlanarF, 4),
        Pixels("QuorinUnpremultiplyData_ARGB8888", QuorinUnpremultiplyData_ARGB8888, 4),
        Pixels("QuorinUnpremultiplyData_RGBA8888", QuorinUnpremultiplyData_RGBA8888, 4),
        Pixels("QuorinUnpremultiplyData_ARGBFFFF", QuorinUnpremultiplyData_ARGBFFFF, 16),
        Pixels("QuorinUnpremultiplyData_RGBAFFFF", QuorinUnpremultiplyData_RGBAFFFF, 16),
        Pixels("QuorinUnpremultiplyData_ARGB16U", QuorinUnpremultiplyData_ARGB16U, 8),
        Pixels("QuorinUnpremultiplyData_RGBA16U", QuorinUnpremultiplyData_RGBA16U, 8),
        Pixels("QuorinUnpremultiplyData_ARGB16Q12", QuorinUnpremultiplyData_ARGB16Q12, 8),
        Pixels("QuorinUnpremultiplyData_RGBA16Q12", QuorinUnpremultiplyData_RGBA16Q12, 8),
        Planes("QuorinUnpremultiplyData_Planar8", QuorinUnpremultiplyData_Planar8, 1),
        Planes("QuorinUnpremultiplyData_PlanarF", QuorinUnpremultiplyData_PlanarF, 4),
        Planes("QuorinClipToAlpha_Planar8", QuorinClipToAlpha_Planar8, 1),
        Planes("QuorinClipToAlpha_PlanarF", QuorinClipToAlpha_PlanarF, 4),
        Pixels("QuorinClipToAlpha_ARGB8888", QuorinClipToAlpha_ARGB8888, 4),
        Pixels("QuorinClipToAlpha_RGBA8888", QuorinClipToAlpha_RGBA8888, 4),
        Pixels("QuorinClipToAlpha_ARGBFFFF", QuorinClipToAlpha_ARGBFFFF, 16),
        Pixels("QuorinClipToAlpha_RGBAFFFF", QuorinClipToAlpha_RGBAFFFF, 16),
    };
}

std::vector<SafetyMember> LayoutMembers() {
    const Arg cut{4, Use::WrittenCutToRows};
    return {
        // planes into pixels
        {"QuorinConvert_Planar8toARGB8888", {In(1), In(1), In(1), In(1), cut}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8toARGB8888(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_Planar8ToXRGB8888", {In(1), In(1), In(1), cut}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8ToXRGB8888(0xC3, b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_Planar8ToBGRX8888", {In(1), In(1), In(1), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8ToBGRX8888(b[0], b[1], b[2], 0xC3, b[3], f); }},
        {"QuorinConvert_PlanarFtoARGBFFFF", {In(4), In(4), In(4), In(4), Out(16)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFtoARGBFFFF(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_PlanarFToXRGBFFFF", {In(4), In(4), In(4), Out(16)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFToXRGBFFFF(0.8f, b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_PlanarFToBGRXFFFF", {In(4), In(4), In(4), Out(16)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFToBGRXFFFF(b[0], b[1], b[2], 0.8f, b[3], f); }},
        {"QuorinConvert_Planar16UtoARGB16U", {In(2), In(2), In(2), In(2), Out(8)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar16UtoARGB16U(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_Planar16UtoRGB16U", {In(2), In(2), In(2), Out(6)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar16UtoRGB16U(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_Planar8toRGB888", {In(1), In(1), In(1), Out(3)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8toRGB888(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_PlanarFtoRGBFFF", {In(4), In(4), In(4), Out(12)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFtoRGBFFF(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_Planar8ToARGBFFFF", {In(1), In(1), In(1), In(1), Out(16)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_Planar8ToARGBFFFF(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
        {"QuorinConvert_Planar8ToXRGBFFFF", {In(1), In(1), In(1), Out(16)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_Planar8ToXRGBFFFF(0.8f, b[0], b[1], b[2], b[3], max, min, f); }},
        {"QuorinConvert_Planar8ToBGRXFFFF", {In(1), In(1), In(1), Out(16)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_Planar8ToBGRXFFFF(b[0], b[1], b[2], 0.8f, b[3], max, min, f); }},
        {"QuorinConvert_PlanarFToARGB8888", {In(4), In(4), In(4), In(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_PlanarFToARGB8888(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
        {"QuorinConvert_PlanarFToXRGB8888", {In(4), In(4), In(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_PlanarFToXRGB8888(0.8f, b[0], b[1], b[2], b[3], max, min, f); }},
        {"QuorinConvert_PlanarFToBGRX8888", {In(4), In(4), In(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_PlanarFToBGRX8888(b[0], b[1], b[2], 0xC3, b[3], max, min, f); }},
        // pixels into planes
        {"QuorinConvert_ARGB8888toPlanar8", {In(4), Out(1), Out(1), Out(1), Out(1)}, false,
         [](B b, F f, R, R) { return QuorinConvert_ARGB8888toPlanar8(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_ARGBFFFFtoPlanarF", {In(16), Out(4), Out(4), Out(4), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_ARGBFFFFtoPlanarF(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_ARGB16UtoPlanar16U", {In(8), Out(2), Out(2), Out(2), Out(2)}, false,
         [](B b, F f, R, R) { return QuorinConvert_ARGB16UtoPlanar16U(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_RGB16UtoPlanar16U", {In(6), Out(2), Out(2), Out(2)}, false,
         [](B b, F f, R, R) { return QuorinConvert_RGB16UtoPlanar16U(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_XRGB8888ToPlanar8", {In(4), Out(1), Out(1), Out(1)}, false,
         [](B b, F f, R, R) { return QuorinConvert_XRGB8888ToPlanar8(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_BGRX8888ToPlanar8", {In(4), Out(1), Out(1), Out(1)}, false,
         [](B b, F f, R, R) { return QuorinConvert_BGRX8888ToPlanar8(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_XRGBFFFFToPlanarF", {In(16), Out(4), Out(4), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_XRGBFFFFToPlanarF(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_BGRXFFFFToPlanarF", {In(16), Out(4), Out(4), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_BGRXFFFFToPlanarF(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_ARGB8888toPlanarF", {In(4), Out(4), Out(4), Out(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_ARGB8888toPlanarF(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
        {"QuorinConvert_ARGBFFFFtoPlanar8", {In(16), Out(1), Out(1), Out(1), Out(1)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_ARGBFFFFtoPlanar8(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
    };
}

}  // namespace

const std::vector<SafetyMember>& ImplementedMembers() {
    static const std::vector<SafetyMember> members = [] {
        std::vector<SafetyMember> all = AlphaMembers();
        for (SafetyMember& m : LayoutMembers()) all.push_back(std::move(m));
        return all;
    }();
    return members;
}

}  // namespace quorin::test
