#pragma once

/// @file Strided.h
/// A view of elements at a fixed distance in an array.

#include <compare>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <type_traits>

namespace tq::detail {

/// A view of `count` elements: the first at `first`, each of the others `stride` after the one
/// before.
template <class Element>
class Strided : public std::ranges::view_interface<Strided<Element>> {
 public:
  class Iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::remove_cv_t<Element>;
    using difference_type = std::ptrdiff_t;
    using pointer = Element*;
    using reference = Element&;

    Iterator() noexcept = default;
    Iterator(Element* first, difference_type stride, difference_type index) noexcept
        : first_(first), stride_(stride), index_(index) {}

    reference operator*() const noexcept { return first_[index_ * stride_]; }
    pointer operator->() const noexcept { return &**this; }
    reference operator[](difference_type n) const noexcept { return *(*this + n); }
    Iterator& operator++() noexcept { return *this += 1; }
    Iterator& operator--() noexcept { return *this -= 1; }
    Iterator operator++(int) noexcept { return Iterator(first_, stride_, index_++); }
    Iterator operator--(int) noexcept { return Iterator(first_, stride_, index_--); }
    Iterator& operator+=(difference_type n) noexcept { return index_ += n, *this; }
    Iterator& operator-=(difference_type n) noexcept { return index_ -= n, *this; }
    friend Iterator operator+(Iterator i, difference_type n) noexcept { return i += n; }
    friend Iterator operator+(difference_type n, Iterator i) noexcept { return i += n; }
    friend Iterator operator-(Iterator i, difference_type n) noexcept { return i -= n; }
    friend difference_type operator-(Iterator a, Iterator b) noexcept {
      return a.index_ - b.index_;
    }
    friend bool operator==(Iterator a, Iterator b) noexcept { return a.index_ == b.index_; }
    friend auto operator<=>(Iterator a, Iterator b) noexcept { return a.index_ <=> b.index_; }

   private:
    Element* first_ = nullptr;
    difference_type stride_ = 0;
    difference_type index_ = 0;
  };

  using value_type = std::remove_cv_t<Element>;
  using const_iterator = Iterator;

  Strided(Element* first, std::size_t stride, std::size_t count) noexcept
      : first_(first),
        stride_(static_cast<std::ptrdiff_t>(stride)),
        count_(static_cast<std::ptrdiff_t>(count)) {}

  [[nodiscard]] Iterator begin() const noexcept { return {first_, stride_, 0}; }
  [[nodiscard]] Iterator end() const noexcept { return {first_, stride_, count_}; }

 private:
  Element* first_;
  std::ptrdiff_t stride_;
  std::ptrdiff_t count_;
};

}  // namespace tq::detail

// The iterators do not refer to the view.
template <class Element>
inline constexpr bool std::ranges::enable_borrowed_range<tq::detail::Strided<Element>> = true;
