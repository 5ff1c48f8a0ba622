// Not-yet-implemented entry points of Morphology/Erode_ARGB8888; the rows live in Erode_ARGB8888.def.
namespace {
constexpr const char kModulePath[] = "Morphology/Erode_ARGB8888";
}  // namespace

#include "Core/Unimplemented.h"
#include "Morphology/Erode_ARGB8888.def"
