// The depth conversions over their whole input spaces: every 16-bit Q12 and
// 16U value and every byte, under every kernel and split, with guards, against
// formulas computed apart from the library's integer arithmetic; the values
// the description names; rows whose source and destination share bytes; and
// the 16-bit plane members' refusals. (The Q12 members' check order, shapes
// and tails run with the layouts' in LayoutTest.cpp.)
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "LayoutMembers.h"
#include "quorin/Conversion.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

// Odd width (vector tails on every row), padded rows, an unaligned start, and
// 65750 pixels: enough for the rows dispatcher and for every 16-bit value.
constexpr size_t kWidth = 263, kHeight = 250, kPadding = 6, kOffset = 2;

std::vector<uint8_t> Concat(const std::vector<GuardedImage*>& images) {
    std::vector<uint8_t> bytes;
    for (const GuardedImage* image : images) {
        EXPECT_EQ(image->damagedGuard(), "");
        const auto pixels = image->pixels();
        bytes.insert(bytes.end(), pixels.begin(), pixels.end());
    }
    return bytes;
}

// Sample i of channel c (pixel order): a different walk over all 65536 values per channel.
uint16_t Word(size_t i, size_t c) { return static_cast<uint16_t>(i * (2 * c + 1) * 40503u + c * 12345u); }

using Q12Merge = std::function<Quorin_Error(const std::vector<const Quorin_Buffer*>& planes, const Quorin_Buffer* dest,
                                            Quorin_Flags flags)>;

void ExpectEveryQ12Value(size_t channels, const Q12Merge& merge) {
    std::vector<GuardedImage> planes;
    for (size_t c = 0; c < channels; ++c) {
        planes.emplace_back(kWidth, kHeight, 2, kPadding + 2 * c, kOffset);
        for (size_t y = 0; y < kHeight; ++y)
            for (size_t x = 0; x < kWidth; ++x) *planes[c].pixel<uint16_t>(x, y) = Word(y * kWidth + x, c);
    }
    GuardedImage dest(kWidth, kHeight, channels, kPadding, 1);
    dest.fillRandom(3);
    std::vector<const Quorin_Buffer*> records;
    for (const auto& p : planes) records.push_back(p.record());
    bool checked = false;
    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
        dest.fillRandom(3);
        EXPECT_EQ(merge(records, dest.record(), flags), kQuorinSuccess);
        if (!checked) {
            checked = true;
            for (size_t y = 0; y < kHeight; ++y)
                for (size_t x = 0; x < kWidth; ++x)
                    for (size_t c = 0; c < channels; ++c) {
                        const auto v = static_cast<int16_t>(Word(y * kWidth + x, c));
                        const uint8_t got = dest.pixel<uint8_t>(x, y)[c];
                        if (got != ExpectedQ12ToByte(v)) {
                            ADD_FAILURE() << "Q12 " << v << " gave " << int(got) << " in channel " << c;
                            return std::vector<uint8_t>{};
                        }
                    }
        }
        return Concat({&dest});
    });
}

TEST(Depth, EveryQ12ValueToBytesUnderEveryKernelAndSplit) {
    ExpectEveryQ12Value(4, [](const auto& p, const Quorin_Buffer* d, Quorin_Flags f) {
        return QuorinConvert_Planar16Q12toARGB8888(p[0], p[1], p[2], p[3], d, f);
    });
    ExpectEveryQ12Value(3, [](const auto& p, const Quorin_Buffer* d, Quorin_Flags f) {
        return QuorinConvert_Planar16Q12toRGB888(p[0], p[1], p[2], d, f);
    });
}

using Q12Split = std::function<Quorin_Error(const Quorin_Buffer* src, const std::vector<const Quorin_Buffer*>& planes,
                                            Quorin_Flags flags)>;

void ExpectEveryByteToQ12(size_t channels, const Q12Split& split) {
    GuardedImage src(kWidth, kHeight, channels, kPadding, 1);
    for (size_t y = 0; y < kHeight; ++y)
        for (size_t x = 0; x < kWidth; ++x)
            for (size_t c = 0; c < channels; ++c) src.pixel<uint8_t>(x, y)[c] = static_cast<uint8_t>(Word(y * kWidth + x, c));
    std::vector<GuardedImage> planes;
    std::vector<const Quorin_Buffer*> records;
    std::vector<GuardedImage*> outputs;
    for (size_t c = 0; c < channels; ++c) planes.emplace_back(kWidth, kHeight, 2, kPadding + 2 * c, kOffset);
    for (auto& p : planes) {
        records.push_back(p.record());
        outputs.push_back(&p);
    }
    bool checked = false;
    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
        for (auto& p : planes) p.fillRandom(5);
        EXPECT_EQ(split(src.record(), records, flags), kQuorinSuccess);
        if (!checked) {
            checked = true;
            for (size_t c = 0; c < channels; ++c)
                for (size_t y = 0; y < kHeight; ++y)
                    for (size_t x = 0; x < kWidth; ++x) {
                        const uint8_t v = src.pixel<uint8_t>(x, y)[c];
                        if (*planes[c].pixel<int16_t>(x, y) != ExpectedByteToQ12(v)) {
                            ADD_FAILURE() << "byte " << int(v) << " gave " << *planes[c].pixel<int16_t>(x, y);
                            return std::vector<uint8_t>{};
                        }
                    }
        }
        return Concat(outputs);
    });
}

TEST(Depth, EveryByteToQ12UnderEveryKernelAndSplit) {
    ExpectEveryByteToQ12(4, [](const Quorin_Buffer* s, const auto& p, Quorin_Flags f) {
        return QuorinConvert_ARGB8888toPlanar16Q12(s, p[0], p[1], p[2], p[3], f);
    });
    ExpectEveryByteToQ12(3, [](const Quorin_Buffer* s, const auto& p, Quorin_Flags f) {
        return QuorinConvert_RGB888toPlanar16Q12(s, p[0], p[1], p[2], f);
    });
}

// The values the description gives, and the formulas' own ends.
TEST(Depth, NamedValues) {
    const int16_t q12[] = {-1, -32768, 0, 8, 2048, 4095, 4096, 5000, 32767};
    const uint8_t bytes[] = {0, 0, 0, 0, 128, 255, 255, 255, 255};
    for (size_t i = 0; i < std::size(q12); ++i) EXPECT_EQ(ExpectedQ12ToByte(q12[i]), bytes[i]) << q12[i];
    EXPECT_EQ(ExpectedByteToQ12(255), 4096);
    EXPECT_EQ(ExpectedByteToQ12(128), 2056);
    EXPECT_EQ(ExpectedByteToQ12(1), 16);
    // Through the library: one RGB888 pixel per value.
    const size_t n = std::size(q12);
    GuardedImage r(n, 1, 2), g(n, 1, 2), b(n, 1, 2), dest(n, 1, 3);
    for (size_t i = 0; i < n; ++i) *r.pixel<int16_t>(i, 0) = *g.pixel<int16_t>(i, 0) = *b.pixel<int16_t>(i, 0) = q12[i];
    ASSERT_EQ(QuorinConvert_Planar16Q12toRGB888(r.record(), g.record(), b.record(), dest.record(), 0), kQuorinSuccess);
    for (size_t i = 0; i < n; ++i) EXPECT_EQ(dest.pixel<uint8_t>(i, 0)[1], bytes[i]) << q12[i];
    GuardedImage src(1, 1, 3), r2(1, 1, 2), g2(1, 1, 2), b2(1, 1, 2);
    src.pixel<uint8_t>(0, 0)[0] = 255, src.pixel<uint8_t>(0, 0)[1] = 128, src.pixel<uint8_t>(0, 0)[2] = 1;
    ASSERT_EQ(QuorinConvert_RGB888toPlanar16Q12(src.record(), r2.record(), g2.record(), b2.record(), 0), kQuorinSuccess);
    EXPECT_EQ(*r2.pixel<int16_t>(0, 0), 4096);
    EXPECT_EQ(*g2.pixel<int16_t>(0, 0), 2056);
    EXPECT_EQ(*b2.pixel<int16_t>(0, 0), 16);
}

// ---- Rows whose source and destination share bytes --------------------------------------

// One block of memory holding every buffer of a call: records point into it.
struct SharedBlock {
    GuardedImage block;
    explicit SharedBlock(size_t bytes) : block(bytes, 1, 1) { block.fillRandom(bytes); }
    Quorin_Buffer at(size_t offset, size_t width, size_t height, size_t rowBytes) {
        return {block.row(0) + offset, height, width, rowBytes};
    }
};

// The pixel-by-pixel order on a copy of the block: pixel i's channels in
// turn, each read from memory as it stands.
template <class Step>
std::vector<uint8_t> InOrder(std::vector<uint8_t> memory, size_t rows, size_t width, const Step& step) {
    for (size_t y = 0; y < rows; ++y)
        for (size_t i = 0; i < width; ++i) step(memory.data(), y, i);
    return memory;
}

// Under every kernel, the call on the block as it was leaves `expected`.
void ExpectPixelOrder(SharedBlock& mem, const std::vector<uint8_t>& before, const std::vector<uint8_t>& expected,
                      const std::function<Quorin_Error()>& call) {
    ExpectSameBytesEverywhere(
        [&](Quorin_Flags) {
            std::memcpy(mem.block.row(0), before.data(), before.size());
            EXPECT_EQ(call(), kQuorinSuccess);
            const auto got = mem.block.pixels();
            EXPECT_TRUE(got == expected);
            return got;
        },
        KernelVariants());
}

TEST(Depth, SharedRowsGiveThePixelOrderUnderEveryKernel) {
    constexpr size_t kRows = 3, kW = 77, kRowBytes = 6 * kW + 8;  // three Q12 planes a row
    for (size_t shift : {0, 2, 6, 64}) {
        SCOPED_TRACE("pixels at byte " + std::to_string(shift));
        // Q12 planes R, G, B one after another in each row, RGB888 written from `shift` on.
        SharedBlock mem(kRows * kRowBytes + 64);
        for (size_t y = 0; y < kRows; ++y)
            for (size_t i = 0; i < 3 * kW; ++i) {
                const auto v = static_cast<int16_t>(int(Word(y * 1000 + i, 0) % 4400) - 150);
                std::memcpy(mem.block.row(0) + y * kRowBytes + 2 * i, &v, 2);
            }
        const std::vector<uint8_t> before = mem.block.pixels();
        Quorin_Buffer r = mem.at(0, kW, kRows, kRowBytes), g = mem.at(2 * kW, kW, kRows, kRowBytes),
                      b = mem.at(4 * kW, kW, kRows, kRowBytes), dest = mem.at(shift, kW, kRows, kRowBytes);
        const auto expected = InOrder(before, kRows, kW, [&](uint8_t* m, size_t y, size_t i) {
            for (size_t c = 0; c < 3; ++c) {
                int16_t v;
                std::memcpy(&v, m + y * kRowBytes + 2 * kW * c + 2 * i, 2);
                m[y * kRowBytes + shift + 3 * i + c] = ExpectedQ12ToByte(v);
            }
        });
        ExpectPixelOrder(mem, before, expected, [&] { return QuorinConvert_Planar16Q12toRGB888(&r, &g, &b, &dest, 0); });

        // RGB888 pixels split into Q12 planes laid over them.
        SharedBlock mem2(kRows * kRowBytes + 64);
        const std::vector<uint8_t> before2 = mem2.block.pixels();
        Quorin_Buffer src = mem2.at(shift, kW, kRows, kRowBytes), pr = mem2.at(0, kW, kRows, kRowBytes),
                      pg = mem2.at(2 * kW, kW, kRows, kRowBytes), pb = mem2.at(4 * kW, kW, kRows, kRowBytes);
        const auto expected2 = InOrder(before2, kRows, kW, [&](uint8_t* m, size_t y, size_t i) {
            for (size_t c = 0; c < 3; ++c) {
                const int16_t v = ExpectedByteToQ12(m[y * kRowBytes + shift + 3 * i + c]);
                std::memcpy(m + y * kRowBytes + 2 * kW * c + 2 * i, &v, 2);
            }
        });
        ExpectPixelOrder(mem2, before2, expected2,
                         [&] { return QuorinConvert_RGB888toPlanar16Q12(&src, &pr, &pg, &pb, 0); });
    }
}

// ---- 16-bit unsigned planes ------------------------------------------------------------

uint8_t ExpectedWordToByte(uint16_t v) { return static_cast<uint8_t>(std::floor((v * 255.0 + 32767.0) / 65535.0)); }

TEST(Depth, Every16UValueAndEveryByteUnderEveryKernel) {
    GuardedImage words(kWidth, kHeight, 2, kPadding, kOffset), bytes(kWidth, kHeight, 1, kPadding, 1);
    for (size_t y = 0; y < kHeight; ++y)
        for (size_t x = 0; x < kWidth; ++x) *words.pixel<uint16_t>(x, y) = Word(y * kWidth + x, 1);
    bool checked = false;
    for (Quorin_Flags ignored : {0u, 0xFFFFFFFFu})  // no flag is read: not even the size query
        ExpectSameBytesEverywhere(
            [&](Quorin_Flags) {
                bytes.fillRandom(9);
                EXPECT_EQ(QuorinConvert_16UToPlanar8(words.record(), bytes.record(), ignored), kQuorinSuccess);
                size_t wrong = 0;
                for (size_t y = 0; y < kHeight && !checked; ++y)
                    for (size_t x = 0; x < kWidth; ++x)
                        wrong += *bytes.pixel<uint8_t>(x, y) != ExpectedWordToByte(*words.pixel<uint16_t>(x, y));
                EXPECT_EQ(wrong, 0u);
                checked = true;
                return Concat({&bytes});
            },
            KernelVariants());

    GuardedImage back(kWidth, kHeight, 2, kPadding + 2, 0);
    ExpectSameBytesEverywhere(
        [&](Quorin_Flags) {
            back.fillRandom(11);
            EXPECT_EQ(QuorinConvert_Planar8To16U(bytes.record(), back.record(), 0), kQuorinSuccess);
            size_t wrong = 0;
            for (size_t y = 0; y < kHeight; ++y)
                for (size_t x = 0; x < kWidth; ++x) {
                    const uint8_t v = *bytes.pixel<uint8_t>(x, y);
                    wrong += *back.pixel<uint16_t>(x, y) != uint16_t(v << 8 | v);
                }
            EXPECT_EQ(wrong, 0u);
            return Concat({&back});
        },
        KernelVariants());
}

// dest's size is the walk: a larger source is read in its top-left corner,
// and a dest sharing the source's bytes sees each element converted in order.
TEST(Depth, PlaneConversionsWalkDestAndAllowSharedBytes) {
    GuardedImage words(40, 5, 2), bytes(33, 4, 1);
    words.fillRandom(1);
    bytes.fillRandom(2);
    ASSERT_EQ(QuorinConvert_16UToPlanar8(words.record(), bytes.record(), 0), kQuorinSuccess);
    for (size_t y = 0; y < 4; ++y)
        for (size_t x = 0; x < 33; ++x)
            EXPECT_EQ(*bytes.pixel<uint8_t>(x, y), ExpectedWordToByte(*words.pixel<uint16_t>(x, y)));

    constexpr size_t kW = 70, kRows = 3, kRowBytes = 2 * kW + 4;
    SharedBlock mem(kRows * kRowBytes);
    const auto before = mem.block.pixels();
    Quorin_Buffer wide = mem.at(0, kW, kRows, kRowBytes), narrow = mem.at(0, kW, kRows, kRowBytes);
    const auto down = InOrder(before, kRows, kW, [&](uint8_t* m, size_t y, size_t i) {
        uint16_t v;
        std::memcpy(&v, m + y * kRowBytes + 2 * i, 2);
        m[y * kRowBytes + i] = ExpectedWordToByte(v);
    });
    const auto up = InOrder(before, kRows, kW, [&](uint8_t* m, size_t y, size_t i) {
        const auto v = static_cast<uint16_t>(m[y * kRowBytes + i] * 257);
        std::memcpy(m + y * kRowBytes + 2 * i, &v, 2);
    });
    ExpectPixelOrder(mem, before, down, [&] { return QuorinConvert_16UToPlanar8(&wide, &narrow, 0); });
    ExpectPixelOrder(mem, before, up, [&] { return QuorinConvert_Planar8To16U(&narrow, &wide, 0); });
}

// Nothing is tested but what the walk needs; a record it cannot walk is
// refused before anything is written, and an empty dest converts nothing.
TEST(Depth, PlaneConversionsRefuseOnlyRecordsTheWalkWouldLeave) {
    using Convert = Quorin_Error (*)(const Quorin_Buffer*, const Quorin_Buffer*, Quorin_Flags);
    struct Case {
        Convert convert;
        size_t srcBytes, destBytes;
    };
    for (const Case c : {Case{&QuorinConvert_16UToPlanar8, 2, 1}, Case{&QuorinConvert_Planar8To16U, 1, 2}}) {
        const auto refused = [&](const std::function<void(Quorin_Buffer& src, Quorin_Buffer& dest)>& spoil,
                                 bool nullSrc = false, bool nullDest = false) {
            GuardedImage src(9, 4, c.srcBytes), dest(9, 4, c.destBytes);
            src.fillRandom(1);
            dest.fillRandom(2);
            const auto before = dest.pixels();
            Quorin_Buffer s = *src.record(), d = *dest.record();
            spoil(s, d);
            const Quorin_Error code = c.convert(nullSrc ? nullptr : &s, nullDest ? nullptr : &d, 0);
            EXPECT_EQ(dest.damagedGuard(), "");
            if (code != kQuorinSuccess || d.width == 0 || d.height == 0) {
                EXPECT_TRUE(dest.pixels() == before);
            }
            return code;
        };
        const auto none = [](Quorin_Buffer&, Quorin_Buffer&) {};
        EXPECT_EQ(refused(none), kQuorinSuccess);
        EXPECT_EQ(refused(none, true), kQuorinError_BadArgument);
        EXPECT_EQ(refused(none, false, true), kQuorinError_BadArgument);
        EXPECT_EQ(refused([](auto& s, auto&) { s.data = nullptr; }), kQuorinError_BadArgument);
        EXPECT_EQ(refused([](auto&, auto& d) { d.data = nullptr; }), kQuorinError_BadArgument);
        EXPECT_EQ(refused([](auto& s, auto&) { s.height = 3; }), kQuorinError_BadArgument);
        EXPECT_EQ(refused([&](auto& s, auto&) { s.width = 8, s.rowBytes = 8 * c.srcBytes; }), kQuorinError_BadArgument);
        // A narrower source whose rows still hold dest's row is read as the description reads it.
        EXPECT_EQ(refused([](auto& s, auto&) { s.width = 8; }), kQuorinSuccess);
        EXPECT_EQ(refused([&](auto&, auto& d) { d.rowBytes = 9 * c.destBytes - 1; }), kQuorinError_BadArgument);
        EXPECT_EQ(refused([&](auto& s, auto&) { s.rowBytes = 9 * c.srcBytes - 1; }), kQuorinError_BadArgument);
        EXPECT_EQ(refused([](auto& s, auto&) { s.height = size_t{1} << 62; }), kQuorinError_BadArgument);
        // A larger source is no fault; an empty dest converts nothing.
        EXPECT_EQ(refused([](auto&, auto& d) { d.width = 5, d.height = 2; }), kQuorinSuccess);
        EXPECT_EQ(refused([](auto&, auto& d) { d.width = 0; }), kQuorinSuccess);
        EXPECT_EQ(refused([](auto&, auto& d) { d.height = 0; }), kQuorinSuccess);
    }
}

}  // namespace
}  // namespace quorin::test
