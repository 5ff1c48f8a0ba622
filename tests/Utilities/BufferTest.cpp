#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "Utilities/Buffer.h"
#include "quorin/Utilities.h"

namespace {

int Lg(uint64_t v) { return v == 0 ? 0 : std::bit_width(v) - 1; }

struct Layout {
    size_t rowBytes;
    int alignment;
};

// The row layout restated from its definition: the row's bit count (a 32-bit
// product) is padded to a unit that doubles from 8 bits until it holds a pixel
// (and, above 32-bit pixels, until it exceeds the pixel); rows of fewer than
// 32 bytes get 16-byte alignment, others 64.
Layout ExpectedLayout(size_t width, uint32_t pixelBits) {
    const uint64_t bits = (uint64_t{width} * pixelBits) & 0xFFFFFFFFu;
    if (bits == 0) return {0, 16};
    uint64_t unit = 8;
    while (pixelBits > 32 ? unit <= pixelBits : unit < pixelBits) unit *= 2;
    const int alignment = (bits + 7) / 8 < 32 ? 16 : 64;
    const uint64_t bytes = (bits + unit - 1) / unit * unit / 8;
    return {static_cast<size_t>((bytes + alignment - 1) / alignment * alignment), alignment};
}

TEST(BufferInit, RowLayoutMatchesDefinitionOverGrid) {
    std::vector<size_t> widths;
    for (size_t w = 0; w <= 300; ++w) widths.push_back(w);
    for (size_t w : {size_t{1} << 20, (size_t{1} << 24) - 1, size_t{1} << 24, size_t{3000000000u},
                     size_t{0xFFFFFFFFu}, size_t{1} << 32})
        widths.push_back(w);
    for (uint32_t bits = 0; bits <= 130; ++bits) {
        for (size_t width : widths) {
            Quorin_Buffer b{reinterpret_cast<void*>(1), 0, 0, 0};
            if (Lg(width) + Lg(bits) > 32) {
                ASSERT_EQ(kQuorinError_BadArgument, QuorinBuffer_Init(&b, 7, width, bits, kQuorinFlag_NoAllocate));
                continue;
            }
            const Layout want = ExpectedLayout(width, bits);
            ASSERT_EQ(want.alignment, QuorinBuffer_Init(&b, 7, width, bits, kQuorinFlag_NoAllocate))
                << width << " x " << bits;
            ASSERT_EQ(want.rowBytes, b.rowBytes) << width << " x " << bits;
            ASSERT_TRUE(b.data == nullptr && b.height == 7 && b.width == width);
        }
    }
}

TEST(BufferInit, DocumentedLayouts) {
    struct Case { size_t width; uint32_t bits; size_t rowBytes; int alignment; };
    for (const Case& c : {Case{1, 32, 16, 16}, Case{8, 32, 64, 64}, Case{100, 32, 448, 64},
                          Case{10, 24, 32, 16}, Case{3, 1, 16, 16}, Case{5, 48, 32, 16},
                          Case{3, 64, 32, 16}, Case{0, 32, 0, 16}, Case{9, 0, 0, 16}}) {
        Quorin_Buffer b{};
        EXPECT_EQ(c.alignment, QuorinBuffer_Init(&b, 1, c.width, c.bits, kQuorinFlag_NoAllocate));
        EXPECT_EQ(c.rowBytes, b.rowBytes) << c.width << " x " << c.bits;
    }
}

TEST(BufferInit, ChecksInOrderBeforeTouchingRecord) {
    const size_t hugeWidth = size_t{1} << 20;  // lg 20 + lg 8192 (13) > 32
    EXPECT_EQ(kQuorinError_NullPointer, QuorinBuffer_Init(nullptr, 1, hugeWidth, 8192, 0x10));
    Quorin_Buffer b{reinterpret_cast<void*>(0x1234), 11, 12, 13};
    for (Quorin_Flags bad : {0x1u, 0x10u, 0x80u, 0x100u, 0x400u, 0x80000000u, 0x210u})
        EXPECT_EQ(kQuorinError_UnsupportedFlags, QuorinBuffer_Init(&b, 1, hugeWidth, 8192, bad));
    EXPECT_EQ(kQuorinError_BadArgument, QuorinBuffer_Init(&b, 1, hugeWidth, 8192, 0));
    EXPECT_EQ(kQuorinError_BadArgument, QuorinBuffer_Init(&b, 1, size_t{1} << 33, 1, 0));
    EXPECT_TRUE(b.data == reinterpret_cast<void*>(0x1234) && b.height == 11 && b.width == 12 && b.rowBytes == 13);

    // lg(16) + lg(2^29) > 32: out of memory, but only after the record is filled,
    // and not at all when only the alignment is asked for.
    EXPECT_EQ(kQuorinError_OutOfMemory, QuorinBuffer_Init(&b, size_t{1} << 29, 1, 32, 0));
    EXPECT_TRUE(b.data == nullptr && b.height == size_t{1} << 29 && b.width == 1 && b.rowBytes == 16);
    EXPECT_EQ(16, QuorinBuffer_Init(&b, size_t{1} << 29, 1, 32, kQuorinFlag_NoAllocate));
    EXPECT_EQ(kQuorinError_OutOfMemory, QuorinBuffer_Init(&b, size_t{1} << 13, size_t{1} << 20, 8, 0));
    EXPECT_EQ(kQuorinSuccess, QuorinBuffer_Init(&b, size_t{1} << 40, 0, 32, 0));  // no bits: nothing allocated
    EXPECT_EQ(nullptr, b.data);
}

TEST(BufferInit, AllocatesZeroedAlignedStorage) {
    struct Case { size_t height, width; uint32_t bits; size_t alignment; };
    // Below a page (aligned allocation) and from a page up (zeroed pages).
    for (const Case& c : {Case{1, 3, 8, 16}, Case{5, 7, 24, 16}, Case{2, 20, 32, 64}, Case{3, 100, 32, 64}, Case{31, 1, 32, 16},
                          Case{4, 1024, 32, 16}, Case{300, 301, 48, 16}}) {
        Quorin_Buffer b{};
        const size_t rowBytes = ExpectedLayout(c.width, c.bits).rowBytes, size = rowBytes * c.height;
        void* dirty = std::malloc(size);  // make reuse of a dirty block likely
        std::memset(dirty, 0xA5, size);
        std::free(dirty);
        ASSERT_EQ(kQuorinSuccess, QuorinBuffer_Init(&b, c.height, c.width, c.bits, 0));
        ASSERT_NE(nullptr, b.data);
        EXPECT_EQ(rowBytes, b.rowBytes);
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(b.data) % c.alignment) << c.width << " x " << c.bits;
        const auto* bytes = static_cast<const unsigned char*>(b.data);
        EXPECT_EQ(size, static_cast<size_t>(std::count(bytes, bytes + size, 0)));
        std::free(b.data);
    }
}

TEST(BufferInitDeathTest, MisalignedStorageIsFatal) {
    EXPECT_DEATH(quorin::RequireVectorAlignedStorage(reinterpret_cast<void*>(0x1008)),
                 "quorin\\[2\\] QuorinBuffer_Init Utilities/Buffer:104: Assertion failed");
    quorin::RequireVectorAlignedStorage(reinterpret_cast<void*>(0x1010));
}

// The coarse float step restated with exact long double arithmetic (64-bit
// significand): every integer and every comparison here is exact.
float ExpectedFloat(uint64_t v) {
    const long double exact = static_cast<long double>(v);
    float f = static_cast<float>(exact);
    for (int k = 8; static_cast<long double>(f) > exact; ++k)
        f = static_cast<float>(exact + 1.0L - std::ldexp(1.0L, k));
    return f;
}

TEST(BufferGetSize, MatchesExactFormulation) {
    const Quorin_Buffer documented{nullptr, 16777219, 16777217, 0};
    EXPECT_EQ(16777216.0f, QuorinBuffer_GetSize(&documented).width);
    EXPECT_EQ(16776964.0f, QuorinBuffer_GetSize(&documented).height);
    const Quorin_Size none = QuorinBuffer_GetSize(nullptr);
    EXPECT_TRUE(none.width == 0.0f && none.height == 0.0f);

    std::vector<uint64_t> values;
    for (int e : {24, 25, 31, 32, 33, 53, 63})
        for (int64_t d = -3000; d <= 3000; ++d) values.push_back((uint64_t{1} << e) + d);
    for (uint64_t d = 0; d < 3000; ++d) values.push_back(~uint64_t{0} - d);
    std::mt19937_64 random(42);
    for (int i = 0; i < 100000; ++i) values.push_back(random() >> (random() % 64));
    for (size_t i = 0; i < values.size(); ++i) {
        const uint64_t w = values[i], h = values[values.size() - 1 - i];
        const Quorin_Buffer b{nullptr, h, w, 0};
        const Quorin_Size s = QuorinBuffer_GetSize(&b);
        ASSERT_EQ(ExpectedFloat(w), s.width) << w;
        ASSERT_EQ(ExpectedFloat(h), s.height) << h;
    }
}

}  // namespace
