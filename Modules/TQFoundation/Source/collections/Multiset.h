#pragma once

/// @file Multiset.h
/// A set with multiplicities (bag).

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <functional>
#include <limits>
#include <ranges>
#include <stdexcept>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tq {

/// A set that counts how often each element is in it. A value type. Iteration visits (element,
/// count) pairs in the order in which the elements were first inserted; it does not depend on
/// hashes.
///
/// Cost: O(1) to insert, to count, and to remove an occurrence that is not the last of its element;
///       O(distinct elements) to remove the last one.
template <class Element, class Hash = std::hash<Element>, class Equal = std::equal_to<Element>>
class Multiset {
 public:
  /// An element and its number of occurrences.
  struct Entry {
    Element element;    ///< the first inserted among equal ones
    std::size_t count;  ///< never 0
  };
  using const_iterator = typename std::vector<Entry>::const_iterator;

  Multiset() = default;
  /// Inserts each of `elements`, in order.
  template <std::ranges::input_range Elements>
  requires(!std::same_as<std::remove_cvref_t<Elements>, Multiset>) explicit Multiset(
      Elements&& elements) {
    for (auto&& element : elements) insert(std::forward<decltype(element)>(element));
  }
  Multiset(const Multiset&) = default;
  /// Moving leaves an empty set behind, or swaps with the target of an assignment.
  Multiset(Multiset&& other) : Multiset() { *this = std::move(other); }
  Multiset& operator=(const Multiset&) = default;
  Multiset& operator=(Multiset&& other) {
    std::swap(entries_, other.entries_);
    std::swap(positions_, other.positions_);
    std::swap(total_, other.total_);
    return *this;
  }

  /// Inserts the element `times` times.
  /// @return its count afterwards
  /// @throws std::length_error if the sum of all counts would be above the largest std::size_t
  std::size_t insert(Element element, std::size_t times = 1) {
    if (times == 0) return count(element);
    if (times > std::numeric_limits<std::size_t>::max() - total_)
      throw std::length_error("Multiset");
    const auto found = positions_.find(element);
    if (found == positions_.end()) {
      entries_.push_back({element, 0});
      try {
        positions_.emplace(std::move(element), entries_.size() - 1);
      } catch (...) {
        entries_.pop_back();
        throw;
      }
    }
    Entry& entry = found == positions_.end() ? entries_.back() : entries_[found->second];
    total_ += times;
    return entry.count += times;
  }

  /// Removes up to `times` occurrences of the element.
  /// @return how many were removed
  std::size_t remove(const Element& element, std::size_t times = 1) {
    const auto found = positions_.find(element);
    if (found == positions_.end()) return 0;
    const std::size_t position = found->second;
    const std::size_t removed = std::min(times, entries_[position].count);
    total_ -= removed;
    entries_[position].count -= removed;
    if (entries_[position].count != 0) return removed;
    positions_.erase(found);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
    for (auto& [other, at] : positions_) at -= at > position ? 1 : 0;
    return removed;
  }

  /// Removes all occurrences of the element.
  /// @return how many were removed
  std::size_t removeAll(const Element& element) { return remove(element, count(element)); }

  /// Returns the number of occurrences of the element; 0 if it is not in the set.
  [[nodiscard]] std::size_t count(const Element& element) const {
    const auto found = positions_.find(element);
    return found == positions_.end() ? 0 : entries_[found->second].count;
  }
  /// True if the element is in the set.
  [[nodiscard]] bool contains(const Element& element) const { return count(element) != 0; }

  /// Returns the sum of all counts.
  [[nodiscard]] std::size_t totalCount() const noexcept { return total_; }
  /// Returns the number of distinct elements.
  [[nodiscard]] std::size_t distinctCount() const noexcept { return entries_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return total_ == 0; }

  [[nodiscard]] const_iterator begin() const noexcept { return entries_.begin(); }
  [[nodiscard]] const_iterator end() const noexcept { return entries_.end(); }

  /// True if both contain the same elements with the same counts. The order does not matter.
  friend bool operator==(const Multiset& a, const Multiset& b) {
    return a.total_ == b.total_ && a.distinctCount() == b.distinctCount() &&
           std::ranges::all_of(
               a, [&](const Entry& entry) { return b.count(entry.element) == entry.count; });
  }

 private:
  std::vector<Entry> entries_;
  std::unordered_map<Element, std::size_t, Hash, Equal> positions_;
  std::size_t total_ = 0;
};

}  // namespace tq
