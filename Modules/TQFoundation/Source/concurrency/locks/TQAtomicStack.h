#pragma once

/// @file TQAtomicStack.h
/// A lock-free stack of objects.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// A last-in, first-out stack. It does not own its elements, on purpose: callers must keep a pushed
/// object alive until it has been popped.
///
/// Threads: any, concurrently, except the destructor. Lock-free: a thread suspended inside push()
///          or pop() never blocks another. The one exception is the exchange of nodes with the
///          process-wide list, which takes a lock at most once in 32 calls.
/// Memory:  writes before a push are visible after its pop; both are full barriers.
/// Cost:    allocates only when the process needs more nodes at once than ever before. Nodes take
///          16 bytes each and are reused until the process ends. They share 1 GiB of address space,
///          so all stacks together hold at most 67 million elements.
class TQ_EXPORT TQAtomicStack {
 public:
  /// @throws std::bad_alloc
  TQAtomicStack();
  /// Returns the nodes of the remaining elements. The elements themselves are not accessed.
  ~TQAtomicStack();
  TQAtomicStack(const TQAtomicStack&) = delete;
  TQAtomicStack& operator=(const TQAtomicStack&) = delete;

  /// Pushes `object`.
  /// @throws std::bad_alloc; the stack is unchanged then
  void push(Object& object);

  /// Removes and returns the object that was pushed last. Returns null if the stack is empty.
  [[nodiscard]] Ref<Object> pop() noexcept;

 private:
  struct Head;

  Head* const cacheQueueHead_;  // owned
};

}  // namespace tq
