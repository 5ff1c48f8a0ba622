// Scaling computed apart from the library's tables and passes: the kernels
// and sample positions as their description states them, and both passes
// sample by sample in the arithmetic each member uses.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace quorin::test {

inline double CubicBSpline(double x) {
    const double a = x < 0 ? -x : x;
    if (a >= 2.0) return 0.0;
    if (a >= 1.0) return (2.0 - a) * (2.0 - a) * (2.0 - a) / 6.0;
    return a * a * (a / 2.0 - 1.0) + 0.6666666666666666;
}

inline double LanczosRadius3(double x) {
    const double a = std::fabs(x);
    if (a >= 3.0) return 0.0;
    auto sinc = [](double t) { return t == 0.0 ? 1.0 : std::sin(3.141592653589793 * t) / (3.141592653589793 * t); };
    return sinc(a) * sinc(a / 3.0);
}

struct Tap {
    int32_t index;
    double weight;
};

// Taps of output i of an axis of S samples scaled to D.
inline std::vector<Tap> ExpectedTaps(uint32_t S, uint32_t D, uint32_t i) {
    const bool shrink = S > D;
    const int radius = shrink ? 2 : 3;
    const double ratio = double(S) / double(D);
    const double phase = ratio <= 1.0 ? ratio : 1.0 / ratio;
    const uint32_t num = static_cast<uint32_t>((uint64_t{i} * S) & 0xFFFFFFFFu);
    const uint32_t c = num / D;
    const double f = double(num) / double(D) - double(c) - phase;
    std::vector<Tap> taps;
    for (int j = -radius; j <= radius; ++j) {
        const int64_t p = std::min<int64_t>(std::max<int64_t>(int64_t{c} + j, 0), int64_t{S} - 1);
        taps.push_back({static_cast<int32_t>(p), shrink ? CubicBSpline(j - f) : LanczosRadius3(j - f)});
    }
    return taps;
}

enum class RefArithmetic { Fixed, Float, Single, Double };

// The largest value an integer sample type stores.
template <class T>
constexpr int64_t RefMax() {
    return std::is_same_v<T, uint8_t> ? 255 : std::is_same_v<T, uint16_t> ? 65535 : 32767;
}

// One output sample from `count` (weight, sample) pairs.
template <class T>
T RefSample(const std::vector<Tap>& taps, const T* samples, size_t stride, RefArithmetic a) {
    if (a == RefArithmetic::Fixed) {
        int64_t acc = 0;
        for (const Tap& t : taps)
            acc += static_cast<int64_t>(std::trunc(t.weight * 16384.0)) * static_cast<int64_t>(samples[t.index * stride]);
        const int64_t v = static_cast<int64_t>(std::floor((acc + 16383) / 16384.0));
        return static_cast<T>(std::clamp<int64_t>(v, 0, RefMax<T>()));
    }
    if (a == RefArithmetic::Double) {
        double acc = 0;
        for (const Tap& t : taps) acc = acc + t.weight * static_cast<double>(samples[t.index * stride]);
        const float f = static_cast<float>(acc);
        return static_cast<T>(std::isnan(f) ? std::bit_cast<float>(0x7FC00000u) : f);
    }
    float acc = 0;
    for (const Tap& t : taps) acc = acc + static_cast<float>(t.weight) * static_cast<float>(samples[t.index * stride]);
    if (a == RefArithmetic::Single) return static_cast<T>(std::isnan(acc) ? std::bit_cast<float>(0x7FC00000u) : acc);
    const double rounded = std::trunc(static_cast<double>(acc) + 0.5);
    return static_cast<T>(std::clamp<double>(rounded, 0.0, static_cast<double>(RefMax<T>())));
}

// A tightly packed image of `channels` samples per pixel.
template <class T>
struct RefImage {
    size_t width, height, channels;
    std::vector<T> samples;
    T* at(size_t x, size_t y) { return &samples[(y * width + x) * channels]; }
};

// Horizontal pass first, when the width changes; then the vertical pass.
template <class T>
RefImage<T> RefScale(RefImage<T> src, size_t dw, size_t dh, RefArithmetic a) {
    const size_t C = src.channels;
    if (dw != src.width) {
        RefImage<T> out{dw, src.height, C, std::vector<T>(dw * src.height * C)};
        for (size_t x = 0; x < dw; ++x) {
            const auto taps = ExpectedTaps(uint32_t(src.width), uint32_t(dw), uint32_t(x));
            for (size_t y = 0; y < src.height; ++y)
                for (size_t c = 0; c < C; ++c) out.at(x, y)[c] = RefSample<T>(taps, src.at(0, y) + c, C, a);
        }
        src = std::move(out);
    }
    if (dh != src.height) {
        RefImage<T> out{dw, dh, C, std::vector<T>(dw * dh * C)};
        for (size_t y = 0; y < dh; ++y) {
            const auto taps = ExpectedTaps(uint32_t(src.height), uint32_t(dh), uint32_t(y));
            for (size_t x = 0; x < dw; ++x)
                for (size_t c = 0; c < C; ++c) out.at(x, y)[c] = RefSample<T>(taps, src.at(x, 0) + c, dw * C, a);
        }
        src = std::move(out);
    }
    return src;
}

}  // namespace quorin::test
