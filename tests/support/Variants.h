// Runs an operation under every kernel (scalar, and the vector kernel on each
// instruction set this processor and build offer) and every split
// (single-threaded, the machine's processors, an odd forced processor count)
// and requires identical bytes from all of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "quorin/Types.h"

namespace quorin::test {

struct Variant {
    std::string name;      // for failure messages: "scalar/serial", "AVX2/3 processors", ...
    bool scalar;           // speed-ups off
    int64_t vectorTarget;  // instruction set the vector kernel is limited to (0: scalar)
    Quorin_Flags flags;    // kQuorinFlag_SingleThreaded or 0
    unsigned processors;   // forced processor count, 0 for the machine's
};

std::vector<Variant> KernelAndSplitVariants();

// Applies a variant for the lifetime of the object and restores the defaults after.
class VariantScope {
public:
    explicit VariantScope(const Variant& variant);
    ~VariantScope();
    VariantScope(const VariantScope&) = delete;
    VariantScope& operator=(const VariantScope&) = delete;
};

// Makes every vector kernel write with streaming stores, whatever the
// destination's size, for the lifetime of the object.
class StreamingForced {
public:
    StreamingForced();
    ~StreamingForced();
    StreamingForced(const StreamingForced&) = delete;
    StreamingForced& operator=(const StreamingForced&) = delete;
};

// Only the kernel choice: scalar, then each vector instruction set.
std::vector<Variant> KernelVariants();

// Calls run(extraFlags) once per variant and expects the returned bytes of
// every variant to equal those of the first (scalar, single-threaded) one.
void ExpectSameBytesEverywhere(const std::function<std::vector<uint8_t>(Quorin_Flags)>& run,
                               const std::vector<Variant>& variants = KernelAndSplitVariants());

}  // namespace quorin::test
