// The vector twin of the four-byte transpose (Rotate90Kernels.h): 4 x 4
// tiles of pixels, loaded as four source rows of 128 bits, transposed with
// two rounds of interleaves (32-bit, then 64-bit lanes) and stored as four
// destination rows, reversed where the destination is walked leftward; the
// tiles go in strips of source rows. Where vectors hold 256 bits, 8 x 8 tiles
// go first, and on AVX2 large destinations are streamed whole lines at a time
// from square tiles. Pixels outside whole tiles are moved one by one, so no
// byte outside the covered rectangle is read or written.
#include <cstddef>
#include <cstdint>
#include <utility>

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
using Words8 = hn::FixedTag<uint32_t, 8>;

// Source rows i..i+7, columns j..j+7 (from `s`, the pixel (i, j)): columns[m]
// holds column j + m, rows in order. 32-bit and 64-bit interleaves inside
// each 128-bit half, then the halves swapped across.
HWY_INLINE void ColumnsOf8(const uint8_t* s, size_t srcRowBytes, hn::Vec<Words8> columns[8]) {
    const Words8 d;
    const hn::Repartition<uint64_t, Words8> d64;
    hn::Vec<Words8> r[8];
    for (size_t k = 0; k < 8; ++k) r[k] = hn::LoadU(d, reinterpret_cast<const uint32_t*>(s + k * srcRowBytes));
    hn::Vec<decltype(d64)> t[8];
    for (size_t k = 0; k < 4; ++k) {
        t[2 * k] = hn::BitCast(d64, hn::InterleaveLower(d, r[2 * k], r[2 * k + 1]));
        t[2 * k + 1] = hn::BitCast(d64, hn::InterleaveUpper(d, r[2 * k], r[2 * k + 1]));
    }
    // u[4h + m]: columns m and m + 4 of rows 4h..4h+3, in the low and high halves.
    hn::Vec<Words8> u[8];
    for (size_t h = 0; h < 2; ++h) {
        const auto* q = t + 4 * h;
        u[4 * h + 0] = hn::BitCast(d, hn::InterleaveLower(d64, q[0], q[2]));
        u[4 * h + 1] = hn::BitCast(d, hn::InterleaveUpper(d64, q[0], q[2]));
        u[4 * h + 2] = hn::BitCast(d, hn::InterleaveLower(d64, q[1], q[3]));
        u[4 * h + 3] = hn::BitCast(d, hn::InterleaveUpper(d64, q[1], q[3]));
    }
    for (size_t m = 0; m < 8; ++m)
        columns[m] = m < 4 ? hn::ConcatLowerLower(d, u[4 + m], u[m]) : hn::ConcatUpperUpper(d, u[m], u[m - 4]);
}

// Source rows i..i+7, columns j..j+7 to destination rows j..j+7. at(i, j)
// is where source pixel (i, j) goes.
template <class At>
HWY_INLINE void TileOf8(const uint8_t* src, size_t srcRowBytes, const At& at, bool rightward, size_t i, size_t j) {
    const Words8 d;
    hn::Vec<Words8> columns[8];
    ColumnsOf8(src + i * srcRowBytes + j * 4, srcRowBytes, columns);
    for (size_t m = 0; m < 8; ++m) {
        if (rightward) hn::StoreU(columns[m], d, reinterpret_cast<uint32_t*>(at(i, j + m)));
        else hn::StoreU(hn::Reverse(d, columns[m]), d, reinterpret_cast<uint32_t*>(at(i + 7, j + m)));
    }
}
#endif

#if HWY_TARGET != HWY_SCALAR
// The transpose in strips of source rows, plain stores: the whole of it where
// vectors hold 128 bits or 512, the edges the tiles leave elsewhere.
void TransposeInStrips(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                       ptrdiff_t destPixelStep, size_t across, size_t down) {
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
}
#endif

#if HWY_TARGET == HWY_AVX2
// A block of source pixels fills whole destination lines: kLineRows<kBytes>
// source rows (one 64-byte line's worth of pixels) by kBlockColumns<kBytes>
// source columns, one line each.
template <size_t kBytes>
inline constexpr size_t kLineRows = 64 / kBytes;
template <size_t kBytes>
inline constexpr size_t kBlockColumns = kBytes == 4 ? 8 : 2;

// Streams a block's lines, each by its two 32-byte halves back to back, so
// that every line leaves the processor whole and none is read in first
// (sixteen-byte pixels measured 56 ms for 4096 x 4096 where two lines took
// their halves in turn, 40-46 ms this way). `line(m)` is the start of the
// line that takes column j + m.
template <size_t kBytes, class Line>
HWY_INLINE void StreamBlock(const uint8_t* s, size_t srcRowBytes, const Line& line, bool rightward) {
    static_assert(kBytes == 4 || kBytes == 16);
    const Words8 d;
    hn::Vec<Words8> first[kBlockColumns<kBytes>], second[kBlockColumns<kBytes>];
    if constexpr (kBytes == 4) {
        // Two 8 x 8 tiles a line.
        hn::Vec<Words8> upper[8], lower[8];
        ColumnsOf8(s, srcRowBytes, upper);
        ColumnsOf8(s + 8 * srcRowBytes, srcRowBytes, lower);
        for (size_t m = 0; m < 8; ++m) {
            first[m] = rightward ? upper[m] : hn::Reverse(d, lower[m]);
            second[m] = rightward ? lower[m] : hn::Reverse(d, upper[m]);
        }
    } else {
        // The two pixels of a row pair's vector go to two lines.
        hn::Vec<Words8> r[4];
        for (size_t k = 0; k < 4; ++k) r[k] = hn::LoadU(d, reinterpret_cast<const uint32_t*>(s + k * srcRowBytes));
        if (!rightward) std::swap(r[0], r[3]), std::swap(r[1], r[2]);
        first[0] = hn::ConcatLowerLower(d, r[1], r[0]), first[1] = hn::ConcatUpperUpper(d, r[1], r[0]);
        second[0] = hn::ConcatLowerLower(d, r[3], r[2]), second[1] = hn::ConcatUpperUpper(d, r[3], r[2]);
    }
    for (size_t m = 0; m < kBlockColumns<kBytes>; ++m) {
        auto* p = reinterpret_cast<uint32_t*>(line(m));
        hn::Stream(first[m], d, p);
        hn::Stream(second[m], d, p + 8);
    }
}

// Source rows [0, rows) by kLineRows, columns [0, columns) by kBlockColumns, in square
// tiles of 512 bytes of pixels a side; a tile goes by bands of kLineRows source
// rows, each along its width in blocks of one line's pixels each way, which
// read kLineRows source lines and write as many destination lines whole, so no
// line is needed again once its block is done. A tile touches 128 source
// and 128 destination pages, where the strips meet a new destination page
// every 8 pixels. The blocks' source lines are too scattered for the
// processor to fetch them ahead on its own: each block asks for the same
// block of the next tile (one tile along, or the first tile of the next band
// of tiles).
// Measured on 4096 x 4096 four-byte pixels, AVX2, single-threaded: 13.5-15.5
// ms a turn against 23-34 ms for the strips, 52-60% of the streaming copy's
// bytes a second in the same runs; sixteen-byte pixels 40-46 ms against 110-
// 122 ms moved one by one. Tiles of 64 and 256 pixels measured the same, 32
// slower (20 ms). Without the requests ahead the benchmark's back-to-back
// calls measured the same, and calls between other copies 20-25% slower.
template <size_t kBytes>
void StreamInTiles(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                   ptrdiff_t destPixelStep, size_t rows, size_t columns) {
    constexpr size_t kTileSide = 512 / kBytes, kLine = kLineRows<kBytes>;
    const bool rightward = destPixelStep > 0;
    // Leftward walks start a band's line at its last source row.
    const ptrdiff_t lineShift = rightward ? 0 : static_cast<ptrdiff_t>(kLine - 1) * destPixelStep;
    for (size_t i0 = 0; i0 < rows; i0 += kTileSide) {
        const size_t i1 = i0 + kTileSide < rows ? i0 + kTileSide : rows;
        for (size_t j0 = 0; j0 < columns; j0 += kTileSide) {
            const size_t j1 = j0 + kTileSide < columns ? j0 + kTileSide : columns;
            const bool lastAlong = j1 == columns;
            for (size_t i = i0; i < i1; i += kLine) {
                const uint8_t* band = src + i * srcRowBytes;
                for (size_t j = j0; j < j1; j += kBlockColumns<kBytes>) {
                    if ((j - j0) % kLine == 0) {
                        const size_t nextI = lastAlong ? i + kTileSide : i, nextJ = lastAlong ? j - j0 : j + kTileSide;
                        if (nextI + kLine <= rows && nextJ < columns)
                            for (size_t k = 0; k < kLine; ++k)
                                hwy::Prefetch(src + (nextI + k) * srcRowBytes + nextJ * kBytes);
                    }
                    uint8_t* first = dest + static_cast<ptrdiff_t>(j) * destRowStep +
                                     static_cast<ptrdiff_t>(i) * destPixelStep + lineShift;
                    StreamBlock<kBytes>(band + j * kBytes, srcRowBytes,
                                        [&](size_t m) { return first + static_cast<ptrdiff_t>(m) * destRowStep; },
                                        rightward);
                }
            }
        }
    }
    hwy::FlushStream();
}

// The first source row whose band of `line` rows starts a line in every
// destination row, or `line` where none does (rows not a whole number of
// lines apart, or pixels off four-byte boundaries).
size_t FirstLineStartingRow(const uint8_t* dest, ptrdiff_t destRowStep, ptrdiff_t destPixelStep, size_t line) {
    if (static_cast<size_t>(destRowStep) % 64 != 0) return line;
    const ptrdiff_t lineFirst = destPixelStep > 0 ? 0 : static_cast<ptrdiff_t>(line) - 1;
    size_t i = 0;
    const auto start = [&](size_t row) {
        return reinterpret_cast<uintptr_t>(dest) +
               static_cast<uintptr_t>((static_cast<ptrdiff_t>(row) + lineFirst) * destPixelStep);
    };
    while (i < line && start(i) % 64 != 0) ++i;
    return i;
}

// Large destinations are streamed in tiles of whole lines; the source rows
// before the first band that starts a line, the rows after the last whole
// band and the columns right of the last whole block go to `edges` (the
// same arguments as the transpose, without `stream`), which takes the whole
// rectangle where there are no whole blocks or no streaming.
template <size_t kBytes, class Edges>
void StreamWholeLines(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                      ptrdiff_t destPixelStep, size_t across, size_t down, bool stream, const Edges& edges) {
    constexpr size_t kLine = kLineRows<kBytes>, kColumns = kBlockColumns<kBytes>;
    const size_t head = stream ? FirstLineStartingRow(dest, destRowStep, destPixelStep, kLine) : kLine;
    const size_t rows = head < kLine && across > head ? (across - head) / kLine * kLine : 0;
    const size_t columns = down / kColumns * kColumns;
    if (rows == 0 || columns == 0) return edges(src, srcRowBytes, dest, destRowStep, destPixelStep, across, down);
    const auto at = [&](size_t i, size_t j) {
        return dest + static_cast<ptrdiff_t>(j) * destRowStep + static_cast<ptrdiff_t>(i) * destPixelStep;
    };
    const uint8_t* tiled = src + head * srcRowBytes;
    StreamInTiles<kBytes>(tiled, srcRowBytes, at(head, 0), destRowStep, destPixelStep, rows, columns);
    const size_t after = head + rows;
    edges(src, srcRowBytes, dest, destRowStep, destPixelStep, head, down);
    edges(src + after * srcRowBytes, srcRowBytes, at(after, 0), destRowStep, destPixelStep, across - after, down);
    edges(tiled + columns * kBytes, srcRowBytes, at(head, columns), destRowStep, destPixelStep, rows, down - columns);
}
#endif

void TransposeWords(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                    ptrdiff_t destPixelStep, size_t across, size_t down, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    TransposeBlocked<4>(src, srcRowBytes, dest, destRowStep, destPixelStep, across, down, stream);
#elif HWY_TARGET == HWY_AVX2
    StreamWholeLines<4>(src, srcRowBytes, dest, destRowStep, destPixelStep, across, down, stream, &TransposeInStrips);
#else
    (void)stream;
    TransposeInStrips(src, srcRowBytes, dest, destRowStep, destPixelStep, across, down);
#endif
}

// Sixteen-byte pixels are moved one by one except on AVX2, whose large
// destinations are streamed whole lines at a time as above.
void TransposeQuads(const uint8_t* src, size_t srcRowBytes, uint8_t* dest, ptrdiff_t destRowStep,
                    ptrdiff_t destPixelStep, size_t across, size_t down, bool stream) {
#if HWY_TARGET == HWY_AVX2
    const auto edges = [stream](const uint8_t* s, size_t sr, uint8_t* d, ptrdiff_t rowStep, ptrdiff_t pixelStep,
                                size_t a, size_t b) { TransposeBlocked<16>(s, sr, d, rowStep, pixelStep, a, b, stream); };
    StreamWholeLines<16>(src, srcRowBytes, dest, destRowStep, destPixelStep, across, down, stream, edges);
#else
    TransposeBlocked<16>(src, srcRowBytes, dest, destRowStep, destPixelStep, across, down, stream);
#endif
}

}  // namespace quorin::geometry::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::geometry {

HWY_EXPORT(TransposeWords);
HWY_EXPORT(TransposeQuads);

const KernelPair<TransposeKernel> kTransposeWords{&TransposeBlocked<4>, HWY_DISPATCH_TABLE(TransposeWords)};
const KernelPair<TransposeKernel> kTransposeQuads{&TransposeBlocked<16>, HWY_DISPATCH_TABLE(TransposeQuads)};

}  // namespace quorin::geometry
#endif
