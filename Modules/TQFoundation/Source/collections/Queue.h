#pragma once

/// @file Queue.h
/// First in, first out, and first by priority.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tq {

/// Elements leave in the order in which they came. A value.
template <class Element>
class Queue {
 public:
  /// Puts the element behind all others.
  void enqueue(Element element) { elements_.push_back(std::move(element)); }

  /// Takes out the element that came first; none when the queue is empty.
  std::optional<Element> dequeue() {
    if (elements_.empty()) return std::nullopt;
    std::optional<Element> first(std::move(elements_.front()));
    elements_.pop_front();
    return first;
  }

  /// The element that leaves next, lent; null when there is none.
  [[nodiscard]] const Element* first() const noexcept {
    return elements_.empty() ? nullptr : &elements_.front();
  }

  [[nodiscard]] std::size_t count() const noexcept { return elements_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return elements_.empty(); }
  /// Drops every element.
  void removeAll() noexcept { elements_.clear(); }

 private:
  std::deque<Element> elements_;
};

/// The element that comes before all others by `Before` leaves first; among equals, the one that
/// came first. With std::less that is the least. A value; O(log n) in and out.
template <class Element, class Before = std::less<Element>>
class PriorityQueue {
 public:
  PriorityQueue() = default;
  /// An empty queue ordered by `before`, a strict weak order.
  explicit PriorityQueue(Before before) : before_(std::move(before)) {}

  /// Puts the element behind its equals. O(log n).
  void enqueue(Element element) {
    heap_.push_back({std::move(element), arrivals_++});
    std::ranges::push_heap(heap_, later());
  }

  /// Takes out the element that goes before all others; none when the queue is empty. O(log n).
  std::optional<Element> dequeue() {
    if (heap_.empty()) return std::nullopt;
    std::ranges::pop_heap(heap_, later());
    std::optional<Element> first(std::move(heap_.back().element));
    heap_.pop_back();
    return first;
  }

  /// The element that leaves next, lent; null when there is none.
  [[nodiscard]] const Element* first() const noexcept {
    return heap_.empty() ? nullptr : &heap_.front().element;
  }

  [[nodiscard]] std::size_t count() const noexcept { return heap_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return heap_.empty(); }
  /// Drops every element.
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
