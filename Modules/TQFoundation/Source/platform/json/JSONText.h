#pragma once

/// @file JSONText.h
/// Scans JSON text that the parser refused: the first fault, wide integers, control characters.

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

/// The result of a scan.
struct JSONScan {
  std::optional<JSONFault> fault;  ///< the first one; UTF-8 is not checked
  /// Byte offset of the end of each integer that fits neither int64 nor uint64. Ascending, and
  /// complete up to the fault.
  std::vector<std::size_t> wideIntegerEnds;
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
