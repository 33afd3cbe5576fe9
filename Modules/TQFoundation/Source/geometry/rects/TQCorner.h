#pragma once

/// @file TQCorner.h
/// The nine named points of a rect: four corners, four edge midpoints and the centre.

namespace tq {

/// A named point of a standardised rect. The numbers are fixed: archives store them, and masks are
/// made from them.
enum class TQCorner : int {
  none = -1,
  minXMinY = 0,
  maxXMinY = 1,
  minXMaxY = 2,
  maxXMaxY = 3,
  midXMinY = 4,
  minXMidY = 5,
  maxXMidY = 6,
  midXMaxY = 7,
  center = 8,
};

/// A set of corners: bit (1 << corner) for each.
using TQCornerMask = unsigned;

/// The eight corners and edge midpoints, without the centre.
inline constexpr TQCornerMask TQCornerMaskOutline = 0xFF;

/// Returns the mask of this corner alone. It is empty for `none` and for an unknown value.
[[nodiscard]] constexpr TQCornerMask TQCornerMaskFromCorner(TQCorner corner) noexcept {
  const auto bit = static_cast<unsigned>(corner);
  return bit <= static_cast<unsigned>(TQCorner::center) ? 1U << bit : 0U;
}

/// Calls `visitor(corner)` for the corners 0 to 7 in ascending order. The centre is not visited.
template <class Visitor>
constexpr void TQCornerEnumerate(Visitor&& visitor) {
  for (int corner = 0; corner < 8; ++corner) visitor(static_cast<TQCorner>(corner));
}

/// Returns the first of the corners 0 to 7 for which `predicate(corner)` is true, or `none` (-1).
/// They are tried in ascending order, and the search stops at the first match. The centre is not
/// tried.
template <class Predicate>
[[nodiscard]] constexpr TQCorner TQCornerFirstCornerSatisfyingPredicate(Predicate&& predicate) {
  for (int corner = 0; corner < 8; ++corner) {
    if (predicate(static_cast<TQCorner>(corner))) return static_cast<TQCorner>(corner);
  }
  return TQCorner::none;
}

}  // namespace tq
