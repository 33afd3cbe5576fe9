tq_room(platform
  Base64.cpp Base64.h
  FileError.cpp
  FileHandle.cpp FileHandle.h
  FileReading.cpp FileReading.h
  ObjectMemory.cpp
  PlainLog.cpp PlainLog.h
  URL.cpp URL.h)
