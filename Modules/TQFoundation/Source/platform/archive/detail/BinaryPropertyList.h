#pragma once

/// @file BinaryPropertyList.h
/// Property lists in the platform's binary form, "bplist00": trees of plain values whose objects
/// lie one behind the other and refer to each other by number.

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

/// Collects objects, children before their parents; the last one becomes the top.
class BinaryPropertyListWriter {
 public:
  using Node = std::uint32_t;

  /// Booleans stay booleans, integers take the smallest form, float and double are kept apart.
  Node number(NumberValue value);
  /// Seconds since 2001-01-01 00:00 UTC.
  Node date(double seconds);
  Node data(std::span<const std::byte> bytes);
  /// UTF-8 in which unpaired surrogates may stand, as String holds it.
  Node string(std::string_view text);
  Node uid(std::uint64_t value);
  Node array(std::span<const Node> elements);
  /// Key and value; keys are strings.
  Node dictionary(std::span<const std::pair<Node, Node>> members);

  /// The whole list. There must be an object.
  [[nodiscard]] Ref<Data> finish() const;

 private:
  // Where an object's bytes and its references begin; both end where the next object's begin.
  struct Place {
    std::size_t bytes;
    std::size_t references;
  };

  Node begin();
  void appendBigEndian(std::uint64_t value, std::size_t width);
  void appendInteger(std::uint64_t value);
  void appendMarker(unsigned kind, std::size_t count);

  std::string bytes_;             // markers, counts and contents
  std::vector<Node> references_;  // what arrays and dictionaries hold
  std::vector<Place> places_;
};

/// Looks at the objects of a list where they lie, each checked against the list's bounds. Nothing
/// is built and nothing is walked here, so neither cycles nor shared parts of a hostile list
/// matter; but each look has its price, and with it how often a list can be gone over.
class BinaryPropertyListReader {
 public:
  enum class Kind { number, date, data, ascii, utf16, uid, array, dictionary };

  struct Node {
    Kind kind;
    NumberValue number;                  ///< of a number, and of a date its seconds
    std::uint64_t value = 0;             ///< a UID; how many bytes, characters or elements
    std::span<const std::byte> content;  ///< bytes, characters or references, as they lie there
  };

  /// None when the bytes are not a list. They must outlive the reader, which answers none to
  /// node() once it has looked at `readingsPerByte` times as many bytes as there are.
  [[nodiscard]] static std::optional<BinaryPropertyListReader> open(
      std::span<const std::byte> bytes, std::size_t readingsPerByte);

  [[nodiscard]] std::uint64_t top() const noexcept { return top_; }

  /// Objects are numbered from 0. There are no more of them than bytes.
  [[nodiscard]] std::uint64_t objectCount() const noexcept { return count_; }

  /// The object of this number; none when it does not lie whole within the list.
  [[nodiscard]] std::optional<Node> node(std::uint64_t number) noexcept;

  /// The same once more, at no price.
  [[nodiscard]] std::optional<Node> nodeAgain(std::uint64_t number) const noexcept;

  /// Pays for what is done with a node found before: as if so many bytes were looked at. False once
  /// the list has been gone over as often as was agreed.
  [[nodiscard]] bool pay(std::size_t byteCount) noexcept;

  /// The number of the object that a container refers to at `index`: an array has `value` of them,
  /// a dictionary that many keys and then that many values.
  [[nodiscard]] std::uint64_t reference(const Node& container, std::uint64_t index) const noexcept;

 private:
  std::span<const std::byte> bytes_;  // up to the offset table
  std::span<const std::byte> offsets_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t top_ = 0;
  std::size_t readingsLeft_ = 0;
};

/// The text of a node of kind ascii or utf16; none for any other, and for bytes that are not ASCII.
[[nodiscard]] Ref<String> stringFromNode(const BinaryPropertyListReader::Node& node);

/// Whether the node is a string of this text.
[[nodiscard]] bool isString(const BinaryPropertyListReader::Node& node, std::string_view text);

}  // namespace tq::detail
