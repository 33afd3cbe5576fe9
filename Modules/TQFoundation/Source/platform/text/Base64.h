#pragma once

/// @file Base64.h
/// Base64 encoding and decoding (RFC 4648, section 4).

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>

namespace tq {

/// Returns the bytes as base64: standard alphabet, padded with "=", without line breaks. The text
/// of no bytes is empty. Any thread.
[[nodiscard]] TQ_EXPORT std::string base64FromBytes(std::span<const std::byte> bytes);

/// Appends the bytes, which must not be part of `text`, to it as base64.
TQ_EXPORT void appendBase64(std::string& text, std::span<const std::byte> bytes);

/// Decodes base64 text strictly: a multiple of 4 characters of the standard alphabet, at most two
/// "=" and only at the end, no white space. Unused bits of the last character may be set.
/// @return null for any other text; an empty buffer for empty text
[[nodiscard]] TQ_EXPORT Ref<Data> dataFromBase64(std::string_view text);

}  // namespace tq
