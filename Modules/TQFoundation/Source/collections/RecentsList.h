#pragma once

/// @file RecentsList.h
/// The entries used last, the most recent one first.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ranges>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQAssert.h>

namespace tq {

/// At most `capacity` elements, none twice. A value; insertion is its only mutation. O(n).
/// A negative capacity stops the process at the first trimming.
template <class Element>
class RecentsList {
 public:
  using value_type = Element;
  using const_iterator = typename std::vector<Element>::const_iterator;
  using iterator = const_iterator;

  /// An empty list.
  explicit RecentsList(std::int64_t capacity) : capacity_(capacity) {}

  /// The first `capacity` of `elements`, the first one being the most recent. What occurs twice in
  /// them stays twice until it is inserted again.
  template <std::ranges::input_range Elements>
  RecentsList(Elements&& elements, std::int64_t capacity) : capacity_(capacity) {
    TQ_ASSERT(capacity >= 0);
    if (capacity == 0) return;
    for (auto&& element : elements) {
      storage_.emplace_back(std::forward<decltype(element)>(element));
      if (count() == static_cast<std::size_t>(capacity)) break;  // no further element is asked for
    }
  }

  /// Records a use of `element`. The first stored element for which `isSame(stored, element)` holds
  /// makes way for it. When that is the most recent one it stays, and `element` is dropped, even
  /// where the two differ in what `isSame` does not look at.
  template <std::predicate<const Element&, const Element&> Predicate>
  void insert(Element element, Predicate isSame) {
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

  /// insert(element, ==).
  void insert(Element element) requires std::equality_comparable<Element> {
    insert(std::move(element), std::equal_to<>());
  }

  /// Most elements that it keeps, as given.
  [[nodiscard]] std::int64_t capacity() const noexcept { return capacity_; }
  [[nodiscard]] std::size_t count() const noexcept { return storage_.size(); }
  /// The same as count(), as the C++ library names it.
  [[nodiscard]] std::size_t size() const noexcept { return storage_.size(); }
  /// Indices run from startIndex() to endIndex(), which is behind the last.
  [[nodiscard]] static constexpr std::size_t startIndex() noexcept { return 0; }
  [[nodiscard]] std::size_t endIndex() const noexcept { return count(); }

  /// 0 is the most recent; an index past the end stops the process.
  [[nodiscard]] const Element& operator[](std::size_t index) const {
    TQ_ASSERT(index < count());
    return storage_[index];
  }

  [[nodiscard]] const_iterator begin() const noexcept { return storage_.begin(); }
  [[nodiscard]] const_iterator end() const noexcept { return storage_.end(); }

 private:
  void trim() {
    TQ_ASSERT(capacity_ >= 0);
    const auto limit = static_cast<std::size_t>(capacity_);
    if (count() > limit) {
      storage_.erase(storage_.begin() + static_cast<std::ptrdiff_t>(limit), storage_.end());
    }
  }

  std::vector<Element> storage_;
  std::int64_t capacity_;
};

}  // namespace tq
