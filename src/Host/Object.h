// The host foundation layer: what the library needs of a host's object model,
// and no more. No host foundation framework exists on this platform, so the
// library carries this small stand-in: reference-counted objects with a class,
// allocators, data objects and strings. Nothing here is exported; the image
// code reaches it only through the functions below.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "quorin/Utilities.h"

namespace quorin::host {

struct NubAllocator {
    void* (*allocate)(size_t bytes, void* info);  // NULL when memory is short
    void (*deallocate)(void* block, void* info);
    void* info;
};

// malloc and free, unless a test has put another allocator in their place.
const NubAllocator* NubAllocatorGetDefault();
// Replaces the default allocator and returns the previous one. Only for tests
// that count or refuse allocations; never while objects are being made.
const NubAllocator* NubAllocatorSetDefault(const NubAllocator* allocator);

void* NubAllocate(const NubAllocator* allocator, size_t bytes);
void NubDeallocate(const NubAllocator* allocator, void* block);

using NubObject = QuorinHostObject;

struct NubClass {
    const char* name;
    // Releases what the object holds; runs once, before its block is freed.
    void (*finalize)(NubObject* object);
};

}  // namespace quorin::host

// The header every foundation object starts with; an object's own fields
// follow it in the same block.
struct QuorinHostObject {
    const quorin::host::NubClass* isa;
    const quorin::host::NubAllocator* allocator;
    std::atomic<uint32_t> retainCount;
};

namespace quorin::host {

// A zero-filled object of `bytes` bytes (header included) with one
// reference, or NULL when memory is short. `bytes` must hold the header.
NubObject* NubCreateInstance(const NubAllocator* allocator, const NubClass* cls, size_t bytes);

// Adds a reference and returns `object`; NULL is passed through.
NubObject* NubRetain(NubObject* object);
// Drops a reference between full fences; the call that drops the last one
// finalizes and frees the object. NULL is ignored.
void NubRelease(NubObject* object);
// Drops one reference of a counter between full fences; true for the call
// that dropped the last one. Shared with the library's own counted records.
bool NubDropReference(std::atomic<uint32_t>& count);

uint32_t NubGetRetainCount(const NubObject* object);
const NubClass* NubGetClass(const NubObject* object);

// Data objects: bytes the object owns (copied in), or caller memory it wraps
// and hands to `deallocate(info, bytes)` on destruction (nothing when NULL).
NubObject* NubDataCreate(const NubAllocator* allocator, const void* bytes, size_t length);
NubObject* NubDataCreateWithBytesNoCopy(const NubAllocator* allocator, void* bytes, size_t length,
                                        void (*deallocate)(void* info, void* bytes), void* info);
// Makes a wrapping data object forget its deallocator, for a caller that
// keeps its memory after all (the call that made the object failed).
void NubDataForgetDeallocator(NubObject* data);
const void* NubDataGetBytePtr(const NubObject* data);
size_t NubDataGetLength(const NubObject* data);
bool NubIsData(const NubObject* object);

// Strings, such as a video format's chroma siting: a copy of a NUL-terminated
// byte string.
NubObject* NubStringCreateWithCString(const NubAllocator* allocator, const char* text);
// The string's bytes, or NULL for an object that is not a string.
const char* NubStringGetCStringPtr(const NubObject* string);

}  // namespace quorin::host
