#pragma once

/// @file TextWords.h
/// Loads of text bytes as integers, for hashing and comparing. Each load has a fixed size and is a
/// single instruction.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tq::detail {

template <class Unsigned>
std::uint64_t loadedWord(const char* at) noexcept {
  Unsigned word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

/// Returns all bytes of a text of 1 to 8 bytes as one integer. Texts of 4 and more are read as two
/// words that may overlap.
inline std::uint64_t packedWord(std::string_view text) noexcept {
  const char* const end = text.data() + text.size();
  if (text.size() >= 4) {
    return loadedWord<std::uint32_t>(text.data()) | loadedWord<std::uint32_t>(end - 4) << 32;
  }
  return loadedWord<std::uint8_t>(text.data()) |
         loadedWord<std::uint8_t>(text.data() + text.size() / 2) << 8 |
         loadedWord<std::uint8_t>(end - 1) << 16;
}

/// Returns whether two texts are equal. For short ones, such as keys, this is faster than memcmp.
inline bool areEqualTexts(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  const std::size_t size = a.size();
  if (size > 16) return std::memcmp(a.data(), b.data(), size) == 0;
  const auto areEqualAt = [&](std::size_t at) {
    return loadedWord<std::uint64_t>(a.data() + at) == loadedWord<std::uint64_t>(b.data() + at);
  };
  if (size >= 8) return areEqualAt(0) && areEqualAt(size - 8);
  return size == 0 || packedWord(a) == packedWord(b);
}

}  // namespace tq::detail
