#pragma once

/// @file SinkSlot.h
/// Where a host's own sink is kept.

#include <functional>
#include <memory>
#include <utility>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/Lock.h>

namespace tq::detail {

/// Holds a closure that many threads call while others replace it. Threads: any.
template <class Signature>
class SinkSlot {
 public:
  using Sink = std::function<Signature>;

  /// The sink, kept alive for the caller; null for none. To be called without the slot's lock.
  [[nodiscard]] std::shared_ptr<const Sink> sink() const {
    const Locked guard(lock_);
    return sink_;
  }

  /// @return the sink before
  Sink replace(Sink sink) {
    auto replacement = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
    {
      const Locked guard(lock_);
      sink_.swap(replacement);
    }
    return replacement != nullptr ? *replacement : Sink();
  }

 private:
  mutable Lock lock_;
  std::shared_ptr<const Sink> sink_ TQ_GUARDED_BY(lock_);
};

}  // namespace tq::detail
