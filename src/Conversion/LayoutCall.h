// Planar and interleaved layouts: the family's argument checks and its two
// call shapes, planes into pixels (MergePlanes) and pixels into planes
// (SplitPixels).
// An entry point describes its buffers, constant and ranges; the shape checks
// them in the family's order, chooses the kernel pair and the split, and walks
// the rows.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

#include "Conversion/LayoutRules.h"
#include "Core/CheckList.h"
#include "Core/Checks.h"
#include "Core/Dispatch.h"
#include "Core/Features.h"
#include "Core/Streaming.h"
#include "Core/Walk.h"
#include "quorin/Types.h"

namespace quorin::layout {

// ---- Arguments -----------------------------------------------------------------

// How a plane argument takes part in a call.
enum class Role : uint8_t {
    Required,  // a buffer like any other: tested for null and the rest
    Optional,  // may be null, and then its channel takes the call's constant
    Constant,  // no plane: the channel takes the call's constant (merges)
    Skipped,   // no plane: the channel is not stored anywhere (splits)
};

struct PlaneArg {
    const Quorin_Buffer* record;
    Role role;
    constexpr PlaneArg() : record(nullptr), role(Role::Constant) {}
    PlaneArg(const Quorin_Buffer* buffer) : record(buffer), role(Role::Required) {}  // NOLINT: the common case
    constexpr PlaneArg(const Quorin_Buffer* buffer, Role r) : record(buffer), role(r) {}
};
inline PlaneArg OptionalPlane(const Quorin_Buffer* buffer) { return {buffer, Role::Optional}; }
inline constexpr PlaneArg kConstantChannel{nullptr, Role::Constant};
inline constexpr PlaneArg kSkippedChannel{nullptr, Role::Skipped};

// The value of a merged channel without a plane: a pixel sample written as
// is, or a plane value that goes through channel 0's rule like any pixel.
template <class Transform>
struct Constant {
    typename Transform::To sample{};
    std::optional<typename Transform::From> throughChannel0{};

    typename Transform::To resolve(const Transform& transform) const {
        return throughChannel0 ? transform(0, *throughChannel0) : sample;
    }
};

// ---- Checks ----------------------------------------------------------------------

// One buffer as the checks see it. A null record that is not required is
// simply absent (an optional plane that was not given).
struct LayoutOperand {
    const Quorin_Buffer* record;
    size_t pixelBytes;
    bool required;
    bool rowBytesTested;
    bool rowsCut = false;  // an untested destination whose short rows are cut, not refused
};

// Runs the member's checks over the first group, the second group (`later`,
// the fourth destination plane of a split, when there is one) and the range
// arrays when the call takes them.
inline Quorin_Error CheckArguments(std::span<const CheckStep> checks, std::span<const LayoutOperand> first,
                                   const LayoutOperand* later, const Quorin_Buffer* region, const Ranges* ranges,
                                   Quorin_Flags flags) {
    std::array<quorin::Operand, 6> operands;
    size_t count = 0;
    const auto add = [&](const LayoutOperand& o, uint8_t group) {
        const uint8_t roles = group | (o.required ? kRoleRequired : 0) | (o.rowBytesTested ? kRoleRowBytesTested : 0);
        operands[count++] = {o.record, o.pixelBytes, roles};
    };
    for (const LayoutOperand& o : first) add(o, kRoleFirstGroup);
    if (later) add(*later, kRoleSecondGroup);
    const void* const rangeArrays[] = {ranges ? ranges->max : nullptr, ranges ? ranges->min : nullptr};
    const std::span<const void* const> pointers = ranges ? std::span<const void* const>(rangeArrays)
                                                         : std::span<const void* const>();
    return RunChecks(checks,
                     CheckedCall{std::span<const quorin::Operand>(operands.data(), count), flags, region, pointers});
}

// After the checks and a size query's answer, the records the checks let
// through that no walk can use without leaving their buffers: -21773 for a
// byte extent that wraps or exceeds the address space, and for a buffer
// whose rowBytes the family does not test when its rows are shorter than its
// pixels (except a destination whose rows are cut, see MergeIntoShortRows).
inline bool AnyUnusable(std::span<const LayoutOperand> operands) {
    return std::any_of(operands.begin(), operands.end(), [](const LayoutOperand& o) {
        return o.record && (ExtentTooLarge(o.record) ||
                            (!o.rowBytesTested && !o.rowsCut && RowBytesTooSmall(o.record, o.pixelBytes)));
    });
}

// ---- Walking -----------------------------------------------------------------------

// The planes of a call as one view for WalkRegion: at() gives the row pointer
// of every channel (null where the channel has no plane).
template <class T, size_t C>
class PlaneRows {
public:
    explicit PlaneRows(const std::array<PlaneArg, C>& planes) {
        for (size_t c = 0; c < C; ++c)
            if (planes[c].record) {
                data_[c] = static_cast<uint8_t*>(planes[c].record->data);
                rowBytes_[c] = planes[c].record->rowBytes;
            }
    }
    std::array<T*, C> at(size_t x, size_t y) const {
        std::array<T*, C> rows{};
        for (size_t c = 0; c < C; ++c)
            if (data_[c]) rows[c] = reinterpret_cast<T*>(data_[c] + y * rowBytes_[c] + x * sizeof(T));
        return rows;
    }
    bool contiguousFor(size_t width) const {
        for (size_t c = 0; c < C; ++c)
            if (data_[c] && rowBytes_[c] != width * sizeof(T)) return false;
        return true;
    }

private:
    std::array<uint8_t*, C> data_{};
    std::array<size_t, C> rowBytes_{};
};

// Runs the rows of `region` on this thread or through the rows dispatcher,
// walking each piece as one run or row by row. The row kernels fence their
// own streaming stores.
template <class Kernel, class... Views>
void ConvertRows(Quorin_Flags flags, const Quorin_Buffer* region, Kernel&& kernel, const Views&... views) {
    RunRows(flags, region->width, region->height,
            [&](size_t x, size_t y, size_t w, size_t h) { WalkRegion(x, y, w, h, kernel, views...); });
}

// ---- Planes into pixels --------------------------------------------------------------

template <class Transform, size_t C>
struct MergeCall {
    std::array<PlaneArg, C> planes;  // in channel-position order
    const Quorin_Buffer* dest;       // the region: its size is converted
    Constant<Transform> constant{};  // for the channel without a plane
    Ranges ranges{};                 // maxFloat, minFloat of the range transforms
    // The 8-bit interleave worker tests only its required planes' rowBytes:
    // neither an alpha plane's nor the destination's.
    bool requiredPlanesRowBytesOnly = false;
};

// A destination whose rowBytes is shorter than its pixels: rows overlap, and
// written in order each row overwrites the previous row's excess while the
// last row would run past the buffer. What remains is each row's first
// rowBytes bytes, so exactly those are written, the row's last pixel cut
// where its row ends; that is every byte inside height x rowBytes as the
// row-order walk leaves it, and nothing beyond. Rows write disjoint bytes,
// so they may still run in parallel.
template <class Transform, size_t C, class Kernel, class Planes>
void MergeIntoShortRows(Quorin_Flags flags, const Quorin_Buffer* dest, const Kernel& kernel, const Planes& planes) {
    using To = typename Transform::To;
    constexpr size_t kPixelBytes = C * sizeof(To);
    const Plane<To, C> pixels(dest);
    const size_t wholePixels = dest->rowBytes / kPixelBytes, cutBytes = dest->rowBytes % kPixelBytes;
    RunRows(flags, dest->width, dest->height, [&](size_t x, size_t y, size_t w, size_t h) {
        const size_t end = std::min(x + w, wholePixels);
        for (size_t r = y; r < y + h; ++r) {
            if (end > x) kernel(pixels.at(x, r), planes.at(x, r), end - x);
            if (cutBytes != 0 && wholePixels >= x && wholePixels < x + w) {
                To last[C];
                kernel(last, planes.at(wholePixels, r), 1);
                std::memcpy(pixels.at(wholePixels, r), last, cutBytes);
            }
        }
    });
}

template <class Transform, size_t C>
Quorin_Error MergePlanes(const MergeCall<Transform, C>& call, std::span<const CheckStep> checks, Quorin_Flags flags) {
    using From = typename Transform::From;
    using To = typename Transform::To;
    std::array<LayoutOperand, C + 1> operands;
    operands[0] = {call.dest, C * sizeof(To), true, !call.requiredPlanesRowBytesOnly, call.requiredPlanesRowBytesOnly};
    for (size_t c = 0; c < C; ++c) {
        const bool required = call.planes[c].role == Role::Required;
        operands[c + 1] = {call.planes[c].record, sizeof(From), required, required || !call.requiredPlanesRowBytesOnly};
    }
    if (const Quorin_Error error = CheckArguments(checks, operands, nullptr, call.dest,
                                                  Transform::kTakesRanges ? &call.ranges : nullptr, flags))
        return error;
    if (flags & kQuorinFlag_QueryTempSize) return kQuorinSuccess;  // no temporary buffer, nothing written
    if (AnyUnusable(operands)) return kQuorinError_BadArgument;

    const Transform transform(call.ranges);
    const To constant = call.constant.resolve(transform);
    const bool vector = UseVectorKernels() && transform.vectorKernelsApply();
    const MergeRowKernel<C, Transform> kernel = LayoutKernels<C, Transform>::merge.pick(vector);
    const PlaneRows<const From, C> planes(call.planes);
    if (RowBytesTooSmall(call.dest, C * sizeof(To))) {
        MergeIntoShortRows<Transform, C>(
            flags, call.dest,
            [&](To* pixels, const std::array<const From*, C>& rows, size_t n) {
                kernel(rows.data(), constant, transform, pixels, n, false);
            },
            planes);
        return kQuorinSuccess;
    }
    const bool streaming = vector && WantsStreaming(call.dest->width * call.dest->height * C * sizeof(To));
    ConvertRows(
        flags, call.dest,
        [&](To* pixels, const std::array<const From*, C>& rows, size_t n) {
            kernel(rows.data(), constant, transform, pixels, n, streaming);
        },
        Plane<To, C>(call.dest), planes);
    return kQuorinSuccess;
}

// ---- Pixels into planes --------------------------------------------------------------

template <class Transform, size_t C>
struct SplitCall {
    const Quorin_Buffer* src;
    std::array<PlaneArg, C> planes;  // in channel-position order; kSkippedChannel for a filler
    Ranges ranges{};
};

// The region is the first destination plane. With four destination planes
// the fourth forms a second group, tested after the flags.
template <class Transform, size_t C>
Quorin_Error SplitPixels(const SplitCall<Transform, C>& call, std::span<const CheckStep> checks, Quorin_Flags flags) {
    using From = typename Transform::From;
    using To = typename Transform::To;
    std::array<LayoutOperand, C + 1> operands;
    size_t count = 0;
    operands[count++] = {call.src, C * sizeof(From), true, true};
    const Quorin_Buffer* region = nullptr;
    for (const PlaneArg& plane : call.planes) {
        if (plane.role == Role::Skipped) continue;
        if (count == 1) region = plane.record;
        operands[count++] = {plane.record, sizeof(To), true, true};
    }
    // Only four planes make a second group; saying so at compile time keeps
    // the fifth operand out of the three-plane instantiations altogether.
    const LayoutOperand* second = nullptr;
    if constexpr (C == 4)
        if (count == 5) second = &operands[4];
    const std::span<const LayoutOperand> first(operands.data(), second ? 4 : count);
    if (const Quorin_Error error = CheckArguments(checks, first, second, region,
                                                  Transform::kTakesRanges ? &call.ranges : nullptr, flags))
        return error;
    if (flags & kQuorinFlag_QueryTempSize) return kQuorinSuccess;
    if (AnyUnusable(std::span<const LayoutOperand>(operands.data(), count))) return kQuorinError_BadArgument;

    const Transform transform(call.ranges);
    const bool vector = UseVectorKernels() && transform.vectorKernelsApply();
    const SplitRowKernel<C, Transform> kernel = LayoutKernels<C, Transform>::split.pick(vector);
    const SplitStreaming streaming =
        !vector || !WantsStreaming(region->width * region->height * (count - 1) * sizeof(To)) ? SplitStreaming::kNever
        : WantsRowsOrGrid(flags, region->width, region->height)                              ? SplitStreaming::kAlways
                                                                                              : SplitStreaming::kWholeLinesOnly;
    ConvertRows(
        flags, region,
        [&](const From* pixels, const std::array<To*, C>& planes, size_t n) {
            kernel(pixels, planes.data(), transform, n, streaming);
        },
        Plane<const From, C>(call.src), PlaneRows<To, C>(call.planes));
    return kQuorinSuccess;
}

}  // namespace quorin::layout
