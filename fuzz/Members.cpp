#include "Members.h"

#include "quorin/Alpha.h"
#include "quorin/Conversion.h"
#include "quorin/Geometry.h"

namespace quorin::fuzz {
namespace {

constexpr BufferSpec S(Format f) { return {Role::Source, f}; }
constexpr BufferSpec A(Format f) { return {Role::OptionalSource, f}; }
constexpr BufferSpec D(Format f) { return {Role::Destination, f}; }
constexpr BufferSpec M(Format f) { return {Role::MatchedDestination, f}; }
constexpr BufferSpec W(Format f) { return {Role::RowBytesDestination, f}; }

using enum Format;

// The alpha family splits rows unless asked not to and ignores other bits.
constexpr Quorin_Flags kAlpha = kQuorinFlag_SingleThreaded;
// The layout conversions also answer the temporary-size query.
constexpr Quorin_Flags kLayout = kQuorinFlag_SingleThreaded | kQuorinFlag_QueryTempSize;

#define QUORIN_ROW(name, accepted, ...) Row<&name>(#name, {__VA_ARGS__}, accepted)

// Channel operations refuse no flag; only single-threaded has an effect.
constexpr Quorin_Flags kChannels = kQuorinFlag_SingleThreaded;

// Scaling refuses no flag; high quality and the size query act. Equal sizes
// with equal rowBytes are one block copy, so the destination's padding is
// written too.
constexpr Quorin_Flags kScale = kQuorinFlag_HighQualityResampling | kQuorinFlag_QueryTempSize;
// Quarter turns refuse no flag; the size query answers 0.
constexpr Quorin_Flags kRotate = kQuorinFlag_QueryTempSize;

constexpr Member kMembers[] = {
    // Straight-colour blends.
    QUORIN_ROW(QuorinAlphaBlend_ARGB8888, kAlpha, S(k8x4), S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinAlphaBlend_ARGBFFFF, kAlpha, S(kFx4), S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinAlphaBlend_Planar8, kAlpha, S(k8), S(k8), S(k8), S(k8), M(k8), D(k8)),
    QUORIN_ROW(QuorinAlphaBlend_PlanarF, kAlpha, S(kF), S(kF), S(kF), S(kF), M(kF), D(kF)),
    // Premultiplied blends.
    QUORIN_ROW(QuorinPremultipliedAlphaBlendDarken_RGBA8888, kAlpha, S(k8x4), S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinPremultipliedAlphaBlendLighten_RGBA8888, kAlpha, S(k8x4), S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinPremultipliedAlphaBlendMultiply_RGBA8888, kAlpha, S(k8x4), S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinPremultipliedAlphaBlendScreen_RGBA8888, kAlpha, S(k8x4), S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinPremultipliedConstAlphaBlend_Planar8, kAlpha, S(k8), S(k8), S(k8), D(k8)),
    QUORIN_ROW(QuorinPremultipliedConstAlphaBlend_PlanarF, kAlpha, S(kF), S(kF), S(kF), D(kF)),
    // Premultiply and unpremultiply.
    QUORIN_ROW(QuorinPremultiplyData_ARGB8888, kAlpha, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinPremultiplyData_RGBA8888, kAlpha, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinPremultiplyData_ARGBFFFF, kAlpha, S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinPremultiplyData_RGBAFFFF, kAlpha, S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinPremultiplyData_ARGB16U, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinPremultiplyData_RGBA16U, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinPremultiplyData_ARGB16Q12, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinPremultiplyData_RGBA16Q12, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinPremultiplyData_Planar8, kAlpha, S(k8), S(k8), D(k8)),
    QUORIN_ROW(QuorinPremultiplyData_PlanarF, kAlpha, S(kF), S(kF), D(kF)),
    QUORIN_ROW(QuorinUnpremultiplyData_ARGB8888, kAlpha, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinUnpremultiplyData_RGBA8888, kAlpha, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinUnpremultiplyData_ARGBFFFF, kAlpha, S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinUnpremultiplyData_RGBAFFFF, kAlpha, S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinUnpremultiplyData_ARGB16U, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinUnpremultiplyData_RGBA16U, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinUnpremultiplyData_ARGB16Q12, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinUnpremultiplyData_RGBA16Q12, kAlpha, S(k16x4), D(k16x4)),
    QUORIN_ROW(QuorinUnpremultiplyData_Planar8, kAlpha, S(k8), S(k8), D(k8)),
    QUORIN_ROW(QuorinUnpremultiplyData_PlanarF, kAlpha, S(kF), S(kF), D(kF)),
    // Clip to alpha.
    QUORIN_ROW(QuorinClipToAlpha_Planar8, kAlpha, S(k8), S(k8), D(k8)),
    QUORIN_ROW(QuorinClipToAlpha_PlanarF, kAlpha, S(kF), S(kF), D(kF)),
    QUORIN_ROW(QuorinClipToAlpha_ARGB8888, kAlpha, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinClipToAlpha_RGBA8888, kAlpha, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinClipToAlpha_ARGBFFFF, kAlpha, S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinClipToAlpha_RGBAFFFF, kAlpha, S(kFx4), D(kFx4)),
    // Planes into pixels, same depth.
    QUORIN_ROW(QuorinConvert_Planar8toARGB8888, kLayout, A(k8), S(k8), S(k8), S(k8), D(k8x4)),
    QUORIN_ROW(QuorinConvert_PlanarFtoARGBFFFF, kLayout, A(kF), S(kF), S(kF), S(kF), D(kFx4)),
    QUORIN_ROW(QuorinConvert_Planar16UtoARGB16U, kLayout, S(k16), S(k16), S(k16), S(k16), D(k16x4)),
    QUORIN_ROW(QuorinConvert_Planar8ToXRGB8888, kLayout, S(k8), S(k8), S(k8), D(k8x4)),
    QUORIN_ROW(QuorinConvert_Planar8ToBGRX8888, kLayout, S(k8), S(k8), S(k8), D(k8x4)),
    QUORIN_ROW(QuorinConvert_PlanarFToXRGBFFFF, kLayout, S(kF), S(kF), S(kF), D(kFx4)),
    QUORIN_ROW(QuorinConvert_PlanarFToBGRXFFFF, kLayout, S(kF), S(kF), S(kF), D(kFx4)),
    QUORIN_ROW(QuorinConvert_Planar16UtoRGB16U, kLayout, S(k16), S(k16), S(k16), D(k16x3)),
    QUORIN_ROW(QuorinConvert_Planar8toRGB888, kLayout, S(k8), S(k8), S(k8), D(k8x3)),
    QUORIN_ROW(QuorinConvert_PlanarFtoRGBFFF, kLayout, S(kF), S(kF), S(kF), D(kFx3)),
    // Planes into pixels, with a depth change.
    QUORIN_ROW(QuorinConvert_Planar8ToARGBFFFF, kLayout, A(k8), S(k8), S(k8), S(k8), D(kFx4)),
    QUORIN_ROW(QuorinConvert_Planar8ToXRGBFFFF, kLayout, S(k8), S(k8), S(k8), D(kFx4)),
    QUORIN_ROW(QuorinConvert_Planar8ToBGRXFFFF, kLayout, S(k8), S(k8), S(k8), D(kFx4)),
    QUORIN_ROW(QuorinConvert_PlanarFToARGB8888, kLayout, A(kF), S(kF), S(kF), S(kF), D(k8x4)),
    QUORIN_ROW(QuorinConvert_PlanarFToXRGB8888, kLayout, S(kF), S(kF), S(kF), D(k8x4)),
    QUORIN_ROW(QuorinConvert_PlanarFToBGRX8888, kLayout, S(kF), S(kF), S(kF), D(k8x4)),
    // Pixels into planes.
    QUORIN_ROW(QuorinConvert_ARGB8888toPlanar8, kLayout, S(k8x4), D(k8), D(k8), D(k8), D(k8)),
    QUORIN_ROW(QuorinConvert_ARGBFFFFtoPlanarF, kLayout, S(kFx4), D(kF), D(kF), D(kF), D(kF)),
    QUORIN_ROW(QuorinConvert_ARGB16UtoPlanar16U, kLayout, S(k16x4), D(k16), D(k16), D(k16), D(k16)),
    QUORIN_ROW(QuorinConvert_RGB16UtoPlanar16U, kLayout, S(k16x3), D(k16), D(k16), D(k16)),
    QUORIN_ROW(QuorinConvert_XRGB8888ToPlanar8, kLayout, S(k8x4), D(k8), D(k8), D(k8)),
    QUORIN_ROW(QuorinConvert_BGRX8888ToPlanar8, kLayout, S(k8x4), D(k8), D(k8), D(k8)),
    QUORIN_ROW(QuorinConvert_XRGBFFFFToPlanarF, kLayout, S(kFx4), D(kF), D(kF), D(kF)),
    QUORIN_ROW(QuorinConvert_BGRXFFFFToPlanarF, kLayout, S(kFx4), D(kF), D(kF), D(kF)),
    // Pixels into planes, with a depth change.
    QUORIN_ROW(QuorinConvert_ARGB8888toPlanarF, kLayout, S(k8x4), D(kF), D(kF), D(kF), D(kF)),
    QUORIN_ROW(QuorinConvert_ARGBFFFFtoPlanar8, kLayout, S(kFx4), D(k8), D(k8), D(k8), D(k8)),
    // Channel operations and fills (after the rows the seeds were made for).
    QUORIN_ROW(QuorinBufferFill_ARGB8888, kChannels, D(k8x4)),
    QUORIN_ROW(QuorinBufferFill_ARGBFFFF, kChannels, D(kFx4)),
    QUORIN_ROW(QuorinBufferFill_Planar8, kChannels, D(k8)),
    QUORIN_ROW(QuorinBufferFill_PlanarF, kChannels, D(kF)),
    QUORIN_ROW(QuorinOverwriteChannelsWithScalar_ARGB8888, kChannels, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinOverwriteChannelsWithScalar_ARGBFFFF, kChannels, S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinOverwriteChannelsWithScalar_Planar8, kChannels, W(k8)),
    QUORIN_ROW(QuorinOverwriteChannelsWithScalar_PlanarF, kChannels, W(kF)),
    QUORIN_ROW(QuorinOverwriteChannelsWithScalar_Planar16S, kChannels, W(k16)),
    QUORIN_ROW(QuorinOverwriteChannelsWithScalar_Planar16U, kChannels, W(k16)),
    QUORIN_ROW(QuorinOverwriteChannelsWithPixel_ARGB8888, kChannels, S(k8x4), W(k8x4)),
    QUORIN_ROW(QuorinOverwriteChannelsWithPixel_ARGB16U, kChannels, S(k16x4), W(k16x4)),
    QUORIN_ROW(QuorinOverwriteChannelsWithPixel_ARGBFFFF, kChannels, S(kFx4), W(kFx4)),
    QUORIN_ROW(QuorinCopyBuffer, kChannels, S(k8), D(k8)),
    QUORIN_ROW(QuorinClip_PlanarF, kChannels, S(kF), D(kF)),
    QUORIN_ROW(QuorinPermuteChannels_ARGB8888, kChannels, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinPermuteChannels_ARGBFFFF, kChannels, S(kFx4), D(kFx4)),
    QUORIN_ROW(QuorinExtractChannel_ARGB8888, kChannels, S(k8x4), W(k8)),
    QUORIN_ROW(QuorinExtractChannel_ARGB16U, kChannels, S(k16x4), W(k16)),
    QUORIN_ROW(QuorinExtractChannel_ARGBFFFF, kChannels, S(kFx4), W(kF)),
    // Scaling and quarter turns.
    QUORIN_ROW(QuorinScale_ARGB8888, kScale, S(k8x4), W(k8x4)),
    QUORIN_ROW(QuorinScale_ARGB16U, kScale, S(k16x4), W(k16x4)),
    QUORIN_ROW(QuorinScale_ARGB16S, kScale, S(k16x4), W(k16x4)),
    QUORIN_ROW(QuorinScale_ARGBFFFF, kScale, S(kFx4), W(kFx4)),
    QUORIN_ROW(QuorinScale_Planar8, kScale, S(k8), W(k8)),
    QUORIN_ROW(QuorinScale_Planar16S, kScale, S(k16), W(k16)),
    QUORIN_ROW(QuorinScale_Planar16U, kScale, S(k16), W(k16)),
    QUORIN_ROW(QuorinScale_PlanarF, kScale, S(kF), W(kF)),
    QUORIN_ROW(QuorinRotate90_ARGB8888, kRotate, S(k8x4), D(k8x4)),
    QUORIN_ROW(QuorinRotate90_ARGBFFFF, kRotate, S(kFx4), D(kFx4)),
};

#undef QUORIN_ROW

}  // namespace

std::span<const Member> AllMembers() { return kMembers; }

}  // namespace quorin::fuzz
