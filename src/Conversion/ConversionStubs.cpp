// Not-yet-implemented entry points of Conversion/ConversionStubs; the rows live in ConversionStubs.def.
namespace {
constexpr const char kModulePath[] = "Conversion/ConversionStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Conversion/ConversionStubs.def"
