// Not-yet-implemented entry points of Morphology/MorphologyStubs; the rows live in MorphologyStubs.def.
namespace {
constexpr const char kModulePath[] = "Morphology/MorphologyStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Morphology/MorphologyStubs.def"
