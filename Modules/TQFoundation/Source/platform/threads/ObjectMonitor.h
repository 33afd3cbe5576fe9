#pragma once

/// @file ObjectMonitor.h
/// Object monitors: a recursive lock for any object.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>

namespace tq {

namespace detail {

/// A monitor that a thread has entered. Only that thread reads and writes it.
struct HeldMonitor {
  const Object* object = nullptr;
  std::uint32_t depth = 0;
  HeldMonitor* outer = nullptr;  ///< the monitor that the thread entered before
};

extern TQ_EXPORT thread_local constinit HeldMonitor* innermostMonitor
    [[gnu::tls_model("initial-exec")]];
TQ_EXPORT int enterMonitor(const Object* object);
TQ_EXPORT int exitMonitor(const Object* object) noexcept;

}  // namespace detail

/// Enters the monitor of `object`. Blocks while another thread is inside. The same thread may enter
/// again and must leave as many times. Null has no effect.
///
/// The monitor does not retain the object: the caller must keep it alive until it has left. The
/// monitor is allocated on first entry and freed when no thread uses it. Any thread. Entering again
/// takes no atomic operation.
///
/// @return 0
/// @throws std::bad_alloc, with nothing entered
inline int monitorEnter(const Object* object) {
  detail::HeldMonitor* const held = detail::innermostMonitor;
  if (held != nullptr && held->object == object) {
    ++held->depth;
    return 0;
  }
  return detail::enterMonitor(object);
}

/// Leaves the monitor of `object` once.
/// @return 0, also for null; -1, without effect, if the calling thread is not inside
inline int monitorExit(const Object* object) noexcept {
  detail::HeldMonitor* const held = detail::innermostMonitor;
  if (held != nullptr && held->object == object && held->depth > 1) {
    --held->depth;
    return 0;
  }
  return detail::exitMonitor(object);
}

}  // namespace tq
