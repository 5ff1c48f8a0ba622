// Clip to alpha under every kernel: min(colour, alpha) over every 8-bit
// (colour, alpha) pair, and the float test "alpha less than colour" on NaN,
// signed zeros and infinities.
#include "BlendTestSupport.h"

namespace quorin::test {
namespace {

// Every pair in the planar member and in each colour channel of ARGB8888 and
// RGBA8888 (the other colour channels carry 255 - colour and colour ^ 0x5A).
TEST(ClipToAlpha, EightBitKeepsTheSmallerOfColourAndAlphaForEveryPair) {
    using Call = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
    const std::pair<size_t, Call> members[] = {{0, QuorinClipToAlpha_ARGB8888}, {3, QuorinClipToAlpha_RGBA8888}};
    constexpr size_t kPairs = 1 << 16;
    std::vector<uint8_t> colour(kPairs), alpha(kPairs), want(kPairs), out(kPairs);
    std::vector<uint8_t> packed[2] = {std::vector<uint8_t>(4 * kPairs), std::vector<uint8_t>(4 * kPairs)};
    std::vector<uint8_t> packedWant[2] = {packed[0], packed[1]}, packedOut(4 * kPairs);
    for (size_t i = 0; i < kPairs; ++i) {
        const uint8_t c = uint8_t(i), a = uint8_t(i >> 8), colours[3] = {c, uint8_t(255 - c), uint8_t(c ^ 0x5A)};
        colour[i] = c, alpha[i] = a, want[i] = c < a ? c : a;
        for (int m = 0; m < 2; ++m) {
            size_t k = 0;
            for (size_t ch = 0; ch < 4; ++ch) {
                const uint8_t value = ch == members[m].first ? a : colours[k++];
                packed[m][4 * i + ch] = value;
                packedWant[m][4 * i + ch] = value < a ? value : a;
            }
        }
    }
    const auto planar = [](std::vector<uint8_t>& v) { return Quorin_Buffer{v.data(), 256, 256, 256}; };
    const auto interleaved = [](std::vector<uint8_t>& v) { return Quorin_Buffer{v.data(), 128, 512, 2048}; };
    const Quorin_Buffer c = planar(colour), a = planar(alpha), d = planar(out), po = interleaved(packedOut);
    ExpectEveryKernelGives(want, out, [&] { return QuorinClipToAlpha_Planar8(&c, &a, &d, 0); }, "Planar8");
    for (int m = 0; m < 2; ++m) {
        const Quorin_Buffer src = interleaved(packed[m]);
        ExpectEveryKernelGives(packedWant[m], packedOut, [&] { return members[m].second(&src, &po, 0); },
                               "alpha in channel " + std::to_string(members[m].first));
    }
}

uint32_t Bits(float f) {
    uint32_t u;
    std::memcpy(&u, &f, 4);
    return u;
}

// Colour becomes alpha only where alpha < colour: a NaN colour or alpha keeps
// the colour's bits, and so do equal values of either sign of zero.
TEST(ClipToAlpha, FloatReplacesColourOnlyWhereAlphaIsLess) {
    const float kOddNaN = -std::nanf("0x1234");
    const std::pair<float, float> pairs[] = {  // (colour, alpha)
        {0.5f, 0.25f}, {0.25f, 0.5f},   {NAN, 0.5f},      {kOddNaN, 0.5f},   {0.5f, NAN},      {0.5f, kOddNaN},
        {-0.0f, 0.0f}, {0.0f, -0.0f},   {INFINITY, 1.0f}, {-1.0f, -INFINITY}, {1e-40f, 1e-41f}, {1.0f, 1.0f}};
    constexpr size_t kRow = 67;  // whole vectors and a tail for each pair
    const size_t n = std::size(pairs) * kRow;
    std::vector<float> colour(n), alpha(n), out(n), argb(4 * n), rgba(4 * n), argbOut(4 * n), rgbaOut(4 * n);
    for (size_t i = 0; i < n; ++i) {
        const auto [c, a] = pairs[i / kRow];
        colour[i] = c, alpha[i] = a, argb[4 * i] = a, rgba[4 * i + 3] = a;
        for (int k = 0; k < 3; ++k) argb[4 * i + 1 + k] = c, rgba[4 * i + k] = c;
    }
    const auto planar = [&](std::vector<float>& v) { return Quorin_Buffer{v.data(), 1, n, 4 * n}; };
    const auto packed = [&](std::vector<float>& v) { return Quorin_Buffer{v.data(), 1, n, 16 * n}; };
    const Quorin_Buffer c = planar(colour), a = planar(alpha), p = planar(out);
    const Quorin_Buffer s1 = packed(argb), d1 = packed(argbOut), s2 = packed(rgba), d2 = packed(rgbaOut);
    ForEachKernel([&] {
        ASSERT_EQ(QuorinClipToAlpha_PlanarF(&c, &a, &p, 0), kQuorinSuccess);
        ASSERT_EQ(QuorinClipToAlpha_ARGBFFFF(&s1, &d1, 0), kQuorinSuccess);
        ASSERT_EQ(QuorinClipToAlpha_RGBAFFFF(&s2, &d2, 0), kQuorinSuccess);
        for (size_t i = 0; i < n && !HasFailure(); ++i) {
            const uint32_t want = Bits(alpha[i] < colour[i] ? alpha[i] : colour[i]), pair = uint32_t(i / kRow);
            EXPECT_EQ(Bits(out[i]), want) << "PlanarF, pair " << pair;
            EXPECT_EQ(Bits(argbOut[4 * i]), Bits(alpha[i])) << "ARGBFFFF alpha, pair " << pair;
            EXPECT_EQ(Bits(rgbaOut[4 * i + 3]), Bits(alpha[i])) << "RGBAFFFF alpha, pair " << pair;
            for (int k = 0; k < 3; ++k) {
                EXPECT_EQ(Bits(argbOut[4 * i + 1 + k]), want) << "ARGBFFFF, pair " << pair;
                EXPECT_EQ(Bits(rgbaOut[4 * i + k]), want) << "RGBAFFFF, pair " << pair;
            }
        }
    });
}

}  // namespace
}  // namespace quorin::test
