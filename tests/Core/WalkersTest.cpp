// The walkers the gathering and neighbourhood families build on: the row
// window against direct indexing at every edge, the reduce step against a
// serial count for every task count, and the temporary-buffer protocol.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
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

// A 256-bin count, reduced over 2 to 7 processors (bands of P or P - 1 and
// a remainder task), equals the serial count; each task saw only its own
// partial, and a failed allocation returns the family's own code with no
// band run and the result untouched.
TEST(Reduce, PartialsMergeToTheSerialResultAndFailWithTheFamilysCode) {
    const size_t width = 100, height = 97;
    GuardedImage image(width, height, 1, 3);
    image.fillRandom(3);
    using Histogram = std::array<uint64_t, 256>;
    struct Partials {
        const GuardedImage& image;
        size_t width;
        Histogram& total;
        std::vector<Histogram> parts;
        std::vector<size_t> rowsSeen;
        bool fail = false;
        bool allocate(size_t tasks) {
            if (fail) return false;
            parts.assign(tasks, Histogram{});
            rowsSeen.assign(tasks, 0);
            return true;
        }
        void band(size_t task, size_t first, size_t rows) {
            rowsSeen[task] = rows;
            for (size_t y = first; y < first + rows; ++y)
                for (size_t x = 0; x < width; ++x) ++parts[task][image.row(y)[x]];
        }
        void merge(size_t first, size_t items) {
            for (size_t i = first; i < first + items; ++i) {
                total[i] = 0;
                for (const Histogram& part : parts) total[i] += part[i];
            }
        }
    };
    Histogram serial{};
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x) ++serial[image.row(y)[x]];
    for (size_t processors = 2; processors <= 7; ++processors) {
        Histogram total;
        total.fill(77);  // overwritten, not added to
        Partials partials{image, width, total, {}, {}};
        EXPECT_EQ(ReduceRows(ReducePlan{processors, kQuorinError_InternalFault}, height, 256, partials), 0);
        EXPECT_EQ(total, serial) << processors << " processors";
        // 97 rows: P - 1 bands of 97 / (P - 1) and one of the rest, unless P divides 97.
        const size_t bands = 97 % processors == 0 ? processors : processors - 1;
        EXPECT_EQ(partials.rowsSeen.size(), bands + (97 % bands != 0 ? 1 : 0)) << processors;
        EXPECT_EQ(partials.rowsSeen.front(), 97 / bands) << processors;
    }
    Histogram untouched{};
    untouched[5] = 9;
    Partials failing{image, width, untouched, {}, {}, true};
    EXPECT_EQ(ReduceRows(ReducePlan{4, kQuorinError_InternalFault}, height, 256, failing), kQuorinError_InternalFault);
    EXPECT_TRUE(failing.rowsSeen.empty());
    EXPECT_EQ(untouched[5], 9u);
    // The allocation hook: the first allocation passes, the next two fail.
    FailPartialAllocationsForTest(2, 1);
    void* first = AllocatePartial(16);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(AllocatePartial(16), nullptr);
    EXPECT_EQ(AllocatePartial(16), nullptr);
    void* after = AllocatePartial(16);
    EXPECT_NE(after, nullptr);
    std::free(first);
    std::free(after);
}

TEST(TempBuffer, CallersBufferOrAZeroFilledAllocationFreedOnReturn) {
    EXPECT_EQ(AnswerSizeQuery(0), 0);
    EXPECT_EQ(AnswerSizeQuery(4096 * 4), 4096 * 4);
    EXPECT_LT(AnswerSizeQuery(size_t{1} << (8 * sizeof(size_t) - 1)), 0);  // above any code

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
