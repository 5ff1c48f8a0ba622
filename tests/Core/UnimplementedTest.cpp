// The fatal record of the not-yet-implemented entry points, read back from
// their own tables, and the checks the partly implemented ones make first.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "quorin/Quorin.h"

namespace {

// An argument of type T: null or zero, or under `query` every integer
// argument (the flags among them) carrying kQuorinFlag_QueryTempSize.
template <class T>
T Arg(bool query) {
    if constexpr (std::is_integral_v<T>) return static_cast<T>(query ? kQuorinFlag_QueryTempSize : 0);
    return T{};
}

template <class Result, class... Params>
void CallWith(Result (*entry)(Params...), bool query) {
    entry(Arg<Params>(query)...);
}

struct Stub {
    const char* name;
    const char* module;
    int line;
    void (*call)(bool query);
};

// Every row of every table, expanded with the module it was included under.
const std::vector<Stub>& Stubs() {
#define QUORIN_STUB(result, name, line, parameters) \
    {#name, QUORIN_TEST_MODULE, line, [](bool query) { CallWith(&name, query); }},
    static const std::vector<Stub> rows = {
#define QUORIN_TEST_MODULE "Alpha/AlphaStubs"
#include "Alpha/AlphaStubs.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Geometry/Rotate_ARGB8888"
#include "Geometry/Rotate_ARGB8888.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Geometry/GeometryStubs"
#include "Geometry/GeometryStubs.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Histogram/Equalization_ARGB8888"
#include "Histogram/Equalization_ARGB8888.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Histogram/HistogramStubs"
#include "Histogram/HistogramStubs.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Conversion/ConvertPlanartoARGB"
#include "Conversion/ConvertPlanartoARGB.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Conversion/ConversionStubs"
#include "Conversion/ConversionStubs.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Convolution/ConvolutionStubs"
#include "Convolution/ConvolutionStubs.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Transform/TransformStubs"
#include "Transform/TransformStubs.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Morphology/Dilate_ARGB8888"
#include "Morphology/Dilate_ARGB8888.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Morphology/Erode_ARGB8888"
#include "Morphology/Erode_ARGB8888.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Morphology/MorphologyStubs"
#include "Morphology/MorphologyStubs.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Utilities/BasicImageTypes"
#include "Utilities/BasicImageTypes.def"
#undef QUORIN_TEST_MODULE
#define QUORIN_TEST_MODULE "Utilities/MekUtilitiesStubs"
#include "Utilities/MekUtilitiesStubs.def"
#undef QUORIN_TEST_MODULE
    };
#undef QUORIN_STUB
    return rows;
}

// The one-line record ReportFatal writes, as a death-test pattern.
std::string Record(const std::string& name, const std::string& module, int line) {
    return "quorin\\[2\\] " + name + " " + module + ":" + std::to_string(line) + ": NOT YET IMPLEMENTED";
}

TEST(Unimplemented, TablesHoldEveryEntryPointOnceInItsModule) {
    const std::map<std::string, size_t> expected = {
        {"Alpha/AlphaStubs", 13},         {"Geometry/Rotate_ARGB8888", 1},
        {"Geometry/GeometryStubs", 76},   {"Histogram/Equalization_ARGB8888", 1},
        {"Histogram/HistogramStubs", 15}, {"Conversion/ConvertPlanartoARGB", 2},
        {"Conversion/ConversionStubs", 124},
        {"Convolution/ConvolutionStubs", 12}, {"Transform/TransformStubs", 39},
        {"Morphology/Dilate_ARGB8888", 1}, {"Morphology/Erode_ARGB8888", 1},
        {"Morphology/MorphologyStubs", 12}, {"Utilities/BasicImageTypes", 1},
        {"Utilities/MekUtilitiesStubs", 8}};
    std::map<std::string, size_t> perModule;
    std::set<std::string> names;
    std::set<std::pair<std::string, int>> places;
    for (const Stub& stub : Stubs()) {
        ++perModule[stub.module];
        EXPECT_TRUE(names.insert(stub.name).second) << stub.name;
        EXPECT_TRUE(places.insert({stub.module, stub.line}).second) << stub.name;
    }
    EXPECT_EQ(Stubs().size(), 306u);
    EXPECT_EQ(perModule, expected);
}

// Every stub with null arguments, and the first of each module also with the
// size-query bit (the bodies are one expansion; a fork per row and argument
// set would only slow the sanitizer runs): none returns, all write the record
// and abort.
TEST(UnimplementedDeathTest, EveryStubReportsAndAbortsWhateverItsArguments) {
    std::set<std::string> queried;
    for (const Stub& stub : Stubs()) {
        EXPECT_DEATH(stub.call(false), Record(stub.name, stub.module, stub.line)) << stub.name;
        if (queried.insert(stub.module).second) {
            EXPECT_DEATH(stub.call(true), Record(stub.name, stub.module, stub.line)) << stub.name << " (query)";
        }
    }
}

TEST(UnimplementedDeathTest, PremultipliedResultBlendOfFloatsReportsOnEntry) {
    EXPECT_DEATH(CallWith(&QuorinAlphaBlend_NonpremultipliedToPremultiplied_ARGBFFFF, true),
                 Record("QuorinAlphaBlend_NonpremultipliedToPremultiplied_ARGBFFFF", "Alpha/AlphaStubs", 181));
}

// ---- The converter entry points check, then report ---------------------------

int gObject;  // stands in for host objects and converters: only its address is used
const auto* kConverter = reinterpret_cast<const QuorinConverter*>(&gObject);
const auto* kFormat = reinterpret_cast<const QuorinOrlImageFormat*>(&gObject);
const auto* kFragment = reinterpret_cast<const QuorinHostObject*>(&gObject);
const Quorin_Buffer kBuffers[1] = {};

// AnyToAny and MustOperateOutOfPlace share their checks: null pointers
// first, then flags outside SingleThreaded | QueryTempSize | Verbose.
template <class Run>
void ExpectRunChecks(Run run) {
    EXPECT_EQ(run(nullptr, kBuffers, kBuffers, 0), kQuorinError_NullPointer);
    EXPECT_EQ(run(kConverter, nullptr, kBuffers, 0), kQuorinError_NullPointer);
    EXPECT_EQ(run(kConverter, kBuffers, nullptr, 0), kQuorinError_NullPointer);
    EXPECT_EQ(run(nullptr, kBuffers, kBuffers, 0x200), kQuorinError_NullPointer);  // nulls before flags
    for (Quorin_Flags bad : {0x1u, 0x20u, 0x200u, 0x80000000u}) {
        EXPECT_EQ(run(kConverter, kBuffers, kBuffers, bad | 0x190), kQuorinError_UnsupportedFlags) << bad;
    }
}

TEST(UnimplementedDeathTest, AnyToAnyChecksNullsThenFlagsThenReports) {
    const auto run = [](const QuorinConverter* c, const Quorin_Buffer* s, const Quorin_Buffer* d, Quorin_Flags f) {
        return QuorinConvert_AnyToAny(c, s, d, nullptr, f);
    };
    ExpectRunChecks(run);
    for (Quorin_Flags flags : {0x0u, 0x190u}) {
        EXPECT_DEATH(run(kConverter, kBuffers, kBuffers, flags),
                     Record("QuorinConvert_AnyToAny", "Utilities/Converter", 36));
    }
}

TEST(UnimplementedDeathTest, MustOperateOutOfPlaceChecksLikeAnyToAnyThenReports) {
    ExpectRunChecks(&QuorinConverter_MustOperateOutOfPlace);
    EXPECT_DEATH(QuorinConverter_MustOperateOutOfPlace(kConverter, kBuffers, kBuffers, 0x110),
                 Record("QuorinConverter_MustOperateOutOfPlace", "Utilities/Converter", 44));
}

TEST(UnimplementedDeathTest, TintweaveConverterFailsWithNullAndCodeThenReports) {
    const auto create = [](const QuorinHostObject* fragment, const QuorinOrlImageFormat* src,
                           const QuorinOrlImageFormat* dest, Quorin_Flags flags) {
        Quorin_Error error = 1;
        EXPECT_EQ(QuorinConverter_CreateWithTintweaveCodeFragment(fragment, src, dest, nullptr, flags, &error),
                  nullptr);
        return error;
    };
    EXPECT_EQ(create(nullptr, kFormat, kFormat, 0), kQuorinError_NullPointer);
    EXPECT_EQ(create(kFragment, nullptr, kFormat, 0x80), kQuorinError_NullPointer);
    EXPECT_EQ(create(kFragment, kFormat, nullptr, 0), kQuorinError_NullPointer);
    EXPECT_EQ(create(kFragment, kFormat, kFormat, 0x80), kQuorinError_UnsupportedFlags);  // 0x110 only
    EXPECT_EQ(QuorinConverter_CreateWithTintweaveCodeFragment(nullptr, nullptr, nullptr, nullptr, 0, nullptr),
              nullptr);  // the error pointer is optional
    EXPECT_DEATH(create(kFragment, kFormat, kFormat, 0x110),
                 Record("QuorinConverter_CreateWithTintweaveCodeFragment", "Utilities/Converter", 54));
}

TEST(UnimplementedDeathTest, VideoFormatFromPixelBufferIsNullForNullThenReports) {
    EXPECT_EQ(QuorinMekImageFormat_CreateWithMekPixelBuffer(nullptr), nullptr);
    EXPECT_DEATH(QuorinMekImageFormat_CreateWithMekPixelBuffer(reinterpret_cast<QuorinHostMekPixelBuffer*>(&gObject)),
                 Record("QuorinMekImageFormat_CreateWithMekPixelBuffer", "Utilities/MekImageFormat", 20));
}

}  // namespace
