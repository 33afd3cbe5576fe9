#pragma once

/// @file TQRectCorners.h
/// The nine named points of a rect: where they are, and rects placed or resized by one of them.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQCorner.h>

namespace tq {

/// Returns the position of the corner of the standardised rect, or (0, 0) for an unknown corner.
[[nodiscard]] TQ_EXPORT Point TQRectPointForCorner(const Rect& rect, TQCorner corner) noexcept;

/// Returns the midpoint of an edge of the standardised rect, or (0, 0) for an unknown edge.
[[nodiscard]] TQ_EXPORT Point TQRectGetMidOfEdge(const Rect& rect, Edge edge) noexcept;

/// Returns the first corner of `rect` that lies within `maximumDistance` of `point`.
///
/// The corners 0 to 7 are tried in that order. The first corner that is in the mask and strictly
/// closer than `maximumDistance` is returned, even if a later one is closer.
///
/// @param maximumDistance  Euclidean distance in the rect's unit. No corner matches if it is 0,
///                         negative or NaN.
/// @param cornerMask  bit (1 << corner) for each corner to try; the centre is never tried
/// @return the corner, or `none` (-1) if none matches
[[nodiscard]] TQ_EXPORT TQCorner TQRectClosestCornerForPoint(Point point, double maximumDistance,
                                                             TQCornerMask cornerMask,
                                                             const Rect& rect) noexcept;

/// Returns the rect whose named corner is at `point`. Its extents are the magnitudes of those of
/// `size`. An unknown corner returns the null rect.
[[nodiscard]] TQ_EXPORT Rect TQRectWithCornerAtPoint(Size size, Point point,
                                                     TQCorner corner) noexcept;

/// Moves one corner of the rect to `point`. The opposite side stays where it is if the extents are
/// 0 or more. An edge midpoint moves its own edge only. The result is not standardised: if the
/// corner passes the opposite side, the extent becomes negative. The centre and unknown corners
/// return the rect unchanged.
[[nodiscard]] TQ_EXPORT Rect TQRectResizeByPuttingCorner(Point point, const Rect& rect,
                                                         TQCorner corner) noexcept;

}  // namespace tq
