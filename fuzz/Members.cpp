#include "Members.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "Alpha/BlendMembers.h"
#include "Alpha/PremultiplyMembers.h"
#include "Conversion/ChannelMembers.h"
#include "Conversion/DepthMembers.h"
#include "Conversion/LayoutMembers.h"
#include "Conversion/PackedMembers.h"
#include "Convolution/ConvolutionMembers.h"
#include "quorin/Alpha.h"
#include "quorin/Conversion.h"
#include "quorin/Utilities.h"
#include "quorin/Histogram.h"
#include "quorin/Transform.h"
#include "quorin/Geometry.h"

namespace quorin::fuzz {
namespace {

constexpr BufferSpec S(Format f) { return {Role::Source, f}; }
constexpr BufferSpec A(Format f) { return {Role::OptionalSource, f}; }
constexpr BufferSpec D(Format f) { return {Role::Destination, f}; }
constexpr BufferSpec M(Format f) { return {Role::MatchedDestination, f}; }
constexpr BufferSpec W(Format f) { return {Role::RowBytesDestination, f}; }
constexpr BufferSpec Stepped(Format f) { return {Role::StepDestination, f}; }

using enum Format;

// A host that reads every byte it is handed and lets go of them at once, so
// that a copy or a wrap reaching past the caller's buffer shows.
QuorinHostOrlImage* ReadAndRelease(const QuorinOrlImageFormat*, size_t, size_t, size_t, const void* bytes,
                                   size_t length, void (*release)(void*), void* info) {
    volatile unsigned char sum = 0;
    for (size_t i = 0; i < length; ++i) sum = sum + static_cast<const unsigned char*>(bytes)[i];
    release(info);
    static int image;
    return reinterpret_cast<QuorinHostOrlImage*>(&image);
}

// A host image of an 8-bit ARGB buffer: an untrusted record with a format the
// library checks, handed to the host above.
Quorin_Error CreateOrlImageFromARGB8888(const Quorin_Buffer* src, Quorin_Flags flags) {
    _sQuorinOrlBridgeSymbolTable.ImageCreate = &ReadAndRelease;
    const QuorinOrlImageFormat argb{8, 32, nullptr, 1, 0, nullptr, 0};
    Quorin_Error error = kQuorinSuccess;
    QuorinCreateOrlImageFromBuffer(src, &argb, nullptr, nullptr, flags, &error);
    return error;
}

// Host images take copies, or wrap the caller's pixels with NoAllocate.
constexpr Quorin_Flags kHostImage = kQuorinFlag_SingleThreaded | kQuorinFlag_Verbose | kQuorinFlag_NoAllocate;

#define QUORIN_ROW(name, accepted, ...) Row<&name>(#name, {__VA_ARGS__}, accepted)

// The matrix members refuse no flag; only single-threaded has an effect.
constexpr Quorin_Flags kMatrix = kQuorinFlag_SingleThreaded;

// The float matrix in the fuzzer's terms: its coefficients from the drawn
// matrix bytes, both biases from the drawn values.
Quorin_Error MatrixMultiplyFloats(const Quorin_Buffer* src, const Quorin_Buffer* dest, const int16_t* coefficients,
                                  const uint8_t* values, Quorin_Flags flags) {
    const auto* biases = reinterpret_cast<const float*>(values);
    return QuorinMatrixMultiply_ARGBFFFF(src, dest, reinterpret_cast<const float*>(coefficients), biases, biases,
                                         flags);
}

// The histograms refuse no flag; skip-alpha and single-threaded have effects.
constexpr Quorin_Flags kHistogram = kQuorinFlag_SkipAlpha | kQuorinFlag_SingleThreaded;

// The float histogram in the fuzzer's terms: its range from the drawn ranges'
// first channel (1 and 0 without them).
Quorin_Error HistogramOfFloats(const Quorin_Buffer* src, uint32_t* const* histograms, uint32_t entries,
                               const float* maxFloat, const float* minFloat, Quorin_Flags flags) {
    return QuorinHistogramCalculation_ARGBFFFF(src, histograms, entries, minFloat ? minFloat[0] : 0.0f,
                                               maxFloat ? maxFloat[0] : 1.0f, flags);
}

// The convolution members take kernel sizes, offsets, a kernel and a divisor
// the generic feeder cannot tell apart: the word gives the sizes (mostly
// small, sometimes 255 or 256) and the offsets (mostly equal), the index the
// divisor, and the values a kernel of any size, repeated, or null.
template <const convolution::Member& kMember>
Quorin_Error InvokeConvolution(const Arguments& a) {
    static thread_local int16_t kernel[256 * 256];
    if (a.values != nullptr)
        for (size_t i = 0; i < 256 * 256; ++i)
            kernel[i] = static_cast<int16_t>(a.values[2 * i % 16] | a.values[2 * i % 16 + 1] << 8);
    const uint32_t w = a.word;
    const bool large = (w >> 14) == 3;
    const uint32_t height = large ? 255 + (w & 1) : w & 7, width = large ? 255 + (w >> 1 & 1) : w >> 3 & 7;
    const uint32_t offsetX = w >> 6 & 3, offsetY = (w >> 8 & 1) ? offsetX : w >> 9 & 3;
    const int32_t divisors[] = {0, 1, 9, -1, 16, 65537, 3, 0x7FFFFFFF};
    return kMember.run({a.buffers[0], a.buffers[1], nullptr, offsetX, offsetY, a.values ? kernel : nullptr, height,
                        width, divisors[static_cast<unsigned>(a.index + 2) % 8], a.flags});
}

template <const convolution::Member& kMember>
constexpr Member ConvolutionRow() {
    const Format format = kMember.planar() ? Format::k8 : Format::k8x4;
    return {kMember.name, &InvokeConvolution<kMember>, 2, {S(format), D(format)}, kQuorinFlag_QueryTempSize,
            kWord | kIndex | kValues};
}

// Scaling refuses no flag; high quality and the size query act. Equal sizes
// with equal rowBytes are one block copy, so the destination's padding is
// written too.
constexpr Quorin_Flags kScale = kQuorinFlag_HighQualityResampling | kQuorinFlag_QueryTempSize;
// Quarter turns refuse no flag; the size query answers 0.
constexpr Quorin_Flags kRotate = kQuorinFlag_QueryTempSize;

// A quarter turn's rotation constant: one of the four turns seven times in
// eight, so that the turns themselves are fuzzed; any byte otherwise, for
// the refusal of the others.
template <auto F>
Quorin_Error InvokeTurn(const Arguments& a) {
    Arguments turned = a;
    if (a.byteConstant < 224) turned.byteConstant = a.byteConstant & 3;
    return CallExported<F>(turned);
}
template <auto F, size_t N>
Member TurnRow(const char* name, const BufferSpec (&buffers)[N]) {
    Member row = Row<F>(name, buffers, kRotate);
    row.invoke = &InvokeTurn<F>;
    return row;
}

// Packing into one bit a pixel in mode 0, the only mode that exists (the
// others abort by design).
Quorin_Error PackToOneBit(const Quorin_Buffer* src, const Quorin_Buffer* dest, Quorin_Flags) {
    return QuorinConvert_Planar8toPlanar1(src, dest, nullptr, 0);
}

// Rows written by hand, for families without a member table; a family that
// has one gets its rows from it (TableRows below).
const std::vector<Member> kMembers = {
    Row<&CreateOrlImageFromARGB8888>("QuorinCreateOrlImageFromBuffer", {S(k8x4)}, kHostImage),
    // Colour matrices.
    QUORIN_ROW(QuorinMatrixMultiply_ARGB8888, kMatrix, S(k8x4), D(k8x4)),
    Row<&MatrixMultiplyFloats>("QuorinMatrixMultiply_ARGBFFFF", {S(kFx4), D(kFx4)}, kMatrix),
    // Histograms.
    QUORIN_ROW(QuorinHistogramCalculation_ARGB8888, kHistogram, S(k8x4)),
    Row<&HistogramOfFloats>("QuorinHistogramCalculation_ARGBFFFF", {S(kFx4)}, kHistogram),
    // Convolution: general, box and tent.
    ConvolutionRow<convolution::kConvolvePlanar8>(),
    ConvolutionRow<convolution::kConvolveARGB8888>(),
    ConvolutionRow<convolution::kBoxConvolvePlanar8>(),
    ConvolutionRow<convolution::kBoxConvolveARGB8888>(),
    ConvolutionRow<convolution::kTentConvolvePlanar8>(),
    ConvolutionRow<convolution::kTentConvolveARGB8888>(),
    // Scaling and quarter turns.
    QUORIN_ROW(QuorinScale_ARGB8888, kScale, S(k8x4), W(k8x4)),
    QUORIN_ROW(QuorinScale_ARGB16U, kScale, S(k16x4), W(k16x4)),
    QUORIN_ROW(QuorinScale_ARGB16S, kScale, S(k16x4), W(k16x4)),
    QUORIN_ROW(QuorinScale_ARGBFFFF, kScale, S(kFx4), W(kFx4)),
    QUORIN_ROW(QuorinScale_Planar8, kScale, S(k8), W(k8)),
    QUORIN_ROW(QuorinScale_Planar16S, kScale, S(k16), W(k16)),
    QUORIN_ROW(QuorinScale_Planar16U, kScale, S(k16), W(k16)),
    QUORIN_ROW(QuorinScale_PlanarF, kScale, S(kF), W(kF)),
    TurnRow<&QuorinRotate90_ARGB8888>("QuorinRotate90_ARGB8888", {S(k8x4), D(k8x4)}),
    TurnRow<&QuorinRotate90_ARGBFFFF>("QuorinRotate90_ARGBFFFF", {S(kFx4), D(kFx4)}),
    // Packed planes: the bytes converted come from the packed side's
    // rowBytes, so a destination may change along its whole rows; no flag
    // is read.
    QUORIN_ROW(QuorinConvert_Planar1toPlanar8, 0, S(k8), W(k8)),
    QUORIN_ROW(QuorinConvert_Planar2toPlanar8, 0, S(k8), W(k8)),
    QUORIN_ROW(QuorinConvert_Planar4toPlanar8, 0, S(k8), W(k8)),
    Row<&PackToOneBit>("QuorinConvert_Planar8toPlanar1", {S(k8), W(k8)}, 0),
    QUORIN_ROW(QuorinConvert_Planar8toPlanar2, 0, S(k8), W(k8)),
    QUORIN_ROW(QuorinConvert_Planar8toPlanar4, 0, S(k8), W(k8)),
    // Three-byte pixels into four, the alpha plane optional; the size query
    // is answered first.
    QUORIN_ROW(_customConvertImage, kQuorinFlag_QueryTempSize, S(k8x3), D(k8x4), A(k8)),
};

#undef QUORIN_ROW

// ---- Rows made from the families' member tables ---------------------------------

constexpr Format FormatOf(const PixelFormat& f) {
    const size_t bytes = f.sampleBytes();
    switch (f.channels) {
        case 1: return bytes == 1 ? k8 : bytes == 2 ? k16 : kF;
        case 3: return bytes == 1 ? k8x3 : bytes == 2 ? k16x3 : kFx3;
        default: return bytes == 1 ? k8x4 : bytes == 2 ? k16x4 : kFx4;
    }
}

// The flags a check list accepts: its flags step's, else single-threaded
// alone (the only bit with an effect where no bit is refused).
Quorin_Flags AcceptedBy(std::span<const CheckStep> checks) {
    for (const CheckStep& step : checks)
        if (step.check == Check::FlagsOutside) return step.accepted;
    return kQuorinFlag_SingleThreaded;
}

Member TableRow(const char* name, Invoker invoke, std::initializer_list<BufferSpec> buffers,
                std::span<const CheckStep> checks, uint8_t extras) {
    Member m{name, invoke, buffers.size(), {}, AcceptedBy(checks), extras};
    std::copy(buffers.begin(), buffers.end(), m.buffers.begin());
    return m;
}

template <size_t I>
Quorin_Error InvokeBlend(const Arguments& a) {
    const alpha::Member& m = *alpha::kBlendMembers[I];
    const double constant = m.format.sample == SampleKind::F32 ? static_cast<double>(a.floatConstant) : a.byteConstant;
    return m.invoke(a.buffers.data(), constant, a.flags);
}
template <size_t I>
Member BlendRow() {
    const alpha::Member& m = *alpha::kBlendMembers[I];
    const Format f = FormatOf(m.format);
    Member row = TableRow(m.name, &InvokeBlend<I>, {}, m.checks,
                          !m.takesConstant ? kNoExtra : IsFloat(f) ? kFloatConstant : kByteConstant);
    // A destination the first check does not take is taken to match the first buffer.
    row.bufferCount = m.buffers;
    for (size_t i = 0; i < m.buffers; ++i)
        row.buffers[i] = !m.writes(i) ? S(f) : m.checks.front().takes(i) ? D(f) : M(f);
    return row;
}

template <size_t I>
Quorin_Error InvokePremultiply(const Arguments& a) {
    const premultiply::Member& m = *premultiply::kPremultiplyMembers[I];
    return m.planar() ? m.run(a.buffers[0], a.buffers[1], a.buffers[2], a.flags)
                      : m.run(a.buffers[0], nullptr, a.buffers[1], a.flags);
}
template <size_t I>
Member PremultiplyRow() {
    const premultiply::Member& m = *premultiply::kPremultiplyMembers[I];
    const Format f = FormatOf(m.format);
    if (m.planar()) return TableRow(m.name, &InvokePremultiply<I>, {S(f), S(f), D(f)}, m.checks, kNoExtra);
    return TableRow(m.name, &InvokePremultiply<I>, {S(f), D(f)}, m.checks, kNoExtra);
}

// A layout row's entry point already takes the harness's arguments.
Member LayoutRow(const layout::Member& m) {
    const uint8_t extras = (m.constant == layout::ConstantKind::Byte    ? kByteConstant
                            : m.constant == layout::ConstantKind::Float ? kFloatConstant
                                                                        : kNoExtra) |
                           (m.takesRanges ? kRanges : kNoExtra);
    Member row = TableRow(m.name, m.invoke, {}, m.checks, extras);
    row.bufferCount = m.bufferCount();
    const Format image = FormatOf(m.image), plane = FormatOf(m.planes);
    row.buffers[m.imageArgument()] = m.merge() ? D(image) : S(image);
    for (size_t k = 0; k < m.planeCount(); ++k)
        row.buffers[m.planeArgument(k)] = !m.merge() ? D(plane) : k == 0 && m.alphaPlaneOptional ? A(plane) : S(plane);
    return row;
}

// The channel operations take their values as the exported functions hand
// them over: a pixel or map from `values`, a scalar as the constant of its
// depth (16-bit ones from `word`), a mask or pixel size from `word`.
template <size_t I>
Quorin_Error InvokeChannels(const Arguments& a) {
    using channels::Shape;
    const channels::Member& m = *channels::kChannelMembers[I];
    const bool floats = m.format.sample == SampleKind::F32;
    const uint16_t word16 = static_cast<uint16_t>(a.word);
    const float bounds[2] = {a.floatConstant, a.floatConstant};
    const void* scalar = floats ? static_cast<const void*>(&a.floatConstant)
                         : m.format.sampleBytes() == 2 ? static_cast<const void*>(&word16)
                                                       : &a.byteConstant;
    const Quorin_Buffer* src = a.buffers[0];
    const Quorin_Buffer* dest = a.buffers[1];
    switch (m.shape) {
        case Shape::Fill:
            return m.run({nullptr, src, m.format.channels == 4 ? a.values : scalar, 0, 0, a.flags});
        case Shape::OverwritePlane: return m.run({nullptr, src, scalar, 0, 0, a.flags});
        case Shape::OverwriteScalar: return m.run({src, dest, scalar, a.word, 0, a.flags});
        case Shape::OverwritePixel: return m.run({src, dest, a.values, a.word, 0, a.flags});
        case Shape::Copy: return m.run({src, dest, nullptr, 0, a.word, a.flags});
        case Shape::Clip: return m.run({src, dest, bounds, 0, 0, a.flags});
        case Shape::Permute: return m.run({src, dest, a.values, 0, 0, a.flags});
        case Shape::Extract: return m.run({src, dest, nullptr, 0, 0, a.flags, a.index});
        case Shape::LookUp: {
            // Every channel's table is the same 256 bytes (or none).
            const uint8_t* tables[4] = {a.values, a.values, a.values, a.values};
            return m.run({src, dest, a.values ? tables : nullptr, 0, 0, a.flags});
        }
        case Shape::Select:
        case Shape::OverwritePlanes:
            return m.run({a.buffers[1], a.buffers[2], nullptr, a.word, 0, a.flags, 0, a.buffers[0]});
        case Shape::Flatten: {
            const void* background = floats ? static_cast<const void*>(a.maxFloat) : a.values;
            return m.run({src, dest, background, 0, 0, a.flags, a.index});
        }
    }
    return kQuorinError_InternalFault;
}
template <size_t I>
Member ChannelRow() {
    using channels::Shape;
    const channels::Member& m = *channels::kChannelMembers[I];
    const Format f = FormatOf(m.format);
    const uint8_t scalar = m.format.sampleBytes() == 2 ? uint8_t{kWord} : IsFloat(f) ? uint8_t{kFloatConstant} : uint8_t{kByteConstant};
    const Invoker invoke = &InvokeChannels<I>;
    switch (m.shape) {
        case Shape::Fill:
            return TableRow(m.name, invoke, {D(f)}, m.checks, m.format.channels == 4 ? uint8_t{kValues} : scalar);
        case Shape::OverwritePlane: return TableRow(m.name, invoke, {W(f)}, m.checks, scalar);
        case Shape::OverwriteScalar: return TableRow(m.name, invoke, {S(f), D(f)}, m.checks, scalar | kWord);
        case Shape::OverwritePixel: return TableRow(m.name, invoke, {S(f), W(f)}, m.checks, kValues | kWord);
        case Shape::Copy: return TableRow(m.name, invoke, {S(k8), D(k8)}, m.checks, kWord);
        case Shape::Clip: return TableRow(m.name, invoke, {S(f), D(f)}, m.checks, kFloatConstant);
        case Shape::Permute: return TableRow(m.name, invoke, {S(f), D(f)}, m.checks, kValues);
        case Shape::Extract:
            return TableRow(m.name, invoke, {S(f), W(FormatOf(PixelFormat{m.format.sample, 1, "C"}))}, m.checks,
                            kIndex);
        case Shape::LookUp: return TableRow(m.name, invoke, {S(f), Stepped(f)}, m.checks, kValues);
        case Shape::Select: return TableRow(m.name, invoke, {S(f), S(f), D(f)}, m.checks, kWord);
        case Shape::OverwritePlanes:
            return TableRow(m.name, invoke, {S(FormatOf(PixelFormat{m.format.sample, 1, "C"})), S(f), W(f)},
                            m.checks, kWord);
        case Shape::Flatten: {
            // The size query is answered before the checks, so it is a flag the member takes.
            Member row = TableRow(m.name, invoke, {S(f), D(FormatOf(m.output))}, m.checks,
                                  (IsFloat(f) ? uint8_t{kRanges} : uint8_t{kValues}) | kIndex);
            row.accepted |= kQuorinFlag_QueryTempSize;
            return row;
        }
    }
    return {};
}

// The three-channel matrix: a packed pixel is one 16-bit word. Contiguous
// source rows with equal rowBytes are one run, so the destination may
// change anywhere in its rows; the size query is answered and refuses nothing.
template <size_t I>
Quorin_Error InvokeMatrix(const Arguments& a) {
    return packed::kMatrixMembers[I].run(a.buffers[0], a.buffers[1], a.flags);
}
template <size_t I>
Member MatrixRow() {
    const packed::MatrixMember& m = packed::kMatrixMembers[I];
    const auto format = [](const PixelFormat& f) { return f.packed() ? k16 : FormatOf(f); };
    Member row = TableRow(m.name, &InvokeMatrix<I>, {S(format(m.from)), W(format(m.to))}, m.checks, kNoExtra);
    row.accepted |= kQuorinFlag_QueryTempSize;
    return row;
}

// Adding alpha: the constant from the drawn constant of its depth (16-bit
// ones from `word`), the premultiply switch from `index`.
template <size_t I>
Quorin_Error InvokeAlphaAdding(const Arguments& a) {
    const packed::AlphaMember& m = packed::kAlphaMembers[I];
    const double constant = m.to.sample == SampleKind::F32 ? static_cast<double>(a.floatConstant)
                            : m.to.sampleBytes() == 2    ? static_cast<double>(a.word & 0xFFFF)
                                                         : a.byteConstant;
    const bool plane = m.takesPlane();
    return m.run({a.buffers[0], plane ? a.buffers[1] : nullptr, constant, a.buffers[plane ? 2 : 1], a.index, a.flags});
}
template <size_t I>
Member AlphaAddingRow() {
    const packed::AlphaMember& m = packed::kAlphaMembers[I];
    const Format from = m.from.packed() ? k16 : FormatOf(m.from), to = FormatOf(m.to);
    const uint8_t constant = m.to.sample == SampleKind::F32 ? uint8_t{kFloatConstant}
                             : m.to.sampleBytes() == 2       ? uint8_t{kWord}
                                                             : uint8_t{kByteConstant};
    Member row = m.takesPlane()
                     ? TableRow(m.name, &InvokeAlphaAdding<I>, {S(from), A(k8), D(to)}, m.checks, constant | kIndex)
                     : TableRow(m.name, &InvokeAlphaAdding<I>, {S(from), D(to)}, m.checks, constant);
    row.accepted |= kQuorinFlag_QueryTempSize;
    return row;
}

template <size_t... I, class Make>
void AddRows(std::vector<Member>& rows, std::index_sequence<I...>, Make make) {
    (rows.push_back(make(std::integral_constant<size_t, I>{})), ...);
}

// The blends, premultiply and unpremultiply, clip to alpha, the layout
// conversions and the channel operations, in the order the seed corpus was
// made for.
std::vector<Member> TableRows() {
    std::vector<Member> rows;
    constexpr size_t kClipToAlpha = 10;  // the blend table's rows from here on are clip to alpha
    static_assert(std::string_view(alpha::kBlendMembers[kClipToAlpha]->name) == "QuorinClipToAlpha_Planar8");
    const auto blend = [](auto i) { return BlendRow<i>(); };
    AddRows(rows, std::make_index_sequence<kClipToAlpha>(), blend);
    AddRows(rows, std::make_index_sequence<std::size(premultiply::kPremultiplyMembers)>(),
            [](auto i) { return PremultiplyRow<i>(); });
    AddRows(rows, std::make_index_sequence<std::size(alpha::kBlendMembers) - kClipToAlpha>(),
            [](auto i) { return BlendRow<kClipToAlpha + i>(); });
    for (const layout::Member* m : layout::kLayoutMembers) rows.push_back(LayoutRow(*m));
    AddRows(rows, std::make_index_sequence<std::size(channels::kChannelMembers)>(),
            [](auto i) { return ChannelRow<i>(); });
    AddRows(rows, std::make_index_sequence<packed::kCellCount>(), [](auto i) { return MatrixRow<i>(); });
    AddRows(rows, std::make_index_sequence<packed::kAlphaCount>(), [](auto i) { return AlphaAddingRow<i>(); });
    return rows;
}

// The depth conversions: the Q12 members are layout rows (the split forms
// read the single-threaded and query flags and refuse none); the 16-bit plane
// members read no flag and walk dest's rows.
std::vector<Member> DepthRows() {
    std::vector<Member> rows;
    for (const layout::Member* m : layout::kQ12Members) {
        Member row = LayoutRow(*m);
        row.accepted = kCommonFlags;
        rows.push_back(row);
    }
    rows.push_back(Row<&QuorinConvert_16UToPlanar8>("QuorinConvert_16UToPlanar8", {S(k16), D(k8)}, 0));
    rows.push_back(Row<&QuorinConvert_Planar8To16U>("QuorinConvert_Planar8To16U", {S(k8), D(k16)}, 0));
    return rows;
}

}  // namespace

std::span<const Member> AllMembers() {
    static const std::vector<Member> rows = [] {
        std::vector<Member> all = TableRows();
        all.insert(all.end(), kMembers.begin(), kMembers.end());
        const std::vector<Member> depth = DepthRows();
        all.insert(all.end(), depth.begin(), depth.end());
        return all;
    }();
    return rows;
}

}  // namespace quorin::fuzz
