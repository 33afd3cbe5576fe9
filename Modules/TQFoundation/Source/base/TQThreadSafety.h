#pragma once

/// @file TQThreadSafety.h
/// Annotations of locks for clang's -Wthread-safety and for ThreadSanitizer. They expand to nothing
/// under other compilers and without the sanitizer.

#if defined(__clang__)
#define TQ_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
/// An attribute of clang's analysis; empty under other compilers.
#define TQ_THREAD_ATTRIBUTE(x)
#endif

/// A class whose objects are locks; `kind` appears in the compiler's messages.
#define TQ_CAPABILITY(kind) TQ_THREAD_ATTRIBUTE(capability(kind))
/// A class whose objects hold a lock from construction to destruction.
#define TQ_SCOPED_CAPABILITY TQ_THREAD_ATTRIBUTE(scoped_lockable)
/// A member that is read only while the lock is held, and written only while it is held
/// exclusively.
#define TQ_GUARDED_BY(lock) TQ_THREAD_ATTRIBUTE(guarded_by(lock))
/// The same for the object that a pointer member points to.
#define TQ_PT_GUARDED_BY(lock) TQ_THREAD_ATTRIBUTE(pt_guarded_by(lock))
/// The caller must hold the lock.
#define TQ_REQUIRES(...) TQ_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define TQ_REQUIRES_SHARED(...) TQ_THREAD_ATTRIBUTE(requires_shared_capability(__VA_ARGS__))
/// The function acquires or releases the lock.
#define TQ_ACQUIRE(...) TQ_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define TQ_ACQUIRE_SHARED(...) TQ_THREAD_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define TQ_TRY_ACQUIRE(...) TQ_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define TQ_RELEASE(...) TQ_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define TQ_RELEASE_GENERIC(...) TQ_THREAD_ATTRIBUTE(release_generic_capability(__VA_ARGS__))
/// For the implementation of a lock, and for a lock that one function acquires and another
/// releases.
#define TQ_NO_THREAD_SAFETY_ANALYSIS TQ_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TQ_THREAD_SANITIZER
#endif
#endif
#if defined(__SANITIZE_THREAD__)
#define TQ_THREAD_SANITIZER
#endif

// Our own locks report to the sanitizer, so that it knows which thread holds them and in which
// order they are acquired. Between "pre" and "post" the sanitizer ignores the lock's own atomics.
#if defined(TQ_THREAD_SANITIZER)
extern "C" {
void __tsan_mutex_create(void* lock, unsigned flags);
void __tsan_mutex_destroy(void* lock, unsigned flags);
void __tsan_mutex_pre_lock(void* lock, unsigned flags);
void __tsan_mutex_post_lock(void* lock, unsigned flags, int recursion);
int __tsan_mutex_pre_unlock(void* lock, unsigned flags);
void __tsan_mutex_post_unlock(void* lock, unsigned flags);
}
#endif

namespace tq::detail {

/// Reports the life and use of the lock at `lock` to ThreadSanitizer.
#if defined(TQ_THREAD_SANITIZER)
inline void lockMade(void* lock) noexcept { __tsan_mutex_create(lock, 0); }
inline void lockGone(void* lock) noexcept { __tsan_mutex_destroy(lock, 0); }
inline void willLock(void* lock) noexcept { __tsan_mutex_pre_lock(lock, 0); }
inline void didLock(void* lock) noexcept { __tsan_mutex_post_lock(lock, 0, 0); }
inline void willUnlock(void* lock) noexcept { __tsan_mutex_pre_unlock(lock, 0); }
inline void didUnlock(void* lock) noexcept { __tsan_mutex_post_unlock(lock, 0); }
#else
inline void lockMade(void*) noexcept {}
inline void lockGone(void*) noexcept {}
inline void willLock(void*) noexcept {}
inline void didLock(void*) noexcept {}
inline void willUnlock(void*) noexcept {}
inline void didUnlock(void*) noexcept {}
#endif

}  // namespace tq::detail
