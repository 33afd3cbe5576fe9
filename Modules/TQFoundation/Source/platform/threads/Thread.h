#pragma once

/// @file Thread.h
/// Thread numbers, and blocking on a word of memory (futex).

#include <atomic>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

namespace detail {
// Initial-exec: every lock operation reads it, so it must not take the call that thread-local
// variables of shared libraries take by default.
extern TQ_EXPORT thread_local constinit std::uint32_t threadNumber
    [[gnu::tls_model("initial-exec")]];
[[nodiscard]] TQ_EXPORT std::uint32_t assignThreadNumber() noexcept;
}  // namespace detail

/// Returns the system's number of the calling thread: never 0, below 2^30, unique among living
/// threads. After fork(), the child's only thread keeps the number that it had in the parent, if it
/// had been asked for there.
[[nodiscard]] inline std::uint32_t currentThreadNumber() noexcept {
  const std::uint32_t number = detail::threadNumber;
  return number != 0 ? number : detail::assignThreadNumber();
}

/// Blocks while `word` is `expected`. May return early without a reason: the caller must check the
/// word again.
TQ_EXPORT void waitOnWord(const std::atomic<std::uint32_t>& word, std::uint32_t expected) noexcept;

/// Wakes up to `count` threads that block on the word at `word`. Does not access the word, which
/// may already be destroyed.
TQ_EXPORT void wakeOnWord(const std::atomic<std::uint32_t>* word, int count) noexcept;

/// Writes `message` and a line feed to standard error and aborts. Allocates nothing.
[[noreturn]] TQ_EXPORT void stopProcess(const char* message) noexcept;

/// Hints to the processor that the thread is spinning.
inline void relaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  __asm__ __volatile__("yield");
#endif
}

}  // namespace tq
