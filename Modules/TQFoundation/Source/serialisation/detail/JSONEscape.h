#pragma once

/// @file JSONEscape.h
/// Strings as JSON writes them.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tq::detail {

/// The most bytes that escaping makes of one.
inline constexpr std::size_t kLongestEscape = 6;

/// What stands for an escaped byte: the character behind the backslash, 'u' for a \u00 escape, 0
/// for a byte that stands for itself.
constexpr char jsonEscape(unsigned char byte) noexcept {
  switch (byte) {
    case '"':
    case '\\':
    case '/':
      return static_cast<char>(byte);
    case '\b':
      return 'b';
    case '\f':
      return 'f';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return byte < 0x20 ? 'u' : '\0';
  }
}

/// True when one of eight bytes needs an escape. A byte behind one that does may be taken for one,
/// too.
constexpr bool needsEscape(std::uint64_t eightBytes) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  constexpr std::uint64_t kHighs = 0x8080808080808080u;
  const auto zero = [](std::uint64_t word) { return (word - kOnes) & ~word & kHighs; };
  const std::uint64_t control = (eightBytes - kOnes * 0x20) & ~eightBytes & kHighs;
  return (control | zero(eightBytes ^ (kOnes * '"')) | zero(eightBytes ^ (kOnes * '\\')) |
          zero(eightBytes ^ (kOnes * '/'))) != 0;
}

/// How many bytes at the start of `text` stand for themselves.
inline std::size_t unescapedPrefix(std::string_view text) noexcept {
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + i, sizeof word);
    if (needsEscape(word)) break;
  }
  while (i < text.size() && jsonEscape(static_cast<unsigned char>(text[i])) == 0) ++i;
  return i;
}

/// Copies `text`, when all of it stands for itself. @return false,
/// with whatever copied, when an escape is needed
inline bool copyUnescaped(char* to, std::string_view text) noexcept {
  const auto copyWord = [&](std::size_t at) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + at, sizeof word);
    std::memcpy(to + at, &word, sizeof word);
    return !needsEscape(word);
  };
  const std::size_t size = text.size();
  if (size >= 8) {
    for (std::size_t i = 0; i + 8 < size; i += 8) {
      if (!copyWord(i)) return false;
    }
    return copyWord(size - 8);
  }
  for (std::size_t i = 0; i < size; ++i) {
    if (jsonEscape(static_cast<unsigned char>(text[i])) != 0) return false;
    to[i] = text[i];
  }
  return true;
}

/// Writes the escape of `byte`, which needs one. @return its end
inline char* writeEscape(char* to, unsigned char byte) noexcept {
  const char escape = jsonEscape(byte);
  *to++ = '\\';
  *to++ = escape;
  if (escape == 'u') {
    constexpr char kDigits[] = "0123456789abcdef";
    *to++ = '0';
    *to++ = '0';
    *to++ = kDigits[byte >> 4];
    *to++ = kDigits[byte & 15];
  }
  return to;
}

}  // namespace tq::detail
