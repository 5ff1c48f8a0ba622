// One row of a family's member table for families whose members all take
// one call record: the exported name, the pixel format, the split and the
// check list, and the entry made from them. A family with one call shape
// names its row type as MemberRow<its Call>; the tests, benchmarks and the
// fuzzer walk the table's rows.
#pragma once

#include <span>

#include "Core/CheckList.h"
#include "Core/PixelFormat.h"
#include "Core/SplitRule.h"
#include "quorin/Types.h"

namespace quorin {

template <class Call>
struct MemberRow {
    const char* name;
    PixelFormat format;
    SplitRule split;
    std::span<const CheckStep> checks;
    Quorin_Error (*entry)(const Call& call);

    Quorin_Error run(const Call& call) const { return entry(call); }
};

}  // namespace quorin
