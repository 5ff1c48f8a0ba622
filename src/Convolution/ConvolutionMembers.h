// The convolution family, written down once: every member's entry point,
// operation and pixel format, with one way to call any of them. The tests,
// the benchmark, the safety tables and the fuzzer walk kConvolutionMembers.
#pragma once

#include <cstdint>

#include "Core/PixelFormat.h"
#include "quorin/Convolution.h"

namespace quorin::convolution {

enum class Operation : uint8_t {
    General,  // caller's kernel and divisor, grid split
    Box,      // running sums, calling thread, scratch
    Tent,     // two general passes with triangular kernels, scratch
};

// Every argument a member may take; box and tent ignore kernel and divisor.
struct Call {
    const Quorin_Buffer* src;
    const Quorin_Buffer* dest;
    void* tempBuffer = nullptr;
    uint32_t roiOffsetX = 0, roiOffsetY = 0;
    const int16_t* kernel = nullptr;
    uint32_t kernelHeight = 1, kernelWidth = 1;
    int32_t divisor = 1;
    Quorin_Flags flags = 0;
};

struct Member {
    const char* name;
    Operation operation;
    PixelFormat format;
    Quorin_Error (*invoke)(const Call& call);

    Quorin_Error run(const Call& call) const { return invoke(call); }
    constexpr bool planar() const { return format.channels == 1; }
    // Records are tested for null (else a null record is refused with -21773).
    constexpr bool testsNull() const { return planar(); }
    // Even kernel sizes are refused.
    constexpr bool oddSizesOnly() const { return operation != Operation::Box || planar(); }
    // The answer of a size query (before any check for the general
    // convolution; after the kernel checks for box and tent).
    constexpr size_t scratchBytes(size_t width, size_t height) const {
        if (operation == Operation::General) return planar() ? 1 : 0;
        return width * height * format.pixelBytes();
    }
};

namespace detail {
inline constexpr uint8_t kBackground[4] = {0, 0, 0, 0};
// The ignored background of either format: 0, or four 0 bytes.
struct Background {
    constexpr operator uint8_t() const { return 0; }
    constexpr operator const uint8_t*() const { return kBackground; }
};
template <auto kEntry>
Quorin_Error General(const Call& c) {
    return kEntry(c.src, c.dest, c.tempBuffer, c.roiOffsetX, c.roiOffsetY, c.kernel, c.kernelHeight, c.kernelWidth,
                  c.divisor, Background{}, c.flags);
}
template <auto kEntry>
Quorin_Error Filter(const Call& c) {
    return kEntry(c.src, c.dest, c.tempBuffer, c.roiOffsetX, c.roiOffsetY, c.kernelHeight, c.kernelWidth,
                  Background{}, c.flags);
}
}  // namespace detail

inline constexpr Member kConvolvePlanar8{"QuorinConvolve_Planar8", Operation::General, kPlanar8, &detail::General<&QuorinConvolve_Planar8>};
inline constexpr Member kConvolveARGB8888{"QuorinConvolve_ARGB8888", Operation::General, kARGB8888,
                                          &detail::General<&QuorinConvolve_ARGB8888>};
inline constexpr Member kBoxConvolvePlanar8{"QuorinBoxConvolve_Planar8", Operation::Box, kPlanar8, &detail::Filter<&QuorinBoxConvolve_Planar8>};
inline constexpr Member kBoxConvolveARGB8888{"QuorinBoxConvolve_ARGB8888", Operation::Box, kARGB8888,
                                             &detail::Filter<&QuorinBoxConvolve_ARGB8888>};
inline constexpr Member kTentConvolvePlanar8{"QuorinTentConvolve_Planar8", Operation::Tent, kPlanar8, &detail::Filter<&QuorinTentConvolve_Planar8>};
inline constexpr Member kTentConvolveARGB8888{"QuorinTentConvolve_ARGB8888", Operation::Tent, kARGB8888,
                                              &detail::Filter<&QuorinTentConvolve_ARGB8888>};

inline constexpr const Member* kConvolutionMembers[] = {
    &kConvolvePlanar8,    &kConvolveARGB8888,    &kBoxConvolvePlanar8,
    &kBoxConvolveARGB8888, &kTentConvolvePlanar8, &kTentConvolveARGB8888,
};

}  // namespace quorin::convolution
