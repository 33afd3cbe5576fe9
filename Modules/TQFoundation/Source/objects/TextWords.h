#pragma once

/// @file TextWords.h
/// Loads of text bytes as integers, for hashing. Each load has a fixed size and is a single
/// instruction.

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

}  // namespace tq::detail
