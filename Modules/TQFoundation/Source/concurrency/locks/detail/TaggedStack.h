#pragma once

/// @file TaggedStack.h
/// The head of a lock-free stack of numbered nodes.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// A last-in, first-out list whose nodes are known by number, so that the head fits one word with a
/// tag beside the number: `tag << 32 | number`, number 0 for none.
///
/// The tag grows with every pop and push. Without it, a thread that has read head A and its link B
/// and is then held up could meet A at the head again, pushed anew with another link, and would put
/// the stale B in place (the ABA problem). It would now have to be held up for exactly a multiple
/// of 2^32 changes.
///
/// A popper may read the link of a node that another thread has popped already. So nodes are never
/// unmapped and links are atomic; what it read is thrown away when the head turns out to have
/// changed.
///
/// `System` supplies Word64, relax() and `link(number)`, the atomic link of a node.
template <class System>
class TaggedStack {
 public:
  TaggedStack() = default;
  TaggedStack(const TaggedStack&) = delete;
  TaggedStack& operator=(const TaggedStack&) = delete;

  /// Puts a node that the caller owns on top. What was written to it is seen by whoever pops it.
  void push(std::uint32_t node) {
    std::uint64_t head = head_.load(std::memory_order_relaxed);
    for (;;) {
      // Relaxed: published by the exchange below.
      System::link(node).store(static_cast<std::uint32_t>(head), std::memory_order_relaxed);
      // Full barrier, as an atomic enqueue promises; so is the pop's.
      if (head_.compare_exchange_strong(head, retagged(head, node))) return;
      System::relax();
    }
  }

  /// Takes the top node, which is the caller's from then on; 0 when there is none.
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
