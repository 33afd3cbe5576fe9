#pragma once

/// @file TQOperation.h
/// Asynchronous operations.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/operations/Operation.h>

namespace tq {

class AsynchronousOperation;

/// An asynchronous operation. A subclass overrides start(), which begins the work and returns, and
/// reports its state with the setters. A queue counts the operation as running until
/// setFinished(true). The inherited start() and cancel() do not change the state: a subclass that
/// does not call the setters never finishes.
///
/// Threads: any. The object's monitor guards the state. It is held while observers are notified:
///          they may read the state, but must not wait for another thread that does. Dependents,
///          waiting threads and the queue are notified of the end after the monitor is left.
/// Memory:  the monitor is allocated with the operation. The setters and getters do not allocate.
class TQ_EXPORT TQOperation : public Subclass<TQOperation, Operation> {
 public:
  static constexpr std::string_view className = "TQOperation";

  TQOperation();
  ~TQOperation() override;

  /// Set the state. Observers are notified before and after a change, with the getter's name as the
  /// key. They are not notified if the value stays the same. Unlike cancel() of Operation,
  /// setCancelled() does not make a waiting operation ready.
  void setFinished(bool finished);
  void setExecuting(bool executing);
  void setCancelled(bool cancelled);

  /// Return the state as last set. Initially false.
  [[nodiscard]] bool isFinished() const override;
  [[nodiscard]] bool isExecuting() const override;
  [[nodiscard]] bool isCancelled() const override;
  /// Returns true: start() may return before the work is done.
  [[nodiscard]] bool isAsynchronous() const final { return true; }

 private:
  friend class AsynchronousOperation;

  template <class Changes>
  void together(const Changes& changes);
  /// Sets isExecuting, unless the operation has finished: then returns false.
  [[nodiscard]] bool beginExecuting();
  /// Clears isExecuting and sets isFinished.
  void endExecuting();
  void change(bool TQOperation::*flag, bool value, std::string_view key);
  [[nodiscard]] bool read(bool TQOperation::*flag) const;

  bool finished_ = false;  // these are guarded by this object's monitor
  bool executing_ = false;
  bool cancelled_ = false;
  unsigned changes_ = 0;  // calls of together() that are running
};

}  // namespace tq
