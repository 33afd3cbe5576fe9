#pragma once

/// @file SinkSlot.h
/// Where a host's own sink is kept.

#include <atomic>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq::detail {

/// Holds a closure that many threads call while others replace it, the closure itself among them.
/// A replaced closure goes when the next one comes at a moment at which none is being called.
/// Threads: any. Cost of a call: two atomic steps, no lock.
template <class... Arguments>
class SinkSlot {
 public:
  using Sink = std::function<void(Arguments...)>;

  /// @return false when there is no sink
  bool call(Arguments... arguments) const {
    if (sink_.load(std::memory_order_relaxed) == nullptr) return false;  // read again below
    const Call counted(calls_);
    const Sink* const sink = sink_.load();
    if (sink != nullptr) (*sink)(arguments...);
    return sink != nullptr;
  }

  /// @return the sink before
  Sink replace(Sink sink) {
    auto replacement = sink ? std::make_unique<const Sink>(std::move(sink)) : nullptr;
    std::vector<std::unique_ptr<const Sink>> gone;  // destroyed once the lock is free
    const Locked guard(lock_);
    retired_.push_back(nullptr);
    Sink before = current_ != nullptr ? *current_ : Sink();
    retired_.back() = std::exchange(current_, std::move(replacement));
    sink_.store(current_.get());
    // Whoever calls later than this counts itself first, and then finds the new one.
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
