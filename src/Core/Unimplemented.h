// Expands a module's table of not-yet-implemented entry points (a .def file of
// QUORIN_STUB rows) into exported definitions. Each definition writes the
// fatal record "quorin[2] <name> <module>:<line>: NOT YET IMPLEMENTED" and
// aborts, whatever its arguments; none is examined, no flag is honoured.
//
// Use, in the module's one .cpp (and nowhere else):
//   namespace { constexpr const char kModulePath[] = "Geometry/GeometryStubs"; }
//   #include "Core/Unimplemented.h"
//   #include "Geometry/GeometryStubs.def"
#pragma once

#include "platform/Log.h"
#include "quorin/Quorin.h"

// Every stub must match a public declaration: a definition without one is an
// error (and a different parameter list is rejected as a conflicting C-linkage
// redeclaration), so the headers and the tables cannot drift apart.
#pragma GCC diagnostic error "-Wmissing-declarations"
// The parameters exist only to give the export its full argument list.
#pragma GCC diagnostic ignored "-Wunused-parameter"

#define QUORIN_STUB(result, name, line, parameters)                                 \
    extern "C" QUORIN_API QUORIN_NORETURN result name parameters {                  \
        ::quorin::ReportFatal(#name, kModulePath, line, ::quorin::kNotYetImplemented); \
    }
