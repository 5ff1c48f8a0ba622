// Quarter turns of four-channel images: the rotated source is centred on the
// destination (cropped where larger, offset where smaller, with the
// asymmetric rule for odd differences), after an optional fill of the whole
// destination with a background pixel. Pixels are moved whole, never
// resampled; the quarter and three-quarter turns are cache-blocked
// transposes.
#include <algorithm>
#include <cstring>

#include "Core/Streaming.h"
#include "Geometry/GeometryMembers.h"
#include "Geometry/Rotate90Kernels.h"
#include "quorin/Conversion.h"

namespace quorin::geometry {
namespace {

// Where the covered rectangle starts in the source (crop) and in the
// destination (offset) along one axis, and its length.
struct AxisPlacement {
    size_t crop, offset, covered;
};

// `extent` source samples land on `length` destination samples; an odd
// difference puts its extra sample after the halving when `cropUp` (the
// source is larger) or `offsetUp` (the destination is larger) says so.
AxisPlacement Place(size_t length, size_t extent, bool cropUp, bool offsetUp) {
    if (length < extent) {
        const size_t d = extent - length;
        return {d / 2 + ((d & 1) && cropUp ? 1 : 0), 0, length};
    }
    const size_t d = length - extent;
    return {0, d / 2 + ((d & 1) && offsetUp ? 1 : 0), extent};
}

}  // namespace

template <PixelFormat F>
Quorin_Error Rotate90(const Quorin_Buffer* src, const Quorin_Buffer* dest, uint8_t rotation, const void* background,
                      Quorin_Flags flags) {
    constexpr size_t kBytes = F.pixelBytes();
    static_assert(kBytes == 4 || kBytes == 16, "the transposes move four- or sixteen-byte pixels");
    const Operand operands[] = {{src, kBytes}, {dest, kBytes}};
    const std::span<const CheckStep> steps = kRotate90Checks;
    if (const Quorin_Error error = RunChecks(steps.first(kRotationTestedAfter), operands, flags)) return error;
    if (rotation > 3) return kQuorinError_BadArgument;
    const std::span<const CheckStep> afterRotation = steps.subspan(kRotationTestedAfter);
    const size_t beforeQuery = kRotateQueryAfter - kRotationTestedAfter;
    if (const Quorin_Error error = RunChecks(afterRotation.first(beforeQuery), operands, flags)) return error;
    if (flags & kQuorinFlag_QueryTempSize) return kQuorinSuccess;
    if (const Quorin_Error error = RunChecks(afterRotation.subspan(beforeQuery), operands, flags)) return error;

    // The unrotated sizes decide, so a quarter turn that exactly covers a
    // destination of swapped size still fills first.
    if (background != nullptr &&
        (dest->width > src->width || (dest->width <= src->width && dest->height > src->height))) {
        Quorin_Error filled;
        if constexpr (F.sample == SampleKind::U8) {
            filled = QuorinBufferFill_ARGB8888(dest, static_cast<const uint8_t*>(background), flags);
        } else {
            filled = QuorinBufferFill_ARGBFFFF(dest, static_cast<const float*>(background), flags);
        }
        if (filled != kQuorinSuccess) return filled;
    }
    const bool quarter = rotation == 1 || rotation == 3;
    const AxisPlacement x = Place(dest->width, quarter ? src->height : src->width, rotation >= 2, rotation == 2);
    const AxisPlacement y = Place(dest->height, quarter ? src->width : src->height, rotation != 3, rotation != 3);

    const auto* s = static_cast<const uint8_t*>(src->data);
    auto* d = static_cast<uint8_t*>(dest->data);
    const size_t W = dest->width, H = dest->height;
    const size_t sr = src->rowBytes, dr = dest->rowBytes;
    const size_t cw = x.covered, ch = y.covered;
    switch (rotation) {
        case 0:
            for (size_t j = 0; j < ch; ++j)
                std::memmove(d + (y.offset + j) * dr + x.offset * kBytes, s + (y.crop + j) * sr + x.crop * kBytes,
                             cw * kBytes);
            break;
        case 2:
            for (size_t j = 0; j < ch; ++j)
                ReverseRow<kBytes>(s + (y.crop + j) * sr + x.crop * kBytes,
                                   d + (H - 1 - y.offset - j) * dr + (W - x.offset - cw) * kBytes, cw);
            break;
        default: {
            // dest(ox + i, row(j)) = src(cy + j, cx + i): dest columns walk
            // source rows. Rotation 1 writes rows upward from the bottom,
            // rotation 3 each row from its right end leftward.
            const uint8_t* origin = s + x.crop * sr + y.crop * kBytes;
            const TransposeKernel transpose = (kBytes == 4 ? kTransposeWords : kTransposeQuads).choose();
            const bool stream = WantsStreaming(cw * ch * kBytes);
            if (rotation == 1) {
                transpose(origin, sr, d + (H - 1 - y.offset) * dr + x.offset * kBytes, -static_cast<ptrdiff_t>(dr),
                          static_cast<ptrdiff_t>(kBytes), cw, ch, stream);
            } else {
                transpose(origin, sr, d + y.offset * dr + (W - 1 - x.offset) * kBytes, static_cast<ptrdiff_t>(dr),
                          -static_cast<ptrdiff_t>(kBytes), cw, ch, stream);
            }
        }
    }
    return kQuorinSuccess;
}

template Quorin_Error Rotate90<kARGB8888>(const Quorin_Buffer*, const Quorin_Buffer*, uint8_t, const void*,
                                          Quorin_Flags);
template Quorin_Error Rotate90<kARGBFFFF>(const Quorin_Buffer*, const Quorin_Buffer*, uint8_t, const void*,
                                          Quorin_Flags);

}  // namespace quorin::geometry

extern "C" {

QUORIN_API Quorin_Error QuorinRotate90_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                uint8_t rotationConstant, const uint8_t backgroundColor[4],
                                                Quorin_Flags flags) {
    return quorin::geometry::kRotate90ARGB8888.entry(src, dest, rotationConstant, backgroundColor, flags);
}
QUORIN_API Quorin_Error QuorinRotate90_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                uint8_t rotationConstant, const float backgroundColor[4],
                                                Quorin_Flags flags) {
    return quorin::geometry::kRotate90ARGBFFFF.entry(src, dest, rotationConstant, backgroundColor, flags);
}

}  // extern "C"
