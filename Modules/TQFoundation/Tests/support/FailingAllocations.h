#pragma once

// Allocations that fail on demand. Include it once per executable: it replaces the allocation
// functions of the C++ library and those of objects.

#include <TQFoundation/base/TQMemory.h>

#include "support/Objects.h"
#include "support/Test.h"

namespace {

// Number of allocations until the failing one; negative means that none fails.
std::atomic<long> allocationsToGo = -1;
std::atomic<long> allocationsHeld = 0;

bool failsNow() noexcept { return allocationsToGo >= 0 && allocationsToGo-- == 0; }

void* allocate(std::size_t size) noexcept {
  void* memory = failsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (memory != nullptr) ++allocationsHeld;
  return memory;
}

void* allocateOrThrow(std::size_t size) {
  if (void* memory = allocate(size)) return memory;
  throw std::bad_alloc();
}

void release(void* memory) noexcept {
  if (memory == nullptr) return;
  --allocationsHeld;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }

namespace tq {

// The allocation of objects.
void* allocateObjectMemory(std::size_t byteCount) { return allocateOrThrow(byteCount); }
void freeObjectMemory(void* memory) noexcept { release(memory); }

namespace test {

/// Grows the tables of weak references to their permanent size.
inline void warmUpWeakReferences() {
  std::vector<Ref<Object>> objects;
  std::vector<Weak<Object>> links;
  for (int i = 0; i < 5000; ++i) links.emplace_back(objects.emplace_back(String::of("x")));
}

/// Calls `operation` with the n-th allocation failing, for n = 1, 2, 3 … until it succeeds. It must
/// return true on success, return false or throw std::bad_alloc on failure, and own nothing
/// afterwards.
inline void failEachAllocation(const std::function<bool()>& operation) {
  ASSERT_TRUE(operation());  // everything that is created on first use exists now
  const long before = allocationsHeld;
  for (long n = 0;; ++n) {
    bool succeeded = false;
    allocationsToGo = n;
    try {
      succeeded = operation();
    } catch (const std::bad_alloc&) {
    }
    const bool failed = allocationsToGo < 0;
    allocationsToGo = -1;
    ASSERT_EQ(allocationsHeld, before) << "leaked after allocation " << n;
    if (!failed) {
      EXPECT_TRUE(succeeded);
      EXPECT_GT(n, 5);
      return;
    }
  }
}

}  // namespace test
}  // namespace tq
