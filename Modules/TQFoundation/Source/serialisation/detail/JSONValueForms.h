#pragma once

/// @file JSONValueForms.h
/// The JSON forms of the value classes.

#include <string_view>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>
#include <TQFoundation/serialisation/TQJSONFormat.h>

namespace tq::detail {

/// Returns the steps by which values of a kind are written. A null entry means the default step.
[[nodiscard]] const JSONCoding& jsonFormOf(ObjectKind kind) noexcept;

/// Returns the steps of a value class, by which its objects are also read. All entries are null for
/// a class that is not a value class or that archives never name.
[[nodiscard]] const JSONCoding& jsonFormOf(const Class& theClass) noexcept;

/// Writes the object as a keyed archive in base64. An object that does not support keyed archives
/// is error 1.
void encodeKeyedArchive(const Object& object, TQJSONEncoder& encoder);

/// Records error 2: the object is not a valid key.
void refuseAsKey(const Object& object, TQJSONEncoder& encoder);

/// Returns whether a member of this name changes what an object is read as.
[[nodiscard]] inline bool isReservedKey(std::string_view key) noexcept {
  return key.starts_with('_') &&
         (key == TQJSONClassKey || key == TQJSONRawNSArchiveKey || key == TQJSONRawDataKey);
}

/// Logs, once for each reserved key, that the host has written it as a member.
void logReservedKey(std::string_view key);

/// Writes a well-formed string, a number or null, which is the form of each.
/// @return false for any other object; nothing is written
inline bool encodeAtom(const Object& object, TQJSONEncoder& encoder) {
  switch (object.kind()) {
    case ObjectKind::string: {
      const auto& string = static_cast<const String&>(object);
      if (!string.isWellFormed()) return false;
      encoder.encodeText(string.view());
      return true;
    }
    case ObjectKind::number:
      encoder.encodeNumber(static_cast<const Number&>(object).value());
      return true;
    case ObjectKind::null:
      encoder.write("null");
      return true;
    default:
      return false;
  }
}

}  // namespace tq::detail
