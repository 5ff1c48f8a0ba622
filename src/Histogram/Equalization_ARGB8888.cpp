// Not-yet-implemented entry points of Histogram/Equalization_ARGB8888; the rows live in Equalization_ARGB8888.def.
namespace {
constexpr const char kModulePath[] = "Histogram/Equalization_ARGB8888";
}  // namespace

#include "Core/Unimplemented.h"
#include "Histogram/Equalization_ARGB8888.def"
