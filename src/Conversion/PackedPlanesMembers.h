// The packed-plane conversions written down once: each member's exported
// entry point, its packed depth and direction, and whether it tests its
// record pointers. The entry points (PackedPlanes.cpp), the tests, the
// benchmark, the safety tests and the fuzzer walk kPlaneMembers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "quorin/Conversion.h"

namespace quorin::planes {

enum class Direction : uint8_t { Unpack, Pack };

// The checks in the order the entry points run them, with their codes.
struct PlaneStep {
    const char* name;
    Quorin_Error code;
};
enum PlaneStepIndex : size_t {
    kStepNullRecord,
    kStepNullData,
    kStepExceedsSource,
    kStepRowLength,
    kStepCannotDescribe,
};
inline constexpr PlaneStep kPlaneSteps[] = {
    {"src or dest is null", kQuorinError_NullPointer},
    {"src data is null, then dest data", kQuorinError_BadArgument},
    {"dest is wider than src, then taller", kQuorinError_RegionExceedsSource},
    {"the rowBytes do not hold the packed row's bytes", kQuorinError_RegionExceedsSource},
    {"a record cannot describe its image", kQuorinError_BadArgument},
};

struct PlaneMember {
    const char* name;
    unsigned bits;  // of the packed side
    Direction direction;
    bool testsRecords;  // step 1 is run
    // Calls the exported function (mode 0 where it takes one).
    Quorin_Error (*invoke)(const Quorin_Buffer* src, const Quorin_Buffer* dest);

    constexpr size_t pixelsPerByte() const { return 8 / bits; }
    constexpr unsigned srcBits() const { return direction == Direction::Unpack ? bits : 8; }
    constexpr unsigned destBits() const { return direction == Direction::Unpack ? 8 : bits; }
    // The packed bytes converted per row.
    size_t packedBytes(const Quorin_Buffer* src, const Quorin_Buffer* dest) const {
        return direction == Direction::Unpack ? src->rowBytes : dest->rowBytes;
    }
};

template <auto kEntry>
Quorin_Error InvokePlane(const Quorin_Buffer* src, const Quorin_Buffer* dest) {
    if constexpr (requires { kEntry(nullptr, nullptr, nullptr, 0); }) return kEntry(src, dest, nullptr, 0);
    else return kEntry(src, dest, 0);
}

#define QUORIN_PLANE_MEMBER(row, name, bits, direction, testsRecords) \
    inline constexpr PlaneMember row{#name, bits, Direction::direction, testsRecords, &InvokePlane<&name>};
QUORIN_PLANE_MEMBER(kPlanar1toPlanar8, QuorinConvert_Planar1toPlanar8, 1, Unpack, true)
QUORIN_PLANE_MEMBER(kPlanar2toPlanar8, QuorinConvert_Planar2toPlanar8, 2, Unpack, true)
QUORIN_PLANE_MEMBER(kPlanar4toPlanar8, QuorinConvert_Planar4toPlanar8, 4, Unpack, false)
QUORIN_PLANE_MEMBER(kPlanar8toPlanar1, QuorinConvert_Planar8toPlanar1, 1, Pack, true)
QUORIN_PLANE_MEMBER(kPlanar8toPlanar2, QuorinConvert_Planar8toPlanar2, 2, Pack, true)
QUORIN_PLANE_MEMBER(kPlanar8toPlanar4, QuorinConvert_Planar8toPlanar4, 4, Pack, true)
#undef QUORIN_PLANE_MEMBER

inline constexpr const PlaneMember* kPlaneMembers[] = {&kPlanar1toPlanar8, &kPlanar2toPlanar8, &kPlanar4toPlanar8,
                                                       &kPlanar8toPlanar1, &kPlanar8toPlanar2, &kPlanar8toPlanar4};

}  // namespace quorin::planes
