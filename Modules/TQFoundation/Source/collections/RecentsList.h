#pragma once

/// @file RecentsList.h
/// Lists of recently used elements, the most recent one first.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <ranges>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQAssert.h>

namespace tq {

/// At most `capacity` elements without duplicates. A value type. Insertion is O(n). With a negative
/// capacity, the first insertion stops the process.
template <class Element>
class RecentsList {
 public:
  using value_type = Element;
  using const_iterator = typename std::vector<Element>::const_iterator;
  using iterator = const_iterator;

  /// An empty list.
  explicit RecentsList(std::int64_t capacity) : capacity_(capacity) {}

  /// A list of the first `capacity` of `elements`; the first one is the most recent. Duplicates
  /// among them stay until they are inserted again. A negative capacity stops the process.
  template <std::ranges::input_range Elements>
  RecentsList(Elements&& elements, std::int64_t capacity) : capacity_(capacity) {
    TQ_ASSERT(capacity >= 0);
    if (capacity == 0) return;
    for (auto&& element : elements) {
      storage_.emplace_back(std::forward<decltype(element)>(element));
      if (count() == static_cast<std::size_t>(capacity)) break;  // do not read further elements
    }
  }

  /// The same for a list in braces: `RecentsList<int>({1, 2, 3}, 3)`.
  RecentsList(std::initializer_list<Element> elements, std::int64_t capacity)
      : RecentsList(std::span(elements.begin(), elements.size()), capacity) {}

  /// Records a use of `element`. It becomes the most recent one and replaces the first stored
  /// element with `isSame(stored, element)`. If that is already the most recent one, it stays and
  /// `element` is discarded, even if the two differ in ways that `isSame` ignores. `isSame` must
  /// not use the list.
  template <std::predicate<const Element&, const Element&> Predicate>
  void insert(Element element, Predicate isSame) {
    TQ_ASSERT(capacity_ >= 0);
    const auto same = std::ranges::find_if(
        storage_, [&](const Element& stored) { return std::invoke(isSame, stored, element); });
    if (same == storage_.end()) {
      storage_.insert(storage_.begin(), std::move(element));
    } else if (same != storage_.begin()) {
      *same = std::move(element);
      std::rotate(storage_.begin(), same, same + 1);
    }
    trim();
  }

  /// The same with == as `isSame`.
  void insert(Element element) requires std::equality_comparable<Element> {
    insert(std::move(element), std::equal_to<>());
  }

  /// Returns the largest number of elements that the list keeps.
  [[nodiscard]] std::int64_t capacity() const noexcept { return capacity_; }
  [[nodiscard]] std::size_t count() const noexcept { return storage_.size(); }
  /// The same as count(), under the name of the C++ library.
  [[nodiscard]] std::size_t size() const noexcept { return storage_.size(); }
  /// The first index, and the index after the last element.
  [[nodiscard]] static constexpr std::size_t startIndex() noexcept { return 0; }
  [[nodiscard]] std::size_t endIndex() const noexcept { return count(); }

  /// Returns an element; index 0 is the most recent one. An index out of range stops the process.
  [[nodiscard]] const Element& operator[](std::size_t index) const {
    TQ_ASSERT(index < count());
    return storage_[index];
  }

  [[nodiscard]] const_iterator begin() const noexcept { return storage_.begin(); }
  [[nodiscard]] const_iterator end() const noexcept { return storage_.end(); }

  /// Returns whether the elements, their order and the capacities are equal.
  friend bool operator==(const RecentsList&, const RecentsList&) = default;

 private:
  void trim() {
    const auto limit = static_cast<std::size_t>(capacity_);
    if (count() > limit) {
      storage_.erase(storage_.begin() + static_cast<std::ptrdiff_t>(limit), storage_.end());
    }
  }

  std::vector<Element> storage_;
  std::int64_t capacity_;
};

}  // namespace tq
