// A Highway vector hidden from the optimiser, for the places where GCC's
// rewriting of an expression costs more than it saves.
#pragma once

namespace quorin {

// v as it stands, held in a vector register. On x86 with GCC or Clang an
// empty assembler statement claims to change the register, so the compiler
// can neither fold the value into the instructions that use it nor rewrite
// how it was made; elsewhere v passes unchanged. Taken by reference: a
// 32-byte vector passed by value makes GCC note, at every instantiation, an
// ABI change of GCC 4.6 that cannot concern an inline function; the code is
// the same.
template <class V>
inline V Opaque(const V& value) {
    V v = value;
#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
    if constexpr (sizeof(v.raw) >= 16) asm("" : "+v"(v.raw));
#endif
    return v;
}

}  // namespace quorin
