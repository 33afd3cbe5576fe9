#include <TQFoundation/serialisation/TQJSONDecoder.h>

#include <algorithm>
#include <charconv>
#include <exception>
#include <map>
#include <new>
#include <optional>

#include <TQFoundation/base/ThreadCancellation.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/files/FileReading.h>
#include <TQFoundation/platform/json/JSONDocument.h>
#include <TQFoundation/platform/json/JSONText.h>
#include <TQFoundation/platform/log/PlainLog.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>
#include <TQFoundation/serialisation/detail/JSONWalk.h>

namespace tq {

static_assert(TQJSONDecoder::kErrorIndexKey == JSONDocument::kErrorIndexKey);
static_assert(TQJSONEncoder::kDepthLimit == JSONDocument::kDepthLimit);

namespace {

/// Classes by their name in archives; null bans the name.
std::map<std::string, const Class*, std::less<>>& TQJSONDecoderClassMap() {
  static auto& map = *new std::map<std::string, const Class*, std::less<>>;
  return map;
}

void logRepair(unsigned byte, std::size_t index) {
  char digits[2];
  const char* end = std::to_chars(digits, digits + 2, byte, 16).ptr;
  std::string line = "Strange \\x";
  line.append(static_cast<const char*>(digits), end).append(" character at ");
  plainLog(line.append(std::to_string(index)).append("\n"));
}

/// Returns the data if it cannot change, else null.
const Data* fixedData(const Data& data) noexcept {
  return objectCast<MutableData>(&data) == nullptr ? &data : nullptr;
}

}  // namespace

TQJSONDecoder::TQJSONDecoder() : walk_(new detail::JSONWalk(*this)) {}
TQJSONDecoder::~TQJSONDecoder() { delete walk_; }

Ref<TQJSONDecoder> TQJSONDecoder::initWithRootObject(Ref<Object> root) {
  auto decoder = Ref<TQJSONDecoder>::adopt(new TQJSONDecoder);
  decoder->walk_->setRoot(std::move(root));
  return decoder;
}

Ref<TQJSONDecoder> TQJSONDecoder::initWithData(const Data& data, const ReadingLimits& limits) {
  Ref<TQJSONDecoder> decoder = init();
  decoder->setLimits(limits);
  decoder->parse(data.bytes(), fixedData(data));
  return decoder;
}

Ref<TQJSONDecoder> TQJSONDecoder::initWithData(std::span<const std::byte> bytes,
                                               const ReadingLimits& limits) {
  Ref<TQJSONDecoder> decoder = init();
  decoder->setLimits(limits);
  decoder->parse(bytes, nullptr);
  return decoder;
}

namespace {

std::optional<JSONDocument> parseOrRepair(std::span<const std::byte> bytes, const Data* fixed,
                                          const ReadingLimits& limits, Ref<Error>* error) {
  if (bytes.size() > std::min(limits.textBytes, ReadingLimits::kLongestText)) {
    *error = readingLimitError(ReadingLimit::textBytes);
    return std::nullopt;
  }
  const auto depth = static_cast<std::size_t>(
      std::clamp(limits.depth, 1, static_cast<int>(JSONDocument::kDepthLimit)));
  std::optional<JSONDocument> parsed = JSONDocument::parse(
      fixed != nullptr ? share(*fixed) : Data::dataWithBytes(bytes), nullptr, depth);
  if (!parsed) {
    const Ref<MutableData> text = MutableData::dataWithLength(0);
    text->append(bytes);
    // The log must not become much larger than the text.
    constexpr std::size_t kMostLines = 100;
    std::size_t count = 0;
    detail::replaceControlCharacters(text->mutableBytes(), [&](unsigned byte, std::size_t index) {
      if (++count <= kMostLines) logRepair(byte, index);
    });
    if (count > kMostLines) {
      plainLog(std::to_string(count - kMostLines) + " more strange characters\n");
    }
    parsed = JSONDocument::parse(text, error, depth);
  }
  if (!parsed || parsed->valueCount() <= limits.values) return parsed;
  *error = readingLimitError(ReadingLimit::values);
  return std::nullopt;
}

}  // namespace

// Objects that are decoded, the delegate and the sink of the log may release the decoder.

void TQJSONDecoder::parse(std::span<const std::byte> bytes, const Data* fixed) {
  const auto self = share(*this);
  Ref<Error> error;
  std::optional<JSONDocument> parsed = parseOrRepair(bytes, fixed, limits_, &error);
  if (parsed) return walk_->setRoot(*std::move(parsed));
  walk_->setRoot(nullptr);
  setError(std::move(error));
}

Ref<Object> TQJSONDecoder::decode(Ref<Error>* error) {
  const auto self = share(*this);
  Ref<Object> object;
  const auto recordThrown = [this](std::string_view text) {
    setError(Error::errorWithDomain(TQJSONDecoderError, kConstructorThrew, text));
  };
  try {
    object = walk_->decodeRoot();
  } catch (const ThreadCancellation&) {
    throw;  // thread cancellation
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    recordThrown(exception.what());
  } catch (...) {
    recordThrown("unknown exception");
  }
  setOutError(error, error_);
  return object;
}

Ref<Object> TQJSONDecoder::decodeData(const Data& data, Ref<Error>* error) {
  const auto self = share(*this);
  parse(data.bytes(), fixedData(data));
  return decode(error);
}

Ref<Object> TQJSONDecoder::decodeDictionary(Ref<Dictionary> parsed, Ref<Error>* error) {
  const auto self = share(*this);
  walk_->setRoot(std::move(parsed));
  return decode(error);
}

Ref<Object> TQJSONDecoder::decodeDataError(const Data& data, Ref<Error>* error,
                                           const ReadingLimits& limits) {
  return initWithData(data, limits)->decode(error);
}

Ref<Object> TQJSONDecoder::decodeFileAtURL(const URL& url, Ref<Error>* error,
                                           const ReadingLimits& limits) {
  const Ref<Data> data = dataWithContentsOfURL(url, error);
  return data ? decodeDataError(*data, error, limits) : nullptr;
}

void TQJSONDecoder::setError(Ref<Error> error) {
  if (!error) return;
  const auto self = share(*this);
  plainLog(error->description());
  if (!error_) error_ = std::move(error);
}

void TQJSONDecoder::setListsUnreadContent(bool lists) noexcept {
  walk_->setUnread(lists ? &unread_ : nullptr);
}

Ref<Object> TQJSONDecoder::root() { return walk_->parsedRoot(); }
Ref<Dictionary> TQJSONDecoder::currentObjectDict() { return walk_->currentObject(); }

Ref<Object> TQJSONDecoder::decodeObject(const Object& parsed) {
  const auto self = share(*this);
  const auto held = share(parsed);
  return walk_->decode(parsed);
}

Ref<Array> TQJSONDecoder::decodeArray(const Array& parsed) {
  const auto self = share(*this);
  const auto held = share(parsed);
  return walk_->decode(parsed);
}

Ref<Object> TQJSONDecoder::decodeDictionary(const Dictionary& parsed) {
  const auto self = share(*this);
  const auto held = share(parsed);
  return walk_->decode(parsed);
}

// MARK: members

bool TQJSONDecoder::containsValueForKey(std::string_view key) const {
  return walk_->find(key).has_value();
}

Ref<Object> TQJSONDecoder::decodeObjectForKey(std::string_view key) {
  const auto member = walk_->find(key);
  return member ? walk_->decode(*member) : nullptr;
}

void TQJSONDecoder::refuseKind(std::string_view key, const Class& wanted, const Object& found) {
  std::string text = "The member \"";
  text.append(key).append("\" is an object of class ").append(found.objectClass().name());
  text.append(", not ").append(wanted.name()).append(".");
  setError(Error::errorWithDomain(TQJSONDecoderError, kWrongKind, std::string_view(text)));
}

double TQJSONDecoder::decodeDoubleForKey(std::string_view key, double withDefault) const {
  const auto member = walk_->find(key);
  if (!member) return withDefault;
  if (const auto number = member->number()) return number->doubleValue();
  const auto text = member->text();
  return text ? lenientDouble(*text) : 0;
}

bool TQJSONDecoder::decodeBoolForKey(std::string_view key, bool withDefault) const {
  const auto member = walk_->find(key);
  if (!member) return withDefault;
  if (const auto number = member->number()) return number->boolValue();
  const auto text = member->text();
  return text && lenientBool(*text);
}

std::int64_t TQJSONDecoder::decodeIntegerForKey(std::string_view key,
                                                std::int64_t withDefault) const {
  const auto member = walk_->find(key);
  if (!member) return withDefault;
  if (const auto number = member->number()) return number->integerValue();
  const auto text = member->text();
  return text ? lenientInteger(*text) : 0;
}

Point TQJSONDecoder::decodePointForKey(std::string_view key, Point withDefault) const {
  const auto member = walk_->find(key);
  return member ? pointFromText(member->text().value_or("")) : withDefault;
}

Size TQJSONDecoder::decodeSizeForKey(std::string_view key, Size withDefault) const {
  const auto member = walk_->find(key);
  return member ? sizeFromText(member->text().value_or("")) : withDefault;
}

Rect TQJSONDecoder::decodeRectForKey(std::string_view key, const Rect& withDefault) const {
  const auto member = walk_->find(key);
  return member ? rectFromText(member->text().value_or("")) : withDefault;
}

Ref<Dictionary> TQJSONDecoder::decodeMembers() { return walk_->decodeMembers(); }

// MARK: classes

const Class* TQJSONDecoder::classFromClassName(std::string_view name) {
  auto& known = namedClasses_;
  auto found = known.begin();
  while (found != known.end() && found->first != name) ++found;
  if (found == known.end()) {
    const auto& map = TQJSONDecoderClassMap();
    const auto set = map.find(name);
    const Class* looked = set != map.end() ? set->second : Class::classNamed(name);
    if (looked == nullptr) return nullptr;
    found = known.emplace(found, std::string(name), looked);
  }
  const Class* named = found->second;
  if (const auto judge = delegate_.lock()) {
    const auto self = share(*this);
    if (!judge->shouldInstantiateObjectOfClass(*this, *named)) {
      setError(detail::invalidClassError(name));
      return nullptr;
    }
  }
  return named;
}

bool TQJSONDecoder::mayUnarchive(const Class& named) {
  const std::string_view name = named.codingName();
  if (!named.isLibraryClass()) return classFromClassName(name) != nullptr;
  const auto& map = TQJSONDecoderClassMap();
  const auto set = map.find(name);
  return set == map.end() || set->second != nullptr;
}

UnreadContent::Kind TQJSONDecoder::reasonForNoClass(std::string_view name) {
  const auto& map = TQJSONDecoderClassMap();
  const auto set = map.find(name);
  if (set != map.end() && set->second == nullptr) return UnreadContent::Kind::bannedClass;
  return set != map.end() || Class::classNamed(name) != nullptr ? UnreadContent::Kind::refusedClass
                                                                : UnreadContent::Kind::unknownClass;
}

void TQJSONDecoder::setClass(const Class* theClass, std::string_view forClassName) {
  auto& map = TQJSONDecoderClassMap();
  if (theClass != nullptr && theClass->codingName() == forClassName) {
    const auto entry = map.find(forClassName);
    if (entry != map.end()) map.erase(entry);
    return;
  }
  map.insert_or_assign(std::string(forClassName), theClass);
}

}  // namespace tq
