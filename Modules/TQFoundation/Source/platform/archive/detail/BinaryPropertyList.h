#pragma once

/// @file BinaryPropertyList.h
/// Reader and writer of binary property lists ("bplist00"): a sequence of objects that refer to
/// each other by number.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>

namespace tq::detail {

/// Writes a list. Children must be added before their parents; the last object is the top.
class BinaryPropertyListWriter {
 public:
  using Node = std::uint32_t;

  /// Booleans stay booleans, integers take the smallest form, floats and doubles stay distinct.
  Node number(NumberValue value);
  /// Seconds since 2001-01-01 00:00 UTC.
  Node date(double seconds);
  Node data(std::span<const std::byte> bytes);
  /// UTF-8 with unpaired surrogates allowed, as in String.
  Node string(std::string_view text);
  Node uid(std::uint64_t value);
  Node array(std::span<const Node> elements);
  /// Keys and values; keys must be strings.
  Node dictionary(std::span<const std::pair<Node, Node>> members);

  /// Returns the list. It must have an object.
  [[nodiscard]] Ref<Data> finish() const;

 private:
  // The start of an object's bytes and references, which end at the start of the next object's.
  struct Place {
    std::size_t bytes;
    std::size_t references;
  };

  Node begin();
  void appendBigEndian(std::uint64_t value, std::size_t width);
  void appendInteger(std::uint64_t value);
  void appendMarker(unsigned kind, std::size_t count);

  std::string bytes_;             // markers, counts and contents
  std::vector<Node> references_;  // of arrays and dictionaries
  std::vector<Place> places_;
};

/// Reads single objects of a list in place, each checked against the list's bounds. It neither
/// creates objects nor follows references, so cycles and shared objects of a hostile list do no
/// harm. Each access has a price, which limits how often a caller can traverse the list.
class BinaryPropertyListReader {
 public:
  enum class Kind { number, date, data, ascii, utf16, uid, array, dictionary };

  struct Node {
    Kind kind;
    NumberValue number;                  ///< a number, or the seconds of a date
    std::uint64_t value = 0;             ///< a UID, or the count of bytes, characters or elements
    std::span<const std::byte> content;  ///< bytes, characters or references, as in the list
  };

  /// Returns nullopt if the bytes are not a list. They must outlive the reader. node() returns
  /// nullopt after `readingsPerByte` times as many bytes were read as the list has.
  [[nodiscard]] static std::optional<BinaryPropertyListReader> open(
      std::span<const std::byte> bytes, std::size_t readingsPerByte);

  [[nodiscard]] std::uint64_t top() const noexcept { return top_; }

  /// Objects are numbered from 0. A list has at most as many objects as bytes.
  [[nodiscard]] std::uint64_t objectCount() const noexcept { return count_; }

  /// Returns the object with this number; nullopt if it is not completely within the list.
  [[nodiscard]] std::optional<Node> node(std::uint64_t number) noexcept;

  /// The same for an object that was paid for before, without a price.
  [[nodiscard]] std::optional<Node> nodeAgain(std::uint64_t number) const noexcept;

  /// Pays for work with a node as if `byteCount` bytes were read. Returns false if the limit is
  /// exceeded.
  [[nodiscard]] bool pay(std::size_t byteCount) noexcept;

  /// Returns true if node() or pay() refused because the limit is exceeded.
  [[nodiscard]] bool isExhausted() const noexcept { return isExhausted_; }

  /// Returns the number of the object at `index` of a container. An array has `value` references, a
  /// dictionary `value` keys and then `value` values.
  [[nodiscard]] std::uint64_t reference(const Node& container, std::uint64_t index) const noexcept;

 private:
  std::span<const std::byte> bytes_;  // up to the offset table
  std::span<const std::byte> offsets_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t top_ = 0;
  std::size_t readingsLeft_ = 0;
  bool isExhausted_ = false;
};

/// Returns the text of a node of kind ascii or utf16; null for another kind, and if the bytes of an
/// ascii node are not ASCII.
[[nodiscard]] Ref<String> stringFromNode(const BinaryPropertyListReader::Node& node);

/// Returns true if the node is a string with this text.
[[nodiscard]] bool isString(const BinaryPropertyListReader::Node& node, std::string_view text);

}  // namespace tq::detail
