#pragma once

/// @file ReadingLimits.h
/// Limits of what is read from untrusted sources, and the errors for exceeding them.

#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Error.h>

namespace tq {

/// How much a reader accepts. TQJSONDecoder, KeyedUnarchiver, the decompressing functions and
/// URLSession take one. The defaults accept every real document; a host that knows its documents
/// can set lower values.
struct ReadingLimits {
  /// The longest JSON text that can be read, in bytes.
  static constexpr std::uint64_t kLongestText = std::numeric_limits<std::uint32_t>::max();

  /// Bytes of JSON text; values above kLongestText have no effect.
  std::uint64_t textBytes = kLongestText;
  /// Values of a JSON text: containers, strings (each key too), numbers, true, false and null. For
  /// a keyed archive: entries of its table of objects.
  std::uint64_t values = std::numeric_limits<std::uint64_t>::max();
  /// Nested containers; values below 1 and above 512 are taken as 1 and 512. For a JSON text that
  /// is too deep, the error is the parser's.
  int depth = 512;
  /// A keyed archive can refer to an object many times, and code that follows the references, such
  /// as an encoder, visits the object each time. This is the largest number of values, and of bytes
  /// of their text and data, that such a walk may visit for each byte of the archive.
  ///
  /// The default, 256, permits 1000 uses of an object that takes a quarter of its archive.
  std::uint64_t unfoldedPerByte = 256;
  /// Bytes that compressed bytes expand to, and bytes of the body of an HTTP response that a task
  /// collects in memory. For a body that is too long, the error is the session's.
  std::uint64_t decompressedBytes = std::numeric_limits<std::uint64_t>::max();
};
static_assert(std::is_trivially_copyable_v<ReadingLimits>);

/// The domain of the errors for exceeded limits. Their codes are the values of ReadingLimit.
inline constexpr std::string_view ReadingLimitsError = "com.korvan.ReadingLimits";

/// A member of ReadingLimits.
enum class ReadingLimit : std::int64_t {
  textBytes = 1,
  values = 2,
  depth = 3,
  unfoldedPerByte = 4,
  decompressedBytes = 5,
};

/// Returns the error for exceeding a limit, with a sentence for users.
[[nodiscard]] TQ_EXPORT Ref<Error> readingLimitError(ReadingLimit limit);

}  // namespace tq
