// Every implemented image entry point as data: its buffer arguments in
// argument order (bytes per pixel, whether the member writes it) and a call
// through an array of records, so one test can drive all of them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "quorin/Types.h"

namespace quorin::test {

enum class Use {
    Read,
    Written,
    // The 8-bit interleave worker's destination, whose rowBytes is never
    // tested: a short one is converted, each row cut where its rowBytes end.
    WrittenCutToRows,
};

struct Arg {
    size_t pixelBytes;
    Use use;
    bool written() const { return use != Use::Read; }
};

struct SafetyMember {
    std::string name;
    std::vector<Arg> args;
    std::function<Quorin_Error(const Quorin_Buffer* const* buffers, Quorin_Flags flags)> call;
};

const std::vector<SafetyMember>& ImplementedMembers();

}  // namespace quorin::test
