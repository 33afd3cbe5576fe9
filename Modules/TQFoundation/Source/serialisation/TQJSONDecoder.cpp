#include <TQFoundation/serialisation/TQJSONDecoder.h>

#include <charconv>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/archive/KeyedUnarchiver.h>
#include <TQFoundation/platform/files/FileReading.h>
#include <TQFoundation/platform/json/JSONObjectBuilder.h>
#include <TQFoundation/platform/log/PlainLog.h>
#include <TQFoundation/platform/text/Base64.h>
#include <TQFoundation/serialisation/detail/JSONValueForms.h>

namespace tq {
namespace {

using detail::JSONObjectBuilder;
using detail::JSONShape;

/// Classes by the name that archives give them; null bans the name.
std::map<std::string, const Class*, std::less<>>& TQJSONDecoderClassMap() {
  static auto& map = *new std::map<std::string, const Class*, std::less<>>;
  return map;
}

Ref<Error> invalidClassError(std::string_view name) {
  std::string text = "Invalid object class ";
  return Error::errorWithDomain(TQJSONDecoderError, 0,
                                std::string_view(text.append(name).append(" found in archive")));
}

/// The bytes with "?" for every control character but NUL, each reported in the log.
Ref<Data> repaired(std::span<const std::byte> bytes) {
  Ref<MutableData> copy = MutableData::dataWithLength(0);
  copy->append(bytes);
  const std::span<std::byte> text = copy->mutableBytes();
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = std::to_integer<unsigned>(text[i]);
    if (byte < 1 || byte > 31) continue;
    char digits[2];
    const char* end = std::to_chars(digits, digits + 2, byte, 16).ptr;
    std::string line = "Strange \\x";
    line.append(static_cast<const char*>(digits), end).append(" character at ");
    plainLog(line.append(std::to_string(i)).append("\n"));
    text[i] = std::byte{'?'};
  }
  return copy;
}

/// A member, wherever it stands: on the tape of parsed text, or in a parsed tree of objects.
struct Member {
  std::optional<JSONNode> node;
  const Object* object = nullptr;

  [[nodiscard]] std::optional<std::string_view> text() const noexcept {
    if (node) {
      if (node->kind() != JSONNode::Kind::string) return std::nullopt;
      return node->text();
    }
    if (object->kind() != ObjectKind::string) return std::nullopt;
    return static_cast<const String*>(object)->view();
  }

  [[nodiscard]] std::optional<NumberValue> number() const noexcept {
    if (node) {
      if (!node->isNumber()) return std::nullopt;
      return node->number();
    }
    if (object->kind() != ObjectKind::number) return std::nullopt;
    return static_cast<const Number*>(object)->value();
  }
};

}  // namespace

/// The tree and where in it the decoder is.
///
/// An object being decoded is a frame: its shape, and the places of its members at the end of one
/// stack that all frames share. So entering an object allocates nothing once the stacks have grown.
struct TQJSONDecoder::Walk {
  struct Frame {
    Ref<JSONShape> shape;
    std::size_t firstMember = 0;
    std::size_t hint = 0;
    std::optional<JSONNode> node;        // the object itself, on the tape…
    const Dictionary* parsed = nullptr;  // …or in a tree of objects
  };

  explicit Walk(TQJSONDecoder& owner) : decoder(owner) {}

  /// Makes an object's members the current ones for as long as it lives.
  class Entered {
   public:
    Entered(Walk& walk, JSONNode object) : walk_(walk), firstMember_(walk.members.size()) {
      Ref<JSONShape> shape = walk.builder.shapeOf(object, walk.members);
      walk.frames.push_back({std::move(shape), firstMember_, 0, object, nullptr});
    }
    Entered(Walk& walk, const Dictionary& parsed) : walk_(walk), firstMember_(walk.members.size()) {
      std::vector<std::string_view> keys;
      for (const Dictionary::Entry entry : parsed) {
        if (entry.key.kind() != ObjectKind::string) continue;
        keys.push_back(static_cast<const String&>(entry.key).view());
        walk.members.push_back(&entry.value);
      }
      walk.frames.push_back({walk.builder.shapeOf(keys), firstMember_, 0, std::nullopt, &parsed});
    }
    ~Entered() {
      walk_.frames.pop_back();
      walk_.members.resize(firstMember_);
    }
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;

   private:
    Walk& walk_;
    std::size_t firstMember_;
  };

  /// What is decoded for one container, on a stack that all share; forgotten however that ends.
  class Gathered {
   public:
    explicit Gathered(Walk& walk) : stack_(walk.gathered), first_(stack_.size()) {}
    ~Gathered() { stack_.resize(first_); }
    Gathered(const Gathered&) = delete;
    Gathered& operator=(const Gathered&) = delete;
    void add(Ref<Object> object) { stack_.push_back(std::move(object)); }
    [[nodiscard]] std::span<Ref<Object>> all() { return std::span(stack_).subspan(first_); }

   private:
    std::vector<Ref<Object>>& stack_;
    std::size_t first_;
  };

  [[nodiscard]] Member memberAt(const Frame& frame, std::size_t index) const {
    const void* place = members[frame.firstMember + index];
    if (frame.node) return {frame.node->place(static_cast<const std::uint64_t*>(place)), nullptr};
    return {std::nullopt, static_cast<const Object*>(place)};
  }

  [[nodiscard]] std::optional<Member> find(std::string_view key) {
    if (frames.empty()) return std::nullopt;
    Frame& frame = frames.back();
    const auto index = frame.shape->find(key, frame.hint);
    if (!index) return std::nullopt;
    return memberAt(frame, *index);
  }

  [[nodiscard]] Ref<Object> decode(const Member& member) {
    return member.node ? decode(*member.node) : decode(*member.object);
  }

  [[nodiscard]] Ref<Object> decode(JSONNode node) {
    if (node.kind() == JSONNode::Kind::object) {
      const Entered entered(*this, node);
      return decodeEntered();
    }
    if (node.kind() != JSONNode::Kind::array) return JSONObjectBuilder::scalarOf(node);
    if (Ref<Array> numbers = JSONObjectBuilder::numbersOf(node)) return numbers;
    Gathered elements(*this);
    for (JSONNode element = node.first(); !(element == node.end()); element = element.next()) {
      if (Ref<Object> object = decode(element)) elements.add(std::move(object));
    }
    return JSONObjectBuilder::arrayOf(elements.all());
  }

  [[nodiscard]] Ref<Object> decode(const Object& parsed) {
    switch (parsed.kind()) {
      case ObjectKind::dictionary:
        return decode(static_cast<const Dictionary&>(parsed));
      case ObjectKind::array:
        return decode(static_cast<const Array&>(parsed));
      default:
        return Ref<Object>(const_cast<Object*>(&parsed));
    }
  }

  [[nodiscard]] Ref<Object> decode(const Dictionary& parsed) {
    const Level level(*this);
    if (level.isTooDeep()) return nullptr;
    const Entered entered(*this, parsed);
    return decodeEntered();
  }

  [[nodiscard]] Ref<Array> decode(const Array& parsed) {
    const Level level(*this);
    if (level.isTooDeep()) return nullptr;
    if (parsed.isPacked()) return Ref<Array>(const_cast<Array*>(&parsed));
    Gathered elements(*this);
    for (const Object& element : parsed) {
      if (Ref<Object> object = decode(element)) elements.add(std::move(object));
    }
    return JSONObjectBuilder::arrayOf(elements.all());
  }

  /// Every member of the current object, decoded. Of equal keys the first.
  [[nodiscard]] Ref<Dictionary> decodeMembers() {
    if (frames.empty()) return Dictionary::dictionary();
    const std::size_t frameIndex = frames.size() - 1;
    if (frames[frameIndex].parsed != nullptr) return decodeMembersOf(*frames[frameIndex].parsed);
    const Ref<JSONShape> shape = frames[frameIndex].shape;
    const std::size_t count = shape->distinctKeys()->count();
    Gathered values(*this);
    for (std::size_t i = 0; i < count; ++i) {
      values.add(decode(memberAt(frames[frameIndex], shape->memberOfDistinctKey(i))));
    }
    return JSONObjectBuilder::dictionaryOf(*shape, values.all());
  }

  TQJSONDecoder& decoder;
  std::shared_ptr<const JSONDocument> document;  // the root is text…
  Ref<Object> parsedRoot;                        // …or a tree of objects, or none
  JSONObjectBuilder builder;
  std::vector<Frame> frames;
  std::vector<const void*> members;
  std::vector<Ref<Object>> gathered;  // decoded, waiting for their container
  std::vector<std::pair<std::string, const Class*>> namedClasses;  // looked up before
  std::size_t depth = 0;                                           // in a parsed tree
  bool isRefused = false;  // the tree turned out to be too deep

 private:
  /// One container of a parsed tree deeper. (Text is as deep as the parser lets through.)
  class Level {
   public:
    explicit Level(Walk& walk) : walk_(walk) {
      if (walk_.depth == JSONDocument::kDepthLimit && !walk_.isRefused) {
        walk_.decoder.setError(Error::errorWithDomain(
            TQJSONDecoderError, 1,
            std::string_view("The parsed tree is cyclic, or nested deeper than 512 containers.")));
        walk_.isRefused = true;
      }
      ++walk_.depth;
    }
    ~Level() {
      if (--walk_.depth == 0) walk_.isRefused = false;
    }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    /// From the first container that is too deep on for all: a tree that holds itself several times
    /// would be walked for ever.
    [[nodiscard]] bool isTooDeep() const noexcept { return walk_.isRefused; }

   private:
    Walk& walk_;
  };

  /// The same of a parsed tree, whose keys may be anything.
  [[nodiscard]] Ref<Dictionary> decodeMembersOf(const Dictionary& parsed) {
    std::vector<std::pair<Ref<Object>, Ref<Object>>> entries;
    for (const Dictionary::Entry entry : parsed) {
      Ref<Object> object = decode(entry.value);
      if (object) entries.emplace_back(share(entry.key), std::move(object));
    }
    return Dictionary::dictionaryWithEntries(entries);
  }

  /// The reserved keys are asked for in this order; the first present decides.
  [[nodiscard]] Ref<Object> decodeEntered() {
    if (!frames.back().shape->isMarked()) return decodeMembers();
    if (const auto archive = find(TQJSONRawNSArchiveKey)) return decodeArchive(*archive);
    if (const auto name = find(TQJSONClassKey)) return decodeStructured(name->text());
    if (const auto data = find(TQJSONRawDataKey)) {
      const auto text = data->text();
      return text ? dataFromBase64(*text) : nullptr;
    }
    return decodeMembers();
  }

  [[nodiscard]] Ref<Object> decodeArchive(const Member& archive) {
    const auto text = archive.text();
    const Ref<Data> bytes = text ? dataFromBase64(*text) : nullptr;
    if (!bytes) return nullptr;
    Ref<Object> object = KeyedUnarchiver::unarchiveRootObject(bytes->bytes());
    if (!object) return nullptr;
    const std::string_view name = object->objectClass().codingName();
    return decoder.classFromClassName(name) != nullptr ? object : nullptr;
  }

  [[nodiscard]] Ref<Object> decodeStructured(std::optional<std::string_view> name) {
    const Class* named = name ? decoder.classFromClassName(*name) : nullptr;
    if (named == nullptr) return nullptr;
    auto construct = named->json().initWithJSONDecoder;
    if (construct == nullptr) construct = detail::jsonFormOf(*named).initWithJSONDecoder;
    if (construct != nullptr) {
      frames.back().hint = 1;  // "_class" is the first member, the object's own follow
      return construct(decoder);
    }
    decoder.setError(invalidClassError(*name));
    return decoder.currentObjectDict();
  }
};

TQJSONDecoder::TQJSONDecoder() : walk_(std::make_unique<Walk>(*this)) {}
TQJSONDecoder::~TQJSONDecoder() = default;

Ref<TQJSONDecoder> TQJSONDecoder::initWithRootObject(Ref<Object> root) {
  auto decoder = Ref<TQJSONDecoder>::adopt(new TQJSONDecoder);
  decoder->walk_->parsedRoot = std::move(root);
  return decoder;
}

Ref<TQJSONDecoder> TQJSONDecoder::initWithData(const Data& data) {
  Ref<TQJSONDecoder> decoder = init();
  decoder->parse(data.bytes(), Data::kReadablePadding);
  return decoder;
}

Ref<TQJSONDecoder> TQJSONDecoder::initWithData(std::span<const std::byte> bytes) {
  Ref<TQJSONDecoder> decoder = init();
  decoder->parse(bytes, 0);
  return decoder;
}

void TQJSONDecoder::parse(std::span<const std::byte> bytes, std::size_t readablePadding) {
  Ref<Error> error;
  std::optional<JSONDocument> parsed = JSONDocument::parse(bytes, readablePadding, nullptr);
  if (!parsed) {
    const Ref<Data> text = repaired(bytes);
    parsed = JSONDocument::parse(text->bytes(), Data::kReadablePadding, &error);
  }
  walk_->parsedRoot = nullptr;
  walk_->document = nullptr;
  if (!parsed) return setError(std::move(error));
  walk_->document = std::make_shared<const JSONDocument>(*std::move(parsed));
}

// The root is held: an object that is being decoded may put another in its place.
Ref<Object> TQJSONDecoder::decode(Ref<Error>* error) {
  const std::shared_ptr<const JSONDocument> document = walk_->document;
  const Ref<Object> parsedRoot = walk_->parsedRoot;
  Ref<Object> object;
  if (document) {
    object = walk_->decode(document->root());
  } else if (parsedRoot) {
    object = walk_->decode(*parsedRoot);
  }
  setOutError(error, error_);
  return object;
}

Ref<Object> TQJSONDecoder::decodeDataError(const Data& data, Ref<Error>* error) {
  parse(data.bytes(), Data::kReadablePadding);
  return decode(error);
}

Ref<Object> TQJSONDecoder::decodeDictionary(Ref<Dictionary> parsed, Ref<Error>* error) {
  walk_->document.reset();
  walk_->parsedRoot = std::move(parsed);
  return decode(error);
}

Ref<Object> TQJSONDecoder::decodeData(const Data& data, Ref<Error>* error) {
  return initWithData(data)->decode(error);
}

Ref<Object> TQJSONDecoder::decodeFileAtURL(const URL& url, Ref<Error>* error) {
  const Ref<Data> data = dataWithContentsOfURL(url, error);
  return data ? decodeData(*data, error) : nullptr;
}

void TQJSONDecoder::setError(Ref<Error> error) {
  if (!error) return;
  plainLog(error->description());
  if (!error_) error_ = std::move(error);
}

Ref<Object> TQJSONDecoder::root() {
  if (walk_->document) return walk_->builder.objectOf(walk_->document->root());
  return walk_->parsedRoot;
}

Ref<Dictionary> TQJSONDecoder::currentObjectDict() {
  if (walk_->frames.empty()) return nullptr;
  const Walk::Frame& frame = walk_->frames.back();
  if (frame.node) return refCast<Dictionary>(walk_->builder.objectOf(*frame.node));
  return Ref<Dictionary>(const_cast<Dictionary*>(frame.parsed));
}

Ref<Object> TQJSONDecoder::decodeObject(const Object& parsed) { return walk_->decode(parsed); }
Ref<Array> TQJSONDecoder::decodeArray(const Array& parsed) { return walk_->decode(parsed); }
Ref<Object> TQJSONDecoder::decodeDictionary(const Dictionary& parsed) {
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
  auto& known = walk_->namedClasses;
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
    if (!judge->shouldInstantiateObjectOfClass(*this, *named)) {
      setError(invalidClassError(name));
      return nullptr;
    }
  }
  return named;
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
