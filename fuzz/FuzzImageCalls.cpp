// One fuzz target over every image entry point in the member table. The input
// chooses a member, its records (fitting images most of the time, hostile
// records otherwise), pixel values, flags, constants and ranges, the kernel
// (scalar or one vector instruction set), the processor count and streaming
// stores. Every buffer is an allocation of exactly height x rowBytes bytes
// between guard zones that AddressSanitizer is told not to allow, so any
// access past a buffer is reported. After the call the harness requires:
//   - guards intact and sources unchanged;
//   - after an error, every destination unchanged;
//   - after a size query, every destination unchanged;
//   - after success, no byte changed outside each destination's rows of
//     width x pixel-size bytes (row padding included);
//   - after success, the same code and the same bytes from the scalar kernel
//     on the calling thread alone.
// A broken rule prints what broke and aborts, which the fuzzer records.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <hwy/targets.h>

#include "Core/Dispatch.h"
#include "Core/Streaming.h"
#include "Members.h"
#include "quorin/Utilities.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORIN_FUZZ_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define QUORIN_FUZZ_ASAN 1
#endif
#ifdef QUORIN_FUZZ_ASAN
#include <sanitizer/asan_interface.h>
#endif

namespace quorin::fuzz {
namespace {

// ---- Reading the input ----------------------------------------------------------

class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    // Bytes past the end read as 0, so every input is a complete call.
    uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    uint16_t u16() { return static_cast<uint16_t>(byte() | byte() << 8); }
    uint32_t u32() { return u16() | static_cast<uint32_t>(u16()) << 16; }
    uint64_t u64() { return u32() | static_cast<uint64_t>(u32()) << 32; }
    float f32() {
        const uint32_t bits = u32();
        float f;
        std::memcpy(&f, &bits, 4);
        return f;
    }
    // True about `in256` times out of 256.
    bool chance(unsigned in256) { return byte() < in256; }

private:
    const uint8_t* data_;
    size_t size_, at_ = 0;
};

// splitmix64, for pixel values the input only seeds.
struct Random {
    uint64_t state;
    uint64_t next() {
        uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
};

// Float values that take the kernels' unusual paths.
constexpr uint32_t kSpecialFloats[] = {
    0x00000000, 0x80000000, 0x3f800000, 0xbf800000, 0x3f000000, 0x437f0000, 0x7f800000, 0xff800000,
    0x7fc00000, 0xffc00000, 0x7fa00001, 0xffbfffff, 0x00000001, 0x807fffff, 0x7f7fffff, 0xff7fffff,
    0x4f800000, 0x5f800000, 0x3b808081, 0x3f7fffff, 0x3f800001, 0x45800000, 0x477fff00, 0x40000000,
};

float SpecialFloat(uint8_t pick) {
    float f;
    std::memcpy(&f, &kSpecialFloats[pick % std::size(kSpecialFloats)], 4);
    return f;
}

// ---- Buffers with guard zones ---------------------------------------------------

constexpr uint8_t kGuard = 0xA5;
constexpr size_t kGuardBytes = 64;
constexpr size_t kMaxBufferBytes = size_t{3} << 19;

// One caller buffer: `front` guard bytes (a multiple of the sample size, so
// the pixels stay naturally aligned but move off the vector alignment), the
// exact buffer, then kGuardBytes of guard. The guards hold a pattern and are
// poisoned for AddressSanitizer (all of the trailing one, whose first granule
// may be shared with the buffer's end: the shadow still marks only the
// buffer's bytes addressable; the front one up to the buffer's granule).
class GuardedBuffer {
public:
    GuardedBuffer(const Quorin_Buffer& shape, size_t bytes, size_t front, bool nullData)
        : bytes_(bytes), front_(front), block_(static_cast<uint8_t*>(std::malloc(front + bytes + kGuardBytes))) {
        if (!block_) std::abort();
        std::memset(block_, kGuard, front_ + bytes_ + kGuardBytes);
        record_ = shape;
        record_.data = nullData ? nullptr : block_ + front_;
    }
    ~GuardedBuffer() {
        unpoison();
        std::free(block_);
    }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    void poison() {
#ifdef QUORIN_FUZZ_ASAN
        ASAN_POISON_MEMORY_REGION(block_, front_ & ~size_t{7});
        ASAN_POISON_MEMORY_REGION(block_ + front_ + bytes_, kGuardBytes);
#endif
    }
    void unpoison() {
#ifdef QUORIN_FUZZ_ASAN
        ASAN_UNPOISON_MEMORY_REGION(block_, front_ + bytes_ + kGuardBytes);
#endif
    }

    uint8_t* bytes() { return block_ + front_; }
    size_t size() const { return bytes_; }
    const Quorin_Buffer* record() const { return &record_; }
    bool guardsIntact() const {
        for (size_t i = 0; i < front_; ++i)
            if (block_[i] != kGuard) return false;
        for (size_t i = 0; i < kGuardBytes; ++i)
            if (block_[front_ + bytes_ + i] != kGuard) return false;
        return true;
    }

private:
    size_t bytes_, front_;
    uint8_t* block_;
    Quorin_Buffer record_{};
};

// rowBytes >= width x pixel bytes, without wrap-around: the record describes
// an image that lies inside its height x rowBytes bytes.
bool Describes(const Quorin_Buffer& r, size_t pixelBytes) {
    size_t rowBytes;
    return !__builtin_mul_overflow(r.width, pixelBytes, &rowBytes) && rowBytes <= r.rowBytes;
}

// ---- Drawing a call -------------------------------------------------------------

constexpr uint64_t kHostileWidths[] = {
    0, 1, 2, 3, 7, 16, 17, 0x7fffffff, 0x80000000, 0xffffffff, 0x100000000, 0x100000001, uint64_t{1} << 40,
    (uint64_t{1} << 40) + 1, uint64_t{1} << 61, uint64_t{1} << 62, 0x4000000000000010, uint64_t{1} << 63,
    ~uint64_t{0}, ~uint64_t{0} / 2, ~uint64_t{0} / 3, ~uint64_t{0} / 4, ~uint64_t{0} / 12, ~uint64_t{0} / 16,
    ~uint64_t{0} / 16 + 1, ~uint64_t{0} / 4 + 1,
};

struct Shape {
    Quorin_Buffer record{};
    size_t bytes = 0, front = 0;
    bool nullRecord = false, nullData = false;
};

// Fitting images: one width and height for all buffers, a few perturbed;
// rowBytes at least a row, now and then less.
void DrawFitting(Input& in, const Member& m, std::vector<Shape>& shapes) {
    size_t width, height;
    switch (in.byte() % 8) {
        case 0: case 1: case 2: width = in.byte() % 9, height = in.byte() % 5; break;
        case 3: case 4: width = in.byte() % 41, height = in.byte() % 41; break;
        case 5: case 6: width = in.u16() % 300, height = in.byte() % 64; break;
        default: width = 256 + in.byte() % 64, height = 250 + in.byte() % 16; break;  // enough pixels to split
    }
    for (size_t i = 0; i < m.bufferCount; ++i) {
        const Format f = m.buffers[i].format;
        const size_t sample = SampleBytes(f), pixel = PixelBytes(f);
        Shape& s = shapes[i];
        s.record.width = width;
        s.record.height = height;
        if (in.chance(16)) {
            const int delta = static_cast<int>(in.byte() % 7) - 3;
            size_t& side = in.chance(128) ? s.record.width : s.record.height;
            side = static_cast<size_t>(std::max<long>(0, static_cast<long>(side) + delta));
        }
        s.record.rowBytes = s.record.width * pixel + sample * (in.chance(192) ? 0 : in.byte() % 40);
        if (in.chance(8)) s.record.rowBytes = (in.u16() % (s.record.rowBytes + 1)) / sample * sample;
        s.front = sample * (in.byte() % 16);
    }
}

// Hostile records: widths that overflow products, short rowBytes, rows that
// overlap or have no bytes at all.
void DrawHostile(Input& in, const Member& m, std::vector<Shape>& shapes) {
    for (size_t i = 0; i < m.bufferCount; ++i) {
        const size_t sample = SampleBytes(m.buffers[i].format);
        Shape& s = shapes[i];
        s.record.width = in.chance(200) ? kHostileWidths[in.byte() % std::size(kHostileWidths)] : in.u64();
        s.record.height = in.chance(200) ? in.byte() % 6 : kHostileWidths[in.byte() % std::size(kHostileWidths)];
        s.record.rowBytes = in.chance(200) ? in.u16() % 600 / sample * sample : in.u64() / sample * sample;
        s.front = sample * (in.byte() % 16);
    }
}

struct Variant {
    bool scalar;
    int64_t target;  // vector instruction set, 0 for the best available
    unsigned processors;
    bool streaming;
};

class VariantScope {
public:
    explicit VariantScope(const Variant& v) {
        if (v.scalar) Quorin_Decelerate();
        if (v.target) hwy::SetSupportedTargetsForTest(v.target);
        SetProcessorCountForTest(v.processors);
        SetStreamingThresholdForTest(v.streaming ? 1 : 0);
    }
    ~VariantScope() {
        Quorin_Boosten(~uint64_t{0});
        hwy::SetSupportedTargetsForTest(0);
        SetProcessorCountForTest(0);
        SetStreamingThresholdForTest(0);
    }
};

Variant DrawVariant(Input& in) {
    static const std::vector<int64_t> targets = [] {
        std::vector<int64_t> t;
        for (const int64_t target : hwy::SupportedAndGeneratedTargets()) t.push_back(target);
        return t;
    }();
    Variant v{};
    const uint8_t kernel = in.byte() % (targets.size() + 2);
    v.scalar = kernel == 0;
    v.target = kernel >= 2 ? targets[kernel - 2] : 0;
    v.processors = in.byte() % 9;  // 0: the machine's
    v.streaming = in.chance(64);
    return v;
}

Quorin_Flags DrawFlags(Input& in, Quorin_Flags accepted) {
    const uint8_t how = in.byte();
    if (how < 200) return accepted & in.byte();
    if (how < 240) return (accepted & in.byte()) | (Quorin_Flags{1} << (in.byte() % 32));
    return in.u32();
}

void FillPixels(Input& in, GuardedBuffer& b, Format f) {
    Random random{in.u64()};
    const uint8_t mode = in.byte() % 4;
    uint8_t* p = b.bytes();
    const size_t n = b.size();
    if (IsFloat(f) && mode != 0) {
        for (size_t i = 0; i + 4 <= n; i += 4) {
            const uint64_t r = random.next();
            float v = mode == 1 ? static_cast<float>(r >> 40) / 16777216.0f  // [0, 1)
                      : mode == 2 ? SpecialFloat(static_cast<uint8_t>(r))
                                  : static_cast<float>(static_cast<int64_t>(r >> 32) % 600 - 100) / 255.0f;
            std::memcpy(p + i, &v, 4);
        }
        return;
    }
    if (mode == 3) {  // few distinct values: alphas of 0 and 255 and colours at them
        const uint8_t values[] = {0, 1, 127, 128, 254, 255};
        for (size_t i = 0; i < n; ++i) p[i] = values[random.next() % 6];
        return;
    }
    for (size_t i = 0; i < n; i += 8) {
        const uint64_t r = random.next();
        std::memcpy(p + i, &r, std::min<size_t>(8, n - i));
    }
}

// ---- The rules ------------------------------------------------------------------------

[[noreturn]] void Fail(const Member& m, const char* what, size_t buffer, const Variant& v, Quorin_Flags flags,
                       Quorin_Error code) {
    std::fprintf(stderr,
                 "image call fuzzer: %s: %s (buffer %zu; flags 0x%x, code %d, %s kernel, target 0x%llx, "
                 "%u processors%s)\n",
                 m.name, what, buffer, flags, code, v.scalar ? "scalar" : "vector",
                 static_cast<unsigned long long>(v.target), v.processors, v.streaming ? ", streaming" : "");
    std::abort();
}

// Whether the bytes may differ from `before` only inside the record's rows of
// width x pixel bytes.
bool ChangedOnlyInRows(const uint8_t* after, const uint8_t* before, size_t size, const Quorin_Buffer& r,
                       size_t pixelBytes) {
    if (!Describes(r, pixelBytes)) return true;  // no row region to hold it to; ASan watches the buffer's edges
    const size_t rowBytes = r.rowBytes, used = r.width * pixelBytes;
    for (size_t i = 0; i < size; ++i) {
        if (after[i] == before[i]) continue;
        const size_t row = rowBytes ? i / rowBytes : 0, column = rowBytes ? i % rowBytes : i;
        if (row >= r.height || column >= used) return false;
    }
    return true;
}

// Empty vectors may hold null pointers, which memcmp must not see.
bool Equal(const uint8_t* a, const uint8_t* b, size_t n) { return n == 0 || std::memcmp(a, b, n) == 0; }

int RunOne(const uint8_t* data, size_t size) {
    Input in(data, size);
    const auto members = AllMembers();
    const Member& m = members[in.u16() % members.size()];

    std::vector<Shape> shapes(m.bufferCount);
    if (in.chance(208)) DrawFitting(in, m, shapes);
    else DrawHostile(in, m, shapes);
    for (size_t i = 0; i < m.bufferCount; ++i) {
        Shape& s = shapes[i];
        s.nullRecord = in.chance(m.buffers[i].role == Role::OptionalSource ? 64 : 3);
        s.nullData = in.chance(3);
        // Exactly height x rowBytes bytes, fewer rows when that is too many.
        size_t bytes;
        if (__builtin_mul_overflow(s.record.height, s.record.rowBytes, &bytes) || bytes > kMaxBufferBytes) {
            s.record.height = s.record.rowBytes ? kMaxBufferBytes / s.record.rowBytes : s.record.height;
            bytes = s.record.height * s.record.rowBytes;
        }
        s.bytes = bytes;
    }

    std::vector<std::unique_ptr<GuardedBuffer>> buffers;
    Arguments args;
    for (size_t i = 0; i < m.bufferCount; ++i) {
        buffers.push_back(std::make_unique<GuardedBuffer>(shapes[i].record, shapes[i].bytes, shapes[i].front,
                                                          shapes[i].nullData));
        FillPixels(in, *buffers[i], m.buffers[i].format);
        args.buffers[i] = shapes[i].nullRecord ? nullptr : buffers[i]->record();
    }
    float ranges[2][4];
    if (m.extras & kByteConstant) args.byteConstant = in.byte();
    if (m.extras & kFloatConstant) args.floatConstant = in.chance(128) ? SpecialFloat(in.byte()) : in.f32();
    if (m.extras & kRanges) {
        const uint8_t how = in.byte();
        for (size_t c = 0; c < 4; ++c) {
            ranges[0][c] = how < 128 ? 1.0f : how < 192 ? SpecialFloat(in.byte()) : in.f32();
            ranges[1][c] = how < 128 ? 0.0f : how < 192 ? SpecialFloat(in.byte()) : in.f32();
        }
        args.maxFloat = in.chance(4) ? nullptr : ranges[0];
        args.minFloat = in.chance(4) ? nullptr : ranges[1];
    }
    alignas(4) std::array<uint8_t, 256> values{};
    if (m.extras & kWord) args.word = in.chance(128) ? in.byte() : (uint32_t{in.byte()} << 8 | in.byte());
    if (m.extras & kIndex) args.index = static_cast<int>(in.byte() % 8) - 2;  // -2 to 5: both sides of 0..3
    if (m.extras & kValues) {
        // 16 bytes from the input; the rest of a table follows from them.
        for (size_t k = 0; k < 16; ++k) values[k] = in.byte();
        for (size_t k = 16; k < values.size(); ++k) values[k] = static_cast<uint8_t>(values[k % 16] * 7 + k);
        args.values = in.chance(8) ? nullptr : values.data();
    }
    alignas(4) std::array<uint8_t, 64> coefficients{};
    if (m.extras & kCoefficients) {
        const bool special = in.chance(64);
        for (size_t k = 0; k < coefficients.size(); k += 4) {
            const float f = SpecialFloat(in.byte());
            if (special) std::memcpy(&coefficients[k], &f, 4);
            else for (size_t b = 0; b < 4; ++b) coefficients[k + b] = in.byte();
        }
        args.coefficients = in.chance(8) ? nullptr : coefficients.data();
    }
    std::array<std::vector<uint32_t>, 4> counts;
    std::array<uint32_t*, 4> countPointers{};
    if (m.extras & kCounts) {
        for (size_t c = 0; c < 4; ++c) {
            counts[c].assign(std::max<size_t>(256, args.word), 0);
            countPointers[c] = counts[c].data();
        }
        args.counts = countPointers.data();
    }
    args.flags = DrawFlags(in, m.accepted);
    const Variant variant = DrawVariant(in);

    std::vector<std::vector<uint8_t>> before;
    for (auto& b : buffers) before.emplace_back(b->bytes(), b->bytes() + b->size());

    for (auto& b : buffers) b->poison();
    Quorin_Error code;
    {
        VariantScope scope(variant);
        code = m.invoke(args);
    }
    for (auto& b : buffers) b->unpoison();

    const auto fail = [&](const char* what, size_t i) { Fail(m, what, i, variant, args.flags, code); };
    const bool query = code >= 0 && (args.flags & kQuorinFlag_QueryTempSize) && (m.accepted & kQuorinFlag_QueryTempSize);
    std::vector<std::vector<uint8_t>> after;
    for (size_t i = 0; i < m.bufferCount; ++i) {
        GuardedBuffer& b = *buffers[i];
        if (!b.guardsIntact()) fail("a guard byte around the buffer changed", i);
        const bool same = Equal(b.bytes(), before[i].data(), b.size());
        const Role role = m.buffers[i].role;
        if (role == Role::Source || role == Role::OptionalSource) {
            if (!same) fail("a source changed", i);
        } else if (code < 0 || query) {
            if (!same) fail(code < 0 ? "a destination changed before an error" : "a size query wrote", i);
        } else {
            Quorin_Buffer region = *b.record();
            size_t pixelBytes = PixelBytes(m.buffers[i].format);
            // Written along whole rowBytes: any byte of a row, including one
            // past the last whole pixel (a block copy of equal strides).
            if (role == Role::RowBytesDestination || role == Role::StepDestination)
                region.width = region.rowBytes, pixelBytes = 1;
            if (role == Role::MatchedDestination) {
                region.width = buffers[0]->record()->width;
                region.height = buffers[0]->record()->height;
            }
            if (!ChangedOnlyInRows(b.bytes(), before[i].data(), b.size(), region, pixelBytes))
                fail("a destination changed outside its rows", i);
        }
        after.emplace_back(b.bytes(), b.bytes() + b.size());
    }
    if (code != kQuorinSuccess || query) return 0;

    // The scalar kernel on the calling thread alone must agree to the byte.
    for (size_t i = 0; i < m.bufferCount; ++i) std::copy(before[i].begin(), before[i].end(), buffers[i]->bytes());
    Arguments serial = args;
    serial.flags |= kQuorinFlag_SingleThreaded;
    const Variant reference{true, 0, 0, false};
    Quorin_Error again;
    {
        VariantScope scope(reference);
        again = m.invoke(serial);
    }
    if (again != code) fail("the scalar serial call returned another code", 0);
    for (size_t i = 0; i < m.bufferCount; ++i) {
        const uint8_t* serialBytes = buffers[i]->bytes();
        if (Equal(serialBytes, after[i].data(), after[i].size())) continue;
        size_t at = 0;
        while (serialBytes[at] == after[i][at]) ++at;
        at &= ~size_t{3};
        uint32_t mine = 0, serialWord = 0;
        std::memcpy(&mine, &after[i][at], std::min<size_t>(4, after[i].size() - at));
        std::memcpy(&serialWord, serialBytes + at, std::min<size_t>(4, after[i].size() - at));
        std::fprintf(stderr, "at byte %zu: 0x%08x here, 0x%08x from the scalar serial call\n", at, mine, serialWord);
        fail("bytes differ from the scalar serial call", i);
    }
    return 0;
}

}  // namespace
}  // namespace quorin::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) { return quorin::fuzz::RunOne(data, size); }
