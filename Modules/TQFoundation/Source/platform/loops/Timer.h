#pragma once

/// @file Timer.h
/// Actions at a later time, once or again and again.

#include <atomic>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/loops/RunLoop.h>
#include <TQFoundation/platform/loops/detail/TimerHeap.h>

namespace tq {

/// Waits on the run loop of the thread that scheduled it, and fires there in the standard mode. The
/// loop holds it while it waits; once it has fired for the last time, or is invalidated, nobody
/// does but its users.
///
/// Threads: the scheduling thread. isValid() and invalidate() from any, but invalidated elsewhere
///          it no longer begins to fire, and lets go of its user info in that loop's next pass.
/// Time:    the loop's steady clock; a change of the wall clock does not move it.
class TQ_EXPORT Timer final : public Subclass<Timer> {
 public:
  static constexpr std::string_view className = "Timer";
  /// What it does when it fires; told the timer.
  using Action = void (*)(Timer&);

  /// A timer on the calling thread's run loop.
  ///
  /// @param seconds   from now to the first firing, and between firings; 0 or less is a tenth of a
  ///                  millisecond; NaN stops the process
  /// @param action    is told the timer; an empty one stops the process
  /// @param userInfo  for the action; held until the timer is invalid
  /// @param repeats   fires on the grid start + k · seconds, leaving out what has passed; otherwise
  ///                  once, and is invalid after its action has returned
  static Ref<Timer> scheduledTimerWithTimeInterval(double seconds, Action action,
                                                   Ref<Object> userInfo, bool repeats);

  /// False once it has fired for the last time, or was invalidated.
  [[nodiscard]] bool isValid() const noexcept { return isValid_.load(); }

  /// None once the timer is invalid.
  [[nodiscard]] Object* userInfo() const noexcept { return userInfo_.get(); }

  /// Never fires again. May be called twice, and from the action.
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
  const std::int64_t interval_;  // nanoseconds, at least 1
  const std::int64_t start_;     // by the loop's clock
  const bool repeats_;
  std::atomic<bool> isValid_{true};
  Ref<Object> userInfo_;
  detail::TimerSlot slot_;
};

}  // namespace tq
