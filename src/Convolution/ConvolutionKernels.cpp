// Vector twins of the convolution rules (ConvolutionRules.h).
//
// General convolution: each lane is one output byte (a channel of a pixel),
// so the taps of interleaved pixels are the same loads a pixel further on.
// Output pixels whose every tap lies inside the row take the vector path
// without per-tap tests; the few at either end take the scalar rule. Sums are
// kept in 16-bit lanes when no weight is negative and no sum can pass 65535,
// else in 32-bit lanes, whose wrap-around is the signed sum's; the quotient is
// a multiply-high by the call's magic number, exact for every numerator.
//
// Box filter: the running sums run across lines, one lane per channel of
// each of 16 / pixelBytes lines, so the transposed output of one sample is 16
// contiguous bytes. Blocks of input are transposed in registers into a ring
// of columns that keeps every column a span still needs.
#include <algorithm>
#include <bit>
#include <numeric>
#include <cstdint>
#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Convolution/ConvolutionKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Convolution/ConvolutionKernels.h"
#include "Core/Streaming.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using convolution::ConvolveShape;

// The one-lane HWY_SCALAR target lacks the interleaves and 64-bit products:
// the rules serve there.
#if HWY_TARGET != HWY_SCALAR
namespace {

// The high 32 bits of each lane's 64-bit product with the magic number, from
// the even and odd lanes' full products.
template <class D>
hn::Vec<D> MulHigh32(D d, hn::Vec<D> a, hn::Vec<D> magic) {
    const hn::Repartition<uint64_t, D> d64;
    const auto even = hn::MulEven(a, magic);
    const auto odd = hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(d64, a))), magic);
    return hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, hn::ShiftRight<32>(even)));
}

// n / divisor in every lane, as MagicDivisor::Divide (divisor not 0).
template <class D, unsigned kBits>
struct LaneDivide {
    hn::Vec<D> magic;
    int shift1, shift2;
    bool powerOfTwo;
    explicit LaneDivide(const convolution::MagicDivisor<kBits>& m)
        : magic(hn::Set(D(), static_cast<hn::TFromD<D>>(m.magic))),
          shift1(static_cast<int>(m.shift1)),
          shift2(static_cast<int>(m.shift2)),
          powerOfTwo(std::has_single_bit(m.divisor)) {}
    hn::Vec<D> High(hn::Vec<D> n) const {
        if constexpr (kBits == 16) return hn::MulHigh(n, magic);
        else return MulHigh32(D(), n, magic);
    }
    hn::Vec<D> operator()(hn::Vec<D> n) const {
        // A power of two: magic 1, so t = 0 and the quotient is n >> (shift1 + shift2).
        if (powerOfTwo) return hn::ShiftRightSame(n, shift1 + shift2);
        const hn::Vec<D> t = High(n);
        return hn::ShiftRightSame(hn::Add(t, hn::ShiftRightSame(hn::Sub(n, t), shift1)), shift2);
    }
};

// Stores a vector of output bytes, streamed when asked. A streaming store
// writes a whole 16-byte register, so narrower vectors take plain stores;
// streamed ones must lie on a boundary of their own size.
template <class D>
HWY_INLINE void Put(bool stream, hn::Vec<D> v, D d, uint8_t* to) {
    if constexpr (hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) >= 16) {
        if (stream) return hn::Stream(v, d, to);
    }
    hn::StoreU(v, d, to);
}

// Output bytes [begin, end) whose taps all lie inside the row, whole vectors
// of them, kVectors side by side so each weight is broadcast once for them
// all; returns where the vectors stopped.
template <class DA, size_t kVectors, class Divide>
size_t ConvolveVectors(const uint8_t* const* rows, uint8_t* out, size_t begin, size_t end, const ConvolveShape& s,
                       const Divide& divide, bool stream = false) {
    const DA da;
    const hn::Rebind<uint8_t, DA> d8;
    using T = hn::TFromD<DA>;
    const size_t lanes = hn::Lanes(da), P = s.pixelBytes, back = (s.kernelWidth / 2) * P;
    size_t b = begin;
    for (; b + kVectors * lanes <= end; b += kVectors * lanes) {
        hn::Vec<DA> sum[kVectors];
        for (size_t v = 0; v < kVectors; ++v) sum[v] = hn::Zero(da);
        for (size_t i = 0; i < s.kernelHeight; ++i) {
            if (rows[i] == nullptr) continue;
            const uint8_t* p = rows[i] + b - back;
            const int16_t* w = s.kernel + i * s.kernelWidth;
            for (size_t j = 0; j < s.kernelWidth; ++j, p += P) {
                const auto weight = hn::Set(da, static_cast<T>(static_cast<int32_t>(w[j])));
                for (size_t v = 0; v < kVectors; ++v)
                    sum[v] = hn::Add(sum[v], hn::Mul(hn::PromoteTo(da, hn::LoadU(d8, p + v * lanes)), weight));
            }
        }
        for (size_t v = 0; v < kVectors; ++v) Put(stream, hn::TruncateTo(d8, divide(sum[v])), d8, out + b + v * lanes);
    }
    return b;
}

// A kernel that is a column times a row, in 16-bit lanes: each stretch of
// output bytes first sums its columns down the rows (with the halo the row
// of weights reaches), then those sums across. The sums are the same integers
// as the kernel's own, and as none passes 65535 none wraps.
//
// A vector of bytes is taken as 16-bit lanes of two neighbouring bytes, the
// low one at an even place and the high one at the next: masking and
// shifting give the two apart, so no byte moves between lanes (widening
// would cost a shuffle per vector, and the shuffle units are the scarce
// ones). The sums down go into two arrays, of the even places and of the odd
// ones; a tap across that moves by an odd number of bytes reads the other
// array, and the two quotients are put back together as bytes.
//
// kKH, kKW: the kernel's size when known when compiled (3 x 3 and 5 x 5,
// whose loops then unroll), else 0. kR output rows (outs[0 .. kR - 1]) are
// made at once from the kh + kR - 1 rows they share, each row loaded and
// taken apart once for them all; with kR above 1 every row is inside the
// image and the outputs lie a whole number of cache lines apart. kSym: the
// column and the row read the same backwards (with a row outside the image
// weighing 0), so mirrored taps are added before their one product.
// Flattened: its loops are the hot ones, and pieces left as calls reload
// the weights and the rows' places at every vector.
template <size_t kKH, size_t kKW, size_t kR, bool kSym>
HWY_FLATTEN size_t ConvolveSeparable(const uint8_t* const* rows, uint8_t* const* outs, size_t begin, size_t end,
                         const ConvolveShape& s) {
    static_assert(kR == 1 || kKH != 0);
    using DA = hn::CappedTag<uint16_t, 16>;
    using VA = hn::Vec<DA>;
    const DA da;
    const LaneDivide<DA, 16> divide(s.divide16);
    const hn::Repartition<uint8_t, DA> d8;
    const size_t kh = kKH ? kKH : s.kernelHeight, kw = kKW ? kKW : s.kernelWidth;
    const size_t N = hn::Lanes(da), V = 2 * N, P = s.pixelBytes, back = (kw / 2) * P;
    constexpr size_t kStretch = 1024, kAhead = 2048, kHalf = kStretch / 2 + 127 * 4 + 1;
    constexpr size_t kLoaded = kKH ? kKH + kR - 1 : 255;
    // The sums down of output row r: the even places from sums[r], the odd
    // ones from sums[r] + kHalf.
    alignas(64) uint16_t sums[kR][2 * kHalf];
    // The weights and, for each tap across, where the sums of an even and
    // of an odd output place start: local, so the stores of output bytes
    // cannot be taken to change them. A row outside the image (kR = 1 only)
    // is read as the middle row (always inside) with weight 0, so the loop
    // down has no tests.
    uint16_t down[255], across[255];
    const uint8_t* from[kLoaded];
    size_t forEven[255], forOdd[255];
    for (size_t i = 0; i < kh; ++i) down[i] = rows[i] != nullptr ? static_cast<uint16_t>(s.down[i]) : 0;
    for (size_t i = 0; i < kh + kR - 1; ++i) from[i] = (rows[i] != nullptr ? rows[i] : rows[kh / 2]) + begin - back;
    for (size_t j = 0; j < kw; ++j) {
        const size_t o = j * P;
        across[j] = static_cast<uint16_t>(s.across[j]);
        forEven[j] = o % 2 == 0 ? o / 2 : kHalf + o / 2;
        forOdd[j] = o % 2 == 0 ? kHalf + o / 2 : o / 2 + 1;
    }
    // The newest kR rows come from memory: their lines are asked for a
    // stretch ahead, across the page boundaries the hardware stops at, up to
    // their end.
    const uint8_t* newest = rows[kh + kR - 2];
    const size_t rowBytes = s.width * P, last = rowBytes > kAhead ? rowBytes - kAhead : 0;
    const auto low = hn::Set(da, 0xFF);
    // Sum down of one half (even or odd places) for output row r, from the
    // loaded halves h.
    auto SumDown = [&](const VA* h, size_t r) {
        if constexpr (kSym) {
            VA sum = hn::Mul(h[r + kKH / 2], hn::Set(da, down[kKH / 2]));
            for (size_t i = 0; i < kKH / 2; ++i)
                sum = hn::Add(sum, hn::Mul(hn::Add(h[r + i], h[r + kKH - 1 - i]), hn::Set(da, down[i])));
            return sum;
        } else {
            VA sum = hn::Zero(da);
            for (size_t i = 0; i < kh; ++i) sum = hn::Add(sum, hn::Mul(h[r + i], hn::Set(da, down[i])));
            return sum;
        }
    };
    // Down: the sums of the bytes [k, k + V) of the stretch from byte `at` on.
    auto Down = [&](size_t at, size_t k) {
        if constexpr (kKH != 0) {
            VA evens[kLoaded], odds[kLoaded];
            for (size_t i = 0; i < kLoaded; ++i) {
                const auto pair = hn::BitCast(da, hn::LoadU(d8, from[i] + at + k));
                evens[i] = hn::And(pair, low);
                odds[i] = hn::ShiftRight<8>(pair);
            }
            for (size_t r = 0; r < kR; ++r) {
                hn::StoreU(SumDown(evens, r), da, sums[r] + k / 2);
                hn::StoreU(SumDown(odds, r), da, sums[r] + kHalf + k / 2);
            }
        } else {
            auto sumEven = hn::Zero(da), sumOdd = hn::Zero(da);
            for (size_t i = 0; i < kh; ++i) {
                const auto pair = hn::BitCast(da, hn::LoadU(d8, from[i] + at + k));
                const auto weight = hn::Set(da, down[i]);
                sumEven = hn::Add(sumEven, hn::Mul(hn::And(pair, low), weight));
                sumOdd = hn::Add(sumOdd, hn::Mul(hn::ShiftRight<8>(pair), weight));
            }
            hn::StoreU(sumEven, da, sums[0] + k / 2);
            hn::StoreU(sumOdd, da, sums[0] + kHalf + k / 2);
        }
    };
    // Sum across of one half, its taps at `at` + offsets[j].
    auto SumAcross = [&](const uint16_t* at, const size_t* offsets) {
        if constexpr (kSym) {
            VA sum = hn::Mul(hn::LoadU(da, at + offsets[kw / 2]), hn::Set(da, across[kw / 2]));
            for (size_t j = 0; j < kw / 2; ++j)
                sum = hn::Add(sum, hn::Mul(hn::Add(hn::LoadU(da, at + offsets[j]), hn::LoadU(da, at + offsets[kw - 1 - j])),
                                           hn::Set(da, across[j])));
            return sum;
        } else {
            VA sum = hn::Zero(da);
            for (size_t j = 0; j < kw; ++j) sum = hn::Add(sum, hn::Mul(hn::LoadU(da, at + offsets[j]), hn::Set(da, across[j])));
            return sum;
        }
    };
    // Output bytes [b, b + count) of every output row (count a multiple of
    // V, at most a stretch): the sums down over them and their halo, then
    // across, with the quotient and the store fixed for the call's loops.
    auto Stretch = [&](size_t b, size_t count, auto quotient, auto put) {
        const size_t span = count + 2 * back, at = b - begin;
        size_t k = 0;
        for (; k + V <= span; k += V) {
            if (newest != nullptr && from[kh + kR - 2] + at + k < newest + last)
                for (size_t i = kh - 1; i < kh + kR - 1; ++i) hwy::Prefetch(from[i] + at + k + kAhead);
            Down(at, k);
        }
        // The last sums as one more vector ending at the span's end (an
        // even place, as count and back are), over sums already made.
        if (k < span) Down(at, span - V);
        for (size_t r = 0; r < kR; ++r) {
            uint8_t* out = outs[r] + b;
            for (k = 0; k < count; k += V) {
                const auto sumEven = SumAcross(sums[r] + k / 2, forEven), sumOdd = SumAcross(sums[r] + k / 2, forOdd);
                const auto bytes = hn::Or(hn::And(quotient(sumEven), low), hn::ShiftLeft<8>(quotient(sumOdd)));
                put(hn::BitCast(d8, bytes), out + k);
            }
        }
    };
    using Bytes = hn::Vec<hn::Repartition<uint8_t, DA>>;
    const auto plain = [d8](Bytes v, uint8_t* to) { hn::StoreU(v, d8, to); };
    const auto streamed = [d8](Bytes v, uint8_t* to) { hn::Stream(v, d8, to); };
    // Bytes [b0, b1), at least a vector: whole stretches, then the rest as
    // one more vector ending at b1 over bytes already written with the same
    // values, stored plainly.
    auto Stretches = [&](size_t b0, size_t b1, auto quotient, auto put) {
        size_t b = b0;
        for (size_t count; (count = std::min(kStretch, b1 - b) / V * V) != 0; b += count) Stretch(b, count, quotient, put);
        if (b < b1) Stretch(b1 - V, V, quotient, plain);
    };
    // Streamed stores start at the first cache-line boundary (a whole
    // number of vectors from it on); the bytes before it go out plainly.
    auto Everything = [&](auto quotient) {
        constexpr size_t kLine = 64;
        const size_t line = begin + (kLine - reinterpret_cast<uintptr_t>(outs[0] + begin) % kLine) % kLine;
        if (s.stream && line + V <= end) {
            if (line > begin) Stretches(begin, std::max(line, begin + V), quotient, plain);
            Stretches(line, end, quotient, streamed);
        } else {
            Stretches(begin, end, quotient, plain);
        }
    };
    if (end - begin < V) return begin;
    if (divide.powerOfTwo) {
        const int shift = divide.shift1 + divide.shift2;
        Everything([shift](VA v) { return hn::ShiftRightSame(v, shift); });
    } else {
        Everything([&](VA v) { return divide(v); });
    }
    return end;
}

// Whether the kernel rows[0 .. kh - 1] meet reads the same backwards, down
// (a row outside the image weighing 0) and across.
bool SeparableMirrored(const uint8_t* const* rows, const ConvolveShape& s) {
    const size_t kh = s.kernelHeight, kw = s.kernelWidth;
    for (size_t i = 0; i < kh / 2; ++i) {
        const int top = rows[i] != nullptr ? s.down[i] : 0, bottom = rows[kh - 1 - i] != nullptr ? s.down[kh - 1 - i] : 0;
        if (top != bottom) return false;
    }
    for (size_t j = 0; j < kw / 2; ++j)
        if (s.across[j] != s.across[kw - 1 - j]) return false;
    return true;
}

// One output row of a column-times-row kernel, by its size's loops.
size_t ConvolveSeparableRow(const uint8_t* const* rows, uint8_t* out, size_t begin, size_t end,
                            const ConvolveShape& s) {
    uint8_t* const outs[1] = {out};
    const bool mirrored = SeparableMirrored(rows, s);
    if (s.kernelHeight == 3 && s.kernelWidth == 3)
        return mirrored ? ConvolveSeparable<3, 3, 1, true>(rows, outs, begin, end, s)
                        : ConvolveSeparable<3, 3, 1, false>(rows, outs, begin, end, s);
    if (s.kernelHeight == 5 && s.kernelWidth == 5)
        return mirrored ? ConvolveSeparable<5, 5, 1, true>(rows, outs, begin, end, s)
                        : ConvolveSeparable<5, 5, 1, false>(rows, outs, begin, end, s);
    return ConvolveSeparable<0, 0, 1, false>(rows, outs, begin, end, s);
}

// In place, sums[k] = sums[k] + .. + sums[k + (taps - 1) * step] for k <
// count, reading up to count + (taps - 1) * step; `spare` holds as many.
// Spans double a pass at a time (sums of 1, 2, 4, .. taps), the ones the
// binary digits of `taps` name added up on the way. Every pass reads ahead
// of what it writes, so a pass runs in place from the front. The sums wrap
// in 16 bits where their true values would pass 65535; the caller's final
// sums do not, so they come out exact. Returns the array holding the result.
template <class D>
uint16_t* BoxRun(uint16_t* sums, uint16_t* spare, size_t count, size_t taps, size_t step) {
    const D d;
    const size_t N = hn::Lanes(d);
    // to[k] = a[k] + b[k + offset] for k < n. Two vectors a step: a loop of
    // one is so short that where it happens to cross a 64-byte boundary of
    // the code, fetching it takes longer than running it.
    auto add = [&](uint16_t* to, const uint16_t* a, const uint16_t* b, size_t offset, size_t n) {
        size_t k = 0;
        for (; k + 2 * N <= n; k += 2 * N) {
            const auto first = hn::Add(hn::LoadU(d, a + k), hn::LoadU(d, b + k + offset));
            const auto second = hn::Add(hn::LoadU(d, a + k + N), hn::LoadU(d, b + k + N + offset));
            hn::StoreU(first, d, to + k);
            hn::StoreU(second, d, to + k + N);
        }
        for (; k + N <= n; k += N) hn::StoreU(hn::Add(hn::LoadU(d, a + k), hn::LoadU(d, b + k + offset)), d, to + k);
        for (; k < n; ++k) to[k] = static_cast<uint16_t>(a[k] + b[k + offset]);
    };
    // `sums` holds spans of `span` taps over count + (taps - span) * step
    // places; `spare`, once `got` is not 0, spans of `got` taps over
    // count + (taps - got) * step places.
    size_t span = 1, got = 0;
    for (;;) {
        const size_t valid = count + (taps - span) * step;
        if (taps & span) {
            if (got == 0) {
                if (taps == span) return sums;  // the one digit: nothing to add
                std::memcpy(spare, sums, valid * sizeof(uint16_t));
            } else {
                // spare's spans of `got` taps followed by span more.
                add(spare, spare, sums, got * step, count + (taps - got - span) * step);
            }
            got += span;
            if (got == taps) return spare;
        }
        add(sums, sums, sums, span * step, valid - span * step);
        span *= 2;
    }
}

// A row of triangular weights 1, 2, .., h + 1, .., 2, 1 over output bytes
// [begin, end) whose taps lie inside the row: the same sum as a box of h + 1
// taps across the row's pixels, taken twice, which costs about 2 log2(h + 1)
// additions per byte instead of 2h + 1 products. Each stretch widens its
// bytes once into 16-bit lanes, with the halo both boxes reach.
template <class DA, class Divide>
size_t TentAcross(const uint8_t* row, uint8_t* out, size_t begin, size_t end, const ConvolveShape& s,
                  const Divide& divide, bool stream) {
    static_assert(sizeof(hn::TFromD<DA>) == 2);
    const DA da;
    const hn::Rebind<uint8_t, DA> d8;
    const size_t N = hn::Lanes(da), P = s.pixelBytes, taps = s.kernelWidth / 2 + 1, back = (taps - 1) * P;
    constexpr size_t kStretch = 2048;
    alignas(64) uint16_t sums[kStretch + 2 * 127 * 4], spare[kStretch + 2 * 127 * 4];
    size_t b = begin;
    while (b + N <= end) {
        const size_t count = std::min(kStretch, end - b) / N * N, span = count + 2 * back;
        const uint8_t* from = row + b - back;  // the interior's taps stay inside the row
        size_t k = 0;
        for (; k + N <= span; k += N) hn::Store(hn::PromoteTo(da, hn::LoadU(d8, from + k)), da, sums + k);
        for (; k < span; ++k) sums[k] = from[k];
        uint16_t* boxed = BoxRun<DA>(sums, spare, count + back, taps, P);
        boxed = BoxRun<DA>(boxed, boxed == sums ? spare : sums, count, taps, P);
        for (k = 0; k < count; k += N) Put(stream, hn::TruncateTo(d8, divide(hn::Load(da, boxed + k))), d8, out + b + k);
        b += count;
    }
    return b;
}

template <class DA, class Divide>
size_t ConvolveInterior(const uint8_t* const* rows, uint8_t* out, size_t begin, size_t end, const ConvolveShape& s,
                        const Divide& divide) {
    const size_t lanes = hn::Lanes(DA());
    if (s.separable) {
        if (ConvolveSeparableRow(rows, out, begin, end, s) == end) return end;
    }
    size_t b = begin;
    // Streamed stores start at the first cache-line boundary; the bytes
    // before it go out as plain vectors, the last one ending on the boundary
    // (or, when the boundary is less than a vector in, starting at `begin`
    // and overlapping bytes the streamed ones write again with the same values).
    bool stream = false;
    if (s.stream) {
        constexpr size_t kLine = 64;
        const size_t line = begin + (kLine - reinterpret_cast<uintptr_t>(out + begin) % kLine) % kLine;
        if (line + kLine <= end) {
            if (line > begin) {
                ConvolveVectors<DA, 1>(rows, out, begin, line, s, divide);
                const size_t last = line >= begin + lanes ? line - lanes : begin;
                ConvolveVectors<DA, 1>(rows, out, last, last + lanes, s, divide);
            }
            b = line;
            stream = true;
        }
    }
    if constexpr (sizeof(hn::TFromD<DA>) == 2) {
        // The triangular passes, as the column-times-row kernels, in 256-bit
        // vectors at most.
        using DT = hn::CappedTag<uint16_t, 16>;
        if (s.tentRow) b = TentAcross<DT>(rows[0], out, b, end, s, LaneDivide<DT, 16>(s.divide16), stream);
    }
    b = ConvolveVectors<DA, 4>(rows, out, b, end, s, divide, stream);
    const size_t done = ConvolveVectors<DA, 1>(rows, out, b, end, s, divide, stream);
    // The rest as one more vector ending at `end`, over bytes already
    // written with the same values, rather than byte by byte.
    if (done == end || end - begin < lanes) return done;
    ConvolveVectors<DA, 1>(rows, out, end - lanes, end, s, divide);
    return end;
}

// ---- A column of triangular weights ---------------------------------------------

// The tent's vertical pass by running sums, at a cost that does not grow
// with its height. With B(u) the sum of rows u - h .. u (rows outside the
// image are 0), the weighted sum of output row y is T(y) = B(y) + .. +
// B(y + h), so T(y) = T(y - 1) + D(y) with D(y) = B(y + h) - B(y - 1), and
// D(y) = D(y - 1) + M(y + h) - 2 M(y - 1) + M(y - h - 2). Every true T is
// below 2^16 (the weights' sum times 255 fits), so 16-bit lanes that wrap on
// the way give it exactly; the quotient is the general convolution's.
// Columns go in strips so the two rows of sums fit on the stack.
constexpr size_t kTentStrip = 4096;
alignas(64) constexpr uint8_t kZeroRow[kTentStrip] = {};

template <class D>
void TentDown(const Quorin_Buffer& src, const Quorin_Buffer& dest, size_t first, size_t last, size_t width,
              const ConvolveShape& s) {
    const D ds;
    const hn::Rebind<uint8_t, D> db;
    const size_t N = hn::Lanes(ds), bytes = width * s.pixelBytes;
    const ptrdiff_t h = static_cast<ptrdiff_t>(s.kernelHeight / 2), height = static_cast<ptrdiff_t>(src.height);
    const LaneDivide<D, 16> divide(s.divide16);
    alignas(64) uint16_t diff[kTentStrip], sums[kTentStrip];
    for (size_t b0 = 0; b0 < bytes; b0 += kTentStrip) {
        const size_t count = std::min(kTentStrip, bytes - b0);
        // Row t of the strip, or zeros outside the image.
        auto M = [&](ptrdiff_t t) -> const uint8_t* {
            if (t < 0 || t >= height) return kZeroRow;
            return static_cast<const uint8_t*>(src.data) + static_cast<size_t>(t) * src.rowBytes + b0;
        };
        // D and T of row first - 1, directly: D as the rows y .. y + h less
        // the rows y - 1 - h .. y - 1, T with each row's weight.
        const ptrdiff_t y = static_cast<ptrdiff_t>(first) - 1;
        size_t i = 0;
        for (; i + N <= count; i += N) {
            auto d = hn::Zero(ds), t = hn::Zero(ds);
            for (ptrdiff_t k = -h - 1; k <= h; ++k) {
                const auto m = hn::PromoteTo(ds, hn::LoadU(db, M(y + k) + i));
                d = k < 0 ? hn::Sub(d, m) : hn::Add(d, m);
                if (k >= -h) t = hn::Add(t, hn::Mul(m, hn::Set(ds, static_cast<uint16_t>(h + 1 - (k < 0 ? -k : k)))));
            }
            hn::Store(d, ds, diff + i);
            hn::Store(t, ds, sums + i);
        }
        for (; i < count; ++i) {
            uint32_t d = 0, t = 0;
            for (ptrdiff_t k = -h - 1; k <= h; ++k) {
                const uint32_t m = M(y + k)[i];
                d = k < 0 ? d - m : d + m;
                if (k >= -h) t += static_cast<uint32_t>(h + 1 - (k < 0 ? -k : k)) * m;
            }
            diff[i] = static_cast<uint16_t>(d);
            sums[i] = static_cast<uint16_t>(t);
        }
        for (size_t row = first; row < last; ++row) {
            const ptrdiff_t r = static_cast<ptrdiff_t>(row);
            const uint8_t *add = M(r + h), *twice = M(r - 1), *drop = M(r - h - 2);
            uint8_t* out = static_cast<uint8_t*>(dest.data) + row * dest.rowBytes + b0;
            // The row after next's pages, before the hardware starts on them.
            const uint8_t* next = M(r + h + 1);
            auto one = [&](size_t k) {
                diff[k] = static_cast<uint16_t>(diff[k] + add[k] + drop[k] - 2 * twice[k]);
                sums[k] = static_cast<uint16_t>(sums[k] + diff[k]);
                out[k] = static_cast<uint8_t>(sums[k] / s.divisor);
            };
            // Streamed rows: single bytes up to a vector boundary first.
            i = 0;
            if (s.stream)
                for (; i < count && reinterpret_cast<uintptr_t>(out + i) % N != 0; ++i) one(i);
            for (; i + N <= count; i += N) {
                hwy::Prefetch(next + i);
                const auto m = hn::PromoteTo(ds, hn::LoadU(db, twice + i));
                auto d = hn::Add(hn::LoadU(ds, diff + i), hn::PromoteTo(ds, hn::LoadU(db, add + i)));
                d = hn::Sub(hn::Add(d, hn::PromoteTo(ds, hn::LoadU(db, drop + i))), hn::Add(m, m));
                const auto t = hn::Add(hn::LoadU(ds, sums + i), d);
                hn::StoreU(d, ds, diff + i);
                hn::StoreU(t, ds, sums + i);
                Put(s.stream, hn::TruncateTo(db, divide(t)), db, out + i);
            }
            for (; i < count; ++i) one(i);
        }
    }
}

// ---- Box filter ----------------------------------------------------------------

using D8 = hn::Full128<uint8_t>;
using Bytes = hn::Vec<D8>;

// One interleave stage of the transpose, on lanes of T: vector i of the
// first half pairs inputs 2i and 2i + 1 lane by lane from the bottom, the
// second half from the top.
template <class T, size_t count>
void InterleaveStage(Bytes* v) {
    const hn::Full128<T> dt;
    const D8 d8;
    Bytes t[count];
    for (size_t i = 0; i < count / 2; ++i) {
        const auto a = hn::BitCast(dt, v[2 * i]), b = hn::BitCast(dt, v[2 * i + 1]);
        t[i] = hn::BitCast(d8, hn::InterleaveLower(dt, a, b));
        t[i + count / 2] = hn::BitCast(d8, hn::InterleaveUpper(dt, a, b));
    }
    for (size_t i = 0; i < count; ++i) v[i] = t[i];
}

// Reverses the low `bits` bits of i.
constexpr size_t ReverseBits(size_t i, unsigned bits) {
    size_t r = 0;
    for (unsigned k = 0; k < bits; ++k) r |= ((i >> k) & 1) << (bits - 1 - k);
    return r;
}

// The running sums of one group of 16 / P lines from line y0, every line's
// channels in lanes of their own. A group advances along its lines by
// chunks, so that a pass can run several groups side by side and write
// whole cache lines of the transposed output, whose lines lie a power of two
// apart in the usual images and would otherwise evict one another.
template <size_t P_>
class BoxGroup {
public:
    static constexpr size_t L_ = 16 / P_;  // lines, and samples of each in a block
    using D16 = hn::Full128<uint16_t>;

    void start(const uint8_t* in, uint8_t* out, size_t n, size_t lines, size_t r, size_t y0) {
        in_ = in, out_ = out, n_ = n, lines_ = lines, r_ = r, y0_ = y0, loaded_ = 0, x_ = 0;
        // The ring holds what a span and a block ahead need, and no more, so
        // the groups that run side by side keep their rings in the first cache.
        ringMask_ = std::bit_ceil(2 * r + 2 * L_) - 1;
        Gather(0, first_);
        Gather(n_ - 1, last_);
        const D16 d16;
        auto sumLo = hn::Mul(Low(first_), hn::Set(d16, static_cast<uint16_t>(r_ + 1)));
        auto sumHi = hn::Mul(High(first_), hn::Set(d16, static_cast<uint16_t>(r_ + 1)));
        if (r_ > 1) LoadUpTo(r_ - 1);
        for (size_t i = 1; i < r_; ++i) {
            sumLo = hn::Add(sumLo, Low(Column(i)));
            sumHi = hn::Add(sumHi, High(Column(i)));
        }
        hn::Store(sumLo, d16, sums_);
        hn::Store(sumHi, d16, sums_ + 8);
    }

    // Outputs x_ .. end - 1, by the three loops of the running sum.
    template <class Divide>
    void advance(size_t end, const Divide& divide) {
        const D16 d16;
        auto sumLo = hn::Load(d16, sums_), sumHi = hn::Load(d16, sums_ + 8);
        const hn::Full64<uint8_t> d8h;
        auto emit = [&](size_t x) {
            uint8_t* to = out_ + (x * lines_ + y0_) * P_;
            hn::StoreU(hn::TruncateTo(d8h, divide(sumLo)), d8h, to);
            hn::StoreU(hn::TruncateTo(d8h, divide(sumHi)), d8h, to + 8);
        };
        size_t x = x_;
        for (; x < end && x < r_; ++x) {
            LoadUpTo(x + r_);
            sumLo = hn::Add(sumLo, hn::Sub(Low(Column(x + r_)), Low(first_)));
            sumHi = hn::Add(sumHi, hn::Sub(High(Column(x + r_)), High(first_)));
            emit(x);
        }
        for (; x < end && x + r_ < n_; ++x) {
            LoadUpTo(x + r_);
            sumLo = hn::Add(sumLo, hn::Sub(Low(Column(x + r_)), Low(Column(x - r_))));
            sumHi = hn::Add(sumHi, hn::Sub(High(Column(x + r_)), High(Column(x - r_))));
            emit(x);
        }
        for (; x < end; ++x) {
            sumLo = hn::Add(sumLo, hn::Sub(Low(last_), Low(Column(x - r_))));
            sumHi = hn::Add(sumHi, hn::Sub(High(last_), High(Column(x - r_))));
            emit(x);
        }
        x_ = x;
        hn::Store(sumLo, d16, sums_);
        hn::Store(sumHi, d16, sums_ + 8);
    }

private:
    // A span reaches 2r <= 256 columns back, and blocks load at most 16 ahead.
    static constexpr size_t kRing = 512;
    static_assert(kRing >= 256 + 2 * 16);

    static hn::Vec<D16> Low(const uint8_t* c) { return hn::PromoteTo(D16(), hn::LoadU(hn::Full64<uint8_t>(), c)); }
    static hn::Vec<D16> High(const uint8_t* c) { return Low(c + 8); }
    const uint8_t* Column(size_t x) const { return ring_[x & ringMask_]; }

    // Column x (x < n + 2) of the group, sample by sample; past the end of a
    // line, the next line's samples, or on the last line its last sample.
    void Gather(size_t x, uint8_t* to) const {
        for (size_t l = 0; l < L_; ++l) {
            const size_t y = y0_ + l;
            const size_t at = x < n_ || y + 1 < lines_ ? y * n_ + x : y * n_ + n_ - 1;
            std::memcpy(to + l * P_, in_ + at * P_, P_);
        }
    }

    // Makes columns up to x available: whole blocks of 16 / P samples of
    // every line transposed in registers, the rest gathered.
    void LoadUpTo(size_t x) {
        const size_t block = L_;
        while (loaded_ <= x) {
            if (loaded_ + block > n_) {
                Gather(loaded_, ring_[loaded_ & ringMask_]);
                ++loaded_;
                continue;
            }
            const D8 d8;
            Bytes v[L_];
            for (size_t l = 0; l < L_; ++l) v[l] = hn::LoadU(d8, in_ + ((y0_ + l) * n_ + loaded_) * P_);
            constexpr unsigned bits = P_ == 1 ? 4 : 2;
            if constexpr (P_ == 1) {
                InterleaveStage<uint8_t, L_>(v);
                InterleaveStage<uint16_t, L_>(v);
            }
            InterleaveStage<uint32_t, L_>(v);
            InterleaveStage<uint64_t, L_>(v);
            for (size_t i = 0; i < L_; ++i) hn::Store(v[i], d8, ring_[(loaded_ + ReverseBits(i, bits)) & ringMask_]);
            loaded_ += block;
        }
    }

    const uint8_t* in_ = nullptr;
    uint8_t* out_ = nullptr;
    size_t n_ = 0, lines_ = 0, r_ = 0, y0_ = 0;
    size_t loaded_ = 0, x_ = 0, ringMask_ = kRing - 1;
    alignas(16) uint16_t sums_[16];
    alignas(16) uint8_t first_[16], last_[16];
    alignas(16) uint8_t ring_[kRing][16];
};

// Runs the groups of 16 / P lines sixteen at a time, 64 outputs of each in
// turn: 256 bytes of each output line at a time.
template <size_t P>
void BoxGroups(const uint8_t* in, uint8_t* out, size_t n, size_t lines, size_t r, size_t groups) {
    constexpr size_t kSideBySide = 16, kChunk = 64, kLines = BoxGroup<P>::L_;
    const LaneDivide<hn::Full128<uint16_t>, 16> divide(
        convolution::MagicDivisor<16>::For(static_cast<uint32_t>(2 * r)));
    BoxGroup<P> side[kSideBySide];
    for (size_t g = 0; g < groups; g += kSideBySide) {
        const size_t count = std::min(kSideBySide, groups - g);
        for (size_t k = 0; k < count; ++k) side[k].start(in, out, n, lines, r, (g + k) * kLines);
        for (size_t x = 0; x < n; x += kChunk)
            for (size_t k = 0; k < count; ++k) side[k].advance(std::min(n, x + kChunk), divide);
    }
}

// ---- Box filter, both passes at once ----------------------------------------------

// n / 2r for a span of 2r, by a shift when 2r is a power of two (the usual
// odd kernel sizes 3, 7, 15, ... give one) and by the magic number otherwise.
template <class D>
struct SpanDivide {
    LaneDivide<D, 16> magic;
    int shift;  // -1: use `magic`
    uint32_t span;
    explicit SpanDivide(size_t r)
        : magic(convolution::MagicDivisor<16>::For(static_cast<uint32_t>(2 * r))),
          shift(std::has_single_bit(2 * r) ? std::countr_zero(2 * r) : -1),
          span(static_cast<uint32_t>(2 * r)) {}
    hn::Vec<D> operator()(hn::Vec<D> n) const { return shift >= 0 ? hn::ShiftRightSame(n, shift) : magic(n); }
};

using DS = hn::ScalableTag<uint16_t>;
using DB = hn::Rebind<uint8_t, DS>;

// out[i] = sums[i] / 2r as bytes, for i < count.
void SumsToBytes(const uint16_t* sums, uint8_t* out, size_t count, const SpanDivide<DS>& divide) {
    const DS ds;
    const DB db;
    const size_t N = hn::Lanes(ds);
    size_t i = 0;
    for (; i + N <= count; i += N) hn::StoreU(hn::TruncateTo(db, divide(hn::LoadU(ds, sums + i))), db, out + i);
    for (; i < count; ++i) out[i] = static_cast<uint8_t>(sums[i] / divide.span);
}

// A pixel's P channels in 16-bit lanes, and a vector of 8 / P such pixels.
template <size_t P>
hn::Vec128<uint16_t> AllPixels(hn::Vec<hn::CappedTag<uint16_t, P>> one) {
    const hn::Full128<uint16_t> d;
    if constexpr (P == 4) return hn::Combine(d, one, one);
    else return hn::Set(d, hn::GetLane(one));
}
template <size_t P>
hn::Vec<hn::CappedTag<uint16_t, P>> OnePixel(hn::Vec128<uint16_t> all) {
    if constexpr (P == 4) return hn::LowerHalf(all);
    else return hn::Set(hn::CappedTag<uint16_t, P>(), hn::GetLane(all));
}
// The last pixel of each 16-byte block of v in every pixel of that block.
template <size_t P, class V>
V LastPixel(V v) {
    if constexpr (P == 4) {
        const hn::DFromV<V> d;
        const hn::Repartition<uint64_t, decltype(d)> d64;
        return hn::BitCast(d, hn::InterleaveUpper(d64, hn::BitCast(d64, v), hn::BitCast(d64, v)));
    } else {
        return hn::Broadcast<7>(v);
    }
}

// One running sum along a line of n >= 2r pixels, for outputs [x0, x1) into
// out (its bytes from x0 on): with the line at least a span long the three
// loops of the running sum reduce to a sum over the span with positions
// clamped to the line, started directly at x0 and then run on.
template <size_t P>
void BoxAlongSpan(const uint8_t* line, size_t n, size_t r, size_t x0, size_t x1, uint8_t* out,
                  const SpanDivide<DS>& divide, size_t ahead) {
    const hn::CappedTag<uint8_t, P> d8;
    const hn::CappedTag<uint16_t, P> d16;
    auto sample = [&](size_t x) { return hn::PromoteTo(d16, hn::LoadU(d8, line + x * P)); };
    // The span of x0 - 1: positions x0 - r .. x0 + r - 1.
    auto sum = hn::Zero(d16);
    for (ptrdiff_t t = static_cast<ptrdiff_t>(x0 - r); t < static_cast<ptrdiff_t>(x0 + r); ++t)
        sum = hn::Add(sum, sample(static_cast<size_t>(std::clamp<ptrdiff_t>(t, 0, static_cast<ptrdiff_t>(n) - 1))));
    constexpr size_t kBlock = 1024 / P;
    alignas(64) uint16_t sums[kBlock * P];
    for (size_t xb = x0; xb < x1; xb += kBlock) {
        const size_t xe = std::min(x1, xb + kBlock);
        uint16_t* to = sums;
        // Outputs [from, end) adding position x + r and dropping x - r, each
        // fixed at the line's end where it would pass it.
        auto run = [&](size_t from, size_t end, const uint8_t* add, size_t addStep, const uint8_t* drop,
                       size_t dropStep) {
            size_t x = from;
            // Inside the line both positions move: a vector of differences
            // at a time, its prefix sum across pixels added to the carried
            // sum (which then advances by the last pixel's prefix, so the
            // loop carries one addition per vector).
            if (addStep == P && dropStep == P) {
                const hn::Full128<uint16_t> dw;
                const hn::Full64<uint8_t> d8w;
                constexpr size_t kStep = 8 / P;
                auto carry = AllPixels<P>(sum);
                for (; x + kStep <= end; x += kStep, add += 8, drop += 8, to += 8) {
                    // The next line, which the next call reads: its pages
                    // come in before the hardware would start on them.
                    hwy::Prefetch(add + ahead);
                    auto v = hn::Sub(hn::PromoteTo(dw, hn::LoadU(d8w, add)), hn::PromoteTo(dw, hn::LoadU(d8w, drop)));
                    v = hn::Add(v, hn::ShiftLeftLanes<P>(dw, v));
                    if constexpr (P == 1) {
                        v = hn::Add(v, hn::ShiftLeftLanes<2>(dw, v));
                        v = hn::Add(v, hn::ShiftLeftLanes<4>(dw, v));
                    }
                    hn::StoreU(hn::Add(v, carry), dw, to);
                    carry = hn::Add(carry, LastPixel<P>(v));
                }
                sum = OnePixel<P>(carry);
            }
            for (; x < end; ++x, add += addStep, drop += dropStep, to += P) {
                sum = hn::Add(sum, hn::Sub(hn::PromoteTo(d16, hn::LoadU(d8, add)),
                                           hn::PromoteTo(d16, hn::LoadU(d8, drop))));
                hn::StoreU(sum, d16, to);
            }
        };
        const size_t leftEnd = std::clamp(r, xb, xe), rightStart = std::clamp(n - r, leftEnd, xe);
        run(xb, leftEnd, line + (xb + r) * P, P, line, 0);
        if (leftEnd < rightStart) run(leftEnd, rightStart, line + (leftEnd + r) * P, P, line + (leftEnd - r) * P, P);
        if (rightStart < xe) run(rightStart, xe, line + (n - 1) * P, 0, line + (rightStart - r) * P, P);
        SumsToBytes(sums, out + (xb - x0) * P, (xe - xb) * P, divide);
    }
}

// A vector whose 16-byte blocks come from `apart` bytes apart, and back.
template <class D>
hn::Vec<D> LoadBlocks(D d, const uint8_t* at, size_t apart) {
    if constexpr (hn::MaxLanes(D()) == 16) return hn::LoadU(d, at);
    else return hn::Combine(d, hn::LoadU(hn::Half<D>(), at + apart), hn::LoadU(hn::Half<D>(), at));
}
template <class D>
void StoreBlocks(D d, hn::Vec<D> v, uint8_t* at, size_t apart) {
    if constexpr (hn::MaxLanes(D()) == 16) {
        hn::StoreU(v, d, at);
    } else {
        hn::StoreU(hn::LowerHalf(hn::Half<D>(), v), hn::Half<D>(), at);
        hn::StoreU(hn::UpperHalf(hn::Half<D>(), v), hn::Half<D>(), at + apart);
    }
}

// The interior of a line (outputs whose span lies inside it) as one
// segment per 16-byte block of a vector, each with its own running sum: the
// prefix sums across pixels then stay inside blocks, and the quotients are
// packed to bytes without leaving them. Returns the outputs done, from x0:
// a whole number of steps in each segment.
template <size_t P>
size_t BoxInterior(const uint8_t* line, size_t r, size_t x0, size_t x1, uint8_t* out, size_t ahead) {
    using D8 = hn::CappedTag<uint8_t, 32>;
    using D16 = hn::Repartition<uint16_t, D8>;
    const D8 d8;
    const D16 d16;
    constexpr size_t kSegments = hn::MaxLanes(D8()) / 16, kStep = 16 / P;
    const size_t length = (x1 - x0) / kSegments / kStep * kStep;
    // Each segment starts with a span's direct sum: worth it when the spans are short beside it.
    if (length < 4 * kStep || length < 8 * r) return 0;
    alignas(32) uint16_t start[hn::MaxLanes(D16())];
    for (size_t k = 0; k < kSegments; ++k) {
        const size_t xs = x0 + k * length;
        for (size_t c = 0; c < P; ++c) {
            uint32_t sum = 0;
            for (size_t t = xs - r; t < xs + r; ++t) sum += line[t * P + c];
            for (size_t i = c; i < 8; i += P) start[k * 8 + i] = static_cast<uint16_t>(sum);
        }
    }
    auto carry = hn::Load(d16, start);
    const SpanDivide<D16> divide(r);
    // Bytes 0..7 of a block in the low bytes of the first quotients' lanes,
    // 8..15 in their high bytes, put back in order.
    alignas(32) uint8_t order[hn::MaxLanes(D8())];
    for (size_t i = 0; i < hn::MaxLanes(D8()); ++i) order[i] = static_cast<uint8_t>(i / 16 * 16 + (i % 16 < 8 ? 2 * (i % 16) : 2 * (i % 16 - 8) + 1));
    const auto inOrder = hn::Load(d8, order);
    auto blocks = [&](const uint8_t* at) { return LoadBlocks(d8, at, length * P); };
    const auto zero = hn::Zero(d8);
    for (size_t x = x0; x < x0 + length; x += kStep) {
        const uint8_t* add = line + (x + r) * P;
        const uint8_t* drop = line + (x - r) * P;
        hwy::Prefetch(add + ahead);
        if constexpr (kSegments > 1) hwy::Prefetch(add + length * P + ahead);
        const auto a = blocks(add), b = blocks(drop);
        auto lo = hn::Sub(hn::ZipLower(d16, a, zero), hn::ZipLower(d16, b, zero));
        auto hi = hn::Sub(hn::ZipUpper(d16, a, zero), hn::ZipUpper(d16, b, zero));
        lo = hn::Add(lo, hn::ShiftLeftLanes<P>(d16, lo));
        hi = hn::Add(hi, hn::ShiftLeftLanes<P>(d16, hi));
        if constexpr (P == 1) {
            lo = hn::Add(lo, hn::ShiftLeftLanes<2>(d16, lo));
            hi = hn::Add(hi, hn::ShiftLeftLanes<2>(d16, hi));
            lo = hn::Add(lo, hn::ShiftLeftLanes<4>(d16, lo));
            hi = hn::Add(hi, hn::ShiftLeftLanes<4>(d16, hi));
        }
        hi = hn::Add(hi, LastPixel<P>(lo));
        const auto qlo = divide(hn::Add(lo, carry)), qhi = divide(hn::Add(hi, carry));
        carry = hn::Add(carry, LastPixel<P>(hi));
        const auto bytes = hn::TableLookupBytes(hn::BitCast(d8, hn::Or(qlo, hn::ShiftLeft<8>(qhi))), inOrder);
        StoreBlocks(d8, bytes, out + (x - x0) * P, length * P);
    }
    return kSegments * length;
}

// The box's running sum along one line of n >= 2r pixels, for outputs
// [x0, x1) into out (its bytes from x0 on): the interior by segments, the
// ends by one running sum each.
template <size_t P>
void BoxAlongLine(const uint8_t* line, size_t n, size_t r, size_t x0, size_t x1, uint8_t* out,
                  const SpanDivide<DS>& divide, size_t ahead) {
    const size_t first = std::clamp(r, x0, x1), last = std::clamp(n - r, first, x1);
    const size_t done = BoxInterior<P>(line, r, first, last, out + (first - x0) * P, ahead);
    if (done == 0) return BoxAlongSpan<P>(line, n, r, x0, x1, out, divide, ahead);
    if (x0 < first) BoxAlongSpan<P>(line, n, r, x0, first, out, divide, ahead);
    if (first + done < x1) BoxAlongSpan<P>(line, n, r, first + done, x1, out + (first + done - x0) * P, divide, ahead);
}

// One output row of the vertical running sum: sums += add - drop, out = sums
// / 2r. Streamed rows store whole aligned vectors of bytes (two vectors of
// sums) from the first aligned byte on; the bytes before and after go out
// half a vector, then one, at a time.
void BoxDownStep(uint16_t* sums, const uint8_t* add, const uint8_t* drop, uint8_t* out, size_t count,
                 const SpanDivide<DS>& divide, bool stream) {
    const DS ds;
    const DB db;
    const hn::Repartition<uint8_t, DS> d8;
    const size_t N = hn::Lanes(ds);
    auto one = [&](size_t i) {
        sums[i] = static_cast<uint16_t>(sums[i] + add[i] - drop[i]);
        out[i] = static_cast<uint8_t>(sums[i] / divide.span);
    };
    auto half = [&](size_t i) {
        const auto s = hn::Add(hn::LoadU(ds, sums + i), hn::Sub(hn::PromoteTo(ds, hn::LoadU(db, add + i)),
                                                                hn::PromoteTo(ds, hn::LoadU(db, drop + i))));
        hn::StoreU(s, ds, sums + i);
        return hn::TruncateTo(db, divide(s));
    };
    size_t i = 0;
    if (stream) {
        const auto misaligned = [&](size_t align) { return reinterpret_cast<uintptr_t>(out + i) % align != 0; };
        for (; i < count && misaligned(N); ++i) one(i);
        for (; i + N <= count && misaligned(2 * N); i += N) hn::StoreU(half(i), db, out + i);
        for (; i + 2 * N <= count; i += 2 * N) {
            const auto lo = half(i);
            hn::Stream(hn::Combine(d8, half(i + N), lo), d8, out + i);
        }
    }
    for (; i + N <= count; i += N) hn::StoreU(half(i), db, out + i);
    for (; i < count; ++i) one(i);
}

// Both passes of the box filter at once, for an image at least a span long
// in each direction (so no line is read past its end): the horizontal pass
// runs along rows into a ring of rows kept in the scratch, just ahead of the
// vertical pass, whose running sums go down the columns in vector lanes. The
// bytes are those of the two transposed passes, as the first pass's results
// are truncated before the second reads them; the work is one read of the
// source and one write of the destination, the ring staying in the cache.
// Columns are taken in strips so the vertical sums fit on the stack.
template <size_t P>
void BoxBothWays(const uint8_t* src, uint8_t* dest, uint8_t* ring, size_t width, size_t height, size_t rAcross,
                 size_t rDown) {
    const size_t rowBytes = width * P, slots = std::min(height, 2 * rDown + 1);
    const bool stream = WantsStreaming(rowBytes * height);
    const SpanDivide<DS> across(rAcross), down(rDown);
    const DS ds;
    const DB db;
    const size_t N = hn::Lanes(ds);
    constexpr size_t kStripBytes = 8192;
    static_assert(kStripBytes % P == 0);
    alignas(64) uint16_t sums[kStripBytes];
    for (size_t x0 = 0; x0 < width; x0 += kStripBytes / P) {
        const size_t x1 = std::min(width, x0 + kStripBytes / P), bytes = (x1 - x0) * P;
        auto row = [&](size_t y) { return ring + (y % slots) * rowBytes + x0 * P; };
        auto acrossRow = [&](size_t y) { BoxAlongLine<P>(src + y * rowBytes, width, rAcross, x0, x1, row(y), across, y + 1 < height ? rowBytes : 0);
        };
        for (size_t y = 0; y < rDown; ++y) acrossRow(y);
        // The span of row -1: row 0 r + 1 times, then rows 1 .. r - 1.
        const auto times = hn::Set(ds, static_cast<uint16_t>(rDown + 1));
        size_t i = 0;
        for (; i + N <= bytes; i += N) {
            auto s = hn::Mul(hn::PromoteTo(ds, hn::LoadU(db, row(0) + i)), times);
            for (size_t y = 1; y < rDown; ++y) s = hn::Add(s, hn::PromoteTo(ds, hn::LoadU(db, row(y) + i)));
            hn::Store(s, ds, sums + i);
        }
        for (; i < bytes; ++i) {
            uint32_t s = row(0)[i] * static_cast<uint32_t>(rDown + 1);
            for (size_t y = 1; y < rDown; ++y) s += row(y)[i];
            sums[i] = static_cast<uint16_t>(s);
        }
        for (size_t y = 0; y < height; ++y) {
            if (y + rDown < height) acrossRow(y + rDown);
            BoxDownStep(sums, row(std::min(y + rDown, height - 1)), row(y >= rDown ? y - rDown : 0),
                        dest + y * rowBytes + x0 * P, bytes, down, stream);
        }
    }
    if (stream) hwy::FlushStream();
}

}  // namespace
#endif

void ConvolveRowVector(const uint8_t* const* rows, uint8_t* out, size_t first, size_t count,
                       const ConvolveShape& s) {
#if HWY_TARGET == HWY_SCALAR
    convolution::ConvolveRow(rows, out, first, count, s);
#else
    const size_t P = s.pixelBytes, begin = first * P, end = (first + count) * P, half = s.kernelWidth / 2;
    // A divisor of 0, or one above every possible 16-bit sum, gives 0 everywhere.
    if (s.divisor == 0 || (s.sums16 && s.divisor > 0xFFFF)) {
        std::memset(out + begin, 0, end - begin);
        return;
    }
    // Bytes of the pixels whose taps all lie inside the row.
    const size_t inside = s.width > 2 * half ? (s.width - half) * P : 0;
    const size_t lo = std::max(begin, half * P), hi = std::min(end, inside);
    size_t done = begin, stop = begin;
    if (lo < hi) {
        done = lo;
        stop = s.sums16 ? ConvolveInterior<hn::ScalableTag<uint16_t>>(
                              rows, out, lo, hi, s, LaneDivide<hn::ScalableTag<uint16_t>, 16>(s.divide16))
                        : ConvolveInterior<hn::ScalableTag<uint32_t>>(
                              rows, out, lo, hi, s, LaneDivide<hn::ScalableTag<uint32_t>, 32>(s.divide32));
    }
    for (size_t b = begin; b < done; ++b) out[b] = convolution::ConvolveByte(rows, b, s);
    for (size_t b = stop; b < end; ++b) out[b] = convolution::ConvolveByte(rows, b, s);
#endif
}

#if HWY_TARGET != HWY_SCALAR
// Rows [first, last) of a 3 x 3 column-times-row kernel: four output rows at
// a time where the rows they read lie inside the image (their six rows loaded
// once for the four, not three times each), the others one at a time. The
// bytes are those of ConvolveRowVector row by row.
void SeparableBand3(const Quorin_Buffer& src, const Quorin_Buffer& dest, size_t first, size_t last, size_t width,
                    const ConvolveShape& s) {
    constexpr size_t kR = 4, kH = 3, kHalf = kH / 2;
    const size_t P = s.pixelBytes, rowEnd = width * P, V = 2 * hn::Lanes(hn::CappedTag<uint16_t, 16>());
    // The bytes of the pixels whose taps all lie inside the row, as ConvolveRowVector takes them.
    const size_t lo = kHalf * P, hi = width > 2 * kHalf ? (width - kHalf) * P : 0;
    const auto* in = static_cast<const uint8_t*>(src.data);
    auto* to = static_cast<uint8_t*>(dest.data);
    const bool groups = hi >= lo + V && (!s.stream || dest.rowBytes % 64 == 0);
    const uint8_t* rows[kH + kR - 1];
    for (size_t y = first; y < last;) {
        if (groups && y >= kHalf && y + kR <= last && y + kR + kHalf <= src.height) {
            uint8_t* outs[kR];
            for (size_t i = 0; i < kH + kR - 1; ++i) rows[i] = in + (y - kHalf + i) * src.rowBytes;
            for (size_t r = 0; r < kR; ++r) outs[r] = to + (y + r) * dest.rowBytes;
            if (SeparableMirrored(rows, s)) ConvolveSeparable<3, 3, kR, true>(rows, outs, lo, hi, s);
            else ConvolveSeparable<3, 3, kR, false>(rows, outs, lo, hi, s);
            for (size_t r = 0; r < kR; ++r) {
                for (size_t b = 0; b < lo; ++b) outs[r][b] = convolution::ConvolveByte(rows + r, b, s);
                for (size_t b = hi; b < rowEnd; ++b) outs[r][b] = convolution::ConvolveByte(rows + r, b, s);
            }
            y += kR;
        } else {
            for (size_t i = 0; i < kH; ++i)
                rows[i] = y + i >= kHalf && y + i - kHalf < src.height ? in + (y + i - kHalf) * src.rowBytes : nullptr;
            ConvolveRowVector(rows, to + y * dest.rowBytes, 0, width, s);
            ++y;
        }
    }
}
#endif

void ConvolveBandVector(const Quorin_Buffer& src, const Quorin_Buffer& dest, size_t first, size_t last, size_t width,
                        const ConvolveShape& s) {
#if HWY_TARGET != HWY_SCALAR
    if (s.tentColumn) {
        TentDown<hn::CappedTag<uint16_t, 16>>(src, dest, first, last, width, s);
        if (s.stream) hwy::FlushStream();
        return;
    }
    // Divisors of 0 and past 16 bits are ConvolveRowVector's to answer.
    if (s.separable && s.kernelHeight == 3 && s.kernelWidth == 3 && s.divisor != 0 && s.divisor <= 0xFFFF) {
        SeparableBand3(src, dest, first, last, width, s);
        if (s.stream) hwy::FlushStream();
        return;
    }
#endif
    convolution::ConvolveRows(src, dest, first, last, width, s, &ConvolveRowVector);
#if HWY_TARGET != HWY_SCALAR
    if (s.stream) hwy::FlushStream();
#endif
}

void BoxPassVector(const uint8_t* in, uint8_t* out, size_t n, size_t lines, size_t r, size_t pixelBytes) {
#if HWY_TARGET == HWY_SCALAR
    convolution::BoxPass(in, out, n, lines, r, pixelBytes);
#else
    if (pixelBytes != 1 && pixelBytes != 4) {
        convolution::BoxPass(in, out, n, lines, r, pixelBytes);
        return;
    }
    const size_t group = 16 / pixelBytes, groups = lines / group;
    if (pixelBytes == 1) BoxGroups<1>(in, out, n, lines, r, groups);
    else BoxGroups<4>(in, out, n, lines, r, groups);
    convolution::BoxLines(in, out, n, lines, r, pixelBytes, groups * group, lines);
#endif
}

void BoxVector(const uint8_t* src, uint8_t* dest, uint8_t* scratch, size_t width, size_t height, size_t rAcross,
               size_t rDown, size_t pixelBytes) {
#if HWY_TARGET != HWY_SCALAR
    if (width >= 2 * rAcross && height >= 2 * rDown && (pixelBytes == 1 || pixelBytes == 4)) {
        if (pixelBytes == 1) BoxBothWays<1>(src, dest, scratch, width, height, rAcross, rDown);
        else BoxBothWays<4>(src, dest, scratch, width, height, rAcross, rDown);
        return;
    }
#endif
    BoxPassVector(src, scratch, width, height, rAcross, pixelBytes);
    BoxPassVector(scratch, dest, height, width, rDown, pixelBytes);
}


}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::convolution {

HWY_EXPORT(ConvolveRowVector);
HWY_EXPORT(BoxVector);
HWY_EXPORT(ConvolveBandVector);

const KernelPair<ConvolveRowKernel> kConvolveRowKernels{&ConvolveRow, HWY_DISPATCH_TABLE(ConvolveRowVector)};
const KernelPair<BoxKernel> kBoxKernels{&Box, HWY_DISPATCH_TABLE(BoxVector)};
const KernelPair<ConvolveBandKernel> kConvolveBandKernels{&ConvolveBand, HWY_DISPATCH_TABLE(ConvolveBandVector)};

ConvolveShape MakeConvolveShape(size_t width, size_t pixelBytes, const int16_t* kernel, size_t kernelHeight,
                                size_t kernelWidth, int32_t divisor) {
    ConvolveShape s{width,     pixelBytes, kernel, kernelHeight, kernelWidth, static_cast<uint32_t>(divisor),
                    {},        {},         true,   false, false, false, false, {}, {}};
    uint64_t weights = 0;
    for (size_t i = 0; i < kernelHeight * kernelWidth; ++i) {
        if (kernel[i] < 0) s.sums16 = false;
        else weights += static_cast<uint64_t>(kernel[i]);
    }
    if (weights * 255 > 0xFFFF) s.sums16 = false;
    s.divide32 = MagicDivisor<32>::For(s.divisor);
    // A column times a row: the first non-zero weight's column and row,
    // the column divided by its greatest common divisor.
    if (s.sums16 && kernelHeight > 1 && kernelWidth > 1) {
        size_t pivot = 0;
        while (pivot < kernelHeight * kernelWidth && kernel[pivot] == 0) ++pivot;
        if (pivot < kernelHeight * kernelWidth) {
            const size_t i0 = pivot / kernelWidth, j0 = pivot % kernelWidth;
            int g = 0;
            for (size_t i = 0; i < kernelHeight; ++i) g = std::gcd(g, int{kernel[i * kernelWidth + j0]});
            bool ok = true;
            for (size_t i = 0; i < kernelHeight; ++i) s.down[i] = static_cast<int16_t>(kernel[i * kernelWidth + j0] / g);
            const int c0 = s.down[i0];
            for (size_t j = 0; j < kernelWidth && ok; ++j) {
                ok = kernel[i0 * kernelWidth + j] % c0 == 0;
                s.across[j] = static_cast<int16_t>(kernel[i0 * kernelWidth + j] / c0);
            }
            for (size_t i = 0; i < kernelHeight && ok; ++i)
                for (size_t j = 0; j < kernelWidth && ok; ++j)
                    ok = int{s.down[i]} * int{s.across[j]} == int{kernel[i * kernelWidth + j]};
            s.separable = ok;
        }
    }
    if (s.divisor <= 0xFFFF) s.divide16 = MagicDivisor<16>::For(s.divisor);
    // Triangular weights 1, 2, .., size / 2 + 1, .., 2, 1 in the one column or row.
    auto triangular = [&](size_t size) {
        bool ok = s.sums16 && s.divisor != 0 && s.divisor <= 0xFFFF;
        for (size_t i = 0; i < size && ok; ++i) ok = kernel[i] == static_cast<int16_t>(std::min(i, size - 1 - i) + 1);
        return ok;
    };
    s.tentColumn = kernelWidth == 1 && triangular(kernelHeight);
    s.tentRow = kernelHeight == 1 && kernelWidth > 1 && triangular(kernelWidth);
    return s;
}

}  // namespace quorin::convolution
#endif
