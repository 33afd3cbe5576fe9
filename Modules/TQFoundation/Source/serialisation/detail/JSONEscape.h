#pragma once

/// @file JSONEscape.h
/// Escapes strings for JSON.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tq::detail {

/// The maximum length of the escape of one byte.
inline constexpr std::size_t kLongestEscape = 6;

/// Returns the character after the backslash in the escape of `byte`: 'u' for a \u00 escape, 0 if
/// the byte needs no escape.
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

/// Returns whether one of eight bytes needs an escape. Exact as a whole, although the borrow of the
/// subtraction can also mark bytes after one that needs an escape.
constexpr bool needsEscape(std::uint64_t eightBytes) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  constexpr std::uint64_t kHighs = 0x8080808080808080u;
  const auto zero = [](std::uint64_t word) { return (word - kOnes) & ~word & kHighs; };
  const std::uint64_t control = (eightBytes - kOnes * 0x20) & ~eightBytes & kHighs;
  return (control | zero(eightBytes ^ (kOnes * '"')) | zero(eightBytes ^ (kOnes * '\\')) |
          zero(eightBytes ^ (kOnes * '/'))) != 0;
}

/// Returns the number of bytes at the start of `text` that need no escape.
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

/// Copies `text` if it needs no escape.
/// @return false if it does; `to` then holds arbitrary bytes
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

/// Returns whether all bytes are ASCII.
inline bool isASCII(std::string_view text) noexcept {
  std::uint64_t bits = 0;
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + i, sizeof word);
    bits |= word;
  }
  for (; i < text.size(); ++i) bits |= static_cast<unsigned char>(text[i]);
  return (bits & 0x8080808080808080u) == 0;
}

/// Writes the escape of `byte`, which must need one. Returns its end.
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
