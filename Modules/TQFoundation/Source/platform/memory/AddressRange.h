#pragma once

/// @file AddressRange.h
/// Addresses kept for memory that grows without moving.

#include <cstddef>

namespace tq::detail {

/// Addresses of `byteCount` bytes that nothing else will use and that cost no memory yet. They may
/// not be touched before growRange(). Kept until the process ends.
/// @throws std::bad_alloc
[[nodiscard]] void* reserveRange(std::size_t byteCount);

/// Makes `byteCount` bytes from `at` on usable, a multiple of 64 KiB as both should be; they are 0.
/// @throws std::bad_alloc
void growRange(void* at, std::size_t byteCount);

}  // namespace tq::detail
