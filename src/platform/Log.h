// Fatal reporting: the one place that writes a log record and ends the process.
#pragma once

namespace quorin {

// The log level of every record this library writes.
inline constexpr int kFatalLogLevel = 2;

// Writes one line to standard error
//   "quorin[2] <name> <module>:<line>: <message>"
// followed by a backtrace, then aborts. `name` is the exported entry point
// (or internal routine) reporting, `module` its source module path.
[[noreturn]] void ReportFatal(const char* name, const char* module, int line,
                              const char* message);

// Writes the same one-line record at `level` and returns: for conditions a
// caller is told about through a code, and that a log reader should see.
void WriteLogRecord(int level, const char* name, const char* module, int line, const char* message);

// Message carried by every entry point that is declared but does nothing yet.
inline constexpr const char* kNotYetImplemented = "NOT YET IMPLEMENTED";

}  // namespace quorin
