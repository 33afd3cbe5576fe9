#pragma once

/// @file StableStack.h
/// A stack whose elements stay where they are while it grows, shrinks and is moved.

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace tq::detail {

/// Memory comes in blocks of kBlock elements, which are kept until the end.
template <class T>
class StableStack {
 public:
  StableStack() noexcept = default;
  StableStack(StableStack&& other) noexcept
      : blocks_(std::move(other.blocks_)), size_(std::exchange(other.size_, 0)) {}
  StableStack& operator=(StableStack&& other) noexcept {
    std::swap(blocks_, other.blocks_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~StableStack() {
    while (size_ != 0) pop();
    for (T* block : blocks_) std::allocator<T>().deallocate(block, kBlock);
  }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] T& top() const noexcept { return *slot(size_ - 1); }

  template <class... Arguments>
  T& push(Arguments&&... arguments) {
    if (size_ == blocks_.size() * kBlock) grow();
    T* element = std::construct_at(slot(size_), std::forward<Arguments>(arguments)...);
    ++size_;
    return *element;
  }

  void pop() noexcept { std::destroy_at(slot(--size_)); }

 private:
  static constexpr std::size_t kBlock = 32;

  void grow() {
    blocks_.reserve(blocks_.size() + 1 > blocks_.capacity() ? 2 * blocks_.size() + 1 : 0);
    blocks_.push_back(std::allocator<T>().allocate(kBlock));
  }

  [[nodiscard]] T* slot(std::size_t index) const noexcept {
    return blocks_[index / kBlock] + index % kBlock;
  }

  std::vector<T*> blocks_;
  std::size_t size_ = 0;
};

}  // namespace tq::detail
