#pragma once

/// @file TQJSONDecoder.h
/// Archive text to objects.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/json/JSONDocument.h>
#include <TQFoundation/serialisation/TQJSONCoding.h>

namespace tq {

class TQJSONDecoder;

/// Asked before an object of a class is made. Implemented by any object.
class TQ_EXPORT TQJSONDecoderDelegate {
 public:
  /// @return false to refuse: error 0 is recorded and the object decodes to none
  virtual bool shouldInstantiateObjectOfClass(TQJSONDecoder& decoder, const Class& objectClass) = 0;

 protected:
  ~TQJSONDecoderDelegate() = default;
};

/// Reads archive text. A model class takes its members from the decoder that its constructor is
/// given:
///
///     explicit Shape(tq::TQJSONDecoder& decoder)
///         : opacity_(decoder.decodeDoubleForKey("opacity", 1)),
///           name_(tq::refCast<tq::String>(decoder.decodeObjectForKey("name"))) {}
///
/// The text is parsed once into a flat form; objects are made of what is asked for and of nothing
/// else.
///
/// Failures: only the first error is kept, each is logged, and reading goes on: an error may come
/// with a partial result. An object of an unknown or banned class decodes to none without an error,
/// and disappears from arrays and dictionaries. Depth: containers nest JSONDocument::kDepthLimit
/// deep at the most, in text and in a parsed tree. Memory: bounded by a multiple of the text's
/// size, see JSONDocument. Threads: one at a time. Decoders on different threads are independent.
class TQ_EXPORT TQJSONDecoder : public Subclass<TQJSONDecoder> {
 public:
  static constexpr std::string_view className = "TQJSONDecoder";

  /// Parses the bytes. When they do not parse, control characters are replaced by "?" (each with a
  /// line in the log) and they are parsed once more; the error of the second attempt is recorded.
  [[nodiscard]] static Ref<TQJSONDecoder> initWithData(const Data& data);
  [[nodiscard]] static Ref<TQJSONDecoder> initWithData(std::span<const std::byte> bytes);
  /// Reads a tree that is parsed already.
  [[nodiscard]] static Ref<TQJSONDecoder> initWithRootObject(Ref<Object> root);
  /// A decoder without a root: decodeDataError() and decodeDictionary() give it one.
  [[nodiscard]] static Ref<TQJSONDecoder> init() { return initWithRootObject(nullptr); }

  ~TQJSONDecoder() override;

  // One call does it all. `error` always receives the first error, or none.

  /// The root object of an archive.
  /// @return none, and the error, when it cannot be read
  [[nodiscard]] static Ref<Object> decodeData(const Data& data, Ref<Error>* error);
  [[nodiscard]] static Ref<Object> decodeFileAtURL(const URL& url, Ref<Error>* error);

  /// The object that the root stands for; none without a root. `error`, when given, always receives
  /// the first error or none.
  [[nodiscard]] Ref<Object> decode(Ref<Error>* error = nullptr);
  /// Parses these bytes in place of what was parsed before, then decode(). Also from within an
  /// object that is being decoded, whose members stay the current ones.
  [[nodiscard]] Ref<Object> decodeDataError(const Data& data, Ref<Error>* error);
  /// Takes this parsed dictionary for the root, then decode(); likewise.
  [[nodiscard]] Ref<Object> decodeDictionary(Ref<Dictionary> parsed, Ref<Error>* error);

  // For constructors: the members of the object being decoded. None of the readings of numbers and
  // geometry allocates.

  /// True when the object being decoded has a member of this name, be it null.
  [[nodiscard]] bool containsValueForKey(std::string_view key) const;
  /// The member decoded; none when it is absent. Each call makes a new object.
  [[nodiscard]] Ref<Object> decodeObjectForKey(std::string_view key);
  /// The number, or the number that a string starts with; the default when absent; 0 for null,
  /// arrays and dictionaries.
  [[nodiscard]] double decodeDoubleForKey(std::string_view key, double withDefault) const;
  /// Not 0, or a string that reads as true (see String::boolValue).
  [[nodiscard]] bool decodeBoolForKey(std::string_view key, bool withDefault) const;
  /// Truncated toward zero, saturated.
  [[nodiscard]] std::int64_t decodeIntegerForKey(std::string_view key,
                                                 std::int64_t withDefault) const;
  /// The numbers of a string in order, missing ones 0 (see rectFromText); 0 for a member that is
  /// not a string; the default when absent.
  [[nodiscard]] Point decodePointForKey(std::string_view key, Point withDefault = {}) const;
  [[nodiscard]] Size decodeSizeForKey(std::string_view key, Size withDefault = {}) const;
  [[nodiscard]] Rect decodeRectForKey(std::string_view key, const Rect& withDefault = {}) const;

  /// Returns a dictionary of all members of the object being decoded, each decoded. Members that
  /// decode to null are left out. Empty outside of an object. Archives of `Dictionary` are read
  /// this way.
  [[nodiscard]] Ref<Dictionary> decodeMembers();
  /// The parsed members of the object being decoded; none outside of one.
  [[nodiscard]] Ref<Dictionary> currentObjectDict();
  /// The parsed tree, or none.
  [[nodiscard]] Ref<Object> root();

  // For parsed values that a class got hold of.

  /// What a parsed value stands for.
  [[nodiscard]] Ref<Object> decodeObject(const Object& parsed);
  [[nodiscard]] Ref<Array> decodeArray(const Array& parsed);
  [[nodiscard]] Ref<Object> decodeDictionary(const Dictionary& parsed);

  /// The class to make for a name in an archive: the one set for the name, else the one registered
  /// under it; none when banned, unknown, or refused by the delegate (error 0).
  [[nodiscard]] const Class* classFromClassName(std::string_view name);

  /// `name` in archives means `theClass`; none bans the name: its objects decode to none. The
  /// class's own name removes what was set. At start-up, before anything is decoded: the table has
  /// no lock.
  static void setClass(const Class* theClass, std::string_view forClassName);

  /// For model classes to read while they decode; held weakly.
  [[nodiscard]] Ref<Object> userInfo() const noexcept { return userInfo_.lock(); }
  void setUserInfo(const Ref<Object>& userInfo) { userInfo_ = userInfo; }

  /// Held weakly.
  void setDelegate(Weak<TQJSONDecoderDelegate> delegate) noexcept {
    delegate_ = std::move(delegate);
  }
  [[nodiscard]] Held<TQJSONDecoderDelegate> delegate() const noexcept { return delegate_.lock(); }

  /// The first error so far, or none.
  [[nodiscard]] const Ref<Error>& error() const noexcept { return error_; }
  /// Logged each time; kept only while there is none.
  void setError(Ref<Error> error);

 private:
  struct Walk;

  TQJSONDecoder();
  void parse(std::span<const std::byte> bytes, std::size_t readablePadding);

  std::unique_ptr<Walk> walk_;
  Weak<Object> userInfo_;
  Weak<TQJSONDecoderDelegate> delegate_;
  Ref<Error> error_;
};

}  // namespace tq
