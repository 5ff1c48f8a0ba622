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

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the 8-bit kernels address channels inside 32-bit lanes by shifts");

HWY_BEFORE_NAMESPACE();
namespace quorin::alpha::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Calls body(i) for i = 0, step, 2 step, ... while a whole step fits in
// `count`; returns the first index left over for the scalar rule.
template <class Body>
HWY_INLINE size_t WholeSteps(size_t count, size_t step, const Body& body) {
    size_t i = 0;
    for (; i + step <= count; i += step) body(i);
    return i;
}

inline constexpr size_t kNoStreaming = ~size_t{0};

// For a run of `pixels` pixels of `pixelBytes` bytes at `dest`, stored
// `vectorBytes` at a time, in a call that asked to `stream`: the pixels to
// leave to the scalar rule before the stores are aligned for streaming, or
// kNoStreaming when the run should not stream (not asked, or with pixels that
// never reach a vector boundary). Vectors under 16 bytes never stream: a
// streaming store writes a whole 16-byte register.
HWY_INLINE size_t StreamingHead(bool stream, const void* dest, size_t pixels, size_t pixelBytes, size_t vectorBytes) {
    const uintptr_t address = reinterpret_cast<uintptr_t>(dest);
    if (!stream || address % pixelBytes != 0 || vectorBytes < 16) return kNoStreaming;
    const size_t head = (vectorBytes - address % vectorBytes) % vectorBytes / pixelBytes;
    return head < pixels ? head : pixels;
}

// Runs a kernel over `pixels` pixels of `pixelBytes` bytes written at `dest`
// as vectors of descriptor d, `step` pixels each: body(i, store) computes
// the step from pixel i on and hands its vector to store(v, to);
// scalar(first, count) takes the pixels no whole step covers. With `stream`
// the aligned steps are written with streaming stores.
template <class D, class Body, class Scalar>
HWY_INLINE void StoreRun(D d, bool stream, const void* dest, size_t pixels, size_t pixelBytes, size_t step,
                         const Body& body, const Scalar& scalar) {
    const size_t head = StreamingHead(stream, dest, pixels, pixelBytes, hn::Lanes(d) * sizeof(hn::TFromD<D>));
    const bool streaming = head != kNoStreaming;
    const size_t start = streaming ? head : 0;
    scalar(size_t{0}, start);
    const auto run = [&](auto store) {
        return start + WholeSteps(pixels - start, step, [&](size_t k) { body(start + k, store); });
    };
    size_t done;
    if (streaming) {
        done = run([d](auto v, auto* to) { hn::Stream(v, d, to); });
        hwy::FlushStream();
    } else {
        done = run([d](auto v, auto* to) { hn::StoreU(v, d, to); });
    }
    scalar(done, pixels - done);
}

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
