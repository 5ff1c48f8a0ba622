// The convolution family's arithmetic, stated once per output byte: the
// general convolution's weighted sum of 8-bit samples, wrapped to 32 bits and
// divided as unsigned numbers, and the box filter's running sums over lines
// that are written transposed. The vector twins (ConvolutionKernels.cpp) give
// the same bytes for every input.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "Core/RowWindow.h"
#include "quorin/Types.h"

namespace quorin::convolution {

// Division of an unsigned `kBits`-bit numerator by a divisor fixed for the
// call, by a multiply-high with a magic number and two shifts (the rounded-up
// reciprocal with its top bit taken apart, so every numerator of kBits bits
// divides exactly, divisor 1 and divisors of 2^(kBits-1) or more included).
// The vector kernels use it to avoid a division per sample; the scalar rules
// divide with the processor's own division.
template <unsigned kBits>
struct MagicDivisor {
    uint32_t divisor = 0;  // 0 divides to 0
    uint32_t magic = 0;
    uint32_t shift1 = 0, shift2 = 0;

    static constexpr MagicDivisor For(uint32_t d) {
        MagicDivisor m;
        m.divisor = d;
        if (d == 0) return m;
        // l = ceil(log2 d), so 2^(l-1) < d <= 2^l.
        const unsigned l = d == 1 ? 0u : static_cast<unsigned>(32 - std::countl_zero(d - 1));
        const uint64_t twoToBits = uint64_t{1} << kBits;
        m.magic = static_cast<uint32_t>(twoToBits * ((uint64_t{1} << l) - d) / d + 1);
        m.shift1 = l < 1 ? l : 1;
        m.shift2 = l > 1 ? l - 1 : 0;
        return m;
    }

    // The same quotient as n / divisor for every n below 2^kBits.
    constexpr uint32_t Divide(uint32_t n) const {
        if (divisor == 0) return 0;
        const uint32_t t = static_cast<uint32_t>((uint64_t{magic} * n) >> kBits);
        return (t + ((n - t) >> shift1)) >> shift2;
    }
};

// ---- General convolution ---------------------------------------------------

// What a row of the general convolution needs besides its rows: the image's
// width in pixels (taps left of 0 or at `width` and beyond contribute
// nothing), the kernel and its divisor.
struct ConvolveShape {
    size_t width;
    size_t pixelBytes;
    const int16_t* kernel;
    size_t kernelHeight, kernelWidth;
    uint32_t divisor;           // the caller's signed divisor, taken as unsigned
    MagicDivisor<32> divide32;  // for the vector kernels
    MagicDivisor<16> divide16;  // for the vector kernels' 16-bit sums (divisor below 2^16)
    // Every weight is non-negative and their sum times 255 fits 16 bits, so
    // no sum wraps in 16-bit lanes.
    bool sums16;
    // One column of triangular weights 1, 2, .., h + 1, .., 2, 1 (the tent's
    // second pass) with a divisor below 2^16: the vector kernel runs it down
    // the columns by running sums, whatever its height.
    bool tentColumn;
    // The same weights in one row (the tent's first pass): the vector kernel
    // sums a box of h + 1 taps twice, whatever its width.
    bool tentRow;
    // The kernel is the column `down` times the row `across` (non-negative
    // weights whose sums fit 16 bits, more than one row and column): the
    // vector kernel sums down, then across.
    bool separable;
    // The destination is too large to stay in the cache (set by the caller,
    // for the vector kernels): its rows go out with streaming stores.
    bool stream;
    int16_t down[255], across[255];
};

ConvolveShape MakeConvolveShape(size_t width, size_t pixelBytes, const int16_t* kernel, size_t kernelHeight,
                                size_t kernelWidth, int32_t divisor);

// Output byte `b` (pixel b / pixelBytes, its channel b % pixelBytes) of a row
// whose kernel rows are rows[0 .. kernelHeight - 1], each the image row under
// that kernel row or null when that row lies outside the image. The sum is
// formed in 32-bit unsigned arithmetic, which wraps as the signed 32-bit sum
// would, and the quotient's low 8 bits are stored without clamping.
inline uint8_t ConvolveByte(const uint8_t* const* rows, size_t b, const ConvolveShape& s) {
    if (s.divisor == 0) return 0;
    const size_t pixel = b / s.pixelBytes, half = s.kernelWidth / 2;
    uint32_t sum = 0;
    for (size_t i = 0; i < s.kernelHeight; ++i) {
        if (rows[i] == nullptr) continue;
        for (size_t j = 0; j < s.kernelWidth; ++j) {
            // Tap column pixel + j - half, outside the image on either side.
            if (pixel + j < half || pixel + j - half >= s.width) continue;
            const uint32_t weight = static_cast<uint32_t>(static_cast<int32_t>(s.kernel[i * s.kernelWidth + j]));
            sum += weight * rows[i][b + j * s.pixelBytes - half * s.pixelBytes];
        }
    }
    return static_cast<uint8_t>(sum / s.divisor);
}

// Pixels [first, first + count) of one output row.
inline void ConvolveRow(const uint8_t* const* rows, uint8_t* out, size_t first, size_t count,
                        const ConvolveShape& s) {
    for (size_t b = first * s.pixelBytes; b < (first + count) * s.pixelBytes; ++b) out[b] = ConvolveByte(rows, b, s);
}

// Rows [first, last) of the convolution of the image `src` into `dest`,
// `width` pixels each, one row at a time through `row` (ConvolveRow or its
// vector twin).
template <class Row>
void ConvolveRows(const Quorin_Buffer& src, const Quorin_Buffer& dest, size_t first, size_t last, size_t width,
                  const ConvolveShape& s, Row row) {
    const size_t half = s.kernelHeight / 2;
    RowWindow<uint8_t, 256> window(&src, half, half, WindowEdge::Outside);
    for (size_t y = first; y < last; ++y)
        row(window.at(y).data(), static_cast<uint8_t*>(dest.data) + y * dest.rowBytes, 0, width, s);
}

inline void ConvolveBand(const Quorin_Buffer& src, const Quorin_Buffer& dest, size_t first, size_t last,
                         size_t width, const ConvolveShape& s) {
    ConvolveRows(src, dest, first, last, width, s, &ConvolveRow);
}

// ---- Box filter --------------------------------------------------------------

// One pass of the box filter over lines [firstLine, lastLine) of `lines`
// packed lines of `n` samples of `pixelBytes` bytes (channels summed apart),
// written transposed: sample x of line y goes to sample y of output line x.
// The span of sample x is the 2r samples x - r + 1 .. x + r, those before the
// line reading its first sample and those after it its last, by a running
// sum whose three loops run one after the other over one x. When the line is
// shorter than 2r the first loop reads up to 2r - n samples past its end:
// the next line's first samples, or on the last line its own last sample.
inline void BoxLines(const uint8_t* in, uint8_t* out, size_t n, size_t lines, size_t r, size_t pixelBytes,
                     size_t firstLine, size_t lastLine) {
    const size_t P = pixelBytes, span = 2 * r;
    for (size_t y = firstLine; y < lastLine; ++y) {
        const uint8_t* line = in + y * n * P;
        // Sample i of the line (i < n + 2), past its end as described.
        auto sample = [&](size_t i, size_t c) -> uint32_t {
            if (i < n || y + 1 < lines) return line[i * P + c];
            return line[(n - 1) * P + c];
        };
        // The channels side by side, so a pixel's output bytes are written together.
        uint32_t sum[16];
        for (size_t c = 0; c < P; ++c) {
            sum[c] = sample(0, c) * static_cast<uint32_t>(r + 1);
            for (size_t i = 1; i < r; ++i) sum[c] += sample(i, c);
        }
        auto step = [&](size_t x, size_t add, size_t drop) {
            for (size_t c = 0; c < P; ++c) {
                sum[c] += sample(add, c) - sample(drop, c);
                out[(x * lines + y) * P + c] = static_cast<uint8_t>(sum[c] / span);
            }
        };
        size_t x = 0;
        for (; x < r; ++x) step(x, x + r, 0);
        for (; x + r < n; ++x) step(x, x + r, x - r);
        for (; x < n; ++x) step(x, n - 1, x - r);
    }
}

inline void BoxPass(const uint8_t* in, uint8_t* out, size_t n, size_t lines, size_t r, size_t pixelBytes) {
    BoxLines(in, out, n, lines, r, pixelBytes, 0, lines);
}

// The box filter: rows into the scratch transposed, then its rows (the
// image's columns) back into dest.
inline void Box(const uint8_t* src, uint8_t* dest, uint8_t* scratch, size_t width, size_t height, size_t rAcross,
                size_t rDown, size_t pixelBytes) {
    BoxPass(src, scratch, width, height, rAcross, pixelBytes);
    BoxPass(scratch, dest, height, width, rDown, pixelBytes);
}

}  // namespace quorin::convolution
