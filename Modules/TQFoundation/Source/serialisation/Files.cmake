tq_room(serialisation
  JSONValueForms.cpp
  JSONWalk.cpp
  TQCompression.cpp TQCompression.h
  TQDigests.cpp TQDigests.h
  TQFNV1aBuilder.cpp TQFNV1aBuilder.h
  TQJSONCoding.cpp TQJSONCoding.h
  TQJSONDataEncoder.cpp TQJSONDataEncoder.h
  TQJSONDecoder.cpp TQJSONDecoder.h
  TQJSONEncoder.cpp TQJSONEncoder.h
  TQJSONFileEncoder.cpp TQJSONFileEncoder.h
  TQJSONFormat.cpp TQJSONFormat.h
  TQJSONURLEncoder.cpp TQJSONURLEncoder.h
  detail/JSONValueForms.h
  detail/JSONWalk.h)
