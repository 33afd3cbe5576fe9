#include <TQFoundation/comparison/TQArrayConsolidator.h>
#include <TQFoundation/comparison/TQArrayCrossReferenceHandler.h>

#include "comparison/Letters.h"

namespace {

using Log = std::vector<std::string>;

/// A consolidator that compares by equality and logs its calls.
TQArrayConsolidator loggingConsolidator(Log& log) {
  TQArrayConsolidator consolidator;
  consolidator.setComparisonBlock(areEqual);
  consolidator.setUpdateBlock([&](const Object& oldItem, const Object& newItem) {
    EXPECT_NE(&oldItem, &newItem);
    log.push_back("update " + oldItem.description() + newItem.description());
  });
  consolidator.setCreateBlock([&](Object& newItem) {
    log.push_back("create " + newItem.description());
    return newItem.description() == "0" ? nullptr : share(newItem);
  });
  consolidator.setPostRemoveBlock(
      [&](Object& item) { log.push_back("removed " + item.description()); });
  return consolidator;
}

TEST(ArrayConsolidation, KeepsMatchesAndMovesItems) {
  Log log;
  TQArrayConsolidator consolidator = loggingConsolidator(log);
  const Ref<MutableArray> array = MutableArray::arrayWithArray(*letters("abcx"));
  const std::vector<Ref<Object>> before(array->objects().begin(), array->objects().end());
  EXPECT_TRUE(consolidateAgainst(*array, *letters("cayb0z"), consolidator));
  EXPECT_EQ(textOf(*array), "caybz");  // createBlock returned null for 0
  EXPECT_EQ(array->objects()[0], before[2]);
  EXPECT_EQ(array->objects()[1], before[0]);
  EXPECT_EQ(array->objects()[3], before[1]);
  std::sort(log.begin(), log.begin() + 3);  // updates come in any order
  EXPECT_THAT(log, ElementsAre("update aa", "update bb", "update cc", "removed x", "create y",
                               "create 0", "create z"));
  EXPECT_FALSE(consolidateAgainst(*array, *letters("caybz"), consolidator));
}

TEST(ArrayConsolidation, UpdatesMatchesThatTheEditScriptDoesNotUse) {
  // The calls from ab to pqr: 1 a-p, 2 a-q, 3 b-r, 4 b-p. The search then ends on the path of call
  // 4, which removes a. Inferring moves calls 5 a-q and 6 a-r.
  const Rows<std::vector<int>, Log, std::string> cases{
      {{2, 4}, {"update aq", "update bp", "removed a", "create q", "create r"}, "bqr"},
      {{2, 4, 6}, {"update ar", "update bp", "create q"}, "bqa"},  // the last match of a counts
  };
  for (const auto& [matching, expected, result] : cases) {
    Log log;
    TQArrayConsolidator consolidator = loggingConsolidator(log);
    int calls = 0;
    consolidator.setComparisonBlock(
        [&, &yes = matching](Object&, std::size_t, Object&, std::size_t) {
          return std::ranges::count(yes, ++calls) != 0;
        });
    const Ref<MutableArray> array = MutableArray::arrayWithArray(*letters("ab"));
    EXPECT_TRUE(consolidateAgainst(*array, *letters("pqr"), consolidator));
    EXPECT_EQ(log, expected);
    EXPECT_EQ(textOf(*array), result);
  }
}

TEST(ArrayConsolidation, DefaultsAreIdentityAndNoBlocks) {
  TQArrayConsolidator consolidator;
  const Ref<Array> array = letters("abc");
  const Ref<Array> shuffled = Array::arrayWithObjects(
      {array->objects()[2], String::of("n"), array->objects()[0], String::of("b")});
  bool hasChanges = false;
  const auto consolidated = [&](Array& olds, Array& news) {
    return arrayByConsolidatingAgainst(olds, news, consolidator, &hasChanges);
  };
  EXPECT_EQ(textOf(*consolidated(*array, *shuffled)), "ca");  // nothing is created
  EXPECT_TRUE(hasChanges);
  EXPECT_EQ(textOf(*array), "abc");
  EXPECT_EQ(consolidated(*array, *array), array);
  EXPECT_FALSE(hasChanges);
  EXPECT_EQ(consolidated(*Array::array(), *array)->count(), 0U);
  EXPECT_TRUE(hasChanges);  // an insertion, although nothing is created
}

TEST(ArrayConsolidation, BlocksMayReplaceThemselves) {
  Log log;
  TQArrayConsolidator consolidator = loggingConsolidator(log);
  TQArrayCrossReferenceHandler handler;
  const auto replacing = [&](const char* what) {
    return [&, what](auto&&...) {
      consolidator = TQArrayConsolidator();
      handler = TQArrayCrossReferenceHandler();
      log.emplace_back(what);
    };
  };
  consolidator.setUpdateBlock(replacing("update"));
  handler.setItemsMatchedBlock(replacing("match"));
  handler.setItemRemovedBlock(replacing("removal"));
  crossReferenceAgainst(*letters("abc"), letters("ab").get(), handler);
  consolidator.setUpdateBlock(replacing("update"));
  consolidator.setPostRemoveBlock(replacing("removed"));
  consolidator.setComparisonBlock(areEqual);
  EXPECT_TRUE(consolidateAgainst(*MutableArray::arrayWithArray(*letters("abc")), *letters("ab"),
                                 consolidator));
  EXPECT_THAT(log, ElementsAre("match", "match", "removal", "update", "update", "removed"));
  EXPECT_EQ(consolidator.updateBlock(), nullptr);  // from the next call on
}

TEST(CrossReference, ReportsMatchesThenRemovalsThenAdditions) {
  Log log;
  const auto tell = [&](const char* what) {
    return [&log, what](Object& item) { log.push_back(what + item.description()); };
  };
  TQArrayCrossReferenceHandler handler;
  const Ref<Array> olds = letters("abcx");
  const Ref<Array> news = letters("caby");
  crossReferenceAgainst(*olds, news.get(), handler);  // without blocks
  handler.setItemAddedBlock(tell("+"));
  handler.setItemRemovedBlock(tell("-"));
  crossReferenceAgainst(*olds, news.get(), handler);
  EXPECT_THAT(log, ElementsAre("-x", "+y"));

  log.clear();
  handler.setItemsMatchedBlock([&](const Object& a, const Object& b) {
    log.push_back("=" + a.description() + b.description());
  });
  crossReference(olds.get(), news.get(), handler);
  EXPECT_THAT(log, ElementsAre("=aa", "=bb", "=cc", "-x", "+y"));

  log.clear();  // by position; this block takes precedence
  handler.setIndexedComparisonBlock(
      [](Object&, std::size_t x, Object&, std::size_t y) { return x == y; });
  handler.setComparisonBlock([](Object&, Object&) -> bool { throw std::logic_error("unused"); });
  crossReferenceAgainst(*olds, letters("pq").get(), handler);
  EXPECT_THAT(log, ElementsAre("=ap", "=bq", "-x", "-c"));

  log.clear();
  crossReferenceAgainst(*letters("ab"), nullptr, handler);
  crossReference(nullptr, letters("ab").get(), handler);
  EXPECT_THAT(log, ElementsAre("-b", "-a", "+a", "+b"));
}

}  // namespace
