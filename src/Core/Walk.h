// Walking an image region: one contiguous run when every buffer's rows follow
// each other without padding for the walked width, otherwise row by row.
// Kernels take (pointers, pixel count) and never know which.
#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "quorin/Types.h"

namespace quorin {

// A typed view of a buffer whose pixels are `Channels` elements of type T.
template <class T, size_t Channels = 1>
struct Plane {
    using Element = T;
    static constexpr size_t kChannels = Channels;
    static constexpr size_t kPixelBytes = sizeof(T) * Channels;

    uint8_t* data;
    size_t rowBytes;

    Plane(const Quorin_Buffer* buffer)  // NOLINT: a record converts to its view
        : data(static_cast<uint8_t*>(buffer->data)), rowBytes(buffer->rowBytes) {}

    T* at(size_t x, size_t y) const {
        return reinterpret_cast<T*>(data + y * rowBytes + x * kPixelBytes);
    }
    bool contiguousFor(size_t width) const { return rowBytes == width * kPixelBytes; }
};

// Calls kernel(p0, p1, ..., pixelCount) over the rectangle (x, y, width, rows)
// of every plane: once when all planes are contiguous and the rectangle spans
// whole rows, otherwise once per row.
template <class Kernel, class... Planes>
void WalkRegion(size_t x, size_t y, size_t width, size_t rows, Kernel&& kernel, const Planes&... planes) {
    if (width == 0 || rows == 0) return;
    if (x == 0 && (planes.contiguousFor(width) && ...)) {
        kernel(planes.at(0, y)..., width * rows);
        return;
    }
    for (size_t r = y; r < y + rows; ++r) kernel(planes.at(x, r)..., width);
}

// A band function (firstRow, rows) that runs `kernel` over those rows of
// every plane, as one run when all planes are contiguous, else row by row.
template <class Kernel, class... Planes>
auto OverRows(size_t width, Kernel kernel, const Planes&... planes) {
    return [=](size_t firstRow, size_t rows) { WalkRegion(0, firstRow, width, rows, kernel, planes...); };
}

// The same as a piece routine (x, y, w, h) for the rows dispatcher.
template <class Kernel, class... Planes>
auto OverPieces(Kernel kernel, const Planes&... planes) {
    return [=](size_t x, size_t y, size_t w, size_t h) { WalkRegion(x, y, w, h, kernel, planes...); };
}

}  // namespace quorin
