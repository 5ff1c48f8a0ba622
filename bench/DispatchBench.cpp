// What the parallel frame and the machine allow: one rows dispatch with empty
// pieces (back to back, and after the workers have gone idle), how a
// compute-bound piece scales from one processor to all of them, and the
// memory's rate for one source and one destination: a streaming copy on one
// thread and on all of them. Rows with more streams (planes) can pass it, so
// it is a reference for memory-bound rows, not a hard ceiling.
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <thread>
#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#endif

#include "BenchSupport.h"
#include "Core/Dispatch.h"

namespace quorin::bench {
namespace {

void EmptyPiece(void*, size_t, size_t, size_t, size_t, size_t) {}

// A deliberately compute-bound piece: a dependent chain of float operations per row.
void BusyPiece(void* context, size_t, size_t, size_t, size_t, size_t h) {
    float x = 1.0f;
    for (size_t i = 0; i < h * 20000; ++i) x = std::sqrt(x + 1.0f);
    benchmark::DoNotOptimize(x);
    (void)context;
}

// Copies with stores that bypass the caches, as our large-destination kernels
// write, in the widest vectors the processor has: with narrower ones a single
// core leaves a fifth of the memory's speed unused here, which would make the
// ceiling too low and the gain from a second core too high. `bytes` is a
// multiple of 64 and both pointers are 64-byte aligned.
#if defined(__x86_64__) && defined(__GNUC__)
__attribute__((target("avx512f"))) void StreamCopy64(const uint8_t* from, uint8_t* to, size_t bytes, bool fence) {
    for (size_t i = 0; i < bytes; i += 64)
        _mm512_stream_si512(reinterpret_cast<__m512i*>(to + i), _mm512_load_si512(from + i));
    if (fence) _mm_sfence();
}
__attribute__((target("avx2"))) void StreamCopy32(const uint8_t* from, uint8_t* to, size_t bytes, bool fence) {
    for (size_t i = 0; i < bytes; i += 32)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(to + i),
                            _mm256_load_si256(reinterpret_cast<const __m256i*>(from + i)));
    if (fence) _mm_sfence();
}
void StreamCopy16(const uint8_t* from, uint8_t* to, size_t bytes, bool fence) {
    for (size_t i = 0; i < bytes; i += 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(to + i), _mm_load_si128(reinterpret_cast<const __m128i*>(from + i)));
    if (fence) _mm_sfence();
}
// Reads `in` bytes and streams `out` bytes a pixel, for 64 pixels a step,
// with no work between: the memory's rate for a member of that shape (three
// bytes written for two read, say), which a copy's equal halves do not show.
// Each stored vector depends on every load of its step, so none is skipped.
#define QUORIN_STREAM_SHAPE(NAME, TARGET, V, LOAD, STREAM, XOR)                                  \
    TARGET void NAME(const uint8_t* from, uint8_t* to, size_t pixels, size_t in, size_t out) { \
        const size_t loads = in * 64 / sizeof(V), stores = out * 64 / sizeof(V);               \
        for (size_t p = 0; p < pixels; p += 64, from += in * 64, to += out * 64) {             \
            V folded = LOAD(reinterpret_cast<const V*>(from));                                \
            for (size_t i = 1; i < loads; ++i) folded = XOR(folded, LOAD(reinterpret_cast<const V*>(from) + i)); \
            for (size_t i = 0; i < stores; ++i) STREAM(reinterpret_cast<V*>(to) + i, folded);  \
        }                                                                                      \
        _mm_sfence();                                                                          \
    }
QUORIN_STREAM_SHAPE(StreamShape64, __attribute__((target("avx512f"))), __m512i, _mm512_load_si512, _mm512_stream_si512,
                    _mm512_xor_si512)
QUORIN_STREAM_SHAPE(StreamShape32, __attribute__((target("avx2"))), __m256i, _mm256_load_si256, _mm256_stream_si256,
                    _mm256_xor_si256)
QUORIN_STREAM_SHAPE(StreamShape16, , __m128i, _mm_load_si128, _mm_stream_si128, _mm_xor_si128)
#undef QUORIN_STREAM_SHAPE
void StreamShape(const uint8_t* from, uint8_t* to, size_t pixels, size_t in, size_t out) {
    static const auto shape = __builtin_cpu_supports("avx512f") ? StreamShape64
                              : __builtin_cpu_supports("avx2") ? StreamShape32
                                                               : StreamShape16;
    shape(from, to, pixels, in, out);
}
__attribute__((target("avx512f"))) void StreamFill64(uint8_t* to, size_t bytes) {
    const __m512i value = _mm512_set1_epi8(3);
    for (size_t i = 0; i < bytes; i += 64) _mm512_stream_si512(reinterpret_cast<__m512i*>(to + i), value);
    _mm_sfence();
}
__attribute__((target("avx2"))) void StreamFill32(uint8_t* to, size_t bytes) {
    const __m256i value = _mm256_set1_epi8(3);
    for (size_t i = 0; i < bytes; i += 32) _mm256_stream_si256(reinterpret_cast<__m256i*>(to + i), value);
    _mm_sfence();
}
void StreamFill16(uint8_t* to, size_t bytes) {
    const __m128i value = _mm_set1_epi8(3);
    for (size_t i = 0; i < bytes; i += 16) _mm_stream_si128(reinterpret_cast<__m128i*>(to + i), value);
    _mm_sfence();
}
// Loads every 64-byte line once and folds it into an XOR, which no store or
// dependency slows: the memory's rate for reading alone.
__attribute__((target("avx512f"))) uint64_t ReadAll64(const uint8_t* from, size_t bytes) {
    __m512i a = _mm512_setzero_si512(), b = a;
    for (size_t i = 0; i < bytes; i += 128) {
        a = _mm512_xor_si512(a, _mm512_load_si512(from + i));
        b = _mm512_xor_si512(b, _mm512_load_si512(from + i + 64));
    }
    alignas(64) uint64_t lanes[8];
    _mm512_store_si512(lanes, _mm512_xor_si512(a, b));
    return lanes[0];
}
__attribute__((target("avx2"))) uint64_t ReadAll32(const uint8_t* from, size_t bytes) {
    __m256i a = _mm256_setzero_si256(), b = a;
    for (size_t i = 0; i < bytes; i += 64) {
        a = _mm256_xor_si256(a, _mm256_load_si256(reinterpret_cast<const __m256i*>(from + i)));
        b = _mm256_xor_si256(b, _mm256_load_si256(reinterpret_cast<const __m256i*>(from + i + 32)));
    }
    return static_cast<uint64_t>(_mm256_extract_epi64(_mm256_xor_si256(a, b), 0));
}
uint64_t ReadAll16(const uint8_t* from, size_t bytes) {
    __m128i a = _mm_setzero_si128();
    for (size_t i = 0; i < bytes; i += 16) a = _mm_xor_si128(a, _mm_load_si128(reinterpret_cast<const __m128i*>(from + i)));
    return static_cast<uint64_t>(_mm_cvtsi128_si64(a));
}
uint64_t ReadAll(const uint8_t* from, size_t bytes) {
    static const auto read = __builtin_cpu_supports("avx512f") ? ReadAll64
                             : __builtin_cpu_supports("avx2") ? ReadAll32
                                                              : ReadAll16;
    return read(from, bytes);
}
void StreamFill(uint8_t* to, size_t bytes) {
    static const auto fill = __builtin_cpu_supports("avx512f") ? StreamFill64
                             : __builtin_cpu_supports("avx2") ? StreamFill32
                                                              : StreamFill16;
    fill(to, bytes);
}
// `fence`: false leaves the streaming stores unfenced, for a caller that
// fences a run of rows once.
void StreamCopy(const uint8_t* from, uint8_t* to, size_t bytes, bool fence = true) {
    static const auto copy = __builtin_cpu_supports("avx512f") ? StreamCopy64
                             : __builtin_cpu_supports("avx2") ? StreamCopy32
                                                              : StreamCopy16;
    copy(from, to, bytes, fence);
}
void FenceStreams() { _mm_sfence(); }
#else
void StreamShape(const uint8_t* from, uint8_t* to, size_t pixels, size_t in, size_t out) {
    for (size_t p = 0; p < pixels; ++p, from += in, to += out)
        for (size_t i = 0; i < out; ++i) to[i] = from[i % in];
}
void StreamCopy(const uint8_t* from, uint8_t* to, size_t bytes, bool = true) { std::memcpy(to, from, bytes); }
void FenceStreams() {}
void StreamFill(uint8_t* to, size_t bytes) { std::memset(to, 3, bytes); }
uint64_t ReadAll(const uint8_t* from, size_t bytes) {
    uint64_t x = 0;
    for (size_t i = 0; i < bytes; i += 8) {
        uint64_t w;
        std::memcpy(&w, from + i, 8);
        x ^= w;
    }
    return x;
}
#endif

struct AlignedFree {
    void operator()(uint8_t* p) const { std::free(p); }
};

using Aligned = std::shared_ptr<std::unique_ptr<uint8_t, AlignedFree>>;

// A row's preparation: a source and a destination of `bytes` bytes each, made once.
std::function<void()> CopyBuffersOf(Aligned from, Aligned to, size_t bytes) {
    return [from, to, bytes] {
        if (*from) return;
        from->reset(static_cast<uint8_t*>(std::aligned_alloc(64, bytes)));
        to->reset(static_cast<uint8_t*>(std::aligned_alloc(64, bytes)));
        std::memset(from->get(), 1, bytes);
        std::memset(to->get(), 2, bytes);
    };
}

// Eight bytes read and eight written per pixel, in one piece per processor.
void RegisterCeiling(size_t size, Split split) {
    const size_t half = size * size * 8;
    const auto from = std::make_shared<std::unique_ptr<uint8_t, AlignedFree>>();
    const auto to = std::make_shared<std::unique_ptr<uint8_t, AlignedFree>>();
    RegisterRow(
        {"ceiling.stream-copy", size, size, split, 2 * half},
        [from, to, half, split] {
            const size_t pieces = split == Split::Single ? 1 : ActiveProcessorCount();
            const size_t piece = half / pieces / 64 * 64;
            ParallelApply(pieces, [&](size_t i) {
                const size_t bytes = i + 1 == pieces ? half - i * piece : piece;
                StreamCopy(from->get() + i * piece, to->get() + i * piece, bytes);
            });
        },
        {},
        CopyBuffersOf(from, to, half));
}

// The first quarter of every row of four-byte pixels, streamed and fenced once
// per piece: the pattern of a member that walks a quarter of each row, which
// meets every row's pages cold and so cannot reach the contiguous copy's rate.
void RegisterQuarterRowsCeiling(size_t size, Split split) {
    const size_t rowBytes = size * 4, used = size, bytes = rowBytes * size;
    const auto from = std::make_shared<std::unique_ptr<uint8_t, AlignedFree>>();
    const auto to = std::make_shared<std::unique_ptr<uint8_t, AlignedFree>>();
    RegisterRow(
        {"ceiling.stream-copy-quarter-rows", size, size, split, 2 * used * size},
        [from, to, size, rowBytes, used, split] {
            const size_t pieces = split == Split::Single ? 1 : ActiveProcessorCount();
            ParallelApply(pieces, [&](size_t i) {
                for (size_t y = i * size / pieces; y < (i + 1) * size / pieces; ++y)
                    StreamCopy(from->get() + y * rowBytes, to->get() + y * rowBytes, used, false);
                FenceStreams();
            });
        },
        {},
        CopyBuffersOf(from, to, bytes));
}

// The shapes of the members that read and write unequal bytes a pixel
// (two read and three written, and so on), each streamed on one thread: a
// member of that shape cannot pass its row. Four pixels of a one-byte plane
// packed into one byte count as one pixel of shape 4-1.
void RegisterShapeCeilings(size_t size) {
    static constexpr std::pair<size_t, size_t> kShapes[] = {{2, 3}, {3, 2}, {4, 3}, {6, 2}, {6, 3}, {8, 2},
                                                            {8, 3}, {8, 4}, {8, 6}, {16, 4}, {16, 12}, {4, 1}, {4, 2}};
    for (auto [in, out] : kShapes) {
        const size_t pixels = size * size;
        const auto from = std::make_shared<std::unique_ptr<uint8_t, AlignedFree>>();
        const auto to = std::make_shared<std::unique_ptr<uint8_t, AlignedFree>>();
        const std::string name = "ceiling.stream-shape." + std::to_string(in) + "-" + std::to_string(out);
        RegisterRow(
            {name, size, size, Split::Single, (in + out) * pixels},
            [from, to, pixels, in, out] { StreamShape(from->get(), to->get(), pixels, in, out); }, {},
            [from, to, pixels, in, out] {
                if (*from) return;
                from->reset(static_cast<uint8_t*>(std::aligned_alloc(64, in * pixels)));
                to->reset(static_cast<uint8_t*>(std::aligned_alloc(64, out * pixels)));
                std::memset(from->get(), 1, in * pixels);
                std::memset(to->get(), 2, out * pixels);
            });
    }
}

// One buffer of eight bytes a pixel, split into one 128-byte-aligned piece
// per processor, each handed to `piece(start, bytes)`.
template <class Piece>
void RegisterOneBufferCeiling(const char* name, size_t size, Split split, Piece piece) {
    const size_t bytes = size * size * 8;
    const auto buffer = std::make_shared<std::unique_ptr<uint8_t, AlignedFree>>();
    RegisterRow(
        {name, size, size, split, bytes},
        [buffer, bytes, split, piece] {
            const size_t pieces = split == Split::Single ? 1 : ActiveProcessorCount();
            const size_t share = bytes / pieces / 128 * 128;
            ParallelApply(pieces, [&](size_t i) {
                piece(buffer->get() + i * share, i + 1 == pieces ? bytes - i * share : share);
            });
        },
        {},
        [buffer, bytes] {
            if (*buffer) return;
            buffer->reset(static_cast<uint8_t*>(std::aligned_alloc(64, bytes)));
            std::memset(buffer->get(), 2, bytes);
        });
}

// Write-only members (fills) have only the stores' half of a copy's work: eight
// bytes written per pixel with streaming stores is their reference.
void RegisterFillCeiling(size_t size, Split split) {
    RegisterOneBufferCeiling("ceiling.stream-fill", size, split, [](uint8_t* to, size_t bytes) { StreamFill(to, bytes); });
}

// Members that read far more than they write (four float channels into
// byte planes read 16 bytes a pixel and write 4) are bound by the loads
// alone: one core's reading rate is their reference, eight bytes a pixel.
void RegisterReadCeiling(size_t size, Split split) {
    RegisterOneBufferCeiling("ceiling.read", size, split,
                             [](uint8_t* from, size_t bytes) { benchmark::DoNotOptimize(ReadAll(from, bytes)); });
}

const RegisterFamily kDispatch([] {
    benchmark::RegisterBenchmark("dispatch/rows-empty-pieces", [](benchmark::State& state) {
        const Quorin_PieceClosure closure{&EmptyPiece, nullptr};
        for (auto _ : state) _QuorinDispatchApplyOnRows(4096, 4096, &closure);
    })->UseRealTime()->Unit(benchmark::kMicrosecond);
    // The same call when the workers have slept: what a split costs an
    // application that calls us now and then rather than in a loop.
    benchmark::RegisterBenchmark("dispatch/rows-empty-pieces-after-idle", [](benchmark::State& state) {
        const Quorin_PieceClosure closure{&EmptyPiece, nullptr};
        for (auto _ : state) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            const auto start = std::chrono::steady_clock::now();
            _QuorinDispatchApplyOnRows(4096, 4096, &closure);
            state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
    })->UseManualTime()->Iterations(50)->Unit(benchmark::kMicrosecond);
    for (unsigned processors : {1u, 0u}) {
        const std::string name = processors == 1 ? "dispatch/compute-bound-1-processor" : "dispatch/compute-bound-all-processors";
        benchmark::RegisterBenchmark(name.c_str(), [processors](benchmark::State& state) {
            SetProcessorCountForTest(processors);
            const Quorin_PieceClosure closure{&BusyPiece, nullptr};
            for (auto _ : state) _QuorinDispatchApplyOnRows(1, 64, &closure);
            SetProcessorCountForTest(0);
        })->UseRealTime()->Unit(benchmark::kMillisecond);
    }
    for (size_t size : StandardSizes())
        for (Split split : {Split::Single, Split::Default}) {
            RegisterCeiling(size, split);
            RegisterFillCeiling(size, split);
            RegisterReadCeiling(size, split);
            RegisterQuarterRowsCeiling(size, split);
        }
    for (size_t size : StandardSizes()) RegisterShapeCeilings(size);
});

}  // namespace
}  // namespace quorin::bench
