#pragma once

/// @file CharacterCategory.h
/// General categories of Unicode characters.

#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns true for the general categories Cc and Cf: control and format characters. Any thread.
[[nodiscard]] TQ_EXPORT bool isControlOrFormatCharacter(char32_t character) noexcept;

/// Returns UTF-8 text without the tabs and spaces (general category Zs) at both of its ends.
/// Newlines stay, and so do bytes that are not UTF-8. The result is a part of `text`. Any thread.
[[nodiscard]] TQ_EXPORT std::string_view withoutBlankEnds(std::string_view text) noexcept;

}  // namespace tq
