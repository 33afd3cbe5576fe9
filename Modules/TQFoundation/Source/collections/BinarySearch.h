#pragma once

/// @file BinarySearch.h
/// Searches in what is sorted by a key.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ranges>

namespace tq {

/// Where a key is, or where it would go.
struct BinarySearchResult {
  std::size_t index = 0;  ///< of the first element whose key is not before the wanted one
  bool found = false;     ///< whether that element's key is the wanted one
  friend bool operator==(const BinarySearchResult&, const BinarySearchResult&) = default;
};

/// @param elements  sorted ascending by `before` of their keys; otherwise any index may come out
/// @param keyOf     the key of an element: a function or a pointer to a member
/// O(log n) calls of `keyOf` and `before`.
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
