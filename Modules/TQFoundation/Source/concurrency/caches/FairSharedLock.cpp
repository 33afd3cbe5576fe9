#include <TQFoundation/concurrency/caches/detail/FairSharedLock.h>

namespace tq::detail {
namespace {

// By this thread, of all locks.
[[gnu::tls_model("initial-exec")]] thread_local constinit unsigned readsHere = 0;

}  // namespace

void FairSharedLock::lockForRead() TQ_NO_THREAD_SAFETY_ANALYSIS {
  // Relaxed: a reader that misses a new writer counts as having come before it.
  if (readsHere == 0 && waitingWriters_.load(std::memory_order_relaxed) != 0) {
    const Locked behindTheWriter(gate_);
  }
  lock_.lockForRead();
  ++readsHere;
}

void FairSharedLock::unlockForRead() noexcept TQ_NO_THREAD_SAFETY_ANALYSIS {
  --readsHere;
  lock_.unlock();
}

void FairSharedLock::lockForWrite() TQ_NO_THREAD_SAFETY_ANALYSIS {
  waitingWriters_.fetch_add(1, std::memory_order_relaxed);  // a hint, see lockForRead()
  const Locked beforeNewReaders(gate_);
  lock_.lockForWrite();
  waitingWriters_.fetch_sub(1, std::memory_order_relaxed);
}

void FairSharedLock::unlockForWrite() noexcept TQ_NO_THREAD_SAFETY_ANALYSIS { lock_.unlock(); }

}  // namespace tq::detail
