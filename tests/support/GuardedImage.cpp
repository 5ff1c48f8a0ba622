#include "support/GuardedImage.h"

#include <cstring>
#include <sstream>

namespace quorin::test {
namespace {
constexpr size_t kGuardBytes = 64;
constexpr uint8_t GuardByte(size_t i) { return static_cast<uint8_t>(0xA5 ^ (i * 7)); }
}  // namespace

GuardedImage::GuardedImage(size_t width, size_t height, size_t pixelBytes, size_t padding, size_t offset)
    : pixelBytes_(pixelBytes), front_(kGuardBytes + offset) {
    const size_t rowBytes = width * pixelBytes + padding;
    storage_.resize(front_ + rowBytes * height + kGuardBytes);
    for (size_t i = 0; i < storage_.size(); ++i) storage_[i] = GuardByte(i);
    record_ = Quorin_Buffer{storage_.data() + front_, height, width, rowBytes};
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
    const size_t rowBytes = record_.rowBytes, used = width() * pixelBytes_;
    for (size_t i = 0; i < storage_.size(); ++i) {
        const bool inPixels = i >= front_ && i < front_ + rowBytes * height() && (i - front_) % rowBytes < used;
        if (!inPixels && storage_[i] != GuardByte(i)) {
            std::ostringstream where;
            if (i < front_) {
                where << "guard byte " << (front_ - i) << " before the first row";
            } else if (i >= front_ + rowBytes * height()) {
                where << "guard byte " << (i - front_ - rowBytes * height()) << " after the last row";
            } else {
                where << "padding byte " << ((i - front_) % rowBytes - used) << " of row " << (i - front_) / rowBytes;
            }
            return where.str();
        }
    }
    return {};
}

}  // namespace quorin::test
