// The vector twin of the four-byte transpose (Rotate90Kernels.h): 4 x 4
// tiles of pixels, loaded as four source rows of 128 bits, transposed with
// two rounds of interleaves (32-bit, then 64-bit lanes) and stored as four
// destination rows, reversed where the destination is walked leftward; the
// tiles go in strips of source rows. Pixels outside whole tiles are moved
// one by one, so no byte outside the covered rectangle is read or written.
#include <cstddef>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Geometry/Rotate90Kernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Geometry/Rotate90Kernels.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::geometry::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
// Source rows i..i+7, columns j..j+7, to destination rows j..j+7: 32-bit
// and 64-bit interleaves inside each 128-bit half, then the halves swapped
// across. at(i, j) is where source pixel (i, j) goes.
template <class At>
HWY_INLINE void TileOf8(const uint8_t* src, size_t srcRowBytes, const At& at, bool rightward, size_t i, size_t j) {
    const hn::FixedTag<uint32_t, 8> d;
    const hn::Repartition<uint64_t, decltype(d)> d64;
    hn::Vec<decltype(d)> r[8];
    for (size_t k = 0; k < 8; ++k)
        r[k] = hn::LoadU(d, reinterpret_cast<const uint32_t*>(src + (i + k) * srcRowBytes + j * 4));
    hn::Vec<decltype(d64)> t[8];
    for (size_t k = 0; k < 4; ++k) {
        t[2 * k] = hn::BitCast(d64, hn::InterleaveLower(d, r[2 * k], r[2 * k + 1]));
        t[2 * k + 1] = hn::BitCast(d64, hn::InterleaveUpper(d, r[2 * k], r[2 * k + 1]));
    }
    // u[4h + m]: columns m and m + 4 of rows 4h..4h+3, in the low and high halves.
    hn::Vec<decltype(d)> u[8];
    for (size_t h = 0; h < 2; ++h) {
        const auto* q = t + 4 * h;
        u[4 * h + 0] = hn::BitCast(d, hn::InterleaveLower(d64, q[0], q[2]));
        u[4 * h + 1] = hn::BitCast(d, hn::InterleaveUpper(d64, q[0], q[2]));
        u[4 * h + 2] = hn::BitCast(d, hn::InterleaveLower(d64, q[1], q[3]));
        u[4 * h + 3] = hn::BitCast(d, hn::InterleaveUpper(d64, q[1], q[3]));
    }
    for (size_t m = 0; m < 8; ++m) {
        const auto column = m < 4 ? hn::ConcatLowerLower(d, u[4 + m], u[m]) : hn::ConcatUpperUpper(d, u[m], u[m - 4]);
        if (rightward) hn::StoreU(column, d, reinterpret_cast<uint32_t*>(at(i, j + m)));
        else hn::StoreU(hn::Reverse(d, column), d, reinterpret_cast<uint32_t*>(at(i + 7, j + m)));
    }
}
#endif

void TransposeWords(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                    ptrdiff_t destPixelStep, size_t across, size_t down) {
#if HWY_TARGET == HWY_SCALAR
    TransposeBlocked<4>(src, srcRowBytes, dest, destRowStep, destPixelStep, across, down);
#else
    const hn::FixedTag<uint32_t, 4> d;
    const hn::Repartition<uint64_t, decltype(d)> d64;
    auto at = [&](size_t i, size_t j) {
        return dest + static_cast<ptrdiff_t>(j) * destRowStep + static_cast<ptrdiff_t>(i) * destPixelStep;
    };
    auto one = [&](size_t i, size_t j) { CopyPixel<4>(at(i, j), src + i * srcRowBytes + j * 4); };
    // Source rows i..i+3, columns j..j+3, to destination rows j..j+3.
    auto tile = [&](size_t i, size_t j) {
        const uint8_t* s = src + i * srcRowBytes + j * 4;
        const auto r0 = hn::LoadU(d, reinterpret_cast<const uint32_t*>(s));
        const auto r1 = hn::LoadU(d, reinterpret_cast<const uint32_t*>(s + srcRowBytes));
        const auto r2 = hn::LoadU(d, reinterpret_cast<const uint32_t*>(s + 2 * srcRowBytes));
        const auto r3 = hn::LoadU(d, reinterpret_cast<const uint32_t*>(s + 3 * srcRowBytes));
        const auto t0 = hn::BitCast(d64, hn::InterleaveLower(d, r0, r1));
        const auto t1 = hn::BitCast(d64, hn::InterleaveUpper(d, r0, r1));
        const auto t2 = hn::BitCast(d64, hn::InterleaveLower(d, r2, r3));
        const auto t3 = hn::BitCast(d64, hn::InterleaveUpper(d, r2, r3));
        const hn::Vec<decltype(d)> columns[4] = {
            hn::BitCast(d, hn::InterleaveLower(d64, t0, t2)), hn::BitCast(d, hn::InterleaveUpper(d64, t0, t2)),
            hn::BitCast(d, hn::InterleaveLower(d64, t1, t3)), hn::BitCast(d, hn::InterleaveUpper(d64, t1, t3))};
        for (size_t m = 0; m < 4; ++m) {
            // Source rows i..i+3 of column j+m, in the order the destination walks them.
            if (destPixelStep > 0) {
                hn::StoreU(columns[m], d, reinterpret_cast<uint32_t*>(at(i, j + m)));
            } else {
                hn::StoreU(hn::Reverse(d, columns[m]), d, reinterpret_cast<uint32_t*>(at(i + 3, j + m)));
            }
        }
    };
    // Strips of kTransposeStrip source rows, each walked along its whole
    // length: the strip's rows are read as that many ascending streams, and
    // each destination row gets the strip's whole run of pixels (several
    // cache lines) at once. Measured on 4096 x 4096, single-threaded,
    // processor time per call on a loaded machine: 26 ms with the 32 x 32
    // blocks of the scalar transpose, 19 ms with strips of 16 rows, 15 ms
    // with 64, 16 ms with 128.
    //
    // Where vectors hold 256 bits, 8 x 8 tiles go first: each destination
    // row then takes 32 bytes a store, and the tile needs 24 shuffles per 64
    // pixels where 4 x 4 tiles need 32.
    constexpr size_t S = kTransposeStrip;
    for (size_t i0 = 0; i0 < across; i0 += S) {
        const size_t i1 = i0 + S < across ? i0 + S : across;
        const size_t whole = i0 + (i1 - i0) / 4 * 4;
        size_t j = 0;
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
        constexpr size_t kAhead = 32;
        const size_t whole8 = i0 + (i1 - i0) / 8 * 8;
        for (; j + 8 <= down; j += 8) {
            // A strip's source rows are more streams than the processor
            // follows on its own: each row's line after next is asked for.
            // (Streaming the destination rows measured no faster: each
            // tile leaves eight rows' lines half written at once.)
            if (j % 16 == 0 && j + kAhead < down)
                for (size_t i = i0; i < i1; ++i) hwy::Prefetch(src + i * srcRowBytes + (j + kAhead) * 4);
            for (size_t i = i0; i < whole8; i += 8) TileOf8(src, srcRowBytes, at, destPixelStep > 0, i, j);
            for (size_t i = whole8; i < whole; i += 4) tile(i, j), tile(i, j + 4);
            for (size_t i = whole; i < i1; ++i)
                for (size_t m = 0; m < 8; ++m) one(i, j + m);
        }
#endif
        for (; j + 4 <= down; j += 4) {
            for (size_t i = i0; i < whole; i += 4) tile(i, j);
            for (size_t i = whole; i < i1; ++i)
                for (size_t m = 0; m < 4; ++m) one(i, j + m);
        }
        for (; j < down; ++j)
            for (size_t i = i0; i < i1; ++i) one(i, j);
    }
#endif
}

}  // namespace quorin::geometry::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::geometry {

HWY_EXPORT(TransposeWords);

const KernelPair<TransposeKernel> kTransposeWords{&TransposeBlocked<4>, HWY_DISPATCH_TABLE(TransposeWords)};

}  // namespace quorin::geometry
#endif
