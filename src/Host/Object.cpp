// The host foundation layer: objects, allocators, data and strings.
#include "Host/Object.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace quorin::host {
namespace {

void* SystemAllocate(size_t bytes, void*) { return std::malloc(bytes); }
void SystemDeallocate(void* block, void*) { std::free(block); }

constexpr NubAllocator kSystemAllocator{&SystemAllocate, &SystemDeallocate, nullptr};
std::atomic<const NubAllocator*> gDefaultAllocator{&kSystemAllocator};

struct Data {
    NubObject header;
    void* bytes;
    size_t length;
    void (*deallocate)(void* info, void* bytes);
    void* info;
};

// Owned bytes sit after the record in the same block and need no deallocator.
void FinalizeData(NubObject* object) {
    auto* data = reinterpret_cast<Data*>(object);
    if (data->deallocate != nullptr) data->deallocate(data->info, data->bytes);
}

constexpr NubClass kDataClass{"NubData", &FinalizeData};
constexpr NubClass kStringClass{"NubString", nullptr};

struct String {
    NubObject header;
    char text[];  // NUL-terminated
};

// `bytes` past `fixed` would wrap the block size: refused like a failed allocation.
NubObject* CreateWithTrailing(const NubAllocator* allocator, const NubClass* cls, size_t fixed,
                              size_t trailing) {
    if (trailing > SIZE_MAX - fixed) return nullptr;
    return NubCreateInstance(allocator, cls, fixed + trailing);
}

}  // namespace

const NubAllocator* NubAllocatorGetDefault() { return gDefaultAllocator.load(std::memory_order_acquire); }

const NubAllocator* NubAllocatorSetDefault(const NubAllocator* allocator) {
    return gDefaultAllocator.exchange(allocator != nullptr ? allocator : &kSystemAllocator);
}

void* NubAllocate(const NubAllocator* allocator, size_t bytes) {
    if (allocator == nullptr) allocator = NubAllocatorGetDefault();
    return allocator->allocate(bytes, allocator->info);
}

void NubDeallocate(const NubAllocator* allocator, void* block) {
    if (allocator == nullptr) allocator = NubAllocatorGetDefault();
    if (block != nullptr) allocator->deallocate(block, allocator->info);
}

NubObject* NubCreateInstance(const NubAllocator* allocator, const NubClass* cls, size_t bytes) {
    if (allocator == nullptr) allocator = NubAllocatorGetDefault();
    void* block = NubAllocate(allocator, bytes);
    if (block == nullptr) return nullptr;
    std::memset(block, 0, bytes);
    // The allocator the object came from frees it, whatever the default is by then.
    auto* object = new (block) NubObject{cls, allocator, {1}};
    return object;
}

NubObject* NubRetain(NubObject* object) {
    if (object != nullptr) object->retainCount.fetch_add(1, std::memory_order_relaxed);
    return object;
}

bool NubDropReference(std::atomic<uint32_t>& count) {
    // The fences order every write made through this reference before the
    // free that another thread's last release may perform.
    std::atomic_thread_fence(std::memory_order_seq_cst);
    const uint32_t before = count.fetch_sub(1, std::memory_order_seq_cst);
    std::atomic_thread_fence(std::memory_order_seq_cst);
    return before == 1;
}

void NubRelease(NubObject* object) {
    if (object == nullptr || !NubDropReference(object->retainCount)) return;
    if (object->isa->finalize != nullptr) object->isa->finalize(object);
    const NubAllocator* allocator = object->allocator;
    object->~NubObject();
    NubDeallocate(allocator, object);
}

uint32_t NubGetRetainCount(const NubObject* object) {
    return object == nullptr ? 0 : object->retainCount.load(std::memory_order_relaxed);
}

const NubClass* NubGetClass(const NubObject* object) { return object == nullptr ? nullptr : object->isa; }

NubObject* NubDataCreate(const NubAllocator* allocator, const void* bytes, size_t length) {
    NubObject* object = CreateWithTrailing(allocator, &kDataClass, sizeof(Data), length);
    if (object == nullptr) return nullptr;
    auto* data = reinterpret_cast<Data*>(object);
    data->bytes = reinterpret_cast<unsigned char*>(data) + sizeof(Data);
    data->length = length;
    if (length != 0) std::memcpy(data->bytes, bytes, length);
    return object;
}

NubObject* NubDataCreateWithBytesNoCopy(const NubAllocator* allocator, void* bytes, size_t length,
                                        void (*deallocate)(void* info, void* bytes), void* info) {
    NubObject* object = NubCreateInstance(allocator, &kDataClass, sizeof(Data));
    if (object == nullptr) return nullptr;
    auto* data = reinterpret_cast<Data*>(object);
    data->bytes = bytes;
    data->length = length;
    data->deallocate = deallocate;
    data->info = info;
    return object;
}

void NubDataForgetDeallocator(NubObject* object) {
    if (NubIsData(object)) reinterpret_cast<Data*>(object)->deallocate = nullptr;
}

bool NubIsData(const NubObject* object) { return object != nullptr && object->isa == &kDataClass; }

const void* NubDataGetBytePtr(const NubObject* object) {
    return NubIsData(object) ? reinterpret_cast<const Data*>(object)->bytes : nullptr;
}

size_t NubDataGetLength(const NubObject* object) {
    return NubIsData(object) ? reinterpret_cast<const Data*>(object)->length : 0;
}

NubObject* NubStringCreateWithCString(const NubAllocator* allocator, const char* text) {
    if (text == nullptr) return nullptr;
    const size_t length = std::strlen(text);
    NubObject* object = CreateWithTrailing(allocator, &kStringClass, sizeof(String), length + 1);
    if (object != nullptr) std::memcpy(reinterpret_cast<String*>(object)->text, text, length + 1);
    return object;
}

const char* NubStringGetCStringPtr(const NubObject* object) {
    if (object == nullptr || object->isa != &kStringClass) return nullptr;
    return reinterpret_cast<const String*>(object)->text;
}

}  // namespace quorin::host
