// A Highway vector hidden from the optimiser, for the places where GCC's
// rewriting of an expression costs more than it saves.
#pragma once

#include <type_traits>

namespace quorin {

// v as it stands, held in a vector register. On x86 with GCC or Clang an
// empty assembler statement claims to change the register, so the compiler
// can neither fold the value into the instructions that use it nor rewrite
// how it was made; elsewhere v passes unchanged. Taken by reference: a
// 32-byte vector passed by value makes GCC note, at every instantiation, an
// ABI change of GCC 4.6 that cannot concern an inline function; the code is
// the same. Clang checks the register's size against the file's instruction
// set rather than the kernel's target attribute, so it refuses 256- and
// 512-bit vectors there, and it cannot tie the emulated target's lane arrays
// to a register: those pass unchanged under Clang, whose rewriting is not the
// one this guards against.
template <class V>
inline V Opaque(const V& value) {
    V v = value;
#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#if defined(__clang__)
    constexpr bool kHeld = sizeof(v.raw) == 16 && !std::is_array_v<decltype(v.raw)>;
#else
    constexpr bool kHeld = sizeof(v.raw) >= 16;
#endif
    if constexpr (kHeld) asm("" : "+v"(v.raw));
#endif
    return v;
}

}  // namespace quorin
