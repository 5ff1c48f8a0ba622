// The packed-plane conversions: every byte value at every pixel position
// against the plane values written out here apart from the rules, rows of
// every length up to past the widest vector step (tails) under every kernel,
// padded rows and one run, guards on both buffers, the check order, and the
// custom conversion of three-byte pixels against the alpha-adding member.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Conversion/PackedPlanesMembers.h"
#include "support/Codes.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using planes::Direction;
using planes::PlaneMember;

// The plane value of field f of a `bits`-bit pixel: the levels 0..255 spread
// evenly over the field's values.
unsigned LevelOf(unsigned f, unsigned bits) { return f * 255u / ((1u << bits) - 1); }

// The field whose level is nearest to s (no byte lies halfway between two).
unsigned NearestField(unsigned s, unsigned bits) {
    unsigned best = 0;
    for (unsigned f = 1; f < (1u << bits); ++f)
        if (std::abs(static_cast<int>(LevelOf(f, bits)) - static_cast<int>(s)) <
            std::abs(static_cast<int>(LevelOf(best, bits)) - static_cast<int>(s)))
            best = f;
    return best;
}

// The guarded images keep their records as made (bytes wide, which their
// helpers walk); the calls get copies whose width counts pixels.
struct Images {
    GuardedImage src, dest;
    size_t width;

    Quorin_Buffer srcRecord() const { return WithWidth(src); }
    Quorin_Buffer destRecord() const { return WithWidth(dest); }
    Quorin_Error run(const PlaneMember& m) const {
        const Quorin_Buffer s = srcRecord(), d = destRecord();
        return m.invoke(&s, &d);
    }

private:
    Quorin_Buffer WithWidth(const GuardedImage& image) const {
        Quorin_Buffer record = *image.record();
        record.width = width;
        return record;
    }
};

// A call converting `bytes` packed bytes a row over `rows` rows, with
// `padding` bytes after each row of the plane (the packed rows are exactly
// the bytes converted); widths as large as the rows allow, the source filled
// from `seed`, or with seed 0 so that every byte value meets every pixel
// position of a packed byte once the rows hold 256 packed bytes; the
// destination `destOffset` bytes past an aligned start.
Images Make(const PlaneMember& m, size_t bytes, size_t rows, size_t padding, uint64_t seed, size_t destOffset = 3) {
    const size_t per = m.pixelsPerByte(), plane = bytes * per;
    const bool unpack = m.direction == Direction::Unpack;
    Images images{GuardedImage(unpack ? bytes : plane, rows, 1, unpack ? 0 : padding, 1),
                  GuardedImage(unpack ? plane : bytes, rows, 1, unpack ? padding : 0, destOffset), plane};
    images.src.fillRandom(seed);
    const size_t width = images.src.width(), step = unpack ? 1 : per;
    for (size_t i = 0; i < width * rows && seed == 0; ++i)
        images.src.row(i / width)[i % width] = static_cast<uint8_t>(i / step + 37 * (i % step));
    images.dest.fillBytes(0xA5);
    return images;
}

// The destination against the plane values, pixel by pixel.
void ExpectConverted(const PlaneMember& m, const Images& images) {
    const size_t per = m.pixelsPerByte();
    const bool unpack = m.direction == Direction::Unpack;
    const GuardedImage& packed = unpack ? images.src : images.dest;
    const GuardedImage& plane = unpack ? images.dest : images.src;
    for (size_t y = 0; y < packed.height(); ++y)
        for (size_t i = 0; i < packed.rowBytes() && i < plane.rowBytes() / per; ++i)
            for (size_t p = 0; p < per; ++p) {
                const unsigned field = (packed.row(y)[i] >> (8 - m.bits * (p + 1))) & ((1u << m.bits) - 1);
                const unsigned s = plane.row(y)[i * per + p];
                if (unpack) ASSERT_EQ(s, LevelOf(field, m.bits)) << "row " << y << " byte " << i << " pixel " << p;
                else ASSERT_EQ(field, NearestField(s, m.bits)) << "row " << y << " byte " << i << " value " << s;
            }
}

TEST(PackedPlanes, EveryByteValueAndRowLengthUnderEveryKernel) {
    for (const PlaneMember* m : planes::kPlaneMembers) {
        SCOPED_TRACE(m->name);
        // Lengths around every vector step, then long rows holding every value.
        std::vector<size_t> lengths;
        for (size_t n = 1; n <= 72; ++n) lengths.push_back(n);
        lengths.push_back(256 / m->pixelsPerByte() * 3 + 5);
        lengths.push_back(1000);
        // The streamed round writes to an aligned destination, whose rows
        // start at every offset from a vector boundary as the lengths grow.
        for (const bool streamed : {false, true})
        for (const size_t bytes : lengths)
            for (const size_t padding : {size_t{0}, size_t{3}}) {
                SCOPED_TRACE(::testing::Message() << bytes << " bytes, padding " << padding << ", streamed " << streamed);
                std::optional<StreamingForced> forced;
                if (streamed) forced.emplace();
                ExpectSameBytesEverywhere(
                    [&](Quorin_Flags) {
                        Images images = Make(*m, bytes, 3, padding, bytes > 72 ? 0 : bytes, streamed ? 0 : 3);
                        EXPECT_TRUE(ReturnsCode(images.run(*m), kQuorinSuccess));
                        EXPECT_EQ(images.src.damagedGuard(), "");
                        EXPECT_EQ(images.dest.damagedGuard(), "");
                        ExpectConverted(*m, images);
                        return images.dest.pixels();
                    },
                    KernelVariants());
            }
    }
}

TEST(PackedPlanes, BytesComeFromRowBytesNotWidthOnDestRows) {
    // A 3-pixel Planar1 row of 2 bytes unpacks all 16 plane bytes; dest has
    // fewer rows than src, and only its rows are written.
    GuardedImage src(2, 4, 1), dest(16, 3, 1, 2);
    for (size_t y = 0; y < 4; ++y) src.row(y)[0] = 0x80, src.row(y)[1] = 0x01;
    dest.fillBytes(7);
    Quorin_Buffer s = *src.record(), d = *dest.record();
    s.width = d.width = 3;
    ASSERT_EQ(QuorinConvert_Planar1toPlanar8(&s, &d, 0), kQuorinSuccess);
    const std::vector<uint8_t> row = {255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255};
    for (size_t y = 0; y < 3; ++y) EXPECT_EQ(std::vector<uint8_t>(dest.row(y), dest.row(y) + 16), row);
    EXPECT_EQ(dest.damagedGuard(), "");
    // Packing reads dest rowBytes x 4 source bytes, whatever the width.
    GuardedImage plane(9, 2, 1), packed(2, 2, 1);
    const uint8_t values[9] = {42, 43, 255, 0, 128, 127, 212, 213, 9};
    for (size_t y = 0; y < 2; ++y) std::memcpy(plane.row(y), values, 9);
    Quorin_Buffer p = *plane.record(), q = *packed.record();
    p.width = q.width = 1;
    ASSERT_EQ(QuorinConvert_Planar8toPlanar2(&p, &q, 0), kQuorinSuccess);
    EXPECT_EQ(packed.pixels(), (std::vector<uint8_t>{0x1C, 0x9B, 0x1C, 0x9B}));  // 0,1,3,0  2,1,2,3
    p.rowBytes = 8;
    ASSERT_EQ(QuorinConvert_Planar8toPlanar4(&p, &q, 0), kQuorinSuccess);
    EXPECT_EQ(packed.row(0)[0], 0x23);  // (42 + 8) / 17 = 2, (43 + 8) / 17 = 3
}

// The five steps, each planted with every later step failing too; the
// destination (and its guards) untouched. Step 1 is planted by a null src or
// dest record, step 2 by null data, and so on.
TEST(PackedPlanes, ChecksInOrderBeforeAnyWrite) {
    for (const PlaneMember* m : planes::kPlaneMembers) {
        SCOPED_TRACE(m->name);
        Images images = Make(*m, 4, 3, 1, 9);
        const std::vector<uint8_t> before = images.dest.pixels();
        Quorin_Buffer src = images.srcRecord(), dest = images.destRecord();
        const Quorin_Buffer goodSrc = src, goodDest = dest;
        const auto expect = [&](const Quorin_Buffer* s, const Quorin_Buffer* d, Quorin_Error code, const char* what) {
            EXPECT_TRUE(ReturnsCode(m->invoke(s, d), code)) << what;
            EXPECT_EQ(images.dest.pixels(), before) << what;
            EXPECT_EQ(images.dest.damagedGuard(), "") << what;
        };
        const bool unpack = m->direction == Direction::Unpack;
        // Every later fault at once: data, size, row length, description.
        const size_t per = m->pixelsPerByte();
        const auto allFaults = [&] {
            src = goodSrc, dest = goodDest;
            src.width = unpack ? src.rowBytes * per + 1 : src.rowBytes + 1;  // its rows no longer fit
            dest.width = src.width + 1, dest.height = src.height + 1;
            dest.rowBytes = unpack ? src.rowBytes * per - 1 : src.rowBytes / per + 1;
        };
        const Quorin_Error nullRecord = m->testsRecords ? kQuorinError_NullPointer : kQuorinError_BadArgument;
        allFaults();
        src.data = dest.data = nullptr;
        expect(nullptr, &dest, nullRecord, "null src record");
        expect(&src, nullptr, nullRecord, "null dest record");
        expect(&src, &dest, kQuorinError_BadArgument, "null src data");
        src.data = goodSrc.data;
        expect(&src, &dest, kQuorinError_BadArgument, "null dest data");
        dest.data = goodDest.data;
        expect(&src, &dest, kQuorinError_RegionExceedsSource, "dest wider");
        dest.width = src.width;
        expect(&src, &dest, kQuorinError_RegionExceedsSource, "dest taller");
        dest.height = src.height;
        expect(&src, &dest, kQuorinError_RegionExceedsSource, "row length");
        // src rowBytes x per wraps to 0 (or less than dest's) in a size_t.
        src = goodSrc, dest = goodDest;
        src.rowBytes = SIZE_MAX / 2 + 1;
        if (unpack) expect(&src, &dest, kQuorinError_RegionExceedsSource, "row length beyond size_t");
        src = goodSrc, dest = goodDest;
        src.width = unpack ? src.rowBytes * per + 1 : src.rowBytes + 1;
        dest.width = src.width - 1;
        expect(&src, &dest, kQuorinError_BadArgument, "src row longer than its rowBytes");
        src = goodSrc;
        dest.width = unpack ? dest.rowBytes + 1 : dest.rowBytes * per + 1;
        src.width = dest.width;
        expect(&src, &dest, kQuorinError_BadArgument, "dest row longer than its rowBytes");
        src = goodSrc, dest = goodDest;
        src.height = dest.height = SIZE_MAX / 2;
        expect(&src, &dest, kQuorinError_BadArgument, "extent beyond any object");
        // An empty destination passes every step and writes nothing.
        src = goodSrc, dest = goodDest;
        dest.height = 0;
        expect(&src, &dest, kQuorinSuccess, "dest height 0");
    }
}

TEST(PackedPlanes, DescribedValues) {
    // Widths count pixels: a packed byte of 1-bit pixels is 8 pixels wide.
    GuardedImage one(1, 1, 1), eight(8, 1, 1);
    one.mutableRecord()->width = 8;
    one.row(0)[0] = 0x80;
    ASSERT_EQ(QuorinConvert_Planar1toPlanar8(one.record(), eight.record(), 0), kQuorinSuccess);
    EXPECT_EQ(eight.pixels(), (std::vector<uint8_t>{255, 0, 0, 0, 0, 0, 0, 0}));
    const uint8_t rising[8] = {0, 127, 128, 255, 200, 1, 130, 64};
    std::memcpy(eight.row(0), rising, 8);
    ASSERT_EQ(QuorinConvert_Planar8toPlanar1(eight.record(), one.record(), nullptr, 0), kQuorinSuccess);
    EXPECT_EQ(one.row(0)[0], 0x3A);  // 0 0 1 1 1 0 1 0
    GuardedImage two(1, 1, 1), four(4, 1, 1);
    two.mutableRecord()->width = 4;
    const uint8_t levels[4] = {42, 43, 255, 128};
    std::memcpy(four.row(0), levels, 4);
    ASSERT_EQ(QuorinConvert_Planar8toPlanar2(four.record(), two.record(), 0), kQuorinSuccess);
    EXPECT_EQ(two.row(0)[0], 0x1E);  // 0 1 3 2
    two.row(0)[0] = 0x1E;
    ASSERT_EQ(QuorinConvert_Planar2toPlanar8(two.record(), four.record(), 0), kQuorinSuccess);
    EXPECT_EQ(four.pixels(), (std::vector<uint8_t>{0, 85, 255, 170}));
    GuardedImage nibbles(1, 1, 1), pair(2, 1, 1);
    nibbles.mutableRecord()->width = 2;
    pair.row(0)[0] = 8, pair.row(0)[1] = 9;
    ASSERT_EQ(QuorinConvert_Planar8toPlanar4(pair.record(), nibbles.record(), 0), kQuorinSuccess);
    EXPECT_EQ(nibbles.row(0)[0], 0x01);
    pair.row(0)[0] = 255, pair.row(0)[1] = 26;
    ASSERT_EQ(QuorinConvert_Planar8toPlanar4(pair.record(), nibbles.record(), 0), kQuorinSuccess);
    EXPECT_EQ(nibbles.row(0)[0], 0xF2);  // (26 + 8) / 17 = 2
    ASSERT_EQ(QuorinConvert_Planar4toPlanar8(nibbles.record(), pair.record(), 0), kQuorinSuccess);
    EXPECT_EQ(pair.pixels(), (std::vector<uint8_t>{255, 34}));
    // A Planar1 row of 4 bytes needs 32 destination bytes, not 31.
    GuardedImage packed(4, 1, 1), plane(31, 1, 1);
    packed.mutableRecord()->width = 31;
    EXPECT_EQ(QuorinConvert_Planar1toPlanar8(packed.record(), plane.record(), 0), kQuorinError_RegionExceedsSource);
    EXPECT_EQ(plane.damagedGuard(), "");
}

TEST(PackedPlanesDeathTest, PackingToOneBitReportsEveryModeButZeroAfterTheChecks) {
    GuardedImage plane(8, 2, 1), packed(1, 2, 1);
    EXPECT_DEATH(QuorinConvert_Planar8toPlanar1(plane.record(), packed.record(), nullptr, 1),
                 "quorin\\[2\\] QuorinConvert_Planar8toPlanar1 Conversion/ConvertPlanartoPlanar:205: NOT YET "
                 "IMPLEMENTED");
    EXPECT_DEATH(QuorinConvert_Planar8toPlanar1(plane.record(), packed.record(), &plane, -1), "NOT YET IMPLEMENTED");
    EXPECT_EQ(QuorinConvert_Planar8toPlanar1(nullptr, packed.record(), nullptr, 1), kQuorinError_NullPointer);
    EXPECT_EQ(QuorinConvert_Planar8toPlanar1(packed.record(), plane.record(), nullptr, 1),
              kQuorinError_RegionExceedsSource);
}

// Callers on several threads at once, each on its own images of its own
// member, get the bytes a lone call gets.
TEST(PackedPlanes, ConcurrentCallersGetTheLoneCallsBytes) {
    std::vector<std::vector<uint8_t>> expected;
    for (const PlaneMember* m : planes::kPlaneMembers) {
        Images images = Make(*m, 333, 17, 2, 21);
        ASSERT_EQ(images.run(*m), kQuorinSuccess);
        expected.push_back(images.dest.pixels());
    }
    std::vector<std::string> failures(2 * std::size(planes::kPlaneMembers));
    std::vector<std::thread> threads;
    for (size_t t = 0; t < failures.size(); ++t)
        threads.emplace_back([&, t] {
            const size_t k = t % std::size(planes::kPlaneMembers);
            const PlaneMember& m = *planes::kPlaneMembers[k];
            for (int round = 0; round < 20; ++round) {
                Images images = Make(m, 333, 17, 2, 21);
                if (images.run(m) != kQuorinSuccess ||
                    images.dest.pixels() != expected[k])
                    failures[t] = m.name;
            }
        });
    for (std::thread& thread : threads) thread.join();
    for (const std::string& failure : failures) EXPECT_EQ(failure, "");
}

// ---- The custom conversion of three-byte pixels --------------------------------

TEST(CustomConvertImage, IsTheOpaqueOrPlaneAlphaAddingRuleUnderEveryKernelAndSplit) {
    constexpr size_t kWide = 301, kTall = 220;  // enough pixels to split
    GuardedImage src(kWide, kTall, 3, 5, 1), plane(kWide, kTall, 1, 2, 3);
    src.fillRandom(11);
    plane.fillRandom(12);
    for (const bool withPlane : {false, true})
        for (const size_t padding : {size_t{0}, size_t{4}}) {
            GuardedImage expected(kWide, kTall, 4, padding, 2);
            ASSERT_EQ(QuorinConvert_RGB888toARGB8888(src.record(), withPlane ? plane.record() : nullptr, 255,
                                                     expected.record(), 0, kQuorinFlag_SingleThreaded),
                      kQuorinSuccess);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(kWide, kTall, 4, padding, 2);
                dest.fillRandom(3);
                EXPECT_TRUE(ReturnsCode(_customConvertImage(src.record(), dest.record(),
                                                            withPlane ? plane.record() : nullptr, flags),
                                        kQuorinSuccess));
                EXPECT_EQ(dest.damagedGuard(), "");
                EXPECT_EQ(dest.pixels(), expected.pixels());
                return dest.pixels();
            });
        }
    // Opaque without a plane, the colours as they were.
    GuardedImage pixel(1, 1, 3), out(1, 1, 4);
    pixel.row(0)[0] = 1, pixel.row(0)[1] = 2, pixel.row(0)[2] = 3;
    ASSERT_EQ(_customConvertImage(pixel.record(), out.record(), nullptr, 0), kQuorinSuccess);
    EXPECT_EQ(out.pixels(), (std::vector<uint8_t>{255, 1, 2, 3}));
}

TEST(CustomConvertImage, ChecksInOrder) {
    GuardedImage src(5, 3, 3, 1), dest(5, 3, 4, 2), plane(5, 3, 1), narrow(4, 3, 1);
    const std::vector<uint8_t> before = dest.pixels();
    EXPECT_EQ(_customConvertImage(nullptr, nullptr, nullptr, kQuorinFlag_QueryTempSize), kQuorinSuccess);
    EXPECT_EQ(_customConvertImage(nullptr, dest.record(), nullptr, 0), kQuorinError_BadArgument);
    Quorin_Buffer wide = *dest.record();
    wide.width = 6;
    EXPECT_EQ(_customConvertImage(src.record(), &wide, nullptr, 0), kQuorinError_BadArgument);
    Quorin_Buffer tall = *dest.record();
    tall.height = 4;
    EXPECT_EQ(_customConvertImage(src.record(), &tall, nullptr, 0), kQuorinError_BadArgument);
    Quorin_Buffer shortRows = *src.record();
    shortRows.rowBytes = 14;
    EXPECT_EQ(_customConvertImage(&shortRows, dest.record(), nullptr, 0), kQuorinError_BadArgument);
    EXPECT_EQ(_customConvertImage(src.record(), dest.record(), narrow.record(), 0), kQuorinError_BadArgument);
    EXPECT_EQ(dest.pixels(), before);
    EXPECT_EQ(dest.damagedGuard(), "");
    // No flag bit is refused.
    EXPECT_EQ(_customConvertImage(src.record(), dest.record(), plane.record(), ~Quorin_Flags{0xFF}), kQuorinSuccess);
}

}  // namespace
}  // namespace quorin::test
