// Scaling: each axis whose length changes is resampled by its own pass, the
// horizontal pass first (into an intermediate image of the destination's
// width and the source's height when both change), with the tables of
// ScaleTables.h and the pass kernel pairs of ScaleKernels.h. Every entry
// point runs its row of the member table (GeometryMembers.h).
#include <algorithm>
#include <atomic>
#include <cstring>
#include <optional>
#include <utility>

#include "Core/GridSplit.h"
#include "Core/Streaming.h"
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

// Both axes change: the vertical pass reads each intermediate row just
// after the horizontal pass made it, from a window of rows small enough to
// stay in the processor's cache, rather than from an image written whole to
// memory and read back. Output rows go in bands; each thread of the split
// has a window of its own, carved from the intermediate image's bytes.
class FusedPasses {
public:
    // Intermediate bytes a thread's window aims at: with the source rows
    // streaming past, a window of this size stays in a 512 KiB cache.
    static constexpr size_t kWindowBytes = size_t{256} << 10;
    // Output pixels of a band when the split shares out bands.
    static constexpr size_t kBandPixels = size_t{256} << 10;

    FusedPasses(const PassJob& horizontal, const PassJob& vertical, uint8_t* intermediate, size_t width,
                size_t sourceHeight, size_t height, size_t slots)
        : horizontal_(horizontal),
          vertical_(vertical),
          horizontalKernel_(PassPair(Direction::Horizontal).choose()),
          verticalKernel_(PassPair(Direction::Vertical).choose()),
          intermediate_(intermediate),
          width_(width),
          height_(height) {
        // One output row reads at most min(taps, source rows) distinct rows:
        // every window holds at least that many.
        const size_t span = std::min<size_t>(vertical.taps, sourceHeight);
        slots_ = std::max<size_t>(1, std::min(slots, sourceHeight / span));
        const size_t slotRows = sourceHeight / slots_;
        capacity_ = std::min(slotRows, std::max(2 * span, kWindowBytes / vertical.srcRowBytes));
        slotBytes_ = slotRows * vertical.srcRowBytes;
        bandRows_ = std::max<size_t>(1, std::min(kBandPixels / width, height / (4 * slots_)));
    }

    size_t slots() const { return slots_; }

    // Output rows [first, first + rows) with window `slot`, a ring in which
    // source row r is row r % capacity.
    void run(size_t slot, size_t first, size_t rows) const {
        uint8_t* const window = intermediate_ + slot * slotBytes_;
        const StreamFenceScope fence;  // one fence for the band's streamed rows
        size_t low = 0, next = 0;  // the ring holds source rows low .. next - 1
        for (size_t y = first; y < first + rows; ++y) {
            const auto [a, b] = rowsOf(y);
            if (next == low || a < low || a > next) low = next = a;  // nothing kept is read (the position sum may wrap)
            if (b >= next) {
                // The rows the next outputs read as well, while they follow
                // on and leave this output's rows in the ring: the horizontal
                // kernel's set-up then serves several rows.
                size_t last = b;
                for (size_t n = y + 1; n < first + rows && last + 1 - next < kBatchRows; ++n) {
                    const auto [na, nb] = rowsOf(n);
                    if (na < a || na > last + 1 || nb + 1 - a > capacity_) break;
                    last = std::max(last, nb);
                }
                while (next <= last) {
                    const size_t at = next % capacity_, count = std::min(last + 1 - next, capacity_ - at);
                    PassJob job = horizontal_;
                    job.src += next * job.srcRowBytes;
                    job.dst = window + at * job.dstRowBytes;
                    horizontalKernel_(job, 0, 0, width_, count);
                    next += count;
                }
                low = std::max(low, next - std::min(next, capacity_));
            }
            PassJob job = vertical_;
            job.src = window, job.windowRows = capacity_;
            verticalKernel_(job, 0, y, width_, 1);
        }
    }

    // The bands shared out among the grid's pieces, each with its own window.
    void split() const {
        struct Shared {
            const FusedPasses& passes;
            std::atomic<size_t> next{0};
        } shared{*this, {}};
        const Quorin_PieceClosure closure{
            [](void* context, size_t piece, size_t, size_t, size_t, size_t) {
                Shared& all = *static_cast<Shared*>(context);
                const FusedPasses& p = all.passes;
                const size_t bands = (p.height_ + p.bandRows_ - 1) / p.bandRows_;
                for (size_t band = all.next.fetch_add(1); band < bands; band = all.next.fetch_add(1)) {
                    const size_t first = band * p.bandRows_;
                    p.run(piece, first, std::min(p.height_, first + p.bandRows_) - first);
                }
            },
            &shared};
        _QuorinDispatchApplyOnGrid(slots_, 1, width_, height_, &closure);
    }

private:
    static constexpr size_t kBatchRows = 16;

    // The first and last source rows output row y reads.
    std::pair<size_t, size_t> rowsOf(size_t y) const {
        size_t a = SIZE_MAX, b = 0;
        for (size_t j = 0; j < vertical_.taps; ++j) {
            const auto row = static_cast<size_t>(ReadUnaligned<int32_t>(vertical_.indices + (y * vertical_.taps + j) * 4));
            a = std::min(a, row), b = std::max(b, row);
        }
        return {a, b};
    }

    PassJob horizontal_, vertical_;
    PassKernel horizontalKernel_, verticalKernel_;
    uint8_t* intermediate_;
    size_t width_, height_, slots_, capacity_, slotBytes_, bandRows_;
};

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
    auto* const out = static_cast<uint8_t*>(dest->data);
    PassJob horizontal{}, vertical{};
    if (plan.widthChanges) {
        const ResampleTable table = BuildTable(block, src->width, dest->width, plan.horizontalTaps, arithmetic);
        horizontal = {source, src->rowBytes, plan.heightChanges ? intermediate : out, dest->rowBytes,
                      reinterpret_cast<const uint8_t*>(table.indices), static_cast<const uint8_t*>(table.weights),
                      format, arithmetic, static_cast<uint8_t>(plan.horizontalTaps)};
        FindHalvingRun(horizontal, src->width, dest->width);
    }
    if (plan.heightChanges) {
        const ResampleTable table = BuildTable(block + plan.horizontalBytes, src->height, dest->height,
                                               plan.verticalTaps, arithmetic);
        vertical = {plan.widthChanges ? intermediate : source, plan.widthChanges ? dest->rowBytes : src->rowBytes,
                    out, dest->rowBytes, reinterpret_cast<const uint8_t*>(table.indices),
                    static_cast<const uint8_t*>(table.weights), format, arithmetic,
                    static_cast<uint8_t>(plan.verticalTaps)};
        vertical.stream = WantsStreaming(dest->rowBytes * dest->height);
    }
    if (plan.widthChanges && plan.heightChanges) {
        const bool split = WantsGrid(dest->width, dest->height);
        FusedPasses passes(horizontal, vertical, intermediate, dest->width, src->height, dest->height,
                           split ? ActiveProcessorCount() : 1);
        if (split && passes.slots() > 1) {
            passes.split();
        } else {
            passes.run(0, 0, dest->height);
        }
    } else if (plan.widthChanges) {
        RunPass(Direction::Horizontal, horizontal, dest->width, src->height);
    } else {
        RunPass(Direction::Vertical, vertical, dest->width, dest->height);
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
