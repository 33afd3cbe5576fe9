#pragma once

/// @file TQAtomicStack.h
/// A stack of object references for any number of threads, without a lock.

#include <memory>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// Last in, first out. Holds its elements without owning them, on purpose: whoever pushes an object
/// keeps it alive until it has been popped.
///
/// Threads: any, at once, but for the destructor. Lock-free: a thread that is held up anywhere in
///          push() or pop() holds up no other; only fetching nodes from the process, once in 32
///          times at the most, takes a lock.
/// Order:   what was written before a push is seen after its pop; both are full barriers.
/// Cost:    no allocation but for nodes that the process has not had in use at once before. Those
///          are kept for later stacks: 16 bytes each, for the life of the process, within 1 GiB of
///          addresses. So all stacks together hold 67 million elements at the most.
class TQ_EXPORT TQAtomicStack {
 public:
  /// @throws std::bad_alloc
  TQAtomicStack();
  /// Forgets what is still on it.
  ~TQAtomicStack();
  TQAtomicStack(const TQAtomicStack&) = delete;
  TQAtomicStack& operator=(const TQAtomicStack&) = delete;

  /// @throws std::bad_alloc, having pushed nothing
  void push(Object& object);

  /// The object pushed last, with a reference for the caller; none when the stack is empty.
  [[nodiscard]] Ref<Object> pop() noexcept;

 private:
  struct Head;

  std::unique_ptr<Head> cacheQueueHead_;
};

}  // namespace tq
