// Not-yet-implemented entry points of Conversion/ConvertPlanartoPlanar; the rows live in ConvertPlanartoPlanar.def.
namespace {
constexpr const char kModulePath[] = "Conversion/ConvertPlanartoPlanar";
}  // namespace

#include "Core/Unimplemented.h"
#include "Conversion/ConvertPlanartoPlanar.def"
