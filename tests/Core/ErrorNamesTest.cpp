// The header-only code names, checked against the codes as Types.h spells
// them (read from the header text, so a code added there without a name
// fails here), and the version macros against the version the build was
// configured with.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "quorin/Quorin.h"

namespace {

// Every "kQuorinSuccess = 0" / "kQuorinError_X = -217NN" of the header text.
// Read by hand: std::regex trips GCC 12's uninitialised-use warning under the
// sanitizers.
std::map<Quorin_Error, std::string> CodesSpelledIn(const std::string& path) {
    std::ifstream file(path);
    std::map<Quorin_Error, std::string> codes;
    std::string name, equals;
    long value = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        if (!(words >> name >> equals >> value) || equals != "=") continue;
        if (name == "kQuorinSuccess" || name.rfind("kQuorinError_", 0) == 0)
            codes[static_cast<Quorin_Error>(value)] = name;
    }
    return codes;
}

TEST(ErrorNames, EveryCodeOfTypesHeaderHasItsOwnNameAndMessage) {
    const auto codes = CodesSpelledIn(QUORIN_SOURCE_DIR "/include/quorin/Types.h");
    ASSERT_EQ(codes.size(), 10u) << "the header's codes could not be read";
    std::set<std::string> messages;
    for (const auto& [code, spelling] : codes) {
        EXPECT_STREQ(Quorin_ErrorName(code), spelling.c_str()) << code;
        const std::string message = Quorin_ErrorMessage(code);
        EXPECT_TRUE(messages.insert(message).second) << spelling << " repeats the message \"" << message << "\"";
        EXPECT_FALSE(message.empty() || message.back() == '.') << spelling;
    }
    // Around the library's range, every other negative value is unknown.
    for (Quorin_Error code = -21800; code < 0; ++code) {
        if (code == -21740) code = -1;  // and the small ones
        if (codes.count(code)) continue;
        EXPECT_STREQ(Quorin_ErrorName(code), "unknown") << code;
    }
    EXPECT_STREQ(Quorin_ErrorName(INT32_MIN), "unknown");
}

TEST(ErrorNames, PositiveResultsAreSizesNotErrors) {
    Quorin_Buffer record;
    const Quorin_Error alignment = QuorinBuffer_Init(&record, 1, 1, 8, kQuorinFlag_NoAllocate);
    ASSERT_GT(alignment, 0);
    for (Quorin_Error result : {alignment, Quorin_Error{1}, Quorin_Error{INT32_MAX}}) {
        EXPECT_STREQ(Quorin_ErrorName(result), "(size)");
        EXPECT_NE(std::string(Quorin_ErrorMessage(result)).find("not an error"), std::string::npos);
    }
}

TEST(Version, MacrosAreTheConfiguredVersion) {
    EXPECT_STREQ(QUORIN_VERSION_STRING, QUORIN_CONFIGURED_VERSION);
    const std::string parts = std::to_string(QUORIN_VERSION_MAJOR) + "." + std::to_string(QUORIN_VERSION_MINOR) + "." +
                              std::to_string(QUORIN_VERSION_PATCH);
    EXPECT_EQ(parts, QUORIN_CONFIGURED_VERSION);
    static_assert(QUORIN_VERSION_NUMBER == QUORIN_MAKE_VERSION(QUORIN_VERSION_MAJOR, QUORIN_VERSION_MINOR,
                                                               QUORIN_VERSION_PATCH));
    static_assert(QUORIN_MAKE_VERSION(0, 10, 0) > QUORIN_MAKE_VERSION(0, 9, 99));
}

}  // namespace
