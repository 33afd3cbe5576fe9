#pragma once

/// @file ThreadSystem.h
/// The primitives of this library's locks: the processor's atomics and the system's blocking on a
/// word. The locks take them as a template parameter, so that a test can use a model instead and
/// explore every interleaving of a few threads.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <TQFoundation/platform/threads/Thread.h>

namespace tq::detail {

struct ThreadSystem {
  using Word = std::atomic<std::uint32_t>;
  using Word64 = std::atomic<std::uint64_t>;

  /// How many times a thread checks a lock before it blocks: about the cost of blocking.
  static constexpr int kSpins = 40;

  /// Returns the word on which a thread with this ticket blocks for the lock. It is never
  /// destroyed. The words of a lock share a cache line; locks seldom share one.
  static Word& bell(const void* lock, std::uint64_t ticket) noexcept {
    constexpr std::size_t kLineBits = 6, kWords = 16;
    struct alignas(64) Line {
      Word words[kWords];
    };
    static constinit Line lines[std::size_t{1} << kLineBits] = {};
    const std::uint64_t hash = reinterpret_cast<std::uintptr_t>(lock) * 0x9e3779b97f4a7c15;
    return lines[hash >> (64 - kLineBits)].words[ticket % kWords];
  }

  static std::uint32_t self() noexcept { return currentThreadNumber(); }
  static void relax() noexcept { relaxProcessor(); }
  static void wait(const Word& word, std::uint32_t expected) noexcept {
    waitOnWord(word, expected);
  }
  static void wake(const Word& word, int count) noexcept { wakeOnWord(&word, count); }
  [[noreturn]] static void stop(const char* message) noexcept { stopProcess(message); }
};

}  // namespace tq::detail
