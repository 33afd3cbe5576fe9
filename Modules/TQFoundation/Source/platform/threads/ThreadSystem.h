#pragma once

/// @file ThreadSystem.h
/// What the hand-made locks stand on: the processor's atomics and the system's sleep on a word.
/// They are written over this so that a test can put a model in its place and walk through every
/// interleaving of a few threads.

#include <atomic>
#include <cstdint>

#include <TQFoundation/platform/threads/Thread.h>

namespace tq::detail {

struct ThreadSystem {
  using Word = std::atomic<std::uint32_t>;
  using Word64 = std::atomic<std::uint64_t>;

  /// How often a lock is looked at before the thread sleeps: about the cost of going to sleep.
  static constexpr int kSpins = 40;
  static constexpr std::uint32_t kBells = 8;

  static std::uint32_t self() noexcept { return currentThreadNumber(); }
  static void relax() noexcept { relaxProcessor(); }
  static void wait(const Word& word, std::uint32_t expected) noexcept {
    waitOnWord(word, expected);
  }
  static void wake(const Word& word, int count) noexcept { wakeOnWord(&word, count); }
  [[noreturn]] static void stop(const char* message) noexcept { stopProcess(message); }
};

}  // namespace tq::detail
