#pragma once

#include <chrono>

#include <TQFoundation/platform/loops/RunLoop.h>

namespace tq::test {

/// Time on the calling thread's run loop, which stands still until it is moved.
class HandMovedClock {
 public:
  HandMovedClock() {
    RunLoop::current().setClock([this] { return now_; });
  }
  ~HandMovedClock() { RunLoop::current().setClock(nullptr); }
  HandMovedClock(const HandMovedClock&) = delete;
  HandMovedClock& operator=(const HandMovedClock&) = delete;

  /// Moves the time without running anything.
  void jump(std::chrono::milliseconds step) { now_ += step; }

  /// Moves the time, then lets the loop make a pass.
  void pass(std::chrono::milliseconds step) {
    jump(step);
    RunLoop::current().runOnce();
  }

 private:
  std::chrono::nanoseconds now_ = std::chrono::hours(1);
};

}  // namespace tq::test
