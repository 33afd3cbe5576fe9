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

/// The bytes of the digest, in order.
using SHA1Digest = std::array<std::byte, 20>;

/// Returns the SHA-1 (FIPS 180-4) of the bytes. The first digest loads libcrypto. Any thread.
/// @return nullopt if the system forbids the algorithm or is out of memory, or if libcrypto cannot
///         be loaded; the log then says why
[[nodiscard]] TQ_EXPORT std::optional<SHA1Digest> sha1Digest(
    std::span<const std::byte> bytes) noexcept;

/// Returns the SHA-1 of a file's content, which is read piece by piece. Only regular files are
/// read. Any thread.
/// @return nullopt, with an error, on failure
[[nodiscard]] TQ_EXPORT std::optional<SHA1Digest> sha1DigestOfFile(const URL& url,
                                                                   Ref<Error>* error = nullptr);

}  // namespace tq
