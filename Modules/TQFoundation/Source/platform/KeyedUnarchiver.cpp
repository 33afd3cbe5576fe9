#include <TQFoundation/platform/KeyedUnarchiver.h>

#include <cxxabi.h>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/objects/detail/DictionaryKeys.h>
#include <TQFoundation/platform/KeyedArchiver.h>
#include <TQFoundation/platform/URL.h>
#include <TQFoundation/platform/detail/BinaryPropertyList.h>
#include <TQFoundation/platform/detail/KeyedArchiveFormat.h>

namespace tq {
namespace {

using namespace detail::keyed;  // NOLINT: the format's vocabulary
using detail::BinaryPropertyListReader;
using Node = BinaryPropertyListReader::Node;
using Kind = BinaryPropertyListReader::Kind;
using UID = std::uint64_t;

}  // namespace

/// Makes objects as they are asked for, each once. Every strong reference leads to an object that
/// was finished before, so what comes out holds no cycle of them.
class KeyedUnarchiver::Reader {
 public:
  explicit Reader(BinaryPropertyListReader list) noexcept : list_(list) {}

  Ref<Object> readRoot();

  /// The member of the object being read; none once the archive has turned out to be bad.
  [[nodiscard]] std::optional<Node> member(std::string_view key);
  Ref<Object> object(const std::optional<Node>& reference, bool evenUnfinished = false);
  [[nodiscard]] NumberValue number(std::string_view key);

 private:
  enum class State : std::uint8_t { unread, open, read };
  struct Slot {
    Ref<Object> object;  // while open: what may be referred to already
    State state = State::unread;
  };
  Ref<Object> fail() noexcept;
  std::optional<Node> record(const std::optional<Node>& node);
  std::optional<Node> value(const Node& record, std::string_view key);
  Ref<Object> resolve(UID uid, bool evenUnfinished);
  Ref<Object> make(Slot& slot, UID uid);
  Ref<Object> makeFromRecord(Slot& slot, const Node& node);
  const Class* classAt(const std::optional<Node>& reference);

  Ref<Object> makeHost(Slot& slot, const Class& record);
  Ref<Object> makeString();
  Ref<Object> makeData(const Class& record);
  Ref<Object> makeArray(Slot& slot);
  Ref<Object> makeMutableArray(Slot& slot);
  Ref<Object> makeDictionary(Slot& slot, const Class& record);
  Ref<Object> makeSet();
  Ref<Object> makeDate();
  Ref<Object> makeValue();
  Ref<Object> makeOtherValue();
  Ref<Object> makeError();
  Ref<Object> makeUUID();
  Ref<Object> makeURL();

  std::optional<std::vector<UID>> uids(std::string_view key);
  Ref<Array> packedArray(const std::vector<UID>& uids);
  Ref<detail::DictionaryKeys> distinct(const std::vector<UID>& uids, bool copied);
  Ref<String> text(std::string_view key);

  BinaryPropertyListReader list_;
  Node objects_{};
  std::vector<Slot> slots_;  // by UID
  std::unordered_map<UID, const Class*> classes_;
  const Node* record_ = nullptr;  // of the object being read; not to be used after a failure
  int depth_ = 0;
  bool failed_ = false;
  std::exception_ptr thrown_;  // by an initWithCoder, or for want of memory
};

Ref<Object> KeyedUnarchiver::Reader::fail() noexcept {
  failed_ = true;
  return nullptr;
}

Ref<Object> KeyedUnarchiver::Reader::readRoot() {
  const auto archive = record(list_.node(list_.top()));
  if (!archive) return nullptr;
  const auto version = value(*archive, kVersionKey);
  const auto archiver = value(*archive, kArchiverKey);
  const auto top = record(value(*archive, kTopKey));
  const auto objects = value(*archive, kObjectsKey);
  if (!version || version->kind != Kind::number || !version->number.isEqual(kVersion) ||
      !archiver || !detail::isString(*archiver, kArchiverName) || !top || !objects ||
      objects->kind != Kind::array) {
    return nullptr;
  }
  objects_ = *objects;
  slots_.resize(objects_.value);
  Ref<Object> root = object(value(*top, kRootKey));
  if (thrown_) std::rethrow_exception(thrown_);
  return failed_ ? nullptr : root;
}

/// The node as a record, its keys looked at and paid for.
std::optional<Node> KeyedUnarchiver::Reader::record(const std::optional<Node>& node) {
  if (!node || node->kind != Kind::dictionary) return std::nullopt;
  for (std::uint64_t i = 0; i < node->value; ++i) {
    if (!list_.node(list_.reference(*node, i))) return std::nullopt;
  }
  return node;
}

std::optional<Node> KeyedUnarchiver::Reader::value(const Node& record, std::string_view key) {
  for (std::uint64_t i = 0; i < record.value; ++i) {
    const auto name = list_.nodeAgain(list_.reference(record, i));
    if (name && detail::isString(*name, key)) {
      return list_.node(list_.reference(record, record.value + i));
    }
  }
  return std::nullopt;
}

std::optional<Node> KeyedUnarchiver::Reader::member(std::string_view key) {
  return failed_ ? std::nullopt : value(*record_, key);
}

NumberValue KeyedUnarchiver::Reader::number(std::string_view key) {
  const auto node = member(key);
  return node && node->kind == Kind::number ? node->number : NumberValue();
}

Ref<Object> KeyedUnarchiver::Reader::object(const std::optional<Node>& reference,
                                            bool evenUnfinished) {
  if (!reference || failed_) return nullptr;
  return reference->kind == Kind::uid ? resolve(reference->value, evenUnfinished) : fail();
}

namespace {

/// Puts Null where an unfinished container has nothing yet, so that it can be looked at.
void fillGaps(std::span<Ref<Object>> slots) {
  for (Ref<Object>& slot : slots) {
    if (!slot) slot = Null::null();
  }
}

}  // namespace

Ref<Object> KeyedUnarchiver::Reader::resolve(UID uid, bool evenUnfinished) {
  if (uid == 0 || failed_) return nullptr;
  if (uid >= slots_.size()) return fail();
  Slot& slot = slots_[uid];
  if (slot.state == State::read) return slot.object;
  if (slot.state == State::open) {
    if (!evenUnfinished || !slot.object) return fail();
    if (auto* array = objectCast<Array>(slot.object.get())) fillGaps(array->slots());
    if (auto* dictionary = objectCast<Dictionary>(slot.object.get())) fillGaps(dictionary->slots());
    return slot.object;
  }
  slot.state = State::open;
  try {
    slot.object = make(slot, uid);
  } catch (...) {
    // The host that asked may catch this; what it asked for is missing all the same.
    failed_ = true;
    thrown_ = std::current_exception();
    throw;
  }
  slot.state = State::read;
  return failed_ || !slot.object ? fail() : slot.object;
}

Ref<Object> KeyedUnarchiver::Reader::make(Slot& slot, UID uid) {
  const auto node = list_.node(list_.reference(objects_, uid));
  if (!node) return nullptr;
  switch (node->kind) {
    case Kind::ascii:
    case Kind::utf16:
      return detail::stringFromNode(*node);
    case Kind::number:
      return Number::numberWith(node->number);
    case Kind::data:
      return Data::dataWithBytes(node->content);
    case Kind::dictionary:
      return makeFromRecord(slot, *node);
    default:
      return nullptr;
  }
}

const Class* KeyedUnarchiver::Reader::classAt(const std::optional<Node>& reference) {
  if (!reference || reference->kind != Kind::uid) return nullptr;
  const UID uid = reference->value;
  if (uid == 0 || uid >= slots_.size()) return nullptr;
  const auto [entry, isNew] = classes_.try_emplace(uid, nullptr);
  if (!isNew) return entry->second;
  const auto members = record(list_.node(list_.reference(objects_, uid)));
  const auto name = members ? value(*members, kClassNameKey) : std::nullopt;
  const Ref<String> text = name ? detail::stringFromNode(*name) : nullptr;
  return entry->second = text ? Class::classNamed(text->view()) : nullptr;
}

Ref<Object> KeyedUnarchiver::Reader::makeFromRecord(Slot& slot, const Node& node) {
  if (depth_ == KeyedArchiver::kMaximumDepth) return nullptr;
  const auto members = record(node);
  const Class* found = members ? classAt(value(*members, kClassKey)) : nullptr;
  if (found == nullptr) return nullptr;

  const Node* const outer = std::exchange(record_, &*members);
  ++depth_;
  Ref<Object> object;
  const Class& c = *found;
  if (c.supportsKeyedCoding())
    object = makeHost(slot, c);
  else if (&c == &classOf<Array>)
    object = makeArray(slot);
  else if (&c == &classOf<MutableArray>)
    object = makeMutableArray(slot);
  else if (c.isSubclassOf(classOf<Dictionary>))
    object = makeDictionary(slot, c);
  else if (&c == &classOf<Set>)
    object = makeSet();
  else if (&c == &classOf<Value>)
    object = makeValue();
  else if (&c == &classOf<Null>)
    object = Null::null();
  else if (&c == &classOf<Date>)
    object = makeDate();
  else if (&c == &classOf<Error>)
    object = makeError();
  else if (&c == &classOf<UUID>)
    object = makeUUID();
  else if (&c == &classOf<URL>)
    object = makeURL();
  else if (&c == &classOf<String>)
    object = makeString();
  else if (c.isSubclassOf(classOf<Data>))
    object = makeData(c);
  --depth_;
  record_ = outer;
  return object;
}

Ref<Object> KeyedUnarchiver::Reader::makeHost(Slot& slot, const Class& record) {
  slot.object = record.keyed().make();
  KeyedUnarchiver unarchiver(*this);
  Ref<Object> object = slot.object;
  return record.keyed().initWithCoder(*object, unarchiver) ? object : nullptr;
}

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
    if (!key || isContainer(*key) || keys->find(*key)) return nullptr;
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

Ref<String> KeyedUnarchiver::Reader::text(std::string_view key) {
  return refCast<String>(object(member(key)));
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
  return URL::URLWithString(relative->view(), baseURL.get());
}

Ref<Object> KeyedUnarchiver::unarchiveRootObject(std::span<const std::byte> archive) {
  const auto list = BinaryPropertyListReader::open(archive, kMostReadings);
  if (!list) return nullptr;
  try {
    return Reader(*list).readRoot();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (...) {
    return nullptr;
  }
}

bool KeyedUnarchiver::containsValueForKey(std::string_view key) const {
  return reader_.member(escapedKey(key)).has_value();
}

Ref<Object> KeyedUnarchiver::decodeObjectForKey(std::string_view key) {
  return reader_.object(reader_.member(escapedKey(key)));
}

Ref<Object> KeyedUnarchiver::decodeReferenceForKey(std::string_view key) {
  return reader_.object(reader_.member(escapedKey(key)), true);
}

bool KeyedUnarchiver::decodeBoolForKey(std::string_view key) {
  return reader_.number(escapedKey(key)).boolValue();
}

std::int64_t KeyedUnarchiver::decodeIntegerForKey(std::string_view key) {
  return reader_.number(escapedKey(key)).integerValue();
}

float KeyedUnarchiver::decodeFloatForKey(std::string_view key) {
  return static_cast<float>(decodeDoubleForKey(key));
}

double KeyedUnarchiver::decodeDoubleForKey(std::string_view key) {
  return reader_.number(escapedKey(key)).doubleValue();
}

std::span<const std::byte> KeyedUnarchiver::decodeBytesForKey(std::string_view key) {
  const auto node = reader_.member(escapedKey(key));
  return node && node->kind == Kind::data ? node->content : std::span<const std::byte>();
}

}  // namespace tq
