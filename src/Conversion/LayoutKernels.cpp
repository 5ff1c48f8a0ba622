// Vector twins of the layout row kernels, compiled once per instruction set
// and chosen at run time. Each gives the bytes of the scalar kernel in
// LayoutRules.h for every input: whole vectors here, on the core's row loop
// (RunSteps), which hands the pixels before an aligned streaming start and
// the last pixels to the scalar kernel, so no byte outside the row is read
// or written.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/LayoutKernels.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <cstdint>

#include "Conversion/LayoutRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::layout::HWY_NAMESPACE {

// The vector twins of the shapes the family uses, one merge and one split each.
void MergeU8x4(const uint8_t* const* planes, uint8_t fill, const Copy<uint8_t>& transform,
               uint8_t* pixels, size_t n, bool stream) {
    MergeRow<4, Copy<uint8_t>>(planes, fill, transform, pixels, n, stream);
}
void SplitU8x4(const uint8_t* pixels, uint8_t* const* planes, const Copy<uint8_t>& transform, size_t n, SplitStreaming stream) {
    SplitRow<4, Copy<uint8_t>>(pixels, planes, transform, n, stream);
}
void MergeU8x3(const uint8_t* const* planes, uint8_t fill, const Copy<uint8_t>& transform,
               uint8_t* pixels, size_t n, bool stream) {
    MergeRow<3, Copy<uint8_t>>(planes, fill, transform, pixels, n, stream);
}
void SplitU8x3(const uint8_t* pixels, uint8_t* const* planes, const Copy<uint8_t>& transform, size_t n, SplitStreaming stream) {
    SplitRow<3, Copy<uint8_t>>(pixels, planes, transform, n, stream);
}
void MergeU16x4(const uint16_t* const* planes, uint16_t fill, const Copy<uint16_t>& transform,
                uint16_t* pixels, size_t n, bool stream) {
    MergeRow<4, Copy<uint16_t>>(planes, fill, transform, pixels, n, stream);
}
void SplitU16x4(const uint16_t* pixels, uint16_t* const* planes, const Copy<uint16_t>& transform,
                size_t n, SplitStreaming stream) {
    SplitRow<4, Copy<uint16_t>>(pixels, planes, transform, n, stream);
}
void MergeU16x3(const uint16_t* const* planes, uint16_t fill, const Copy<uint16_t>& transform,
                uint16_t* pixels, size_t n, bool stream) {
    MergeRow<3, Copy<uint16_t>>(planes, fill, transform, pixels, n, stream);
}
void SplitU16x3(const uint16_t* pixels, uint16_t* const* planes, const Copy<uint16_t>& transform,
                size_t n, SplitStreaming stream) {
    SplitRow<3, Copy<uint16_t>>(pixels, planes, transform, n, stream);
}
void MergeU32x4(const uint32_t* const* planes, uint32_t fill, const Copy<uint32_t>& transform,
                uint32_t* pixels, size_t n, bool stream) {
    MergeRow<4, Copy<uint32_t>>(planes, fill, transform, pixels, n, stream);
}
void SplitU32x4(const uint32_t* pixels, uint32_t* const* planes, const Copy<uint32_t>& transform,
                size_t n, SplitStreaming stream) {
    SplitRow<4, Copy<uint32_t>>(pixels, planes, transform, n, stream);
}
void MergeU32x3(const uint32_t* const* planes, uint32_t fill, const Copy<uint32_t>& transform,
                uint32_t* pixels, size_t n, bool stream) {
    MergeRow<3, Copy<uint32_t>>(planes, fill, transform, pixels, n, stream);
}
void SplitU32x3(const uint32_t* pixels, uint32_t* const* planes, const Copy<uint32_t>& transform,
                size_t n, SplitStreaming stream) {
    SplitRow<3, Copy<uint32_t>>(pixels, planes, transform, n, stream);
}
void MergeByteToFloatx4(const uint8_t* const* planes, float fill, const ByteToFloat& transform,
                        float* pixels, size_t n, bool stream) {
    MergeRow<4, ByteToFloat>(planes, fill, transform, pixels, n, stream);
}
void SplitByteToFloatx4(const uint8_t* pixels, float* const* planes, const ByteToFloat& transform,
                        size_t n, SplitStreaming stream) {
    SplitRow<4, ByteToFloat>(pixels, planes, transform, n, stream);
}
void MergeFloatToBytex4(const float* const* planes, uint8_t fill, const FloatToByte& transform,
                        uint8_t* pixels, size_t n, bool stream) {
    MergeRow<4, FloatToByte>(planes, fill, transform, pixels, n, stream);
}
void SplitFloatToBytex4(const float* pixels, uint8_t* const* planes, const FloatToByte& transform,
                        size_t n, SplitStreaming stream) {
    SplitRow<4, FloatToByte>(pixels, planes, transform, n, stream);
}

}  // namespace quorin::layout::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::layout {

HWY_EXPORT(MergeU8x4);
HWY_EXPORT(SplitU8x4);
HWY_EXPORT(MergeU8x3);
HWY_EXPORT(SplitU8x3);
HWY_EXPORT(MergeU16x4);
HWY_EXPORT(SplitU16x4);
HWY_EXPORT(MergeU16x3);
HWY_EXPORT(SplitU16x3);
HWY_EXPORT(MergeU32x4);
HWY_EXPORT(SplitU32x4);
HWY_EXPORT(MergeU32x3);
HWY_EXPORT(SplitU32x3);
HWY_EXPORT(MergeByteToFloatx4);
HWY_EXPORT(SplitByteToFloatx4);
HWY_EXPORT(MergeFloatToBytex4);
HWY_EXPORT(SplitFloatToBytex4);

const KernelPair<MergeRowKernel<4, Copy<uint8_t>>> LayoutKernels<4, Copy<uint8_t>>::merge{
    &MergeRowScalar<4, Copy<uint8_t>>, HWY_DISPATCH_TABLE(MergeU8x4)};
const KernelPair<SplitRowKernel<4, Copy<uint8_t>>> LayoutKernels<4, Copy<uint8_t>>::split{
    &SplitRowScalar<4, Copy<uint8_t>>, HWY_DISPATCH_TABLE(SplitU8x4)};
const KernelPair<MergeRowKernel<3, Copy<uint8_t>>> LayoutKernels<3, Copy<uint8_t>>::merge{
    &MergeRowScalar<3, Copy<uint8_t>>, HWY_DISPATCH_TABLE(MergeU8x3)};
const KernelPair<SplitRowKernel<3, Copy<uint8_t>>> LayoutKernels<3, Copy<uint8_t>>::split{
    &SplitRowScalar<3, Copy<uint8_t>>, HWY_DISPATCH_TABLE(SplitU8x3)};
const KernelPair<MergeRowKernel<4, Copy<uint16_t>>> LayoutKernels<4, Copy<uint16_t>>::merge{
    &MergeRowScalar<4, Copy<uint16_t>>, HWY_DISPATCH_TABLE(MergeU16x4)};
const KernelPair<SplitRowKernel<4, Copy<uint16_t>>> LayoutKernels<4, Copy<uint16_t>>::split{
    &SplitRowScalar<4, Copy<uint16_t>>, HWY_DISPATCH_TABLE(SplitU16x4)};
const KernelPair<MergeRowKernel<3, Copy<uint16_t>>> LayoutKernels<3, Copy<uint16_t>>::merge{
    &MergeRowScalar<3, Copy<uint16_t>>, HWY_DISPATCH_TABLE(MergeU16x3)};
const KernelPair<SplitRowKernel<3, Copy<uint16_t>>> LayoutKernels<3, Copy<uint16_t>>::split{
    &SplitRowScalar<3, Copy<uint16_t>>, HWY_DISPATCH_TABLE(SplitU16x3)};
const KernelPair<MergeRowKernel<4, Copy<uint32_t>>> LayoutKernels<4, Copy<uint32_t>>::merge{
    &MergeRowScalar<4, Copy<uint32_t>>, HWY_DISPATCH_TABLE(MergeU32x4)};
const KernelPair<SplitRowKernel<4, Copy<uint32_t>>> LayoutKernels<4, Copy<uint32_t>>::split{
    &SplitRowScalar<4, Copy<uint32_t>>, HWY_DISPATCH_TABLE(SplitU32x4)};
const KernelPair<MergeRowKernel<3, Copy<uint32_t>>> LayoutKernels<3, Copy<uint32_t>>::merge{
    &MergeRowScalar<3, Copy<uint32_t>>, HWY_DISPATCH_TABLE(MergeU32x3)};
const KernelPair<SplitRowKernel<3, Copy<uint32_t>>> LayoutKernels<3, Copy<uint32_t>>::split{
    &SplitRowScalar<3, Copy<uint32_t>>, HWY_DISPATCH_TABLE(SplitU32x3)};
const KernelPair<MergeRowKernel<4, ByteToFloat>> LayoutKernels<4, ByteToFloat>::merge{
    &MergeRowScalar<4, ByteToFloat>, HWY_DISPATCH_TABLE(MergeByteToFloatx4)};
const KernelPair<SplitRowKernel<4, ByteToFloat>> LayoutKernels<4, ByteToFloat>::split{
    &SplitRowScalar<4, ByteToFloat>, HWY_DISPATCH_TABLE(SplitByteToFloatx4)};
const KernelPair<MergeRowKernel<4, FloatToByte>> LayoutKernels<4, FloatToByte>::merge{
    &MergeRowScalar<4, FloatToByte>, HWY_DISPATCH_TABLE(MergeFloatToBytex4)};
const KernelPair<SplitRowKernel<4, FloatToByte>> LayoutKernels<4, FloatToByte>::split{
    &SplitRowScalar<4, FloatToByte>, HWY_DISPATCH_TABLE(SplitFloatToBytex4)};

}  // namespace quorin::layout
#endif  // HWY_ONCE
