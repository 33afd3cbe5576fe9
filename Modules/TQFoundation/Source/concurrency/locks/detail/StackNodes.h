#pragma once

/// @file StackNodes.h
/// The nodes of all stacks of the process.

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// 16 bytes: an element and the number of the node below.
struct StackNode {
  void* element = nullptr;
  std::atomic<std::uint32_t> next{0};
};
static_assert(sizeof(StackNode) == 16);

/// All nodes by number, side by side; nothing ever moves or goes.
extern constinit std::atomic<StackNode*> stackNodes;

/// The node of this number, which allocateStackNode() has answered at some time. Any thread.
[[nodiscard]] inline StackNode& stackNode(std::uint32_t number) noexcept {
  // Relaxed: the number came with a happens-before edge from the thread that made the nodes.
  return stackNodes.load(std::memory_order_relaxed)[number];
}

/// The numbers of a thread's own free nodes.
struct OwnNodes {
  static constexpr std::uint32_t kMost = 64;

  std::uint32_t count = 0;
  std::uint32_t most = 0;  ///< kMost; 0 before the thread's first and after its end
  std::uint32_t numbers[kMost] = {};
};
extern thread_local constinit OwnNodes ownNodes [[gnu::tls_model("initial-exec")]];

/// The same through the process: with nodes for ownNodes, and with what is too many for it.
[[nodiscard]] std::uint32_t allocateSharedStackNode();
void freeSharedStackNode(std::uint32_t number) noexcept;

/// The number of a free node, never 0. Any thread; mostly from the thread's own few.
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
