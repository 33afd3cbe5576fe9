#pragma once

/// @file AnchoredRect.h
/// A rect held at one of its nine points.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQCorner.h>
#include <TQFoundation/geometry/values/GeometrySystem.h>

namespace tq {

/// A size hung up by one of the nine points of its rect: resized, it grows away from that point.
struct AnchoredRect {
  Point position;                        ///< where the anchor is
  Size size;                             ///< by magnitude; signs do not count
  TQCorner anchor = TQCorner::minXMinY;  ///< which of the nine points stays where it is

  /// Takes hold of `rect`, standardised first, at `anchor`.
  [[nodiscard]] static TQ_EXPORT AnchoredRect hold(const Rect& rect, TQCorner anchor) noexcept;

  /// The rect, standardised; null for an unknown anchor.
  [[nodiscard]] TQ_EXPORT Rect rect() const noexcept;

  /// The same anchor in the same place.
  [[nodiscard]] constexpr AnchoredRect resized(Size newSize) const noexcept {
    return {position, newSize, anchor};
  }

  /// The anchor elsewhere.
  [[nodiscard]] constexpr AnchoredRect moved(Point newPosition) const noexcept {
    return {newPosition, size, anchor};
  }

  /// The same rect, held at another point.
  [[nodiscard]] TQ_EXPORT AnchoredRect anchoredAt(TQCorner newAnchor) const noexcept;

  /// The rect as the parent of `system` sees it, held at the same point: the mapped rect's own,
  /// even where the system turns or mirrors.
  [[nodiscard]] TQ_EXPORT AnchoredRect toParentOf(const GeometrySystem& system) const noexcept;
};

}  // namespace tq
