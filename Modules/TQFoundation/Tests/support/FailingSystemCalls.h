#pragma once

#include <errno.h>
#include <signal.h>
#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <limits>

namespace tq::test {

/// Makes the n-th system call that changes files fail, counted from arm(), in programs that
/// FailingSystemCalls.cpp is part of.
struct FailingSystemCalls {
  enum class How { not_at_all, fails, stays_failed, kills, stops };
  static inline std::atomic<How> how = How::not_at_all;
  static inline std::atomic<int> left = 0;
  static inline std::atomic<int> errorNumber = ENOSPC;  ///< of the calls that fail
  /// Counts also calls that open or read files, or change their attributes.
  static inline std::atomic<bool> countsAll = false;

  /// The length of the longest file that fits on the disk, for pwrite(), which databases use.
  static inline std::atomic<off_t> mostBytes = std::numeric_limits<off_t>::max();

  /// Called in place of write(), unless null.
  using Write = ssize_t (*)(int descriptor, const void* bytes, std::size_t count);
  static inline std::atomic<Write> insteadOfWrite = nullptr;

  static void arm(int n, How way) {
    left = n;
    how = way;
  }
  /// Lets the n-th of all calls fail in this way.
  static void armAll(int n, int error) {
    errorNumber = error;
    countsAll = true;
    arm(n, How::fails);
  }
  /// @return whether the n-th call was made
  static bool disarm() {
    how = How::not_at_all;
    countsAll = false;
    errorNumber = ENOSPC;
    return left <= 0;
  }

  /// @param end  the length that the file would have at least
  static bool fails(off_t end = 0) {
    if (end > mostBytes) return errno = errorNumber, true;
    if (how == How::not_at_all) return false;
    const int before = left.fetch_sub(1);
    if (before > 1 || (before < 1 && how != How::stays_failed)) return false;
    if (how == How::kills) ::raise(SIGKILL);
    if (how == How::stops) ::raise(SIGSTOP);
    errno = errorNumber;
    return true;
  }
};

}  // namespace tq::test
