#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/platform/archive/detail/KeyedArchiveFormat.h>

#include "../support/Bytes.h"

namespace tq::fuzz {

namespace keyed = detail::keyed;

/// Writes a binary property list. Each function adds a value and returns its number.
class PropertyListWriter {
 public:
  using Node = std::uint16_t;

  Node number(std::int64_t value) { return add('\x13' + bigEndian(value, 8)); }
  Node real(double value) { return add('\x23' + bigEndian(std::bit_cast<std::int64_t>(value), 8)); }
  Node date(double value) { return add('\x33' + bigEndian(std::bit_cast<std::int64_t>(value), 8)); }
  Node data(std::string_view bytes) { return add(head(0x40, bytes.size()).append(bytes)); }
  Node ascii(std::string_view text) { return add(head(0x50, text.size()).append(text)); }
  Node utf16(std::u16string_view text) {
    std::string value = head(0x60, text.size());
    for (const char16_t unit : text) value += bigEndian(unit, 2);
    return add(std::move(value));
  }
  Node uid(std::size_t index) {
    return add('\x80' + bigEndian(static_cast<std::int64_t>(index), 1));
  }
  Node array(std::span<const Node> elements) {
    std::string value = head(0xA0, elements.size());
    for (const Node element : elements) value += bigEndian(element, 2);
    return add(std::move(value));
  }
  Node dictionary(std::span<const std::pair<Node, Node>> entries) {
    std::string value = head(0xD0, entries.size());
    for (const auto& entry : entries) value += bigEndian(entry.first, 2);
    for (const auto& entry : entries) value += bigEndian(entry.second, 2);
    return add(std::move(value));
  }

  [[nodiscard]] std::string finish(Node top) const {
    std::string list = "bplist00", offsets;
    for (const std::string& value : values_) {
      offsets += bigEndian(static_cast<std::int64_t>(list.size()), 4);
      list += value;
    }
    const auto start = static_cast<std::int64_t>(list.size());
    const auto count = static_cast<std::int64_t>(values_.size());
    const std::string sizes{0, 0, 0, 0, 0, 0, 4, 2};  // of an offset and a number of a value
    return list + offsets + sizes + bigEndian(count, 8) + bigEndian(top, 8) + bigEndian(start, 8);
  }

 private:
  static std::string bigEndian(std::int64_t value, int size) {
    std::string bytes;
    for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>(value >> 8 * i);
    return bytes;
  }
  static std::string head(int kind, std::size_t count) {
    if (count < 15) return {static_cast<char>(kind | static_cast<int>(count))};
    return static_cast<char>(kind | 15) + ('\x12' + bigEndian(static_cast<std::int64_t>(count), 4));
  }
  Node add(std::string value) {
    values_.push_back(std::move(value));
    return static_cast<Node>(values_.size() - 1);
  }

  std::vector<std::string> values_;
};

/// Writes a keyed archive whose records have the members of their classes. The bytes choose the
/// classes, the values and the references, which may lead to any object: back to an unfinished one,
/// to one of another class, and beyond the end.
class KeyedArchiveGenerator {
 public:
  explicit KeyedArchiveGenerator(Bytes bytes) : bytes_(bytes) {}

  [[nodiscard]] std::string archive() {
    constexpr std::size_t kMostObjects = 24;
    count_ = 1 + bytes_.choose(kMostObjects);
    std::vector<Node> objects{list_.ascii(keyed::kNone)};
    while (objects.size() <= count_) objects.push_back(object());
    for (const Form& form : kForms) {
      const std::pair<Node, Node> name(list_.ascii(keyed::kClassNameKey),
                                       list_.ascii(form.className));
      objects.push_back(list_.dictionary({&name, 1}));
    }
    const std::pair<Node, Node> root(list_.ascii(keyed::kRootKey), list_.uid(1));
    const std::pair<Node, Node> members[] = {
        {list_.ascii(keyed::kVersionKey), list_.number(keyed::kVersion)},
        {list_.ascii(keyed::kArchiverKey), list_.ascii(keyed::kArchiverName)},
        {list_.ascii(keyed::kTopKey), list_.dictionary({&root, 1})},
        {list_.ascii(keyed::kObjectsKey), list_.array(objects)},
    };
    return list_.finish(list_.dictionary(members));
  }

 private:
  using Node = PropertyListWriter::Node;
  enum class Content { text, number, data, date, reference, references };
  using enum Content;
  struct Member {
    std::string_view key;
    Content content;
  };
  struct Form {
    std::string_view className;
    std::vector<Member> members;
  };
  static inline const Form kForms[] = {
      {"NSArray", {{keyed::kElements, references}}},
      {"NSMutableArray", {{keyed::kElements, references}}},
      {"NSDictionary", {{keyed::kKeys, references}, {keyed::kElements, references}}},
      {"NSMutableDictionary", {{keyed::kKeys, references}, {keyed::kElements, references}}},
      {"NSSet", {{keyed::kElements, references}}},
      {"NSNull", {}},
      {"NSString", {{keyed::kText, text}}},
      {"NSMutableData", {{keyed::kBytes, data}}},
      {"NSDate", {{keyed::kTime, date}}},
      {"NSUUID", {{keyed::kUUIDBytes, data}}},
      {"NSURL", {{keyed::kURLBase, reference}, {keyed::kURLText, reference}}},
      {"NSError",
       {{keyed::kErrorDomain, reference},
        {keyed::kErrorCode, number},
        {keyed::kErrorInfo, reference}}},
      {"NSValue",
       {{keyed::kValueForm, number},
        {keyed::kPoint, reference},
        {keyed::kSize, reference},
        {keyed::kRect, reference}}},
      {"NSValue",
       {{keyed::kValueForm, number},
        {keyed::kRangeLocation, reference},
        {keyed::kRangeLength, reference}}},
      {"NSValue", {{keyed::kOtherType, reference}, {keyed::kOtherBytes, data}}},
      {"Host", {{"content", reference}, {"back", reference}, {"number", number}}},
      {"Nobody", {{"content", reference}}},
  };

  Node object() {
    constexpr Content kPlain[] = {text, number, data};
    const std::size_t kind = bytes_.choose(8);
    return kind < std::size(kPlain) ? value(kPlain[kind], 0) : record();
  }

  Node record() {
    const std::size_t index = bytes_.choose(std::size(kForms));
    const std::size_t length = bytes_.choose(20);  // of its lists: the same, as a rule
    std::vector<std::pair<Node, Node>> members;
    for (const auto& [key, content] : kForms[index].members) {
      const std::size_t change = bytes_.choose(64);
      if (change == 1) continue;
      const Content kept = change == 2 ? static_cast<Content>(bytes_.choose(6)) : content;
      members.emplace_back(list_.ascii(key), value(kept, change == 3 ? length + 1 : length));
    }
    members.emplace_back(list_.ascii(keyed::kClassKey), list_.uid(count_ + 1 + index));
    return list_.dictionary(members);
  }

  Node value(Content content, std::size_t length) {
    switch (content) {
      case text:
        return anyText();
      case number:
        return anyNumber();
      case data:
        return list_.data(bytes_.pick(kData));
      case date:
        return list_.date(bytes_.pick(kReals));
      case reference:
        return anyReference();
      case references:
        break;
    }
    std::vector<Node> elements;
    for (std::size_t i = 0; i < length; ++i) elements.push_back(anyReference());
    return list_.array(elements);
  }

  Node anyReference() { return list_.uid(bytes_.choose(count_ + 3)); }

  Node anyText() {
    const std::size_t index = bytes_.choose(std::size(kTexts) + std::size(kWideTexts));
    return index < std::size(kTexts) ? list_.ascii(kTexts[index])
                                     : list_.utf16(kWideTexts[index - std::size(kTexts)]);
  }

  Node anyNumber() {
    const std::size_t index = bytes_.choose(std::size(kNumbers) + std::size(kReals));
    return index < std::size(kNumbers) ? list_.number(kNumbers[index])
                                       : list_.real(kReals[index - std::size(kNumbers)]);
  }

  static constexpr std::string_view kTexts[] = {"",
                                                "a",
                                                "b",
                                                "$null",
                                                "NSArray",
                                                "https://a.b/c",
                                                "../d?e#f",
                                                "{1, 2}",
                                                "{{1, 2}, {3, 4}}",
                                                "a text that is longer than fifteen bytes"};
  static constexpr std::u16string_view kWideTexts[] = {u"\u00e4", u"\U0001f600"};
  static constexpr std::string_view kData[] = {"", "a", "0123456789abcdef", "0123456789abcdefg"};
  static constexpr std::int64_t kNumbers[] = {0, 1, 2, 3, 4, -1, INT64_MIN, INT64_MAX};
  static constexpr double kReals[] = {0, 1.5, -0.0, 1e300, std::numeric_limits<double>::infinity()};

  Bytes bytes_;
  PropertyListWriter list_;
  std::size_t count_ = 0;
};

}  // namespace tq::fuzz
