// Vector twins of the clip-to-alpha rules in ClipRules.h, compiled once per
// instruction set and chosen at run time; the pixels that do not fill a
// vector go through the scalar rule. On the one-lane fallback target the
// scalar kernels serve.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Alpha/ClipKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "Alpha/ClipKernels.h"
#include "Alpha/BlendVector-inl.h"
#include "Alpha/ClipRules.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::alpha::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

template <size_t kAlpha, class T>
void ClipInterleaved(const T* src, T* dest, size_t pixels, bool) {
    ClipToAlphaInterleavedScalar<kAlpha>(src, dest, pixels);
}
template <class T>
void ClipPlanar(const T* src, const T* alpha, T* dest, size_t count, bool) {
    ClipToAlphaPlanarScalar(src, alpha, dest, count);
}

#else

// min(colour, alpha) per byte, or alpha where alpha < colour per float: the
// alpha lane itself is left as it was by either form (min(a, a) = a, a < a is false).
template <class V>
HWY_INLINE V ClipVec(V colour, V alpha) {
    if constexpr (sizeof(hn::TFromV<V>) == 1) return hn::Min(colour, alpha);
    else return hn::IfThenElse(hn::Lt(alpha, colour), alpha, colour);
}

// Each pixel's alpha spread over its four lanes: bytes by a lookup inside each
// 16-byte block (four pixels), floats by a broadcast inside each 128-bit
// block (one pixel).
template <size_t kAlpha, class T>
void ClipInterleaved(const T* src, T* dest, size_t pixels, bool stream) {
    const hn::ScalableTag<T> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const auto alphaBytes = GroupBytes(d8, kAlpha, kAlpha, kAlpha, kAlpha);
    StoreRun(
        d, stream, dest, pixels, 4 * sizeof(T), hn::Lanes(d) / 4,
        [&](size_t i, auto store) {
            const auto v = hn::LoadU(d, src + 4 * i);
            if constexpr (sizeof(T) == 1) store(ClipVec(v, hn::TableLookupBytes(v, alphaBytes)), dest + 4 * i);
            else store(ClipVec(v, hn::Broadcast<kAlpha>(v)), dest + 4 * i);
        },
        [&](size_t first, size_t count) {
            ClipToAlphaInterleavedScalar<kAlpha>(src + 4 * first, dest + 4 * first, count);
        });
}

template <class T>
void ClipPlanar(const T* src, const T* alpha, T* dest, size_t count, bool stream) {
    const hn::ScalableTag<T> d;
    StoreRun(
        d, stream, dest, count, sizeof(T), hn::Lanes(d),
        [&](size_t i, auto store) { store(ClipVec(hn::LoadU(d, src + i), hn::LoadU(d, alpha + i)), dest + i); },
        [&](size_t first, size_t n) { ClipToAlphaPlanarScalar(src + first, alpha + first, dest + first, n); });
}

#endif  // HWY_TARGET == HWY_SCALAR

void ClipARGB8888(const uint8_t* src, uint8_t* dest, size_t pixels, bool stream) {
    ClipInterleaved<kAlphaFirst>(src, dest, pixels, stream);
}
void ClipRGBA8888(const uint8_t* src, uint8_t* dest, size_t pixels, bool stream) {
    ClipInterleaved<kAlphaLast>(src, dest, pixels, stream);
}
void ClipARGBFFFF(const float* src, float* dest, size_t pixels, bool stream) {
    ClipInterleaved<kAlphaFirst>(src, dest, pixels, stream);
}
void ClipRGBAFFFF(const float* src, float* dest, size_t pixels, bool stream) {
    ClipInterleaved<kAlphaLast>(src, dest, pixels, stream);
}
void ClipPlanar8(const uint8_t* src, const uint8_t* alpha, uint8_t* dest, size_t count, bool stream) {
    ClipPlanar(src, alpha, dest, count, stream);
}
void ClipPlanarF(const float* src, const float* alpha, float* dest, size_t count, bool stream) {
    ClipPlanar(src, alpha, dest, count, stream);
}

}  // namespace quorin::alpha::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::alpha {

HWY_EXPORT(ClipARGB8888);
HWY_EXPORT(ClipRGBA8888);
HWY_EXPORT(ClipARGBFFFF);
HWY_EXPORT(ClipRGBAFFFF);
HWY_EXPORT(ClipPlanar8);
HWY_EXPORT(ClipPlanarF);

const KernelPair<InterleavedClipKernel<uint8_t>> kClipARGB8888{&ClipToAlphaInterleavedScalar<kAlphaFirst, uint8_t>,
                                                               HWY_DISPATCH_TABLE(ClipARGB8888)};
const KernelPair<InterleavedClipKernel<uint8_t>> kClipRGBA8888{&ClipToAlphaInterleavedScalar<kAlphaLast, uint8_t>,
                                                               HWY_DISPATCH_TABLE(ClipRGBA8888)};
const KernelPair<InterleavedClipKernel<float>> kClipARGBFFFF{&ClipToAlphaInterleavedScalar<kAlphaFirst, float>,
                                                             HWY_DISPATCH_TABLE(ClipARGBFFFF)};
const KernelPair<InterleavedClipKernel<float>> kClipRGBAFFFF{&ClipToAlphaInterleavedScalar<kAlphaLast, float>,
                                                             HWY_DISPATCH_TABLE(ClipRGBAFFFF)};
const KernelPair<PlanarClipKernel<uint8_t>> kClipPlanar8{&ClipToAlphaPlanarScalar<uint8_t>, HWY_DISPATCH_TABLE(ClipPlanar8)};
const KernelPair<PlanarClipKernel<float>> kClipPlanarF{&ClipToAlphaPlanarScalar<float>, HWY_DISPATCH_TABLE(ClipPlanarF)};

}  // namespace quorin::alpha
#endif  // HWY_ONCE
