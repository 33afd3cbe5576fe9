#pragma once

/// @file GeometrySystem.h
/// A coordinate system that lies in another one.

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// A coordinate system within its parent's.
struct GeometrySystem {
  Rect frame;                 ///< the system's area in its parent's coordinates, standardised
  Rect bounds;                ///< the same area in its own coordinates, standardised
  Size size;                  ///< of the frame: how large the area is for its parent
  AffineTransform transform;  ///< from its own coordinates to its parent's

  /// Maps `bounds` onto `frame`. Where the bounds have no extent on an axis, lengths are kept.
  [[nodiscard]] static TQ_EXPORT GeometrySystem withFrame(const Rect& frame,
                                                          const Rect& bounds) noexcept;

  /// The system of `bounds` under any transform; the frame is what the bounds become.
  [[nodiscard]] static TQ_EXPORT GeometrySystem
  withTransform(const Rect& bounds, const AffineTransform& transform) noexcept;

  /// Maps a point from the system's own coordinates.
  [[nodiscard]] TQ_EXPORT Point pointToParent(Point point) const noexcept;
  /// A transform without an inverse gives the point as the transform itself maps it.
  [[nodiscard]] TQ_EXPORT Point pointFromParent(Point point) const noexcept;
  /// Bounds of the mapped corners.
  [[nodiscard]] TQ_EXPORT Rect rectToParent(const Rect& rect) const noexcept;
  [[nodiscard]] TQ_EXPORT Rect rectFromParent(const Rect& rect) const noexcept;
};

}  // namespace tq
