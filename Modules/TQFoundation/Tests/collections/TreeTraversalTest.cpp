#include <TQFoundation/collections/TreeTraversal.h>

#include <iterator>
#include <ranges>

#include <TQFoundation/objects/Object.h>

#include "support/Test.h"

namespace {

/// A tree that returns references to its nodes.
struct Item {
  std::string name;
  std::vector<Item> items;
};
struct ItemTree {
  Item top;
  [[nodiscard]] const Item& root() const { return top; }
  [[nodiscard]] const std::vector<Item>& children(const Item& item) const { return item.items; }
};

/// A tree whose nodes are values and whose children are computed: the two halves of each number.
/// Counts the calls of children().
struct Halves : Object {
  explicit Halves(int number) : top(number) {}
  [[nodiscard]] int root() const { return top; }
  [[nodiscard]] std::vector<int> children(int number) const {
    ++requests;
    return number < 2 ? std::vector<int>() : std::vector{number / 2, number - number / 2};
  }
  int top;
  mutable int requests = 0;
};

/// A tree whose ranges of children refer to the node.
struct Doubling {
  [[nodiscard]] int root() const { return 1; }
  [[nodiscard]] auto children(const int& number) const {
    return std::views::iota(0, number < 8 ? 2 : 0) |
           std::views::transform([&number](int i) { return 2 * number + i; });
  }
};

/// A tree in which every node has one child, down to 0.
struct Chain {
  int length;
  [[nodiscard]] int root() const { return length; }
  [[nodiscard]] auto children(int number) const {
    return std::views::iota(number - 1, number - (number == 0 ? 1 : 0));
  }
};

static_assert(ChildTraversable<ItemTree> && ChildTraversable<Ref<Halves>> &&
              ChildTraversable<SubTree<Ref<Halves>>> && !ChildTraversable<Item>);
static_assert(std::ranges::view<decltype(depthFirst(std::declval<const ItemTree&>()))>);

const ItemTree& family() {
  static const ItemTree& tree =
      *new ItemTree{{"a", {{"b", {{"c", {}}, {"d", {}}}}, {"e", {}}, {"f", {{"g", {{"h", {}}}}}}}}};
  return tree;
}

template <class Nodes>
std::string namesOf(Nodes&& nodes) {
  std::string names;
  for (const Item& item : nodes) names += item.name;
  return names;
}

TEST(TreeTraversal, VisitsSiblingsInTheirOrder) {
  const test::Rows<std::size_t, const char*, const char*, const char*> cases{
      {kNoDepthLimit, "abcdefgh", "cdbehgfa", "abefcdgh"},
      {2, "abcdefg", "cdbegfa", "abefcdg"},
      {1, "abef", "befa", "abef"},
      {0, "a", "a", "a"},
  };
  for (const auto& [limit, pre, post, breadth] : cases) {
    SCOPED_TRACE(limit);
    EXPECT_EQ(namesOf(depthFirst(family(), limit)), pre);
    EXPECT_EQ(namesOf(depthFirstPostOrder(family(), limit)), post);
    EXPECT_EQ(namesOf(breadthFirst(family(), limit)), breadth);
  }
}

TEST(TreeTraversal, ReturnsReferencesToNodesAndTheirDepth) {
  EXPECT_EQ(&*depthFirst(family()).begin(), &family().top);
  const auto depths = [](const auto& nodes) {
    std::vector<std::size_t> all;
    for (auto at = nodes.begin(); at != nodes.end(); ++at) all.push_back(at.depth());
    return all;
  };
  EXPECT_THAT(depths(depthFirst(family())), ElementsAre(0, 1, 2, 2, 1, 1, 2, 3));
  EXPECT_THAT(depths(breadthFirst(family())), ElementsAre(0, 1, 1, 1, 2, 2, 2, 3));
  EXPECT_THAT(depths(depthFirstPostOrder(family())), ElementsAre(2, 2, 1, 1, 3, 2, 1, 0));
}

TEST(TreeTraversal, StartsAtAnyNode) {
  const Item& f = family().top.items[2];
  EXPECT_EQ(namesOf(depthFirst(subTree(family(), f))), "fgh");
  EXPECT_EQ(namesOf(breadthFirst(subTree(family(), f), 1)), "fg");
}

TEST(TreeTraversal, WorksWithAlgorithmsAndViewsAndKeepsTemporariesAlive) {
  const auto isG = [](const Item& item) { return item.name == "g"; };
  const auto nodes = depthFirst(family());
  EXPECT_EQ((*std::ranges::find_if(nodes, isG)).items.size(), 1U);
  EXPECT_EQ(std::ranges::distance(breadthFirst(family())), 8);
  std::vector<int> numbers;
  const auto odd = [](int number) { return number % 2 == 1; };
  std::ranges::copy(depthFirst(makeRef<Halves>(6)) | std::views::filter(odd) | std::views::take(4),
                    std::back_inserter(numbers));
  EXPECT_THAT(numbers, ElementsAre(3, 1, 1, 1));
}

TEST(TreeTraversal, RequestsNoChildrenAfterTheLastVisitedNode) {
  const Ref<Halves> tree = makeRef<Halves>(1 << 20);
  const auto requestsFor = [&](const auto& nodes) {
    EXPECT_EQ(*std::ranges::find(nodes, 1 << 18), 1 << 18);
    return std::exchange(tree->requests, 0);
  };
  EXPECT_EQ(requestsFor(depthFirst(tree)), 2);
  EXPECT_EQ(requestsFor(breadthFirst(tree)), 3);
  EXPECT_EQ(std::ranges::distance(depthFirstPostOrder(tree, 2)), 7);
  EXPECT_EQ(tree->requests, 3);
}

TEST(TreeTraversal, ChildrenMayBeComputedFromTheNodeItself) {
  std::vector<int> nodes;
  for (const int node : depthFirst(Doubling())) nodes.push_back(node);
  EXPECT_THAT(nodes, ElementsAre(1, 2, 4, 8, 9, 5, 10, 11, 3, 6, 12, 13, 7, 14, 15));
}

TEST(TreeTraversal, AMillionLevelsDoNotOverflowTheStack) {
  const Chain chain{1'000'000};
  std::size_t deepest = 0;
  const auto nodes = depthFirst(chain);
  for (auto at = nodes.begin(); at != nodes.end(); ++at) deepest = at.depth();
  EXPECT_EQ(deepest, 1'000'000U);
  EXPECT_EQ(*depthFirstPostOrder(chain).begin(), 0);
  EXPECT_EQ(std::ranges::distance(depthFirstPostOrder(chain)), 1'000'001);
  EXPECT_EQ(std::ranges::distance(breadthFirst(chain)), 1'000'001);
}

TEST(Forest, VisitsOneTreeAfterAnother) {
  Forest<ItemTree> forest({family(), ItemTree{{"x", {{"y", {}}}}}});
  forest.append(ItemTree{{"z", {}}});
  EXPECT_EQ(namesOf(depthFirst(forest)), "abcdefghxyz");
  EXPECT_EQ(namesOf(depthFirstPostOrder(forest, 1)), "befayxz");
  EXPECT_EQ(namesOf(breadthFirst(forest)), "abefcdghxyz");
  EXPECT_EQ(namesOf(depthFirst(Forest<ItemTree>())), "");
}

}  // namespace
