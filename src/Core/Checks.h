// The small argument checks every family composes, in its own order, at its
// entry point. Each answers "does this check fail?" so an entry point reads as
//   if (AnyNull(src, dest)) return kQuorinError_NullPointer;
#pragma once

#include <cstddef>

#include "quorin/Types.h"

namespace quorin {

// Any of the record pointers is null.
template <class... Records>
constexpr bool AnyNull(const Records*... records) {
    return ((records == nullptr) || ...);
}

// Any of the records has null pixel data (records must be non-null).
template <class... Records>
constexpr bool AnyNullData(const Records*... records) {
    return ((records->data == nullptr) || ...);
}

// A record that is missing or has no pixels (families that report both as a
// null buffer, such as the alpha family).
template <class... Records>
constexpr bool AnyMissing(const Records*... records) {
    return AnyNull(records...) || AnyNullData(records...);
}

// A flag bit outside `accepted` is set.
constexpr bool FlagsOutside(Quorin_Flags flags, Quorin_Flags accepted) { return (flags & ~accepted) != 0; }

// The accepted mask of a family that takes only the common bits.
inline constexpr Quorin_Flags kCommonFlags = kQuorinFlag_SingleThreaded | kQuorinFlag_QueryTempSize;

// The destination is wider than any source, or (after all widths) taller.
template <class... Sources>
constexpr bool ExceedsSources(const Quorin_Buffer* dest, const Sources*... sources) {
    return ((dest->width > sources->width) || ...) || ((dest->height > sources->height) || ...);
}

// The record has zero width or zero height.
constexpr bool IsEmpty(const Quorin_Buffer* buffer) { return buffer->width == 0 || buffer->height == 0; }

// A row of `width` pixels of `pixelBytes` does not fit in the record's rowBytes.
constexpr bool RowBytesTooSmall(const Quorin_Buffer* buffer, size_t pixelBytes) {
    return buffer->rowBytes < buffer->width * pixelBytes;
}

// Any record's width or height differs from the first one's.
template <class... Others>
constexpr bool SizesDiffer(const Quorin_Buffer* first, const Others*... others) {
    return ((others->width != first->width || others->height != first->height) || ...);
}

}  // namespace quorin
