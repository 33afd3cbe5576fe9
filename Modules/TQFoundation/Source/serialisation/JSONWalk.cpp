#include <TQFoundation/serialisation/detail/JSONWalk.h>

#include <algorithm>
#include <functional>
#include <span>
#include <string>
#include <utility>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/platform/archive/KeyedUnarchiver.h>
#include <TQFoundation/platform/text/Base64.h>
#include <TQFoundation/serialisation/TQJSONDecoder.h>
#include <TQFoundation/serialisation/detail/JSONValueForms.h>

// A tree belongs to the host, whose constructors may change it while they run. So all that is read
// afterwards is held, and of a mutable container it is a fixed copy.

namespace tq::detail {
namespace {

/// Returns the container, or a fixed copy of a mutable one.
template <class Container>
Ref<Container> fixed(const Container& container) {
  return Ref<Container>::adopt(static_cast<Container*>(container.copy().leak()));
}

}  // namespace

/// Makes the members of an object the current ones during its lifetime.
class JSONWalk::Entered {
 public:
  Entered(JSONWalk& walk, JSONNode object) : Entered(walk) {
    Ref<JSONShape> shape = walk.builder_.shapeOf(object, walk.words_);
    walk.frames_.emplace_back(TextFrame{object, std::move(shape), firstWord_});
  }
  Entered(JSONWalk& walk, TreeFrame frame) : Entered(walk) { walk.frames_.emplace_back(frame); }
  ~Entered() {
    if (walk_.frames_.size() > frameCount_) walk_.frames_.pop_back();
    walk_.words_.resize(firstWord_);
  }
  Entered(const Entered&) = delete;
  Entered& operator=(const Entered&) = delete;

 private:
  explicit Entered(JSONWalk& walk) noexcept
      : walk_(walk), frameCount_(walk.frames_.size()), firstWord_(walk.words_.size()) {}

  JSONWalk& walk_;
  std::size_t frameCount_;
  std::size_t firstWord_;
};

/// Collects the decoded content of one container on a stack that all containers share.
class JSONWalk::Gathered {
 public:
  explicit Gathered(JSONWalk& walk) : stack_(walk.gathered_), first_(stack_.size()) {}
  ~Gathered() {
    // A destructor may call the decoder, which uses the same stack.
    while (stack_.size() > first_) {
      const Ref<Object> last = std::move(stack_.back());
      stack_.pop_back();
    }
  }
  Gathered(const Gathered&) = delete;
  Gathered& operator=(const Gathered&) = delete;
  void add(Ref<Object> object) { stack_.push_back(std::move(object)); }
  [[nodiscard]] std::span<Ref<Object>> all() { return std::span(stack_).subspan(first_); }

 private:
  std::vector<Ref<Object>>& stack_;
  std::size_t first_;
};

/// One level of containers of a parsed tree. (The parser limits the depth of text.)
class JSONWalk::Level {
 public:
  explicit Level(JSONWalk& walk) : walk_(walk) {
    if (walk_.depth_ == JSONDocument::kDepthLimit && !walk_.isRefused_) {
      walk_.decoder_.setError(Error::errorWithDomain(
          TQJSONDecoderError, 1,
          std::string_view("The parsed tree is cyclic, or nested deeper than 512 containers.")));
      walk_.isRefused_ = true;
    }
    ++walk_.depth_;
  }
  ~Level() {
    if (--walk_.depth_ == 0) walk_.isRefused_ = false;
  }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;
  /// Returns true from the first container that is too deep until the whole tree is left. Otherwise
  /// a tree that contains itself several times would take endless time.
  [[nodiscard]] bool isTooDeep() const noexcept { return walk_.isRefused_; }

 private:
  JSONWalk& walk_;
};

/// The members that the constructor of an object has asked for.
struct JSONWalk::Asked {
  std::vector<bool> members;   // by index in the object; empty if it has no constructor
  std::size_t frameCount = 0;  // while the object's members are the current ones
  bool isAll = false;
};

Ref<Error> invalidClassError(std::string_view className) {
  std::string text = "Invalid object class ";
  text.append(className).append(" found in archive");
  return Error::errorWithDomain(TQJSONDecoderError, 0, std::string_view(text));
}

// MARK: root

void JSONWalk::setRoot(JSONDocument document) {
  root_ = std::make_shared<const JSONDocument>(std::move(document));
}

Ref<Object> JSONWalk::parsedRoot() {
  if (const auto* tree = std::get_if<Ref<Object>>(&root_)) return *tree;
  return builder_.objectOf((*std::get_if<Text>(&root_))->root());
}

Ref<Object> JSONWalk::decodeRoot() {
  const auto held = root_;  // an object that is being decoded may replace the root
  if (const Text* text = std::get_if<Text>(&held)) return decode((*text)->root());
  const auto& tree = *std::get_if<Ref<Object>>(&held);
  return tree ? decode(*tree) : nullptr;
}

// MARK: values

Ref<Object> JSONWalk::decode(const JSONMember& member) {
  return member.node() != nullptr ? decode(*member.node()) : decode(member.object());
}

Ref<Object> JSONWalk::decode(JSONNode node) {
  if (node.kind() == JSONNode::Kind::object) {
    const Entered entered(*this, node);
    return decodeEntered();
  }
  if (node.kind() != JSONNode::Kind::array) return JSONObjectBuilder::scalarOf(node);
  if (Ref<Array> numbers = JSONObjectBuilder::numbersOf(node)) return numbers;
  return JSONObjectBuilder::arrayOf(node, [this](JSONNode element) { return decode(element); });
}

Ref<Object> JSONWalk::decode(const Object& parsed) {
  switch (parsed.kind()) {
    case ObjectKind::dictionary:
      return decode(static_cast<const Dictionary&>(parsed));
    case ObjectKind::array:
      return decode(static_cast<const Array&>(parsed));
    default:
      return Ref<Object>(const_cast<Object*>(&parsed));
  }
}

Ref<Object> JSONWalk::decode(const Dictionary& parsed) {
  const Level level(*this);
  if (level.isTooDeep()) return nullptr;
  const auto held = share(parsed);
  const Ref<Dictionary> members = fixed(parsed);
  const Entered entered(*this, TreeFrame{&parsed, members.get()});
  return decodeEntered();
}

Ref<Array> JSONWalk::decode(const Array& parsed) {
  const Level level(*this);
  if (level.isTooDeep()) return nullptr;
  Ref<Array> original = fixed(parsed);
  if (original->isPacked()) return original;
  Gathered elements(*this);
  for (const Object& element : *original) {
    if (Ref<Object> object = decode(element)) elements.add(std::move(object));
  }
  return JSONObjectBuilder::arrayOf(elements.all());
}

// MARK: the current object

/// Decodes the object that was entered last. The reserved keys are looked up in a fixed order; the
/// first one present decides.
Ref<Object> JSONWalk::decodeEntered() {
  const auto* frame = std::get_if<TextFrame>(&frames_.back());
  if (frame != nullptr && !frame->shape->isMarked()) return decodeMembers();
  if (const auto archive = lookUp(TQJSONRawNSArchiveKey)) return decodeArchive(*archive);
  if (const auto name = lookUp(TQJSONClassKey)) return decodeStructured(name->text());
  if (const auto data = lookUp(TQJSONRawDataKey)) return decodeData(*data);
  return decodeMembers();
}

Ref<Object> JSONWalk::decodeData(const JSONMember& data) {
  const auto text = data.text();
  Ref<Data> bytes = text ? dataFromBase64(*text) : nullptr;
  if (unread_ != nullptr) {
    if (!bytes) reportUnread(UnreadContent::Kind::unreadableBytes, {});
    reportUnasked({}, {});
  }
  return bytes;
}

Ref<Object> JSONWalk::decodeArchive(const JSONMember& archive) {
  if (unread_ == nullptr) return unarchive(archive, nullptr);
  UnreadContent inArchive;
  Ref<Object> object = unarchive(archive, &inArchive);
  if (unread_ == nullptr) return object;  // the host stopped it meanwhile
  if (!object && inArchive.isEmpty()) reportUnread(UnreadContent::Kind::unreadableBytes, {});
  for (const UnreadContent::Entry& entry : inArchive.entries()) {
    unread_->add(
        entry.kind, entry.className, entry.member, [this] { return pointerToCurrentObject(); },
        entry.count);
  }
  reportUnasked({}, {});
  return object;
}

Ref<Object> JSONWalk::unarchive(const JSONMember& archive, UnreadContent* unread) {
  const auto text = archive.text();
  const Ref<Data> bytes = text ? dataFromBase64(*text) : nullptr;
  if (!bytes) return nullptr;
  // The delegate is called once for each class.
  std::vector<std::pair<const Class*, bool>> known;
  const auto mayInstantiate = [&](const Class& named) {
    const auto found = std::ranges::find(known, &named, &std::pair<const Class*, bool>::first);
    if (found != known.end()) return found->second;
    const bool mayBeMade = decoder_.mayUnarchive(named);
    if (unread != nullptr && !mayBeMade) {
      const std::string_view name = named.codingName();
      unread->add(decoder_.reasonForNoClass(name), name, {}, [] { return std::string(); });
    }
    return known.emplace_back(&named, mayBeMade).second;
  };
  Ref<Error> exceededLimit;
  Ref<Object> object = KeyedUnarchiver::unarchiveRootObject(
      bytes->bytes(), &exceededLimit, decoder_.limits(), mayInstantiate, unread);
  decoder_.setError(std::move(exceededLimit));
  // An archive of a string, a number or data names no class.
  return object && mayInstantiate(object->objectClass()) ? object : nullptr;
}

Ref<Object> JSONWalk::decodeStructured(std::optional<std::string_view> className) {
  const Class* named = className ? decoder_.classFromClassName(*className) : nullptr;
  if (named == nullptr) {
    const std::string_view name = className.value_or("");
    if (unread_ != nullptr) reportUnread(decoder_.reasonForNoClass(name), name);
    return nullptr;
  }
  auto construct = named->json().initWithJSONDecoder;
  if (construct == nullptr) construct = jsonFormOf(*named).initWithJSONDecoder;
  if (construct == nullptr) {
    decoder_.setError(invalidClassError(*className));
    return currentObject();
  }
  // "_class" is the first member; the object's own members follow.
  if (auto* frame = std::get_if<TextFrame>(&frames_.back())) frame->hint = 1;
  return unread_ == nullptr ? construct(decoder_) : constructAndReport(construct, *className);
}

Ref<Dictionary> JSONWalk::decodeMembers() {
  if (frames_.empty()) return Dictionary::dictionary();
  noteAllAsked();
  const std::size_t index = frames_.size() - 1;
  const auto frame = [&] { return std::get_if<TextFrame>(&frames_[index]); };  // frames_ grows
  if (frame() == nullptr) {
    return decodeMembersOfTree(*std::get_if<TreeFrame>(&frames_[index])->members);
  }
  const JSONShape& shape = *frame()->shape;  // the frame keeps it
  const std::size_t count = shape.distinctKeys()->count();
  Gathered values(*this);
  for (std::size_t i = 0; i < count; ++i) {
    values.add(decode(memberAt(*frame(), shape.memberOfDistinctKey(i))));
  }
  return JSONObjectBuilder::dictionaryOf(shape, values.all());
}

/// The keys of a tree may be any objects.
Ref<Dictionary> JSONWalk::decodeMembersOfTree(const Dictionary& members) {
  std::vector<std::pair<Ref<Object>, Ref<Object>>> entries;
  for (const Dictionary::Entry entry : members) {
    Ref<Object> object = decode(entry.value);
    if (object) entries.emplace_back(share(entry.key), std::move(object));
  }
  return Dictionary::dictionaryWithEntries(entries);
}

Ref<Dictionary> JSONWalk::currentObject() {
  if (frames_.empty()) return nullptr;
  noteAllAsked();
  if (const auto* frame = std::get_if<TextFrame>(&frames_.back())) {
    return refCast<Dictionary>(builder_.objectOf(frame->object));
  }
  return Ref<Dictionary>(const_cast<Dictionary*>(std::get_if<TreeFrame>(&frames_.back())->object));
}

// MARK: what was not read

void JSONWalk::noteAsked(std::string_view key) {
  if (asked_->frameCount != frames_.size()) return;
  std::size_t index = 0;
  if (const auto* frame = std::get_if<TextFrame>(&frames_.back())) {
    index = frame->hint - 1;  // the member was found just now
  } else {
    const auto isKey = [key](const Ref<Object>& each) {
      const auto* text = objectCast<String>(each.get());
      return text != nullptr && text->view() == key;
    };
    const auto keys = std::get_if<TreeFrame>(&frames_.back())->members->keys();
    index = static_cast<std::size_t>(std::ranges::find_if(keys, isKey) - keys.begin());
  }
  asked_->members[index] = true;
}

void JSONWalk::noteAllAsked() noexcept {
  if (asked_ != nullptr && asked_->frameCount == frames_.size()) asked_->isAll = true;
}

Ref<Object> JSONWalk::constructAndReport(Ref<Object> (*construct)(TQJSONDecoder&),
                                         std::string_view className) {
  struct Restored {
    Asked*& place;
    Asked* outer;
    ~Restored() { place = outer; }
  };
  const auto* frame = std::get_if<TextFrame>(&frames_.back());
  const std::size_t count = frame != nullptr
                                ? frame->shape->count()
                                : std::get_if<TreeFrame>(&frames_.back())->members->count();
  Asked asked{std::vector<bool>(count), frames_.size()};
  const Restored restored{asked_, std::exchange(asked_, &asked)};
  Ref<Object> object = construct(decoder_);
  if (unread_ != nullptr) reportUnasked(className, asked);
  return object;
}

/// Reports the members of the current object that no constructor asked for, except reserved ones.
void JSONWalk::reportUnasked(std::string_view className, const Asked& asked) {
  if (asked.isAll) return;
  const auto* frame = std::get_if<TextFrame>(&frames_.back());
  const auto keys = frame != nullptr ? frame->shape->distinctKeys()->keys()
                                     : std::get_if<TreeFrame>(&frames_.back())->members->keys();
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const std::size_t index = frame != nullptr ? frame->shape->memberOfDistinctKey(i) : i;
    if (!asked.members.empty() && asked.members[index]) continue;
    const std::string key = keys[i]->description();
    if (unread_ == nullptr) return;  // the host stopped it meanwhile
    if (isReservedKey(key)) continue;
    unread_->add(UnreadContent::Kind::member, className, key, [&] {
      return frame != nullptr ? memberAt(*frame, index).pointer() : std::string();
    });
  }
}

void JSONWalk::reportUnread(UnreadContent::Kind kind, std::string_view className) {
  unread_->add(kind, className, {}, [this] { return pointerToCurrentObject(); });
}

std::string JSONWalk::pointerToCurrentObject() const {
  const auto* frame = std::get_if<TextFrame>(&frames_.back());
  return frame != nullptr ? frame->object.pointer() : std::string();
}

}  // namespace tq::detail
