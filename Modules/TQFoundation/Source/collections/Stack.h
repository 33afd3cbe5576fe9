#pragma once

/// @file Stack.h
/// Last in, first out.

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace tq {

/// A value. What is asked of an empty stack answers none; nothing here can fail but memory.
template <class Element>
class Stack {
 public:
  /// Puts the element on top.
  void push(Element element) { elements_.push_back(std::move(element)); }

  /// Takes the top element off.
  std::optional<Element> pop() {
    if (elements_.empty()) return std::nullopt;
    std::optional<Element> popped(std::move(elements_.back()));
    elements_.pop_back();
    return popped;
  }

  /// The top element, lent; null when there is none.
  [[nodiscard]] const Element* top() const noexcept {
    return elements_.empty() ? nullptr : &elements_.back();
  }
  [[nodiscard]] Element* top() noexcept { return elements_.empty() ? nullptr : &elements_.back(); }

  [[nodiscard]] std::size_t count() const noexcept { return elements_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return elements_.empty(); }
  /// Drops every element.
  void removeAll() noexcept { elements_.clear(); }

 private:
  std::vector<Element> elements_;
};

}  // namespace tq
