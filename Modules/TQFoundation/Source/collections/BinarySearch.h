#pragma once

/// @file BinarySearch.h
/// Binary search by key.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ranges>

namespace tq {

/// The position of a key, or its insertion position.
struct BinarySearchResult {
  std::size_t index = 0;  ///< of the first element whose key is not before the searched key
  bool found = false;     ///< true if the key of that element equals the searched key
  friend bool operator==(const BinarySearchResult&, const BinarySearchResult&) = default;
};

/// Searches `elements` for `key`. O(log n) calls of `keyOf` and `before`.
/// @param elements  must be sorted by their keys, ascending in the order of `before`; otherwise the
///                  returned index is unspecified
/// @param keyOf     returns the key of an element: a function or a pointer to a member
template <std::ranges::random_access_range Elements, class Key, class KeyOf = std::identity,
          class Before = std::ranges::less>
[[nodiscard]] BinarySearchResult binarySearch(const Elements& elements, const Key& key,
                                              KeyOf keyOf = {}, Before before = {}) {
  const auto first = std::ranges::begin(elements);
  const auto at = std::ranges::lower_bound(elements, key, std::ref(before), std::ref(keyOf));
  return {static_cast<std::size_t>(at - first),
          at != std::ranges::end(elements) && !std::invoke(before, key, std::invoke(keyOf, *at))};
}

}  // namespace tq
