#pragma once

/// @file UnfairWord.h
/// The lock word of UnfairLock and the contended paths.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// Mutual exclusion in one 32-bit word:
///
/// | word | meaning |
/// |---|---|
/// | 0 | free |
/// | n | held by thread n, no thread sleeps |
/// | n + kSleepers | held by thread n, threads may sleep |
///
/// A thread sleeps only on a word with kSleepers set. The thread that frees such a word wakes one
/// sleeper. The woken thread takes the lock with kSleepers set, because it cannot know whether
/// other threads still sleep.
///
/// UnfairLock has the two compare-exchanges of lock() and unlock() inline, on the same word. They
/// are repeated here so that a test can explore the whole lock on a model of the system.
///
/// `System` supplies Word, self(), wait(), wake(), relax(), stop() and kSpins.
template <class System>
class UnfairWord {
 public:
  using Word = typename System::Word;

  UnfairWord() = default;
  UnfairWord(const UnfairWord&) = delete;
  UnfairWord& operator=(const UnfairWord&) = delete;

  void lock() {
    const std::uint32_t self = System::self();
    std::uint32_t found = 0;
    if (!take(word_, found, self)) lockSlowly(word_, self, found);
  }

  void unlock() {
    const std::uint32_t self = System::self();
    std::uint32_t found = self;
    if (!word_.compare_exchange_strong(found, 0, std::memory_order_release,
                                       std::memory_order_relaxed)) {
      unlockSlowly(word_, self, found);
    }
  }

  /// Takes the lock after `word` was not 0 but `found`.
  static void lockSlowly(Word& word, std::uint32_t self, std::uint32_t found) {
    if ((found & ~kSleepers) == self) {
      System::stop("Trying to recursively lock an os_unfair_lock");
    }
    for (int spins = 0; spins < System::kSpins; ++spins) {
      System::relax();
      found = word.load(std::memory_order_relaxed);
      if (found == 0 && take(word, found, self)) return;
    }
    for (;;) {
      if (found == 0) {
        if (take(word, found, self | kSleepers)) return;
      } else if ((found & kSleepers) != 0 ||
                 word.compare_exchange_strong(found, found | kSleepers, std::memory_order_relaxed,
                                              std::memory_order_relaxed)) {
        System::wait(word, found | kSleepers);
        found = word.load(std::memory_order_relaxed);
      }
    }
  }

  /// Releases the lock after `word` was not `self` but `found`.
  static void unlockSlowly(Word& word, std::uint32_t self, std::uint32_t found) {
    if ((found & ~kSleepers) != self) {
      System::stop("Unlock of an os_unfair_lock not owned by current thread");
    }
    word.exchange(0, std::memory_order_release);
    System::wake(word, 1);  // the word may be destroyed by now; only its address is used
  }

 private:
  static constexpr std::uint32_t kSleepers = 1u << 31;

  static bool take(Word& word, std::uint32_t& found, std::uint32_t mine) {
    return word.compare_exchange_strong(found, mine, std::memory_order_acquire,
                                        std::memory_order_relaxed);
  }

  Word word_{0};
};

}  // namespace tq::detail
