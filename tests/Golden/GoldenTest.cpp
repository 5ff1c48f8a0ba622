// Identical bytes on every processor: each implemented member runs on
// reproducible random images of several sizes under the scalar kernel and
// under the vector kernel of every instruction set this processor and build
// offer, and a checksum of everything it wrote (its return code, its
// destinations, the counters it filled) must equal the one kept in
// checksums.txt. The file is written on one processor and checked on all the
// others (x86-64 at every target, aarch64 and armv7 under qemu in CI), so a
// kernel whose result depends on the processor fails here even when each
// processor agrees with itself.
//
// When a member is added or its bytes change on purpose, rewrite the file
// with `make goldens` (the test run with QUORIN_WRITE_GOLDENS=<file>): it
// still requires every kernel to agree with the scalar one before it writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Conversion/PackedPlanesMembers.h"
#include "Geometry/GeometryMembers.h"
#include "Histogram/HistogramMembers.h"
#include "Safety/Members.h"
#include "support/GuardedImage.h"
#include "support/Variants.h"

namespace quorin::test {
namespace {

using Buffers = const Quorin_Buffer* const*;

// One row of the golden table: a member called one way. `extra` receives
// what the member writes outside its image buffers (a histogram's counters).
struct GoldenRow {
    std::string name;
    std::vector<Arg> args;
    bool scaledDestination = false;  // the last buffer has its own size
    std::function<Quorin_Error(Buffers, Quorin_Flags, std::vector<uint8_t>& extra)> call;
};

struct Size {
    size_t width, height;
};
// A single pixel, widths either side of every vector length's multiple,
// rows long enough for the kernels' unrolled loops, and an image above the
// parallel threshold with streaming stores, which also runs split.
constexpr Size kSizes[] = {{1, 1}, {5, 3}, {19, 4}, {70, 9}, {301, 3}, {260, 250}};
constexpr size_t kSplitFrom = 64000;

Size ScaledSize(Size s) { return {s.width * 3 / 2 + 1, s.height * 2 / 3 + 1}; }

// The members of the safety suite's list, with the two whose list entries
// hide what they compute replaced: scaling (listed as an equal-size copy)
// scales up across and down the columns, both resampling qualities; the
// histograms (whose counters the list drops) write their counters here.
std::vector<GoldenRow> GoldenRows() {
    std::vector<GoldenRow> rows;
    std::map<std::string, bool> replaced;
    for (const geometry::ScaleMember* m : geometry::kScaleMembers) {
        replaced[m->name] = true;
        const size_t bytes = m->format.pixelBytes();
        for (const bool high : {false, true}) {
            GoldenRow row;
            row.name = std::string(m->name) + (high ? "/high-quality" : "");
            row.args = {{bytes, Use::Read}, {bytes, Use::Written}};
            row.scaledDestination = true;
            row.call = [m, high](Buffers b, Quorin_Flags f, std::vector<uint8_t>&) {
                return m->entry(b[0], b[1], nullptr, f | (high ? kQuorinFlag_HighQualityResampling : 0));
            };
            rows.push_back(std::move(row));
        }
    }
    for (const histogram::Member* m : histogram::kHistogramMembers) {
        replaced[m->name] = true;
        const bool f = m->format.sample == SampleKind::F32;
        GoldenRow row;
        row.name = m->name;
        row.args = {{m->format.pixelBytes(), Use::Read}};
        row.call = [m, f](Buffers b, Quorin_Flags flags, std::vector<uint8_t>& extra) {
            const uint32_t entries = f ? 300 : 256;
            std::vector<uint32_t> counts(4 * entries);
            uint32_t* const h[4] = {&counts[0], &counts[entries], &counts[2 * entries], &counts[3 * entries]};
            const Quorin_Error error = m->run({b[0], h, entries, -0.5f, 1.5f, flags});
            const auto* bytes = reinterpret_cast<const uint8_t*>(counts.data());
            extra.insert(extra.end(), bytes, bytes + counts.size() * sizeof(uint32_t));
            return error;
        };
        rows.push_back(std::move(row));
    }
    // Packed planes: the packed side's rowBytes are the image's width in
    // bytes, the plane's 8, 4 or 2 times as many, so every byte is converted.
    for (const planes::PlaneMember* m : planes::kPlaneMembers) {
        const size_t per = m->pixelsPerByte();
        const bool unpack = m->direction == planes::Direction::Unpack;
        GoldenRow row;
        row.name = m->name;
        row.args = {{unpack ? 1 : per, Use::Read}, {unpack ? per : 1, Use::Written}};
        row.call = [m](Buffers b, Quorin_Flags, std::vector<uint8_t>&) { return m->invoke(b[0], b[1]); };
        rows.push_back(std::move(row));
    }
    for (const SafetyMember& m : ImplementedMembers()) {
        if (replaced.count(m.name)) continue;
        GoldenRow row;
        row.name = m.name;
        row.args = m.args;
        row.call = [&m](Buffers b, Quorin_Flags f, std::vector<uint8_t>&) { return m.run(b, f); };
        rows.push_back(std::move(row));
    }
    return rows;
}

// Random pixels that reach every kind of value a member may meet: whatever
// their sample type, each 4-byte word is a float in or near the unit range
// or the 8-bit range, random bits, a subnormal, a special value (zeros,
// infinities, NaNs, extremes), or bytes that are each 0 or 255 (the alpha
// values with their own rules).
void FillGolden(GuardedImage& image, uint64_t seed) {
    static const uint32_t kSpecial[] = {0x00000000, 0x80000000, 0x7F800000, 0xFF800000, 0x7FC00000,
                                        0xFFC00000, 0x7FA12345, 0x3F800000, 0x437F0000, 0x3F000000,
                                        0x00800000, 0x7F7FFFFF, 0xBF800000, 0x477FFF00};
    Random random(seed);
    for (size_t y = 0; y < image.height(); ++y) {
        uint8_t* row = image.row(y);
        const size_t bytes = image.width() * image.pixelBytes();
        for (size_t i = 0; i < bytes; i += 4) {
            const uint64_t r = random.next();
            const uint32_t low = static_cast<uint32_t>(r >> 8);
            uint32_t word;
            float value;
            switch (r & 15) {
                case 0: case 1: case 2: case 3: case 4: case 5: case 6:
                    value = static_cast<float>(low % 1500001) / 1000000.0f - 0.25f;
                    std::memcpy(&word, &value, 4);
                    break;
                case 7: case 8:
                    value = static_cast<float>(low % 2560001) / 10000.0f;
                    std::memcpy(&word, &value, 4);
                    break;
                case 13: word = low & 0x807FFFFF; break;
                case 14: word = kSpecial[low % std::size(kSpecial)]; break;
                case 15:
                    word = 0;
                    for (int k = 0; k < 4; ++k) word |= ((low >> k) & 1 ? 0xFFu : 0u) << (8 * k);
                    break;
                default: word = static_cast<uint32_t>(r >> 32);
            }
            std::memcpy(row + i, &word, std::min<size_t>(4, bytes - i));
        }
    }
}

uint64_t Fnv1a(uint64_t hash, const uint8_t* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) hash = (hash ^ bytes[i]) * 0x100000001B3ull;
    return hash;
}

std::string Key(const GoldenRow& row, Size size) {
    return row.name + " " + std::to_string(size.width) + "x" + std::to_string(size.height);
}

struct Outcome {
    Quorin_Error error;
    uint64_t checksum;
};

// Runs a row once on fresh images: its code and the checksum of the code and
// everything it wrote. A write outside a buffer's pixels fails the test.
Outcome RunOnce(const GoldenRow& row, Size size, Quorin_Flags flags) {
    std::vector<GuardedImage> images;
    std::vector<const Quorin_Buffer*> records;
    for (size_t i = 0; i < row.args.size(); ++i) {
        const Arg& arg = row.args[i];
        const bool scaled = row.scaledDestination && i + 1 == row.args.size();
        const Size s = scaled ? ScaledSize(size) : size;
        // Rows without padding: some members write a row's padding too.
        images.emplace_back(s.width, s.height, arg.pixelBytes, 0, (i * 16) % 64);
        FillGolden(images.back(), 0x601DE4ull * (i + 1) + s.width * 1000 + s.height);
    }
    for (const GuardedImage& image : images) records.push_back(image.record());
    std::vector<uint8_t> extra;
    const Quorin_Error error = row.call(records.data(), flags, extra);
    uint64_t hash = 0xCBF29CE484222325ull;
    const int32_t code = error;
    hash = Fnv1a(hash, reinterpret_cast<const uint8_t*>(&code), sizeof code);
    for (size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(images[i].damagedGuard(), "") << Key(row, size) << " buffer " << i;
        if (!row.args[i].written()) continue;
        const std::vector<uint8_t> pixels = images[i].pixels();
        hash = Fnv1a(hash, pixels.data(), pixels.size());
    }
    return {error, Fnv1a(hash, extra.data(), extra.size())};
}


std::string Hex(uint64_t value) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
    return text;
}

std::map<std::string, std::string> ReadGoldens(const char* path) {
    std::map<std::string, std::string> goldens;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        const size_t cut = line.rfind(' ');
        goldens[line.substr(0, cut)] = line.substr(cut + 1);
    }
    return goldens;
}

TEST(Golden, EveryMemberWritesTheKeptBytesUnderEveryKernel) {
    const char* const writeTo = std::getenv("QUORIN_WRITE_GOLDENS");
    const std::map<std::string, std::string> goldens = ReadGoldens(QUORIN_GOLDEN_FILE);
    if (!writeTo) {
        ASSERT_FALSE(goldens.empty()) << "no checksums in " << QUORIN_GOLDEN_FILE;
    }
    std::ostringstream written;
    written << "# Checksums of every member's output on reproducible random images, the same\n"
               "# under every kernel on every processor. Written by `make goldens`.\n";
    std::map<std::string, bool> seen;
    std::vector<Variant> variants = KernelVariants();
    std::string kernels;
    for (const Variant& v : variants) kernels += " " + v.name;
    std::printf("kernels:%s\n", kernels.c_str());
    // The scalar kernel and the best vector one also split into parallel
    // pieces (run in order on the calling thread where built without
    // libdispatch).
    for (size_t i = 0, n = std::min<size_t>(variants.size(), 2); i < n; ++i) {
        Variant split = variants[i];
        split.flags = 0;
        split.processors = 3;
        split.name += "/split in 3";
        variants.push_back(split);
    }
    for (const GoldenRow& row : GoldenRows()) {
        bool succeeded = false;  // else the checksums would cover codes alone
        for (const Size size : kSizes) {
            const std::string key = Key(row, size);
            std::string reference;
            for (const Variant& variant : variants) {
                if (variant.flags == 0 && size.width * size.height < kSplitFrom) continue;
                Outcome outcome;
                {
                    VariantScope scope(variant);
                    outcome = RunOnce(row, size, variant.flags);
                }
                const std::string sum = Hex(outcome.checksum);
                succeeded = succeeded || outcome.error == kQuorinSuccess;
                if (reference.empty()) reference = sum;
                EXPECT_EQ(sum, reference) << key << ": " << variant.name << " differs from " << variants[0].name;
                if (writeTo) continue;
                const auto kept = goldens.find(key);
                if (kept == goldens.end()) {
                    ADD_FAILURE() << "no checksum kept for " << key << " (make goldens)";
                    break;
                }
                EXPECT_EQ(sum, kept->second) << key << " under " << variant.name;
            }
            seen[key] = true;
            written << key << " " << reference << "\n";
        }
        EXPECT_TRUE(succeeded) << row.name << " refused every size";
    }
    for (const auto& [key, sum] : goldens) {
        if (!writeTo) {
            EXPECT_TRUE(seen.count(key)) << key << " is kept but no member writes it (make goldens)";
        }
    }
    if (writeTo) {
        std::ofstream(writeTo) << written.str();
        std::printf("wrote %zu checksums to %s\n", seen.size(), writeTo);
    }
}

}  // namespace
}  // namespace quorin::test
