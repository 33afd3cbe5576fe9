#pragma once

/// @file SlottedLock.h
/// The reader-writer lock of caches: readers on different processors do not disturb each other.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <TQFoundation/base/TQThreadSafety.h>

namespace tq::detail {

/// Readers count themselves in slots, one for each few threads, on cache lines of their own. A
/// writer first makes new readers wait at the gate, and then waits until all slots are empty:
///
/// | state | meaning |
/// |---|---|
/// | kOpen | no writer |
/// | kPending | a writer holds the gate and waits for the readers that came before it |
/// | kWriting | a writer holds the lock |
///
/// A reader enters its slot and then reads the state; a writer sets kWriting and then reads the
/// slots. All these steps are in one total order, so at least one of the two sees the other. The
/// reader then goes to the gate; the writer is pending again. A reader that holds such a lock
/// already, nested, enters while a writer is pending: the writer may be waiting for this very
/// thread. It waits only for the end of kWriting.
///
/// `System` supplies Word, self(), wait(), wake(), relax(), kSpins and kSlots; `Gate` is a mutex.
template <class System, class Gate>
class SlottedLock {
 public:
  SlottedLock() = default;
  SlottedLock(const SlottedLock&) = delete;
  SlottedLock& operator=(const SlottedLock&) = delete;

  /// @param isNested  whether this thread holds a lock of this kind for reading already
  void lockForRead(bool isNested) {
    Word& slot = ownSlot();
    slot.fetch_add(1);
    const std::uint32_t state = state_.load();
    if (state == kOpen || (isNested && state == kPending)) return;
    if (isNested) return waitForEndOfWriting();
    leave(slot);
    gate_.lock();  // no writer is pending or writing
    slot.fetch_add(1);
    gate_.unlock();
  }

  void unlockForRead() { leave(ownSlot()); }

  void lockForWrite() TQ_NO_THREAD_SAFETY_ANALYSIS {  // holds the gate until unlockForWrite()
    gate_.lock();
    state_.store(kPending);
    for (;;) {
      for (Slot& each : slots_) waitUntilEmpty(each.readers);
      state_.store(kWriting);
      if (allAreEmpty()) return;
      endWriting(kPending);  // for a nested reader that has just entered
    }
  }

  void unlockForWrite() TQ_NO_THREAD_SAFETY_ANALYSIS {
    endWriting(kOpen);
    gate_.unlock();
  }

  /// Returns whether a writer waits for readers.
  [[nodiscard]] bool hasPendingWriter() const { return state_.load() == kPending; }
  /// Returns whether no thread holds the lock.
  [[nodiscard]] bool isFree() const { return state_.load() == kOpen && allAreEmpty(); }

 private:
  using Word = typename System::Word;

  static constexpr std::uint32_t kOpen = 0;
  static constexpr std::uint32_t kPending = 1;
  static constexpr std::uint32_t kWriting = 2;
  static constexpr std::size_t kLine = 64;  // bytes of a cache line
  static constexpr int kEverybody = 0x7fffffff;

  struct alignas(kLine) Slot {
    Word readers{0};
  };

  Word& ownSlot() { return slots_[System::self() % System::kSlots].readers; }

  void leave(Word& slot) {
    slot.fetch_sub(1);
    if (state_.load() != kOpen) System::wake(slot, 1);  // only the writer waits there
  }

  // The reader stays in its slot, so the state does not become kWriting again, except for the
  // moment in which a writer notices it.
  void waitForEndOfWriting() {
    nestedWaiters_.fetch_add(1);
    while (state_.load() == kWriting) System::wait(state_, kWriting);
    nestedWaiters_.fetch_sub(1);
  }

  void waitUntilEmpty(Word& readers) {
    for (int spins = 0; spins < System::kSpins; ++spins) {
      if (readers.load() == 0) return;
      System::relax();
    }
    for (std::uint32_t count = readers.load(); count != 0; count = readers.load()) {
      System::wait(readers, count);
    }
  }

  bool allAreEmpty() const {
    for (const Slot& each : slots_) {
      if (each.readers.load() != 0) return false;
    }
    return true;
  }

  // A nested reader counts itself before it checks the state for the last time and blocks.
  void endWriting(std::uint32_t state) {
    state_.store(state);
    if (nestedWaiters_.load() != 0) System::wake(state_, kEverybody);
  }

  alignas(kLine) Word state_{kOpen};
  Word nestedWaiters_{0};
  Gate gate_;
  Slot slots_[System::kSlots];
};

}  // namespace tq::detail
