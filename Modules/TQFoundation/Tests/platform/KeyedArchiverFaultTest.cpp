#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/platform/KeyedArchiver.h>
#include <TQFoundation/platform/KeyedUnarchiver.h>

#include "platform/Host.h"

namespace {

// Allocations on this thread until one fails; none does below 0.
thread_local constinit long allocationsLeft = -1;

// Out of line: GCC takes free() in an inlined operator delete for a mismatch.
[[gnu::noinline]] void giveBack(void* memory) noexcept { std::free(memory); }

}  // namespace

void* operator new(std::size_t size) {
  if (allocationsLeft >= 0 && allocationsLeft-- == 0) throw std::bad_alloc();
  if (void* memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { giveBack(memory); }
void operator delete(void* memory, std::size_t) noexcept { giveBack(memory); }

namespace tq {
namespace {

using test::Host;
using test::makeHost;

/// Fails the 1st, 2nd, 3rd… allocation of `act` until it passes. @return how many failed
int failEachAllocation(const std::function<void()>& act) {
  for (int failed = 0;; ++failed) {
    allocationsLeft = failed;
    try {
      act();
      allocationsLeft = -1;
      return failed;
    } catch (const std::bad_alloc&) {
      allocationsLeft = -1;
    }
  }
}

TEST(KeyedArchiverFault, EveryAllocationMayFail) {
  Class::registerClass<Host>();
  const Ref<Host> child = makeHost("a name too long to be kept inside a string");
  const Ref<Host> root = makeHost(
      "root",
      Array::arrayWithObjects(
          {child, Set::setWithObjects({String::of("é")}),
           Dictionary::dictionaryWithEntries({{"error", Error::errorWithDomain("domain", 1)}}),
           MutableArray::arrayWithArray(*Array::arrayWithObjects({child}))}));
  child->back = root;

  Ref<Data> archive;
  EXPECT_GT(failEachAllocation([&] { archive = KeyedArchiver::archivedDataWithRootObject(*root); }),
            50);
  EXPECT_EQ(root->referenceCount(), 1u);
  Ref<Object> copy;
  EXPECT_GT(
      failEachAllocation([&] { copy = KeyedUnarchiver::unarchiveRootObject(archive->bytes()); }),
      10);
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->referenceCount(), 1u);
  EXPECT_EQ(KeyedArchiver::archivedDataWithRootObject(*copy)->view(), archive->view());
}

}  // namespace
}  // namespace tq
