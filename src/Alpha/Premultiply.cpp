// Premultiply and unpremultiply for every depth and channel order. Each
// entry point runs its row of the member table (PremultiplyMembers.h): the
// check list, then the rule's kernel pair over one contiguous run or row by
// row, under the member's split.
#include "Alpha/PremultiplyKernels.h"
#include "Alpha/PremultiplyMembers.h"
#include "Alpha/PremultiplyRules.h"
#include "Core/Streaming.h"
#include "Core/Walk.h"

namespace quorin::premultiply {
namespace {

// The rule of a direction at a sample depth.
template <Direction, SampleKind> struct RuleFor;
template <> struct RuleFor<kPre, SampleKind::U8> { using Type = Premultiply8; };
template <> struct RuleFor<kPre, SampleKind::U16> { using Type = Premultiply16U; };
template <> struct RuleFor<kPre, SampleKind::S16Q12> { using Type = Premultiply16Q12; };
template <> struct RuleFor<kPre, SampleKind::F32> { using Type = PremultiplyF; };
template <> struct RuleFor<kUnpre, SampleKind::U8> { using Type = Unpremultiply8; };
template <> struct RuleFor<kUnpre, SampleKind::U16> { using Type = Unpremultiply16U; };
template <> struct RuleFor<kUnpre, SampleKind::S16Q12> { using Type = Unpremultiply16Q12; };
template <> struct RuleFor<kUnpre, SampleKind::F32> { using Type = UnpremultiplyF; };

template <const Member& kMember>
using RuleOf = typename RuleFor<kMember.direction, kMember.format.sample>::Type;

// Four-channel pixels, alpha where the format has it.
template <const Member& kMember>
Quorin_Error RunPixels(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kAlpha = static_cast<size_t>(kFormat.alpha);
    static_assert(kFormat.channels == 4 && kFormat.hasAlpha());
    using S = Sample<kFormat>;
    if (const Quorin_Error error =
            RunChecks(kMember.checks, {{src, kFormat.pixelBytes()}, {dest, kFormat.pixelBytes()}}, flags))
        return error;

    const auto kernel = Kernels<RuleOf<kMember>>::pixels.choose();
    const bool stream = WantsStreaming(dest->height * dest->width * kFormat.pixelBytes());
    const size_t width = src->width;
    const auto run = [kernel, stream](const S* s, S* d, size_t pixels) { kernel(s, d, pixels, kAlpha, stream); };
    return RunSplit<kMember.split>(flags, width, src->height,
                                   OverRows(width, run, Plane<S, 4>(src), Plane<S, 4>(dest)));
}

// A colour plane with its alpha plane.
template <const Member& kMember>
Quorin_Error RunPlanes(const Quorin_Buffer* src, const Quorin_Buffer* alpha, const Quorin_Buffer* dest,
                       Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    static_assert(kFormat.planar());
    using S = Sample<kFormat>;
    constexpr size_t kBytes = kFormat.pixelBytes();
    if (const Quorin_Error error = RunChecks(kMember.checks, {{src, kBytes}, {alpha, kBytes}, {dest, kBytes}}, flags))
        return error;

    const auto kernel = Kernels<RuleOf<kMember>>::plane.choose();
    const bool stream = WantsStreaming(dest->height * dest->width * kBytes);
    const size_t width = src->width;
    const auto run = [kernel, stream](const S* s, const S* a, S* d, size_t count) { kernel(s, a, d, count, stream); };
    return RunSplit<kMember.split>(flags, width, src->height,
                                   OverRows(width, run, Plane<S>(src), Plane<S>(alpha), Plane<S>(dest)));
}

}  // namespace
}  // namespace quorin::premultiply

using namespace quorin::premultiply;  // NOLINT: the entry points below only name members

extern "C" {

// ---- premultiply ------------------------------------------------------------

QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return RunPixels<kPremultiplyARGB8888>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return RunPixels<kPremultiplyRGBA8888>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return RunPixels<kPremultiplyARGBFFFF>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBAFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return RunPixels<kPremultiplyRGBAFFFF>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return RunPixels<kPremultiplyARGB16U>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return RunPixels<kPremultiplyRGBA16U>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return RunPixels<kPremultiplyARGB16Q12>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return RunPixels<kPremultiplyRGBA16Q12>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                      const Quorin_Buffer* dest, Quorin_Flags flags) {
    return RunPlanes<kPremultiplyPlanar8>(src, alpha, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                      const Quorin_Buffer* dest, Quorin_Flags flags) {
    return RunPlanes<kPremultiplyPlanarF>(src, alpha, dest, flags);
}

// ---- unpremultiply ----------------------------------------------------------

QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyARGB8888>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyRGBA8888>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyARGBFFFF>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBAFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyRGBAFFFF>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyARGB16U>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyRGBA16U>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                          Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyARGB16Q12>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                          Quorin_Flags flags) {
    return RunPixels<kUnpremultiplyRGBA16Q12>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return RunPlanes<kUnpremultiplyPlanar8>(src, alpha, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return RunPlanes<kUnpremultiplyPlanarF>(src, alpha, dest, flags);
}

}  // extern "C"
