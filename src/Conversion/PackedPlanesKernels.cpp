// Vector twins of the packed-plane rules (PackedPlanesRules.h), byte for
// byte the same as the scalar kernels for every input and count.
//
// Unpacking 1- and 2-bit fields: each packed byte is copied to the lanes of
// its pixels by a byte shuffle (which stays inside 128-bit blocks, so every
// block gets the same sixteen packed bytes), then every field bit is tested
// and contributes its share of the plane value. The shares (255; 0xAA and 0x55; 0x88, 0x44, 0x22 and 0x11)
// have no bit in common, so or-ing them gives field x step exactly.
//
// Packing to 4 bits quantizes two plane bytes per 16-bit lane (a
// multiply-high that equals the division for every byte value), the first
// pixel highest, then truncates the lanes to bytes; packing to 1 and 2 bits
// stores the top bits of bytes as mask bits (PackRun).
//
// The bytes no whole vector covers go to the scalar kernel, so no byte
// outside the run is read or written.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/PackedPlanesKernels.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>
#include <hwy/cache_control.h>

#include <cstdint>

#include "Conversion/PackedPlanesRules.h"
#include "Core/RowLoop-inl.h"
#include "Core/SourcePrefetch.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::planes::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using quorin::HWY_NAMESPACE::StoreRun;

#if HWY_TARGET != HWY_SCALAR
// Large destinations are streamed (StoreRun) on the targets measured with
// it: written with plain stores, every destination line is read in first,
// which left the 4-bit unpack, whose writes are twice its reads, behind
// the scalar kernel at 4096 x 4096 with AVX2.
HWY_INLINE bool Streams(bool stream) { return stream && (HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4); }

// Per 16-byte step of kBits-bit source: the source byte of each of the
// step's output bytes; for each field bit b (most significant first), the
// bit's mask in the copied byte and its share of the plane value, the same
// in every 16 output bytes.
template <unsigned kBits>
struct UnpackTables {
    static constexpr size_t kPer = PixelsPerByte(kBits);
    alignas(64) uint8_t index[16 * kPer] = {};
    alignas(16) uint8_t bit[kBits][16] = {};
    alignas(16) uint8_t share[kBits][16] = {};

    constexpr UnpackTables() {
        for (size_t o = 0; o < 16 * kPer; ++o) index[o] = static_cast<uint8_t>(o / kPer);
        for (unsigned b = 0; b < kBits; ++b)
            for (size_t l = 0; l < 16; ++l) {
                const unsigned weight = 1u << (kBits - 1 - b);
                bit[b][l] = static_cast<uint8_t>(weight << (8 - kBits * (l % kPer + 1)));
                share[b][l] = static_cast<uint8_t>(weight * FieldStep(kBits));
            }
    }
};
template <unsigned kBits>
inline constexpr UnpackTables<kBits> kUnpackTables{};

template <unsigned kBits>
void UnpackRun(const uint8_t* src, uint8_t* dst, size_t bytes, bool stream) {
    constexpr size_t kPer = PixelsPerByte(kBits);
    const auto scalar = [&](size_t first, size_t count) { UnpackBytes<kBits>(src + first, dst + kPer * first, count); };
    if constexpr (kBits == 4) {
        // A nibble times 17 is the nibble in both halves of its byte, so each
        // byte's two pixels are two shifts and an or away, then side by side;
        // the bit tests below ran at half the scalar kernel's speed here.
        const hn::CappedTag<uint8_t, 16> d;
        if (hn::Lanes(d) != 16) return scalar(0, bytes);
        StoreRun<true>(d, Streams(stream), dst, bytes, kPer, 16, [&](size_t i, auto store) {
            const auto packed = hn::LoadU(d, src + i);
            const auto high = hn::ShiftRight<4>(packed), low = hn::And(packed, hn::Set(d, uint8_t{0x0F}));
            const auto first = hn::Or(high, hn::ShiftLeft<4>(high)), second = hn::Or(low, hn::ShiftLeft<4>(low));
            store(hn::InterleaveLower(d, first, second), dst + 2 * i);
            store(hn::InterleaveUpper(d, first, second), dst + 2 * i + 16);
        }, scalar);
    } else {
        // Sixteen packed bytes copied into every 128-bit block, so that the
        // byte shuffle (which stays inside blocks) reaches each of them from
        // whole vectors: one shuffle and a bit test per field bit for every
        // vector of plane bytes. Measured 4096 x 4096 single-threaded on an
        // AVX-512 processor (a loaded machine, medians of three): the 1-bit
        // unpack 25.6 GB/s on 16-byte vectors, 44.1 on whole ones; the 2-bit
        // one 25.6 and 34.7.
        const hn::ScalableTag<uint8_t> d;
        const UnpackTables<kBits>& t = kUnpackTables<kBits>;
        const size_t lanes = hn::Lanes(d);
        if (lanes < 16 || lanes > 16 * kPer) return scalar(0, bytes);
        StoreRun<true>(d, Streams(stream), dst, bytes, kPer, 16, [&](size_t i, auto store) {
            const auto packed = hn::LoadDup128(d, src + i);
            for (size_t o = 0; o < 16 * kPer; o += lanes) {
                const auto copies = hn::TableLookupBytes(packed, hn::Load(d, t.index + o));
                auto out = hn::Zero(d);
                for (unsigned b = 0; b < kBits; ++b)
                    out = hn::Or(out, hn::IfThenElseZero(hn::TestBit(copies, hn::LoadDup128(d, t.bit[b])),
                                                         hn::LoadDup128(d, t.share[b])));
                store(out, dst + kPer * i + o);
            }
        }, scalar);
    }
}

// The field of the byte value in each 16-bit lane (at most 255): for these
// divisors the multiply-high by ceil(65536 / step) after the rounding term
// equals the division for every byte value.
template <unsigned kBits, class D16>
HWY_INLINE hn::Vec<D16> Quantize(D16 d16, hn::Vec<D16> v) {
    if constexpr (kBits == 1) return hn::ShiftRight<7>(v);
    else {
        constexpr unsigned kStep = FieldStep(kBits);
        return hn::MulHigh(hn::Add(v, hn::Set(d16, static_cast<uint16_t>((kStep - 1) / 2))),
                           hn::Set(d16, static_cast<uint16_t>((65536 + kStep - 1) / kStep)));
    }
}

// Packing 1- and 2-bit fields from bytes whose top bits are the field bits,
// in mask-bit order (lane 8k + b is bit b of packed byte k): one comparison
// and one movemask-style store of mask bits per eight packed pixels' bits.
// A 1-bit field is the byte's top bit. A 2-bit field (s + 42) / 85 counts
// the thresholds 43, 128 and 213 that s reaches, so its high bit is s's top
// bit and its low bit the top bit of (s +sat 85) ^ s ^ (s -sat 85), which
// reach 128 at 43 and 213. The plane bytes are reversed within each packed
// byte's pixels first (the first pixel goes highest), and for 2 bits the low
// and high bits are zipped, after a move of 64-bit lanes that makes the
// per-block zips take the pixels in order.
template <unsigned kBits>
struct MaskPackTables {
    static constexpr size_t kPer = PixelsPerByte(kBits);
    alignas(16) uint8_t reverse[16] = {};
    constexpr MaskPackTables() {
        for (size_t l = 0; l < 16; ++l) reverse[l] = static_cast<uint8_t>(l - l % kPer + (kPer - 1 - l % kPer));
    }
};
template <unsigned kBits>
inline constexpr MaskPackTables<kBits> kMaskPackTables{};

template <unsigned kBits>
void PackRun(const uint8_t* src, uint8_t* dst, size_t bytes, [[maybe_unused]] bool stream) {
    constexpr size_t kPer = PixelsPerByte(kBits);
    const hn::ScalableTag<uint8_t> d8;
    const hn::RebindToSigned<decltype(d8)> di8;
    const size_t lanes = hn::Lanes(d8), step = lanes / kPer;
    size_t i = 0;
    if constexpr (kBits == 4) {
        const hn::Repartition<uint16_t, decltype(d8)> d16;
        const hn::Rebind<uint8_t, decltype(d16)> dh;
        return StoreRun<true>(dh, Streams(stream), dst, bytes, 1, step, [&](size_t at, auto store) {
            PrefetchAhead(src + kPer * at, kReadAheadBytes);
            const auto words = hn::BitCast(d16, hn::LoadU(d8, src + kPer * at));
            const auto first = Quantize<kBits>(d16, hn::And(words, hn::Set(d16, uint16_t{0xFF})));
            const auto second = Quantize<kBits>(d16, hn::ShiftRight<8>(words));
            store(hn::TruncateTo(dh, hn::Or(hn::ShiftLeft<kBits>(first), second)), dst + at);
        }, [&](size_t first, size_t count) { PackBytes<kBits>(src + kPer * first, dst + first, count); });
    } else if (lanes >= 16) {
        const auto reverse = hn::LoadDup128(d8, kMaskPackTables<kBits>.reverse);
        const auto topBits = [&](auto v) { return hn::Lt(hn::BitCast(di8, v), hn::Zero(di8)); };
        if constexpr (kBits == 1) {
            for (; i + step <= bytes; i += step)
                hn::StoreMaskBits(di8, topBits(hn::TableLookupBytes(hn::LoadU(d8, src + 8 * i), reverse)), dst + i);
        } else {
            const hn::Repartition<uint64_t, decltype(d8)> d64;
            const size_t blocks = lanes / 16;
            HWY_ALIGN int64_t order[HWY_MAX_BYTES / 8];
            for (size_t b = 0; b < blocks; ++b)
                order[2 * b] = static_cast<int64_t>(b), order[2 * b + 1] = static_cast<int64_t>(blocks + b);
            const auto inZipOrder = hn::SetTableIndices(d64, order);
            const auto third = hn::Set(d8, uint8_t{85});
            for (; i + step <= bytes; i += step) {
                PrefetchAhead(src + 4 * i, kReadAheadBytes);
                const auto s = hn::TableLookupBytes(
                    hn::BitCast(d8, hn::TableLookupLanes(hn::BitCast(d64, hn::LoadU(d8, src + 4 * i)), inZipOrder)),
                    reverse);
                const auto low = hn::Xor(hn::Xor(hn::SaturatedAdd(s, third), s), hn::SaturatedSub(s, third));
                hn::StoreMaskBits(di8, topBits(hn::InterleaveLower(d8, low, s)), dst + i);
                hn::StoreMaskBits(di8, topBits(hn::InterleaveUpper(d8, low, s)), dst + i + step / 2);
            }
        }
    }
    PackBytes<kBits>(src + kPer * i, dst + i, bytes - i);
}
#else
template <unsigned kBits>
void UnpackRun(const uint8_t* src, uint8_t* dst, size_t bytes, bool) {
    UnpackBytes<kBits>(src, dst, bytes);
}
template <unsigned kBits>
void PackRun(const uint8_t* src, uint8_t* dst, size_t bytes, bool) {
    PackBytes<kBits>(src, dst, bytes);
}
#endif

void UnpackPlane1Vector(const uint8_t* s, uint8_t* d, size_t n, bool stream) { UnpackRun<1>(s, d, n, stream); }
void UnpackPlane2Vector(const uint8_t* s, uint8_t* d, size_t n, bool stream) { UnpackRun<2>(s, d, n, stream); }
void UnpackPlane4Vector(const uint8_t* s, uint8_t* d, size_t n, bool stream) { UnpackRun<4>(s, d, n, stream); }
void PackPlane1Vector(const uint8_t* s, uint8_t* d, size_t n, bool stream) { PackRun<1>(s, d, n, stream); }
void PackPlane2Vector(const uint8_t* s, uint8_t* d, size_t n, bool stream) { PackRun<2>(s, d, n, stream); }
void PackPlane4Vector(const uint8_t* s, uint8_t* d, size_t n, bool stream) { PackRun<4>(s, d, n, stream); }

}  // namespace quorin::planes::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::planes {

HWY_EXPORT(UnpackPlane1Vector);
HWY_EXPORT(UnpackPlane2Vector);
HWY_EXPORT(UnpackPlane4Vector);
HWY_EXPORT(PackPlane1Vector);
HWY_EXPORT(PackPlane2Vector);
HWY_EXPORT(PackPlane4Vector);

const KernelPair<PlaneKernel> kUnpackKernels[3] = {
    {&UnpackBytes<1>, HWY_DISPATCH_TABLE(UnpackPlane1Vector)},
    {&UnpackBytes<2>, HWY_DISPATCH_TABLE(UnpackPlane2Vector)},
    {&UnpackBytes<4>, HWY_DISPATCH_TABLE(UnpackPlane4Vector)},
};
const KernelPair<PlaneKernel> kPackKernels[3] = {
    {&PackBytes<1>, HWY_DISPATCH_TABLE(PackPlane1Vector)},
    {&PackBytes<2>, HWY_DISPATCH_TABLE(PackPlane2Vector)},
    {&PackBytes<4>, HWY_DISPATCH_TABLE(PackPlane4Vector)},
};

}  // namespace quorin::planes
#endif
