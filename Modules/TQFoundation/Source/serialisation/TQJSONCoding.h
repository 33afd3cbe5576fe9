#pragma once

/// @file TQJSONCoding.h
/// The steps in which an object is written to a JSON archive.
///
/// Each step calls the object's class if the class has a member function of the step's name (see
/// Class). Otherwise it uses the form of the value class if there is one, else the default.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/serialisation/TQJSONFormat.h>

namespace tq {

class TQJSONEncoder;

/// Returns the object to encode in the place of `object`; null means `object` itself.
[[nodiscard]] TQ_EXPORT Ref<Object> replacementObjectForJSONEncoder(const Object& object,
                                                                    TQJSONEncoder& encoder);

/// Writes "{" and the class record; "[" for an array.
TQ_EXPORT void startEncodingObject(const Object& object, TQJSONEncoder& encoder);

/// Writes "}"; "]" for an array.
TQ_EXPORT void finishEncodingObject(const Object& object, TQJSONEncoder& encoder);

/// Writes `"_class":"<name>"`: the alias of the object's coding class, else that class's name.
TQ_EXPORT void encodeClassInfoForJSON(const Object& object, TQJSONEncoder& encoder);

/// Writes an object that is not structured: a value in the form of its class, any other object as a
/// keyed archive. An object that does not support keyed archives is error 1.
TQ_EXPORT void encodeAsRAWArchive(const Object& object, TQJSONEncoder& encoder);

/// Writes a dictionary key: a well-formed string or a number. Any other object is error 2.
TQ_EXPORT void encodeAsKey(const Object& object, TQJSONEncoder& encoder);

}  // namespace tq
