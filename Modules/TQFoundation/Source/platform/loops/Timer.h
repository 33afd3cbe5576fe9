#pragma once

/// @file Timer.h
/// Timers: call an action at a later time, once or repeatedly.

#include <atomic>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/loops/RunLoop.h>
#include <TQFoundation/platform/loops/detail/TimerHeap.h>

namespace tq {

/// A timer on the run loop of the thread that scheduled it. It fires there, in the standard mode.
///
/// Ownership: the loop retains the timer until it has fired for the last time or is invalidated.
/// Threads:   the scheduling thread; isValid() and invalidate() from any. After invalidate() on
///            another thread, a firing that has begun may call the action once more. What the
///            action uses belongs in the user info, which is kept until the loop's next pass in a
///            common mode releases it.
/// Time:      the steady clock; changes of the wall clock have no effect.
class TQ_EXPORT Timer final : public Subclass<Timer> {
 public:
  static constexpr std::string_view className = "Timer";
  ~Timer() override;

  /// Called with the timer when it fires.
  using Action = void (*)(Timer&);

  /// Schedules a timer on the calling thread's run loop.
  ///
  /// @param seconds   time from now to the first firing, and between firings. 0 or less means a
  ///                  tenth of a millisecond. NaN stops the process.
  /// @param action    called when the timer fires; null stops the process
  /// @param userInfo  for the action; retained until the timer is invalid
  /// @param repeats   if true, the timer fires at start + k · seconds and skips times that have
  ///                  passed. If false, it fires once and is invalid after its action has returned.
  static Ref<Timer> scheduledTimerWithTimeInterval(double seconds, Action action,
                                                   Ref<Object> userInfo, bool repeats);

  /// Returns false after the timer has fired for the last time or was invalidated.
  [[nodiscard]] bool isValid() const noexcept { return isValid_.load(); }

  /// Returns the user info, or null if the timer is invalid. After invalidate() on another thread,
  /// it is not null until the loop has released it.
  [[nodiscard]] Object* userInfo() const noexcept { return userInfo_.get(); }

  /// Stops the timer for good. May be called repeatedly, and by the action.
  void invalidate();

 private:
  friend class RunLoop;

  Timer(std::int64_t nanoseconds, Action action, Ref<Object> userInfo, bool repeats);
  void fire() noexcept;
  void end() noexcept;
  void letGo() noexcept;
  [[nodiscard]] std::int64_t nextDue(std::int64_t now) const noexcept;

  const Ref<RunLoop> loop_;
  const Action action_;
  const std::int64_t interval_;  // in nanoseconds, at least 1
  const std::int64_t start_;     // on the steady clock
  const bool repeats_;
  std::atomic<bool> isValid_{true};
  Ref<Object> userInfo_;
  detail::TimerSlot slot_;
};

}  // namespace tq
