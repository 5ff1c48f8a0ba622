// The convolution family against results written from its description
// (ConvolutionReference.h), under every kernel and split, with guarded
// images; the worked values; each member's check order; the magic-number
// division against the processor's.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "Convolution/ConvolutionMembers.h"
#include "Convolution/ConvolutionRules.h"
#include "ConvolutionReference.h"
#include "Core/Reduce.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using convolution::Call;
using convolution::kConvolutionMembers;
using convolution::MagicDivisor;
using convolution::Member;
using convolution::Operation;

Image ImageOf(const GuardedImage& g) { return {g.width(), g.height(), g.pixelBytes(), g.pixels()}; }

GuardedImage RandomImage(size_t width, size_t height, size_t bytes, uint64_t seed, size_t padding = 0) {
    GuardedImage image(width, height, bytes, padding, seed % 7);
    image.fillRandom(seed);
    return image;
}

// ---- Division ---------------------------------------------------------------------

TEST(MagicDivisor, DividesEveryNumeratorExactly) {
    Random random(11);
    std::vector<uint32_t> divisors{1, 2, 3, 7, 9, 16, 255, 641, 65535, 65536, 0x7FFFFFFF, 0x80000000u,
                                   0x80000001u, 0xFFFFFFFEu, 0xFFFFFFFFu};
    for (int i = 0; i < 200; ++i) divisors.push_back(static_cast<uint32_t>(random.next() >> (32 + i % 32)));
    for (const uint32_t d : divisors) {
        if (d == 0) continue;
        const auto m = MagicDivisor<32>::For(d);
        std::vector<uint32_t> numerators{0, 1, d - 1, d, d + 1, 0xFFFFFFFFu, 0xFFFFFFFFu - d, 0x80000000u};
        for (uint32_t q = 1; q < 40; ++q) numerators.push_back(q * d - 1);
        for (int i = 0; i < 2000; ++i) numerators.push_back(static_cast<uint32_t>(random.next()));
        for (const uint32_t n : numerators) ASSERT_EQ(m.Divide(n), n / d) << n << " / " << d;
    }
    // 16 bits: every numerator, for the box's divisors and more.
    for (uint32_t d = 1; d <= 600; ++d) {
        const auto m = MagicDivisor<16>::For(d);
        for (uint32_t n = 0; n < 65536; ++n) ASSERT_EQ(m.Divide(n), n / d) << n << " / " << d;
    }
}

// ---- General convolution -----------------------------------------------------------

struct Kernel {
    uint32_t height, width;
    std::vector<int16_t> weights;
    int32_t divisor;
};

Kernel RandomKernel(Random& random, uint32_t maxSize, bool small) {
    Kernel k{1 + 2 * static_cast<uint32_t>(random.next() % (maxSize / 2 + 1)),
             1 + 2 * static_cast<uint32_t>(random.next() % (maxSize / 2 + 1)), {}, 0};
    for (uint32_t i = 0; i < k.height * k.width; ++i)
        k.weights.push_back(small ? static_cast<int16_t>(random.next() % 9) : static_cast<int16_t>(random.next()));
    const int32_t divisors[] = {1, 0, -1, -3, 16, 7, 65537, static_cast<int32_t>(random.next())};
    k.divisor = divisors[random.next() % 8];
    return k;
}

const Member& General(size_t bytes) { return bytes == 1 ? convolution::kConvolvePlanar8 : convolution::kConvolveARGB8888; }

// The general convolution of src (offsets 0) into a destination that `dest`
// makes, under each variant, against the description's bytes.
void ExpectGeneralMatches(const GuardedImage& src, const int16_t* weights, uint32_t kh, uint32_t kw, int32_t divisor,
                          const std::function<GuardedImage()>& dest, const std::vector<Variant>& variants) {
    Image want = ImageOf(dest());
    ReferenceConvolve(ImageOf(src), want, 0, 0, weights, kh, kw, divisor);
    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
        GuardedImage out = dest();
        EXPECT_EQ(General(src.pixelBytes()).run({src.record(), out.record(), nullptr, 0, 0, weights, kh, kw, divisor,
                                                 flags}),
                  kQuorinSuccess);
        EXPECT_EQ(out.damagedGuard(), "");
        EXPECT_EQ(out.pixels(), want.bytes);
        return out.pixels();
    }, variants);
}

// Sizes around the vector width and the parallel grid, with small kernels
// (the 16-bit sums) and full-range ones (wrapping 32-bit sums).
TEST(Convolve, MatchesTheDescriptionForRandomKernelsDivisorsAndOffsets) {
    Random random(5);
    const StreamingForced streamed;  // destination rows at every alignment
    struct Size { size_t width, height; };
    for (const size_t bytes : {size_t{1}, size_t{4}})
        for (const Size size : {Size{1, 1}, Size{7, 5}, Size{33, 9}, Size{70, 31}, Size{300, 220}})
            for (int trial = 0; trial < 4; ++trial) {
                const Kernel k = RandomKernel(random, std::min<size_t>({size.width, size.height, 7}), trial % 2 == 0);
                const uint32_t offset = static_cast<uint32_t>(random.next() % std::min<size_t>(3, size.height));
                const uint32_t ox = std::min<uint32_t>(offset, static_cast<uint32_t>(size.width - 1));
                const GuardedImage src = RandomImage(size.width, size.height, bytes, random.next(), trial);
                Image want = ImageOf(RandomImage(size.width, size.height, bytes, 99));
                ReferenceConvolve(ImageOf(src), want, ox, ox, k.weights.data(), k.height, k.width, k.divisor);
                SCOPED_TRACE(::testing::Message() << size.width << "x" << size.height << "x" << bytes << " kernel "
                                                  << k.height << "x" << k.width << " /" << k.divisor << " at " << ox);
                const auto variants = size.width * size.height > 1000 || trial == 0 ? KernelAndSplitVariants()
                                                                                     : KernelVariants();
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    GuardedImage dest = RandomImage(size.width, size.height, bytes, 99, 3);
                    EXPECT_EQ(General(bytes).run({src.record(), dest.record(), nullptr, ox, ox, k.weights.data(),
                                                  k.height, k.width, k.divisor, flags}),
                              kQuorinSuccess);
                    EXPECT_EQ(dest.damagedGuard(), "");
                    EXPECT_EQ(dest.pixels(), want.bytes);
                    return dest.pixels();
                }, variants);
            }
}

// Kernels that are a column times a row (and near misses, one weight off)
// sum down, then across: 3 x 3, 5 x 5 and random ones, leading zero rows and
// columns, a common factor, over rows past the 1024-byte stretches the sums are made in.
TEST(Convolve, ColumnTimesRowKernelsMatchTheDescription) {
    Random random(16);
    const StreamingForced streamed;  // destination rows at every alignment
    for (const size_t bytes : {size_t{1}, size_t{4}})
        for (int trial = 0; trial < 8; ++trial) {
            // The first two trials take the sizes with loops of their own.
            uint32_t kh = 3 + 2 * static_cast<uint32_t>(random.next() % 3),
                     kw = 3 + 2 * static_cast<uint32_t>(random.next() % 4);
            if (trial < 2) kh = kw = 3 + 2 * static_cast<uint32_t>(trial);
            std::vector<int16_t> down(kh), across(kw), weights;
            for (auto& w : down) w = static_cast<int16_t>(random.next() % 4);
            for (auto& w : across) w = static_cast<int16_t>(random.next() % 5);
            down[0] = trial % 2 == 0 ? 0 : down[0];
            across[0] = trial % 4 < 2 ? 0 : across[0];
            const int16_t factor = trial % 3 == 0 ? 3 : 1;
            for (const int16_t d : down)
                for (const int16_t a : across) weights.push_back(static_cast<int16_t>(factor * d * a));
            if (trial == 7) weights[weights.size() / 2] += 1;
            const size_t width = 300 + random.next() % 900, height = 9 + random.next() % 9;
            const int32_t divisor = 1 + static_cast<int32_t>(random.next() % 200);
            const GuardedImage src = RandomImage(width, height, bytes, random.next(), 2);
            SCOPED_TRACE(::testing::Message() << "trial " << trial << " kernel " << kh << "x" << kw << " over "
                                              << width << "x" << height << "x" << bytes);
            ExpectGeneralMatches(src, weights.data(), kh, kw, divisor,
                                 [&] { return RandomImage(width, height, bytes, 97, 1); }, KernelVariants());
        }
}

// Kernels whose column and row read the same backwards add mirrored taps
// before one product, and 3 x 3 ones make four rows at a time from the rows
// they share: heights around the groups of four and the bands, rows whose
// length is a whole number of cache lines (streamed four at a time) and
// not, and near misses with one outer weight off the mirror.
TEST(Convolve, MirroredColumnTimesRowKernelsMatchTheDescription) {
    Random random(17);
    const StreamingForced streamed;
    for (const size_t bytes : {size_t{1}, size_t{4}})
        for (int trial = 0; trial < 8; ++trial) {
            const uint32_t size = trial < 6 ? 3 : 5, half = size / 2;
            std::vector<int16_t> down(size), across(size), weights;
            for (uint32_t i = 0; i <= half; ++i) {
                down[i] = down[size - 1 - i] = static_cast<int16_t>(1 + random.next() % 4);
                across[i] = across[size - 1 - i] = static_cast<int16_t>(random.next() % 5);
            }
            across[half] = static_cast<int16_t>(across[half] + 1);
            if (trial == 4) down[0] = static_cast<int16_t>(down[0] + 1);
            if (trial == 5) across[size - 1] = static_cast<int16_t>(across[size - 1] + 1);
            for (const int16_t d : down)
                for (const int16_t a : across) weights.push_back(static_cast<int16_t>(d * a));
            const size_t width = (trial % 2 == 0 ? 64 * (2 + random.next() % 40) : 100 + random.next() % 2000) / bytes;
            const size_t height = 5 + random.next() % 40, padding = std::vector<size_t>{0, 0, 64, 8}[trial % 4];
            const int32_t divisor = trial % 3 == 0 ? 16 : 1 + static_cast<int32_t>(random.next() % 300);
            const GuardedImage src = RandomImage(width, height, bytes, random.next(), trial % 3);
            SCOPED_TRACE(::testing::Message() << "trial " << trial << " over " << width << "x" << height << "x"
                                              << bytes);
            ExpectGeneralMatches(src, weights.data(), size, size, divisor, [&] {
                GuardedImage dest(width, height, bytes, padding, trial % 2 == 0 ? 0 : 5);
                dest.fillRandom(96);
                return dest;
            }, KernelAndSplitVariants());
        }
}

// A column of triangular weights runs down the columns by running sums that
// start over at each band: heights up to the largest whose sums fit 16 bits
// (31) and past it, bands and strips of columns (4096 bytes), every split. A
// row of them sums boxes across: widths to 31 and past, rows past the
// stretches (2048 bytes) the boxes are summed in, a divisor not the weights' sum.
TEST(Convolve, TriangularColumnsAndRowsMatchTheDescription) {
    Random random(15);
    const StreamingForced streamed;  // destination rows at every alignment
    for (const bool column : {true, false})
        for (const size_t bytes : {size_t{1}, size_t{4}})
            for (const uint32_t size : {3u, 5u, 7u, 15u, 31u, 33u}) {
                const size_t width = column ? (bytes == 1 ? 4100 : 1100) : 2 * size + 5000 / bytes + random.next() % 64;
                const size_t height = column ? 16 * size + 37 : 5;
                std::vector<int16_t> tent;
                for (uint32_t i = 0; i < size; ++i) tent.push_back(static_cast<int16_t>(std::min(i, size - 1 - i) + 1));
                const int32_t h = static_cast<int32_t>(size / 2), divisor = size == 15 ? 37 : (h + 1) * (h + 1);
                const uint32_t kh = column ? size : 1, kw = column ? 1 : size;
                const GuardedImage src = RandomImage(width, height, bytes, random.next(), 3);
                SCOPED_TRACE(::testing::Message() << "kernel " << kh << "x" << kw << " over " << width << "x" << height
                                                  << "x" << bytes);
                ExpectGeneralMatches(src, tent.data(), kh, kw, divisor,
                                     [&] { return RandomImage(width, height, bytes, 98, 1); }, KernelAndSplitVariants());
            }
}

TEST(Convolve, WorkedValues) {
    const int16_t ones[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    for (const size_t bytes : {size_t{1}, size_t{4}}) {
        GuardedImage src(6, 5, bytes), dest(6, 5, bytes, 2);
        src.fillBytes(90);
        ASSERT_EQ(General(bytes).run({src.record(), dest.record(), nullptr, 0, 0, ones, 3, 3, 9}), kQuorinSuccess);
        EXPECT_EQ(*dest.row(0), 40);                   // corner: 4 taps
        EXPECT_EQ(dest.row(0)[2 * bytes], 60);         // edge: 6 taps
        EXPECT_EQ(dest.row(2)[3 * bytes + bytes - 1], 90);
        // A 1 x 1 kernel of 1 copies; a sum of 256 wraps to 0; a negative sum
        // is a large unsigned number (-90 / 1 stores 0xA6).
        const int16_t one = 1, minusOne = -1;
        src.fillRandom(3);
        ASSERT_EQ(General(bytes).run({src.record(), dest.record(), nullptr, 0, 0, &one, 1, 1, 1}), kQuorinSuccess);
        EXPECT_EQ(dest.pixels(), src.pixels());
        src.fillBytes(128);
        const int16_t two = 2;
        ASSERT_EQ(General(bytes).run({src.record(), dest.record(), nullptr, 0, 0, &two, 1, 1, 1}), kQuorinSuccess);
        EXPECT_EQ(*dest.row(1), 0);
        src.fillBytes(90);
        ASSERT_EQ(General(bytes).run({src.record(), dest.record(), nullptr, 0, 0, &minusOne, 1, 1, 1}), kQuorinSuccess);
        EXPECT_EQ(*dest.row(1), 0xA6);
        // -90 taken as unsigned, divided by 3 taken as unsigned: 0x55555537.
        ASSERT_EQ(General(bytes).run({src.record(), dest.record(), nullptr, 0, 0, &minusOne, 1, 1, 3}), kQuorinSuccess);
        EXPECT_EQ(*dest.row(1), 0x37);
        // A negative divisor is at least 2^31: 90 / that is 0.
        ASSERT_EQ(General(bytes).run({src.record(), dest.record(), nullptr, 0, 0, &one, 1, 1, -2}), kQuorinSuccess);
        EXPECT_EQ(*dest.row(1), 0);
        EXPECT_EQ(dest.damagedGuard(), "");
    }
}

// Offsets that would move the written rectangle out of the image are refused
// before any write; an offset equal to the image's size leaves an empty region.
TEST(Convolve, OffsetsThatWouldLeaveTheImageAreRefused) {
    const int16_t one = 1;
    for (const size_t bytes : {size_t{1}, size_t{4}}) {
        GuardedImage src = RandomImage(10, 8, bytes, 1), dest = RandomImage(10, 8, bytes, 2);
        const auto before = dest.pixels();
        auto run = [&](uint32_t ox, uint32_t oy) {
            return General(bytes).run({src.record(), dest.record(), nullptr, ox, oy, &one, 1, 1, 1});
        };
        EXPECT_EQ(run(2, 0), kQuorinError_BadArgument);
        EXPECT_EQ(run(0, 1), kQuorinError_BadArgument);
        EXPECT_EQ(run(11, 11), kQuorinError_BadArgument);
        EXPECT_EQ(run(10, 9), kQuorinError_BadArgument);
        EXPECT_EQ(dest.pixels(), before);
        EXPECT_EQ(run(10, 0), kQuorinSuccess);  // a region 0 wide
        EXPECT_EQ(run(3, 8), kQuorinSuccess);   // a region 0 high
        EXPECT_EQ(dest.pixels(), before);
        EXPECT_EQ(dest.damagedGuard(), "");
    }
}

// ---- Box filter --------------------------------------------------------------------

const Member& Box(size_t bytes) { return bytes == 1 ? convolution::kBoxConvolvePlanar8 : convolution::kBoxConvolveARGB8888; }
const Member& Tent(size_t bytes) { return bytes == 1 ? convolution::kTentConvolvePlanar8 : convolution::kTentConvolveARGB8888; }

// Lines as long as the kernel (and k + 1 for the even sizes) read past their
// ends; groups of lines in the vector kernel and the lines left over.
TEST(BoxConvolve, MatchesTheDescriptionAtEverySizeAroundTheKernel) {
    Random random(8);
    for (const size_t bytes : {size_t{1}, size_t{4}})
        for (const uint32_t k : {1u, 2u, 3u, 4u, 5u, 9u, 16u, 31u}) {
            if (bytes == 1 && k % 2 == 0) continue;
            for (const size_t width : {size_t{k}, size_t{k + 1}, size_t{k + 2}, size_t{2 * k + 19}})
                for (const size_t height : {size_t{k}, size_t{k + 1}, size_t{37}}) {
                    const uint32_t kernelHeight = k;
                    const GuardedImage src = RandomImage(width, height, bytes, random.next());
                    const auto want = ReferenceBox(ImageOf(src), kernelHeight, k);
                    SCOPED_TRACE(::testing::Message() << width << "x" << height << "x" << bytes << " kernel "
                                                      << kernelHeight << "x" << k);
                    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                        GuardedImage dest(width, height, bytes);
                        EXPECT_EQ(Box(bytes).run({src.record(), dest.record(), nullptr, 0, 0, nullptr, kernelHeight,
                                                  k, 0, flags}),
                                  kQuorinSuccess);
                        EXPECT_EQ(dest.damagedGuard(), "");
                        EXPECT_EQ(dest.pixels(), want);
                        return dest.pixels();
                    }, KernelVariants());
                }
        }
}

// Images at least a span long both ways take both passes at once, in
// strips of columns: random sizes around a span, the ring of rows and a
// strip's width (8192 bytes), spans that are powers of two and others.
TEST(BoxConvolve, BothPassesAtOnceMatchTheDescription) {
    Random random(12);
    struct Case { size_t width, height; uint32_t kh, kw; };
    std::vector<Case> cases;
    for (int i = 0; i < 12; ++i) {
        const uint32_t kh = 1 + 2 * static_cast<uint32_t>(random.next() % 12),
                       kw = 1 + 2 * static_cast<uint32_t>(random.next() % 12);
        // Heights from a span (no ring wrap) to well past it; widths past a vector.
        cases.push_back({kw + 1 + random.next() % 90, kh + 1 + random.next() % (3 * kh + 4), kh, kw});
    }
    cases.push_back({2049, 18, 15, 15});  // ARGB8888 past one strip
    cases.push_back({8200, 5, 3, 5});     // Planar8 past one strip
    cases.push_back({300, 40, 14, 6});    // spans of 16 and 8 (ARGB8888 even sizes)
    // Interiors run as one segment per vector block: widths that leave
    // pixels past the segments' whole steps, spans just short enough.
    for (const size_t width : {size_t{173}, size_t{264}, size_t{512}})
        for (const uint32_t k : {1u, 3u, 9u, 31u}) cases.push_back({width, 13, 3, k});
    for (const size_t bytes : {size_t{1}, size_t{4}})
        for (const Case c : cases) {
            if (bytes == 1 && (c.kh % 2 == 0 || c.kw % 2 == 0)) continue;
            const GuardedImage src = RandomImage(c.width, c.height, bytes, random.next());
            const auto want = ReferenceBox(ImageOf(src), c.kh, c.kw);
            SCOPED_TRACE(::testing::Message() << c.width << "x" << c.height << "x" << bytes << " kernel " << c.kh
                                              << "x" << c.kw);
            std::vector<uint8_t> scratch(c.width * c.height * bytes);
            auto run = [&](Quorin_Flags flags) {
                GuardedImage dest(c.width, c.height, bytes, 0, random.next() % 5);
                EXPECT_EQ(Box(bytes).run({src.record(), dest.record(), scratch.data(), 0, 0, nullptr, c.kh, c.kw, 0,
                                          flags}),
                          kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                EXPECT_EQ(dest.pixels(), want);
                return dest.pixels();
            };
            ExpectSameBytesEverywhere(run, KernelVariants());
            const StreamingForced streamed;  // destination rows at every alignment
            ExpectSameBytesEverywhere(run, KernelVariants());
        }
}

TEST(BoxConvolve, WorkedValuesAndTheCallersScratch) {
    for (const size_t bytes : {size_t{1}, size_t{4}}) {
        // 3 x 3 on a flat image: unchanged, edges included.
        GuardedImage src(9, 7, bytes), dest(9, 7, bytes);
        src.fillBytes(77);
        ASSERT_EQ(Box(bytes).run({src.record(), dest.record(), nullptr, 0, 0, nullptr, 3, 3}), kQuorinSuccess);
        EXPECT_EQ(dest.pixels(), src.pixels());
        // 1 x 1: the mean of a pixel, its right and lower neighbours, in two truncated steps.
        src.fillRandom(4);
        ASSERT_EQ(Box(bytes).run({src.record(), dest.record(), nullptr, 5, 0, nullptr, 1, 1}), kQuorinSuccess);
        const uint8_t a = src.row(2)[3 * bytes], b = src.row(2)[4 * bytes], c = src.row(3)[3 * bytes],
                      d = src.row(3)[4 * bytes];
        EXPECT_EQ(dest.row(2)[3 * bytes], ((a + b) / 2 + (c + d) / 2) / 2);
        // The caller's scratch gives the same bytes as an allocated one.
        const auto allocated = dest.pixels();
        std::vector<uint8_t> scratch(9 * 7 * bytes, 0xCD);
        ASSERT_EQ(Box(bytes).run({src.record(), dest.record(), scratch.data(), 0, 0, nullptr, 1, 1}), kQuorinSuccess);
        EXPECT_EQ(dest.pixels(), allocated);
    }
}

// ---- Tent filter -------------------------------------------------------------------

TEST(TentConvolve, IsTwoGeneralPassesWithTriangularKernels) {
    Random random(9);
    for (const size_t bytes : {size_t{1}, size_t{4}})
        for (const uint32_t kw : {1u, 3u, 7u})
            for (const uint32_t kh : {1u, 5u}) {
                const GuardedImage src = RandomImage(23, 17, bytes, random.next(), 2);
                auto tent = [](uint32_t size) {
                    std::vector<int16_t> w;
                    for (uint32_t i = 0; i < size; ++i) w.push_back(static_cast<int16_t>(std::min(i, size - 1 - i) + 1));
                    return w;
                };
                const auto across = tent(kw), down = tent(kh);
                const int32_t h = static_cast<int32_t>(kw / 2), v = static_cast<int32_t>(kh / 2);
                for (const uint32_t offset : {0u, 2u}) {
                    Image middle{23, 17, bytes, std::vector<uint8_t>(23 * 17 * bytes, 0)};
                    ReferenceConvolve(ImageOf(src), middle, offset, offset, across.data(), 1, kw, (h + 1) * (h + 1));
                    Image want = ImageOf(RandomImage(23, 17, bytes, 42));
                    ReferenceConvolve(middle, want, offset, offset, down.data(), kh, 1, (v + 1) * (v + 1));
                    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                        GuardedImage dest = RandomImage(23, 17, bytes, 42);
                        EXPECT_EQ(Tent(bytes).run({src.record(), dest.record(), nullptr, offset, offset, nullptr, kh,
                                                   kw, 0, flags}),
                                  kQuorinSuccess);
                        EXPECT_EQ(dest.damagedGuard(), "");
                        EXPECT_EQ(dest.pixels(), want.bytes);
                        return dest.pixels();
                    }, KernelVariants());
                }
            }
    // 3 x 1 on flat 200: 150 in the first and last columns, 200 inside.
    GuardedImage flat(5, 3, 1), dest(5, 3, 1);
    flat.fillBytes(200);
    ASSERT_EQ(Tent(1).run({flat.record(), dest.record(), nullptr, 0, 0, nullptr, 1, 3}), kQuorinSuccess);
    EXPECT_EQ(dest.row(1)[0], 150);
    EXPECT_EQ(dest.row(1)[2], 200);
    EXPECT_EQ(dest.row(1)[4], 150);
}

// ---- Allocation failures -------------------------------------------------------------

// Each allocation a call makes (box: the scratch; tent: two kernels, then
// the scratch) failing in turn: -21771, dest untouched; then the call works.
TEST(ConvolutionAllocations, EachFailureReturnsOutOfMemoryBeforeAnyWrite) {
    for (const Member* m : kConvolutionMembers) {
        if (m->operation == Operation::General) continue;
        SCOPED_TRACE(m->name);
        const size_t P = m->format.pixelBytes();
        const GuardedImage src = RandomImage(9, 7, P, 1);
        GuardedImage dest = RandomImage(9, 7, P, 2);
        const auto before = dest.pixels();
        const int allocations = m->operation == Operation::Box ? 1 : 3;
        for (int after = 0; after < allocations; ++after) {
            FailPartialAllocationsForTest(1, after);
            EXPECT_EQ(m->run({src.record(), dest.record(), nullptr, 0, 0, nullptr, 3, 3}), kQuorinError_OutOfMemory)
                << "allocation " << after;
            FailPartialAllocationsForTest(0);
            EXPECT_EQ(dest.pixels(), before);
            EXPECT_EQ(dest.damagedGuard(), "");
        }
        EXPECT_EQ(m->run({src.record(), dest.record(), nullptr, 0, 0, nullptr, 3, 3}), kQuorinSuccess);
    }
}

// ---- Check order -------------------------------------------------------------------

// Each fault alone, then with every later fault planted too: the earlier
// code wins, and nothing is written.
TEST(ConvolutionChecks, EveryMemberReturnsTheFirstFailureInItsOrder) {
    for (const Member* m : kConvolutionMembers) {
        SCOPED_TRACE(m->name);
        const size_t P = m->format.pixelBytes();
        const int16_t kernel[9] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
        GuardedImage src = RandomImage(6, 5, P, 1), dest = RandomImage(6, 5, P, 2), other = RandomImage(7, 5, P, 3);
        GuardedImage padded = RandomImage(6, 5, P, 4, 2);
        const auto before = dest.pixels();
        const Call good{src.record(), dest.record(), nullptr, 0, 0, kernel, 3, 3, 16, 0};
        ASSERT_EQ(m->run(good), kQuorinSuccess);
        const auto written = dest.pixels();
        dest = RandomImage(6, 5, P, 2);

        const bool general = m->operation == Operation::General;
        const Quorin_Error query = static_cast<Quorin_Error>(m->scratchBytes(6, 5));
        // Faults in check order, each with its code.
        struct Fault { const char* name; Quorin_Error code; void (*plant)(Call&, GuardedImage&, GuardedImage&, GuardedImage&); };
        std::vector<Fault> faults;
        if (general) faults.push_back({"query", query, [](Call& c, auto&, auto&, auto&) { c.flags |= kQuorinFlag_QueryTempSize; }});
        faults.push_back({"null dest", m->testsNull() ? kQuorinError_NullPointer : kQuorinError_BadArgument,
                          [](Call& c, auto&, auto&, auto&) { c.dest = nullptr; }});
        faults.push_back({"kernel height 256", kQuorinError_BadArgument, [](Call& c, auto&, auto&, auto&) { c.kernelHeight = 256; }});
        if (m->oddSizesOnly())
            faults.push_back({"even kernel width", kQuorinError_BadArgument, [](Call& c, auto&, auto&, auto&) { c.kernelWidth = 2; }});
        faults.push_back({"kernel wider than src", kQuorinError_BadArgument, [](Call& c, auto&, auto&, auto&) { c.kernelWidth = 7; }});
        if (!general) faults.push_back({"query", query, [](Call& c, auto&, auto&, auto&) { c.flags |= kQuorinFlag_QueryTempSize; }});
        faults.push_back({"sizes differ", kQuorinError_SizeMismatch, [](Call& c, auto&, auto&, GuardedImage& o) { c.dest = o.record(); }});
        if (m->operation == Operation::Box) {
            faults.push_back({"padded rows", kQuorinError_SizeMismatch, [](Call& c, auto&, GuardedImage& p, auto&) { c.src = p.record(); }});
            faults.push_back({"roiOffsetY", kQuorinError_BadArgument, [](Call& c, auto&, auto&, auto&) { c.roiOffsetY = 1; }});
        } else {
            faults.push_back({"unequal offsets", kQuorinError_BadArgument, [](Call& c, auto&, auto&, auto&) { c.roiOffsetY = 1; }});
        }
        for (size_t i = 0; i < faults.size(); ++i) {
            Call call = good;
            // The kernel-size faults are exclusive: plant only the first of them.
            for (size_t j = i; j < faults.size(); ++j) {
                const bool kernelFault = std::strstr(faults[j].name, "kernel") != nullptr;
                if (j > i && kernelFault && std::strstr(faults[i].name, "kernel")) continue;
                if (j > i && faults[j].code == kQuorinError_SizeMismatch && call.dest == nullptr) continue;
                faults[j].plant(call, src, padded, other);
            }
            EXPECT_EQ(m->run(call), faults[i].code) << faults[i].name;
            EXPECT_EQ(dest.pixels(), before) << faults[i].name;
            EXPECT_EQ(dest.damagedGuard(), "");
        }
        // The size query ignores a dest of the wrong size; box answers it with
        // src's scratch size, the general convolution before anything else.
        EXPECT_EQ(m->run({src.record(), other.record(), nullptr, 0, 0, kernel, 3, 3, 16, kQuorinFlag_QueryTempSize}), query);
        // roiOffsetX alone has no effect on the box.
        if (m->operation == Operation::Box) {
            ASSERT_EQ(m->run({src.record(), dest.record(), nullptr, 5, 0, kernel, 3, 3, 16, 0}), kQuorinSuccess);
            EXPECT_EQ(dest.pixels(), written);
        }
    }
}

}  // namespace
}  // namespace quorin::test
