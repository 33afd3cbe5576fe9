#pragma once

/// @file TQPrimitiveFunctions.h
/// Includes all functions on numbers, points, sizes and rects, and declares functions that log
/// them.
///
/// All these functions are pure and may be called on any thread. Except for the log functions they
/// allocate nothing. Small ones are inline. A function that adds to a product is compiled in the
/// library, so that a caller's compiler cannot fuse the two operations: results do not depend on
/// the caller's flags.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQAngle.h>
#include <TQFoundation/geometry/rects/TQAxis.h>
#include <TQFoundation/geometry/rects/TQCorner.h>
#include <TQFoundation/geometry/rects/TQFloatRange.h>
#include <TQFoundation/geometry/rects/TQRectAxis.h>
#include <TQFoundation/geometry/rects/TQRectConstraints.h>
#include <TQFoundation/geometry/rects/TQRectConstruction.h>
#include <TQFoundation/geometry/rects/TQRectCorners.h>
#include <TQFoundation/geometry/rects/TQRectEquality.h>
#include <TQFoundation/geometry/rects/TQRectFitting.h>
#include <TQFoundation/geometry/rects/TQRectMoving.h>
#include <TQFoundation/geometry/rects/TQRectOrder.h>
#include <TQFoundation/geometry/rects/TQRectRounding.h>
#include <TQFoundation/geometry/rects/TQRectSafe.h>
#include <TQFoundation/geometry/rects/TQSize.h>

namespace tq {

/// Each writes one line to the system log: "x:%f y:%f w:%f h:%f", "w:%f h:%f", "x:%f y:%f". They
/// print the raw fields with six decimals, independent of the locale. NaN is printed as "nan".
TQ_EXPORT void TQLogRect(const Rect& rect);
TQ_EXPORT void TQLogSize(Size size);
TQ_EXPORT void TQLogPoint(Point point);

}  // namespace tq
