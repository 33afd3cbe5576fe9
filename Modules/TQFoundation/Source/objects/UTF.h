#pragma once

/// @file UTF.h
/// UTF-8 and UTF-16, with unpaired surrogates allowed where it says "generalised".

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tq::detail {

/// A code point and the bytes that it took; 0 bytes when the text does not start with a whole one.
struct DecodedPoint {
  char32_t value = 0;
  std::size_t byteCount = 0;
  [[nodiscard]] bool isSurrogate() const noexcept { return value >= 0xD800 && value <= 0xDFFF; }
};

/// The code point that `text` starts with: shortest form, at most U+10FFFF, surrogates let through.
[[nodiscard]] DecodedPoint decodePoint(std::string_view text) noexcept;

/// Offset of the first byte that does not belong to well-formed UTF-8, or none.
[[nodiscard]] std::optional<std::size_t> firstMalformedByte(std::string_view bytes) noexcept;

void appendPoint(std::string& text, char32_t point);
void appendUnits(std::u16string& units, char32_t point);

/// Generalised UTF-8 of the units; `wellFormed` says whether it is plain UTF-8.
[[nodiscard]] std::string utf8FromUnits(std::u16string_view units, bool& wellFormed);

}  // namespace tq::detail
