tq_room(serialisation
  TQJSONCoding.cpp TQJSONCoding.h
  TQJSONDataEncoder.cpp TQJSONDataEncoder.h
  TQJSONDecoder.cpp TQJSONDecoder.h
  TQJSONEncoder.cpp TQJSONEncoder.h
  TQJSONFileEncoder.cpp TQJSONFileEncoder.h
  TQJSONURLEncoder.cpp TQJSONURLEncoder.h)
