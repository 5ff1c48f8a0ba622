#include "support/Variants.h"

#include <cstdlib>
#include <string_view>

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include "Core/Dispatch.h"
#include "Core/Streaming.h"
#include "quorin/Utilities.h"

namespace quorin::test {

StreamingForced::StreamingForced() { SetStreamingThresholdForTest(1); }
StreamingForced::~StreamingForced() { SetStreamingThresholdForTest(0); }

// QUORIN_TEST_KERNELS=best keeps the scalar kernel and the best vector one.
// ThreadSanitizer runs set it: a race depends on the split, not on the
// instruction set, and every other build runs every kernel.
bool BestKernelOnly() {
    const char* kernels = std::getenv("QUORIN_TEST_KERNELS");
    return kernels && std::string_view(kernels) == "best";
}

std::vector<Variant> KernelVariants() {
    std::vector<Variant> variants{{"scalar", true, 0, kQuorinFlag_SingleThreaded, 0}};
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        variants.push_back({hwy::TargetName(target), false, target, kQuorinFlag_SingleThreaded, 0});
        if (BestKernelOnly()) break;  // targets come best first
    }
    return variants;
}

std::vector<Variant> KernelAndSplitVariants() {
    std::vector<Variant> variants;
    for (const Variant& kernel : KernelVariants()) {
        variants.push_back(kernel);
        variants.back().name += "/single-threaded";
        for (unsigned processors : {0u, 3u}) {
            Variant v = kernel;
            v.flags = 0;
            v.processors = processors;
            v.name += processors ? "/3 processors" : "/default split";
            variants.push_back(v);
        }
    }
    return variants;
}

VariantScope::VariantScope(const Variant& variant) {
    if (variant.scalar) Quorin_Decelerate();
    if (variant.vectorTarget) hwy::SetSupportedTargetsForTest(variant.vectorTarget);
    SetProcessorCountForTest(variant.processors);
}

VariantScope::~VariantScope() {
    Quorin_Boosten(~uint64_t{0});
    hwy::SetSupportedTargetsForTest(0);
    SetProcessorCountForTest(0);
}

void ExpectSameBytesEverywhere(const std::function<std::vector<uint8_t>(Quorin_Flags)>& run,
                               const std::vector<Variant>& variants) {
    std::vector<uint8_t> reference;
    std::string referenceName;
    for (const Variant& variant : variants) {
        std::vector<uint8_t> bytes;
        {
            VariantScope scope(variant);
            bytes = run(variant.flags);
        }
        if (referenceName.empty()) {
            reference = std::move(bytes);
            referenceName = variant.name;
            continue;
        }
        ASSERT_EQ(bytes.size(), reference.size()) << variant.name;
        size_t first = 0;
        while (first < bytes.size() && bytes[first] == reference[first]) ++first;
        EXPECT_EQ(first, bytes.size()) << variant.name << " differs from " << referenceName << " at byte " << first;
    }
}

}  // namespace quorin::test
