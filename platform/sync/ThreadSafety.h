// What a lock guards, written where clang's -Wthread-safety reads it: on the field, on the operation that
// takes a lock, and on the one that expects it taken. Means nothing to other compilers.
#pragma once

#ifdef __clang__
#define VL_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VL_THREAD_ATTRIBUTE(x)
#endif

#define VL_CAPABILITY(kind) VL_THREAD_ATTRIBUTE(capability(kind))  // the class is a lock
#define VL_SCOPED_CAPABILITY VL_THREAD_ATTRIBUTE(scoped_lockable)  // the class holds one while it lives
#define VL_GUARDED_BY(lock) VL_THREAD_ATTRIBUTE(guarded_by(lock))
#define VL_REQUIRES(...) VL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define VL_ACQUIRE(...) VL_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define VL_RELEASE(...) VL_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
