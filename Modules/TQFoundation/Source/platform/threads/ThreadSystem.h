#pragma once

/// @file ThreadSystem.h
/// The primitives of this library's locks: the processor's atomics and the system's blocking on a
/// word. The locks take them as a template parameter, so that a test can use a model instead and
/// explore every interleaving of a few threads.

#include <atomic>
#include <cstdint>

#include <TQFoundation/platform/threads/Thread.h>

namespace tq::detail {

struct ThreadSystem {
  using Word = std::atomic<std::uint32_t>;
  using Word64 = std::atomic<std::uint64_t>;

  /// How many times a thread checks a lock before it blocks: about the cost of blocking.
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
