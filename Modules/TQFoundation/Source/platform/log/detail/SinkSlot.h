#pragma once

/// @file SinkSlot.h
/// Holds a sink of the host: many threads call it while others replace it.

#include <atomic>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/base/ThreadCancellation.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq::detail {

/// A closure that many threads call while others replace it. The closure may replace itself. A
/// replaced closure is destroyed at a later replacement that finds no call in progress.
///
/// Threads: any.
/// Cost:    a call takes two atomic operations and no lock.
template <class... Arguments>
class SinkSlot {
 public:
  using Sink = std::function<void(Arguments...)>;

  /// Returns the process's slot for these arguments.
  static SinkSlot& shared() {
    static auto& slot = *new SinkSlot;  // never destroyed: threads may outlive main
    return slot;
  }

  /// Calls the sink. Drops an exception that leaves it. @return false if there is none
  bool call(Arguments... arguments) const {
    if (sink_.load(std::memory_order_relaxed) == nullptr) return false;  // loaded again below
    const Call counted(calls_);
    const Sink* const sink = sink_.load();
    if (sink == nullptr) return false;
    try {
      (*sink)(arguments...);
    } catch (const ThreadCancellation&) {
      throw;  // thread cancellation
    } catch (...) {
      // A message must not make the caller fail.
    }
    return true;
  }

  /// Replaces the sink. @return the previous sink
  Sink replace(Sink sink) {
    auto replacement = sink ? std::make_unique<const Sink>(std::move(sink)) : nullptr;
    std::vector<std::unique_ptr<const Sink>> gone;  // destroyed after the lock is released
    const Locked guard(lock_);
    retired_.push_back(nullptr);
    Sink before = current_ != nullptr ? *current_ : Sink();
    retired_.back() = std::exchange(current_, std::move(replacement));
    sink_.store(current_.get());
    // A thread that calls after this counts itself first and then loads the new sink.
    if (calls_.load() == 0) gone.swap(retired_);
    return before;
  }

 private:
  class Call {
   public:
    explicit Call(std::atomic<int>& calls) : calls_(calls) { calls_.fetch_add(1); }
    ~Call() { calls_.fetch_sub(1); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    std::atomic<int>& calls_;
  };

  mutable std::atomic<int> calls_ = 0;
  std::atomic<const Sink*> sink_ = nullptr;
  Lock lock_;
  std::unique_ptr<const Sink> current_ TQ_GUARDED_BY(lock_);
  std::vector<std::unique_ptr<const Sink>> retired_ TQ_GUARDED_BY(lock_);
};

}  // namespace tq::detail
