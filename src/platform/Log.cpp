#include "platform/Log.h"

#include <execinfo.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace quorin {

void WriteLogRecord(int level, const char* name, const char* module, int line, const char* message) {
    // One fprintf so the record stays a single line even when several threads write at once.
    std::fprintf(stderr, "quorin[%d] %s %s:%d: %s\n", level, name, module, line, message);
    std::fflush(stderr);
}

void ReportFatal(const char* name, const char* module, int line, const char* message) {
    WriteLogRecord(kFatalLogLevel, name, module, line, message);
    void* frames[64];
    const int depth = backtrace(frames, 64);
    backtrace_symbols_fd(frames, depth, STDERR_FILENO);
    std::abort();
}

}  // namespace quorin
