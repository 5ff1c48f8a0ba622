// The three-channel matrix: every cell under every kernel and split on
// guarded images, every channel value of every packed, 8-bit and 16-bit
// source against the depth table written out here apart from the kernels,
// the one-run rule for contiguous rows, and the check order.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

#include "Conversion/PackedMembers.h"
#include "support/CheckOrder.h"
#include "support/Codes.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using packed::MatrixMember;

// Enough pixels for every 16-bit value and to split; odd, so rows end in tails.
constexpr size_t kWidth = 257, kHeight = 256;

// The depth table, one line a row of it, and the 5-to-6-bit green.
uint32_t Expected(uint32_t v, unsigned from, unsigned to) {
    switch (from * 100 + to) {
        case 508: return (v * 255 + 15) / 31;
        case 608: return (v * 255 + 31) / 63;
        case 805: return (v * 31 + 127) / 255;
        case 806: return (v * 63 + 127) / 255;
        case 1608: return (v * 255 + 32767) / 65535;
        case 816: return v * 257;
        case 516: return (v * 65535 + 15) / 31;
        case 616: return (v * 65535 + 31) / 63;
        case 1605: return (v * 31 + 32767) / 65535;
        case 1606: return (v * 63 + 32767) / 65535;
        case 506: return (v * 63 + 15) / 31;
        case 505: case 606: case 808: case 1616: return v;
    }
    ADD_FAILURE() << "no rule from " << from << " to " << to << " bits";
    return 0;
}

// Integer to float: times the single-precision reciprocal of the maximum.
float ExpectedFloat(uint32_t v, unsigned from) {
    const float reciprocal = from == 5 ? 0.032258064f : from == 6 ? 0.015873016f : from == 8 ? 0.003921569f
                                                                                            : 1.5259022e-05f;
    return static_cast<float>(v) * reciprocal;
}

TEST(PackedMatrix, ReciprocalsAreTheSinglePrecisionOnes) {
    EXPECT_EQ(ExpectedFloat(1, 5), 1.0f / 31.0f);
    EXPECT_EQ(ExpectedFloat(1, 6), 1.0f / 63.0f);
    EXPECT_EQ(ExpectedFloat(1, 8), 1.0f / 255.0f);
    EXPECT_EQ(ExpectedFloat(1, 16), 1.0f / 65535.0f);
    EXPECT_EQ(ExpectedFloat(255, 8), 1.0f);
}

// A channel as the format describes it: {value, bits}; floats by their bits.
struct Channel {
    uint32_t value;
    unsigned bits;  // 0: a float, `value` holds its bits
};

Channel Read(const PixelFormat& f, const uint8_t* pixel, char letter) {
    const int c = f.positionOf(letter);
    if (f.packed()) {
        const uint32_t word = pixel[0] | pixel[1] << 8;
        return {word >> f.fields[c].shift & ((1u << f.fields[c].bits) - 1), f.fields[c].bits};
    }
    if (f.sample == SampleKind::U8) return {pixel[c], 8};
    if (f.sample == SampleKind::U16) return {static_cast<uint32_t>(pixel[2 * c] | pixel[2 * c + 1] << 8), 16};
    uint32_t bits;
    std::memcpy(&bits, pixel + 4 * c, 4);
    return {bits, 0};
}

// A source holding every value of every channel of its depth: packed words
// 0..65535; 8- and 16-bit channels running through all their values at
// different paces; floats of every kind. The rest of the pixels random.
GuardedImage Source(const PixelFormat& f, size_t padding, size_t offset) {
    GuardedImage image(kWidth, kHeight, f.pixelBytes(), padding, offset);
    image.fillRandom(0x5A17 + f.pixelBytes());
    const float specials[] = {0.0f, -0.0f, 1.0f, 0.5f, -3.25f, 1e-40f, __builtin_inff(), __builtin_nanf("0x123")};
    for (size_t i = 0; i < 65536; ++i) {
        uint8_t* p = image.pixel<uint8_t>(i % kWidth, i / kWidth);
        if (f.packed()) {
            p[0] = static_cast<uint8_t>(i), p[1] = static_cast<uint8_t>(i >> 8);
            continue;
        }
        const uint32_t values[3] = {static_cast<uint32_t>(i), static_cast<uint32_t>(65535 - i),
                                    static_cast<uint32_t>(i * 40503u) & 0xFFFF};
        for (int k = 0; k < 3; ++k) {
            const int c = f.positionOf("RGB"[k]);
            const uint32_t v = f.sample == SampleKind::U8 ? (values[k] >> (k == 1 ? 8 : 0)) & 0xFF : values[k];
            if (f.sample == SampleKind::U8) p[c] = static_cast<uint8_t>(v);
            else if (f.sample == SampleKind::U16) p[2 * c] = static_cast<uint8_t>(v), p[2 * c + 1] = static_cast<uint8_t>(v >> 8);
            else if (i % 3 == 0) std::memcpy(p + 4 * c, &specials[(i / 3 + k) % 8], 4);
        }
    }
    return image;
}

// Every pixel of dest against the table, from src read apart from the kernels.
void ExpectConverted(const MatrixMember& m, const GuardedImage& src, const uint8_t* out, size_t outRowBytes) {
    for (size_t y = 0; y < kHeight; ++y)
        for (size_t x = 0; x < kWidth; ++x) {
            const uint8_t* s = src.row(y) + x * m.from.pixelBytes();
            const uint8_t* d = out + y * outRowBytes + x * m.to.pixelBytes();
            for (const char letter : {'R', 'G', 'B'}) {
                const Channel in = Read(m.from, s, letter), got = Read(m.to, d, letter);
                uint32_t want = in.value;
                if (got.bits == 0 && in.bits != 0) {
                    const float f = ExpectedFloat(in.value, in.bits);
                    std::memcpy(&want, &f, 4);
                } else if (got.bits != 0) {
                    want = Expected(in.value, in.bits, got.bits);
                }
                ASSERT_EQ(got.value, want) << m.name << " pixel " << x << "," << y << " " << letter << " from "
                                           << in.value;
            }
        }
}

TEST(PackedMatrix, EveryCellGivesTheTableUnderEveryKernelAndSplit) {
    for (const MatrixMember& m : packed::kMatrixMembers) {
        SCOPED_TRACE(m.name);
        // Rows of each its own length: row by row (one run is proved below);
        // the second round with streaming stores, which start at a vector boundary.
        for (const bool streamed : {false, true})
        for (const size_t padding : {size_t{6}}) {
            std::optional<StreamingForced> forced;
            if (streamed) forced.emplace();
            const GuardedImage src = Source(m.from, padding, 2);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(kWidth, kHeight, m.to.pixelBytes(), padding + 1, 1);
                dest.fillRandom(3);
                EXPECT_TRUE(ReturnsCode(m.run(src.record(), dest.record(), flags), kQuorinSuccess));
                EXPECT_EQ(dest.damagedGuard(), "");
                ExpectConverted(m, src, dest.row(0), dest.rowBytes());
                return dest.pixels();
            });
            EXPECT_EQ(src.damagedGuard(), "");
        }
    }
}

// Source rows exactly width x its pixel size and dest's rowBytes equal to
// src's: one run, the output packed from the first byte across row ends.
// Either condition missing: row by row.
TEST(PackedMatrix, ContiguousSourceRowsAndEqualRowBytesMakeOneRun) {
    for (const MatrixMember& m : packed::kMatrixMembers) {
        if (m.to.pixelBytes() > m.from.pixelBytes()) continue;  // dest rows would be too short to describe
        SCOPED_TRACE(m.name);
        const GuardedImage src = Source(m.from, 0, 0);
        const size_t in = m.from.pixelBytes(), out = m.to.pixelBytes();
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
            GuardedImage dest(kWidth * in, kHeight, 1);  // rows of src's byte length
            Quorin_Buffer record = *dest.record();
            record.width = kWidth;
            dest.fillRandom(9);
            const std::vector<uint8_t> before = dest.pixels();
            EXPECT_TRUE(ReturnsCode(m.run(src.record(), &record, flags), kQuorinSuccess));
            EXPECT_EQ(dest.damagedGuard(), "");
            ExpectConverted(m, src, dest.row(0), kWidth * out);
            const std::vector<uint8_t> after = dest.pixels();
            const size_t written = kWidth * kHeight * out;
            EXPECT_TRUE(std::equal(after.begin() + written, after.end(), before.begin() + written));
            return after;
        });
    }
    // Padded source rows with equal rowBytes, and contiguous ones with a
    // destination of its own row length: each row into its own row.
    const MatrixMember& cell = packed::kMatrixMembers[packed::CellOf(&QuorinConvert_ARGB8888toRGB888)];
    for (const size_t padding : {size_t{0}, size_t{4}}) {
        const GuardedImage src = Source(cell.from, padding, 0);
        GuardedImage dest(kWidth, kHeight, 3, padding ? kWidth + padding : 0);
        ASSERT_EQ(dest.rowBytes() == src.rowBytes(), padding != 0);
        EXPECT_EQ(cell.run(src.record(), dest.record(), 0), kQuorinSuccess);
        ExpectConverted(cell, src, dest.row(0), dest.rowBytes());
        EXPECT_EQ(dest.damagedGuard(), "");
    }
}

TEST(PackedMatrix, DescribedValues) {
    const auto convert = [](auto entry, std::vector<uint8_t> in, size_t outBytes) {
        GuardedImage src(1, 1, in.size()), dest(1, 1, outBytes);
        std::memcpy(src.row(0), in.data(), in.size());
        EXPECT_EQ(entry(src.record(), dest.record(), 0), kQuorinSuccess);
        return dest.pixels();
    };
    EXPECT_EQ(convert(QuorinConvert_RGB565toRGB888, {0xFF, 0xFF}, 3), (std::vector<uint8_t>{255, 255, 255}));
    EXPECT_EQ(convert(QuorinConvert_RGB565toRGB888, {0x41, 0x08}, 3), (std::vector<uint8_t>{8, 8, 8}));
    // (255, 128, 0) packs as fields (31, 32, 0).
    EXPECT_EQ(convert(xQuorinConvert_RGB888toRGB565, {255, 128, 0}, 2), (std::vector<uint8_t>{0x00, 0xFC}));
    EXPECT_EQ(convert(xQuorinConvert_RGB888toRGB16U, {255, 1, 0}, 6), (std::vector<uint8_t>{255, 255, 1, 1, 0, 0}));
    EXPECT_EQ(convert(QuorinConvert_ARGB8888toRGB888, {9, 1, 2, 3}, 3), (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_EQ(convert(xQuorinConvert_RGBA8888toBGR888, {1, 2, 3, 9}, 3), (std::vector<uint8_t>{3, 2, 1}));
    // BGR565: blue in the high five bits.
    EXPECT_EQ(convert(xQuorinConvert_RGB888toBGR565, {0, 0, 255}, 2), (std::vector<uint8_t>{0x00, 0xF8}));
    // RGBA5551: alpha in bit 0 is dropped.
    EXPECT_EQ(convert(QuorinConvert_RGBA5551toRGB565, {0x01, 0x00}, 2), (std::vector<uint8_t>{0, 0}));
}

// Null records, then the size query (answered whatever the rest), then
// sizes, then records that cannot describe their image or have no pixels;
// no flag refused.
TEST(PackedMatrix, ChecksInOrderAndNoFlagRefused) {
    for (const MatrixMember& m : packed::kMatrixMembers) {
        SCOPED_TRACE(m.name);
        GuardedImage src(5, 3, m.from.pixelBytes(), 1), dest(5, 3, m.to.pixelBytes(), 2);
        ExpectCheckOrder(m.checks, {&src, &dest}, {1}, [&](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags f) {
            return m.run(r[0], r[1], f);
        });
        Quorin_Buffer bad = *dest.record();
        bad.data = nullptr;
        bad.width = 4;
        bad.rowBytes = 1;
        EXPECT_EQ(m.run(src.record(), &bad, kQuorinFlag_QueryTempSize), kQuorinSuccess);
        EXPECT_EQ(m.run(nullptr, dest.record(), kQuorinFlag_QueryTempSize), kQuorinError_NullPointer);
        EXPECT_EQ(m.run(src.record(), &bad, 0), kQuorinError_BadArgument);
        EXPECT_EQ(m.run(src.record(), dest.record(), ~Quorin_Flags{kQuorinFlag_QueryTempSize}), kQuorinSuccess);
        Quorin_Buffer empty = *dest.record(), emptySrc = *src.record();
        empty.height = emptySrc.height = 0;
        EXPECT_EQ(m.run(&emptySrc, &empty, 0), kQuorinSuccess);
        EXPECT_EQ(dest.damagedGuard(), "");
    }
}

// ---- Adding alpha ------------------------------------------------------------------

using packed::AlphaCall;
using packed::AlphaMember;

// The premultiplication written out per depth.
uint32_t ExpectedPremultiplied(uint32_t c, uint32_t a, unsigned depth) {
    return depth == 8 ? (c * a + 127) / 255 : static_cast<uint32_t>((uint64_t{c} * a + 32767) / 65535);
}

// Every pixel of dest from src, the plane (or the constant) and the switch.
void ExpectAlphaAdded(const AlphaMember& m, const GuardedImage& src, const GuardedImage* plane, const AlphaCall& call,
                      const GuardedImage& dest) {
    const bool multiply = call.premultiply == 1 && m.takesPlane();
    for (size_t y = 0; y < kHeight; ++y)
        for (size_t x = 0; x < kWidth; ++x) {
            const uint8_t* s = src.row(y) + x * m.from.pixelBytes();
            const uint8_t* d = dest.row(y) + x * m.to.pixelBytes();
            const Channel alpha = Read(m.to, d, 'A');
            uint32_t a = 0;
            if (alpha.bits == 0) {
                const float want = plane ? ExpectedFloat(plane->row(y)[x], 8) : static_cast<float>(call.constant);
                std::memcpy(&a, &want, 4);
            } else {
                a = plane ? Expected(plane->row(y)[x], 8, alpha.bits) : static_cast<uint32_t>(call.constant);
            }
            ASSERT_EQ(alpha.value, a) << m.name << " alpha at " << x << "," << y;
            for (const char letter : {'R', 'G', 'B'}) {
                const Channel in = Read(m.from, s, letter), got = Read(m.to, d, letter);
                uint32_t want = in.bits == 0 ? in.value : Expected(in.value, in.bits, got.bits);
                if (multiply && got.bits != 0) want = ExpectedPremultiplied(want, a, got.bits);
                if (multiply && got.bits == 0) {
                    float c, f;
                    std::memcpy(&c, &in.value, 4), std::memcpy(&f, &a, 4);
                    c = c * f;
                    std::memcpy(&want, &c, 4);
                    if (std::isnan(c)) want = 0x7FC00000;  // every NaN product is the one quiet NaN
                }
                ASSERT_EQ(got.value, want) << m.name << " " << letter << " at " << x << "," << y << " from " << in.value
                                           << " alpha " << a;
            }
        }
}

// Every colour with every alpha byte (8-bit: all 65536 pairs; 565: every
// word), the constant, and switches of 0, 1 and 2.
TEST(PackedAlpha, EveryMemberGivesTheRulesUnderEveryKernelAndSplit) {
    for (const AlphaMember& m : packed::kAlphaMembers) {
        SCOPED_TRACE(m.name);
        const GuardedImage src = Source(m.from, 3, 1);
        GuardedImage plane(kWidth, kHeight, 1, 2, 3);
        for (size_t i = 0; i < kWidth * kHeight; ++i) plane.row(i / kWidth)[i % kWidth] = static_cast<uint8_t>(i >> 8);
        const bool floats = m.to.sample == SampleKind::F32;
        for (const bool streamed : {false, true})  // streaming stores start at a vector boundary
        for (const bool withPlane : {true, false}) {
            std::optional<StreamingForced> forced;
            if (streamed) forced.emplace();
            for (const int premultiply : {0, 1, 2}) {
                if (!m.takesPlane() && (withPlane || premultiply != 0)) continue;
                // Padded rows for one switch, one run for the others.
                for (const size_t padding : {size_t{premultiply == 1 ? 4u : 0u}}) {
                    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                        GuardedImage dest(kWidth, kHeight, m.to.pixelBytes(), padding, 2);
                        dest.fillRandom(5);
                        const double constant = floats ? 0.625 : m.to.sampleBytes() == 2 ? 40000 : 200;
                        const AlphaCall call{src.record(), withPlane ? plane.record() : nullptr, constant,
                                             dest.record(), premultiply, flags};
                        EXPECT_TRUE(ReturnsCode(m.run(call), kQuorinSuccess));
                        EXPECT_EQ(dest.damagedGuard(), "");
                        ExpectAlphaAdded(m, src, withPlane ? &plane : nullptr, call, dest);
                        return dest.pixels();
                    });
                }
            }
        }
    }
}

TEST(PackedAlpha, ChecksInOrder) {
    for (const AlphaMember& m : packed::kAlphaMembers) {
        SCOPED_TRACE(m.name);
        GuardedImage src(5, 3, m.from.pixelBytes(), 1), dest(5, 3, m.to.pixelBytes(), 2), plane(5, 3, 1, 1);
        const auto call = [&](const Quorin_Buffer* s, const Quorin_Buffer* d, const Quorin_Buffer* a, Quorin_Flags f) {
            return m.run({s, m.takesPlane() ? a : nullptr, 7, d, 1, f});
        };
        std::vector<GuardedImage*> images{&src, &dest};
        if (m.takesPlane()) images.push_back(&plane);
        ExpectCheckOrder(m.checks, images, {1}, [&](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags f) {
            return call(r[0], r[1], r.size() > 2 ? r[2] : nullptr, f);
        });
        // The size query first of all, read in the low byte only.
        EXPECT_EQ(call(nullptr, nullptr, nullptr, kQuorinFlag_QueryTempSize), kQuorinSuccess);
        EXPECT_EQ(call(nullptr, dest.record(), nullptr, 0x100), kQuorinError_BadArgument);
        EXPECT_EQ(call(src.record(), dest.record(), nullptr, ~Quorin_Flags{0xFF}), kQuorinSuccess);
        EXPECT_EQ(dest.damagedGuard(), "");
    }
}

TEST(PackedAlpha, DescribedValues) {
    GuardedImage rgb(1, 1, 3), out(1, 1, 4), word(1, 1, 2);
    const uint8_t colour[3] = {200, 100, 0};
    std::memcpy(rgb.row(0), colour, 3);
    ASSERT_EQ(QuorinConvert_RGB888toBGRA8888(rgb.record(), nullptr, 128, out.record(), 1, 0), kQuorinSuccess);
    EXPECT_EQ(out.pixels(), (std::vector<uint8_t>{0, 50, 100, 128}));  // (c x 128 + 127) / 255
    ASSERT_EQ(QuorinConvert_RGB888toARGB8888(rgb.record(), nullptr, 128, out.record(), 2, 0), kQuorinSuccess);
    EXPECT_EQ(out.pixels(), (std::vector<uint8_t>{128, 200, 100, 0}));
    word.row(0)[0] = 0x41, word.row(0)[1] = 0x08;  // fields 1, 2, 1
    ASSERT_EQ(QuorinConvert_RGB565toRGBA8888(9, word.record(), out.record(), 0), kQuorinSuccess);
    EXPECT_EQ(out.pixels(), (std::vector<uint8_t>{8, 8, 8, 9}));
}

}  // namespace
}  // namespace quorin::test
