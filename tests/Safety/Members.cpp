#include "Members.h"

#include "Alpha/BlendMembers.h"
#include "Alpha/PremultiplyMembers.h"
#include "Conversion/ChannelMembers.h"
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
            default:
                members.push_back({m->name, {In(m->shape == Shape::Copy ? 4 : bytes), Out(m->shape == Shape::Copy ? 4 : bytes)},
                                   false, [m, value](B b, F f, R, R) { return m->run({b[0], b[1], value, 0x5, 4, f}); },
                                   nullCode});
        }
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
        row.answersQueries = true;
        members.push_back(std::move(row));
    }
    for (const geometry::Rotate90Member* m : geometry::kRotate90Members) {
        const size_t bytes = m->format.pixelBytes();
        SafetyMember row{m->name, {In(bytes), Out(bytes)}, false,
                         [m](B b, F f, R, R) { return m->entry(b[0], b[1], 1, kBackground, f); },
                         kQuorinError_BadArgument};
        row.answersQueries = true;
        members.push_back(std::move(row));
    }
    return members;
}

std::vector<SafetyMember> LayoutMembers() {
    const Arg cut{4, Use::WrittenCutToRows};
    return {
        // planes into pixels
        {"QuorinConvert_Planar8toARGB8888", {In(1), In(1), In(1), In(1), cut}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8toARGB8888(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_Planar8ToXRGB8888", {In(1), In(1), In(1), cut}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8ToXRGB8888(0xC3, b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_Planar8ToBGRX8888", {In(1), In(1), In(1), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8ToBGRX8888(b[0], b[1], b[2], 0xC3, b[3], f); }},
        {"QuorinConvert_PlanarFtoARGBFFFF", {In(4), In(4), In(4), In(4), Out(16)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFtoARGBFFFF(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_PlanarFToXRGBFFFF", {In(4), In(4), In(4), Out(16)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFToXRGBFFFF(0.8f, b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_PlanarFToBGRXFFFF", {In(4), In(4), In(4), Out(16)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFToBGRXFFFF(b[0], b[1], b[2], 0.8f, b[3], f); }},
        {"QuorinConvert_Planar16UtoARGB16U", {In(2), In(2), In(2), In(2), Out(8)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar16UtoARGB16U(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_Planar16UtoRGB16U", {In(2), In(2), In(2), Out(6)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar16UtoRGB16U(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_Planar8toRGB888", {In(1), In(1), In(1), Out(3)}, false,
         [](B b, F f, R, R) { return QuorinConvert_Planar8toRGB888(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_PlanarFtoRGBFFF", {In(4), In(4), In(4), Out(12)}, false,
         [](B b, F f, R, R) { return QuorinConvert_PlanarFtoRGBFFF(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_Planar8ToARGBFFFF", {In(1), In(1), In(1), In(1), Out(16)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_Planar8ToARGBFFFF(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
        {"QuorinConvert_Planar8ToXRGBFFFF", {In(1), In(1), In(1), Out(16)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_Planar8ToXRGBFFFF(0.8f, b[0], b[1], b[2], b[3], max, min, f); }},
        {"QuorinConvert_Planar8ToBGRXFFFF", {In(1), In(1), In(1), Out(16)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_Planar8ToBGRXFFFF(b[0], b[1], b[2], 0.8f, b[3], max, min, f); }},
        {"QuorinConvert_PlanarFToARGB8888", {In(4), In(4), In(4), In(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_PlanarFToARGB8888(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
        {"QuorinConvert_PlanarFToXRGB8888", {In(4), In(4), In(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_PlanarFToXRGB8888(0.8f, b[0], b[1], b[2], b[3], max, min, f); }},
        {"QuorinConvert_PlanarFToBGRX8888", {In(4), In(4), In(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_PlanarFToBGRX8888(b[0], b[1], b[2], 0xC3, b[3], max, min, f); }},
        // pixels into planes
        {"QuorinConvert_ARGB8888toPlanar8", {In(4), Out(1), Out(1), Out(1), Out(1)}, false,
         [](B b, F f, R, R) { return QuorinConvert_ARGB8888toPlanar8(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_ARGBFFFFtoPlanarF", {In(16), Out(4), Out(4), Out(4), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_ARGBFFFFtoPlanarF(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_ARGB16UtoPlanar16U", {In(8), Out(2), Out(2), Out(2), Out(2)}, false,
         [](B b, F f, R, R) { return QuorinConvert_ARGB16UtoPlanar16U(b[0], b[1], b[2], b[3], b[4], f); }},
        {"QuorinConvert_RGB16UtoPlanar16U", {In(6), Out(2), Out(2), Out(2)}, false,
         [](B b, F f, R, R) { return QuorinConvert_RGB16UtoPlanar16U(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_XRGB8888ToPlanar8", {In(4), Out(1), Out(1), Out(1)}, false,
         [](B b, F f, R, R) { return QuorinConvert_XRGB8888ToPlanar8(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_BGRX8888ToPlanar8", {In(4), Out(1), Out(1), Out(1)}, false,
         [](B b, F f, R, R) { return QuorinConvert_BGRX8888ToPlanar8(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_XRGBFFFFToPlanarF", {In(16), Out(4), Out(4), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_XRGBFFFFToPlanarF(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_BGRXFFFFToPlanarF", {In(16), Out(4), Out(4), Out(4)}, false,
         [](B b, F f, R, R) { return QuorinConvert_BGRXFFFFToPlanarF(b[0], b[1], b[2], b[3], f); }},
        {"QuorinConvert_ARGB8888toPlanarF", {In(4), Out(4), Out(4), Out(4), Out(4)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_ARGB8888toPlanarF(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
        {"QuorinConvert_ARGBFFFFtoPlanar8", {In(16), Out(1), Out(1), Out(1), Out(1)}, true,
         [](B b, F f, R max, R min) { return QuorinConvert_ARGBFFFFtoPlanar8(b[0], b[1], b[2], b[3], b[4], max, min, f); }},
    };
}

}  // namespace

const std::vector<SafetyMember>& ImplementedMembers() {
    static const std::vector<SafetyMember> members = [] {
        std::vector<SafetyMember> all = AlphaMembers();
        for (SafetyMember& m : LayoutMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : ChannelMembers()) all.push_back(std::move(m));
        for (SafetyMember& m : GeometryMembers()) all.push_back(std::move(m));
        return all;
    }();
    return members;
}

}  // namespace quorin::test
