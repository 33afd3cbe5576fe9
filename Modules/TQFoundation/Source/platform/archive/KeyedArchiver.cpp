#include <TQFoundation/platform/archive/KeyedArchiver.h>

#include <exception>
#include <string>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/platform/archive/WriteOnlyClass.h>
#include <TQFoundation/platform/archive/detail/KeyedArchiveFormat.h>
#include <TQFoundation/platform/archive/detail/KeyedRecords.h>
#include <TQFoundation/platform/archive/detail/KeyedWriter.h>

namespace tq {

using namespace detail::keyed;  // NOLINT: the format's vocabulary

namespace {

/// Logs a class whose records KeyedUnarchiver cannot read.
void noteWritten(const Class& record) {
  const Class* const found = Class::classNamed(record.codingName());
  if (found == nullptr) {
    detail::logWriteOnly(
        record, "no class is registered under the name " + std::string(record.codingName()));
  } else if (found != &record) {
    detail::logWriteOnly(
        record, "another class is registered under the name " + std::string(record.codingName()));
  } else if (!record.supportsKeyedCoding() && valueRecordOf(record) == nullptr) {
    detail::logWriteOnly(record, "the class has no initWithCoder");
  }
}

using Node = detail::BinaryPropertyListWriter::Node;
using UID = std::uint64_t;

[[noreturn]] void refuse(std::string reason) {
  throw Exception(InvalidArgumentException, std::move(reason));
}

void requireUTF8(std::string_view text, std::string_view what) {
  if (detail::firstMalformedByte(text)) {
    refuse(std::string(what) + " that is not UTF-8 cannot be archived.");
  }
}

}  // namespace

Ref<Data> KeyedArchiver::Writer::archive(const Object& root) {
  objects_[reserve()] = list.string(kNone);
  const UID uid = encode(root);
  const std::pair<Node, Node> top[] = {{keyNode(kRootKey), reference(uid)}};
  const std::pair<Node, Node> members[] = {
      {keyNode(kVersionKey), list.number(kVersion)},
      {keyNode(kArchiverKey), list.string(kArchiverName)},
      {keyNode(kTopKey), list.dictionary(top)},
      {keyNode(kObjectsKey), list.array(objects_)},
  };
  list.dictionary(members);
  return list.finish();
}

UID KeyedArchiver::Writer::reserve() {
  objects_.push_back(kUnset);
  uids_.push_back(kUnset);
  return objects_.size() - 1;
}

Node KeyedArchiver::Writer::reference(UID uid) {
  if (uids_[uid] == kUnset) uids_[uid] = list.uid(uid);
  return uids_[uid];
}

Node KeyedArchiver::Writer::keyNode(std::string_view key) {
  const auto [entry, isNew] = keys_.try_emplace(std::string(key), kUnset);
  if (isNew) entry->second = list.string(key);
  return entry->second;
}

UID KeyedArchiver::Writer::classUID(const Class& record) {
  const auto [entry, isNew] = classes_.try_emplace(&record, 0);
  if (!isNew) return entry->second;
  noteWritten(record);
  std::vector<Node> names;
  for (const Class* c = &record; c->parent() != nullptr; c = c->parent()) {
    names.push_back(keyNode(c->codingName()));
  }
  names.push_back(keyNode(kRootClass));
  const std::pair<Node, Node> members[] = {{keyNode(kClassNameKey), names.front()},
                                           {keyNode(kClassesKey), list.array(names)}};
  entry->second = reserve();
  objects_[entry->second] = list.dictionary(members);
  return entry->second;
}

UID KeyedArchiver::Writer::encode(NumberValue number) {
  std::size_t form = 1;  // an integer
  if (number.isBoolean()) form = 0;
  if (number.kind() == NumberKind::uint64) form = 2;
  if (number.kind() == NumberKind::float32) form = 3;
  if (number.kind() == NumberKind::float64) form = 4;
  const auto [entry, isNew] = numbers_[form].try_emplace(number.bits(), 0);
  if (isNew) {
    entry->second = reserve();
    objects_[entry->second] = list.number(number);
  }
  return entry->second;
}

UID KeyedArchiver::Writer::encode(const Object& object) {
  if (object.kind() == ObjectKind::number) {
    return encode(static_cast<const Number&>(object).value());
  }
  const auto [entry, isNew] = known_.try_emplace(&object);
  Known& known = entry->second;  // a later insertion does not move it
  if (!isNew) {
    if (known.state != State::written) requireHostInCycle(known);
    return known.uid;
  }
  known.object = Ref<Object>(const_cast<Object*>(&object));
  known.uid = reserve();
  known.hostsAbove = hosts_;
  const Node node = write(object, known);
  objects_[known.uid] = node;
  known.state = State::written;
  return known.uid;
}

void KeyedArchiver::Writer::requireHostInCycle(const Known& known) const {
  if (known.state == State::open && hosts_ > known.hostsAbove) return;
  refuse(
      "A cycle of containers without an object that reads its reference weakly cannot be "
      "archived.");
}

template <class WriteMembers>
Node KeyedArchiver::Writer::writeRecord(const Object& object, Known& known,
                                        WriteMembers&& writeMembers) {
  if (depth_ == kMaximumDepth) {
    refuse("Objects that are nested more than " + std::to_string(kMaximumDepth) +
           " deep cannot be archived.");
  }
  Record record;
  Record* const outerRecord = std::exchange(record_, &record);
  Known* const outerObject = std::exchange(object_, &known);
  ++depth_;
  writeMembers();
  put(kClassKey, reference(classUID(object.classForCoder())));
  --depth_;
  object_ = outerObject;
  record_ = outerRecord;
  return list.dictionary(record);
}

Node KeyedArchiver::Writer::write(const Object& object, Known& known) {
  if (const auto encodeWithCoder = object.objectClass().keyed().encodeWithCoder) {
    return writeRecord(object, known, [&] {
      ++hosts_;
      KeyedArchiver archiver(*this);
      encodeWithCoder(object, archiver);
      requireNoFailure();
      --hosts_;
    });
  }
  const ValueRecord* const value = valueRecordOf(object);
  if (value == nullptr) {
    refuse("An object of class " + std::string(object.objectClass().name()) +
           " has no encodeWithCoder and cannot be archived.");
  }
  if (value->writeValue != nullptr) return value->writeValue(list, object);
  return writeRecord(object, known, [&] {
    if (value->writeMembers != nullptr) value->writeMembers(*this, object);
  });
}

void KeyedArchiver::Writer::putText(std::string_view key, std::string_view text,
                                    std::string_view what) {
  requireUTF8(text, what);
  const UID uid = reserve();
  objects_[uid] = list.string(text);
  put(key, reference(uid));
}

void KeyedArchiver::Writer::putElements(std::string_view key, std::span<const Ref<Object>> objects,
                                        bool compared, detail::ChangeWatch container) {
  std::vector<Node> elements;
  elements.reserve(objects.size());
  for (const Ref<Object>& object : objects) {
    if (compared && isContainer(*object)) {
      refuse("A container that is a key of a dictionary or a member of a set cannot be archived.");
    }
    elements.push_back(reference(encode(*object)));
    if (container.hasChanged()) refuse("A container was changed while it was archived.");
  }
  put(key, list.array(elements));
}

void KeyedArchiver::Writer::putNumbers(std::string_view key, std::span<const NumberValue> numbers) {
  std::vector<Node> elements;
  elements.reserve(numbers.size());
  for (const NumberValue number : numbers) elements.push_back(reference(encode(number)));
  put(key, list.array(elements));
}

Ref<Data> KeyedArchiver::archivedDataWithRootObject(const Object& object) {
  return Writer().archive(object);
}

bool KeyedArchiver::supportsKeyedCoding(const Object& object) noexcept {
  return object.objectClass().supportsKeyedCoding() || valueRecordOf(object) != nullptr;
}

template <class MakeNode>
void KeyedArchiver::Writer::putForHost(std::string_view key, MakeNode&& makeNode) {
  requireNoFailure();
  try {
    requireUTF8(key, "A key");
    put(escapedKey(key), makeNode());
  } catch (...) {
    failure_ = std::current_exception();
    throw;
  }
}

void KeyedArchiver::encodeObject(const Object* object, std::string_view forKey) {
  writer_.putForHost(
      forKey, [&] { return writer_.reference(object != nullptr ? writer_.encode(*object) : 0); });
}

void KeyedArchiver::encodeBool(bool value, std::string_view forKey) {
  writer_.putForHost(forKey, [&] { return writer_.list.number(value); });
}

void KeyedArchiver::encodeInteger(std::int64_t value, std::string_view forKey) {
  writer_.putForHost(forKey, [&] { return writer_.list.number(value); });
}

void KeyedArchiver::encodeFloat(float value, std::string_view forKey) {
  writer_.putForHost(forKey, [&] { return writer_.list.number(value); });
}

void KeyedArchiver::encodeDouble(double value, std::string_view forKey) {
  writer_.putForHost(forKey, [&] { return writer_.list.number(value); });
}

void KeyedArchiver::encodeBytes(std::span<const std::byte> bytes, std::string_view forKey) {
  writer_.putForHost(forKey, [&] { return writer_.list.data(bytes); });
}

}  // namespace tq
