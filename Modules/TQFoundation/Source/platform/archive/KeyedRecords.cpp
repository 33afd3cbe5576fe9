#include <TQFoundation/platform/archive/detail/KeyedRecords.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/archive/detail/KeyedArchiveFormat.h>
#include <TQFoundation/platform/archive/detail/KeyedReader.h>
#include <TQFoundation/platform/archive/detail/KeyedWriter.h>
#include <TQFoundation/platform/text/URLResolution.h>

// The writer and the reader of a class are next to each other. The table at the end lists them all.

namespace tq::detail::keyed {
namespace {

using Writer = ValueRecord::Writer;
using Reader = ValueRecord::Reader;
using List = ValueRecord::List;
using Kind = BinaryPropertyListReader::Kind;

// Strings and data

List::Node writeString(List& list, const Object& string) {
  return list.string(static_cast<const String&>(string).view());
}

Ref<Object> readString(Reader& reader) {
  const auto node = reader.member(kText);
  if (!node) return nullptr;
  return node->kind == Kind::uid ? Ref<Object>(refCast<String>(reader.object(node)))
                                 : stringFromNode(*node);
}

List::Node writeData(List& list, const Object& data) {
  return list.data(static_cast<const Data&>(data).bytes());
}

Ref<Object> readData(Reader& reader) {
  const auto bytes = reader.bytes(kBytes);
  return bytes ? Data::dataWithBytes(*bytes) : nullptr;
}

void writeMutableData(Writer& writer, const Object& data) {
  writer.put(kBytes, writeData(writer.list, data));
}

Ref<Object> readMutableData(Reader& reader) {
  const auto bytes = reader.bytes(kBytes);
  if (!bytes) return nullptr;
  Ref<MutableData> data = MutableData::data();
  data->append(*bytes);
  return data;
}

// Containers

void writeArray(Writer& writer, const Object& object) {
  const auto& array = static_cast<const Array&>(object);
  if (!array.isPacked()) {
    return writer.putElements(kElements, array.objects(), false, ChangeWatch(array));
  }
  std::vector<NumberValue> numbers(array.count());
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = array.numberAtIndex(i);
  writer.putNumbers(kElements, numbers);
}

void writeDictionary(Writer& writer, const Object& object) {
  const auto& dictionary = static_cast<const Dictionary&>(object);
  const ChangeWatch watch(dictionary);
  writer.allowReferencesBack(false);
  writer.putElements(kKeys, dictionary.keys(), true, watch);
  writer.allowReferencesBack(true);
  writer.putElements(kElements, dictionary.values(), false, watch);
}

void writeSet(Writer& writer, const Object& set) {
  writer.allowReferencesBack(false);
  writer.putElements(kElements, static_cast<const Set&>(set).allObjects(), true);
}

Ref<Object> readSet(Reader& reader) {
  const auto uids = reader.uids(kElements);
  const Ref<DictionaryKeys> members = uids ? reader.distinct(*uids, false) : nullptr;
  return members ? Set::setWithObjects(members->keys()) : nullptr;
}

// Null and dates

Ref<Object> readNull(Reader&) { return Null::null(); }

void writeDate(Writer& writer, const Object& date) {
  const double seconds = static_cast<const Date&>(date).timeIntervalSinceReferenceDate();
  writer.put(kTime, writer.list.number(seconds));
}

Ref<Object> readDate(Reader& reader) {
  const auto seconds = reader.member(kTime);
  if (!seconds || (seconds->kind != Kind::number && seconds->kind != Kind::date)) return nullptr;
  return Date::dateWithTimeIntervalSinceReferenceDate(seconds->number.doubleValue());
}

// Boxed structures

bool isFinite(Point point) noexcept { return std::isfinite(point.x) && std::isfinite(point.y); }
bool isFinite(Size size) noexcept {
  return std::isfinite(size.width) && std::isfinite(size.height);
}

// Infinite and NaN coordinates have no text that every reader accepts, so they are stored as bytes.
void writeValue(Writer& writer, const Object& object) {
  const auto& value = static_cast<const Value&>(object);
  const auto putForm = [&](ValueForm form) {
    writer.put(kValueForm, writer.list.number(static_cast<std::int64_t>(form)));
  };
  if (const auto point = value.pointValue(); point && isFinite(*point)) {
    putForm(ValueForm::point);
    writer.putText(kPoint, textFromPoint(*point), {});
  } else if (const auto size = value.sizeValue(); size && isFinite(*size)) {
    putForm(ValueForm::size);
    writer.putText(kSize, textFromSize(*size), {});
  } else if (const auto rect = value.rectValue();
             rect && isFinite(rect->origin) && isFinite(rect->size)) {
    putForm(ValueForm::rect);
    writer.putText(kRect, textFromRect(*rect), {});
  } else if (const auto range = value.rangeValue()) {
    putForm(ValueForm::range);
    writer.put(kRangeLocation, writer.reference(writer.encode(NumberValue(range->location))));
    writer.put(kRangeLength, writer.reference(writer.encode(NumberValue(range->length))));
  } else {
    writer.putText(kOtherType, value.typeSignature(), "A type signature");
    writer.put(kOtherBytes, writer.list.data(value.bytes()));
  }
}

Ref<Object> readRange(Reader& reader) {
  const Ref<Number> location = refCast<Number>(reader.object(reader.member(kRangeLocation)));
  const Ref<Number> length = refCast<Number>(reader.object(reader.member(kRangeLength)));
  const auto isIndex = [](const Ref<Number>& number) {
    return number && !number->value().isFloating() &&
           (number->value().kind() == NumberKind::uint64 || number->integerValue() >= 0);
  };
  if (!isIndex(location) || !isIndex(length)) return nullptr;
  return Value::valueWithRange({location->value().bits(), length->value().bits()});
}

Ref<Object> readOtherValue(Reader& reader) {
  const Ref<String> type = reader.text(kOtherType);
  const auto bytes = reader.bytes(kOtherBytes);
  return type && bytes ? Value::valueWithBytes(type->view(), *bytes) : nullptr;
}

Ref<Object> readValue(Reader& reader) {
  const auto form = reader.member(kValueForm);
  if (!form) return readOtherValue(reader);
  if (form->kind != Kind::number) return nullptr;
  switch (static_cast<ValueForm>(form->number.integerValue())) {
    case ValueForm::point:
      if (const auto text = reader.text(kPoint))
        return Value::valueWithPoint(pointFromText(text->view()));
      break;
    case ValueForm::size:
      if (const auto text = reader.text(kSize))
        return Value::valueWithSize(sizeFromText(text->view()));
      break;
    case ValueForm::rect:
      if (const auto text = reader.text(kRect))
        return Value::valueWithRect(rectFromText(text->view()));
      break;
    case ValueForm::range:
      return readRange(reader);
  }
  return nullptr;
}

// Errors, UUIDs, URLs

void writeError(Writer& writer, const Object& object) {
  const auto& error = static_cast<const Error&>(object);
  writer.allowReferencesBack(false);
  writer.putText(kErrorDomain, error.domain(), "An error's domain");
  writer.put(kErrorCode, writer.list.number(error.code()));
  writer.putObject(kErrorInfo, error.userInfo());
}

Ref<Object> readError(Reader& reader) {
  const Ref<String> domain = reader.text(kErrorDomain);
  const Ref<Object> info = reader.object(reader.member(kErrorInfo));
  Ref<Dictionary> userInfo = refCast<Dictionary>(info);
  if (!domain || (info && !userInfo)) return nullptr;
  return Error::errorWithDomain(domain->view(), reader.number(kErrorCode).integerValue(),
                                std::move(userInfo));
}

void writeUUID(Writer& writer, const Object& uuid) {
  const auto& bytes = static_cast<const UUID&>(uuid).bytes();
  writer.put(kUUIDBytes, writer.list.data(std::as_bytes(std::span(bytes))));
}

Ref<Object> readUUID(Reader& reader) {
  const auto content = reader.bytes(kUUIDBytes);
  UUID::Bytes bytes{};
  if (!content || content->size() != bytes.size()) return nullptr;
  std::ranges::transform(*content, bytes.begin(), std::to_integer<std::uint8_t>);
  return UUID::UUIDWithBytes(bytes);
}

void writeURL(Writer& writer, const Object& url) {
  const std::string text = static_cast<const URL&>(url).absoluteString();
  const Ref<URL> copy = URL::URLWithString(text);
  if (!copy || !copy->isEqual(url)) {
    throw Exception(InvalidArgumentException,
                    "A URL that cannot be made from its own text, such as that of a path with a "
                    "NUL, cannot be archived.");
  }
  writer.put(kURLBase, writer.reference(0));
  writer.putText(kURLText, text, "A URL");
}

Ref<Object> readURL(Reader& reader) {
  const Ref<Object> base = reader.object(reader.member(kURLBase));
  const Ref<URL> baseURL = refCast<URL>(base);
  const Ref<String> relative = reader.text(kURLText);
  if (!relative || (base && !baseURL)) return nullptr;
  if (baseURL && !reader.pay(baseURL->absoluteString().size())) return nullptr;
  return URLWithString(relative->view(), baseURL.get());
}

template <Ref<Object> (Reader::*read)()>
Ref<Object> readBy(Reader& reader) {
  return (reader.*read)();
}

constexpr ValueRecord kValueRecords[] = {
    {&classOf<String>, false, writeString, nullptr, readString},
    {&classOf<Number>, false, nullptr, nullptr, nullptr},  // the writer shares equal numbers
    {&classOf<Array>, true, nullptr, writeArray, readBy<&Reader::readArray>},
    {&classOf<MutableArray>, true, nullptr, writeArray, readBy<&Reader::readMutableArray>},
    {&classOf<Dictionary>, true, nullptr, writeDictionary, readBy<&Reader::readDictionary>},
    {&classOf<MutableDictionary>, true, nullptr, writeDictionary,
     readBy<&Reader::readMutableDictionary>},
    {&classOf<Set>, true, nullptr, writeSet, readSet},
    {&classOf<Value>, false, nullptr, writeValue, readValue},
    {&classOf<Null>, false, nullptr, nullptr, readNull},
    {&classOf<Data>, false, writeData, nullptr, readData},
    {&classOf<MutableData>, false, nullptr, writeMutableData, readMutableData},
    {&classOf<Date>, false, nullptr, writeDate, readDate},
    {&classOf<Error>, true, nullptr, writeError, readError},
    {&classOf<UUID>, false, nullptr, writeUUID, readUUID},
    {&classOf<URL>, false, nullptr, writeURL, readURL},
};

}  // namespace

const ValueRecord* valueRecordOf(const Class& valueClass) noexcept {
  const auto* const found = std::ranges::find(kValueRecords, &valueClass, &ValueRecord::valueClass);
  return found != std::end(kValueRecords) ? found : nullptr;
}

const ValueRecord* valueRecordOf(const Object& object) noexcept {
  for (const Class* c = &object.objectClass(); c != nullptr; c = c->parent()) {
    if (const ValueRecord* const found = valueRecordOf(*c)) return found;
  }
  return nullptr;
}

bool isContainer(const Object& object) noexcept {
  const ValueRecord* const found = valueRecordOf(object);
  return found != nullptr && found->isContainer;
}

}  // namespace tq::detail::keyed
