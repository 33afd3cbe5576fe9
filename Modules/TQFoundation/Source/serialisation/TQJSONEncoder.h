#pragma once

/// @file TQJSONEncoder.h
/// Writes JSON archives.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/ReadingLimits.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/serialisation/TQJSONCoding.h>

namespace tq {

/// A borrowed object, or null, for the duration of a call. Made from a reference, a pointer or a
/// Ref.
class LentObject {
 public:
  /// Must not outlive the object.
  LentObject(std::nullptr_t) noexcept {}                           // NOLINT: converts on purpose
  LentObject(const Object& object) noexcept : object_(&object) {}  // NOLINT
  LentObject(const Object* object) noexcept : object_(object) {}   // NOLINT
  template <class T>
  LentObject(const Ref<T>& object) noexcept : object_(object.get()) {}  // NOLINT

  /// Returns the object, or null.
  [[nodiscard]] const Object* get() const noexcept { return object_; }

 private:
  const Object* object_ = nullptr;
};

/// Writes a graph of objects as archive text, piece by piece, to writeData(). The sinks override
/// writeData(); this class discards the text.
///
/// A model class writes its members in encodeAsJSON(). The archive keeps their order:
///
///     void encodeAsJSON(tq::TQJSONEncoder& encoder) const {
///       encoder.encodeDouble(opacity_, "opacity");
///       encoder.encodeObject(name_, "name");
///     }
///
/// The objects that TQJSONDecoder reads from the archive are equal to those that were written, and
/// written again they give the same bytes. Exceptions:
/// - A dictionary with the key "_class", "_archive" or "_data" is read as the form that this key
///   marks.
/// - A number used as a key is read as a string. Of two keys with the same text, such as 1 and "1",
///   the first is read.
/// - Doubles keep sixteen digits (seventeen in points, sizes and rects given by key), and are
///   clamped to the range of single precision (see TQJSONClampedDouble).
/// - A float32 is written with seven digits and read as a double, which is written with sixteen.
///   FLT_MIN, 1.175494e-38 with seven digits, is then below the range of doubles and becomes 0.
/// - An object that is written as a keyed archive may share what it contains. If it unfolds to more
///   than ReadingLimits::unfoldedPerByte, the decoder reads it only with a higher limit.
/// - Eleven powers of ten (1e-36, -34, -29, -24, -21, -20, -11, 23, 29, 33, 34) are written for
///   doubles near them. They read as the nearest double, whose sixteen digits are
///   9.999999999999999.
///
/// Keys and class names are written unchanged. They must be plain identifiers in well-formed
/// UTF-8, without quotation marks, backslashes and control characters. Any other key is error 0.
/// What is written but cannot be read back is logged, once for each: a class without a constructor
/// that takes a decoder, a class that is not registered or has the name of another one, a reserved
/// key of TQJSONFormat.h as a key of the host.
///
/// Changes: encodeAsJSON() may release the object itself and what contains it. An array or a
///          dictionary that it changes while the container is being written is error 0, even if
///          the same elements are in it afterwards.
/// Depth:   containers may nest kDepthLimit deep, as in the decoder. A deeper graph is error 0; so
///          is a cyclic one.
/// Length:  an archive longer than longestArchive() is error 0. An object that is shared is written
///          at each reference, so a small graph can have an endless archive.
/// Threads: one at a time, and one archive for each encoder. Encoders on different threads are
///          independent.
class TQ_EXPORT TQJSONEncoder : public Subclass<TQJSONEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONEncoder";

  /// The maximum depth of nested containers.
  static constexpr int kDepthLimit = 512;

  TQJSONEncoder() noexcept = default;

  // Conveniences. The error is written only on failure.

  /// Returns the complete archive of `object`, or null. A string must be well-formed UTF-8: error 0
  /// if unchecked text was written that is not.
  [[nodiscard]] static Ref<Data> encodeObjectAsData(LentObject object, Ref<Error>* error = nullptr);
  [[nodiscard]] static Ref<String> encodeObjectAsString(LentObject object,
                                                        Ref<Error>* error = nullptr);
  static bool encodeObject(LentObject object, Ref<FileHandle> toFile, Ref<Error>* error);
  /// Saves the archive of `object` to a file: the call to use for documents. The whole archive is
  /// encoded first, and then replaces the file in one step, or creates it, as with replaceFile():
  /// the file keeps its owner, group, permissions, ACL and extended attributes. Before that, the
  /// text is checked, so that text written without a check, or no object, does not replace a
  /// document by one that cannot be read: error 0. Not checked is what needs higher ReadingLimits
  /// than the default (see the exceptions above).
  /// @return false, with the error of the encoder or of the file, if it was not saved. The old file
  ///         is unchanged then.
  [[nodiscard]] static bool saveObject(LentObject object, const URL& toURL,
                                       Ref<Error>* error = nullptr);
  /// Writes over an existing file from its start. The file is neither created nor truncated, and
  /// not written atomically: a failure leaves it damaged. See saveObject().
  static bool encodeObject(LentObject object, const URL& toURL, Ref<Error>* error);

  /// Returns an encoder that writes to memory, to an open file, or to the file at a location.
  [[nodiscard]] static Ref<TQJSONEncoder> encoderForWritingToMutableData(Ref<MutableData> data);
  [[nodiscard]] static Ref<TQJSONEncoder> encoderForWritingToFile(Ref<FileHandle> file);
  [[nodiscard]] static Ref<TQJSONEncoder> encoderForWritingToURL(const URL& url);

  /// Writes an archive. An exception that an object throws is caught and becomes error 0 with the
  /// exception's text; nothing is written after the failed object. It is an error too if another
  /// object catches it, because the text is incomplete. Null succeeds and writes
  /// nothing; a decoder cannot read the empty text. A second call is error 0 and writes
  /// nothing, unless it comes from an object that is being encoded: then it writes a value.
  /// @return false if an error was recorded; `error` then receives it
  virtual bool encodeRootObject(LentObject object, Ref<Error>* error = nullptr);

  // For encodeAsJSON(). Each keyed value starts with the separator ",".

  /// Writes a member. Null writes nothing, not even the key.
  void encodeObject(LentObject object, std::string_view forKey) {
    encodeObject(object, forKey, true);
  }
  /// Writes a member, without the "," if `includeSeparator` is false.
  void encodeObject(LentObject object, std::string_view forKey, bool includeSeparator);
  /// Writes `:%0.16g` of the clamped value.
  void encodeDouble(double value, std::string_view forKey);
  /// Writes `:true` or `:false`.
  void encodeBool(bool value, std::string_view forKey);
  /// Writes `:%lld`.
  void encodeInteger(std::int64_t value, std::string_view forKey);
  /// Writes `:"{%0.17g, %0.17g}"` of the clamped values, which read back exactly.
  void encodePoint(Point point, std::string_view forKey);
  void encodeSize(Size size, std::string_view forKey);
  /// Writes `:"{{%0.17g, %0.17g}, {%0.17g, %0.17g}}"` of the clamped raw fields.
  void encodeRect(const Rect& rect, std::string_view forKey);
  /// Writes `"key":"string"`, both unescaped. Null writes nothing. The string must be well formed.
  void encodeStringWithoutCheckingFormat(const String* string, std::string_view forKey,
                                         bool includeSeparator);

  // For values that write themselves.

  /// Writes one value in the form of its class. Null writes nothing.
  void encodeObject(LentObject object);
  /// Writes the string unescaped, in quotation marks if `includeQuotes`. It must be well formed.
  void encodeStringWithoutCheckingFormat(const String& string, bool includeQuotes);
  /// Writes a number without quotation marks.
  void encodeNumber(NumberValue number);
  /// Writes a well-formed string, escaped and in quotation marks.
  void encodeText(std::string_view utf8);
  /// Writes the characters unchanged.
  void write(std::string_view text) {
    if (static_cast<std::size_t>(windowEnd_ - cursor_) >= text.size()) {
      std::char_traits<char>::copy(cursor_, text.data(), text.size());  // null is allowed if empty
      cursor_ += text.size();
    } else {
      writeData(text.data(), text.size());
    }
  }

  /// Receives all text that does not fit the window (see lendWindow). An override must not change
  /// what is being encoded, and should report failures with setError(), because a model class can
  /// catch exceptions.
  virtual void writeData(const void* bytes, std::size_t length);

  /// An object for model classes to read while they encode themselves. Held weakly.
  [[nodiscard]] Ref<Object> userInfo() const noexcept { return userInfo_.lock(); }
  void setUserInfo(const Ref<Object>& userInfo) { userInfo_ = userInfo; }

  /// The maximum length in bytes of an archive that a sink of the library writes. It is
  /// kLongestArchive, the maximum that the decoder reads, unless the host sets less. A file may get
  /// up to one buffer more.
  static constexpr std::uint64_t kLongestArchive = ReadingLimits::kLongestText;
  [[nodiscard]] std::uint64_t longestArchive() const noexcept { return longestArchive_; }
  void setLongestArchive(std::uint64_t byteCount) noexcept { longestArchive_ = byteCount; }

  /// Returns the first error of this encoding, or null.
  [[nodiscard]] const Ref<Error>& error() const noexcept { return error_; }
  /// Keeps the error if it is the first one.
  void setError(Ref<Error> error);
  void setError(std::string_view domain, std::int64_t code, std::string_view description);

  /// Sets the name in archives of the coding class of `forClass`, but not of its subclasses. Must
  /// be called at start-up, before anything is encoded: the table has no lock. A name that is not
  /// plain (see Class::isPlainName) stops the process; the name of another class is logged.
  static void setAliasName(std::string_view name, const Class& forClass);

  /// Returns the name of a coding class in archives: its alias, else its own name. Logs a class
  /// that the decoder would not find by it.
  [[nodiscard]] std::string_view archiveNameOf(const Class& codingClass);

  /// Prepares the data that all encoders share. Optional: the first encoder does it. Any thread.
  static void initialize();

 protected:
  /// Sets a window: memory of the sink into which text is written without a call of writeData(),
  /// which is then called for text that does not fit. windowCursor() is the end of the written
  /// text.
  void lendWindow(char* begin, char* end) noexcept {
    cursor_ = begin;
    windowEnd_ = end;
  }
  [[nodiscard]] char* windowCursor() const noexcept { return cursor_; }
  /// For sinks: must be called before the archive reaches `byteCount` bytes.
  /// @throws Exception (RangeException) if it may not be that long; encodeRootObject() catches it
  void requireLength(std::uint64_t byteCount);
  /// For sinks: records the exception that is being handled, in a catch block. Throws the
  /// cancellation of a thread again.
  void recordException(std::string_view domain, std::int64_t code);
  [[nodiscard]] char* windowEnd() const noexcept { return windowEnd_; }

  /// True if encodeRootObject() has been called. An encoder writes one archive.
  [[nodiscard]] bool isUsed() const noexcept { return isUsed_; }

 private:
  template <std::size_t capacity, class Write>
  void writeShort(Write&& write);
  void writeKey(std::string_view key, bool includeSeparator);
  void encodeByClass(const Object& original);
  void noteWritten(const Class& coding, std::string_view name);

  char* cursor_ = nullptr;
  char* windowEnd_ = nullptr;
  int depth_ = 0;
  bool isUsed_ = false;
  bool isEncoding_ = false;  // encodeRootObject() is running
  std::uint64_t longestArchive_ = kLongestArchive;
  const Class* namedClass_ = nullptr;  // the argument of the last archiveNameOf(), and its result
  std::string_view archiveName_;
  std::vector<const Class*> written_;  // all arguments of archiveNameOf()
  Weak<Object> userInfo_;
  Ref<Error> error_;
};

}  // namespace tq
