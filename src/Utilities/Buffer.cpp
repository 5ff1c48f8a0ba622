// Buffer allocation with rows laid out for vector access, and a buffer's size
// as the host framework's pair of floats.
#include "Utilities/Buffer.h"

#include <unistd.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/Log.h"
#include "quorin/Utilities.h"

namespace quorin {
namespace {

// Index of the highest set bit; 0 for 0. Sizes are compared through it so that
// products are only formed once they are known to fit.
constexpr unsigned HighestBit(uint64_t value) {
    return value == 0 ? 0u : static_cast<unsigned>(std::bit_width(value)) - 1u;
}

constexpr uint64_t RoundUp(uint64_t value, uint64_t multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

// A row shorter than 32 bytes is kept to one 16-byte vector; longer rows start
// on a 64-byte cache line so no vector load of a row straddles two lines more
// than it must.
constexpr size_t RowAlignment(uint32_t rowBits) {
    return uint64_t{rowBits} + 7 < 256 ? 16 : 64;
}

// The unit a row's bit count is padded to: the smallest of 8, 16 or 32 bits
// that holds one pixel, and above 32 bits the power of two above the pixel's
// highest bit, so that a row always ends on a whole access word of its pixels.
constexpr uint64_t RowBitGranule(uint32_t pixelBits) {
    if (pixelBits <= 8) return 8;
    if (pixelBits <= 16) return 16;
    if (pixelBits <= 32) return 32;
    return uint64_t{1} << (HighestBit(pixelBits) + 1);
}

// rowBytes for a row of `rowBits` bits: padded to its granule, then to whole
// alignment units so that every row starts aligned when the first does. The
// rounding runs in 64 bits: only the product of width and pixel size is
// defined modulo 2^32.
constexpr size_t RowBytesFor(uint32_t rowBits, uint32_t pixelBits) {
    if (rowBits == 0) return 0;
    const uint64_t bytes = RoundUp(rowBits, RowBitGranule(pixelBits)) / 8;
    return static_cast<size_t>(RoundUp(bytes, RowAlignment(rowBits)));
}

// Zero-filled storage of `size` bytes. Below a page, posix_memalign gives the
// row alignment without wasting a page; from a page up, calloc takes whole
// pages (already zero from the system) and is only required to give 16 bytes,
// which it does where the C library aligns every block to 16 (64-bit
// systems). Where it aligns to less (8 on 32-bit ARM), every size takes the
// aligned path.
void* AllocateZeroed(size_t size, size_t alignment) {
    if (size < static_cast<size_t>(getpagesize()) || alignof(std::max_align_t) < 16) {
        void* storage = nullptr;
        if (posix_memalign(&storage, alignment, size) != 0) return nullptr;
        std::memset(storage, 0, size);
        return storage;
    }
    void* storage = std::calloc(1, size);
    if (storage != nullptr) RequireVectorAlignedStorage(storage);
    return storage;
}

// Exact "f > value" for a float obtained from an integer: such a float is
// itself an integer (or 2^64), so comparing as integers avoids rounding
// `value` to float, which would make the two equal.
bool FloatExceeds(float f, uint64_t value) {
    constexpr float kTwoTo64 = 18446744073709551616.0f;
    return f >= kTwoTo64 || static_cast<uint64_t>(f) > value;
}

// A float not greater than `value`, found the host framework's coarse way:
// the nearest float, and while that is too large, value + 1 - 2^k for
// k = 8, 9, ... (so 16777219 becomes 16776964, not 16777218). Every value
// below 2^24 converts exactly; above, floats near value are at most
// 2^(lg(value) - 23) apart, so the loop ends by k = max(8, lg(value) - 23),
// long before 2^k could exceed value.
float FloatNotAbove(uint64_t value) {
    float f = static_cast<float>(value);
    for (unsigned k = 8; FloatExceeds(f, value); ++k) {
        f = static_cast<float>(value + 1 - (uint64_t{1} << k));
    }
    return f;
}

}  // namespace

void RequireVectorAlignedStorage(const void* storage) {
    if (reinterpret_cast<uintptr_t>(storage) % 16 != 0) {
        ReportFatal("QuorinBuffer_Init", "Utilities/Buffer", 104, "Assertion failed");
    }
}

}  // namespace quorin

using namespace quorin;

extern "C" QUORIN_API Quorin_Error QuorinBuffer_Init(Quorin_Buffer* buffer, size_t height, size_t width,
                                                     uint32_t pixelBits, Quorin_Flags flags) {
    if (buffer == nullptr) return kQuorinError_NullPointer;
    if ((flags & ~Quorin_Flags{kQuorinFlag_NoAllocate}) != 0) return kQuorinError_UnsupportedFlags;
    if (HighestBit(width) + HighestBit(pixelBits) > 32) return kQuorinError_BadArgument;
    // The bit-length test lets products of up to 2^34 through, and a row bit
    // count that wrapped would give a record too small for its width: refused
    // the same way, before the record is touched.
    uint32_t rowBits = 0;
    if (__builtin_mul_overflow(width, pixelBits, &rowBits)) return kQuorinError_BadArgument;

    const size_t alignment = RowAlignment(rowBits);
    const size_t rowBytes = RowBytesFor(rowBits, pixelBits);
    buffer->data = nullptr;
    buffer->height = height;
    buffer->width = width;
    buffer->rowBytes = rowBytes;

    // The alignment is the answer here, a positive result by design.
    if ((flags & kQuorinFlag_NoAllocate) != 0) return static_cast<Quorin_Error>(alignment);
    if (rowBits == 0) return kQuorinSuccess;
    if (HighestBit(rowBytes) + HighestBit(height) > 32) return kQuorinError_OutOfMemory;
    // Products that pass the bit-length test reach 2^34, beyond a 32-bit
    // size_t: wrapped, they would allocate less than the record describes.
    size_t size = 0;
    if (__builtin_mul_overflow(rowBytes, height, &size)) return kQuorinError_OutOfMemory;

    void* storage = AllocateZeroed(size, alignment);
    if (storage == nullptr) return kQuorinError_OutOfMemory;
    buffer->data = storage;
    return kQuorinSuccess;
}

extern "C" QUORIN_API Quorin_Size QuorinBuffer_GetSize(const Quorin_Buffer* buffer) {
    if (buffer == nullptr) return Quorin_Size{0.0f, 0.0f};
    return Quorin_Size{FloatNotAbove(buffer->width), FloatNotAbove(buffer->height)};
}
