#pragma once

/// @file AnchoredRect.h
/// Rects that are resized around an anchor.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQCorner.h>
#include <TQFoundation/geometry/values/GeometrySystem.h>

namespace tq {

/// A rect, given by its size and the position of its anchor, one of its nine named points. When it
/// is resized, the anchor stays where it is.
struct AnchoredRect {
  Point position;                        ///< the position of the anchor
  Size size;                             ///< signs are ignored
  TQCorner anchor = TQCorner::minXMinY;  ///< the point that stays where it is

  /// Returns `rect`, standardised, anchored at `anchor`.
  [[nodiscard]] static TQ_EXPORT AnchoredRect hold(const Rect& rect, TQCorner anchor) noexcept;

  /// Returns the rect, standardised, or the null rect for an unknown anchor.
  [[nodiscard]] TQ_EXPORT Rect rect() const noexcept;

  /// Returns the rect with another size; the anchor stays where it is.
  [[nodiscard]] constexpr AnchoredRect resized(Size newSize) const noexcept {
    return {position, newSize, anchor};
  }

  /// Returns the rect with its anchor moved to `newPosition`; the size is kept.
  [[nodiscard]] constexpr AnchoredRect moved(Point newPosition) const noexcept {
    return {newPosition, size, anchor};
  }

  /// Returns the same rect with another anchor.
  [[nodiscard]] TQ_EXPORT AnchoredRect anchoredAt(TQCorner newAnchor) const noexcept;

  /// Returns the rect in the coordinates of the parent of `system`. The anchor is the same named
  /// point of the mapped rect, even if the system rotates or mirrors.
  [[nodiscard]] TQ_EXPORT AnchoredRect toParentOf(const GeometrySystem& system) const noexcept;
};

}  // namespace tq
