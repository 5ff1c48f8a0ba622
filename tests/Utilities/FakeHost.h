// A fake host installed through the bridge tables: colour spaces and images
// as plain records whose retains and releases are counted, and an allocator
// that counts blocks and can be told to refuse. Each test that uses it owns
// one FakeHost; its destructor empties the bridge and restores the allocator.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <vector>

#include "Host/Object.h"
#include "quorin/Utilities.h"

struct QuorinHostOrlColorSpace {
    int32_t model;
    QuorinHostOrlColorSpace* base;
    size_t components;
    int retains = 0;
    int releases = 0;
};

struct QuorinHostOrlImage {
    QuorinOrlImageFormat format;
    size_t width, height, bytesPerRow;
    std::vector<unsigned char> ownBytes;   // an image the test made
    const void* bytes = nullptr;           // an image the library made
    size_t length = 0;
    void (*release)(void*) = nullptr;
    void* info = nullptr;
};

namespace quorin::test {

class FakeHost {
public:
    FakeHost() {
        InstallColorSpaces();
        InstallImages();
        previous_ = host::NubAllocatorSetDefault(&counting_);
        live_ = 0;
        refuseAfter_ = -1;
    }
    ~FakeHost() {
        _sQuorinOrlBridgeSymbolTable = QuorinOrlBridgeSymbolTable{};
        host::NubAllocatorSetDefault(previous_);
        refuseImages = false;
    }

    static void InstallColorSpaces() {
        auto& t = _sQuorinOrlBridgeSymbolTable;
        t.ColorSpaceGetModel = [](const QuorinHostOrlColorSpace* s) { return s->model; };
        t.ColorSpaceGetBaseColorSpace = [](const QuorinHostOrlColorSpace* s) { return s->base; };
        t.ColorSpaceGetNumberOfComponents = [](const QuorinHostOrlColorSpace* s) { return s->components; };
        t.ColorSpaceRetain = [](QuorinHostOrlColorSpace* s) { return ++s->retains, s; };
        t.ColorSpaceRelease = [](QuorinHostOrlColorSpace* s) { ++s->releases; };
    }

    static void InstallImages() {
        auto& t = _sQuorinOrlBridgeSymbolTable;
        t.ImageGetBitsPerComponent = [](const QuorinHostOrlImage* i) -> size_t { return i->format.bitsPerComponent; };
        t.ImageGetBitsPerPixel = [](const QuorinHostOrlImage* i) -> size_t { return i->format.bitsPerPixel; };
        t.ImageGetColorSpace = [](const QuorinHostOrlImage* i) { return i->format.colorSpace; };
        t.ImageGetBitmapInfo = [](const QuorinHostOrlImage* i) { return i->format.bitmapInfo; };
        t.ImageGetDecode = [](const QuorinHostOrlImage* i) { return i->format.decode; };
        t.ImageGetRenderingIntent = [](const QuorinHostOrlImage* i) { return i->format.renderingIntent; };
        t.ImageGetWidth = [](const QuorinHostOrlImage* i) { return i->width; };
        t.ImageGetHeight = [](const QuorinHostOrlImage* i) { return i->height; };
        t.ImageGetBytesPerRow = [](const QuorinHostOrlImage* i) { return i->bytesPerRow; };
        t.ImageGetBytes = [](const QuorinHostOrlImage* i, size_t* length) -> const void* {
            *length = i->ownBytes.size();
            return i->ownBytes.empty() ? nullptr : i->ownBytes.data();
        };
        t.ImageCreate = [](const QuorinOrlImageFormat* format, size_t width, size_t height, size_t bytesPerRow,
                           const void* bytes, size_t length, void (*release)(void*), void* info) {
            if (refuseImages) return static_cast<QuorinHostOrlImage*>(nullptr);
            return new QuorinHostOrlImage{*format, width, height, bytesPerRow, {}, bytes, length, release, info};
        };
    }

    // The host's last release of an image it made: it lets go of the bytes.
    static void ReleaseImage(QuorinHostOrlImage* image) {
        if (image->release != nullptr) image->release(image->info);
        delete image;
    }

    // Blocks of the default allocator not yet freed, since this host was made.
    static long Live() { return live_.load(); }
    // The next `n` allocations succeed and the one after them fails.
    static void FailAllocationAfter(long n) { refuseAfter_ = n; }

    static inline bool refuseImages = false;

private:
    static void* Allocate(size_t bytes, void*) {
        if (refuseAfter_ >= 0 && refuseAfter_-- == 0) return nullptr;
        ++live_;
        return std::malloc(bytes);
    }
    static void Deallocate(void* block, void*) {
        --live_;
        std::free(block);
    }

    static inline std::atomic<long> live_{0};
    static inline std::atomic<long> refuseAfter_{-1};
    const host::NubAllocator counting_{&Allocate, &Deallocate, nullptr};
    const host::NubAllocator* previous_;
};

}  // namespace quorin::test
