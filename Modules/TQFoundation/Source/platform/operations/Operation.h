#pragma once

/// @file Operation.h
/// Operations: work that runs once, after the operations that it depends on.

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

class TQOperation;
namespace detail {
class OperationScheduler;
}

/// The priority of an operation among the ready operations of its queue.
enum class OperationQueuePriority : int {
  veryLow = -8,
  low = -4,
  normal = 0,
  high = 4,
  veryHigh = 8
};

/// Work that runs once, on a queue or by start().
///
/// | state | entered when | isReady | isExecuting | isFinished |
/// |---|---|---|---|---|
/// | waiting | created, with an unfinished dependency | no | no | no |
/// | ready | all dependencies have finished, or it is cancelled | yes | no | no |
/// | executing | start() has called main() | yes | yes | no |
/// | finished | main() has returned, or it was started after cancel() | yes | no | yes |
///
/// Cancellation is a flag beside the state. An operation that is cancelled before it starts
/// finishes without main() as soon as it is started. Later, cancel() only sets the flag, which
/// main() may check.
///
/// A subclass overrides main(). An operation that continues after start() has returned overrides
/// start(), isExecuting() and isFinished(), and announces each change of the latter two
/// (TQOperation does this). Waiting threads check isFinished() when "isFinished" is announced.
///
/// Threads:    any. Observers, main() and completion blocks run with no lock held. They may release
///             the last reference to the operation.
/// Exceptions: an exception from main() passes through start() after the operation has finished. On
///             a queue it stops the process, and the operation never finishes: no dependent starts,
///             and no waiting thread continues.
class TQ_EXPORT Operation : public Subclass<Operation> {
 public:
  static constexpr std::string_view className = "Operation";

  /// The keys of announced changes.
  static constexpr std::string_view isReadyKey = "isReady";
  static constexpr std::string_view isExecutingKey = "isExecuting";
  static constexpr std::string_view isFinishedKey = "isFinished";
  static constexpr std::string_view isCancelledKey = "isCancelled";

  /// Whether a change is about to happen or has happened. Each change is announced twice.
  enum class Change : std::uint8_t { will, did };
  /// Called for each announced change, with the key of the property.
  using Observer = std::function<void(Operation&, std::string_view key, Change)>;

  Operation();
  ~Operation() override;

  /// Runs the operation on the calling thread. Returns after it has finished, unless a subclass
  /// does otherwise. No effect if it has finished.
  /// @throws Exception (InvalidArgumentException) if it is not ready or was started before
  virtual void start();
  /// The work. Does nothing in this class.
  virtual void main();
  /// Requests an early end, which main() may honour by checking isCancelled(). An operation that
  /// has not started becomes ready, and finishes without main() when it is started.
  virtual void cancel();

  /// The current state. An operation stays finished, and stays cancelled.
  [[nodiscard]] virtual bool isReady() const;
  [[nodiscard]] virtual bool isExecuting() const;
  [[nodiscard]] virtual bool isFinished() const;
  [[nodiscard]] virtual bool isCancelled() const;
  /// Returns whether start() may return before the operation has finished, or continue after it. A
  /// queue needs this to know when it may start the next operation.
  [[nodiscard]] virtual bool isAsynchronous() const;

  /// Makes this operation wait until `operation` has finished, cancelled or not. Must be called
  /// before this operation is added to a queue or started. Adding the same dependency again has no
  /// effect. Operations that depend on each other in a cycle never become ready. The dependency is
  /// retained until this operation has finished.
  void addDependency(Operation& operation);
  void removeDependency(Operation& operation);
  [[nodiscard]] std::vector<Ref<Operation>> dependencies() const;

  /// The priority, which takes effect when the operation becomes ready.
  void setQueuePriority(OperationQueuePriority priority) noexcept { priority_ = priority; }
  [[nodiscard]] OperationQueuePriority queuePriority() const noexcept { return priority_; }

  /// Sets a block that runs once on another thread, soon after the operation has finished; if no
  /// thread can be created, on the thread that finished it. The block may add operations and wait
  /// for others. A block that is set later does not run.
  void setCompletionBlock(std::function<void()> block);

  /// Blocks until the operation has finished. The operation itself must not call it.
  void waitUntilFinished();

  /// Calls `observer` before and after each announced change, on the thread that makes the change.
  /// The observer may query the operation; it must not throw, and must not wait for other threads
  /// that change the operation. Observers cannot be removed.
  void addObserver(Observer observer);

 protected:
  /// Announces a change of the property `key`, before and after it.
  void willChangeValueForKey(std::string_view key);
  void didChangeValueForKey(std::string_view key);

  /// Returns whether a queue has started this operation on the calling thread, so that an exception
  /// will stop the process.
  [[nodiscard]] bool isRunByQueue() const noexcept;

 private:
  friend class detail::OperationScheduler;
  friend class TQOperation;

  enum class Phase : std::uint8_t { unstarted, executing, finished };

  /// Holds the operation during a call that runs host code. Returns null in its destructor.
  [[nodiscard]] Ref<Operation> hold() noexcept;
  void notify(std::string_view key, Change change);
  void finish();
  [[nodiscard]] bool isDependentOn(Operation& operation) const;
  void noticeReady();
  void noticeFinished();
  void dependencyFinished();

  std::atomic<Phase> phase_{Phase::unstarted};
  std::atomic<bool> isMarkedCancelled_{false};
  std::atomic<bool> hasStarted_{false};
  std::atomic<std::uint32_t> finishWord_{0};  // 0 unfinished, 1 a thread blocks on it, 2 finished
  std::atomic<std::int32_t> unfinishedDependencies_{0};
  std::atomic<OperationQueuePriority> priority_{OperationQueuePriority::normal};

  mutable Lock lock_;
  bool hasNoticedFinish_ TQ_GUARDED_BY(lock_) = false;
  std::vector<Ref<Operation>> dependencies_ TQ_GUARDED_BY(lock_);
  std::vector<Weak<Operation>> dependents_ TQ_GUARDED_BY(lock_);  // until this one has finished
  std::function<void()> completionBlock_ TQ_GUARDED_BY(lock_);
  using Observers = std::vector<std::shared_ptr<const Observer>>;
  std::shared_ptr<const Observers> observers_ TQ_GUARDED_BY(lock_);
  std::atomic<bool> hasObservers_{false};

  // Used by the queue, and guarded by its lock once `scheduler_` is set, which happens once.
  std::atomic<detail::OperationScheduler*> scheduler_{nullptr};
  enum class Place : std::uint8_t { none, held, ready, started, gone };
  Place place_ = Place::none;
  Operation* previous_ = nullptr;
  Operation* next_ = nullptr;
  Operation* nextReady_ = nullptr;
};

/// An operation that runs blocks. Several blocks run concurrently, and may wait for each other
/// (groupApply()).
class TQ_EXPORT BlockOperation final : public Subclass<BlockOperation, Operation> {
 public:
  static constexpr std::string_view className = "BlockOperation";

  /// An empty block is ignored.
  [[nodiscard]] static Ref<BlockOperation> blockOperationWithBlock(std::function<void()> block);
  /// Adds a block. Must be called before the operation starts. An empty block is ignored.
  void addExecutionBlock(std::function<void()> block);

  void main() override;

 private:
  BlockOperation() = default;
  std::vector<std::function<void()>> blocks_;
};

}  // namespace tq
