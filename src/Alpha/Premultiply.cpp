// Premultiply and unpremultiply for every depth and channel order.
//
// Every member: null records or pixel data give kQuorinError_NullPointer, any
// width or height differing between the buffers kQuorinError_BadArgument
// (never kQuorinError_SizeMismatch), then a record that cannot describe its
// image kQuorinError_BadArgument too; flag bits other than single-threaded are
// ignored; empty images succeed without touching anything. Then the kernel
// (vector or scalar, by the feature test) walks one contiguous run or row by
// row, over bands of rows split across processors: through a dispatch group,
// or, for the 16-bit premultiply members, through a parallel apply.
#include "Alpha/PremultiplyKernels.h"
#include "Alpha/PremultiplyRules.h"
#include "Core/Checks.h"
#include "Core/Dispatch.h"
#include "Core/Features.h"
#include "Core/Streaming.h"
#include "Core/Walk.h"
#include "quorin/Alpha.h"

namespace quorin::premultiply {
namespace {

constexpr size_t kAlphaFirst = 0;  // ARGB
constexpr size_t kAlphaLast = 3;   // RGBA

enum class Split {
    Group,  // bands submitted to a dispatch group; fails when no group can be made
    Apply,  // the same bands through a parallel apply of P iterations; cannot fail
};

template <Split kSplit, class BandFn>
Quorin_Error RunBands(Quorin_Flags flags, size_t width, size_t height, BandFn&& band) {
    if constexpr (kSplit == Split::Group) {
        return RunBandsOnGroup(flags, width, height, band);
    } else {
        RunBandsOnApply(flags, width, height, band);
        return kQuorinSuccess;
    }
}

// Four-channel pixels, alpha in channel kAlpha.
template <class Rule, size_t kAlpha, Split kSplit = Split::Group>
Quorin_Error Pixels(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags) {
    if (AnyMissing(src, dest)) return kQuorinError_NullPointer;
    if (SizesDiffer(src, dest)) return kQuorinError_BadArgument;
    using Sample = typename Rule::Sample;
    if (AnyCannotDescribeImage(4 * sizeof(Sample), src, dest)) return kQuorinError_BadArgument;

    const bool vector = UseVectorKernels();
    const bool stream = WantsStreaming(dest->height * dest->width * 4 * sizeof(Sample));
    const Plane<Sample, 4> from(src), to(dest);
    const size_t width = src->width;
    return RunBands<kSplit>(flags, width, src->height,
                            OverRows(width, [vector, stream](const Sample* s, Sample* d, size_t pixels) {
                                if (vector) VectorPixels(Rule{}, s, d, pixels, kAlpha, stream);
                                else ApplyToPixels<Rule, kAlpha>(s, d, pixels);
                            }, from, to));
}

// A colour plane with its alpha plane.
template <class Rule>
Quorin_Error Planes(const Quorin_Buffer* src, const Quorin_Buffer* alpha, const Quorin_Buffer* dest,
                    Quorin_Flags flags) {
    if (AnyMissing(src, alpha, dest)) return kQuorinError_NullPointer;
    if (SizesDiffer(src, alpha, dest)) return kQuorinError_BadArgument;
    using Sample = typename Rule::Sample;
    if (AnyCannotDescribeImage(sizeof(Sample), src, alpha, dest)) return kQuorinError_BadArgument;

    const bool vector = UseVectorKernels();
    const bool stream = WantsStreaming(dest->height * dest->width * sizeof(Sample));
    const Plane<Sample> from(src), by(alpha), to(dest);
    const size_t width = src->width;
    return RunBands<Split::Group>(flags, width, src->height,
                                  OverRows(width, [vector, stream](const Sample* s, const Sample* a, Sample* d,
                                                                   size_t count) {
                                      if (vector) VectorPlane(Rule{}, s, a, d, count, stream);
                                      else ApplyToPlane<Rule>(s, a, d, count);
                                  }, from, by, to));
}

}  // namespace
}  // namespace quorin::premultiply

using namespace quorin::premultiply;  // NOLINT: the entry points below only name rules

extern "C" {

// ---- premultiply ------------------------------------------------------------

QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return Pixels<Premultiply8, kAlphaFirst>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return Pixels<Premultiply8, kAlphaLast>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return Pixels<PremultiplyF, kAlphaFirst>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBAFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       Quorin_Flags flags) {
    return Pixels<PremultiplyF, kAlphaLast>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return Pixels<Premultiply16U, kAlphaFirst, Split::Apply>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      Quorin_Flags flags) {
    return Pixels<Premultiply16U, kAlphaLast, Split::Apply>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_ARGB16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return Pixels<Premultiply16Q12, kAlphaFirst, Split::Apply>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_RGBA16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return Pixels<Premultiply16Q12, kAlphaLast, Split::Apply>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                      const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Planes<Premultiply8>(src, alpha, dest, flags);
}
QUORIN_API Quorin_Error QuorinPremultiplyData_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                      const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Planes<PremultiplyF>(src, alpha, dest, flags);
}

// ---- unpremultiply ----------------------------------------------------------

QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return Pixels<Unpremultiply8, kAlphaFirst>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return Pixels<Unpremultiply8, kAlphaLast>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return Pixels<UnpremultiplyF, kAlphaFirst>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBAFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                         Quorin_Flags flags) {
    return Pixels<UnpremultiplyF, kAlphaLast>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return Pixels<Unpremultiply16U, kAlphaFirst>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                        Quorin_Flags flags) {
    return Pixels<Unpremultiply16U, kAlphaLast>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_ARGB16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                          Quorin_Flags flags) {
    return Pixels<Unpremultiply16Q12, kAlphaFirst>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_RGBA16Q12(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                          Quorin_Flags flags) {
    return Pixels<Unpremultiply16Q12, kAlphaLast>(src, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Planes<Unpremultiply8>(src, alpha, dest, flags);
}
QUORIN_API Quorin_Error QuorinUnpremultiplyData_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* alpha,
                                                        const Quorin_Buffer* dest, Quorin_Flags flags) {
    return Planes<UnpremultiplyF>(src, alpha, dest, flags);
}

}  // extern "C"
