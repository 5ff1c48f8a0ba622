// Flatten: every member against a formula computed apart from the kernels
// (floating-point division of exact integers, channels found by their
// letters), under every kernel and split, with plain and streaming stores;
// the 8-bit rule over every (colour, alpha, background), both colour kinds
// and both alpha positions; the wider depths over their boundaries and
// random values.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "Conversion/ChannelMembers.h"
#include "Conversion/ChannelRules.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using channels::Member;
using channels::Shape;

template <class T>
T Load(const uint8_t* p) {
    return channels::LoadElement(reinterpret_cast<const T*>(p));
}

// The value the description gives, with the alpha already in hand.
template <class T>
T Expected(T c, T a, T bg, bool whole, bool isAlpha) {
    if constexpr (std::is_floating_point_v<T>) {
        const float fill = (1.0f - a) * bg;
        const float value = whole ? c + fill : c * a + fill;
        return std::isnan(value) ? std::bit_cast<float>(0x7FC00000u) : value;
    } else {
        const long long m = std::is_same_v<T, uint8_t> ? 255 : std::is_same_v<T, uint16_t> ? 65535 : 4096;
        const long long alpha = std::is_signed_v<T> ? std::min<long long>(std::max<long long>(a, 0), m) : a;
        const long long colour = isAlpha ? alpha : c;
        const double sum = double(colour) * double(whole ? m : alpha) + double(m / 2) + double(m - alpha) * bg;
        const double value = std::trunc(sum / double(m));
        return static_cast<T>(std::min<double>(std::max<double>(value, std::numeric_limits<T>::min()),
                                               std::numeric_limits<T>::max()));
    }
}

// Checks every dest pixel of a flatten call against Expected.
template <class T>
void ExpectFlattened(const Member& m, const Quorin_Buffer& src, const Quorin_Buffer& dest, const T bg[4],
                     bool premultiplied) {
    const size_t alpha = static_cast<size_t>(m.format.alpha), outputs = m.output.channels;
    for (size_t y = 0; y < dest.height; ++y)
        for (size_t x = 0; x < dest.width; ++x) {
            const uint8_t* p = static_cast<const uint8_t*>(src.data) + y * src.rowBytes + x * 4 * sizeof(T);
            const uint8_t* q = static_cast<const uint8_t*>(dest.data) + y * dest.rowBytes + x * outputs * sizeof(T);
            const T a = Load<T>(p + alpha * sizeof(T));
            for (size_t k = 0; k < outputs; ++k) {
                const size_t from = static_cast<size_t>(m.format.positionOf(m.output.order[k]));
                const bool isAlpha = from == alpha;
                const T c = isAlpha ? a : Load<T>(p + from * sizeof(T));
                const T want = Expected<T>(c, a, bg[from], isAlpha || premultiplied, isAlpha);
                const T got = Load<T>(q + k * sizeof(T));
                if (std::memcmp(&want, &got, sizeof(T)) != 0) {
                    ADD_FAILURE() << m.name << " pixel " << x << "," << y << " channel " << k << ": got " << +got
                                  << ", want " << +want << " (c " << +c << ", a " << +a << ", bg " << +bg[from]
                                  << (premultiplied ? ", premultiplied)" : ")");
                    return;
                }
            }
        }
}

TEST(Flatten, EightBitIsExactForEveryColourAlphaAndBackground) {
    for (const Member* m : {&channels::kFlattenARGB8888, &channels::kFlattenRGBA8888}) {
        SCOPED_TRACE(m->name);
        // Column x, row y: alpha y, the colours x, 255 - x and x * 7 (mod 256).
        const size_t alpha = static_cast<size_t>(m->format.alpha);
        GuardedImage src(256, 256, 4, 0, 0);
        for (size_t y = 0; y < 256; ++y)
            for (size_t x = 0; x < 256; ++x) {
                const uint8_t colours[3] = {uint8_t(x), uint8_t(255 - x), uint8_t(x * 7)};
                uint8_t* p = src.row(y) + 4 * x;
                for (size_t c = 0, k = 0; c < 4; ++c) p[c] = c == alpha ? uint8_t(y) : colours[k++];
            }
        for (int premultiplied = 0; premultiplied < 2; ++premultiplied)
            for (unsigned b = 0; b < 256; ++b) {
                const uint8_t bg[4] = {uint8_t(b), uint8_t(b), uint8_t(255 - b), uint8_t(b ^ 0x5A)};
                std::vector<uint8_t> first;
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    GuardedImage dest(256, 256, 4, 0, 0);
                    EXPECT_EQ(m->run({src.record(), dest.record(), bg, 0, 0, flags, premultiplied}), kQuorinSuccess);
                    if (first.empty()) ExpectFlattened<uint8_t>(*m, *src.record(), *dest.record(), bg, premultiplied);
                    first = dest.pixels();
                    return first;
                }, KernelVariants());
                if (HasFailure()) return;
            }
    }
}

// The divisions the vector kernels make of shifts and a high multiply,
// against plain division over every value they meet.
TEST(Flatten, DivisionIdentitiesHoldOverTheirRanges) {
    for (uint32_t t = 0; t <= 65152; ++t) ASSERT_EQ((t + 1) * 257 >> 16, t / 255) << t;
    // Both sides are non-decreasing in t, so agreeing at both ends of each
    // quotient's run of t, they agree inside it.
    constexpr uint64_t kLargest = 65535ull * 65535 + 32767;
    for (uint64_t q = 0; q * 65535 <= kLargest; ++q)
        for (const uint64_t t : {q * 65535, std::min(q * 65535 + 65534, kLargest)}) {
            const uint32_t s = static_cast<uint32_t>(t + 1);  // in 32-bit lanes, as the kernels hold it
            ASSERT_EQ((s + (s >> 16)) >> 16, t / 65535) << t;
        }
}

// Samples that reach every edge of the rule, then random ones.
template <class T>
std::vector<T> Boundaries() {
    if constexpr (std::is_same_v<T, uint16_t>) return {0, 1, 2, 255, 256, 32767, 32768, 65533, 65534, 65535};
    else if constexpr (std::is_same_v<T, int16_t>)
        return {-32768, -32767, -4097, -4096, -4095, -2049, -2048, -1, 0, 1, 2047, 2048, 4095, 4096, 4097, 32767};
    else if constexpr (std::is_same_v<T, uint8_t>) return {0, 1, 127, 128, 254, 255};
    else
        return {std::numeric_limits<float>::quiet_NaN(), std::nanf("0x42"), std::numeric_limits<float>::infinity(),
                -std::numeric_limits<float>::infinity(), -0.0f, 0.0f, 1e-40f, 1.0f, 0.5f, 2.0f, -1.0f, 0.999f};
}

template <class T>
T RandomSample(Random& random) {
    if constexpr (std::is_floating_point_v<T>) return random.uniform(-0.25f, 1.25f);
    else return static_cast<T>(random.next());
}

template <class T>
void FlattenEveryWay(const Member& m) {
    SCOPED_TRACE(m.name);
    constexpr size_t kWidth = 263, kHeight = 251;
    const std::vector<T> edges = Boundaries<T>();
    GuardedImage src(kWidth, kHeight, 4 * sizeof(T), 8, 2);
    Random random(17);
    // Every fourth pixel takes boundary samples in every channel, the others
    // random ones, so the boundaries meet each other and the vector lanes.
    size_t n = 0;
    for (size_t y = 0; y < kHeight; ++y)
        for (size_t x = 0; x < kWidth; ++x, ++n)
            for (size_t c = 0; c < 4; ++c) {
                const T v = n % 4 == 0 ? edges[random.next() % edges.size()] : RandomSample<T>(random);
                std::memcpy(src.row(y) + (4 * x + c) * sizeof(T), &v, sizeof v);
            }
    for (int round = 0; round < 4; ++round) {
        T bg[4];
        for (T& v : bg) v = round < 3 ? edges[random.next() % edges.size()] : RandomSample<T>(random);
        const int premultiplied = round % 2;
        SCOPED_TRACE(round);
        bool first = true;  // the others must give its bytes
        for (const bool streamed : {false, true}) {
            std::optional<StreamingForced> streaming;
            if (streamed) streaming.emplace();
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                // Streamed rows start on every 4-byte boundary in turn; plain ones off their samples' alignment.
                GuardedImage dest(kWidth - 3, kHeight - 2, m.output.pixelBytes(), 4, streamed ? 0 : 1);
                EXPECT_EQ(m.run({src.record(), dest.record(), bg, 0, 0, flags, premultiplied}), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                if (std::exchange(first, false)) ExpectFlattened<T>(m, *src.record(), *dest.record(), bg, premultiplied);
                return dest.pixels();
            });
        }
    }
}

TEST(Flatten, EveryMemberMatchesTheFormulaUnderEveryKernelAndSplit) {
    for (const Member* m : channels::kChannelMembers) {
        if (m->shape != Shape::Flatten) continue;
        switch (m->format.sample) {
            case SampleKind::U8: FlattenEveryWay<uint8_t>(*m); break;
            case SampleKind::U16: FlattenEveryWay<uint16_t>(*m); break;
            case SampleKind::S16Q12: FlattenEveryWay<int16_t>(*m); break;
            case SampleKind::F32: FlattenEveryWay<float>(*m); break;
        }
    }
}

// Large random sets for the wide divisions, straight through the kernels.
TEST(Flatten, SixteenBitAndQ12DivisionsHoldOnMillionsOfRandomPixels) {
    for (const Member* m : {&channels::kFlattenARGB16U, &channels::kFlattenRGBA16Q12}) {
        SCOPED_TRACE(m->name);
        GuardedImage src(1024, 512, 8), dest(1024, 512, 8);
        src.fillRandom(m->format.sample == SampleKind::U16 ? 5 : 6);
        Random random(3);
        for (int round = 0; round < 4; ++round) {
            uint16_t bg[4];
            for (uint16_t& v : bg) v = static_cast<uint16_t>(random.next());
            const int premultiplied = round % 2;
            ASSERT_EQ(m->run({src.record(), dest.record(), bg, 0, 0, 0, premultiplied}), kQuorinSuccess);
            if (m->format.sample == SampleKind::U16) {
                ExpectFlattened<uint16_t>(*m, *src.record(), *dest.record(), bg, premultiplied);
            } else {
                ExpectFlattened<int16_t>(*m, *src.record(), *dest.record(), reinterpret_cast<const int16_t*>(bg),
                                         premultiplied);
            }
        }
    }
}

TEST(Flatten, TransparentGivesTheBackgroundAndOpaqueGivesThePixel) {
    const uint8_t bg[4] = {255, 10, 20, 30};
    GuardedImage src(2, 1, 4), dest(2, 1, 4);
    const uint8_t pixels[8] = {0, 99, 98, 97, 255, 1, 2, 3};
    std::memcpy(src.row(0), pixels, 8);
    for (int premultiplied = 0; premultiplied < 2; ++premultiplied) {
        ASSERT_EQ(channels::kFlattenARGB8888.run({src.record(), dest.record(), bg, 0, 0, 0, premultiplied}),
                  kQuorinSuccess);
        const std::vector<uint8_t> out = dest.pixels();
        if (premultiplied == 0) {
            EXPECT_EQ(std::memcmp(out.data(), bg, 4), 0);
        }
        EXPECT_EQ(std::memcmp(out.data() + 4, pixels + 4, 4), 0);
    }
}

// The size query returns 0 after the argument checks and writes nothing.
TEST(Flatten, SizeQueryReturnsZeroWithoutWriting) {
    const float bg[4] = {1, 0, 0, 0};
    GuardedImage src(20, 3, 16), dest(20, 3, 16);
    dest.fillBytes(0x77);
    const std::vector<uint8_t> before = dest.pixels();
    EXPECT_EQ(channels::kFlattenARGBFFFF.run({src.record(), dest.record(), bg, 0, 0, kQuorinFlag_QueryTempSize, 0}),
              kQuorinSuccess);
    EXPECT_EQ(dest.pixels(), before);
    EXPECT_EQ(channels::kFlattenARGBFFFF.run({src.record(), dest.record(), bg, 0, 0, 0x1, 0}),
              kQuorinError_UnsupportedFlags);
    EXPECT_EQ(channels::kFlattenARGBFFFF.run({src.record(), dest.record(), nullptr, 0, 0, 0, 0}),
              kQuorinError_NullPointer);
    EXPECT_EQ(dest.pixels(), before);
}

}  // namespace
}  // namespace quorin::test
