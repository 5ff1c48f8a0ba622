// The per-sample arithmetic of the scaling passes, stated once: how a tap is
// accumulated and how the sum becomes a stored sample, for each arithmetic,
// and the scalar pass kernels built on it. The vector twins
// (ScaleKernels.cpp) give the same bytes for every input.
#pragma once

#include <algorithm>
#include <cstring>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "Core/CanonicalNaN.h"
#include "Core/PixelFormat.h"
#include "Geometry/ScaleTables.h"

namespace quorin::scale {

// Signed 16-bit samples (the ARGB16S and Planar16S members); stored as the
// int16 sample kind.
inline constexpr PixelFormat kARGB16S{SampleKind::S16Q12, 4, "ARGB", kAlphaFirst};
inline constexpr PixelFormat kPlanar16S{SampleKind::S16Q12, 1, "C"};

// The largest value an integer format stores; its smallest is 0 (signed
// 16-bit results below 0 are stored as 0 on purpose).
template <class T>
inline constexpr int32_t kMaxSample = std::is_same_v<T, uint8_t> ? 255 : std::is_same_v<T, uint16_t> ? 65535 : 32767;

constexpr bool IsFloat(const PixelFormat& f) { return f.sample == SampleKind::F32; }
constexpr Arithmetic ArithmeticFor(const PixelFormat& f, bool highQuality) {
    if (IsFloat(f)) return highQuality ? Arithmetic::Double : Arithmetic::Single;
    return highQuality ? Arithmetic::Float : Arithmetic::Fixed;
}

// How one channel's taps are summed and stored.
template <Arithmetic A, class T>
struct SumRule;

// Signed 32-bit sum of weight x sample, then (acc + 16383) >> 14 with an
// arithmetic shift, clamped. The products and sum are formed in unsigned
// arithmetic, which wraps where signed arithmetic would be undefined and
// gives the same bits everywhere else.
template <class T>
struct SumRule<Arithmetic::Fixed, T> {
    using Acc = uint32_t;
    static Acc Add(Acc acc, int32_t w, T sample) {
        return acc + static_cast<uint32_t>(w) * static_cast<uint32_t>(static_cast<int32_t>(sample));
    }
    static T Finish(Acc acc) {
        const int32_t v = static_cast<int32_t>(acc + 16383u) >> 14;
        return static_cast<T>(std::clamp(v, 0, kMaxSample<T>));
    }
};

// Single-precision sum in table order, then (int32)((double)acc + 0.5),
// clamped. The 0.5 is added in double: in float, 0.49999997 + 0.5 rounds to 1.
template <class T>
struct SumRule<Arithmetic::Float, T> {
    using Acc = float;
    static Acc Add(Acc acc, float w, T sample) { return acc + w * static_cast<float>(sample); }
    static T Finish(Acc acc) {
        const double rounded = static_cast<double>(acc) + 0.5;
        // Sums are bounded by the largest sample times the weights' absolute sum.
        const int32_t v = static_cast<int32_t>(rounded);
        return static_cast<T>(std::clamp(v, 0, kMaxSample<T>));
    }
};

// Float formats: the sum in float or double, stored as float, unclamped; a
// NaN is stored as the one canonical NaN (CanonicalNaN.h).
template <>
struct SumRule<Arithmetic::Single, float> {
    using Acc = float;
    static Acc Add(Acc acc, float w, float sample) { return acc + w * sample; }
    static float Finish(Acc acc) { return CanonicalNaN(acc); }
};
template <>
struct SumRule<Arithmetic::Double, float> {
    using Acc = double;
    static Acc Add(Acc acc, double w, float sample) { return acc + w * static_cast<double>(sample); }
    static float Finish(Acc acc) { return CanonicalNaN(static_cast<float>(acc)); }
};

// ---- Pass kernels -----------------------------------------------------------------

enum class Direction : uint8_t { Horizontal, Vertical };

// Everything a pass reads: the planes, the table, and what the pass is.
// Output column x of a horizontal pass takes table entry x; output row y of
// a vertical pass takes entry y.
struct PassJob {
    const uint8_t* src;
    size_t srcRowBytes;
    uint8_t* dst;
    size_t dstRowBytes;
    const uint8_t* indices;  // int32 per tap, possibly unaligned
    const uint8_t* weights;  // Weight<arithmetic> per tap, possibly unaligned
    uint8_t format;          // index into kScaleFormats
    Arithmetic arithmetic;
    uint8_t taps;
    // Horizontal pass: outputs [runFirst, runEnd) have the weights of output
    // runFirst, and their taps are consecutive pixels that start two pixels
    // after the previous output's, with one more pixel in the row after the
    // last tap (FindHalvingRun). Empty when none is.
    uint32_t runFirst = 0, runEnd = 0;
    // Vertical pass: when not 0, source row r is row r % windowRows of src,
    // a ring of intermediate rows.
    size_t windowRows = 0;
    // Whether the destination is written with streaming stores where a
    // kernel can (it is too large to be read back from the cache).
    bool stream = false;
};

// The outputs of a horizontal table that take the same weights and the
// taps of the output before them moved two pixels on: in an exact halving,
// every output but the edges' clamped ones. The vector kernels give these
// one fixed-weight kernel instead of a per-pixel gather.
inline void FindHalvingRun(PassJob& job, size_t sourceLength, size_t count) {
    const size_t taps = job.taps, weightBytes = WeightBytes(job.arithmetic), entryWeights = taps * weightBytes;
    const auto index = [&](size_t entry, size_t tap) {
        return static_cast<int64_t>(ReadUnaligned<int32_t>(job.indices + (entry * taps + tap) * 4));
    };
    const auto fits = [&](size_t x, size_t first) {
        const int64_t start = index(first, 0) + 2 * static_cast<int64_t>(x - first);
        for (size_t j = 0; j < taps; ++j)
            if (index(x, j) != start + static_cast<int64_t>(j)) return false;
        return start + static_cast<int64_t>(taps) < static_cast<int64_t>(sourceLength) &&
               std::memcmp(job.weights + x * entryWeights, job.weights + first * entryWeights, entryWeights) == 0;
    };
    size_t first = 0;
    while (first < count && !fits(first, first)) ++first;
    size_t end = first;
    while (end < count && fits(end, first)) ++end;
    job.runFirst = static_cast<uint32_t>(first), job.runEnd = static_cast<uint32_t>(end);
}

// A pass kernel produces the output block (x0, y0, w, h).
using PassKernel = void (*)(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h);

// The scaled formats, in the order PassJob::format names them.
inline constexpr PixelFormat kScaleFormats[] = {kARGB8888, kARGB16U, kARGB16S, kARGBFFFF,
                                                kPlanar8,  kPlanar16S, kPlanar16U, kPlanarF};

template <PixelFormat F>
constexpr uint8_t FormatIndex() {
    for (uint8_t i = 0; i < std::size(kScaleFormats); ++i) {
        const PixelFormat& g = kScaleFormats[i];
        if (g.sample == F.sample && g.channels == F.channels) return i;
    }
    return 0xFF;
}

// Calls fn.template operator()<F, A, kTaps>() for the pass the job names:
// one kernel per format, arithmetic and tap count.
template <class Fn>
void WithPass(const PassJob& job, Fn&& fn) {
    auto withTaps = [&]<PixelFormat F, Arithmetic A>() {
        if (job.taps == kShrinkTaps) {
            fn.template operator()<F, A, kShrinkTaps>();
        } else {
            fn.template operator()<F, A, kGrowTaps>();
        }
    };
    auto withArithmetic = [&]<PixelFormat F>() {
        if constexpr (IsFloat(F)) {
            if (job.arithmetic == Arithmetic::Double) {
                withTaps.template operator()<F, Arithmetic::Double>();
            } else {
                withTaps.template operator()<F, Arithmetic::Single>();
            }
        } else {
            if (job.arithmetic == Arithmetic::Float) {
                withTaps.template operator()<F, Arithmetic::Float>();
            } else {
                withTaps.template operator()<F, Arithmetic::Fixed>();
            }
        }
    };
    switch (job.format) {
        case 0: withArithmetic.template operator()<kScaleFormats[0]>(); break;
        case 1: withArithmetic.template operator()<kScaleFormats[1]>(); break;
        case 2: withArithmetic.template operator()<kScaleFormats[2]>(); break;
        case 3: withArithmetic.template operator()<kScaleFormats[3]>(); break;
        case 4: withArithmetic.template operator()<kScaleFormats[4]>(); break;
        case 5: withArithmetic.template operator()<kScaleFormats[5]>(); break;
        case 6: withArithmetic.template operator()<kScaleFormats[6]>(); break;
        default: withArithmetic.template operator()<kScaleFormats[7]>(); break;
    }
}

template <class T>
inline T SampleAt(const uint8_t* row, size_t sample) {
    return ReadUnaligned<T>(row + sample * sizeof(T));
}

// Scalar rule of one output pixel, channel by channel: taps in table order.
// `rows[j]` is where tap j's samples start: the source row (vertical pass)
// or the tap's pixel (horizontal pass).
template <PixelFormat F, Arithmetic A, size_t kTaps>
inline void ScalarSamples(const uint8_t* const* taps, const uint8_t* weights, size_t first, size_t count,
                          uint8_t* out) {
    using T = Sample<F>;
    using Rule = SumRule<A, T>;
    using W = Weight<A>;
    W w[kTaps];
    for (size_t j = 0; j < kTaps; ++j) w[j] = ReadUnaligned<W>(weights + j * sizeof(W));
    for (size_t s = first; s < first + count; ++s) {
        typename Rule::Acc acc{};
        for (size_t j = 0; j < kTaps; ++j) acc = Rule::Add(acc, w[j], SampleAt<T>(taps[j], s));
        WriteUnaligned(out + s * sizeof(T), Rule::Finish(acc));
    }
}

template <PixelFormat F, Arithmetic A, size_t kTaps>
void HorizontalPassScalar(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    constexpr size_t kPixel = F.pixelBytes();
    for (size_t y = y0; y < y0 + h; ++y) {
        const uint8_t* src = job.src + y * job.srcRowBytes;
        uint8_t* dst = job.dst + y * job.dstRowBytes;
        for (size_t x = x0; x < x0 + w; ++x) {
            const uint8_t* taps[kTaps];
            for (size_t j = 0; j < kTaps; ++j)
                taps[j] = src + static_cast<size_t>(ReadUnaligned<int32_t>(job.indices + (x * kTaps + j) * 4)) * kPixel;
            ScalarSamples<F, A, kTaps>(taps, job.weights + x * kTaps * sizeof(Weight<A>), 0, F.channels,
                                       dst + x * kPixel);
        }
    }
}

// The rows of output row y's taps.
template <size_t kTaps>
inline void TapRows(const PassJob& job, size_t y, const uint8_t** rows) {
    for (size_t j = 0; j < kTaps; ++j) {
        const auto row = static_cast<size_t>(ReadUnaligned<int32_t>(job.indices + (y * kTaps + j) * 4));
        rows[j] = job.src + (job.windowRows != 0 ? row % job.windowRows : row) * job.srcRowBytes;
    }
}

template <PixelFormat F, Arithmetic A, size_t kTaps>
void VerticalPassScalar(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    for (size_t y = y0; y < y0 + h; ++y) {
        const uint8_t* rows[kTaps];
        TapRows<kTaps>(job, y, rows);
        ScalarSamples<F, A, kTaps>(rows, job.weights + y * kTaps * sizeof(Weight<A>), x0 * F.channels,
                                   w * F.channels, job.dst + y * job.dstRowBytes);
    }
}

inline void HorizontalPassScalarAny(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    WithPass(job, [&]<PixelFormat F, Arithmetic A, size_t kTaps>() {
        HorizontalPassScalar<F, A, kTaps>(job, x0, y0, w, h);
    });
}
inline void VerticalPassScalarAny(const PassJob& job, size_t x0, size_t y0, size_t w, size_t h) {
    WithPass(job, [&]<PixelFormat F, Arithmetic A, size_t kTaps>() {
        VerticalPassScalar<F, A, kTaps>(job, x0, y0, w, h);
    });
}

}  // namespace quorin::scale
