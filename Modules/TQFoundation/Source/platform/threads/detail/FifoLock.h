#pragma once

/// @file FifoLock.h
/// The lock of a serial queue: whoever waits is served in the order of arrival.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// One word holds it all, so that arriving, leaving and handing over are single steps:
///
///     63        47 46        30 29            0
///     | last     | first      | owner          |
///
/// owner  0: free (nobody waits then); kHanded: given to the waiter whose turn has just come;
///        else the number of the thread that holds the lock
/// first  ticket of the waiter served next; last: ticket that the next arrival draws. Both go round
///        at 2^17; equal when nobody waits.
///
/// A waiter with ticket t owns the lock once `first` has passed t. Leaving while somebody waits
/// hands the lock over and never frees it, so that nobody can slip in before those who wait. A
/// thread that finds the lock held and nobody waiting spins for a moment before it draws a ticket:
/// it has not arrived until then.
///
/// Sleepers share a few bells. A bell is rung after its waiter's turn has come, and read by a
/// waiter before it looks whether it has, so a ring between look and sleep keeps it awake.
///
/// `System` supplies Word64, Word, self(), wait(), wake(), relax(), stop() and kSpins.
template <class System>
class FifoLock {
 public:
  FifoLock() = default;
  FifoLock(const FifoLock&) = delete;
  FifoLock& operator=(const FifoLock&) = delete;

  void lock() {
    const std::uint64_t self = System::self();
    std::uint64_t state = 0;
    // Acquire: pairs with the release of whoever left it free.
    if (!state_.compare_exchange_strong(state, self, std::memory_order_acquire,
                                        std::memory_order_relaxed)) {
      lockSlowly(self, state);
    }
  }

  void unlock() {
    std::uint64_t state = System::self();
    // Release: what the owner wrote is seen by the next one. A failure reads only the tickets.
    while (!state_.compare_exchange_strong(state, afterUnlock(state), std::memory_order_release,
                                           std::memory_order_relaxed)) {
    }
    if (first(state) == last(state)) return;
    Word& bell = bells_[first(state) % kBells];
    bell.fetch_add(1, std::memory_order_release);  // not before the turn it tells of
    System::wake(bell, kEverybody);                // others of the same bell go back to sleep
  }

  /// Threads that have drawn a ticket and wait; for tests.
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
  static constexpr std::uint32_t kBells = System::kBells;
  static constexpr int kEverybody = 0x7fffffff;

  static std::uint64_t owner(std::uint64_t state) { return state & kHanded; }
  static std::uint64_t first(std::uint64_t state) { return (state >> kFirstShift) & kTicketMask; }
  static std::uint64_t last(std::uint64_t state) { return state >> kLastShift; }
  static std::uint64_t make(std::uint64_t owner, std::uint64_t first, std::uint64_t last) {
    return owner | ((first & kTicketMask) << kFirstShift) | (last << kLastShift);
  }

  // Free is all zero, so the tickets start again whenever nobody is left.
  static std::uint64_t afterUnlock(std::uint64_t state) {
    return first(state) == last(state) ? 0 : make(kHanded, first(state) + 1, last(state));
  }

  void lockSlowly(std::uint64_t self, std::uint64_t state) {
    if (owner(state) == self) {
      System::stop("dispatch_sync called on queue already owned by current thread");
    }
    for (int spins = 0; spins < System::kSpins && first(state) == last(state); ++spins) {
      System::relax();
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
    // The owner's place holds kHanded, which is above every number: nothing is borrowed.
    state_.fetch_sub(kHanded - self, std::memory_order_relaxed);
  }

  bool take(std::uint64_t self, std::uint64_t& state) {
    return state_.compare_exchange_strong(state, self, std::memory_order_acquire,
                                          std::memory_order_relaxed);
  }

  void waitForTurn(std::uint64_t ticket) {
    Word& bell = bells_[ticket % kBells];
    for (int spins = 0;; ++spins) {
      const std::uint32_t rings = bell.load(std::memory_order_acquire);
      // Acquire: pairs with the release that handed over.
      const std::uint64_t state = state_.load(std::memory_order_acquire);
      if (first(state) == ((ticket + 1) & kTicketMask)) return;
      if (spins < System::kSpins) {
        System::relax();
      } else {
        System::wait(bell, rings);
      }
    }
  }

  Word64 state_{0};
  Word bells_[kBells] = {};
};

}  // namespace tq::detail
