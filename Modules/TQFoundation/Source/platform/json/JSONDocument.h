#pragma once

/// @file JSONDocument.h
/// JSON text, parsed once into a flat tape that is then walked without building anything.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// A value of a parsed document. Two pointers, valid while the document lives. Trivially copyable.
///
/// The tape: one 64-bit word a value, its kind in the top 8 bits. A number's value is the next
/// word. A container's word holds the index of the word behind it in its low 32 bits. A string's
/// word holds where its length (32 bits) and its bytes lie.
class JSONNode {
 public:
  /// What a value is; "yes" and "no" are true and false.
  enum class Kind : std::uint8_t {
    null = 'n',
    yes = 't',
    no = 'f',
    integer = 'l',
    unsignedInteger = 'u',
    real = 'd',
    string = '"',
    array = '[',
    object = '{',
  };

  JSONNode() noexcept = default;
  /// A value at its word of the tape.
  JSONNode(const std::uint64_t* tape, const std::uint64_t* word,
           const std::uint8_t* strings) noexcept
      : tape_(tape), word_(word), strings_(strings) {}

  /// What it is.
  [[nodiscard]] Kind kind() const noexcept { return static_cast<Kind>(*word_ >> 56); }
  /// True for numbers, true and false.
  [[nodiscard]] bool isNumber() const noexcept {
    switch (kind()) {
      case Kind::yes:
      case Kind::no:
      case Kind::integer:
      case Kind::unsignedInteger:
      case Kind::real:
        return true;
      default:
        return false;
    }
  }

  /// The number; for a node that isNumber(). true and false are booleans.
  [[nodiscard]] NumberValue number() const noexcept {
    switch (kind()) {
      case Kind::integer:
        return NumberValue::withKind(NumberKind::int64, word_[1]);
      case Kind::unsignedInteger:
        return NumberValue(word_[1]);
      case Kind::real:
        return NumberValue::withKind(NumberKind::float64, word_[1]);
      default:
        return NumberValue(kind() == Kind::yes);
    }
  }

  /// Well-formed UTF-8; for a string.
  [[nodiscard]] std::string_view text() const noexcept {
    const std::uint8_t* at = strings_ + (*word_ & 0x00FF'FFFF'FFFF'FFFFu);
    std::uint32_t length;
    std::memcpy(&length, at, sizeof length);
    return {reinterpret_cast<const char*>(at) + sizeof length, length};
  }

  /// The node behind this one and all that is in it: the next element, or the value after a key.
  [[nodiscard]] JSONNode next() const noexcept {
    switch (kind()) {
      case Kind::array:
      case Kind::object:
        return at(tape_ + static_cast<std::uint32_t>(*word_));
      case Kind::integer:
      case Kind::unsignedInteger:
      case Kind::real:
        return at(word_ + 2);
      default:
        return at(word_ + 1);
    }
  }

  /// A container's first element, or an object's first key; for an empty one this is end().
  [[nodiscard]] JSONNode first() const noexcept { return at(word_ + 1); }
  /// Where a container's elements end.
  [[nodiscard]] JSONNode end() const noexcept {
    return at(tape_ + static_cast<std::uint32_t>(*word_) - 1);
  }

  /// The node's place on the tape, from which place() makes it again.
  [[nodiscard]] const std::uint64_t* word() const noexcept { return word_; }
  [[nodiscard]] JSONNode place(const std::uint64_t* word) const noexcept { return at(word); }

  friend bool operator==(const JSONNode& a, const JSONNode& b) noexcept {
    return a.word_ == b.word_;
  }

 private:
  [[nodiscard]] JSONNode at(const std::uint64_t* word) const noexcept {
    return {tape_, word, strings_};
  }

  const std::uint64_t* tape_ = nullptr;
  const std::uint64_t* word_ = nullptr;
  const std::uint8_t* strings_ = nullptr;
};

/// Parsed JSON text. Move-only; one thread at a time.
///
/// Grammar: RFC 8259, any value at the top, and no more: no comments, no trailing commas, no NaN. A
/// UTF-8 byte-order mark is skipped. Containers nest kDepthLimit deep at the most. Integers beyond
/// 64 bits are doubles; a number beyond the range of doubles is an error, one below it is 0. Of an
/// object's equal keys all are kept, in order.
/// Memory: at the most 16 bytes a byte of text while parsing, about 10 afterwards, of which only
/// what values need is touched.
class TQ_EXPORT JSONDocument {
 public:
  /// How deep arrays and objects may nest.
  static constexpr std::size_t kDepthLimit = 512;

  /// Key of an error's user info: the byte offset of the fault, a number.
  static constexpr std::string_view kErrorIndexKey = "NSJSONSerializationErrorIndex";

  /// Parses `text`, of which `readablePadding` further bytes may be read (see Data); with fewer
  /// than Data::kReadablePadding of them the text is copied first.
  /// @param error  domain NSCocoaErrorDomain, code 3840, with the fault and its place in the debug
  ///               description, and the place alone under kErrorIndexKey
  /// @return none for text that is not JSON
  [[nodiscard]] static std::optional<JSONDocument> parse(std::span<const std::byte> text,
                                                         std::size_t readablePadding,
                                                         Ref<Error>* error);

  /// A moved document keeps its nodes good; what is left behind is only to be assigned or
  /// destroyed.
  JSONDocument(JSONDocument&&) noexcept;
  JSONDocument& operator=(JSONDocument&&) noexcept;
  ~JSONDocument();

  /// The one value of the text.
  [[nodiscard]] JSONNode root() const noexcept;

 private:
  struct Parser;
  explicit JSONDocument(std::unique_ptr<Parser> parser) noexcept;

  std::unique_ptr<Parser> parser_;
};

}  // namespace tq
