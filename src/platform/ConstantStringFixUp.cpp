#include "platform/Startup.h"
#include "platform/windows/patcher/ImagePatcher.h"

namespace quorin {

// Where the loader already binds the class references, the own image is
// unavailable (null) and the fix-up does nothing.
int RunConstantStringFixUp() { return patcher::FixConstantStrings(patcher::OwnModuleImage()); }

}  // namespace quorin
