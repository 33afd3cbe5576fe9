#pragma once

/// @file Operation.h
/// A piece of work that is done once, when all that it depends on is done.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

namespace detail {
class OperationScheduler;
}

/// Which of the ready operations of a queue are started first.
enum class OperationQueuePriority : int {
  veryLow = -8,
  low = -4,
  normal = 0,
  high = 4,
  veryHigh = 8
};

/// Work to be done once, on a queue or by start().
///
/// | state | entered when | isReady | isExecuting | isFinished |
/// |---|---|---|---|---|
/// | waiting | made, with a dependency that is not finished | no | no | no |
/// | ready | all dependencies have finished, or it is cancelled | yes | no | no |
/// | executing | started; main() runs | yes | yes | no |
/// | finished | main() has returned, or it was cancelled before it started | yes | no | yes |
///
/// Being cancelled is a mark beside the state. An operation that is cancelled before it starts
/// finishes without main(), at once when it is started; one that is cancelled later only has the
/// mark, which main() may look at.
///
/// A subclass overrides main(). One that goes on after start() has returned overrides start(),
/// isExecuting() and isFinished(), and announces each change of theirs (TQOperation does); whoever
/// waits for it asks isFinished() when "isFinished" is announced.
///
/// Threads:    any. Observers, main() and completion blocks run with no lock of the operation's.
/// Exceptions: what main() throws passes through start(), once the operation counts as finished;
///             on a queue it stops the process.
class TQ_EXPORT Operation : public Subclass<Operation> {
 public:
  static constexpr std::string_view className = "Operation";

  /// The names under which changes of these states are announced.
  static constexpr std::string_view isReadyKey = "isReady";
  static constexpr std::string_view isExecutingKey = "isExecuting";
  static constexpr std::string_view isFinishedKey = "isFinished";
  static constexpr std::string_view isCancelledKey = "isCancelled";

  /// An announcement comes before and after each change.
  enum class Change : std::uint8_t { will, did };
  /// Told of a change of the operation: the name of the state, and whether it will change or did.
  using Observer = std::function<void(Operation&, std::string_view key, Change)>;

  Operation();
  ~Operation() override;

  /// Starts the operation on this thread and, unless a subclass does otherwise, returns when it has
  /// finished. Does nothing once it has.
  /// @throws Exception (InvalidArgumentException) when it is not ready, or was started before
  virtual void start();
  /// The work. Does nothing here.
  virtual void main();
  /// Asks it to end early: main() looks at isCancelled(). One that has not started becomes ready,
  /// and finishes without main() once it is started.
  virtual void cancel();

  /// The state at this moment. Finished is for good, and so is cancelled.
  [[nodiscard]] virtual bool isReady() const;
  [[nodiscard]] virtual bool isExecuting() const;
  [[nodiscard]] virtual bool isFinished() const;
  [[nodiscard]] virtual bool isCancelled() const;
  /// Whether start() may return before the operation has finished, or go on after. A queue starts
  /// the next one accordingly.
  [[nodiscard]] virtual bool isAsynchronous() const;

  /// Makes it wait until `operation` has finished, cancelled or not. To be set before this one is
  /// added to a queue or started; a circle of operations never becomes ready. Adding one again
  /// changes nothing. Held until this operation has finished.
  void addDependency(Operation& operation);
  void removeDependency(Operation& operation);
  [[nodiscard]] std::vector<Ref<Operation>> dependencies() const;

  /// Counts when it becomes ready.
  void setQueuePriority(OperationQueuePriority priority) noexcept { priority_ = priority; }
  [[nodiscard]] OperationQueuePriority queuePriority() const noexcept { return priority_; }

  /// Runs once, soon after the operation has finished, on a thread of its own. One that is set
  /// after that does not run.
  void setCompletionBlock(std::function<void()> block);

  /// Returns when the operation has finished. Never to be called by the operation itself.
  void waitUntilFinished();

  /// Calls `observer` before and after each announced change, on the thread that makes it. It may
  /// ask the operation, but not wait for other threads that change it, nor throw. For good: an
  /// operation keeps its observers until it goes.
  void addObserver(Observer observer);

 protected:
  /// Announce a change of the property named `key`.
  void willChangeValueForKey(std::string_view key);
  void didChangeValueForKey(std::string_view key);

 private:
  friend class detail::OperationScheduler;

  enum class Phase : std::uint8_t { unstarted, executing, finished };

  void notify(std::string_view key, Change change);
  void finish();
  [[nodiscard]] bool isDependentOn(Operation& operation) const;
  void noticeReady();
  void noticeFinished();
  void dependencyFinished();

  std::atomic<Phase> phase_{Phase::unstarted};
  std::atomic<bool> isMarkedCancelled_{false};
  std::atomic<bool> hasStarted_{false};
  std::atomic<std::uint32_t> finishWord_{0};  // 0 not yet, 1 somebody sleeps on it, 2 finished
  std::atomic<std::int32_t> unfinishedDependencies_{0};
  std::atomic<OperationQueuePriority> priority_{OperationQueuePriority::normal};

  mutable Lock lock_;
  bool hasNoticedFinish_ TQ_GUARDED_BY(lock_) = false;
  std::vector<Ref<Operation>> dependencies_ TQ_GUARDED_BY(lock_);
  std::vector<Weak<Operation>> dependents_ TQ_GUARDED_BY(lock_);  // until this one has finished
  std::function<void()> completionBlock_ TQ_GUARDED_BY(lock_);
  std::shared_ptr<const std::vector<Observer>> observers_ TQ_GUARDED_BY(lock_);
  std::atomic<bool> hasObservers_{false};

  // The queue's; guarded by its lock once `scheduler_` is set, which it is once.
  std::atomic<detail::OperationScheduler*> scheduler_{nullptr};
  enum class Place : std::uint8_t { none, held, ready, started, gone };
  Place place_ = Place::none;
  Operation* previous_ = nullptr;
  Operation* next_ = nullptr;
  Operation* nextReady_ = nullptr;
};

/// An operation that runs blocks, at once where there are several, on threads that may block: they
/// may wait for each other (groupApply).
class TQ_EXPORT BlockOperation final : public Subclass<BlockOperation, Operation> {
 public:
  static constexpr std::string_view className = "BlockOperation";

  /// An empty block is left out.
  [[nodiscard]] static Ref<BlockOperation> blockOperationWithBlock(std::function<void()> block);
  /// To be called before it is started.
  void addExecutionBlock(std::function<void()> block);

  void main() override;

 private:
  BlockOperation() = default;
  std::vector<std::function<void()>> blocks_;
};

}  // namespace tq
