tq_room(platform
  Base64.cpp Base64.h
  BinaryPropertyList.cpp
  CharacterCategory.cpp CharacterCategory.h
  FileError.cpp
  FileHandle.cpp FileHandle.h
  FileReading.cpp FileReading.h
  JSONDocument.cpp JSONDocument.h
  JSONFault.cpp
  JSONObjectBuilder.cpp
  JSONShape.cpp
  KeyedArchiver.cpp KeyedArchiver.h
  KeyedUnarchiver.cpp KeyedUnarchiver.h
  LibraryClasses.cpp
  ObjectMemory.cpp
  PlainLog.cpp PlainLog.h
  URL.cpp URL.h)
