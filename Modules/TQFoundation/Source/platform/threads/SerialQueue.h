#pragma once

/// @file SerialQueue.h
/// Runs closures one at a time, in the order of their requests.

#include <string>
#include <utility>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Runs closures one at a time. A closure runs on the thread of its caller, after all earlier
/// closures have ended.
///
/// Threads:   any.
/// Order:     waiting threads are served strictly in the order of their arrival.
/// Recursion: not allowed. sync() from a closure that runs on the same queue stops the process with
///            "dispatch_sync called on queue already owned by current thread".
/// Memory:    writes of a closure are visible to all later closures.
/// Lifetime:  must not be destroyed while a closure runs or waits. The thread whose closure was the
///            last may destroy it, even if sync() has not returned on other threads.
class TQ_EXPORT SerialQueue {
 public:
  /// @param label  for debuggers and messages
  /// @throws std::bad_alloc
  explicit SerialQueue(std::string label = {});
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// The label, for debuggers.
  [[nodiscard]] const std::string& label() const noexcept { return label_; }

  /// Waits for its turn, runs `execute` and returns its result. An exception passes through; the
  /// queue continues with the next closure.
  template <class F>
  decltype(auto) sync(F&& execute) {
    const Turn turn(*this);
    return std::forward<F>(execute)();
  }

 private:
  struct State;
  class Turn {
   public:
    explicit Turn(SerialQueue& queue) noexcept : queue_(queue) { queue_.enter(); }
    ~Turn() { queue_.leave(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    SerialQueue& queue_;
  };

  void enter() noexcept;
  void leave() noexcept;

  std::string label_;
  State* const state_;  // owned
};

}  // namespace tq
