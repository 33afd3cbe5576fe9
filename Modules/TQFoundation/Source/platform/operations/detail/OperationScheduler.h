#pragma once

/// @file OperationScheduler.h
/// The state of an operation queue, which lives until the queue and its operations are gone.

#include <condition_variable>
#include <cstddef>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/operations/Operation.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq::detail {

/// The place of an operation in its queue:
///
/// | place | meaning | next place |
/// |---|---|---|
/// | none | not in a queue | held, when it is added |
/// | held | waits until it is ready | ready; or gone, if something else ran it |
/// | ready | in the list of its priority | started, when a runner takes it; or gone |
/// | started | occupies one of the queue's slots | gone, when it has finished |
///
/// Runners are threads that take ready operations one after another. A runner ends when no
/// operation is ready or no slot is free. A new runner is requested when there are more ready
/// operations than runners that look for one. If there is no thread for it, the thread that made
/// the request is the runner.
///
/// Such runners nest: an operation that finishes makes others ready. So that long chains do not
/// exhaust the stack, a thread with kMostLevels runners, or one that announces the end of an
/// operation, does not run but owes a run to the scheduler. It pays when it has left the level or
/// the announcement, and before it waits for operations. A scheduler is owed by one thread at most:
/// that thread takes all ready operations.
class OperationScheduler final : public Object {
 public:
  /// While this lives, the thread does not run operations but owes the runs. payDebts() must
  /// follow.
  class HeldBack {
   public:
    HeldBack() noexcept;
    ~HeldBack();
    HeldBack(const HeldBack&) = delete;
    HeldBack& operator=(const HeldBack&) = delete;
  };
  /// Returns whether this thread owes runs.
  [[nodiscard]] static bool owesRuns() noexcept;
  /// Runs what this thread owes, if it may run operations now.
  static void payDebts() noexcept;
  /// Runs what this thread owes. Must be called before it blocks.
  static void payAllDebts() noexcept;

  void add(Operation& operation);
  void becameReady(Operation& operation);
  void finished(Operation& operation);
  /// Requests a runner in place of this thread's own, which will be busy for some time.
  void replaceRunner();

  /// The maximum that was set for the queue; a negative one means the default limit.
  void setMaximum(std::ptrdiff_t maximum);
  [[nodiscard]] std::ptrdiff_t maximum() const;
  void setSuspended(bool isSuspended);
  [[nodiscard]] bool isSuspended() const;
  [[nodiscard]] std::vector<Ref<Operation>> operations() const;
  [[nodiscard]] std::size_t count() const;
  void waitUntilEmpty();
  /// Called once, when the queue is destroyed. Makes sure that all operations finish.
  void abandon();

  /// Returns whether a runner on the calling thread has started this operation.
  [[nodiscard]] static bool isRunning(const Operation& operation) noexcept;

 private:
  static constexpr std::size_t kPriorities = 5;
  struct ReadyList {
    Operation* first = nullptr;
    Operation* last = nullptr;
  };

  [[nodiscard]] static std::size_t defaultLimit() noexcept;
  template <class Change>
  void change(const Change& change);
  [[nodiscard]] bool startRunner() noexcept;
  /// Starts the runners that are needed. Returns true if there is no thread for one: the caller is
  /// then the runner, and must call runHere() after it has released the lock.
  [[nodiscard]] bool callRunners() noexcept TQ_REQUIRES(lock_);
  void owe() noexcept TQ_REQUIRES(lock_);
  void runHere() noexcept;
  void run() noexcept;
  [[nodiscard]] Operation* takeReady() TQ_REQUIRES(lock_);
  void unlink(Operation& operation) TQ_REQUIRES(lock_);

  mutable Lock lock_;
  std::condition_variable_any emptied_;
  Operation* first_ TQ_GUARDED_BY(lock_) = nullptr;  // unfinished, in the order of adding
  Operation* last_ TQ_GUARDED_BY(lock_) = nullptr;
  Operation* nextAbandoned_ TQ_GUARDED_BY(lock_) = nullptr;  // that abandon() will cancel
  std::size_t count_ TQ_GUARDED_BY(lock_) = 0;
  ReadyList ready_[kPriorities] TQ_GUARDED_BY(lock_);  // the highest priority first
  std::size_t readyCount_ TQ_GUARDED_BY(lock_) = 0;
  std::size_t startedCount_ TQ_GUARDED_BY(lock_) = 0;
  std::size_t seekingCount_ TQ_GUARDED_BY(lock_) = 0;  // runners that look for an operation
  std::ptrdiff_t maximum_ TQ_GUARDED_BY(lock_) = -1;
  std::size_t limit_ TQ_GUARDED_BY(lock_) = defaultLimit();  // follows from the maximum
  bool isSuspended_ TQ_GUARDED_BY(lock_) = false;
  bool isOwed_ TQ_GUARDED_BY(lock_) = false;
  OperationScheduler* nextOwed_ = nullptr;  // used by the thread that owes
};

}  // namespace tq::detail
