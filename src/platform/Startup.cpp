// The library's first load-time initialiser: the constant-string fix-up.
// Its priority (101) puts it before every other initialiser of the library,
// whatever the object it lives in; the processor-feature probe (102) is the
// core's own (Core/Features.cpp), so the platform layer needs nothing from
// the core. Nothing else is initialised at load.
#include "platform/Startup.h"

namespace {

__attribute__((constructor(101))) void FixConstantStringsAtLoad() { quorin::RunConstantStringFixUp(); }

}  // namespace
