#pragma once

/// @file ObjectSynchronizer.h
/// An object's monitor as a lock.

#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/platform/threads/ObjectMonitor.h>

namespace tq {

/// Locks the monitor of the object that it holds. All synchronizers over one object are one lock;
/// it is recursive. Over no object it locks nothing. Unlocking what this thread does not hold does
/// nothing.
class TQ_EXPORT TQ_CAPABILITY("object monitor") ObjectSynchronizer {
 public:
  /// Holds the object, whose monitor is the lock.
  explicit ObjectSynchronizer(Ref<Object> object) noexcept : object_(std::move(object)) {}

  /// @throws std::bad_alloc, when there is no memory for the object's first monitor
  void lock() TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { monitorEnter(object_.get()); }
  /// Lets the monitor go; only on the thread that took it.
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS { monitorExit(object_.get()); }

 private:
  Ref<Object> object_;
};

}  // namespace tq
