#include <TQFoundation/platform/memory/AddressRange.h>

#include <sys/mman.h>

#include <new>

namespace tq::detail {

void* reserveRange(std::size_t byteCount) {
  void* const range =
      ::mmap(nullptr, byteCount, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (range == MAP_FAILED) throw std::bad_alloc();
  return range;
}

void growRange(void* at, std::size_t byteCount) {
  if (::mprotect(at, byteCount, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
}

}  // namespace tq::detail
