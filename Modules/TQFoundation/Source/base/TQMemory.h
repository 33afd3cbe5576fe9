#pragma once

/// @file TQMemory.h
/// Allocation of objects. Defined in platform/memory, above the library's own heap.

#include <cstddef>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns memory for one object, aligned for every scalar type. Any thread.
/// @throws std::bad_alloc when memory is exhausted
[[nodiscard]] TQ_EXPORT void* allocateObjectMemory(std::size_t byteCount);

/// Frees memory that allocateObjectMemory() returned. Any thread; null is ignored.
TQ_EXPORT void freeObjectMemory(void* memory) noexcept;

}  // namespace tq
