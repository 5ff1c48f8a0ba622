// The three-channel matrix written down once: every cell's exported entry
// point, formats, split and check list. The entry points (Packed.cpp) are
// made from these rows; the tests, the benchmark, the safety tests and the
// fuzzer walk kMatrixMembers.
#pragma once

#include <cstddef>
#include <span>

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

}  // namespace quorin::packed
