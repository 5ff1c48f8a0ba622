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
    NullArgument,   // one of the call's other pointer arguments (range arrays, ...) is null
    Missing,        // an operand's record or its pixel data is null
    Empty,          // an operand has zero width or zero height
    SizesDiffer,    // an operand's width or height differs from the first operand's
    WidthDiffers,   // an operand's width differs from the operand's before it
    ExceedsRegion,  // the region (the first operand unless the call names one) is wider than any operand, or taller
    RowBytesShort,  // an operand's rowBytes is shorter than a row of its pixels
    // An operand cannot describe its image: rowBytes shorter than a row, or a
    // byte extent that wraps or exceeds any object (CannotDescribeImage).
    CannotDescribeImage,
    // An operand no other step tests cannot hold the first operand's region:
    // missing, cannot describe its image, or too short or narrow for it.
    CannotHoldRegion,
    FlagsOutside,   // a flag bit outside the step's `accepted` mask is set
    RowBytesZero,   // an operand's rowBytes is 0
    // An operand's rowBytes is not a multiple of the step's `multiple` (its
    // sample size, for families whose rows must hold whole samples).
    RowBytesNotMultiple,
    // An operand's byte extent wraps or exceeds any object, whatever its rows
    // (the part of CannotDescribeImage a family's own rowBytes step leaves).
    ExtentTooLarge,
};

// Roles a buffer plays in a call, for steps that test only the buffers of a
// role (a family whose buffers differ from call to call, such as optional
// planes, or planes whose rowBytes only some calls test).
enum OperandRole : uint8_t {
    kRoleRequired = 1,        // a null record is an error (otherwise it is simply absent)
    kRoleRowBytesTested = 2,  // its rowBytes is tested
    kRoleFirstGroup = 4,      // tested before the flags
    kRoleSecondGroup = 8,     // tested after the flags
    kEveryRole = 0xFF,
};

// One buffer as the checks see it.
struct Operand {
    const Quorin_Buffer* record;
    size_t pixelBytes;
    uint8_t roles = kEveryRole;
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
    uint8_t roles = 0;          // only operands with all of these roles (0: any)
    uint8_t multiple = 0;       // RowBytesNotMultiple only

    constexpr bool takes(size_t operand) const { return operand < 32 && (operands >> operand & 1) != 0; }
    constexpr bool takes(size_t operand, const Operand& o) const {
        return takes(operand) && (o.roles & roles) == roles;
    }
};

// What a call hands the checks: its buffers, flags, the region that
// ExceedsRegion and CannotHoldRegion measure against (the first operand's
// when null), and its other pointer arguments.
struct CheckedCall {
    std::span<const Operand> operands;
    Quorin_Flags flags;
    const Quorin_Buffer* region = nullptr;
    std::span<const void* const> pointers = {};

    const Quorin_Buffer* regionRecord() const { return region ? region : operands.front().record; }
};

namespace detail {

// Whether `step` fails on operand i (pointer steps never look past a null
// record: the list puts its null step first).
inline bool FailsOn(const CheckStep& step, const CheckedCall& call, size_t i) {
    const Quorin_Buffer* r = call.operands[i].record;
    const size_t pixelBytes = call.operands[i].pixelBytes;
    switch (step.check) {
        case Check::NullRecord: return r == nullptr;
        case Check::NullData: return r != nullptr && r->data == nullptr;
        case Check::Missing: return r == nullptr || r->data == nullptr;
        case Check::Empty: return r != nullptr && IsEmpty(r);
        case Check::SizesDiffer: {
            const Quorin_Buffer* first = call.operands.front().record;
            return r && first && (r->width != first->width || r->height != first->height);
        }
        case Check::WidthDiffers: {
            const Quorin_Buffer* before = i > 0 ? call.operands[i - 1].record : nullptr;
            return r && before && r->width != before->width;
        }
        case Check::ExceedsRegion: {
            const Quorin_Buffer* region = call.regionRecord();
            return r && (region->width > r->width || region->height > r->height);
        }
        case Check::RowBytesShort: return r != nullptr && RowBytesTooSmall(r, pixelBytes);
        case Check::CannotDescribeImage: return r != nullptr && CannotDescribeImage(r, pixelBytes);
        case Check::RowBytesZero: return r != nullptr && r->rowBytes == 0;
        case Check::RowBytesNotMultiple: return r != nullptr && step.multiple > 1 && r->rowBytes % step.multiple != 0;
        case Check::ExtentTooLarge: return r != nullptr && ExtentTooLarge(r);
        case Check::CannotHoldRegion: {
            const Quorin_Buffer* region = call.regionRecord();
            return CannotHoldRegion(r, pixelBytes, region->width, region->height);
        }
        default: return false;
    }
}

}  // namespace detail

// The code of the first step that fails, or kQuorinSuccess.
inline Quorin_Error RunChecks(std::span<const CheckStep> steps, const CheckedCall& call) {
    for (const CheckStep& step : steps) {
        bool failed = false;
        if (step.check == Check::FlagsOutside) {
            failed = FlagsOutside(call.flags, step.accepted);
        } else if (step.check == Check::NullArgument) {
            for (const void* pointer : call.pointers) failed = failed || pointer == nullptr;
        } else {
            for (size_t i = 0; i < call.operands.size() && !failed; ++i)
                failed = step.takes(i, call.operands[i]) && detail::FailsOn(step, call, i);
        }
        if (failed) return step.code;
    }
    return kQuorinSuccess;
}

inline Quorin_Error RunChecks(std::span<const CheckStep> steps, std::initializer_list<Operand> operands,
                              Quorin_Flags flags) {
    return RunChecks(steps, CheckedCall{std::span<const Operand>(operands.begin(), operands.size()), flags});
}
inline Quorin_Error RunChecks(std::span<const CheckStep> steps, std::span<const Operand> operands,
                              Quorin_Flags flags) {
    return RunChecks(steps, CheckedCall{operands, flags});
}

}  // namespace quorin
