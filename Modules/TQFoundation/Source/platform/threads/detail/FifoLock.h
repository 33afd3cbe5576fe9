#pragma once

/// @file FifoLock.h
/// The lock of a serial queue: waiting threads are served in the order of their arrival.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// A first-in, first-out mutex. One word holds its state, so that each transition is one atomic
/// operation:
///
///     63        47 46        30 29            0
///     | last     | first      | owner          |
///
/// owner  0: free, and no thread waits; kHanded: given to the waiter whose turn has just come;
///        otherwise the number of the thread that holds the lock
/// first  the ticket of the waiter that is served next
/// last   the ticket that the next arriving thread draws. Tickets wrap at 2^17; first equals last
///        if no thread waits.
///
/// A waiter with ticket t owns the lock once `first` has passed t. If threads wait, unlock() hands
/// the lock to the first of them and never frees it, so a late thread cannot overtake them. A
/// thread that finds the lock held, but no waiters, spins for a moment before it draws a ticket; it
/// counts as arrived only then.
///
/// A thread that holds the lock may destroy it after its own unlock(), if no other thread waits. So
/// unlock() does not access the lock after the exchange that hands it over: the bells, on which
/// threads block, belong to the process. Tickets and locks may share a bell; a thread that is woken
/// for another one blocks again.
///
/// A waiter marks its bell before it checks its turn for the last time and blocks. unlock() reads
/// the bell after the waiter's turn has come: it rings a marked one, which clears the mark. These
/// four steps are in one total order, so either the waiter sees its turn or unlock() sees the mark;
/// and a ring between check and wait keeps the waiter awake.
///
/// `System` supplies Word64, Word, bell(), self(), wait(), wake(), relax(), stop() and kSpins.
template <class System>
class FifoLock {
 public:
  FifoLock() = default;
  FifoLock(const FifoLock&) = delete;
  FifoLock& operator=(const FifoLock&) = delete;

  void lock() {
    const std::uint64_t self = System::self();
    std::uint64_t state = 0;
    // Acquire: pairs with the release in the unlock() that freed it.
    if (!state_.compare_exchange_strong(state, self, std::memory_order_acquire,
                                        std::memory_order_relaxed)) {
      lockSlowly(self, state);
    }
  }

  void unlock() {
    std::uint64_t state = System::self();
    // The owner's writes are visible to the next one. A failure reads only the tickets.
    while (!state_.compare_exchange_strong(state, afterUnlock(state), std::memory_order_seq_cst,
                                           std::memory_order_relaxed)) {
    }
    if (first(state) == last(state)) return;
    Word& bell = System::bell(this, first(state));  // only the address is used
    if ((bell.load() & kMark) == 0) return;         // the waiter has not blocked
    bell.fetch_add(1);
    System::wake(bell, kEverybody);  // others on the same bell block again
  }

  /// Returns the number of threads that have drawn a ticket and wait. For tests.
  [[nodiscard]] std::uint32_t waiting() const {
    const std::uint64_t state = state_.load(std::memory_order_relaxed);
    return static_cast<std::uint32_t>((last(state) - first(state)) & kTicketMask);
  }

 private:
  using Word = typename System::Word;
  using Word64 = typename System::Word64;

  static constexpr std::uint64_t kHanded = (std::uint64_t{1} << 30) - 1;  // also the owner's mask
  static constexpr std::uint64_t kTicketMask = (std::uint64_t{1} << 17) - 1;
  static constexpr int kFirstShift = 30;
  static constexpr int kLastShift = 47;
  static constexpr std::uint32_t kMark = 1;  // in a bell, which also counts its rings
  static constexpr int kEverybody = 0x7fffffff;

  static std::uint64_t owner(std::uint64_t state) { return state & kHanded; }
  static std::uint64_t first(std::uint64_t state) { return (state >> kFirstShift) & kTicketMask; }
  static std::uint64_t last(std::uint64_t state) { return state >> kLastShift; }
  static std::uint64_t make(std::uint64_t owner, std::uint64_t first, std::uint64_t last) {
    return owner | ((first & kTicketMask) << kFirstShift) | (last << kLastShift);
  }

  // The free state is 0, so tickets start at 0 again whenever the lock becomes free.
  static std::uint64_t afterUnlock(std::uint64_t state) {
    return first(state) == last(state) ? 0 : make(kHanded, first(state) + 1, last(state));
  }

  void lockSlowly(std::uint64_t self, std::uint64_t state) {
    if (owner(state) == self) {
      System::stop("dispatch_sync called on queue already owned by current thread");
    }
    // Looks less and less often: each look takes the word's cache line from the owner.
    for (int pause = 1; pause <= System::kSpins && first(state) == last(state); pause *= 2) {
      for (int i = 0; i < pause; ++i) System::relax();
      state = state_.load(std::memory_order_relaxed);
      if (state == 0 && take(self, state)) return;
    }
    for (;;) {
      if (state == 0) {
        if (take(self, state)) return;
      } else if (state_.compare_exchange_strong(
                     state, make(owner(state), first(state), last(state) + 1),
                     std::memory_order_relaxed, std::memory_order_relaxed)) {
        break;
      }
    }
    waitForTurn(last(state));
    // The owner field holds kHanded, which exceeds every thread number: no bit is borrowed.
    state_.fetch_sub(kHanded - self, std::memory_order_relaxed);
  }

  bool take(std::uint64_t self, std::uint64_t& state) {
    return state_.compare_exchange_strong(state, self, std::memory_order_acquire,
                                          std::memory_order_relaxed);
  }

  void waitForTurn(std::uint64_t ticket) {
    for (int spins = 0; spins < System::kSpins; ++spins) {
      if (isTurnOf(ticket)) return;
      System::relax();
    }
    Word& bell = System::bell(this, ticket);
    for (std::uint32_t rings = bell.load();; rings = bell.load()) {
      if ((rings & kMark) == 0 && !bell.compare_exchange_strong(rings, rings | kMark)) continue;
      if (isTurnOf(ticket)) return;  // the mark stays, but no thread waits
      System::wait(bell, rings | kMark);
    }
  }

  // Pairs with the unlock() that handed the lock over.
  bool isTurnOf(std::uint64_t ticket) const {
    return first(state_.load()) == ((ticket + 1) & kTicketMask);
  }

  Word64 state_{0};
};

}  // namespace tq::detail
