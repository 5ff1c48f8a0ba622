// Test images with guard bytes around every row and after the last, so a test
// can prove that an operation wrote nothing outside its region, placed so
// that reading outside it fails too: the last row's last byte lies less than
// 64 bytes (0 when the alignment asked for allows) before a page that may not
// be touched at all, another such page lies before the first guard byte, and
// under AddressSanitizer every guard and padding byte is poisoned.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "quorin/Types.h"

namespace quorin::test {

class GuardedImage {
public:
    // `padding` bytes follow each row's pixels (rowBytes = width*pixelBytes + padding);
    // `offset` shifts the first pixel off the allocation's alignment.
    // `offset` is the first pixel's address modulo 64.
    GuardedImage(size_t width, size_t height, size_t pixelBytes, size_t padding = 0, size_t offset = 0);
    GuardedImage(const GuardedImage& other);
    GuardedImage(GuardedImage&& other) noexcept;
    GuardedImage& operator=(GuardedImage other) noexcept;
    ~GuardedImage();

    const Quorin_Buffer* record() const { return &record_; }
    Quorin_Buffer* mutableRecord() { return &record_; }
    size_t width() const { return record_.width; }
    size_t height() const { return record_.height; }
    size_t rowBytes() const { return record_.rowBytes; }
    size_t pixelBytes() const { return pixelBytes_; }

    uint8_t* row(size_t y) { return static_cast<uint8_t*>(record_.data) + y * record_.rowBytes; }
    const uint8_t* row(size_t y) const { return static_cast<const uint8_t*>(record_.data) + y * record_.rowBytes; }
    template <class T>
    T* pixel(size_t x, size_t y) { return reinterpret_cast<T*>(row(y) + x * pixelBytes_); }

    // Fills the pixels (not the guards) with reproducible random bytes.
    void fillRandom(uint64_t seed);
    // Fills the pixels with random values of T (for floats: finite values in [lo, hi]).
    void fillRandomFloats(uint64_t seed, float lo, float hi);
    void fillBytes(uint8_t value);

    // The region's bytes, row after row, without padding.
    std::vector<uint8_t> pixels() const;
    // Empty when every byte outside the pixel region still holds the guard
    // pattern; otherwise a description of the first damaged byte.
    std::string damagedGuard() const;

private:
    // Poisons (or unpoisons) every byte between the protected pages that is
    // not a pixel; nothing without AddressSanitizer.
    void poisonGuards(bool poisoned) const;
    void swap(GuardedImage& other) noexcept;

    uint8_t* mapping_ = nullptr;  // protected page, storage, protected page
    size_t mappingBytes_ = 0;
    uint8_t* storage_ = nullptr;  // the pages between the protected ones
    size_t storageBytes_ = 0;
    Quorin_Buffer record_{};
    size_t pixelBytes_ = 0;
    size_t front_ = 0;            // the first pixel's index in the storage
    size_t width_ = 0, height_ = 0, padding_ = 0, offset_ = 0;  // as made, whatever the record says later
};

// A reproducible 64-bit generator (splitmix64): the same seed, the same image.
struct Random {
    uint64_t state;
    explicit Random(uint64_t seed) : state(seed) {}
    uint64_t next() {
        uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    float uniform(float lo, float hi) { return lo + (hi - lo) * static_cast<float>(next() >> 40) / 16777216.0f; }
};

}  // namespace quorin::test
