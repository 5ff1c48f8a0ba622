// Calling an exported function from a bundle of arguments by its signature:
// each parameter, in order, is taken from source.next<T, kLast>() by its
// type (kLast marks the flags, whose type is also that of masks and counts).
// The member tables use it so that a row names its exported function once
// and the tests, the benchmark and the fuzzer call the exported symbol.
#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "quorin/Types.h"

namespace quorin {

namespace detail {

template <class Source, class... A, size_t... I>
Quorin_Error CallIndexed(Quorin_Error (*f)(A...), Source& source, std::index_sequence<I...>) {
    // Braced initialisation evaluates left to right, so parameters are taken
    // in the signature's order.
    std::tuple<A...> parameters{source.template next<A, I + 1 == sizeof...(A)>()...};
    return std::apply(f, parameters);
}

}  // namespace detail

template <class Source, class... A>
Quorin_Error CallBySignature(Quorin_Error (*f)(A...), Source&& source) {
    return detail::CallIndexed(f, source, std::index_sequence_for<A...>{});
}

// How many parameters of type T a signature has.
template <class T, class... A>
constexpr size_t ParametersOf(Quorin_Error (*)(A...)) {
    return (size_t{0} + ... + size_t{std::is_same_v<A, T>});
}

}  // namespace quorin
