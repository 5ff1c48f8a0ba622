// Resampling tables against the sample-position and kernel rules computed
// here apart from the builders (64-bit positions wrapped to 32 bits, the
// kernels as written in their description), for many length pairs, and the
// worked examples.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "Geometry/ScaleReference.h"
#include "Geometry/ScaleTables.h"

namespace quorin::test {
namespace {

using scale::Arithmetic;
using scale::ResampleTable;

template <class W>
void ExpectTable(uint32_t S, uint32_t D, Arithmetic a) {
    const size_t taps = scale::TapsFor(S, D);
    std::vector<uint8_t> bytes(*scale::TableBytes(D, taps, a) + 3);
    uint8_t* at = bytes.data() + 3;  // an unaligned block, as a caller may give
    const ResampleTable table = scale::PlaceTable(at, D, taps, a);
    if (S > D) {
        scale::BuildBSplineTable<W>(S, D, table, double(S) / double(D));
    } else {
        scale::BuildLanczosTable<W>(S, D, table, double(S) / double(D));
    }
    for (uint32_t i = 0; i < D; ++i) {
        const std::vector<Tap> want = ExpectedTaps(S, D, i);
        for (size_t j = 0; j < taps; ++j) {
            const size_t e = i * taps + j;
            const auto index = scale::ReadUnaligned<int32_t>(reinterpret_cast<uint8_t*>(table.indices) + e * 4);
            const auto weight = scale::ReadUnaligned<W>(static_cast<uint8_t*>(table.weights) + e * sizeof(W));
            ASSERT_EQ(index, want[j].index) << S << " -> " << D << " output " << i << " tap " << j;
            if constexpr (std::is_same_v<W, int32_t>) {
                ASSERT_EQ(weight, static_cast<int32_t>(std::trunc(want[j].weight * 16384.0)))
                    << S << " -> " << D << " output " << i << " tap " << j;
            } else {
                ASSERT_EQ(weight, static_cast<W>(want[j].weight)) << S << " -> " << D << " output " << i;
            }
        }
    }
}

TEST(ScaleTables, EveryEntryFollowsThePositionAndKernelRulesForManyLengthPairs) {
    const uint32_t lengths[] = {1, 2, 3, 4, 5, 7, 8, 13, 16, 31, 64, 100, 257, 1000};
    for (const uint32_t S : lengths) {
        for (const uint32_t D : lengths) {
            if (S == D) continue;
            ExpectTable<int32_t>(S, D, Arithmetic::Fixed);
            ExpectTable<float>(S, D, Arithmetic::Float);
            ExpectTable<double>(S, D, Arithmetic::Double);
        }
    }
}

TEST(ScaleTables, PositionsWrapAtThirtyTwoBits) {
    // i * S passes 2^32 inside the axis: the running sum wraps and the
    // positions follow the wrapped sum.
    ExpectTable<int32_t>(70000, 69999, Arithmetic::Fixed);
}

TEST(ScaleTables, WorkedExamples) {
    // 8 -> 2: phase 0.25; output 0 reads samples 0, 0, 0, 1, 2.
    std::vector<uint8_t> bytes(*scale::TableBytes(2, 5, Arithmetic::Fixed));
    ResampleTable t = scale::PlaceTable(bytes.data(), 2, 5, Arithmetic::Fixed);
    scale::BuildBSplineTableFixed(8, 2, t, 4.0);
    EXPECT_EQ(std::vector<int32_t>(t.indices, t.indices + 5), (std::vector<int32_t>{0, 0, 0, 1, 2}));

    // 2 -> 4: output 1 has f = 0, so its centre tap weighs exactly 1.
    std::vector<uint8_t> grow(*scale::TableBytes(4, 7, Arithmetic::Double));
    t = scale::PlaceTable(grow.data(), 4, 7, Arithmetic::Double);
    EXPECT_EQ(scale::BuildLanczosTable<double>(2, 4, t, 0.5), 2u);
    const double* w = static_cast<const double*>(t.weights) + 7;
    EXPECT_EQ(w[3], 1.0);
    for (const int j : {0, 1, 2, 4, 5, 6}) EXPECT_LT(std::fabs(w[j]), 1e-15) << j;

    // Fixed point at f = 0: 2730, 10922, 2730 around the centre, 0 at +-2,
    // so a flat 255 sums to 255 x 16382 and still stores 255.
    EXPECT_EQ(scale::StoreWeight<int32_t>(scale::BSpline(-1.0)), 2730);
    EXPECT_EQ(scale::StoreWeight<int32_t>(scale::BSpline(0.0)), 10922);
    EXPECT_EQ(scale::StoreWeight<int32_t>(scale::BSpline(2.0)), 0);
    EXPECT_EQ((255 * (2730 + 10922 + 2730) + 16383) >> 14, 255);
}

TEST(ScaleTables, SizesMatchTheLayout) {
    // The head is two pointers: 16 bytes on 64-bit processors, 8 on 32-bit ones.
    constexpr size_t kHead = 2 * sizeof(void*);
    EXPECT_EQ(*scale::TableBytes(50, 5, Arithmetic::Fixed), kHead + 50 * 5 * 8);
    EXPECT_EQ(*scale::TableBytes(3, 7, Arithmetic::Float), kHead + 3 * 7 * 8);
    // Head and indices (16 + 84 = 100 on 64-bit), rounded up to 8, then the doubles.
    constexpr size_t kDoubles = (kHead + 3 * 7 * 4 + 7) / 8 * 8;
    EXPECT_EQ(*scale::TableBytes(3, 7, Arithmetic::Double), kDoubles + 3 * 7 * 8);
    EXPECT_FALSE(scale::TableBytes(SIZE_MAX / 4, 7, Arithmetic::Fixed).has_value());
    std::vector<uint8_t> bytes(*scale::TableBytes(3, 7, Arithmetic::Double));
    const ResampleTable t = scale::PlaceTable(bytes.data(), 3, 7, Arithmetic::Double);
    EXPECT_EQ(reinterpret_cast<uint8_t*>(t.indices), bytes.data() + kHead);
    EXPECT_EQ(static_cast<uint8_t*>(t.weights), bytes.data() + kDoubles);
    EXPECT_EQ(scale::ReadUnaligned<ResampleTable>(bytes.data()).weights, t.weights);
}

}  // namespace
}  // namespace quorin::test
