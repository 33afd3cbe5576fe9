tq_room(geometry
  TQAngle.cpp TQAngle.h
  TQAxis.h
  TQCorner.h
  TQFloatRange.cpp TQFloatRange.h
  TQRectAxis.cpp TQRectAxis.h
  TQRectEquality.cpp TQRectEquality.h
)
