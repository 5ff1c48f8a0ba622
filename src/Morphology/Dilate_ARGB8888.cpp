// Not-yet-implemented entry points of Morphology/Dilate_ARGB8888; the rows live in Dilate_ARGB8888.def.
namespace {
constexpr const char kModulePath[] = "Morphology/Dilate_ARGB8888";
}  // namespace

#include "Core/Unimplemented.h"
#include "Morphology/Dilate_ARGB8888.def"
