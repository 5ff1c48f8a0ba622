// Packed planes of 1, 2 and 4 bits a pixel to and from 8-bit planes. A
// packed byte holds 8 / bits pixels, the first in its most significant bits.
// The rules work on whole bytes: a row is a count of packed bytes (each
// unpacking to 8 / bits plane bytes, or packed from as many), never a width.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Core/KernelPair.h"

namespace quorin::planes {

// Pixels a packed byte holds.
constexpr size_t PixelsPerByte(unsigned bits) { return 8 / bits; }

// The largest field of `bits` bits, and the plane step of one field unit
// (255, 85 and 17 for 1, 2 and 4 bits): a field f stands for f x that step.
constexpr unsigned FieldMax(unsigned bits) { return (1u << bits) - 1; }
constexpr unsigned FieldStep(unsigned bits) { return 255u / FieldMax(bits); }

// The field a plane byte becomes: nearest, halves going down
// ((s + 127) / 255, (s + 42) / 85, (s + 8) / 17).
template <unsigned kBits>
constexpr uint8_t FieldOf(uint8_t s) {
    constexpr unsigned kStep = FieldStep(kBits);
    return static_cast<uint8_t>((s + (kStep - 1) / 2) / kStep);
}

// Pixel p's field of a packed byte.
template <unsigned kBits>
constexpr unsigned FieldAt(uint8_t packed, size_t p) {
    return (packed >> (8 - kBits * (p + 1))) & FieldMax(kBits);
}

// `bytes` packed bytes into bytes x 8 / bits plane bytes.
template <unsigned kBits>
void UnpackBytes(const uint8_t* src, uint8_t* dst, size_t bytes, bool /*stream*/ = false) {
    constexpr size_t kPer = PixelsPerByte(kBits);
    for (size_t i = 0; i < bytes; ++i)
        for (size_t p = 0; p < kPer; ++p)
            dst[i * kPer + p] = static_cast<uint8_t>(FieldAt<kBits>(src[i], p) * FieldStep(kBits));
}

// bytes x 8 / bits plane bytes into `bytes` packed bytes.
template <unsigned kBits>
void PackBytes(const uint8_t* src, uint8_t* dst, size_t bytes, bool /*stream*/ = false) {
    constexpr size_t kPer = PixelsPerByte(kBits);
    for (size_t i = 0; i < bytes; ++i) {
        unsigned packed = 0;
        for (size_t p = 0; p < kPer; ++p) packed = (packed << kBits) | FieldOf<kBits>(src[i * kPer + p]);
        dst[i] = static_cast<uint8_t>(packed);
    }
}

// Both directions take (source, destination, packed byte count, whether
// the destination is large enough to stream: WantsStreaming).
using PlaneKernel = void (*)(const uint8_t* src, uint8_t* dst, size_t packedBytes, bool stream);

// Index by bits: 0 for 1 bit, 1 for 2 bits, 2 for 4 bits.
constexpr size_t KernelIndex(unsigned bits) { return bits == 1 ? 0 : bits == 2 ? 1 : 2; }

extern const KernelPair<PlaneKernel> kUnpackKernels[3];
extern const KernelPair<PlaneKernel> kPackKernels[3];

}  // namespace quorin::planes
