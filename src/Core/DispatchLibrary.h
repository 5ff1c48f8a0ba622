// The one place that includes libdispatch. Its headers test clang's
// __has_feature/__has_extension; g++ has neither, so they read as "absent".
#pragma once

#if !defined(__clang__)
#ifndef __has_feature
#define __has_feature(x) 0
#endif
#ifndef __has_extension
#define __has_extension(x) 0
#endif
#endif

// The headers put an "unavailable on Linux" attribute in front of their
// extern "C" for the Mach source types, which g++ rejects in that position and
// answers with a note per declaration that no pragma silences. Every header
// that declares something already opens its own extern "C" block, so a plain
// extern keeps C linkage and leaves the attribute where g++ accepts it.
#if defined(__cplusplus) && !defined(DISPATCH_EXTERN)
#define DISPATCH_EXTERN extern
#endif

#include <dispatch/dispatch.h>

// ThreadSanitizer sees none of libdispatch's own synchronisation (the library
// is not instrumented), so every piece would seem to race with the caller
// that handed it its data and that reads its results. Under ThreadSanitizer
// the calls that submit and join work are replaced by annotated ones with the
// same behaviour, telling it of exactly two edges per call:
//   submit: the caller, before submitting, to each piece as it starts;
//   join:   each piece, as it ends, to the caller once the wait returns.
// Each edge has its own address, and pieces never acquire the join's, so no
// piece is ordered after another: a race between two pieces is still reported.
#if defined(__SANITIZE_THREAD__) || __has_feature(thread_sanitizer)
#include <sanitizer/tsan_interface.h>

namespace quorin::annotated {

inline void dispatch_apply_f(size_t iterations, dispatch_queue_t queue, void* context,
                             void (*function)(void*, size_t)) {
    struct Apply {
        void* context;
        void (*function)(void*, size_t);
        char submitted, joined;  // the two edges' addresses
    } apply{context, function, 0, 0};
    __tsan_release(&apply.submitted);
    ::dispatch_apply_f(iterations, queue, &apply, [](void* shared, size_t i) {
        auto& a = *static_cast<Apply*>(shared);
        __tsan_acquire(&a.submitted);
        a.function(a.context, i);
        __tsan_release(&a.joined);
    });
    __tsan_acquire(&apply.joined);
}

// One submission; its join edge is the group's address, which the wait acquires.
struct GroupWork {
    void* context;
    dispatch_function_t function;
    dispatch_group_t group;
    char submitted;
};

inline void dispatch_group_async_f(dispatch_group_t group, dispatch_queue_t queue, void* context,
                                   dispatch_function_t function) {
    auto* work = new GroupWork{context, function, group, 0};
    __tsan_release(&work->submitted);
    ::dispatch_group_async_f(group, queue, work, [](void* submitted) {
        auto* w = static_cast<GroupWork*>(submitted);
        __tsan_acquire(&w->submitted);
        w->function(w->context);
        __tsan_release(static_cast<void*>(w->group));
        delete w;
    });
}

inline long dispatch_group_wait(dispatch_group_t group, dispatch_time_t timeout) {
    const long result = ::dispatch_group_wait(group, timeout);
    __tsan_acquire(static_cast<void*>(group));
    return result;
}

}  // namespace quorin::annotated

#define dispatch_apply_f quorin::annotated::dispatch_apply_f
#define dispatch_group_async_f quorin::annotated::dispatch_group_async_f
#define dispatch_group_wait quorin::annotated::dispatch_group_wait
#endif
