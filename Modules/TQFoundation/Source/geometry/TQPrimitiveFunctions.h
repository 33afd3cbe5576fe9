#pragma once

/// @file TQPrimitiveFunctions.h
/// The free functions on numbers, points, sizes and rects, by theme; and lines for the log.
///
/// All of them are pure and may be called on any thread; all but the log functions allocate
/// nothing. Small ones are inline. A function that adds to a product lives in the library, so that
/// no caller's compiler can fuse the two: results do not depend on who calls.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/TQAngle.h>
#include <TQFoundation/geometry/TQAxis.h>
#include <TQFoundation/geometry/TQCorner.h>
#include <TQFoundation/geometry/TQFloatRange.h>
#include <TQFoundation/geometry/TQRectAxis.h>
#include <TQFoundation/geometry/TQRectConstraints.h>
#include <TQFoundation/geometry/TQRectConstruction.h>
#include <TQFoundation/geometry/TQRectCorners.h>
#include <TQFoundation/geometry/TQRectEquality.h>
#include <TQFoundation/geometry/TQRectFitting.h>
#include <TQFoundation/geometry/TQRectMoving.h>
#include <TQFoundation/geometry/TQRectOrder.h>
#include <TQFoundation/geometry/TQRectRounding.h>
#include <TQFoundation/geometry/TQRectSafe.h>
#include <TQFoundation/geometry/TQSize.h>

namespace tq {

/// Each writes one line to the system log: "x:%f y:%f w:%f h:%f", "w:%f h:%f", "x:%f y:%f". Raw
/// fields, six decimals, never by locale; NaN is "nan".
TQ_EXPORT void TQLogRect(const Rect& rect);
TQ_EXPORT void TQLogSize(Size size);
TQ_EXPORT void TQLogPoint(Point point);

}  // namespace tq
