// The table the image-call fuzzer walks: one row per entry point, giving how
// to call it, what each of its buffers holds and which flags it accepts. A
// family that lands adds its rows here; the harness itself does not change.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

#include "Core/Signature.h"
#include "quorin/Types.h"

namespace quorin::fuzz {

inline constexpr size_t kMaxBuffers = kMaxCallBuffers;

// Sample depth and channel count of one buffer's pixels.
enum class Format : uint8_t { k8, k16, kF, k8x3, k16x3, kFx3, k8x4, k16x4, kFx4 };

constexpr size_t SampleBytes(Format f) {
    switch (f) {
        case Format::k8: case Format::k8x3: case Format::k8x4: return 1;
        case Format::k16: case Format::k16x3: case Format::k16x4: return 2;
        default: return 4;
    }
}
constexpr size_t Channels(Format f) {
    switch (f) {
        case Format::k8x3: case Format::k16x3: case Format::kFx3: return 3;
        case Format::k8x4: case Format::k16x4: case Format::kFx4: return 4;
        default: return 1;
    }
}
constexpr size_t PixelBytes(Format f) { return SampleBytes(f) * Channels(f); }
constexpr bool IsFloat(Format f) { return SampleBytes(f) == 4; }

// Sources must come back unchanged; an optional source may be null (the
// harness passes null more often there); destinations are written, within
// their own width and height, or within the first buffer's for a destination
// the member does not check but takes to match it.
// A destination written along its whole rowBytes (padding included) may
// change in any byte of its rows, a partial pixel at the end included.
// A destination walked in four-byte steps up to its rowBytes may change in
// any byte of its rows.
enum class Role : uint8_t {
    Source,
    OptionalSource,
    Destination,
    MatchedDestination,
    RowBytesDestination,
    StepDestination,
};

struct BufferSpec {
    Role role;
    Format format;
};

// Everything a call may take besides its buffers, drawn by the harness.
using Arguments = CallArguments;

using Invoker = Quorin_Error (*)(const Arguments&);

// The extra parameters a member's signature takes, besides buffers and flags.
enum Extra : uint8_t {
    kNoExtra = 0,
    kByteConstant = 1,
    kFloatConstant = 2,
    kRanges = 4,
    kWord = 8,     // uint32_t, size_t, 16-bit constants
    kIndex = 16,   // int
    kValues = 32,  // const uint8_t* or const uint16_t*, and const int32_t* (biases)
    kCoefficients = 64,  // const int16_t*: a matrix, then its pre-biases (from the values)
    kCounts = 128,       // uint32_t* const*: four arrays of counters
};

struct Member {
    const char* name;
    Invoker invoke;
    size_t bufferCount;
    std::array<BufferSpec, kMaxBuffers> buffers;
    Quorin_Flags accepted;  // the flags the member documents
    uint8_t extras;         // Extra bits, read from the signature
};

// The table (Members.cpp).
std::span<const Member> AllMembers();

// ---- Calling any member from Arguments --------------------------------------
// Parameters are filled in signature order (CallExported): buffers in turn,
// the byte or float constant, maxFloat then minFloat, and the flags.

namespace detail {

template <class A>
constexpr uint8_t ExtraOf() {
    return std::is_same_v<A, uint8_t>        ? kByteConstant
           : std::is_same_v<A, float>        ? kFloatConstant
           : std::is_same_v<A, const float*> ? kRanges
           : std::is_same_v<A, uint32_t> || std::is_same_v<A, size_t> || std::is_same_v<A, uint16_t> ||
                   std::is_same_v<A, int16_t>
               ? kWord
           : std::is_same_v<A, int> ? kIndex
           : std::is_same_v<A, const uint8_t*> || std::is_same_v<A, const uint16_t*> ||
                   std::is_same_v<A, const int32_t*>
               ? kValues
           : std::is_same_v<A, const int16_t*>   ? kCoefficients
           : std::is_same_v<A, uint32_t* const*> ? kCounts
                                                 : kNoExtra;
}

// The flags, last, are drawn on their own and are not an extra.
template <class... A, size_t... I>
constexpr uint8_t ExtrasIndexed(std::index_sequence<I...>) {
    return static_cast<uint8_t>((0 | ... | (I + 1 == sizeof...(A) ? uint8_t{kNoExtra} : ExtraOf<A>())));
}

template <class... A>
constexpr uint8_t ExtrasOf(Quorin_Error (*)(A...)) {
    return ExtrasIndexed<A...>(std::index_sequence_for<A...>{});
}

}  // namespace detail

template <auto F>
Quorin_Error Invoke(const Arguments& args) {
    return CallExported<F>(args);
}

// One row: the buffer list must match the signature's buffer parameters.
template <auto F, size_t N>
constexpr Member Row(const char* name, const BufferSpec (&buffers)[N], Quorin_Flags accepted) {
    static_assert(N == ParametersOf<const Quorin_Buffer*>(F), "the row's buffers differ from the signature's");
    Member m{name, &Invoke<F>, N, {}, accepted, detail::ExtrasOf(F)};
    for (size_t i = 0; i < N; ++i) m.buffers[i] = buffers[i];
    return m;
}

}  // namespace quorin::fuzz
