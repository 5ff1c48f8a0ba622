// The blend rules against the formulas written out in BlendTestSupport.h,
// under the scalar kernel and the vector kernel of every instruction set.
// The 8-bit members sweep their whole input space one value of a fourth
// input at a time (2^24 combinations per value): the suite runs chosen values,
// the DISABLED_ twins all 256 (minutes):
//   quorin_test_Alpha --gtest_also_run_disabled_tests --gtest_filter='BlendRules.*'
#include <array>

#include "BlendTestSupport.h"

namespace quorin::test {
namespace {

constexpr size_t kCombinations = size_t{1} << 24;
constexpr size_t kGroups = 86, kGroupPixels = 256 * 256 * kGroups;  // 3 values per pixel cover 0..255

std::vector<uint32_t> AllValues() {
    std::vector<uint32_t> values(256);
    for (uint32_t v = 0; v < 256; ++v) values[v] = v;
    return values;
}

Quorin_Buffer Flat(std::vector<uint8_t>& bytes, size_t pixelBytes) {
    return Quorin_Buffer{bytes.data(), bytes.size() / pixelBytes / 4096, 4096, 4096 * pixelBytes};
}

// For each value: fill(value) sets the inputs and `expected`; every kernel must then give it.
void Sweep(const std::vector<uint32_t>& values, const std::function<void(uint32_t)>& fill,
           const std::vector<uint8_t>& expected, std::vector<uint8_t>& out, const std::function<Quorin_Error()>& call,
           const std::string& what) {
    for (uint32_t value : values) {
        fill(value);
        ExpectEveryKernelGives(expected, out, call, what + " " + std::to_string(value));
        if (::testing::Test::HasFailure()) return;
    }
}

// Per top alpha, every (bottom alpha, top colour, bottom colour). Top alpha 1
// alone asks for every division the blend can: the bottom weight w runs
// through 0..254 with the bottom alpha, so the divisor 1 + w takes every
// value 1..255 and the dividend cB w + cT every value 0..255 (1 + w).
void StraightPlanar8(const std::vector<uint32_t>& topAlphas) {
    std::vector<uint8_t> p[6], out(2 * kCombinations), expected(2 * kCombinations);
    for (auto& plane : p) plane.resize(kCombinations);
    for (size_t i = 0; i < kCombinations; ++i) p[3][i] = uint8_t(i >> 16), p[0][i] = uint8_t(i >> 8), p[2][i] = uint8_t(i);
    Quorin_Buffer r[6];
    for (int i = 0; i < 6; ++i) r[i] = Flat(p[i], 1);
    const auto fill = [&](uint32_t aT) {
        std::fill(p[1].begin(), p[1].end(), uint8_t(aT));
        for (size_t i = 0; i < kCombinations; ++i) {
            const Straight s(aT, p[3][i]);
            expected[i] = s.colour(p[0][i], aT, p[2][i]);
            expected[kCombinations + i] = uint8_t(s.alpha);
        }
    };
    const auto call = [&] {
        const Quorin_Error e = QuorinAlphaBlend_Planar8(&r[0], &r[1], &r[2], &r[3], &r[4], &r[5], 0);
        std::copy(p[4].begin(), p[4].end(), out.begin());
        std::copy(p[5].begin(), p[5].end(), out.begin() + kCombinations);
        return e;
    };
    Sweep(topAlphas, fill, expected, out, call, "AlphaBlend_Planar8, top alpha");
}
TEST(BlendRules, StraightPlanar8) { StraightPlanar8({0, 1, 128, 255}); }
TEST(BlendRules, DISABLED_StraightPlanar8FullInputSpace) { StraightPlanar8(AllValues()); }

// Per top alpha, every (bottom alpha, top colour) with bottom colours 3g,
// 3g + 1 and 3g + 2 in the three channels.
void StraightARGB8888(const std::vector<uint32_t>& topAlphas) {
    std::vector<uint8_t> top(4 * kGroupPixels), bottom(4 * kGroupPixels), dest(4 * kGroupPixels), expected(dest.size());
    const Quorin_Buffer t = Flat(top, 4), b = Flat(bottom, 4), d = Flat(dest, 4);
    const auto fill = [&](uint32_t aT) {
        for (size_t i = 0; i < kGroupPixels; ++i) {
            const uint32_t aB = uint32_t(i / (256 * kGroups)), cT = (i / kGroups) % 256, g = i % kGroups;
            const Straight s(aT, aB);
            top[4 * i] = uint8_t(aT), bottom[4 * i] = uint8_t(aB), expected[4 * i] = uint8_t(s.alpha);
            for (uint32_t c = 1; c < 4; ++c) {
                const uint32_t cB = std::min<uint32_t>(3 * g + c - 1, 255);
                top[4 * i + c] = uint8_t(cT), bottom[4 * i + c] = uint8_t(cB), expected[4 * i + c] = s.colour(cT, aT, cB);
            }
        }
    };
    Sweep(topAlphas, fill, expected, dest, [&] { return QuorinAlphaBlend_ARGB8888(&t, &b, &d, 0); },
          "AlphaBlend_ARGB8888, top alpha");
}
TEST(BlendRules, StraightARGB8888) { StraightARGB8888({0, 1, 128, 255}); }
TEST(BlendRules, DISABLED_StraightARGB8888FullInputSpace) { StraightARGB8888(AllValues()); }

// Per top alpha, every (bottom alpha, S, D) in the layout above, for each mode.
// Colour above alpha (not premultiplied, but defined) is included.
void Modes(const std::vector<uint32_t>& topAlphas) {
    using Call = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
    const std::pair<Mode, Call> modes[] = {{kDarken, QuorinPremultipliedAlphaBlendDarken_RGBA8888},
                                           {kLighten, QuorinPremultipliedAlphaBlendLighten_RGBA8888},
                                           {kMultiply, QuorinPremultipliedAlphaBlendMultiply_RGBA8888},
                                           {kScreen, QuorinPremultipliedAlphaBlendScreen_RGBA8888}};
    std::vector<uint8_t> top(4 * kGroupPixels), bottom(4 * kGroupPixels), dest(4 * kGroupPixels), expected(dest.size());
    const Quorin_Buffer t = Flat(top, 4), b = Flat(bottom, 4), d = Flat(dest, 4);
    for (const auto& [mode, call] : modes) {
        const auto fill = [&, mode = mode](uint32_t sA) {
            for (size_t i = 0; i < kGroupPixels; ++i) {
                const uint32_t dA = uint32_t(i / (256 * kGroups)), s = (i / kGroups) % 256, g = i % kGroups;
                top[4 * i + 3] = uint8_t(sA), bottom[4 * i + 3] = uint8_t(dA);
                expected[4 * i + 3] = uint8_t(sA + ((255 - sA) * dA + 127) / 255);
                for (uint32_t c = 0; c < 3; ++c) {
                    const uint32_t dc = std::min<uint32_t>(3 * g + c, 255);
                    top[4 * i + c] = uint8_t(s), bottom[4 * i + c] = uint8_t(dc);
                    expected[4 * i + c] = ExpectedMode(mode, s, sA, dc, dA);
                }
            }
        };
        Sweep(topAlphas, fill, expected, dest, [&, call = call] { return call(&t, &b, &d, 0); },
              "mode " + std::to_string(mode) + ", top alpha");
    }
}
TEST(BlendRules, Modes) { Modes({0, 1, 128, 255}); }
TEST(BlendRules, DISABLED_ModesFullInputSpace) { Modes(AllValues()); }

// Per constant alpha k, every (T, A, B). A k crosses 6375 between k = 25 and
// 26 at A = 255; most (A, k) with k = 77 or 255 wrap.
void ConstAlphaPlanar8(const std::vector<uint32_t>& constAlphas) {
    std::vector<uint8_t> top(kCombinations), alpha(kCombinations), bottom(kCombinations), dest(kCombinations),
        expected(kCombinations);
    for (size_t i = 0; i < kCombinations; ++i) top[i] = uint8_t(i >> 16), alpha[i] = uint8_t(i >> 8), bottom[i] = uint8_t(i);
    const Quorin_Buffer t = Flat(top, 1), a = Flat(alpha, 1), b = Flat(bottom, 1), d = Flat(dest, 1);
    uint8_t k = 0;
    const auto fill = [&](uint32_t value) {
        k = uint8_t(value);
        for (size_t i = 0; i < kCombinations; ++i) expected[i] = ExpectedConstBlend(top[i], alpha[i], bottom[i], k);
    };
    Sweep(constAlphas, fill, expected, dest,
          [&] { return QuorinPremultipliedConstAlphaBlend_Planar8(&t, k, &a, &b, &d, 0); },
          "ConstAlphaBlend_Planar8, k");
}
TEST(BlendRules, ConstAlphaPlanar8) { ConstAlphaPlanar8({0, 1, 25, 26, 77, 255}); }
TEST(BlendRules, DISABLED_ConstAlphaPlanar8FullInputSpace) { ConstAlphaPlanar8(AllValues()); }

// The wrapping weight with worked numbers, on a row long enough for the
// vector loop and its tail.
TEST(BlendRules, ConstAlphaPlanar8WrapCases) {
    struct Example {
        uint8_t t, a, b, k, expected;
    } const examples[] = {
        {0, 0, 255, 255, 25},      // (6375 x 255 + 32385) / 65025
        {123, 77, 255, 0, 25},     // k = 0 leaves (6375 B + 32385) / 65025
        {200, 25, 255, 255, 200},  // A k = 6375: the bottom weighs nothing
        {0, 30, 255, 213, 0},      // A k = 6390: weight 2^32 - 15, n wraps to 28560
        {0, 255, 255, 255, 29},    // weight 2^32 - 58650: quotient 65821, low byte 29
        {255, 255, 255, 255, 25},  // so an opaque top does not come out as itself
    };
    constexpr size_t kRow = 67;
    std::vector<uint8_t> t(kRow), a(kRow), b(kRow), d(kRow), want(kRow);
    const Quorin_Buffer rt{t.data(), 1, kRow, kRow}, ra{a.data(), 1, kRow, kRow}, rb{b.data(), 1, kRow, kRow},
        rd{d.data(), 1, kRow, kRow};
    for (const Example& e : examples) {
        std::fill(t.begin(), t.end(), e.t), std::fill(a.begin(), a.end(), e.a), std::fill(b.begin(), b.end(), e.b);
        std::fill(want.begin(), want.end(), e.expected);
        ExpectEveryKernelGives(want, d, [&] { return QuorinPremultipliedConstAlphaBlend_Planar8(&rt, e.k, &ra, &rb, &rd, 0); },
                               "T A B k = " + std::to_string(e.t) + " " + std::to_string(e.a) + " " +
                                   std::to_string(e.b) + " " + std::to_string(e.k));
    }
}

// ---- Float members ------------------------------------------------------------

// Equal bits, or both NaN.
bool SameFloat(float a, float b) { return std::memcmp(&a, &b, 4) == 0 || (std::isnan(a) && std::isnan(b)); }

// w = (1 - aT) aB, aR = aT + w, colour (cT aT + cB w) / aR where aR > 0, else
// 0 (aR zero, negative or NaN). Awkward values first, then random ones.
TEST(BlendRules, StraightFloat) {
    std::vector<std::array<float, 4>> inputs{// (cT, aT, cB, aB)
                                             {0.7f, 0.0f, 0.3f, 0.0f},   {0.7f, -0.5f, 0.3f, 0.0f},
                                             {0.7f, 0.2f, 0.3f, -0.6f},  {0.7f, NAN, 0.3f, 0.5f},
                                             {NAN, 0.5f, 0.3f, 0.5f},    {2.0f, 1.5f, -1.0f, 0.5f},
                                             {0.7f, 1.0f, 0.3f, 1.0f},   {0.7f, 0.0f, 0.3f, 0.8f},
                                             {0.2f, 1e-40f, 0.5f, 1e-39f}, {0.7f, INFINITY, 0.3f, 0.5f}};
    for (size_t i = 0; i < 10; ++i) {
        const std::array<float, 4> repeated = inputs[i];
        inputs.insert(inputs.end(), 66, repeated);  // through the vector loop too
    }
    Random random(5);
    for (int i = 0; i < 1 << 15; ++i)
        inputs.push_back({random.uniform(-0.5f, 1.5f), random.uniform(-0.25f, 1.25f), random.uniform(-0.5f, 1.5f),
                          random.uniform(-0.25f, 1.25f)});
    const size_t n = inputs.size();
    std::vector<float> argb[3], planes[6];
    for (auto& v : argb) v.resize(4 * n);
    for (auto& v : planes) v.resize(n);
    for (size_t i = 0; i < n; ++i) {
        const auto [cT, aT, cB, aB] = inputs[i];
        planes[0][i] = cT, planes[1][i] = aT, planes[2][i] = cB, planes[3][i] = aB;
        argb[0][4 * i] = aT, argb[1][4 * i] = aB;
        for (int c = 1; c < 4; ++c) argb[0][4 * i + c] = cT * float(c), argb[1][4 * i + c] = cB - float(c - 1);
    }
    Quorin_Buffer ra[3], rp[6];
    for (int i = 0; i < 3; ++i) ra[i] = Quorin_Buffer{argb[i].data(), 1, n, 16 * n};
    for (int i = 0; i < 6; ++i) rp[i] = Quorin_Buffer{planes[i].data(), 1, n, 4 * n};
    ForEachKernel([&] {
        ASSERT_EQ(QuorinAlphaBlend_ARGBFFFF(&ra[0], &ra[1], &ra[2], 0), kQuorinSuccess);
        ASSERT_EQ(QuorinAlphaBlend_PlanarF(&rp[0], &rp[1], &rp[2], &rp[3], &rp[4], &rp[5], 0), kQuorinSuccess);
        for (size_t i = 0; i < n && !HasFailure(); ++i) {
            const float aT = planes[1][i], w = (1.0f - aT) * planes[3][i], aR = aT + w;
            const auto colour = [&](float cT, float cB) { return aR > 0.0f ? (cT * aT + cB * w) / aR : 0.0f; };
            EXPECT_TRUE(SameFloat(planes[5][i], aR) && SameFloat(argb[2][4 * i], aR)) << "alpha at " << i;
            EXPECT_TRUE(SameFloat(planes[4][i], colour(planes[0][i], planes[2][i]))) << "planar colour at " << i;
            for (int c = 1; c < 4; ++c)
                EXPECT_TRUE(SameFloat(argb[2][4 * i + c], colour(argb[0][4 * i + c], argb[1][4 * i + c])))
                    << "channel " << c << " at " << i;
        }
    });
}

}  // namespace
}  // namespace quorin::test
