#pragma once

/// @file JSONDocument.h
/// Parsed JSON text: a flat tape of values, from which objects are made later.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/ReadingLimits.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// A parsed text. The tape has one 64-bit word for each value, with its kind in the top 8 bits:
///
///     number     kind | 0, and its value in the next word
///     string     kind | length (24 bits) | offset of its bytes in the text (32 bits)
///     container  kind | count (24) | index of the word after the container (32)
///     end of a container: the kinds of its values
///
/// A string with escapes is unescaped in `copies`, where its offset leads; the length then has the
/// bit kCopied. A length that does not fit is there, too, in the 4 bytes before the string.
struct JSONTape {
  Ref<const Data> data;                    ///< keeps the text
  const char* text = nullptr;              ///< the text, after a byte-order mark
  std::unique_ptr<std::uint64_t[]> words;  ///< the tape, from the word of the top value
  std::size_t capacity = 0;                ///< the number of words that fit
  std::unique_ptr<char[]> copies;          ///< the strings with escapes; null if there is none
  std::size_t copyCapacity = 0;            ///< the number of bytes that fit
  std::uint64_t valueCount = 0;            ///< the number of values; each key is one
};

/// A value of a parsed document: two pointers, valid while the document lives. Trivially copyable.
class JSONNode {
 public:
  /// The kind of a value; `yes` and `no` are true and false.
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
  /// The value at `word` of the tape.
  JSONNode(const JSONTape& tape, const std::uint64_t* word) noexcept : tape_(&tape), word_(word) {}

  /// Returns the kind of the value.
  [[nodiscard]] Kind kind() const noexcept { return static_cast<Kind>(*word_ >> 56); }
  /// Returns whether the value is a number, true or false.
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

  /// Returns the number; true and false are booleans. Only if isNumber().
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

  /// Returns the text, which is well-formed UTF-8. Only for a string.
  [[nodiscard]] std::string_view text() const noexcept {
    const std::uint64_t middle = *word_ >> 32 & kMiddle;
    const bool isCopied = (middle & kCopied) != 0;
    const char* const at =
        (isCopied ? tape_->copies.get() : tape_->text) + static_cast<std::uint32_t>(*word_);
    const std::size_t length = middle & kLongString;
    if (length < kLongString) return {at, length};
    std::uint32_t longLength;
    std::memcpy(&longLength, at, sizeof longLength);
    return {at + sizeof longLength, longLength};
  }

  /// Returns the node after this one and its content: the next element, or the value of a key.
  [[nodiscard]] JSONNode next() const noexcept {
    switch (kind()) {
      case Kind::array:
      case Kind::object:
        return at(tape_->words.get() + static_cast<std::uint32_t>(*word_));
      case Kind::integer:
      case Kind::unsignedInteger:
      case Kind::real:
        return at(word_ + 2);
      default:
        return at(word_ + 1);
    }
  }

  /// Returns the first element of an array or the first key of an object; end() if it is empty.
  [[nodiscard]] JSONNode first() const noexcept { return at(word_ + 1); }
  /// Returns the end of a container's elements.
  [[nodiscard]] JSONNode end() const noexcept {
    return at(tape_->words.get() + static_cast<std::uint32_t>(*word_) - 1);
  }

  /// Returns the number of elements of an array. Cost: linear if there are more than 16 million.
  [[nodiscard]] std::size_t count() const noexcept {
    std::size_t count = *word_ >> 32 & kMiddle;
    if (count < kMiddle) return count;
    count = 0;
    for (JSONNode element = first(); !(element == end()); element = element.next()) ++count;
    return count;
  }

  /// Returns which kinds of values an array has: a union of the constants below.
  [[nodiscard]] std::uint64_t content() const noexcept { return *end().word_; }

  /// Returns the JSON Pointer of the value (RFC 6901); empty for the top value. Cost: linear in the
  /// values before it in the containers that it is in.
  [[nodiscard]] std::string pointer() const;

  /// Returns the node's word on the tape.
  [[nodiscard]] const std::uint64_t* word() const noexcept { return word_; }
  /// Returns the node of another word on the same tape.
  [[nodiscard]] JSONNode at(const std::uint64_t* word) const noexcept { return {*tape_, word}; }

  // The bits of words.

  /// Kinds of values in a container.
  static constexpr std::uint64_t kHasIntegers = 1;      ///< `integer`
  static constexpr std::uint64_t kHasReals = 2;         ///< `real`
  static constexpr std::uint64_t kHasOtherNumbers = 4;  ///< other kinds with isNumber()
  static constexpr std::uint64_t kHasOthers = 8;        ///< everything else

  static constexpr std::uint64_t kMiddle = 0xFFFFFF;      ///< the 24 bits; an unknown count
  static constexpr std::uint64_t kCopied = 0x800000;      ///< see JSONTape
  static constexpr std::uint64_t kLongString = 0x7FFFFF;  ///< the length is in the copies

  /// Returns a word of these parts.
  [[nodiscard]] static constexpr std::uint64_t wordOf(Kind kind, std::uint64_t middle = 0,
                                                      std::size_t low = 0) noexcept {
    return static_cast<std::uint64_t>(kind) << 56 | middle << 32 | low;
  }
  /// Returns the bit for a value with this word.
  [[nodiscard]] static constexpr std::uint64_t contentOf(std::uint64_t word) noexcept {
    switch (static_cast<Kind>(word >> 56)) {
      case Kind::integer:
        return kHasIntegers;
      case Kind::real:
        return kHasReals;
      case Kind::unsignedInteger:
      case Kind::yes:
      case Kind::no:
        return kHasOtherNumbers;
      default:
        return kHasOthers;
    }
  }

  /// Returns whether both are the same value of the same document.
  friend bool operator==(const JSONNode& a, const JSONNode& b) noexcept {
    return a.word_ == b.word_;
  }

 private:
  const JSONTape* tape_ = nullptr;
  const std::uint64_t* word_ = nullptr;
};

/// Parsed JSON text. Move-only; one thread at a time.
///
/// Grammar: RFC 8259 with any value at the top. Comments, trailing commas and NaN are errors. A
/// UTF-8 byte-order mark is skipped. Containers may nest kDepthLimit deep. Integers outside of 64
/// bits become doubles. A number outside of the range of doubles is an error; one too close to zero
/// is 0. Equal keys of an object are all kept, in order.
/// Memory: at most 16 bytes for each byte of text while parsing, 8 afterwards, besides the text: 8
/// bytes for each value, 8 more for a number or container, and the strings that have escapes.
/// Up to 25 MB are kept for the next document, because new memory costs as much time as parsing.
class JSONDocument {
 public:
  /// The maximum depth of nested arrays and objects.
  static constexpr std::size_t kDepthLimit = 512;

  /// The key of the byte offset of the fault, a number, in an error's user info.
  static constexpr std::string_view kErrorIndexKey = "NSJSONSerializationErrorIndex";

  /// Parses a text, and keeps it.
  ///
  /// @param text   must not change afterwards
  /// @param error  receives domain NSCocoaErrorDomain, code 3840, with the fault and its offset in
  ///               the debug description, and the offset under kErrorIndexKey. Null skips the
  ///               search for the fault.
  /// @param depth  the maximum depth, at most kDepthLimit
  /// @return nullopt if the text is not JSON, or if it is longer than kLongestText, which the
  ///         caller checks first
  [[nodiscard]] static std::optional<JSONDocument> parse(Ref<const Data> text, Ref<Error>* error,
                                                         std::size_t depth = kDepthLimit);

  /// Returns the number of values of the text; each key is one of them.
  [[nodiscard]] std::uint64_t valueCount() const noexcept { return tape_->valueCount; }

  /// Nodes stay valid when their document is moved. A document that was moved from may only be
  /// assigned to or destroyed.
  JSONDocument(JSONDocument&&) noexcept = default;
  JSONDocument& operator=(JSONDocument&&) noexcept = default;
  ~JSONDocument() = default;

  /// Returns the top value of the text.
  [[nodiscard]] JSONNode root() const noexcept { return {*tape_, tape_->words.get()}; }

 private:
  /// Keeps the tape's memory for the next text.
  struct Keep {
    void operator()(JSONTape* tape) const noexcept;
  };
  using Tape = std::unique_ptr<JSONTape, Keep>;

  explicit JSONDocument(Tape tape) noexcept : tape_(std::move(tape)) {}

  Tape tape_;
};

}  // namespace tq
