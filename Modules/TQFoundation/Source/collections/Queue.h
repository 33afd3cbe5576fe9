#pragma once

/// @file Queue.h
/// First-in, first-out queues and priority queues.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tq {

/// A first-in, first-out queue. A value type.
template <class Element>
class Queue {
 public:
  /// Adds an element at the end.
  void enqueue(Element element) { elements_.push_back(std::move(element)); }

  /// Removes and returns the first element; nullopt if the queue is empty.
  std::optional<Element> dequeue() {
    if (elements_.empty()) return std::nullopt;
    std::optional<Element> first(std::move(elements_.front()));
    elements_.pop_front();
    return first;
  }

  /// Returns the first element, or null if the queue is empty. Valid until the queue changes.
  [[nodiscard]] const Element* first() const noexcept {
    return elements_.empty() ? nullptr : &elements_.front();
  }

  [[nodiscard]] std::size_t count() const noexcept { return elements_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return elements_.empty(); }
  /// Removes all elements.
  void removeAll() noexcept { elements_.clear(); }

 private:
  std::deque<Element> elements_;
};

/// A stable priority queue: the smallest element in the order of `Before` leaves first. Equal
/// elements leave in the order of their insertion. A value type.
template <class Element, class Before = std::less<Element>>
class PriorityQueue {
 public:
  PriorityQueue() = default;
  /// An empty queue ordered by `before`, a strict weak order. After an exception of `before`, the
  /// order is undefined until the queue is empty.
  explicit PriorityQueue(Before before) : before_(std::move(before)) {}

  /// Adds an element. O(log n).
  void enqueue(Element element) {
    heap_.push_back({std::move(element), arrivals_++});
    std::ranges::push_heap(heap_, later());
  }

  /// Removes and returns the first element; nullopt if the queue is empty. O(log n).
  std::optional<Element> dequeue() {
    if (heap_.empty()) return std::nullopt;
    std::ranges::pop_heap(heap_, later());
    std::optional<Element> first(std::move(heap_.back().element));
    heap_.pop_back();
    return first;
  }

  /// Returns the first element, or null if the queue is empty. Valid until the queue changes.
  [[nodiscard]] const Element* first() const noexcept {
    return heap_.empty() ? nullptr : &heap_.front().element;
  }

  [[nodiscard]] std::size_t count() const noexcept { return heap_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return heap_.empty(); }
  /// Removes all elements.
  void removeAll() noexcept { heap_.clear(); }

 private:
  struct Waiting {
    Element element;
    std::uint64_t arrival;
  };

  [[nodiscard]] auto later() const {
    return [this](const Waiting& a, const Waiting& b) {
      if (std::invoke(before_, b.element, a.element)) return true;
      return !std::invoke(before_, a.element, b.element) && b.arrival < a.arrival;
    };
  }

  std::vector<Waiting> heap_;
  std::uint64_t arrivals_ = 0;
  [[no_unique_address]] Before before_;
};

}  // namespace tq
