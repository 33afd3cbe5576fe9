#pragma once

#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <sys/types.h>

#include <atomic>
#include <cstddef>

// The program's own definitions of these calls stand before the C library's, for every library in
// the process. To be included in one source of a test program.

namespace tq::test {

/// Makes the n-th of the calls that change files go wrong, from the moment it is armed.
struct FailingSystemCalls {
  enum class How { not_at_all, fails, stays_failed, kills };
  static inline std::atomic<How> how = How::not_at_all;
  static inline std::atomic<int> left = 0;

  static void arm(int n, How way) {
    left = n;
    how = way;
  }
  /// @return whether the n-th call was met
  static bool disarm() {
    how = How::not_at_all;
    return left <= 0;
  }

  static bool fails() {
    if (how == How::not_at_all) return false;
    const int before = left.fetch_sub(1);
    if (before > 1 || (before < 1 && how != How::stays_failed)) return false;
    if (how == How::kills) ::raise(SIGKILL);
    errno = ENOSPC;
    return true;
  }
};

}  // namespace tq::test

#define TQ_FAILING_CALL(name, Result, parameters, arguments)                                  \
  extern "C" __attribute__((visibility("default"))) Result name parameters {                  \
    static const auto real = reinterpret_cast<Result(*) parameters>(dlsym(RTLD_NEXT, #name)); \
    return tq::test::FailingSystemCalls::fails() ? -1 : real arguments;                       \
  }
TQ_FAILING_CALL(write, ssize_t, (int fd, const void* bytes, size_t count), (fd, bytes, count))
TQ_FAILING_CALL(pwrite, ssize_t, (int fd, const void* bytes, size_t count, off_t at),
                (fd, bytes, count, at))
TQ_FAILING_CALL(pwrite64, ssize_t, (int fd, const void* bytes, size_t count, off64_t at),
                (fd, bytes, count, at))
TQ_FAILING_CALL(fsync, int, (int fd), (fd))
TQ_FAILING_CALL(fdatasync, int, (int fd), (fd))
TQ_FAILING_CALL(ftruncate, int, (int fd, off_t length), (fd, length))
TQ_FAILING_CALL(ftruncate64, int, (int fd, off64_t length), (fd, length))
TQ_FAILING_CALL(rename, int, (const char* from, const char* to), (from, to))
#undef TQ_FAILING_CALL
