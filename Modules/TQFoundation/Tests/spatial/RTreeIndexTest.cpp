#include <TQFoundation/spatial/RTree.h>

#include "support/RandomRects.h"
#include "support/Threads.h"

// Queries use an index beside the nodes, or the nodes. Here each result is compared with the
// recursion through the nodes, written with the rect functions.

namespace {

using Tree = RTree<int>;

bool recursion(const Tree::Node& node, const Rect& query) {
  for (std::size_t i = 0; i < node.count(); ++i) {
    if (!RectIntersectsRect(node.rects()[i], query)) continue;
    if (node.isLeaf() || recursion(*node.child(i), query)) return true;
  }
  return false;
}

/// Creates rects, and queries of which a third touch one of the rects exactly.
class Place {
 public:
  Place(const char* kind, unsigned seed) : kind_(kind), random_(seed) {
    for (const RectKind base : kAllKinds) sources_.emplace_back(base, seed + 1);
  }

  Rect nextRect() {
    rects_.push_back(create());
    return rects_.back();
  }

  Rect nextQuery() {
    if (random_() % 3 != 0) return create();
    const Rect& rect = rects_[random_() % rects_.size()];
    const Point low{RectGetMinX(rect), RectGetMinY(rect)};
    const Point high{RectGetMaxX(rect), RectGetMaxY(rect)};
    const double extent = static_cast<double>(random_() % 4);
    const Rect touching[] = {{high.x, high.y, extent, extent},
                             {high.x, low.y, extent, 0},
                             {low.x, high.y, 0, extent},
                             {low.x - extent, low.y - extent, extent, extent},
                             {low.x, low.y, 0, 0}};
    return touching[random_() % 5];
  }

 private:
  Rect create() {
    Rect rect = sources_[source()].next();
    if (kind_ == "flat") rect.size.height = 0;
    if (kind_ == "equal") {
      rect = {0.1, 0.7, 0.2, 0.3};
      if (random_() % 8 == 0) rect.origin.x += 0.2 + 0.1 * static_cast<double>(random_() % 3);
    }
    if (kind_ == "big") rect.origin = {1e15 + rect.origin.x / 7, rect.origin.y / 7 - 1e15};
    if (kind_ == "spread") {  // over magnitudes
      rect.origin.x = std::ldexp(rect.origin.x - 500, static_cast<int>(random_() % 40) - 20);
      rect.size.width = std::ldexp(rect.size.width, static_cast<int>(random_() % 40) - 20);
    }
    if (kind_ == "outlier" && rects_.size() == 100) rect.origin.x = 1e290;
    return rect;
  }

  std::size_t source() const {
    const std::size_t found = std::string_view("ucgdw").find(kind_[0]);
    return found == std::string_view::npos ? 0 : found;
  }

  std::string_view kind_;
  std::mt19937 random_;
  std::vector<RandomRects> sources_;
  std::vector<Rect> rects_;
};

/// Queries a tree that grows, often and seldom, so that it uses an index, an index with a tail, an
/// index with several runs, and no index.
void compareWithTheRecursion(const char* kind, std::int64_t capacity, int queries, unsigned seed) {
  SCOPED_TRACE(testing::Message() << kind << ", capacity " << capacity << ", seed " << seed);
  Place place(kind, seed);
  std::mt19937 random(seed);
  const Ref<Tree> tree = makeRef<Tree>(capacity);
  int asked = 0;
  for (int i = 0; asked < queries; ++i) {
    const bool isBurst = random() % 60 == 0;
    for (auto n = isBurst ? random() % 50 : 1U; n > 0; --n) tree->insert(i, place.nextRect());
    for (auto n = isBurst ? random() % 400 : random() % 4; n > 0; --n, ++asked) {
      const Rect query = place.nextQuery();
      ASSERT_EQ(tree->intersects(query), recursion(*tree->root(), query)) << "query " << asked;
    }
  }
}

constexpr const char* kKinds[] = {"uniform", "clustered", "grid", "degenerate", "wild",
                                  "flat",    "equal",     "big",  "spread",     "outlier"};

TEST(RTreeIndex, AnswersAsTheRecursion) {
  for (const char* kind : kKinds) compareWithTheRecursion(kind, 4, 2000, 1);
}

TEST(RTreeIndexStress, AnswersAsTheRecursion) {
  for (const char* kind : kKinds) {
    for (const std::int64_t capacity : {2, 4, 8, 16, 200}) {
      for (unsigned seed = 2; seed < 7; ++seed) {
        compareWithTheRecursion(kind, capacity, static_cast<int>(4000 * kShare), seed);
      }
    }
  }
}

// The first queries build the index while the others continue.
TEST(RTreeIndex, QueriesRunSideBySideWhileOneBuilds) {
  Place place("uniform", 9);
  const Ref<Tree> tree = makeRef<Tree>(8);
  for (int round = 0; round < 4; ++round) {
    for (int i = 0; i < 500; ++i) tree->insert(i, place.nextRect());
    std::vector<Rect> queries;
    std::vector<bool> expected;
    for (int i = 0; i < 300; ++i) {
      queries.push_back(place.nextQuery());
      expected.push_back(recursion(*tree->root(), queries.back()));
    }
    std::atomic<int> wrong = 0;
    onThreads(4, [&] {
      for (int repetition = 0; repetition < 5; ++repetition) {
        for (std::size_t i = 0; i < queries.size(); ++i) {
          if (tree->intersects(queries[i]) != expected[i]) ++wrong;
        }
      }
    });
    EXPECT_EQ(wrong, 0);
  }
}

}  // namespace
