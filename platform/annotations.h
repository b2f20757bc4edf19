// Clang's thread-safety annotations under short names; other compilers see nothing.
#pragma once

#if defined(__clang__)
#define PLATFORM_ATTRIBUTE(x) __attribute__((x))
#else
#define PLATFORM_ATTRIBUTE(x)
#endif

#define CAPABILITY(x) PLATFORM_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY PLATFORM_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) PLATFORM_ATTRIBUTE(guarded_by(x))
#define PT_GUARDED_BY(x) PLATFORM_ATTRIBUTE(pt_guarded_by(x))
#define ACQUIRED_BEFORE(...) PLATFORM_ATTRIBUTE(acquired_before(__VA_ARGS__))
#define ACQUIRED_AFTER(...) PLATFORM_ATTRIBUTE(acquired_after(__VA_ARGS__))
#define REQUIRES(...) PLATFORM_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) PLATFORM_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) PLATFORM_ATTRIBUTE(release_capability(__VA_ARGS__))
#define EXCLUDES(...) PLATFORM_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define RETURN_CAPABILITY(x) PLATFORM_ATTRIBUTE(lock_returned(x))
#define NO_THREAD_SAFETY_ANALYSIS PLATFORM_ATTRIBUTE(no_thread_safety_analysis)
