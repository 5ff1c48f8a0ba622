// Vector helpers shared by the blend and clip kernels, compiled once per
// instruction set (include after foreach_target.h and highway.h).
#if defined(QUORIN_ALPHA_BLEND_VECTOR_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORIN_ALPHA_BLEND_VECTOR_INL_H_
#undef QUORIN_ALPHA_BLEND_VECTOR_INL_H_
#else
#define QUORIN_ALPHA_BLEND_VECTOR_INL_H_
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Core/RowLoop-inl.h"

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the 8-bit kernels address channels inside 32-bit lanes by shifts");

HWY_BEFORE_NAMESPACE();
namespace quorin::alpha::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The core row loop's whole steps with a scalar tail (Core/RowLoop-inl.h).
using quorin::HWY_NAMESPACE::kNoStreaming;
using quorin::HWY_NAMESPACE::StoreRun;
using quorin::HWY_NAMESPACE::StreamingHead;
using quorin::HWY_NAMESPACE::WholeSteps;

#if HWY_TARGET != HWY_SCALAR

// Byte indices for TableLookupBytes(Or0) that move byte b[k] of every
// 4-byte group into byte k (0x80: zero), inside each 16-byte block.
template <class D8>
HWY_INLINE hn::VFromD<D8> GroupBytes(D8 d8, uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) {
    const uint8_t pattern[4] = {b0, b1, b2, b3};
    alignas(16) uint8_t block[16];
    for (int i = 0; i < 16; ++i) block[i] = pattern[i % 4] & 0x80 ? 0x80 : uint8_t((i & 12) + pattern[i % 4]);
    return hn::LoadDup128(d8, block);
}

// Indices for pixels of four 16-bit lanes (8 bytes): the alpha word at
// channel `alphaChannel` goes to all four words of its pixel.
template <class D8>
HWY_INLINE hn::VFromD<D8> AlphaBytesOf16BitPixels(D8 d8, size_t alphaChannel) {
    const auto i = hn::Iota(d8, 0);
    const auto pixelBase = hn::And(i, hn::Set(d8, 8));
    const auto byteInWord = hn::And(i, hn::Set(d8, 1));
    return hn::Or(hn::Or(pixelBase, byteInWord), hn::Set(d8, static_cast<uint8_t>(2 * alphaChannel)));
}

// True in the lanes that hold channel `channel` of 4-channel pixels laid out
// one channel per lane. (The mask type is deduced: the emulated 128-bit
// target names no MFromD.)
template <class D>
HWY_INLINE auto ChannelLanes(D d, size_t channel) {
    const hn::RebindToUnsigned<D> du;
    using TU = hn::TFromD<decltype(du)>;
    const auto lane = hn::And(hn::Iota(du, 0), hn::Set(du, TU{3}));
    return hn::RebindMask(d, hn::Eq(lane, hn::Set(du, static_cast<TU>(channel))));
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace quorin::alpha::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard toggle
