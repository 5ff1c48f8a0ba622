// Colour-matrix multiply: both members under every kernel and split on
// guarded images against a per-pixel rule written apart from the kernels
// (64-bit products wrapped to 32 bits before the division), for divisors of
// every sign and size, biases null and set; the fixed cases callers rely on;
// the order of the checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "Transform/MatrixMembers.h"
#include "quorin/Transform.h"
#include "support/CheckOrder.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

constexpr size_t kWidth = 263, kHeight = 251;  // splits; odd, so no band is even

// Channel j of the 8-bit rule, from 64-bit arithmetic.
uint8_t Expected8(const uint8_t* px, const int16_t* m, int32_t divisor, const int16_t* pre, const int32_t* post,
                  int j) {
    int64_t sum = post ? post[j] : 0;
    for (int i = 0; i < 4; ++i) sum += (int64_t{px[i]} + (pre ? pre[i] : 0)) * m[4 * i + j];
    const auto wrapped = static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(sum)));
    const int64_t q = divisor == -1 ? static_cast<int32_t>(0u - static_cast<uint32_t>(wrapped))
                                    : int64_t{wrapped} / divisor;
    return static_cast<uint8_t>(std::clamp<int64_t>(q, 0, 255));
}

struct Case8 {
    int32_t divisor;
    bool biases;
    uint64_t seed;
};

TEST(MatrixMultiply, EightBitMatchesTheRuleForEveryDivisorUnderEveryKernelAndSplit) {
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min(), kMax = std::numeric_limits<int32_t>::max();
    // Large divisors put random sums across the whole 0..255 range, so
    // every quotient's rounding is met; small ones test the clamps.
    const Case8 cases[] = {{1, false, 1},       {-1, true, 2},      {2, true, 3},        {-3, true, 4},
                           {255, false, 5},     {4096, true, 6},    {-4096, true, 7},    {8388617, true, 8},
                           {-8388617, true, 9}, {16777259, true, 10}, {kMax, true, 11},   {kMin, true, 12},
                           {kMin + 1, true, 13}, {641, true, 14},   {7, false, 15}};
    const matrix::Member& m = matrix::kMatrixARGB8888;
    for (const Case8& c : cases) {
        SCOPED_TRACE(c.divisor);
        Random random(c.seed);
        int16_t coefficients[16], pre[4];
        int32_t post[4];
        for (int16_t& k : coefficients) k = static_cast<int16_t>(random.next());
        for (int16_t& k : pre) k = static_cast<int16_t>(random.next());
        for (int32_t& k : post) k = static_cast<int32_t>(random.next());
        const int16_t* preBias = c.biases ? pre : nullptr;
        const int32_t* postBias = c.biases ? post : nullptr;
        GuardedImage src(kWidth, kHeight, 4, c.seed % 3 * 4, c.seed % 4);
        src.fillRandom(c.seed);
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
            GuardedImage dest(kWidth, kHeight, 4, 8, 1);
            EXPECT_EQ(m.run({src.record(), dest.record(), coefficients, c.divisor, preBias, postBias, flags}), 0);
            EXPECT_EQ(dest.damagedGuard(), "");
            size_t wrong = 0;
            for (size_t y = 0; y < kHeight; y += 5)
                for (size_t x = 0; x < kWidth; ++x)
                    for (int j = 0; j < 4; ++j)
                        wrong += dest.row(y)[4 * x + j] !=
                                 Expected8(src.row(y) + 4 * x, coefficients, c.divisor, preBias, postBias, j);
            EXPECT_EQ(wrong, 0u);
            return dest.pixels();
        }, c.seed % 4 == 0 ? KernelAndSplitVariants() : KernelVariants());
    }
}

// The sums at the ends of the 32-bit range: the most negative sum under a
// divisor of -1 (negation wraps it back to itself, clamped to 0), and sums
// that wrap past either end, for widths 1 to 40 so every tail is met.
TEST(MatrixMultiply, EightBitSumsThatWrapAndTheMostNegativeSumUnderEveryKernel) {
    const int16_t m[16] = {-32768, 0, 32767, -32768, -32768, 0, 32767, 32767, 0, 0, 0, 0, 0, 0, 0, 0};
    const int16_t pre[4] = {-32768, -32768, 0, 0};
    const int32_t post[4] = {0, 0, 0, std::numeric_limits<int32_t>::min()};
    for (const int32_t divisor : {-1, 1, -2, 3, std::numeric_limits<int32_t>::min()})
        for (size_t width = 1; width <= 40; ++width) {
            GuardedImage src(width, 3, 4);
            src.fillRandom(width);
            std::memset(src.row(0), 0, 4 * width);  // channels 0 and 1 at 0: sum_0 = 2^31, wrapped
            for (const Variant& v : KernelVariants()) {
                VariantScope scope(v);
                GuardedImage dest(width, 3, 4);
                ASSERT_EQ(QuorinMatrixMultiply_ARGB8888(src.record(), dest.record(), m, divisor, pre, post, 0), 0);
                ASSERT_EQ(dest.damagedGuard(), "");
                for (size_t y = 0; y < 3; ++y)
                    for (size_t x = 0; x < width; ++x)
                        for (int j = 0; j < 4; ++j)
                            ASSERT_EQ(dest.row(y)[4 * x + j], Expected8(src.row(y) + 4 * x, m, divisor, pre, post, j))
                                << v.name << " divisor " << divisor << " width " << width;
            }
        }
}

// One call on a one-row source (byte x in every channel of pixel x) with
// post-biases and no pre-biases, every byte of the result against the rule.
::testing::AssertionResult RampGivesTheRule(const GuardedImage& src, const int16_t* m, int32_t divisor,
                                            const int32_t* post) {
    GuardedImage dest(256, 1, 4);
    if (const Quorin_Error error =
            QuorinMatrixMultiply_ARGB8888(src.record(), dest.record(), m, divisor, nullptr, post, 0))
        return ::testing::AssertionFailure() << "error " << error;
    for (size_t x = 0; x < 256; ++x)
        for (int j = 0; j < 4; ++j) {
            const uint8_t want = Expected8(src.row(0) + 4 * x, m, divisor, nullptr, post, j);
            if (dest.row(0)[4 * x + j] != want)
                return ::testing::AssertionFailure() << "x " << x << " channel " << j << ": "
                                                     << int{dest.row(0)[4 * x + j]} << ", not " << int{want};
        }
    return ::testing::AssertionSuccess();
}

// Every quotient boundary from -2 to 257 for each form the division takes
// (shifts for powers of two, the magic multiply with its correction added,
// subtracted or absent): a source byte x on channel i with coefficient 1 and
// a post-bias of divisor x k - 128 puts the sums divisor x k - 128 ..
// divisor x k + 127 (wrapped) across one row.
TEST(MatrixMultiply, EightBitQuotientsAtEveryBoundaryForEveryFormOfDivisionUnderEveryKernel) {
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
    GuardedImage src(256, 1, 4);
    for (size_t x = 0; x < 256; ++x) std::memset(src.row(0) + 4 * x, static_cast<int>(x), 4);
    int16_t m[16] = {};
    for (int i = 0; i < 4; ++i) m[5 * i] = 1;
    for (const int32_t divisor : {1, 2, 64, 1 << 30, 3, 1000, 8388617, 7, 255, 4093, 5461, 8191, 8193, -1, -3, -7, -1000, kMin})
        for (const Variant& v : KernelVariants()) {
            VariantScope scope(v);
            for (int64_t k = -2; k <= 257; ++k) {
                const auto wrapped = [&](int64_t offset) {
                    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(divisor * k - 128 + offset)));
                };
                const int32_t post[4] = {wrapped(0), wrapped(1), wrapped(-1), wrapped(0)};
                ASSERT_TRUE(RampGivesTheRule(src, m, divisor, post)) << v.name << " divisor " << divisor << " k " << k;
            }
        }
}

// Every divisor from 1 to 8200 (past the largest that the single-precision
// division takes), each at every quotient 0..255: source byte x times the
// divisor, then one less, the divisor less one more, and one more, so the
// sums are each multiple of the divisor and its neighbours on both sides.
TEST(MatrixMultiply, EightBitEveryMultipleOfEverySmallDivisorUnderEveryKernel) {
    GuardedImage src(256, 1, 4);
    for (size_t x = 0; x < 256; ++x) std::memset(src.row(0) + 4 * x, static_cast<int>(x), 4);
    for (const Variant& v : KernelVariants()) {
        VariantScope scope(v);
        for (int32_t divisor = 1; divisor <= 8200; ++divisor) {
            int16_t m[16] = {};
            for (int j = 0; j < 4; ++j) m[j] = static_cast<int16_t>(divisor);
            const int32_t post[4] = {0, -1, divisor - 1, 1};
            ASSERT_TRUE(RampGivesTheRule(src, m, divisor, post)) << v.name << " divisor " << divisor;
        }
    }
}

// Matrices whose sums come as close to +-2^24 as the single-precision
// division allows (coefficients of +-16384 on every channel), and just
// beyond it, with divisors about the largest it takes.
TEST(MatrixMultiply, EightBitLargestSumsUnderEveryKernel) {
    GuardedImage src(67, 5, 4);
    src.fillRandom(3);
    std::memset(src.row(0), 255, 4 * 67);
    std::memset(src.row(1), 0, 4 * 67);
    for (const int16_t magnitude : {int16_t{16384}, int16_t{16448}})
        for (const int32_t divisor : {3, 4093, 8191, 8192, 8193}) {
            int16_t m[16];
            for (int k = 0; k < 16; ++k) m[k] = static_cast<int16_t>((k * 7 % 5 < 2 ? -1 : 1) * magnitude);
            m[0] = m[4] = m[8] = m[12] = magnitude;  // channel 0's sums reach +2^24 - 2^16
            m[1] = m[5] = m[9] = m[13] = static_cast<int16_t>(-magnitude);  // channel 1's the negative end
            for (const Variant& v : KernelVariants()) {
                VariantScope scope(v);
                GuardedImage dest(67, 5, 4);
                ASSERT_EQ(QuorinMatrixMultiply_ARGB8888(src.record(), dest.record(), m, divisor, nullptr, nullptr, 0), 0);
                for (size_t y = 0; y < 5; ++y)
                    for (size_t x = 0; x < 67; ++x)
                        for (int j = 0; j < 4; ++j)
                            ASSERT_EQ(dest.row(y)[4 * x + j], Expected8(src.row(y) + 4 * x, m, divisor, nullptr, nullptr, j))
                                << v.name << " divisor " << divisor << " magnitude " << magnitude;
            }
        }
}

TEST(MatrixMultiply, EightBitFixedCases) {
    GuardedImage src(70, 9, 4, 4);
    src.fillRandom(5);
    const auto run = [&](const int16_t* m, int32_t divisor, const int16_t* pre, GuardedImage& dest) {
        return QuorinMatrixMultiply_ARGB8888(src.record(), dest.record(), m, divisor, pre, nullptr, 0);
    };
    int16_t identity[16] = {}, negated[16] = {};
    for (int i = 0; i < 4; ++i) identity[5 * i] = 4096, negated[5 * i] = -1;
    GuardedImage copy(70, 9, 4), back(70, 9, 4), cleared(70, 9, 4), centred(70, 9, 4);
    ASSERT_EQ(run(identity, 4096, nullptr, copy), 0);
    EXPECT_EQ(copy.pixels(), src.pixels());
    ASSERT_EQ(run(negated, -1, nullptr, back), 0);
    EXPECT_EQ(back.pixels(), src.pixels());
    // A zero divisor fills with zeros whatever the matrix, inside the area only.
    cleared.fillRandom(1);
    ASSERT_EQ(run(identity, 0, nullptr, cleared), 0);
    EXPECT_EQ(cleared.pixels(), std::vector<uint8_t>(70 * 9 * 4, 0));
    EXPECT_EQ(cleared.damagedGuard(), "");
    // The pre-bias comes before the multiply: a source of 128 less 128 adds nothing.
    const int16_t minus128[4] = {-128, -128, -128, -128};
    src.fillBytes(128);
    ASSERT_EQ(run(identity, 1, minus128, centred), 0);
    EXPECT_EQ(centred.pixels(), std::vector<uint8_t>(70 * 9 * 4, 0));
    // In place.
    src.fillRandom(6);
    const std::vector<uint8_t> before = src.pixels();
    ASSERT_EQ(QuorinMatrixMultiply_ARGB8888(src.record(), src.record(), negated, -1, nullptr, nullptr, 0), 0);
    EXPECT_EQ(src.pixels(), before);
}

// The float rule, written out: products in source order, post-bias last.
float ExpectedF(const float* px, const float* m, const float* pre, const float* post, int j) {
    float s[4];
    for (int i = 0; i < 4; ++i) s[i] = px[i] + (pre ? pre[i] : 0.0f);
    volatile float sum = s[0] * m[j];  // volatile: one rounding per step, as written
    sum = sum + s[1] * m[4 + j];
    sum = sum + s[2] * m[8 + j];
    sum = sum + s[3] * m[12 + j];
    const float out = (post ? post[j] : 0.0f) + sum;
    return std::isnan(out) ? std::bit_cast<float>(0x7FC00000u) : out;
}

TEST(MatrixMultiply, FloatMatchesTheRuleUnderEveryKernelAndSplitNaNIncluded) {
    const float m[16] = {0.5f, -1.25f, 3.0f, 1e-3f, 2.0f, 0.1f, -0.7f, 1e30f,
                         -4.0f, 0.3f, 0.0f, 1.0f, 1.0f, -0.0f, 0.9f, 7.5f};
    const float pre[4] = {0.125f, -1.0f, 0.0f, 1e-40f}, post[4] = {1.0f, -2.0f, 1e38f, 0.5f};
    const matrix::Member& member = matrix::kMatrixARGBFFFF;
    for (const bool biases : {false, true}) {
        GuardedImage src(kWidth, kHeight, 16, 16, 4);
        src.fillRandomFloats(biases ? 3 : 4, -3.0f, 3.0f);
        // Every kind of value somewhere: NaNs with payloads, infinities, zeros.
        const float kinds[] = {std::nanf("0x12"), -std::numeric_limits<float>::infinity(),
                               std::numeric_limits<float>::infinity(), -0.0f, 1e38f, std::nanf("0x7")};
        for (size_t y = 0; y < kHeight; y += 3)
            for (size_t k = 0; k < 6; ++k) std::memcpy(src.row(y) + 4 * (7 * y + 5 * k) % (kWidth * 16), &kinds[k], 4);
        const float* preBias = biases ? pre : nullptr;
        const float* postBias = biases ? post : nullptr;
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
            GuardedImage dest(kWidth, kHeight, 16, 0, 8);
            EXPECT_EQ(member.run({src.record(), dest.record(), m, 0, preBias, postBias, flags}), 0);
            EXPECT_EQ(dest.damagedGuard(), "");
            size_t wrong = 0;
            for (size_t y = 0; y < kHeight; y += 7)
                for (size_t x = 0; x < kWidth; ++x)
                    for (int j = 0; j < 4; ++j) {
                        const float want = ExpectedF(src.pixel<float>(x, y), m, preBias, postBias, j);
                        wrong += std::memcmp(dest.pixel<float>(x, y) + j, &want, 4) != 0;
                    }
            EXPECT_EQ(wrong, 0u);
            return dest.pixels();
        });
    }
    // No clamping: a coefficient of 2 on 0.75 gives 1.5.
    GuardedImage one(1, 1, 16), out(1, 1, 16);
    const float px[4] = {0.75f, 0.75f, 0.75f, 0.75f};
    std::memcpy(one.pixel<float>(0, 0), px, 16);
    float twice[16] = {};
    for (int i = 0; i < 4; ++i) twice[5 * i] = 2.0f;
    ASSERT_EQ(QuorinMatrixMultiply_ARGBFFFF(one.record(), out.record(), twice, nullptr, nullptr, 0), 0);
    EXPECT_EQ(out.pixel<float>(0, 0)[3], 1.5f);
}

TEST(MatrixMultiply, ChecksInOrderBeforeAnyWrite) {
    const int16_t m8[16] = {1};
    const float mf[16] = {1.0f};
    for (const matrix::Member* m : matrix::kMatrixMembers) {
        SCOPED_TRACE(m->name);
        const size_t bytes = m->format.pixelBytes();
        GuardedImage src(9, 4, bytes, 4), dest(9, 4, bytes);
        src.fillRandom(1);
        const void* coefficients = bytes == 4 ? static_cast<const void*>(m8) : mf;
        ExpectCheckOrder(m->checks, {&src, &dest}, {1}, [&](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags f) {
            return m->run({r[0], r[1], coefficients, 3, nullptr, nullptr, f});
        });
        // The matrix pointer.
        const std::vector<uint8_t> before = dest.pixels();
        EXPECT_EQ(m->run({src.record(), dest.record(), nullptr, 3, nullptr, nullptr, 0}), kQuorinError_BadArgument);
        EXPECT_EQ(dest.pixels(), before);
        // No flag bit is refused.
        EXPECT_EQ(m->run({src.record(), dest.record(), coefficients, 3, nullptr, nullptr, ~0x10u}), 0);
    }
}

}  // namespace
}  // namespace quorin::test
