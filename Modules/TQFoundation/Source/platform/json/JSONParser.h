#pragma once

/// @file JSONParser.h
/// Writes the tape of JSON text.

#include <cstddef>
#include <memory>
#include <string_view>

#include <TQFoundation/platform/json/JSONDocument.h>

namespace tq::detail {

/// Returns an empty tape, perhaps with the memory of one that was kept. Any thread.
[[nodiscard]] std::unique_ptr<JSONTape> tapeToWrite();

/// Keeps the memory of a tape that is no longer used for the next one, unless it is much, or one is
/// kept already. Any thread.
void keepTape(std::unique_ptr<JSONTape> tape) noexcept;

/// Writes the tape of `text`, which JSONTape::text will keep.
///
/// @param text   followed by Data::kReadablePadding readable bytes; no byte-order mark
/// @param depth  the maximum depth, at most JSONDocument::kDepthLimit
/// @return false if scanJSON() finds a fault in the text, or if it is not well-formed UTF-8; the
///         tape is incomplete then
[[nodiscard]] bool writeTape(std::string_view text, std::size_t depth, JSONTape& tape);

}  // namespace tq::detail
