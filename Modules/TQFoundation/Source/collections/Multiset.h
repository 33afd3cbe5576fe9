#pragma once

/// @file Multiset.h
/// Elements with the number of times that they are in.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ranges>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tq {

/// A bag: a set that counts. A value. Goes over (element, count) pairs in the order in which the
/// elements first came in, so that no output hangs on hashes. Adding, counting and removing one of
/// several take O(1); removing the last of an element takes O(distinct elements).
template <class Element, class Hash = std::hash<Element>, class Equal = std::equal_to<Element>>
class Multiset {
 public:
  /// An element and how often it is in.
  struct Entry {
    Element element;    ///< the one that came in first among equals
    std::size_t count;  ///< never 0
  };
  using const_iterator = typename std::vector<Entry>::const_iterator;

  Multiset() = default;
  /// Inserts each of `elements`, in order.
  template <std::ranges::input_range Elements>
  explicit Multiset(Elements&& elements) {
    for (auto&& element : elements) insert(std::forward<decltype(element)>(element));
  }

  /// @return how often the element is in afterwards
  std::size_t insert(Element element, std::size_t times = 1) {
    if (times == 0) return count(element);
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

  /// Takes the element out `times` times, or as often as it is in.
  /// @return how often it was taken out
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

  /// All of the equal ones.
  /// @return how many there were
  std::size_t removeAll(const Element& element) { return remove(element, count(element)); }

  /// How often the element is in; 0 when it is not.
  [[nodiscard]] std::size_t count(const Element& element) const {
    const auto found = positions_.find(element);
    return found == positions_.end() ? 0 : entries_[found->second].count;
  }
  /// True when it is in at least once.
  [[nodiscard]] bool contains(const Element& element) const { return count(element) != 0; }

  /// Elements in all, each as often as it is in.
  [[nodiscard]] std::size_t totalCount() const noexcept { return total_; }
  /// How many different elements are in.
  [[nodiscard]] std::size_t distinctCount() const noexcept { return entries_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return total_ == 0; }

  [[nodiscard]] const_iterator begin() const noexcept { return entries_.begin(); }
  [[nodiscard]] const_iterator end() const noexcept { return entries_.end(); }

  /// The same elements equally often, in whatever order they came.
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
