// Converters made from two host graphics image formats: one counted block
// holding both formats, the flags, the buffer orders and a background value
// per source component.
#include <cstring>
#include <new>

#include "Host/Object.h"
#include "Utilities/ConverterObject.h"

namespace {

constexpr Quorin_Flags kCreateFlags = kQuorinFlag_SingleThreaded | kQuorinFlag_Verbose;
// One interleaved buffer, then the list's end.
constexpr uint32_t kInterleavedBuffer = 24;

QuorinConverter* Create(const QuorinOrlImageFormat* source, const QuorinOrlImageFormat* destination,
                        const float* background, Quorin_Flags flags, Quorin_Error& error) {
    if (source == nullptr || destination == nullptr) return error = kQuorinError_NullPointer, nullptr;
    if ((flags & ~kCreateFlags) != 0) return error = kQuorinError_UnsupportedFlags, nullptr;
    if (!_QuorinOrlImageFormat_Check(source, 0) || !_QuorinOrlImageFormat_Check(destination, 1))
        return error = kQuorinError_UnsupportedFormat, nullptr;
    // A host count too large for the block's size is refused like a failed
    // allocation rather than wrapped into a small block.
    const size_t components = QuorinOrlImageFormat_GetComponentCount(source);
    if (components > (SIZE_MAX - sizeof(QuorinConverter)) / sizeof(uint32_t))
        return error = kQuorinError_OutOfMemory, nullptr;
    const size_t backgroundBytes = components * sizeof(uint32_t);
    void* block = quorin::host::NubAllocate(nullptr, sizeof(QuorinConverter) + backgroundBytes);
    if (block == nullptr) return error = kQuorinError_OutOfMemory, nullptr;

    auto* converter = new (block) QuorinConverter{{1}, *source, *destination, nullptr, flags,
                                                  {kInterleavedBuffer, 0}, {kInterleavedBuffer, 0}};
    converter->background = converter->backgroundValues;
    // The values are kept as the caller's 32-bit patterns, never as numbers.
    if (background != nullptr)
        std::memcpy(converter->backgroundValues, background, backgroundBytes);
    else
        std::memset(converter->backgroundValues, 0, backgroundBytes);
    error = kQuorinSuccess;
    return converter;
}

}  // namespace

extern "C" {

QUORIN_API QuorinConverter* QuorinConverter_CreateWithOrlImageFormat(const QuorinOrlImageFormat* source,
                                                                     const QuorinOrlImageFormat* destination,
                                                                     const float* background, Quorin_Flags flags,
                                                                     Quorin_Error* error) {
    Quorin_Error code = kQuorinSuccess;
    QuorinConverter* converter = Create(source, destination, background, flags, code);
    if (error != nullptr) *error = code;
    return converter;
}

QUORIN_API void QuorinConverter_Retain(QuorinConverter* converter) {
    if (converter != nullptr) converter->referenceCount.fetch_add(1, std::memory_order_seq_cst);
}

QUORIN_API void QuorinConverter_Release(QuorinConverter* converter) {
    if (converter == nullptr || !quorin::host::NubDropReference(converter->referenceCount)) return;
    converter->~QuorinConverter();
    quorin::host::NubDeallocate(nullptr, converter);
}

QUORIN_API uint32_t QuorinConverter_GetNumberOfSourceBuffers(const QuorinConverter* converter) {
    return converter != nullptr ? 1 : 0;
}

QUORIN_API uint32_t QuorinConverter_GetNumberOfDestinationBuffers(const QuorinConverter* converter) {
    return converter != nullptr ? 1 : 0;
}

QUORIN_API const uint32_t* QuorinConverter_GetSourceBufferOrder(const QuorinConverter* converter) {
    return converter != nullptr ? converter->sourceBufferOrder : nullptr;
}

QUORIN_API const uint32_t* QuorinConverter_GetDestinationBufferOrder(const QuorinConverter* converter) {
    return converter != nullptr ? converter->destinationBufferOrder : nullptr;
}

}  // extern "C"
