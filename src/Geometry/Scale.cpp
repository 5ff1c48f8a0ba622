// Scaling: each axis whose length changes is resampled by its own pass, the
// horizontal pass first (into an intermediate image of the destination's
// width and the source's height when both change), with the tables of
// ScaleTables.h and the pass kernel pairs of ScaleKernels.h. Every entry
// point runs its row of the member table (GeometryMembers.h).
#include <cstring>
#include <optional>

#include "Core/GridSplit.h"
#include "Core/TempBuffer.h"
#include "Geometry/GeometryMembers.h"
#include "Geometry/ScaleKernels.h"

namespace quorin::scale {
namespace {

// The scratch block of one call: the tables of the changing axes, then the
// intermediate image when both change.
struct ScratchPlan {
    bool widthChanges, heightChanges;
    size_t horizontalTaps, verticalTaps;
    size_t horizontalBytes = 0, verticalBytes = 0, intermediateBytes = 0;
    std::optional<size_t> total;  // nullopt when a size does not fit a size_t
};

ScratchPlan PlanScratch(const Quorin_Buffer* src, const Quorin_Buffer* dest, Arithmetic arithmetic) {
    ScratchPlan plan{src->width != dest->width, src->height != dest->height, TapsFor(src->width, dest->width),
                     TapsFor(src->height, dest->height), 0, 0, 0, std::nullopt};
    std::optional<size_t> h = size_t{0}, v = size_t{0}, image = size_t{0};
    if (plan.widthChanges) h = TableBytes(dest->width, plan.horizontalTaps, arithmetic);
    if (plan.heightChanges) v = TableBytes(dest->height, plan.verticalTaps, arithmetic);
    if (plan.widthChanges && plan.heightChanges) image = CheckedProduct(dest->rowBytes, src->height);
    if (!h || !v || !image || *h > SIZE_MAX - *v || *h + *v > SIZE_MAX - *image) return plan;
    plan.horizontalBytes = *h, plan.verticalBytes = *v, plan.intermediateBytes = *image;
    plan.total = *h + *v + *image;
    return plan;
}

// The passes index tables and rows with 32-bit lengths.
bool LengthBeyond32Bits(const Quorin_Buffer* b) { return b->width > UINT32_MAX || b->height > UINT32_MAX; }

// Equal sizes: one block copy when the strides match, else row by row.
void CopyImage(const Quorin_Buffer* src, const Quorin_Buffer* dest, size_t pixelBytes) {
    const auto* s = static_cast<const uint8_t*>(src->data);
    auto* d = static_cast<uint8_t*>(dest->data);
    if (src->rowBytes == dest->rowBytes) {
        std::memmove(d, s, src->height * src->rowBytes);
        return;
    }
    for (size_t y = 0; y < src->height; ++y)
        std::memmove(d + y * dest->rowBytes, s + y * src->rowBytes, src->width * pixelBytes);
}

ResampleTable BuildTable(uint8_t* at, size_t S, size_t D, size_t taps, Arithmetic arithmetic) {
    const ResampleTable table = PlaceTable(at, D, taps, arithmetic);
    const auto s = static_cast<uint32_t>(S), d = static_cast<uint32_t>(D);
    switch (arithmetic) {
        case Arithmetic::Fixed: BuildAxisTable<Arithmetic::Fixed>(s, d, table); break;
        case Arithmetic::Float: BuildAxisTable<Arithmetic::Float>(s, d, table); break;
        case Arithmetic::Single: BuildAxisTable<Arithmetic::Single>(s, d, table); break;
        case Arithmetic::Double: BuildAxisTable<Arithmetic::Double>(s, d, table); break;
    }
    return table;
}

// One pass over width x height output pixels, split over the grid from
// 64000 pixels whatever the flags (every output pixel is computed alone, so
// any share-out of the rows gives the same bytes).
void RunPass(Direction direction, const PassJob& job, size_t width, size_t height) {
    const PassKernel kernel = PassPair(direction).choose();
    RunOnGrid(WantsGrid(width, height), width, height,
              [&](size_t x, size_t y, size_t w, size_t h) { kernel(job, x, y, w, h); });
}

Quorin_Error Scale(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer, uint8_t format,
                   Arithmetic arithmetic, const ScratchPlan& plan) {
    const size_t pixelBytes = kScaleFormats[format].pixelBytes();
    if (!plan.widthChanges && !plan.heightChanges) {
        CopyImage(src, dest, pixelBytes);
        return kQuorinSuccess;
    }
    if (!plan.total) return kQuorinError_OutOfMemory;  // no block of that size can exist
    TempBuffer scratch;
    if (const Quorin_Error error = scratch.acquire(tempBuffer, *plan.total)) return error;
    auto* const block = static_cast<uint8_t*>(scratch.data());
    uint8_t* const intermediate = block + plan.horizontalBytes + plan.verticalBytes;

    const auto* source = static_cast<const uint8_t*>(src->data);
    size_t sourceRowBytes = src->rowBytes;
    if (plan.widthChanges) {
        const ResampleTable table = BuildTable(block, src->width, dest->width, plan.horizontalTaps, arithmetic);
        uint8_t* const out = plan.heightChanges ? intermediate : static_cast<uint8_t*>(dest->data);
        const PassJob job{source, src->rowBytes, out, dest->rowBytes,
                          reinterpret_cast<const uint8_t*>(table.indices), static_cast<const uint8_t*>(table.weights),
                          format, arithmetic, static_cast<uint8_t>(plan.horizontalTaps)};
        RunPass(Direction::Horizontal, job, dest->width, src->height);
        source = out, sourceRowBytes = dest->rowBytes;
    }
    if (plan.heightChanges) {
        const ResampleTable table = BuildTable(block + plan.horizontalBytes, src->height, dest->height,
                                               plan.verticalTaps, arithmetic);
        const PassJob job{source, sourceRowBytes, static_cast<uint8_t*>(dest->data), dest->rowBytes,
                          reinterpret_cast<const uint8_t*>(table.indices), static_cast<const uint8_t*>(table.weights),
                          format, arithmetic, static_cast<uint8_t>(plan.verticalTaps)};
        RunPass(Direction::Vertical, job, dest->width, dest->height);
    }
    return kQuorinSuccess;
}

}  // namespace

template <const geometry::ScaleMember& kMember>
Quorin_Error RunScale(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kBytes = kFormat.pixelBytes();
    const Operand operands[] = {{src, kBytes}, {dest, kBytes}};
    const std::span<const CheckStep> steps = kMember.checks;
    if (const Quorin_Error error = RunChecks(steps.first(kMember.queryAfter), operands, flags)) return error;
    const Arithmetic arithmetic = ArithmeticFor(kFormat, (flags & kQuorinFlag_HighQualityResampling) != 0);
    const ScratchPlan plan = PlanScratch(src, dest, arithmetic);
    if (flags & kQuorinFlag_QueryTempSize) {
        if (!plan.widthChanges && !plan.heightChanges) return AnswerSizeQuery(0);
        return plan.total ? AnswerSizeQuery(*plan.total) : kQuorinError_BadArgument;
    }
    if (const Quorin_Error error = RunChecks(steps.subspan(kMember.queryAfter), operands, flags)) return error;
    if (LengthBeyond32Bits(src) || LengthBeyond32Bits(dest)) return kQuorinError_BadArgument;
    return Scale(src, dest, tempBuffer, FormatIndex<kFormat>(), arithmetic, plan);
}

}  // namespace quorin::scale

using quorin::scale::RunScale;
namespace g = quorin::geometry;

extern "C" {

QUORIN_API Quorin_Error QuorinScale_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                             Quorin_Flags flags) {
    return RunScale<g::kScaleARGB8888>(src, dest, tempBuffer, flags);
}
QUORIN_API Quorin_Error QuorinScale_ARGB16U(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                            Quorin_Flags flags) {
    return RunScale<g::kScaleARGB16U>(src, dest, tempBuffer, flags);
}
QUORIN_API Quorin_Error QuorinScale_ARGB16S(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                            Quorin_Flags flags) {
    return RunScale<g::kScaleARGB16S>(src, dest, tempBuffer, flags);
}
QUORIN_API Quorin_Error QuorinScale_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                             Quorin_Flags flags) {
    return RunScale<g::kScaleARGBFFFF>(src, dest, tempBuffer, flags);
}
QUORIN_API Quorin_Error QuorinScale_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                            Quorin_Flags flags) {
    return RunScale<g::kScalePlanar8>(src, dest, tempBuffer, flags);
}
QUORIN_API Quorin_Error QuorinScale_Planar16S(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                              Quorin_Flags flags) {
    return RunScale<g::kScalePlanar16S>(src, dest, tempBuffer, flags);
}
QUORIN_API Quorin_Error QuorinScale_Planar16U(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                              Quorin_Flags flags) {
    return RunScale<g::kScalePlanar16U>(src, dest, tempBuffer, flags);
}
QUORIN_API Quorin_Error QuorinScale_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                            Quorin_Flags flags) {
    return RunScale<g::kScalePlanarF>(src, dest, tempBuffer, flags);
}

}  // extern "C"
