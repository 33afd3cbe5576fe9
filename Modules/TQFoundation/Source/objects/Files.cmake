tq_room(objects
  Array.cpp Array.h
  ArrayConveniences.cpp ArrayConveniences.h
  ChangeWatch.h
  Class.cpp Class.h
  Data.cpp Data.h
  Date.cpp Date.h
  Dictionary.cpp Dictionary.h
  Error.cpp Error.h
  Exception.cpp Exception.h
  GeometryText.cpp GeometryText.h
  MapTable.cpp MapTable.h
  Null.cpp Null.h
  Number.cpp Number.h
  Object.cpp Object.h
  ReadingLimits.cpp ReadingLimits.h
  Ref.h
  Set.cpp Set.h
  String.cpp String.h
  URL.cpp URL.h
  UUID.cpp UUID.h
  UnreadContent.cpp UnreadContent.h
  Value.cpp Value.h
  Weak.cpp Weak.h
  INTERNAL
  Construction.h
  DictionaryKeys.cpp DictionaryKeys.h
  Equality.cpp
  FilledData.h
  Hash.cpp Hash.h
  TextWords.h
  UTF.cpp UTF.h
  ValueNumbers.cpp)
