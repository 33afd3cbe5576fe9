#pragma once

/// @file Thread.h
/// What the operating system knows of threads: their numbers, and how they sleep on a word.

#include <atomic>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

namespace detail {
// Initial-exec: read on every lock, so without the call that a library's thread-local variables
// take.
extern TQ_EXPORT thread_local constinit std::uint32_t threadNumber
    [[gnu::tls_model("initial-exec")]];
[[nodiscard]] TQ_EXPORT std::uint32_t assignThreadNumber() noexcept;
}  // namespace detail

/// The system's number of the calling thread: never 0, below 2^30, unique among living threads. The
/// one thread of a forked child keeps the number that it had in its parent.
[[nodiscard]] inline std::uint32_t currentThreadNumber() noexcept {
  const std::uint32_t number = detail::threadNumber;
  return number != 0 ? number : detail::assignThreadNumber();
}

/// Sleeps while `word` holds `expected`. May return early without cause: look at the word again.
TQ_EXPORT void waitOnWord(const std::atomic<std::uint32_t>& word, std::uint32_t expected) noexcept;

/// Wakes up to `count` threads that sleep on the word at `word`. The word itself is not touched, so
/// it may be gone already.
TQ_EXPORT void wakeOnWord(const std::atomic<std::uint32_t>* word, int count) noexcept;

/// Writes `message` and a line feed to standard error and aborts. Allocates nothing.
[[noreturn]] TQ_EXPORT void stopProcess(const char* message) noexcept;

/// Tells the processor that the thread is spinning.
inline void relaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  __asm__ __volatile__("yield");
#endif
}

}  // namespace tq
