// The one place that includes libdispatch. Its headers test clang's
// __has_feature/__has_extension; g++ has neither, so they read as "absent".
#pragma once

#if !defined(__clang__)
#ifndef __has_feature
#define __has_feature(x) 0
#endif
#ifndef __has_extension
#define __has_extension(x) 0
#endif
#endif

// The headers put an "unavailable on Linux" attribute in front of their
// extern "C" for the Mach source types, which g++ rejects in that position and
// answers with a note per declaration that no pragma silences. Every header
// that declares something already opens its own extern "C" block, so a plain
// extern keeps C linkage and leaves the attribute where g++ accepts it.
#if defined(__cplusplus) && !defined(DISPATCH_EXTERN)
#define DISPATCH_EXTERN extern
#endif

#include <dispatch/dispatch.h>
