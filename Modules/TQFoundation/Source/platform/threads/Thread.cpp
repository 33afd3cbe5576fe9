#include <TQFoundation/platform/threads/Thread.h>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace tq {

namespace detail {

thread_local constinit std::uint32_t threadNumber = 0;

std::uint32_t assignThreadNumber() noexcept {
  return threadNumber = static_cast<std::uint32_t>(::gettid());
}

}  // namespace detail

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
              std::atomic<std::uint32_t>::is_always_lock_free);

void waitOnWord(const std::atomic<std::uint32_t>& word, std::uint32_t expected) noexcept {
  ::syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, expected, nullptr, nullptr, 0);
}

void wakeOnWord(const std::atomic<std::uint32_t>* word, int count) noexcept {
  ::syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

void stopProcess(const char* message) noexcept {
  std::fprintf(stderr, "%s\n", message);
  std::abort();
}

}  // namespace tq
