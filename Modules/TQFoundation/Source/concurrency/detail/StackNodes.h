#pragma once

/// @file StackNodes.h
/// The nodes of all stacks of the process.

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <utility>

namespace tq::detail {

/// 16 bytes: an element and the number of the node below.
struct StackNode {
  void* element = nullptr;
  std::atomic<std::uint32_t> next{0};
};
static_assert(sizeof(StackNode) == 16);

/// Nodes lie in blocks that double in size: block k holds the numbers of k bits, so nothing ever
/// moves. Nodes stay mapped for good.
extern constinit std::array<std::atomic<StackNode*>, 33> stackBlocks;

/// The node of this number, which allocateStackNode() has answered at some time. Any thread.
[[nodiscard]] inline StackNode& stackNode(std::uint32_t number) noexcept {
  // Relaxed: the number came with a happens-before edge from the thread that made the block.
  StackNode* const block =
      stackBlocks[static_cast<std::size_t>(std::bit_width(number))].load(std::memory_order_relaxed);
  return block[number ^ std::bit_floor(number)];
}

/// Free nodes, linked through `next`.
struct NodeChain {
  std::uint32_t first = 0;
  std::uint32_t count = 0;

  void push(std::uint32_t number) noexcept {
    stackNode(number).next.store(first, std::memory_order_relaxed);
    first = number;
    ++count;
  }
  std::uint32_t pop() noexcept {
    --count;
    return std::exchange(first, stackNode(first).next.load(std::memory_order_relaxed));
  }
};

/// The free nodes of one thread, up to `most`: 0 before the thread's first and after its end.
struct OwnNodes {
  NodeChain chain;
  std::uint32_t most = 0;
};
extern thread_local constinit OwnNodes ownNodes [[gnu::tls_model("initial-exec")]];

/// Nodes for ownNodes; and those that are too many for it, given back.
void fetchStackNodes();
void giveBackStackNodes() noexcept;

/// The number of a free node, never 0. Any thread; mostly from the thread's own few.
/// @throws std::bad_alloc
[[nodiscard]] inline std::uint32_t allocateStackNode() {
  if (ownNodes.chain.count == 0) fetchStackNodes();
  return ownNodes.chain.pop();
}

inline void freeStackNode(std::uint32_t number) noexcept {
  ownNodes.chain.push(number);
  if (ownNodes.chain.count > ownNodes.most) giveBackStackNodes();
}

}  // namespace tq::detail
