#pragma once

/// @file TQRateLimiter.h
/// Rate limiting: combines many update requests into one update on the main thread.

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

/// How an update reaches the main thread. With any other value nothing is scheduled: the first
/// request marks an update as scheduled, and no later request schedules one, until the caller calls
/// performUpdateIfNeeded().
using TQRateLimiterUpdateStrategy = std::uint64_t;
/// The update is a block of the main queue, which wakes the run loop.
inline constexpr TQRateLimiterUpdateStrategy TQRateLimiterUpdateOnMainQueue = 0;
/// The update is a block of the main run loop, in its common modes. The loop is not woken.
inline constexpr TQRateLimiterUpdateStrategy TQRateLimiterUpdateInRunLoop = 1;

/// Calls a member function of its target once for any number of requests that are made before the
/// main thread runs the update.
///
/// | state | ends with |
/// |---|---|
/// | idle | setNeedsUpdate(true), which schedules a block: scheduled |
/// | scheduled | the start of the block: idle, then updating if an update is still needed |
/// | updating | the return of the call; a request made during the call schedules a new block |
///
/// Threads:    any for setNeedsUpdate(), needsUpdate(), and the accessors of the invocation and the
///             strategy. setTarget() must not run while another thread uses the limiter. A
///             scheduled update runs on the main thread, a direct one on the caller's thread.
/// Lifetime:   the target is held weakly. A scheduled block keeps the limiter alive until it has
///             run.
/// Exceptions: exceptions of the target propagate from a direct update. In a scheduled update they
///             stop the process.
/// Cost:       a request while an update is scheduled: two atomic accesses.
class TQ_EXPORT TQRateLimiter final : public Subclass<TQRateLimiter> {
 public:
  static constexpr std::string_view className = "TQRateLimiter";
  ~TQRateLimiter() override;

  /// The call of the target. Receives the target and the limiter.
  using ActionInvocation = std::function<void(Object& target, TQRateLimiter& limiter)>;

  /// Create a limiter for `target`, which is held weakly.
  /// @param action  a member function of the target's class. Its first argument, if there is one,
  ///                is the limiter (as a reference, a pointer or a Ref, of its class or Object).
  ///                Further arguments are zero. The result is ignored.
  /// @throws Exception (InvalidArgumentException) if target or action is null
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

  /// Requests an update, and schedules a block unless one is scheduled. False withdraws the
  /// request: the scheduled block then does nothing.
  /// @throws std::bad_alloc; the next request then schedules again
  void setNeedsUpdate(bool flag) {
    // Sequentially consistent, like performUpdateIfNeeded(): either this thread sees that the block
    // has begun, or the block sees the request.
    atomicNeedsUpdate_.store(flag);
    if (flag && !hasScheduledBlock_.load()) schedule();
  }
  /// True from a request until the update begins.
  [[nodiscard]] bool needsUpdate() const noexcept { return atomicNeedsUpdate_.load(); }

  /// The body of the scheduled block. From here on a new block may be scheduled. Then calls
  /// updateIfNeeded().
  void performUpdateIfNeeded();
  /// Calls update() if an update is requested.
  void updateIfNeeded();
  /// Clears the request and calls the target, if it still exists.
  void update();

  /// Returns the target, or null if it has been destroyed.
  [[nodiscard]] Ref<Object> target() const noexcept { return target_.lock(); }
  /// Sets the target, which is held weakly. With null, updates do nothing.
  void setTarget(Object* target) { target_ = Weak<Object>(target); }
  /// Returns a copy of the call.
  [[nodiscard]] ActionInvocation actionInvocation() const;
  /// Sets the call. With an empty one, updates do nothing.
  void setActionInvocation(ActionInvocation invocation);
  /// How updates reach the main thread. A new value takes effect at the next request.
  [[nodiscard]] TQRateLimiterUpdateStrategy updateStrategy() const noexcept {
    return updateStrategy_.load(std::memory_order_relaxed);  // orders no other memory
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

  /// Returns the limiter in a form that converts to Argument: a reference, a pointer or a Ref.
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
