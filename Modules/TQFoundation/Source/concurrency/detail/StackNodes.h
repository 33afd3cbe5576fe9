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

/// The node of this number, which allocateStackNode() has answered at some time. Nodes stay mapped
/// for good. Any thread.
[[nodiscard]] StackNode& stackNode(std::uint32_t number) noexcept;

/// The number of a free node, never 0. Any thread; mostly from the thread's own few.
/// @throws std::bad_alloc
[[nodiscard]] std::uint32_t allocateStackNode();
void freeStackNode(std::uint32_t number) noexcept;

}  // namespace tq::detail
