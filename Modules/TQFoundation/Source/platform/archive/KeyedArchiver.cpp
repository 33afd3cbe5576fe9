#include <TQFoundation/platform/archive/KeyedArchiver.h>

#include <cmath>
#include <exception>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>
#include <TQFoundation/platform/archive/detail/KeyedArchiveFormat.h>

namespace tq {
namespace {

using namespace detail::keyed;  // NOLINT: the format's vocabulary
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

/// Numbers come from documents, which may choose them with care.
struct HashOfBits {
  std::size_t operator()(std::uint64_t bits) const noexcept { return detail::hashOfWord(bits); }
};

bool isFinite(Point point) noexcept { return std::isfinite(point.x) && std::isfinite(point.y); }
bool isFinite(Size size) noexcept {
  return std::isfinite(size.width) && std::isfinite(size.height);
}

}  // namespace

/// Numbers objects in the order in which they are met, what they hold before the record of their
/// class, as the platform does.
class KeyedArchiver::Writer {
 public:
  Ref<Data> archive(const Object& root);

  /// The UID of an object, written now unless it has been.
  UID encode(const Object& object);
  UID encode(NumberValue number);

  Node reference(UID uid);

  /// Puts what a host has under its key. Once that has thrown, what is here may be torn: nothing of
  /// it is touched again, and what follows throws the same, whether or not the host has caught it.
  template <class MakeNode>
  void putForHost(std::string_view key, MakeNode&& makeNode);

  void put(std::string_view key, Node value) { record_->emplace_back(keyNode(key), value); }
  void putObject(std::string_view key, const Object& object) {
    put(key, reference(encode(object)));
  }

  detail::BinaryPropertyListWriter list;

 private:
  using Record = std::vector<std::pair<Node, Node>>;

  enum class State : std::uint8_t {
    open,    // being written; may be referred to by what it holds
    hidden,  // being written; a reader has nothing to refer to yet
    written,
  };
  struct Known {
    Ref<Object> object;  // held, so that no other object comes to lie at its address
    UID uid = 0;
    int hostsAbove = 0;
    State state = State::open;
  };

  UID reserve();
  Node keyNode(std::string_view key);
  UID classUID(const Class& record);
  Node write(const Object& object, Known& known);
  Node writeRecord(const Object& object, Known& known);
  void putContents(const Object& object, Known& known);
  void putText(std::string_view key, std::string_view text, std::string_view what);
  void putElements(std::string_view key, std::span<const Ref<Object>> objects, bool compared);
  void putArray(const Array& array);
  void putValue(const Value& value);
  void putURL(const URL& url);
  void requireHostInCycle(const Known& known) const;
  void requireNoFailure() const {
    if (failure_) std::rethrow_exception(failure_);
  }

  std::vector<Node> objects_;  // by UID
  std::vector<Node> uids_;     // the node that names a UID, by UID; kUnset until there is one
  std::unordered_map<const Object*, Known> known_;
  // Bits to UID, by what the format tells apart.
  std::unordered_map<std::uint64_t, UID, HashOfBits> numbers_[5];
  std::unordered_map<const Class*, UID> classes_;
  std::unordered_map<std::string, Node> keys_;
  Record* record_ = nullptr;  // of the object being written
  int depth_ = 0;
  int hosts_ = 0;  // host objects among those being written
  std::exception_ptr failure_;

  static constexpr Node kUnset = ~Node{0};
};

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
  Known& known = entry->second;  // stays where it is while others come
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
      "A cycle of containers, through no object that reads its end of it weakly, cannot be "
      "archived.");
}

Node KeyedArchiver::Writer::write(const Object& object, Known& known) {
  if (object.kind() == ObjectKind::string) {
    return list.string(static_cast<const String&>(object).view());
  }
  if (object.kind() == ObjectKind::data && &object.classForCoder() == &classOf<Data>) {
    return list.data(static_cast<const Data&>(object).bytes());
  }
  return writeRecord(object, known);
}

Node KeyedArchiver::Writer::writeRecord(const Object& object, Known& known) {
  if (depth_ == kMaximumDepth) {
    refuse("Objects that nest more than " + std::to_string(kMaximumDepth) +
           " deep cannot be archived.");
  }
  Record record;
  Record* const outer = std::exchange(record_, &record);
  ++depth_;
  if (const auto encodeWithCoder = object.objectClass().keyed().encodeWithCoder) {
    ++hosts_;
    KeyedArchiver archiver(*this);
    encodeWithCoder(object, archiver);
    requireNoFailure();
    --hosts_;
  } else {
    putContents(object, known);
  }
  put(kClassKey, reference(classUID(object.classForCoder())));
  --depth_;
  record_ = outer;
  return list.dictionary(record);
}

void KeyedArchiver::Writer::putContents(const Object& object, Known& known) {
  const Class& record = object.objectClass();
  if (object.kind() == ObjectKind::data) {
    put(kBytes, list.data(static_cast<const Data&>(object).bytes()));
  } else if (object.kind() == ObjectKind::array) {
    putArray(static_cast<const Array&>(object));
  } else if (object.kind() == ObjectKind::dictionary) {
    const auto& dictionary = static_cast<const Dictionary&>(object);
    known.state = State::hidden;
    putElements(kKeys, dictionary.keys(), true);
    known.state = State::open;
    putElements(kElements, dictionary.values(), false);
  } else if (object.kind() == ObjectKind::date) {
    put(kTime, list.number(static_cast<const Date&>(object).timeIntervalSinceReferenceDate()));
  } else if (object.kind() == ObjectKind::value) {
    putValue(static_cast<const Value&>(object));
  } else if (&record == &classOf<Set>) {
    known.state = State::hidden;
    putElements(kElements, static_cast<const Set&>(object).allObjects(), true);
  } else if (&record == &classOf<Error>) {
    const auto& error = static_cast<const Error&>(object);
    known.state = State::hidden;
    putText(kErrorDomain, error.domain(), "An error's domain");
    put(kErrorCode, list.number(error.code()));
    putObject(kErrorInfo, error.userInfo());
  } else if (&record == &classOf<UUID>) {
    put(kUUIDBytes, list.data(std::as_bytes(std::span(static_cast<const UUID&>(object).bytes()))));
  } else if (&record == &classOf<URL>) {
    putURL(static_cast<const URL&>(object));
  } else if (object.kind() != ObjectKind::null) {
    refuse("An object of class " + std::string(record.name()) +
           " has no encodeWithCoder and cannot be archived.");
  }
}

/// Text of an object's own, which has no identity: the archive makes a string of it.
void KeyedArchiver::Writer::putText(std::string_view key, std::string_view text,
                                    std::string_view what) {
  requireUTF8(text, what);
  const UID uid = reserve();
  objects_[uid] = list.string(text);
  put(key, reference(uid));
}

/// @param compared  whether a reader compares them, as keys and members of sets are
void KeyedArchiver::Writer::putElements(std::string_view key, std::span<const Ref<Object>> objects,
                                        bool compared) {
  std::vector<Node> elements;
  elements.reserve(objects.size());
  for (const Ref<Object>& object : objects) {
    if (compared && isContainer(*object)) {
      refuse("A container that is a key of a dictionary or a member of a set cannot be archived.");
    }
    elements.push_back(reference(encode(*object)));
  }
  put(key, list.array(elements));
}

void KeyedArchiver::Writer::putArray(const Array& array) {
  if (!array.isPacked()) return putElements(kElements, array.objects(), false);
  std::vector<Node> elements;
  elements.reserve(array.count());
  for (std::size_t i = 0; i < array.count(); ++i) {
    elements.push_back(reference(encode(array.numberAtIndex(i))));
  }
  put(kElements, list.array(elements));
}

// Infinite and NaN coordinates have no text that every reader takes, so they go by their bytes.
void KeyedArchiver::Writer::putValue(const Value& value) {
  const auto special = [this](ValueForm form) {
    put(kValueForm, list.number(static_cast<std::int64_t>(form)));
  };
  if (const auto point = value.pointValue(); point && isFinite(*point)) {
    special(ValueForm::point);
    putText(kPoint, textFromPoint(*point), {});
  } else if (const auto size = value.sizeValue(); size && isFinite(*size)) {
    special(ValueForm::size);
    putText(kSize, textFromSize(*size), {});
  } else if (const auto rect = value.rectValue();
             rect && isFinite(rect->origin) && isFinite(rect->size)) {
    special(ValueForm::rect);
    putText(kRect, textFromRect(*rect), {});
  } else if (const auto range = value.rangeValue()) {
    special(ValueForm::range);
    put(kRangeLocation, reference(encode(NumberValue(range->location))));
    put(kRangeLength, reference(encode(NumberValue(range->length))));
  } else {
    putText(kOtherType, value.typeSignature(), "A type signature");
    put(kOtherBytes, list.data(value.bytes()));
  }
}

void KeyedArchiver::Writer::putURL(const URL& url) {
  const std::string text = url.absoluteString();
  const Ref<URL> copy = URL::URLWithString(text);
  if (!copy || !copy->isEqual(url)) {
    refuse(
        "A URL that cannot be made from its own text, such as that of a path with a NUL, cannot be "
        "archived.");
  }
  put(kURLBase, reference(0));
  putText(kURLText, text, "A URL");
}

Ref<Data> KeyedArchiver::archivedDataWithRootObject(const Object& object) {
  return Writer().archive(object);
}

bool KeyedArchiver::supportsKeyedCoding(const Object& object) noexcept {
  const Class& record = object.objectClass();
  return record.supportsKeyedCoding() || object.kind() != ObjectKind::other ||
         &record == &classOf<Set> || &record == &classOf<Error> || &record == &classOf<UUID> ||
         &record == &classOf<URL>;
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
