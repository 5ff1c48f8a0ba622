#include "support/CheckOrder.h"

#include <gtest/gtest.h>

#include "support/Codes.h"

#include <bit>
#include <cstdint>

namespace quorin::test {
namespace {

struct Call {
    std::vector<Quorin_Buffer> records;
    std::vector<bool> null;
    Quorin_Flags flags = 0;

    std::vector<const Quorin_Buffer*> pointers() const {
        std::vector<const Quorin_Buffer*> out;
        for (size_t i = 0; i < records.size(); ++i) out.push_back(null[i] ? nullptr : &records[i]);
        return out;
    }
};

// One way to fail `step` at operand i (or, for flags, anywhere); `variant`
// picks among a check's faults. False when the check has no such fault.
bool Plant(const CheckStep& step, size_t i, int variant, const std::vector<GuardedImage*>& images, Call& call) {
    Quorin_Buffer& r = call.records[i];
    switch (step.check) {
        case Check::NullRecord: return variant == 0 && (call.null[i] = true);
        case Check::NullData: return variant == 0 && ((r.data = nullptr), true);
        case Check::NullArgument: return false;  // not a buffer: the member's own tests plant it
        case Check::Missing:
            if (variant == 0) return call.null[i] = true;
            if (variant == 1) return (r.data = nullptr), true;
            return false;
        case Check::Empty:
            if (variant == 0) return (r.width = 0), true;
            if (variant == 1) return (r.height = 0), true;
            return false;
        case Check::SizesDiffer:
            // Smaller, so a missing check cannot make the member walk past a buffer.
            if (variant == 0 && r.width > 1) return (--r.width), true;
            if (variant == 1 && r.height > 1) return (--r.height), true;
            return false;
        case Check::WidthDiffers:  // wider, so a narrower neighbour planted later keeps it different
            return variant == 0 && i > 0 && ((++r.width), true);
        case Check::ExceedsRegion:
            if (i == 0) return false;
            if (variant == 0 && r.width > 1) return (--r.width), true;
            if (variant == 1 && r.height > 1) return (--r.height), true;
            return false;
        case Check::RowBytesShort:
            return variant == 0 && ((r.rowBytes = r.width * images[i]->pixelBytes() - 1), true);
        case Check::CannotDescribeImage:
            if (variant == 0) return (r.rowBytes = r.width * images[i]->pixelBytes() - 1), true;
            // Rows long enough, but more bytes than any object can hold.
            if (variant == 1 && r.height > 1) return (r.rowBytes = size_t{PTRDIFF_MAX} / 2 + 1), true;
            return false;
        case Check::CannotHoldRegion:
            if (i == 0) return false;
            if (variant == 0) return (r.rowBytes = r.width * images[i]->pixelBytes() - 1), true;
            if (variant == 1 && r.height > 1) return (--r.height), true;
            if (variant == 2) return (r.data = nullptr), true;
            if (variant == 3) return call.null[i] = true;
            return false;
        case Check::RowBytesZero: return variant == 0 && ((r.rowBytes = 0), true);
        case Check::RowBytesNotMultiple:
            // One byte more keeps every row long enough for its pixels.
            return variant == 0 && step.multiple > 1 && ((r.rowBytes += 1), true);
        case Check::ExtentTooLarge:
            return variant == 0 && r.height > 1 && ((r.rowBytes = size_t{PTRDIFF_MAX} / 2 + 1), true);
        case Check::FlagsOutside: {
            if (variant != 0 || i != 0) return false;
            const Quorin_Flags outside = ~step.accepted;
            return outside != 0 && ((call.flags |= Quorin_Flags{1} << std::countr_zero(outside)), true);
        }
    }
    return false;
}

// Widths that earlier steps require equal are kept equal, so a fault planted
// in one operand's width fails only the step it is planted for.
void KeepEqualWidths(std::span<const CheckStep> earlier, Call& call) {
    for (const CheckStep& step : earlier) {
        if (step.check != Check::WidthDiffers) continue;
        for (size_t k = 1; k < call.records.size(); ++k)
            if (step.takes(k)) call.records[k].width = call.records[k - 1].width;
    }
}

// Whether `step` still fails on the call as planted so far.
bool StillFails(const CheckStep& step, const std::vector<GuardedImage*>& images, const Call& call) {
    std::vector<Operand> operands;
    const std::vector<const Quorin_Buffer*> records = call.pointers();
    for (size_t i = 0; i < records.size(); ++i) operands.push_back({records[i], images[i]->pixelBytes()});
    return RunChecks(std::span<const CheckStep>(&step, 1), CheckedCall{operands, call.flags}) != kQuorinSuccess;
}

bool NullsAPointer(const CheckStep& step) {
    return step.check == Check::NullRecord || step.check == Check::NullData || step.check == Check::Missing;
}

}  // namespace

size_t ExpectCheckOrder(std::span<const CheckStep> steps, const std::vector<GuardedImage*>& images,
                        const std::vector<size_t>& destinations, const CheckedEntry& entry) {
    Call valid;
    for (GuardedImage* image : images) valid.records.push_back(*image->record()), valid.null.push_back(false);
    size_t tried = 0;
    for (size_t s = 0; s < steps.size(); ++s) {
        size_t triedHere = 0;
        for (size_t i = 0; i < images.size(); ++i) {
            if (!steps[s].takes(i)) continue;
            for (int variant = 0; variant < 4; ++variant) {
                Call call = valid;
                if (!Plant(steps[s], i, variant, images, call)) continue;
                // Every later step fails too, on another operand where it can,
                // so only the order decides which code comes back.
                for (size_t later = s + 1; later < steps.size(); ++later) {
                    if (NullsAPointer(steps[later])) continue;
                    for (size_t j = 0; j < images.size(); ++j) {
                        const size_t other = (i + 1 + j) % images.size();
                        // A later fault that would undo this one (an empty region
                        // no longer exceeds a source) is not planted.
                        Call planted = call;
                        if (!steps[later].takes(other) || !Plant(steps[later], other, 0, images, planted)) continue;
                        if (StillFails(steps[s], images, planted)) call = planted;
                        break;
                    }
                }
                KeepEqualWidths(steps.first(s), call);
                SCOPED_TRACE(testing::Message() << "step " << s << " (" << steps[s].name << "), operand " << i
                                                << ", fault " << variant);
                for (const size_t d : destinations) images[d]->fillBytes(0x5A);
                std::vector<std::vector<uint8_t>> before;
                for (const size_t d : destinations) before.push_back(images[d]->pixels());
                EXPECT_TRUE(ReturnsCode(entry(call.pointers(), call.flags), steps[s].code));
                for (size_t k = 0; k < destinations.size(); ++k) {
                    EXPECT_EQ(images[destinations[k]]->pixels(), before[k]) << "destination " << destinations[k];
                    EXPECT_EQ(images[destinations[k]]->damagedGuard(), "");
                }
                ++triedHere;
            }
        }
        if (steps[s].check != Check::NullArgument) {
            EXPECT_GT(triedHere, 0u) << "no input fails step " << s << " (" << steps[s].name << ")";
        }
        tried += triedHere;
    }
    EXPECT_TRUE(ReturnsCode(entry(valid.pointers(), 0), kQuorinSuccess)) << "the valid input";
    return tried;
}

}  // namespace quorin::test
