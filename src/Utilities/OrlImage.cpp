// Moving pixels between buffers and host graphics images: a buffer filled
// from an image in the image's own format, and an image made over a copy of
// a buffer's pixels or over the pixels themselves.
#include <cstdlib>
#include <cstring>

#include "Host/Bridge.h"
#include "Host/Object.h"
#include "quorin/Utilities.h"

namespace {

using namespace quorin::host;

constexpr Quorin_Flags kAcceptedFlags = kQuorinFlag_SingleThreaded | kQuorinFlag_Verbose | kQuorinFlag_NoAllocate;

// Bytes that `height` rows of `rowLength` bytes, `rowBytes` apart, reach
// from the first row's start; false when that does not fit a size_t or a row
// is longer than its stride.
bool RowsExtent(size_t height, size_t rowLength, size_t rowBytes, size_t& extent) {
    if (rowLength > rowBytes) return false;
    if (height == 0) return extent = 0, true;
    size_t before = 0;
    return !__builtin_mul_overflow(height - 1, rowBytes, &before) &&
           !__builtin_add_overflow(before, rowLength, &extent);
}

// Bytes of one row of `width` pixels of `bitsPerPixel` bits; false on overflow.
bool RowLength(size_t width, uint32_t bitsPerPixel, size_t& length) {
    size_t bits = 0;
    if (__builtin_mul_overflow(width, size_t{bitsPerPixel}, &bits)) return false;
    length = bits / 8 + (bits % 8 != 0);
    return true;
}

void CopyRows(unsigned char* dst, size_t dstRowBytes, const unsigned char* src, size_t srcRowBytes,
              size_t rowLength, size_t height) {
    for (size_t y = 0; y < height; ++y) std::memcpy(dst + y * dstRowBytes, src + y * srcRowBytes, rowLength);
}

Quorin_Error InitWithImage(Quorin_Buffer* buffer, QuorinOrlImageFormat* format, const QuorinHostOrlImage* image,
                           Quorin_Flags flags) {
    if (buffer == nullptr || format == nullptr || image == nullptr) return kQuorinError_NullPointer;
    if ((flags & ~kAcceptedFlags) != 0) return kQuorinError_UnsupportedFlags;
    QuorinOrlImageFormat own{};
    if (!_QuorinOrlImageFormat_InitFromOrlImage(&own, image) || !_QuorinOrlImageFormat_Check(&own, 0))
        return kQuorinError_UnsupportedFormat;
    const bool asked = format->bitsPerPixel != 0;
    if (asked && (!_QuorinOrlImageFormat_Check(format, 1) || !QuorinOrlImageFormat_IsEqual(format, &own)))
        return kQuorinError_UnsupportedFormat;

    const QuorinOrlBridgeSymbolTable& bridge = OrlBridge();
    const auto getWidth = bridge.ImageGetWidth;
    const auto getHeight = bridge.ImageGetHeight;
    const auto getRowBytes = bridge.ImageGetBytesPerRow;
    const auto getBytes = bridge.ImageGetBytes;
    if (!getWidth || !getHeight || !getRowBytes || !getBytes) return kQuorinError_OutOfMemory;
    const size_t width = getWidth(image);
    const size_t height = getHeight(image);
    const bool copy = (flags & kQuorinFlag_NoAllocate) == 0;

    // The host's record of its bytes is checked like a buffer record: the
    // copy reads no byte outside what the host says it has.
    const unsigned char* pixels = nullptr;
    size_t rowLength = 0;
    const size_t srcRowBytes = getRowBytes(image);
    if (copy) {
        size_t length = 0;
        pixels = static_cast<const unsigned char*>(getBytes(image, &length));
        if (pixels == nullptr) return kQuorinError_OutOfMemory;
        size_t extent = 0;
        if (!RowLength(width, own.bitsPerPixel, rowLength) || !RowsExtent(height, rowLength, srcRowBytes, extent) ||
            extent > length)
            return kQuorinError_BadArgument;
    }

    const Quorin_Error made = QuorinBuffer_Init(buffer, height, width, own.bitsPerPixel, flags & kQuorinFlag_NoAllocate);
    if (made < 0) return made;
    if (copy && buffer->data != nullptr)
        CopyRows(static_cast<unsigned char*>(buffer->data), buffer->rowBytes, pixels, srcRowBytes, rowLength, height);
    if (!asked) *format = own;
    return made;
}

// The host's release of an image's bytes drops the library's data object.
void ReleaseData(void* data) { NubRelease(static_cast<NubObject*>(data)); }
void FreeStorage(void*, void* bytes) { std::free(bytes); }

QuorinHostOrlImage* CreateImage(const Quorin_Buffer* buffer, const QuorinOrlImageFormat* format,
                                Quorin_ReleaseBufferFunction releaseCallback, void* userData, Quorin_Flags flags,
                                Quorin_Error& error) {
    if (buffer == nullptr || format == nullptr || buffer->data == nullptr)
        return error = kQuorinError_NullPointer, nullptr;
    if ((flags & ~kAcceptedFlags) != 0) return error = kQuorinError_UnsupportedFlags, nullptr;
    if (!_QuorinOrlImageFormat_Check(format, 0)) return error = kQuorinError_UnsupportedFormat, nullptr;
    size_t rowLength = 0;
    size_t extent = 0;
    if (buffer->width == 0 || buffer->height == 0 || !RowLength(buffer->width, format->bitsPerPixel, rowLength) ||
        !RowsExtent(buffer->height, rowLength, buffer->rowBytes, extent))
        return error = kQuorinError_BadArgument, nullptr;
    const auto create = OrlBridge().ImageCreate;
    if (create == nullptr) return error = kQuorinError_OutOfMemory, nullptr;

    const bool wrap = (flags & kQuorinFlag_NoAllocate) != 0;
    size_t rowBytes = buffer->rowBytes;
    NubObject* data = nullptr;
    if (wrap) {
        // The client's function has the data object's deallocator shape
        // (userData, bytes), so it is the deallocator.
        data = NubDataCreateWithBytesNoCopy(nullptr, buffer->data, extent, releaseCallback, userData);
        if (data == nullptr) return error = kQuorinError_OutOfMemory, nullptr;
    } else {
        Quorin_Buffer storage{};
        if (const Quorin_Error made = QuorinBuffer_Init(&storage, buffer->height, buffer->width, format->bitsPerPixel, 0))
            return error = made, nullptr;
        CopyRows(static_cast<unsigned char*>(storage.data), storage.rowBytes,
                 static_cast<const unsigned char*>(buffer->data), buffer->rowBytes, rowLength, buffer->height);
        rowBytes = storage.rowBytes;
        data = NubDataCreateWithBytesNoCopy(nullptr, storage.data, storage.rowBytes * storage.height, &FreeStorage,
                                            nullptr);
        if (data == nullptr) {
            std::free(storage.data);
            return error = kQuorinError_OutOfMemory, nullptr;
        }
    }
    QuorinHostOrlImage* image = create(format, buffer->width, buffer->height, rowBytes, NubDataGetBytePtr(data),
                                       NubDataGetLength(data), &ReleaseData, data);
    if (image == nullptr) {
        // The caller keeps its pixels when the call fails: no release for
        // them; a copy goes with its data object.
        if (wrap) NubDataForgetDeallocator(data);
        NubRelease(data);
        return error = kQuorinError_OutOfMemory, nullptr;
    }
    error = kQuorinSuccess;
    return image;
}

}  // namespace

extern "C" {

QUORIN_API Quorin_Error QuorinBuffer_InitWithOrlImage(Quorin_Buffer* buffer, QuorinOrlImageFormat* format,
                                                      const float* /*backgroundColor*/,
                                                      const QuorinHostOrlImage* image, Quorin_Flags flags) {
    return InitWithImage(buffer, format, image, flags);
}

QUORIN_API QuorinHostOrlImage* QuorinCreateOrlImageFromBuffer(const Quorin_Buffer* buffer,
                                                              const QuorinOrlImageFormat* format,
                                                              Quorin_ReleaseBufferFunction releaseCallback,
                                                              void* userData, Quorin_Flags flags,
                                                              Quorin_Error* error) {
    Quorin_Error code = kQuorinSuccess;
    QuorinHostOrlImage* image = CreateImage(buffer, format, releaseCallback, userData, flags, code);
    if (error != nullptr) *error = code;
    return image;
}

}  // extern "C"
