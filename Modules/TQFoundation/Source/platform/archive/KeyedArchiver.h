#pragma once

/// @file KeyedArchiver.h
/// Object graphs of any shape as bytes.

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

/// Writes a graph of objects in the platform's keyed-archive format (a binary property list), which
/// keeps shared references shared and may hold cycles.
///
/// It keeps String (ill-formed ones too), Number, Data, MutableData, Array, MutableArray,
/// Dictionary, MutableDictionary, Set, Null, Date, Value, Error, UUID and URL in the platform's own
/// records (a structure that the platform refuses has a record of ours), and objects of a class
/// that has `encodeWithCoder` and `initWithCoder` as their encodeWithCoder writes them.
///
/// - Objects are told apart by identity, numbers by value. A number comes back as a boolean, a
///   64-bit integer, a float or a double; equality does not tell the difference.
/// - The same graph gives the same bytes, and so does what KeyedUnarchiver makes of them.
/// - A cycle must pass through an object of a host class, which reads its end of it with
///   KeyedUnarchiver::decodeWeakObjectForKey(); one made of containers alone could never be
///   released and is refused.
/// - A container is no key of a dictionary and no member of a set: comparing containers that come
///   from outside can take for ever.
///
/// Made by archivedDataWithRootObject(), and lent to encodeWithCoder. One thread.
class TQ_EXPORT KeyedArchiver {
 public:
  /// How deep objects may nest, the root being at depth 1.
  static constexpr int kMaximumDepth = 512;

  /// The archive of `object`, under the key "root".
  /// @throws Exception (InvalidArgumentException) for an object that cannot be kept (see
  ///         supportsKeyedCoding()), a graph that nests deeper than kMaximumDepth, a cycle of
  ///         containers alone, text that is not UTF-8 where the format has text, and a URL whose
  ///         text does not lead back to it; and whatever an encodeWithCoder throws
  [[nodiscard]] static Ref<Data> archivedDataWithRootObject(const Object& object);

  /// True when the object's class can be kept; what a container holds is another matter.
  [[nodiscard]] static bool supportsKeyedCoding(const Object& object) noexcept;

  KeyedArchiver(const KeyedArchiver&) = delete;
  KeyedArchiver& operator=(const KeyedArchiver&) = delete;

  /// Each writes a value of the object being encoded. A key is well-formed UTF-8; one that comes
  /// again replaces nothing: the first value is the one that is read.
  /// Once one of them has thrown, the archive is lost, though the host catches it: those that come
  /// after throw the same again, and so does archivedDataWithRootObject().
  void encodeObject(const Object* object, std::string_view forKey);  ///< none is kept as none
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
