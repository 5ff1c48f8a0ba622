#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <random>

#include "Utilities/Buffer.h"
#include "quorin/Utilities.h"

namespace {

int Lg(uint64_t v) { return v == 0 ? 0 : std::bit_width(v) - 1; }

// The row layout restated: the row bit count is padded to a unit that
// doubles from 8 bits until it holds a pixel (above 32-bit pixels: until it
// exceeds one); rows under 32 bytes align to 16, others to 64.
std::pair<size_t, int> Layout(size_t width, uint32_t pixelBits) {
    const uint64_t bits = uint64_t{width} * pixelBits;
    if (bits == 0) return {0, 16};
    uint64_t unit = 8;
    while (pixelBits > 32 ? unit <= pixelBits : unit < pixelBits) unit *= 2;
    const int alignment = (bits + 7) / 8 < 32 ? 16 : 64;
    const uint64_t bytes = (bits + unit - 1) / unit * unit / 8;
    return {(bytes + alignment - 1) / alignment * alignment, alignment};
}

TEST(BufferInit, RowLayoutOverGrid) {
    // Anchors for the restatement itself: (width, bits) -> (rowBytes, alignment).
    EXPECT_EQ(Layout(1, 32), std::make_pair(size_t{16}, 16));
    EXPECT_EQ(Layout(100, 32), std::make_pair(size_t{448}, 64));
    EXPECT_EQ(Layout(10, 24), std::make_pair(size_t{32}, 16));
    EXPECT_EQ(Layout(3, 64), std::make_pair(size_t{32}, 16));  // 192 bits padded to 256
    EXPECT_EQ(Layout(6, 48), std::make_pair(size_t{64}, 64));  // 288 bits padded to 320
    std::vector<size_t> widths(301);
    for (size_t w = 0; w <= 300; ++w) widths[w] = w;
    for (uint64_t w : {uint64_t{1} << 20, (uint64_t{1} << 24) - 1, uint64_t{1} << 24, uint64_t{3000000000},
                       uint64_t{0xFFFFFFFF}, uint64_t{1} << 32, uint64_t{1} << 33})
        if (w <= SIZE_MAX) widths.push_back(static_cast<size_t>(w));
    for (uint32_t bits = 0; bits <= 130; ++bits) {
        for (size_t width : widths) {
            Quorin_Buffer b{&b, 0, 0, 0};
            const Quorin_Error result = QuorinBuffer_Init(&b, 7, width, bits, kQuorinFlag_NoAllocate);
            if (Lg(width) + Lg(bits) > 32 || uint64_t{width} * bits > 0xFFFFFFFFu) {
                ASSERT_EQ(kQuorinError_BadArgument, result) << width << " x " << bits;
                ASSERT_TRUE(b.data == &b && b.height == 0 && b.width == 0 && b.rowBytes == 0);
                continue;
            }
            ASSERT_EQ(Layout(width, bits), std::make_pair(b.rowBytes, result)) << width << " x " << bits;
            ASSERT_TRUE(b.data == nullptr && b.height == 7 && b.width == width);
        }
    }
}

TEST(BufferInit, CheckOrder) {
    const size_t wide = size_t{1} << 20;  // lg 20 + lg 8192 > 32
    EXPECT_EQ(kQuorinError_NullPointer, QuorinBuffer_Init(nullptr, 1, wide, 8192, 0x10));
    Quorin_Buffer b{&b, 11, 12, 13};
    for (Quorin_Flags bad : {0x1u, 0x10u, 0x80u, 0x100u, 0x400u, 0x80000000u, 0x210u})
        EXPECT_EQ(kQuorinError_UnsupportedFlags, QuorinBuffer_Init(&b, 1, wide, 8192, bad));
    EXPECT_EQ(kQuorinError_BadArgument, QuorinBuffer_Init(&b, 1, wide, 8192, 0));
    EXPECT_TRUE(b.data == &b && b.height == 11 && b.width == 12 && b.rowBytes == 13);
    // lg(16) + lg(2^29) > 32: the record is filled first, and asking only for
    // the alignment never gets that far.
    EXPECT_EQ(kQuorinError_OutOfMemory, QuorinBuffer_Init(&b, size_t{1} << 29, 1, 32, 0));
    EXPECT_TRUE(b.data == nullptr && b.height == size_t{1} << 29 && b.width == 1 && b.rowBytes == 16);
    EXPECT_EQ(16, QuorinBuffer_Init(&b, size_t{1} << 29, 1, 32, kQuorinFlag_NoAllocate));
    EXPECT_EQ(kQuorinSuccess, QuorinBuffer_Init(&b, SIZE_MAX, 0, 32, 0));  // no bits, no storage
    if constexpr (sizeof(size_t) == 4) {
        // 2^16-byte rows, 2^16 + 1 of them: within the bit-length test, but
        // the size wraps to one row where size_t has 32 bits.
        EXPECT_EQ(kQuorinError_OutOfMemory, QuorinBuffer_Init(&b, 65537, 16384, 32, 0));
        EXPECT_TRUE(b.data == nullptr && b.height == 65537 && b.rowBytes == 65536);
    }
    EXPECT_EQ(nullptr, b.data);
}

// Products that pass the bit-length test but not 32 bits used to wrap into a
// record too small for its width, with success.
TEST(BufferInit, RowBitCountsBeyond32BitsAreRefusedBeforeTheRecordIsTouched) {
    Quorin_Buffer b{&b, 11, 12, 13};
    EXPECT_EQ(kQuorinError_BadArgument, QuorinBuffer_Init(&b, 1, 40000000, 128, kQuorinFlag_NoAllocate));
    EXPECT_EQ(kQuorinError_BadArgument, QuorinBuffer_Init(&b, 1, size_t{1} << 20, 4096, 0));
    if constexpr (sizeof(size_t) > 4) {
        EXPECT_EQ(kQuorinError_BadArgument, QuorinBuffer_Init(&b, 1, static_cast<size_t>(uint64_t{1} << 32), 1,
                                                              kQuorinFlag_NoAllocate));
    }
    EXPECT_TRUE(b.data == &b && b.height == 11 && b.width == 12 && b.rowBytes == 13);
    // The largest products that fit keep their layout: 2^32 - 1 bits, and
    // 2^29 bytes of 2^31-bit pixels rounded to 2^32-bit units.
    EXPECT_EQ(64, QuorinBuffer_Init(&b, 1, 0xFFFFFFFFu, 1, kQuorinFlag_NoAllocate));
    EXPECT_EQ(size_t{1} << 29, b.rowBytes);
    EXPECT_EQ(64, QuorinBuffer_Init(&b, 1, 1, 1u << 31, kQuorinFlag_NoAllocate));
    EXPECT_EQ(size_t{1} << 29, b.rowBytes);
}

TEST(BufferInit, AllocatesZeroedAlignedStorage) {
    // (height, width, bits, pointer alignment): below a page, then page-sized and up.
    for (auto [height, width, bits, alignment] : std::vector<std::tuple<size_t, size_t, uint32_t, size_t>>{
             {1, 3, 8, 16}, {5, 7, 24, 16}, {2, 20, 32, 64}, {3, 100, 32, 64}, {4, 1024, 32, 16}, {300, 301, 48, 16}}) {
        const size_t size = Layout(width, bits).first * height;
        void* dirty = std::malloc(size);  // make reuse of a dirty block likely
        std::memset(dirty, 0xA5, size);
        std::free(dirty);
        Quorin_Buffer b{};
        ASSERT_EQ(kQuorinSuccess, QuorinBuffer_Init(&b, height, width, bits, 0));
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(b.data) % alignment) << width << " x " << bits;
        const auto* bytes = static_cast<const unsigned char*>(b.data);
        EXPECT_TRUE(std::all_of(bytes, bytes + size, [](unsigned char c) { return c == 0; }));
        std::free(b.data);
    }
}

// A test of its own, named as a death test, so that runs which cannot fork
// a threaded process (qemu-user) leave it out by name.
TEST(BufferInitDeathTest, StorageBelowVectorAlignmentIsFatal) {
    EXPECT_DEATH(quorin::RequireVectorAlignedStorage(reinterpret_cast<void*>(0x1008)),
                 "quorin\\[2\\] QuorinBuffer_Init Utilities/Buffer:104: Assertion failed");
}

// The coarse float step restated in long double, where every integer here
// and every comparison is exact.
float NotAbove(uint64_t v) {
    const long double exact = v;
    float f = static_cast<float>(exact);
    for (int k = 8; f > exact; ++k) f = static_cast<float>(exact + 1.0L - std::ldexp(1.0L, k));
    return f;
}

TEST(BufferGetSize, MatchesExactRestatement) {
    const Quorin_Buffer documented{nullptr, 16777219, 16777217, 0};
    EXPECT_EQ(16777216.0f, QuorinBuffer_GetSize(&documented).width);
    EXPECT_EQ(16776964.0f, QuorinBuffer_GetSize(&documented).height);
    EXPECT_TRUE(QuorinBuffer_GetSize(nullptr).width == 0.0f && QuorinBuffer_GetSize(nullptr).height == 0.0f);
    std::vector<uint64_t> values;
    for (int e : {24, 25, 31, 32, 33, 53, 63, 64})
        for (int64_t d = -3000; d <= (e == 64 ? 0 : 3000); ++d) values.push_back((e == 64 ? 0 : uint64_t{1} << e) + d);
    std::mt19937_64 random(42);
    for (int i = 0; i < 100000; ++i) values.push_back(random() >> (random() % 64));
    // A record holds what size_t does: 32 bits on 32-bit processors.
    std::erase_if(values, [](uint64_t v) { return v > SIZE_MAX; });
    for (size_t i = 0; i < values.size(); ++i) {
        const Quorin_Buffer b{nullptr, static_cast<size_t>(values[values.size() - 1 - i]), static_cast<size_t>(values[i]), 0};
        const Quorin_Size s = QuorinBuffer_GetSize(&b);
        ASSERT_EQ(NotAbove(b.width), s.width) << b.width;
        ASSERT_EQ(NotAbove(b.height), s.height) << b.height;
    }
}

}  // namespace
