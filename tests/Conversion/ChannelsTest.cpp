// Channel operations: every member under every kernel and split on guarded
// images against values computed apart from the kernels, the walks that
// write padding proved byte by byte, the order of every check list, and the
// processor-count chunking's cut.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include "Conversion/ChannelMembers.h"
#include "Core/ProcessorChunks.h"
#include "quorin/Utilities.h"
#include "support/CheckOrder.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using channels::Call;
using channels::Member;
using channels::Shape;

// Large enough to split (more than 64000 pixels), odd so no chunk is even.
constexpr size_t kWidth = 263, kHeight = 251;

const Member& Named(const char* name) {
    for (const Member* m : channels::kChannelMembers)
        if (std::strcmp(m->name, name) == 0) return *m;
    std::abort();
}

template <class T>
T At(const uint8_t* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// A float pattern that holds every kind: NaN with a payload, infinities,
// signed zeros, a denormal, and ordinary values on both sides of the bounds.
float Special(uint64_t r) {
    static const float kValues[] = {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::infinity(),
                                    std::numeric_limits<float>::infinity(), -0.0f, 0.0f, 1e-40f, -2.5f, 0.25f, 0.75f,
                                    1.5f, std::nanf("0x123")};
    return kValues[r % (sizeof kValues / sizeof kValues[0])];
}

// ---- Fills and overwrites with a scalar ---------------------------------------

// The pixel value a four-channel overwrite writes at channel c, read as bytes
// from the src pixel and the scalar: the mask bit 8 >> c picks the scalar.
void ExpectOverwritten(const uint8_t* src, const uint8_t* out, const void* scalar, size_t sampleBytes, uint32_t mask) {
    for (size_t c = 0; c < 4; ++c) {
        const bool selected = (mask & (8u >> c)) != 0;
        const void* want = selected ? scalar : src + c * sampleBytes;
        ASSERT_EQ(std::memcmp(out + c * sampleBytes, want, sampleBytes), 0) << "channel " << c << " mask " << mask;
    }
}

TEST(Channels, FillsWriteTheColourInsideTheAreaOnlyUnderEveryKernelAndSplit) {
    const uint8_t colour8[4] = {0x11, 0x82, 0xF3, 0x04};
    const float colourF[4] = {std::nanf("0x55"), -0.0f, 1.5f, -std::numeric_limits<float>::infinity()};
    for (const Member* m : channels::kChannelMembers) {
        if (m->shape != Shape::Fill) continue;
        SCOPED_TRACE(m->name);
        const void* value = m->format.sample == SampleKind::F32 ? static_cast<const void*>(colourF) : colour8;
        const size_t bytes = m->format.pixelBytes();
        for (const size_t padding : {size_t{0}, size_t{5}}) {
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(kWidth, kHeight, bytes, padding, 3);
                dest.fillRandom(7);
                EXPECT_EQ(m->run({nullptr, dest.record(), value, 0, 0, flags}), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                std::vector<uint8_t> out = dest.pixels();
                for (size_t i = 0; i < out.size(); i += bytes)
                    EXPECT_EQ(std::memcmp(out.data() + i, value, bytes), 0) << "pixel " << i / bytes;
                return out;
            });
        }
    }
}

TEST(Channels, OverwriteWithScalarTakesTheMaskedChannelsUnderEveryKernelAndSplit) {
    const uint8_t scalar8 = 0xA7;
    const float scalarF = std::nanf("0x77");
    for (const char* name :
         {"QuorinOverwriteChannelsWithScalar_ARGB8888", "QuorinOverwriteChannelsWithScalar_ARGBFFFF"}) {
        const Member& m = Named(name);
        SCOPED_TRACE(name);
        const size_t bytes = m.format.pixelBytes(), sampleBytes = m.format.sampleBytes();
        const void* scalar = sampleBytes == 1 ? static_cast<const void*>(&scalar8) : &scalarF;
        // Every mask, with bits above the four that must be ignored.
        for (uint32_t mask = 0; mask < 16; ++mask) {
            SCOPED_TRACE(mask);
            GuardedImage src(kWidth, kHeight, bytes, 12, 1);
            src.fillRandom(mask + 1);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(kWidth, kHeight, bytes, 4);
                EXPECT_EQ(m.run({src.record(), dest.record(), scalar, mask | 0xFFF0u, 0, flags}), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                for (size_t y = 0; y < kHeight; y += 17)
                    for (size_t x = 0; x < kWidth; ++x)
                        ExpectOverwritten(src.row(y) + x * bytes, dest.row(y) + x * bytes, scalar, sampleBytes, mask);
                return dest.pixels();
            }, mask % 5 == 0 ? KernelAndSplitVariants() : KernelVariants());
        }
        // In place.
        GuardedImage image(40, 3, bytes, 0);
        image.fillRandom(3);
        const std::vector<uint8_t> before = image.pixels();
        ASSERT_EQ(m.run({image.record(), image.record(), scalar, 0x5, 0, 0}), kQuorinSuccess);
        const std::vector<uint8_t> after = image.pixels();
        for (size_t i = 0; i < before.size(); i += bytes)
            ExpectOverwritten(before.data() + i, after.data() + i, scalar, sampleBytes, 0x5);
    }
}

// The pixel overwrites walk dest's rowBytes: every whole pixel, except at 8
// bits, where a loop over bytes in steps of 4 below rowBytes / 4 reaches
// only some. Nothing else in the row or past the buffer changes.
TEST(Channels, PixelOverwriteWalksTheCountItsRowBytesGive) {
    const uint8_t pixel8[4] = {0x10, 0x20, 0x30, 0x40};
    const uint16_t pixel16[4] = {0x1111, 0xFFFF, 0x0000, 0x8001};
    const float pixelF[4] = {std::nanf("0x9"), -0.0f, 2.0f, -7.5f};
    for (const char* name : {"QuorinOverwriteChannelsWithPixel_ARGB8888", "QuorinOverwriteChannelsWithPixel_ARGB16U",
                             "QuorinOverwriteChannelsWithPixel_ARGBFFFF"}) {
        const Member& m = Named(name);
        SCOPED_TRACE(name);
        const size_t pb = m.format.pixelBytes(), e = m.format.sampleBytes();
        const void* pixel = e == 1 ? static_cast<const void*>(pixel8) : e == 2 ? static_cast<const void*>(pixel16) : pixelF;
        for (const size_t rowBytes : {size_t{3}, size_t{17}, size_t{64}, pb * 100 + 5, pb * 333}) {
            size_t count = 0;  // pixels the walk reaches
            if (pb == 4) {
                for (size_t b = 0; b < rowBytes / 4; b += 4) ++count;
            } else {
                count = rowBytes / pb;
            }
            // Streamed rows (forced at every size) also stream their ends' partial vectors.
            for (const bool streamed : {false, true})
            for (const uint32_t mask : {0x0u, 0x9u, 0x6u, 0xFu}) {
                std::optional<StreamingForced> forced;
                if (streamed) forced.emplace();
                SCOPED_TRACE(testing::Message() << "rowBytes " << rowBytes << " mask " << mask
                                                << (streamed ? " streamed" : ""));
                const size_t rows = 7, extent = rows * rowBytes;
                // Both buffers start on a 64-byte boundary, so each row of one
                // lies as far from a vector boundary as the same row of the other.
                const auto onLine = [](std::vector<uint8_t>& bytes) {
                    return bytes.data() + (64 - reinterpret_cast<uintptr_t>(bytes.data()) % 64) % 64;
                };
                std::vector<uint8_t> sourceBytes(extent + 63);
                uint8_t* const source = onLine(sourceBytes);
                Random random(rowBytes + mask);
                for (size_t k = 0; k < extent; ++k) source[k] = static_cast<uint8_t>(random.next());
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    std::vector<uint8_t> outBytes(extent + 40 + 63, 0xEE);
                    uint8_t* const out = onLine(outBytes);
                    const Quorin_Buffer src{source, rows, 0, rowBytes}, dest{out, rows, 0, rowBytes};
                    EXPECT_EQ(m.run({&src, &dest, pixel, mask, 0, flags}), kQuorinSuccess);
                    for (size_t y = 0; y < rows; ++y)
                        for (size_t k = 0; k < rowBytes; ++k) {
                            const uint8_t* p = &out[y * rowBytes + k];
                            if (k >= count * pb) {
                                if (*p != 0xEE) ADD_FAILURE() << "row " << y << " byte " << k << " written";
                                continue;
                            }
                            const size_t channel = k % pb / e;
                            const uint8_t want = (mask >> (3 - channel) & 1)
                                                     ? static_cast<const uint8_t*>(pixel)[k % pb]
                                                     : source[y * rowBytes + k];
                            if (*p != want) ADD_FAILURE() << "row " << y << " byte " << k;
                        }
                    for (uint8_t* p = outBytes.data(); p != out; ++p) EXPECT_EQ(*p, 0xEE);
                    for (size_t k = extent; k < extent + 40; ++k) EXPECT_EQ(out[k], 0xEE);
                    return std::vector<uint8_t>(out, out + extent + 40);
                }, KernelVariants());
            }
        }
        // A source shorter than the walk reads is refused before any write.
        std::vector<uint8_t> small(pb * 10), out(pb * 200, 0xEE);
        const Quorin_Buffer src{small.data(), 2, 1, pb * 5}, dest{out.data(), 2, 1, pb * 100};
        EXPECT_EQ(m.run({&src, &dest, pixel, 0xF, 0, 0}), kQuorinError_BadArgument);
        EXPECT_EQ(out, std::vector<uint8_t>(out.size(), 0xEE));
    }
}

// The planar overwrites write every whole element up to rowBytes, padding
// included, and not a byte of a partial last element nor past the buffer.
TEST(Channels, PlanarOverwriteWritesWholeElementsUpToRowBytes) {
    const uint32_t scalarBits = 0xC3A5F00Fu;
    for (const Member* m : channels::kChannelMembers) {
        if (m->shape != Shape::OverwritePlane) continue;
        SCOPED_TRACE(m->name);
        const size_t e = m->format.pixelBytes();
        for (const size_t rowBytes : {e * 300, e * 300 + 1, e * 300 + e - 1}) {
            SCOPED_TRACE(rowBytes);
            const size_t rows = 230, width = 290;
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                std::vector<uint8_t> storage(rows * rowBytes + 64, 0xEE);
                Quorin_Buffer dest{storage.data() + 1, rows, width, rowBytes};
                EXPECT_EQ(m->run({nullptr, &dest, &scalarBits, 0, 0, flags}), kQuorinSuccess);
                EXPECT_EQ(storage[0], 0xEE);
                for (size_t y = 0; y < rows; ++y)
                    for (size_t k = 0; k < rowBytes; ++k) {
                        const uint8_t got = storage[1 + y * rowBytes + k];
                        const uint8_t want = k < rowBytes / e * e ? reinterpret_cast<const uint8_t*>(&scalarBits)[k % e]
                                                                 : 0xEE;
                        if (got != want) ADD_FAILURE() << "row " << y << " byte " << k;
                    }
                for (size_t k = 1 + rows * rowBytes; k < storage.size(); ++k) EXPECT_EQ(storage[k], 0xEE);
                return storage;
            }, KernelVariants());
        }
    }
}

// ---- Copy ---------------------------------------------------------------------

TEST(Channels, CopyMovesWidthBytesOfEachRowWhateverThePixelSize) {
    const Member& m = Named("QuorinCopyBuffer");
    for (const bool streamed : {false, true})  // streaming stores start at a vector boundary
    for (const size_t size : {size_t{10}, size_t{300}}) {
        std::optional<StreamingForced> forced;
        if (streamed) forced.emplace();
        GuardedImage src(size, size, 4, 3), dest(size, size, 4, 2, 1);
        src.fillRandom(5);
        dest.fillBytes(0x3C);
        for (const Quorin_Flags flags : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_SingleThreaded}}) {
            SCOPED_TRACE(testing::Message() << "size " << size << " flags " << flags << (streamed ? " streamed" : ""));
            ASSERT_EQ(m.run({src.record(), dest.record(), nullptr, 0, 4, flags}), kQuorinSuccess);
            EXPECT_EQ(dest.damagedGuard(), "");
            for (size_t y = 0; y < size; ++y) {
                EXPECT_EQ(std::memcmp(dest.row(y), src.row(y), size), 0) << "row " << y;
                for (size_t k = size; k < 4 * size; ++k) ASSERT_EQ(dest.row(y)[k], 0x3C) << "row " << y;
            }
        }
    }
}

// Rows without padding in both buffers are copied as one run, whole or in
// the split's bands, streamed or not; the bytes are the row copy's.
TEST(Channels, CopyOfRowsWithoutPaddingIsTheRowCopy) {
    const Member& m = Named("QuorinCopyBuffer");
    for (const bool streamed : {false, true}) {
        std::optional<StreamingForced> forced;
        if (streamed) forced.emplace();
        for (const size_t size : {size_t{7}, size_t{301}}) {
            std::vector<uint8_t> from(size * size + 64), to(size * size + 64, 0xEE);
            Random random(3);
            for (uint8_t& b : from) b = static_cast<uint8_t>(random.next());
            for (const size_t shift : {size_t{0}, size_t{5}}) {  // dest on and off a vector boundary
                const Quorin_Buffer src{from.data() + 1, size, size, size}, dest{to.data() + shift, size, size, size};
                for (const Quorin_Flags flags : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_SingleThreaded}}) {
                    std::fill(to.begin(), to.end(), 0xEE);
                    ASSERT_EQ(m.run({&src, &dest, nullptr, 0, 1, flags}), kQuorinSuccess);
                    for (size_t k = 0; k < to.size(); ++k) {
                        const bool inside = k >= shift && k < shift + size * size;
                        ASSERT_EQ(to[k], inside ? from[1 + k - shift] : 0xEE)
                            << "byte " << k << " size " << size << " shift " << shift << (streamed ? " streamed" : "");
                    }
                }
            }
        }
    }
}

// The copy reads width bytes a row, so a source is held only to those.
TEST(Channels, CopyRefusesOnlySourcesTooShortForTheBytesItReads) {
    const Member& m = Named("QuorinCopyBuffer");
    std::vector<uint8_t> from(3 * 12 + 7), to(3 * 40, 0xEE);
    for (size_t i = 0; i < from.size(); ++i) from[i] = static_cast<uint8_t>(i);
    const Quorin_Buffer dest{to.data(), 3, 10, 40};
    // Rows of 12 bytes (3 pixels of 4) hold the 10 bytes a row the copy reads.
    const Quorin_Buffer narrow{from.data(), 3, 3, 12};
    ASSERT_EQ(m.run({&narrow, &dest, nullptr, 0, 4, 0}), kQuorinSuccess);
    for (size_t y = 0; y < 3; ++y)
        for (size_t k = 0; k < 40; ++k) ASSERT_EQ(to[y * 40 + k], k < 10 ? from[y * 12 + k] : 0xEE);
    // One row fewer, or rows of 9 bytes whose last row ends before the last read.
    std::fill(to.begin(), to.end(), 0xEE);
    const Quorin_Buffer fewer{from.data(), 2, 3, 12}, shorter{from.data(), 3, 2, 9};
    for (const Quorin_Buffer* src : {&fewer, &shorter})
        EXPECT_EQ(m.run({src, &dest, nullptr, 0, 4, 0}), kQuorinError_BadArgument);
    EXPECT_EQ(to, std::vector<uint8_t>(to.size(), 0xEE));
}

// ---- Clip ---------------------------------------------------------------------

float Clipped(float x, float upper, float lower) {
    if (std::isnan(x)) return x;
    if (x < lower) return lower;
    return x > upper ? upper : x;
}

TEST(Channels, ClipMatchesTheBoundsRuleOnSpecialValuesUnderEveryKernelAndSplit) {
    const Member& m = Named("QuorinClip_PlanarF");
    const std::pair<float, float> bounds[] = {{1.0f, 0.0f}, {0.0f, 1.0f}, {-0.0f, 0.0f},
                                              {std::numeric_limits<float>::infinity(), -1.0f}};
    GuardedImage src(kWidth, kHeight, 4, 8, 2);
    Random random(11);
    for (size_t y = 0; y < kHeight; ++y)
        for (size_t x = 0; x < kWidth; ++x) {
            const float v = Special(random.next());
            std::memcpy(src.pixel<float>(x, y), &v, 4);  // rows need not be aligned
        }
    for (const auto& [upper, lower] : bounds) {
        SCOPED_TRACE(testing::Message() << "max " << upper << " min " << lower);
        const float values[2] = {upper, lower};
        ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
            GuardedImage dest(kWidth - 3, kHeight - 2, 4, 4, 1);
            EXPECT_EQ(m.run({src.record(), dest.record(), values, 0, 0, flags}), kQuorinSuccess);
            EXPECT_EQ(dest.damagedGuard(), "");
            for (size_t y = 0; y < dest.height(); ++y)
                for (size_t x = 0; x < dest.width(); ++x) {
                    const float want = Clipped(At<float>(src.row(y) + 4 * x), values[0], values[1]);
                    const float got = At<float>(dest.row(y) + 4 * x);
                    if (std::memcmp(&want, &got, 4) != 0) ADD_FAILURE() << x << "," << y;
                }
            return dest.pixels();
        });
    }
}

// A destination one element past its source in the same memory takes the
// scalar rule's order: each element is clipped from the one just written.
TEST(Channels, ClipOfOverlappingRunsKeepsTheElementOrder) {
    const Member& m = Named("QuorinClip_PlanarF");
    std::vector<float> memory(101);
    for (size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<float>(i % 7) - 3.0f;
    std::vector<float> expected = memory;
    for (size_t i = 0; i < 100; ++i) expected[i + 1] = Clipped(expected[i], 2.0f, -1.0f);
    Quorin_Buffer src{memory.data(), 1, 100, 400}, dest{memory.data() + 1, 1, 100, 400};
    const float values[2] = {2.0f, -1.0f};
    ASSERT_EQ(m.run({&src, &dest, values, 0, 0, 0}), kQuorinSuccess);
    EXPECT_EQ(memory, expected);
}

// ---- Permute ------------------------------------------------------------------

TEST(Channels, PermuteFollowsEveryFoldedMapUnderEveryKernelAndSplit) {
    for (const char* name : {"QuorinPermuteChannels_ARGB8888", "QuorinPermuteChannels_ARGBFFFF"}) {
        const Member& m = Named(name);
        SCOPED_TRACE(name);
        const size_t bytes = m.format.pixelBytes(), sample = m.format.sampleBytes();
        // Every map on a small image under every kernel; every 51st also
        // split, on an image large enough to split.
        GuardedImage small(67, 9, bytes, 8, 1), large(kWidth, kHeight, bytes, 8, 1);
        small.fillRandom(9);
        large.fillRandom(10);
        Random random(4);
        for (unsigned code = 0; code < 256; ++code) {
            // Bits above the two that count are set at random: they must fold.
            uint8_t map[4];
            for (unsigned c = 0; c < 4; ++c) map[c] = static_cast<uint8_t>((code >> (2 * c) & 3) | (random.next() & 0xFC));
            SCOPED_TRACE(code);
            const bool split = code % 51 == 0;
            GuardedImage& src = split ? large : small;
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(src.width(), src.height(), bytes, 4, 3);
                EXPECT_EQ(m.run({src.record(), dest.record(), map, 0, 0, flags}), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                for (size_t y = 0; y < src.height(); y += 5)
                    for (size_t x = 0; x < src.width(); ++x)
                        for (size_t c = 0; c < 4; ++c)
                            if (std::memcmp(dest.row(y) + x * bytes + c * sample,
                                            src.row(y) + x * bytes + (code >> (2 * c) & 3) * sample, sample) != 0)
                                ADD_FAILURE() << x << "," << y << " channel " << c;
                return dest.pixels();
            }, split ? KernelAndSplitVariants() : KernelVariants());
        }
        // In place, reversing the channels.
        GuardedImage image(33, 2, bytes, 0);
        image.fillRandom(2);
        const std::vector<uint8_t> before = image.pixels();
        const uint8_t reverse[4] = {3, 2, 1, 0};
        ASSERT_EQ(m.run({image.record(), image.record(), reverse, 0, 0, 0}), kQuorinSuccess);
        const std::vector<uint8_t> after = image.pixels();
        for (size_t i = 0; i < before.size(); i += bytes)
            for (size_t c = 0; c < 4; ++c)
                ASSERT_EQ(std::memcmp(&after[i + c * sample], &before[i + (3 - c) * sample], sample), 0);
    }
}

// ---- Extract -------------------------------------------------------------------

// Each destination row takes ceil(rowBytes / pixel bytes) samples, padding
// included, reading on into the source's next rows when its rows are the
// longer; nothing outside those bytes changes.
TEST(Channels, ExtractWritesItsCountOfSamplesPerRowUnderEveryKernel) {
    for (const char* name : {"QuorinExtractChannel_ARGB8888", "QuorinExtractChannel_ARGB16U",
                             "QuorinExtractChannel_ARGBFFFF"}) {
        const Member& m = Named(name);
        SCOPED_TRACE(name);
        const size_t e = m.format.sampleBytes(), pb = m.format.pixelBytes();
        const size_t width = 150, rows = 9, srcRowBytes = width * pb + 3 * e;
        std::vector<uint8_t> source(rows * srcRowBytes);
        Random random(8);
        for (uint8_t& b : source) b = static_cast<uint8_t>(random.next());
        // Large destinations are written with streaming stores, which start
        // at a vector boundary: the second round forces them at every size.
        for (const bool streamed : {false, true})
        for (const size_t destRowBytes : {width * e, width * e + 1, width * e + e, width * e + 77, srcRowBytes}) {
            std::optional<StreamingForced> forced;
            if (streamed) forced.emplace();
            for (int channel = 0; channel < 4; ++channel) {
                SCOPED_TRACE(testing::Message() << "rowBytes " << destRowBytes << " channel " << channel
                                                << (streamed ? " streamed" : ""));
                const size_t count = (destRowBytes + pb - 1) / pb;
                // The last row's last sample read must lie inside the source.
                const bool fits = (rows - 1) * srcRowBytes + (count - 1) * pb + (channel + 1) * e <= source.size();
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    std::vector<uint8_t> out(rows * destRowBytes + 32, 0xEE);
                    const Quorin_Buffer src{source.data(), rows, width, srcRowBytes};
                    const Quorin_Buffer dest{out.data(), rows, width, destRowBytes};
                    Call call{&src, &dest, nullptr, 0, 0, flags, channel};
                    EXPECT_EQ(m.run(call), fits ? kQuorinSuccess : kQuorinError_BadArgument);
                    if (!fits) {
                        EXPECT_EQ(out, std::vector<uint8_t>(out.size(), 0xEE));
                        return out;
                    }
                    for (size_t y = 0; y < rows; ++y)
                        for (size_t k = 0; k < destRowBytes; ++k) {
                            const size_t from = y * srcRowBytes + k / e * pb + channel * e + k % e;
                            const uint8_t want = k < count * e ? source[from] : 0xEE;
                            if (out[y * destRowBytes + k] != want) ADD_FAILURE() << "row " << y << " byte " << k;
                        }
                    for (size_t k = rows * destRowBytes; k < out.size(); ++k) EXPECT_EQ(out[k], 0xEE);
                    return out;
                }, KernelVariants());
            }
        }
        // Refusals beyond the list: a channel outside 0..3, and walks that
        // would leave a buffer.
        std::vector<uint8_t> out(rows * srcRowBytes * 2, 0xEE);
        const Quorin_Buffer src{source.data(), rows, width, srcRowBytes};
        const Quorin_Buffer dest{out.data(), rows, width, width * e};
        for (const int channel : {-1, 4, 1 << 30}) EXPECT_EQ(m.run({&src, &dest, nullptr, 0, 0, 0, channel}), -21773);
        const Quorin_Buffer longRows{out.data(), rows, width, srcRowBytes + pb};
        EXPECT_EQ(m.run({&src, &longRows, nullptr, 0, 0, 0, 3}), kQuorinError_BadArgument);
        if (e > 1) {  // a row too short for one sample
            const Quorin_Buffer tinyRow{out.data(), 1, 0, e - 1};
            EXPECT_EQ(m.run({&src, &tinyRow, nullptr, 0, 0, 0, 0}), kQuorinError_BadArgument);
        }
        const Quorin_Buffer noRows{out.data(), 0, width, width * e};
        EXPECT_EQ(m.run({&src, &noRows, nullptr, 0, 0, 0, 0}), kQuorinSuccess);
        EXPECT_EQ(out, std::vector<uint8_t>(out.size(), 0xEE));
    }
}

// A walk whose last sample ends its source: the source stops at that
// sample, against a protected page, with a count that whole vector steps
// divide, so a step that loaded the last pixel whole would fault.
TEST(Channels, ExtractReadsNoFurtherThanItsLastSample) {
    for (const char* name : {"QuorinExtractChannel_ARGB8888", "QuorinExtractChannel_ARGB16U",
                             "QuorinExtractChannel_ARGBFFFF"}) {
        const Member& m = Named(name);
        const size_t e = m.format.sampleBytes(), pb = m.format.pixelBytes();
        const size_t count = 128, rows = 3, srcRowBytes = count * pb + 8;
        for (int channel = 0; channel < 3; ++channel) {
            SCOPED_TRACE(testing::Message() << name << " channel " << channel);
            const size_t rowRead = (count - 1) * pb + (channel + 1) * e;
            const size_t extent = (rows - 1) * srcRowBytes + rowRead;
            GuardedImage source(rowRead, rows, 1, srcRowBytes - rowRead, (64 - extent % 64) % 64);
            source.fillRandom(11);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                // Rows of count pixels' bytes take count samples each.
                const size_t destRowBytes = count * pb;
                std::vector<uint8_t> out(rows * destRowBytes, 0xEE);
                const Quorin_Buffer src{source.row(0), rows, count, srcRowBytes};
                const Quorin_Buffer dest{out.data(), rows, count, destRowBytes};
                EXPECT_EQ(m.run({&src, &dest, nullptr, 0, 0, flags, channel}), kQuorinSuccess);
                for (size_t y = 0; y < rows; ++y)
                    for (size_t k = 0; k < destRowBytes; ++k) {
                        const uint8_t want = k < count * e ? source.row(y)[k / e * pb + channel * e + k % e] : 0xEE;
                        if (out[y * destRowBytes + k] != want) ADD_FAILURE() << "row " << y << " byte " << k;
                    }
                return out;
            }, KernelVariants());
        }
    }
}

// ---- Table lookups ------------------------------------------------------------

// The walk as described, byte by byte over the whole storage: each row from
// its first byte, four bytes a step up to rowBytes, bytes past the buffer
// skipped; in place, a row reads what the row before wrote into it.
std::vector<uint8_t> LookedUp(const std::vector<uint8_t>& source, size_t srcRowBytes, std::vector<uint8_t> out,
                              size_t front, size_t rows, size_t rowBytes, const uint8_t* const tables[4], bool inPlace) {
    const size_t total = rows * rowBytes;
    for (size_t y = 0; y < rows; ++y)
        for (size_t i = 0; i < rowBytes; i += 4)
            for (size_t k = 0; k < 4; ++k) {
                const size_t at = y * rowBytes + i + k;
                if (at >= total) continue;
                const uint8_t in = inPlace ? out[front + at] : source[y * srcRowBytes + i + k];
                out[front + at] = tables[k][in];
            }
    return out;
}

TEST(Channels, TableLookUpsWalkFourByteStepsToRowBytesUnderEveryKernel) {
    uint8_t tables[4][256];
    Random random(21);
    for (auto& table : tables)
        for (uint8_t& entry : table) entry = static_cast<uint8_t>(random.next());
    for (const char* name : {"QuorinTableLookUp_ARGB8888", "QuorinTableLookUp_Planar8"}) {
        const Member& m = Named(name);
        SCOPED_TRACE(name);
        const bool single = m.format.channels == 1;
        const uint8_t* const given[4] = {tables[0], tables[1], tables[2], tables[3]};
        const uint8_t* const used[4] = {tables[0], single ? tables[0] : tables[1], single ? tables[0] : tables[2],
                                        single ? tables[0] : tables[3]};
        const size_t pb = m.format.pixelBytes(), width = 150 / pb + 1, rows = 7;
        for (const size_t rowBytes : {width * pb, width * pb + 1, width * pb + 2, width * pb + 3, width * pb + 9}) {
            for (const bool inPlace : {false, true}) {
                SCOPED_TRACE(testing::Message() << "rowBytes " << rowBytes << (inPlace ? " in place" : ""));
                const size_t srcRowBytes = inPlace ? rowBytes : rowBytes + 5, front = 16;
                std::vector<uint8_t> source(rows * srcRowBytes);
                for (uint8_t& b : source) b = static_cast<uint8_t>(random.next());
                std::vector<uint8_t> start(front + rows * rowBytes + 16, 0xEE);
                if (inPlace) std::copy(source.begin(), source.end(), start.begin() + front);
                const std::vector<uint8_t> want =
                    LookedUp(source, srcRowBytes, start, front, rows, rowBytes, used, inPlace);
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    std::vector<uint8_t> out = start;
                    const Quorin_Buffer dest{out.data() + front, rows, width, rowBytes};
                    const Quorin_Buffer src{inPlace ? out.data() + front : source.data(), rows, width, srcRowBytes};
                    EXPECT_EQ(m.run({&src, &dest, given, 0, 0, flags}), kQuorinSuccess);
                    EXPECT_EQ(out, want);
                    return out;
                }, KernelVariants());
            }
        }
        // A source too short for the walk (the last step of its last row
        // would read past it) is refused before any write.
        std::vector<uint8_t> small(2 * (width * pb + 1)), out(2 * (width * pb + 3), 0xEE);
        const Quorin_Buffer src{small.data(), 2, width, width * pb + 1}, dest{out.data(), 2, width, width * pb + 3};
        EXPECT_EQ(m.run({&src, &dest, given, 0, 0, 0}), kQuorinError_BadArgument);
        EXPECT_EQ(out, std::vector<uint8_t>(out.size(), 0xEE));
        const uint8_t* const none[4] = {nullptr, tables[1], tables[2], tables[3]};
        EXPECT_EQ(m.run({&src, &dest, none, 0, 0, 0}), kQuorinError_BadArgument);
    }
}

// The vector lookup picks a byte's block by its high nibble's bits, shifting
// them to the top of the byte in 16-bit lanes: every byte beside every other
// byte in one 16-bit lane, below it and above it, against the table itself.
TEST(Channels, TableLookUpOfEveryByteBesideEveryByteUnderEveryKernel) {
    uint8_t table[256];
    Random random(5);
    for (uint8_t& entry : table) entry = static_cast<uint8_t>(random.next());
    const uint8_t* const tables[4] = {table, table, table, table};
    const Member& m = Named("QuorinTableLookUp_Planar8");
    const size_t rows = 512, rowBytes = 512;
    std::vector<uint8_t> source(rows * rowBytes);
    for (size_t y = 0; y < rows; ++y)
        for (size_t x = 0; x < 256; ++x) {
            const bool below = y < 256;
            source[y * rowBytes + 2 * x + (below ? 0 : 1)] = static_cast<uint8_t>(x);
            source[y * rowBytes + 2 * x + (below ? 1 : 0)] = static_cast<uint8_t>(y);
        }
    ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
        std::vector<uint8_t> out(source.size(), 0xEE);
        const Quorin_Buffer src{source.data(), rows, rowBytes, rowBytes}, dest{out.data(), rows, rowBytes, rowBytes};
        EXPECT_EQ(m.run({&src, &dest, tables, 0, 0, flags}), kQuorinSuccess);
        size_t wrong = 0;
        for (size_t i = 0; i < source.size(); ++i) wrong += out[i] != table[source[i]];
        EXPECT_EQ(wrong, 0u);
        return out;
    }, KernelVariants());
}

// ---- Select and overwrite from other images ----------------------------------------

TEST(Channels, SelectTakesTheMaskedChannelsFromTheNewSourceUnderEveryKernelAndSplit) {
    for (const char* name : {"QuorinSelectChannels_ARGB8888", "QuorinSelectChannels_ARGBFFFF"}) {
        const Member& m = Named(name);
        SCOPED_TRACE(name);
        const size_t pb = m.format.pixelBytes(), e = m.format.sampleBytes();
        GuardedImage orig(kWidth, kHeight, pb, 8, 1), fresh(kWidth, kHeight + 3, pb, 4, 3);
        orig.fillRandom(31);
        fresh.fillRandom(32);
        for (uint32_t mask = 0; mask < 16; ++mask) {
            SCOPED_TRACE(mask);
            ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                GuardedImage dest(kWidth - 5, kHeight - 1, pb, 4, 2);
                Call call{orig.record(), dest.record(), nullptr, mask | 0xF0F0u, 0, flags};
                call.newSrc = fresh.record();
                EXPECT_EQ(m.run(call), kQuorinSuccess);
                EXPECT_EQ(dest.damagedGuard(), "");
                for (size_t y = 0; y < dest.height(); y += 3)
                    for (size_t k = 0; k < dest.width() * pb; ++k) {
                        const bool selected = (mask >> (3 - k % pb / e) & 1) != 0;
                        const uint8_t want = selected ? fresh.row(y)[k] : orig.row(y)[k];
                        if (dest.row(y)[k] != want) ADD_FAILURE() << "row " << y << " byte " << k;
                    }
                return dest.pixels();
            }, mask % 5 == 0 ? KernelAndSplitVariants() : KernelVariants());
        }
    }
}

// Pixels up to dest's rowBytes, padding included: the selected channels
// take the plane's element at the column; nothing past the whole pixels of
// a row changes.
TEST(Channels, OverwriteFromAPlaneWalksDestRowBytesUnderEveryKernel) {
    for (const char* name : {"QuorinOverwriteChannels_ARGB8888", "QuorinOverwriteChannels_ARGBFFFF"}) {
        const Member& m = Named(name);
        SCOPED_TRACE(name);
        const size_t pb = m.format.pixelBytes(), e = m.format.sampleBytes(), rows = 9, width = 70;
        for (const bool streamed : {false, true})  // streaming stores start at a vector boundary
        for (const size_t rowBytes : {width * pb, width * pb + 3, width * pb + pb, width * pb + 2 * pb + 1}) {
            std::optional<StreamingForced> forced;
            if (streamed) forced.emplace();
            const size_t count = rowBytes / pb, planeRowBytes = count * e + 2, origRowBytes = rowBytes + pb;
            std::vector<uint8_t> plane(rows * planeRowBytes), orig(rows * origRowBytes);
            Random random(rowBytes);
            for (uint8_t& b : plane) b = static_cast<uint8_t>(random.next());
            for (uint8_t& b : orig) b = static_cast<uint8_t>(random.next());
            for (const uint32_t mask : {0x0u, 0x8u, 0x5u, 0xEu, 0xFu}) {
                SCOPED_TRACE(testing::Message() << "rowBytes " << rowBytes << " mask " << mask);
                ExpectSameBytesEverywhere([&](Quorin_Flags flags) {
                    std::vector<uint8_t> out(rows * rowBytes + 32, 0xEE);
                    const Quorin_Buffer newSrc{plane.data(), rows, width, planeRowBytes};
                    const Quorin_Buffer src{orig.data(), rows, width, origRowBytes};
                    const Quorin_Buffer dest{out.data(), rows, width, rowBytes};
                    Call call{&src, &dest, nullptr, mask, 0, flags};
                    call.newSrc = &newSrc;
                    EXPECT_EQ(m.run(call), kQuorinSuccess);
                    for (size_t y = 0; y < rows; ++y)
                        for (size_t k = 0; k < rowBytes; ++k) {
                            uint8_t want = 0xEE;
                            if (k < count * pb) {
                                const bool selected = (mask >> (3 - k % pb / e) & 1) != 0;
                                want = selected ? plane[y * planeRowBytes + k / pb * e + k % e]
                                                : orig[y * origRowBytes + k];
                            }
                            if (out[y * rowBytes + k] != want) ADD_FAILURE() << "row " << y << " byte " << k;
                        }
                    for (size_t k = rows * rowBytes; k < out.size(); ++k) EXPECT_EQ(out[k], 0xEE);
                    return out;
                }, KernelVariants());
            }
        }
        // Sources shorter than the walk reads are refused before any write.
        std::vector<uint8_t> plane(40 * e), orig(40 * pb), out(2 * 20 * pb, 0xEE);
        const Quorin_Buffer dest{out.data(), 2, 10, 20 * pb};
        const Quorin_Buffer shortPlane{plane.data(), 2, 10, 10 * e}, longPlane{plane.data(), 2, 20, 20 * e};
        const Quorin_Buffer shortSrc{orig.data(), 2, 10, 10 * pb}, longSrc{orig.data(), 2, 20, 20 * pb};
        for (const auto& [p, o] : {std::pair{&shortPlane, &longSrc}, std::pair{&longPlane, &shortSrc}}) {
            Call call{o, &dest, nullptr, 0xF, 0, 0};
            call.newSrc = p;
            EXPECT_EQ(m.run(call), kQuorinError_BadArgument);
        }
        EXPECT_EQ(out, std::vector<uint8_t>(out.size(), 0xEE));
    }
}

// ---- Check lists ------------------------------------------------------------

TEST(Channels, EveryMemberRefusesInTheOrderOfItsCheckList) {
    const uint32_t value[4] = {1, 2, 3, 4};
    for (const Member* m : channels::kChannelMembers) {
        SCOPED_TRACE(m->name);
        const size_t bytes = m->shape == Shape::Copy ? 4 : m->format.pixelBytes();
        GuardedImage a(9, 7, bytes, 4), b(9, 7, bytes, 8), plane(9, 7, m->format.sampleBytes(), 4),
            tight(9, 7, bytes, 0), tightSource(9, 7, bytes, 0), c(9, 7, bytes, 12), out(9, 7, std::max<size_t>(m->output.pixelBytes(), 1), 4);
        a.fillRandom(1);
        std::vector<GuardedImage*> images;
        std::vector<size_t> written;
        CheckedEntry entry;
        switch (m->shape) {
            case Shape::OverwritePlane:  // writes up to rowBytes: no padding to write into
                images = {&tight}, written = {0};
                entry = [m, &value](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    return m->run({nullptr, r[0], value, 0, 0, flags});
                };
                break;
            case Shape::Fill:
                images = {&a}, written = {0};
                entry = [m, &value](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    return m->run({nullptr, r[0], value, 0, 0, flags});
                };
                break;
            case Shape::OverwritePixel:  // dest's rows the shorter: the walk reads src's at dest's count
                images = {&b, &a}, written = {1};
                entry = [m, &value](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    return m->run({r[0], r[1], value, 0x9, 0, flags});
                };
                break;
            case Shape::OverwriteScalar:
                images = {&a, &b}, written = {1};
                entry = [m, &value](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    return m->run({r[0], r[1], value, 0x9, 0, flags});
                };
                break;
            case Shape::Permute:
                images = {&a, &b}, written = {1};
                entry = [m](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    static const uint8_t map[4] = {1, 2, 3, 0};
                    return m->run({r[0], r[1], map, 0, 0, flags});
                };
                break;
            case Shape::LookUp:  // written and read up to dest's rowBytes: no padding to reach
                images = {&tight, &tightSource}, written = {0};
                entry = [m](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    static uint8_t table[256];
                    static const uint8_t* const tables[4] = {table, table, table, table};
                    return m->run({r[1], r[0], tables, 0, 0, flags});
                };
                break;
            case Shape::Select:
                images = {&a, &b, &c}, written = {0};
                entry = [m](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    Call call{r[1], r[0], nullptr, 0x6, 0, flags};
                    call.newSrc = r[2];
                    return m->run(call);
                };
                break;
            case Shape::OverwritePlanes:  // writes up to dest's rowBytes
                images = {&plane, &b, &tight}, written = {2};
                entry = [m](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    Call call{r[1], r[2], nullptr, 0x6, 0, flags};
                    call.newSrc = r[0];
                    return m->run(call);
                };
                break;
            case Shape::Flatten:
                images = {&out, &b}, written = {0};
                entry = [m, &value](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    return m->run({r[1], r[0], value, 0, 0, flags, 1});
                };
                break;
            case Shape::Extract:
                images = {&plane, &a}, written = {0};
                entry = [m](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    return m->run({r[1], r[0], nullptr, 0, 0, flags, 2});
                };
                break;
            default:  // copy and clip list the destination (the region) first
                images = {&b, &a}, written = {0};
                entry = [m, &value](const std::vector<const Quorin_Buffer*>& r, Quorin_Flags flags) {
                    return m->run({r[1], r[0], value, 0, 4, flags});
                };
        }
        EXPECT_GT(ExpectCheckOrder(m->checks, images, written, entry), 0u);
    }
    // The colour pointer of the four-channel fills.
    GuardedImage dest(4, 4, 16, 0);
    EXPECT_EQ(Named("QuorinBufferFill_ARGBFFFF").run({nullptr, dest.record(), nullptr, 0, 0, 0}),
              kQuorinError_NullPointer);
    EXPECT_EQ(Named("QuorinBufferFill_ARGB8888").run({nullptr, dest.record(), nullptr, 0, 0, 0}),
              kQuorinError_NullPointer);
    EXPECT_EQ(Named("QuorinPermuteChannels_ARGBFFFF").run({dest.record(), dest.record(), nullptr, 0, 0, 0}),
              kQuorinError_NullPointer);
}

// ---- Processor-count chunking -----------------------------------------------

// Every row once, in the chunks the rule names, for every processor count
// and height up to small bounds; the pixel bound is tested at its edge.
TEST(Channels, ProcessorChunksCoverEveryRowOnceInTheNamedCut) {
    for (size_t n = 2; n <= 9; ++n)
        for (size_t h = n; h <= 60; ++h) {
            for (const ChunkRemainder rule : {ChunkRemainder::LastOfN, ChunkRemainder::ExtraChunk}) {
                const ChunkPlan plan = PlanChunks(n, h, rule);
                size_t covered = 0;
                for (size_t i = 0; i < plan.chunks; ++i) {
                    ASSERT_EQ(plan.firstRowOf(i), covered);
                    covered += plan.rowsOf(i);
                }
                ASSERT_EQ(covered, h) << n << " processors, " << h << " rows";
                if (rule == ChunkRemainder::LastOfN) {
                    ASSERT_EQ(plan.chunks, n);
                    ASSERT_EQ(plan.rows, h % n == 0 ? h / n : h / (n - 1));
                } else {
                    const size_t whole = h % n == 0 ? n : n - 1;
                    ASSERT_EQ(plan.chunks, whole + (h % whole != 0 ? 1 : 0));
                    ASSERT_EQ(plan.rows, h / whole);
                }
            }
        }
    EXPECT_FALSE(WantsChunks(0, 4, 63999, 1));
    EXPECT_FALSE(WantsChunks(0, 4, 16000, 3));
    EXPECT_TRUE(WantsChunks(0, 4, 16000, 4));
    EXPECT_FALSE(WantsChunks(kQuorinFlag_SingleThreaded, 4, 16000, 4));
    EXPECT_FALSE(WantsChunks(0, 1, 16000, 4));
    // Six rows on four processors: 2, 2, 2 and an empty chunk that still runs.
    SetProcessorCountForTest(4);
    std::vector<std::pair<size_t, size_t>> bands(8, {99, 99});
    std::atomic<size_t> calls{0};
    RunProcessorChunks(0, 20000, 6, [&](size_t first, size_t rows) {
        bands[calls++] = {first, rows};
    });
    SetProcessorCountForTest(0);
    std::sort(bands.begin(), bands.begin() + calls.load());
    ASSERT_EQ(calls.load(), 4u);
    EXPECT_EQ(bands[0], (std::pair<size_t, size_t>{0, 2}));
    EXPECT_EQ(bands[1], (std::pair<size_t, size_t>{2, 2}));
    EXPECT_EQ(bands[2], (std::pair<size_t, size_t>{4, 2}));
    EXPECT_EQ(bands[3], (std::pair<size_t, size_t>{6, 0}));
}

// A speed-up switch the library does not support ends the process at the
// chunking members' kernel choice, before any byte is written.
TEST(ChannelsDeathTest, UnsupportedSpeedupSwitchIsFatalInTheChunkingMembers) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const uint8_t colour[4] = {1, 2, 3, 4}, map[4] = {0, 1, 2, 3};
    GuardedImage image(300, 300, 4);
    EXPECT_DEATH((Quorin_Boosten(1), Named("QuorinBufferFill_ARGB8888").run({nullptr, image.record(), colour, 0, 0, 0})),
                 "GetCPUFeatures");
    EXPECT_DEATH((Quorin_Boosten(3), Named("QuorinPermuteChannels_ARGB8888").run(
                                         {image.record(), image.record(), map, 0, 0, 0})),
                 "GetCPUFeatures");
}

}  // namespace
}  // namespace quorin::test
