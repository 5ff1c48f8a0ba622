// Histograms: both members under every kernel and split against direct
// counting (flat and random images, padded and packed rows, heights and bin
// counts that do not divide by the processor count, bands shared out in
// pieces), the float binning at its edges, skip-alpha on both paths, the
// allocation failure injected at each allocation, no allocation below the
// split, and the check order.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "Core/Dispatch.h"
#include "Core/Reduce.h"
#include "Histogram/HistogramMembers.h"
#include "quorin/Histogram.h"
#include "support/CheckOrder.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

constexpr size_t kWidth = 263, kHeight = 251;  // splits; odd, so no band is even
constexpr uint32_t kStale = 0xDEADBEEF;

// Four counter arrays filled with a stale value, handed over as the call's pointers.
struct Counters {
    explicit Counters(size_t entries) : arrays(4, std::vector<uint32_t>(entries, kStale)) {
        for (size_t c = 0; c < 4; ++c) pointers[c] = arrays[c].data();
    }
    std::vector<std::vector<uint32_t>> arrays;
    std::array<uint32_t*, 4> pointers{};

    std::vector<uint8_t> bytes() const {
        std::vector<uint8_t> out;
        for (const auto& a : arrays) {
            const auto* p = reinterpret_cast<const uint8_t*>(a.data());
            out.insert(out.end(), p, p + a.size() * 4);
        }
        return out;
    }
};

// The float bin, from the definition in double precision after the rule's
// two single-precision steps.
uint32_t ExpectedBin(float v, uint32_t entries, float minVal, float maxVal) {
    const float scale = static_cast<float>(entries) / (maxVal - minVal);
    const float diff = v - minVal;
    const volatile float x = scale * diff;
    const double t = std::trunc(static_cast<double>(x));
    if (std::isnan(t) || t < 0) return 0;
    return t >= entries - 1.0 ? entries - 1 : static_cast<uint32_t>(t);
}

TEST(Histogram, EightBitCountsEveryPixelOnceUnderEveryKernelAndSplit) {
    const histogram::Member& m = histogram::kHistogramARGB8888;
    // Random; one colour; one colour broken by single bytes at scattered
    // places, so runs of one colour end at every position of a group.
    for (const int kind : {0, 1, 2})
        for (const size_t padding : {size_t{0}, size_t{12}})
            for (const Quorin_Flags skip : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_SkipAlpha}}) {
                SCOPED_TRACE(testing::Message() << "kind " << kind << " padding " << padding << " skip " << skip);
                GuardedImage src(kWidth, kHeight, 4, padding, 1);
                if (kind == 0) {
                    src.fillRandom(padding + skip);
                } else {
                    for (size_t y = 0; y < kHeight; ++y)
                        for (size_t x = 0; x < kWidth; ++x) {
                            uint8_t* px = src.row(y) + 4 * x;
                            std::memcpy(px, "\x07\xFF\x00\x80", 4);
                            if (kind == 2 && (7 * x + 3 * y) % 29 == 0) px[(x + y) % 4] ^= 1u << (y % 8);
                        }
                }
                std::array<std::vector<uint32_t>, 4> expected;
                for (auto& e : expected) e.assign(256, 0);
                for (size_t y = 0; y < kHeight; ++y)
                    for (size_t x = 0; x < kWidth; ++x)
                        for (size_t c = 0; c < 4; ++c) ++expected[c][src.row(y)[4 * x + c]];
                if (skip) expected[0].assign(256, kStale);
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    Counters counters(256);
                    EXPECT_EQ(m.run({src.record(), counters.pointers.data(), 256, 0, 255, flags | skip}), 0);
                    for (size_t c = 0; c < 4; ++c) EXPECT_EQ(counters.arrays[c], expected[c]) << "channel " << c;
                    return counters.bytes();
                });
            }
}

TEST(Histogram, FloatBinsEveryValueAsTheDefinitionUnderEveryKernelAndSplit) {
    const histogram::Member& m = histogram::kHistogramARGBFFFF;
    struct Range {
        uint32_t entries;
        float minVal, maxVal;
    };
    const float inf = std::numeric_limits<float>::infinity();
    // Bin counts that the processor counts do not divide, an empty range,
    // and a range so wide that bins saturate.
    const Range ranges[] = {{256, 0.0f, 1.0f}, {4097, -2.0f, 3.0f}, {1, 0.0f, 1.0f}, {7, 0.5f, 0.5f},
                            {5, -inf, inf}, {33, 1.0f, 1.0000001f}};
    for (const Range& r : ranges) {
        SCOPED_TRACE(testing::Message() << r.entries << " bins over " << r.minVal << ".." << r.maxVal);
        const size_t entries = r.entries;
        GuardedImage src(kWidth, kHeight, 16, r.entries % 2 * 16, 4);
        src.fillRandomFloats(r.entries, -2.5f, 3.5f);
        const float kinds[] = {std::nanf("0x3"), -inf, inf, r.minVal, r.maxVal, -0.0f, std::nextafter(r.maxVal, 0.0f)};
        for (size_t y = 0; y < kHeight; y += 2)
            for (size_t k = 0; k < 7; ++k) std::memcpy(src.row(y) + 4 * ((11 * y + 3 * k) % (4 * kWidth)), &kinds[k], 4);
        std::array<std::vector<uint32_t>, 4> expected;
        for (auto& e : expected) e.assign(entries, 0);
        for (size_t y = 0; y < kHeight; ++y)
            for (size_t x = 0; x < kWidth; ++x)
                for (size_t c = 0; c < 4; ++c)
                    ++expected[c][ExpectedBin(src.pixel<float>(x, y)[c], r.entries, r.minVal, r.maxVal)];
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
            Counters counters(entries);
            EXPECT_EQ(m.run({src.record(), counters.pointers.data(), r.entries, r.minVal, r.maxVal, flags}), 0);
            for (size_t c = 0; c < 4; ++c) EXPECT_EQ(counters.arrays[c], expected[c]) << "channel " << c;
            return counters.bytes();
        }, r.entries == 4097 ? KernelAndSplitVariants() : KernelVariants());
    }
}

// Rows of every width from 1 to 40 (the vector kernel counts each vector
// of bins some vectors after binning it, so short rows end with several
// still to count), with and without alpha, against direct counting.
TEST(Histogram, FloatCountsRowsOfEveryWidthWithAndWithoutAlphaUnderEveryKernel) {
    const histogram::Member& m = histogram::kHistogramARGBFFFF;
    for (size_t width = 1; width <= 40; ++width)
        for (const Quorin_Flags skip : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_SkipAlpha}}) {
            GuardedImage src(width, 3, 16, 16, 4);
            src.fillRandomFloats(width, -0.5f, 1.5f);
            std::array<std::vector<uint32_t>, 4> expected;
            for (auto& e : expected) e.assign(37, 0);
            for (size_t y = 0; y < 3; ++y)
                for (size_t x = 0; x < width; ++x)
                    for (size_t c = 0; c < 4; ++c) ++expected[c][ExpectedBin(src.pixel<float>(x, y)[c], 37, 0.0f, 1.0f)];
            if (skip) expected[0].assign(37, kStale);
            for (const Variant& v : KernelVariants()) {
                VariantScope scope(v);
                Counters counters(37);
                ASSERT_EQ(m.run({src.record(), counters.pointers.data(), 37, 0.0f, 1.0f, skip}), 0);
                for (size_t c = 0; c < 4; ++c)
                    ASSERT_EQ(counters.arrays[c], expected[c]) << v.name << " width " << width << " channel " << c;
            }
        }
}

// The edges named by the definition, one value at a time on a 1 x 1 image.
TEST(Histogram, FloatEdgesLandInTheFirstAndLastBins) {
    const float inf = std::numeric_limits<float>::infinity();
    struct Case {
        float v, minVal, maxVal;
        uint32_t entries, bin;
    };
    const Case cases[] = {{1.0f, 0.0f, 1.0f, 256, 255}, {-0.1f, 0.0f, 1.0f, 256, 0}, {std::nanf(""), 0.0f, 1.0f, 8, 0},
                          {0.5f, 0.5f, 0.5f, 8, 0},     {0.6f, 0.5f, 0.5f, 8, 7},   {inf, 0.0f, 1.0f, 8, 7},
                          {-inf, 0.0f, 1.0f, 8, 0},     {0.999f, 0.0f, 1.0f, 1000, 999}, {1e30f, 0.0f, 1.0f, 9, 8}};
    for (const Variant& variant : KernelVariants()) {
        VariantScope scope(variant);
        for (const Case& c : cases) {
            GuardedImage src(1, 1, 16);
            for (int k = 0; k < 4; ++k) std::memcpy(src.pixel<float>(0, 0) + k, &c.v, 4);
            std::vector<uint32_t> counters(3 * c.entries, kStale), skipped(1, kStale);
            uint32_t* const pointers[4] = {skipped.data(), counters.data(), counters.data() + c.entries,
                                           counters.data() + 2 * c.entries};
            ASSERT_EQ(QuorinHistogramCalculation_ARGBFFFF(src.record(), pointers, c.entries, c.minVal, c.maxVal,
                                                          kQuorinFlag_SkipAlpha),
                      0);
            std::vector<uint32_t> want(3 * c.entries, 0);
            for (int k = 0; k < 3; ++k) want[k * c.entries + c.bin] = 1;
            EXPECT_EQ(counters, want) << variant.name << " value " << c.v;
            EXPECT_EQ(skipped[0], kStale);
        }
    }
}

TEST(Histogram, AllocationFailureAtEachAllocationReturnsInternalFaultWithCountersUntouched) {
    GuardedImage src(kWidth, kHeight, 4);
    src.fillRandom(9);
    SetProcessorCountForTest(3);
    for (const Quorin_Flags skip : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_SkipAlpha}})
        for (int after = 0; after < (skip ? 4 : 5); ++after) {  // the pointer array, then one block per channel
            Counters counters(256);
            FailPartialAllocationsForTest(1, after);
            EXPECT_EQ(QuorinHistogramCalculation_ARGB8888(src.record(), counters.pointers.data(), skip),
                      kQuorinError_InternalFault)
                << after;
            for (const auto& a : counters.arrays) EXPECT_EQ(a, std::vector<uint32_t>(256, kStale));
        }
    FailPartialAllocationsForTest(0);
    // Below 64000 pixels, or single-threaded, nothing is allocated: a failure
    // waiting for the next allocation is never met.
    GuardedImage small(253, 252, 16);  // 63756 pixels
    small.fillRandomFloats(1, 0.0f, 1.0f);
    Counters counters(10);
    FailPartialAllocationsForTest(1);
    EXPECT_EQ(QuorinHistogramCalculation_ARGBFFFF(small.record(), counters.pointers.data(), 10, 0, 1, 0), 0);
    Counters bytes(256);
    EXPECT_EQ(QuorinHistogramCalculation_ARGB8888(src.record(), bytes.pointers.data(), kQuorinFlag_SingleThreaded), 0);
    FailPartialAllocationsForTest(0);
    SetProcessorCountForTest(0);
}

// Images large enough that each task's band is cut into pieces that the
// tasks share out, under processor counts that give one task (an odd height
// on two processors), a remainder task of one row, and whole pieces; with
// bin counts whose merge runs on the caller and, at 20000 bins, in
// parallel. Every pixel must be counted once, into counters that sum
// exactly to direct counting, with alpha skipped or not.
TEST(Histogram, SharedPiecesOfLargeImagesCountEveryPixelOnce) {
    constexpr size_t kWide = 1000;
    for (const size_t height : {size_t{210}, size_t{211}}) {
        GuardedImage bytes(kWide, height, 4, 4, 1);
        bytes.fillRandom(height);
        GuardedImage floats(kWide, height, 16, 0, 4);
        floats.fillRandomFloats(height, -0.25f, 1.25f);
        for (const uint32_t entries : {256u, 20000u}) {
            std::array<std::vector<uint32_t>, 4> expected8, expectedF;
            for (size_t c = 0; c < 4; ++c) expected8[c].assign(256, 0), expectedF[c].assign(entries, 0);
            for (size_t y = 0; y < height; ++y)
                for (size_t x = 0; x < kWide; ++x)
                    for (size_t c = 0; c < 4; ++c) {
                        ++expected8[c][bytes.row(y)[4 * x + c]];
                        ++expectedF[c][ExpectedBin(floats.pixel<float>(x, y)[c], entries, 0.0f, 1.0f)];
                    }
            for (const unsigned processors : {2u, 3u, 4u, 5u})
                for (const Quorin_Flags skip : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_SkipAlpha}}) {
                    SCOPED_TRACE(testing::Message() << height << " rows, " << entries << " bins, " << processors
                                                    << " processors, skip " << skip);
                    SetProcessorCountForTest(processors);
                    Counters counted8(256), countedF(entries);
                    EXPECT_EQ(QuorinHistogramCalculation_ARGB8888(bytes.record(), counted8.pointers.data(), skip), 0);
                    EXPECT_EQ(QuorinHistogramCalculation_ARGBFFFF(floats.record(), countedF.pointers.data(), entries,
                                                                  0.0f, 1.0f, skip),
                              0);
                    SetProcessorCountForTest(0);
                    for (size_t c = skip ? 1 : 0; c < 4; ++c) {
                        EXPECT_EQ(counted8.arrays[c], expected8[c]) << "channel " << c;
                        EXPECT_EQ(countedF.arrays[c], expectedF[c]) << "channel " << c;
                    }
                    if (skip) {
                        EXPECT_EQ(counted8.arrays[0], std::vector<uint32_t>(256, kStale));
                        EXPECT_EQ(countedF.arrays[0], std::vector<uint32_t>(entries, kStale));
                    }
                }
        }
    }
}

TEST(Histogram, ChecksInOrderBeforeAnyCounterIsWritten) {
    for (const histogram::Member* m : histogram::kHistogramMembers) {
        SCOPED_TRACE(m->name);
        GuardedImage src(9, 4, m->format.pixelBytes(), 4);
        src.fillRandom(2);
        ExpectCheckOrder(m->checks, {&src}, {}, [&](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags f) {
            Counters counters(256);
            const Quorin_Error code = m->run({r[0], counters.pointers.data(), 256, 0.0f, 1.0f, f});
            if (code != 0) {
                for (const auto& a : counters.arrays) EXPECT_EQ(a, std::vector<uint32_t>(256, kStale));
            }
            return code;
        });
    }
    // The float member's own tests come between the null test and the record's.
    GuardedImage src(9, 4, 16);
    Counters counters(8);
    uint32_t* const* h = counters.pointers.data();
    EXPECT_EQ(QuorinHistogramCalculation_ARGBFFFF(nullptr, h, 0, 1.0f, 0.0f, 0), kQuorinError_NullPointer);
    EXPECT_EQ(QuorinHistogramCalculation_ARGBFFFF(src.record(), h, 0, 0.0f, 1.0f, 0), kQuorinError_BadArgument);
    EXPECT_EQ(QuorinHistogramCalculation_ARGBFFFF(src.record(), h, 8, 1.0f, 0.0f, 0), kQuorinError_BadArgument);
    for (const auto& a : counters.arrays) EXPECT_EQ(a, std::vector<uint32_t>(8, kStale));
    // No flag is refused; minVal equal to maxVal is accepted.
    EXPECT_EQ(QuorinHistogramCalculation_ARGBFFFF(src.record(), h, 8, 1.0f, 1.0f, ~0u), 0);
}

}  // namespace
}  // namespace quorin::test
