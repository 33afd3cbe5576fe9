#pragma once

/// @file TQPrimitiveFunctions.h
/// The free functions on numbers, points, sizes and rects, by theme; and lines for the log.
///
/// All of them are pure and may be called on any thread; all but the log functions allocate
/// nothing. Small ones are inline. A function that adds to a product lives in the library, so that
/// no caller's compiler can fuse the two: results do not depend on who calls.

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

/// Each writes one line to the system log: "x:%f y:%f w:%f h:%f", "w:%f h:%f", "x:%f y:%f". Raw
/// fields, six decimals, never by locale; NaN is "nan".
TQ_EXPORT void TQLogRect(const Rect& rect);
TQ_EXPORT void TQLogSize(Size size);
TQ_EXPORT void TQLogPoint(Point point);

}  // namespace tq
