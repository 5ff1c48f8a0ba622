// Vector twins of the depth conversions, compiled once per instruction set
// and chosen at run time. The Q12 members run the layouts' row loops
// (LayoutRows-inl.h) with the vector rules below; the 16-bit plane
// conversions store one vector of results per step. Every one gives the
// bytes of its scalar rule (DepthRules.h) for every input, and hands a row
// whose source and destination share bytes to the scalar rule whole.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/DepthKernels.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <cstdint>

#include "Conversion/DepthRules.h"
#include "Conversion/LayoutRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::layout::HWY_NAMESPACE {

// Q12 to 8 bits in 16-bit lanes: clamp to 0..4096 with a signed maximum and
// minimum, then (c * 255 + 2048) >> 12, which is (c * 2040 + 16384) >> 15:
// the rounding fixed-point multiply, exact for every clamped c.
struct Q12ToByteVector {
    using Lanes = hn::ScalableTag<int16_t>;
    template <class D, class V>
    hn::VFromD<D> operator()(D d, size_t, V v) const {
        const hn::DFromV<V> di;
        const V clamped = hn::Min(hn::Max(v, hn::Zero(di)), hn::Set(di, int16_t{4096}));
        return hn::DemoteTo(d, hn::MulFixedPoint15(clamped, hn::Set(di, int16_t{2040})));
    }
};

// 8 bits to Q12 in 16-bit lanes: v * 4096 / 255 is 16v + 16v / 255, so the
// rule is 16v + (16v + 127) / 255; the second quotient (of at most 4207) is
// the high half of a multiply by 0x8081 shifted by 7, exact below 2^16.
struct ByteToQ12Vector {
    using Lanes = hn::ScalableTag<uint16_t>;
    template <class D, class V>
    hn::VFromD<D> operator()(D d, size_t, V v) const {
        const hn::Rebind<uint16_t, D> du;
        const auto sixteen = hn::ShiftLeft<4>(hn::PromoteTo(du, v));
        const auto quotient = hn::ShiftRight<7>(hn::MulHigh(hn::Add(sixteen, hn::Set(du, uint16_t{127})),
                                                            hn::Set(du, uint16_t{0x8081})));
        return hn::BitCast(d, hn::Add(sixteen, quotient));
    }
};

// Found by MergeRow and SplitRow through the body they hand over.
template <class Body>
void WithVectorRule(const Q12ToByte&, Body&& body) { body(Q12ToByteVector{}); }
template <class Body>
void WithVectorRule(const ByteToQ12&, Body&& body) { body(ByteToQ12Vector{}); }

template <size_t C>
void MergeQ12(const int16_t* const* planes, uint8_t fill, const Q12ToByte& transform, uint8_t* pixels, size_t n,
              bool stream) {
    if (RowsOverlap<C>(planes, pixels, n)) return MergeRowScalar<C>(planes, fill, transform, pixels, n);
    MergeRow<C, Q12ToByte>(planes, fill, transform, pixels, n, stream);
}
template <size_t C>
void SplitQ12(const uint8_t* pixels, int16_t* const* planes, const ByteToQ12& transform, size_t n, SplitStreaming stream) {
    if (RowsOverlap<C>(pixels, planes, n)) return SplitRowScalar<C>(pixels, planes, transform, n);
    SplitRow<C, ByteToQ12>(pixels, planes, transform, n, stream);
}

void MergeQ12x4(const int16_t* const* planes, uint8_t fill, const Q12ToByte& transform, uint8_t* pixels, size_t n,
                bool stream) {
    MergeQ12<4>(planes, fill, transform, pixels, n, stream);
}
void MergeQ12x3(const int16_t* const* planes, uint8_t fill, const Q12ToByte& transform, uint8_t* pixels, size_t n,
                bool stream) {
    MergeQ12<3>(planes, fill, transform, pixels, n, stream);
}
void SplitQ12x4(const uint8_t* pixels, int16_t* const* planes, const ByteToQ12& transform, size_t n, SplitStreaming stream) {
    SplitQ12<4>(pixels, planes, transform, n, stream);
}
void SplitQ12x3(const uint8_t* pixels, int16_t* const* planes, const ByteToQ12& transform, size_t n, SplitStreaming stream) {
    SplitQ12<3>(pixels, planes, transform, n, stream);
}

// ---- One plane into another ----------------------------------------------------------

// Whole vectors of the wider type's lane count, then the scalar rule for the
// tail (and for a row whose source and destination share bytes).
template <class From, class To, class Convert, class Scalar>
void ConvertPlaneRow(const From* src, To* dst, size_t n, const Convert& convert, const Scalar& scalar) {
    if (BytesOverlap(src, n * sizeof(From), dst, n * sizeof(To))) return scalar(src, dst, n);
    size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    using Wide = std::conditional_t<(sizeof(From) > sizeof(To)), From, To>;
    const hn::ScalableTag<Wide> dw;
    const hn::Rebind<From, decltype(dw)> dFrom;
    const hn::Rebind<To, decltype(dw)> dTo;
    const size_t lanes = hn::Lanes(dw);
    for (; i + lanes <= n; i += lanes) hn::StoreU(convert(dTo, hn::LoadU(dFrom, src + i)), dTo, dst + i);
#else
    (void)convert;
#endif
    scalar(src + i, dst + i, n - i);
}

// (v * 255 + 32767) / 65535 is (v + 128) / 257 rounded down (the two
// fractions cross an integer together), and v + 128 may saturate at 65535
// since everything from 65408 on gives 255; x / 257 below 2^16 is the high
// half of x * 0xFF01 shifted by 8.
void Word16ToBytePlane(const uint16_t* src, uint8_t* dst, size_t n) {
    ConvertPlaneRow(
        src, dst, n,
        [](auto d, auto v) {
            const hn::DFromV<decltype(v)> du;
            const auto sum = hn::SaturatedAdd(v, hn::Set(du, uint16_t{128}));
            const auto quotient = hn::ShiftRight<8>(hn::MulHigh(sum, hn::Set(du, uint16_t{0xFF01})));
            return hn::DemoteTo(d, hn::BitCast(hn::RebindToSigned<decltype(du)>(), quotient));  // at most 255
        },
        Word16ToByteScalar);
}

// (v * 65535 + 127) / 255 is v * 257.
void ByteToWord16Plane(const uint8_t* src, uint16_t* dst, size_t n) {
    ConvertPlaneRow(
        src, dst, n, [](auto d, auto v) { return hn::Mul(hn::PromoteTo(d, v), hn::Set(d, uint16_t{257})); },
        ByteToWord16Scalar);
}

}  // namespace quorin::layout::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::layout {

HWY_EXPORT(MergeQ12x4);
HWY_EXPORT(MergeQ12x3);
HWY_EXPORT(SplitQ12x4);
HWY_EXPORT(SplitQ12x3);
HWY_EXPORT(Word16ToBytePlane);
HWY_EXPORT(ByteToWord16Plane);

const KernelPair<MergeRowKernel<4, Q12ToByte>> LayoutKernels<4, Q12ToByte>::merge{
    &MergeRowScalar<4, Q12ToByte>, HWY_DISPATCH_TABLE(MergeQ12x4)};
const KernelPair<MergeRowKernel<3, Q12ToByte>> LayoutKernels<3, Q12ToByte>::merge{
    &MergeRowScalar<3, Q12ToByte>, HWY_DISPATCH_TABLE(MergeQ12x3)};
const KernelPair<SplitRowKernel<4, ByteToQ12>> LayoutKernels<4, ByteToQ12>::split{
    &SplitRowScalar<4, ByteToQ12>, HWY_DISPATCH_TABLE(SplitQ12x4)};
const KernelPair<SplitRowKernel<3, ByteToQ12>> LayoutKernels<3, ByteToQ12>::split{
    &SplitRowScalar<3, ByteToQ12>, HWY_DISPATCH_TABLE(SplitQ12x3)};
const KernelPair<PlaneRowKernel<uint16_t, uint8_t>> DepthKernels::word16ToByte{&Word16ToByteScalar,
                                                                               HWY_DISPATCH_TABLE(Word16ToBytePlane)};
const KernelPair<PlaneRowKernel<uint8_t, uint16_t>> DepthKernels::byteToWord16{&ByteToWord16Scalar,
                                                                               HWY_DISPATCH_TABLE(ByteToWord16Plane)};

}  // namespace quorin::layout
#endif  // HWY_ONCE
