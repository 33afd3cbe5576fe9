#include <TQFoundation/platform/archive/KeyedUnarchiver.h>

#include <cxxabi.h>

#include <exception>
#include <new>
#include <optional>
#include <utility>

#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/archive/detail/KeyedArchiveFormat.h>
#include <TQFoundation/platform/archive/detail/KeyedReader.h>

namespace tq {

using namespace detail::keyed;  // NOLINT: the format's vocabulary

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

Ref<Object> KeyedUnarchiver::unarchiveRootObject(std::span<const std::byte> archive) {
  const auto list = detail::BinaryPropertyListReader::open(archive, kMostReadings);
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
