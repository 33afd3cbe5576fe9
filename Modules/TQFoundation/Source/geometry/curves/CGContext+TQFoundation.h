#pragma once

/// @file CGContext+TQFoundation.h
/// Paths of common shapes.

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/curves/Path.h>

namespace tq {

/// A rect with its corners rounded by quarter ellipses, as cubics with kappa 0.5522847498.
///
/// The rect is standardised. Each radius is limited to 0...half the rect's extent on its axis; NaN
/// counts as 0. With either radius at 0 the path is the plain rect, and the null rect gives an
/// empty path. Otherwise there are ten elements: it starts in the middle of the maxX edge, runs
/// towards maxY and on around the rect, and ends with close; a side without length keeps its line.
///
/// @param transform  applied to every point; null for none
[[nodiscard]] TQ_EXPORT Path
CGPathCreateWithRoundedRectSafeCorners(const Rect& rect, double cornerWidth, double cornerHeight,
                                       const AffineTransform* transform = nullptr);

}  // namespace tq
