#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include <TQFoundation/platform/loops/RunLoop.h>

namespace tq::test {

/// Seconds that are added to the system's wall clock in all threads, in the same programs.
inline std::atomic<std::int64_t> wallClockOffset = 0;

/// Replaces the clocks of the calling thread by one that a test moves, in programs that
/// HandMovedClock.cpp is part of. The time is an hour at first, for the steady clock and for the
/// wall clock. Other threads see the system's time.
class HandMovedClock {
 public:
  HandMovedClock() { current_ = this; }
  ~HandMovedClock() { current_ = nullptr; }
  HandMovedClock(const HandMovedClock&) = delete;
  HandMovedClock& operator=(const HandMovedClock&) = delete;

  /// Moves the time.
  void jump(std::chrono::milliseconds step) { now_ += step; }

  /// Moves the time, then lets the thread's run loop make a pass.
  void pass(std::chrono::milliseconds step) {
    jump(step);
    RunLoop::current().runOnce();
  }

  /// Returns the clock of the calling thread, or null.
  [[nodiscard]] static const HandMovedClock* current() noexcept { return current_; }
  [[nodiscard]] std::chrono::nanoseconds now() const noexcept { return now_; }

 private:
  static inline thread_local constinit const HandMovedClock* current_ = nullptr;
  std::chrono::nanoseconds now_ = std::chrono::hours(1);
};

}  // namespace tq::test
