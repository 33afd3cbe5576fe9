#pragma once

/// @file TQThreadSafety.h
/// What a lock guards, said so that clang's -Wthread-safety and ThreadSanitizer can check it. Under
/// other compilers, and without the sanitizer, all of this is nothing.

#if defined(__clang__)
#define TQ_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
/// An attribute of clang's analysis; nothing under other compilers.
#define TQ_THREAD_ATTRIBUTE(x)
#endif

/// A class whose objects are locks; `kind` appears in the compiler's messages.
#define TQ_CAPABILITY(kind) TQ_THREAD_ATTRIBUTE(capability(kind))
/// A class whose objects hold a lock from construction to destruction.
#define TQ_SCOPED_CAPABILITY TQ_THREAD_ATTRIBUTE(scoped_lockable)
/// A member that is touched only while the lock is held (shared to read, exclusively to write).
#define TQ_GUARDED_BY(lock) TQ_THREAD_ATTRIBUTE(guarded_by(lock))
/// The same for what a pointer member points at.
#define TQ_PT_GUARDED_BY(lock) TQ_THREAD_ATTRIBUTE(pt_guarded_by(lock))
/// The caller holds the lock.
#define TQ_REQUIRES(...) TQ_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define TQ_REQUIRES_SHARED(...) TQ_THREAD_ATTRIBUTE(requires_shared_capability(__VA_ARGS__))
/// The function takes the lock, or lets it go.
#define TQ_ACQUIRE(...) TQ_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define TQ_ACQUIRE_SHARED(...) TQ_THREAD_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define TQ_TRY_ACQUIRE(...) TQ_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define TQ_RELEASE(...) TQ_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define TQ_RELEASE_GENERIC(...) TQ_THREAD_ATTRIBUTE(release_generic_capability(__VA_ARGS__))
/// For the insides of a lock, and for a lock taken in one function and let go in another.
#define TQ_NO_THREAD_SAFETY_ANALYSIS TQ_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TQ_THREAD_SANITIZER
#endif
#endif
#if defined(__SANITIZE_THREAD__)
#define TQ_THREAD_SANITIZER
#endif

// A lock made by hand tells the sanitizer what it is, so that it sees who holds it and in what
// order locks are taken. Between "pre" and "post" the sanitizer leaves the lock's own atomics
// alone.
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

/// What ThreadSanitizer is told about a lock at `lock`.
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
