// Vector twins of the channel rules (ChannelRules.h). A pixel pattern of 1,
// 2, 4 or 16 bytes is repeated through every 128-bit block, so a vector that
// starts on a pixel boundary holds whole pixels in the pattern's phase; the
// core row loop starts every step on one and runs the ends on padded copies.
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Conversion/ChannelKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "Conversion/ChannelKernels.h"
#include "Core/RowLoop-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The one-lane HWY_SCALAR target cannot hold a pattern: the rules serve there.
#if HWY_TARGET != HWY_SCALAR
namespace {

using D8 = hn::ScalableTag<uint8_t>;
using Bytes = hn::Vec<D8>;

struct FillBody {
    Bytes pattern;
    Bytes operator()(const uint8_t*) const { return pattern; }
};

struct SelectBody {
    Bytes pattern, mask;
    Bytes operator()(const uint8_t* src) const {
        return hn::Or(hn::And(pattern, mask), hn::AndNot(mask, hn::LoadU(D8(), src)));
    }
};

struct ClipBody {
    hn::Vec<hn::ScalableTag<float>> upper, lower;
    Bytes operator()(const float* src) const {
        const hn::ScalableTag<float> df;
        const auto x = hn::LoadU(df, src);
        const auto clipped = hn::IfThenElse(hn::Lt(x, lower), lower, hn::IfThenElse(hn::Gt(x, upper), upper, x));
        return hn::BitCast(D8(), clipped);
    }
};

}  // namespace
#endif

// The destination is also handed to the row loop as the source it walks by,
// so its alignment decides the head; FillBody never loads it.
void FillBytesVector(uint8_t* dst, size_t bytes, const uint8_t* pattern, size_t pixelBytes, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::FillBytes(dst, bytes, pattern, pixelBytes, stream);
#else
    ForEachVector(dst, bytes, pixelBytes, stream, FillBody{hn::LoadDup128(D8(), pattern)}, dst);
#endif
}

void SelectBytesVector(const uint8_t* src, uint8_t* dst, size_t bytes, const uint8_t* pattern, const uint8_t* mask,
                       size_t pixelBytes, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::SelectBytes(src, dst, bytes, pattern, mask, pixelBytes, stream);
#else
    ForEachVector(dst, bytes, pixelBytes, stream,
                  SelectBody{hn::LoadDup128(D8(), pattern), hn::LoadDup128(D8(), mask)}, src);
#endif
}

void ClipFloatsVector(const float* src, float* dst, size_t count, float upper, float lower, bool stream) {
#if HWY_TARGET == HWY_SCALAR
    channels::ClipFloats(src, dst, count, upper, lower, stream);
#else
    const hn::ScalableTag<float> df;
    ForEachVector(dst, count, 1, stream, ClipBody{hn::Set(df, upper), hn::Set(df, lower)}, src);
#endif
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorin::channels {

HWY_EXPORT(FillBytesVector);
HWY_EXPORT(SelectBytesVector);
HWY_EXPORT(ClipFloatsVector);

const KernelPair<FillKernel> kFillKernels{&FillBytes, HWY_DISPATCH_TABLE(FillBytesVector)};
const KernelPair<SelectKernel> kSelectKernels{&SelectBytes, HWY_DISPATCH_TABLE(SelectBytesVector)};
const KernelPair<ClipKernel> kClipKernels{&ClipFloats, HWY_DISPATCH_TABLE(ClipFloatsVector)};

}  // namespace quorin::channels
#endif
