#pragma once

/// @file TQJSONDecoder.h
/// Reads JSON archives.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/ReadingLimits.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UnreadContent.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/serialisation/TQJSONCoding.h>

namespace tq {

class TQJSONDecoder;

namespace detail {
class JSONWalk;
}

/// Decides which classes a decoder may construct. Implemented by any object.
class TQ_EXPORT TQJSONDecoderDelegate {
 public:
  /// Called before an object is constructed. For a keyed archive in the archive ("_archive"),
  /// called once for each class in it that the host has registered, never for the library's value
  /// classes.
  /// @return false to refuse: error 0 is recorded and the object, or the whole keyed archive,
  ///         decodes to null
  virtual bool shouldInstantiateObjectOfClass(TQJSONDecoder& decoder, const Class& objectClass) = 0;

 protected:
  ~TQJSONDecoderDelegate() = default;
};

/// Reads JSON archives. A model class reads its members in the constructor that takes a decoder:
///
///     explicit Shape(tq::TQJSONDecoder& decoder)
///         : opacity_(decoder.decodeDoubleForKey("opacity", 1)),
///           name_(decoder.decodeObjectForKey<tq::String>("name")) {}
///
/// The text is parsed once into a flat form. Only the members that are read become objects.
///
/// Failures: only the first error is kept, each is logged, and reading continues, so an error may
///           come with a partial result. An object of an unknown or banned class decodes to null
///           without an error, and is left out of arrays and dictionaries. An exception that a
///           constructor throws ends decode(): the result is null, and the exception's text is
///           error kConstructorThrew. std::bad_alloc is passed on.
/// Depth:    containers may nest TQJSONEncoder::kDepthLimit deep, in text and in parsed trees.
/// Memory:   the flat form takes at most 16 bytes for each byte of text while parsing, then 8. It
///           refers to the text, which is kept; of MutableData, a copy. The peak with the result's
///           objects, measured for 20 MB of one element repeated: 4 bytes for each byte of text for
///           boxed points, 5 for words, 8 for "[]", 16 for empty strings, 23 for "[1]", 29 for
///           boxed digits; at most 9 of them are freed at the end.
/// Limits:   see ReadingLimits. Content that exceeds one is an error, and decodes to null. A keyed
///           archive under "_archive" that exceeds one is left out like an object of an unknown
///           class.
/// Threads:  one at a time. Decoders on different threads are independent.
class TQ_EXPORT TQJSONDecoder : public Subclass<TQJSONDecoder> {
 public:
  static constexpr std::string_view className = "TQJSONDecoder";

  /// The key of the byte offset of the fault in the parsed text, a number, in the user info of the
  /// parser's errors.
  static constexpr std::string_view kErrorIndexKey = "NSJSONSerializationErrorIndex";

  /// Codes of errors in the domain TQJSONDecoderError, besides 0 (a class was refused, or cannot be
  /// constructed) and 1 (the parsed tree is too deep).
  static constexpr std::int64_t kConstructorThrew = 2;
  static constexpr std::int64_t kWrongKind = 3;

  /// Parses the bytes. If that fails, replaces each byte from 1 to 31, line breaks and tabs
  /// included, by "?", logs a line for each of the first 100 and one for the rest, and parses once
  /// more. The error of the second attempt is recorded: in text with line breaks between its
  /// tokens, its offset is that of the first line break.
  [[nodiscard]] static Ref<TQJSONDecoder> initWithData(const Data& data,
                                                       const ReadingLimits& limits = {});
  [[nodiscard]] static Ref<TQJSONDecoder> initWithData(std::span<const std::byte> bytes,
                                                       const ReadingLimits& limits = {});
  /// Reads a tree that is already parsed. A constructor may change its mutable containers: each one
  /// is read as it was when the decoder came to it.
  [[nodiscard]] static Ref<TQJSONDecoder> initWithRootObject(Ref<Object> root);
  /// Returns a decoder without a root; decodeData() and decodeDictionary() set one.
  [[nodiscard]] static Ref<TQJSONDecoder> init() { return initWithRootObject(nullptr); }

  ~TQJSONDecoder() override;

  // Conveniences. `error` always receives the first error, or null.

  /// Returns the root object of an archive, or null if it cannot be read. Uses a decoder of its
  /// own, without delegate and userInfo; to decode with this decoder, call decodeData().
  [[nodiscard]] static Ref<Object> decodeDataError(const Data& data, Ref<Error>* error,
                                                   const ReadingLimits& limits = {});
  [[nodiscard]] static Ref<Object> decodeFileAtURL(const URL& url, Ref<Error>* error,
                                                   const ReadingLimits& limits = {});

  /// Returns the object that the root represents, or null without a root. `error`, if given, always
  /// receives the first error, or null.
  [[nodiscard]] Ref<Object> decode(Ref<Error>* error = nullptr);
  /// Replaces the root by these bytes, parsed, and calls decode(). May be called while an object is
  /// being decoded; its members stay the current ones.
  [[nodiscard]] Ref<Object> decodeData(const Data& data, Ref<Error>* error);
  /// Replaces the root by this parsed dictionary and calls decode(); like decodeData().
  [[nodiscard]] Ref<Object> decodeDictionary(Ref<Dictionary> parsed, Ref<Error>* error);

  // For constructors: the members of the object being decoded. Reading numbers and geometry does
  // not allocate.

  /// Returns whether the object being decoded has a member `key`; it may be null.
  [[nodiscard]] bool containsValueForKey(std::string_view key) const;
  /// Returns the member, decoded, or null if it is absent. From text, each call makes a new object;
  /// from a parsed tree, only containers and objects of classes are new.
  [[nodiscard]] Ref<Object> decodeObjectForKey(std::string_view key);
  /// Returns the member as a T, or null if it is absent. A member that decodes to an object of
  /// another class is error kWrongKind, which names the key and both classes.
  template <class T>
  [[nodiscard]] Ref<T> decodeObjectForKey(std::string_view key) {
    const Ref<Object> object = decodeObjectForKey(key);
    Ref<T> typed = refCast<T>(object);
    if (object && !typed) refuseKind(key, classOf<T>, *object);
    return typed;
  }
  /// Returns a number, or the number at the start of a string; 0 for null, arrays and dictionaries;
  /// the default if the member is absent.
  [[nodiscard]] double decodeDoubleForKey(std::string_view key, double withDefault) const;
  /// Returns whether a number is not 0, or a string reads as true (see String::boolValue).
  [[nodiscard]] bool decodeBoolForKey(std::string_view key, bool withDefault) const;
  /// Returns a number truncated toward zero and saturated.
  [[nodiscard]] std::int64_t decodeIntegerForKey(std::string_view key,
                                                 std::int64_t withDefault) const;
  /// Returns the numbers of a string in order, 0 for each missing one (see rectFromText); zeros for
  /// a member that is not a string; the default if the member is absent.
  [[nodiscard]] Point decodePointForKey(std::string_view key, Point withDefault = {}) const;
  [[nodiscard]] Size decodeSizeForKey(std::string_view key, Size withDefault = {}) const;
  [[nodiscard]] Rect decodeRectForKey(std::string_view key, const Rect& withDefault = {}) const;

  /// Returns a dictionary of all members of the object being decoded, each decoded; empty if there
  /// is no such object. Members that decode to null are left out. This is how dictionaries are
  /// constructed.
  [[nodiscard]] Ref<Dictionary> decodeMembers();
  /// Returns the members of the object being decoded as parsed, or null if there is no such object.
  [[nodiscard]] Ref<Dictionary> currentObjectDict();
  /// Returns the parsed tree, or null.
  [[nodiscard]] Ref<Object> root();

  // For classes that handle parsed values themselves.

  /// Returns the object that a parsed value represents.
  [[nodiscard]] Ref<Object> decodeObject(const Object& parsed);
  [[nodiscard]] Ref<Array> decodeArray(const Array& parsed);
  [[nodiscard]] Ref<Object> decodeDictionary(const Dictionary& parsed);

  /// Returns the class to construct for a name in an archive: the one that setClass() set, else the
  /// registered one. Null if the name is banned or unknown, or the delegate refuses the class
  /// (which records error 0).
  [[nodiscard]] const Class* classFromClassName(std::string_view name);

  /// Maps the name `forClassName` in archives to `theClass`. Null bans the name: its objects decode
  /// to null. The class's own name removes the entry. Must be called at start-up, before anything
  /// is decoded: the table has no lock.
  static void setClass(const Class* theClass, std::string_view forClassName);

  /// An object for model classes to read while they decode. Held weakly.
  [[nodiscard]] Ref<Object> userInfo() const noexcept { return userInfo_.lock(); }
  void setUserInfo(const Ref<Object>& userInfo) { userInfo_ = userInfo; }

  /// Held weakly.
  void setDelegate(Weak<TQJSONDecoderDelegate> delegate) noexcept {
    delegate_ = std::move(delegate);
  }
  [[nodiscard]] Held<TQJSONDecoderDelegate> delegate() const noexcept { return delegate_.lock(); }

  /// The limits of what is decoded from now on, keyed archives in it included.
  [[nodiscard]] const ReadingLimits& limits() const noexcept { return limits_; }
  void setLimits(const ReadingLimits& limits) noexcept { limits_ = limits; }

  /// Makes the decoder list what it does not understand, so that a host can warn before it saves
  /// over the file of a newer version. Off at first, because it costs time for each member.
  ///
  /// A member is read if a constructor asked for it, be it with containsValueForKey(), or took all
  /// members. The reserved keys, and the members of dictionaries, are always read. The content of
  /// an object of an unknown class is not listed.
  void setListsUnreadContent(bool lists) noexcept;
  /// Returns what was listed since the decoder was created.
  [[nodiscard]] const UnreadContent& unreadContent() const noexcept { return unread_; }

  /// Returns the first error so far, or null.
  [[nodiscard]] const Ref<Error>& error() const noexcept { return error_; }
  /// Logs the error, and keeps it if it is the first one.
  void setError(Ref<Error> error);

 private:
  friend class detail::JSONWalk;

  TQJSONDecoder();
  /// Parses the bytes; a copy of them, unless `fixed` is their data.
  void parse(std::span<const std::byte> bytes, const Data* fixed);
  /// Returns whether keyed archives in the archive may contain the class.
  [[nodiscard]] bool mayUnarchive(const Class& named);
  /// Returns why classFromClassName() returned null.
  [[nodiscard]] static UnreadContent::Kind reasonForNoClass(std::string_view name);
  void refuseKind(std::string_view key, const Class& wanted, const Object& found);

  detail::JSONWalk* const walk_;                                    // owned
  std::vector<std::pair<std::string, const Class*>> namedClasses_;  // that were looked up before
  Weak<Object> userInfo_;
  Weak<TQJSONDecoderDelegate> delegate_;
  Ref<Error> error_;
  ReadingLimits limits_;
  UnreadContent unread_;
};

}  // namespace tq
