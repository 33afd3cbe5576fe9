#pragma once

/// @file SerialQueue.h
/// One closure after another, in the order in which they were asked for.

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Runs closures one at a time, first come, first served. A closure runs on the thread of its
/// caller, once all earlier work has ended.
///
/// Threads:   any.
/// Order:     of those who wait, strictly the order of their coming.
/// Recursion: none; sync() from a closure that runs on the same queue stops the process with
///            "dispatch_sync called on queue already owned by current thread".
/// Memory:    what a closure wrote is seen by all later ones.
/// Lifetime:  may go away only while nothing runs or waits.
class TQ_EXPORT SerialQueue {
 public:
  /// @param label  for debuggers and messages
  /// @throws std::bad_alloc
  explicit SerialQueue(std::string label = {});
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// For people, in debuggers.
  [[nodiscard]] const std::string& label() const noexcept { return label_; }

  /// Runs `execute` when its turn comes and answers its result; what it throws passes through, and
  /// the queue goes on with the next.
  template <class F>
  decltype(auto) sync(F&& execute) {
    const Turn turn(*this);
    return std::invoke(std::forward<F>(execute));
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
  std::unique_ptr<State> state_;
};

}  // namespace tq
