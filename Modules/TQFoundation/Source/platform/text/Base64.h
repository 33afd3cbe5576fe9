#pragma once

/// @file Base64.h
/// Bytes as base64 text (RFC 4648, section 4) and back.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>

namespace tq {

/// Standard alphabet, padded with "=", no line breaks; empty bytes give empty text. Any thread.
[[nodiscard]] TQ_EXPORT std::string base64FromBytes(std::span<const std::byte> bytes);

/// The same, put behind what `text` holds already.
TQ_EXPORT void appendBase64(std::string& text, std::span<const std::byte> bytes);

/// The bytes of base64 text, read strictly: a multiple of 4 characters of the standard alphabet, at
/// most two "=" and at the very end, no white space. Spare bits of the last character may be set.
/// @return none when the text is anything else; an empty buffer for empty text
[[nodiscard]] TQ_EXPORT Ref<Data> dataFromBase64(std::string_view text);

}  // namespace tq
