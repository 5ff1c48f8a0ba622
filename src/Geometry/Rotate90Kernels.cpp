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
#include <hwy/highway.h>

#include "Geometry/Rotate90Kernels.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::geometry::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

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
    constexpr size_t S = kTransposeStrip;
    for (size_t i0 = 0; i0 < across; i0 += S) {
        const size_t i1 = i0 + S < across ? i0 + S : across;
        const size_t whole = i0 + (i1 - i0) / 4 * 4;
        size_t j = 0;
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
