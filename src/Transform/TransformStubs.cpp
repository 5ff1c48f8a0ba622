// Not-yet-implemented entry points of Transform/TransformStubs; the rows live in TransformStubs.def.
namespace {
constexpr const char kModulePath[] = "Transform/TransformStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Transform/TransformStubs.def"
