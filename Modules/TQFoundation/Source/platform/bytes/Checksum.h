#pragma once

/// @file Checksum.h
/// CRC-32 checksums.

#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns the CRC-32 of the bytes, as gzip defines it: reflected polynomial EDB88320. It is 0 for
/// no bytes. Any thread.
[[nodiscard]] TQ_EXPORT std::uint32_t crc32(std::span<const std::byte> bytes) noexcept;

}  // namespace tq
