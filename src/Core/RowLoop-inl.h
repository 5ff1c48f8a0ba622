// The row loop of the vector kernels: whole vectors, then the tail, with the
// streaming-store policy. Compiled once per Highway target: include after
// <hwy/foreach_target.h> and <hwy/highway.h>.
//
// ForEachVector(dst, count, pixelElements, stream, body, sources...) writes
// body(source + i...) to dst + i for `count` elements, one vector of bytes per
// step. A body takes one pointer per source and returns a vector of bytes
// (hn::Vec<hn::ScalableTag<uint8_t>>); it loads whole vectors from its
// pointers and nothing else. The loop never reads or writes a byte outside
// the `count` elements of each buffer:
//  - the elements before the first source's vector boundary (when whole
//    pixels lie before it) and the partial last vector run on zero-padded
//    copies in the first-level cache, so the tail costs at most two extra
//    steps and the body needs no tail of its own;
//  - `stream` (decided once per call, WantsStreaming of the whole
//    destination) writes the steps with streaming stores when dst reaches a
//    vector boundary there, and fences them before returning.
// dst may equal a source: each step is loaded before it is stored.
//
// StoreRun(d, stream, dest, pixels, pixelBytes, step, body, scalar) is the
// same loop for kernels whose body stores its own vectors (several
// destinations, or results wider than one vector) and whose scalar rule
// takes the pixels no whole step covers: the head before an aligned
// streaming start and the tail.
//
// Per-target include guard (Highway's toggle idiom).
#if defined(QUORIN_CORE_ROW_LOOP_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORIN_CORE_ROW_LOOP_INL_H_
#undef QUORIN_CORE_ROW_LOOP_INL_H_
#else
#define QUORIN_CORE_ROW_LOOP_INL_H_
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

namespace detail {

// Runs `body` on zero-padded copies of the first `count` (fewer than a
// vector's) elements of each source and stores that many results.
template <class T, class Body, class... Sources, size_t... kIndex>
HWY_NOINLINE void PartialVector(std::index_sequence<kIndex...>, T* dst, size_t count, const Body& body,
                                const Sources*... sources) {
    const hn::ScalableTag<uint8_t> d8;
    alignas(HWY_MAX_BYTES) T in[sizeof...(Sources)][HWY_MAX_BYTES / sizeof(T)] = {};
    (std::memcpy(in[kIndex], sources, count * sizeof(T)), ...);
    alignas(HWY_MAX_BYTES) uint8_t out[HWY_MAX_BYTES];
    hn::Store(body(in[kIndex]...), d8, out);
    std::memcpy(dst, out, count * sizeof(T));
}

}  // namespace detail

// Unaligned full-width loads cost a third of the memory-bound speed on some
// processors, so whole pixels before the first source's vector boundary run
// apart, like the partial last vector, on padded copies.
template <class T, class Body, class... Sources>
HWY_INLINE void ForEachVector(T* dst, size_t count, size_t pixelElements, bool stream, const Body& body,
                              const T* first, const Sources*... others) {
    const hn::ScalableTag<uint8_t> d8;
    const size_t bytes = hn::Lanes(d8), step = bytes / sizeof(T);
    const auto partial = [&](size_t i, size_t n) {
        detail::PartialVector(std::make_index_sequence<1 + sizeof...(Sources)>(), dst + i, n, body, first + i,
                              (others + i)...);
    };
    const size_t headBytes = (0 - reinterpret_cast<uintptr_t>(first)) & (bytes - 1);
    size_t i = headBytes % (pixelElements * sizeof(T)) == 0 ? std::min(headBytes / sizeof(T), count) : 0;
    if (i != 0) partial(0, i);
    auto* out = reinterpret_cast<uint8_t*>(dst);
    if (stream && (reinterpret_cast<uintptr_t>(dst + i) & (bytes - 1)) == 0) {
        for (; i + step <= count; i += step) hn::Stream(body(first + i, (others + i)...), d8, out + i * sizeof(T));
        hwy::FlushStream();
    } else {
        for (; i + step <= count; i += step) hn::StoreU(body(first + i, (others + i)...), d8, out + i * sizeof(T));
    }
    if (i != count) partial(i, count - i);
}

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

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // QUORIN_CORE_ROW_LOOP_INL_H_
