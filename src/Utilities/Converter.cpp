// Converter entry points whose work is not implemented yet. Each checks its
// arguments like the implemented converter entry points and returns the first
// failure; where the conversion work would start it writes the fatal record
// and aborts.
#include "Core/Checks.h"
#include "platform/Log.h"
#include "quorin/Quorin.h"

namespace {

constexpr const char kModulePath[] = "Utilities/Converter";

// The line field of each fatal record. It names the entry point's place in
// this module and is part of the record: keep it when the file changes.
constexpr int kAnyToAnyLine = 36;
constexpr int kMustOperateOutOfPlaceLine = 44;
constexpr int kCreateWithTintweaveLine = 54;

// Running a converter accepts SingleThreaded, QueryTempSize and Verbose (0x190);
// creating one accepts SingleThreaded and Verbose (0x110).
constexpr Quorin_Flags kRunFlags = quorin::kCommonFlags | kQuorinFlag_Verbose;
constexpr Quorin_Flags kCreateFlags = kQuorinFlag_SingleThreaded | kQuorinFlag_Verbose;

// The checks shared by the entry points that run a converter over buffers.
Quorin_Error CheckRun(const QuorinConverter* converter, const Quorin_Buffer* srcs,
                      const Quorin_Buffer* dests, Quorin_Flags flags) {
    if (converter == nullptr || srcs == nullptr || dests == nullptr) return kQuorinError_NullPointer;
    if (quorin::FlagsOutside(flags, kRunFlags)) return kQuorinError_UnsupportedFlags;
    return kQuorinSuccess;
}

}  // namespace

extern "C" {

QUORIN_API Quorin_Error QuorinConvert_AnyToAny(const QuorinConverter* converter, const Quorin_Buffer* srcs,
                                               const Quorin_Buffer* dests, void* /*tempBuffer*/,
                                               Quorin_Flags flags) {
    if (const Quorin_Error error = CheckRun(converter, srcs, dests, flags)) return error;
    quorin::ReportFatal(__func__, kModulePath, kAnyToAnyLine, quorin::kNotYetImplemented);
}

// Needs the converter's conversion pipeline, which does not exist yet.
QUORIN_API Quorin_Error QuorinConverter_MustOperateOutOfPlace(const QuorinConverter* converter,
                                                              const Quorin_Buffer* srcs,
                                                              const Quorin_Buffer* dests,
                                                              Quorin_Flags flags) {
    if (const Quorin_Error error = CheckRun(converter, srcs, dests, flags)) return error;
    quorin::ReportFatal(__func__, kModulePath, kMustOperateOutOfPlaceLine, quorin::kNotYetImplemented);
}

// The format checks and the colour-management transform that follow need the
// host bridge and the format records, which do not exist yet.
QUORIN_API QuorinConverter* QuorinConverter_CreateWithTintweaveCodeFragment(
    const QuorinHostObject* codeFragment, const QuorinOrlImageFormat* srcFormat,
    const QuorinOrlImageFormat* destFormat, const float* /*backgroundColor*/, Quorin_Flags flags,
    Quorin_Error* error) {
    Quorin_Error code = kQuorinSuccess;
    if (codeFragment == nullptr || srcFormat == nullptr || destFormat == nullptr) {
        code = kQuorinError_NullPointer;
    } else if (quorin::FlagsOutside(flags, kCreateFlags)) {
        code = kQuorinError_UnsupportedFlags;
    } else {
        quorin::ReportFatal(__func__, kModulePath, kCreateWithTintweaveLine, quorin::kNotYetImplemented);
    }
    if (error != nullptr) *error = code;
    return nullptr;
}

}  // extern "C"
