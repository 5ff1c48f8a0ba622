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
//    vector boundary there, and fences them before returning (or, within a
//    StreamFenceScope, leaves the fence to the scope's end).
// dst may equal a source: each step is loaded before it is stored.
//
// RunSteps(head, pixels, body, scalar) is the same loop for kernels whose
// body stores its own vectors (several destinations, interleaved results,
// results wider than one vector) through the PlainStores or StreamingStores
// it is handed, and whose scalar rule takes the pixels no whole step
// covers: the head before an aligned streaming start (StreamingHeadOf) and
// the tail. RunWholeSteps is RunSteps for one destination in whole steps,
// StoreRun for one destination stored a vector of descriptor d at a time.
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

#include "Core/Intrinsics-inl.h"
#include "Core/Streaming.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

namespace detail {

// Runs `body` on zero-padded copies of the first `count` (fewer than a
// vector's) elements of each source and stores that many results, with
// streaming stores when `streamed` and the bytes allow 4-byte ones.
template <class T, class Body, class... Sources, size_t... kIndex>
HWY_NOINLINE void PartialVector(std::index_sequence<kIndex...>, T* dst, size_t count, bool streamed, const Body& body,
                                const Sources*... sources) {
    const hn::ScalableTag<uint8_t> d8;
    alignas(HWY_MAX_BYTES) T in[sizeof...(Sources)][HWY_MAX_BYTES / sizeof(T)] = {};
    (std::memcpy(in[kIndex], sources, count * sizeof(T)), ...);
    alignas(HWY_MAX_BYTES) uint8_t out[HWY_MAX_BYTES];
    hn::Store(body(in[kIndex]...), d8, out);
    const size_t bytes = count * sizeof(T);
    if (streamed && bytes % 4 == 0 && reinterpret_cast<uintptr_t>(dst) % 4 == 0) {
        StreamWords(dst, out, bytes);
    } else {
        std::memcpy(dst, out, bytes);
    }
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
    const size_t headBytes = (0 - reinterpret_cast<uintptr_t>(first)) & (bytes - 1);
    size_t i = headBytes % (pixelElements * sizeof(T)) == 0 ? std::min(headBytes / sizeof(T), count) : 0;
    auto* out = reinterpret_cast<uint8_t*>(dst);
    const bool streaming = stream && (reinterpret_cast<uintptr_t>(dst + i) & (bytes - 1)) == 0;
    // Vectors narrower than a cache line share their line with the ends'
    // partial vectors, which then stream too (StreamWords).
    const bool streamedEnds = streaming && bytes < 64;
    const auto partial = [&](size_t at, size_t n) {
        detail::PartialVector(std::make_index_sequence<1 + sizeof...(Sources)>(), dst + at, n, streamedEnds, body,
                              first + at, (others + at)...);
    };
    if (i != 0) partial(0, i);
    if (streaming) {
        for (; i + step <= count; i += step) hn::Stream(body(first + i, (others + i)...), d8, out + i * sizeof(T));
    } else {
        for (; i + step <= count; i += step) hn::StoreU(body(first + i, (others + i)...), d8, out + i * sizeof(T));
    }
    if (i != count) partial(i, count - i);
    if (streaming && !StreamFenceDeferred()) hwy::FlushStream();
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

// The pixels to leave to the scalar rule before every one of `count`
// destinations (null ones aside), each advancing `pixelBytes` per pixel,
// starts on a `vectorBytes` boundary after the same count, for kernels whose
// steps store `stepBytes` per destination; kNoStreaming when the call did
// not ask to `stream`, when no count below `vectorBytes` aligns them all, or
// when the steps would leave the boundary (vectors under 16 bytes never
// stream: a streaming store writes a whole 16-byte register).
template <class T>
HWY_INLINE size_t StreamingHeadOf(bool stream, T* const* destinations, size_t count, size_t pixels,
                                  size_t pixelBytes, size_t vectorBytes, size_t stepBytes) {
    if (!stream || vectorBytes < 16 || stepBytes % vectorBytes != 0) return kNoStreaming;
    for (size_t skip = 0; skip < vectorBytes; ++skip) {
        bool aligned = true;
        for (size_t k = 0; k < count; ++k)
            aligned = aligned && (destinations[k] == nullptr ||
                                  (reinterpret_cast<uintptr_t>(destinations[k]) + skip * pixelBytes) % vectorBytes == 0);
        if (aligned) return skip < pixels ? skip : pixels;
    }
    return kNoStreaming;
}

// How a run's whole steps reach memory: stores(v, d, to) for one vector,
// stores.Interleaved(d, to, v0, v1, v2[, v3]) for vectors interleaved lane
// by lane.
struct PlainStores {
    template <class V, class D, class T>
    HWY_INLINE void operator()(V v, D d, T* to) const { hn::StoreU(v, d, to); }
    template <class D, class T, class... V>
    HWY_INLINE void Interleaved(D d, T* to, V... v) const {
        if constexpr (sizeof...(V) == 4) {
            hn::StoreInterleaved4(v..., d, to);
        } else if constexpr (HasInterleaveThree<D>()) {
            hn::VFromD<D> out[3];
            InterleaveThree(d, v..., out[0], out[1], out[2]);
            for (int k = 0; k < 3; ++k) hn::StoreU(out[k], d, to + k * hn::Lanes(d));
        } else {
            hn::StoreInterleaved3(v..., d, to);
        }
    }
};

// Streaming stores take whole, aligned vectors: interleaved ones go through
// a buffer in the first-level cache and leave it a whole vector at a time.
// `to` is on a vector boundary, and the interleaved block a whole number of
// vectors (StreamingHeadOf's stepBytes).
struct StreamingStores {
    template <class V, class D, class T>
    HWY_INLINE void operator()(V v, D d, T* to) const { hn::Stream(v, d, to); }
    template <class D, class T, class... V>
    HWY_INLINE void Interleaved(D d, T* to, V... v) const {
        if constexpr (sizeof...(V) == 3 && HasInterleaveThree<D>()) {
            hn::VFromD<D> out[3];
            InterleaveThree(d, v..., out[0], out[1], out[2]);
            for (int k = 0; k < 3; ++k) hn::Stream(out[k], d, to + k * hn::Lanes(d));
            return;
        }
        const hn::ScalableTag<uint8_t> d8;
        HWY_ALIGN uint8_t bounce[4 * HWY_MAX_BYTES];
        PlainStores().Interleaved(d, reinterpret_cast<T*>(bounce), v...);
        const size_t bytes = sizeof...(V) * hn::Lanes(d) * sizeof(T);
        for (size_t b = 0; b < bytes; b += hn::Lanes(d8))
            hn::Stream(hn::Load(d8, bounce + b), d8, reinterpret_cast<uint8_t*>(to) + b);
    }
};

// The one run of a row: scalar(0, head) for the pixels before an aligned
// streaming start, body(start, stores), which stores its whole steps from
// pixel `start` on and returns the first pixel it left, then scalar(done,
// count) for the tail. `head` is StreamingHeadOf's answer: with kNoStreaming
// the steps start at 0 with plain stores, otherwise at `head` with streaming
// ones, fenced before returning.
template <class Body, class Scalar>
HWY_INLINE void RunSteps(size_t head, size_t pixels, const Body& body, const Scalar& scalar) {
    const bool streaming = head != kNoStreaming;
    const size_t start = streaming ? head : 0;
    scalar(size_t{0}, start);
    size_t done;
    if (streaming) {
        done = body(start, StreamingStores());
        if (!StreamFenceDeferred()) hwy::FlushStream();
    } else {
        done = body(start, PlainStores());
    }
    scalar(done, pixels - done);
}

// A whole step's stores into a buffer in place of the destination: `base`
// is where the step's first byte would go, `buffer` where it goes instead.
struct BounceStores {
    uint8_t* base;
    uint8_t* buffer;
    template <class T>
    HWY_INLINE T* Redirect(T* to) const {
        return reinterpret_cast<T*>(buffer + (reinterpret_cast<uint8_t*>(to) - base));
    }
    template <class V, class D, class T>
    HWY_INLINE void operator()(V v, D d, T* to) const { hn::StoreU(v, d, Redirect(to)); }
    template <class D, class T, class... V>
    HWY_INLINE void Interleaved(D d, T* to, V... v) const { PlainStores().Interleaved(d, Redirect(to), v...); }
};

// `bytes` from `from` to `to` with streaming stores of words, the bytes
// before the first word boundary and after the last whole word plain.
HWY_INLINE void StreamBytes(uint8_t* to, const uint8_t* from, size_t bytes) {
    const size_t lead = std::min(bytes, static_cast<size_t>((0 - reinterpret_cast<uintptr_t>(to)) & 3));
    const size_t words = (bytes - lead) & ~size_t{3};
    std::memcpy(to, from, lead);
    StreamWords(to + lead, from + lead, words);
    std::memcpy(to + lead + words, from + lead + words, bytes - lead - words);
}

inline constexpr size_t kMaxBouncedStepBytes = 16 * HWY_MAX_BYTES;

// The whole steps of a one-destination run from `head` on (RunSteps), each
// step(i, stores) storing the step at pixel i. A streamed run's head and
// tail share cache lines with its streamed steps, and plain stores there
// read each such line in and write it back apart from the streamed bytes:
// with 32-byte vectors and buffers 16 bytes past a 32-byte boundary (as
// malloc gives large blocks), the three-byte cells lost a quarter to a
// third of their speed at 4096 x 4096, run row by row, and fell behind
// their own 16-byte-vector twins, whose steps need no head. Where the
// processor has word-sized streaming stores (StreamWords), the head is the
// first pixels of the step at pixel 0 and the tail the last ones of the
// step ending at the run's end, each computed into a buffer and streamed.
// The tail's step reads pixels already written, so it is taken only when
// the destination overlaps no source (kSourcesApart); else the scalar rule
// writes the tail.
template <bool kSourcesApart, class Step, class Scalar>
HWY_INLINE void RunStepsStreamingEnds(size_t head, uint8_t* dst, size_t pixels, size_t pixelBytes, size_t step,
                                      const Step& stepAt, const Scalar& scalar) {
    const auto steps = [&](size_t start, auto stores) {
        return start + WholeSteps(pixels - start, step, [&](size_t k) { stepAt(start + k, stores); });
    };
    constexpr bool kWordStreams = HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4;
    if (!kWordStreams || head == kNoStreaming || pixels < step || step * pixelBytes > kMaxBouncedStepBytes)
        return RunSteps(head, pixels, steps, scalar);
    HWY_ALIGN uint8_t bounce[kMaxBouncedStepBytes];
    const auto streamPart = [&](size_t at, size_t first, size_t count) {
        stepAt(at, BounceStores{dst + at * pixelBytes, bounce});
        StreamBytes(dst + first * pixelBytes, bounce + (first - at) * pixelBytes, count * pixelBytes);
    };
    if (head != 0) streamPart(0, 0, head);
    const size_t done = steps(head, StreamingStores());
    if (done != pixels) {
        if constexpr (kSourcesApart) streamPart(pixels - step, done, pixels - done);
        else scalar(done, pixels - done);
    }
    if (!StreamFenceDeferred()) hwy::FlushStream();
}

// The run of a kernel writing one destination of `pixelBytes` a pixel in
// whole steps of `step` pixels: body(i, stores) stores the step from pixel
// i on, scalar(first, count) takes the pixels no whole step covers. Large
// destinations (`stream`) are streamed when the steps fill whole vectors,
// their ends too (RunStepsStreamingEnds; kSourcesApart: dst overlaps no
// source).
template <bool kSourcesApart = false, class T, class Body, class Scalar>
HWY_INLINE void RunWholeSteps(bool stream, T* dst, size_t pixels, size_t pixelBytes, size_t step, const Body& body,
                              const Scalar& scalar) {
    T* const destinations[1] = {dst};
    const size_t head = StreamingHeadOf(stream, destinations, 1, pixels, pixelBytes,
                                        hn::Lanes(hn::ScalableTag<uint8_t>()), step * pixelBytes);
    RunStepsStreamingEnds<kSourcesApart>(head, reinterpret_cast<uint8_t*>(dst), pixels, pixelBytes, step, body,
                                         scalar);
}

// Runs a kernel over `pixels` pixels of `pixelBytes` bytes written at `dest`
// as vectors of descriptor d, `step` pixels each: body(i, store) computes
// the step from pixel i on and hands its vector to store(v, to);
// scalar(first, count) takes the pixels no whole step covers. With `stream`
// the aligned steps are written with streaming stores, and the ends as in
// RunWholeSteps.
template <bool kSourcesApart = false, class D, class Body, class Scalar>
HWY_INLINE void StoreRun(D d, bool stream, void* dest, size_t pixels, size_t pixelBytes, size_t step,
                         const Body& body, const Scalar& scalar) {
    const size_t head = StreamingHead(stream, dest, pixels, pixelBytes, hn::Lanes(d) * sizeof(hn::TFromD<D>));
    RunStepsStreamingEnds<kSourcesApart>(
        head, static_cast<uint8_t*>(dest), pixels, pixelBytes, step,
        [&](size_t i, auto stores) { body(i, [d, stores](auto v, auto* to) { stores(v, d, to); }); }, scalar);
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // QUORIN_CORE_ROW_LOOP_INL_H_
