#include <TQFoundation/platform/threads/SharedLock.h>

#include <errno.h>
#include <pthread.h>

#include <new>

#include <TQFoundation/base/TQAssert.h>

namespace tq {
namespace {

pthread_rwlock_t* systemLock(std::byte* storage) noexcept {
  return std::launder(reinterpret_cast<pthread_rwlock_t*>(storage));
}

// Without this, a refused lock would not be held, and its unlock would release another hold.
void requireTaken(int result) noexcept {
  TQ_ASSERT(result != EDEADLK && "this thread holds the lock for writing already");
  TQ_ASSERT(result == 0 && "too many threads hold the lock for reading");
}

}  // namespace

SharedLock::SharedLock() noexcept {
  static_assert(sizeof storage_ >= sizeof(pthread_rwlock_t));
  static_assert(alignof(SharedLock) >= alignof(pthread_rwlock_t));
  ::pthread_rwlock_init(new (storage_) pthread_rwlock_t, nullptr);
}

SharedLock::~SharedLock() {
  TQ_ASSERT(::pthread_rwlock_trywrlock(systemLock(storage_)) == 0 && "the lock is not held");
  ::pthread_rwlock_unlock(systemLock(storage_));
  ::pthread_rwlock_destroy(systemLock(storage_));
}

void SharedLock::lockForRead() noexcept {
  requireTaken(::pthread_rwlock_rdlock(systemLock(storage_)));
}

void SharedLock::lockForWrite() noexcept {
  requireTaken(::pthread_rwlock_wrlock(systemLock(storage_)));
}

void SharedLock::unlock() noexcept { ::pthread_rwlock_unlock(systemLock(storage_)); }

}  // namespace tq
