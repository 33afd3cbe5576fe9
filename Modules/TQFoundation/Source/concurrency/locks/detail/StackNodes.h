#pragma once

/// @file StackNodes.h
/// The nodes of all lock-free stacks in the process.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// An element and the number of the node below, in 16 bytes.
struct StackNode {
  void* element = nullptr;
  std::atomic<std::uint32_t> next{0};
};
static_assert(sizeof(StackNode) == 16);

/// All nodes, indexed by number. Nodes are never moved or unmapped.
extern constinit std::atomic<StackNode*> stackNodes;

/// Returns the node with this number. allocateStackNode() must have returned the number before.
/// Threads: any.
[[nodiscard]] inline StackNode& stackNode(std::uint32_t number) noexcept {
  // Relaxed: the number itself was received with a happens-before edge from the thread that mapped
  // the nodes.
  return stackNodes.load(std::memory_order_relaxed)[number];
}

/// The free nodes of one thread, by number.
struct OwnNodes {
  static constexpr std::uint32_t kMost = 64;

  std::uint32_t count = 0;
  std::uint32_t most = 0;  ///< kMost; 0 before the thread's first use and during its exit
  std::uint32_t numbers[kMost] = {};
};
extern thread_local constinit OwnNodes ownNodes [[gnu::tls_model("initial-exec")]];

/// The slow paths of the functions below. They move nodes between ownNodes and the process-wide
/// list.
[[nodiscard]] std::uint32_t allocateSharedStackNode();
void freeSharedStackNode(std::uint32_t number) noexcept;

/// Returns the number of a free node, never 0. Usually taken from ownNodes. Threads: any.
/// @throws std::bad_alloc
[[nodiscard]] inline std::uint32_t allocateStackNode() {
  if (ownNodes.count == 0) return allocateSharedStackNode();
  return ownNodes.numbers[--ownNodes.count];
}

inline void freeStackNode(std::uint32_t number) noexcept {
  if (ownNodes.count >= ownNodes.most) return freeSharedStackNode(number);
  ownNodes.numbers[ownNodes.count++] = number;
}

}  // namespace tq::detail
