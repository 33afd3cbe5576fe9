#include <TQFoundation/concurrency/caches/detail/FairSharedLock.h>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/concurrency/caches/detail/SlottedLock.h>
#include <TQFoundation/concurrency/locks/UnfairLock.h>
#include <TQFoundation/platform/threads/ThreadSystem.h>

namespace tq::detail {
namespace {

// By this thread, of all locks.
[[gnu::tls_model("initial-exec")]] thread_local constinit unsigned readsHere = 0;

struct SlottedSystem : ThreadSystem {
  static constexpr std::uint32_t kSlots = 8;
};

}  // namespace

struct FairSharedLock::State {
  SlottedLock<SlottedSystem, UnfairLock> lock;
};

FairSharedLock::FairSharedLock() : state_(new State) {}

FairSharedLock::~FairSharedLock() {
  TQ_ASSERT(state_->lock.isFree() && "the lock is not held");
  delete state_;
}

void FairSharedLock::lockForRead() noexcept TQ_NO_THREAD_SAFETY_ANALYSIS {
  state_->lock.lockForRead(readsHere++ != 0);
}

void FairSharedLock::unlockForRead() noexcept TQ_NO_THREAD_SAFETY_ANALYSIS {
  --readsHere;
  state_->lock.unlockForRead();
}

void FairSharedLock::lockForWrite() noexcept TQ_NO_THREAD_SAFETY_ANALYSIS {
  state_->lock.lockForWrite();
}

void FairSharedLock::unlockForWrite() noexcept TQ_NO_THREAD_SAFETY_ANALYSIS {
  state_->lock.unlockForWrite();
}

bool FairSharedLock::hasWaitingWriter() const noexcept { return state_->lock.hasPendingWriter(); }

}  // namespace tq::detail
