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

#include "quorin/Types.h"

namespace quorin::fuzz {

inline constexpr size_t kMaxBuffers = 6;

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
// A destination written along its whole rowBytes (padding included) is
// written within its rows' bytes.
enum class Role : uint8_t { Source, OptionalSource, Destination, MatchedDestination, RowBytesDestination };

struct BufferSpec {
    Role role;
    Format format;
};

// Everything a call may take besides its buffers, drawn by the harness.
struct Arguments {
    std::array<const Quorin_Buffer*, kMaxBuffers> buffers{};
    uint8_t byteConstant = 0;
    float floatConstant = 0;
    const float* maxFloat = nullptr;
    const float* minFloat = nullptr;
    Quorin_Flags flags = 0;
    // Channel operations: a mask or count, a channel index, and four
    // channel values (or a map) as 16 bytes, which may be null.
    uint32_t word = 0;
    int index = 0;
    const uint8_t* values = nullptr;
};

using Invoker = Quorin_Error (*)(const Arguments&);

// The extra parameters a member's signature takes, besides buffers and flags.
enum Extra : uint8_t {
    kNoExtra = 0,
    kByteConstant = 1,
    kFloatConstant = 2,
    kRanges = 4,
    kWord = 8,     // uint32_t, size_t, 16-bit constants
    kIndex = 16,   // int
    kValues = 32,  // const uint8_t* or const uint16_t*
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
// Parameters are filled in signature order: buffers in turn, the byte or float
// constant, maxFloat then minFloat, and the flags.

namespace detail {

struct Feeder {
    const Arguments& args;
    size_t buffer = 0, range = 0;

    // Every member's last parameter is its flags, whose type is also uint32_t,
    // so it is told apart by position rather than by type.
    template <class T, bool kLast>
    T next() {
        if constexpr (kLast) {
            static_assert(std::is_same_v<T, Quorin_Flags>, "a member whose last parameter is not its flags");
            return args.flags;
        } else if constexpr (std::is_same_v<T, const Quorin_Buffer*>) return args.buffers[buffer++];
        else if constexpr (std::is_same_v<T, uint8_t>) return args.byteConstant;
        else if constexpr (std::is_same_v<T, float>) return args.floatConstant;
        else if constexpr (std::is_same_v<T, const float*>) return range++ == 0 ? args.maxFloat : args.minFloat;
        else if constexpr (std::is_same_v<T, uint32_t> || std::is_same_v<T, size_t> ||
                           std::is_same_v<T, uint16_t> || std::is_same_v<T, int16_t>)
            return static_cast<T>(args.word);
        else if constexpr (std::is_same_v<T, int>) return args.index;
        else if constexpr (std::is_same_v<T, const uint8_t*>) return args.values;
        else if constexpr (std::is_same_v<T, const uint16_t*>) return reinterpret_cast<const uint16_t*>(args.values);
        else static_assert(sizeof(T) == 0, "a parameter type the fuzzer cannot draw");
    }
};

template <class... A, size_t... I>
Quorin_Error CallIndexed(Quorin_Error (*f)(A...), const Arguments& args, std::index_sequence<I...>) {
    Feeder feed{args};
    // Braced initialisation evaluates left to right, so parameters take
    // buffers in the signature's order.
    std::tuple<A...> parameters{feed.template next<A, I + 1 == sizeof...(A)>()...};
    return std::apply(f, parameters);
}

template <class... A>
Quorin_Error Call(Quorin_Error (*f)(A...), const Arguments& args) {
    return CallIndexed(f, args, std::index_sequence_for<A...>{});
}

template <class... A>
constexpr size_t BufferParameters(Quorin_Error (*)(A...)) {
    return (size_t{0} + ... + size_t{std::is_same_v<A, const Quorin_Buffer*>});
}

template <class A>
constexpr uint8_t ExtraOf() {
    return std::is_same_v<A, uint8_t>        ? kByteConstant
           : std::is_same_v<A, float>        ? kFloatConstant
           : std::is_same_v<A, const float*> ? kRanges
           : std::is_same_v<A, uint32_t> || std::is_same_v<A, size_t> || std::is_same_v<A, uint16_t> ||
                   std::is_same_v<A, int16_t>
               ? kWord
           : std::is_same_v<A, int> ? kIndex
           : std::is_same_v<A, const uint8_t*> || std::is_same_v<A, const uint16_t*> ? kValues
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
    return detail::Call(F, args);
}

// One row: the buffer list must match the signature's buffer parameters.
template <auto F, size_t N>
constexpr Member Row(const char* name, const BufferSpec (&buffers)[N], Quorin_Flags accepted) {
    static_assert(N == detail::BufferParameters(F), "the row's buffers differ from the signature's");
    Member m{name, &Invoke<F>, N, {}, accepted, detail::ExtrasOf(F)};
    for (size_t i = 0; i < N; ++i) m.buffers[i] = buffers[i];
    return m;
}

}  // namespace quorin::fuzz
