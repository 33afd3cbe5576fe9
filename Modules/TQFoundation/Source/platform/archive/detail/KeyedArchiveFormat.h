#pragma once

/// @file KeyedArchiveFormat.h
/// The names and numbers of the keyed-archive format.

#include <cstdint>
#include <string>
#include <string_view>

// An archive is a property list:
//   {$version, $archiver, $top: {root: UID}, $objects: ["$null", …]}
// A UID is an index into $objects; 0 means null. Strings, numbers and data are values there.
// Any other object is a record {key: value…, $class: UID}, and a class is a record
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

// Boxed structures. Those that the platform refuses are kept as type signature and bytes.
inline constexpr std::string_view kValueForm = "NS.special";
inline constexpr std::string_view kPoint = "NS.pointval";
inline constexpr std::string_view kSize = "NS.sizeval";
inline constexpr std::string_view kRect = "NS.rectval";
inline constexpr std::string_view kRangeLocation = "NS.rangeval.location";
inline constexpr std::string_view kRangeLength = "NS.rangeval.length";
inline constexpr std::string_view kOtherType = "TQ.type";
inline constexpr std::string_view kOtherBytes = "TQ.bytes";
enum class ValueForm : std::int64_t { point = 1, size = 2, rect = 3, range = 4 };

/// Returns a host's key as it is written in a record: the format reserves keys that begin with "$".
[[nodiscard]] inline std::string escapedKey(std::string_view key) {
  return key.starts_with('$') ? "$" + std::string(key) : std::string(key);
}

}  // namespace tq::detail::keyed
