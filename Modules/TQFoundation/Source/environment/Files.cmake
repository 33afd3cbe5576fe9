tq_room(environment
  LRVariant.cpp LRVariant.h
  Preference.h
  TQKorvanInfo.cpp TQKorvanInfo.h
  TQLogging.cpp TQLogging.h
  TQPerformanceTimer.cpp TQPerformanceTimer.h
  TQStringUniquer.cpp TQStringUniquer.h
  TQVersion.cpp TQVersion.h)
