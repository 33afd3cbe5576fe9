#pragma once

/// @file TQJSONFormat.h
/// The JSON archive format: reserved keys, error domains, clamping and escaping.

#include <cmath>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/String.h>

namespace tq {

/// The reserved keys: an object's class, an archive in another form, the root of that archive, and
/// bytes.
inline constexpr std::string_view TQJSONClassKey = "_class";
inline constexpr std::string_view TQJSONRawNSArchiveKey = "_archive";
inline constexpr std::string_view TQJSONRawNSArchiveRootKey = "root";
inline constexpr std::string_view TQJSONRawDataKey = "_data";

/// Error domains: the host application's prefix and the class.
inline constexpr std::string_view TQJSONEncoderError = "com.korvan.TQJSONEncoder";
inline constexpr std::string_view TQJSONDataEncoderError = "com.korvan.TQJSONDataEncoder";
inline constexpr std::string_view TQJSONFileEncoderError = "com.korvan.TQJSONFileEncoder";
inline constexpr std::string_view TQJSONDecoderError = "com.korvan.TQJSONDecoder";

/// Returns the value as archives hold it: 0 for NaN and for magnitudes below the smallest normal
/// single-precision number, the largest single-precision number with the value's sign for
/// magnitudes above it, else the value itself. Never -0.
[[nodiscard]] inline double TQJSONClampedDouble(double value) noexcept {
  constexpr double kSmallest = 1.1754943508222875e-38;
  constexpr double kLargest = 3.4028234663852886e+38;
  const double magnitude = std::fabs(value);
  if (!(magnitude >= kSmallest)) return 0;
  return magnitude > kLargest ? std::copysign(kLargest, value) : value;
}

/// Returns the string with quotation marks, backslashes, slashes and control characters escaped;
/// the string itself if it has none of them. JSON does not require the escape of the slash.
/// Unpaired surrogates are unchanged.
[[nodiscard]] TQ_EXPORT Ref<String> safeJSONValue(const String& string);

/// The characters whose presence causes a string to be escaped: the general categories Cc and Cf,
/// and the eight in "\"\\/\n\b\f\r\t". Those of Cf need no escape and are unchanged.
struct TQJSONAwkwardCharacters {
  /// Returns whether the character is in the set.
  [[nodiscard]] TQ_EXPORT static bool contains(char32_t character) noexcept;
};

}  // namespace tq
