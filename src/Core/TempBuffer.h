// The temporary-buffer protocol of the operations that need scratch memory:
// a size query answers with the byte count and does nothing else; otherwise
// the caller's buffer is used as it is, or, when the caller passed none, one
// zero-filled allocation of that size is made for the call and freed before
// it returns, with kQuorinError_OutOfMemory when it cannot be made.
//
//   if (flags & kQuorinFlag_QueryTempSize) return AnswerSizeQuery(bytes);
//   TempBuffer scratch;
//   if (const Quorin_Error error = scratch.acquire(tempBuffer, bytes)) return error;
//   ... scratch.data() ...  (freed by the destructor)
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "Core/Reduce.h"
#include "quorin/Types.h"

namespace quorin {

// The answer of a size query: the byte count, which must fit the positive
// range of the result (a larger need cannot be reported and is refused).
inline Quorin_Error AnswerSizeQuery(size_t bytes) {
    if (bytes > static_cast<size_t>(std::numeric_limits<Quorin_Error>::max())) return kQuorinError_BadArgument;
    return static_cast<Quorin_Error>(bytes);
}

class TempBuffer {
public:
    TempBuffer() = default;
    ~TempBuffer() { std::free(owned_); }
    TempBuffer(const TempBuffer&) = delete;
    TempBuffer& operator=(const TempBuffer&) = delete;

    // Takes `caller` when it is not null (never freed, never cleared), else
    // allocates `bytes` zero-filled bytes. A need of 0 bytes allocates
    // nothing. Returns kQuorinError_OutOfMemory when the allocation fails.
    Quorin_Error acquire(void* caller, size_t bytes) {
        if (caller != nullptr) {
            data_ = caller;
            return kQuorinSuccess;
        }
        if (bytes == 0) return kQuorinSuccess;
        owned_ = AllocatePartial(bytes);  // calloc, through the core's allocation-failure test hook
        if (owned_ == nullptr) return kQuorinError_OutOfMemory;
        data_ = owned_;
        return kQuorinSuccess;
    }

    void* data() const { return data_; }
    bool owned() const { return owned_ != nullptr; }

private:
    void* data_ = nullptr;
    void* owned_ = nullptr;
};

}  // namespace quorin
