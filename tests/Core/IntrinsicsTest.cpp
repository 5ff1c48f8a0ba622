// The intrinsics helpers against a formula written apart from them, on every
// target this machine runs: the processor's own instructions where a target
// has them, the portable Highway form everywhere (on AVX-512 too).
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Core/IntrinsicsTest.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "Core/Intrinsics-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::test::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR  // one lane never packs four vectors: no helpers there
// Packs `in` (four vectors' worth of T per call) with pack(d, v0, v1, v2,
// v3); writes one byte per value.
template <class T, class Pack>
bool PackFour(const T* in, size_t count, uint8_t* out, const Pack& pack) {
    const hn::ScalableTag<T> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const size_t n = hn::Lanes(d);
    for (size_t i = 0; i + 4 * n <= count; i += 4 * n)
        hn::StoreU(pack(d, hn::LoadU(d, in + i), hn::LoadU(d, in + i + n), hn::LoadU(d, in + i + 2 * n),
                        hn::LoadU(d, in + i + 3 * n)),
                   d8, out + i);
    return true;
}

// The float helper (`portable`: its portable form).
bool PackFloats(const float* in, size_t count, bool portable, uint8_t* out) {
    return PackFour(in, count, out, [portable](auto d, auto t0, auto t1, auto t2, auto t3) {
        return portable ? quorin::HWY_NAMESPACE::PackTruncatedBytesPortable(d, t0, t1, t2, t3)
                        : quorin::HWY_NAMESPACE::PackTruncatedBytes(d, t0, t1, t2, t3);
    });
}

// The pixel-byte helper (`portable`: its portable form).
bool PackInts(const int32_t* in, size_t count, bool portable, uint8_t* out) {
    return PackFour(in, count, out, [portable](auto d, auto q0, auto q1, auto q2, auto q3) {
        return portable ? quorin::HWY_NAMESPACE::PackClampedPixelBytesPortable(d, q0, q1, q2, q3)
                        : quorin::HWY_NAMESPACE::PackClampedPixelBytes(d, q0, q1, q2, q3);
    });
}
#else
bool PackFloats(const float*, size_t, bool, uint8_t*) { return false; }
bool PackInts(const int32_t*, size_t, bool, uint8_t*) { return false; }
#endif

size_t FloatLanes() { return hn::Lanes(hn::ScalableTag<float>()); }

}  // namespace quorin::test::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <gtest/gtest.h>

namespace quorin::test {

HWY_EXPORT(PackFloats);
HWY_EXPORT(PackInts);
HWY_EXPORT(FloatLanes);

namespace {

uint8_t Expected(float t) {
    if (!(t >= 0.0f)) return 0;
    return static_cast<uint8_t>(std::trunc(std::fmin(t, 255.0f)));
}

TEST(Intrinsics, PackTruncatedBytesOnEveryTarget) {
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    uint32_t negativeNaNBits = 0xFFC00001u;
    float negativeNaN;
    std::memcpy(&negativeNaN, &negativeNaNBits, 4);
    std::vector<float> values{nan, negativeNaN, -inf, -1e9f, -1.0f, -0.99f, -0.0f, 0.0f, 0.49f, 0.5f, 1.0f,
                              127.5f, 254.99f, 255.0f, 255.5f, 256.0f, 1e9f, inf, 3e-39f, 2147483648.0f};
    uint32_t state = 7;
    while (values.size() < 4096) {
        state = state * 1664525u + 1013904223u;
        values.push_back(static_cast<float>(static_cast<int32_t>(state >> 8) % 700 - 200) / 2.3f);
    }
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        SCOPED_TRACE(hwy::TargetName(target));
        const size_t block = 4 * HWY_DYNAMIC_DISPATCH(FloatLanes)();  // floats per call of the helper
        for (const bool portable : {false, true}) {
            std::vector<uint8_t> out(values.size(), 0xAA);
            if (!HWY_DYNAMIC_DISPATCH(PackFloats)(values.data(), values.size(), portable, out.data())) continue;
            const size_t n = block / 4;
            for (size_t i = 0; i + block <= values.size(); i += block)
                for (size_t j = 0; j < 4; ++j)
                    for (size_t l = 0; l < n; ++l) {
                        // Lane l of vector j goes to byte 4j + l % 4 of block l / 4.
                        const size_t at = i + 16 * (l / 4) + 4 * j + l % 4;
                        ASSERT_EQ(out[at], Expected(values[i + j * n + l]))
                            << (portable ? "portable " : "") << "t = " << values[i + j * n + l];
                    }
        }
    }
    hwy::SetSupportedTargetsForTest(0);
}

// Lane l of vector j goes to byte j of lane l, clamped to 0..255.
TEST(Intrinsics, PackClampedPixelBytesOnEveryTarget) {
    std::vector<int32_t> values{std::numeric_limits<int32_t>::min(), -65536, -32769, -32768, -256, -1, 0, 1,
                                127, 128, 254, 255, 256, 32767, 32768, 65535, 65536, std::numeric_limits<int32_t>::max()};
    uint32_t state = 11;
    while (values.size() < 4096) {
        state = state * 1664525u + 1013904223u;
        values.push_back(static_cast<int32_t>(state) >> (state % 24));
    }
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        SCOPED_TRACE(hwy::TargetName(target));
        const size_t n = HWY_DYNAMIC_DISPATCH(FloatLanes)();
        for (const bool portable : {false, true}) {
            std::vector<uint8_t> out(values.size(), 0xAA);
            if (!HWY_DYNAMIC_DISPATCH(PackInts)(values.data(), values.size(), portable, out.data())) continue;
            for (size_t i = 0; i + 4 * n <= values.size(); i += 4 * n)
                for (size_t j = 0; j < 4; ++j)
                    for (size_t l = 0; l < n; ++l)
                        ASSERT_EQ(out[i + 4 * l + j], std::clamp(values[i + j * n + l], 0, 255))
                            << (portable ? "portable " : "") << "q = " << values[i + j * n + l];
        }
    }
    hwy::SetSupportedTargetsForTest(0);
}

}  // namespace
}  // namespace quorin::test
#endif  // HWY_ONCE
