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

// The plane, when given, is read one byte a pixel along the same rows. One
// run when src, dest and the plane (if any) have rows without padding.
template <size_t kCell>
Quorin_Error RunAlpha(const Quorin_Buffer* src, const Quorin_Buffer* plane, AlphaConstant constant,
                      const Quorin_Buffer* dest, int premultiply, Quorin_Flags flags) {
    static_assert(kCell < kAlphaCount, "an entry point without a row");
    constexpr AlphaMember kMember = kAlphaMembers[kCell];
    constexpr size_t kIn = kMember.from.pixelBytes(), kOut = kMember.to.pixelBytes();
    if ((flags & 0xFF) & kQuorinFlag_QueryTempSize) return kQuorinSuccess;
    const Operand operands[] = {{src, kIn}, {dest, kOut}, {plane, 1}};
    const size_t count = plane ? 3 : 2;
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{std::span<const Operand>(operands, count), flags}))
        return error;
    const size_t width = src->width, height = src->height;
    if (width == 0 || height == 0) return kQuorinSuccess;
    const bool whole = src->rowBytes == width * kIn && dest->rowBytes == width * kOut &&
                       (plane == nullptr || plane->rowBytes == width);
    const AlphaKernel kernel = kAlphaKernels.choose();
    const auto* const from = static_cast<const uint8_t*>(src->data);
    const auto* const alpha = plane ? static_cast<const uint8_t*>(plane->data) : nullptr;
    auto* const to = static_cast<uint8_t*>(dest->data);
    const size_t srcRowBytes = src->rowBytes, destRowBytes = dest->rowBytes, planeRowBytes = plane ? plane->rowBytes : 0;
    const bool multiply = premultiply == 1;
    const bool stream = WantsStreaming(height * width * kOut);
    const auto band = [&](size_t first, size_t rows) {
        if (whole)
            return kernel(kCell, from + first * srcRowBytes, alpha ? alpha + first * width : nullptr,
                          to + first * destRowBytes, rows * width, constant, multiply, stream);
        for (size_t y = first; y < first + rows; ++y)
            kernel(kCell, from + y * srcRowBytes, alpha ? alpha + y * planeRowBytes : nullptr, to + y * destRowBytes,
                   width, constant, multiply, stream);
    };
    if constexpr (kMember.split() == SplitRule::Chunks) RunProcessorChunks(flags, width, height, band);
    else band(0, height);
    return kQuorinSuccess;
}

}  // namespace
}  // namespace quorin::packed

namespace {
using quorin::packed::AlphaConstant;
using quorin::packed::AlphaCellOf;
using quorin::packed::RunAlpha;
}  // namespace

#define QUORIN_ALPHA_ENTRY(name, from, to)                                                                        \
    QUORIN_API Quorin_Error name(const Quorin_Buffer* src, const Quorin_Buffer* alpha, ALPHA_TYPE constant,      \
                                 const Quorin_Buffer* dest, int premultiply, Quorin_Flags flags) {                \
        return RunAlpha<AlphaCellOf(#name)>(src, alpha, ALPHA_CONSTANT, dest, premultiply, flags);             \
    }
#define QUORIN_ALPHA_565(name, from, to)                                                                          \
    QUORIN_API Quorin_Error name(uint8_t alpha, const Quorin_Buffer* src, const Quorin_Buffer* dest,             \
                                 Quorin_Flags flags) {                                                            \
        return RunAlpha<AlphaCellOf(#name)>(src, nullptr, AlphaConstant{alpha, 0.0f}, dest, 0, flags);         \
    }
#define ALPHA_TYPE uint8_t
#define ALPHA_CONSTANT AlphaConstant{constant, 0.0f}
QUORIN_ALPHA_ENTRY(QuorinConvert_RGB888toRGBA8888, , )
QUORIN_ALPHA_ENTRY(QuorinConvert_BGR888toARGB8888, , )
QUORIN_ALPHA_ENTRY(QuorinConvert_RGB888toARGB8888, , )
QUORIN_ALPHA_ENTRY(QuorinConvert_RGB888toBGRA8888, , )
#undef ALPHA_TYPE
#define ALPHA_TYPE uint16_t
QUORIN_ALPHA_ENTRY(QuorinConvert_RGB16UtoARGB16U, , )
QUORIN_ALPHA_ENTRY(QuorinConvert_RGB16UtoRGBA16U, , )
QUORIN_ALPHA_ENTRY(QuorinConvert_RGB16UtoBGRA16U, , )
#undef ALPHA_TYPE
#undef ALPHA_CONSTANT
#define ALPHA_TYPE float
#define ALPHA_CONSTANT AlphaConstant{0, constant}
QUORIN_ALPHA_ENTRY(QuorinConvert_RGBFFFtoARGBFFFF, , )
QUORIN_ALPHA_ENTRY(QuorinConvert_RGBFFFtoRGBAFFFF, , )
QUORIN_ALPHA_ENTRY(QuorinConvert_RGBFFFtoBGRAFFFF, , )
#undef ALPHA_TYPE
#undef ALPHA_CONSTANT
QUORIN_ALPHA_565(QuorinConvert_RGB565toARGB8888, , )
QUORIN_ALPHA_565(QuorinConvert_RGB565toRGBA8888, , )
QUORIN_ALPHA_565(QuorinConvert_RGB565toBGRA8888, , )
#undef QUORIN_ALPHA_ENTRY
#undef QUORIN_ALPHA_565

#define QUORIN_PACKED_ENTRY(name, from, to)                                                              \
    QUORIN_API Quorin_Error name(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags flags) { \
        return quorin::packed::RunCell<quorin::packed::CellOf(&name)>(src, dest, flags);                   \
    }
QUORIN_PACKED_MATRIX(QUORIN_PACKED_ENTRY)
#undef QUORIN_PACKED_ENTRY

// RGB888 into ARGB8888 through the alpha-adding row of the same formats: the
// third argument is the optional alpha plane, opaque without one, and colours
// are never premultiplied.
QUORIN_API Quorin_Error _customConvertImage(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                            const Quorin_Buffer* alpha, Quorin_Flags flags) {
    return RunAlpha<AlphaCellOf("QuorinConvert_RGB888toARGB8888")>(src, alpha, AlphaConstant{255, 0.0f}, dest, 0,
                                                                    flags);
}
