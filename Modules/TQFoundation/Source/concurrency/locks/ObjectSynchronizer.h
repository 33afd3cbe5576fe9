#pragma once

/// @file ObjectSynchronizer.h
/// An object's monitor as a lock.

#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/platform/threads/ObjectMonitor.h>

namespace tq {

/// Locks the monitor of an object. All synchronizers of one object share one lock, which is
/// recursive. A synchronizer of a null object locks nothing. unlock() on a thread that does not
/// hold the lock does nothing.
class TQ_EXPORT TQ_CAPABILITY("object monitor") ObjectSynchronizer {
 public:
  /// Keeps the object alive. Its monitor is the lock.
  explicit ObjectSynchronizer(Ref<Object> object) noexcept : object_(std::move(object)) {}

  /// Waits for the monitor and enters it.
  /// @throws std::bad_alloc if there is no memory for the object's first monitor
  void lock() TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { monitorEnter(object_.get()); }
  /// Exits the monitor.
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS { monitorExit(object_.get()); }

 private:
  Ref<Object> object_;
};

}  // namespace tq
