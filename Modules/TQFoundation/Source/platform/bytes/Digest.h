#pragma once

/// @file Digest.h
/// Cryptographic digests.

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// The bytes in order, first byte first.
using SHA1Digest = std::array<std::byte, 20>;

/// SHA-1 (FIPS 180-4) of the bytes; none when the system forbids the algorithm or is out of memory.
/// Any thread.
[[nodiscard]] TQ_EXPORT std::optional<SHA1Digest> sha1Digest(
    std::span<const std::byte> bytes) noexcept;

/// SHA-1 of a file's content, read piece by piece. Only regular files are read. Any thread.
/// @return none, with an error, on failure
[[nodiscard]] TQ_EXPORT std::optional<SHA1Digest> sha1DigestOfFile(const URL& url,
                                                                   Ref<Error>* error = nullptr);

}  // namespace tq
