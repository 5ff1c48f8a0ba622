// The library's two load-time initialisers, in the order they must run: the
// constant-string fix-up, then the processor-feature probe. Nothing else is
// initialised at load.
#include "platform/Startup.h"

#include "Core/Features.h"

namespace {

__attribute__((constructor(101))) void FixConstantStringsAtLoad() { quorin::RunConstantStringFixUp(); }

__attribute__((constructor(102))) void ProbeFeaturesAtLoad() { quorin::ProbeFeatures(); }

}  // namespace
