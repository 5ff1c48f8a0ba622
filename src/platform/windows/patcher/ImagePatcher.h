// The section walk over a loaded module image of the DOS/NT executable format,
// and the load-time fix-up of constant-string records that refer to imported
// classes. Written over an explicit image base, so it runs (and is tested)
// wherever an image of that format can be built in memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorin::patcher {

// One 40-byte entry of an image's section table, read in place. Fields are
// read byte by byte, so the table need not be aligned.
class SectionHeader {
public:
    static constexpr size_t kSize = 40;
    static constexpr size_t kNameLength = 8;

    // The name field: 8 bytes, null-padded, not terminated when all 8 are used.
    const char* NameField() const { return reinterpret_cast<const char*>(bytes_); }
    uint32_t VirtualSize() const;
    uint32_t VirtualAddress() const;

private:
    uint8_t bytes_[kSize];
};
static_assert(sizeof(SectionHeader) == SectionHeader::kSize);

// The section-table entry of `image` whose name field equals `name` over at
// most 8 characters, searching from the last entry to the first; null when
// `image` is null, the table is empty or nothing matches. An image without the
// DOS or NT signature is fatal.
const SectionHeader* FindOwnSection(const uint8_t* image, const char* name);

// Replaces the first word of every 16-byte record of the "cfstring" section
// that points into the ".idata" section (both ends included) by the pointer
// stored where it points, i.e. by the import it names. Records are visited
// last to first. A null image, or no such section, changes nothing. Returns 0.
int FixConstantStrings(uint8_t* image);

// The base of this library's own image of that format, or null where the
// loader maps none.
uint8_t* OwnModuleImage();

}  // namespace quorin::patcher
