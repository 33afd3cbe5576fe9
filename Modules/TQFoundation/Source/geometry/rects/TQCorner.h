#pragma once

/// @file TQCorner.h
/// The nine points of interest of a rect: four corners, four edge middles, the centre.

namespace tq {

/// A point of a standardised rect. The numbers are fixed: they are stored and make up masks.
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

/// Any set of corners: bit (1 << corner) for each.
using TQCornerMask = unsigned;

/// The eight points on the outline.
inline constexpr TQCornerMask TQCornerMaskOutline = 0xFF;

/// The set of this corner alone; empty for `none` and for an unknown value.
[[nodiscard]] constexpr TQCornerMask TQCornerMaskFromCorner(TQCorner corner) noexcept {
  const auto bit = static_cast<unsigned>(corner);
  return bit <= static_cast<unsigned>(TQCorner::center) ? 1U << bit : 0U;
}

/// Calls `visitor(corner)` for the corners 0 to 7 in ascending order; never for the centre.
template <class Visitor>
constexpr void TQCornerEnumerate(Visitor&& visitor) {
  for (int corner = 0; corner < 8; ++corner) visitor(static_cast<TQCorner>(corner));
}

/// First of the corners 0 to 7, in ascending order, that `predicate(corner)` accepts; `none` (-1)
/// when it accepts none. The centre is never asked about, nor any corner after the answer.
template <class Predicate>
[[nodiscard]] constexpr TQCorner TQCornerFirstCornerSatisfyingPredicate(Predicate&& predicate) {
  for (int corner = 0; corner < 8; ++corner) {
    if (predicate(static_cast<TQCorner>(corner))) return static_cast<TQCorner>(corner);
  }
  return TQCorner::none;
}

}  // namespace tq
