#pragma once

/// @file PrintableText.h
/// Text from outside, made safe to print.

#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns UTF-8 text in which characters that could break the line, control a terminal or hide
/// what the text says are escaped: control characters as "\n", "\r", "\t" and "\x1b"; line and
/// paragraph separators, and characters that reverse the direction of text, as "\u202e". Bytes that
/// are not UTF-8 are escaped as "\x9b", and surrogates as "\ud800". Everything else is unchanged,
/// including backslashes, so the text cannot be converted back. Any thread.
[[nodiscard]] TQ_EXPORT std::string printableText(std::string_view text);

}  // namespace tq
