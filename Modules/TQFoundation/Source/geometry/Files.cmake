tq_room(geometry
  curves/CGContext+TQFoundation.cpp curves/CGContext+TQFoundation.h
  curves/Path.cpp curves/Path.h
  curves/TQBezierSegment.cpp curves/TQBezierSegment.h
  curves/TQBezierSegmentIntersections.cpp
  curves/TQBezierSegmentIterator.cpp curves/TQBezierSegmentIterator.h
  curves/TQBezierSegmentLineIntersections.cpp
  curves/TQBezierSegmentOverlap.cpp
  curves/TQPolynomial.cpp curves/TQPolynomial.h
  curves/detail/BezierAxis.h
  curves/detail/BezierBounds.h
  curves/detail/BezierOverlap.h
  curves/detail/BezierSplit.h
  lines/Straight.h
  lines/TQLine.cpp lines/TQLine.h
  lines/TQOrthogonalLine.h
  rects/FixedText.cpp
  rects/TQAngle.cpp rects/TQAngle.h
  rects/TQAxis.h
  rects/TQCorner.h
  rects/TQFloatRange.cpp rects/TQFloatRange.h
  rects/TQPrimitiveFunctions.cpp rects/TQPrimitiveFunctions.h
  rects/TQRect.cpp rects/TQRect.h
  rects/TQRectAxis.cpp rects/TQRectAxis.h
  rects/TQRectConstraints.cpp rects/TQRectConstraints.h
  rects/TQRectConstruction.h
  rects/TQRectCorners.cpp rects/TQRectCorners.h
  rects/TQRectEquality.h
  rects/TQRectFitting.cpp rects/TQRectFitting.h
  rects/TQRectMoving.h
  rects/TQRectOrder.cpp rects/TQRectOrder.h
  rects/TQRectRounding.cpp rects/TQRectRounding.h
  rects/TQRectSafe.h
  rects/TQSize.cpp rects/TQSize.h
  rects/detail/FixedText.h
  values/AnchoredRect.cpp values/AnchoredRect.h
  values/AspectRatio.h
  values/GeometrySystem.cpp values/GeometrySystem.h
  values/Length.cpp values/Length.h
  values/Rounded.h
  values/Rounder.cpp values/Rounder.h
  values/TQRounder.cpp values/TQRounder.h
  values/VectorAlgebra.cpp values/VectorAlgebra.h)
