#pragma once

/// @file Debouncer.h
/// One action for a burst of requests, some time after the last.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/loops/Timer.h>

namespace tq {

/// Runs its action once, `interval` seconds after the last request of a burst, on the thread of
/// that request, as its run loop fires the timer. Requests from a thread whose loop is not run are
/// never answered.
///
/// Threads:  one at a time, normally the main thread.
/// Lifetime: a pending request keeps the debouncer alive; the action may drop the last reference.
class TQ_EXPORT Debouncer final : public Subclass<Debouncer> {
 public:
  static constexpr std::string_view className = "Debouncer";
  /// What is put off.
  using Action = std::function<void()>;

  /// @param interval          seconds; 0 or less is next to nothing; NaN stops the process when the
  ///                          action is requested
  /// @param actionToPerform   an empty one stops the process
  [[nodiscard]] static Ref<Debouncer> init(double interval, Action actionToPerform);
  [[nodiscard]] static Ref<Debouncer> initWithInterval(double interval, Action actionToPerform) {
    return init(interval, std::move(actionToPerform));
  }
  /// There is no debouncer without an interval and an action.
  static Ref<Debouncer> init() = delete;

  /// Requests the action: a pending request is dropped, and the time begins anew.
  void schedulePerformAction();

 private:
  Debouncer(double interval, Action actionToPerform);

  Weak<Timer> timer_;  // the pending one; its run loop holds it
  const double interval_;
  const Action actionToPerform_;
};

/// The debouncer's other name.
using LRDebouncer = Debouncer;

}  // namespace tq
