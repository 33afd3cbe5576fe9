#include <TQFoundation/collections/RecentsList.h>

#include <gmock/gmock.h>

#include <ranges>
#include <sstream>
#include <string>
#include <vector>

namespace tq {
namespace {

using testing::ElementsAre;

TEST(RecentsList, KeepsTheMostRecentFirstAndTrimsTheOldest) {
  RecentsList<char> list(3);
  for (const char c : {'a', 'b', 'c', 'd'}) list.insert(c);
  EXPECT_THAT(list, ElementsAre('d', 'c', 'b'));
  list.insert('b');
  EXPECT_THAT(list, ElementsAre('b', 'd', 'c'));
  list.insert('d');
  EXPECT_THAT(list, ElementsAre('d', 'b', 'c'));
  RecentsList<char> none(0);
  none.insert('a');
  EXPECT_EQ(none.count(), 0U);
}

TEST(RecentsList, TheFrontEntryStaysAndOthersAreReplaced) {
  struct File {
    std::string name;
    int version;
  };
  const auto sameName = [](const File& stored, const File& added) {
    return stored.name == added.name;
  };
  RecentsList<File> list(5);
  list.insert({"a", 1}, sameName);
  list.insert({"a", 2}, sameName);
  EXPECT_EQ(list[0].version, 1);
  list.insert({"b", 1}, sameName);
  list.insert({"a", 3}, sameName);
  EXPECT_EQ(list[0].version, 3);
  EXPECT_EQ(list.endIndex(), 2U);
}

TEST(RecentsList, ASequenceIsCutToTheCapacityButKeepsItsDuplicates) {
  RecentsList<int> list(std::vector{1, 2, 1, 1, 5}, 4);
  EXPECT_THAT(list, ElementsAre(1, 2, 1, 1));
  list.insert(2);
  EXPECT_THAT(list, ElementsAre(2, 1, 1, 1));
  const RecentsList<int> copy = list;
  list.insert(9);
  EXPECT_THAT(list, ElementsAre(9, 2, 1, 1));
  EXPECT_THAT(copy, ElementsAre(2, 1, 1, 1));

  std::istringstream numbers("1 2 3");
  EXPECT_EQ(RecentsList<int>(std::views::istream<int>(numbers), 2).count(), 2u);
  int next = 0;
  EXPECT_TRUE(numbers >> next && next == 3);  // which nobody had asked for
}

TEST(RecentsList, ANegativeCapacityStopsTheProcess) {
  EXPECT_DEATH(RecentsList<int>(-1).insert(1), "capacity_ >= 0");
  EXPECT_DEATH(RecentsList<int>(std::vector{1}, -1), "capacity >= 0");
  EXPECT_DEATH(static_cast<void>(RecentsList<int>(3)[0]), "index < count");
}

}  // namespace
}  // namespace tq
