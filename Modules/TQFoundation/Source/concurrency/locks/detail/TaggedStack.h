#pragma once

/// @file TaggedStack.h
/// The head of a lock-free stack of numbered nodes.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// A last-in, first-out list of numbered nodes. A number and a tag fit in one 64-bit head:
/// `tag << 32 | number`. Number 0 means that the stack is empty.
///
/// The tag increases with every push and pop. It solves the ABA problem: a thread reads head A and
/// its link B and is suspended; others pop A and push it again with another link; without the tag,
/// the thread would find A at the head and store the stale B. With it, that needs exactly a
/// multiple of 2^32 changes in between.
///
/// pop() may read the link of a node that another thread has already popped. Therefore nodes are
/// never unmapped and links are atomic. The value is discarded because the head has changed.
///
/// `System` supplies Word64, relax() and `link(number)`, the atomic link of a node.
template <class System>
class TaggedStack {
 public:
  TaggedStack() = default;
  TaggedStack(const TaggedStack&) = delete;
  TaggedStack& operator=(const TaggedStack&) = delete;

  /// Pushes a node, which the caller must own. Writes to it are visible to the thread that pops it.
  void push(std::uint32_t node) {
    std::uint64_t head = head_.load(std::memory_order_relaxed);
    for (;;) {
      // Relaxed: published by the exchange below.
      System::link(node).store(static_cast<std::uint32_t>(head), std::memory_order_relaxed);
      // Full barrier, as TQAtomicStack documents; the same in pop().
      if (head_.compare_exchange_strong(head, retagged(head, node))) return;
      System::relax();
    }
  }

  /// Pops the top node, which the caller then owns. Returns 0 if the stack is empty.
  [[nodiscard]] std::uint32_t pop() {
    // Acquire: the link of the node was written before the head that names it.
    std::uint64_t head = head_.load(std::memory_order_acquire);
    for (;;) {
      const auto node = static_cast<std::uint32_t>(head);
      if (node == 0) return 0;
      const std::uint32_t next = System::link(node).load(std::memory_order_relaxed);
      if (head_.compare_exchange_strong(head, retagged(head, next))) return node;
      System::relax();
    }
  }

 private:
  static std::uint64_t retagged(std::uint64_t head, std::uint32_t node) {
    return (((head >> 32) + 1) << 32) | node;
  }

  typename System::Word64 head_{0};
};

}  // namespace tq::detail
