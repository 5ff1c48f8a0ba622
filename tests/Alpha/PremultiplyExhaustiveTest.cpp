// Every (colour, alpha) pair of the 16-bit rules, 2^32 each, through every
// vector target against the scalar kernel. Too slow for every run (a few
// minutes); run with --gtest_also_run_disabled_tests after changing a kernel.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cstring>
#include <vector>

#include "Alpha/PremultiplyKernels.h"

namespace quorin::premultiply {
namespace {

template <class Rule>
void CheckAllPairs() {
    using Sample = typename Rule::Sample;
    constexpr size_t kPixels = (65536 + 2) / 3;  // three colours a pixel cover all 65,536
    std::vector<Sample> src(kPixels * 4), scalar(kPixels * 4), vector(kPixels * 4);
    const auto targets = hwy::SupportedAndGeneratedTargets();
    for (uint32_t a = 0; a < 65536; ++a) {
        for (size_t i = 0; i < kPixels; ++i) {
            src[i * 4] = static_cast<Sample>(a);
            for (size_t ch = 1; ch < 4; ++ch) src[i * 4 + ch] = static_cast<Sample>((i * 3 + ch - 1) & 0xFFFF);
        }
        ApplyToPixels<Rule, 0>(src.data(), scalar.data(), kPixels);
        for (const int64_t target : targets) {
            hwy::SetSupportedTargetsForTest(target);
            Kernels<Rule>::pixels.vector()(src.data(), vector.data(), kPixels, 0, false);
            if (std::memcmp(scalar.data(), vector.data(), scalar.size() * sizeof(Sample)) != 0) {
                size_t j = 0;
                while (scalar[j] == vector[j]) ++j;
                hwy::SetSupportedTargetsForTest(0);
                FAIL() << hwy::TargetName(target) << ": alpha " << a << ", colour " << src[j] << " gives "
                       << vector[j] << " instead of " << scalar[j];
            }
        }
        hwy::SetSupportedTargetsForTest(0);
    }
}

TEST(PremultiplyExhaustive, DISABLED_Premultiply16U) { CheckAllPairs<Premultiply16U>(); }
TEST(PremultiplyExhaustive, DISABLED_Unpremultiply16U) { CheckAllPairs<Unpremultiply16U>(); }
TEST(PremultiplyExhaustive, DISABLED_Premultiply16Q12) { CheckAllPairs<Premultiply16Q12>(); }
TEST(PremultiplyExhaustive, DISABLED_Unpremultiply16Q12) { CheckAllPairs<Unpremultiply16Q12>(); }

}  // namespace
}  // namespace quorin::premultiply
