#pragma once

/// @file StableStack.h
/// A stack whose elements have stable addresses.

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace tq::detail {

/// Elements stay at their addresses when the stack grows, shrinks or is moved. Memory is allocated
/// in blocks of kBlock elements and released by the destructor.
template <class T>
class StableStack {
 public:
  StableStack() noexcept = default;
  StableStack(StableStack&& other) noexcept { swap(other); }
  StableStack& operator=(StableStack&& other) noexcept {
    swap(other);
    return *this;
  }
  ~StableStack() {
    while (size_ != 0) pop();
    for (T* block : blocks_) std::allocator<T>().deallocate(block, kBlock);
  }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] T& top() const noexcept { return *top_; }

  template <class... Arguments>
  T& push(Arguments&&... arguments) {
    T* slot = size_ % kBlock != 0 ? top_ + 1 : firstOfBlock(size_ / kBlock);
    std::construct_at(slot, std::forward<Arguments>(arguments)...);
    top_ = slot;
    ++size_;
    return *slot;
  }

  void pop() noexcept {
    std::destroy_at(top_);
    --size_;
    top_ = size_ % kBlock != 0 ? top_ - 1
           : size_ != 0        ? blocks_[size_ / kBlock - 1] + kBlock - 1
                               : nullptr;
  }

 private:
  static constexpr std::size_t kBlock = 32;

  T* firstOfBlock(std::size_t index) {
    if (index == blocks_.size()) blocks_.push_back(nullptr);
    if (blocks_[index] == nullptr) blocks_[index] = std::allocator<T>().allocate(kBlock);
    return blocks_[index];
  }

  void swap(StableStack& other) noexcept {
    blocks_.swap(other.blocks_);
    std::swap(top_, other.top_);
    std::swap(size_, other.size_);
  }

  std::vector<T*> blocks_;
  T* top_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace tq::detail
