// Not-yet-implemented entry points of Alpha/AlphaStubs; the rows live in AlphaStubs.def.
namespace {
constexpr const char kModulePath[] = "Alpha/AlphaStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Alpha/AlphaStubs.def"

// Declared apart from the table because it is counted among the partly
// implemented entry points; it reports on entry all the same.
extern "C" QUORIN_API QUORIN_NORETURN Quorin_Error QuorinAlphaBlend_NonpremultipliedToPremultiplied_ARGBFFFF(
    const Quorin_Buffer* /*srcTop*/, const Quorin_Buffer* /*srcBottom*/, const Quorin_Buffer* /*dest*/,
    Quorin_Flags /*flags*/) {
    ::quorin::ReportFatal(__func__, kModulePath, 181, ::quorin::kNotYetImplemented);
}
