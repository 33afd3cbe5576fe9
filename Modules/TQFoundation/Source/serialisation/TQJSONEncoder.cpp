#include <TQFoundation/serialisation/TQJSONEncoder.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include <TQFoundation/base/NumberText.h>
#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/ThreadCancellation.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/platform/archive/WriteOnlyClass.h>
#include <TQFoundation/platform/files/FileServices.h>
#include <TQFoundation/platform/json/JSONText.h>
#include <TQFoundation/platform/log/PlainLog.h>
#include <TQFoundation/serialisation/TQJSONDataEncoder.h>
#include <TQFoundation/serialisation/TQJSONDecoder.h>
#include <TQFoundation/serialisation/TQJSONFileEncoder.h>
#include <TQFoundation/serialisation/TQJSONURLEncoder.h>
#include <TQFoundation/serialisation/detail/JSONEscape.h>
#include <TQFoundation/serialisation/detail/JSONValueForms.h>

namespace tq {
namespace {

constexpr std::string_view kUncheckedText =
    "The archive is not well-formed UTF-8: an ill-formed string was written without a check.";

/// Aliases by coding class.
std::map<const Class*, std::string>& TQJSONEncoderClassMap() {
  static auto& map = *new std::map<const Class*, std::string>;
  return map;
}

/// A call of encodeRootObject() during its lifetime.
class Encoding {
 public:
  explicit Encoding(bool& isEncoding)
      : isEncoding_(isEncoding), isNested_(std::exchange(isEncoding, true)) {}
  ~Encoding() { isEncoding_ = isNested_; }
  Encoding(const Encoding&) = delete;
  Encoding& operator=(const Encoding&) = delete;

  /// True if an object that is being encoded made the call.
  [[nodiscard]] bool isNested() const noexcept { return isNested_; }

 private:
  bool& isEncoding_;
  const bool isNested_;
};

/// One level of nested containers during its lifetime.
class Level {
 public:
  explicit Level(int& depth) : depth_(depth) {
    if (depth_ == TQJSONEncoder::kDepthLimit) {
      throw Exception(InvalidArgumentException,
                      "The graph is cyclic, or nested deeper than the 512 containers that an "
                      "archive may hold.");
    }
    ++depth_;
  }
  ~Level() { --depth_; }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  int& depth_;
};

char* copyText(char* to, std::string_view text) noexcept {
  std::char_traits<char>::copy(to, text.data(), text.size());
  return to + text.size();
}

char* writeClamped17(char* to, double value) noexcept {
  return writeDouble17(to, TQJSONClampedDouble(value));
}

/// Writes "{a, b}".
char* writePair17(char* to, double a, double b) noexcept {
  *to++ = '{';
  to = copyText(writeClamped17(to, a), ", ");
  to = writeClamped17(to, b);
  *to++ = '}';
  return to;
}

}  // namespace

bool TQJSONEncoder::encodeRootObject(LentObject object, Ref<Error>* error) {
  const auto self = share(*this);  // objects that are encoded may release it
  const Encoding encoding(isEncoding_);
  if (!encoding.isNested() && std::exchange(isUsed_, true)) {
    setError(TQJSONEncoderError, 0, "The encoder has been used before. It writes one archive.");
  }
  if (!error_) {
    try {
      encodeObject(object);
    } catch (...) {
      recordException(TQJSONEncoderError, 0);
    }
  }
  if (error_) setOutError(error, error_);
  return !error_;
}

void TQJSONEncoder::recordException(std::string_view domain, std::int64_t code) {
  try {
    throw;
  } catch (const ThreadCancellation&) {
    throw;  // thread cancellation
  } catch (const std::exception& exception) {
    setError(domain, code, exception.what());
  } catch (...) {
    setError(domain, code, "unknown exception");
  }
}

void TQJSONEncoder::requireLength(std::uint64_t byteCount) {
  if (byteCount <= longestArchive_) return;
  const std::string reason = "The archive would be longer than " + std::to_string(longestArchive_) +
                             " bytes. Objects that are shared are written each time.";
  setError(TQJSONEncoderError, 0, std::string_view(reason));
  throw Exception(RangeException, reason);
}

void TQJSONEncoder::setError(Ref<Error> error) {
  if (!error_) error_ = std::move(error);
}

void TQJSONEncoder::setError(std::string_view domain, std::int64_t code,
                             std::string_view description) {
  if (!error_) error_ = Error::errorWithDomain(domain, code, description);
}

void TQJSONEncoder::writeData(const void*, std::size_t) {}

/// Calls `write` to write up to `capacity` characters, into the window or, if too small, a buffer.
template <std::size_t capacity, class Write>
void TQJSONEncoder::writeShort(Write&& write) {
  if (static_cast<std::size_t>(windowEnd_ - cursor_) >= capacity) {
    cursor_ = write(cursor_);
  } else {
    char scratch[capacity];
    const char* end = write(scratch);
    writeData(scratch, static_cast<std::size_t>(end - scratch));
  }
}

// MARK: values

void TQJSONEncoder::encodeObject(LentObject lent) {
  const Object* object = lent.get();
  if (object == nullptr || detail::encodeAtom(*object, *this)) return;
  const Ref<const Object> kept(object);  // the host may release all other references
  try {
    encodeByClass(*object);
  } catch (...) {
    // Part of the text is missing. A host that catches this cannot repair it.
    if (!error_) recordException(TQJSONEncoderError, 0);
    throw;
  }
}

void TQJSONEncoder::encodeByClass(const Object& original) {
  const Object* object = &original;
  Ref<Object> replacement;
  if (const auto replace = object->objectClass().json().replacementObject) {
    replacement = replace(*object, *this);
    if (replacement && detail::encodeAtom(*replacement, *this)) return;
    if (replacement) object = replacement.get();
  }
  const Level level(depth_);
  if (const auto encodeAsJSON = object->objectClass().json().encodeAsJSON) {
    startEncodingObject(*object, *this);
    encodeAsJSON(*object, *this);
    finishEncodingObject(*object, *this);
  } else {
    encodeAsRAWArchive(*object, *this);
  }
}

/// Logs a class whose objects the decoder cannot read under `name`. The host may have set another
/// class for a name on purpose (see TQJSONDecoder::setClass); a class that is only registered under
/// it is found by mistake.
void TQJSONEncoder::noteWritten(const Class& coding, std::string_view name) {
  if (std::ranges::find(written_, &coding) != written_.end()) return;
  written_.push_back(&coding);
  const Class* const found = TQJSONDecoder::init()->classFromClassName(name);
  if (coding.json().initWithJSONDecoder == nullptr &&
      detail::jsonFormOf(coding).initWithJSONDecoder == nullptr) {
    detail::logWriteOnly(coding, "there is no public constructor " + std::string(coding.name()) +
                                     "(tq::TQJSONDecoder&)");
  } else if (found == nullptr) {
    detail::logWriteOnly(coding, "no class is registered under the name " + std::string(name));
  } else if (found != &coding && found == Class::classNamed(name)) {
    detail::logWriteOnly(coding, "another class is registered under the name " + std::string(name));
  }
}

void TQJSONEncoder::encodeNumber(NumberValue number) {
  writeShort<kNumberTextCapacity>([number](char* to) {
    switch (number.kind()) {
      case NumberKind::boolean:
      case NumberKind::int8:
        return writeInteger(to, static_cast<std::int8_t>(number.bits()));
      case NumberKind::float32:
        return writeFloat7(to, static_cast<float>(TQJSONClampedDouble(number.doubleValue())));
      case NumberKind::float64:
        return writeDouble16(to, TQJSONClampedDouble(number.doubleValue()));
      default:
        return number.writeText(to);
    }
  });
}

void TQJSONEncoder::encodeText(std::string_view utf8) {
  if (static_cast<std::size_t>(windowEnd_ - cursor_) >= utf8.size() + 2 &&
      detail::copyUnescaped(cursor_ + 1, utf8)) {
    cursor_[0] = cursor_[utf8.size() + 1] = '"';
    cursor_ += utf8.size() + 2;
    return;
  }
  write("\"");
  for (;;) {
    const std::size_t plain = detail::unescapedPrefix(utf8);
    write(utf8.substr(0, plain));
    if (plain == utf8.size()) break;
    writeShort<detail::kLongestEscape>(
        [&](char* to) { return detail::writeEscape(to, static_cast<unsigned char>(utf8[plain])); });
    utf8.remove_prefix(plain + 1);
  }
  write("\"");
}

void TQJSONEncoder::encodeStringWithoutCheckingFormat(const String& string, bool includeQuotes) {
  if (includeQuotes) write("\"");
  write(string.view());
  if (includeQuotes) write("\"");
}

// MARK: keyed values

void TQJSONEncoder::writeKey(std::string_view key, bool includeSeparator) {
  // In an object with a class, bytes are an ordinary member.
  if (includeSeparator && detail::isReservedKey(key) && key != TQJSONRawDataKey) {
    detail::logReservedKey(key);
  }
  const std::size_t length = key.size() + 4;
  if (static_cast<std::size_t>(windowEnd_ - cursor_) >= length) {
    char* to = cursor_;
    if (includeSeparator) *to++ = ',';
    *to++ = '"';
    if (detail::copyUnescaped(to, key) && (detail::isASCII(key) || Class::isPlainName(key))) {
      to += key.size();
      *to++ = '"';
      *to++ = ':';
      cursor_ = to;
      return;
    }
  }
  if (!key.empty() && !Class::isPlainName(key)) {
    setError(TQJSONEncoderError, 0,
             "The key \"" + std::string(key) +
                 "\" has a quotation mark, a backslash or a control character, or is not UTF-8.");
  }
  write(includeSeparator ? ",\"" : "\"");
  write(key);
  write("\":");
}

void TQJSONEncoder::encodeObject(LentObject object, std::string_view forKey,
                                 bool includeSeparator) {
  if (object.get() == nullptr) return;
  writeKey(forKey, includeSeparator);
  encodeObject(object);
}

void TQJSONEncoder::encodeStringWithoutCheckingFormat(const String* string, std::string_view forKey,
                                                      bool includeSeparator) {
  if (string == nullptr) return;
  writeKey(forKey, includeSeparator);
  encodeStringWithoutCheckingFormat(*string, true);
}

void TQJSONEncoder::encodeDouble(double value, std::string_view forKey) {
  writeKey(forKey, true);
  writeShort<kNumberTextCapacity>(
      [value](char* to) { return writeDouble16(to, TQJSONClampedDouble(value)); });
}

void TQJSONEncoder::encodeBool(bool value, std::string_view forKey) {
  writeKey(forKey, true);
  write(value ? "true" : "false");
}

void TQJSONEncoder::encodeInteger(std::int64_t value, std::string_view forKey) {
  writeKey(forKey, true);
  encodeNumber(value);
}

void TQJSONEncoder::encodePoint(Point point, std::string_view forKey) {
  writeKey(forKey, true);
  writeShort<2 * kNumberTextCapacity + 8>([point](char* to) {
    *to++ = '"';
    to = writePair17(to, point.x, point.y);
    *to++ = '"';
    return to;
  });
}

void TQJSONEncoder::encodeSize(Size size, std::string_view forKey) {
  encodePoint({size.width, size.height}, forKey);
}

void TQJSONEncoder::encodeRect(const Rect& rect, std::string_view forKey) {
  writeKey(forKey, true);
  writeShort<4 * kNumberTextCapacity + 16>([&rect](char* to) {
    to = writePair17(copyText(to, "\"{"), rect.origin.x, rect.origin.y);
    to = writePair17(copyText(to, ", "), rect.size.width, rect.size.height);
    return copyText(to, "}\"");
  });
}

// MARK: class names

void TQJSONEncoder::setAliasName(std::string_view name, const Class& forClass) {
  TQ_ASSERT(Class::isPlainName(name));
  const Class& named = forClass.classForCoder();
  const Class* other = Class::classNamed(name);
  for (const auto& [aliased, alias] : TQJSONEncoderClassMap()) {
    if (alias == name && aliased != &named) other = aliased;
  }
  if (other != nullptr && other != &named) {
    plainLog("The classes " + std::string(other->name()) + " and " + std::string(named.name()) +
             " have the same name in archives, " + std::string(name) + ".\n");
  }
  TQJSONEncoderClassMap().insert_or_assign(&named, std::string(name));
}

// Objects of one class often follow each other, so the last result is cached.
std::string_view TQJSONEncoder::archiveNameOf(const Class& codingClass) {
  if (namedClass_ == &codingClass) return archiveName_;
  const auto& aliases = TQJSONEncoderClassMap();
  const auto alias = aliases.find(&codingClass);
  const std::string_view name = alias != aliases.end() ? alias->second : codingClass.codingName();
  noteWritten(codingClass, name);  // may call the host, which may call this
  namedClass_ = &codingClass;
  return archiveName_ = name;
}

void TQJSONEncoder::initialize() { static_cast<void>(TQJSONAwkwardCharacters::contains(U' ')); }

// MARK: conveniences

Ref<Data> TQJSONEncoder::encodeObjectAsData(LentObject object, Ref<Error>* error) {
  Ref<MutableData> data = MutableData::data();
  const Ref<TQJSONDataEncoder> encoder = TQJSONDataEncoder::initWithData(data);
  if (!encoder->encodeRootObject(object, error)) return nullptr;
  return data;
}

Ref<String> TQJSONEncoder::encodeObjectAsString(LentObject object, Ref<Error>* error) {
  const Ref<Data> data = encodeObjectAsData(object, error);
  if (!data) return nullptr;
  Ref<String> text = String::stringWithUTF8(data->view());
  if (!text) {
    setOutError(error, Error::errorWithDomain(TQJSONEncoderError, 0, kUncheckedText));
  }
  return text;
}

bool TQJSONEncoder::encodeObject(LentObject object, Ref<FileHandle> toFile, Ref<Error>* error) {
  return encoderForWritingToFile(std::move(toFile))->encodeRootObject(object, error);
}

namespace {

/// Returns why an archive cannot be read back; null if it can. Text that a host writes without a
/// check can spoil it.
Ref<Error> faultOf(std::string_view archive) {
  if (detail::firstMalformedByte(archive)) {
    return Error::errorWithDomain(TQJSONEncoderError, 0, kUncheckedText);
  }
  const auto fault = detail::scanJSON(archive, TQJSONEncoder::kDepthLimit);
  if (!fault) return nullptr;
  std::string text = "The archive could not be read back. ";
  text.append(fault->message).append(" around character ").append(std::to_string(fault->index));
  return Error::errorWithDomain(TQJSONEncoderError, 0, std::string_view(text.append(".")));
}

}  // namespace

bool TQJSONEncoder::saveObject(LentObject object, const URL& toURL, Ref<Error>* error) {
  const Ref<Data> data = encodeObjectAsData(object, error);
  if (!data) return false;
  if (Ref<Error> fault = faultOf(data->view())) {
    setOutError(error, std::move(fault));
    return false;
  }
  return replaceFile(toURL, data->bytes(), error);
}

bool TQJSONEncoder::encodeObject(LentObject object, const URL& toURL, Ref<Error>* error) {
  return encoderForWritingToURL(toURL)->encodeRootObject(object, error);
}

Ref<TQJSONEncoder> TQJSONEncoder::encoderForWritingToMutableData(Ref<MutableData> data) {
  return TQJSONDataEncoder::initWithData(std::move(data));
}

Ref<TQJSONEncoder> TQJSONEncoder::encoderForWritingToFile(Ref<FileHandle> file) {
  return TQJSONFileEncoder::initWithFile(std::move(file));
}

Ref<TQJSONEncoder> TQJSONEncoder::encoderForWritingToURL(const URL& url) {
  return TQJSONURLEncoder::initWithURL(url);
}

}  // namespace tq
