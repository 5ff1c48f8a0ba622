// Not-yet-implemented entry points of Conversion/ConvertPlanartoARGB; the rows live in ConvertPlanartoARGB.def.
namespace {
constexpr const char kModulePath[] = "Conversion/ConvertPlanartoARGB";
}  // namespace

#include "Core/Unimplemented.h"
#include "Conversion/ConvertPlanartoARGB.def"
