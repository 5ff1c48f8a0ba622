// What the blend and clip tests share: every member as a row of a table, a
// runner over guarded images, loops over the kernel variants, and the 8-bit
// rules written out independently from their descriptions.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Alpha/BlendMembers.h"
#include "quorin/Alpha.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {

using Records = std::vector<const Quorin_Buffer*>;

struct Member {
    std::string name;
    std::vector<size_t> pixelBytes;    // per buffer, in argument order
    std::vector<size_t> destinations;  // buffers written
    std::vector<size_t> checked;       // buffers tested for null and size
    bool floats;
    std::function<Quorin_Error(const Records&, Quorin_Flags)> call;
    std::span<const CheckStep> checks;  // the member's check list
};
inline void PrintTo(const Member& member, std::ostream* os) { *os << member.name; }

// The members of the family's table, with the constants the tests pass to
// the constant-alpha blends.
inline std::vector<Member> AllMembers() {
    std::vector<Member> members;
    for (const alpha::Member* row : alpha::kBlendMembers) {
        Member m{std::string(row->name).substr(6),  // without "Quorin"
                 {}, {}, {}, row->format.sample == SampleKind::F32, nullptr, row->checks};
        for (size_t i = 0; i < row->buffers; ++i) {
            m.pixelBytes.push_back(row->pixelBytes());
            if (row->writes(i)) m.destinations.push_back(i);
            if (row->checks.front().takes(i)) m.checked.push_back(i);
        }
        const double constant = m.floats ? 0.6 : 77;
        m.call = [invoke = row->invoke, constant](const Records& b, Quorin_Flags f) {
            return invoke(b.data(), constant, f);
        };
        members.push_back(std::move(m));
    }
    return members;
}

inline bool Contains(const std::vector<size_t>& set, size_t i) { return std::find(set.begin(), set.end(), i) != set.end(); }

struct Shape {
    size_t width, height, padding;  // padding: bytes after each row of every buffer
    size_t offsetUnit = 1;          // buffer i starts (i % 4) x offsetUnit elements off alignment
};

// Runs `member` on guarded images filled from `seed` and returns its
// destinations' bytes (NaNs made one pattern: payloads are no rule's
// business). With `alias` >= 0 the first destination is that source's buffer.
// Fails if a guard byte or a buffer not written changes.
inline std::vector<uint8_t> RunMember(const Member& member, const Shape& shape, Quorin_Flags flags, uint64_t seed,
                                      int alias = -1) {
    std::vector<GuardedImage> images;
    Records records;
    for (size_t i = 0; i < member.pixelBytes.size(); ++i) {
        // Each buffer starts at its own offset from the vector alignment (whole elements).
        const size_t element = member.floats ? 4 : 1;
        GuardedImage& image = images.emplace_back(shape.width, shape.height, member.pixelBytes[i],
                                                  shape.padding * element, (i % 4) * element * shape.offsetUnit);
        if (!member.floats) {
            image.fillRandom(seed * 31 + i);
            continue;
        }
        // Around [0, 1], with zeros, ones, negatives, infinities, subnormals and NaNs mixed in.
        image.fillRandomFloats(seed * 31 + i, -0.25f, 1.25f);
        static const float kSpecials[] = {0.0f, -0.0f, 1.0f, -1.0f, 2.0f, INFINITY, -INFINITY, NAN, 1e-40f};
        Random random(seed + i);
        for (size_t y = 0; y < shape.height; ++y)
            for (size_t x = 0; x < shape.width * member.pixelBytes[i] / 4; ++x)
                if (random.next() % 8 == 0) image.pixel<float>(0, y)[x] = kSpecials[random.next() % 9];
    }
    for (auto& image : images) records.push_back(image.record());
    std::vector<size_t> written = member.destinations;
    if (alias >= 0) records[written.front()] = records[alias], written.front() = size_t(alias);
    std::vector<std::vector<uint8_t>> before;
    for (auto& image : images) before.push_back(image.pixels());

    EXPECT_EQ(member.call(records, flags), kQuorinSuccess) << member.name;
    for (size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(images[i].damagedGuard(), "") << member.name << " buffer " << i;
        if (!Contains(written, i)) {
            EXPECT_TRUE(images[i].pixels() == before[i]) << member.name << " changed " << i;
        }
    }
    std::vector<uint8_t> out;
    for (size_t i : written) {
        const std::vector<uint8_t> bytes = images[i].pixels();
        out.insert(out.end(), bytes.begin(), bytes.end());
    }
    for (size_t i = 0; member.floats && i + 4 <= out.size(); i += 4) {
        float f;
        std::memcpy(&f, &out[i], 4);
        if (std::isnan(f)) std::memcpy(&out[i], "\x00\x00\xC0\x7F", 4);
    }
    return out;
}

// Runs body() under each kernel: scalar, then the vector kernel limited to
// each instruction set this processor and build offer.
inline void ForEachKernel(const std::function<void()>& body) {
    for (const Variant& variant : KernelVariants()) {
        SCOPED_TRACE(variant.name);
        VariantScope scope(variant);
        body();
    }
}

// Runs `call` under every kernel (default split, for speed) and expects
// `out` to equal `expected` byte for byte.
inline void ExpectEveryKernelGives(const std::vector<uint8_t>& expected, std::vector<uint8_t>& out,
                                   const std::function<Quorin_Error()>& call, const std::string& what) {
    ForEachKernel([&] {
        std::fill(out.begin(), out.end(), 0xEE);
        ASSERT_EQ(call(), kQuorinSuccess) << what;
        const auto [got, want] = std::mismatch(out.begin(), out.end(), expected.begin());
        if (got != out.end())
            ADD_FAILURE() << what << ": byte " << (got - out.begin()) << " is " << int(*got) << ", expected "
                          << int(*want);
    });
}

// ---- The 8-bit rules, written out from their descriptions ----------------------

struct Straight {
    uint32_t alpha, weight;
    Straight(uint32_t aT, uint32_t aB) {
        const uint32_t t = (255 - aT) * aB + 127;
        weight = t / 255;
        alpha = (aT * 255 + t) / 255;
    }
    uint8_t colour(uint32_t cT, uint32_t aT, uint32_t cB) const {
        return alpha == 0 ? 0 : uint8_t((cB * weight + cT * aT) / alpha);
    }
};

enum Mode { kDarken, kLighten, kMultiply, kScreen };

// Colour channel of a mode, stored as its low 8 bits.
inline uint8_t ExpectedMode(Mode mode, uint32_t s, uint32_t sA, uint32_t d, uint32_t dA) {
    const uint32_t bottomTerm = d + ((255 - dA) * s + 127) / 255, topTerm = s + ((255 - sA) * d + 127) / 255;
    switch (mode) {
        case kDarken: return uint8_t(std::min(bottomTerm, topTerm));
        case kLighten: return uint8_t(std::max(bottomTerm, topTerm));
        // The product S D plus the uncovered S (255 - dA) and D (255 - sA), one division.
        case kMultiply: return uint8_t((s * d + s * (255 - dA) + d * (255 - sA) + 127) / 255);
        case kScreen: return uint8_t(s + d - (s * d + 127) / 255);
    }
    return 0;
}

// In 64-bit arithmetic reduced modulo 2^32 by hand, so the wrap of the
// bottom's weight 6375 - A k is the description's, not the compiler's.
inline uint8_t ExpectedConstBlend(uint64_t t, uint64_t a, uint64_t b, uint64_t k) {
    const uint64_t weight = (6375 + (uint64_t{1} << 32) - a * k) & 0xFFFFFFFF;
    return uint8_t(((255 * k * t + weight * b + 32385) & 0xFFFFFFFF) / 65025);
}

}  // namespace quorin::test
