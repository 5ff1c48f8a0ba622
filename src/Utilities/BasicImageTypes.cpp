// Not-yet-implemented entry points of Utilities/BasicImageTypes; the rows live in BasicImageTypes.def.
namespace {
constexpr const char kModulePath[] = "Utilities/BasicImageTypes";
}  // namespace

#include "Core/Unimplemented.h"
#include "Utilities/BasicImageTypes.def"
