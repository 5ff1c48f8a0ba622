// The scaling and quarter-turn families, written down once: every member's
// entry point, pixel format and check list. The entry points (Scale.cpp,
// Rotate90.cpp) are made from these rows; the tests, the benchmark, the
// safety tests and the fuzzer walk the two tables.
#pragma once

#include <cstddef>
#include <span>

#include "Core/CheckList.h"
#include "Core/PixelFormat.h"
#include "Geometry/ScaleRules.h"
#include "quorin/Geometry.h"

namespace quorin::geometry {

using scale::kARGB16S;
using scale::kPlanar16S;

// ---- Scale ---------------------------------------------------------------------
// Operands: src, dest. The size query is answered between the steps before
// `queryAfter` and the rest, so it answers with a null dest.data and for a
// record whose byte extent no object could hold.

inline constexpr CheckStep kScaleChecks8[] = {
    {"the source record or its pixel data is null", Check::Missing, kQuorinError_BadArgument, Operands({0})},
    {"the destination record is null", Check::NullRecord, kQuorinError_BadArgument, Operands({1})},
    {"a row is shorter than its pixels", Check::RowBytesShort, kQuorinError_InvalidRowBytes},
    {"a buffer has no rows or no columns", Check::Empty, kQuorinError_BadArgument},
    {"the destination's pixel data is null", Check::NullData, kQuorinError_BadArgument, Operands({1})},
    {"a record's byte extent is larger than any object", Check::ExtentTooLarge, kQuorinError_InvalidRowBytes},
};
template <uint8_t kSampleBytes>
inline constexpr CheckStep kScaleChecksAligned[] = {
    {"the source record or its pixel data is null", Check::Missing, kQuorinError_BadArgument, Operands({0})},
    {"the destination record is null", Check::NullRecord, kQuorinError_BadArgument, Operands({1})},
    {"a row is shorter than its pixels", Check::RowBytesShort, kQuorinError_InvalidRowBytes},
    {"a rowBytes is not a multiple of the sample size", Check::RowBytesNotMultiple, kQuorinError_InvalidRowBytes,
     kAllOperands, 0, 0, kSampleBytes},
    {"a buffer has no rows or no columns", Check::Empty, kQuorinError_BadArgument},
    {"the destination's pixel data is null", Check::NullData, kQuorinError_BadArgument, Operands({1})},
    {"a record's byte extent is larger than any object", Check::ExtentTooLarge, kQuorinError_InvalidRowBytes},
};

using ScaleEntry = Quorin_Error (*)(const Quorin_Buffer* src, const Quorin_Buffer* dest, void* tempBuffer,
                                    Quorin_Flags flags);

struct ScaleMember {
    const char* name;
    PixelFormat format;
    std::span<const CheckStep> checks;
    size_t queryAfter;  // steps run before the size query
    ScaleEntry entry;
};

template <PixelFormat F>
constexpr std::span<const CheckStep> ScaleChecksOf() {
    if constexpr (F.sampleBytes() == 1) {
        return kScaleChecks8;
    } else {
        return kScaleChecksAligned<static_cast<uint8_t>(F.sampleBytes())>;
    }
}
template <PixelFormat F>
constexpr ScaleMember MakeScaleMember(const char* name, ScaleEntry entry) {
    return {name, F, ScaleChecksOf<F>(), F.sampleBytes() == 1 ? size_t{4} : size_t{5}, entry};
}

inline constexpr ScaleMember kScaleARGB8888 = MakeScaleMember<kARGB8888>("QuorinScale_ARGB8888", &QuorinScale_ARGB8888);
inline constexpr ScaleMember kScaleARGB16U = MakeScaleMember<kARGB16U>("QuorinScale_ARGB16U", &QuorinScale_ARGB16U);
inline constexpr ScaleMember kScaleARGB16S = MakeScaleMember<kARGB16S>("QuorinScale_ARGB16S", &QuorinScale_ARGB16S);
inline constexpr ScaleMember kScaleARGBFFFF = MakeScaleMember<kARGBFFFF>("QuorinScale_ARGBFFFF", &QuorinScale_ARGBFFFF);
inline constexpr ScaleMember kScalePlanar8 = MakeScaleMember<kPlanar8>("QuorinScale_Planar8", &QuorinScale_Planar8);
inline constexpr ScaleMember kScalePlanar16S =
    MakeScaleMember<kPlanar16S>("QuorinScale_Planar16S", &QuorinScale_Planar16S);
inline constexpr ScaleMember kScalePlanar16U =
    MakeScaleMember<kPlanar16U>("QuorinScale_Planar16U", &QuorinScale_Planar16U);
inline constexpr ScaleMember kScalePlanarF = MakeScaleMember<kPlanarF>("QuorinScale_PlanarF", &QuorinScale_PlanarF);

inline constexpr const ScaleMember* kScaleMembers[] = {&kScaleARGB8888, &kScaleARGB16U,  &kScaleARGB16S,
                                                       &kScaleARGBFFFF, &kScalePlanar8,  &kScalePlanar16S,
                                                       &kScalePlanar16U, &kScalePlanarF};

// ---- Quarter turns ----------------------------------------------------------------
// Operands: src, dest. The rotation constant is tested between the two
// rowBytes steps (after step `rotationAfter`); the size query (always 0)
// follows step `queryAfter`; then the records this operation would walk out of.

inline constexpr CheckStep kRotate90Checks[] = {
    {"a record is null", Check::NullRecord, kQuorinError_BadArgument},
    {"a buffer has no rows or no columns", Check::Empty, kQuorinError_BadArgument},
    {"the source's rowBytes is 0", Check::RowBytesZero, kQuorinError_BadArgument, Operands({0})},
    {"the destination's rowBytes is 0", Check::RowBytesZero, kQuorinError_BadArgument, Operands({1})},
    {"a record's pixel data is null", Check::NullData, kQuorinError_BadArgument},
    {"a record cannot describe its image", Check::CannotDescribeImage, kQuorinError_BadArgument},
};
inline constexpr size_t kRotationTestedAfter = 3;
inline constexpr size_t kRotateQueryAfter = 4;

using Rotate90Entry = Quorin_Error (*)(const Quorin_Buffer* src, const Quorin_Buffer* dest, uint8_t rotation,
                                       const void* background, Quorin_Flags flags);

struct Rotate90Member {
    const char* name;
    PixelFormat format;
    std::span<const CheckStep> checks;
    Rotate90Entry entry;
};

template <PixelFormat F>
Quorin_Error Rotate90(const Quorin_Buffer* src, const Quorin_Buffer* dest, uint8_t rotation, const void* background,
                      Quorin_Flags flags);

inline constexpr Rotate90Member kRotate90ARGB8888{"QuorinRotate90_ARGB8888", kARGB8888, kRotate90Checks,
                                                  &Rotate90<kARGB8888>};
inline constexpr Rotate90Member kRotate90ARGBFFFF{"QuorinRotate90_ARGBFFFF", kARGBFFFF, kRotate90Checks,
                                                  &Rotate90<kARGBFFFF>};
inline constexpr const Rotate90Member* kRotate90Members[] = {&kRotate90ARGB8888, &kRotate90ARGBFFFF};

}  // namespace quorin::geometry
