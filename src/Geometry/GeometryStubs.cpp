// Not-yet-implemented entry points of Geometry/GeometryStubs; the rows live in GeometryStubs.def.
namespace {
constexpr const char kModulePath[] = "Geometry/GeometryStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Geometry/GeometryStubs.def"
