#include <TQFoundation/platform/archive/KeyedUnarchiver.h>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#include <TQFoundation/base/ThreadCancellation.h>
#include <TQFoundation/objects/Construction.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/archive/detail/KeyedArchiveFormat.h>
#include <TQFoundation/platform/archive/detail/KeyedReader.h>
#include <TQFoundation/platform/archive/detail/KeyedRecords.h>

namespace tq {

using namespace detail::keyed;  // NOLINT: the format's vocabulary
using Node = detail::BinaryPropertyListReader::Node;
using UID = std::uint64_t;

namespace {

constexpr std::uint64_t kUnfoldedBits = (std::uint64_t{1} << 56) - 1;  // of a slot

/// Returns how much an archive may unfold to. The sum of two such numbers fits into a slot.
std::uint64_t mostUnfolded(std::uint64_t byteCount, std::uint64_t perByte) noexcept {
  constexpr std::uint64_t kMost = kUnfoldedBits / 2;
  return byteCount == 0 || perByte <= kMost / byteCount ? byteCount * perByte : kMost;
}

}  // namespace

KeyedUnarchiver::Reader::Reader(detail::BinaryPropertyListReader list, std::size_t byteCount,
                                const ReadingLimits& limits, const ClassFilter& mayInstantiate,
                                UnreadContent* unread) noexcept
    : list_(list),
      mayInstantiate_(mayInstantiate),
      unread_(unread),
      mostUnfolded_(mostUnfolded(byteCount, limits.unfoldedPerByte)),
      mostValues_(limits.values),
      mostDepth_(std::clamp(limits.depth, 1, int{KeyedArchiver::kMaximumDepth})) {}

Ref<Object> KeyedUnarchiver::Reader::fail() noexcept {
  failed_ = true;
  return nullptr;
}

Ref<Object> KeyedUnarchiver::Reader::fail(ReadingLimit limit) noexcept {
  exceeded_ = limit;
  return fail();
}

// The sum cannot overflow: both terms fit into a slot, and nothing is added after a failure.
bool KeyedUnarchiver::Reader::unfold(std::uint64_t amount) noexcept {
  unfolded_ += amount;
  if (unfolded_ <= mostUnfolded_) return true;
  fail(ReadingLimit::unfoldedPerByte);
  return false;
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
  if (objects_.value > mostValues_) return fail(ReadingLimit::values);
  slots_.resize(objects_.value);
  Ref<Object> root = object(value(*top, kRootKey));
  if (thrown_) std::rethrow_exception(thrown_);
  return failed_ ? nullptr : root;
}

/// Returns the node if it is a record, after paying for its keys.
std::optional<Node> KeyedUnarchiver::Reader::record(const std::optional<Node>& node) {
  if (!node || node->kind != Kind::dictionary) return std::nullopt;
  for (std::uint64_t i = 0; i < node->value; ++i) {
    if (!list_.node(list_.reference(*node, i))) return std::nullopt;
  }
  return node;
}

std::optional<std::uint64_t> KeyedUnarchiver::Reader::indexOf(const Node& record,
                                                              std::string_view key) {
  for (std::uint64_t i = 0; i < record.value; ++i) {
    const auto name = list_.nodeAgain(list_.reference(record, i));
    if (name && detail::isString(*name, key)) return i;
  }
  return std::nullopt;
}

std::optional<Node> KeyedUnarchiver::Reader::valueAt(const Node& record, std::uint64_t index) {
  return list_.node(list_.reference(record, record.value + index));
}

std::optional<Node> KeyedUnarchiver::Reader::value(const Node& record, std::string_view key) {
  const auto index = indexOf(record, key);
  return index ? valueAt(record, *index) : std::nullopt;
}

namespace {

/// Returns the number of bytes that a value of the list has as text or data.
std::size_t contentSize(const Node& node) noexcept {
  using Kind = detail::BinaryPropertyListReader::Kind;
  const bool isContent =
      node.kind == Kind::data || node.kind == Kind::ascii || node.kind == Kind::utf16;
  return isContent ? node.content.size() : 0;
}

}  // namespace

std::optional<Node> KeyedUnarchiver::Reader::member(std::string_view key) {
  if (failed_) return std::nullopt;
  const auto index = indexOf(*record_, key);
  if (!index) return std::nullopt;
  if (asked_ != nullptr) (*asked_)[*index] = true;
  const auto node = valueAt(*record_, *index);
  return node && unfold(contentSize(*node)) ? node : std::nullopt;
}

NumberValue KeyedUnarchiver::Reader::number(std::string_view key) {
  const auto node = member(key);
  return node && node->kind == Kind::number ? node->number : NumberValue();
}

std::optional<std::span<const std::byte>> KeyedUnarchiver::Reader::bytes(std::string_view key) {
  const auto node = member(key);
  return node && node->kind == Kind::data ? std::optional(node->content) : std::nullopt;
}

Ref<String> KeyedUnarchiver::Reader::text(std::string_view key) {
  Ref<String> text = refCast<String>(object(member(key)));
  return text && pay(text->view().size()) ? text : nullptr;
}

Ref<Object> KeyedUnarchiver::Reader::object(const std::optional<Node>& reference,
                                            bool evenUnfinished) {
  if (!reference || failed_) return nullptr;
  return reference->kind == Kind::uid ? resolve(reference->value, evenUnfinished) : fail();
}

namespace {

/// Fills the empty slots of an unfinished container with Null, so that it can be used.
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
  if (slot.state == State::read) return unfold(slot.unfolded) ? slot.object : nullptr;
  if (slot.state == State::open) {
    if (!evenUnfinished || !slot.object) return fail();
    if (auto* array = objectCast<Array>(slot.object.get()))
      fillGaps(detail::Construction::slots(*array));
    if (auto* dictionary = objectCast<Dictionary>(slot.object.get()))
      fillGaps(detail::Construction::slots(*dictionary));
    return slot.object;
  }
  slot.state = State::open;
  const std::uint64_t outer = std::exchange(unfolded_, 1);
  try {
    slot.object = make(slot, uid);
  } catch (...) {
    // The host that requested the object may catch this, but the archive has failed.
    failed_ = true;
    thrown_ = std::current_exception();
    throw;
  }
  slot.state = State::read;
  if (failed_ || !slot.object) return fail();
  const std::uint64_t own = std::exchange(unfolded_, outer);
  slot.unfolded = own & kUnfoldedBits;
  return unfold(own) ? slot.object : nullptr;
}

Ref<Object> KeyedUnarchiver::Reader::make(Slot& slot, UID uid) {
  const auto node = list_.node(list_.reference(objects_, uid));
  if (!node) return nullptr;
  switch (node->kind) {
    case Kind::ascii:
    case Kind::utf16:
      unfolded_ += node->content.size();  // resolve() checks the sum
      return detail::stringFromNode(*node);
    case Kind::number:
      return Number::numberWith(node->number);
    case Kind::data:
      unfolded_ += node->content.size();
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
  const Class* named = text ? Class::classNamed(text->view()) : nullptr;
  if (unread_ != nullptr && text && named == nullptr) {
    unread_->add(UnreadContent::Kind::unknownClass, text->view(), {}, [] { return std::string(); });
  }
  if (named != nullptr && mayInstantiate_ && !mayInstantiate_(*named)) named = nullptr;
  return entry->second = named;
}

Ref<Object> KeyedUnarchiver::Reader::makeFromRecord(Slot& slot, const Node& node) {
  if (depth_ >= mostDepth_) return fail(ReadingLimit::depth);
  const auto members = record(node);
  const Class* found = members ? classAt(value(*members, kClassKey)) : nullptr;
  if (found == nullptr) return nullptr;

  const Node* const outerRecord = std::exchange(record_, &*members);
  Slot* const outerSlot = std::exchange(slot_, &slot);
  std::vector<bool>* const outerAsked = std::exchange(asked_, nullptr);
  ++depth_;
  const ValueRecord* const value = valueRecordOf(*found);
  Ref<Object> object;
  if (found->supportsKeyedCoding()) {
    object = makeHost(*found);
  } else if (value != nullptr && value->read != nullptr) {
    object = value->read(*this);
  }
  --depth_;
  asked_ = outerAsked;
  slot_ = outerSlot;
  record_ = outerRecord;
  return object;
}

Ref<Object> KeyedUnarchiver::Reader::makeHost(const Class& hostClass) {
  Ref<Object> object = hostClass.keyed().make();
  slot_->object = object;
  KeyedUnarchiver unarchiver(*this);
  if (unread_ == nullptr) {
    return hostClass.keyed().initWithCoder(*object, unarchiver) ? object : nullptr;
  }
  std::vector<bool> asked(record_->value);
  asked_ = &asked;
  if (!hostClass.keyed().initWithCoder(*object, unarchiver)) return nullptr;
  if (!failed_) reportUnasked(hostClass, asked);
  return object;
}

/// Keys with one "$" at the start are those of the format; see escapedKey().
void KeyedUnarchiver::Reader::reportUnasked(const Class& hostClass,
                                            const std::vector<bool>& asked) {
  for (std::size_t i = 0; i < asked.size(); ++i) {
    const auto name = asked[i] ? std::nullopt : list_.node(list_.reference(*record_, i));
    const Ref<String> text = name ? detail::stringFromNode(*name) : nullptr;
    if (!text || (text->view().starts_with('$') && !text->view().starts_with("$$"))) continue;
    const std::string_view key = text->view().substr(text->view().starts_with('$') ? 1 : 0);
    unread_->add(UnreadContent::Kind::member, hostClass.codingName(), key,
                 [] { return std::string(); });
  }
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

/// Returns the array if all elements are numbers, without boxing them; else null.
Ref<Array> KeyedUnarchiver::Reader::packedArray(const std::vector<UID>& uids) {
  std::vector<NumberValue> numbers;
  for (const UID uid : uids) {
    const auto node = list_.node(list_.reference(objects_, uid));
    if (!node || node->kind != Kind::number) return nullptr;
    numbers.push_back(node->number);
  }
  return numbers.empty() || !unfold(numbers.size()) ? nullptr : Array::arrayWithNumbers(numbers);
}

Ref<Object> KeyedUnarchiver::Reader::readArray() {
  const auto elements = uids(kElements);
  if (!elements) return nullptr;
  if (Ref<Array> packed = packedArray(*elements)) return packed;
  Ref<Array> array = detail::Construction::unfilledArray(elements->size());
  slot_->object = array;
  for (std::size_t i = 0; i < elements->size(); ++i) {
    Ref<Object> element = resolve((*elements)[i], false);
    if (!element) return nullptr;
    detail::Construction::slots(*array)[i] = std::move(element);
  }
  return array;
}

Ref<Object> KeyedUnarchiver::Reader::readMutableArray() {
  const auto elements = uids(kElements);
  if (!elements) return nullptr;
  Ref<MutableArray> array = MutableArray::array();
  slot_->object = array;
  for (const UID uid : *elements) {
    Ref<Object> element = resolve(uid, false);
    if (!element) return nullptr;
    array->addObject(std::move(element));
  }
  return array;
}

namespace {

/// Bytes of a key that may be compared for the price of reading one. Comparing is that much faster,
/// and valid files may repeat long keys.
constexpr std::size_t kComparedPerReading = 16;

/// Returns how many bytes are compared when `key` is compared with other keys.
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

Ref<detail::DictionaryKeys> KeyedUnarchiver::Reader::distinct(const std::vector<UID>& uids,
                                                              bool copied) {
  Keys keys = makeRef<detail::DictionaryKeys>();
  for (const UID uid : uids) {
    Ref<Object> key = resolve(uid, false);
    if (!key || isContainer(*key)) return nullptr;
    if (!pay(comparedBytes(*key) / kComparedPerReading) || keys->find(*key)) return nullptr;
    const auto* changing = copied ? objectCast<MutableData>(key.get()) : nullptr;
    if (changing != nullptr && !pay(changing->length())) return nullptr;
    keys->append(copied ? key->copy() : std::move(key));
  }
  return keys;
}

/// Returns the keys of the dictionary that is being read, and the UIDs of their values.
std::optional<std::pair<Ref<detail::DictionaryKeys>, std::vector<UID>>>
KeyedUnarchiver::Reader::entries() {
  const auto keyUIDs = uids(kKeys);
  auto valueUIDs = uids(kElements);
  if (!keyUIDs || !valueUIDs || keyUIDs->size() != valueUIDs->size()) return std::nullopt;
  Keys keys = distinct(*keyUIDs, true);
  if (!keys) return std::nullopt;
  return std::pair(std::move(keys), std::move(*valueUIDs));
}

Ref<Object> KeyedUnarchiver::Reader::readDictionary() {
  auto read = entries();
  if (!read) return nullptr;
  auto& [keys, values] = *read;
  Ref<Dictionary> dictionary = detail::Construction::unfilledDictionary(std::move(keys));
  slot_->object = dictionary;
  for (std::size_t i = 0; i < values.size(); ++i) {
    Ref<Object> value = resolve(values[i], false);
    if (!value) return nullptr;
    detail::Construction::slots(*dictionary)[i] = std::move(value);
  }
  return dictionary;
}

Ref<Object> KeyedUnarchiver::Reader::readMutableDictionary() {
  const auto read = entries();
  if (!read) return nullptr;
  const auto& [keys, values] = *read;
  Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
  slot_->object = dictionary;
  for (std::size_t i = 0; i < values.size(); ++i) {
    Ref<Object> value = resolve(values[i], false);
    if (!value) return nullptr;
    dictionary->setObject(std::move(value), keys->keys()[i]);
  }
  return dictionary;
}

Ref<Object> KeyedUnarchiver::unarchiveRootObject(std::span<const std::byte> archive,
                                                 Ref<Error>* error, const ReadingLimits& limits,
                                                 const ClassFilter& mayInstantiate,
                                                 UnreadContent* unread) {
  setOutError(error, nullptr);
  const auto list = detail::BinaryPropertyListReader::open(archive, kMostReadings);
  if (!list) return nullptr;
  try {
    Reader reader(*list, archive.size(), limits, mayInstantiate, unread);
    Ref<Object> root = reader.readRoot();
    if (reader.exceeded()) setOutError(error, readingLimitError(*reader.exceeded()));
    return root;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const ThreadCancellation&) {
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
  return reader_.bytes(escapedKey(key)).value_or(std::span<const std::byte>());
}

}  // namespace tq
