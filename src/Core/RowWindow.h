// A window of neighbouring source rows, for the operations whose output row
// reads several input rows (convolution, morphology, vertical scaling).
// The window of output row y is the source rows y - above .. y + below; at
// the image's top and bottom each missing row is, by the window's edge rule,
// either the nearest row of the image (Clamp) or null (Outside: the kernel
// supplies its background or leaves the tap out). Pointers only: nothing is
// copied, and no pointer outside the image's rows is ever formed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "quorin/Types.h"

namespace quorin {

enum class WindowEdge : uint8_t {
    Clamp,    // a row above the first or below the last is that first or last row
    Outside,  // such a row is null
};

// Windows of up to kMaxRows rows (a 255-tap kernel and more).
template <class T, size_t kMaxRows = 512>
class RowWindow {
public:
    RowWindow(const Quorin_Buffer* source, size_t above, size_t below, WindowEdge edge)
        : data_(static_cast<const uint8_t*>(source->data)),
          rowBytes_(source->rowBytes),
          height_(source->height),
          above_(above),
          below_(below),
          edge_(edge) {}

    // Rows in the window: above + 1 + below.
    size_t size() const { return above_ + 1 + below_; }
    // Whether the window fits kMaxRows; a family refuses larger windows in
    // its checks, and at() gives an empty span for them.
    bool fits() const { return above_ < kMaxRows && below_ < kMaxRows && size() <= kMaxRows; }

    // The window of output row y (0 <= y < height), topmost first; the span
    // stays valid until the next call.
    std::span<const T* const> at(size_t y) {
        if (!fits()) return {};
        const size_t n = size();
        for (size_t k = 0; k < n; ++k) {
            // Row y - above + k, without forming a negative index.
            const bool beforeFirst = k < above_ && y < above_ - k;
            const size_t row = beforeFirst ? 0 : y + k - above_;
            const bool afterLast = !beforeFirst && row >= height_;
            if ((beforeFirst || afterLast) && edge_ == WindowEdge::Outside) {
                rows_[k] = nullptr;
            } else {
                const size_t clamped = afterLast ? height_ - 1 : row;
                rows_[k] = reinterpret_cast<const T*>(data_ + clamped * rowBytes_);
            }
        }
        return {rows_.data(), n};
    }

private:
    const uint8_t* data_;
    size_t rowBytes_, height_, above_, below_;
    WindowEdge edge_;
    std::array<const T*, kMaxRows> rows_{};
};

// A band function (firstRow, rows) for the splitters: for every output row
// y of the band, kernel(window.at(y), destination row y, width). Each band
// has a window of its own, so bands may run at once.
template <class T, class D, class Kernel>
auto OverWindows(const Quorin_Buffer* source, const Quorin_Buffer* dest, size_t above, size_t below,
                 WindowEdge edge, Kernel kernel) {
    return [=](size_t firstRow, size_t rows) {
        RowWindow<T> window(source, above, below, edge);
        auto* out = static_cast<uint8_t*>(dest->data);
        for (size_t y = firstRow; y < firstRow + rows; ++y)
            kernel(window.at(y), reinterpret_cast<D*>(out + y * dest->rowBytes), dest->width);
    };
}

}  // namespace quorin
