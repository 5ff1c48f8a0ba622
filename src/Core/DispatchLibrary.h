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

#include <dispatch/dispatch.h>
