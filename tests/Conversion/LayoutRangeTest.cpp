// The 8-bit <-> float range rules on every kernel: every byte through
// 8-to-float, and float-to-8 on both sides of every rounding boundary, with
// NaN, infinities, denormals, ranges where min > max and a zero range.
#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <vector>

#include "LayoutMembers.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

// (max, min) pairs, four per call (one per channel position).
struct RangeSet {
    float max[4], min[4];
};
const std::vector<RangeSet> kRangeSets{
    {{1.0f, 255.0f, 1.0f, 0.0f}, {0.0f, 0.0f, -1.0f, 1.0f}},                       // plain, and min > max
    {{2.0f, 3.0f, 1e-3f, 0.7f}, {-2.0f, 3.0f, -1000.0f, 0.3f}},                    // a zero range
    {{FLT_MAX, 1e30f, -5.0f, 65535.0f}, {-FLT_MAX, -1e30f, -7.0f, 0.0f}},          // max - min overflows
    // Every range from 0: the vector kernels may divide by 255 in single
    // precision when that gives the same 256 values.
    {{1.0f, 255.0f, 2.0f, 0.5f}, {0.0f, 0.0f, 0.0f, 0.0f}},
    // Every range a power of two: the vector kernels may multiply by the
    // exact reciprocal instead of dividing.
    {{1.0f, 2.0f, 0.25f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}},
    // Every range 1, from different minimums: the vector kernels multiply by 1.
    {{1.0f, 0.5f, 101.0f, -2.0f}, {0.0f, -0.5f, 100.0f, -3.0f}},
    // Every range 1 from 0 of either sign: the vector kernels skip the
    // subtraction and the division.
    {{1.0f, 1.0f, 1.0f, 1.0f}, {0.0f, -0.0f, 0.0f, -0.0f}},
    // min cancels one byte's product almost exactly, so the last bit of the
    // double-precision quotient shows: a multiplication by 1/255 fails here.
    {{0.674516559f, 0.368631124f, 0.349023104f, 0.235296488f},
     {-0.325493455f, -0.631378889f, -0.65098691f, -0.764713526f}},
};

bool SameFloat(float a, float b) { return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, 4) == 0; }

// One row of `values[c]` per channel c through both directions of a range
// conversion (four planes into pixels, pixels into four planes) on every
// kernel; check(x, c, merged, split) judges each output sample.
template <class In, class Out, class Merge, class Split, class Check>
void BothWays(const std::vector<In> (&values)[4], Merge merge, Split split, Check check) {
    const size_t width = values[0].size();
    for (const Variant& variant : KernelVariants()) {
        SCOPED_TRACE(variant.name);
        VariantScope scope(variant);
        std::vector<GuardedImage> inPlanes, outPlanes;
        inPlanes.reserve(4);
        outPlanes.reserve(4);
        for (size_t c = 0; c < 4; ++c) {
            inPlanes.emplace_back(width, 1, sizeof(In));
            outPlanes.emplace_back(width, 1, sizeof(Out));
        }
        GuardedImage inPixels(width, 1, 4 * sizeof(In)), outPixels(width, 1, 4 * sizeof(Out));
        for (size_t x = 0; x < width; ++x)
            for (size_t c = 0; c < 4; ++c) {
                std::memcpy(inPlanes[c].pixel<In>(x, 0), &values[c][x], sizeof(In));
                std::memcpy(inPixels.pixel<In>(x, 0) + c, &values[c][x], sizeof(In));
            }
        const auto records = [](const std::vector<GuardedImage>& p) {
            return std::array{p[0].record(), p[1].record(), p[2].record(), p[3].record()};
        };
        ASSERT_EQ(merge(records(inPlanes), outPixels.record()), kQuorinSuccess);
        ASSERT_EQ(split(inPixels.record(), records(outPlanes)), kQuorinSuccess);
        for (size_t x = 0; x < width; ++x)
            for (size_t c = 0; c < 4; ++c) check(x, c, outPixels.pixel<Out>(x, 0)[c], *outPlanes[c].pixel<Out>(x, 0));
        EXPECT_EQ(outPixels.damagedGuard() + outPlanes[3].damagedGuard(), "");
    }
}

TEST(LayoutRanges, EveryByteToFloatOnEveryKernel) {
    std::vector<uint8_t> bytes[4];  // channel c of pixel x holds (x + 37c) mod 256: every byte in every channel
    for (size_t c = 0; c < 4; ++c)
        for (size_t x = 0; x < 256; ++x) bytes[c].push_back(static_cast<uint8_t>(x + 37 * c));
    for (const RangeSet& r : kRangeSets)
        BothWays<uint8_t, float>(
            bytes,
            [&](auto planes, auto dest) {
                return QuorinConvert_Planar8ToARGBFFFF(planes[0], planes[1], planes[2], planes[3], dest, r.max, r.min,
                                                       kQuorinFlag_SingleThreaded);
            },
            [&](auto src, auto planes) {
                return QuorinConvert_ARGB8888toPlanarF(src, planes[0], planes[1], planes[2], planes[3], r.max, r.min,
                                                       kQuorinFlag_SingleThreaded);
            },
            [&](size_t x, size_t c, float merged, float split) {
                const float expected = ExpectedByteToFloat(bytes[c][x], r.max[c], r.min[c]);
                ASSERT_TRUE(SameFloat(merged, expected) && SameFloat(split, expected))
                    << "byte " << int(bytes[c][x]) << " channel " << c << ": expected " << expected << ", merged "
                    << merged << ", split " << split;
            });
}

// Values on, just below and just above each point where the rounded result
// steps, plus the values every range must survive.
std::vector<float> Probes(float max, float min) {
    std::vector<float> values{NAN,  -NAN, INFINITY, -INFINITY, 0.0f,    -0.0f,    min,     max,
                              1e-45f, -1e-45f, FLT_MIN, FLT_MAX, -FLT_MAX, 0.5f,  1.5f,  2.5f};
    const float range = max - min;
    for (int k = 0; k <= 256; ++k) {
        const float step = min + (static_cast<float>(k) - 0.5f) * range / 255.0f;
        for (float v : {step, std::nextafter(step, INFINITY), std::nextafter(step, -INFINITY),
                        std::nextafter(std::nextafter(step, INFINITY), INFINITY)})
            values.push_back(v);
    }
    return values;
}

TEST(LayoutRanges, FloatToByteAroundEveryBoundaryOnEveryKernel) {
    for (const RangeSet& r : kRangeSets) {
        std::vector<float> probes[4];
        for (size_t c = 0; c < 4; ++c) probes[c] = Probes(r.max[c], r.min[c]);
        BothWays<float, uint8_t>(
            probes,
            [&](auto planes, auto dest) {
                return QuorinConvert_PlanarFToARGB8888(planes[0], planes[1], planes[2], planes[3], dest, r.max, r.min,
                                                       kQuorinFlag_SingleThreaded);
            },
            [&](auto src, auto planes) {
                return QuorinConvert_ARGBFFFFtoPlanar8(src, planes[0], planes[1], planes[2], planes[3], r.max, r.min,
                                                       kQuorinFlag_SingleThreaded);
            },
            [&](size_t x, size_t c, uint8_t merged, uint8_t split) {
                const int expected = ExpectedFloatToByte(probes[c][x], r.max[c], r.min[c]);
                ASSERT_TRUE(merged == expected && split == expected)
                    << probes[c][x] << " over [" << r.min[c] << ", " << r.max[c] << "]: expected " << expected
                    << ", merged " << int(merged) << ", split " << int(split);
            });
    }
}

// Fixed points of the rules, written out by hand.
TEST(LayoutRanges, KnownValues) {
    EXPECT_EQ(ExpectedByteToFloat(255, 1.0f, 0.0f), 1.0f);
    EXPECT_EQ(ExpectedByteToFloat(0, 1.0f, 0.0f), 0.0f);
    EXPECT_EQ(ExpectedFloatToByte(0.5f, 1.0f, 0.0f), 128);  // 127.5 + 0.5
    EXPECT_EQ(ExpectedFloatToByte(1.0f, 1.0f, 0.0f), 255);
    EXPECT_EQ(ExpectedFloatToByte(2.0f, 1.0f, 0.0f), 255);
    EXPECT_EQ(ExpectedFloatToByte(-0.1f, 1.0f, 0.0f), 0);
    EXPECT_EQ(ExpectedFloatToByte(2.5f, 255.0f, 0.0f), 3);  // half up, not to even
    EXPECT_EQ(ExpectedFloatToByte(NAN, 1.0f, 0.0f), 0);

    // And through one member, on every kernel.
    for (const Variant& variant : KernelVariants()) {
        VariantScope scope(variant);
        const float values[4] = {0.5f, 1.0f, 2.0f, -0.1f}, max[4] = {1, 1, 1, 1}, min[4] = {0, 0, 0, 0};
        uint8_t out[4] = {};
        const Quorin_Buffer src{const_cast<float*>(values), 1, 1, 16}, dest[4] = {
            {&out[0], 1, 1, 1}, {&out[1], 1, 1, 1}, {&out[2], 1, 1, 1}, {&out[3], 1, 1, 1}};
        ASSERT_EQ(QuorinConvert_ARGBFFFFtoPlanar8(&src, &dest[0], &dest[1], &dest[2], &dest[3], max, min, 0), 0);
        EXPECT_EQ(std::vector<uint8_t>(out, out + 4), (std::vector<uint8_t>{128, 255, 255, 0})) << variant.name;
    }
}

}  // namespace
}  // namespace quorin::test
