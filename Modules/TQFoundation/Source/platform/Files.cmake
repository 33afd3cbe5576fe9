tq_room(platform
  Base64.cpp Base64.h
  BinaryPropertyList.cpp
  FileError.cpp
  FileHandle.cpp FileHandle.h
  FileReading.cpp FileReading.h
  KeyedArchiver.cpp KeyedArchiver.h
  KeyedUnarchiver.cpp KeyedUnarchiver.h
  LibraryClasses.cpp
  ObjectMemory.cpp
  PlainLog.cpp PlainLog.h
  URL.cpp URL.h)
