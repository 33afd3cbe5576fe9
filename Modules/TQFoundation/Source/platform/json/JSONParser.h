#pragma once

/// @file JSONParser.h
/// Writes the tape of JSON text.

#include <cstddef>
#include <string_view>

#include <TQFoundation/platform/json/JSONDocument.h>

namespace tq::detail {

/// Writes the tape of `text`, which JSONTape::text will keep.
///
/// @param text   followed by Data::kReadablePadding readable bytes; no byte-order mark
/// @param depth  the maximum depth, at most JSONDocument::kDepthLimit
/// @return false if scanJSON() finds a fault in the text, or if it is not well-formed UTF-8; the
///         tape is incomplete then
[[nodiscard]] bool writeTape(std::string_view text, std::size_t depth, JSONTape& tape);

}  // namespace tq::detail
