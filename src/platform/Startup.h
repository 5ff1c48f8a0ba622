// Work the library does once, when it is loaded, before any entry point runs.
#pragma once

namespace quorin {

// Rebinds constant-string records of the library's own image to the imported
// class they name, where the loader leaves that undone. Returns 0 in every
// case. Runs at load, before the processor-feature probe.
int RunConstantStringFixUp();

}  // namespace quorin
