tq_room(environment
  LRVariant.cpp LRVariant.h
  TQVersion.cpp TQVersion.h)
