#pragma once

/// @file TQRateLimiter.h
/// Any number of requests, one update on the main thread.

#include <atomic>
#include <concepts>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

/// How an update reaches the main thread. With any other value nothing is scheduled at all: the
/// first request marks an update as scheduled, and none ever is until performUpdateIfNeeded() is
/// called by hand.
using TQRateLimiterUpdateStrategy = std::uint64_t;
/// As a block of the main queue, which wakes the loop.
inline constexpr TQRateLimiterUpdateStrategy TQRateLimiterUpdateOnMainQueue = 0;
/// As a block performed by the main run loop in its common modes; the loop is not woken.
inline constexpr TQRateLimiterUpdateStrategy TQRateLimiterUpdateInRunLoop = 1;

/// Sends its target one message for any number of requests made before the main thread gets there.
///
/// | state | left by |
/// |---|---|
/// | idle | setNeedsUpdate(true), which schedules a block: scheduled |
/// | scheduled | the block's start: idle, then an update if one is still needed |
/// | updating | the end of the message; a request made meanwhile schedules again |
///
/// Threads:    setNeedsUpdate() and needsUpdate() on any, as well as the accessors of the
///             invocation and the strategy; setTarget() while nobody else uses the limiter. A
///             scheduled update runs on the main thread, a direct one on the caller's.
/// Lifetime:   the target is held weakly; a scheduled block holds the limiter until it has run.
/// Exceptions: what the message throws passes through a direct update; out of a scheduled one it
///             stops the process.
/// Cost:       a request while an update is scheduled: two atomic accesses.
class TQ_EXPORT TQRateLimiter final : public Subclass<TQRateLimiter> {
 public:
  static constexpr std::string_view className = "TQRateLimiter";
  /// A message ready to be sent; told its receiver and the limiter that sends it.
  using ActionInvocation = std::function<void(Object& target, TQRateLimiter& limiter)>;

  /// @param action  a member function of the target's class. Its first argument, if there is one,
  ///                is the limiter (as a reference, a pointer or a Ref, of its class or Object);
  ///                arguments behind it are zero. Its result is ignored.
  /// @throws Exception (InvalidArgumentException) when target or action is none
  template <class T, class Action>
  requires std::is_member_function_pointer_v<Action>
  [[nodiscard]] static Ref<TQRateLimiter> initWithTarget(
      T* target, Action action,
      TQRateLimiterUpdateStrategy updateStrategy = TQRateLimiterUpdateOnMainQueue) {
    requireMethod(target != nullptr && action != nullptr);
    return make(target, invocationOf<std::remove_const_t<T>>(action), updateStrategy);
  }
  template <class T, class Action>
  requires std::is_member_function_pointer_v<Action>
  [[nodiscard]] static Ref<TQRateLimiter> initWithTarget(
      const Ref<T>& target, Action action,
      TQRateLimiterUpdateStrategy updateStrategy = TQRateLimiterUpdateOnMainQueue) {
    return initWithTarget(target.get(), action, updateStrategy);
  }

  /// Says that an update is needed, and schedules one unless that has been done; or that none is
  /// needed any more, so that the scheduled block finds nothing to do.
  /// @throws std::bad_alloc, and the next request schedules
  void setNeedsUpdate(bool flag) {
    // Sequentially consistent, like performUpdateIfNeeded(): either this thread sees that the block
    // has begun, or the block sees the need.
    atomicNeedsUpdate_.store(flag);
    if (flag && !hasScheduledBlock_.load()) schedule();
  }
  /// True from a request until the update begins.
  [[nodiscard]] bool needsUpdate() const noexcept { return atomicNeedsUpdate_.load(); }

  /// What the scheduled block does: a new one may be scheduled from here on; updateIfNeeded().
  void performUpdateIfNeeded();
  /// update() if it is needed.
  void updateIfNeeded();
  /// The need is met; sends the message to the target, if there still is one.
  void update();

  /// Whom the message goes to; none once it has gone.
  [[nodiscard]] Ref<Object> target() const noexcept { return target_.lock(); }
  /// Held weakly; none sends nothing from now on.
  void setTarget(Object* target) { target_ = Weak<Object>(target); }
  /// A copy of the message.
  [[nodiscard]] ActionInvocation actionInvocation() const;
  /// An empty one sends nothing.
  void setActionInvocation(ActionInvocation invocation);
  /// How updates reach the main thread; setting it counts from the next request on.
  [[nodiscard]] TQRateLimiterUpdateStrategy updateStrategy() const noexcept {
    return updateStrategy_.load(std::memory_order_relaxed);  // a value by itself
  }
  void setUpdateStrategy(TQRateLimiterUpdateStrategy strategy) noexcept {
    updateStrategy_.store(strategy, std::memory_order_relaxed);
  }

 private:
  TQRateLimiter(Object* target, ActionInvocation invocation, TQRateLimiterUpdateStrategy strategy);
  static Ref<TQRateLimiter> make(Object* target, ActionInvocation invocation,
                                 TQRateLimiterUpdateStrategy strategy);
  static void requireMethod(bool hasMethod);
  void schedule();

  /// The limiter as what becomes an Argument: itself, or a pointer or a Ref by value.
  template <class Argument>
  static decltype(auto) limiterAs(TQRateLimiter& limiter) {
    if constexpr (std::convertible_to<TQRateLimiter&, Argument>) {
      return (limiter);
    } else if constexpr (std::convertible_to<TQRateLimiter*, Argument>) {
      return &limiter;
    } else {
      static_assert(std::convertible_to<Ref<TQRateLimiter>, Argument>,
                    "the first argument is the limiter");
      return share(limiter);
    }
  }

  template <class T, class C, class Result, class... Arguments>
  static ActionInvocation invocationOf(Result (C::*action)(Arguments...)) {
    return message<T>(action, std::type_identity<Arguments>()...);
  }
  template <class T, class C, class Result, class... Arguments>
  static ActionInvocation invocationOf(Result (C::*action)(Arguments...) const) {
    return message<T>(action, std::type_identity<Arguments>()...);
  }

  template <class T, class Action, class... Arguments>
  static ActionInvocation message(Action action, Arguments... arguments) {
    return [=](Object& target, TQRateLimiter& limiter) {
      T* const receiver = objectCast<T>(&target);
      requireMethod(receiver != nullptr);
      send(*receiver, action, limiter, arguments...);
    };
  }
  template <class T, class Action>
  static void send(T& receiver, Action action, TQRateLimiter&) {
    static_cast<void>((receiver.*action)());
  }
  template <class T, class Action, class First, class... Rest>
  static void send(T& receiver, Action action, TQRateLimiter& limiter, std::type_identity<First>,
                   std::type_identity<Rest>...) {
    static_cast<void>((receiver.*action)(limiterAs<First>(limiter), Rest{}...));
  }

  std::atomic<bool> hasScheduledBlock_{false};
  std::atomic<bool> atomicNeedsUpdate_{false};
  Weak<Object> target_;
  mutable Lock lock_;
  ActionInvocation actionInvocation_ TQ_GUARDED_BY(lock_);
  std::atomic<TQRateLimiterUpdateStrategy> updateStrategy_;
};

}  // namespace tq
