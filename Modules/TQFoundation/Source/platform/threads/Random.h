#pragma once

/// @file Random.h
/// Random numbers.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns a uniformly distributed random number from 0 to `below` - 1, from the system's source;
/// 0 if `below` is less than 2. Any thread.
[[nodiscard]] TQ_EXPORT std::uint32_t uniformRandom(std::uint32_t below) noexcept;

}  // namespace tq
