#pragma once

/// @file CharacterCategory.h
/// What kind of character a code point is.

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// True for the general categories Cc and Cf: control and format characters. Any thread.
[[nodiscard]] TQ_EXPORT bool isControlOrFormatCharacter(char32_t character) noexcept;

}  // namespace tq
