#pragma once

/// @file CharacterCategory.h
/// What kind of character a code point is.

#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// True for the general categories Cc and Cf: control and format characters. Any thread.
[[nodiscard]] TQ_EXPORT bool isControlOrFormatCharacter(char32_t character) noexcept;

/// UTF-8 text without the tabs and the characters of the general category Zs at both of its ends.
/// Newlines stay, and so do bytes that are not UTF-8. Any thread.
[[nodiscard]] TQ_EXPORT std::string_view withoutBlankEnds(std::string_view text) noexcept;

}  // namespace tq
