#include <TQFoundation/base/TQMemory.h>

#include <cstdlib>
#include <new>

#ifndef TQ_SANITIZED
#include <mimalloc.h>
#endif

namespace tq {

// The sanitizers check malloc, so objects are allocated by it in their builds.
void* allocateObjectMemory(std::size_t byteCount) {
#ifdef TQ_SANITIZED
  void* memory = std::malloc(byteCount);
#else
  void* memory = mi_malloc(byteCount);
#endif
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void freeObjectMemory(void* memory) noexcept {
#ifdef TQ_SANITIZED
  std::free(memory);
#else
  mi_free(memory);
#endif
}

}  // namespace tq
