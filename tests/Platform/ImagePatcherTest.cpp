#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/Startup.h"
#include "platform/windows/patcher/ImagePatcher.h"

namespace {

using quorin::patcher::FindOwnSection;
using quorin::patcher::FixConstantStrings;

// An 8 KiB image in memory: DOS header, NT headers at 0x80 with an optional
// header of odd size (so the section table is unaligned), then the table.
struct Image {
    static constexpr uint32_t kNt = 0x80, kOptionalSize = 0xE1;
    std::vector<uint64_t> words = std::vector<uint64_t>(1024);

    Image() {
        Put<uint16_t>(0, 0x5A4D);
        Put<uint32_t>(0x3C, kNt);
        Put<uint32_t>(kNt, 0x00004550);
        Put<uint16_t>(kNt + 20, kOptionalSize);
    }
    uint8_t* base() { return reinterpret_cast<uint8_t*>(words.data()); }
    uintptr_t at(uint32_t offset) { return reinterpret_cast<uintptr_t>(base() + offset); }
    template <class T> void Put(uint32_t offset, T v) { std::memcpy(base() + offset, &v, sizeof v); }
    template <class T> T Get(uint32_t offset) { T v; std::memcpy(&v, base() + offset, sizeof v); return v; }

    // Appends a section header, its name cut to 8 bytes; returns the header.
    const void* Add(const char* name, uint32_t address, uint32_t size) {
        const uint16_t count = Get<uint16_t>(kNt + 6);
        const uint32_t header = kNt + 24 + kOptionalSize + 40 * count;
        std::memcpy(base() + header, name, std::min<size_t>(std::strlen(name), 8));
        Put(header + 8, size);
        Put(header + 12, address);
        Put<uint16_t>(kNt + 6, count + 1);
        return base() + header;
    }
};

TEST(ImagePatcher, FindsSectionsLastToFirstOverEightCharacters) {
    Image image;
    EXPECT_EQ(nullptr, FindOwnSection(nullptr, ".text"));
    EXPECT_EQ(nullptr, FindOwnSection(image.base(), ""));  // no sections
    const void* text = image.Add(".text", 0x1000, 0x10);
    image.Add(".data", 0x1100, 0x10);
    const void* strings = image.Add("cfstring", 0x1200, 0x10);  // no terminator: size follows
    const void* data = image.Add(".data", 0x1300, 0x10);
    image.Add(".idata$2", 0x1400, 0x10);
    EXPECT_EQ(text, FindOwnSection(image.base(), ".text"));
    EXPECT_EQ(data, FindOwnSection(image.base(), ".data"));
    EXPECT_EQ(strings, FindOwnSection(image.base(), "cfstring"));
    EXPECT_EQ(strings, FindOwnSection(image.base(), "cfstringLonger"));
    for (const char* absent : {"cfstrin", ".idata", ".tex"}) EXPECT_EQ(nullptr, FindOwnSection(image.base(), absent));
    EXPECT_EQ(0x1200u, FindOwnSection(image.base(), "cfstring")->VirtualAddress());
    EXPECT_EQ(0x10u, FindOwnSection(image.base(), "cfstring")->VirtualSize());
}

TEST(ImagePatcher, RewritesOnlyReferencesIntoImports) {
    // .idata spans 0x1000..0x1040, both ends counting; records start at 0x1800.
    Image image;
    image.Add(".idata", 0x1000, 0x40);
    image.Add("cfstring", 0x1800, 6 * 16 + 15);  // the partial 7th record is not one
    // Pointer-sized words, so that 32-bit processors resolve the same words:
    // a tag in the top bits, the offset below.
    const uintptr_t tag = uintptr_t{0xC1A55} << (8 * sizeof(uintptr_t) - 20);
    for (uint32_t a = 0x0FF8; a <= 0x1048; a += 8) image.Put<uintptr_t>(a, tag + a);
    const uintptr_t begin = image.at(0x1000), end = image.at(0x1040);
    const uintptr_t before[] = {begin - 1, begin, begin + 8, end, end + 1, 42, begin + 3};
    const uintptr_t after[] = {begin - 1, tag + 0x1000, tag + 0x1008, tag + 0x1040, end + 1, 42, begin + 3};
    for (uint32_t i = 0; i < 7; ++i) image.Put(0x1800 + 16 * i, before[i]), image.Put<uint64_t>(0x1808 + 16 * i, 9 + i);
    EXPECT_EQ(0, FixConstantStrings(image.base()));
    for (uint32_t i = 0; i < 7; ++i) {
        EXPECT_EQ(after[i], image.Get<uintptr_t>(0x1800 + 16 * i)) << "record " << i;
        EXPECT_EQ(uint64_t{9} + i, image.Get<uint64_t>(0x1808 + 16 * i));
    }
}

TEST(ImagePatcher, VisitsRecordsLastToFirst) {
    // Records inside .idata: record 1 refers to record 0's first word, which
    // must still hold its old value when record 1 is resolved.
    Image image;
    image.Add(".idata", 0x1000, 0x100);
    image.Add("cfstring", 0x1000, 32);
    image.Put<uintptr_t>(0x1080, 0x5EED);
    image.Put(0x1000, image.at(0x1080));
    image.Put(0x1010, image.at(0x1000));
    FixConstantStrings(image.base());
    EXPECT_EQ(0x5EEDu, image.Get<uintptr_t>(0x1000));
    EXPECT_EQ(image.at(0x1080), image.Get<uintptr_t>(0x1010));
}

TEST(ImagePatcher, NeedsAWholeRecordAndImports) {
    for (uint32_t size : {0u, 15u, 16u}) {
        for (bool imports : {false, true}) {
            Image image;
            if (imports) image.Add(".idata", 0x1000, 0x40);
            image.Add("cfstring", 0x1800, size);
            image.Put<uint64_t>(0x1000, 0x77);
            image.Put(0x1800, image.at(0x1000));
            EXPECT_EQ(0, FixConstantStrings(image.base()));
            EXPECT_EQ(imports && size == 16 ? 0x77u : image.at(0x1000), image.Get<uintptr_t>(0x1800));
        }
    }
    EXPECT_EQ(0, FixConstantStrings(nullptr));
    EXPECT_EQ(0, quorin::RunConstantStringFixUp());  // no image of this format here
}

TEST(ImagePatcherDeathTest, BadSignaturesAreFatal) {
    Image badDos, badNt;
    badDos.Put<uint16_t>(0, 0x5A4E);
    badNt.Put<uint32_t>(Image::kNt, 0x00014550);
    EXPECT_DEATH(FindOwnSection(badDos.base(), ".text"), "quorin\\[2\\] QuorinFindOwnSection platform/windows/patcher:47: "
                                                         "e_magic == kDosSignature && \"expected a DOS signature\"");
    EXPECT_DEATH(FixConstantStrings(badNt.base()), "quorin\\[2\\] QuorinFindOwnSection platform/windows/patcher:49: "
                                                   "signature == kNtSignature && \"expected a NT signature\"");
}

}  // namespace
