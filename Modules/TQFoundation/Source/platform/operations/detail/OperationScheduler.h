#pragma once

/// @file OperationScheduler.h
/// What an operation queue keeps, for as long as it or one of its operations is left.

#include <condition_variable>
#include <cstddef>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/operations/Operation.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq::detail {

/// Where an operation stands with its queue:
///
/// | place | what it means | left when |
/// |---|---|---|
/// | none | no queue has it | it is added: held |
/// | held | waits to become ready | it is ready, or has finished by other hands: gone |
/// | ready | in the list of its priority | a runner takes it: started, or drops it as gone |
/// | started | takes one of the queue's slots | it has finished: gone |
///
/// Runners are threads that take one ready operation after another and end when there is none, or
/// no slot. One is called for whenever more operations are ready than runners are looking for one.
class OperationScheduler final : public Object {
 public:
  void add(Operation& operation);
  void becameReady(Operation& operation);
  void finished(Operation& operation);

  void setLimit(std::size_t limit);
  void setSuspended(bool isSuspended);
  [[nodiscard]] bool isSuspended() const;
  [[nodiscard]] std::vector<Ref<Operation>> operations() const;
  [[nodiscard]] std::size_t count() const;
  void waitUntilEmpty();
  /// The queue has gone: nothing may wait for ever.
  void abandon();

  [[nodiscard]] static std::size_t defaultLimit() noexcept;

 private:
  static constexpr std::size_t kPriorities = 5;
  struct ReadyList {
    Operation* first = nullptr;
    Operation* last = nullptr;
  };

  void callRunners() TQ_REQUIRES(lock_);
  void run() noexcept;
  [[nodiscard]] Operation* takeReady() TQ_REQUIRES(lock_);
  void unlink(Operation& operation) TQ_REQUIRES(lock_);

  mutable Lock lock_;
  std::condition_variable_any emptied_;
  Operation* first_ TQ_GUARDED_BY(lock_) = nullptr;  // all that have not finished, as added
  Operation* last_ TQ_GUARDED_BY(lock_) = nullptr;
  std::size_t count_ TQ_GUARDED_BY(lock_) = 0;
  ReadyList ready_[kPriorities] TQ_GUARDED_BY(lock_);  // the most urgent first
  std::size_t readyCount_ TQ_GUARDED_BY(lock_) = 0;
  std::size_t startedCount_ TQ_GUARDED_BY(lock_) = 0;
  std::size_t seekingCount_ TQ_GUARDED_BY(lock_) = 0;  // runners on their way to an operation
  std::size_t limit_ TQ_GUARDED_BY(lock_) = defaultLimit();
  bool isSuspended_ TQ_GUARDED_BY(lock_) = false;
};

}  // namespace tq::detail
