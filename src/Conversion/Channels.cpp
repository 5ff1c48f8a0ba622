// Channel operations: fills, overwrites, the buffer copy, the float clip,
// channel permutes, extracts and selects, table lookups and flattens. Each
// entry point runs its row of the member table
// (ChannelMembers.h): the check list, then the kernel pair over one
// contiguous run or row by row, under the member's split.
#include <algorithm>
#include <cstring>

#include "Conversion/ChannelKernels.h"
#include "Conversion/ChannelMembers.h"
#include "Conversion/FlattenKernels.h"
#include "Core/Streaming.h"
#include "Core/Walk.h"

namespace quorin::channels {
namespace {

// Byte masks of the channels copyMask selects: bit 0x8 is the first channel,
// 0x1 the fourth; higher bits are ignored.
Pattern SelectedBytes(uint32_t copyMask, size_t sampleBytes) {
    Pattern mask{};
    for (size_t k = 0; k < mask.size(); ++k) {
        const size_t channel = k / sampleBytes % 4;
        mask[k] = (copyMask >> (3 - channel) & 1) ? 0xFF : 0x00;
    }
    return mask;
}

template <const Member& kMember>
Quorin_Error RunFill(const Quorin_Buffer* dest, const void* value, Quorin_Flags flags) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    const Operand operands[] = {{dest, kBytes}};
    const void* const pointers[] = {value};
    const std::span<const void* const> checkedPointers =
        kMember.format.channels == 4 ? std::span<const void* const>(pointers) : std::span<const void* const>();
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, nullptr, checkedPointers}))
        return error;
    const Pattern pattern = Repeat(value, kBytes);
    const auto kernel = ChooseStreaming(kFillKernels, dest->height * dest->width * kBytes);
    const auto run = [=](uint8_t* d, size_t pixels) { kernel(d, pixels * kBytes, pattern.data(), kBytes); };
    return RunSplit<kMember.split>(flags, dest->width, dest->height,
                                   OverRows(dest->width, run, Plane<uint8_t, kBytes>(dest)));
}

template <const Member& kMember>
Quorin_Error RunOverwriteScalar(const Quorin_Buffer* src, const Quorin_Buffer* dest, const void* scalar,
                                uint32_t copyMask, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kBytes = kFormat.pixelBytes();
    if (const Quorin_Error error = RunChecks(kMember.checks, {{src, kBytes}, {dest, kBytes}}, flags)) return error;
    const Pattern pattern = Repeat(scalar, kFormat.sampleBytes());
    const Pattern mask = SelectedBytes(copyMask, kFormat.sampleBytes());
    const auto kernel = ChooseStreaming(kSelectKernels, dest->height * dest->width * kBytes);
    const auto run = [=](uint8_t* s, uint8_t* d, size_t pixels) {
        kernel(s, d, pixels * kBytes, pattern.data(), mask.data(), kBytes);
    };
    return RunSplit<kMember.split>(flags, dest->width, dest->height,
                                   OverRows(dest->width, run, Plane<uint8_t, kBytes>(src), Plane<uint8_t, kBytes>(dest)));
}

// Every whole element of each row up to rowBytes, padding included: one run
// when the rows hold whole elements, else row by row.
template <const Member& kMember>
Quorin_Error RunOverwritePlane(const Quorin_Buffer* dest, const void* scalar, Quorin_Flags flags) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    if (const Quorin_Error error = RunChecks(kMember.checks, {{dest, kBytes}}, flags)) return error;
    const Pattern pattern = Repeat(scalar, kBytes);
    const size_t rowBytes = dest->rowBytes, elements = rowBytes / kBytes;
    const auto kernel = ChooseStreaming(kFillKernels, dest->height * elements * kBytes);
    auto* const data = static_cast<uint8_t*>(dest->data);
    return RunSplit<kMember.split>(flags, elements, dest->height, [&](size_t firstRow, size_t rows) {
        if (rowBytes % kBytes == 0) return kernel(data + firstRow * rowBytes, rows * rowBytes, pattern.data(), kBytes);
        for (size_t y = firstRow; y < firstRow + rows; ++y)
            kernel(data + y * rowBytes, elements * kBytes, pattern.data(), kBytes);
    });
}

// Whether a walk that reads `bytes` from the start of each of the first
// `rows` rows of `buffer` (a record that can describe its image) stays
// inside its height x rowBytes bytes.
bool WalkFits(const Quorin_Buffer* buffer, size_t rows, size_t bytes) {
    if (rows == 0 || bytes == 0) return true;
    return rows <= buffer->height && (rows - 1) * buffer->rowBytes + bytes <= buffer->height * buffer->rowBytes;
}

bool Overlap(const void* a, const void* b, size_t bytes) {
    const auto x = reinterpret_cast<uintptr_t>(a), y = reinterpret_cast<uintptr_t>(b);
    return x < y + bytes && y < x + bytes;
}

// `width` bytes from the start of each source row to the start of the
// destination row, for each of the destination's rows. The rows dispatcher
// hands out whole rows, so a piece's first column (scaled by pixelSize) is 0.
template <const Member& kMember>
Quorin_Error RunCopy(const Quorin_Buffer* src, const Quorin_Buffer* dest, size_t pixelSize, Quorin_Flags flags) {
    const size_t bytes = std::max<size_t>(pixelSize, 1);
    const Operand operands[] = {{dest, bytes}, {src, bytes}};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, dest})) return error;
    // The copy reads dest's width bytes (not pixels) from each of dest's rows of src.
    if (!WalkFits(src, dest->height, dest->width)) return kQuorinError_BadArgument;
    const auto* const from = static_cast<const uint8_t*>(src->data);
    auto* const to = static_cast<uint8_t*>(dest->data);
    const size_t srcRowBytes = src->rowBytes, destRowBytes = dest->rowBytes;
    const CopyKernel chosen = kCopyKernels.choose();
    const bool stream = WantsStreaming(dest->height * dest->width);
    // A piece whose rows overlap nowhere is one kernel call (its streaming
    // stores fenced once); rows that overlap keep the row order of memmove.
    const auto piece = [=](size_t x, size_t y, size_t w, size_t h) {
        const uint8_t* s = from + y * srcRowBytes + x * pixelSize;
        uint8_t* d = to + y * destRowBytes + x * pixelSize;
        if (h == 0 || w == 0) return;
        const size_t spanned = (h - 1) * std::max(srcRowBytes, destRowBytes) + w;
        if (!Overlap(s, d, spanned)) {
            chosen(s, srcRowBytes, d, destRowBytes, w, h, stream);
            return;
        }
        for (size_t r = 0; r < h; ++r) std::memmove(d + r * destRowBytes, s + r * srcRowBytes, w);
    };
    RunRows(flags, dest->width, dest->height, piece);
    return kQuorinSuccess;
}

// The vector kernel only for runs whose source and destination do not
// overlap; an overlapping run keeps the scalar rule's element order.
template <const Member& kMember>
Quorin_Error RunClip(const Quorin_Buffer* src, const Quorin_Buffer* dest, float upper, float lower,
                     Quorin_Flags flags) {
    const Operand operands[] = {{dest, sizeof(float)}, {src, sizeof(float)}};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, dest})) return error;
    const ClipKernel chosen = kClipKernels.choose();
    const bool stream = WantsStreaming(dest->height * dest->width * sizeof(float));
    const auto run = [=](const float* s, float* d, size_t count) {
        const ClipKernel kernel = Overlap(s, d, count * sizeof(float)) ? kClipKernels.scalar : chosen;
        kernel(s, d, count, upper, lower, stream);
    };
    RunRows(flags, dest->width, dest->height, OverPieces(run, Plane<float>(src), Plane<float>(dest)));
    return kQuorinSuccess;
}

template <const Member& kMember>
Quorin_Error RunPermute(const Quorin_Buffer* src, const Quorin_Buffer* dest, const uint8_t* map, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kBytes = kFormat.pixelBytes();
    const Operand operands[] = {{src, kBytes}, {dest, kBytes}};
    const void* const pointers[] = {map};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, nullptr, pointers}))
        return error;
    const Pattern order = ShuffleOf(map, kFormat.sampleBytes());
    const auto kernel = ChooseStreaming(kPermuteKernels, dest->height * dest->width * kBytes);
    const auto run = [=](uint8_t* s, uint8_t* d, size_t pixels) { kernel(s, d, pixels * kBytes, order.data(), kBytes); };
    return RunSplit<kMember.split>(flags, dest->width, dest->height,
                                   OverRows(dest->width, run, Plane<uint8_t, kBytes>(src), Plane<uint8_t, kBytes>(dest)));
}

// Each destination row takes element `channel` of successive source pixels
// while the source byte offset is below the destination's rowBytes:
// ceil(rowBytes / pixel bytes) elements a row, padding included, reading
// on past the source row when the destination's rows are the longer.
template <const Member& kMember>
Quorin_Error RunExtract(const Quorin_Buffer* src, const Quorin_Buffer* dest, int channel, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    using T = Sample<kFormat>;
    constexpr size_t kPixel = kFormat.pixelBytes(), kElement = sizeof(T);
    if (channel < 0 || channel > 3) return kQuorinError_BadArgument;
    const Operand operands[] = {{dest, kElement}, {src, kPixel}};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, dest})) return error;
    if (dest->height == 0) return kQuorinSuccess;
    // The walk stays inside both buffers: its last row's writes inside dest,
    // and the last element it reads inside src.
    const size_t count = (dest->rowBytes + kPixel - 1) / kPixel;
    if (count == 0) return kQuorinSuccess;
    const size_t rowRead = (count - 1) * kPixel + (channel + 1) * kElement;
    if (count * kElement > dest->rowBytes || !WalkFits(src, dest->height, rowRead)) return kQuorinError_BadArgument;
    const auto kernel = ExtractKernels<T>().choose();
    const bool stream = WantsStreaming(dest->height * dest->rowBytes);
    const auto* const from = static_cast<const uint8_t*>(src->data);
    auto* const to = static_cast<uint8_t*>(dest->data);
    return RunSplit<kMember.split>(flags, dest->width, dest->height, [&](size_t firstRow, size_t rows) {
        for (size_t y = firstRow; y < firstRow + rows; ++y)
            kernel(reinterpret_cast<const T*>(from + y * src->rowBytes), reinterpret_cast<T*>(to + y * dest->rowBytes),
                   count, static_cast<size_t>(channel), stream);
    });
}

// Pixels a row of dest's rowBytes takes: every whole pixel, except at 8 bits,
// where the loop counts bytes in steps of 4 against rowBytes / 4 and so
// reaches only the first ceil((rowBytes / 4) / 4) pixels.
template <const Member& kMember>
size_t PixelsOverwritten(size_t rowBytes) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    if constexpr (kBytes == 4) return (rowBytes / 4 + 3) / 4;
    return rowBytes / kBytes;
}

template <const Member& kMember>
Quorin_Error RunOverwritePixel(const Quorin_Buffer* src, const Quorin_Buffer* dest, const void* pixel,
                               uint32_t copyMask, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kBytes = kFormat.pixelBytes();
    const Operand operands[] = {{src, kBytes}, {dest, kBytes}};
    const void* const pointers[] = {pixel};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, nullptr, pointers}))
        return error;
    const size_t count = PixelsOverwritten<kMember>(dest->rowBytes), rows = dest->height;
    if (rows == 0 || count == 0) return kQuorinSuccess;
    // The source is read at dest's pixel count on each of dest's rows.
    if (!WalkFits(src, rows, count * kBytes)) return kQuorinError_BadArgument;
    const Pattern pattern = Repeat(pixel, kBytes);
    const Pattern mask = SelectedBytes(copyMask, kFormat.sampleBytes());
    const auto kernel = ChooseStreaming(kSelectKernels, rows * count * kBytes);
    const auto* const from = static_cast<const uint8_t*>(src->data);
    auto* const to = static_cast<uint8_t*>(dest->data);
    return RunSplit<kMember.split>(flags, count, rows, [&](size_t firstRow, size_t band) {
        for (size_t y = firstRow; y < firstRow + band; ++y)
            kernel(from + y * src->rowBytes, to + y * dest->rowBytes, count * kBytes, pattern.data(), mask.data(),
                   kBytes);
    });
}

// Four bytes a step up to dest's rowBytes from each row's first byte: a
// rowBytes that is not a multiple of 4 makes each row's last step write up
// to 3 bytes into the next row, which that row then rewrites (reading them
// back when the lookup is in place), and on the buffer's last row the last
// step writes only the bytes inside it. Each row reads from its source row
// as many bytes as it writes. The rows run in order on the calling thread.
template <const Member& kMember>
Quorin_Error RunLookUp(const Quorin_Buffer* src, const Quorin_Buffer* dest, const Tables& tables,
                       Quorin_Flags flags) {
    constexpr size_t kBytes = kMember.format.pixelBytes();
    const Operand operands[] = {{dest, kBytes}, {src, kBytes}};
    const void* const pointers[] = {tables.table[0], tables.table[1], tables.table[2], tables.table[3]};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, dest, pointers}))
        return error;
    const size_t rows = dest->height, rowBytes = dest->rowBytes, total = rows * rowBytes;
    const size_t walk = (rowBytes + 3) / 4 * 4;
    const auto written = [&](size_t y) { return std::min(walk, total - y * rowBytes); };
    for (size_t y = 0; y < rows; ++y)
        if (!WalkFits(src, y + 1, written(y))) return kQuorinError_BadArgument;
    const LookUpKernel chosen = kLookUpKernels.choose();
    const auto* const from = static_cast<const uint8_t*>(src->data);
    auto* const to = static_cast<uint8_t*>(dest->data);
    for (size_t y = 0; y < rows; ++y) {
        const uint8_t* s = from + y * src->rowBytes;
        uint8_t* d = to + y * rowBytes;
        const size_t bytes = written(y);
        // Rows that overlap without coinciding keep the rule's byte order.
        const LookUpKernel kernel = s != d && Overlap(s, d, bytes) ? kLookUpKernels.scalar : chosen;
        kernel(s, d, bytes, tables);
    }
    return kQuorinSuccess;
}

template <const Member& kMember, class PieceFn>
void RunPieces(Quorin_Flags flags, const Quorin_Buffer* dest, PieceFn&& piece) {
    if constexpr (kMember.split == SplitRule::Grid) RunGrid(flags, dest->width, dest->height, piece);
    else RunRows(flags, dest->width, dest->height, piece);
}

// The channels copyMask selects from newSrc, the others from origSrc, over
// dest's width x height.
template <const Member& kMember>
Quorin_Error RunSelect(const Quorin_Buffer* newSrc, const Quorin_Buffer* origSrc, const Quorin_Buffer* dest,
                       uint32_t copyMask, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kBytes = kFormat.pixelBytes();
    const Operand operands[] = {{dest, kBytes}, {origSrc, kBytes}, {newSrc, kBytes}};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags, dest})) return error;
    const Pattern mask = SelectedBytes(copyMask, kFormat.sampleBytes());
    const auto kernel = ChooseStreaming(kSelectTwoKernels, dest->height * dest->width * kBytes);
    const auto run = [=](uint8_t* n, uint8_t* o, uint8_t* d, size_t pixels) {
        kernel(n, o, d, pixels * kBytes, mask.data(), kBytes);
    };
    using P = Plane<uint8_t, kBytes>;
    RunPieces<kMember>(flags, dest, OverPieces(run, P(newSrc), P(origSrc), P(dest)));
    return kQuorinSuccess;
}

// dest's rowBytes / pixel bytes pixels a row, padding included: the selected
// channels take newSrc's plane element at the pixel's column, the others
// origSrc's. On the calling thread.
template <const Member& kMember>
Quorin_Error RunOverwritePlanes(const Quorin_Buffer* newSrc, const Quorin_Buffer* origSrc, const Quorin_Buffer* dest,
                                uint32_t copyMask, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format;
    using T = Sample<kFormat>;
    constexpr size_t kBytes = kFormat.pixelBytes();
    const Operand operands[] = {{newSrc, sizeof(T)}, {origSrc, kBytes}, {dest, kBytes}};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, flags})) return error;
    const size_t count = dest->rowBytes / kBytes, rows = dest->height;
    if (!WalkFits(newSrc, rows, count * sizeof(T)) || !WalkFits(origSrc, rows, count * kBytes))
        return kQuorinError_BadArgument;
    Selected selected{};
    for (size_t c = 0; c < 4; ++c) selected.channel[c] = (copyMask >> (3 - c) & 1) != 0;
    const auto kernel = FromPlaneKernels<T>().choose();
    const Plane<T> plane(newSrc);
    const Plane<T, 4> from(origSrc), to(dest);
    if (count == 0) return kQuorinSuccess;
    const bool stream = WantsStreaming(rows * count * kBytes);
    for (size_t y = 0; y < rows; ++y) kernel(plane.at(0, y), from.at(0, y), to.at(0, y), count, selected, stream);
    return kQuorinSuccess;
}

constexpr FlattenLayout LayoutOf(const Member& m) {
    if (m.output.channels == 4) return m.format.alpha == kAlphaFirst ? FlattenLayout::AlphaFirst : FlattenLayout::AlphaLast;
    if (m.format.alpha == kAlphaFirst) return FlattenLayout::AlphaFirstToRGB;
    return m.format.order[0] == 'B' ? FlattenLayout::BGRAToRGB : FlattenLayout::AlphaLastToRGB;
}

template <const Member& kMember>
Quorin_Error RunFlatten(const Quorin_Buffer* src, const Quorin_Buffer* dest, const void* background,
                        int premultiplied, Quorin_Flags flags) {
    constexpr PixelFormat kFormat = kMember.format, kOutput = kMember.output;
    using T = Sample<kFormat>;
    const Operand operands[] = {{dest, kOutput.pixelBytes()}, {src, kFormat.pixelBytes()}};
    const void* const pointers[] = {background};
    const CheckedCall call{operands, flags, dest, pointers};
    const std::span<const CheckStep> checks = kMember.checks;
    if (const Quorin_Error error = RunChecks(checks.first(kFlattenQuerySteps), call)) return error;
    if (flags & kQuorinFlag_QueryTempSize) return kQuorinSuccess;  // no temporary buffer
    if (const Quorin_Error error = RunChecks(checks.subspan(kFlattenQuerySteps), call)) return error;
    FlattenArgs<T> args{};
    std::memcpy(args.background, background, sizeof args.background);
    args.premultiplied = premultiplied != 0;
    args.layout = LayoutOf(kMember);
    const auto kernel = ChooseStreaming(FlattenKernels<T>(), dest->height * dest->width * kOutput.pixelBytes());
    const auto run = [=](T* s, T* d, size_t pixels) { kernel(s, d, pixels, args); };
    RunPieces<kMember>(flags, dest, OverPieces(run, Plane<T, 4>(src), Plane<T, kOutput.channels>(dest)));
    return kQuorinSuccess;
}

}  // namespace

template <const Member& kMember>
Quorin_Error Run(const Call& c) {
    if constexpr (kMember.shape == Shape::Fill) {
        return RunFill<kMember>(c.dest, c.value, c.flags);
    } else if constexpr (kMember.shape == Shape::OverwriteScalar) {
        return RunOverwriteScalar<kMember>(c.src, c.dest, c.value, c.copyMask, c.flags);
    } else if constexpr (kMember.shape == Shape::OverwritePlane) {
        return RunOverwritePlane<kMember>(c.dest, c.value, c.flags);
    } else if constexpr (kMember.shape == Shape::Copy) {
        return RunCopy<kMember>(c.src, c.dest, c.pixelSize, c.flags);
    } else if constexpr (kMember.shape == Shape::Permute) {
        return RunPermute<kMember>(c.src, c.dest, static_cast<const uint8_t*>(c.value), c.flags);
    } else if constexpr (kMember.shape == Shape::OverwritePixel) {
        return RunOverwritePixel<kMember>(c.src, c.dest, c.value, c.copyMask, c.flags);
    } else if constexpr (kMember.shape == Shape::Extract) {
        return RunExtract<kMember>(c.src, c.dest, c.channel, c.flags);
    } else if constexpr (kMember.shape == Shape::LookUp) {
        Tables tables{};
        const auto* given = static_cast<const uint8_t* const*>(c.value);
        for (size_t k = 0; k < 4; ++k) tables.table[k] = given ? given[kMember.format.channels == 4 ? k : 0] : nullptr;
        return RunLookUp<kMember>(c.src, c.dest, tables, c.flags);
    } else if constexpr (kMember.shape == Shape::Select) {
        return RunSelect<kMember>(c.newSrc, c.src, c.dest, c.copyMask, c.flags);
    } else if constexpr (kMember.shape == Shape::OverwritePlanes) {
        return RunOverwritePlanes<kMember>(c.newSrc, c.src, c.dest, c.copyMask, c.flags);
    } else if constexpr (kMember.shape == Shape::Flatten) {
        return RunFlatten<kMember>(c.src, c.dest, c.value, c.channel, c.flags);
    } else {
        const auto* bounds = static_cast<const float*>(c.value);
        return RunClip<kMember>(c.src, c.dest, bounds[0], bounds[1], c.flags);
    }
}

// The tables and the tests call members through their rows' pointers; an
// entry point that inlines its member's run leaves no such function behind,
// so the members are instantiated here.
#define QUORIN_INSTANTIATE(member) template Quorin_Error Run<member>(const Call&);
QUORIN_INSTANTIATE(kLookUpARGB8888)
QUORIN_INSTANTIATE(kLookUpPlanar8)
QUORIN_INSTANTIATE(kSelectARGB8888)
QUORIN_INSTANTIATE(kSelectARGBFFFF)
QUORIN_INSTANTIATE(kOverwritePlanesARGB8888)
QUORIN_INSTANTIATE(kOverwritePlanesARGBFFFF)
QUORIN_INSTANTIATE(kFlattenARGB8888)
QUORIN_INSTANTIATE(kFlattenRGBA8888)
QUORIN_INSTANTIATE(kFlattenARGB16U)
QUORIN_INSTANTIATE(kFlattenRGBA16U)
QUORIN_INSTANTIATE(kFlattenARGB16Q12)
QUORIN_INSTANTIATE(kFlattenRGBA16Q12)
QUORIN_INSTANTIATE(kFlattenARGBFFFF)
QUORIN_INSTANTIATE(kFlattenRGBAFFFF)
QUORIN_INSTANTIATE(kFlattenARGB8888ToRGB888)
QUORIN_INSTANTIATE(kFlattenRGBA8888ToRGB888)
QUORIN_INSTANTIATE(kFlattenBGRA8888ToRGB888)
QUORIN_INSTANTIATE(kFlattenARGBFFFFToRGBFFF)
QUORIN_INSTANTIATE(kFlattenRGBAFFFFToRGBFFF)
QUORIN_INSTANTIATE(kFlattenBGRAFFFFToRGBFFF)
#undef QUORIN_INSTANTIATE

}  // namespace quorin::channels

using namespace quorin::channels;  // NOLINT: the entry points below only name members

extern "C" {

// ---- fills ------------------------------------------------------------------

QUORIN_API Quorin_Error QuorinBufferFill_ARGB8888(const Quorin_Buffer* dest, const uint8_t color[4],
                                                  Quorin_Flags flags) {
    return kFillARGB8888.run({nullptr, dest, color, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinBufferFill_ARGBFFFF(const Quorin_Buffer* dest, const float color[4],
                                                  Quorin_Flags flags) {
    return kFillARGBFFFF.run({nullptr, dest, color, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinBufferFill_Planar8(const Quorin_Buffer* dest, uint8_t value, Quorin_Flags flags) {
    return kFillPlanar8.run({nullptr, dest, &value, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinBufferFill_PlanarF(const Quorin_Buffer* dest, float value, Quorin_Flags flags) {
    return kFillPlanarF.run({nullptr, dest, &value, 0, 0, flags});
}

// ---- overwrite with a scalar ------------------------------------------------

QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_ARGB8888(uint8_t scalar, const Quorin_Buffer* src,
                                                                   const Quorin_Buffer* dest, uint32_t copyMask,
                                                                   Quorin_Flags flags) {
    return kOverwriteScalarARGB8888.run({src, dest, &scalar, copyMask, 0, flags});
}
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_ARGBFFFF(float scalar, const Quorin_Buffer* src,
                                                                   const Quorin_Buffer* dest, uint32_t copyMask,
                                                                   Quorin_Flags flags) {
    return kOverwriteScalarARGBFFFF.run({src, dest, &scalar, copyMask, 0, flags});
}
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_Planar8(uint8_t scalar, const Quorin_Buffer* dest,
                                                                  Quorin_Flags flags) {
    return kOverwritePlanar8.run({nullptr, dest, &scalar, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_PlanarF(float scalar, const Quorin_Buffer* dest,
                                                                  Quorin_Flags flags) {
    return kOverwritePlanarF.run({nullptr, dest, &scalar, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_Planar16S(int16_t scalar, const Quorin_Buffer* dest,
                                                                    Quorin_Flags flags) {
    return kOverwritePlanar16S.run({nullptr, dest, &scalar, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithScalar_Planar16U(uint16_t scalar, const Quorin_Buffer* dest,
                                                                    Quorin_Flags flags) {
    return kOverwritePlanar16U.run({nullptr, dest, &scalar, 0, 0, flags});
}

// ---- copy and clip ----------------------------------------------------------

QUORIN_API Quorin_Error QuorinCopyBuffer(const Quorin_Buffer* src, const Quorin_Buffer* dest, size_t pixelSize,
                                         Quorin_Flags flags) {
    return kCopyBuffer.run({src, dest, nullptr, 0, pixelSize, flags});
}
QUORIN_API Quorin_Error QuorinClip_PlanarF(const Quorin_Buffer* src, const Quorin_Buffer* dest, float maxFloat,
                                           float minFloat, Quorin_Flags flags) {
    const float bounds[2] = {maxFloat, minFloat};
    return kClipPlanarF.run({src, dest, bounds, 0, 0, flags});
}

// ---- overwrite with a pixel ---------------------------------------------------

QUORIN_API Quorin_Error QuorinOverwriteChannelsWithPixel_ARGB8888(const uint8_t pixel[4], const Quorin_Buffer* src,
                                                                  const Quorin_Buffer* dest, uint32_t copyMask,
                                                                  Quorin_Flags flags) {
    return kOverwritePixelARGB8888.run({src, dest, pixel, copyMask, 0, flags});
}
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithPixel_ARGB16U(const uint16_t pixel[4], const Quorin_Buffer* src,
                                                                 const Quorin_Buffer* dest, uint32_t copyMask,
                                                                 Quorin_Flags flags) {
    return kOverwritePixelARGB16U.run({src, dest, pixel, copyMask, 0, flags});
}
QUORIN_API Quorin_Error QuorinOverwriteChannelsWithPixel_ARGBFFFF(const float pixel[4], const Quorin_Buffer* src,
                                                                  const Quorin_Buffer* dest, uint32_t copyMask,
                                                                  Quorin_Flags flags) {
    return kOverwritePixelARGBFFFF.run({src, dest, pixel, copyMask, 0, flags});
}

// ---- permute and extract ---------------------------------------------------

QUORIN_API Quorin_Error QuorinPermuteChannels_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       const uint8_t permuteMap[4], Quorin_Flags flags) {
    return kPermuteARGB8888.run({src, dest, permuteMap, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinPermuteChannels_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                       const uint8_t permuteMap[4], Quorin_Flags flags) {
    return kPermuteARGBFFFF.run({src, dest, permuteMap, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinExtractChannel_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      int channelIndex, Quorin_Flags flags) {
    return kExtractARGB8888.run({src, dest, nullptr, 0, 0, flags, channelIndex});
}
QUORIN_API Quorin_Error QuorinExtractChannel_ARGB16U(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                     int channelIndex, Quorin_Flags flags) {
    return kExtractARGB16U.run({src, dest, nullptr, 0, 0, flags, channelIndex});
}
QUORIN_API Quorin_Error QuorinExtractChannel_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      int channelIndex, Quorin_Flags flags) {
    return kExtractARGBFFFF.run({src, dest, nullptr, 0, 0, flags, channelIndex});
}

// ---- table lookups -----------------------------------------------------------

QUORIN_API Quorin_Error QuorinTableLookUp_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   const uint8_t tableA[256], const uint8_t tableR[256],
                                                   const uint8_t tableG[256], const uint8_t tableB[256],
                                                   Quorin_Flags flags) {
    const uint8_t* const tables[4] = {tableA, tableR, tableG, tableB};
    return kLookUpARGB8888.run({src, dest, tables, 0, 0, flags});
}
QUORIN_API Quorin_Error QuorinTableLookUp_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                  const uint8_t table[256], Quorin_Flags flags) {
    const uint8_t* const tables[1] = {table};
    return kLookUpPlanar8.run({src, dest, tables, 0, 0, flags});
}

// ---- select and overwrite from other images --------------------------------------

// newSrc, origSrc, dest, copyMask, flags: origSrc is the call's source.
#define QUORIN_TWO_SOURCE_ENTRY(name, member)                                                                  \
    QUORIN_API Quorin_Error name(const Quorin_Buffer* newSrc, const Quorin_Buffer* origSrc,                    \
                                 const Quorin_Buffer* dest, uint32_t copyMask, Quorin_Flags flags) {           \
        return member.run({origSrc, dest, nullptr, copyMask, 0, flags, 0, newSrc});                            \
    }
QUORIN_TWO_SOURCE_ENTRY(QuorinSelectChannels_ARGB8888, kSelectARGB8888)
QUORIN_TWO_SOURCE_ENTRY(QuorinSelectChannels_ARGBFFFF, kSelectARGBFFFF)
QUORIN_TWO_SOURCE_ENTRY(QuorinOverwriteChannels_ARGB8888, kOverwritePlanesARGB8888)
QUORIN_TWO_SOURCE_ENTRY(QuorinOverwriteChannels_ARGBFFFF, kOverwritePlanesARGBFFFF)
#undef QUORIN_TWO_SOURCE_ENTRY

// ---- flatten -------------------------------------------------------------------

#define QUORIN_FLATTEN_ENTRY(name, member, T)                                                                   \
    QUORIN_API Quorin_Error name(const Quorin_Buffer* src, const Quorin_Buffer* dest, const T backgroundColor[4], \
                                 int isPremultiplied, Quorin_Flags flags) {                                     \
        return member.run({src, dest, backgroundColor, 0, 0, flags, isPremultiplied});                         \
    }
QUORIN_FLATTEN_ENTRY(QuorinFlatten_ARGB8888, kFlattenARGB8888, uint8_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_RGBA8888, kFlattenRGBA8888, uint8_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_ARGB16U, kFlattenARGB16U, uint16_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_RGBA16U, kFlattenRGBA16U, uint16_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_ARGB16Q12, kFlattenARGB16Q12, int16_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_RGBA16Q12, kFlattenRGBA16Q12, int16_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_ARGBFFFF, kFlattenARGBFFFF, float)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_RGBAFFFF, kFlattenRGBAFFFF, float)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_ARGB8888ToRGB888, kFlattenARGB8888ToRGB888, uint8_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_RGBA8888ToRGB888, kFlattenRGBA8888ToRGB888, uint8_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_BGRA8888ToRGB888, kFlattenBGRA8888ToRGB888, uint8_t)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_ARGBFFFFToRGBFFF, kFlattenARGBFFFFToRGBFFF, float)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_RGBAFFFFToRGBFFF, kFlattenRGBAFFFFToRGBFFF, float)
QUORIN_FLATTEN_ENTRY(QuorinFlatten_BGRAFFFFToRGBFFF, kFlattenBGRAFFFFToRGBFFF, float)
#undef QUORIN_FLATTEN_ENTRY

}  // extern "C"
