// Not-yet-implemented entry points of Utilities/MekUtilitiesStubs; the rows live in MekUtilitiesStubs.def.
namespace {
constexpr const char kModulePath[] = "Utilities/MekUtilitiesStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Utilities/MekUtilitiesStubs.def"
