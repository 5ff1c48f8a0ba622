// Entry points of the convolution family: the general convolution with an
// integer kernel (grid split), the box blur (two transposed running-sum
// passes on the calling thread) and the tent blur (two general passes).
// Each entry point runs its checks in its own order, then one of the three
// operations below.
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "Convolution/ConvolutionKernels.h"
#include "Convolution/ConvolutionMembers.h"
#include "Core/Checks.h"
#include "Core/Streaming.h"
#include "Core/RowWindow.h"
#include "Core/TempBuffer.h"
#include "quorin/Convolution.h"
#include "quorin/Utilities.h"

namespace quorin::convolution {
namespace {

constexpr bool KernelSizeOutside(uint32_t size) { return size == 0 || size > 255; }

// The kernel steps every member shares, in their order: null records (where
// tested), sizes in 1..255, odd sizes (where required), the kernel no larger
// than the source. A member that does not test records for null refuses a
// null one where its checks would first read it.
Quorin_Error CheckKernel(const Member& m, const Quorin_Buffer* src, const Quorin_Buffer* dest, uint32_t kernelHeight,
                         uint32_t kernelWidth) {
    if (m.testsNull() && AnyNull(src, dest)) return kQuorinError_NullPointer;
    if (KernelSizeOutside(kernelHeight) || KernelSizeOutside(kernelWidth)) return kQuorinError_BadArgument;
    if (m.oddSizesOnly() && (kernelHeight & kernelWidth & 1) == 0) return kQuorinError_BadArgument;
    if (AnyNull(src, dest)) return kQuorinError_BadArgument;
    if (src->width < kernelWidth || src->height < kernelHeight) return kQuorinError_BadArgument;
    return kQuorinSuccess;
}

// The steps box and tent share after the kernel's: the size query, answered
// with the scratch's size (the source's pixels), then the sizes compared.
// The answer to return, if any; otherwise the scratch's size in `bytes`.
std::optional<Quorin_Error> CheckFilter(const Member& m, const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                        uint32_t kernelHeight, uint32_t kernelWidth, Quorin_Flags flags,
                                        size_t& bytes) {
    if (const Quorin_Error error = CheckKernel(m, src, dest, kernelHeight, kernelWidth)) return error;
    const auto pixels = CheckedProduct(src->width, src->height);
    const auto total = pixels ? CheckedProduct(*pixels, m.format.pixelBytes()) : pixels;
    if (!total) return kQuorinError_BadArgument;
    bytes = *total;
    if (flags & kQuorinFlag_QueryTempSize) return AnswerSizeQuery(bytes);
    if (SizesDiffer(src, dest)) return kQuorinError_SizeMismatch;
    return std::nullopt;
}

// Refusals after the described checks of the general convolution and the
// tent: what the description would let read or write outside the buffers.
// The written region is rows roiOffsetX.., columns roiOffsetY.., of
// (width - roiOffsetX) x (height - roiOffsetY) cells: inside the image only
// when the offsets are equal or the region is empty.
Quorin_Error RefuseOutsideBuffers(const Quorin_Buffer* src, const Quorin_Buffer* dest, size_t pixelBytes,
                                  uint32_t roiOffsetX, uint32_t roiOffsetY) {
    if (AnyNullData(src, dest) || AnyCannotDescribeImage(pixelBytes, src, dest)) return kQuorinError_BadArgument;
    if (roiOffsetX > src->width || roiOffsetY > src->height) return kQuorinError_BadArgument;
    const bool empty = roiOffsetX == src->width || roiOffsetY == src->height;
    if (!empty && roiOffsetX != roiOffsetY) return kQuorinError_BadArgument;
    return kQuorinSuccess;
}

// A record of the image's part from (offset, offset) on.
Quorin_Buffer From(const Quorin_Buffer* b, size_t offset, size_t pixelBytes) {
    return {static_cast<uint8_t*>(b->data) + offset * b->rowBytes + offset * pixelBytes, b->height - offset,
            b->width - offset, b->rowBytes};
}

// The general convolution's work after its checks. With equal offsets o the
// crossed offsets describe the image from (o, o) on convolved as if nothing
// lay before it, so the work is done on that part alone.
//
// The grid dispatcher is called as described (tiles 0, 0, over the region),
// and its pieces share the region out among themselves: each takes bands of
// about 32768 pixels of whole rows from one counter until none is left. A
// worker that starts late (a busy or idle processor takes from microseconds
// to more than a tile's time to wake) then leaves its share to the others
// instead of holding the call back with a whole tile of its own. The bytes
// are those of one piece over the whole region.
Quorin_Error Convolve(const Quorin_Buffer* src, const Quorin_Buffer* dest, size_t pixelBytes, uint32_t roiOffsetX,
                      uint32_t roiOffsetY, const int16_t* kernel, uint32_t kernelHeight, uint32_t kernelWidth,
                      int32_t divisor) {
    constexpr size_t kBandPixels = 32768;
    const size_t gridWidth = src->width - roiOffsetX, gridHeight = src->height - roiOffsetY;
    const size_t offset = gridWidth == 0 || gridHeight == 0 ? 0 : roiOffsetX;
    struct Work {
        Quorin_Buffer src, dest;
        ConvolveShape shape;
        ConvolveBandKernel band;
        size_t width, height, bandRows;
        std::atomic<size_t> next{0};
    } work{From(src, offset, pixelBytes),
           From(dest, offset, pixelBytes),
           {},
           kConvolveBandKernels.choose(),
           gridWidth,
           gridHeight,
           std::max<size_t>(1, kBandPixels / std::max<size_t>(1, gridWidth))};
    work.shape = MakeConvolveShape(work.src.width, pixelBytes, kernel, kernelHeight, kernelWidth, divisor);
    work.shape.stream = WantsStreaming(gridHeight * dest->rowBytes);
    // Each band reads the kernelHeight - 1 rows around it again (from memory,
    // when another piece took the band before): bands of at least eight
    // times that many rows keep the extra reading to an eighth. Running sums
    // start over at each band: bands of many rows keep that cheap too.
    work.bandRows = std::max<size_t>(work.bandRows, 8 * (kernelHeight - 1));
    if (work.shape.tentColumn) work.bandRows = std::max<size_t>(work.bandRows, 16 * kernelHeight);
    const Quorin_PieceClosure closure{
        [](void* context, size_t, size_t, size_t, size_t, size_t) {
            Work& k = *static_cast<Work*>(context);
            for (size_t band = k.next.fetch_add(1); band < (k.height + k.bandRows - 1) / k.bandRows;
                 band = k.next.fetch_add(1))
                k.band(k.src, k.dest, band * k.bandRows, std::min(k.height, (band + 1) * k.bandRows), k.width,
                       k.shape);
        },
        &work};
    return _QuorinDispatchApplyOnGrid(0, 0, gridWidth, gridHeight, &closure);
}

template <const Member& kMember>
Quorin_Error RunGeneral(const Quorin_Buffer* src, const Quorin_Buffer* dest, uint32_t roiOffsetX, uint32_t roiOffsetY,
                        const int16_t* kernel, uint32_t kernelHeight, uint32_t kernelWidth, int32_t divisor,
                        Quorin_Flags flags) {
    constexpr size_t P = kMember.format.pixelBytes();
    if (flags & kQuorinFlag_QueryTempSize) return static_cast<Quorin_Error>(kMember.scratchBytes(0, 0));
    if (const Quorin_Error error = CheckKernel(kMember, src, dest, kernelHeight, kernelWidth)) return error;
    if (SizesDiffer(src, dest)) return kQuorinError_SizeMismatch;
    if (kernel == nullptr) return kQuorinError_BadArgument;
    if (const Quorin_Error error = RefuseOutsideBuffers(src, dest, P, roiOffsetX, roiOffsetY)) return error;
    return Convolve(src, dest, P, roiOffsetX, roiOffsetY, kernel, kernelHeight, kernelWidth, divisor);
}

template <const Member& kMember>
Quorin_Error RunBox(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer, uint32_t roiOffsetY,
                    uint32_t kernelHeight, uint32_t kernelWidth, Quorin_Flags flags) {
    constexpr size_t P = kMember.format.pixelBytes();
    size_t bytes = 0;
    if (const auto answer = CheckFilter(kMember, src, dest, kernelHeight, kernelWidth, flags, bytes)) return *answer;
    // Both images packed: a row of width x P bytes (a width whose row wraps is never packed).
    if (RowLongerThan(src->width, P, src->rowBytes) || src->rowBytes != src->width * P ||
        dest->rowBytes != src->width * P)
        return kQuorinError_SizeMismatch;
    if (roiOffsetY != 0) return kQuorinError_BadArgument;
    if (AnyNullData(src, dest) || ExtentTooLarge(src) || ExtentTooLarge(dest)) return kQuorinError_BadArgument;
    TempBuffer scratch;
    if (const Quorin_Error error = scratch.acquire(tempBuffer, bytes)) return error;
    kBoxKernels.choose()(static_cast<const uint8_t*>(src->data), static_cast<uint8_t*>(dest->data),
                         static_cast<uint8_t*>(scratch.data()), src->width, src->height, 1 + kernelWidth / 2,
                         1 + kernelHeight / 2, P);
    return kQuorinSuccess;
}

// 1, 2, .., size / 2 + 1, .., 2, 1; returns the sum of the weights.
int32_t TentWeights(int16_t* weights, uint32_t size) {
    for (uint32_t i = 0; i < size; ++i) weights[i] = static_cast<int16_t>(std::min(i, size - 1 - i) + 1);
    const int32_t half = static_cast<int32_t>(size / 2);
    return (half + 1) * (half + 1);
}

// kGeneral: the general convolution member of the same pixel format.
template <const Member& kMember, const Member& kGeneral>
Quorin_Error RunTent(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer, uint32_t roiOffsetX,
                     uint32_t roiOffsetY, uint32_t kernelHeight, uint32_t kernelWidth, Quorin_Flags flags) {
    constexpr size_t P = kMember.format.pixelBytes();
    size_t bytes = 0;
    if (const auto answer = CheckFilter(kMember, src, dest, kernelHeight, kernelWidth, flags, bytes)) return *answer;
    if (const Quorin_Error error = RefuseOutsideBuffers(src, dest, P, roiOffsetX, roiOffsetY)) return error;
    TempBuffer horizontal, vertical, scratch;
    if (const Quorin_Error error = horizontal.acquire(nullptr, kernelWidth * sizeof(int16_t))) return error;
    if (const Quorin_Error error = vertical.acquire(nullptr, kernelHeight * sizeof(int16_t))) return error;
    if (const Quorin_Error error = scratch.acquire(tempBuffer, bytes)) return error;
    auto* across = static_cast<int16_t*>(horizontal.data());
    auto* down = static_cast<int16_t*>(vertical.data());
    const int32_t acrossDivisor = TentWeights(across, kernelWidth), downDivisor = TentWeights(down, kernelHeight);
    const Quorin_Buffer middle{scratch.data(), src->height, src->width, src->width * P};
    // The passes take the general convolution's road, checks and all.
    const Quorin_Error first =
        RunGeneral<kGeneral>(
            src, &middle, roiOffsetX, roiOffsetY, across, 1, kernelWidth, acrossDivisor, flags);
    if (first != kQuorinSuccess) return first;
    return RunGeneral<kGeneral>(
        &middle, dest, roiOffsetX, roiOffsetY, down, kernelHeight, 1, downDivisor, flags);
}

}  // namespace
}  // namespace quorin::convolution

using namespace quorin::convolution;

extern "C" {

QUORIN_API Quorin_Error QuorinConvolve_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* dest, void*,
                                               uint32_t roiOffsetX, uint32_t roiOffsetY, const int16_t* kernel,
                                               uint32_t kernelHeight, uint32_t kernelWidth, int32_t divisor, uint8_t,
                                               Quorin_Flags flags) {
    return RunGeneral<kConvolvePlanar8>(src, dest, roiOffsetX, roiOffsetY, kernel, kernelHeight, kernelWidth, divisor,
                                        flags);
}

QUORIN_API Quorin_Error QuorinConvolve_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest, void*,
                                                uint32_t roiOffsetX, uint32_t roiOffsetY, const int16_t* kernel,
                                                uint32_t kernelHeight, uint32_t kernelWidth, int32_t divisor,
                                                const uint8_t*, Quorin_Flags flags) {
    return RunGeneral<kConvolveARGB8888>(src, dest, roiOffsetX, roiOffsetY, kernel, kernelHeight, kernelWidth,
                                         divisor, flags);
}

QUORIN_API Quorin_Error QuorinBoxConvolve_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                  void* tempBuffer, uint32_t, uint32_t roiOffsetY,
                                                  uint32_t kernelHeight, uint32_t kernelWidth, uint8_t,
                                                  Quorin_Flags flags) {
    return RunBox<kBoxConvolvePlanar8>(src, dest, tempBuffer, roiOffsetY, kernelHeight, kernelWidth, flags);
}

QUORIN_API Quorin_Error QuorinBoxConvolve_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   void* tempBuffer, uint32_t, uint32_t roiOffsetY,
                                                   uint32_t kernelHeight, uint32_t kernelWidth, const uint8_t*,
                                                   Quorin_Flags flags) {
    return RunBox<kBoxConvolveARGB8888>(src, dest, tempBuffer, roiOffsetY, kernelHeight, kernelWidth, flags);
}

QUORIN_API Quorin_Error QuorinTentConvolve_Planar8(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                   void* tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                                   uint32_t kernelHeight, uint32_t kernelWidth, uint8_t,
                                                   Quorin_Flags flags) {
    return RunTent<kTentConvolvePlanar8, kConvolvePlanar8>(src, dest, tempBuffer, roiOffsetX, roiOffsetY, kernelHeight, kernelWidth,
                                         flags);
}

QUORIN_API Quorin_Error QuorinTentConvolve_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                    void* tempBuffer, uint32_t roiOffsetX, uint32_t roiOffsetY,
                                                    uint32_t kernelHeight, uint32_t kernelWidth, const uint8_t*,
                                                    Quorin_Flags flags) {
    return RunTent<kTentConvolveARGB8888, kConvolveARGB8888>(src, dest, tempBuffer, roiOffsetX, roiOffsetY, kernelHeight, kernelWidth,
                                          flags);
}

}  // extern "C"
