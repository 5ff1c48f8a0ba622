// Scalar and vector kernels give the same bits for every input: every member
// over images whose samples are drawn from the floats where kernels usually
// part ways (NaNs of both signs and several payloads, signalling ones,
// infinities, denormals, signed zeros, the extremes). Members of other depths
// see the same bytes and must agree on them as well.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "Members.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

constexpr uint32_t kSpecial[] = {
    0x00000000, 0x80000000,              // +0, -0
    0x00000001, 0x807FFFFF, 0x00400000,  // denormals
    0x00800000, 0x7F7FFFFF, 0xFF7FFFFF,  // smallest normal, largest of each sign
    0x3F800000, 0xBF800000, 0x3F000000, 0x40000000, 0x3E800000,  // 1, -1, 0.5, 2, 0.25
    0x7F800000, 0xFF800000,                                      // infinities
    0x7FC00000, 0xFFC00000, 0x7FC00001, 0x7FFFFFFF, 0xFFC12345,  // quiet NaNs
    0x7F800001, 0xFF800123, 0x7FA00000,                          // signalling NaNs
};
constexpr size_t kCount = sizeof kSpecial / sizeof kSpecial[0];

// An image whose every four bytes are one of the floats above, the same ones
// for the same seed.
std::unique_ptr<GuardedImage> SpecialImage(size_t width, size_t height, size_t pixelBytes, uint64_t seed,
                                           size_t padding = 4) {
    auto image = std::make_unique<GuardedImage>(width, height, pixelBytes, padding);
    Random random(seed);
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x + 4 <= width * pixelBytes; x += 4)
            std::memcpy(image->row(y) + x, &kSpecial[random.next() % kCount], 4);
    return image;
}

// The written bytes of one call, with every source made of special floats.
std::vector<uint8_t> SpecialRun(const SafetyMember& m, size_t width, size_t height, Quorin_Flags flags,
                                const float* max, const float* min) {
    std::vector<std::unique_ptr<GuardedImage>> images;
    std::vector<const Quorin_Buffer*> records;
    for (size_t i = 0; i < m.args.size(); ++i) {
        // Padding is poisoned: a destination written up to its rowBytes has none.
        const size_t padding = m.args[i].unpadded() || m.packedRows ? 0 : 4;
        images.push_back(SpecialImage(width, height, m.args[i].pixelBytes, 0xF1 + i, padding));
        records.push_back(images.back()->record());
    }
    EXPECT_EQ(m.run(records.data(), flags, max, min), kQuorinSuccess) << m.name;
    std::vector<uint8_t> written;
    for (size_t i = 0; i < images.size(); ++i)
        if (m.args[i].written()) {
            const auto bytes = images[i]->pixels();
            written.insert(written.end(), bytes.begin(), bytes.end());
        }
    return written;
}

TEST(SpecialFloats, EveryKernelGivesTheSameBitsForEveryMember) {
    for (const SafetyMember& m : ImplementedMembers()) {
        // Odd sizes, so that vector tails run too.
        ExpectSameBytesEverywhere([&](Quorin_Flags f) { return SpecialRun(m, 131, 61, f, kWideMax, kWideMin); },
                                  KernelVariants());
        if (testing::Test::HasFailure()) FAIL() << "first member whose kernels differ: " << m.name;
    }
}

// Ranges made of the same floats: NaN, infinite, reversed and empty ranges.
TEST(SpecialFloats, EveryKernelGivesTheSameBitsForSpecialRanges) {
    Random random(0x4A);
    for (int draw = 0; draw < 60; ++draw) {
        float max[4], min[4];
        for (int c = 0; c < 4; ++c) {
            std::memcpy(&max[c], &kSpecial[random.next() % kCount], 4);
            std::memcpy(&min[c], &kSpecial[random.next() % kCount], 4);
        }
        for (const SafetyMember& m : ImplementedMembers()) {
            if (!m.takesRanges) continue;
            ExpectSameBytesEverywhere([&](Quorin_Flags f) { return SpecialRun(m, 37, 5, f, max, min); },
                                      KernelVariants());
            if (testing::Test::HasFailure()) FAIL() << m.name << " with ranges of draw " << draw;
        }
    }
}

}  // namespace
}  // namespace quorin::test
