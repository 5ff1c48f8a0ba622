#include <gtest/gtest.h>
#include <hwy/detect_targets.h>

#include "Core/Features.h"
#include "quorin/Utilities.h"

namespace quorin {
namespace {

constexpr uint64_t kAllOnes = ~uint64_t{0};
constexpr const char* kSwitchRecord = "quorin\\[2\\] GetCPUFeatures Utilities/CPUFeatures:66: unsupported processor feature";

class ProbedMask {
public:
    explicit ProbedMask(uint64_t mask) : saved_(detail::gProbedFeatures) { SetProbedFeaturesForTest(mask); }
    ~ProbedMask() {
        SetProbedFeaturesForTest(saved_);
        Quorin_Boosten(kAllOnes);
    }

private:
    uint64_t saved_;
};

TEST(Features, ProbeReportsVectorKernelsOnThisProcessor) {
    uint64_t mask = 0;
    ASSERT_TRUE(ReadProcessorFeatures(&mask));
    // Every x86-64 machine of this project has at least SSE4 and every
    // aarch64 one NEON; 32-bit ARM builds no vector target at all.
    const bool vectorTargetsBuilt = (HWY_TARGETS & ~static_cast<int64_t>(HWY_SCALAR | HWY_EMU128)) != 0;
    EXPECT_EQ(detail::gProbedFeatures & kFeatureVectorKernels, vectorTargetsBuilt ? kFeatureVectorKernels : 0);
    EXPECT_EQ(Quorin_HasFeature(1), vectorTargetsBuilt ? 1 : 0);
    ProbeFeatures();  // a second probe changes nothing
    EXPECT_EQ(detail::gProbedFeatures, mask);
}

TEST(Features, HasFeatureTestsSharedBitsOfTheProbedMask) {
    ProbedMask probed(0b1010);
    for (uint64_t m = 0; m < 32; ++m) EXPECT_EQ(Quorin_HasFeature(m), (m & 0b1010) ? 1 : 0) << m;
    EXPECT_EQ(Quorin_HasFeature(kAllOnes), 1);
    Quorin_Decelerate();
    for (uint64_t m : {uint64_t{0}, uint64_t{1}, uint64_t{2}, kAllOnes}) EXPECT_EQ(Quorin_HasFeature(m), 0);
    Quorin_Boosten(kAllOnes);
    EXPECT_EQ(Quorin_HasFeature(2), 1);
}

TEST(Features, FailedProbeLeavesEveryTestAnsweringNo) {
    ProbedMask probed(0);
    EXPECT_EQ(Quorin_HasFeature(kAllOnes), 0);
    EXPECT_FALSE(UseVectorKernels());
}

// The supported values return at once: no record, and the switch left as set.
TEST(Features, PrintInfoIsQuietForTheTwoSupportedSwitchValues) {
    ProbedMask probed(1);
    testing::internal::CaptureStderr();
    Quorin_Decelerate();
    _printCPUInfo();
    const int afterDecelerate = Quorin_HasFeature(1);
    Quorin_Boosten(kAllOnes);
    _printCPUInfo();
    const int afterBoosten = Quorin_HasFeature(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(afterDecelerate, 0);
    EXPECT_EQ(afterBoosten, 1);
}

using FeaturesDeathTest = ::testing::Test;

TEST(FeaturesDeathTest, UnsupportedSwitchValueIsFatalWhereverTested) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH((Quorin_Boosten(1), Quorin_HasFeature(1)), kSwitchRecord);
    EXPECT_DEATH((Quorin_Boosten(0x8000000000000000ull), _printCPUInfo()), kSwitchRecord);
    EXPECT_DEATH((Quorin_Boosten(2), (void)UseVectorKernels()), kSwitchRecord);
}

}  // namespace
}  // namespace quorin
