#pragma once

/// @file UnfairWord.h
/// The lock word of UnfairLock.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// Mutual exclusion in one 32-bit word:
///
/// | word | means |
/// |---|---|
/// | 0 | free |
/// | n | held by thread n, nobody sleeps |
/// | n + kSleepers | held by thread n, somebody may sleep |
///
/// Nobody sleeps but on a word that carries kSleepers, and whoever frees such a word wakes one
/// sleeper; that one takes the lock with kSleepers set, since it cannot know whether it was the
/// last.
///
/// `System` supplies Word, self(), wait(), wake(), relax(), stop() and kSpins.
template <class System>
class UnfairWord {
 public:
  UnfairWord() = default;
  UnfairWord(const UnfairWord&) = delete;
  UnfairWord& operator=(const UnfairWord&) = delete;

  void lock() {
    const std::uint32_t self = System::self();
    std::uint32_t found = 0;
    // Acquire: pairs with the release in unlock().
    if (!word_.compare_exchange_strong(found, self, std::memory_order_acquire,
                                       std::memory_order_relaxed)) {
      lockSlowly(self, found);
    }
  }

  void unlock() {
    const std::uint32_t self = System::self();
    std::uint32_t found = self;
    // Release: what the owner wrote is seen by whoever locks next.
    if (!word_.compare_exchange_strong(found, 0, std::memory_order_release,
                                       std::memory_order_relaxed)) {
      unlockSlowly(self, found);
    }
  }

 private:
  static constexpr std::uint32_t kSleepers = 1u << 31;

  [[gnu::noinline]] void lockSlowly(std::uint32_t self, std::uint32_t found) {
    if ((found & ~kSleepers) == self) {
      System::stop("Trying to recursively lock an os_unfair_lock");
    }
    for (int spins = 0; spins < System::kSpins; ++spins) {
      System::relax();
      found = word_.load(std::memory_order_relaxed);
      if (found == 0 && take(found, self)) return;
    }
    for (;;) {
      if (found == 0) {
        if (take(found, self | kSleepers)) return;
      } else if ((found & kSleepers) != 0 ||
                 word_.compare_exchange_strong(found, found | kSleepers, std::memory_order_relaxed,
                                               std::memory_order_relaxed)) {
        System::wait(word_, found | kSleepers);
        found = word_.load(std::memory_order_relaxed);
      }
    }
  }

  [[gnu::noinline]] void unlockSlowly(std::uint32_t self, std::uint32_t found) {
    if ((found & ~kSleepers) != self) {
      System::stop("Unlock of an os_unfair_lock not owned by current thread");
    }
    word_.exchange(0, std::memory_order_release);
    System::wake(word_, 1);  // the word may be gone by now; only its address is used
  }

  bool take(std::uint32_t& found, std::uint32_t mine) {
    return word_.compare_exchange_strong(found, mine, std::memory_order_acquire,
                                         std::memory_order_relaxed);
  }

  typename System::Word word_{0};
};

}  // namespace tq::detail
