#pragma once

/// @file UTF.h
/// Conversion between UTF-8 and UTF-16. "Generalised" UTF-8 may contain unpaired surrogates.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tq::detail {

/// A code point and its length in bytes; 0 bytes if the text does not start with a complete code
/// point.
struct DecodedPoint {
  char32_t value = 0;
  std::size_t byteCount = 0;
  [[nodiscard]] bool isSurrogate() const noexcept { return value >= 0xD800 && value <= 0xDFFF; }
};

/// Returns the first code point of `text`: shortest form, at most U+10FFFF, surrogates allowed.
[[nodiscard]] DecodedPoint decodePoint(std::string_view text) noexcept;

/// Returns the offset of the first byte that is not part of well-formed UTF-8, or nullopt.
[[nodiscard]] std::optional<std::size_t> firstMalformedByte(std::string_view bytes) noexcept;

void appendPoint(std::string& text, char32_t point);
void appendUnits(std::u16string& units, char32_t point);

/// Returns generalised UTF-8 of the units. Sets `wellFormed` to whether it is plain UTF-8.
[[nodiscard]] std::string utf8FromUnits(std::u16string_view units, bool& wellFormed);

}  // namespace tq::detail
