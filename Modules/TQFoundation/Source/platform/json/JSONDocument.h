#pragma once

/// @file JSONDocument.h
/// Parsed JSON text: a flat tape of values, from which objects are made later.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/ReadingLimits.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// A value of a parsed document: three pointers, valid while the document lives. Trivially
/// copyable.
///
/// The tape has one 64-bit word for each value, with its kind in the top 8 bits. The value of a
/// number is in the next word. The word of a container holds, in its low 32 bits, the index of the
/// word after the container, and in the next 24 bits the count, or 0xFFFFFF if it is not smaller.
/// The word of a string holds the offset of its length (32 bits) and its bytes in the string
/// buffer.
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
  JSONNode(const std::uint64_t* tape, const std::uint64_t* word,
           const std::uint8_t* strings) noexcept
      : tape_(tape), word_(word), strings_(strings) {}

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
    const std::uint8_t* at = strings_ + (*word_ & 0x00FF'FFFF'FFFF'FFFFu);
    std::uint32_t length;
    std::memcpy(&length, at, sizeof length);
    return {reinterpret_cast<const char*>(at) + sizeof length, length};
  }

  /// Returns the node after this one and its content: the next element, or the value of a key.
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

  /// Returns the first element of an array or the first key of an object; end() if it is empty.
  [[nodiscard]] JSONNode first() const noexcept { return at(word_ + 1); }
  /// Returns the end of a container's elements.
  [[nodiscard]] JSONNode end() const noexcept {
    return at(tape_ + static_cast<std::uint32_t>(*word_) - 1);
  }

  /// Returns the number of elements of an array. Cost: linear if there are more than 16 million.
  [[nodiscard]] std::size_t count() const noexcept {
    constexpr std::size_t kUncounted = 0xFFFFFF;
    std::size_t count = (*word_ >> 32) & kUncounted;
    if (count < kUncounted) return count;
    count = 0;
    for (JSONNode element = first(); !(element == end()); element = element.next()) ++count;
    return count;
  }

  /// Returns the JSON Pointer of the value (RFC 6901); empty for the top value. Cost: linear in the
  /// values before it in the containers that it is in.
  [[nodiscard]] std::string pointer() const;

  /// Returns the node's word on the tape.
  [[nodiscard]] const std::uint64_t* word() const noexcept { return word_; }
  /// Returns the node of another word on the same tape.
  [[nodiscard]] JSONNode at(const std::uint64_t* word) const noexcept {
    return {tape_, word, strings_};
  }

  /// Returns whether both are the same value of the same document.
  friend bool operator==(const JSONNode& a, const JSONNode& b) noexcept {
    return a.word_ == b.word_;
  }

 private:
  const std::uint64_t* tape_ = nullptr;
  const std::uint64_t* word_ = nullptr;
  const std::uint8_t* strings_ = nullptr;
};

/// Parsed JSON text. Move-only; one thread at a time.
///
/// Grammar: RFC 8259 with any value at the top. Comments, trailing commas and NaN are errors. A
/// UTF-8 byte-order mark is skipped. Containers may nest kDepthLimit deep. Integers outside of 64
/// bits become doubles. A number outside of the range of doubles is an error; one too close to zero
/// is 0. Equal keys of an object are all kept, in order.
/// Memory: at most 16 bytes for each byte of text while parsing, about 10 afterwards; only what
/// values need is used: 8 bytes for each value, 8 more for a number, and the texts.
class JSONDocument {
 public:
  /// The maximum depth of nested arrays and objects.
  static constexpr std::size_t kDepthLimit = 512;

  /// The key of the byte offset of the fault, a number, in an error's user info.
  static constexpr std::string_view kErrorIndexKey = "NSJSONSerializationErrorIndex";

  /// Parses `text`.
  ///
  /// @param readablePadding  number of bytes after `text` that may be read (see Data); if it is
  ///                         less than Data::kReadablePadding, the text is copied
  /// @param error  receives domain NSCocoaErrorDomain, code 3840, with the fault and its offset in
  ///               the debug description, and the offset under kErrorIndexKey. Null skips the
  ///               search for the fault.
  /// @param depth  the maximum depth, at most kDepthLimit
  /// @return nullopt if the text is not JSON, or if it is longer than kLongestText, which the
  ///         caller checks first
  [[nodiscard]] static std::optional<JSONDocument> parse(std::span<const std::byte> text,
                                                         std::size_t readablePadding,
                                                         Ref<Error>* error,
                                                         std::size_t depth = kDepthLimit);

  /// Returns whether the text has more values than `count`; each key is one of them. Cost: constant
  /// if the text has fewer bytes.
  [[nodiscard]] bool hasMoreValuesThan(std::uint64_t count) const noexcept;

  /// Nodes stay valid when their document is moved. A document that was moved from may only be
  /// assigned to or destroyed.
  JSONDocument(JSONDocument&&) noexcept;
  JSONDocument& operator=(JSONDocument&&) noexcept;
  ~JSONDocument();

  /// Returns the top value of the text.
  [[nodiscard]] JSONNode root() const noexcept;

 private:
  struct Tape;
  explicit JSONDocument(std::unique_ptr<Tape> tape) noexcept;

  std::unique_ptr<Tape> tape_;
};

}  // namespace tq
