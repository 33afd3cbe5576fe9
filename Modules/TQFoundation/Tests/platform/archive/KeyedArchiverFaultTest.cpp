#include "platform/archive/Host.h"
#include "support/FailingAllocations.h"

namespace {

TEST(KeyedArchiverFault, EveryAllocationMayFail) {
  test::warmUpWeakReferences();
  const Ref<Host> child = makeHost("a name too long to be kept inside a string");
  const Ref<Host> root = makeHost(
      "forgiving",
      Array::arrayWithObjects(
          {child, Set::setWithObjects({String::of("é")}),
           Dictionary::dictionaryWithEntries({{"error", Error::errorWithDomain("domain", 1)}}),
           MutableArray::arrayWithArray(*Array::arrayWithObjects({child}))}));
  child->back = root;

  const Ref<Data> archive = KeyedArchiver::archivedDataWithRootObject(*root);
  failEachAllocation(
      [&] { return KeyedArchiver::archivedDataWithRootObject(*root)->isEqual(*archive); });
  EXPECT_EQ(root->referenceCount(), 1u);
  failEachAllocation([&] {
    const Ref<Object> copy = KeyedUnarchiver::unarchiveRootObject(archive->bytes());
    EXPECT_EQ(copy->referenceCount(), 1u);
    return KeyedArchiver::archivedDataWithRootObject(*copy)->isEqual(*archive);
  });
}

}  // namespace
