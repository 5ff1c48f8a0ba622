#include "platform/windows/patcher/ImagePatcher.h"

#include <cstring>

#include "platform/Log.h"

namespace quorin::patcher {
namespace {

constexpr const char* kModule = "platform/windows/patcher";
constexpr const char* kReporter = "QuorinFindOwnSection";
// Line numbers carried by the two signature records.
constexpr int kDosSignatureLine = 47;
constexpr int kNtSignatureLine = 49;

constexpr uint16_t kDosSignature = 0x5A4D;      // "MZ"
constexpr uint32_t kNtSignature = 0x00004550;   // "PE\0\0"
constexpr size_t kNtHeadersOffsetField = 0x3C;  // in the DOS header
constexpr size_t kSectionCountField = 6;        // from the NT headers' start
constexpr size_t kOptionalHeaderSizeField = 20;
constexpr size_t kOptionalHeaderStart = 24;     // signature and file header
constexpr size_t kConstantStringRecordSize = 16;

// Little-endian field of an image, read without alignment or aliasing demands.
template <class T>
T Read(const uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// A failed image-format assertion: the record's message is the failed test's
// text, which carries its explanation as a string operand.
#define QUORIN_PATCHER_ASSERT(condition, line) \
    ((condition) ? void(0) : ReportFatal(kReporter, kModule, (line), #condition))

}  // namespace

uint32_t SectionHeader::VirtualSize() const { return Read<uint32_t>(bytes_ + 8); }
uint32_t SectionHeader::VirtualAddress() const { return Read<uint32_t>(bytes_ + 12); }

const SectionHeader* FindOwnSection(const uint8_t* image, const char* name) {
    if (image == nullptr) return nullptr;
    const uint16_t e_magic = Read<uint16_t>(image);
    QUORIN_PATCHER_ASSERT(e_magic == kDosSignature && "expected a DOS signature", kDosSignatureLine);
    const uint8_t* ntHeaders = image + Read<int32_t>(image + kNtHeadersOffsetField);
    const uint32_t signature = Read<uint32_t>(ntHeaders);
    QUORIN_PATCHER_ASSERT(signature == kNtSignature && "expected a NT signature", kNtSignatureLine);

    const uint16_t sectionCount = Read<uint16_t>(ntHeaders + kSectionCountField);
    const uint16_t optionalHeaderSize = Read<uint16_t>(ntHeaders + kOptionalHeaderSizeField);
    const auto* table = reinterpret_cast<const SectionHeader*>(ntHeaders + kOptionalHeaderStart + optionalHeaderSize);
    // Last to first: where two sections share a name, the later one is meant.
    for (size_t i = sectionCount; i-- > 0;) {
        if (std::strncmp(table[i].NameField(), name, SectionHeader::kNameLength) == 0) return &table[i];
    }
    return nullptr;
}

int FixConstantStrings(uint8_t* image) {
    const SectionHeader* strings = FindOwnSection(image, "cfstring");
    if (strings == nullptr || strings->VirtualSize() < kConstantStringRecordSize) return 0;

    uint8_t* records = image + strings->VirtualAddress();
    for (size_t i = strings->VirtualSize() / kConstantStringRecordSize; i-- > 0;) {
        uint8_t* record = records + i * kConstantStringRecordSize;
        // Looked up for each record, as the load sequence defines it; the
        // import table is never consulted for an image without records.
        const SectionHeader* imports = FindOwnSection(image, ".idata");
        if (imports == nullptr) continue;
        const uintptr_t begin = reinterpret_cast<uintptr_t>(image) + imports->VirtualAddress();
        const uintptr_t end = begin + imports->VirtualSize();
        const uintptr_t classReference = Read<uintptr_t>(record);
        if (classReference < begin || classReference > end) continue;
        const uintptr_t resolved = Read<uintptr_t>(reinterpret_cast<const uint8_t*>(classReference));
        std::memcpy(record, &resolved, sizeof resolved);
    }
    return 0;
}

// The loader of this platform maps ELF objects, not images of this format, and
// binds the constant-string class references itself, so there is no image to
// walk. (A loader of that format would look the module up from the address of
// one of this library's functions, without taking a reference on it.)
uint8_t* OwnModuleImage() { return nullptr; }

}  // namespace quorin::patcher
