// Premultiply and unpremultiply: every kernel against formulas written apart
// from the rules (floating-point rounding instead of integer identities),
// exhaustively at 8 bits and over all alphas at 16 bits; every kernel and split
// on guarded images; in place; and the order of the argument checks.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include "Alpha/PremultiplyMembers.h"
#include "quorin/Alpha.h"
#include "quorin/Utilities.h"
#include "support/CheckOrder.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

enum class Depth { U8, U16, Q12, F32 };

// The family's member table, seen by these tests: the depth picks the
// independent formula, alpha is the channel of alpha (4 for a separate plane).
struct Member {
    const char* name;
    Depth depth;
    size_t alpha;
    bool premultiplies;
    const premultiply::Member* row;

    bool planar() const { return row->planar(); }
    size_t sampleBytes() const { return row->format.sampleBytes(); }
    size_t pixelBytes() const { return row->format.pixelBytes(); }
    Quorin_Error run(const Quorin_Buffer* src, const Quorin_Buffer* alphaPlane, const Quorin_Buffer* dest,
                     Quorin_Flags flags) const {
        return row->run(src, alphaPlane, dest, flags);
    }
};

Depth DepthOf(SampleKind kind) {
    switch (kind) {
        case SampleKind::U8: return Depth::U8;
        case SampleKind::U16: return Depth::U16;
        case SampleKind::S16Q12: return Depth::Q12;
        default: return Depth::F32;
    }
}

const std::vector<Member> kMembers = [] {
    std::vector<Member> members;
    for (const premultiply::Member* row : premultiply::kPremultiplyMembers)
        members.push_back({row->name, DepthOf(row->format.sample),
                           row->format.planar() ? 4 : static_cast<size_t>(row->format.alpha),
                           row->direction == premultiply::Direction::Premultiply, row});
    return members;
}();

// Members by name, for the tests that single some out.
const Member& Named(const char* name) {
    for (const Member& m : kMembers)
        if (std::strcmp(m.name, name) == 0) return m;
    std::abort();
}

// ---- Independent formulas: round to nearest in double precision -----------

// (c*a+127)/255: c*a/255 is never exactly halfway, so rounding to nearest is it.
int64_t Premultiplied(int64_t c, int64_t a, Depth depth) {
    switch (depth) {
        case Depth::U8: return std::lround(static_cast<double>(c * a) / 255.0);
        case Depth::U16: return std::llround(static_cast<double>(c * a) / 65535.0);
        default: {  // Q12: alpha clamped to 0..1.0, quotient truncated toward zero
            const int64_t clamped = std::clamp<int64_t>(a, 0, 4096);
            return static_cast<int64_t>(std::trunc(static_cast<double>(c * clamped + 2048) / 4096.0));
        }
    }
}

// (c*full + a/2)/a is c*full/a rounded to nearest with halves up; 8 bits
// saturate at 255, 16 bits clamp the colour to alpha first, 16Q12 truncates
// toward zero and keeps the low 16 bits.
int64_t Unpremultiplied(int64_t c, int64_t a, Depth depth) {
    if (a == 0) return 0;
    switch (depth) {
        case Depth::U8: return std::min<int64_t>(255, std::floor(c * 255.0 / a + 0.5));
        case Depth::U16: return static_cast<int64_t>(std::floor(std::min(c, a) * 65535.0 / a + 0.5));
        default: {
            const double n = std::min(c, a) * 4096.0 + std::trunc(a / 2.0);
            return static_cast<int16_t>(static_cast<uint16_t>(static_cast<int64_t>(std::trunc(n / a)) & 0xFFFF));
        }
    }
}

int64_t Sample(const uint8_t* p, Depth depth) {
    switch (depth) {
        case Depth::U8: return *p;
        case Depth::U16: { uint16_t v; std::memcpy(&v, p, 2); return v; }
        default: { int16_t v; std::memcpy(&v, p, 2); return v; }
    }
}

void StoreSample(uint8_t* p, int64_t value, Depth depth) {
    if (depth == Depth::U8) *p = static_cast<uint8_t>(value);
    else { const uint16_t v = static_cast<uint16_t>(value); std::memcpy(p, &v, 2); }
}

// The alpha a member writes.
int64_t WrittenAlpha(const Member& m, int64_t a) {
    return m.depth == Depth::Q12 && m.premultiplies ? std::clamp<int64_t>(a, 0, 4096) : a;
}

// Runs every integer member of `depth` on the (colour, alpha) pairs under every
// kernel and compares every channel with the independent formula. Pixel i
// holds pair i in its first colour channel and the colours of pairs i + 7919
// and i + 2 * 7919 in the others (at 8 bits: every colour with every alpha in
// every channel), `perRow` pixels a padded row.
void CheckPairs(const std::vector<std::pair<int64_t, int64_t>>& pairs, Depth depth, size_t perRow) {
    for (const Member& m : kMembers) {
        if (m.depth != depth) continue;
        SCOPED_TRACE(m.name);
        const size_t rows = (pairs.size() + perRow - 1) / perRow, bytes = m.sampleBytes();
        const size_t channels = m.planar() ? 1 : 4;
        GuardedImage src(perRow, rows, m.pixelBytes(), 12), alpha(perRow, rows, bytes, 4);
        src.fillBytes(0);
        alpha.fillBytes(0);
        std::vector<int64_t> expected;  // per sample of the destination, in order
        for (size_t i = 0; i < perRow * rows; ++i) {
            const size_t x = i % perRow, y = i / perRow;
            const int64_t a = i < pairs.size() ? pairs[i].second : 0;
            if (m.planar()) StoreSample(alpha.row(y) + x * bytes, a, depth);
            for (size_t ch = 0, k = 0; ch < channels; ++ch) {
                const bool isAlpha = ch == m.alpha;
                const int64_t c = isAlpha || i >= pairs.size() ? a : pairs[(i + 7919 * k++) % pairs.size()].first;
                StoreSample(src.row(y) + x * m.pixelBytes() + ch * bytes, c, depth);
                expected.push_back(isAlpha ? WrittenAlpha(m, a)
                                           : m.premultiplies ? Premultiplied(c, a, depth) : Unpremultiplied(c, a, depth));
            }
        }
        for (const Variant& variant : KernelVariants()) {
            VariantScope scope(variant);
            GuardedImage dest(perRow, rows, m.pixelBytes(), 8, bytes);  // a sample off the vector alignment
            ASSERT_EQ(m.run(src.record(), alpha.record(), dest.record(), 0), kQuorinSuccess);
            ASSERT_EQ(dest.damagedGuard(), "") << variant.name;
            const std::vector<uint8_t> out = dest.pixels();
            size_t bad = 0;
            for (size_t j = 0; j < expected.size(); ++j) {
                const int64_t got = Sample(out.data() + j * bytes, depth);
                if (got != expected[j] && bad++ < 5)
                    ADD_FAILURE() << variant.name << ": sample " << j << " is " << got << ", expected " << expected[j];
            }
            EXPECT_EQ(bad, 0u) << variant.name;
        }
    }
}

TEST(Premultiply, EveryKernelGivesEvery8BitPairExactly) {
    std::vector<std::pair<int64_t, int64_t>> pairs;
    for (int a = 0; a < 256; ++a)
        for (int c = 0; c < 256; ++c) pairs.emplace_back(c, a);
    CheckPairs(pairs, Depth::U8, 1001);
}

// Every alpha with the colours around it, the extremes and a random spread.
std::vector<std::pair<int64_t, int64_t>> DensePairs(int64_t lo, int64_t hi, std::vector<int64_t> fixed) {
    Random random(7);
    std::vector<std::pair<int64_t, int64_t>> pairs;
    for (int64_t a = lo; a <= hi; ++a) {
        for (int64_t c : fixed) pairs.emplace_back(c, a);
        for (int64_t d = -2; d <= 2; ++d) pairs.emplace_back(std::clamp(a + d, lo, hi), a);
        for (int k = 0; k < 5; ++k) pairs.emplace_back(lo + static_cast<int64_t>(random.next() % (hi - lo + 1)), a);
    }
    return pairs;
}

TEST(Premultiply, EveryKernelGivesEvery16BitAlphaExactly) {
    CheckPairs(DensePairs(0, 65535, {0, 1, 2, 32767, 32768, 65534, 65535}), Depth::U16, 4099);
}

TEST(Premultiply, EveryKernelGivesEvery16Q12AlphaExactly) {
    CheckPairs(DensePairs(-32768, 32767, {-32768, -32767, -4097, -1, 0, 1, 2047, 4095, 4096, 4097, 32767}),
               Depth::Q12, 4099);
}

// ---- Float: special values, against double-precision products -------------

float Bits(uint32_t bits) { float f; std::memcpy(&f, &bits, 4); return f; }

TEST(Premultiply, EveryFloatKernelMatchesCorrectlyRoundedProducts) {
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> specials{0.0f, -0.0f, Bits(1), Bits(0x807FFFFF), 1e-38f, -1e-38f, 1.0f, -1.0f,
                                      0.5f, 3.0f, 1e38f, -1e38f, inf, -inf, std::numeric_limits<float>::max()};
    Random random(3);
    auto value = [&](bool allowNan) {
        const uint64_t r = random.next();
        if (allowNan && r % 17 == 0) return nan;
        return r % 3 == 0 ? specials[(r >> 8) % specials.size()] : random.uniform(-2.0f, 2.0f);
    };
    for (const Member& m : kMembers) {
        if (m.depth != Depth::F32) continue;
        SCOPED_TRACE(m.name);
        const size_t width = 333, height = 61, channels = m.planar() ? 1 : 4;
        GuardedImage src(width, height, m.pixelBytes(), 4), alpha(width, height, 4);
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x) {
                float* p = src.pixel<float>(x, y);
                const float a = value(true);
                *alpha.pixel<float>(x, y) = a;
                for (size_t ch = 0; ch < channels; ++ch) p[ch] = ch == m.alpha ? a : value(!std::isnan(a));
            }
        for (const Variant& variant : KernelVariants()) {
            VariantScope scope(variant);
            GuardedImage dest(width, height, m.pixelBytes(), 4);
            ASSERT_EQ(m.run(src.record(), alpha.record(), dest.record(), 0), kQuorinSuccess);
            ASSERT_EQ(dest.damagedGuard(), "");
            size_t bad = 0;
            for (size_t y = 0; y < height; ++y)
                for (size_t x = 0; x < width; ++x)
                    for (size_t ch = 0; ch < channels; ++ch) {
                        const float a = m.planar() ? *alpha.pixel<float>(x, y) : src.pixel<float>(x, y)[m.alpha];
                        const float c = src.pixel<float>(x, y)[ch], got = dest.pixel<float>(x, y)[ch];
                        const double factor = m.premultiplies ? a : a == 0.0f ? 0.0 : static_cast<float>(1.0 / a);
                        const float want = ch == m.alpha ? a : static_cast<float>(c * factor);
                        const bool same = std::isnan(want) ? std::isnan(got) : std::memcmp(&want, &got, 4) == 0;
                        if (!same && bad++ < 5)
                            ADD_FAILURE() << variant.name << " at " << x << "," << y << "," << ch << ": c " << c
                                          << " a " << a << " gave " << got << ", expected " << want;
                    }
            EXPECT_EQ(bad, 0u) << variant.name;
        }
    }
}

// ---- Every kernel and split, guarded, in place -----------------------------

void FillSource(GuardedImage& image, const Member& m, uint64_t seed) {
    if (m.depth == Depth::F32) image.fillRandomFloats(seed, -0.25f, 1.25f);
    else image.fillRandom(seed);
}

TEST(Premultiply, SameBytesForEveryKernelSplitAndLayout) {
    struct Shape { size_t width, height, padding, offset; };
    // 252 x 253 stays on the calling thread, 253 x 253 (64,009 pixels) is split.
    const Shape shapes[] = {{1, 1, 0, 0}, {7, 3, 5, 1}, {37, 5, 0, 2}, {252, 253, 0, 0}, {253, 253, 4, 1}};
    for (const Member& m : kMembers) {
        for (const Shape& s : shapes) {
            SCOPED_TRACE(testing::Message() << m.name << " " << s.width << "x" << s.height << " padding " << s.padding);
            // Samples stay naturally aligned: paddings and offsets count samples.
            const size_t padding = s.padding * m.sampleBytes(), offset = s.offset * m.sampleBytes();
            GuardedImage src(s.width, s.height, m.pixelBytes(), padding, offset);
            GuardedImage alpha(s.width, s.height, m.sampleBytes(), padding);
            FillSource(src, m, s.width * 31 + s.height);
            FillSource(alpha, m, s.width + 5);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(s.width, s.height, m.pixelBytes(), padding, offset);
                EXPECT_EQ(m.run(src.record(), alpha.record(), dest.record(), flags), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                // In place: the source itself as destination gives the same bytes.
                GuardedImage inPlace(s.width, s.height, m.pixelBytes(), padding, offset);
                FillSource(inPlace, m, s.width * 31 + s.height);
                EXPECT_EQ(m.run(inPlace.record(), alpha.record(), inPlace.record(), flags), kQuorinSuccess);
                EXPECT_EQ(inPlace.pixels(), dest.pixels());
                EXPECT_EQ(inPlace.damagedGuard(), "");
                return dest.pixels();
            });
        }
    }
}

// Large destinations are written past the caches when source and destination
// share their alignment (forced here on small ones); the same bytes must come
// out either way. The walk is shared, so one interleaved and one planar
// member stand for all.
TEST(Premultiply, StreamedRunsGiveTheSameBytes) {
    const StreamingForced forced;
    const std::vector<Variant> kernels = KernelVariants();
    for (const Member& m : {Named("QuorinUnpremultiplyData_ARGB8888"), Named("QuorinPremultiplyData_PlanarF")}) {
        const size_t width = (m.planar() ? 4096 : 2048) / m.sampleBytes() / 16, height = 64;
        for (const size_t destOffset : {0, 4}) {
            SCOPED_TRACE(testing::Message() << m.name << " destination offset " << destOffset);
            GuardedImage src(width, height, m.pixelBytes()), alpha(width, height, m.sampleBytes());
            FillSource(src, m, 11);
            FillSource(alpha, m, 12);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(width, height, m.pixelBytes(), 0, destOffset);
                EXPECT_EQ(m.run(src.record(), alpha.record(), dest.record(), flags), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                return dest.pixels();
            }, kernels);
        }
    }
}

// Every member asks the processor-feature test for its kernel (after its
// checks), so an unsupported speed-up switch ends the process there.
TEST(PremultiplyDeathTest, EveryMemberConsultsTheFeatureTest) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        GuardedImage src(3, 2, m.pixelBytes()), alpha(3, 2, m.sampleBytes()), dest(3, 2, m.pixelBytes());
        EXPECT_DEATH((Quorin_Boosten(1), m.run(src.record(), alpha.record(), dest.record(), 0)),
                     "GetCPUFeatures .*:66: unsupported processor feature");
        // A failed check, even the last one, returns before the kernel is chosen.
        GuardedImage narrow(2, 2, m.pixelBytes());
        EXPECT_EXIT((Quorin_Boosten(1), std::exit(m.run(src.record(), alpha.record(), narrow.record(), 0) ==
                                                  kQuorinError_BadArgument ? 0 : 1)),
                    testing::ExitedWithCode(0), "");
    }
}

// ---- Argument checks --------------------------------------------------------

TEST(Premultiply, ChecksInOrderAndWritesNothingOnFailure) {
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        GuardedImage src(5, 4, m.pixelBytes()), alpha(5, 4, m.sampleBytes()), dest(5, 4, m.pixelBytes());
        FillSource(src, m, 1);
        FillSource(alpha, m, 2);
        std::vector<GuardedImage*> images{&src, &dest};
        if (m.planar()) images.insert(images.begin() + 1, &alpha);
        ExpectCheckOrder(m.row->checks, images, {images.size() - 1},
                         [&m](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                             return m.planar() ? m.run(r[0], r[1], r[2], flags) : m.run(r[0], nullptr, r[1], flags);
                         });
    }
}

// No flag is tested: bits other than single-threaded are ignored, and an
// empty image succeeds without touching anything.
TEST(Premultiply, IgnoresOtherFlagsAndSucceedsOnEmptyImages) {
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        GuardedImage src(5, 4, m.pixelBytes()), alpha(5, 4, m.sampleBytes()), dest(5, 4, m.pixelBytes());
        FillSource(src, m, 1);
        FillSource(alpha, m, 2);
        GuardedImage plain(5, 4, m.pixelBytes());
        EXPECT_EQ(m.run(src.record(), alpha.record(), dest.record(), ~Quorin_Flags{kQuorinFlag_SingleThreaded}), 0);
        EXPECT_EQ(m.run(src.record(), alpha.record(), plain.record(), 0), kQuorinSuccess);
        EXPECT_EQ(dest.pixels(), plain.pixels());
        for (const bool zeroWidth : {true, false}) {
            Quorin_Buffer s = *src.record(), a = *alpha.record(), d = *dest.record();
            (zeroWidth ? s.width : s.height) = 0, (zeroWidth ? a.width : a.height) = 0;
            (zeroWidth ? d.width : d.height) = 0;
            dest.fillBytes(0x5A);
            EXPECT_EQ(m.run(&s, &a, &d, 0), kQuorinSuccess);
            EXPECT_EQ(dest.pixels(), std::vector<uint8_t>(5 * 4 * m.pixelBytes(), 0x5A));
        }
    }
}

}  // namespace
}  // namespace quorin::test
