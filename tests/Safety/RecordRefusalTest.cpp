// Records that cannot describe their image: every implemented member refuses
// them before touching a byte, and the one destination whose rowBytes is never
// tested is written only inside its height x rowBytes bytes. Buffers here are
// exactly height x rowBytes bytes between two guard zones, as a caller that
// trusts its records would allocate them.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "Members.h"
#include "quorin/Alpha.h"
#include "quorin/Conversion.h"
#include "support/GuardedImage.h"

namespace quorin::test {
namespace {

constexpr size_t kGuard = 64;

// height x rowBytes bytes of random content between random guard zones.
class ExactBuffer {
public:
    ExactBuffer(size_t width, size_t height, size_t rowBytes, uint64_t seed)
        : storage_(2 * kGuard + height * rowBytes) {
        Random random(seed);
        for (uint8_t& byte : storage_) byte = static_cast<uint8_t>(random.next() >> 56);
        record_ = {storage_.data() + kGuard, height, width, rowBytes};
        before_ = storage_;
    }
    const Quorin_Buffer* record() const { return &record_; }
    Quorin_Buffer& mutableRecord() { return record_; }
    bool untouched() const { return storage_ == before_; }
    bool guardsIntact() const {
        const size_t end = storage_.size() - kGuard;
        return std::equal(storage_.begin(), storage_.begin() + kGuard, before_.begin()) &&
               std::equal(storage_.begin() + end, storage_.end(), before_.begin() + end);
    }
    const uint8_t* bytes() const { return storage_.data() + kGuard; }

private:
    std::vector<uint8_t> storage_, before_;
    Quorin_Buffer record_{};
};

// One call's buffers, all width x height with rows of exactly width x pixel
// bytes, except that `shortArg` (when given) gets rows one byte short.
struct Call {
    const SafetyMember& member;
    std::vector<std::unique_ptr<ExactBuffer>> buffers;

    Call(const SafetyMember& m, size_t width, size_t height, int shortArg = -1) : member(m) {
        for (size_t i = 0; i < m.args.size(); ++i) {
            const size_t row = width * m.args[i].pixelBytes - (int(i) == shortArg ? 1 : 0);
            buffers.push_back(std::make_unique<ExactBuffer>(width, height, row, 0x5EED + i));
        }
    }
    Quorin_Error run(Quorin_Flags flags = 0) const {
        std::vector<const Quorin_Buffer*> records;
        for (const auto& b : buffers) records.push_back(b->record());
        return member.run(records.data(), flags);
    }
    bool outputsUntouched() const {
        for (size_t i = 0; i < buffers.size(); ++i)
            if (member.args[i].written() && !buffers[i]->untouched()) return false;
        return true;
    }
};

TEST(RecordRefusal, EveryMemberRefusesARowOneByteShortInAnyBufferBeforeWriting) {
    for (const SafetyMember& m : ImplementedMembers())
        for (size_t i = 0; i < m.args.size(); ++i) {
            if (m.args[i].use == Use::WrittenCutToRows) continue;
            for (Quorin_Flags flags : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_SingleThreaded}}) {
                Call call(m, 5, 3, int(i));
                EXPECT_EQ(call.run(flags), m.refusalCode) << m.name << " buffer " << i;
                EXPECT_TRUE(call.outputsUntouched()) << m.name << " buffer " << i;
            }
        }
}

// A quarter of size_t's range: that many four-byte pixels wrap to a zero-byte
// row (2^62 of them on 64-bit processors, 2^30 on 32-bit ones).
constexpr size_t kQuarterRange = size_t{1} << (8 * sizeof(size_t) - 2);

// size_t's range in rows of 2^24 bytes (2^40 rows on 64-bit processors).
constexpr size_t kRowsOf16MiBThatWrap = size_t{1} << (8 * sizeof(size_t) - 24);

// A byte extent that wraps (2^40 rows of 2^24 bytes) is refused even though
// every row is long enough for its pixels; a size query answered before the
// extents are looked at (the conversions', the flattens', scaling's, the
// quarter turns', the general convolution's) still answers, since it touches
// no pixel.
TEST(RecordRefusal, EveryMemberRefusesAnExtentThatWrapsButAnswersASizeQuery) {
    for (const SafetyMember& m : ImplementedMembers()) {
        for (Quorin_Flags flags : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_QueryTempSize}}) {
            Call call(m, 1, 1);
            for (auto& b : call.buffers) {
                b->mutableRecord().height = kRowsOf16MiBThatWrap;
                b->mutableRecord().rowBytes = size_t{1} << 24;
            }
            const bool query = flags == kQuorinFlag_QueryTempSize;
            Quorin_Error expected = query ? m.queryAnswer : m.refusalCode;
            if (query && m.queryScratchPixelBytes != 0) {  // one pixel wide: the rows' pixels
                const uint64_t bytes = uint64_t{kRowsOf16MiBThatWrap} * m.queryScratchPixelBytes;
                expected = bytes > uint64_t{INT32_MAX} ? kQuorinError_BadArgument : static_cast<Quorin_Error>(bytes);
            }
            EXPECT_EQ(call.run(flags), expected) << m.name;
            EXPECT_TRUE(call.outputsUntouched()) << m.name;
        }
    }
}

// The interleave worker's destination keeps the success its checks give, and
// its buffer ends up as the row-order walk leaves it: each row's first
// rowBytes bytes, the last pixel cut, and nothing past height x rowBytes.
TEST(RecordRefusal, UntestedDestinationRowsAreCutAtTheirRowBytes) {
    struct Shape {
        size_t width, height, cut;
    };
    // The second shape is split over processors; 4 bytes short cuts whole pixels.
    for (const Shape s : {Shape{5, 3, 1}, Shape{5, 4, 3}, Shape{300, 250, 1}, Shape{300, 250, 4}, Shape{9, 2, 36}})
        for (const SafetyMember& m : ImplementedMembers())
            for (size_t i = 0; i < m.args.size(); ++i) {
                if (m.args[i].use != Use::WrittenCutToRows) continue;
                Call whole(m, s.width, s.height), cut(m, s.width, s.height);
                const size_t rowBytes = s.width * 4 - s.cut;
                cut.buffers[i] = std::make_unique<ExactBuffer>(s.width, s.height, rowBytes, 0x5EED + i);
                ASSERT_EQ(whole.run(), kQuorinSuccess) << m.name;
                ASSERT_EQ(cut.run(), kQuorinSuccess) << m.name;
                EXPECT_TRUE(cut.buffers[i]->guardsIntact()) << m.name << " " << s.width << "x" << s.height;
                for (size_t y = 0; y < s.height; ++y)
                    EXPECT_EQ(std::memcmp(cut.buffers[i]->bytes() + y * rowBytes,
                                          whole.buffers[i]->bytes() + y * s.width * 4, rowBytes),
                              0)
                        << m.name << " row " << y;
            }
}

// The refusals that come after the described checks come after all of them:
// a null record, a flag outside the mask and a size query each win.
TEST(RecordRefusal, RefusalsAfterTheChecksLoseToEveryDescribedFailure) {
    for (const SafetyMember& m : ImplementedMembers()) {
        const bool conversion = m.name.starts_with("QuorinConvert_");
        for (size_t i = 0; i < m.args.size(); ++i) {
            Call call(m, 5, 3);
            call.buffers[i]->mutableRecord().rowBytes = kQuarterRange;  // 3 rows of it go past any buffer
            const size_t nulled = (i + 1) % m.args.size();
            call.buffers[nulled]->mutableRecord().data = nullptr;
            // The planar straight blend does not test planes 1, 3 and 4 for null.
            const bool untested = m.args.size() == 6 && (nulled == 1 || nulled == 3 || nulled == 4);
            const Quorin_Error nullCode = m.nullCode != kQuorinSuccess ? m.nullCode
                                          : conversion || untested ? kQuorinError_BadArgument
                                                                   : kQuorinError_NullPointer;
            EXPECT_EQ(call.run(), nullCode) << m.name << " buffer " << i;
            if (!conversion || !m.refusesFlags) continue;
            Call flagged(m, 5, 3);
            flagged.buffers[i]->mutableRecord().rowBytes = kQuarterRange;
            EXPECT_EQ(flagged.run(0x20), kQuorinError_UnsupportedFlags) << m.name << " buffer " << i;
            EXPECT_TRUE(flagged.outputsUntouched()) << m.name;
        }
    }
    // The 8-bit interleave's alpha plane, whose rowBytes is not among its checks.
    for (const SafetyMember& m : ImplementedMembers()) {
        if (m.name != "QuorinConvert_Planar8toARGB8888") continue;
        Call call(m, 5, 3, 0);
        EXPECT_EQ(call.run(0x20), kQuorinError_UnsupportedFlags);
        EXPECT_EQ(call.run(kQuorinFlag_QueryTempSize), kQuorinSuccess);
        EXPECT_EQ(call.run(), kQuorinError_BadArgument);
        EXPECT_TRUE(call.outputsUntouched());
    }
}

// The planar straight blend tests only three of its six buffers; the other
// three are refused when missing, too short or too narrow for the walk.
TEST(RecordRefusal, StraightPlanarBlendRefusesUntestedPlanesTheWalkWouldLeave) {
    for (const SafetyMember& m : ImplementedMembers()) {
        if (m.args.size() != 6) continue;
        for (size_t i : {1, 3, 4}) {
            Call fewerRows(m, 6, 4), narrower(m, 6, 4), missing(m, 6, 4);
            const size_t bytes = m.args[i].pixelBytes;
            fewerRows.buffers[i] = std::make_unique<ExactBuffer>(6, 3, 6 * bytes, 1);
            narrower.buffers[i] = std::make_unique<ExactBuffer>(5, 4, 5 * bytes, 1);
            missing.buffers[i]->mutableRecord().data = nullptr;
            for (const Call* call : {&fewerRows, &narrower, &missing}) {
                EXPECT_EQ(call->run(), kQuorinError_BadArgument) << m.name << " buffer " << i;
                EXPECT_TRUE(call->outputsUntouched()) << m.name << " buffer " << i;
            }
        }
    }
}

// ---- The reported faults, each as it was found -------------------------------------

TEST(RecordRefusal, PremultiplyIntoADestinationWithShortRows) {
    ExactBuffer src(10, 3, 40, 1), dest(10, 3, 36, 2);
    EXPECT_EQ(QuorinPremultiplyData_RGBA8888(src.record(), dest.record(), kQuorinFlag_SingleThreaded),
              kQuorinError_BadArgument);
    EXPECT_TRUE(dest.untouched());
}

TEST(RecordRefusal, ClipToAlphaWithAWidthOfTwoToThe40) {
    // 2^40 does not fit a 32-bit size_t: a width as far beyond the rows there.
    constexpr size_t kWidth = sizeof(size_t) == 8 ? static_cast<size_t>(uint64_t{1} << 40) : size_t{1} << 28;
    ExactBuffer src(kWidth, 2, 64, 1), dest(kWidth, 2, 64, 2);
    EXPECT_EQ(QuorinClipToAlpha_ARGB8888(src.record(), dest.record(), 0), kQuorinError_BadArgument);
    EXPECT_TRUE(dest.untouched());
}

// Four-byte pixels filling size_t's range wrap to a zero-byte row, which any
// rowBytes exceeds.
TEST(RecordRefusal, SplitFromASourceWhoseRowLengthWraps) {
    ExactBuffer src(kQuarterRange, 2, 4, 1);
    std::vector<std::unique_ptr<ExactBuffer>> planes;
    for (int k = 0; k < 4; ++k) planes.push_back(std::make_unique<ExactBuffer>(3, 2, 3, 2 + k));
    EXPECT_EQ(QuorinConvert_ARGB8888toPlanar8(src.record(), planes[0]->record(), planes[1]->record(),
                                              planes[2]->record(), planes[3]->record(), 0),
              kQuorinError_BadArgument);
    for (const auto& p : planes) EXPECT_TRUE(p->untouched());
}

TEST(RecordRefusal, MergeIntoADestinationWhoseRowLengthWraps) {
    constexpr size_t kWidth = kQuarterRange + 16;  // x 4 bytes wraps to 64
    const float max[4] = {1, 1, 1, 1}, min[4] = {0, 0, 0, 0};
    ExactBuffer r(kWidth, 2, 64, 1), g(kWidth, 2, 64, 2), b(kWidth, 2, 64, 3), dest(kWidth, 2, 64, 4);
    EXPECT_EQ(QuorinConvert_PlanarFToXRGB8888(0.5f, r.record(), g.record(), b.record(), dest.record(), max, min, 0),
              kQuorinError_BadArgument);
    EXPECT_TRUE(dest.untouched());
}

}  // namespace
}  // namespace quorin::test
