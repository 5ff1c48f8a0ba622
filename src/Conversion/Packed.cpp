// The three-channel matrix: each entry point runs its row of the member
// table (PackedMembers.h): the checks, the size query after the null test,
// then the matrix kernel pair under the processor-count chunking, over one
// run when the rows are contiguous, else row by row.
#include "Conversion/PackedKernels.h"
#include "Conversion/PackedMembers.h"
#include "Core/ProcessorChunks.h"
#include "Core/Streaming.h"

namespace quorin::packed {
namespace {

template <size_t kCell>
Quorin_Error RunCell(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags) {
    static_assert(kCell < kCellCount, "an entry point without a row");
    constexpr PixelFormat kFrom = kCellFormats[kCell].from, kTo = kCellFormats[kCell].to;
    constexpr size_t kIn = kFrom.pixelBytes(), kOut = kTo.pixelBytes();
    const std::span<const CheckStep> checks = kMatrixChecks;
    const Operand operands[] = {{src, kIn}, {dest, kOut}};
    const CheckedCall call{operands, flags};
    if (const Quorin_Error error = RunChecks(checks.first(kMatrixQuerySteps), call)) return error;
    if (flags & kQuorinFlag_QueryTempSize) return kQuorinSuccess;
    if (const Quorin_Error error = RunChecks(checks.subspan(kMatrixQuerySteps), call)) return error;
    const size_t width = src->width, height = src->height;
    if (width == 0 || height == 0) return kQuorinSuccess;
    // One run when the source's rows follow each other and the destination's
    // rowBytes equals the source's (not width x its own pixel size): the
    // output is then packed from the first byte on, across the row ends.
    const bool whole = src->rowBytes == width * kIn && dest->rowBytes == src->rowBytes;
    const MatrixKernel kernel = kMatrixKernels.choose();
    const bool stream = WantsStreaming(height * width * kOut);
    const auto* const from = static_cast<const uint8_t*>(src->data);
    auto* const to = static_cast<uint8_t*>(dest->data);
    const size_t srcRowBytes = src->rowBytes, destRowBytes = dest->rowBytes;
    RunProcessorChunks(flags, width, height, [&](size_t first, size_t rows) {
        if (whole) return kernel(kCell, from + first * srcRowBytes, to + first * width * kOut, rows * width, stream);
        for (size_t y = first; y < first + rows; ++y)
            kernel(kCell, from + y * srcRowBytes, to + y * destRowBytes, width, stream);
    });
    return kQuorinSuccess;
}

}  // namespace
}  // namespace quorin::packed

#define QUORIN_PACKED_ENTRY(name, from, to)                                                              \
    QUORIN_API Quorin_Error name(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags) { \
        return quorin::packed::RunCell<quorin::packed::CellOf(&name)>(src, dest, flags);                   \
    }
QUORIN_PACKED_MATRIX(QUORIN_PACKED_ENTRY)
#undef QUORIN_PACKED_ENTRY
