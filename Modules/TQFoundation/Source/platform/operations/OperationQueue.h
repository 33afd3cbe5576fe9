#pragma once

/// @file OperationQueue.h
/// Operation queues: run operations on separate threads.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/operations/Operation.h>

namespace tq {

/// Starts ready operations by priority, then in the order in which they became ready.
///
/// Operations run on separate threads, so that blocking operations do not starve the worker
/// pool. The queue retains each operation until it has finished. An operation counts as running
/// until it announces "isFinished" and isFinished() returns true.
///
/// Threads:    any. If no thread can be created (too many threads, no memory), operations run on
///             the thread that makes them ready: the one that adds them, finishes their last
///             dependency, or resumes the queue. They run before that call returns; if many such
///             calls are nested, before an outer one returns or the thread waits for operations.
/// Lifetime:   added operations run even if the queue is destroyed first. If the queue is suspended
///             or its maximum is 0 at that time, they are cancelled and then started: they finish
///             without main(), and waiting threads continue. A subclass that overrides start(),
///             such as one of TQOperation, must itself finish without its work if cancel() was
///             called.
/// Exceptions: an exception that leaves an operation stops the process.
class TQ_EXPORT OperationQueue final : public Subclass<OperationQueue> {
 public:
  static constexpr std::string_view className = "OperationQueue";
  /// The default maximum of concurrent operations: twice the number of cores, at least 4.
  static constexpr std::ptrdiff_t defaultMaxConcurrentOperationCount = -1;

  /// Creates a queue without a name, which is not suspended.
  [[nodiscard]] static Ref<OperationQueue> init();
  ~OperationQueue() override;

  /// The name, for debuggers. Must be set before other threads use the queue.
  void setName(std::string name) { name_ = std::move(name); }
  [[nodiscard]] const std::string& name() const noexcept { return name_; }

  /// The maximum number of operations, and threads, that run at the same time. With 0, no operation
  /// starts.
  /// @throws Exception (InvalidArgumentException) for a negative count other than the default
  void setMaxConcurrentOperationCount(std::ptrdiff_t count);
  [[nodiscard]] std::ptrdiff_t maxConcurrentOperationCount() const noexcept;

  /// While the queue is suspended, no operation starts.
  void setSuspended(bool isSuspended);
  [[nodiscard]] bool isSuspended() const;

  /// Adds an operation. Does not fail when memory is exhausted.
  /// @throws Exception (InvalidArgumentException) if it was added to a queue before, runs or has
  ///         finished
  void addOperation(Operation& operation);
  void addOperation(const Ref<Operation>& operation) { addOperation(*operation); }
  /// Adds an operation that runs `block`. An empty block does nothing.
  void addOperationWithBlock(std::function<void()> block);

  /// The unfinished operations, in the order of adding, and their number.
  [[nodiscard]] std::vector<Ref<Operation>> operations() const;
  [[nodiscard]] std::size_t operationCount() const;

  /// Cancels all unfinished operations.
  void cancelAllOperations();
  /// Blocks until all operations have finished. Operations of the queue must not call it.
  void waitUntilAllOperationsAreFinished();

 private:
  OperationQueue();

  std::string name_;
  detail::OperationScheduler* scheduler_;
};

}  // namespace tq
