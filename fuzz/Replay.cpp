// Runs the image-call fuzz target over saved inputs without libFuzzer, so the
// seed corpus and every reproducer replay in the ordinary suite under any
// compiler and sanitizer. With --manifest, first requires a table row for
// every implemented image entry point the manifest lists.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Members.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// Implemented entry points that take no image: the feature switch, buffer
// set-up, the dispatcher's own calls, and the host format and converter
// objects, which take format records.
bool TakesImages(const std::string& name) {
    for (const char* prefix : {"Quorin_", "QuorinBuffer_", "QuorinConverter_", "QuorinOrlImageFormat_",
                               "QuorinMekImageFormat_"})
        if (name.rfind(prefix, 0) == 0) return false;
    return name.rfind("Quorin", 0) == 0;
}

int CheckManifest(const char* path) {
    std::ifstream manifest(path);
    if (!manifest) {
        std::fprintf(stderr, "cannot read %s\n", path);
        return 1;
    }
    std::set<std::string> rows;
    for (const auto& m : quorin::fuzz::AllMembers()) rows.insert(m.name);
    int missing = 0;
    for (std::string line; std::getline(manifest, line);) {
        std::istringstream fields(line);
        std::string name, state;
        if (!(fields >> name >> state) || state != "implemented" || !TakesImages(name)) continue;
        if (!rows.count(name)) {
            std::fprintf(stderr, "%s is implemented but has no row in the fuzzer's member table\n", name.c_str());
            ++missing;
        }
    }
    return missing ? 1 : 0;
}

void Replay(const std::filesystem::path& file, size_t& count) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    ++count;
}

}  // namespace

int main(int argc, char** argv) {
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--manifest") == 0 && i + 1 < argc) {
            if (CheckManifest(argv[++i])) return 1;
            continue;
        }
        const std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            for (const auto& entry : std::filesystem::directory_iterator(path))
                if (entry.is_regular_file()) Replay(entry.path(), count);
        } else {
            Replay(path, count);
        }
    }
    std::printf("replayed %zu inputs over %zu members\n", count, quorin::fuzz::AllMembers().size());
    return count ? 0 : 1;
}
