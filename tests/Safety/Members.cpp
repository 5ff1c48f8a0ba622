#include "Members.h"

#include <algorithm>

#include "Alpha/BlendMembers.h"
#include "Alpha/PremultiplyMembers.h"
#include "Conversion/ChannelMembers.h"
#include "Conversion/DepthMembers.h"
#include "Conversion/LayoutMembers.h"
#include "Conversion/PackedMembers.h"
#include "Histogram/HistogramMembers.h"
#include "Transform/MatrixMembers.h"
#include "Convolution/ConvolutionMembers.h"
#include "Geometry/GeometryMembers.h"
#include "quorin/Alpha.h"
#include "quorin/Conversion.h"

namespace quorin::test {
namespace {

using B = const Quorin_Buffer* const*;
using F = Quorin_Flags;
using R = const float*;
constexpr Arg In(size_t bytes) { return {bytes, Use::Read}; }
constexpr Arg Out(size_t bytes) { return {bytes, Use::Written}; }

// The alpha families' rows, from their member tables.
std::vector<SafetyMember> AlphaMembers() {
    std::vector<SafetyMember> members;
    for (const alpha::Member* m : alpha::kBlendMembers) {
        std::vector<Arg> args;
        for (size_t i = 0; i < m->buffers; ++i)
            args.push_back(m->writes(i) ? Out(m->pixelBytes()) : In(m->pixelBytes()));
        const double constant = m->format.sample == SampleKind::F32 ? 0.6 : 0x9C;
        members.push_back({m->name, std::move(args), false,
                           [invoke = m->invoke, constant](B b, F f, R, R) { return invoke(b, constant, f); }});
    }
    for (const premultiply::Member* m : premultiply::kPremultiplyMembers) {
        const size_t bytes = m->format.pixelBytes();
        std::vector<Arg> args{In(bytes), Out(bytes)};
        if (m->planar()) args.insert(args.begin() + 1, In(bytes));
        members.push_back({m->name, std::move(args), false, [m](B b, F f, R, R) {
                               return m->planar() ? m->run(b[0], b[1], b[2], f) : m->run(b[0], nullptr, b[1], f);
                           }});
    }
    return members;
}

// The channel family's rows, from its member table: values that every shape
// can read (a pixel of four floats' bytes is a pixel of any depth).
std::vector<SafetyMember> ChannelMembers() {
    using channels::Shape;
    static const float kValues[4] = {0.25f, 0.75f, 1.5f, -0.5f};
    static const uint8_t kMap[4] = {3, 6, 1, 0};
    std::vector<SafetyMember> members;
    for (const channels::Member* m : channels::kChannelMembers) {
        const size_t bytes = m->format.pixelBytes();
        Quorin_Error nullCode = kQuorinSuccess;  // the first null step's
        for (const CheckStep& step : m->checks)
            if (nullCode == kQuorinSuccess && step.check == Check::Missing) nullCode = step.code;
        const void* value = m->shape == Shape::Permute ? static_cast<const void*>(kMap) : kValues;
        switch (m->shape) {
            case Shape::Fill:
            case Shape::OverwritePlane:
                members.push_back({m->name,
                                   {m->shape == Shape::Fill ? Out(bytes) : Arg{bytes, Use::WrittenWithPadding}},
                                   false,
                                   [m, value](B b, F f, R, R) { return m->run({nullptr, b[0], value, 0, 0, f}); },
                                   nullCode});
                break;
            case Shape::Extract:
                members.push_back({m->name, {In(bytes), Out(m->format.sampleBytes())}, false,
                                   [m](B b, F f, R, R) { return m->run({b[0], b[1], nullptr, 0, 0, f, 1}); },
                                   nullCode});
                break;
            case Shape::LookUp:
                members.push_back({m->name, {Arg{bytes, Use::ReadWithPadding}, Arg{bytes, Use::WrittenWithPadding}}, false,
                                   [m](B b, F f, R, R) {
                                       static const uint8_t table[256] = {7, 3, 250};
                                       static const uint8_t* const tables[4] = {table, table, table, table};
                                       return m->run({b[0], b[1], tables, 0, 0, f});
                                   },
                                   nullCode});
                break;
            case Shape::Select:
            case Shape::OverwritePlanes: {
                const Arg plane = m->shape == Shape::Select ? In(bytes) : In(m->format.sampleBytes());
                const Arg dest = m->shape == Shape::Select ? Out(bytes) : Arg{bytes, Use::WrittenWithPadding};
                members.push_back({m->name, {plane, In(bytes), dest}, false,
                                   [m](B b, F f, R, R) {
                                       channels::Call call{b[1], b[2], nullptr, 0x5, 0, f};
                                       call.newSrc = b[0];
                                       return m->run(call);
                                   },
                                   nullCode});
                break;
            }
            case Shape::Flatten: {
                // The size query is answered before the records are looked at.
                SafetyMember row{m->name, {In(bytes), Out(m->output.pixelBytes())}, false,
                                 [m](B b, F f, R, R) { return m->run({b[0], b[1], kValues, 0, 0, f, 1}); }, nullCode};
                row.queryAnswer = kQuorinSuccess;
                members.push_back(std::move(row));
                break;
            }
            case Shape::OverwritePixel:
                // Pixels are counted from dest's rowBytes: both rows are walked to their ends.
                members.push_back({m->name, {Arg{bytes, Use::ReadWithPadding}, Arg{bytes, Use::WrittenWithPadding}},
                                   false, [m, value](B b, F f, R, R) { return m->run({b[0], b[1], value, 0x5, 4, f}); },
                                   nullCode});
                break;
            default:
                members.push_back({m->name, {In(m->shape == Shape::Copy ? 4 : bytes), Out(m->shape == Shape::Copy ? 4 : bytes)},
                                   false, [m, value](B b, F f, R, R) { return m->run({b[0], b[1], value, 0x5, 4, f}); },
                                   nullCode});
        }
    }
    return members;
}

// The colour-matrix rows, from their member table: a matrix that mixes every
// channel, with biases, and a divisor that does not divide evenly.
std::vector<SafetyMember> MatrixMembers() {
    static const int16_t kMatrix8[16] = {300, -20, 17, 5, 40, 260, -33, 0, -12, 9, 280, 1, 3, 3, 3, 256};
    static const int16_t kPre8[4] = {-3, 5, -128, 0};
    static const int32_t kPost8[4] = {100, -200, 3000, 0};
    static const float kMatrixF[16] = {1.1f, -0.2f, 0.05f, 0.0f, 0.3f, 0.9f, -0.1f, 0.0f,
                                       -0.05f, 0.2f, 1.2f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f};
    static const float kPreF[4] = {0.0f, -0.5f, 0.25f, 0.0f}, kPostF[4] = {0.1f, 0.0f, -0.2f, 0.0f};
    std::vector<SafetyMember> members;
    for (const matrix::Member* m : matrix::kMatrixMembers) {
        const size_t bytes = m->format.pixelBytes();
        const bool f = m->format.sample == SampleKind::F32;
        members.push_back({m->name, {In(bytes), Out(bytes)}, false,
                           [m, f](B b, F flags, R, R) {
                               return f ? m->run({b[0], b[1], kMatrixF, 0, kPreF, kPostF, flags})
                                        : m->run({b[0], b[1], kMatrix8, 257, kPre8, kPost8, flags});
                           },
                           kQuorinError_BadArgument});
    }
    return members;
}

// Scaling and quarter turns, from their tables: equal sizes (a copy) and
// a quarter turn with a background; both answer size queries before they
// refuse a record.
std::vector<SafetyMember> GeometryMembers() {
    static const float kBackground[4] = {0.5f, -1.0f, 2.0f, 0.25f};
    std::vector<SafetyMember> members;
    for (const geometry::ScaleMember* m : geometry::kScaleMembers) {
        const size_t bytes = m->format.pixelBytes();
        // Equal sizes with equal rowBytes are one block copy, padding included.
        SafetyMember row{m->name, {In(bytes), Arg{bytes, Use::WrittenWithPadding}}, false,
                         [m](B b, F f, R, R) { return m->entry(b[0], b[1], nullptr, f); }, kQuorinError_BadArgument};
        row.refusalCode = kQuorinError_InvalidRowBytes;
        row.queryAnswer = kQuorinSuccess;
        members.push_back(std::move(row));
    }
    for (const geometry::Rotate90Member* m : geometry::kRotate90Members) {
        const size_t bytes = m->format.pixelBytes();
        SafetyMember row{m->name, {In(bytes), Out(bytes)}, false,
                         [m](B b, F f, R, R) { return m->entry(b[0], b[1], 1, kBackground, f); },
                         kQuorinError_BadArgument};
        row.queryAnswer = kQuorinSuccess;
        members.push_back(std::move(row));
    }
    return members;
}

// The convolution family's rows, from its member table: a 3 x 3 kernel (a
// 1 x 1 one on images narrower than 3) with negative weights.
std::vector<SafetyMember> ConvolutionMembers() {
    using convolution::Operation;
    static const int16_t kKernel[9] = {-1, 2, -1, 3, 9, 3, -1, 2, -1};
    std::vector<SafetyMember> members;
    for (const convolution::Member* m : convolution::kConvolutionMembers) {
        const size_t bytes = m->format.pixelBytes();
        SafetyMember row{m->name, {In(bytes), Out(bytes)}, false, [m](B b, F f, R, R) {
                             const uint32_t size = b[0] && b[0]->width >= 3 && b[0]->height >= 3 ? 3 : 1;
                             return m->run({b[0], b[1], nullptr, 0, 0, kKernel, size, size, 7, f});
                         }};
        const bool box = m->operation == Operation::Box;
        row.nullCode = box ? kQuorinError_SizeMismatch : kQuorinError_BadArgument;
        row.refusalCode = box ? kQuorinError_SizeMismatch : kQuorinError_BadArgument;
        if (m->operation == Operation::General) row.queryAnswer = static_cast<Quorin_Error>(m->scratchBytes(0, 0));
        else row.queryScratchPixelBytes = bytes;
        row.packedRows = box;
        members.push_back(std::move(row));
    }
    return members;
}

// The histogram rows: counters of the call's own, since they are no buffer.
std::vector<SafetyMember> HistogramMembers() {
    std::vector<SafetyMember> members;
    for (const histogram::Member* m : histogram::kHistogramMembers)
        members.push_back({m->name, {In(m->format.pixelBytes())}, false, [m](B b, F flags, R, R) {
                               std::vector<uint32_t> counts(4 * 300);
                               uint32_t* const h[4] = {&counts[0], &counts[300], &counts[600], &counts[900]};
                               return m->run({b[0], h, 300, -1.0f, 2.0f, flags});
                           }});
    return members;
}

// The layout family's rows, from its member table: the 8-bit interleave
// worker's destination is converted even when its rows are short.
std::vector<SafetyMember> LayoutRows(std::span<const layout::Member* const> table) {
    std::vector<SafetyMember> members;
    for (const layout::Member* m : table) {
        std::vector<Arg> args(m->bufferCount());
        args[m->imageArgument()] = m->merge() ? Arg{m->image.pixelBytes(), m->requiredPlanesRowBytesOnly
                                                                                ? Use::WrittenCutToRows
                                                                                : Use::Written}
                                              : In(m->image.pixelBytes());
        for (size_t k = 0; k < m->planeCount(); ++k)
            args[m->planeArgument(k)] = m->merge() ? In(m->planes.sampleBytes()) : Out(m->planes.sampleBytes());
        SafetyMember row{m->name, std::move(args), m->takesRanges, [m](B b, F f, R max, R min) {
                             layout::Call call{{}, 0xC3, 0.8f, max, min, f};
                             std::copy(b, b + m->bufferCount(), call.buffers.begin());
                             return m->invoke(call);
                         }};
        row.queryAnswer = kQuorinSuccess;  // answered after the checks, before the records' extents
        row.refusesFlags = std::any_of(m->checks.begin(), m->checks.end(),
                                       [](const CheckStep& step) { return step.check == Check::FlagsOutside; });
        members.push_back(std::move(row));
    }
    return members;
}
std::vector<SafetyMember> LayoutMembers() { return LayoutRows(layout::kLayoutMembers); }

// The depth conversions: the Q12 members are layout rows; the 16-bit plane
// members test nothing of their own, read no flag, and refuse a record
// that cannot be walked.
std::vector<SafetyMember> DepthMembers() {
    std::vector<SafetyMember> members = LayoutRows(layout::kQ12Members);
    for (const layout::PlaneDepthMember* m : layout::kPlaneDepthMembers) {
        SafetyMember row{m->name, {In(m->src.pixelBytes()), Out(m->dest.pixelBytes())}, false,
                         [m](B b, F f, R, R) { return m->invoke({.buffers = {b[0], b[1]}, .flags = f}); },
                         kQuorinError_BadArgument};
        row.refusesFlags = false;
        members.push_back(std::move(row));
    }
    return members;
}

// The three-channel matrix's rows, from its table: the null pixels of a
// record come after its sizes and extents, and no flag bit is refused.
std::vector<SafetyMember> PackedMembers() {
    std::vector<SafetyMember> members;
    for (const packed::MatrixMember& m : packed::kMatrixMembers) {
        SafetyMember row{m.name, {In(m.from.pixelBytes()), Out(m.to.pixelBytes())}, false,
                         [&m](B b, F f, R, R) { return m.run(b[0], b[1], f); }, kQuorinError_BadArgument};
        row.queryAnswer = kQuorinSuccess;  // answered after the null test, before anything else
        row.refusesFlags = false;
        members.push_back(std::move(row));
    }
    for (const packed::AlphaMember& m : packed::kAlphaMembers) {
        std::vector<Arg> args{In(m.from.pixelBytes()), Out(m.to.pixelBytes())};
        if (m.takesPlane()) args.insert(args.begin() + 1, In(1));
        SafetyMember row{m.name, std::move(args), false, [&m](B b, F f, R, R) {
                             const bool plane = m.takesPlane();
                             return m.run({b[0], plane ? b[1] : nullptr, 0.5, b[plane ? 2 : 1], 1, f});
                         },
                         kQuorinError_BadArgument};
        row.queryAnswer = kQuorinSuccess;  // answered before anything is looked at
        row.refusesFlags = false;
        members.push_back(std::move(row));
    }
    return members;
}

// Rows written by hand, for families without a member table (In and Out
// give each buffer's bytes per pixel in argument order).
std::vector<SafetyMember> HandWrittenMembers() {
    std::vector<SafetyMember> members;
    // The custom conversion of three-byte pixels: src, dest, then the alpha
    // plane; the size query comes first, as for the alpha-adding members.
    SafetyMember custom{"_customConvertImage", {In(3), Out(4), In(1)}, false,
                        [](B b, F f, R, R) { return _customConvertImage(b[0], b[1], b[2], f); }, kQuorinError_BadArgument};
    custom.queryAnswer = kQuorinSuccess;
    custom.refusesFlags = false;
    members.push_back(std::move(custom));
    return members;
}

}  // namespace

const std::vector<SafetyMember>& ImplementedMembers() {
    static const std::vector<SafetyMember> members = [] {
        std::vector<SafetyMember> all = AlphaMembers();
        for (SafetyMember& m : LayoutMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : ChannelMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : PackedMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : ConvolutionMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : HandWrittenMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : MatrixMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : HistogramMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : GeometryMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : DepthMembers()) all.push_back(std::move(m));
        return all;
    }();
    return members;
}

}  // namespace quorin::test
