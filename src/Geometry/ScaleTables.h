// The coefficient table of one scaled axis: for each output sample, the
// source positions of its taps and their weights, built once per call from
// the B-spline (shrinking axes) or Lanczos-3 (growing axes) kernel in double
// precision, then stored as 14-bit fixed point, float or double.
//
// A table lives in the call's scratch block: a head of two pointers, the
// index array right after it, the weight array after that (rounded up to 8
// bytes for double weights). The scratch may be the caller's and need not
// be aligned, so the passes read entries through ReadUnaligned.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <type_traits>

#include "Core/Checks.h"

namespace quorin::scale {

// The arithmetic of a pass, which fixes the weights' type.
enum class Arithmetic : uint8_t {
    Fixed,   // integer formats by default: int32 weights, 1.0 = 16384
    Float,   // integer formats, high quality: float weights and sum
    Single,  // float formats by default: float weights and sum
    Double,  // float formats, high quality: double weights and sum
};

template <Arithmetic> struct WeightOf;
template <> struct WeightOf<Arithmetic::Fixed> { using Type = int32_t; };
template <> struct WeightOf<Arithmetic::Float> { using Type = float; };
template <> struct WeightOf<Arithmetic::Single> { using Type = float; };
template <> struct WeightOf<Arithmetic::Double> { using Type = double; };
template <Arithmetic A>
using Weight = typename WeightOf<A>::Type;

constexpr size_t WeightBytes(Arithmetic a) { return a == Arithmetic::Double ? 8 : 4; }

inline constexpr size_t kShrinkTaps = 5;  // B-spline, radius 2
inline constexpr size_t kGrowTaps = 7;    // Lanczos-3, radius 3
inline constexpr int kFixedOne = 16384;   // 14 fraction bits

constexpr size_t TapsFor(size_t sourceLength, size_t destLength) {
    return sourceLength > destLength ? kShrinkTaps : kGrowTaps;
}

// The table's head, as it is laid out at the start of its bytes.
struct ResampleTable {
    int32_t* indices;
    void* weights;
};
inline constexpr size_t kTableHead = sizeof(ResampleTable);  // two pointers

constexpr size_t RoundUp8(size_t n) { return (n + 7) & ~size_t{7}; }

// Bytes of one table of `count` entries of `taps` taps, or nullopt when the
// size does not fit a size_t.
constexpr std::optional<size_t> TableBytes(size_t count, size_t taps, Arithmetic a) {
    const std::optional<size_t> entries = CheckedProduct(count, taps);
    if (!entries || *entries > SIZE_MAX / 16) return std::nullopt;
    const size_t indexEnd = kTableHead + *entries * 4;
    if (a == Arithmetic::Double) return RoundUp8(indexEnd) + *entries * 8;
    return indexEnd + *entries * 4;
}

// Points a table's head at its arrays inside `bytes` and writes the head there.
inline ResampleTable PlaceTable(uint8_t* bytes, size_t count, size_t taps, Arithmetic a) {
    const size_t indexEnd = kTableHead + count * taps * 4;
    ResampleTable table{reinterpret_cast<int32_t*>(bytes + kTableHead),
                        bytes + (a == Arithmetic::Double ? RoundUp8(indexEnd) : indexEnd)};
    std::memcpy(bytes, &table, sizeof table);
    return table;
}

template <class T>
inline T ReadUnaligned(const void* p) {
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
}
template <class T>
inline void WriteUnaligned(void* p, T value) {
    std::memcpy(p, &value, sizeof value);
}

// ---- Kernels (double precision) -------------------------------------------------

inline double BSpline(double x) {
    const double a = std::fabs(x);
    if (a < 1.0) return a * a * (a / 2.0 - 1.0) + 0.6666666666666666;
    if (a < 2.0) {
        const double t = 2.0 - a;
        return t * t * t / 6.0;
    }
    return 0.0;
}

inline double Sinc(double t) {
    if (t == 0.0) return 1.0;
    const double x = 3.141592653589793 * t;
    return std::sin(x) / x;
}

inline double Lanczos3(double x) {
    const double a = std::fabs(x);
    if (a >= 3.0) return 0.0;
    return Sinc(a) * Sinc(a / 3.0);
}

// The stored weight: fixed point truncated toward zero, float rounded, double kept.
template <class W>
inline W StoreWeight(double k) {
    if constexpr (std::is_same_v<W, int32_t>) {
        return static_cast<int32_t>(k * kFixedOne);
    } else {
        return static_cast<W>(k);
    }
}

// Fills D x taps entries for an axis of S source samples and returns S.
// Output i sits at i * S / D, less the library's own phase (the smaller of
// S/D and D/S), subtracted for both kernels; i * S is a 32-bit running sum.
template <class W, size_t kTaps>
uint32_t BuildTable(uint32_t S, uint32_t D, double ratio, const ResampleTable& table, double (*kernel)(double)) {
    constexpr int kRadius = static_cast<int>(kTaps / 2);
    const double phase = ratio <= 1.0 ? ratio : 1.0 / ratio;
    uint32_t num = 0;
    auto* weights = static_cast<uint8_t*>(table.weights);
    auto* indices = reinterpret_cast<uint8_t*>(table.indices);
    for (uint32_t i = 0; i < D; ++i, num += S) {
        const uint32_t c = num / D;
        const double f = static_cast<double>(num) / static_cast<double>(D) - static_cast<double>(c) - phase;
        for (int j = -kRadius; j <= kRadius; ++j) {
            const int64_t position = static_cast<int64_t>(c) + j;
            const int64_t clamped = position < 0 ? 0 : position > int64_t{S} - 1 ? int64_t{S} - 1 : position;
            const size_t entry = size_t{i} * kTaps + static_cast<size_t>(j + kRadius);
            WriteUnaligned(indices + entry * 4, static_cast<int32_t>(clamped));
            WriteUnaligned(weights + entry * sizeof(W), StoreWeight<W>(kernel(static_cast<double>(j) - f)));
        }
    }
    return S;
}

template <class W>
uint32_t BuildBSplineTable(uint32_t S, uint32_t D, const ResampleTable& table, double ratio) {
    return BuildTable<W, kShrinkTaps>(S, D, ratio, table, &BSpline);
}
template <class W>
uint32_t BuildLanczosTable(uint32_t S, uint32_t D, const ResampleTable& table, double ratio) {
    return BuildTable<W, kGrowTaps>(S, D, ratio, table, &Lanczos3);
}

inline uint32_t BuildBSplineTableFixed(uint32_t S, uint32_t D, const ResampleTable& t, double s) {
    return BuildBSplineTable<int32_t>(S, D, t, s);
}
inline uint32_t BuildBSplineTableFloat(uint32_t S, uint32_t D, const ResampleTable& t, double s) {
    return BuildBSplineTable<float>(S, D, t, s);
}
inline uint32_t BuildBSplineTableDouble(uint32_t S, uint32_t D, const ResampleTable& t, double s) {
    return BuildBSplineTable<double>(S, D, t, s);
}

// The builder an axis takes: B-spline when it shrinks, Lanczos-3 when it grows.
template <Arithmetic A>
void BuildAxisTable(uint32_t S, uint32_t D, const ResampleTable& table) {
    const double ratio = static_cast<double>(S) / static_cast<double>(D);
    if (S > D) {
        BuildBSplineTable<Weight<A>>(S, D, table, ratio);
    } else {
        BuildLanczosTable<Weight<A>>(S, D, table, ratio);
    }
}

}  // namespace quorin::scale
