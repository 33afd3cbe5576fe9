#pragma once

/// @file TQJSONEncoder.h
/// Objects to archive text.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/serialisation/TQJSONCoding.h>

namespace tq {

/// An object lent for the length of a call, or none: made from a reference, a pointer or a Ref.
class LentObject {
 public:
  /// Lends an object, or none; must not outlive it.
  LentObject(std::nullptr_t) noexcept {}                           // NOLINT: lending converts
  LentObject(const Object& object) noexcept : object_(&object) {}  // NOLINT
  LentObject(const Object* object) noexcept : object_(object) {}   // NOLINT
  template <class T>
  LentObject(const Ref<T>& object) noexcept : object_(object.get()) {}  // NOLINT

  /// The object; null for none.
  [[nodiscard]] const Object* get() const noexcept { return object_; }

 private:
  const Object* object_ = nullptr;
};

/// Writes a graph of objects as archive text, piece by piece, to writeData(). This class's own
/// writeData() drops the text; the sinks override it.
///
/// A model class writes its members from its encodeAsJSON(), in the order in which they shall
/// stand:
///
///     void encodeAsJSON(tq::TQJSONEncoder& encoder) const {
///       encoder.encodeDouble(opacity_, "opacity");
///       encoder.encodeObject(name_, "name");
///     }
///
/// Written and read again by TQJSONDecoder, the objects come out equal, and written once more the
/// text is the same to the byte. Exceptions:
/// - a dictionary that uses "_class", "_archive" or "_data" as a key reads as what that stands for;
/// - a number used as a key reads as a string; of two keys of the same text, such as 1 and "1", the
///   first is read;
/// - doubles keep sixteen digits (seventeen in points, sizes and rects given by key), and are
/// clamped
///   to the range of single precision (see TQJSONClampedDouble);
/// - a float32 is written with its seven digits, which read as a double, written with sixteen;
/// - eleven powers of ten (1e-36, -34, -29, -24, -21, -20, -11, 23, 29, 33, 34) stand for doubles
///   near them, and read as the nearest, whose sixteen digits are 9.999999999999999.
///
/// Keys and class names are written as they are: plain identifiers, without quotation marks,
/// backslashes or control characters.
/// Depth: values nest kDepthLimit containers deep at the most, which is what the decoder reads. A
/// deeper graph, and so a cyclic one, is error 0.
/// Threads: one at a time, and one archive an encoder. Encoders on different threads are
/// independent.
class TQ_EXPORT TQJSONEncoder : public Subclass<TQJSONEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONEncoder";

  /// How many containers deep an archive may be.
  static constexpr int kDepthLimit = 512;

  TQJSONEncoder() noexcept = default;

  // One call does it all. The error is written only on failure.

  /// The archive of `object`, or none; a half-written one is never handed out. As a string it has
  /// to be well-formed UTF-8: error 0 when some text was written unchecked that is not.
  [[nodiscard]] static Ref<Data> encodeObjectAsData(LentObject object, Ref<Error>* error = nullptr);
  [[nodiscard]] static Ref<String> encodeObjectAsString(LentObject object,
                                                        Ref<Error>* error = nullptr);
  static bool encodeObject(LentObject object, Ref<FileHandle> toFile, Ref<Error>* error);
  /// Into an existing file from its start; it is neither made nor cut, and not written atomically.
  static bool encodeObject(LentObject object, const URL& toURL, Ref<Error>* error);

  /// An encoder that writes into memory, into an open file, or into the file at a location.
  [[nodiscard]] static Ref<TQJSONEncoder> encoderForWritingToMutableData(Ref<MutableData> data);
  [[nodiscard]] static Ref<TQJSONEncoder> encoderForWritingToFile(Ref<FileHandle> file);
  [[nodiscard]] static Ref<TQJSONEncoder> encoderForWritingToURL(const URL& url);

  /// Starts, writes and ends an archive. Any exception that an object throws is caught and becomes
  /// error 0 with the exception's text; what follows the failed object is not written then.
  /// @return false when an error was recorded, which `error` then receives
  virtual bool encodeRootObject(LentObject object, Ref<Error>* error = nullptr);

  // For encodeAsJSON(). Each keyed value starts with the separator ",".

  /// Nothing at all, not even the key, for none.
  void encodeObject(LentObject object, std::string_view forKey) {
    encodeObject(object, forKey, true);
  }
  /// The same; `includeSeparator` false leaves out the "," before the first member.
  void encodeObject(LentObject object, std::string_view forKey, bool includeSeparator);
  /// `:%0.16g` of the clamped value.
  void encodeDouble(double value, std::string_view forKey);
  /// `:true` or `:false`
  void encodeBool(bool value, std::string_view forKey);
  /// The digits, with a "-" when it is negative.
  void encodeInteger(std::int64_t value, std::string_view forKey);
  /// `:"{%0.17g, %0.17g}"` of the clamped values, which read back exactly.
  void encodePoint(Point point, std::string_view forKey);
  void encodeSize(Size size, std::string_view forKey);
  /// `:"{{%0.17g, %0.17g}, {%0.17g, %0.17g}}"` of the clamped raw fields.
  void encodeRect(const Rect& rect, std::string_view forKey);
  /// `"key":"string"`, neither escaped; nothing for none. The string has to be well formed.
  void encodeStringWithoutCheckingFormat(const String* string, std::string_view forKey,
                                         bool includeSeparator);

  // For values that write themselves.

  /// One value in whatever form its kind has; nothing for none.
  void encodeObject(LentObject object);
  /// The string's characters as they are, unescaped, between quotes when asked for. The string has
  /// to be well formed.
  void encodeStringWithoutCheckingFormat(const String& string, bool includeQuotes);
  /// A number in its archive form, unquoted.
  void encodeNumber(NumberValue number);
  /// A well-formed string, escaped and quoted.
  void encodeText(std::string_view utf8);
  /// These very characters.
  void write(std::string_view text) {
    if (static_cast<std::size_t>(windowEnd_ - cursor_) >= text.size()) {
      std::char_traits<char>::copy(cursor_, text.data(), text.size());  // takes null for nothing
      cursor_ += text.size();
    } else {
      writeData(text.data(), text.size());
    }
  }

  /// Where all text goes.
  virtual void writeData(const void* bytes, std::size_t length);

  /// For model objects to read while they encode themselves; held weakly.
  [[nodiscard]] Ref<Object> userInfo() const noexcept { return userInfo_.lock(); }
  void setUserInfo(const Ref<Object>& userInfo) { userInfo_ = userInfo; }

  /// The first error of this encoding, or none.
  [[nodiscard]] const Ref<Error>& error() const noexcept { return error_; }
  /// Kept only while there is none: the first failure wins.
  void setError(Ref<Error> error);
  void setError(std::string_view domain, std::int64_t code, std::string_view description);

  /// `name` stands for `forClass` (its coding class, exactly, not its subclasses) in archives from
  /// now on. At start-up, before anything is encoded: the table has no lock.
  static void setAliasName(std::string_view name, const Class& forClass);

  /// The name that archives give to objects of this coding class: its alias, or its own.
  [[nodiscard]] std::string_view archiveNameOf(const Class& codingClass);

  /// Readies what all encoders share. The first of them does it by itself. Any thread.
  static void initialize();

 protected:
  /// A sink may lend a stretch of memory into which text goes without a call; writeData() is then
  /// called for what does not fit. The sink reads from windowCursor() how far it has been filled.
  void lendWindow(char* begin, char* end) noexcept {
    cursor_ = begin;
    windowEnd_ = end;
  }
  [[nodiscard]] char* windowCursor() const noexcept { return cursor_; }
  [[nodiscard]] char* windowEnd() const noexcept { return windowEnd_; }

 private:
  template <std::size_t capacity, class Write>
  void writeShort(Write&& write);
  void writeKey(std::string_view key, bool includeSeparator);
  bool encodeAtom(const Object& object);

  char* cursor_ = nullptr;
  char* windowEnd_ = nullptr;
  int depth_ = 0;
  const Class* namedClass_ = nullptr;  // the class asked for last, and its name in archives
  std::string_view archiveName_;
  Weak<Object> userInfo_;
  Ref<Error> error_;
};

}  // namespace tq
