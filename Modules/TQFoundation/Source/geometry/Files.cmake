tq_room(geometry
  AnchoredRect.cpp AnchoredRect.h
  AspectRatio.h
  CGContext+TQFoundation.cpp CGContext+TQFoundation.h
  FixedText.cpp
  GeometrySystem.cpp GeometrySystem.h
  Length.cpp Length.h
  Path.cpp Path.h
  Rounded.h
  Rounder.cpp Rounder.h
  Straight.h
  TQAngle.cpp TQAngle.h
  TQAxis.h
  TQBezierSegment.cpp TQBezierSegment.h
  TQBezierSegmentIntersections.cpp
  TQBezierSegmentIterator.cpp TQBezierSegmentIterator.h
  TQBezierSegmentLineIntersections.cpp
  TQCorner.h
  TQFloatRange.cpp TQFloatRange.h
  TQLine.cpp TQLine.h
  TQOrthogonalLine.h
  TQPolynomial.cpp TQPolynomial.h
  TQPrimitiveFunctions.cpp TQPrimitiveFunctions.h
  TQRect.cpp TQRect.h
  TQRectAxis.cpp TQRectAxis.h
  TQRectConstraints.cpp TQRectConstraints.h
  TQRectConstruction.h
  TQRectCorners.cpp TQRectCorners.h
  TQRectEquality.h
  TQRectFitting.cpp TQRectFitting.h
  TQRectMoving.h
  TQRectOrder.cpp TQRectOrder.h
  TQRectRounding.cpp TQRectRounding.h
  TQRectSafe.h
  TQRounder.cpp TQRounder.h
  TQSize.cpp TQSize.h
  VectorAlgebra.cpp VectorAlgebra.h
  detail/FixedText.h)
