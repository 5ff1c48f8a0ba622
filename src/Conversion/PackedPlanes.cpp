// The packed-plane conversions: each entry point runs its row of the member
// table (PackedPlanesMembers.h): the checks in their order, then the kernel
// pair over one run when both buffers' rows follow each other, else row by
// row, on the calling thread.
#include <optional>

#include "Conversion/PackedPlanesMembers.h"
#include "Conversion/PackedPlanesRules.h"
#include "Core/Checks.h"
#include "Core/Streaming.h"
#include "platform/Log.h"

namespace quorin::planes {
namespace {

// The bytes a row of `width` pixels of `bits` bits needs: ceil(width x bits / 8).
constexpr size_t RowBytesOf(size_t width, unsigned bits) {
    const size_t per = PixelsPerByte(bits);
    return width / per + (width % per != 0 ? 1 : 0);
}

constexpr bool CannotDescribePlane(const Quorin_Buffer* buffer, unsigned bits) {
    return (bits == 8 ? RowBytesTooSmall(buffer, 1) : RowBytesOf(buffer->width, bits) > buffer->rowBytes) ||
           ExtentTooLarge(buffer);
}

// Unpacking needs dest rowBytes >= src rowBytes x per (a product that does
// not fit a size_t exceeds any rowBytes); packing needs dest rowBytes <=
// src rowBytes / per.
constexpr bool RowLengthFails(const PlaneMember& m, const Quorin_Buffer* src, const Quorin_Buffer* dest) {
    if (m.direction == Direction::Pack) return dest->rowBytes > src->rowBytes / m.pixelsPerByte();
    const std::optional<size_t> unpacked = CheckedProduct(src->rowBytes, m.pixelsPerByte());
    return !unpacked || dest->rowBytes < *unpacked;
}

// The code of the first failing step (kPlaneSteps), or kQuorinSuccess.
Quorin_Error CheckPlanes(const PlaneMember& m, const Quorin_Buffer* src, const Quorin_Buffer* dest) {
    if (m.testsRecords && AnyNull(src, dest)) return kPlaneSteps[kStepNullRecord].code;
    // Without the record test a missing record is refused with its data.
    if (src == nullptr || src->data == nullptr || dest == nullptr || dest->data == nullptr)
        return kPlaneSteps[kStepNullData].code;
    if (ExceedsSources(dest, src)) return kPlaneSteps[kStepExceedsSource].code;
    if (RowLengthFails(m, src, dest)) return kPlaneSteps[kStepRowLength].code;
    if (CannotDescribePlane(src, m.srcBits()) || CannotDescribePlane(dest, m.destBits()))
        return kPlaneSteps[kStepCannotDescribe].code;
    return kQuorinSuccess;
}

// After the checks, every row's reads stay inside src's rowBytes and its
// writes inside dest's (steps 3 and 4), on dest's rows, which src has too.
void Convert(const PlaneMember& m, const Quorin_Buffer* src, const Quorin_Buffer* dest) {
    const size_t rows = dest->height, bytes = m.packedBytes(src, dest), per = m.pixelsPerByte();
    const bool unpack = m.direction == Direction::Unpack;
    const PlaneKernel kernel = (unpack ? kUnpackKernels : kPackKernels)[KernelIndex(m.bits)].choose();
    const auto* from = static_cast<const uint8_t*>(src->data);
    auto* to = static_cast<uint8_t*>(dest->data);
    // The packed side's rows are `bytes` long by definition; the plane's
    // follow each other when they are exactly bytes x per long.
    const size_t planeRowBytes = unpack ? dest->rowBytes : src->rowBytes;
    const bool stream = WantsStreaming(rows * (unpack ? bytes * per : bytes));
    const StreamFenceScope fence;
    if (planeRowBytes == bytes * per) {
        kernel(from, to, rows * bytes, stream);
        return;
    }
    for (size_t y = 0; y < rows; ++y) kernel(from + y * src->rowBytes, to + y * dest->rowBytes, bytes, stream);
}

// Packing into one bit a pixel has modes, of which only 0 exists: the others
// report where their work would start, after the checks and before the
// empty-image return, in the module that once held the whole entry point.
template <const PlaneMember& kMember>
Quorin_Error RunPlanes(const Quorin_Buffer* src, const Quorin_Buffer* dest, int mode = 0) {
    if (const Quorin_Error error = CheckPlanes(kMember, src, dest)) return error;
    if (mode != 0) ReportFatal(kMember.name, "Conversion/ConvertPlanartoPlanar", 205, kNotYetImplemented);
    if (dest->height == 0) return kQuorinSuccess;
    Convert(kMember, src, dest);
    return kQuorinSuccess;
}

}  // namespace
}  // namespace quorin::planes

using quorin::planes::RunPlanes;

#define QUORIN_PLANE_ENTRY(name, row)                                                                  \
    QUORIN_API Quorin_Error name(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags) { \
        return RunPlanes<quorin::planes::row>(src, dest);                                               \
    }
QUORIN_PLANE_ENTRY(QuorinConvert_Planar1toPlanar8, kPlanar1toPlanar8)
QUORIN_PLANE_ENTRY(QuorinConvert_Planar2toPlanar8, kPlanar2toPlanar8)
QUORIN_PLANE_ENTRY(QuorinConvert_Planar4toPlanar8, kPlanar4toPlanar8)
QUORIN_PLANE_ENTRY(QuorinConvert_Planar8toPlanar2, kPlanar8toPlanar2)
QUORIN_PLANE_ENTRY(QuorinConvert_Planar8toPlanar4, kPlanar8toPlanar4)
#undef QUORIN_PLANE_ENTRY

QUORIN_API Quorin_Error QuorinConvert_Planar8toPlanar1(const Quorin_Buffer* src, const Quorin_Buffer* dest, void*,
                                                       int mode) {
    return RunPlanes<quorin::planes::kPlanar8toPlanar1>(src, dest, mode);
}
