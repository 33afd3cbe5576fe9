#pragma once

/// @file ObjectMonitor.h
/// A recursive lock for every object, made when it is first entered and gone when nobody uses it.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>

namespace tq {

namespace detail {

/// What the thread that holds a monitor knows of it; nobody else reads or writes this.
struct HeldMonitor {
  const Object* object = nullptr;
  std::uint32_t depth = 0;
  HeldMonitor* outer = nullptr;  ///< the one that the thread entered before
};

extern TQ_EXPORT thread_local constinit HeldMonitor* innermostMonitor
    [[gnu::tls_model("initial-exec")]];
TQ_EXPORT int enterMonitor(const Object* object);
TQ_EXPORT int exitMonitor(const Object* object) noexcept;

}  // namespace detail

/// Enters the monitor of `object`, waiting while another thread is inside; the same thread may
/// enter again, and leaves as often. Null enters nothing. The object is not kept alive: the caller
/// does. Any thread. Entering again costs no atomic operation.
/// @return 0, always
/// @throws std::bad_alloc, having entered nothing
inline int monitorEnter(const Object* object) {
  detail::HeldMonitor* const held = detail::innermostMonitor;
  if (held != nullptr && held->object == object) {
    ++held->depth;
    return 0;
  }
  return detail::enterMonitor(object);
}

/// Leaves the monitor once.
/// @return 0 (also for null); -1 when the calling thread is not inside, and then nothing happens
inline int monitorExit(const Object* object) noexcept {
  detail::HeldMonitor* const held = detail::innermostMonitor;
  if (held != nullptr && held->object == object && held->depth > 1) {
    --held->depth;
    return 0;
  }
  return detail::exitMonitor(object);
}

}  // namespace tq
