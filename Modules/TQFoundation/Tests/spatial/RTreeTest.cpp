#include <TQFoundation/spatial/RTree.h>

#include <ranges>

#include <TQFoundation/spatial/LazyPruneTree.h>
#include <TQFoundation/spatial/RTreeSearch.h>

#include "support/Iterators.h"
#include "support/PlainRTree.h"
#include "support/RandomRects.h"

namespace {

using Tree = RTree<int>;

Ref<Tree> treeOf(std::int64_t capacity, const std::vector<Rect>& rects) {
  Ref<Tree> tree = makeRef<Tree>(capacity);
  for (int i = 0; const Rect& rect : rects) tree->insert(i++, rect);
  return tree;
}

/// Compares two trees entry by entry; the rects must be equal bit for bit.
void expectSameNodes(const Tree::Node* node, const PlainRTree::Node& plain) {
  ASSERT_EQ(node->isLeaf(), plain.isLeaf);
  ASSERT_EQ(node->count(), plain.entries.size());
  for (std::size_t i = 0; i < node->count(); ++i) {
    expectFields(node->rects()[i], plain.entries[i].rect);
    if (!node->isLeaf()) expectSameNodes(node->child(i), *plain.entries[i].child);
  }
  for (std::size_t i = 0; const auto entry : node->leafEntries()) {
    ASSERT_EQ(entry.element, plain.entries[i++].element);
  }
}

/// Inserts `count` rects into a tree and into a plain tree. Compares their nodes (in small
/// trees at intervals too), and then the results of queries. Nodes that are split keep their
/// identity.
void compareWithThePlainTree(RectKind kind, std::int64_t capacity, int count, unsigned seed) {
  SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(kind) << ", capacity " << capacity
                                  << ", seed " << seed);
  const Ref<Tree> tree = makeRef<Tree>(capacity);
  PlainRTree plain(static_cast<std::size_t>(capacity));
  RandomRects rects(kind, seed);
  for (int i = 0; i < count; ++i) {
    const Rect rect = rects.next();
    const Tree::Node* const root = tree->root();
    tree->insert(i, rect);
    plain.insert(i, rect);
    ASSERT_TRUE(tree->root() == root || tree->root()->child(0) == root);
    const bool isDue = count <= 1000 && (i < 60 || i % 100 == 99);
    if (!isDue && i != count - 1) continue;
    expectSameNodes(tree->root(), plain.root());
    ASSERT_TRUE(kind == RectKind::wild || tree->validate());
    ASSERT_FALSE(testing::Test::HasFailure()) << "after " << i;
  }
  RandomRects queries(kind, seed + 1000);
  for (int i = 0; i < 300; ++i) {
    const Rect query = queries.next();
    ASSERT_EQ(tree->intersects(query), plain.intersects(query)) << "query " << i;
  }
}

TEST(RTree, IsMadeWithACapacityOfTwoOrMore) {
  EXPECT_EQ(makeRef<Tree>(2)->minNumberOfChildren(), 1);
  EXPECT_EQ(makeRef<Tree>(5)->minNumberOfChildren(), 2);
  for (const std::int64_t capacity :
       {std::int64_t{1}, std::int64_t{0}, std::numeric_limits<std::int64_t>::min()}) {
    EXPECT_EXIT(
        static_cast<void>(makeRef<Tree>(capacity)), testing::KilledBySignal(SIGABRT),
        "maxNumberOfChildren >= 2.*function RTree,.*Modules/TQFoundation/Source/RTree, line");
  }
}

TEST(RTree, BuildsTheSameNodesAsThePlainTree) {
  for (const RectKind kind : kAllKinds) compareWithThePlainTree(kind, 4, 200, 1);
}

TEST(RTree, MeetsClosedRectsAndPointsButNeverNullOnes) {
  EXPECT_FALSE(makeRef<Tree>(4)->intersects(RectInfinite));
  const Ref<Tree> null = treeOf(2, {RectNull});
  EXPECT_FALSE(null->intersects(RectInfinite));
  EXPECT_FALSE(null->intersects(RectNull));
  const Ref<Tree> tree = treeOf(2, {{5, 5, 0, 0}, {20, 20, -10, -10}, RectNull, RectNull});
  EXPECT_TRUE(tree->validate());
  EXPECT_TRUE(tree->intersects({0, 0, 5, 5}) && tree->intersects({20, 20, 3, 3}));
  EXPECT_FALSE(tree->intersects({5.5, 5.5, 4, 4}) || tree->intersects({kNaN, 5, 1, 1}));
}

TEST(RTree, HoldsElementsOfAnyMovableType) {
  const Ref<RTree<std::unique_ptr<int>>> owned = makeRef<RTree<std::unique_ptr<int>>>(2);
  for (int i = 0; i < 20; ++i) owned->insert(std::make_unique<int>(i), Point{i * 1.0, 0});
  std::set<int> seen;
  for (const RTreeNode<std::unique_ptr<int>>* node : *owned) {
    if (!node->isLeaf()) continue;
    for (const auto entry : node->leafEntries()) {
      seen.insert(*entry.element);
      EXPECT_EQ(entry.rect.origin.x, *entry.element);
    }
  }
  EXPECT_EQ(seen.size(), 20U);
  const Ref<RTree<bool>> flags = makeRef<RTree<bool>>(2);
  for (int i = 0; i < 20; ++i) flags->insert(i % 2 == 0, Point{i * 1.0, 0});
  EXPECT_TRUE(flags->validate());
}

TEST(RTree, IsARangeOfItsNodesAndCanBePruned) {
  RandomRects rects(RectKind::uniform, 7);
  std::vector<Rect> all(2000);
  for (Rect& rect : all) rect = rects.next();
  const Ref<Tree> tree = treeOf(4, all);
  std::set<const Tree::Node*> nodes;
  std::size_t elements = 0;
  for (const Tree::Node* node : *tree) {
    EXPECT_TRUE(nodes.insert(node).second);
    if (node->isLeaf()) elements += node->count();
  }
  EXPECT_EQ(*tree->begin(), tree->root());
  EXPECT_EQ(elements, 2000U);

  const Rect wanted{200, 200, 50, 80};
  std::size_t found = 0, expected = 0;
  const auto meets = [&](const Tree::Node* node) { return node->hasEntryIntersecting(wanted); };
  for (const Tree::Node* node : depthFirst(prune(tree, meets))) {
    if (!node->isLeaf()) continue;
    found += static_cast<std::size_t>(std::ranges::count_if(
        node->rects(), [&](const Rect& rect) { return RectIntersectsRect(rect, wanted); }));
  }
  for (const Rect& rect : all) expected += RectIntersectsRect(rect, wanted) ? 1 : 0;
  EXPECT_EQ(found, expected);
  EXPECT_GT(found, 0U);
}

// Both loops read freed memory when a range was part of the function's result.
TEST(RTree, IteratorsOutliveTheRangesThatTheyCameFrom) {
  using Node = Tree::Node;
  static_assert(std::ranges::borrowed_range<Node::Leaf>);
  static_assert(std::ranges::borrowed_range<Node::Directory>);
  static_assert(std::ranges::borrowed_range<Node::Children>);
  static_assert(std::ranges::random_access_range<Node::Directory>);
  const Ref<Tree> tree = treeOf(4, {{0, 0, 1, 1}, {1, 0, 1, 1}, {2, 0, 1, 1}, {3, 0, 1, 1}});
  expectIterators(tree->root()->leafEntries(), 4,
                  [](std::ptrdiff_t i, const auto& entry) { return entry.element == i; });
  std::vector<int> seen;
  for (const auto entry : std::get<0>(tree->root()->storage())) seen.push_back(entry.element);
  for (auto i = tree->root()->leafEntries().begin(); i != tree->root()->leafEntries().end(); ++i) {
    seen.push_back((*i).element);
  }
  EXPECT_EQ(seen, (std::vector{0, 1, 2, 3, 0, 1, 2, 3}));
  EXPECT_TRUE(tree->root()->directoryEntries().empty());

  tree->insert(4, Rect{4, 0, 1, 1});
  const Node::Storage& storage = tree->root()->storage();
  const auto last = std::get<1>(storage).begin() + 1;
  const auto lastChild = tree->root()->children().end() - 1;
  EXPECT_EQ((*last).child.get(), *lastChild);
  EXPECT_EQ(last[-1].child.get(), lastChild[-1]);
  EXPECT_TRUE(tree->root()->leafEntries().empty());
}

TEST(RTree, NodesBeyondTheInlineCapacityGrow) {
  for (const std::int64_t capacity : {std::int64_t{127}, std::int64_t{128}, std::int64_t{333},
                                      std::numeric_limits<std::int64_t>::max()}) {
    compareWithThePlainTree(RectKind::uniform, capacity, 1500, 11);
  }
  // So many that a directory below the root is split.
  compareWithThePlainTree(RectKind::uniform, 256, 50'000, 11);
}

// Each rect makes the last leaf and every directory above it overflow: each insertion adds a level.
TEST(RTree, GrowsVeryHighWithoutRecursionAndReleasesItsElements) {
  const auto element = std::make_shared<int>(0);
  Ref<RTree<std::shared_ptr<int>>> tree = makeRef<RTree<std::shared_ptr<int>>>(2);
  for (double x = 1; x > 1e-150; x /= 2) tree->insert(element, Rect{-x, -x, 0, 0});
  std::size_t height = 0;
  for (const auto* node = tree->root(); !node->isLeaf(); node = node->child(0)) ++height;
  EXPECT_GT(height, 100U);
  EXPECT_TRUE(tree->validate());
  for (double x = 1; x > 1e-150; x /= 2) EXPECT_TRUE(tree->intersects({-x, -x, 0, 0}));
  EXPECT_FALSE(tree->intersects({1, 1, 1, 1}));
  tree = nullptr;
  EXPECT_EQ(element.use_count(), 1);
}

TEST(RTreeStress, BuildsTheSameNodesAsThePlainTree) {
  for (const RectKind kind : kAllKinds) {
    for (const std::int64_t capacity : {2, 3, 4, 5, 8, 9, 16}) {
      for (unsigned seed = 0; seed < 6; ++seed) compareWithThePlainTree(kind, capacity, 700, seed);
    }
  }
}

TEST(RTreeStress, FindsWhatALinearScanFinds) {
  for (const RectKind kind :
       {RectKind::uniform, RectKind::clustered, RectKind::grid, RectKind::degenerate}) {
    SCOPED_TRACE(static_cast<int>(kind));
    std::vector<Rect> all;
    const Ref<Tree> tree = makeRef<Tree>(8);
    RandomRects rects(kind, 21);
    for (int i = 0; i < 60'000; ++i) {
      all.push_back(i % 1000 == 999 ? RectNull : rects.next());
      tree->insert(i, all.back());
    }
    EXPECT_TRUE(tree->validate());  // with null rects too
    RandomRects queries(kind, 22);
    for (int i = 0; i < 300; ++i) {
      Rect query = queries.next();
      if (i % 2 == 0) query = Rect{query.origin.x - 2000 * (i % 4), query.origin.y, 0, 0};
      std::vector<int> expected;
      for (int j = 0; const Rect& rect : all) {
        if (RectIntersectsRect(rect, query)) expected.push_back(j);
        ++j;
      }
      ASSERT_EQ(tree->intersects(query), !expected.empty()) << "query " << i;
      std::vector<int> found = elementsIntersecting(*tree, query);
      std::ranges::sort(found);
      ASSERT_EQ(found, expected) << "query " << i;
    }
  }
}

}  // namespace
