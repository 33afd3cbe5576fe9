#pragma once

/// @file PreferenceObservation.h
/// Observation of a store of preferences.

#include <functional>
#include <span>
#include <string>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// Calls a handler after preferences have changed, until it is released or invalidated. Made by
/// UserDefaults::observeChanges().
///
/// Reports each saved change, made by another process, by another thread, or by this one. Changes
/// that are kept in memory, the arguments of this run and registered defaults are not reported by
/// themselves. Several changes of one key may be reported together; a key that has its former value
/// again is not reported.
///
/// Threads: created and released on one thread, which calls the handler on its run loop, in the
///          standard mode. No thread is created. invalidate() on this thread, too.
/// Time:    the handler is called in the first pass of the loop 10 ms or more after a change. A
///          change whose writer is stopped in the middle for more than 2 s is reported with the
///          next change. If the system has no descriptor or file watch left, the store is read once
///          a second. Changes that other machines make on a network file system are reported with
///          the next change by this one.
class TQ_EXPORT PreferenceObservation final : public Subclass<PreferenceObservation> {
 public:
  static constexpr std::string_view className = "PreferenceObservation";
  /// Called with the sorted keys whose values in the store have changed, or which were added or
  /// removed. The span is valid during the call. The handler may release the observation, and the
  /// last reference to everything else. An exception that leaves it stops the process.
  using Handler = std::function<void(std::span<const std::string> keys)>;

  ~PreferenceObservation() override;

  /// Ends the observation: the handler is not called again. Later calls have no effect.
  void invalidate();

 private:
  friend class UserDefaults;
  class [[gnu::visibility("hidden")]] Watcher;

  explicit PreferenceObservation(Ref<Watcher> watcher) noexcept;

  const Ref<Watcher> watcher_;
};

}  // namespace tq
