// Quarter turns: the worked examples, every turn against every parity of
// crop and offset on both axes (mapping and centring computed here from
// their description), the background rule, and the check order.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "Geometry/GeometryMembers.h"
#include "support/CheckOrder.h"
#include "support/Codes.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using geometry::Rotate90Member;

// The pixel of `image` at (x, y), as bytes.
std::vector<uint8_t> PixelAt(const GuardedImage& image, size_t x, size_t y) {
    const uint8_t* p = image.row(y) + x * image.pixelBytes();
    return {p, p + image.pixelBytes()};
}

// The destination the description gives: `before` (the destination's
// pixels, or the background everywhere when it fills), then each covered
// pixel moved by the turn's mapping.
std::vector<std::vector<uint8_t>> Expected(const GuardedImage& src, const GuardedImage& dest, unsigned r,
                                           const std::vector<uint8_t>* background) {
    const size_t W = dest.width(), H = dest.height();
    const bool fills = background && (W > src.width() || (W <= src.width() && H > src.height()));
    std::vector<std::vector<uint8_t>> out(W * H);
    for (size_t y = 0; y < H; ++y)
        for (size_t x = 0; x < W; ++x) out[y * W + x] = fills ? *background : PixelAt(dest, x, y);
    const size_t E = (r % 2) ? src.height() : src.width(), F = (r % 2) ? src.width() : src.height();
    size_t cx = 0, ox = 0, cy = 0, oy = 0;
    if (W < E) cx = (E - W) / 2 + (((E - W) % 2 == 1 && (r == 2 || r == 3)) ? 1 : 0);
    if (W > E) ox = (W - E) / 2 + (((W - E) % 2 == 1 && r == 2) ? 1 : 0);
    if (H < F) cy = (F - H) / 2 + (((F - H) % 2 == 1 && r != 3) ? 1 : 0);
    if (H > F) oy = (H - F) / 2 + (((H - F) % 2 == 1 && r != 3) ? 1 : 0);
    for (size_t j = 0; j < std::min(H, F); ++j)
        for (size_t i = 0; i < std::min(W, E); ++i) {
            switch (r) {
                case 0: out[(oy + j) * W + ox + i] = PixelAt(src, cx + i, cy + j); break;
                case 1: out[(H - 1 - oy - j) * W + ox + i] = PixelAt(src, cy + j, cx + i); break;
                case 2: out[(H - 1 - oy - j) * W + W - 1 - ox - i] = PixelAt(src, cx + i, cy + j); break;
                default: out[(oy + j) * W + W - 1 - ox - i] = PixelAt(src, cy + j, cx + i); break;
            }
        }
    return out;
}

// The destination's rows end in `destPadding` bytes and its first pixel lies
// `destOffset` bytes into a 64-byte line.
void ExpectTurn(const Rotate90Member& m, size_t sw, size_t sh, size_t dw, size_t dh, unsigned r, bool withBackground,
                size_t destPadding = 4, size_t destOffset = 0) {
    SCOPED_TRACE(testing::Message() << m.name << " " << sw << "x" << sh << " -> " << dw << "x" << dh << " turn " << r
                                    << (withBackground ? " with background" : "") << " destination offset "
                                    << destOffset);
    const size_t bytes = m.format.pixelBytes();
    GuardedImage src(sw, sh, bytes, 3 * 4, 4), dest(dw, dh, bytes, destPadding, destOffset);
    src.fillRandom(sw * 7 + sh);
    dest.fillRandom(dw * 5 + dh);
    std::vector<uint8_t> background(bytes);
    for (size_t k = 0; k < bytes; ++k) background[k] = static_cast<uint8_t>(0x30 + k);
    const auto want = Expected(src, dest, r, withBackground ? &background : nullptr);
    const GuardedImage before = dest;
    for (const Variant& v : KernelVariants()) {  // the scalar moves and each vector unit's
        SCOPED_TRACE(v.name);
        VariantScope scope(v);
        dest = before;
        ASSERT_EQ(m.entry(src.record(), dest.record(), static_cast<uint8_t>(r),
                          withBackground ? background.data() : nullptr, 0),
                  kQuorinSuccess);
        EXPECT_EQ(dest.damagedGuard(), "");
        for (size_t y = 0; y < dh; ++y)
            for (size_t x = 0; x < dw; ++x) ASSERT_EQ(PixelAt(dest, x, y), want[y * dw + x]) << "at " << x << "," << y;
    }
}

TEST(Rotate90, EveryTurnEveryCropAndOffsetParity) {
    // Destination lengths below, equal to and above the turned source's, by
    // an even and an odd difference; blocks of the transposes cut unevenly.
    for (const Rotate90Member* m : geometry::kRotate90Members)
        for (unsigned r = 0; r < 4; ++r)
            for (const int dx : {-4, -3, 0, 3, 4})
                for (const int dy : {-2, -1, 0, 1, 6}) {
                    const size_t sw = 37, sh = 20;
                    const size_t E = r % 2 ? sh : sw, F = r % 2 ? sw : sh;
                    ExpectTurn(*m, sw, sh, E + dx, F + dy, r, (dx + dy) % 2 != 0);
                    if (testing::Test::HasFailure()) return;
                }
}

TEST(Rotate90, QuarterTurnsLongerThanATransposeStrip) {
    // More source rows than one strip of the vector transpose, in a count
    // that leaves a partial strip and a partial tile, cropped and offset.
    for (const Rotate90Member* m : geometry::kRotate90Members)
        for (const unsigned r : {1u, 3u})
            for (const int d : {-5, 0, 6}) {
                const size_t sw = 67, sh = 150;
                ExpectTurn(*m, sw, sh, sh + d, sw - d, r, d > 0);
                if (testing::Test::HasFailure()) return;
            }
}

TEST(Rotate90, StreamedQuarterTurnsAtEveryLineOffset) {
    // Streamed destinations whose rows are whole lines apart, the first pixel
    // at several places in a line (and off four-byte boundaries), so that
    // the rows before the first whole line, the partial bands, tiles and
    // columns all occur; cropped and offset, more than a tile each way.
    const StreamingForced streaming;
    for (const Rotate90Member* m : geometry::kRotate90Members)
        for (const unsigned r : {1u, 3u})
            for (const size_t offset : {0, 2, 4, 16, 20, 48, 60})
                for (const int d : {-5, 0, 7}) {
                    const size_t sw = 150, sh = 291, dw = sh + d, dh = sw - d;
                    const size_t rowBytes = dw * m->format.pixelBytes();
                    ExpectTurn(*m, sw, sh, dw, dh, r, d > 0, (64 - rowBytes % 64) % 64, offset);
                    if (testing::Test::HasFailure()) return;
                }
}

TEST(Rotate90, WorkedExamples) {
    const Rotate90Member& m = geometry::kRotate90ARGB8888;
    GuardedImage src(3, 2, 4), dest(2, 3, 4);
    for (size_t y = 0; y < 2; ++y)
        for (size_t x = 0; x < 3; ++x) std::memset(src.row(y) + x * 4, static_cast<int>(1 + x + 3 * y), 4);
    ASSERT_EQ(m.entry(src.record(), dest.record(), 1, nullptr, 0), kQuorinSuccess);
    EXPECT_EQ(PixelAt(dest, 0, 2)[0], 1);  // top-left to bottom-left
    EXPECT_EQ(PixelAt(dest, 0, 0)[0], 3);  // top-right to top-left
    ASSERT_EQ(m.entry(src.record(), dest.record(), 3, nullptr, 0), kQuorinSuccess);
    EXPECT_EQ(PixelAt(dest, 1, 0)[0], 1);  // top-left to top-right

    // 4x4 into 5x5 with a background: turn 2 offsets by one column and one
    // row (counted from the right and bottom edges it writes from), turn 3
    // by neither (its columns counted from the right, its rows from the top).
    GuardedImage square(4, 4, 4), big(5, 5, 4);
    square.fillBytes(9);
    const uint8_t grey[4] = {1, 2, 3, 4};
    const std::vector<uint8_t> image(4, 9), background(grey, grey + 4);
    ASSERT_EQ(m.entry(square.record(), big.record(), 2, grey, 0), kQuorinSuccess);
    EXPECT_EQ(PixelAt(big, 0, 0), image);
    EXPECT_EQ(PixelAt(big, 4, 0), background);
    EXPECT_EQ(PixelAt(big, 0, 4), background);
    ASSERT_EQ(m.entry(square.record(), big.record(), 3, grey, 0), kQuorinSuccess);
    EXPECT_EQ(PixelAt(big, 0, 0), background);
    EXPECT_EQ(PixelAt(big, 4, 0), image);
    EXPECT_EQ(PixelAt(big, 4, 4), background);
}

TEST(Rotate90, ChecksComeInTheirOrderBeforeAnyWrite) {
    for (const Rotate90Member* m : geometry::kRotate90Members) {
        SCOPED_TRACE(m->name);
        const size_t bytes = m->format.pixelBytes();
        GuardedImage src(9, 7, bytes, bytes), dest(5, 11, bytes, 2 * bytes);
        ExpectCheckOrder(m->checks, {&src, &dest}, {1}, [&](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags f) {
            return m->entry(r[0], r[1], 1, nullptr, f);
        });
        // The turn is tested after the source's rowBytes and before the destination's.
        Quorin_Buffer zeroRows = *src.record();
        zeroRows.rowBytes = 0;
        Quorin_Buffer zeroDestRows = *dest.record();
        zeroDestRows.rowBytes = 0;
        EXPECT_TRUE(ReturnsCode(m->entry(src.record(), dest.record(), 4, nullptr, 0), kQuorinError_BadArgument));
        EXPECT_TRUE(ReturnsCode(m->entry(src.record(), &zeroDestRows, 4, nullptr, kQuorinFlag_QueryTempSize),
                                kQuorinError_BadArgument));
        EXPECT_TRUE(ReturnsCode(m->entry(&zeroRows, dest.record(), 0, nullptr, kQuorinFlag_QueryTempSize),
                                kQuorinError_BadArgument));
        // The query answers 0, with null pixel pointers too.
        Quorin_Buffer noData = *dest.record();
        noData.data = nullptr;
        EXPECT_EQ(m->entry(src.record(), &noData, 3, nullptr, kQuorinFlag_QueryTempSize), 0);
    }
}

}  // namespace
}  // namespace quorin::test
