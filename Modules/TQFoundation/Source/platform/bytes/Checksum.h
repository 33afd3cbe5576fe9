#pragma once

/// @file Checksum.h
/// Sums that find damage.

#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// CRC-32 of the bytes: reflected polynomial EDB88320, initial value 0 as its usual interface
/// counts it, so no bytes give 0. Any thread.
[[nodiscard]] TQ_EXPORT std::uint32_t crc32(std::span<const std::byte> bytes) noexcept;

}  // namespace tq
