#pragma once

/// @file MakeRoom.h
/// Reserves capacity before a change, so that the change itself cannot fail.

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tq::detail {

/// Reserves capacity for `more` further elements, so that adding them does not allocate. Capacity
/// at least doubles when it grows, so that n additions move O(n) elements. Strong guarantee.
template <class T>
void makeRoom(std::vector<T>& list, std::size_t more) {
  const std::size_t needed = list.size() + more;
  if (needed > list.capacity()) list.reserve(std::max(needed, 2 * list.size()));
}

}  // namespace tq::detail
