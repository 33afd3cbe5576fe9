#pragma once

/// @file KeyedArchiver.h
/// Writes object graphs as keyed archives.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>

namespace tq {

namespace detail::keyed {
struct ValueRecord;
}

/// Writes a graph of objects in the platform's keyed-archive format, a binary property list. Shared
/// references stay shared, and cycles are possible.
///
/// Supported are String (also ill-formed text), Number, Data, MutableData, Array, MutableArray,
/// Dictionary, MutableDictionary, Set, Null, Date, Value, Error, UUID and URL, in the platform's
/// own records. Boxed structures that the platform refuses have a record defined by this library.
/// Objects of a class with `encodeWithCoder` and `initWithCoder` are written and read by these
/// functions. A class that is not registered is logged, once.
///
/// - An object is written once, and so is each number value. A number is read back as a boolean, a
///   64-bit integer, a float or a double that is equal to it.
/// - The same graph always produces the same bytes, and so does the graph that KeyedUnarchiver
///   reads.
/// - A cycle must pass through an object of a host class that reads its reference with
///   KeyedUnarchiver::decodeWeakObjectForKey(). A cycle of containers alone could never be released
///   and is refused.
/// - A container must not be the key of a dictionary or the member of a set: comparing containers
///   from outside can take unlimited time.
/// - encodeWithCoder must not change an array or a dictionary that is being written: the archive
///   fails.
/// - KeyedUnarchiver reads every archive with sufficient ReadingLimits. Its default refuses a graph
///   that would be more than 256 times as long without sharing, such as an array of 300 references
///   to one large Data.
///
/// Created by archivedDataWithRootObject(), which passes it to encodeWithCoder. One thread.
class TQ_EXPORT KeyedArchiver {
 public:
  /// Maximum depth of nested objects; the root is at depth 1. Strings, numbers and data that is not
  /// mutable do not count.
  static constexpr int kMaximumDepth = 512;

  /// Returns the archive of `object`, with the key "root".
  /// @throws Exception (InvalidArgumentException) for an unsupported object (see
  ///         supportsKeyedCoding()), a graph deeper than kMaximumDepth, a cycle of containers
  ///         alone, a container that changes while it is written, text that is not UTF-8 where the
  ///         format requires text, and a URL that cannot be made from its own text. Exceptions from
  ///         encodeWithCoder pass through.
  [[nodiscard]] static Ref<Data> archivedDataWithRootObject(const Object& object);

  /// Returns true if the object's class is supported. Objects in a container are not checked.
  [[nodiscard]] static bool supportsKeyedCoding(const Object& object) noexcept;

  KeyedArchiver(const KeyedArchiver&) = delete;
  KeyedArchiver& operator=(const KeyedArchiver&) = delete;

  /// Each function writes a value of the object being encoded. Keys must be well-formed UTF-8. If a
  /// key is used twice, the first value is the one that is read.
  /// After one of them has thrown, the archive has failed even if the host catches the exception:
  /// later calls and archivedDataWithRootObject() throw it again.
  void encodeObject(const Object* object, std::string_view forKey);  ///< null is read back as null
  template <class T>
  void encodeObject(const Ref<T>& object, std::string_view forKey) {
    encodeObject(object.get(), forKey);
  }
  void encodeBool(bool value, std::string_view forKey);
  void encodeInteger(std::int64_t value, std::string_view forKey);
  void encodeFloat(float value, std::string_view forKey);
  void encodeDouble(double value, std::string_view forKey);
  void encodeBytes(std::span<const std::byte> bytes, std::string_view forKey);

 private:
  friend struct detail::keyed::ValueRecord;
  class [[gnu::visibility("hidden")]] Writer;
  explicit KeyedArchiver(Writer& writer) noexcept : writer_(writer) {}

  Writer& writer_;
};

}  // namespace tq
