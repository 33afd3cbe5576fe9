#pragma once

/// @file JSONWalk.h
/// The traversal of the archive that a decoder reads.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/UnreadContent.h>
#include <TQFoundation/platform/json/JSONDocument.h>
#include <TQFoundation/platform/json/JSONObjectBuilder.h>
#include <TQFoundation/platform/json/JSONShape.h>

namespace tq {
class TQJSONDecoder;
}

namespace tq::detail {

/// A member of an object: a value of parsed text, or an object of a parsed tree.
class JSONMember {
 public:
  explicit JSONMember(JSONNode node) noexcept : value_(node) {}
  explicit JSONMember(const Object& object) noexcept : value_(&object) {}

  /// Returns the value of parsed text; null for an object of a parsed tree.
  [[nodiscard]] const JSONNode* node() const noexcept { return std::get_if<JSONNode>(&value_); }
  /// Returns the object of a parsed tree. Only if node() is null.
  [[nodiscard]] const Object& object() const noexcept {
    return **std::get_if<const Object*>(&value_);
  }

  /// Returns the characters of a string; no value for anything else.
  [[nodiscard]] std::optional<std::string_view> text() const noexcept {
    if (const JSONNode* at = node()) {
      if (at->kind() != JSONNode::Kind::string) return std::nullopt;
      return at->text();
    }
    if (object().kind() != ObjectKind::string) return std::nullopt;
    return static_cast<const String&>(object()).view();
  }

  /// Returns a number, true or false; no value for anything else.
  [[nodiscard]] std::optional<NumberValue> number() const noexcept {
    if (const JSONNode* at = node()) {
      if (!at->isNumber()) return std::nullopt;
      return at->number();
    }
    if (object().kind() != ObjectKind::number) return std::nullopt;
    return static_cast<const Number&>(object()).value();
  }

 private:
  std::variant<JSONNode, const Object*> value_;
};

/// Returns the error for a class that the delegate refused or that archives cannot construct.
[[nodiscard]] Ref<Error> invalidClassError(std::string_view className);

/// Makes objects of an archive, and keeps track of the object whose members are being read.
///
/// Each object that is being decoded has a frame. The members of all frames of parsed text are on
/// one stack, so entering an object allocates nothing once the stacks have grown.
class JSONWalk {
 public:
  explicit JSONWalk(TQJSONDecoder& decoder) noexcept : decoder_(decoder) {}

  /// Replaces the archive: by parsed text, or by a parsed tree, which may be null.
  void setRoot(JSONDocument document);
  void setRoot(Ref<Object> tree) noexcept { root_ = std::move(tree); }
  /// Returns the archive as a parsed tree; null if there is none.
  [[nodiscard]] Ref<Object> parsedRoot();
  /// Returns the object that the archive represents; null if there is none.
  [[nodiscard]] Ref<Object> decodeRoot();

  /// Adds to `unread`, from now on, what is not read. Null stops that.
  void setUnread(UnreadContent* unread) noexcept { unread_ = unread; }

  /// Returns the object that a parsed value represents.
  [[nodiscard]] Ref<Object> decode(const JSONMember& member);
  [[nodiscard]] Ref<Object> decode(const Object& parsed);
  [[nodiscard]] Ref<Object> decode(const Dictionary& parsed);
  [[nodiscard]] Ref<Array> decode(const Array& parsed);

  /// Returns a member of the current object; no value if it is absent or there is no object.
  [[nodiscard]] std::optional<JSONMember> find(std::string_view key) {
    const std::optional<JSONMember> member = lookUp(key);
    if (asked_ != nullptr && member) noteAsked(key);
    return member;
  }
  /// Returns all members of the current object, decoded. Of equal keys, the first one counts.
  [[nodiscard]] Ref<Dictionary> decodeMembers();
  /// Returns the current object as parsed; null if there is none.
  [[nodiscard]] Ref<Dictionary> currentObject();

 private:
  using Text = std::shared_ptr<const JSONDocument>;
  struct Asked;
  class Entered;
  class Gathered;
  class Level;

  /// An object of parsed text whose members are being read.
  struct TextFrame {
    JSONNode object;
    Ref<JSONShape> shape;
    std::size_t firstWord;  // index in words_
    std::size_t hint = 0;   // see JSONShape::find
  };
  /// An object of a parsed tree whose members are being read. decode() holds both.
  struct TreeFrame {
    const Dictionary* object;
    const Dictionary* members;  // the object, or a fixed copy of a mutable one
  };

  [[nodiscard]] JSONNode memberAt(const TextFrame& frame, std::size_t index) const noexcept {
    return frame.object.at(words_[frame.firstWord + index]);
  }

  [[nodiscard]] std::optional<JSONMember> lookUp(std::string_view key) {
    if (frames_.empty()) return std::nullopt;
    if (auto* frame = std::get_if<TextFrame>(&frames_.back())) {
      const auto index = frame->shape->find(key, frame->hint);
      if (!index) return std::nullopt;
      return JSONMember(memberAt(*frame, *index));
    }
    const Object* object = std::get_if<TreeFrame>(&frames_.back())->members->objectForKey(key);
    if (object == nullptr) return std::nullopt;
    return JSONMember(*object);
  }

  [[nodiscard]] Ref<Object> decode(JSONNode node);
  [[nodiscard]] Ref<Object> decodeEntered();
  [[nodiscard]] Ref<Object> decodeData(const JSONMember& data);
  [[nodiscard]] Ref<Object> decodeArchive(const JSONMember& archive);
  [[nodiscard]] Ref<Object> unarchive(const JSONMember& archive, UnreadContent* unread);
  [[nodiscard]] Ref<Object> decodeStructured(std::optional<std::string_view> className);
  [[nodiscard]] Ref<Object> constructAndReport(Ref<Object> (*construct)(TQJSONDecoder&),
                                               std::string_view className);
  [[nodiscard]] Ref<Dictionary> decodeMembersOfTree(const Dictionary& members);

  // What was not read. The functions that report are only for when unread_ is set.

  void noteAsked(std::string_view key);
  void noteAllAsked() noexcept;
  void reportUnasked(std::string_view className, const Asked& asked);
  void reportUnread(UnreadContent::Kind kind, std::string_view className);
  [[nodiscard]] std::string pointerToCurrentObject() const;

  TQJSONDecoder& decoder_;
  std::variant<Ref<Object>, Text> root_;
  JSONObjectBuilder builder_;
  std::vector<std::variant<TextFrame, TreeFrame>> frames_;  // innermost object last
  std::vector<const std::uint64_t*> words_;                 // values of the text frames' members
  std::vector<Ref<Object>> gathered_;                       // decoded, not yet in their containers
  std::size_t depth_ = 0;   // number of containers of a parsed tree that are entered
  bool isRefused_ = false;  // the parsed tree turned out to be too deep
  UnreadContent* unread_ = nullptr;
  Asked* asked_ = nullptr;  // of the innermost object whose constructor runs; null without unread_
};

}  // namespace tq::detail
