tq_room(environment
  LRVariant.cpp LRVariant.h
  Preference.h
  TQLogging.cpp TQLogging.h
  TQPerformanceTimer.cpp TQPerformanceTimer.h
  TQVersion.cpp TQVersion.h)
