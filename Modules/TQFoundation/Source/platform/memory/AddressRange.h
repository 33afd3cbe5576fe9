#pragma once

/// @file AddressRange.h
/// Reserved address ranges, for memory that grows without moving.

#include <cstddef>

namespace tq::detail {

/// Reserves `byteCount` bytes of address space, without memory. Accessing them before growRange()
/// is an error. They stay reserved until the process ends.
/// @throws std::bad_alloc
[[nodiscard]] void* reserveRange(std::size_t byteCount);

/// Makes `byteCount` bytes from `at` usable and 0. Both must be multiples of 64 KiB.
/// @throws std::bad_alloc
void growRange(void* at, std::size_t byteCount);

}  // namespace tq::detail
