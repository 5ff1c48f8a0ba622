// Hands the sample to a host graphics framework and takes it back: the
// client installs its host functions in the bridge table, wraps the sample in
// a host image (a copy), then fills a new buffer from that image. This demo's
// host is a few lines that keep the bytes they are given.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Demo.h"

namespace quorin::demo {
namespace {

// A host image: the bytes the library handed over, and how to let them go.
struct HostImage {
    QuorinOrlImageFormat format;
    size_t width, height, bytesPerRow, length;
    const void* bytes;
    void (*release)(void*);
    void* info;
};

const HostImage& Host(const QuorinHostOrlImage* image) { return *reinterpret_cast<const HostImage*>(image); }

QuorinHostOrlImage* Create(const QuorinOrlImageFormat* format, size_t width, size_t height, size_t bytesPerRow,
                           const void* bytes, size_t length, void (*release)(void*), void* info) {
    auto* image = new HostImage{*format, width, height, bytesPerRow, length, bytes, release, info};
    return reinterpret_cast<QuorinHostOrlImage*>(image);
}

// What a host does when the last reference to an image goes.
void Destroy(QuorinHostOrlImage* image) {
    auto* host = reinterpret_cast<HostImage*>(image);
    host->release(host->info);
    delete host;
}

void InstallHost() {
    QuorinOrlBridgeSymbolTable& bridge = _sQuorinOrlBridgeSymbolTable;
    bridge.ImageCreate = Create;
    bridge.ImageGetBitsPerComponent = [](const QuorinHostOrlImage* i) -> size_t { return Host(i).format.bitsPerComponent; };
    bridge.ImageGetBitsPerPixel = [](const QuorinHostOrlImage* i) -> size_t { return Host(i).format.bitsPerPixel; };
    bridge.ImageGetColorSpace = [](const QuorinHostOrlImage* i) { return Host(i).format.colorSpace; };
    bridge.ImageGetBitmapInfo = [](const QuorinHostOrlImage* i) { return Host(i).format.bitmapInfo; };
    bridge.ImageGetDecode = [](const QuorinHostOrlImage* i) { return Host(i).format.decode; };
    bridge.ImageGetRenderingIntent = [](const QuorinHostOrlImage* i) { return Host(i).format.renderingIntent; };
    bridge.ImageGetWidth = [](const QuorinHostOrlImage* i) { return Host(i).width; };
    bridge.ImageGetHeight = [](const QuorinHostOrlImage* i) { return Host(i).height; };
    bridge.ImageGetBytesPerRow = [](const QuorinHostOrlImage* i) { return Host(i).bytesPerRow; };
    bridge.ImageGetBytes = [](const QuorinHostOrlImage* i, size_t* length) {
        *length = Host(i).length;
        return Host(i).bytes;
    };
}

void HostRoundTrip(Context& context) {
    InstallHost();
    const Quorin_Buffer& sample = context.sample.buffer;
    // 8-bit ARGB, alpha first and premultiplied, no colour space (RGB).
    const QuorinOrlImageFormat argb{8, 32, nullptr, 1, 0, nullptr, 0};
    Quorin_Error error = kQuorinSuccess;
    QuorinHostOrlImage* image = QuorinCreateOrlImageFromBuffer(&sample, &argb, nullptr, nullptr, 0, &error);
    if (image == nullptr) return context.fail("QuorinCreateOrlImageFromBuffer", error);

    // An empty request (bitsPerPixel 0) receives the image's own format.
    QuorinOrlImageFormat asked{};
    Quorin_Buffer back{};
    error = QuorinBuffer_InitWithOrlImage(&back, &asked, nullptr, image, 0);
    Destroy(image);
    if (error != kQuorinSuccess) return context.fail("QuorinBuffer_InitWithOrlImage", error);

    size_t differing = 0;
    for (size_t y = 0; y < sample.height; ++y)
        differing += std::memcmp(static_cast<const uint8_t*>(back.data) + y * back.rowBytes,
                                 static_cast<const uint8_t*>(sample.data) + y * sample.rowBytes, sample.width * 4) != 0;
    std::printf("  format received: %u bits per pixel, %u per component, bitmap info %u\n", asked.bitsPerPixel,
                asked.bitsPerComponent, asked.bitmapInfo);
    std::printf("  %zu rows differ after the round trip through the host image\n", differing);
    if (differing != 0 || !QuorinOrlImageFormat_IsEqual(&asked, &argb))
        context.fail("the host image does not give back the sample and its format");
    else
        context.writePng("host-round-trip.png", back, 4);
    std::free(back.data);
    _sQuorinOrlBridgeSymbolTable = QuorinOrlBridgeSymbolTable{};
}

const StepRegistration kHostStep{"host image round trip", 70, HostRoundTrip};

}  // namespace
}  // namespace quorin::demo
