#pragma once

/// @file OperationQueue.h
/// Runs operations on threads of its own, as they become ready.

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/operations/Operation.h>

namespace tq {

/// Starts the operations that are ready, by priority, then in the order in which they became so.
/// They run on threads that are theirs alone, so that those which block do not starve the worker
/// pool. Holds each operation until it has finished; an operation counts as running until
/// isFinished() says so and "isFinished" is announced.
///
/// Threads:    any.
/// Lifetime:   operations that were added are done even when the queue is gone. If it goes while it
///             is suspended or lets nothing start, they are cancelled, and so finish without their
///             work: nobody waits for them for ever.
/// Exceptions: one that leaves an operation stops the process.
class TQ_EXPORT OperationQueue final : public Subclass<OperationQueue> {
 public:
  static constexpr std::string_view className = "OperationQueue";
  /// The system decides how many run at once: twice the number of cores, at least 4.
  static constexpr std::ptrdiff_t defaultMaxConcurrentOperationCount = -1;

  /// A queue of its own, running, without a name.
  [[nodiscard]] static Ref<OperationQueue> init();
  ~OperationQueue() override;

  /// For people, in debuggers; to be set before others use the queue.
  void setName(std::string name) { name_ = std::move(name); }
  [[nodiscard]] const std::string& name() const noexcept { return name_; }

  /// Operations that run at once: as many threads at the most. 0: nothing starts.
  /// @throws Exception (InvalidArgumentException) for a negative count but the default
  void setMaxConcurrentOperationCount(std::ptrdiff_t count);
  [[nodiscard]] std::ptrdiff_t maxConcurrentOperationCount() const noexcept {
    return maxConcurrentOperationCount_;
  }

  /// While suspended, no further operation starts.
  void setSuspended(bool isSuspended);
  [[nodiscard]] bool isSuspended() const;

  /// @throws Exception (InvalidArgumentException) when it has been added to a queue before, runs or
  ///         has finished
  void addOperation(Operation& operation);
  void addOperation(const Ref<Operation>& operation) { addOperation(*operation); }
  /// An empty block is an operation that does nothing.
  void addOperationWithBlock(std::function<void()> block);

  /// Those that have not finished, in the order in which they were added.
  [[nodiscard]] std::vector<Ref<Operation>> operations() const;
  [[nodiscard]] std::size_t operationCount() const;

  /// cancel() on each operation that has not finished.
  void cancelAllOperations();
  /// Returns when there are none left; never to be called by one of them.
  void waitUntilAllOperationsAreFinished();

 private:
  OperationQueue();

  std::string name_;
  std::atomic<std::ptrdiff_t> maxConcurrentOperationCount_{defaultMaxConcurrentOperationCount};
  detail::OperationScheduler* scheduler_;
};

}  // namespace tq
