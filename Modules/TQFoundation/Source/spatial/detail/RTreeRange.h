#pragma once

/// @file RTreeRange.h
/// Ranges over the entries of an R-tree node.

#include <compare>
#include <cstddef>
#include <iterator>
#include <ranges>

namespace tq::detail {

/// A random-access iterator that creates its value on reading: `at(position)`. It refers only to
/// the node, so it stays valid after the range that it came from is destroyed.
///
/// @tparam Position  an index or a pointer
/// @tparam At        a copyable function object that takes a position
template <class Position, class At>
class RTreeIterator {
 public:
  using iterator_concept = std::random_access_iterator_tag;
  using iterator_category = std::input_iterator_tag;  // reading creates a value, not a reference
  using value_type = decltype(At{}(Position{}));
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = value_type;

  RTreeIterator() = default;
  RTreeIterator(Position position, At at) : position_(position), at_(at) {}

  value_type operator*() const { return at_(position_); }
  value_type operator[](difference_type n) const { return at_(position_ + n); }

  RTreeIterator& operator+=(difference_type n) {
    position_ += n;
    return *this;
  }
  RTreeIterator& operator-=(difference_type n) { return *this += -n; }
  RTreeIterator& operator++() { return *this += 1; }
  RTreeIterator& operator--() { return *this += -1; }
  RTreeIterator operator++(int) {
    const RTreeIterator before = *this;
    ++*this;
    return before;
  }
  RTreeIterator operator--(int) {
    const RTreeIterator before = *this;
    --*this;
    return before;
  }

  friend RTreeIterator operator+(RTreeIterator i, difference_type n) { return i += n; }
  friend RTreeIterator operator+(difference_type n, RTreeIterator i) { return i += n; }
  friend RTreeIterator operator-(RTreeIterator i, difference_type n) { return i -= n; }
  friend difference_type operator-(const RTreeIterator& a, const RTreeIterator& b) {
    return static_cast<difference_type>(a.position_ - b.position_);
  }
  friend bool operator==(const RTreeIterator& a, const RTreeIterator& b) {
    return a.position_ == b.position_;
  }
  friend auto operator<=>(const RTreeIterator& a, const RTreeIterator& b) {
    return a.position_ <=> b.position_;
  }

 private:
  Position position_{};
  [[no_unique_address]] At at_{};
};

/// The entries of a node as `At` creates them. `At` knows the node, or null for an empty range.
template <class At>
class RTreeEntries : public std::ranges::view_interface<RTreeEntries<At>> {
 public:
  using Iterator = RTreeIterator<std::ptrdiff_t, At>;

  RTreeEntries() = default;
  explicit RTreeEntries(At at) : at_(at) {}

  [[nodiscard]] Iterator begin() const noexcept { return {0, at_}; }
  [[nodiscard]] Iterator end() const noexcept {
    return {at_.node == nullptr ? 0 : static_cast<std::ptrdiff_t>(at_.node->count()), at_};
  }

 private:
  At at_;
};

}  // namespace tq::detail

// Iterators do not refer to their range.
template <class At>
inline constexpr bool std::ranges::enable_borrowed_range<tq::detail::RTreeEntries<At>> = true;
