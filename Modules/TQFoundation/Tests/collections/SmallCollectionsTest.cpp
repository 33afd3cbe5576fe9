#include <ranges>

#include <TQFoundation/collections/BinarySearch.h>
#include <TQFoundation/collections/Multiset.h>
#include <TQFoundation/collections/NearestNeighbour.h>
#include <TQFoundation/collections/Queue.h>
#include <TQFoundation/collections/RecentsList.h>
#include <TQFoundation/collections/RectangularArray.h>
#include <TQFoundation/collections/RestorableValue.h>
#include <TQFoundation/collections/Stack.h>

#include "support/Iterators.h"

namespace {

std::string textOf(const Multiset<std::string>& set) {
  std::string text;
  for (const auto& [element, count] : set) text += element + std::to_string(count);
  return text;
}

TEST(Multiset, CountsInTheOrderOfFirstInsertion) {
  Multiset<std::string> set(std::vector<std::string>{"c", "a", "b", "a", "c", "a"});
  EXPECT_EQ(textOf(set), "c2a3b1");
  EXPECT_EQ(set.insert("a", 2), 5U);
  EXPECT_EQ(set.insert("none", 0), 0U);
  EXPECT_EQ(set.totalCount(), 8U);
  EXPECT_EQ(set.remove("a", 1), 1U);
  EXPECT_EQ(set.insert("a"), 5U);
  EXPECT_EQ(set.remove("c", 9), 2U);
  EXPECT_EQ(textOf(set), "a5b1");  // later positions move up
  EXPECT_EQ(set.remove("b"), 1U);
  EXPECT_EQ(set.remove("b"), 0U);
  EXPECT_EQ(set.removeAll("a"), 5U);
  EXPECT_TRUE(set.isEmpty());
  EXPECT_FALSE(set.contains("a"));
  set.insert("a", 2);
  Multiset<std::string> copy(set);
  const auto moved = std::move(set);
  EXPECT_TRUE(set.isEmpty());  // NOLINT: its state is specified
  EXPECT_EQ(moved, copy);
  EXPECT_THROW(copy.insert("b", ~std::size_t{1}), std::length_error);
  EXPECT_EQ(moved, copy);
}

TEST(Multiset, EqualityIgnoresTheOrder) {
  const auto of = [](std::vector<int> elements) { return Multiset<int>(elements); };
  EXPECT_EQ(of({1, 2, 2}), of({2, 1, 2}));
  EXPECT_NE(of({1, 2, 2}), of({1, 1, 2}));
  EXPECT_NE(of({1, 2}), of({1, 3}));
  EXPECT_NE(of({1, 2}), of({1, 1}));  // equal in total, of another number of elements
}

TEST(StackAndQueue, ReturnTheNewestAndTheOldestOrNullopt) {
  Stack<std::unique_ptr<int>> stack;
  EXPECT_EQ(stack.pop(), std::nullopt);
  EXPECT_EQ(stack.top(), nullptr);
  Queue<int> queue;
  for (const int element : {1, 2, 3}) {
    stack.push(std::make_unique<int>(element));
    queue.enqueue(element);
  }
  EXPECT_EQ(**stack.top(), 3);
  for (const int element : {3, 2, 1}) EXPECT_EQ(**stack.pop(), element);
  EXPECT_TRUE(stack.isEmpty());
  EXPECT_EQ(queue.dequeue(), 1);
  EXPECT_EQ(*queue.first(), 2);
  queue.removeAll();
  EXPECT_EQ(queue.dequeue(), std::nullopt);
  EXPECT_EQ(queue.first(), nullptr);
}

TEST(PriorityQueue, EqualElementsLeaveInTheOrderOfInsertion) {
  const auto byFirstLetter = [](std::string_view a, std::string_view b) { return a[0] < b[0]; };
  PriorityQueue<std::string, decltype(byFirstLetter)> queue(byFirstLetter);
  for (const char* word : {"b1", "c1", "a1", "b2", "a2", "b3", "c2", "b4", "a3"}) {
    queue.enqueue(word);
  }
  EXPECT_EQ(*queue.first(), "a1");
  std::string order;
  while (const auto word = queue.dequeue()) order += *word;
  EXPECT_EQ(order, "a1a2a3b1b2b3b4c1c2");
  EXPECT_EQ(queue.first(), nullptr);
}

TEST(RecentsList, KeepsTheFrontElementAndReplacesOthers) {
  struct File {
    std::string name;
    int version;
  };
  const auto sameName = [](const File& stored, const File& added) {
    return stored.name == added.name;
  };
  RecentsList<File> list(5);
  for (const int version : {1, 2}) list.insert({"a", version}, sameName);
  EXPECT_EQ(list[0].version, 1);
  list.insert({"b", 1}, sameName);
  list.insert({"a", 3}, sameName);
  EXPECT_EQ(list[0].version, 3);
  EXPECT_EQ(list.endIndex(), 2U);
}

TEST(RecentsList, TruncatesASequenceButKeepsItsDuplicates) {
  RecentsList<int> none(0);
  none.insert(1);
  EXPECT_EQ(none, RecentsList<int>({1, 2}, 0));
  RecentsList<int> list(std::vector{1, 2, 1, 1, 5}, 4);
  EXPECT_THAT(list, ElementsAre(1, 2, 1, 1));
  list.insert(2);
  const RecentsList<int> copy = list;
  list.insert(9);
  EXPECT_THAT(list, ElementsAre(9, 2, 1, 1));
  EXPECT_EQ(copy, RecentsList<int>({2, 1, 1, 1, 7}, 4));
  EXPECT_NE(copy, list);
  EXPECT_NE(copy, RecentsList<int>({2, 1, 1, 1}, 5));

  std::istringstream numbers("1 2 3");
  EXPECT_EQ(RecentsList<int>(std::views::istream<int>(numbers), 2).count(), 2u);
  int next = 0;
  EXPECT_TRUE(numbers >> next && next == 3);  // it has not been read
}

TEST(RecentsList, StopsAtInvalidCapacitiesAndIndexes) {
  EXPECT_DEATH(RecentsList<int>(-1).insert(1), "capacity_ >= 0.*function insert");
  EXPECT_DEATH(RecentsList<int>(std::vector{1}, -1), "capacity >= 0");
  EXPECT_DEATH(static_cast<void>(RecentsList<int>(3)[0]), "index < count");
}

TEST(RectangularArray, RowsAndColumnsAreViewsOfTheSameElements) {
  RectangularArray<int> table(2, 3);
  for (int number = 0; int& element : table.elements()) element = number++;
  EXPECT_THAT(table.row(1), ElementsAre(3, 4, 5));
  EXPECT_THAT(table.column(2), ElementsAre(2, 5));
  expectIterators(table.column(1), 2, [](std::ptrdiff_t i, int n) { return n == 1 + 3 * i; });
  std::ranges::fill(table.column(0), 9);
  table.at(0, 1) = 7;
  EXPECT_THAT(std::as_const(table).elements(), ElementsAre(9, 7, 2, 9, 4, 5));
  std::ranges::sort(table.column(1));
  EXPECT_THAT(std::as_const(table).column(1), ElementsAre(4, 7));
  EXPECT_EQ(std::ranges::distance(RectangularArray<int>(3, 0).row(2)), 0);
  EXPECT_EQ(std::ranges::distance(RectangularArray<int>(0, 3).column(2)), 0);
  const RectangularArray<int> taken = std::move(table);
  EXPECT_EQ(taken.rowCount(), 2u);
  EXPECT_EQ(table, RectangularArray<int>());  // NOLINT: its state is specified

  RectangularArray<bool> flags(2, 3, true);
  bool& flag = flags.at(1, 0);
  flag = false;
  flags.column(2)[1] = false;
  EXPECT_THAT(flags.row(1), ElementsAre(false, true, false));
  RectangularArray<bool> moved(1, 1);
  moved = std::exchange(flags, RectangularArray<bool>(3, 2));
  EXPECT_THAT(std::as_const(moved).elements(), ElementsAre(true, true, true, false, true, false));
  EXPECT_NE(flags, RectangularArray<bool>(2, 3));  // equal elements, another shape
  EXPECT_NE(flags, RectangularArray<bool>(3, 1));
  EXPECT_NE(flags, RectangularArray<bool>(3, 2, true));
  EXPECT_EQ(flags, RectangularArray<bool>(3, 2));
}

TEST(RectangularArray, PositionsOutOfRangeStopTheProcess) {
  const RectangularArray<int> table(2, 3);
  EXPECT_DEATH(static_cast<void>(table.at(0, 3)), "column < columnCount_");
  EXPECT_DEATH(static_cast<void>(table.row(2)), "row < self.rowCount_");
  EXPECT_DEATH(static_cast<void>(table.column(3)), "column < self.columnCount_");
  for (const std::size_t n : {std::size_t{1} << 35, std::size_t{1} << 40}) {
    EXPECT_THROW(RectangularArray<char>(n, n), std::length_error);
  }
}

TEST(RestorableValue, RestoresTheFirstValue) {
  RestorableValue<std::string> value("before");
  value.restore();
  for (const char* next : {"one", "two"}) value.set(next);
  EXPECT_TRUE(value.isChanged() && value.value() == "two");
  value.restore();
  EXPECT_TRUE(!value.isChanged() && value.value() == "before");
}

TEST(ScopedValue, RestoresAtTheEndOfTheScopeAndAfterExceptions) {
  std::string value = "before";
  const auto change = [&value] {
    const ScopedValue scoped(value, value + "!");
    EXPECT_EQ(value, "before!");
    throw std::runtime_error("left early");
  };
  EXPECT_THROW(change(), std::runtime_error);
  EXPECT_EQ(value, "before");
}

TEST(BinarySearch, FindsTheKeyOrItsInsertionPosition) {
  struct Person {
    std::string name;
    int age;
  };
  const std::vector<Person> people = {{"a", 10}, {"b", 20}, {"c", 20}, {"d", 40}};
  const Rows<int, BinarySearchResult> cases{{5, {0, false}},  {10, {0, true}}, {20, {1, true}},
                                            {30, {3, false}}, {40, {3, true}}, {50, {4, false}}};
  for (const auto& [key, found] : cases) EXPECT_EQ(binarySearch(people, key, &Person::age), found);
  EXPECT_EQ(binarySearch(std::vector{9, 7, 5}, 7, {}, std::greater<>()),
            (BinarySearchResult{1, true}));
  EXPECT_EQ(binarySearch(std::vector<int>(), 1), (BinarySearchResult{0, false}));
}

TEST(NearestNeighbour, ReturnsTheFirstOfTheNearestInReach) {
  const std::vector<double> places = {8, std::nan(""), 3, 5, -1, 5};
  const auto to = [](double wanted) {
    return [wanted](double place) { return std::fabs(place - wanted); };
  };
  EXPECT_EQ(nearestNeighbour(places, to(4)) - places.begin(), 2);
  EXPECT_EQ(nearestNeighbour(places, to(5)) - places.begin(), 3);
  EXPECT_EQ(nearestNeighbour(places, to(11), 3) - places.begin(), 0);  // the limit is inclusive
  EXPECT_EQ(nearestNeighbour(places, to(11), 2.9), places.end());
  EXPECT_EQ(nearestNeighbour(places, to(std::nan(""))), places.end());
}

}  // namespace
