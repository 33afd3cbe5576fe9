tq_room(environment
  LRVariant.cpp LRVariant.h
  TQLogging.cpp TQLogging.h
  TQPerformanceTimer.cpp TQPerformanceTimer.h
  TQVersion.cpp TQVersion.h)
