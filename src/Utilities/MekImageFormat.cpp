// Video image formats: counted records of the host foundation layer that
// hold a format code, channels, a conversion matrix, a colour space, a chroma
// siting, an alpha hint and the client's data; and the exported YpCbCr
// matrices. Constructing one from a host video pixel buffer needs the video
// bridge's pixel-buffer functions, which nothing calls yet, so past its
// argument check that constructor writes the fatal record and aborts.
#include "Utilities/MekImageFormat.h"

#include <cstdio>
#include <cstring>

#include "Host/Bridge.h"
#include "platform/Log.h"

namespace {

using namespace quorin::host;

constexpr const char kModulePath[] = "Utilities/MekImageFormat";

// The line fields of this module's records (part of each record: keep them
// when the file changes).
constexpr int kCreateWithMekPixelBufferLine = 20;
constexpr int kUnhandledMatrixTypeLine = 282;

void Finalize(NubObject* object) {
    auto* format = reinterpret_cast<QuorinMekImageFormat*>(object);
    if (format->userDataRelease != nullptr) format->userDataRelease(format, format->userData);
    NubDeallocate(object->allocator, format->channelNames);
    NubDeallocate(object->allocator, format->channelDescriptions);
    NubRelease(format->chromaSiting);
    ReleaseColorSpace(format->colorSpace);
}

constexpr NubClass kMekImageFormatClass{"QuorinMekImageFormat", &Finalize};

QuorinMekImageFormat* NewRecord() {
    return reinterpret_cast<QuorinMekImageFormat*>(
        NubCreateInstance(nullptr, &kMekImageFormatClass, sizeof(QuorinMekImageFormat)));
}

// A copy of `count` items of `size` bytes from `items` (zeros for NULL), from
// the record's allocator; NULL for none or when memory is short.
void* CopyArray(const QuorinMekImageFormat* format, const void* items, uint32_t count, size_t size) {
    if (count == 0) return nullptr;
    void* copy = NubAllocate(format->header.allocator, count * size);
    if (copy == nullptr) return nullptr;
    if (items != nullptr)
        std::memcpy(copy, items, count * size);
    else
        std::memset(copy, 0, count * size);
    return copy;
}

// The first channel named `name`, or -1.
long FindChannel(const QuorinMekImageFormat* format, uint32_t name) {
    for (uint32_t i = 0; i < format->channelCount; ++i)
        if (format->channelNames[i] == name) return i;
    return -1;
}

// Stores a retained `value` in `field` and releases what was there. The new
// object is retained before the old is released, so setting the object a
// record already holds never frees it on the way.
template <auto kField, auto kRetain, auto kRelease, class T>
Quorin_Error Replace(QuorinMekImageFormat* format, T* value) {
    if (format == nullptr) return kQuorinError_UnsupportedFormat;
    T* old = format->*kField;
    format->*kField = kRetain(value);
    kRelease(old);
    return kQuorinSuccess;
}

// The YpCbCr -> RGB records are five floats; the zeros after them make 32
// bytes, so a video format that copies a 32-byte matrix from one stays
// inside the constant.
struct PaddedYpCbCrToARGB {
    Quorin_YpCbCrToARGBMatrix matrix;
    float zeros[3];
};
static_assert(sizeof(PaddedYpCbCrToARGB) == 32 && sizeof(Quorin_ARGBToYpCbCrMatrix) == 32);

constexpr PaddedYpCbCrToARGB kYpCbCrToARGB601{{1.0f, 1.402f, -0.714136f, -0.344136f, 1.772f}, {}};
constexpr PaddedYpCbCrToARGB kYpCbCrToARGB709{{1.0f, 1.5748f, -0.468124f, -0.187324f, 1.8556f}, {}};
constexpr Quorin_ARGBToYpCbCrMatrix kARGBToYpCbCr601{0.299f,     0.587f, 0.114f,     -0.168736f,
                                                     -0.331264f, 0.5f,   -0.418688f, -0.081312f};
constexpr Quorin_ARGBToYpCbCrMatrix kARGBToYpCbCr709{0.2126f,    0.7152f, 0.0722f,    -0.114572f,
                                                     -0.385428f, 0.5f,    -0.454153f, -0.045847f};

}  // namespace

namespace quorin {

Quorin_Error SetMekChannels(QuorinMekImageFormat* format, uint32_t count, const uint32_t* names,
                            const uint8_t (*descriptions)[16]) {
    auto* newNames = static_cast<uint32_t*>(CopyArray(format, names, count, sizeof(uint32_t)));
    auto* newDescriptions = static_cast<uint8_t(*)[16]>(CopyArray(format, descriptions, count, 16));
    if (count != 0 && (newNames == nullptr || newDescriptions == nullptr)) {
        NubDeallocate(format->header.allocator, newNames);
        NubDeallocate(format->header.allocator, newDescriptions);
        return kQuorinError_OutOfMemory;
    }
    NubDeallocate(format->header.allocator, format->channelNames);
    NubDeallocate(format->header.allocator, format->channelDescriptions);
    format->channelCount = count;
    format->channelNames = newNames;
    format->channelDescriptions = newDescriptions;
    return kQuorinSuccess;
}

}  // namespace quorin

extern "C" {

QUORIN_API extern const Quorin_YpCbCrToARGBMatrix* const kQuorin_YpCbCrToARGBMatrix_ITU_R_601_4 = &kYpCbCrToARGB601.matrix;
QUORIN_API extern const Quorin_YpCbCrToARGBMatrix* const kQuorin_YpCbCrToARGBMatrix_ITU_R_709_2 = &kYpCbCrToARGB709.matrix;
QUORIN_API extern const Quorin_ARGBToYpCbCrMatrix* const kQuorin_ARGBToYpCbCrMatrix_ITU_R_601_4 = &kARGBToYpCbCr601;
QUORIN_API extern const Quorin_ARGBToYpCbCrMatrix* const kQuorin_ARGBToYpCbCrMatrix_ITU_R_709_2 = &kARGBToYpCbCr709;
QUORIN_API float kQuorinDecodeArray_16Q12Format[6] = {};

QUORIN_API QuorinMekImageFormat* QuorinMekImageFormat_Create(uint32_t formatCode, const void* matrix,
                                                             QuorinHostObject* chromaSiting,
                                                             QuorinHostOrlColorSpace* colorSpace,
                                                             uint32_t alphaHint) {
    QuorinMekImageFormat* format = NewRecord();
    if (format == nullptr) return nullptr;
    format->formatCode = formatCode;
    if (matrix != nullptr) {
        std::memcpy(format->matrix, matrix, sizeof format->matrix);
        format->matrixType = kQuorinMekMatrixType_YpCbCr;
    }
    format->chromaSiting = NubRetain(chromaSiting);
    format->colorSpace = RetainColorSpace(colorSpace);
    format->alphaHint = alphaHint;
    return format;
}

QUORIN_API QuorinMekImageFormat* QuorinMekImageFormat_Copy(const QuorinMekImageFormat* format) {
    if (format == nullptr) return nullptr;
    QuorinMekImageFormat* copy = NewRecord();
    if (copy == nullptr) return nullptr;
    if (quorin::SetMekChannels(copy, format->channelCount, format->channelNames, format->channelDescriptions) !=
        kQuorinSuccess) {
        NubRelease(&copy->header);
        return nullptr;
    }
    copy->formatCode = format->formatCode;
    copy->alphaHint = format->alphaHint;
    copy->matrixType = format->matrixType;
    std::memcpy(copy->matrix, format->matrix, sizeof copy->matrix);
    copy->chromaSiting = NubRetain(format->chromaSiting);
    copy->colorSpace = RetainColorSpace(format->colorSpace);
    return copy;
}

QUORIN_API void QuorinMekImageFormat_Retain(QuorinMekImageFormat* format) {
    if (format != nullptr) NubRetain(&format->header);
}

QUORIN_API void QuorinMekImageFormat_Release(QuorinMekImageFormat* format) {
    if (format != nullptr) NubRelease(&format->header);
}

QUORIN_API uint32_t QuorinMekImageFormat_GetFormatCode(const QuorinMekImageFormat* format) {
    return format != nullptr ? format->formatCode : 0;
}

QUORIN_API uint32_t QuorinMekImageFormat_GetChannelCount(const QuorinMekImageFormat* format) {
    return format != nullptr ? format->channelCount : 0;
}

QUORIN_API const uint32_t* QuorinMekImageFormat_GetChannelNames(const QuorinMekImageFormat* format) {
    return format != nullptr ? format->channelNames : nullptr;
}

QUORIN_API QuorinHostOrlColorSpace* QuorinMekImageFormat_GetColorSpace(const QuorinMekImageFormat* format) {
    return format != nullptr ? format->colorSpace : nullptr;
}

QUORIN_API QuorinHostObject* QuorinMekImageFormat_GetChromaSiting(const QuorinMekImageFormat* format) {
    return format != nullptr ? format->chromaSiting : nullptr;
}

QUORIN_API uint32_t QuorinMekImageFormat_GetAlphaHint(const QuorinMekImageFormat* format) {
    return format != nullptr ? format->alphaHint : 0;
}

QUORIN_API void* QuorinMekImageFormat_GetUserData(const QuorinMekImageFormat* format) {
    return format != nullptr ? format->userData : nullptr;
}

QUORIN_API Quorin_Error QuorinMekImageFormat_SetColorSpace(QuorinMekImageFormat* format,
                                                           QuorinHostOrlColorSpace* colorSpace) {
    return Replace<&QuorinMekImageFormat::colorSpace, &RetainColorSpace, &ReleaseColorSpace>(format, colorSpace);
}

QUORIN_API Quorin_Error QuorinMekImageFormat_SetChromaSiting(QuorinMekImageFormat* format,
                                                             QuorinHostObject* chromaSiting) {
    return Replace<&QuorinMekImageFormat::chromaSiting, &NubRetain, &NubRelease>(format, chromaSiting);
}

QUORIN_API Quorin_Error QuorinMekImageFormat_SetAlphaHint(QuorinMekImageFormat* format, uint32_t alphaHint) {
    if (format == nullptr) return kQuorinError_BadArgument;
    format->alphaHint = alphaHint;
    return kQuorinSuccess;
}

QUORIN_API Quorin_Error QuorinMekImageFormat_SetUserData(QuorinMekImageFormat* format, void* userData,
                                                         QuorinMekImageFormat_ReleaseUserData release) {
    if (format == nullptr) return kQuorinError_UnsupportedFormat;
    if (format->userDataRelease != nullptr) format->userDataRelease(format, format->userData);
    format->userData = userData;
    format->userDataRelease = release;
    return kQuorinSuccess;
}

QUORIN_API const void* QuorinMekImageFormat_GetConversionMatrix(const QuorinMekImageFormat* format,
                                                                uint32_t* matrixType) {
    if (matrixType != nullptr) *matrixType = format != nullptr ? format->matrixType : 0;
    return format != nullptr ? format->matrix : nullptr;
}

QUORIN_API Quorin_Error QuorinMekImageFormat_CopyConversionMatrix(QuorinMekImageFormat* format,
                                                                  const void* matrix, uint32_t matrixType) {
    if (format == nullptr) return kQuorinError_UnsupportedFormat;
    switch (matrixType) {
        case kQuorinMekMatrixType_None:
            format->matrixType = matrixType;
            return kQuorinSuccess;
        case kQuorinMekMatrixType_YpCbCr:
            if (matrix == nullptr) return kQuorinError_NullPointer;
            std::memcpy(format->matrix, matrix, sizeof format->matrix);
            format->matrixType = matrixType;
            return kQuorinSuccess;
        default: {
            char message[48];
            std::snprintf(message, sizeof message, "Unhandled matrix type %d", static_cast<int>(matrixType));
            quorin::WriteLogRecord(3, __func__, kModulePath, kUnhandledMatrixTypeLine, message);
            return kQuorinError_BadArgument;
        }
    }
}

QUORIN_API const void* QuorinMekImageFormat_GetChannelDescription(const QuorinMekImageFormat* format,
                                                                  uint32_t name) {
    if (format == nullptr || format->channelCount == 0) return nullptr;
    const long channel = FindChannel(format, name);
    return channel < 0 ? nullptr : format->channelDescriptions[channel];
}

QUORIN_API Quorin_Error QuorinMekImageFormat_CopyChannelDescription(QuorinMekImageFormat* format,
                                                                    const void* description, uint32_t name) {
    if (format == nullptr) return kQuorinError_UnsupportedFormat;
    if (format->channelCount == 0) return kQuorinError_BadArgument;
    const long channel = FindChannel(format, name);
    if (channel < 0) return kQuorinError_BadArgument;
    if (description == nullptr) return kQuorinError_NullPointer;
    std::memcpy(format->channelDescriptions[channel], description, 16);
    return kQuorinSuccess;
}

QUORIN_API QuorinMekImageFormat* QuorinMekImageFormat_CreateWithMekPixelBuffer(
    QuorinHostMekPixelBuffer* pixelBuffer) {
    if (pixelBuffer == nullptr) return nullptr;
    quorin::ReportFatal(__func__, kModulePath, kCreateWithMekPixelBufferLine, quorin::kNotYetImplemented);
}

}  // extern "C"
