#pragma once

/// @file Debouncer.h
/// Debouncing: one action for a burst of requests, a fixed time after the last one.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/loops/Timer.h>

namespace tq {

/// Runs its action once, `interval` seconds after the last request of a burst. The action runs on
/// the thread of that request, on its run loop. If that loop does not run, the action never runs.
///
/// Threads:  one at a time, normally the main thread.
/// Lifetime: a pending request keeps the debouncer alive. The action may release the last
///           reference.
class TQ_EXPORT Debouncer final : public Subclass<Debouncer> {
 public:
  static constexpr std::string_view className = "Debouncer";
  ~Debouncer() override;

  /// The debounced action.
  using Action = std::function<void()>;

  /// Create a debouncer.
  /// @param interval         in seconds. 0 or less means as soon as possible. NaN stops the process
  ///                         at the first request.
  /// @param actionToPerform  must not be empty; an empty function stops the process
  [[nodiscard]] static Ref<Debouncer> init(double interval, Action actionToPerform);
  [[nodiscard]] static Ref<Debouncer> initWithInterval(double interval, Action actionToPerform) {
    return init(interval, std::move(actionToPerform));
  }
  /// A debouncer needs an interval and an action.
  static Ref<Debouncer> init() = delete;

  /// Requests the action. A pending request is cancelled and the interval starts again.
  void schedulePerformAction();

 private:
  Debouncer(double interval, Action actionToPerform);

  Weak<Timer> timer_;  // the pending timer, owned by its run loop
  const double interval_;
  const Action actionToPerform_;
};

/// The other name of the class.
using LRDebouncer = Debouncer;

}  // namespace tq
