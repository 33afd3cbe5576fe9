#pragma once

/// @file KeyedUnarchiver.h
/// Reads object graphs from keyed archives.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/ReadingLimits.h>
#include <TQFoundation/objects/UnreadContent.h>
#include <TQFoundation/objects/Weak.h>

namespace tq {

namespace detail::keyed {
struct ValueRecord;
}

/// Reads archives of KeyedArchiver, and archives of the same format from other writers. Mutable
/// strings are read as String, mutable sets as Set.
///
/// An object of a host class is created empty, and then filled by its initWithCoder; objects in it
/// can refer back to it meanwhile.
///
/// The bytes are never trusted:
/// - All offsets and counts are checked. Objects nest at most KeyedArchiver::kMaximumDepth deep.
/// - Each byte is read at most kMostReadings times, even if the file shares its parts, and takes
///   at most about 200 bytes of memory, without host objects. Comparing 16 bytes of a key or
///   of a member of a set counts as reading one.
/// - The values and bytes that code following all references would visit are counted while they are
///   read. Beyond ReadingLimits::unfoldedPerByte the archive is refused. So the cost of such code,
///   for example of encoding the objects as JSON, is bounded by the size of the archive too.
/// - Only decodeWeakObjectForKey() returns an object that is still being read, so a file cannot
///   create a cycle of strong references.
/// - After an error in the archive, or an exception while an object is read, every key is treated
///   as absent, and the result is null, even if the host continues.
///
/// Created by unarchiveRootObject(), which passes it to initWithCoder. One thread.
class TQ_EXPORT KeyedUnarchiver {
 public:
  /// How many times each byte of an archive may be read.
  static constexpr std::size_t kMostReadings = 16;

  /// Returns whether objects of a class may be created. If it throws, the result is null, and the
  /// exception is dropped. std::bad_alloc propagates.
  using ClassFilter = std::function<bool(const Class&)>;

  /// Returns the object with the key "root".
  /// @param error  receives null, or the error if a limit was exceeded (see ReadingLimits). The
  ///               other failures have no error.
  /// @param mayInstantiate  if not empty, called for each class that the archive names, before an
  ///         object of it is created; false makes the result null. It may be called more than once
  ///         for a class.
  /// @param unread  if not null, receives in addition the first unknown class, and the members of
  ///         host objects that no initWithCoder asked for, without paths
  /// @return null if the bytes are not an archive, contain an unknown class or an invalid object,
  ///         or exceed a limit, or if an initWithCoder returns false or throws
  /// @throws std::bad_alloc
  [[nodiscard]] static Ref<Object> unarchiveRootObject(std::span<const std::byte> archive,
                                                       Ref<Error>* error = nullptr,
                                                       const ReadingLimits& limits = {},
                                                       const ClassFilter& mayInstantiate = {},
                                                       UnreadContent* unread = nullptr);

  KeyedUnarchiver(const KeyedUnarchiver&) = delete;
  KeyedUnarchiver& operator=(const KeyedUnarchiver&) = delete;

  /// Returns true if the object being read has a value for the key, which may be null.
  [[nodiscard]] bool containsValueForKey(std::string_view key) const;

  /// Returns null for an absent key, and if the value is null. A value that is not an object, such
  /// as one of encodeInteger(), makes the archive invalid: use the function that matches.
  [[nodiscard]] Ref<Object> decodeObjectForKey(std::string_view key);

  /// The same; returns null for an object of another class.
  template <class T>
  [[nodiscard]] Ref<T> decodeObjectOfClass(std::string_view key) {
    return refCast<T>(decodeObjectForKey(key));
  }

  /// For references that must not own their object. Only this function may return an object that is
  /// still being read, such as the parent of the object being read. Use the object only after
  /// unarchiving; until then an array has Null in place of elements that are not read yet.
  template <class T>
  [[nodiscard]] Weak<T> decodeWeakObjectForKey(std::string_view key) {
    return Weak<T>(refCast<T>(decodeReferenceForKey(key)));
  }

  /// Each returns the number for the key, converted from any kind (see NumberValue); 0 or false for
  /// an absent key, an object, and bytes.
  [[nodiscard]] bool decodeBoolForKey(std::string_view key);
  [[nodiscard]] std::int64_t decodeIntegerForKey(std::string_view key);
  [[nodiscard]] float decodeFloatForKey(std::string_view key);
  [[nodiscard]] double decodeDoubleForKey(std::string_view key);

  /// Returns bytes of the archive, valid until initWithCoder returns; empty for an absent key.
  [[nodiscard]] std::span<const std::byte> decodeBytesForKey(std::string_view key);

 private:
  friend struct detail::keyed::ValueRecord;
  class [[gnu::visibility("hidden")]] Reader;
  explicit KeyedUnarchiver(Reader& reader) noexcept : reader_(reader) {}
  [[nodiscard]] Ref<Object> decodeReferenceForKey(std::string_view key);

  Reader& reader_;
};

}  // namespace tq
