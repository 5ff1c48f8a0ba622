// The converter record, shared with the tests that read what creation stored.
#pragma once

#include <atomic>
#include <cstdint>

#include "quorin/Utilities.h"

// The block's fixed part; the background values trail it.
struct QuorinConverter {
    std::atomic<uint32_t> referenceCount;
    QuorinOrlImageFormat source;
    QuorinOrlImageFormat destination;
    uint32_t* background;
    Quorin_Flags flags;
    uint32_t sourceBufferOrder[2];
    uint32_t destinationBufferOrder[2];
    uint32_t backgroundValues[];
};
