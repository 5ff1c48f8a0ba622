// Scale members on guarded images: every member, arithmetic and shape of
// change against the reference computed apart (ScaleReference.h), under every
// kernel and split; the size query against the scratch a call actually
// uses; the check order; and the rules for signed and float samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>
#include <vector>

#include "Core/GridSplit.h"
#include "Geometry/GeometryMembers.h"
#include "Geometry/ScaleKernels.h"
#include "Geometry/ScaleReference.h"
#include "support/CheckOrder.h"
#include "support/Codes.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using geometry::ScaleMember;

struct Shape {
    size_t sw, sh, dw, dh;
};

// Odd sizes, one-pixel axes, one axis changing, both changing, a case
// whose passes both reach the split (at least 64000 output pixels each), and
// rows wider than the kernels' column chunks with a ratio near 1 each way.
constexpr Shape kShapes[] = {
    {17, 9, 5, 9}, {7, 13, 7, 29}, {33, 21, 70, 10}, {1, 1, 3, 2},   {5, 1, 1, 4},    {9, 6, 40, 3},
    {2, 2, 4, 4},  {8, 3, 2, 3},   {331, 273, 257, 251}, {2101, 3, 1031, 2}, {700, 2, 1501, 3}, {97, 4, 96, 5},
};

template <class T>
RefImage<T> ReadImage(const GuardedImage& image, size_t channels) {
    RefImage<T> out{image.width(), image.height(), channels, {}};
    out.samples.resize(image.width() * image.height() * channels);
    const std::vector<uint8_t> bytes = image.pixels();
    std::memcpy(out.samples.data(), bytes.data(), bytes.size());
    return out;
}

// Random samples; floats in [-2, 3] with a NaN sprinkled in.
void Fill(GuardedImage& image, const PixelFormat& f, uint64_t seed) {
    if (f.sample != SampleKind::F32) return image.fillRandom(seed);
    image.fillRandomFloats(seed, -2.0f, 3.0f);
    const float nan = std::nanf("0x321");
    std::memcpy(image.row(image.height() / 2) + (image.width() / 2) * f.pixelBytes(), &nan, 4);
}

RefArithmetic ReferenceArithmetic(const PixelFormat& f, bool highQuality) {
    if (f.sample == SampleKind::F32) return highQuality ? RefArithmetic::Double : RefArithmetic::Single;
    return highQuality ? RefArithmetic::Float : RefArithmetic::Fixed;
}

template <class T>
std::vector<uint8_t> Reference(const GuardedImage& src, const ScaleMember& m, const Shape& s, bool hq) {
    const RefImage<T> out =
        RefScale(ReadImage<T>(src, m.format.channels), s.dw, s.dh, ReferenceArithmetic(m.format, hq));
    std::vector<uint8_t> bytes(out.samples.size() * sizeof(T));
    std::memcpy(bytes.data(), out.samples.data(), bytes.size());
    return bytes;
}

std::vector<uint8_t> ReferenceOf(const GuardedImage& src, const ScaleMember& m, const Shape& s, bool hq) {
    switch (m.format.sample) {
        case SampleKind::U8: return Reference<uint8_t>(src, m, s, hq);
        case SampleKind::U16: return Reference<uint16_t>(src, m, s, hq);
        case SampleKind::S16Q12: return Reference<int16_t>(src, m, s, hq);
        case SampleKind::F32: return Reference<float>(src, m, s, hq);
    }
    return {};
}

TEST(Scale, EveryMemberMatchesTheReferenceUnderEveryKernelAndSplit) {
    for (const ScaleMember* m : geometry::kScaleMembers) {
        const size_t bytes = m->format.pixelBytes(), sample = m->format.sampleBytes();
        for (const Shape& s : kShapes) {
            for (const Quorin_Flags quality : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_HighQualityResampling}}) {
                SCOPED_TRACE(testing::Message() << m->name << " " << s.sw << "x" << s.sh << " -> " << s.dw << "x"
                                                << s.dh << " flags " << quality);
                GuardedImage src(s.sw, s.sh, bytes, 3 * sample, sample);
                Fill(src, m->format, s.sw * 31 + s.dh);
                const std::vector<uint8_t> want = ReferenceOf(src, *m, s, quality != 0);
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    GuardedImage dest(s.dw, s.dh, bytes, 2 * sample);
                    dest.fillBytes(0xA5);
                    EXPECT_EQ(m->entry(src.record(), dest.record(), nullptr, flags | quality), kQuorinSuccess);
                    EXPECT_EQ(dest.damagedGuard(), "");
                    EXPECT_EQ(dest.pixels(), want);
                    return dest.pixels();
                });
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

// Exact halvings (their fixed-weight kernel, edges included), images whose
// intermediate rows wrap the passes' window of rows several times, serial
// and split into bands, and the vertical pass's streaming stores on
// destinations at every alignment.
TEST(Scale, HalvingsWindowedRowsAndStreamedRowsMatchTheReference) {
    constexpr Shape kWindowed[] = {
        {262, 9, 131, 9}, {130, 70, 65, 35}, {66, 4, 33, 9},  // halvings: width alone, both, height growing
        {4100, 40, 2050, 20},                                  // 40 rows wider than the window holds: serial
        {4100, 66, 2050, 33},                                  // the same, split into bands of a few rows
        {1030, 33, 2060, 40},                                  // growing both ways, split
    };
    for (const ScaleMember* m : {&geometry::kScaleARGB8888, &geometry::kScalePlanar8, &geometry::kScaleARGBFFFF}) {
        const size_t bytes = m->format.pixelBytes(), sample = m->format.sampleBytes();
        for (const Shape& s : kWindowed) {
            GuardedImage src(s.sw, s.sh, bytes, 5 * sample, sample);
            Fill(src, m->format, s.sw + 7 * s.sh);
            for (const Quorin_Flags quality : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_HighQualityResampling}}) {
                const std::vector<uint8_t> want = ReferenceOf(src, *m, s, quality != 0);
                for (const size_t offset : {size_t{0}, 3 * sample}) {
                    SCOPED_TRACE(testing::Message() << m->name << " " << s.sw << "x" << s.sh << " -> " << s.dw
                                                    << "x" << s.dh << " flags " << quality << " offset " << offset);
                    std::optional<StreamingForced> streamed;
                    if (offset != 0) streamed.emplace();
                    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                        GuardedImage dest(s.dw, s.dh, bytes, 3 * sample, offset);
                        dest.fillBytes(0x5A);
                        EXPECT_EQ(m->entry(src.record(), dest.record(), nullptr, flags | quality), kQuorinSuccess);
                        EXPECT_EQ(dest.damagedGuard(), "");
                        EXPECT_EQ(dest.pixels(), want);
                        return dest.pixels();
                    });
                    if (testing::Test::HasFailure()) return;
                }
            }
        }
    }
}

// What the query must answer, from the layout's description.
size_t ExpectedScratch(const Shape& s, size_t destRowBytes, bool doubles) {
    auto table = [&](size_t count, size_t S) {
        const size_t taps = S > count ? 5 : 7;
        const size_t head = 2 * sizeof(void*);  // two pointers
        if (!doubles) return head + count * taps * 8;
        return ((head + count * taps * 4 + 7) / 8 * 8) + count * taps * 8;
    };
    size_t bytes = 0;
    if (s.sw != s.dw) bytes += table(s.dw, s.sw);
    if (s.sh != s.dh) bytes += table(s.dh, s.sh);
    if (s.sw != s.dw && s.sh != s.dh) bytes += destRowBytes * s.sh;
    return bytes;
}

TEST(Scale, TheQueriedScratchIsExactlyWhatACallerBufferMustHold) {
    for (const ScaleMember* m : geometry::kScaleMembers) {
        const size_t bytes = m->format.pixelBytes();
        for (const Shape& s : kShapes) {
            for (const Quorin_Flags quality : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_HighQualityResampling}}) {
                SCOPED_TRACE(testing::Message() << m->name << " " << s.sw << "x" << s.sh << " -> " << s.dw << "x"
                                                << s.dh << " flags " << quality);
                GuardedImage src(s.sw, s.sh, bytes);
                Fill(src, m->format, 5);
                GuardedImage dest(s.dw, s.dh, bytes, bytes);
                Quorin_Buffer nullDest = *dest.record();
                nullDest.data = nullptr;  // the query comes before the destination's data test
                const Quorin_Error size =
                    m->entry(src.record(), &nullDest, nullptr, quality | kQuorinFlag_QueryTempSize);
                const bool doubles = quality != 0 && m->format.sample == SampleKind::F32;
                ASSERT_EQ(size, static_cast<Quorin_Error>(ExpectedScratch(s, dest.rowBytes(), doubles)));
                if (size == 0) continue;
                // A caller's buffer of exactly that size, guarded after its last byte.
                GuardedImage scratch(static_cast<size_t>(size), 1, 1);
                scratch.fillBytes(0x77);
                EXPECT_EQ(m->entry(src.record(), dest.record(), scratch.row(0), quality), kQuorinSuccess);
                EXPECT_EQ(scratch.damagedGuard(), "");
                GuardedImage own(s.dw, s.dh, bytes, bytes);
                EXPECT_EQ(m->entry(src.record(), own.record(), nullptr, quality), kQuorinSuccess);
                EXPECT_EQ(dest.pixels(), own.pixels());
            }
        }
    }
}

TEST(Scale, EqualSizesCopyAndTheQueryAnswersZero) {
    for (const ScaleMember* m : geometry::kScaleMembers) {
        SCOPED_TRACE(m->name);
        const size_t bytes = m->format.pixelBytes();
        GuardedImage src(13, 7, bytes, 0), same(13, 7, bytes, 0), padded(13, 7, bytes, 4 * bytes);
        src.fillRandom(3);
        EXPECT_EQ(m->entry(src.record(), same.record(), nullptr, kQuorinFlag_QueryTempSize), 0);
        EXPECT_EQ(m->entry(src.record(), same.record(), nullptr, 0), kQuorinSuccess);
        EXPECT_EQ(m->entry(src.record(), padded.record(), nullptr, 0), kQuorinSuccess);
        EXPECT_EQ(same.pixels(), src.pixels());
        EXPECT_EQ(padded.pixels(), src.pixels());
        EXPECT_EQ(padded.damagedGuard(), "");
    }
}

TEST(Scale, ChecksComeInTheirOrderBeforeAnyWrite) {
    for (const ScaleMember* m : geometry::kScaleMembers) {
        SCOPED_TRACE(m->name);
        const size_t bytes = m->format.pixelBytes();
        GuardedImage src(9, 7, bytes, 2 * bytes), dest(5, 11, bytes, bytes);
        ExpectCheckOrder(m->checks, {&src, &dest}, {1}, [&](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags f) {
            return m->entry(r[0], r[1], nullptr, f);
        });
        // The query answers after the zero-size test and before the rest.
        Quorin_Buffer empty = *dest.record();
        empty.width = 0;
        EXPECT_TRUE(ReturnsCode(m->entry(src.record(), &empty, nullptr, kQuorinFlag_QueryTempSize),
                                kQuorinError_BadArgument));
        Quorin_Buffer shortRows = *src.record();
        shortRows.rowBytes = bytes * 9 - 1;
        empty.width = 5, empty.rowBytes = 0;
        EXPECT_TRUE(ReturnsCode(m->entry(&shortRows, dest.record(), nullptr, kQuorinFlag_QueryTempSize),
                                kQuorinError_InvalidRowBytes));
        // No flag is refused and the single-threaded bit changes nothing.
        EXPECT_EQ(m->entry(src.record(), dest.record(), nullptr, ~Quorin_Flags{kQuorinFlag_QueryTempSize}),
                  kQuorinSuccess);
    }
}

TEST(Scale, SignedResultsBelowZeroAreStoredAsZeroAndFloatsAreNotClamped) {
    for (const Quorin_Flags quality : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_HighQualityResampling}}) {
        GuardedImage src(6, 5, 8), dest(11, 3, 8);
        for (size_t y = 0; y < 5; ++y)
            for (size_t x = 0; x < 6 * 4; ++x) {
                // Negative everywhere, varying less than the kernels' overshoot could lift.
                const int16_t v = static_cast<int16_t>(-12000 - static_cast<int>((x * 977 + y * 131) % 8000));
                std::memcpy(src.row(y) + x * 2, &v, 2);
            }
        ASSERT_EQ(QuorinScale_ARGB16S(src.record(), dest.record(), nullptr, quality), kQuorinSuccess);
        for (const uint8_t b : dest.pixels()) ASSERT_EQ(b, 0);

        GuardedImage fsrc(4, 4, 4), fdest(8, 8, 4);
        for (size_t y = 0; y < 4; ++y)
            for (size_t x = 0; x < 4; ++x) {
                const float v = (x + y) % 2 ? 7.5f : -3.25f;
                std::memcpy(fsrc.row(y) + x * 4, &v, 4);
            }
        ASSERT_EQ(QuorinScale_PlanarF(fsrc.record(), fdest.record(), nullptr, quality), kQuorinSuccess);
        float lo = 0, hi = 0;
        for (size_t y = 0; y < 8; ++y)
            for (size_t x = 0; x < 8; ++x) {
                float v;
                std::memcpy(&v, fdest.row(y) + x * 4, 4);
                lo = std::min(lo, v), hi = std::max(hi, v);
            }
        EXPECT_LT(lo, -1.0f);
        EXPECT_GT(hi, 2.0f);
    }
}

// Stripes of 0 and the largest sample drive the sums past both ends of the
// range, where the kernels' narrowing must clamp as the rule does.
TEST(Scale, SumsBeyondTheSampleRangeClampUnderEveryKernel) {
    for (const Shape s : {Shape{301, 7, 97, 3}, Shape{61, 5, 187, 11}}) {
        GuardedImage src(s.sw, s.sh, 4);
        for (size_t y = 0; y < s.sh; ++y)
            for (size_t x = 0; x < s.sw * 4; ++x) src.row(y)[x] = ((x / 4 + y) / 2 + x % 3) % 2 ? 255 : 0;
        for (const Quorin_Flags quality : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_HighQualityResampling}}) {
            const std::vector<uint8_t> want = ReferenceOf(src, geometry::kScaleARGB8888, s, quality != 0);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(s.dw, s.dh, 4, 4);
                EXPECT_EQ(QuorinScale_ARGB8888(src.record(), dest.record(), nullptr, flags | quality), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                EXPECT_EQ(dest.pixels(), want);
                return dest.pixels();
            });
        }
    }
}

// The 8-bit fixed-point vertical pass leaves out taps of weight 0 and adds
// the two rows of each weight first where a row's weights read the same
// from either end. Hand-made table rows reach every such plan, with rows of
// 0 and 255 among the taps, and each vector kernel must store the scalar
// rule's bytes, row tails included, and nothing past them.
TEST(Scale, VerticalTermsOfEveryShapeOfWeightsGiveTheRule) {
    using scale::Arithmetic, scale::kShrinkTaps, scale::PassJob, scale::PassKernel;
    constexpr int32_t kWeights[][kShrinkTaps] = {
        {341, 7850, 7850, 341, 0},           // an exact halving's: two folded terms
        {0, 341, 7850, 7850, 341},           // the same behind a zero
        {341, 7850, 7851, 341, 0},           // an inner weight off: not folded
        {340, 7850, 7850, 341, 0},           // an outer one
        {100, 0, -200, 0, 100},              // folded once the zeros are left out
        {32767, -32768, 5, -32768, 32767},   // symmetric but odd: not folded
        {-32768, 32767, 32767, -32768, 0},   // the 16-bit extremes, folded
        {0, 0, 16384, 0, 0},                 // one tap
        {0, 0, 0, 0, 0},                     // none
        {40000, 1, 1, 40000, 0},             // past 16 bits: the general kernel
    };
    constexpr int32_t kRows[kShrinkTaps] = {3, 0, 4, 1, 2};  // the taps' source rows, out of order
    constexpr size_t kSamples = 37 * 4, kPitch = kSamples + 16, kOut = std::size(kWeights);
    std::vector<uint8_t> source(kShrinkTaps * kSamples);
    uint32_t seed = 7;
    for (uint8_t& b : source) b = static_cast<uint8_t>((seed = seed * 1664525u + 1013904223u) >> 24);
    for (size_t x = 0; x < kSamples; ++x) source[2 * kSamples + x] = 255, source[4 * kSamples + x] = x % 3 ? 0 : 255;
    std::vector<int32_t> indices, weights;
    for (const auto& row : kWeights)
        for (size_t j = 0; j < kShrinkTaps; ++j) indices.push_back(kRows[j]), weights.push_back(row[j]);
    const auto run = [&](PassKernel kernel) {
        std::vector<uint8_t> out(kOut * kPitch, 0x5A);
        const PassJob job{source.data(), kSamples, out.data(), kPitch,
                          reinterpret_cast<const uint8_t*>(indices.data()),
                          reinterpret_cast<const uint8_t*>(weights.data()), scale::FormatIndex<kARGB8888>(),
                          Arithmetic::Fixed, kShrinkTaps};
        kernel(job, 0, 0, kSamples / 4, kOut);
        return out;
    };
    const std::vector<uint8_t> want = run(scale::kVerticalPass.scalar);
    for (size_t y = 0; y < kOut; ++y)
        for (size_t x = kSamples; x < kPitch; ++x) ASSERT_EQ(want[y * kPitch + x], 0x5A);
    for (const Variant& v : KernelVariants()) {
        const VariantScope scope(v);
        SCOPED_TRACE(v.name);
        EXPECT_EQ(run(scale::kVerticalPass.choose()), want);
    }
}

// The float vertical pass of 8-bit samples rounds its sums in float, not
// through double as the rule does. A row of samples 0, 1 and 2 under one
// weight t (the other taps 0) makes sums of exactly 0, t and 2t: weights at
// every half step of the 8-bit range and the floats on either side of it,
// the float just below one half (which rounds to 1 when 0.5 is added in
// float), and sums below 0, each with plain and streamed stores.
TEST(Scale, FloatSumsAtEveryHalfStepRoundAsTheRule) {
    using scale::Arithmetic, scale::kShrinkTaps, scale::PassJob, scale::PassKernel;
    std::vector<float> halves = {std::nextafter(0.5f, 0.0f), -0.5f, -std::nextafter(0.5f, 0.0f), -1.5f};
    for (int k = 0; k < 256; ++k)
        for (const float t : {k + 0.5f, std::nextafter(k + 0.5f, 0.0f), std::nextafter(k + 0.5f, 512.0f)})
            halves.push_back(t);
    constexpr size_t kSamples = 37 * 4 + 64, kPitch = kSamples + 16;
    std::vector<uint8_t> source(kShrinkTaps * kSamples);
    uint32_t seed = 3;
    for (uint8_t& b : source) b = static_cast<uint8_t>((seed = seed * 1664525u + 1013904223u) >> 24);
    for (size_t x = 0; x < kSamples; ++x) source[x] = static_cast<uint8_t>(x % 3);
    std::vector<int32_t> indices;
    std::vector<float> weights;
    for (const float t : halves)
        for (size_t j = 0; j < kShrinkTaps; ++j) indices.push_back(static_cast<int32_t>(j)), weights.push_back(j ? 0.0f : t);
    const auto run = [&](PassKernel kernel, bool stream) {
        std::vector<uint8_t> out(halves.size() * kPitch + 64, 0x5A);
        PassJob job{source.data(), kSamples, out.data() + 3, kPitch, reinterpret_cast<const uint8_t*>(indices.data()),
                    reinterpret_cast<const uint8_t*>(weights.data()), scale::FormatIndex<kARGB8888>(),
                    Arithmetic::Float, kShrinkTaps};
        job.stream = stream;
        kernel(job, 0, 0, kSamples / 4, halves.size());
        return out;
    };
    const std::vector<uint8_t> want = run(scale::kVerticalPass.scalar, false);
    for (size_t i = 0; i < halves.size(); ++i) {
        const double t = halves[i];
        ASSERT_EQ(want[3 + i * kPitch + 1], std::clamp<int>(static_cast<int>(t + 0.5), 0, 255)) << t;
    }
    for (const Variant& v : KernelVariants()) {
        const VariantScope scope(v);
        for (const bool stream : {false, true}) {
            SCOPED_TRACE(testing::Message() << v.name << (stream ? " streamed" : ""));
            EXPECT_EQ(run(scale::kVerticalPass.choose(), stream), want);
        }
    }
}

TEST(Scale, PassesSplitFromSixtyFourThousandOutputPixelsCountedInThirtyTwoBits) {
    EXPECT_TRUE(WantsGrid(250, 256));   // 64000
    EXPECT_FALSE(WantsGrid(255, 250));  // 63750
    EXPECT_FALSE(WantsGrid(65536, 65536));  // wraps to 0
    // Split or not, and whatever the single-threaded bit says, the bytes are
    // those of one piece on the calling thread.
    for (const Shape s : {Shape{300, 256, 250, 256}, Shape{300, 250, 255, 250}}) {
        GuardedImage src(s.sw, s.sh, 4);
        src.fillRandom(11);
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
            GuardedImage dest(s.dw, s.dh, 4);
            EXPECT_EQ(QuorinScale_ARGB8888(src.record(), dest.record(), nullptr, flags), kQuorinSuccess);
            return dest.pixels();
        });
    }
}

}  // namespace
}  // namespace quorin::test
