// The premultiply kernel pairs below the entry points: every vector twin,
// on every instruction set, gives its scalar kernel's bytes with alpha in
// each of the four channels (the entry points reach only the first and the
// last), for counts that end at every point of a vector and at every offset.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cstring>
#include <vector>

#include "Alpha/PremultiplyKernels.h"
#include "support/GuardedImage.h"

namespace quorin::premultiply {
namespace {

template <class Rule>
void ExpectVectorMatchesScalarAtEveryAlphaPosition() {
    using S = typename Rule::Sample;
    const auto& pair = Kernels<Rule>::pixels;
    constexpr size_t kMaxPixels = 75, kSlack = 8;
    test::Random random(sizeof(S) * 1000 + 17);
    std::vector<S> src((kMaxPixels + kSlack) * 4);
    for (S& s : src) {
        const uint64_t bits = random.next();
        if constexpr (sizeof(S) == 4) s = static_cast<float>(static_cast<int>(bits % 2400) - 200) / 1000.0f;
        else std::memcpy(&s, &bits, sizeof s);
    }
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        for (size_t alpha = 0; alpha < 4; ++alpha)
            for (size_t offset = 0; offset < kSlack; offset += 3)
                for (size_t pixels = 0; pixels <= kMaxPixels; ++pixels) {
                    std::vector<S> want(pixels * 4), got(pixels * 4);
                    pair.scalar(src.data() + offset * 4, want.data(), pixels, alpha, false);
                    pair.vector()(src.data() + offset * 4, got.data(), pixels, alpha, false);
                    ASSERT_TRUE(want.empty() || std::memcmp(want.data(), got.data(), want.size() * sizeof(S)) == 0)
                        << hwy::TargetName(target) << ": alpha in channel " << alpha << ", " << pixels
                        << " pixels from pixel " << offset;
                }
    }
    hwy::SetSupportedTargetsForTest(0);
}

TEST(PremultiplyKernels, VectorTwinsMatchTheScalarKernelsWithAlphaInAnyChannel) {
    ExpectVectorMatchesScalarAtEveryAlphaPosition<Premultiply8>();
    ExpectVectorMatchesScalarAtEveryAlphaPosition<Unpremultiply8>();
    ExpectVectorMatchesScalarAtEveryAlphaPosition<Premultiply16U>();
    ExpectVectorMatchesScalarAtEveryAlphaPosition<Unpremultiply16U>();
    ExpectVectorMatchesScalarAtEveryAlphaPosition<Premultiply16Q12>();
    ExpectVectorMatchesScalarAtEveryAlphaPosition<Unpremultiply16Q12>();
    ExpectVectorMatchesScalarAtEveryAlphaPosition<PremultiplyF>();
    ExpectVectorMatchesScalarAtEveryAlphaPosition<UnpremultiplyF>();
}

}  // namespace
}  // namespace quorin::premultiply
