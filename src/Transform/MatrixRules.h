// The per-pixel rules of the colour-matrix multiply, as plain loops: the
// scalar kernels, and what the vector twins (MatrixKernels.cpp) reproduce
// byte for byte. Coefficient 4 * i + j weights source channel i in
// destination channel j.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Core/CanonicalNaN.h"

namespace quorin::matrix {

// Signed division by a divisor fixed for the call, as a multiply: the high
// word of magic x n, plus or minus n, shifted right arithmetically gives
// floor(n / divisor) for every 32-bit n and every divisor but 0 (for 1 and
// -1: n and the wrapping negation of n). Adding the sign bit would make it
// truncate; the 8-bit rule clamps negative quotients to 0, so floor serves.
struct SignedMagic {
    int32_t magic;
    int32_t addend;  // -1, 0 or 1: n times this is added to the high word
    uint32_t shift;

    static SignedMagic For(int32_t divisor) {
        if (divisor == 1 || divisor == -1) return {0, divisor, 0};
        // The smallest shift p >= 32 with a magic that keeps every quotient exact
        // (2^p / |d| rounded up, checked against the largest multiple of |d| below 2^31).
        const uint32_t two31 = 0x80000000u;
        const uint32_t ad = divisor < 0 ? 0u - static_cast<uint32_t>(divisor) : static_cast<uint32_t>(divisor);
        const uint32_t t = two31 + (static_cast<uint32_t>(divisor) >> 31);
        const uint32_t anc = t - 1 - t % ad;
        uint32_t p = 31, q1 = two31 / anc, r1 = two31 - q1 * anc, q2 = two31 / ad, r2 = two31 - q2 * ad, delta;
        do {
            ++p;
            q1 *= 2;
            r1 *= 2;
            if (r1 >= anc) ++q1, r1 -= anc;
            q2 *= 2;
            r2 *= 2;
            if (r2 >= ad) ++q2, r2 -= ad;
            delta = ad - r2;
        } while (q1 < delta || (q1 == delta && r1 == 0));
        uint32_t m = q2 + 1;
        if (divisor < 0) m = 0u - m;
        const auto magic = static_cast<int32_t>(m);
        const int32_t addend = (divisor > 0 && magic < 0) ? 1 : (divisor < 0 && magic > 0) ? -1 : 0;
        return {magic, addend, p - 32};
    }
};

// What the 8-bit multiply needs, prepared once per call.
struct Matrix8 {
    int32_t m[16];
    int32_t pre[4];
    int32_t post[4];
    int32_t divisor;  // never 0 here: a zero divisor fills instead
    // The pre-biases folded into the post-biases (post_j + sum of pre_i x
    // m[4i + j], wrapping), so the vector twins multiply the bytes alone: the
    // sum is the same modulo 2^32.
    int32_t bias[4];
    SignedMagic division;

    static Matrix8 Make(const int16_t* matrix, int32_t divisor, const int16_t* preBias, const int32_t* postBias) {
        Matrix8 p{};
        for (int k = 0; k < 16; ++k) p.m[k] = matrix[k];
        for (int i = 0; i < 4; ++i) {
            p.pre[i] = preBias ? preBias[i] : 0;
            p.post[i] = postBias ? postBias[i] : 0;
        }
        for (int j = 0; j < 4; ++j) {
            uint32_t b = static_cast<uint32_t>(p.post[j]);
            for (int i = 0; i < 4; ++i) b += static_cast<uint32_t>(p.pre[i]) * static_cast<uint32_t>(p.m[4 * i + j]);
            p.bias[j] = static_cast<int32_t>(b);
        }
        p.divisor = divisor;
        p.division = SignedMagic::For(divisor);
        return p;
    }

    // The largest magnitude a channel's sum could reach over all pixels, in
    // exact arithmetic (no wrapping); a bound, not always reached.
    int64_t SumBound() const {
        int64_t bound = 0;
        for (int j = 0; j < 4; ++j) {
            int64_t b = post[j] < 0 ? -int64_t{post[j]} : int64_t{post[j]};
            for (int i = 0; i < 4; ++i) {
                const int64_t low = int64_t{m[4 * i + j]} * pre[i], high = int64_t{m[4 * i + j]} * (pre[i] + 255);
                b += std::max(low < 0 ? -low : low, high < 0 ? -high : high);
            }
            bound = std::max(bound, b);
        }
        return bound;
    }
};

// Channel j of one pixel: the biased channels weighted and summed in signed
// 32-bit arithmetic (wrapping, as the processor's adds do), divided with
// truncation toward zero (-1 as a negation, so the most negative sum cannot
// trap), clamped to 0..255.
inline uint8_t MatrixChannel8(const uint8_t* pixel, const Matrix8& p, int j) {
    uint32_t sum = static_cast<uint32_t>(p.post[j]);
    for (int i = 0; i < 4; ++i)
        sum += static_cast<uint32_t>(pixel[i] + p.pre[i]) * static_cast<uint32_t>(p.m[4 * i + j]);
    const auto n = static_cast<int32_t>(sum);
    const int32_t q = p.divisor == -1 ? static_cast<int32_t>(0u - sum) : n / p.divisor;
    return static_cast<uint8_t>(q < 0 ? 0 : q > 255 ? 255 : q);
}

inline void MultiplyPixels8(const uint8_t* src, uint8_t* dst, size_t pixels, const Matrix8& p, bool /*stream*/) {
    for (size_t k = 0; k < pixels; ++k) {
        uint8_t out[4];
        for (int j = 0; j < 4; ++j) out[j] = MatrixChannel8(src + 4 * k, p, j);
        std::memcpy(dst + 4 * k, out, 4);  // dst may be src
    }
}

struct MatrixF {
    float m[16];
    float pre[4];
    float post[4];

    static MatrixF Make(const float* matrix, const float* preBias, const float* postBias) {
        MatrixF p{};
        std::memcpy(p.m, matrix, sizeof p.m);
        for (int i = 0; i < 4; ++i) {
            p.pre[i] = preBias ? preBias[i] : 0.0f;
            p.post[i] = postBias ? postBias[i] : 0.0f;
        }
        return p;
    }
};

// Channel j: the products summed in source-channel order, the post-bias
// added last, no clamping; a NaN result is written as the canonical NaN.
inline float MatrixChannelF(const float* s, const MatrixF& p, int j) {
    float sum = s[0] * p.m[j];
    sum = sum + s[1] * p.m[4 + j];
    sum = sum + s[2] * p.m[8 + j];
    sum = sum + s[3] * p.m[12 + j];
    return CanonicalNaN(p.post[j] + sum);
}

inline void MultiplyPixelsF(const float* src, float* dst, size_t pixels, const MatrixF& p, bool /*stream*/) {
    for (size_t k = 0; k < pixels; ++k) {
        float s[4], out[4];
        std::memcpy(s, src + 4 * k, sizeof s);
        for (int i = 0; i < 4; ++i) s[i] = s[i] + p.pre[i];
        for (int j = 0; j < 4; ++j) out[j] = MatrixChannelF(s, p, j);
        std::memcpy(dst + 4 * k, out, sizeof out);
    }
}

}  // namespace quorin::matrix
