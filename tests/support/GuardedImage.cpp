#include "support/GuardedImage.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define QUORIN_TEST_POISON(begin, end, on)                                     \
    ((on) ? __asan_poison_memory_region((begin), static_cast<size_t>((end) - (begin))) \
          : __asan_unpoison_memory_region((begin), static_cast<size_t>((end) - (begin))))
#else
#define QUORIN_TEST_POISON(begin, end, on) ((void)(begin), (void)(end), (void)(on))
#endif

namespace quorin::test {
namespace {
constexpr size_t kGuardBytes = 64;
constexpr size_t kAlignment = 64;
constexpr uint8_t GuardByte(size_t i) { return static_cast<uint8_t>(0xA5 ^ (i * 7)); }

size_t PageBytes() {
    static const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return page;
}
}  // namespace

GuardedImage::GuardedImage(size_t width, size_t height, size_t pixelBytes, size_t padding, size_t offset)
    : pixelBytes_(pixelBytes), width_(width), height_(height), padding_(padding), offset_(offset) {
    const size_t rowBytes = width * pixelBytes + padding, used = width * pixelBytes;
    // From the first pixel to the last row's last pixel: the last row's
    // padding is not the image's, so a read of it must fault as well.
    const size_t extent = height == 0 ? 0 : rowBytes * (height - 1) + used;
    const size_t page = PageBytes();
    storageBytes_ = (kGuardBytes + kAlignment + extent + page - 1) / page * page;
    mappingBytes_ = storageBytes_ + 2 * page;
    void* mapping = mmap(nullptr, mappingBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) std::abort();
    mapping_ = static_cast<uint8_t*>(mapping);
    storage_ = mapping_ + page;
    if (mprotect(mapping_, page, PROT_NONE) != 0 || mprotect(storage_ + storageBytes_, page, PROT_NONE) != 0)
        std::abort();
    // As close to the protected page as the first pixel's alignment allows.
    const uintptr_t tight = reinterpret_cast<uintptr_t>(storage_ + storageBytes_ - extent);
    front_ = tight - (tight - offset % kAlignment) % kAlignment - reinterpret_cast<uintptr_t>(storage_);
    for (size_t i = 0; i < storageBytes_; ++i) storage_[i] = GuardByte(i);
    record_ = Quorin_Buffer{storage_ + front_, height, width, rowBytes};
    poisonGuards(true);
}

GuardedImage::GuardedImage(const GuardedImage& other)
    : GuardedImage(other.width_, other.height_, other.pixelBytes_, other.padding_, other.offset_) {
    other.poisonGuards(false);
    poisonGuards(false);
    std::memcpy(storage_, other.storage_, storageBytes_);
    // A test may have changed the record.
    record_ = other.record_;
    record_.data = storage_ + (static_cast<const uint8_t*>(other.record_.data) - other.storage_);
    other.poisonGuards(true);
    poisonGuards(true);
}

GuardedImage::GuardedImage(GuardedImage&& other) noexcept { swap(other); }

GuardedImage& GuardedImage::operator=(GuardedImage other) noexcept {
    swap(other);
    return *this;
}

GuardedImage::~GuardedImage() {
    if (mapping_ == nullptr) return;
    // Poison must not outlive the mapping: a later mapping at this address
    // would inherit it.
    QUORIN_TEST_POISON(storage_, storage_ + storageBytes_, false);
    munmap(mapping_, mappingBytes_);
}

void GuardedImage::swap(GuardedImage& other) noexcept {
    std::swap(mapping_, other.mapping_);
    std::swap(mappingBytes_, other.mappingBytes_);
    std::swap(storage_, other.storage_);
    std::swap(storageBytes_, other.storageBytes_);
    std::swap(record_, other.record_);
    std::swap(pixelBytes_, other.pixelBytes_);
    std::swap(front_, other.front_);
    std::swap(width_, other.width_);
    std::swap(height_, other.height_);
    std::swap(padding_, other.padding_);
    std::swap(offset_, other.offset_);
}

void GuardedImage::poisonGuards([[maybe_unused]] bool poisoned) const {
#if defined(__SANITIZE_ADDRESS__)
    if (storage_ == nullptr) return;
    const size_t rowBytes = width_ * pixelBytes_ + padding_, used = width_ * pixelBytes_;
    uint8_t* at = storage_;
    for (size_t y = 0; y < height_; ++y) {
        uint8_t* const first = storage_ + front_ + y * rowBytes;
        QUORIN_TEST_POISON(at, first, poisoned);
        at = first + used;
    }
    QUORIN_TEST_POISON(at, storage_ + storageBytes_, poisoned);
#endif
}

void GuardedImage::fillRandom(uint64_t seed) {
    Random random(seed);
    for (size_t y = 0; y < height(); ++y)
        for (size_t i = 0; i < width() * pixelBytes_; ++i) row(y)[i] = static_cast<uint8_t>(random.next() >> 56);
}

void GuardedImage::fillRandomFloats(uint64_t seed, float lo, float hi) {
    Random random(seed);
    for (size_t y = 0; y < height(); ++y)
        for (size_t i = 0; i < width() * pixelBytes_ / sizeof(float); ++i) {
            const float value = random.uniform(lo, hi);
            std::memcpy(row(y) + i * sizeof(float), &value, sizeof value);
        }
}

void GuardedImage::fillBytes(uint8_t value) {
    for (size_t y = 0; y < height(); ++y) std::memset(row(y), value, width() * pixelBytes_);
}

std::vector<uint8_t> GuardedImage::pixels() const {
    std::vector<uint8_t> out;
    out.reserve(width() * height() * pixelBytes_);
    for (size_t y = 0; y < height(); ++y) out.insert(out.end(), row(y), row(y) + width() * pixelBytes_);
    return out;
}

std::string GuardedImage::damagedGuard() const {
    poisonGuards(false);
    const size_t rowBytes = width_ * pixelBytes_ + padding_, used = width_ * pixelBytes_;
    const size_t end = front_ + (height_ == 0 ? 0 : rowBytes * (height_ - 1) + used);
    std::string damage;
    for (size_t i = 0; i < storageBytes_ && damage.empty(); ++i) {
        const bool inPixels = i >= front_ && i < end && (i - front_) % rowBytes < used;
        if (!inPixels && storage_[i] != GuardByte(i)) {
            std::ostringstream where;
            if (i < front_) {
                where << "guard byte " << (front_ - i) << " before the first row";
            } else if (i >= end) {
                where << "guard byte " << (i - end) << " after the last row";
            } else {
                where << "padding byte " << ((i - front_) % rowBytes - used) << " of row " << (i - front_) / rowBytes;
            }
            damage = where.str();
        }
    }
    poisonGuards(true);
    return damage;
}

}  // namespace quorin::test
