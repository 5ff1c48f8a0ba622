// Not-yet-implemented entry points of Geometry/Rotate_ARGB8888; the rows live in Rotate_ARGB8888.def.
namespace {
constexpr const char kModulePath[] = "Geometry/Rotate_ARGB8888";
}  // namespace

#include "Core/Unimplemented.h"
#include "Geometry/Rotate_ARGB8888.def"
