#include <TQFoundation/platform/json/JSONText.h>

#include <cmath>

#include <TQFoundation/objects/String.h>

namespace tq::detail {
namespace {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr bool isHexDigit(char c) noexcept {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr bool isOneOf(char c, std::string_view set) noexcept {
  return set.find(c) != std::string_view::npos;
}

constexpr bool isControlCharacter(char c) noexcept { return static_cast<unsigned char>(c) < 0x20; }

/// A recursive-descent recogniser. Each function moves past the construct that it is named after,
/// and returns false at the first fault.
class Scanner {
 public:
  Scanner(std::string_view text, std::size_t depthLimit) : text_(text), depthLimit_(depthLimit) {}

  std::optional<JSONFault> run() {
    skipSpace();
    if (value(0)) {
      skipSpace();
      if (at_ != text_.size()) fail("Garbage at end");
    }
    return fault_;
  }

 private:
  bool fail(std::string_view message) {
    fault_ = JSONFault{message, at_};
    return false;
  }

  [[nodiscard]] char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  void skipSpace() {
    while (at_ < text_.size() && isOneOf(text_[at_], " \t\r\n")) ++at_;
  }

  bool value(std::size_t depth) {
    if (at_ == text_.size()) return fail("Unexpected end of text");
    switch (text_[at_]) {
      case '{':
      case '[':
        return depth < depthLimit_ ? container(depth) : fail("Too many nested containers");
      case '"':
        return string();
      case 't':
        return word("true");
      case 'f':
        return word("false");
      case 'n':
        return word("null");
      default:
        return number();
    }
  }

  bool container(std::size_t depth) {
    const bool isObject = text_[at_] == '{';
    const char close = isObject ? '}' : ']';
    ++at_;
    skipSpace();
    if (peek() == close) return ++at_, true;
    for (;;) {
      if (isObject) {
        if (peek() != '"') return fail("No string key for a value in an object");
        if (!string()) return false;
        skipSpace();
        if (peek() != ':') return fail("No ':' after a key");
        ++at_;
        skipSpace();
      }
      if (!value(depth + 1)) return false;
      skipSpace();
      if (peek() == close) return ++at_, true;
      if (peek() != ',')
        return fail(at_ == text_.size() ? "Unexpected end of text" : "Badly formed container");
      ++at_;
      skipSpace();
    }
  }

  bool string() {
    for (++at_; at_ < text_.size(); ++at_) {
      const char c = text_[at_];
      if (c == '"') return ++at_, true;
      if (isControlCharacter(c)) return fail("Unescaped control character");
      if (c == '\\' && !escape()) return false;
    }
    return fail("Unterminated string");
  }

  /// Starts at a backslash and stops on the last character of the escape.
  bool escape() {
    const std::size_t start = at_++;
    if (peek() != 'u') {
      if (at_ < text_.size() && isOneOf(text_[at_], "\"\\/bfnrt")) return true;
      at_ = start;
      return fail("Invalid escape sequence");
    }
    unsigned unit = 0;
    for (int i = 0; i < 4; ++i) {
      ++at_;
      if (!isHexDigit(peek())) return fail("Invalid escape sequence");
      const char c = text_[at_];
      unit = unit * 16 + static_cast<unsigned>(isDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
    }
    const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
    if (isLow != afterHigh_) {
      at_ = start;
      return fail("Unpaired surrogate in an escape sequence");
    }
    afterHigh_ = unit >= 0xD800 && unit <= 0xDBFF;
    if (afterHigh_ && text_.substr(at_ + 1, 2) != "\\u") {
      at_ = start;
      return fail("Unpaired surrogate in an escape sequence");
    }
    return true;
  }

  bool word(std::string_view expected) {
    if (text_.substr(at_, expected.size()) != expected) return fail("Invalid value");
    at_ += expected.size();
    return true;
  }

  bool number() {
    const std::size_t start = at_;
    if (peek() == '-') ++at_;
    if (!isDigit(peek())) {
      at_ = start;
      return fail("Invalid value");
    }
    if (peek() == '0') {
      ++at_;
      if (isDigit(peek())) return fail("Number with a leading zero");
    }
    while (isDigit(peek())) ++at_;
    if (peek() == '.') {
      ++at_;
      if (!digits()) return fail("Number with no digit after '.'");
    }
    const bool hasExponent = peek() == 'e' || peek() == 'E';
    if (hasExponent) {
      ++at_;
      if (peek() == '+' || peek() == '-') ++at_;
      if (!digits()) return fail("Number with no digit in its exponent");
    }
    const std::string_view literal = text_.substr(start, at_ - start);
    const bool mayOverflow = hasExponent || literal.size() > 308;
    if (mayOverflow && !std::isfinite(lenientDouble(literal))) {
      at_ = start;
      return fail("Number beyond the range of doubles");
    }
    return true;
  }

  bool digits() {
    if (!isDigit(peek())) return false;
    while (isDigit(peek())) ++at_;
    return true;
  }

  std::string_view text_;
  std::size_t depthLimit_;
  std::size_t at_ = 0;
  bool afterHigh_ = false;  // the last escape was a high surrogate
  std::optional<JSONFault> fault_;
};

}  // namespace

std::optional<JSONFault> scanJSON(std::string_view text, std::size_t depthLimit) {
  return Scanner(text, depthLimit).run();
}

void replaceControlCharacters(std::span<std::byte> text,
                              const std::function<void(unsigned byte, std::size_t index)>& report) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = static_cast<char>(text[i]);
    if (c == '\0' || !isControlCharacter(c)) continue;
    report(static_cast<unsigned char>(c), i);
    text[i] = std::byte{'?'};
  }
}

}  // namespace tq::detail
