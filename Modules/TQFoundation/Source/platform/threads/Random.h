#pragma once

/// @file Random.h
/// Chance.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// A number from 0 to `below` - 1, each as likely as the others, from the system's source; 0 when
/// `below` is less than 2. Any thread.
[[nodiscard]] TQ_EXPORT std::uint32_t uniformRandom(std::uint32_t below) noexcept;

}  // namespace tq
