// The three-channel matrix written down once: every cell's exported entry
// point, formats, split and check list. The entry points (Packed.cpp) are
// made from these rows; the tests, the benchmark, the safety tests and the
// fuzzer walk kMatrixMembers.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

#include "Conversion/PackedRules.h"
#include "Core/CheckList.h"
#include "Core/SplitRule.h"
#include "quorin/Conversion.h"

namespace quorin::packed {

using MatrixEntry = Quorin_Error (*)(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags);

// src, dest. The size query is answered after the first step
// (kMatrixQuerySteps); no flag bit is refused. A record that cannot describe
// its image, or whose pixels are null, is refused after the described checks.
inline constexpr CheckStep kMatrixChecks[] = {
    {"a record is null", Check::NullRecord, kQuorinError_NullPointer},
    {"the buffers differ in width or height", Check::SizesDiffer, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
    {"a record's pixel data is null", Check::NullData, kQuorinError_BadArgument},
};
inline constexpr size_t kMatrixQuerySteps = 1;

struct MatrixMember {
    const char* name;
    PixelFormat from, to;
    MatrixEntry entry;
    SplitRule split = SplitRule::Chunks;
    std::span<const CheckStep> checks = kMatrixChecks;

    Quorin_Error run(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags) const {
        return entry(src, dest, flags);
    }
};

#define QUORIN_PACKED_MEMBER(name, from, to) MatrixMember{#name, from, to, &name},
inline constexpr MatrixMember kMatrixMembers[] = {QUORIN_PACKED_MATRIX(QUORIN_PACKED_MEMBER)};
#undef QUORIN_PACKED_MEMBER
static_assert(std::size(kMatrixMembers) == kCellCount);

// The row of an entry point, which is also its cell of the kernels' table.
constexpr size_t CellOf(MatrixEntry entry) {
    for (size_t i = 0; i < kCellCount; ++i)
        if (kMatrixMembers[i].entry == entry) return i;
    return kCellCount;
}

// ---- Adding alpha ----------------------------------------------------------------

// One call of any alpha-adding member: the arguments its signature takes.
struct AlphaCall {
    const Quorin_Buffer* src;
    const Quorin_Buffer* alpha;  // the plane, or null (the 565 members take none)
    double constant;             // the alpha constant, converted to the signature's type
    const Quorin_Buffer* dest;
    int premultiply;
    Quorin_Flags flags;
};

using Entry565 = Quorin_Error (*)(uint8_t alpha, const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                  Quorin_Flags flags);
template <class Constant>
using EntryWithPlane = Quorin_Error (*)(const Quorin_Buffer* src, const Quorin_Buffer* alpha, Constant constant,
                                        const Quorin_Buffer* dest, int premultiply, Quorin_Flags flags);

// Fills the exported function's parameters from a call, in signature order.
template <auto kEntry>
Quorin_Error InvokeAlpha(const AlphaCall& c) {
    if constexpr (std::is_same_v<decltype(kEntry), Entry565>) {
        return kEntry(static_cast<uint8_t>(c.constant), c.src, c.dest, c.flags);
    } else if constexpr (std::is_same_v<decltype(kEntry), EntryWithPlane<float>>) {
        return kEntry(c.src, c.alpha, static_cast<float>(c.constant), c.dest, c.premultiply, c.flags);
    } else if constexpr (std::is_same_v<decltype(kEntry), EntryWithPlane<uint16_t>>) {
        return kEntry(c.src, c.alpha, static_cast<uint16_t>(c.constant), c.dest, c.premultiply, c.flags);
    } else {
        return kEntry(c.src, c.alpha, static_cast<uint8_t>(c.constant), c.dest, c.premultiply, c.flags);
    }
}

// src, dest, then the plane when one is given. The size query (flags' low
// byte) comes first of all; none of the described steps tests a pointer, so
// a missing record or pixel data is refused with the sizes' code first.
inline constexpr CheckStep kAlphaChecks[] = {
    {"src or dest is null or has null data", Check::Missing, kQuorinError_BadArgument, Operands({0, 1})},
    {"the buffers differ in width or height", Check::SizesDiffer, kQuorinError_BadArgument, Operands({0, 1})},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument, Operands({0, 1})},
    {"the alpha plane has null data", Check::NullData, kQuorinError_BadArgument, Operands({2})},
    {"the alpha plane cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument,
     Operands({2})},
    {"the alpha plane is narrower or shorter than src", Check::ExceedsRegion, kQuorinError_BadArgument,
     Operands({2})},
};

struct AlphaMember {
    const char* name;
    PixelFormat from, to;
    Quorin_Error (*invoke)(const AlphaCall& call);
    std::span<const CheckStep> checks = kAlphaChecks;

    // The 565 members take neither a plane nor the premultiply switch.
    constexpr bool takesPlane() const { return !from.packed(); }
    // The 888 members split into processor chunks; the others run on the calling thread.
    constexpr SplitRule split() const {
        return from.sample == SampleKind::U8 ? SplitRule::Chunks : SplitRule::Serial;
    }
    Quorin_Error run(const AlphaCall& call) const { return invoke(call); }
};

// The 565 members have no plane and so no plane steps.
inline constexpr size_t kAlphaStepsWithoutPlane = 3;
#define QUORIN_ALPHA_MEMBER(name, from, to)                                                      \
    AlphaMember{#name, from, to, &InvokeAlpha<&name>,                                           \
                std::span<const CheckStep>(kAlphaChecks).first(from.packed() ? kAlphaStepsWithoutPlane \
                                                                             : std::size(kAlphaChecks))},
inline constexpr AlphaMember kAlphaMembers[] = {QUORIN_ALPHA_ADDING(QUORIN_ALPHA_MEMBER)};
#undef QUORIN_ALPHA_MEMBER

// The row of an alpha-adding entry point, found by name: comparing the
// addresses of two template instances is not a constant expression in every
// build (the sanitizer builds refuse it).
constexpr size_t AlphaCellOf(std::string_view name) {
    for (size_t i = 0; i < kAlphaCount; ++i)
        if (name == kAlphaMembers[i].name) return i;
    return kAlphaCount;
}

}  // namespace quorin::packed
