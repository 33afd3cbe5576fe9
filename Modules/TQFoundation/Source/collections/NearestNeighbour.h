#pragma once

/// @file NearestNeighbour.h
/// Picks what lies nearest.

#include <functional>
#include <iterator>
#include <limits>
#include <ranges>

namespace tq {

/// The element of the least distance; the first one among equals. A distance that is NaN is never
/// the least. O(n), `distanceTo(element)` once for each element.
///
/// @param farthest  only elements up to this distance count
/// @return its iterator, or the end when there is no such element
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
