#pragma once

/// @file JSONText.h
/// Scans JSON text that the parser refused: the first fault, long numbers, control characters.

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tq::detail {

/// The place at which text stops being JSON.
struct JSONFault {
  std::string_view message;  ///< such as "Unescaped control character"; a literal
  std::size_t index = 0;     ///< byte offset
};

/// The bytes of a literal: from `begin` to before `end`.
struct JSONLiteral {
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// The result of a scan.
struct JSONScan {
  std::optional<JSONFault> fault;  ///< the first one; UTF-8 is not checked
  /// Numbers that the parser may refuse although they are doubles: integers that fit neither int64
  /// nor uint64, and hundreds of digits with an exponent. Ascending, and complete up to the fault.
  std::vector<JSONLiteral> longNumbers;
};

/// Checks `text` against the grammar (RFC 8259). Containers may nest `depthLimit` deep. A number
/// outside of the range of doubles is a fault, an integer outside of 64 bits is not.
///
/// Cost: one pass; recursion up to `depthLimit`.
[[nodiscard]] JSONScan scanJSON(std::string_view text, std::size_t depthLimit);

/// Replaces every byte from 1 to 31 by "?", inside and outside of strings. NUL is kept.
///
/// @param report  called with each replaced byte and its offset, in order
void replaceControlCharacters(std::span<std::byte> text,
                              const std::function<void(unsigned byte, std::size_t index)>& report);

}  // namespace tq::detail
