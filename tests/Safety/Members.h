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
    // A destination written over its whole rowBytes, padding included.
    WrittenWithPadding,
    // A source read over as many bytes a row as such a destination's rowBytes.
    ReadWithPadding,
};

struct Arg {
    size_t pixelBytes;
    Use use;
    bool written() const { return use != Use::Read && use != Use::ReadWithPadding; }
    // Rows without padding, which guarded images poison.
    bool unpadded() const { return use == Use::WrittenWithPadding || use == Use::ReadWithPadding; }
};

// Wide ranges, so that random floats land on every side of them.
inline constexpr float kWideMax[4] = {1.0f, 2.0f, -1.0f, 255.0f};
inline constexpr float kWideMin[4] = {0.0f, -2.0f, 1.0f, 0.0f};

struct SafetyMember {
    std::string name;
    std::vector<Arg> args;
    bool takesRanges;
    // maxFloat and minFloat reach only the members that take ranges.
    std::function<Quorin_Error(const Quorin_Buffer* const* buffers, Quorin_Flags flags, const float* max,
                               const float* min)>
        call;
    // The code a null pixel pointer gets, for members whose family answers
    // it differently from member to member (0: the test knows the family's).
    Quorin_Error nullCode = kQuorinSuccess;
    // The code of a record that cannot describe its image (the box blur's
    // own packed-rows test answers it with kQuorinError_SizeMismatch,
    // scaling's rowBytes test with kQuorinError_InvalidRowBytes), and of a
    // size query with such a record (members that answer the query before
    // looking at the extents give their answer: success, or a size).
    Quorin_Error refusalCode = kQuorinError_BadArgument;
    Quorin_Error queryAnswer = kQuorinError_BadArgument;
    // Nonzero: the size query answers the source's pixels times this many
    // bytes (the box and tent scratch), or -21773 past the largest code, so
    // the answer to a huge record depends on the width of size_t.
    size_t queryScratchPixelBytes = 0;
    // Rows must be exactly width x pixel bytes (no padding).
    bool packedRows = false;
    // A conversion that refuses flag bits outside its mask (the packed-RGB
    // matrix refuses none).
    bool refusesFlags = true;

    Quorin_Error run(const Quorin_Buffer* const* buffers, Quorin_Flags flags, const float* max = kWideMax,
                     const float* min = kWideMin) const {
        return call(buffers, flags, max, min);
    }
};

const std::vector<SafetyMember>& ImplementedMembers();

}  // namespace quorin::test
