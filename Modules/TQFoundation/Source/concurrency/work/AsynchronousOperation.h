#pragma once

/// @file AsynchronousOperation.h
/// A base for operations of a host: one function to override.

#include <atomic>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/concurrency/work/TQOperation.h>

namespace tq {

/// An operation that may continue after its function has returned. A subclass overrides run() and
/// either returns Progress::finished, or returns Progress::continues and calls finish() later, on
/// any thread:
///
///     Progress run() override {
///       task_ = session_->dataTaskWithURL(
///           url_, [self = share(*this)](auto...) { self->finish(); });
///       task_->resume();
///       return Progress::continues;
///     }
///
/// The states are kept by this class. An operation that is cancelled before it starts finishes
/// without run(), as soon as its queue starts it. Later, cancel() only sets the flag: run() may
/// check isCancelled(), and an override of cancel() may call finish(), at any time.
///
/// Threads:    any.
/// Exceptions: an exception from run() passes through start() after the operation has finished. On
///             a queue it stops the process.
class TQ_EXPORT AsynchronousOperation : public Subclass<AsynchronousOperation, TQOperation> {
 public:
  static constexpr std::string_view className = "AsynchronousOperation";

  /// What run() has achieved when it returns.
  enum class Progress : std::uint8_t { finished, continues };

  /// Calls run() unless the operation is cancelled. No effect if it has finished.
  /// @throws Exception (InvalidArgumentException) if it is not ready or was started before
  void start() final;
  /// Returns true after cancel() or setCancelled(true).
  [[nodiscard]] bool isCancelled() const override;

 protected:
  /// Does the work, or begins it.
  virtual Progress run() = 0;
  /// Ends the operation. Only the first call has an effect; it may come before start().
  void finish();

 private:
  std::atomic<bool> hasStarted_{false};
};

}  // namespace tq
