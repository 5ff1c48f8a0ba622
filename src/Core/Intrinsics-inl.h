// The one place where kernels use a processor's own instructions instead of
// Highway's portable operations. Each helper here has a portable Highway
// fallback that gives the same bits, and is kept only where a measurement
// showed the portable form to be slower; the measurement is quoted beside it.
// Compiled once per Highway target: include after <hwy/highway.h>.
//
// Per-target include guard (Highway's toggle idiom).
#if defined(QUORIN_CORE_INTRINSICS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORIN_CORE_INTRINSICS_INL_H_
#undef QUORIN_CORE_INTRINSICS_INL_H_
#else
#define QUORIN_CORE_INTRINSICS_INL_H_
#endif

#include <hwy/highway.h>

#include <cstdint>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// v + 1 in the lanes of `mask` (u16 lanes). With AVX-512 one masked addition;
// the portable form subtracts the mask's all-ones lanes, one instruction more
// since AVX-512 masks live in their own registers. Measured on the 8-bit
// unpremultiply, 1024 x 1024 single-threaded on an AVX-512 processor, five
// interleaved runs each: 372-389 us of processor time with the masked
// addition, 397-412 us with the portable form.
template <class M, class V>
HWY_INLINE V AddOneWhere(M mask, V v) {
    const hn::DFromV<V> d;
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    static_assert(sizeof(hn::TFromV<V>) == 2);
    return V{_mm512_mask_add_epi16(v.raw, mask.raw, v.raw, hn::Set(d, 1).raw)};
#else
    return hn::Sub(v, hn::VecFromMask(d, mask));
#endif
}

// Float lanes truncated to int32 lanes, for callers whose values are known
// to lie strictly within the int32 range: the processor's conversion alone,
// without Highway's correction of out-of-range lanes. Measured on the 8-bit
// colour matrix's single-precision division, 1024 x 1024 single-threaded on
// an AVX-512 processor (a loaded machine, processor time, best of fifteen
// runs in three interleaved rounds): 386 us with the bare conversion
// against 589 us with Highway's.
template <class DI, class VF>
HWY_INLINE hn::VFromD<DI> TruncateInRange(DI di, VF v) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (hn::MaxLanes(DI()) == 16) return hn::VFromD<DI>{_mm512_cvttps_epi32(v.raw)};
#elif HWY_TARGET == HWY_AVX2
    if constexpr (hn::MaxLanes(DI()) == 8) return hn::VFromD<DI>{_mm256_cvttps_epi32(v.raw)};
#endif
    return hn::ConvertTo(di, v);
}

// `bytes` (a multiple of 4) copied from `from` to `to` (4-byte aligned) with
// 4-byte streaming stores, for the partial vectors at the ends of a streamed
// run that share a cache line with its streamed vectors (vectors narrower
// than a line); the portable form stores plainly. A plain store into a line
// that streaming stores also fill stalls them: measured on the 8-bit pixel
// overwrite's rows (a quarter of each row, both buffers 16 bytes past a
// 32-byte boundary, so each row starts and ends on a 16-byte partial
// vector), Zen 3 with AVX2, three interleaved rounds: 17-21 GB/s with plain
// stores at the ends, 23-28 GB/s with streamed ones, against 26-29 GB/s for
// a streaming copy of the same rows.
HWY_INLINE void StreamWords(void* to, const void* from, size_t bytes) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4
    for (size_t k = 0; k < bytes; k += 4) {
        int word;
        std::memcpy(&word, static_cast<const uint8_t*>(from) + k, 4);
        _mm_stream_si32(reinterpret_cast<int*>(static_cast<uint8_t*>(to) + k), word);
    }
#else
    std::memcpy(to, from, bytes);
#endif
}

#if HWY_TARGET != HWY_SCALAR  // needs lane tables; one lane never packs four vectors

// The float-to-8-bit rule's last step for four vectors of its t at once:
// a t below 0 or NaN gives 0, any other min(t, 255) truncated. Block k (16
// bytes) of the result holds the bytes of lanes 4k..4k+3 of t0, t1, t2 and
// t3 in turn. The portable form zeroes, clamps, converts and narrows each
// vector to a quarter of the bytes, then moves the quarters' 32-bit words
// into place through one lane table.
template <class DF, class VF = hn::VFromD<DF>>
HWY_INLINE hn::VFromD<hn::Repartition<uint8_t, DF>> PackTruncatedBytesPortable(DF df, VF t0, VF t1, VF t2, VF t3) {
    const hn::Repartition<uint8_t, DF> d8;
    const hn::Repartition<uint32_t, DF> d32;
    const hn::Rebind<uint8_t, DF> quarter;
    const size_t n = hn::Lanes(df);
    const auto bytes = [&](VF t) {
        const VF inRange = hn::Min(hn::IfThenElseZero(hn::Ge(t, hn::Zero(df)), t), hn::Set(df, 255.0f));
        return hn::DemoteTo(quarter, hn::ConvertTo(hn::RebindToSigned<DF>(), inRange));
    };
    HWY_ALIGN uint8_t joined[HWY_MAX_BYTES];
    hn::StoreU(bytes(t0), quarter, joined);
    hn::StoreU(bytes(t1), quarter, joined + n);
    hn::StoreU(bytes(t2), quarter, joined + 2 * n);
    hn::StoreU(bytes(t3), quarter, joined + 3 * n);
    // Word k of quarter j goes to lane 4k + j.
    HWY_ALIGN int32_t from[HWY_MAX_BYTES / 4];
    for (size_t k = 0; k < n / 4; ++k)
        for (size_t j = 0; j < 4; ++j) from[4 * k + j] = static_cast<int32_t>(j * (n / 4) + k);
    const auto words = hn::Load(d32, reinterpret_cast<const uint32_t*>(joined));
    return hn::BitCast(d8, hn::TableLookupLanes(words, hn::SetTableIndices(d32, from)));
}

// With AVX-512: the minimum, the conversion and two saturating packs, whose
// per-block order is the one wanted. 255 goes first into the minimum, since
// x86 returns the second operand when either is NaN: a NaN t stays NaN, the
// conversion turns it (and any t <= -1) into a negative integer, and
// saturation makes that 0, as the rule does. Measured on the float-to-8-bit
// merge and split of four channels, single-threaded on an AVX-512 processor
// (a loaded machine, five interleaved runs each, median microseconds per
// call): 256 x 256 merge 53 with these instructions against 160 portable,
// split 63 against 181; 1024 x 1024 merge 2214 against 3348, split 3363
// against 5345.
// With AVX2 the same instructions on 32-byte vectors, block k holding lanes
// 4k..4k+3 as before. Measured on the float-to-8-bit split of four channels
// (its 32-byte path), 4096 x 4096 single-threaded, AVX2 on an AVX-512
// processor (a loaded machine, medians of three interleaved runs): 1.44
// times the speed of OpenCV's convertTo on the same elements with these
// instructions, 0.61 times with the portable form.
template <class DF, class VF = hn::VFromD<DF>>
HWY_INLINE hn::VFromD<hn::Repartition<uint8_t, DF>> PackTruncatedBytes(DF df, VF t0, VF t1, VF t2, VF t3) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (hn::MaxLanes(DF()) == 16) {
        const __m512 top = _mm512_set1_ps(255.0f);
        const auto whole = [top](VF t) { return _mm512_cvttps_epi32(_mm512_min_ps(top, t.raw)); };
        return hn::VFromD<hn::Repartition<uint8_t, DF>>{_mm512_packus_epi16(
            _mm512_packus_epi32(whole(t0), whole(t1)), _mm512_packus_epi32(whole(t2), whole(t3)))};
    }
#elif HWY_TARGET == HWY_AVX2
    if constexpr (hn::MaxLanes(DF()) == 8) {
        const __m256 top = _mm256_set1_ps(255.0f);
        const auto whole = [top](VF t) { return _mm256_cvttps_epi32(_mm256_min_ps(top, t.raw)); };
        return hn::VFromD<hn::Repartition<uint8_t, DF>>{_mm256_packus_epi16(
            _mm256_packus_epi32(whole(t0), whole(t1)), _mm256_packus_epi32(whole(t2), whole(t3)))};
    }
#endif
    return PackTruncatedBytesPortable(df, t0, t1, t2, t3);
}

// Lane k of the result holds, as bytes 0..3, lane k of the signed 32-bit
// q0, q1, q2 and q3, each clamped to 0..255 (the 8-bit colour matrix's last
// step). The portable form clamps each vector and shifts it into its byte.
template <class DI, class VI = hn::VFromD<DI>>
HWY_INLINE hn::VFromD<hn::Repartition<uint8_t, DI>> PackClampedPixelBytesPortable(DI di, VI q0, VI q1, VI q2, VI q3) {
    const auto clamp = [di](VI q) { return hn::Min(hn::Max(q, hn::Zero(di)), hn::Set(di, 255)); };
    const VI low = hn::Or(clamp(q0), hn::ShiftLeft<8>(clamp(q1)));
    const VI high = hn::Or(hn::ShiftLeft<16>(clamp(q2)), hn::ShiftLeft<24>(clamp(q3)));
    return hn::BitCast(hn::Repartition<uint8_t, DI>(), hn::Or(low, high));
}

// With AVX-512: two signed packs to 16 bits and one unsigned pack to bytes
// clamp all four vectors at once, leaving block b as lanes 4b..4b+3 of q0,
// then of q1, q2 and q3; one byte shuffle per block puts each lane's four
// bytes together. Measured on the 8-bit colour matrix, single-threaded on
// an AVX-512 processor (a loaded machine, processor time, best of nine
// interleaved calls, four runs): 1024 x 1024 in 0.62-0.63 ms with these
// instructions against 0.70 ms portable (1680 against 1500 megapixels/s).
// With AVX2 the same on 32-byte vectors: the colour matrix's AVX2 kernel,
// 4096 x 4096 single-threaded (same conditions, best of fifteen), 6.70 ms
// with these instructions and the bare conversion above against 8.63 ms
// with the portable forms of both.
template <class DI, class VI = hn::VFromD<DI>>
HWY_INLINE hn::VFromD<hn::Repartition<uint8_t, DI>> PackClampedPixelBytes(DI di, VI q0, VI q1, VI q2, VI q3) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (hn::MaxLanes(DI()) == 16) {
        const __m512i planar = _mm512_packus_epi16(_mm512_packs_epi32(q0.raw, q1.raw), _mm512_packs_epi32(q2.raw, q3.raw));
        const __m512i transpose =
            _mm512_broadcast_i32x4(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
        return hn::VFromD<hn::Repartition<uint8_t, DI>>{_mm512_shuffle_epi8(planar, transpose)};
    }
#elif HWY_TARGET == HWY_AVX2
    if constexpr (hn::MaxLanes(DI()) == 8) {
        const __m256i planar = _mm256_packus_epi16(_mm256_packs_epi32(q0.raw, q1.raw), _mm256_packs_epi32(q2.raw, q3.raw));
        const __m256i transpose =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
        return hn::VFromD<hn::Repartition<uint8_t, DI>>{_mm256_shuffle_epi8(planar, transpose)};
    }
#endif
    return PackClampedPixelBytesPortable(di, q0, q1, q2, q3);
}

// The first twelve bytes of every 16-byte block of c0, c1, c2 and c3 as
// three whole vectors, in the blocks' order: the last step of storing
// three-byte (or six- and twelve-byte) pixels after one byte shuffle per
// block has packed four-byte (eight-, sixteen-byte) pixels into their first
// twelve bytes. kZipped takes the blocks in the order in which zipping two
// pairs of vectors block by block leaves pixels (c0 and c1 the lower and
// upper zips of the first pair, c2 and c3 of the second): block k of c0,
// then of c1, for each k, then the same of c2 and c3; callers zipping their
// samples need no permute to put them in order first.
//
// Where result word t of result m (of 32-bit words, `words` a vector) comes
// from: one of the four inputs, and a word in it.
struct TripleWord {
    int input, word;
};
template <bool kZipped>
constexpr TripleWord TripleWordOf(int words, int m, int t) {
    const int blocks = words / 4, at = words * m + t, group = at / 3, within = at % 3;
    if (!kZipped) return {group / blocks, group % blocks * 4 + within};
    const int half = group / (2 * blocks), r = group % (2 * blocks);
    return {2 * half + r % 2, r / 2 * 4 + within};
}

template <bool kZipped, class D8, class V8 = hn::VFromD<D8>>
HWY_INLINE void ConcatBlockTriplesPortable(D8 d8, V8 c0, V8 c1, V8 c2, V8 c3, V8& out0, V8& out1, V8& out2) {
    const size_t n = hn::Lanes(d8);
    if (n == 16) {  // one block a vector: both orders are c0, c1, c2, c3
        out0 = hn::Or(c0, hn::ShiftLeftBytes<12>(d8, c1));
        out1 = hn::Or(hn::ShiftRightBytes<4>(d8, c1), hn::ShiftLeftBytes<8>(d8, c2));
        out2 = hn::Or(hn::ShiftRightBytes<8>(d8, c2), hn::ShiftLeftBytes<4>(d8, c3));
        return;
    }
    HWY_ALIGN uint8_t in[4][HWY_MAX_BYTES];
    HWY_ALIGN uint8_t joined[3 * HWY_MAX_BYTES];
    hn::Store(c0, d8, in[0]);
    hn::Store(c1, d8, in[1]);
    hn::Store(c2, d8, in[2]);
    hn::Store(c3, d8, in[3]);
    const int words = static_cast<int>(n / 4);
    for (int m = 0; m < 3; ++m)
        for (int t = 0; t < words; ++t) {
            const TripleWord from = TripleWordOf<kZipped>(words, m, t);
            for (int b = 0; b < 4; ++b) joined[4 * (words * m + t) + b] = in[from.input][4 * from.word + b];
        }
    out0 = hn::Load(d8, joined);
    out1 = hn::Load(d8, joined + n);
    out2 = hn::Load(d8, joined + 2 * n);
}

// How result m is built from whole-vector permutes of 32-bit words (kWords
// a vector): from two neighbouring inputs (`pair` the first of them), or,
// for the zipped order's middle result (pair -1), from all four. Each word
// comes from one of two permuted vectors (bit t of `second`), at `index`.
// With AVX-512 (16 words) a pair is one two-source permute and the four
// inputs two, c0 with c1 and c2 with c3; with AVX2 (8 words) each of the
// two vectors is a one-source permute of an input, or, for the four
// inputs, of the second block of c0 (c1) joined to the first of c2 (c3).
struct TripleResult {
    int pair;
    alignas(64) int32_t index[2][16];
    unsigned second;
};
template <bool kZipped, int kWords>
constexpr TripleResult TripleResultOf(int m) {
    TripleResult r{};
    int low = 3, high = 0;
    for (int t = 0; t < kWords; ++t) {
        const int input = TripleWordOf<kZipped>(kWords, m, t).input;
        low = input < low ? input : low;
        high = input > high ? input : high;
    }
    r.pair = high - low <= 1 ? (low < 3 ? low : 2) : -1;
    for (int t = 0; t < kWords; ++t) {
        const TripleWord w = TripleWordOf<kZipped>(kWords, m, t);
        int slot, index;
        if (kWords == 16) {
            slot = r.pair >= 0 ? 0 : w.input / 2;
            index = w.word + (r.pair >= 0 ? w.input - r.pair : w.input % 2) * 16;
        } else {
            slot = r.pair >= 0 ? w.input - r.pair : w.input % 2;
            index = r.pair >= 0 ? w.word : w.input / 2 * 4 + w.word % 4;
        }
        r.second |= static_cast<unsigned>(slot) << t;
        r.index[0][t] = r.index[1][t] = index;
    }
    return r;
}

#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
using TripleRaw = __m512i;
template <bool kZipped, int kResult>
HWY_INLINE TripleRaw TripleResultRaw(const TripleRaw (&c)[4]) {
    static constexpr TripleResult kR = TripleResultOf<kZipped, 16>(kResult);
    const __m512i index = _mm512_load_si512(kR.index[0]);
    if constexpr (kR.pair >= 0) {
        return _mm512_permutex2var_epi32(c[kR.pair], index, c[kR.pair + 1]);
    } else {
        return _mm512_mask_blend_epi32(static_cast<__mmask16>(kR.second), _mm512_permutex2var_epi32(c[0], index, c[1]),
                                       _mm512_permutex2var_epi32(c[2], index, c[3]));
    }
}
#elif HWY_TARGET == HWY_AVX2
using TripleRaw = __m256i;
template <bool kZipped, int kResult>
HWY_INLINE TripleRaw TripleResultRaw(const TripleRaw (&c)[4]) {
    static constexpr TripleResult kR = TripleResultOf<kZipped, 8>(kResult);
    const __m256i index = _mm256_load_si256(reinterpret_cast<const __m256i*>(kR.index[0]));
    __m256i a, b;
    if constexpr (kR.pair >= 0) {
        a = c[kR.pair], b = c[kR.pair + 1];
    } else {
        a = _mm256_permute2x128_si256(c[0], c[2], 0x21);
        b = _mm256_permute2x128_si256(c[1], c[3], 0x21);
    }
    return _mm256_blend_epi32(_mm256_permutevar8x32_epi32(a, index), _mm256_permutevar8x32_epi32(b, index),
                              static_cast<int>(kR.second));
}
#endif

// With AVX-512 one two-source permute of 32-bit words per result (two and
// a blend for the zipped order's middle one); with AVX2 two one-source
// permutes and a blend (and two block moves for the zipped middle one).
// Highway's own three-way interleave of bytes costs nine byte shuffles and
// six block moves for the same three vectors. Measured on the 565-to-888
// cell, 4096 x 4096 single-threaded on an AVX-512 processor (a loaded
// machine, medians of three, two runs): 17.0 and 16.9 GB/s with Highway's
// interleave, 22.5 and 27.6 GB/s with this; with AVX2 17.1 and 17.7
// against 17.2 and 20.5.
template <bool kZipped, class D8, class V8 = hn::VFromD<D8>>
HWY_INLINE void ConcatBlockTriples(D8 d8, V8 c0, V8 c1, V8 c2, V8 c3, V8& out0, V8& out1, V8& out2) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX2
    if constexpr (hn::MaxLanes(D8()) == sizeof(TripleRaw)) {
        const TripleRaw c[4] = {c0.raw, c1.raw, c2.raw, c3.raw};
        out0 = V8{TripleResultRaw<kZipped, 0>(c)};
        out1 = V8{TripleResultRaw<kZipped, 1>(c)};
        out2 = V8{TripleResultRaw<kZipped, 2>(c)};
        return;
    }
#endif
    ConcatBlockTriplesPortable<kZipped>(d8, c0, c1, c2, c3, out0, out1, out2);
}

#endif  // HWY_TARGET != HWY_SCALAR

// Whether InterleaveThree below has a processor's own form for vectors of
// descriptor D (the callers keep Highway's StoreInterleaved3 otherwise).
template <class D>
constexpr bool HasInterleaveThree() {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    return sizeof(hn::TFromD<D>) == 2 && hn::MaxLanes(D()) == 32;
#else
    return false;
#endif
}

// Three vectors of 16-bit lanes interleaved lane by lane, as the three
// vectors StoreInterleaved3 would store: with AVX-512 two two-source
// permutes of 16-bit lanes per result (Highway's form takes nine byte
// shuffles, six ors and six block moves). Measured on the 565-to-16-bit
// cell, 4096 x 4096 single-threaded on an AVX-512 processor (a loaded
// machine, medians of three, three runs): 16.8, 19.5 and 17.7 GB/s with
// Highway's interleave, 27.2, 27.0 and 23.9 GB/s with this. The portable
// form stores and reloads.
template <class D, class V = hn::VFromD<D>>
HWY_INLINE void InterleaveThree(D d, V v0, V v1, V v2, V& out0, V& out1, V& out2) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (HasInterleaveThree<D>()) {
        // Lane t of result m is sample (32m + t) % 3 of pixel (32m + t) / 3:
        // the first permute takes samples 0 and 1 from v0 and v1, the
        // second, in the lanes of sample 2, takes them from v2.
        struct Indices {
            alignas(64) uint16_t of[3][32];
            uint32_t third[3];
        };
        static constexpr Indices kIndices = [] {
            Indices x{};
            for (int m = 0; m < 3; ++m)
                for (int t = 0; t < 32; ++t) {
                    const int at = 32 * m + t, pixel = at / 3, sample = at % 3;
                    x.of[m][t] = static_cast<uint16_t>(pixel + (sample != 0 ? 32 : 0));
                    if (sample == 2) x.third[m] |= 1u << t;
                }
            return x;
        }();
        V* const out[3] = {&out0, &out1, &out2};
        for (int m = 0; m < 3; ++m) {
            const __m512i index = _mm512_load_si512(kIndices.of[m]);
            const __m512i two = _mm512_permutex2var_epi16(v0.raw, index, v1.raw);
            *out[m] = V{_mm512_mask_permutex2var_epi16(two, static_cast<__mmask32>(kIndices.third[m]), index, v2.raw)};
        }
        return;
    }
#endif
    const size_t n = hn::Lanes(d);
    HWY_ALIGN hn::TFromD<D> joined[3 * HWY_MAX_BYTES / sizeof(hn::TFromD<D>)];
    hn::StoreInterleaved3(v0, v1, v2, d, joined);
    out0 = hn::Load(d, joined);
    out1 = hn::Load(d, joined + n);
    out2 = hn::Load(d, joined + 2 * n);
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // QUORIN_CORE_INTRINSICS_INL_H_
