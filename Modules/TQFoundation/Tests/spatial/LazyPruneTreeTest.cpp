#include <TQFoundation/spatial/LazyPruneTree.h>

#include <ranges>

#include <TQFoundation/collections/TreeTraversal.h>

#include "support/Test.h"

namespace {

/// Node n has those of the children 3n + 1, 3n + 2, 3n + 3 that are below `count`.
struct Ternary {
  int count = 40;
  [[nodiscard]] int root() const { return 0; }
  [[nodiscard]] std::vector<int> children(int node) const {
    std::vector<int> below;
    for (int child = 3 * node + 1; child <= 3 * node + 3 && child < count; ++child) {
      below.push_back(child);
    }
    return below;
  }
};

template <class Tree>
std::vector<int> nodesOf(const Tree& tree) {
  std::vector<int> nodes;
  for (const int node : depthFirst(tree)) nodes.push_back(node);
  return nodes;
}

TEST(LazyPruneTree, AlwaysKeepsTheRootAndHidesWholeSubtrees) {
  EXPECT_THAT(nodesOf(prune(Ternary(), [](int) { return false; })), ElementsAre(0));
  const auto not1 = [](int node) { return node != 1; };
  EXPECT_THAT(nodesOf(prune(Ternary{8}, not1)), ElementsAre(0, 2, 7, 3));
  const auto even = [](int node) { return node % 2 == 0; };
  EXPECT_THAT(nodesOf(prune(prune(Ternary{9}, not1), even)), ElementsAre(0, 2, 8));
}

TEST(LazyPruneTree, AsksOncePerChildOfAKeptNodeEachTimeItIsWalked) {
  std::vector<int> asked;
  const auto tree = prune(Ternary{13}, [&asked](int node) {
    asked.push_back(node);
    return node == 2;
  });
  const auto children = tree.children(0);
  EXPECT_TRUE(asked.empty());
  EXPECT_THAT(nodesOf(tree), ElementsAre(0, 2));
  EXPECT_THAT(asked, ElementsAre(1, 2, 7, 8, 9, 3));
  asked.clear();
  EXPECT_EQ(tree.root(), 0);
  EXPECT_THAT(nodesOf(tree), ElementsAre(0, 2));
  EXPECT_EQ(asked.size(), 6U);
  asked.clear();
  for (int walk = 0; walk < 2; ++walk) {
    for (const int child : children) EXPECT_EQ(child, 2);
  }
  EXPECT_THAT(asked, ElementsAre(1, 2, 3, 1, 2, 3));
}

TEST(LazyPruneTree, PrunesEveryTreeOfAForest) {
  const Forest<Ternary> forest({{4}, {2}, {7}});
  const auto pruned = prune(forest, [](int node) { return node != 1; });
  EXPECT_THAT(nodesOf(pruned), ElementsAre(0, 2, 3, 0, 0, 2, 3));
  EXPECT_EQ(pruned.count(), 3U);
}

/// The slow solution: returns the nodes of the whole tree that pass and whose ancestors all pass.
std::vector<int> filtered(const Ternary& tree, const std::vector<bool>& keeps) {
  std::vector<int> nodes;
  for (const int node : depthFirst(tree)) {
    bool kept = true;
    for (int at = node; at != 0; at = (at - 1) / 3) kept = kept && keeps[static_cast<size_t>(at)];
    if (kept) nodes.push_back(node);
  }
  return nodes;
}

TEST(LazyPruneTreeStress, YieldsWhatFilteringTheWholeTreeYields) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const Ternary tree{static_cast<int>(random() % 2000 + 1)};
    std::vector<bool> keeps(static_cast<std::size_t>(tree.count));
    for (auto&& keep : keeps) keep = random() % 4 != 0;
    const auto isKept = [&](int node) { return keeps[static_cast<std::size_t>(node)]; };
    EXPECT_EQ(nodesOf(prune(tree, isKept)), filtered(tree, keeps));
  }
}

}  // namespace
