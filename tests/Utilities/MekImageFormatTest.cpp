#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "FakeHost.h"
#include "Utilities/MekImageFormat.h"
#include "support/Codes.h"

namespace {

using namespace quorin::host;
using quorin::test::FakeHost;
using quorin::test::ReturnsCode;

uint32_t RetainCount(QuorinMekImageFormat* f) { return NubGetRetainCount(&f->header); }

TEST(MekImageFormatConstants, ExactValuesAndPaddingForA32ByteRead) {
    const Quorin_YpCbCrToARGBMatrix* toRGB[] = {kQuorin_YpCbCrToARGBMatrix_ITU_R_601_4,
                                                kQuorin_YpCbCrToARGBMatrix_ITU_R_709_2};
    const float toRGBValues[2][5] = {{1.0f, 1.402f, -0.714136f, -0.344136f, 1.772f},
                                     {1.0f, 1.5748f, -0.468124f, -0.187324f, 1.8556f}};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(0, std::memcmp(toRGB[i], toRGBValues[i], sizeof toRGBValues[i]));
        // What a video format copies from it: the record, then zeros.
        QuorinMekImageFormat* f = QuorinMekImageFormat_Create(0, toRGB[i], nullptr, nullptr, 0);
        const auto* copied = static_cast<const float*>(QuorinMekImageFormat_GetConversionMatrix(f, nullptr));
        EXPECT_EQ(0, std::memcmp(copied, toRGBValues[i], sizeof toRGBValues[i]));
        EXPECT_TRUE(copied[5] == 0 && copied[6] == 0 && copied[7] == 0);
        QuorinMekImageFormat_Release(f);
    }
    const float toYpCbCr[2][8] = {{0.299f, 0.587f, 0.114f, -0.168736f, -0.331264f, 0.5f, -0.418688f, -0.081312f},
                                  {0.2126f, 0.7152f, 0.0722f, -0.114572f, -0.385428f, 0.5f, -0.454153f, -0.045847f}};
    EXPECT_EQ(0, std::memcmp(kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4, toYpCbCr[0], 32));
    EXPECT_EQ(0, std::memcmp(kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2, toYpCbCr[1], 32));
    EXPECT_EQ(-0.418688f, kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4->G_Cr);
    EXPECT_EQ(6u, sizeof kQuorinDecodeArray_16Q12Format / sizeof(float));
    for (float v : kQuorinDecodeArray_16Q12Format) EXPECT_EQ(0.0f, v);
}

TEST(MekImageFormat, CreateCopyAndTheirRetains) {
    FakeHost host;
    NubObject* siting = NubStringCreateWithCString(nullptr, "left");
    QuorinHostOrlColorSpace space{1, nullptr, 3};
    QuorinMekImageFormat* f = QuorinMekImageFormat_Create(0x79757673, nullptr, siting, &space, 7);
    ASSERT_NE(nullptr, f);
    uint32_t type = 99;
    const auto* matrix = static_cast<const unsigned char*>(QuorinMekImageFormat_GetConversionMatrix(f, &type));
    ASSERT_NE(nullptr, matrix);  // type 0 still has its (zero) storage
    EXPECT_EQ(0u, type);
    EXPECT_EQ(std::vector<unsigned char>(32, 0), std::vector<unsigned char>(matrix, matrix + 32));
    EXPECT_TRUE(QuorinMekImageFormat_GetFormatCode(f) == 0x79757673 && QuorinMekImageFormat_GetAlphaHint(f) == 7 &&
                QuorinMekImageFormat_GetChannelCount(f) == 0 && QuorinMekImageFormat_GetChannelNames(f) == nullptr &&
                QuorinMekImageFormat_GetUserData(f) == nullptr);
    EXPECT_TRUE(QuorinMekImageFormat_GetChromaSiting(f) == siting && QuorinMekImageFormat_GetColorSpace(f) == &space);
    EXPECT_TRUE(NubGetRetainCount(siting) == 2 && space.retains == 1);

    const uint32_t names[3] = {'Y', 'C', 'Y'};
    uint8_t descriptions[3][16];
    for (int i = 0; i < 48; ++i) descriptions[i / 16][i % 16] = static_cast<uint8_t>(i);
    ASSERT_EQ(kQuorinSuccess, quorin::SetMekChannels(f, 3, names, descriptions));
    ASSERT_EQ(kQuorinSuccess, QuorinMekImageFormat_CopyConversionMatrix(f, kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2, 1));
    ASSERT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetUserData(f, &space, nullptr));

    QuorinMekImageFormat* copy = QuorinMekImageFormat_Copy(f);
    ASSERT_NE(nullptr, copy);
    EXPECT_TRUE(QuorinMekImageFormat_GetFormatCode(copy) == 0x79757673 && QuorinMekImageFormat_GetAlphaHint(copy) == 7);
    EXPECT_EQ(3u, QuorinMekImageFormat_GetChannelCount(copy));
    EXPECT_NE(QuorinMekImageFormat_GetChannelNames(f), QuorinMekImageFormat_GetChannelNames(copy));
    EXPECT_EQ(0, std::memcmp(QuorinMekImageFormat_GetChannelNames(copy), names, sizeof names));
    EXPECT_EQ(0, std::memcmp(copy->channelDescriptions, descriptions, sizeof descriptions));
    EXPECT_EQ(0, std::memcmp(QuorinMekImageFormat_GetConversionMatrix(copy, &type),
                             kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2, 32));
    EXPECT_EQ(1u, type);
    EXPECT_EQ(nullptr, QuorinMekImageFormat_GetUserData(copy));  // not copied
    EXPECT_TRUE(NubGetRetainCount(siting) == 3 && space.retains == 2);

    QuorinMekImageFormat_Retain(copy);
    EXPECT_EQ(2u, RetainCount(copy));
    QuorinMekImageFormat_Release(copy);
    QuorinMekImageFormat_Release(copy);
    QuorinMekImageFormat_Release(f);
    EXPECT_TRUE(NubGetRetainCount(siting) == 1 && space.releases == 2);
    NubRelease(siting);
    EXPECT_EQ(0, FakeHost::Live());

    EXPECT_EQ(nullptr, QuorinMekImageFormat_Copy(nullptr));
    QuorinMekImageFormat_Retain(nullptr);
    QuorinMekImageFormat_Release(nullptr);
}

TEST(MekImageFormat, FailedAllocationsLeaveNothing) {
    FakeHost host;
    FakeHost::FailAllocationAfter(0);
    EXPECT_EQ(nullptr, QuorinMekImageFormat_Create(1, nullptr, nullptr, nullptr, 0));
    QuorinMekImageFormat* f = QuorinMekImageFormat_Create(1, nullptr, nullptr, nullptr, 0);
    const uint32_t names[2] = {1, 2};
    ASSERT_EQ(kQuorinSuccess, quorin::SetMekChannels(f, 2, names, nullptr));
    for (long after = 0; after < 3; ++after) {  // the record, its names, its descriptions
        FakeHost::FailAllocationAfter(after);
        EXPECT_EQ(nullptr, QuorinMekImageFormat_Copy(f)) << after;
        EXPECT_EQ(3, FakeHost::Live()) << after;
    }
    QuorinMekImageFormat_Release(f);
    EXPECT_EQ(0, FakeHost::Live());
}

// Without the bridge's colour-space retain and release the space is stored
// and handed back, never retained or released.
TEST(MekImageFormat, ColorSpaceWithAndWithoutTheBridge) {
    FakeHost host;
    QuorinHostOrlColorSpace a{1, nullptr, 3}, b{1, nullptr, 3};
    QuorinMekImageFormat* f = QuorinMekImageFormat_Create(1, nullptr, nullptr, &a, 0);
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetColorSpace(f, &a));  // the same space again stays
    EXPECT_TRUE(a.retains == 2 && a.releases == 1);
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetColorSpace(f, &b));
    EXPECT_TRUE(a.releases == 2 && b.retains == 1 && QuorinMekImageFormat_GetColorSpace(f) == &b);
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetColorSpace(f, nullptr));
    EXPECT_TRUE(b.releases == 1 && QuorinMekImageFormat_GetColorSpace(f) == nullptr);
    QuorinMekImageFormat_Release(f);

    _sQuorinOrlBridgeSymbolTable.ColorSpaceRetain = nullptr;
    _sQuorinOrlBridgeSymbolTable.ColorSpaceRelease = nullptr;
    f = QuorinMekImageFormat_Create(1, nullptr, nullptr, &a, 0);
    QuorinMekImageFormat* copy = QuorinMekImageFormat_Copy(f);
    EXPECT_EQ(&a, QuorinMekImageFormat_GetColorSpace(copy));
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetColorSpace(f, &b));
    QuorinMekImageFormat_Release(copy);
    QuorinMekImageFormat_Release(f);
    EXPECT_TRUE(a.retains == 2 && a.releases == 2 && b.retains == 1 && b.releases == 1);
    EXPECT_EQ(0, FakeHost::Live());
}

TEST(MekImageFormat, SettersAndTheirCodes) {
    FakeHost host;
    QuorinHostOrlColorSpace space{1, nullptr, 3};
    NubObject* left = NubStringCreateWithCString(nullptr, "left");
    NubObject* center = NubStringCreateWithCString(nullptr, "center");
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_SetColorSpace(nullptr, &space), kQuorinError_UnsupportedFormat));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_SetChromaSiting(nullptr, left), kQuorinError_UnsupportedFormat));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_SetAlphaHint(nullptr, 1), kQuorinError_BadArgument));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_SetUserData(nullptr, left, nullptr), kQuorinError_UnsupportedFormat));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_CopyConversionMatrix(nullptr, nullptr, 0), kQuorinError_UnsupportedFormat));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_CopyChannelDescription(nullptr, nullptr, 0), kQuorinError_UnsupportedFormat));
    EXPECT_TRUE(space.retains == 0 && NubGetRetainCount(left) == 1);

    QuorinMekImageFormat* f = QuorinMekImageFormat_Create(1, nullptr, left, nullptr, 0);
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetChromaSiting(f, left));
    EXPECT_EQ(2u, NubGetRetainCount(left));
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetChromaSiting(f, center));
    EXPECT_TRUE(NubGetRetainCount(left) == 1 && NubGetRetainCount(center) == 2);
    EXPECT_STREQ("center", NubStringGetCStringPtr(QuorinMekImageFormat_GetChromaSiting(f)));
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetAlphaHint(f, 0xFFFFFFFF));
    EXPECT_EQ(0xFFFFFFFFu, QuorinMekImageFormat_GetAlphaHint(f));
    QuorinMekImageFormat_Release(f);
    EXPECT_EQ(1u, NubGetRetainCount(center));
    NubRelease(left);
    NubRelease(center);
    EXPECT_EQ(0, FakeHost::Live());

    uint32_t type = 5;
    EXPECT_EQ(nullptr, QuorinMekImageFormat_GetConversionMatrix(nullptr, &type));
    EXPECT_EQ(0u, type);
    EXPECT_TRUE(QuorinMekImageFormat_GetFormatCode(nullptr) == 0 && QuorinMekImageFormat_GetChannelCount(nullptr) == 0 &&
                QuorinMekImageFormat_GetChannelNames(nullptr) == nullptr &&
                QuorinMekImageFormat_GetColorSpace(nullptr) == nullptr &&
                QuorinMekImageFormat_GetChromaSiting(nullptr) == nullptr &&
                QuorinMekImageFormat_GetAlphaHint(nullptr) == 0 && QuorinMekImageFormat_GetUserData(nullptr) == nullptr &&
                QuorinMekImageFormat_GetChannelDescription(nullptr, 0) == nullptr);
}

TEST(MekImageFormat, ConversionMatrixTypes) {
    FakeHost host;
    QuorinMekImageFormat* f = QuorinMekImageFormat_Create(1, kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4, nullptr, nullptr, 0);
    uint32_t type = 0;
    const void* storage = QuorinMekImageFormat_GetConversionMatrix(f, &type);
    EXPECT_EQ(1u, type);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_CopyConversionMatrix(f, kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2, 2),
                            kQuorinError_BadArgument));
    EXPECT_EQ("quorin[3] QuorinMekImageFormat_CopyConversionMatrix Utilities/MekImageFormat:282: "
              "Unhandled matrix type 2\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(storage, QuorinMekImageFormat_GetConversionMatrix(f, &type));
    EXPECT_EQ(1u, type);
    EXPECT_EQ(0, std::memcmp(storage, kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4, 32));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_CopyConversionMatrix(f, nullptr, 1), kQuorinError_NullPointer));
    EXPECT_EQ(0, std::memcmp(storage, kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4, 32));
    // Type 0 copies nothing, not even from a matrix that is given.
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_CopyConversionMatrix(f, kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2, 0));
    QuorinMekImageFormat_GetConversionMatrix(f, &type);
    EXPECT_EQ(0u, type);
    EXPECT_EQ(0, std::memcmp(storage, kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4, 32));
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_CopyConversionMatrix(f, kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2, 1));
    QuorinMekImageFormat_GetConversionMatrix(f, &type);
    EXPECT_EQ(1u, type);
    EXPECT_EQ(0, std::memcmp(storage, kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2, 32));
    QuorinMekImageFormat_Release(f);
}

TEST(MekImageFormat, ChannelDescriptionsByFirstMatchingName) {
    FakeHost host;
    QuorinMekImageFormat* f = QuorinMekImageFormat_Create(1, nullptr, nullptr, nullptr, 0);
    const uint8_t* description = reinterpret_cast<const uint8_t*>("0123456789abcdef");
    EXPECT_EQ(nullptr, QuorinMekImageFormat_GetChannelDescription(f, 0));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_CopyChannelDescription(f, nullptr, 0), kQuorinError_BadArgument));
    const uint32_t names[3] = {'A', 'B', 'A'};
    ASSERT_EQ(kQuorinSuccess, quorin::SetMekChannels(f, 3, names, nullptr));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_CopyChannelDescription(f, description, 'Z'), kQuorinError_BadArgument));
    EXPECT_TRUE(ReturnsCode(QuorinMekImageFormat_CopyChannelDescription(f, nullptr, 'A'), kQuorinError_NullPointer));
    EXPECT_EQ(nullptr, QuorinMekImageFormat_GetChannelDescription(f, 'Z'));
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_CopyChannelDescription(f, description, 'A'));
    EXPECT_EQ(f->channelDescriptions[0], QuorinMekImageFormat_GetChannelDescription(f, 'A'));
    EXPECT_EQ(f->channelDescriptions[1], QuorinMekImageFormat_GetChannelDescription(f, 'B'));
    EXPECT_EQ(0, std::memcmp(f->channelDescriptions[0], description, 16));
    const uint8_t zeros[16] = {};
    EXPECT_EQ(0, std::memcmp(f->channelDescriptions[2], zeros, 16));  // only the first match
    QuorinMekImageFormat_Release(f);
    EXPECT_EQ(0, FakeHost::Live());
}

// Each user-data release is called once, with the record and the data it
// was given with, and before the record lets go of anything else.
TEST(MekImageFormat, UserDataReleaseOrder) {
    FakeHost host;
    static std::vector<std::string> events;
    static QuorinMekImageFormat* record;
    events.clear();
    auto first = [](QuorinMekImageFormat* f, void* data) {
        events.push_back("first " + std::string(static_cast<const char*>(data)) + (f == record ? "" : " other"));
    };
    auto second = [](QuorinMekImageFormat* f, void* data) {
        const char* siting = NubStringGetCStringPtr(QuorinMekImageFormat_GetChromaSiting(f));
        events.push_back("second " + std::string(static_cast<const char*>(data)) + " " + (siting ? siting : "gone") +
                         (f == record ? "" : " other"));
    };
    NubObject* siting = NubStringCreateWithCString(nullptr, "top");
    record = QuorinMekImageFormat_Create(1, nullptr, siting, nullptr, 0);
    NubRelease(siting);  // the record holds the only reference now
    static char d1[] = "d1", d2[] = "d2", d3[] = "d3";
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetUserData(record, d1, first));
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetUserData(record, d2, second));
    EXPECT_EQ(std::vector<std::string>{"first d1"}, events);
    EXPECT_EQ(d2, QuorinMekImageFormat_GetUserData(record));
    QuorinMekImageFormat_Release(record);
    EXPECT_EQ((std::vector<std::string>{"first d1", "second d2 top"}), events);

    // Data set without a release function is dropped silently, and a record
    // destroyed after it calls nothing.
    events.clear();
    record = QuorinMekImageFormat_Create(1, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetUserData(record, d3, nullptr));
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetUserData(record, d1, first));
    EXPECT_EQ(kQuorinSuccess, QuorinMekImageFormat_SetUserData(record, d2, nullptr));
    QuorinMekImageFormat_Release(record);
    EXPECT_EQ(std::vector<std::string>{"first d1"}, events);
    EXPECT_EQ(0, FakeHost::Live());
}

TEST(HostObjects, DataOwnsOrWrapsAndStringsCopy) {
    FakeHost host;
    char bytes[] = "pixels";
    NubObject* owned = NubDataCreate(nullptr, bytes, sizeof bytes);
    bytes[0] = 'P';
    EXPECT_STREQ("pixels", static_cast<const char*>(NubDataGetBytePtr(owned)));
    EXPECT_EQ(sizeof bytes, NubDataGetLength(owned));
    static int freed;
    freed = 0;
    const auto count = [](void* info, void* b) { freed += info == &freed && b != nullptr; };
    NubObject* wrapped = NubDataCreateWithBytesNoCopy(nullptr, bytes, 3, count, &freed);
    NubObject* forgotten = NubDataCreateWithBytesNoCopy(nullptr, bytes, 3, count, &freed);
    EXPECT_EQ(bytes, NubDataGetBytePtr(wrapped));
    NubDataForgetDeallocator(forgotten);
    EXPECT_EQ(wrapped, NubRetain(wrapped));
    for (NubObject* o : {owned, wrapped, wrapped, forgotten}) NubRelease(o);
    EXPECT_EQ(1, freed);
    NubObject* text = NubStringCreateWithCString(nullptr, "cosited");
    EXPECT_EQ(nullptr, NubDataGetBytePtr(text));
    EXPECT_EQ(nullptr, NubStringGetCStringPtr(nullptr));
    EXPECT_STREQ("NubString", NubGetClass(text)->name);
    NubRelease(text);
    EXPECT_EQ(0, FakeHost::Live());
}

TEST(Bridge, TablesStartEmpty) {
    const auto* orl = reinterpret_cast<const unsigned char*>(&_sQuorinOrlBridgeSymbolTable);
    const auto* mek = reinterpret_cast<const unsigned char*>(&_sQuorinMekBridgeSymbolTable);
    EXPECT_EQ(std::vector<unsigned char>(sizeof _sQuorinOrlBridgeSymbolTable, 0),
              std::vector<unsigned char>(orl, orl + sizeof _sQuorinOrlBridgeSymbolTable));
    EXPECT_EQ(std::vector<unsigned char>(sizeof _sQuorinMekBridgeSymbolTable, 0),
              std::vector<unsigned char>(mek, mek + sizeof _sQuorinMekBridgeSymbolTable));
}

}  // namespace
