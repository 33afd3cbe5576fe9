#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "../support/Bytes.h"

namespace tq::fuzz {

/// Writes a well-formed JSON archive. Each byte is one choice.
class JSONGenerator {
 public:
  explicit JSONGenerator(Bytes bytes) : bytes_(bytes) {}

  [[nodiscard]] std::string text() {
    addValue(0);
    return std::move(text_);
  }

 private:
  void addValue(int depth) {
    constexpr int kDeepest = 40;
    constexpr std::string_view kWords[] = {"null", "true", "false", "[]", "{}"};
    const std::size_t kind = bytes_.choose(depth < kDeepest ? 8 : 3);
    switch (kind) {
      case 0:
        text_ += bytes_.pick(kWords);
        break;
      case 1:
        addNumber();
        break;
      case 2:
        addString();
        break;
      case 3:
        addList('[', ']', [&] { addNumber(); });
        break;
      case 4:
        addList('[', ']', [&] { addValue(depth + 1); });
        break;
      case 5:
        addList('{', '}', [&] { addMember(depth); });
        break;
      default:
        addRecord(depth);
    }
  }

  template <class AddElement>
  void addList(char open, char close, AddElement addElement) {
    constexpr std::size_t kMostElements = 12;
    text_ += open;
    for (std::size_t i = 0, count = bytes_.choose(kMostElements); i < count; ++i) {
      if (i != 0) text_ += ',';
      addElement();
    }
    text_ += close;
  }

  void addMember(int depth) {
    addString();
    text_ += ':';
    addValue(depth + 1);
  }

  /// Adds an object with a reserved key, as a rule with the members of its class.
  void addRecord(int depth) {
    constexpr std::string_view kStarts[] = {
        R"({"_class":"Record")", R"({"_class":"NSValue","type":"point")",
        R"({"_class":"NSValue","type":"size")", R"({"_class":"NSValue","type":"rect")",
        R"({"_class":"NSValue","type":"text")", R"({"_class":"NSDictionary")",
        R"({"_class":"NSDate")", R"({"_class":"Nobody")", R"({"_class":7)", R"({"_data":"AAEC")",
        R"({"_data":"A A=")", R"({"_data":{})",
        // A keyed archive of the string "a", and the start of one.
        R"({"_archive":"YnBsaXN0MDDUAQIDBAUGBwpYJHZlcnNpb25ZJGFyY2hpdmVyVCR0b3BYJG9iamVjdHMSAAGGoF8QD05TS2V5ZWRBcmNoaXZlctEICVRyb290gAGiCwxVJG51bGxRYQgRGiQpMjdJTFFTVlwAAAAAAAABAQAAAAAAAAANAAAAAAAAAAAAAAAAAAAAXg==")",
        R"({"_archive":"YnBsaXN0MDA=")"};
    constexpr std::string_view kKeys[] = {"d",     "i",    "b",      "r",    "c",
                                          "value", "type", "_class", "_data"};
    text_ += bytes_.pick(kStarts);
    for (std::size_t count = bytes_.choose(8); count > 0; --count) {
      text_.append(",\"").append(bytes_.pick(kKeys)).append("\":");
      addValue(depth + 1);
    }
    text_ += '}';
  }

  /// Adds digits, a fraction and an exponent of any lengths.
  void addNumber() {
    constexpr std::string_view kExponents[] = {"",     "",      "e5",   "E-7",
                                               "e+22", "e-308", "e280", "e-330"};
    if (bytes_.choose(4) == 0) text_ += '-';
    if (bytes_.choose(3) == 0) {
      text_ += '0';
    } else {
      text_ += static_cast<char>('1' + bytes_.choose(9));
      addDigits(bytes_.choose(22));
    }
    if (bytes_.choose(2) == 0) {
      text_ += '.';
      addDigits(1 + bytes_.choose(22));
    }
    text_ += bytes_.pick(kExponents);
  }

  void addDigits(std::size_t count) {
    for (; count > 0; --count) text_ += static_cast<char>('0' + bytes_.choose(10));
  }

  void addString() {
    constexpr std::string_view kParts[] = {"a",
                                           "b",
                                           "value",
                                           "\\\"",
                                           "\\\\",
                                           "\\/",
                                           "\\n\\u0001",
                                           "\\u00e4",
                                           "\u00e4",
                                           "\u20ac",
                                           "\\ud83d\\ude00",
                                           "\U0001f600",
                                           "{1, 2}",
                                           "{{1.5, -2}, {3, 4e5}}",
                                           "0123456789abcdef",
                                           "\x7f"};
    text_ += '"';
    for (std::size_t count = bytes_.choose(8); count > 0; --count) text_ += bytes_.pick(kParts);
    text_ += '"';
  }

  Bytes bytes_;
  std::string text_;
};

}  // namespace tq::fuzz
