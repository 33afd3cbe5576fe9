#pragma once

/// @file JSONText.h
/// Scans JSON text that the parser refused: the first fault, control characters.

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace tq::detail {

/// The place at which text stops being JSON.
struct JSONFault {
  std::string_view message;  ///< such as "Unescaped control character"; a literal
  std::size_t index = 0;     ///< byte offset
};

/// Checks `text` against the grammar (RFC 8259). Containers may nest `depthLimit` deep. A number
/// outside of the range of doubles is a fault, an integer outside of 64 bits is not.
///
/// @return the first fault; UTF-8 is not checked
/// Cost: one pass; recursion up to `depthLimit`.
[[nodiscard]] std::optional<JSONFault> scanJSON(std::string_view text, std::size_t depthLimit);

/// Replaces every byte from 1 to 31 by "?", inside and outside of strings. NUL is kept.
///
/// @param report  called with each replaced byte and its offset, in order
void replaceControlCharacters(std::span<std::byte> text,
                              const std::function<void(unsigned byte, std::size_t index)>& report);

}  // namespace tq::detail
