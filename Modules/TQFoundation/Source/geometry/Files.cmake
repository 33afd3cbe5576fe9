tq_room(geometry
  AnchoredRect.cpp AnchoredRect.h
  AspectRatio.h
  CGContext+TQFoundation.cpp CGContext+TQFoundation.h
  GeometrySystem.cpp GeometrySystem.h
  Length.cpp Length.h
  Path.cpp Path.h
  Rounded.h
  Rounder.cpp Rounder.h
  Straight.h
  TQBezierSegment.cpp TQBezierSegment.h
  TQBezierSegmentIntersections.cpp
  TQBezierSegmentIterator.cpp TQBezierSegmentIterator.h
  TQBezierSegmentLineIntersections.cpp
  TQLine.cpp TQLine.h
  TQOrthogonalLine.h
  TQPolynomial.cpp TQPolynomial.h
  TQRounder.cpp TQRounder.h
  VectorAlgebra.cpp VectorAlgebra.h
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
  rects/detail/FixedText.h)
