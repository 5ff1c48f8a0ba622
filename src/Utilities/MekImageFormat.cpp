// Video image formats. Only the constructor from a host video pixel buffer is
// exported yet; reading the pixel buffer's attributes needs the host video
// bridge, which does not exist yet, so past its argument check it writes the
// fatal record and aborts.
#include "platform/Log.h"
#include "quorin/Quorin.h"

namespace {

constexpr const char kModulePath[] = "Utilities/MekImageFormat";

// The line field of the fatal record (the entry point's place in this module;
// part of the record: keep it when the file changes).
constexpr int kCreateWithMekPixelBufferLine = 20;

}  // namespace

extern "C" {

QUORIN_API QuorinMekImageFormat* QuorinMekImageFormat_CreateWithMekPixelBuffer(
    QuorinHostMekPixelBuffer* pixelBuffer) {
    if (pixelBuffer == nullptr) return nullptr;
    quorin::ReportFatal(__func__, kModulePath, kCreateWithMekPixelBufferLine, quorin::kNotYetImplemented);
}

}  // extern "C"
