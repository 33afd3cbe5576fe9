#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/comparison/TQArrayConsolidator.h>

#include "comparison/Letters.h"
#include "support/FailingAllocations.h"

namespace {

TEST(ComparisonFault, AComparisonReleasesEverythingWhenMemoryRunsOut) {
  warmUpWeakReferences();
  const Ref<Array> olds = letters("the quick brown fox"), news = letters("a quick fox, brown?");
  failEachAllocation([&] { return editSequenceTo(*olds, *news, true)->size() > 10; });
}

/// `change` must change letters from abcdefgh to hxbcydzaklmn, or leave them as they are.
void expectAllOrNothing(const std::function<void(MutableArray&)>& change) {
  warmUpWeakReferences();
  failEachAllocation([&] {
    const Ref<MutableArray> array = MutableArray::arrayWithArray(*letters("abcdefgh"));
    try {
      change(*array);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(textOf(*array), "abcdefgh");
      throw;
    }
    return textOf(*array) == "hxbcydzaklmn";
  });
}

TEST(ComparisonFault, ApplyingAnEditSequenceChangesAllOrNothing) {
  const auto changes = editSequenceTo(*letters("abcdefgh"), *letters("hxbcydzaklmn"), true);
  expectAllOrNothing([&](MutableArray& array) { applyEditSequence(array, *changes); });
}

TEST(ComparisonFault, ConsolidationChangesAllOrNothing) {
  TQArrayConsolidator consolidator;
  consolidator.setComparisonBlock(areEqual);
  consolidator.setUpdateBlock([](auto&&...) {});
  consolidator.setCreateBlock([](Object& item) { return share(item); });
  const Ref<Array> news = letters("hxbcydzaklmn");
  expectAllOrNothing([&](MutableArray& array) { consolidateAgainst(array, *news, consolidator); });
}

}  // namespace
