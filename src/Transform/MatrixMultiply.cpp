// Colour-matrix multiply: each entry point runs its row of the member table
// (MatrixMembers.h): the check list, then the kernel pair over one contiguous
// run or row by row, in P or P - 1 bands and a remainder band.
#include "Core/Walk.h"
#include "Transform/MatrixKernels.h"
#include "Transform/MatrixMembers.h"
#include "quorin/Conversion.h"

namespace quorin::matrix {

template <const Member& kMember>
Quorin_Error Run(const Call& c) {
    constexpr PixelFormat kFormat = kMember.format;
    constexpr size_t kBytes = kFormat.pixelBytes();
    using S = Sample<kFormat>;
    const Operand operands[] = {{c.src, kBytes}, {c.dest, kBytes}};
    const void* const pointers[] = {c.matrix};
    if (const Quorin_Error error = RunChecks(kMember.checks, CheckedCall{operands, c.flags, nullptr, pointers}))
        return error;
    const size_t width = c.src->width, height = c.src->height;
    const auto walk = [&](auto kernel) {
        return RunSplit<kMember.split>(c.flags, width, height,
                                       OverRows(width, kernel, Plane<S, 4>(c.src), Plane<S, 4>(c.dest)));
    };
    if constexpr (kFormat.sample == SampleKind::U8) {
        if (c.divisor == 0) {
            static constexpr uint8_t kZero[4] = {0, 0, 0, 0};
            return QuorinBufferFill_ARGB8888(c.dest, kZero, c.flags);
        }
        const Matrix8 p = Matrix8::Make(static_cast<const int16_t*>(c.matrix), c.divisor,
                                        static_cast<const int16_t*>(c.preBias), static_cast<const int32_t*>(c.postBias));
        const auto kernel = ChooseStreaming(kMultiply8Kernels, height * width * kBytes);
        return walk([=](const uint8_t* s, uint8_t* d, size_t pixels) { kernel(s, d, pixels, p); });
    } else {
        const MatrixF p = MatrixF::Make(static_cast<const float*>(c.matrix), static_cast<const float*>(c.preBias),
                                        static_cast<const float*>(c.postBias));
        const auto kernel = ChooseStreaming(kMultiplyFKernels, height * width * kBytes);
        return walk([=](const float* s, float* d, size_t pixels) { kernel(s, d, pixels, p); });
    }
}

}  // namespace quorin::matrix

using namespace quorin::matrix;  // NOLINT: the entry points below only name members

extern "C" {

QUORIN_API Quorin_Error QuorinMatrixMultiply_ARGB8888(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      const int16_t matrix[16], int32_t divisor,
                                                      const int16_t* preBias, const int32_t* postBias,
                                                      Quorin_Flags flags) {
    return kMatrixARGB8888.run({src, dest, matrix, divisor, preBias, postBias, flags});
}

QUORIN_API Quorin_Error QuorinMatrixMultiply_ARGBFFFF(const Quorin_Buffer* src, const Quorin_Buffer* dest,
                                                      const float matrix[16], const float* preBias,
                                                      const float* postBias, Quorin_Flags flags) {
    return kMatrixARGBFFFF.run({src, dest, matrix, 0, preBias, postBias, flags});
}

}  // extern "C"
