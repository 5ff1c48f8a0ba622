// A family's argument checks as data: an ordered list of named steps, each a
// core check applied to some of the call's buffers, with the code it returns.
// The entry point runs the list; the test harness (tests/support/CheckOrder.h)
// reads the same list to make, for every step, an input that fails there and
// nowhere earlier, so the order written here is the order proven there.
//
//   inline constexpr CheckStep kPremultiplyChecks[] = {
//       {"null record or pixels", Check::Missing, kQuorinError_NullPointer},
//       {"sizes differ", Check::SizesDiffer, kQuorinError_BadArgument},
//   };
//   if (const Quorin_Error error = RunChecks(kPremultiplyChecks, {{src, 4}, {dest, 4}}, flags)) return error;
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "Core/Checks.h"
#include "quorin/Types.h"

namespace quorin {

// The core checks a step can name. Each fails on the step's operands (all of
// the call's buffers unless the step lists some).
enum class Check : uint8_t {
    NullRecord,     // an operand's record is null
    NullData,       // an operand's pixel data is null
    Missing,        // an operand's record or its pixel data is null
    SizesDiffer,    // an operand's width or height differs from the first operand's
    ExceedsRegion,  // the first operand is wider than any other, then taller
    RowBytesShort,  // an operand's rowBytes is shorter than a row of its pixels
    // An operand cannot describe its image: rowBytes shorter than a row, or a
    // byte extent that wraps or exceeds any object (CannotDescribeImage).
    CannotDescribeImage,
    // An operand no other step tests cannot hold the first operand's region:
    // missing, cannot describe its image, or too short or narrow for it.
    CannotHoldRegion,
    FlagsOutside,   // a flag bit outside the step's `accepted` mask is set
};

// One buffer as the checks see it.
struct Operand {
    const Quorin_Buffer* record;
    size_t pixelBytes;
};

// Operand sets, as bit masks over the call's operands in argument order.
using OperandMask = uint32_t;
inline constexpr OperandMask kAllOperands = ~OperandMask{0};
constexpr OperandMask Operands(std::initializer_list<unsigned> indices) {
    OperandMask mask = 0;
    for (const unsigned i : indices) mask |= OperandMask{1} << i;
    return mask;
}

struct CheckStep {
    const char* name;
    Check check;
    Quorin_Error code;
    OperandMask operands = kAllOperands;
    Quorin_Flags accepted = 0;  // FlagsOutside only

    constexpr bool takes(size_t operand) const { return operand < 32 && (operands >> operand & 1) != 0; }
};

namespace detail {

// Whether `step` fails on operand i (pointer steps never look past a null
// record: the list puts its null step first).
inline bool FailsOn(const CheckStep& step, std::span<const Operand> operands, size_t i) {
    const Quorin_Buffer* r = operands[i].record;
    switch (step.check) {
        case Check::NullRecord: return r == nullptr;
        case Check::NullData: return r != nullptr && r->data == nullptr;
        case Check::Missing: return r == nullptr || r->data == nullptr;
        case Check::SizesDiffer: {
            const Quorin_Buffer* first = operands.front().record;
            return r && first && (r->width != first->width || r->height != first->height);
        }
        case Check::RowBytesShort: return r != nullptr && RowBytesTooSmall(r, operands[i].pixelBytes);
        case Check::CannotDescribeImage: return r != nullptr && CannotDescribeImage(r, operands[i].pixelBytes);
        case Check::CannotHoldRegion: {
            const Quorin_Buffer* region = operands.front().record;
            return CannotHoldRegion(r, operands[i].pixelBytes, region->width, region->height);
        }
        default: return false;
    }
}

}  // namespace detail

// The code of the first step that fails, or kQuorinSuccess.
inline Quorin_Error RunChecks(std::span<const CheckStep> steps, std::span<const Operand> operands,
                              Quorin_Flags flags) {
    for (const CheckStep& step : steps) {
        bool failed = false;
        if (step.check == Check::FlagsOutside) {
            failed = FlagsOutside(flags, step.accepted);
        } else if (step.check == Check::ExceedsRegion) {
            const Quorin_Buffer* region = operands.front().record;
            bool wider = false, taller = false;
            for (size_t i = 1; i < operands.size(); ++i) {
                if (!step.takes(i) || operands[i].record == nullptr) continue;
                wider = wider || region->width > operands[i].record->width;
                taller = taller || region->height > operands[i].record->height;
            }
            failed = wider || taller;
        } else {
            for (size_t i = 0; i < operands.size() && !failed; ++i) failed = step.takes(i) && detail::FailsOn(step, operands, i);
        }
        if (failed) return step.code;
    }
    return kQuorinSuccess;
}

inline Quorin_Error RunChecks(std::span<const CheckStep> steps, std::initializer_list<Operand> operands,
                              Quorin_Flags flags) {
    return RunChecks(steps, std::span<const Operand>(operands.begin(), operands.size()), flags);
}

}  // namespace quorin
