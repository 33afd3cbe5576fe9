#pragma once

/// @file GeometrySystem.h
/// Nested coordinate systems.

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// A coordinate system within the coordinate system of its parent.
struct GeometrySystem {
  Rect frame;                 ///< the system's area in its parent's coordinates, standardised
  Rect bounds;                ///< the same area in its own coordinates, standardised
  Size size;                  ///< of the frame
  AffineTransform transform;  ///< from its own coordinates to its parent's

  /// Returns the system that maps `bounds` onto `frame`. If an extent of the bounds is 0, the scale
  /// on that axis is 1.
  [[nodiscard]] static TQ_EXPORT GeometrySystem withFrame(const Rect& frame,
                                                          const Rect& bounds) noexcept;

  /// Returns the system of `bounds` with any transform. The frame is the image of the bounds.
  [[nodiscard]] static TQ_EXPORT GeometrySystem
  withTransform(const Rect& bounds, const AffineTransform& transform) noexcept;

  /// Maps a point from the system's own coordinates to its parent's.
  [[nodiscard]] TQ_EXPORT Point pointToParent(Point point) const noexcept;
  /// Maps a point from the parent's coordinates. If the transform has no inverse, the transform
  /// itself is applied.
  [[nodiscard]] TQ_EXPORT Point pointFromParent(Point point) const noexcept;
  /// Both return the bounds of the mapped corners.
  [[nodiscard]] TQ_EXPORT Rect rectToParent(const Rect& rect) const noexcept;
  [[nodiscard]] TQ_EXPORT Rect rectFromParent(const Rect& rect) const noexcept;
};

}  // namespace tq
