// Not-yet-implemented entry points of Histogram/HistogramStubs; the rows live in HistogramStubs.def.
namespace {
constexpr const char kModulePath[] = "Histogram/HistogramStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Histogram/HistogramStubs.def"
