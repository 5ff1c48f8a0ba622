// Every blend and clip member, driven from one table: identical bytes from
// every kernel and split, nothing written outside the region, in-place use,
// the order of the argument checks and the flags they ignore.
#include "BlendTestSupport.h"
#include "support/CheckOrder.h"
#include "support/Codes.h"

namespace quorin::test {
namespace {

class EveryMember : public ::testing::TestWithParam<Member> {};

// Odd widths and padded rows (walked row by row), contiguous images (one run),
// one pixel, and the sizes just below and above 64000 pixels.
const Shape kShapes[] = {{1, 1, 0},  {1, 3, 5},     {37, 5, 12},    {61, 7, 0},
                         {64, 3, 0}, {252, 253, 0}, {253, 253, 0},  {253, 253, 20}};

TEST_P(EveryMember, GivesTheSameBytesForEveryKernelAndSplit) {
    uint64_t seed = 1;
    for (const Shape& shape : kShapes) {
        SCOPED_TRACE(std::to_string(shape.width) + "x" + std::to_string(shape.height) + "+" +
                     std::to_string(shape.padding));
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) { return RunMember(GetParam(), shape, flags, seed); });
        ++seed;
    }
}

// Large destinations are written with streaming stores after a scalar head
// that reaches vector alignment; forced here on small ones, from buffers
// that start off alignment by different amounts.
TEST_P(EveryMember, StreamedDestinationsGiveTheSameBytes) {
    const StreamingForced forced;
    for (const Shape& shape : {Shape{1, 1, 0, 4}, Shape{61, 7, 0, 4}, Shape{37, 5, 12, 4}, Shape{253, 253, 0, 4}})
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) { return RunMember(GetParam(), shape, flags, 9); });
}

// dest on a source buffer of its pixel size gives the bytes of separate buffers.
TEST_P(EveryMember, InPlaceMatchesSeparateBuffers) {
    const Member& m = GetParam();
    for (const Shape& shape : {Shape{61, 7, 0}, Shape{37, 5, 12}, Shape{253, 253, 0}}) {
        ForEachKernel([&] {
            const std::vector<uint8_t> separate = RunMember(m, shape, 0, 7);
            for (size_t source = 0; source < m.pixelBytes.size(); ++source)
                if (!Contains(m.destinations, source) && m.pixelBytes[source] == m.pixelBytes[m.destinations[0]]) {
                    EXPECT_TRUE(RunMember(m, shape, 0, 7, int(source)) == separate) << "dest on buffer " << source;
                }
        });
    }
}

TEST_P(EveryMember, IgnoresEveryFlagButSingleThreaded) {
    const std::vector<uint8_t> plain = RunMember(GetParam(), {253, 253, 0}, 0, 3);
    EXPECT_TRUE(RunMember(GetParam(), {253, 253, 0}, ~Quorin_Flags{kQuorinFlag_SingleThreaded}, 3) == plain);
    EXPECT_TRUE(RunMember(GetParam(), {253, 253, 0}, ~Quorin_Flags{0}, 3) == plain);
}

// Null buffers (record or pixels) among the checked ones first, then any
// width or height differing among them; unchecked buffers are not looked at
// (a larger one is fine). Nothing is written on failure; empty images succeed.
TEST_P(EveryMember, ChecksItsArgumentsInOrder) {
    const Member& m = GetParam();
    std::vector<GuardedImage> images;
    std::vector<Quorin_Buffer> valid;
    for (size_t i = 0; i < m.pixelBytes.size(); ++i) {
        const bool checked = Contains(m.checked, i);
        images.emplace_back(checked ? 9 : 12, checked ? 4 : 6, m.pixelBytes[i]).fillRandom(i);
        valid.push_back(*images.back().record());
    }
    const Quorin_Buffer narrow{valid[0].data, 4, 8, valid[0].rowBytes}, shorter{valid[0].data, 3, 9, valid[0].rowBytes},
        noPixels{nullptr, 4, 9, valid[0].rowBytes};
    const size_t first = m.checked.front(), last = m.checked.back();
    struct Case {
        std::vector<std::pair<size_t, const Quorin_Buffer*>> replace;
        Quorin_Error expected;
    };
    std::vector<Case> cases{{{{first, &narrow}, {last, nullptr}}, kQuorinError_NullPointer},
                            {{{first, nullptr}, {last, &shorter}}, kQuorinError_NullPointer}};
    for (size_t i : m.checked) {
        cases.push_back({{{i, nullptr}}, kQuorinError_NullPointer});
        cases.push_back({{{i, &noPixels}}, kQuorinError_NullPointer});
        cases.push_back({{{i, &narrow}}, kQuorinError_BadArgument});
        cases.push_back({{{i, &shorter}}, kQuorinError_BadArgument});
    }
    for (size_t i = 0; i < m.pixelBytes.size(); ++i)
        if (!Contains(m.checked, i)) cases.push_back({{{i, &noPixels}, {last, &narrow}}, kQuorinError_BadArgument});

    std::vector<std::vector<uint8_t>> before;
    for (auto& image : images) before.push_back(image.pixels());
    for (size_t c = 0; c < cases.size(); ++c) {
        Records records;
        for (auto& record : valid) records.push_back(&record);
        for (auto [index, record] : cases[c].replace) records[index] = record;
        EXPECT_TRUE(quorin::test::ReturnsCode(m.call(records, 0), cases[c].expected)) << "case " << c;
        for (size_t i = 0; i < images.size(); ++i) EXPECT_TRUE(images[i].pixels() == before[i]) << "case " << c;
    }
    Records records;
    for (auto& record : valid) records.push_back(&record);
    EXPECT_EQ(m.call(records, 0), kQuorinSuccess);
    for (auto& record : valid) record.width = 0;
    EXPECT_EQ(m.call(records, 0), kQuorinSuccess);
    for (auto& record : valid) record.width = 9, record.height = 0;
    EXPECT_EQ(m.call(records, 0), kQuorinSuccess);
    for (auto& image : images) EXPECT_EQ(image.damagedGuard(), "");
}

// The check list of the member's table row, step by step, against the entry point.
TEST_P(EveryMember, FollowsItsCheckList) {
    const Member& m = GetParam();
    std::vector<GuardedImage> images;
    for (size_t i = 0; i < m.pixelBytes.size(); ++i) images.emplace_back(7, 3, m.pixelBytes[i]).fillRandom(i + 1);
    std::vector<GuardedImage*> pointers;
    for (auto& image : images) pointers.push_back(&image);
    ExpectCheckOrder(m.checks, pointers, m.destinations,
                     [&m](const std::vector<const Quorin_Buffer*>& records, Quorin_Flags flags) {
                         return m.call(records, flags);
                     });
}

INSTANTIATE_TEST_SUITE_P(BlendAndClip, EveryMember, ::testing::ValuesIn(AllMembers()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace quorin::test
