// Every planar/interleaved conversion against its rules, under every kernel and
// split, with guard bytes around every buffer; and the family's check order.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Conversion/LayoutCall.h"
#include "LayoutMembers.h"
#include "support/Codes.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

// The region is the destination (planes into pixels) or the first destination
// plane (pixels into planes); every other buffer is `extra` larger.
struct Shape {
    size_t width, height;
    size_t extraWidth = 0, extraHeight = 0;
    size_t padding = 0;  // per buffer: padding + 4 * index, so strides differ
    size_t offset = 0;
    bool aligned = false;  // every buffer starts on a 64-byte boundary (offset unused)
};

std::string Describe(const Member& m, const Shape& s) {
    std::ostringstream out;
    out << m.name << " " << s.width << "x" << s.height << " extra " << s.extraWidth << "x" << s.extraHeight
        << " padding " << s.padding << " offset " << s.offset;
    return out.str();
}

// The buffers of one call: the interleaved image and the planes in argument order.
struct Buffers {
    std::unique_ptr<GuardedImage> image;
    std::vector<std::unique_ptr<GuardedImage>> planes;
    std::vector<std::vector<uint8_t>> outputsBefore;

    std::vector<GuardedImage*> outputs() {
        std::vector<GuardedImage*> list;
        if (mergeInto) list.push_back(image.get());
        else
            for (auto& p : planes) list.push_back(p.get());
        return list;
    }
    Planes records(bool alphaPlaneMissing) const {
        Planes list;
        for (const auto& p : planes) list.push_back(p->record());
        if (alphaPlaneMissing) list[0] = nullptr;
        return list;
    }
    bool mergeInto = true;
};

void FillInput(const Member& m, GuardedImage& image, uint64_t seed) {
    image.fillRandom(seed);
    if (m.depth == Depth::Q12ToByte) {
        // Mostly inside and around 0..4096, with any 16-bit value now and then.
        Random random(seed);
        for (size_t y = 0; y < image.height(); ++y)
            for (size_t x = 0; x < image.width(); ++x) {
                const uint64_t r = random.next();
                const int64_t any = static_cast<int64_t>(r >> 48) - 32768, near = static_cast<int64_t>(r >> 16 & 0xFFFF) % 4400 - 150;
                const auto v = static_cast<int16_t>(r % 4 == 0 ? any : near);
                std::memcpy(image.row(y) + 2 * x, &v, sizeof v);
            }
        return;
    }
    if (m.depth != Depth::FloatToByte) return;
    // Floats around and beyond every channel's range, with specials sprinkled in.
    image.fillRandomFloats(seed, -3.0f, 3.0f);
    const float specials[] = {NAN, -NAN, INFINITY, -INFINITY, -0.0f, 0.0f, 1.0f, 0.5f, 2.0f, 255.0f, 1e-40f};
    Random random(seed);
    const size_t samples = image.width() * image.pixelBytes() / sizeof(float);
    for (size_t y = 0; y < image.height(); ++y)
        for (size_t i = 0; i < samples; ++i) {
            float* f = reinterpret_cast<float*>(image.row(y)) + i;
            const uint64_t r = random.next();
            if (r % 7 == 0) *f = specials[(r >> 8) % std::size(specials)];
            else if (r % 5 == 0) *f *= 100.0f;
        }
}

Buffers MakeBuffers(const Member& m, const Shape& s, uint64_t seed) {
    Buffers b;
    b.mergeInto = m.merge;
    size_t index = 0;
    // Samples wider than a byte stay naturally aligned, as callers must keep them.
    const size_t align = std::max(m.planeBytes, m.interleavedSample());
    const auto alignUp = [align](size_t bytes) { return (bytes + align - 1) / align * align; };
    const auto make = [&](bool region, size_t pixelBytes) {
        const size_t padding = s.padding ? alignUp(s.padding + 4 * index) : 0;
        const size_t width = s.width + (region ? 0 : s.extraWidth), height = s.height + (region ? 0 : s.extraHeight);
        ++index;
        size_t offset = s.aligned ? 0 : alignUp(s.offset);
        auto image = std::make_unique<GuardedImage>(width, height, pixelBytes, padding, offset);
        // Shift the start onto a 64-byte boundary: the allocator hands the
        // same block back for the same size, so this settles at once.
        for (int attempt = 0; s.aligned && attempt < 8; ++attempt) {
            const uintptr_t start = reinterpret_cast<uintptr_t>(image->record()->data) - offset;
            if ((start + offset) % 64 == 0) break;
            offset = (64 - start % 64) % 64;
            image.reset();
            image = std::make_unique<GuardedImage>(width, height, pixelBytes, padding, offset);
        }
        return image;
    };
    b.image = make(m.merge, m.pixelBytes);
    for (size_t k = 0; k < m.planeChannel.size(); ++k) b.planes.push_back(make(!m.merge && k == 0, m.planeBytes));
    if (m.merge)
        for (size_t k = 0; k < b.planes.size(); ++k) FillInput(m, *b.planes[k], seed + k);
    else
        FillInput(m, *b.image, seed);
    for (GuardedImage* out : b.outputs()) {
        out->fillRandom(seed ^ 0x5555);
        b.outputsBefore.push_back(out->pixels());
    }
    return b;
}

void RestoreOutputs(Buffers& b) {
    const auto outputs = b.outputs();
    for (size_t k = 0; k < outputs.size(); ++k) {
        const size_t rowLength = outputs[k]->width() * outputs[k]->pixelBytes();
        for (size_t y = 0; y < outputs[k]->height(); ++y)
            std::copy_n(b.outputsBefore[k].data() + y * rowLength, rowLength, outputs[k]->row(y));
    }
}

// The first difference between the outputs and what the rules give: inside
// the region each sample converted from its source, outside it the bytes
// that were there before.
std::string Mismatch(const Member& m, Buffers& b, size_t width, size_t height, bool alphaPlaneMissing) {
    const size_t sample = m.interleavedSample();
    const auto outputs = b.outputs();
    std::vector<uint8_t> expected(16);
    for (size_t k = 0; k < outputs.size(); ++k) {
        GuardedImage& out = *outputs[k];
        const size_t outSample = m.merge ? sample : m.planeBytes;
        for (size_t y = 0; y < out.height(); ++y)
            for (size_t x = 0; x < out.width(); ++x)
                for (size_t c = 0; c < (m.merge ? m.channels : 1); ++c) {
                    const size_t at = x * out.pixelBytes() + c * outSample;
                    const uint8_t* got = out.row(y) + at;
                    if (x >= width || y >= height) {
                        std::copy_n(b.outputsBefore[k].data() + y * out.width() * out.pixelBytes() + at, outSample,
                                    expected.begin());
                    } else if (m.merge) {
                        int plane = -1;
                        for (size_t p = 0; p < m.planeChannel.size(); ++p)
                            if (m.planeChannel[p] == static_cast<int>(c) && !(alphaPlaneMissing && p == 0))
                                plane = static_cast<int>(p);
                        if (plane < 0)
                            expected = m.constantChannel(alphaPlaneMissing);
                        else
                            m.convert(int(c), b.planes[plane]->row(y) + x * m.planeBytes, expected.data());
                    } else {
                        const int channel = m.planeChannel[k];
                        m.convert(channel, b.image->row(y) + x * m.pixelBytes + channel * sample, expected.data());
                    }
                    if (!std::equal(got, got + outSample, expected.begin())) {
                        std::ostringstream where;
                        where << "output " << k << " pixel (" << x << ", " << y << ") channel " << c << " byte 0: got "
                              << int(got[0]) << ", expected " << int(expected[0]);
                        return where.str();
                    }
                }
    }
    return {};
}

void ExpectMatchesRules(const Member& m, const Shape& s, bool alphaPlaneMissing, const std::vector<Variant>& variants) {
    SCOPED_TRACE(Describe(m, s) + (alphaPlaneMissing ? " without alpha plane" : ""));
    Buffers b = MakeBuffers(m, s, s.width * 131 + s.height);
    const Planes planes = b.records(alphaPlaneMissing);
    std::vector<std::vector<uint8_t>> inputsBefore;
    for (const auto& p : b.planes) inputsBefore.push_back(p->pixels());
    inputsBefore.push_back(b.image->pixels());
    bool modelChecked = false;
    ExpectSameBytesEverywhere(
        [&](Quorin_Flags flags) {
            RestoreOutputs(b);
            EXPECT_EQ(m.invoke(b.image->record(), planes, kMax, kMin, flags), kQuorinSuccess);
            std::vector<uint8_t> result;
            for (GuardedImage* out : b.outputs()) {
                EXPECT_EQ(out->damagedGuard(), "");
                const auto bytes = out->pixels();
                result.insert(result.end(), bytes.begin(), bytes.end());
            }
            if (!modelChecked) {
                modelChecked = true;
                EXPECT_EQ(Mismatch(m, b, s.width, s.height, alphaPlaneMissing), "");
                if (m.merge)
                    for (size_t k = 0; k < b.planes.size(); ++k)
                        EXPECT_EQ(b.planes[k]->pixels(), inputsBefore[k]) << "source plane " << k << " was written";
                else
                    EXPECT_EQ(b.image->pixels(), inputsBefore.back()) << "the source image was written";
            }
            return result;
        },
        variants);
}

TEST(Layout, EveryMemberFollowsItsRulesUnderEveryKernelAndSplit) {
    const std::vector<Shape> shapes{
        {1, 1},                  // one pixel
        {7, 3},                  // odd width, rows walked as one run
        {37, 5, 3, 2, 3, 1},     // padded rows, unaligned start, larger other buffers
        {131, 2},                // whole vectors and a tail
        {252, 253},              // 63756 pixels: on the calling thread
        {253, 253},              // 64009 pixels: through the rows dispatcher
        {253, 253, 1, 2, 5, 3},  // the same with padded rows and larger other buffers
    };
    const auto variants = KernelAndSplitVariants();
    for (const Member& m : LayoutMembers())
        for (const Shape& s : shapes) ExpectMatchesRules(m, s, false, variants);
}

// Large destinations go through staging chunks and streaming stores; force
// that path on small ones (chunk boundaries included).
TEST(Layout, StreamedDestinationsFollowTheRulesToo) {
    const StreamingForced forced;
    const std::vector<Shape> shapes{{1, 1},
                                    {7, 3, 0, 0, 0, 1},
                                    {1031, 3, 2, 1, 3, 1},
                                    {1031, 3, 0, 0, 0, 0, true},     // every row can stream
                                    {333, 7, 1, 1, 60, 0, true},     // some rows can, some cannot
                                    {253, 253, 0, 0, 0, 0, true}};
    const auto variants = KernelAndSplitVariants();
    for (const Member& m : LayoutMembers())
        for (const Shape& s : shapes) ExpectMatchesRules(m, s, false, variants);
}

TEST(Layout, VectorTailsStayInsideTheRow) {
    std::vector<size_t> widths;
    for (size_t w = 1; w <= 70; ++w) widths.push_back(w);
    for (size_t w : {127, 128, 129, 191, 192, 193}) widths.push_back(w);
    const auto variants = KernelVariants();
    for (const Member& m : LayoutMembers())
        for (size_t w : widths) {
            ExpectMatchesRules(m, {w, 1}, false, variants);
            ExpectMatchesRules(m, {w, 2, 0, 0, 1}, false, variants);
        }
}

TEST(Layout, AbsentAlphaPlaneGivesTheFrontEndsConstant) {
    const auto variants = KernelAndSplitVariants();
    for (const Member& m : LayoutMembers())
        if (m.alphaPlaneOptional) {
            ExpectMatchesRules(m, {67, 3, 0, 0, 2}, true, variants);
            ExpectMatchesRules(m, {253, 253}, true, variants);
        }
}

// ---- Checks ----------------------------------------------------------------------

// One way to break a valid call, applied to one buffer (or to the ranges).
enum Step {
    kNullRecord,      // -21772
    kNullData,        // -21773
    kNarrower,        // -21766
    kShorter,         // -21766
    kShortRowBytes,   // -21773
    kOtherFlag,       // -21775
    kSecondNarrower,  // -21766: the fourth destination plane, after the flags
    kSecondRowBytes,  // -21773
    kQuery,           // 0, nothing written
    kSteps
};
constexpr Quorin_Error kExpected[kSteps] = {kQuorinError_NullPointer,         kQuorinError_BadArgument,
                                            kQuorinError_RegionExceedsSource, kQuorinError_RegionExceedsSource,
                                            kQuorinError_BadArgument,         kQuorinError_UnsupportedFlags,
                                            kQuorinError_RegionExceedsSource, kQuorinError_BadArgument,
                                            kQuorinSuccess};

// Targets: 0 is the interleaved image, 1 + k plane argument k; -1 and -2 the
// maxFloat and minFloat arrays.
struct CheckedCall {
    const Member& m;
    Buffers b;
    std::vector<Quorin_Buffer> records;  // copies the steps modify
    std::vector<bool> null;
    bool maxNull = false, minNull = false;
    Quorin_Flags flags = 0;

    CheckedCall(const Member& member, const Shape& s) : m(member), b(MakeBuffers(member, s, 7)) {
        records.push_back(*b.image->record());
        for (const auto& p : b.planes) records.push_back(*p->record());
        null.assign(records.size(), false);
    }
    size_t pixelBytes(size_t buffer) const { return buffer == 0 ? m.pixelBytes : m.planeBytes; }
    size_t region() const { return m.merge ? 0 : 1; }
    bool secondGroup(size_t buffer) const { return !m.merge && m.planeChannel.size() == 4 && buffer == 4; }
    bool optionalAlpha(size_t buffer) const { return m.alphaPlaneOptional && buffer == 1; }

    // The buffers (or ranges) a step can break.
    std::vector<int> targets(Step step) const {
        std::vector<int> list;
        for (size_t i = 0; i < records.size(); ++i) {
            const bool first = i != region() && !secondGroup(i);
            switch (step) {
                case kNullRecord:
                    if (!optionalAlpha(i)) list.push_back(int(i));
                    break;
                case kNullData: list.push_back(int(i)); break;
                case kNarrower:
                case kShorter:
                    if (first) list.push_back(int(i));
                    break;
                case kShortRowBytes:
                    if (!secondGroup(i) && !(m.destRowBytesUnchecked && (i == 0 || optionalAlpha(i))))
                        list.push_back(int(i));
                    break;
                case kSecondNarrower:
                case kSecondRowBytes:
                    if (secondGroup(i)) list.push_back(int(i));
                    break;
                default: break;
            }
        }
        if (step == kNullRecord && m.takesRanges()) list.insert(list.end(), {-1, -2});
        if ((step == kOtherFlag && m.refusesOtherFlags) || step == kQuery) list.push_back(0);
        return list;
    }

    void apply(Step step, int target) {
        Quorin_Buffer* r = target >= 0 ? &records[target] : nullptr;
        switch (step) {
            case kNullRecord:
                if (r) null[target] = true;
                else (target == -1 ? maxNull : minNull) = true;
                break;
            case kNullData: r->data = nullptr; break;
            case kNarrower:
            case kSecondNarrower: r->width = records[region()].width - 1; break;
            case kShorter: r->height = records[region()].height - 1; break;
            case kShortRowBytes:
            case kSecondRowBytes: r->rowBytes = r->width * pixelBytes(target) - 1; break;
            case kOtherFlag: flags |= 0x20; break;
            case kQuery: flags |= kQuorinFlag_QueryTempSize; break;
            default: break;
        }
    }

    Quorin_Error run() {
        Planes planes;
        for (size_t i = 1; i < records.size(); ++i) planes.push_back(null[i] ? nullptr : &records[i]);
        return m.invoke(null[0] ? nullptr : &records[0], planes, maxNull ? nullptr : kMax,
                        minNull ? nullptr : kMin, flags);
    }
    std::string written() {
        const auto outputs = b.outputs();
        for (size_t k = 0; k < outputs.size(); ++k)
            if (outputs[k]->pixels() != b.outputsBefore[k] || !outputs[k]->damagedGuard().empty())
                return "output " + std::to_string(k) + " was written";
        return {};
    }
};

const Shape kCheckShape{5, 3, 0, 0, 2};

TEST(LayoutChecks, EachStepReportsItsCodeForEveryBufferItTests) {
    for (const Member& m : LayoutMembers())
        for (int step = 0; step < kSteps; ++step)
            for (int target : CheckedCall(m, kCheckShape).targets(Step(step))) {
                CheckedCall call(m, kCheckShape);
                call.apply(Step(step), target);
                EXPECT_TRUE(quorin::test::ReturnsCode(call.run(), kExpected[step])) << m.name << " step " << step << " buffer " << target;
                EXPECT_EQ(call.written(), "") << m.name << " step " << step << " buffer " << target;
            }
}

TEST(LayoutChecks, AnEarlierStepWinsOverEveryLaterOne) {
    for (const Member& m : LayoutMembers())
        for (int early = 0; early < kSteps; ++early)
            for (int late = early + 1; late < kSteps; ++late) {
                const CheckedCall probe(m, kCheckShape);
                const auto earlyTargets = probe.targets(Step(early)), lateTargets = probe.targets(Step(late));
                if (earlyTargets.empty() || lateTargets.empty()) continue;
                // Break the first buffer one step tests and the last the other tests.
                CheckedCall call(m, kCheckShape);
                call.apply(Step(late), lateTargets.back());
                call.apply(Step(early), earlyTargets.front());
                EXPECT_TRUE(quorin::test::ReturnsCode(call.run(), kExpected[early])) << m.name << " steps " << early << " and " << late;
                EXPECT_EQ(call.written(), "") << m.name;
            }
}

TEST(LayoutChecks, OnlyTheCommonFlagsAreAccepted) {
    for (const Member& m : LayoutMembers())
        for (Quorin_Flags flag = 1; flag != 0; flag <<= 1) {
            CheckedCall call(m, kCheckShape);
            call.flags = flag | kQuorinFlag_QueryTempSize;
            const bool accepted =
                !m.refusesOtherFlags || flag == kQuorinFlag_SingleThreaded || flag == kQuorinFlag_QueryTempSize;
            EXPECT_EQ(call.run(), accepted ? kQuorinSuccess : kQuorinError_UnsupportedFlags) << m.name << " " << flag;
            EXPECT_EQ(call.written(), "");
        }
}

// The 8-bit interleave worker tests only the colour planes' rowBytes: a short
// destination or alpha-plane stride passes the checks (the query proves it
// without writing through the overlapping rows).
TEST(LayoutChecks, InterleaveWorkerLeavesDestinationAndAlphaStridesUntested) {
    for (const Member& m : LayoutMembers()) {
        if (!m.destRowBytesUnchecked) continue;
        CheckedCall call(m, kCheckShape);
        call.records[0].rowBytes = 1;
        if (m.alphaPlaneOptional) call.records[1].rowBytes = 1;
        call.flags = kQuorinFlag_QueryTempSize;
        EXPECT_EQ(call.run(), kQuorinSuccess) << m.name;
        EXPECT_EQ(call.written(), "");
    }
}

TEST(LayoutChecks, AnEmptyRegionSucceedsAndWritesNothing) {
    for (const Member& m : LayoutMembers())
        for (bool emptyWidth : {true, false}) {
            CheckedCall call(m, kCheckShape);
            (emptyWidth ? call.records[call.region()].width : call.records[call.region()].height) = 0;
            EXPECT_EQ(call.run(), kQuorinSuccess) << m.name;
            EXPECT_EQ(call.written(), "") << m.name;
        }
}

}  // namespace
}  // namespace quorin::test
