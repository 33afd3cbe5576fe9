#pragma once

/// @file CGContext+TQFoundation.h
/// Paths of common shapes.

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/curves/Path.h>

namespace tq {

/// Returns the path of a rect with rounded corners: quarter ellipses as cubics with kappa
/// 0.5522847498.
///
/// The rect is standardised. Each radius is limited to 0...half the rect's extent on its axis; NaN
/// counts as 0. If either radius is 0, the result is the plain rect. The null rect returns an empty
/// path. Otherwise the path has ten elements. It starts in the middle of the maxX edge, goes
/// towards maxY and on around the rect, and ends with close. A side of length 0 keeps its line
/// element.
///
/// @param transform  applied to every point; may be null
[[nodiscard]] TQ_EXPORT Path
CGPathCreateWithRoundedRectSafeCorners(const Rect& rect, double cornerWidth, double cornerHeight,
                                       const AffineTransform* transform = nullptr);

}  // namespace tq
