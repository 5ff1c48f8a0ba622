#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <thread>

#include "FakeHost.h"
#include "Utilities/ConverterObject.h"
#include "support/Codes.h"

namespace {

using quorin::test::FakeHost;
using quorin::test::ReturnsCode;

QuorinHostOrlColorSpace gMono{kQuorinOrlColorSpaceModel_Monochrome, nullptr, 1};
QuorinHostOrlColorSpace gRGB{kQuorinOrlColorSpaceModel_RGB, nullptr, 3};
QuorinHostOrlColorSpace gOtherRGB{kQuorinOrlColorSpaceModel_RGB, nullptr, 3};
QuorinHostOrlColorSpace gCMYK{4, nullptr, 4};
QuorinHostOrlColorSpace gIndexedOverMono{kQuorinOrlColorSpaceModel_Indexed, &gMono, 1};
QuorinHostOrlColorSpace gIndexedOverRGB{kQuorinOrlColorSpaceModel_Indexed, &gRGB, 1};
QuorinHostOrlColorSpace gIndexedAlone{kQuorinOrlColorSpaceModel_Indexed, nullptr, 1};

// Field by field: the record has padding on 64-bit builds.
bool Same(const QuorinOrlImageFormat& a, const QuorinOrlImageFormat& b) {
    return a.bitsPerComponent == b.bitsPerComponent && a.bitsPerPixel == b.bitsPerPixel &&
           a.colorSpace == b.colorSpace && a.bitmapInfo == b.bitmapInfo && a.version == b.version &&
           a.decode == b.decode && a.renderingIntent == b.renderingIntent;
}

QuorinOrlImageFormat ARGB(QuorinHostOrlColorSpace* space = nullptr) { return {8, 32, space, 1, 0, nullptr, 0}; }

// The validity rules, stated from the list of rules rather than from the code.
bool Valid(const QuorinOrlImageFormat& f, bool asDestination, bool modelQuery, bool baseQuery) {
    static const std::set<uint32_t> components{1, 2, 4, 5, 8, 12, 16, 32}, pixels{1, 2, 4, 8, 16, 32};
    const bool floats = f.bitmapInfo & 0x100;
    bool ok = f.version == 0 && components.count(f.bitsPerComponent) && (f.bitmapInfo & 0x18) == 0 &&
              ((f.bitmapInfo >> 12) & 7) <= 4 && (!floats || f.bitsPerComponent == 16 || f.bitsPerComponent == 32) &&
              f.renderingIntent <= 4 && pixels.count(f.bitsPerPixel);
    if (!ok || f.colorSpace == nullptr) return ok;
    if (!modelQuery || !baseQuery) return false;
    if (f.colorSpace->model != 5) return true;
    const uint32_t bpc = f.bitsPerComponent;
    const bool indexedOk = bpc >= 1 && bpc <= 31 && bpc != 5 && bpc != 12 && bpc != 16 && f.bitsPerPixel == bpc &&
                           (f.bitmapInfo & 0x1F) == 0;
    return indexedOk && (!asDestination || (f.colorSpace->base != nullptr && f.colorSpace->base->model == 0));
}

TEST(OrlImageFormatCheck, EveryRuleOnBothSidesAgainstTheirStatement) {
    FakeHost host;
    const QuorinOrlBridgeSymbolTable full = _sQuorinOrlBridgeSymbolTable;
    QuorinHostOrlColorSpace* spaces[] = {nullptr, &gRGB, &gCMYK, &gIndexedOverMono, &gIndexedOverRGB, &gIndexedAlone};
    const uint32_t pixelBits[] = {0, 1, 2, 3, 4, 5, 8, 12, 16, 24, 31, 32, 33, 64};
    const uint32_t infos[] = {0, 1, 2, 7, 8, 16, 24, 0x100, 0x102, 0x1000, 0x4000, 0x5000, 0x7000, 0x2101};
    long valid = 0;
    for (int bridge = 0; bridge < 3; ++bridge) {
        _sQuorinOrlBridgeSymbolTable = full;
        if (bridge == 1) _sQuorinOrlBridgeSymbolTable.ColorSpaceGetModel = nullptr;
        if (bridge == 2) _sQuorinOrlBridgeSymbolTable.ColorSpaceGetBaseColorSpace = nullptr;
        for (QuorinHostOrlColorSpace* space : spaces)
            for (uint32_t bpc = 0; bpc <= 33; ++bpc)
                for (uint32_t bpp : pixelBits)
                    for (uint32_t info : infos)
                        for (uint32_t intent : {0u, 4u, 5u, 0xFFFFFFFFu})
                            for (uint32_t version : {0u, 1u})
                                for (int destination : {0, 1}) {
                                    const QuorinOrlImageFormat f{bpc, bpp, space, info, version, nullptr, intent};
                                    const bool expected = Valid(f, destination, bridge != 1, bridge != 2);
                                    ASSERT_EQ(expected, _QuorinOrlImageFormat_Check(&f, destination) == 1)
                                        << bpc << " " << bpp << " " << info << " " << intent << " " << version << " "
                                        << destination << " bridge " << bridge
                                        << " model " << (space ? space->model : -1);
                                    valid += expected;
                                }
    }
    EXPECT_GT(valid, 1000);  // the grid reaches both answers often
    EXPECT_EQ(0, _QuorinOrlImageFormat_Check(nullptr, 0));
}

// The colour-space rule runs after the earlier rules and before the pixel-size rule.
TEST(OrlImageFormatCheck, AsksTheHostOnlyOnceTheEarlierRulesHold) {
    FakeHost host;
    static int calls;
    calls = 0;
    _sQuorinOrlBridgeSymbolTable.ColorSpaceGetModel = [](const QuorinHostOrlColorSpace* s) { return ++calls, s->model; };
    for (const QuorinOrlImageFormat& early : {QuorinOrlImageFormat{3, 8, &gRGB, 0, 0, nullptr, 0},
                                              QuorinOrlImageFormat{8, 8, &gRGB, 8, 0, nullptr, 0},
                                              QuorinOrlImageFormat{8, 8, &gRGB, 0, 0, nullptr, 5}})
        EXPECT_EQ(0, _QuorinOrlImageFormat_Check(&early, 0));
    EXPECT_EQ(0, calls);
    const QuorinOrlImageFormat late{8, 24, &gRGB, 0, 0, nullptr, 0};
    EXPECT_EQ(0, _QuorinOrlImageFormat_Check(&late, 0));
    EXPECT_EQ(1, calls);
}

TEST(OrlImageFormat, ColorSpaceQueries) {
    FakeHost host;
    const QuorinOrlImageFormat none = ARGB(), rgb = ARGB(&gRGB), other = ARGB(&gOtherRGB), cmyk = ARGB(&gCMYK),
                               mono = ARGB(&gMono);
    EXPECT_EQ(1, _QuorinOrlImageFormat_IsRGBColorSpace(&none));
    EXPECT_EQ(1, _QuorinOrlImageFormat_IsRGBColorSpace(&rgb));
    EXPECT_EQ(0, _QuorinOrlImageFormat_IsRGBColorSpace(&cmyk));
    EXPECT_EQ(0, _QuorinOrlImageFormat_IsRGBColorSpace(nullptr));
    // (a, b, same): one object, both RGB, equal models, different models.
    for (auto [a, b, same] : {std::tuple{&none, &rgb, 1}, {&rgb, &other, 1}, {&cmyk, &cmyk, 1}, {&mono, &cmyk, 0},
                              {&none, &cmyk, 0}, {&cmyk, &none, 0}})
        EXPECT_EQ(same, _QuorinOrlImageFormat_IsSameColorSpace(a, b)) << a->colorSpace << " " << b->colorSpace;
    QuorinHostOrlColorSpace cmyk2{4, nullptr, 4};
    const QuorinOrlImageFormat alsoCMYK = ARGB(&cmyk2);
    EXPECT_EQ(1, _QuorinOrlImageFormat_IsSameColorSpace(&cmyk, &alsoCMYK));
    EXPECT_EQ(0, _QuorinOrlImageFormat_IsSameColorSpace(&cmyk, nullptr));

    // Without the model query only a missing space counts as RGB, and only
    // one object is the same as itself.
    _sQuorinOrlBridgeSymbolTable.ColorSpaceGetModel = nullptr;
    EXPECT_EQ(1, _QuorinOrlImageFormat_IsRGBColorSpace(&none));
    EXPECT_EQ(0, _QuorinOrlImageFormat_IsRGBColorSpace(&rgb));
    EXPECT_EQ(0, _QuorinOrlImageFormat_IsSameColorSpace(&rgb, &other));
    EXPECT_EQ(1, _QuorinOrlImageFormat_IsSameColorSpace(&rgb, &rgb));
    EXPECT_EQ(0, _QuorinOrlImageFormat_IsSameColorSpace(&none, &rgb));
}

TEST(OrlImageFormat, ComponentCount) {
    FakeHost host;
    const QuorinOrlImageFormat none = ARGB(), cmyk = ARGB(&gCMYK);
    QuorinOrlImageFormat versioned = ARGB();
    versioned.version = 1;
    EXPECT_EQ(3u, QuorinOrlImageFormat_GetComponentCount(&none));
    EXPECT_EQ(4u, QuorinOrlImageFormat_GetComponentCount(&cmyk));
    EXPECT_EQ(0u, QuorinOrlImageFormat_GetComponentCount(&versioned));
    EXPECT_EQ(0u, QuorinOrlImageFormat_GetComponentCount(nullptr));
    _sQuorinOrlBridgeSymbolTable.ColorSpaceGetNumberOfComponents = nullptr;
    EXPECT_EQ(0u, QuorinOrlImageFormat_GetComponentCount(&none));
    EXPECT_EQ(0u, QuorinOrlImageFormat_GetComponentCount(&cmyk));
}

TEST(OrlImageFormat, InitFromImageNeedsEveryQuery) {
    FakeHost host;
    const float decode[6] = {0, 1, 0, 1, 0, 1};
    QuorinHostOrlImage image{{16, 64, &gRGB, 0x2101, 0, decode, 3}, 1, 1, 8, {}};
    QuorinOrlImageFormat format{1, 2, nullptr, 3, 7, nullptr, 4};
    const QuorinOrlImageFormat before = format;
    EXPECT_EQ(1, _QuorinOrlImageFormat_InitFromOrlImage(&format, &image));
    EXPECT_TRUE(Same(format, image.format));  // version 7 became 0
    EXPECT_EQ(0, _QuorinOrlImageFormat_InitFromOrlImage(nullptr, &image));
    EXPECT_EQ(0, _QuorinOrlImageFormat_InitFromOrlImage(&format, nullptr));
    using Entry = decltype(&QuorinOrlBridgeSymbolTable::ImageGetDecode);
    const QuorinOrlBridgeSymbolTable full = _sQuorinOrlBridgeSymbolTable;
    auto clear = [](auto member) { _sQuorinOrlBridgeSymbolTable.*member = nullptr; };
    for (int missing = 0; missing < 6; ++missing) {
        _sQuorinOrlBridgeSymbolTable = full;
        switch (missing) {
            case 0: clear(&QuorinOrlBridgeSymbolTable::ImageGetBitsPerComponent); break;
            case 1: clear(&QuorinOrlBridgeSymbolTable::ImageGetBitsPerPixel); break;
            case 2: clear(&QuorinOrlBridgeSymbolTable::ImageGetColorSpace); break;
            case 3: clear(&QuorinOrlBridgeSymbolTable::ImageGetBitmapInfo); break;
            case 4: clear(Entry{&QuorinOrlBridgeSymbolTable::ImageGetDecode}); break;
            case 5: clear(&QuorinOrlBridgeSymbolTable::ImageGetRenderingIntent); break;
        }
        format = before;
        EXPECT_EQ(0, _QuorinOrlImageFormat_InitFromOrlImage(&format, &image)) << missing;
        EXPECT_TRUE(Same(format, before)) << missing;
    }
}

TEST(OrlImageFormat, DifferencesFieldByField) {
    FakeHost host;
    const float decodeA[8] = {0, 1, 0, 1, 0, 1, 9, 9}, decodeB[8] = {0, 1, 0, 1, 0, 1, 7, 7};
    const float decodeC[6] = {0, 1, 0, 1, 1, 0};
    const QuorinOrlImageFormat base{8, 32, nullptr, 1, 0, decodeA, 0};
    const auto with = [&](auto change) {
        QuorinOrlImageFormat f = base;
        change(f);
        return f;
    };
    // Each field changed alone gives its bit alone; decode arrays compare
    // their 2 x 3 values, so trailing data past them is not a difference.
    const std::pair<QuorinOrlImageFormat, uint32_t> cases[] = {
        {with([](auto& f) { f.bitsPerComponent = 16; }), kQuorinOrlFormatDifference_BitsPerComponent},
        {with([](auto& f) { f.bitsPerPixel = 16; }), kQuorinOrlFormatDifference_BitsPerPixel},
        {with([](auto& f) { f.colorSpace = &gCMYK; }), kQuorinOrlFormatDifference_ColorSpace},
        {with([](auto& f) { f.colorSpace = &gRGB; }), 0},
        {with([](auto& f) { f.bitmapInfo = 2; }), kQuorinOrlFormatDifference_BitmapInfo},
        {with([](auto& f) { f.version = 1; }), kQuorinOrlFormatDifference_Version},
        {with([&](auto& f) { f.decode = decodeB; }), 0},
        {with([&](auto& f) { f.decode = decodeC; }), kQuorinOrlFormatDifference_Decode},
        {with([](auto& f) { f.decode = nullptr; }), kQuorinOrlFormatDifference_Decode},
        {with([](auto& f) { f.renderingIntent = 2; }), kQuorinOrlFormatDifference_RenderingIntent},
    };
    for (const auto& [other, bit] : cases) {
        EXPECT_EQ(bit, _QuorinOrlImageFormat_GetDifferences(&base, &other, kQuorinOrlFormatDifference_All)) << bit;
        EXPECT_EQ(bit, _QuorinOrlImageFormat_GetDifferences(&other, &base, kQuorinOrlFormatDifference_All)) << bit;
        EXPECT_EQ(0u, _QuorinOrlImageFormat_GetDifferences(&base, &other, kQuorinOrlFormatDifference_All & ~bit));
        EXPECT_EQ(bit == 0, QuorinOrlImageFormat_IsEqual(&base, &other) == 1);
    }
    EXPECT_EQ(0u, _QuorinOrlImageFormat_GetDifferences(nullptr, nullptr, kQuorinOrlFormatDifference_All));
    EXPECT_EQ(0x45u, _QuorinOrlImageFormat_GetDifferences(&base, nullptr, 0x45));
    EXPECT_EQ(0, QuorinOrlImageFormat_IsEqual(nullptr, &base));

    // Without a component count the decode arrays can only be compared as pointers.
    _sQuorinOrlBridgeSymbolTable.ColorSpaceGetNumberOfComponents = nullptr;
    const QuorinOrlImageFormat sameValues = with([&](auto& f) { f.decode = decodeB; });
    EXPECT_EQ(uint32_t{kQuorinOrlFormatDifference_Decode},
              _QuorinOrlImageFormat_GetDifferences(&base, &sameValues, kQuorinOrlFormatDifference_All));

    testing::internal::CaptureStderr();
    const QuorinOrlImageFormat bpc = with([](auto& f) { f.bitsPerComponent = 16; });
    EXPECT_EQ(1u, _QuorinOrlImageFormat_GetDifferences(&base, &bpc, 0x181));
    EXPECT_EQ("quorin[3] _QuorinOrlImageFormat_GetDifferences Utilities/OrlImageFormat:171: "
              "Unsupported diff mask: 384\n",
              testing::internal::GetCapturedStderr());
}

// ---- Converters ----------------------------------------------------------------

TEST(Converter, CreateChecksInOrderAndAllocatesNothingOnFailure) {
    FakeHost host;
    const QuorinOrlImageFormat good = ARGB(), badVersion{8, 32, nullptr, 0, 1, nullptr, 0};
    // Valid as a source, not as a destination: an indexed space over RGB.
    const QuorinOrlImageFormat sourceOnly{8, 8, &gIndexedOverRGB, 0, 0, nullptr, 0};
    struct Case {
        const QuorinOrlImageFormat *source, *destination;
        Quorin_Flags flags;
        Quorin_Error code;
    };
    for (const Case& c : {Case{nullptr, &badVersion, 0x1, kQuorinError_NullPointer},
                          Case{&badVersion, nullptr, 0x1, kQuorinError_NullPointer},
                          Case{&badVersion, &badVersion, 0x1, kQuorinError_UnsupportedFlags},
                          Case{&good, &good, 0x80, kQuorinError_UnsupportedFlags},
                          Case{&good, &good, 0x200, kQuorinError_UnsupportedFlags},
                          Case{&good, &good, 0x80000000, kQuorinError_UnsupportedFlags},
                          Case{&badVersion, &good, 0x110, kQuorinError_UnsupportedFormat},
                          Case{&good, &badVersion, 0x110, kQuorinError_UnsupportedFormat},
                          Case{&good, &sourceOnly, 0, kQuorinError_UnsupportedFormat}}) {
        Quorin_Error error = 12345;
        EXPECT_EQ(nullptr, QuorinConverter_CreateWithOrlImageFormat(c.source, c.destination, nullptr, c.flags, &error));
        EXPECT_TRUE(ReturnsCode(error, c.code)) << c.flags;
        EXPECT_EQ(nullptr, QuorinConverter_CreateWithOrlImageFormat(c.source, c.destination, nullptr, c.flags, nullptr));
        EXPECT_EQ(0, FakeHost::Live());
    }
    Quorin_Error error = 12345;
    FakeHost::FailAllocationAfter(0);
    EXPECT_EQ(nullptr, QuorinConverter_CreateWithOrlImageFormat(&good, &good, nullptr, 0, &error));
    EXPECT_TRUE(ReturnsCode(error, kQuorinError_OutOfMemory));
    QuorinConverter* converter = QuorinConverter_CreateWithOrlImageFormat(&sourceOnly, &good, nullptr, 0x110, &error);
    ASSERT_NE(nullptr, converter);
    EXPECT_EQ(kQuorinSuccess, error);
    QuorinConverter_Release(converter);
    EXPECT_EQ(0, FakeHost::Live());
}

TEST(Converter, StoresFormatsFlagsOrdersAndBackground) {
    FakeHost host;
    const QuorinOrlImageFormat source = ARGB(&gCMYK), destination{16, 16, nullptr, 0x1000, 0, nullptr, 1};
    // Exactly one value per source component, so an over-read is caught.
    auto* background = new float[4]{1.5f, -0.0f, std::nanf("7"), -INFINITY};
    QuorinConverter* c = QuorinConverter_CreateWithOrlImageFormat(&source, &destination, background, 0x100, nullptr);
    ASSERT_NE(nullptr, c);
    EXPECT_TRUE(Same(c->source, source));
    EXPECT_TRUE(Same(c->destination, destination));
    EXPECT_EQ(0x100u, c->flags);
    EXPECT_EQ(0, std::memcmp(c->background, background, 4 * sizeof(float)));
    delete[] background;
    EXPECT_EQ(1u, QuorinConverter_GetNumberOfSourceBuffers(c));
    EXPECT_EQ(1u, QuorinConverter_GetNumberOfDestinationBuffers(c));
    for (const uint32_t* order : {QuorinConverter_GetSourceBufferOrder(c), QuorinConverter_GetDestinationBufferOrder(c)})
        EXPECT_TRUE(order[0] == 24 && order[1] == 0);
    QuorinConverter_Release(c);

    const QuorinOrlImageFormat rgb = ARGB();
    c = QuorinConverter_CreateWithOrlImageFormat(&rgb, &rgb, nullptr, 0, nullptr);
    EXPECT_TRUE(c->background[0] == 0 && c->background[1] == 0 && c->background[2] == 0);
    QuorinConverter_Release(c);
    EXPECT_EQ(0, FakeHost::Live());

    EXPECT_EQ(0u, QuorinConverter_GetNumberOfSourceBuffers(nullptr));
    EXPECT_EQ(0u, QuorinConverter_GetNumberOfDestinationBuffers(nullptr));
    EXPECT_EQ(nullptr, QuorinConverter_GetSourceBufferOrder(nullptr));
    EXPECT_EQ(nullptr, QuorinConverter_GetDestinationBufferOrder(nullptr));
    QuorinConverter_Retain(nullptr);
    QuorinConverter_Release(nullptr);
}

TEST(Converter, RetainedAndReleasedFromEightThreadsIsFreedOnceByTheLastRelease) {
    FakeHost host;
    const QuorinOrlImageFormat rgb = ARGB();
    for (int round = 0; round < 20; ++round) {
        QuorinConverter* c = QuorinConverter_CreateWithOrlImageFormat(&rgb, &rgb, nullptr, 0, nullptr);
        for (int t = 0; t < 8; ++t) QuorinConverter_Retain(c);  // one reference per thread
        std::vector<std::thread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([c] {
                for (int i = 0; i < 5000; ++i) {
                    QuorinConverter_Retain(c);
                    QuorinConverter_Release(c);
                }
                QuorinConverter_Release(c);
            });
        for (std::thread& t : threads) t.join();
        ASSERT_EQ(1, FakeHost::Live());
        ASSERT_EQ(1u, c->referenceCount.load());
        QuorinConverter_Release(c);
        ASSERT_EQ(0, FakeHost::Live());
    }
    // The last reference may also be dropped on another thread than the first.
    QuorinConverter* c = QuorinConverter_CreateWithOrlImageFormat(&rgb, &rgb, nullptr, 0, nullptr);
    for (int t = 0; t < 7; ++t) QuorinConverter_Retain(c);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) threads.emplace_back([c] { QuorinConverter_Release(c); });
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(0, FakeHost::Live());
}

// ---- Buffers from images, images from buffers --------------------------------------

// A 5 x 3 image of 32-bit pixels, 24 bytes apart, of random bytes.
QuorinHostOrlImage RandomImage() {
    QuorinHostOrlImage image{ARGB(&gRGB), 5, 3, 24, {}};
    image.ownBytes.resize(3 * 24);
    std::mt19937 random(7);
    for (unsigned char& b : image.ownBytes) b = static_cast<unsigned char>(random());
    return image;
}

TEST(BufferInitWithOrlImage, CopiesRowsInTheImageFormat) {
    FakeHost host;
    const QuorinHostOrlImage image = RandomImage();
    QuorinOrlImageFormat format{};  // ask for the image's own format
    Quorin_Buffer buffer{};
    ASSERT_EQ(kQuorinSuccess, QuorinBuffer_InitWithOrlImage(&buffer, &format, nullptr, &image, 0x110));
    EXPECT_EQ(1, QuorinOrlImageFormat_IsEqual(&format, &image.format));
    EXPECT_TRUE(buffer.width == 5 && buffer.height == 3 && buffer.rowBytes == 32);
    for (size_t y = 0; y < 3; ++y)
        EXPECT_EQ(0, std::memcmp(static_cast<unsigned char*>(buffer.data) + y * 32, &image.ownBytes[y * 24], 20));
    std::free(buffer.data);

    // The same format asked for explicitly; with NoAllocate only the record.
    Quorin_Buffer record{&record, 0, 0, 0};
    EXPECT_EQ(16, QuorinBuffer_InitWithOrlImage(&record, &format, nullptr, &image, kQuorinFlag_NoAllocate));
    EXPECT_TRUE(record.data == nullptr && record.width == 5 && record.height == 3 && record.rowBytes == 32);
}

TEST(BufferInitWithOrlImage, CodesInOrderWithNothingWritten) {
    FakeHost host;
    QuorinHostOrlImage image = RandomImage();
    QuorinOrlImageFormat other = ARGB(&gCMYK), asked{};
    const QuorinOrlImageFormat unusable{8, 32, nullptr, 0, 1, nullptr, 0};
    Quorin_Buffer buffer{&buffer, 1, 2, 3};
    const Quorin_Buffer untouched = buffer;
    const auto call = [&](QuorinOrlImageFormat* f, Quorin_Flags flags) {
        return QuorinBuffer_InitWithOrlImage(&buffer, f, nullptr, &image, flags);
    };
    EXPECT_TRUE(ReturnsCode(QuorinBuffer_InitWithOrlImage(nullptr, &asked, nullptr, &image, 1), kQuorinError_NullPointer));
    EXPECT_TRUE(ReturnsCode(QuorinBuffer_InitWithOrlImage(&buffer, nullptr, nullptr, &image, 1), kQuorinError_NullPointer));
    EXPECT_TRUE(ReturnsCode(QuorinBuffer_InitWithOrlImage(&buffer, &asked, nullptr, nullptr, 1), kQuorinError_NullPointer));
    EXPECT_TRUE(ReturnsCode(call(&other, 0x80), kQuorinError_UnsupportedFlags));
    EXPECT_TRUE(ReturnsCode(call(&other, 0), kQuorinError_UnsupportedFormat));
    QuorinOrlImageFormat copy = unusable;
    EXPECT_TRUE(ReturnsCode(call(&copy, 0), kQuorinError_UnsupportedFormat));
    // The host's byte count is checked before it is read: one byte short.
    image.ownBytes.resize(2 * 24 + 19);
    EXPECT_TRUE(ReturnsCode(call(&asked, 0), kQuorinError_BadArgument));
    image.ownBytes.resize(3 * 24);
    image.bytesPerRow = 19;
    EXPECT_TRUE(ReturnsCode(call(&asked, 0), kQuorinError_BadArgument));
    image.bytesPerRow = 24;
    _sQuorinOrlBridgeSymbolTable.ImageGetBytes = nullptr;
    EXPECT_TRUE(ReturnsCode(call(&asked, 0), kQuorinError_OutOfMemory));
    _sQuorinOrlBridgeSymbolTable.ImageGetRenderingIntent = nullptr;
    EXPECT_TRUE(ReturnsCode(call(&asked, 0), kQuorinError_UnsupportedFormat));
    EXPECT_EQ(0, std::memcmp(&buffer, &untouched, sizeof buffer));
    EXPECT_EQ(0u, asked.bitsPerPixel);
}

TEST(CreateOrlImageFromBuffer, CopiesOrWrapsAndReleasesWhatItMade) {
    FakeHost host;
    const QuorinOrlImageFormat format = ARGB(&gRGB);
    // 5 x 3 pixels at rowBytes 21: the copy takes 20 bytes a row, the wrap
    // ends at the last row's last pixel.
    std::vector<unsigned char> pixels(2 * 21 + 20);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 7 + 1);
    const Quorin_Buffer buffer{pixels.data(), 3, 5, 21};
    Quorin_Error error = 1;
    QuorinHostOrlImage* copied = QuorinCreateOrlImageFromBuffer(&buffer, &format, nullptr, nullptr, 0, &error);
    ASSERT_NE(nullptr, copied);
    EXPECT_EQ(kQuorinSuccess, error);
    EXPECT_TRUE(copied->bytesPerRow == 32 && copied->length == 96 && copied->bytes != pixels.data());
    for (size_t y = 0; y < 3; ++y)
        EXPECT_EQ(0, std::memcmp(static_cast<const unsigned char*>(copied->bytes) + y * 32, &pixels[y * 21], 20));
    FakeHost::ReleaseImage(copied);

    static int calls;
    static void *released, *given;
    calls = 0;
    const auto note = [](void* userData, void* data) {
        ++calls;
        released = data;
        given = userData;
    };
    QuorinHostOrlImage* wrapped =
        QuorinCreateOrlImageFromBuffer(&buffer, &format, note, &calls, kQuorinFlag_NoAllocate, &error);
    ASSERT_NE(nullptr, wrapped);
    EXPECT_TRUE(wrapped->bytes == pixels.data() && wrapped->length == pixels.size() && wrapped->bytesPerRow == 21);
    EXPECT_EQ(0, calls);
    FakeHost::ReleaseImage(wrapped);
    EXPECT_TRUE(calls == 1 && released == pixels.data() && given == &calls);

    // A host that refuses: the caller keeps its pixels, nothing is left behind.
    FakeHost::refuseImages = true;
    for (Quorin_Flags flags : {0u, uint32_t{kQuorinFlag_NoAllocate}}) {
        EXPECT_EQ(nullptr, QuorinCreateOrlImageFromBuffer(&buffer, &format, note, &calls, flags, &error));
        EXPECT_TRUE(ReturnsCode(error, kQuorinError_OutOfMemory));
    }
    EXPECT_EQ(1, calls);
    EXPECT_EQ(0, FakeHost::Live());
}

TEST(CreateOrlImageFromBuffer, CodesInOrder) {
    FakeHost host;
    unsigned char pixels[64] = {};
    const QuorinOrlImageFormat format = ARGB(), unusable{8, 24, nullptr, 0, 0, nullptr, 0};
    const Quorin_Buffer good{pixels, 2, 4, 32}, noData{nullptr, 2, 4, 32}, narrow{pixels, 2, 4, 15},
        empty{pixels, 0, 4, 32}, huge{pixels, 2, SIZE_MAX / 4, SIZE_MAX};
    struct Case {
        const Quorin_Buffer* buffer;
        const QuorinOrlImageFormat* format;
        Quorin_Flags flags;
        Quorin_Error code;
    };
    for (const Case& c : {Case{nullptr, &unusable, 1, kQuorinError_NullPointer},
                          Case{&good, nullptr, 1, kQuorinError_NullPointer},
                          Case{&noData, &unusable, 1, kQuorinError_NullPointer},
                          Case{&narrow, &unusable, 1, kQuorinError_UnsupportedFlags},
                          Case{&narrow, &unusable, 0x80, kQuorinError_UnsupportedFlags},
                          Case{&narrow, &unusable, 0x200, kQuorinError_UnsupportedFormat},
                          Case{&narrow, &format, 0x200, kQuorinError_BadArgument},
                          Case{&empty, &format, 0, kQuorinError_BadArgument},
                          Case{&huge, &format, 0, kQuorinError_BadArgument}}) {
        Quorin_Error error = 1;
        EXPECT_EQ(nullptr, QuorinCreateOrlImageFromBuffer(c.buffer, c.format, nullptr, nullptr, c.flags, &error));
        EXPECT_TRUE(ReturnsCode(error, c.code));
    }
    _sQuorinOrlBridgeSymbolTable.ImageCreate = nullptr;
    Quorin_Error error = 1;
    EXPECT_EQ(nullptr, QuorinCreateOrlImageFromBuffer(&good, &format, nullptr, nullptr, 0, &error));
    EXPECT_TRUE(ReturnsCode(error, kQuorinError_OutOfMemory));
    EXPECT_EQ(0, FakeHost::Live());
}

}  // namespace
