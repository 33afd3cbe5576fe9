#pragma once

/// @file KeyedArchiveFormat.h
/// What the writer and the reader of keyed archives must agree on.

#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Set.h>

// An archive is a property list:
//   {$version, $archiver, $top: {root: UID}, $objects: ["$null", …]}
// Objects are named by their place in $objects, 0 being none. Strings, numbers and data stand there
// themselves; anything else is a record {key: value…, $class: UID}, and a class is a record
// {$classname, $classes: [name, parent…, "NSObject"]}.

namespace tq::detail::keyed {

inline constexpr std::uint64_t kVersion = 100000;
inline constexpr std::string_view kArchiverName = "NSKeyedArchiver";
inline constexpr std::string_view kNone = "$null";

inline constexpr std::string_view kVersionKey = "$version";
inline constexpr std::string_view kArchiverKey = "$archiver";
inline constexpr std::string_view kTopKey = "$top";
inline constexpr std::string_view kObjectsKey = "$objects";
inline constexpr std::string_view kRootKey = "root";
inline constexpr std::string_view kClassKey = "$class";
inline constexpr std::string_view kClassNameKey = "$classname";
inline constexpr std::string_view kClassesKey = "$classes";

inline constexpr std::string_view kRootClass = "NSObject";

inline constexpr std::string_view kElements = "NS.objects";
inline constexpr std::string_view kKeys = "NS.keys";
inline constexpr std::string_view kText = "NS.string";
inline constexpr std::string_view kBytes = "NS.data";
inline constexpr std::string_view kTime = "NS.time";
inline constexpr std::string_view kUUIDBytes = "NS.uuidbytes";
inline constexpr std::string_view kURLBase = "NS.base";
inline constexpr std::string_view kURLText = "NS.relative";
inline constexpr std::string_view kErrorDomain = "NSDomain";
inline constexpr std::string_view kErrorCode = "NSCode";
inline constexpr std::string_view kErrorInfo = "NSUserInfo";

// Boxed structures. What the platform has no form for is kept as its signature and its bytes.
inline constexpr std::string_view kValueForm = "NS.special";
inline constexpr std::string_view kPoint = "NS.pointval";
inline constexpr std::string_view kSize = "NS.sizeval";
inline constexpr std::string_view kRect = "NS.rectval";
inline constexpr std::string_view kRangeLocation = "NS.rangeval.location";
inline constexpr std::string_view kRangeLength = "NS.rangeval.length";
inline constexpr std::string_view kOtherType = "TQ.type";
inline constexpr std::string_view kOtherBytes = "TQ.bytes";
enum class ValueForm : std::int64_t { point = 1, size = 2, rect = 3, range = 4 };

/// A host's key as it stands in a record: the format keeps keys that begin with "$" to itself.
[[nodiscard]] inline std::string escapedKey(std::string_view key) {
  return key.starts_with('$') ? "$" + std::string(key) : std::string(key);
}

/// Whether equality of `object` goes into what it holds.
[[nodiscard]] inline bool isContainer(const Object& object) noexcept {
  const Class& record = object.objectClass();
  return object.kind() == ObjectKind::array || object.kind() == ObjectKind::dictionary ||
         &record == &classOf<Set> || &record == &classOf<Error>;
}

}  // namespace tq::detail::keyed
