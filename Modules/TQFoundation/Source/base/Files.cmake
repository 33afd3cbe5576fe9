tq_room(base
  AffineTransform.cpp AffineTransform.h
  Axis.h
  NumberText.cpp NumberText.h
  Point.h
  Rect.h
  TQAssert.cpp TQAssert.h
  TQExport.h
  TQMemory.h
  TQThreadSafety.h
  detail/StandardLibrary.cpp detail/StandardLibrary.h
  INTERNAL
  MakeRoom.h ThreadCancellation.h)
