// Calling an exported function from a bundle of arguments by its signature:
// each parameter, in order, is taken from the bundle by its type. The member
// tables use it so that a row names its exported function once and the
// tests, the benchmark and the fuzzer call the exported symbol; the fuzzer
// calls its hand-written rows the same way.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

#include "quorin/Types.h"

namespace quorin {

inline constexpr size_t kMaxCallBuffers = 6;

// Everything an image entry point may take: its buffers in argument order,
// a byte or float constant, the ranges, the flags, and for the channel
// operations a mask or count (`word`), a channel index, and four channel
// values (or a map) as 16 bytes.
struct CallArguments {
    std::array<const Quorin_Buffer*, kMaxCallBuffers> buffers{};
    uint8_t byteConstant = 0;
    float floatConstant = 0;
    const float* maxFloat = nullptr;
    const float* minFloat = nullptr;
    Quorin_Flags flags = 0;
    uint32_t word = 0;
    int index = 0;
    const uint8_t* values = nullptr;
    // Colour matrices: 64 bytes (16 coefficients of 16 or 32 bits), which may be null.
    const uint8_t* coefficients = nullptr;
    // Histograms: four arrays of max(256, word) counters.
    uint32_t* const* counts = nullptr;
};

namespace detail {

// Hands out a bundle's arguments by parameter type: buffers in turn, maxFloat
// then minFloat. Every entry point's last parameter is its flags, whose type
// is also uint32_t, so it is told apart by position rather than by type.
struct Feeder {
    const CallArguments& args;
    size_t buffer = 0, range = 0, matrices = 0;

    template <class T, bool kLast>
    T next() {
        if constexpr (kLast) {
            static_assert(std::is_same_v<T, Quorin_Flags>, "an entry point whose last parameter is not its flags");
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
        else if constexpr (std::is_same_v<T, const int32_t*>) return reinterpret_cast<const int32_t*>(args.values);
        else if constexpr (std::is_same_v<T, uint32_t* const*>) return args.counts;
        // A colour matrix's coefficients, then its 16-bit biases.
        else if constexpr (std::is_same_v<T, const int16_t*>)
            return reinterpret_cast<const int16_t*>(matrices++ == 0 ? args.coefficients : args.values);
        // Scratch memory: null, so the member sizes and allocates its own.
        else if constexpr (std::is_same_v<T, void*>) return nullptr;
        else static_assert(sizeof(T) == 0, "a parameter type no bundle carries");
    }
};

template <class... A, size_t... I>
Quorin_Error CallIndexed(Quorin_Error (*f)(A...), Feeder& feed, std::index_sequence<I...>) {
    // Braced initialisation evaluates left to right, so parameters are taken
    // in the signature's order.
    std::tuple<A...> parameters{feed.template next<A, I + 1 == sizeof...(A)>()...};
    return std::apply(f, parameters);
}

template <class... A>
Quorin_Error CallWith(Quorin_Error (*f)(A...), const CallArguments& args) {
    Feeder feed{args};
    return CallIndexed(f, feed, std::index_sequence_for<A...>{});
}

}  // namespace detail

// Calls the exported function kEntry with the bundle's arguments.
template <auto kEntry>
Quorin_Error CallExported(const CallArguments& args) {
    return detail::CallWith(kEntry, args);
}

// How many parameters of type T a signature has.
template <class T, class... A>
constexpr size_t ParametersOf(Quorin_Error (*)(A...)) {
    return (size_t{0} + ... + size_t{std::is_same_v<A, T>});
}

}  // namespace quorin
