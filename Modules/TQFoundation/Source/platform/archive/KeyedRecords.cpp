#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/archive/detail/KeyedArchiveFormat.h>
#include <TQFoundation/platform/archive/detail/KeyedReader.h>
#include <TQFoundation/platform/text/URLResolution.h>

// What the records of the library's own classes say. None of those that make no sense.

namespace tq {

using namespace detail::keyed;  // NOLINT: the format's vocabulary

namespace {

/// Bytes of a key that are compared for the price of one that is read: comparing is that much
/// faster, and a file may well use long keys over and over.
constexpr std::size_t kComparedPerReading = 16;

/// How many bytes of `key` are looked at when it is told from others.
std::size_t comparedBytes(const Object& key) {
  switch (key.kind()) {
    case ObjectKind::string:
      return static_cast<const String&>(key).view().size();
    case ObjectKind::data:
      return static_cast<const Data&>(key).length();
    case ObjectKind::value:
      return static_cast<const Value&>(key).bytes().size() +
             static_cast<const Value&>(key).typeSignature().size();
    default:
      const auto* url = objectCast<URL>(&key);
      return url != nullptr ? url->absoluteString().size() : 0;
  }
}

}  // namespace

Ref<Object> KeyedUnarchiver::Reader::makeString() {
  const auto node = member(kText);
  if (!node) return nullptr;
  return node->kind == Kind::uid ? Ref<Object>(refCast<String>(object(node)))
                                 : detail::stringFromNode(*node);
}

Ref<Object> KeyedUnarchiver::Reader::makeData(const Class& record) {
  const auto node = member(kBytes);
  if (!node || node->kind != Kind::data) return nullptr;
  if (&record == &classOf<Data>) return Data::dataWithBytes(node->content);
  Ref<MutableData> data = MutableData::data();
  data->append(node->content);
  return data;
}

std::optional<std::vector<UID>> KeyedUnarchiver::Reader::uids(std::string_view key) {
  const auto array = member(key);
  if (!array || array->kind != Kind::array) return std::nullopt;
  std::vector<UID> uids;
  uids.reserve(array->value);
  for (std::uint64_t i = 0; i < array->value; ++i) {
    const auto element = list_.node(list_.reference(*array, i));
    if (!element || element->kind != Kind::uid || element->value == 0 ||
        element->value >= slots_.size()) {
      return std::nullopt;
    }
    uids.push_back(element->value);
  }
  return uids;
}

/// The array, when it holds numbers alone, without boxing one of them; else none.
Ref<Array> KeyedUnarchiver::Reader::packedArray(const std::vector<UID>& uids) {
  std::vector<NumberValue> numbers;
  for (const UID uid : uids) {
    const auto node = list_.node(list_.reference(objects_, uid));
    if (!node || node->kind != Kind::number) return nullptr;
    numbers.push_back(node->number);
  }
  return numbers.empty() ? nullptr : Array::arrayWithNumbers(numbers);
}

Ref<Object> KeyedUnarchiver::Reader::makeArray(Slot& slot) {
  const auto elements = uids(kElements);
  if (!elements) return nullptr;
  if (Ref<Array> packed = packedArray(*elements)) return packed;
  Ref<Array> array = Array::makeUnfilled(elements->size());
  slot.object = array;
  for (std::size_t i = 0; i < elements->size(); ++i) {
    Ref<Object> element = resolve((*elements)[i], false);
    if (!element) return nullptr;
    array->slots()[i] = std::move(element);
  }
  return array;
}

Ref<Object> KeyedUnarchiver::Reader::makeMutableArray(Slot& slot) {
  const auto elements = uids(kElements);
  if (!elements) return nullptr;
  Ref<MutableArray> array = MutableArray::array();
  slot.object = array;
  for (const UID uid : *elements) {
    Ref<Object> element = resolve(uid, false);
    if (!element) return nullptr;
    array->addObject(std::move(element));
  }
  return array;
}

/// Objects of which no two are equal. Containers are not taken: comparing those that come from
/// outside can take for ever.
/// @param copied  for keys of dictionaries, which nobody may change
Ref<detail::DictionaryKeys> KeyedUnarchiver::Reader::distinct(const std::vector<UID>& uids,
                                                              bool copied) {
  Ref<detail::DictionaryKeys> keys = makeRef<detail::DictionaryKeys>();
  for (const UID uid : uids) {
    Ref<Object> key = resolve(uid, false);
    if (!key || isContainer(*key)) return nullptr;
    if (!list_.pay(comparedBytes(*key) / kComparedPerReading) || keys->find(*key)) return nullptr;
    const auto* changing = copied ? objectCast<MutableData>(key.get()) : nullptr;
    if (changing != nullptr && !list_.pay(changing->length())) return nullptr;
    keys->append(copied ? key->copy() : std::move(key));
  }
  return keys;
}

Ref<Object> KeyedUnarchiver::Reader::makeDictionary(Slot& slot, const Class& record) {
  const auto keyUIDs = uids(kKeys);
  const auto valueUIDs = uids(kElements);
  if (!keyUIDs || !valueUIDs || keyUIDs->size() != valueUIDs->size()) return nullptr;
  Ref<detail::DictionaryKeys> keys = distinct(*keyUIDs, true);
  if (!keys) return nullptr;

  if (&record == &classOf<MutableDictionary>) {
    Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    slot.object = dictionary;
    for (std::size_t i = 0; i < valueUIDs->size(); ++i) {
      Ref<Object> value = resolve((*valueUIDs)[i], false);
      if (!value) return nullptr;
      dictionary->setObject(std::move(value), keys->keys()[i]);
    }
    return dictionary;
  }
  Ref<Dictionary> dictionary = Dictionary::makeUnfilled(std::move(keys));
  slot.object = dictionary;
  for (std::size_t i = 0; i < valueUIDs->size(); ++i) {
    Ref<Object> value = resolve((*valueUIDs)[i], false);
    if (!value) return nullptr;
    dictionary->slots()[i] = std::move(value);
  }
  return dictionary;
}

Ref<Object> KeyedUnarchiver::Reader::makeSet() {
  const auto members = uids(kElements);
  const Ref<detail::DictionaryKeys> distinctMembers = members ? distinct(*members, false) : nullptr;
  return distinctMembers ? Set::setWithObjects(distinctMembers->keys()) : nullptr;
}

Ref<Object> KeyedUnarchiver::Reader::makeDate() {
  const auto seconds = member(kTime);
  if (!seconds || (seconds->kind != Kind::number && seconds->kind != Kind::date)) return nullptr;
  return Date::dateWithTimeIntervalSinceReferenceDate(seconds->number.doubleValue());
}

/// A text that the object being read takes over or takes apart: paid for each time that the file
/// refers to it.
Ref<String> KeyedUnarchiver::Reader::text(std::string_view key) {
  Ref<String> text = refCast<String>(object(member(key)));
  return text && list_.pay(text->view().size()) ? text : nullptr;
}

Ref<Object> KeyedUnarchiver::Reader::makeValue() {
  const auto special = member(kValueForm);
  if (!special) return makeOtherValue();
  if (special->kind != Kind::number) return nullptr;
  const auto form = static_cast<ValueForm>(special->number.integerValue());
  if (form == ValueForm::range) {
    const Ref<Number> location = refCast<Number>(object(member(kRangeLocation)));
    const Ref<Number> length = refCast<Number>(object(member(kRangeLength)));
    const auto isIndex = [](const Ref<Number>& number) {
      return number && !number->value().isFloating() &&
             (number->value().kind() == NumberKind::uint64 || number->integerValue() >= 0);
    };
    if (!isIndex(location) || !isIndex(length)) return nullptr;
    return Value::valueWithRange({location->value().bits(), length->value().bits()});
  }
  const Ref<String> numbers = text(form == ValueForm::point  ? kPoint
                                   : form == ValueForm::size ? kSize
                                                             : kRect);
  if (!numbers) return nullptr;
  switch (form) {
    case ValueForm::point:
      return Value::valueWithPoint(pointFromText(numbers->view()));
    case ValueForm::size:
      return Value::valueWithSize(sizeFromText(numbers->view()));
    case ValueForm::rect:
      return Value::valueWithRect(rectFromText(numbers->view()));
    default:
      return nullptr;
  }
}

Ref<Object> KeyedUnarchiver::Reader::makeOtherValue() {
  const Ref<String> type = text(kOtherType);
  const auto bytes = member(kOtherBytes);
  if (!type || !bytes || bytes->kind != Kind::data) return nullptr;
  return Value::valueWithBytes(type->view(), bytes->content);
}

Ref<Object> KeyedUnarchiver::Reader::makeError() {
  const Ref<String> domain = text(kErrorDomain);
  const Ref<Object> info = object(member(kErrorInfo));
  Ref<Dictionary> userInfo = refCast<Dictionary>(info);
  if (!domain || (info && !userInfo)) return nullptr;
  return Error::errorWithDomain(domain->view(), number(kErrorCode).integerValue(),
                                std::move(userInfo));
}

Ref<Object> KeyedUnarchiver::Reader::makeUUID() {
  const auto node = member(kUUIDBytes);
  UUID::Bytes bytes{};
  if (!node || node->kind != Kind::data || node->content.size() != bytes.size()) return nullptr;
  std::ranges::transform(node->content, bytes.begin(), std::to_integer<std::uint8_t>);
  return UUID::UUIDWithBytes(bytes);
}

Ref<Object> KeyedUnarchiver::Reader::makeURL() {
  const Ref<Object> base = object(member(kURLBase));
  const Ref<URL> baseURL = refCast<URL>(base);
  const Ref<String> relative = text(kURLText);
  if (!relative || (base && !baseURL)) return nullptr;
  if (baseURL && !list_.pay(baseURL->absoluteString().size())) return nullptr;
  return URLWithString(relative->view(), baseURL.get());
}

}  // namespace tq
