tq_room(platform
  ObjectMemory.cpp
  PlainLog.cpp PlainLog.h)
