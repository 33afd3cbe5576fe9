#pragma once

/// @file Stack.h
/// Last-in, first-out stacks.

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace tq {

/// A last-in, first-out stack. A value type. pop() and top() of an empty stack return nullopt and
/// null.
template <class Element>
class Stack {
 public:
  /// Adds an element on top.
  void push(Element element) { elements_.push_back(std::move(element)); }

  /// Removes and returns the top element; nullopt if the stack is empty.
  std::optional<Element> pop() {
    if (elements_.empty()) return std::nullopt;
    std::optional<Element> popped(std::move(elements_.back()));
    elements_.pop_back();
    return popped;
  }

  /// Returns the top element, or null if the stack is empty. Valid until the stack changes.
  [[nodiscard]] const Element* top() const noexcept {
    return elements_.empty() ? nullptr : &elements_.back();
  }
  [[nodiscard]] Element* top() noexcept { return elements_.empty() ? nullptr : &elements_.back(); }

  [[nodiscard]] std::size_t count() const noexcept { return elements_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return elements_.empty(); }
  /// Removes all elements.
  void removeAll() noexcept { elements_.clear(); }

 private:
  std::vector<Element> elements_;
};

}  // namespace tq
