#pragma once

/// @file NearestNeighbour.h
/// Linear nearest-neighbour search.

#include <functional>
#include <iterator>
#include <limits>
#include <ranges>

namespace tq {

/// Returns the element with the smallest distance, the first one if several are equal. Elements
/// with a NaN distance are ignored. O(n), calls `distanceTo(element)` once for each element.
///
/// @param farthest  the largest distance that is accepted, inclusive
/// @return an iterator to the element, or the end if there is none
template <std::ranges::forward_range Elements, class DistanceTo>
[[nodiscard]] std::ranges::borrowed_iterator_t<Elements> nearestNeighbour(
    Elements&& elements, DistanceTo distanceTo,
    double farthest = std::numeric_limits<double>::infinity()) {
  const auto end = std::ranges::next(std::ranges::begin(elements), std::ranges::end(elements));
  auto nearest = end;
  double least = farthest;
  for (auto at = std::ranges::begin(elements); at != end; ++at) {
    const double distance = std::invoke(distanceTo, *at);
    if (nearest == end ? distance <= least : distance < least) {
      nearest = at;
      least = distance;
    }
  }
  return nearest;
}

}  // namespace tq
