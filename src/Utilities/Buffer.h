// Internal hooks of buffer allocation.
#pragma once

namespace quorin {

// Ends the process with the allocation-alignment record of QuorinBuffer_Init
// unless `storage` is 16-byte aligned (the smallest alignment vector rows need).
void RequireVectorAlignedStorage(const void* storage);

}  // namespace quorin
