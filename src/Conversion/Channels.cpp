// Channel operations: fills, overwrites with a scalar, the buffer copy, the
// float clip, channel permutes and channel extracts. Each entry point runs its row of the member table
// (ChannelMembers.h): the check list, then the kernel pair over one
// contiguous run or row by row, under the member's split.
#include <algorithm>
#include <cstring>

#include "Conversion/ChannelKernels.h"
#include "Conversion/ChannelMembers.h"
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
    const auto* const from = static_cast<const uint8_t*>(src->data);
    auto* const to = static_cast<uint8_t*>(dest->data);
    const size_t srcRowBytes = src->rowBytes, destRowBytes = dest->rowBytes;
    const auto piece = [=](size_t x, size_t y, size_t w, size_t h) {
        for (size_t r = y; r < y + h; ++r)
            std::memmove(to + r * destRowBytes + x * pixelSize, from + r * srcRowBytes + x * pixelSize, w);
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
    const size_t lastRead = (dest->height - 1) * src->rowBytes + (count - 1) * kPixel + (channel + 1) * kElement;
    if (count * kElement > dest->rowBytes || dest->height > src->height || lastRead > src->height * src->rowBytes)
        return kQuorinError_BadArgument;
    const auto kernel = ExtractKernels<T>().choose();
    const auto* const from = static_cast<const uint8_t*>(src->data);
    auto* const to = static_cast<uint8_t*>(dest->data);
    return RunSplit<kMember.split>(flags, dest->width, dest->height, [&](size_t firstRow, size_t rows) {
        for (size_t y = firstRow; y < firstRow + rows; ++y)
            kernel(reinterpret_cast<const T*>(from + y * src->rowBytes), reinterpret_cast<T*>(to + y * dest->rowBytes),
                   count, static_cast<size_t>(channel));
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
    if (rows > src->height || (rows - 1) * src->rowBytes + count * kBytes > src->height * src->rowBytes)
        return kQuorinError_BadArgument;
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
    } else {
        const auto* bounds = static_cast<const float*>(c.value);
        return RunClip<kMember>(c.src, c.dest, bounds[0], bounds[1], c.flags);
    }
}

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

}  // extern "C"
