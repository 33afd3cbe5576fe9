#pragma once

/// @file Filtered.h
/// A range view that filters by a predicate.

#include <concepts>
#include <functional>
#include <iterator>
#include <ranges>
#include <type_traits>
#include <utility>

namespace tq::detail {

/// A view of the elements of `Base` for which a predicate is true. The predicate must outlive the
/// view. Unlike std::views::filter it caches nothing: each iteration calls the predicate once for
/// each element.
template <std::ranges::view Base, class Predicate>
class Filtered : public std::ranges::view_interface<Filtered<Base, Predicate>> {
 public:
  template <class Place, class End>
  class Iterator {
   public:
    using iterator_concept = std::conditional_t<std::forward_iterator<Place>,
                                                std::forward_iterator_tag, std::input_iterator_tag>;
    using value_type = std::iter_value_t<Place>;
    using difference_type = std::iter_difference_t<Place>;

    Iterator() requires std::default_initializable<Place>
    = default;
    Iterator(Place place, End end, const Predicate& predicate)
        : place_(std::move(place)), end_(std::move(end)), predicate_(&predicate) {
      skip();
    }

    decltype(auto) operator*() const { return *place_; }
    Iterator& operator++() {
      ++place_;
      skip();
      return *this;
    }
    Iterator operator++(int) requires std::forward_iterator<Place> {
      Iterator before = *this;
      ++*this;
      return before;
    }
    void operator++(int) { ++*this; }

    friend bool operator==(const Iterator& a,
                           const Iterator& b) requires std::equality_comparable<Place> {
      return a.place_ == b.place_;
    }
    friend bool operator==(const Iterator& a, std::default_sentinel_t) {
      return a.place_ == a.end_;
    }

   private:
    void skip() {
      while (!(place_ == end_) && !std::invoke(*predicate_, *place_)) ++place_;
    }

    Place place_{};
    End end_{};
    const Predicate* predicate_ = nullptr;
  };

  Filtered(Base base, const Predicate& predicate)
      : base_(std::move(base)), predicate_(&predicate) {}

  [[nodiscard]] auto begin() { return beginOf(base_); }
  [[nodiscard]] auto begin() const requires std::ranges::range<const Base> {
    return beginOf(base_);
  }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

 private:
  template <class Range>
  auto beginOf(Range& range) const {
    return Iterator<std::ranges::iterator_t<Range>, std::ranges::sentinel_t<Range>>(
        std::ranges::begin(range), std::ranges::end(range), *predicate_);
  }

  Base base_;
  const Predicate* predicate_;
};

}  // namespace tq::detail
