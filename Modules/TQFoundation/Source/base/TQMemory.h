#pragma once

/// @file TQMemory.h
/// The one door through which objects get their memory. The platform room stands behind it.

#include <cstddef>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Memory for one object, aligned for every scalar type. Any thread.
/// @throws std::bad_alloc when there is none left
[[nodiscard]] TQ_EXPORT void* allocateObjectMemory(std::size_t byteCount);

/// Gives back what allocateObjectMemory() lent. Any thread; null is ignored.
TQ_EXPORT void freeObjectMemory(void* memory) noexcept;

}  // namespace tq
