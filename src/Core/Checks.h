// The small argument checks every family composes, in its own order, at its
// entry point. Each answers "does this check fail?" so an entry point reads as
//   if (AnyNull(src, dest)) return kQuorinError_NullPointer;
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

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

// ---- Records that cannot describe their image ---------------------------------
// No operation may touch a byte outside the height x rowBytes bytes a record
// hands over, whatever its fields say. Sizes are formed from caller-supplied
// fields, so every product below is computed without wrap-around: a product
// that would wrap fails its test instead of passing it.

// The largest byte extent a record can describe: pointer arithmetic is only
// defined inside one object, and no object is larger than this.
inline constexpr size_t kLargestExtent = static_cast<size_t>(PTRDIFF_MAX);

// count x size, or nullopt when the product does not fit a size_t.
constexpr std::optional<size_t> CheckedProduct(size_t count, size_t size) {
    size_t product = 0;
    if (__builtin_mul_overflow(count, size, &product)) return std::nullopt;
    return product;
}

// A row of `width` pixels of `pixelBytes` is longer than `rowBytes` (a row
// whose byte length does not even fit a size_t is longer than any).
constexpr bool RowLongerThan(size_t width, size_t pixelBytes, size_t rowBytes) {
    const std::optional<size_t> row = CheckedProduct(width, pixelBytes);
    return !row || *row > rowBytes;
}

// A row of the record's width does not fit in its rowBytes.
constexpr bool RowBytesTooSmall(const Quorin_Buffer* buffer, size_t pixelBytes) {
    return RowLongerThan(buffer->width, pixelBytes, buffer->rowBytes);
}

// height x rowBytes is larger than any object can be.
constexpr bool ExtentTooLarge(const Quorin_Buffer* buffer) {
    const std::optional<size_t> extent = CheckedProduct(buffer->height, buffer->rowBytes);
    return !extent || *extent > kLargestExtent;
}

// The record cannot describe its image: its rows are shorter than a row of
// its pixels, or its byte extent wraps or exceeds the address space. Every
// family refuses such a record before any work: at its own rowBytes test,
// with that test's code, or with kQuorinError_BadArgument right after its
// other checks where it has none. A size query touches no pixel, so it is
// still answered where the family's own tests let the record through.
constexpr bool CannotDescribeImage(const Quorin_Buffer* buffer, size_t pixelBytes) {
    return RowBytesTooSmall(buffer, pixelBytes) || ExtentTooLarge(buffer);
}

// Any of the records cannot describe its image; all have pixels of `pixelBytes`.
template <class... Records>
constexpr bool AnyCannotDescribeImage(size_t pixelBytes, const Records*... records) {
    return (CannotDescribeImage(records, pixelBytes) || ...);
}

// A buffer that no check of its family tests, walked over a region of
// width x height pixels: it is missing, cannot describe its image, or is
// too short or too narrow for the region, so the walk would leave it.
constexpr bool CannotHoldRegion(const Quorin_Buffer* buffer, size_t pixelBytes, size_t width, size_t height) {
    return buffer == nullptr || buffer->data == nullptr || CannotDescribeImage(buffer, pixelBytes) ||
           buffer->height < height || RowLongerThan(width, pixelBytes, buffer->rowBytes);
}

// Any record's width or height differs from the first one's.
template <class... Others>
constexpr bool SizesDiffer(const Quorin_Buffer* first, const Others*... others) {
    return ((others->width != first->width || others->height != first->height) || ...);
}

}  // namespace quorin
