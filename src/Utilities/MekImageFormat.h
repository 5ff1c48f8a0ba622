// The video image format record, for the code that fills its channels (the
// pixel-buffer constructor, once it exists) and for the tests.
#pragma once

#include <cstdint>

#include "Host/Object.h"
#include "quorin/Utilities.h"

struct QuorinMekImageFormat {
    QuorinHostObject header;
    uint32_t formatCode;
    uint32_t channelCount;
    uint32_t* channelNames;                 // channelCount names, owned
    uint8_t (*channelDescriptions)[16];     // channelCount descriptions, owned
    uint32_t matrixType;
    alignas(8) unsigned char matrix[32];
    QuorinHostObject* chromaSiting;         // retained
    QuorinHostOrlColorSpace* colorSpace;    // retained through the bridge when it can be
    uint32_t alphaHint;
    void* userData;
    QuorinMekImageFormat_ReleaseUserData userDataRelease;
};

namespace quorin {

// Replaces the record's channels with `count` names and descriptions (each
// may be NULL for zeros). kQuorinError_OutOfMemory leaves the old channels.
Quorin_Error SetMekChannels(QuorinMekImageFormat* format, uint32_t count, const uint32_t* names,
                            const uint8_t (*descriptions)[16]);

}  // namespace quorin
