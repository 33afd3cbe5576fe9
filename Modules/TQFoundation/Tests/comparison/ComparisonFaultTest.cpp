#include <gtest/gtest.h>

#include <stdexcept>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/comparison/TQArrayConsolidator.h>

#include "comparison/Letters.h"
#include "support/FailingAllocations.h"

namespace tq {
namespace {

using test::failEachAllocation;
using test::letters;
using test::textOf;

TEST(ComparisonFault, AComparisonReleasesEverythingWhenMemoryRunsOut) {
  test::warmUpWeakReferences();
  const Ref<Array> olds = letters("the quick brown fox");
  const Ref<Array> news = letters("a quick fox, brown?");
  failEachAllocation([&] { return editSequenceTo(*olds, *news, true)->size() > 10; });
}

TEST(ComparisonFault, ApplyingAnEditSequenceChangesAllOrNothing) {
  test::warmUpWeakReferences();
  const Ref<Array> olds = letters("abcdefgh");
  const auto changes = editSequenceTo(*olds, *letters("hxbcydzaklmn"), true);
  failEachAllocation([&] {
    const Ref<MutableArray> array = MutableArray::arrayWithArray(*olds);
    try {
      applyEditSequence(*array, *changes);
    } catch (const std::bad_alloc&) {
      if (!array->isEqual(*olds)) throw std::logic_error("half applied");
      throw;
    }
    return textOf(*array) == "hxbcydzaklmn";
  });
}

TEST(ComparisonFault, ConsolidationChangesAllOrNothing) {
  test::warmUpWeakReferences();
  const Ref<Array> olds = letters("abcdefgh");
  const Ref<Array> news = letters("hxbcydza");
  TQArrayConsolidator consolidator;
  consolidator.setComparisonBlock(
      [](Object& a, std::size_t, Object& b, std::size_t) { return a.isEqual(b); });
  consolidator.setUpdateBlock([](Object&, Object&) {});
  consolidator.setCreateBlock([](Object& item) { return share(item); });
  failEachAllocation([&] {
    const Ref<MutableArray> array = MutableArray::arrayWithArray(*olds);
    try {
      return consolidateAgainst(*array, *news, consolidator) && textOf(*array) == "hxbcydza";
    } catch (const std::bad_alloc&) {
      if (!array->isEqual(*olds)) throw std::logic_error("half consolidated");
      throw;
    }
  });
}

}  // namespace
}  // namespace tq
