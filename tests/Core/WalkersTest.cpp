// The walkers the gathering and neighbourhood families build on: the row
// window against direct indexing at every edge, the reduce step against a
// serial count for every task count, and the temporary-buffer protocol.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

#include "Core/Reduce.h"
#include "Core/RowWindow.h"
#include "Core/SplitRule.h"
#include "Core/TempBuffer.h"
#include "support/GuardedImage.h"

namespace quorin::test {
namespace {

// Every output row's window, for every window shape up to 3 above and below
// on images of 1 to 5 rows, names the rows an independent clamp names.
TEST(RowWindow, NamesTheNeighbouringRowsAtEveryEdge) {
    for (size_t height = 1; height <= 5; ++height) {
        GuardedImage image(3, height, 1, 5);
        for (size_t above = 0; above <= 3; ++above)
            for (size_t below = 0; below <= 3; ++below)
                for (const WindowEdge edge : {WindowEdge::Clamp, WindowEdge::Outside}) {
                    RowWindow<uint8_t> window(image.record(), above, below, edge);
                    for (size_t y = 0; y < height; ++y) {
                        const auto rows = window.at(y);
                        ASSERT_EQ(rows.size(), above + 1 + below);
                        for (size_t k = 0; k < rows.size(); ++k) {
                            const long want = static_cast<long>(y + k) - static_cast<long>(above);
                            const bool inside = want >= 0 && want < static_cast<long>(height);
                            const long row = std::clamp<long>(want, 0, static_cast<long>(height) - 1);
                            const uint8_t* expected = inside || edge == WindowEdge::Clamp ? image.row(row) : nullptr;
                            EXPECT_EQ(rows[k], expected) << "height " << height << " window " << above << "+"
                                                         << below << " row " << y << " tap " << k;
                        }
                    }
                }
    }
}

TEST(RowWindow, AWindowLargerThanItsCapacityGivesNoRows) {
    GuardedImage image(3, 4, 1);
    RowWindow<uint8_t, 8> window(image.record(), 4, 4, WindowEdge::Clamp);
    EXPECT_FALSE(window.fits());
    EXPECT_TRUE(window.at(0).empty());
    RowWindow<uint8_t, 8> widest(image.record(), 3, 4, WindowEdge::Clamp);
    EXPECT_TRUE(widest.fits());
    EXPECT_EQ(widest.at(3).size(), 8u);
}

// A vertical three-tap sum through OverWindows, serial and split, equals the
// sum written out by hand, and writes nothing outside the destination.
TEST(RowWindow, BandsOfWindowsMatchTheSerialSum) {
    const size_t width = 257, height = 301;
    GuardedImage src(width, height, 2, 6), serial(width, height, 2, 4), split(width, height, 2, 4);
    src.fillRandom(7);
    const auto sum = [](std::span<const uint16_t* const> rows, uint16_t* out, size_t n) {
        for (size_t x = 0; x < n; ++x) out[x] = static_cast<uint16_t>(rows[0][x] + 2 * rows[1][x] + rows[2][x]);
    };
    OverWindows<uint16_t, uint16_t>(src.record(), serial.record(), 1, 1, WindowEdge::Clamp, sum)(0, height);
    SetProcessorCountForTest(3);
    RunSplit<SplitRule::ApplyBands>(0, width, height,
                                    OverWindows<uint16_t, uint16_t>(src.record(), split.record(), 1, 1,
                                                                    WindowEdge::Clamp, sum));
    SetProcessorCountForTest(0);
    EXPECT_EQ(serial.pixels(), split.pixels());
    EXPECT_EQ(split.damagedGuard(), "");
    for (size_t y = 0; y < height; ++y) {
        const size_t up = y ? y - 1 : 0, down = y + 1 < height ? y + 1 : y;
        for (const size_t x : {size_t{0}, width / 2, width - 1}) {
            const auto at = [&](size_t row) { return src.pixel<uint16_t>(x, row)[0]; };
            ASSERT_EQ(serial.pixel<uint16_t>(x, y)[0], static_cast<uint16_t>(at(up) + 2 * at(y) + at(down)));
        }
    }
}

// A 256-bin count, reduced over 1 to 7 tasks, equals the serial count; with
// one task nothing is allocated (an allocation made to fail is not asked
// for), and a failed allocation returns the family's own code untouched.
TEST(Reduce, PartialsMergeToTheSerialResultAndFailWithTheFamilysCode) {
    const size_t width = 100, height = 97;
    GuardedImage image(width, height, 1, 3);
    image.fillRandom(3);
    using Histogram = std::array<uint64_t, 256>;
    const auto count = [&](Histogram& h, size_t first, size_t rows) {
        for (size_t y = first; y < first + rows; ++y)
            for (size_t x = 0; x < width; ++x) ++h[image.row(y)[x]];
    };
    const auto merge = [](Histogram& total, const Histogram& part) {
        for (size_t i = 0; i < total.size(); ++i) total[i] += part[i];
    };
    Histogram serial{};
    count(serial, 0, height);
    for (size_t tasks = 0; tasks <= 7; ++tasks) {
        Histogram total{};
        FailPartialAllocationsForTest(tasks <= 1 ? 1 : 0);  // the serial path must not allocate
        EXPECT_EQ(ReduceRows(ReducePlan{tasks, kQuorinError_InternalFault}, height, total, count, merge), 0);
        EXPECT_EQ(total, serial) << tasks << " tasks";
        FailPartialAllocationsForTest(0);
    }
    Histogram untouched{};
    untouched[5] = 9;
    FailPartialAllocationsForTest(1);
    bool ran = false;
    EXPECT_EQ(ReduceRows(ReducePlan{4, kQuorinError_InternalFault}, height, untouched,
                         [&](Histogram&, size_t, size_t) { ran = true; }, merge),
              kQuorinError_InternalFault);
    EXPECT_FALSE(ran);
    EXPECT_EQ(untouched[5], 9u);
}

TEST(TempBuffer, CallersBufferOrAZeroFilledAllocationFreedOnReturn) {
    EXPECT_EQ(AnswerSizeQuery(0), 0);
    EXPECT_EQ(AnswerSizeQuery(4096 * 4), 4096 * 4);
    EXPECT_LT(AnswerSizeQuery(size_t{1} << 40), 0);

    uint8_t mine[32];
    std::memset(mine, 0xEE, sizeof mine);
    {
        TempBuffer scratch;
        EXPECT_EQ(scratch.acquire(mine, sizeof mine), kQuorinSuccess);
        EXPECT_EQ(scratch.data(), mine);
        EXPECT_FALSE(scratch.owned());
    }
    EXPECT_EQ(mine[0], 0xEE);  // used as it is: neither cleared nor freed

    TempBuffer scratch;
    ASSERT_EQ(scratch.acquire(nullptr, 1000), kQuorinSuccess);
    ASSERT_TRUE(scratch.owned());
    const auto* bytes = static_cast<const uint8_t*>(scratch.data());
    EXPECT_EQ(std::count(bytes, bytes + 1000, 0), 1000);

    TempBuffer none;
    EXPECT_EQ(none.acquire(nullptr, 0), kQuorinSuccess);
    EXPECT_FALSE(none.owned());
}

}  // namespace
}  // namespace quorin::test
