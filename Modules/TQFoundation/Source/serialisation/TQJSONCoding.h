#pragma once

/// @file TQJSONCoding.h
/// The archive format's constants, and what every value answers while it is encoded.
///
/// A class of one's own overrides a step by having a member of the step's name (see Class); the
/// functions here call that member, else they do what the kind of value asks for.

#include <cmath>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/String.h>

namespace tq {

class TQJSONEncoder;

/// Names of members that the format keeps for itself: an object's class, an archive in another
/// form, that archive's root, and its bytes.
inline constexpr std::string_view TQJSONClassKey = "_class";
inline constexpr std::string_view TQJSONRawNSArchiveKey = "_archive";
inline constexpr std::string_view TQJSONRawNSArchiveRootKey = "root";
inline constexpr std::string_view TQJSONRawDataKey = "_data";

/// Error domains: the host application's prefix and the class.
inline constexpr std::string_view TQJSONEncoderError = "com.korvan.TQJSONEncoder";
inline constexpr std::string_view TQJSONDataEncoderError = "com.korvan.TQJSONDataEncoder";
inline constexpr std::string_view TQJSONFileEncoderError = "com.korvan.TQJSONFileEncoder";
inline constexpr std::string_view TQJSONDecoderError = "com.korvan.TQJSONDecoder";

/// The object to encode in this one's place; none means the object itself.
[[nodiscard]] TQ_EXPORT Ref<Object> replacementObjectForJSONEncoder(const Object& object,
                                                                    TQJSONEncoder& encoder);

/// "{" and the class record; "[" for an array.
TQ_EXPORT void startEncodingObject(const Object& object, TQJSONEncoder& encoder);

/// "}"; "]" for an array.
TQ_EXPORT void finishEncodingObject(const Object& object, TQJSONEncoder& encoder);

/// `"_class":"<name>"`: the alias registered for the object's coding class, else that class's name.
TQ_EXPORT void encodeClassInfoForJSON(const Object& object, TQJSONEncoder& encoder);

/// The whole value in its own form, for everything that is not a structured object; the fallback
/// archive for what has no form of its own.
TQ_EXPORT void encodeAsRAWArchive(const Object& object, TQJSONEncoder& encoder);

/// The value as a dictionary key. Well-formed strings and numbers can; anything else is error 2.
TQ_EXPORT void encodeAsKey(const Object& object, TQJSONEncoder& encoder);

/// The string with quotation mark, backslash, slash and control characters escaped as JSON wants
/// them (and the slash besides); the string itself when it needs none. Unpaired surrogates pass
/// through.
[[nodiscard]] TQ_EXPORT Ref<String> safeJSONValue(const String& string);

/// The characters that make a string go through escaping: the general categories Cc and Cf, and the
/// eight in "\"\\/\n\b\f\r\t". Those of Cf need no escape and come through unchanged.
struct TQJSONAwkwardCharacters {
  /// True when the character is one of the set.
  [[nodiscard]] TQ_EXPORT static bool contains(char32_t character) noexcept;
};

/// The value as archives hold it: 0 for NaN and for magnitudes below the smallest normal
/// single-precision number, the largest single-precision number with the value's sign for
/// magnitudes above it, else the value itself. Never -0.
[[nodiscard]] inline double TQJSONClampedDouble(double value) noexcept {
  constexpr double kSmallest = 1.1754943508222875e-38;
  constexpr double kLargest = 3.4028234663852886e+38;
  const double magnitude = std::fabs(value);
  if (!(magnitude >= kSmallest)) return 0;
  return magnitude > kLargest ? std::copysign(kLargest, value) : value;
}

}  // namespace tq
