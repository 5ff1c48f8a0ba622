// The convolution family's results written straight from their description,
// apart from the library's rules: the general convolution cell by cell with
// its crossed offsets and 32-bit unsigned division, and the box filter as the
// mean over each sample's span with the samples read past a line's end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorin::test {

struct Image {
    size_t width, height, pixelBytes;
    std::vector<uint8_t> bytes;  // packed rows
    uint8_t& at(size_t x, size_t y, size_t c) { return bytes[(y * width + x) * pixelBytes + c]; }
    uint8_t at(size_t x, size_t y, size_t c) const { return bytes[(y * width + x) * pixelBytes + c]; }
};

// Writes the cells of the general convolution into `out` (same size as src),
// leaving the others as they are.
inline void ReferenceConvolve(const Image& src, Image& out, uint32_t offsetX, uint32_t offsetY,
                              const int16_t* kernel, uint32_t kh, uint32_t kw, int32_t divisor) {
    for (uint32_t y = 0; y < src.height - offsetY; ++y)
        for (uint32_t x = 0; x < src.width - offsetX; ++x) {
            const uint32_t r = offsetX + y, c = offsetY + x;
            for (size_t ch = 0; ch < src.pixelBytes; ++ch) {
                int64_t acc = 0;
                for (uint32_t i = 0; i < kh; ++i)
                    for (uint32_t j = 0; j < kw; ++j) {
                        const uint32_t tr = r + i - kh / 2, tc = c + j - kw / 2;
                        if (tc >= offsetX && tr >= offsetY && tc < src.width && tr < src.height)
                            acc += int64_t{kernel[i * kw + j]} * src.at(tc, tr, ch);
                    }
                const uint32_t sum = static_cast<uint32_t>(acc);
                out.at(c, r, ch) = divisor == 0 ? 0 : static_cast<uint8_t>(sum / static_cast<uint32_t>(divisor));
            }
        }
}

// One box pass of `lines` lines of n samples, transposed.
inline std::vector<uint8_t> ReferenceBoxPass(const std::vector<uint8_t>& in, size_t n, size_t lines, size_t k,
                                             size_t P) {
    const long r = static_cast<long>(1 + k / 2), N = static_cast<long>(n);
    std::vector<uint8_t> out(in.size());
    for (size_t y = 0; y < lines; ++y)
        for (size_t c = 0; c < P; ++c) {
            auto line = [&](size_t yy, long t) { return in[(yy * n + static_cast<size_t>(t)) * P + c]; };
            // Sample t of the span as the running sum meets it.
            auto sample = [&](long t) -> unsigned {
                if (t < 0) return line(y, 0);
                if (t < N) return line(y, t);
                if (t < 2 * r) return y + 1 < lines ? line(y + 1, t - N) : line(y, N - 1);  // read past the end
                return line(y, N - 1);
            };
            for (long x = 0; x < N; ++x) {
                unsigned sum = 0;
                for (long t = x - r + 1; t <= x + r; ++t) sum += sample(t);
                out[(static_cast<size_t>(x) * lines + y) * P + c] = static_cast<uint8_t>(sum / (2 * r));
            }
        }
    return out;
}

inline std::vector<uint8_t> ReferenceBox(const Image& src, size_t kh, size_t kw) {
    const auto across = ReferenceBoxPass(src.bytes, src.width, src.height, kw, src.pixelBytes);
    return ReferenceBoxPass(across, src.height, src.width, kh, src.pixelBytes);
}

}  // namespace quorin::test
