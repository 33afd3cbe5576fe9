#pragma once

/// @file KeyedUnarchiver.h
/// Object graphs from the bytes of a keyed archive.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>

namespace tq {

namespace detail::keyed {
struct ValueRecord;
}

/// Reads what KeyedArchiver writes, and archives of the same format that were written elsewhere.
/// Mutable strings are read as String, mutable sets as Set.
///
/// An object of a host class is made empty and known from then on, then filled by initWithCoder, so
/// that objects below it can refer back to it.
///
/// The bytes are never trusted:
/// - everything they say is checked against their length; objects nest at most
///   KeyedArchiver::kMaximumDepth deep;
/// - each byte is looked at kMostReadings times at the most, however the file shares its parts, and
///   takes at most some 200 bytes of memory (host objects aside); comparing 16 bytes of a key or of
///   a member of a set counts as looking at one;
/// - a reference back to an object that is still being read is answered by decodeWeakObjectForKey()
///   alone, so that no cycle of strong references can come out of a file;
/// - once the archive has turned out to be bad, or an object's reading has thrown, every key is
///   answered as an absent one, and nothing comes out, though a host goes on.
///
/// Made by unarchiveRootObject(), and lent to initWithCoder. One thread.
class TQ_EXPORT KeyedUnarchiver {
 public:
  /// Most times that any byte of an archive is looked at.
  static constexpr std::size_t kMostReadings = 16;

  /// The object under the key "root".
  /// @return none when the bytes are not an archive, hold a class that is not known or an object
  ///         that does not make sense, or an initWithCoder says no or throws; nothing is half-read
  /// @throws std::bad_alloc
  [[nodiscard]] static Ref<Object> unarchiveRootObject(std::span<const std::byte> archive);

  KeyedUnarchiver(const KeyedUnarchiver&) = delete;
  KeyedUnarchiver& operator=(const KeyedUnarchiver&) = delete;

  /// True when the object being read has a value under the key, be it none.
  [[nodiscard]] bool containsValueForKey(std::string_view key) const;

  /// None for an absent key and for none.
  [[nodiscard]] Ref<Object> decodeObjectForKey(std::string_view key);

  /// The same, none for an object of another class.
  template <class T>
  [[nodiscard]] Ref<T> decodeObjectOfClass(std::string_view key) {
    return refCast<T>(decodeObjectForKey(key));
  }

  /// For references that must not hold what they lead to: this alone may also answer an object that
  /// is still being read, such as the parent of the one that asks. Look at it only after reading;
  /// an array among them holds Null where elements are yet to come.
  template <class T>
  [[nodiscard]] Weak<T> decodeWeakObjectForKey(std::string_view key) {
    return Weak<T>(refCast<T>(decodeReferenceForKey(key)));
  }

  /// Numbers of any kind are converted (see NumberValue); 0 and false for an absent key.
  [[nodiscard]] bool decodeBoolForKey(std::string_view key);
  [[nodiscard]] std::int64_t decodeIntegerForKey(std::string_view key);
  [[nodiscard]] float decodeFloatForKey(std::string_view key);
  [[nodiscard]] double decodeDoubleForKey(std::string_view key);

  /// Lent from the archive until initWithCoder returns; empty for an absent key.
  [[nodiscard]] std::span<const std::byte> decodeBytesForKey(std::string_view key);

 private:
  friend struct detail::keyed::ValueRecord;
  class [[gnu::visibility("hidden")]] Reader;
  explicit KeyedUnarchiver(Reader& reader) noexcept : reader_(reader) {}
  [[nodiscard]] Ref<Object> decodeReferenceForKey(std::string_view key);

  Reader& reader_;
};

}  // namespace tq
