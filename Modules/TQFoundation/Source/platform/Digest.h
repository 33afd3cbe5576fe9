#pragma once

/// @file Digest.h
/// Cryptographic digests.

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include <TQFoundation/base/TQExport.h>

namespace tq {

using SHA1Digest = std::array<std::byte, 20>;

/// SHA-1 (FIPS 180-4) of the bytes; none when the system forbids the algorithm or is out of memory.
/// Any thread.
[[nodiscard]] TQ_EXPORT std::optional<SHA1Digest> sha1Digest(
    std::span<const std::byte> bytes) noexcept;

}  // namespace tq
