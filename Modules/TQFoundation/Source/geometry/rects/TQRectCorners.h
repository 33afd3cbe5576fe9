#pragma once

/// @file TQRectCorners.h
/// The points of interest of a rect: where they are, and rects placed or resized by one.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQCorner.h>

namespace tq {

/// Where the corner of the standardised rect is; (0, 0) for an unknown corner.
[[nodiscard]] TQ_EXPORT Point TQRectPointForCorner(const Rect& rect, TQCorner corner) noexcept;

/// The middle of an edge of the standardised rect; (0, 0) for an unknown edge.
[[nodiscard]] TQ_EXPORT Point TQRectGetMidOfEdge(const Rect& rect, Edge edge) noexcept;

/// First corner of `rect` within reach of `point`. Corners 0...7 are tried in that order and the
/// first that is in the mask and strictly closer than `maximumDistance` wins; the nearest may be
/// another.
///
/// @param maximumDistance  Euclidean, in the rect's own units; 0 or less reaches nothing.
/// @param cornerMask       bit (1 << corner) for each corner wanted; the centre is never tried.
/// @return the corner, or `none` (-1) when none is in reach; a distance that is NaN never is.
[[nodiscard]] TQ_EXPORT TQCorner TQRectClosestCornerForPoint(Point point, double maximumDistance,
                                                             TQCornerMask cornerMask,
                                                             const Rect& rect) noexcept;

/// A standardised rect, as wide and high as the magnitudes of `size`, whose named corner lies at
/// the point. An unknown corner gives the null rect.
[[nodiscard]] TQ_EXPORT Rect TQRectWithCornerAtPoint(Size size, Point point,
                                                     TQCorner corner) noexcept;

/// The rect with its corner dragged to `point`; the opposite side of a rect with extents of 0 or
/// more stays, and a middle moves its own edge alone. Not standardised: a corner dragged past the
/// opposite side leaves a negative extent. The centre and unknown corners give the rect as it is.
[[nodiscard]] TQ_EXPORT Rect TQRectResizeByPuttingCorner(Point point, const Rect& rect,
                                                         TQCorner corner) noexcept;

}  // namespace tq
