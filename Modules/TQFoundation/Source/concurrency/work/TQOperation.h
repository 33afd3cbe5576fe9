#pragma once

/// @file TQOperation.h
/// Operations that say themselves when they begin and end.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/operations/Operation.h>

namespace tq {

/// An asynchronous operation: a subclass overrides start(), which returns at once, and reports by
/// the setters. A queue counts it as running until setFinished(true); the inherited start() sets
/// none of the three, nor does cancel(), so that a subclass which leaves the reporting to them
/// never finishes.
///
/// Threads: any. The state is guarded by the object's monitor, which is held while observers are
///          told: they may ask the operation, but not wait for another thread that does.
class TQ_EXPORT TQOperation : public Subclass<TQOperation, Operation> {
 public:
  static constexpr std::string_view className = "TQOperation";

  /// Each announces its change (before, store, after) under the getter's name; storing what is
  /// stored already announces nothing.
  void setFinished(bool finished);
  void setExecuting(bool executing);
  void setCancelled(bool cancelled);

  /// As last set; all false at first.
  [[nodiscard]] bool isFinished() const override;
  [[nodiscard]] bool isExecuting() const override;
  [[nodiscard]] bool isCancelled() const override;
  /// True: start() may return before the work is done.
  [[nodiscard]] bool isAsynchronous() const final { return true; }

 private:
  void change(bool TQOperation::*flag, bool value, std::string_view key);
  [[nodiscard]] bool read(bool TQOperation::*flag) const;

  bool finished_ = false;  // the three by this object's monitor
  bool executing_ = false;
  bool cancelled_ = false;
};

}  // namespace tq
