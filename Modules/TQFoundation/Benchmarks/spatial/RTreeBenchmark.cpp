// Compares the R-tree with Boost.Geometry's quadratic R-tree of the same capacity, on the same
// rects. `place` is 0 for uniform rects and 1 for clusters. `hit` is 1 for queries that usually
// find something.

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <TQFoundation/spatial/LazyPruneTree.h>
#include <TQFoundation/spatial/RTree.h>

namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;

using tq::Rect;
using Tree = tq::RTree<std::uint64_t>;
using Corner = bg::model::point<double, 2, bg::cs::cartesian>;
using Box = bg::model::box<Corner>;
using Value = std::pair<Box, std::uint64_t>;
template <std::size_t capacity>
using Peer = bgi::rtree<Value, bgi::quadratic<capacity>>;

constexpr double kSide = 100'000;

/// Returns `count` rects that cover a tenth of the plane together, for any count.
std::vector<Rect> someRects(std::size_t count, bool clustered, std::uint32_t seed = 0) {
  std::mt19937 random(2 * seed + (clustered ? 2 : 1));
  const double largest = 0.6 * kSide / std::sqrt(static_cast<double>(count));
  std::uniform_real_distribution<double> extent(0, largest);
  std::uniform_real_distribution<double> anywhere(0, kSide);
  std::normal_distribution<double> aside(0, kSide / 400);
  std::vector<Rect> centres;
  for (int i = 0; i < 50; ++i) centres.push_back({anywhere(random), anywhere(random), 0, 0});
  std::vector<Rect> rects;
  for (std::size_t i = 0; i < count; ++i) {
    const Rect& centre = centres[random() % centres.size()];
    const double x = clustered ? centre.origin.x + aside(random) : anywhere(random);
    const double y = clustered ? centre.origin.y + aside(random) : anywhere(random);
    const double scale = clustered ? 0.05 : 1;
    rects.push_back({x, y, scale * extent(random), scale * extent(random)});
  }
  return rects;
}

/// Returns positions of the rects themselves, or points between them where there is no rect.
std::vector<Rect> someQueries(const Tree& tree, const std::vector<Rect>& rects, bool hit) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> aside(-kSide / 300, kSide / 300);
  std::vector<Rect> queries;
  while (queries.size() < 4096) {
    Rect query = rects[random() % rects.size()];
    if (!hit) {
      query = {query.origin.x + aside(random), query.origin.y + aside(random), 0, 0};
      if (tree.intersects(query)) continue;
    }
    queries.push_back(query);
  }
  return queries;
}

Box boxOf(const Rect& rect) {
  return {{rect.origin.x, rect.origin.y},
          {rect.origin.x + rect.size.width, rect.origin.y + rect.size.height}};
}

std::vector<Value> valuesOf(const std::vector<Rect>& rects) {
  std::vector<Value> values;
  for (const Rect& rect : rects) values.emplace_back(boxOf(rect), values.size());
  return values;
}

tq::Ref<Tree> treeOf(const std::vector<Rect>& rects, std::int64_t capacity) {
  auto tree = tq::makeRef<Tree>(capacity);
  for (std::uint64_t i = 0; const Rect& rect : rects) tree->insert(i++, rect);
  return tree;
}

/// Several sets of rects, used in turn: with a single small set the branch predictor would learn
/// all branches.
std::vector<std::vector<Rect>> rectSets(const benchmark::State& state) {
  constexpr std::size_t kRects = 128'000;
  const auto count = static_cast<std::size_t>(state.range(0));
  std::vector<std::vector<Rect>> sets;
  do {
    sets.push_back(someRects(count, state.range(1) != 0, static_cast<std::uint32_t>(sets.size())));
  } while (sets.size() * count < kRects);
  return sets;
}

// Builds a tree, one insertion at a time. Its destruction is not timed.
template <std::int64_t capacity>
void BM_RTreeInsert_TQ(benchmark::State& state) {
  const auto sets = rectSets(state);
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    tq::Ref<Tree> tree = treeOf(sets[next++ % sets.size()], capacity);
    benchmark::DoNotOptimize(tree.get());
    state.PauseTiming();
    tree = nullptr;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <std::size_t capacity>
void BM_RTreeInsert_Boost(benchmark::State& state) {
  std::vector<std::vector<Value>> sets;
  for (const auto& rects : rectSets(state)) sets.push_back(valuesOf(rects));
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    Peer<capacity> tree;
    for (const Value& value : sets[next++ % sets.size()]) tree.insert(value);
    benchmark::DoNotOptimize(tree.size());
    state.PauseTiming();
    tree.clear();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// The data of the query benchmarks. The last one is cached, because it takes long to build.
template <std::size_t capacity>
struct Fixture {
  std::size_t count;
  bool clustered;
  std::vector<Rect> rects = someRects(count, clustered);
  tq::Ref<Tree> tree = treeOf(rects, static_cast<std::int64_t>(capacity));
  Peer<capacity> peer;
  Peer<capacity> bulkLoaded;

  Fixture(std::size_t rectCount, bool inClusters)
      : count(rectCount), clustered(inClusters), bulkLoaded(valuesOf(rects)) {
    for (const Value& value : valuesOf(rects)) peer.insert(value);
  }

  static const Fixture& of(std::int64_t count, bool clustered) {
    static std::unique_ptr<Fixture> last;
    const auto rectCount = static_cast<std::size_t>(count);
    if (last == nullptr || last->count != rectCount || last->clustered != clustered) {
      last = nullptr;
      last = std::make_unique<Fixture>(rectCount, clustered);
    }
    return *last;
  }
  static const Fixture& of(const benchmark::State& state) {
    return of(state.range(1), state.range(2) != 0);
  }
};

std::vector<Box> boxesOf(const std::vector<Rect>& rects) {
  std::vector<Box> boxes;
  for (const Rect& rect : rects) boxes.push_back(boxOf(rect));
  return boxes;
}

// Tests whether any rect intersects a query. The queries before the measured ones build the index;
// among a million rects, 4096 do not cost enough for that.
template <std::size_t capacity>
void BM_RTreeIntersects_TQ(benchmark::State& state) {
  const auto& fixture = Fixture<capacity>::of(state);
  const std::vector<Rect> queries = someQueries(*fixture.tree, fixture.rects, state.range(0) != 0);
  for (int round = 0; round < 16; ++round) {
    for (const Rect& query : queries) benchmark::DoNotOptimize(fixture.tree->intersects(query));
  }
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(fixture.tree->intersects(queries[next++ % queries.size()]));
  }
  state.SetItemsProcessed(state.iterations());
}

// The peer's fastest solution: test whether its query iterator has a first value.
template <class Tested>
void intersectsPeer(benchmark::State& state, const Tested& peer, const std::vector<Rect>& rects) {
  const std::vector<Box> queries = boxesOf(rects);
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    const Box& query = queries[next++ % queries.size()];
    benchmark::DoNotOptimize(peer.qbegin(bgi::intersects(query)) != peer.qend());
  }
  state.SetItemsProcessed(state.iterations());
}

template <std::size_t capacity>
void BM_RTreeIntersects_Boost(benchmark::State& state) {
  const auto& fixture = Fixture<capacity>::of(state);
  intersectsPeer(state, fixture.peer,
                 someQueries(*fixture.tree, fixture.rects, state.range(0) != 0));
}

// The peer's tree packed from all rects at once. It is never changed by an insertion.
template <std::size_t capacity>
void BM_RTreeIntersects_BoostBulk(benchmark::State& state) {
  const auto& fixture = Fixture<capacity>::of(state);
  intersectsPeer(state, fixture.bulkLoaded,
                 someQueries(*fixture.tree, fixture.rects, state.range(0) != 0));
}

/// Points for the queries of a growing tree.
std::vector<Rect> somePoints() {
  std::vector<Rect> points = someRects(4096, false, 77);
  for (Rect& point : points) point.size = {};
  return points;
}

// Builds a tree with a number of queries after each insertion. Its destruction is not timed.
void BM_RTreeGrowAndQuery_TQ(benchmark::State& state) {
  const auto sets = rectSets(state);
  const std::vector<Rect> queries = somePoints();
  std::size_t set = 0, next = 0;
  for ([[maybe_unused]] auto _ : state) {
    auto tree = tq::makeRef<Tree>(8);
    for (std::uint64_t i = 0; const Rect& rect : sets[set++ % sets.size()]) {
      tree->insert(i++, rect);
      for (std::int64_t n = state.range(2); n > 0; --n) {
        benchmark::DoNotOptimize(tree->intersects(queries[next++ % queries.size()]));
      }
    }
    state.PauseTiming();
    tree = nullptr;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_RTreeGrowAndQuery_Boost(benchmark::State& state) {
  std::vector<std::vector<Value>> sets;
  for (const auto& rects : rectSets(state)) sets.push_back(valuesOf(rects));
  const std::vector<Box> queries = boxesOf(somePoints());
  std::size_t set = 0, next = 0;
  for ([[maybe_unused]] auto _ : state) {
    Peer<8> tree;
    for (const Value& value : sets[set++ % sets.size()]) {
      tree.insert(value);
      for (std::int64_t n = state.range(2); n > 0; --n) {
        const Box& query = queries[next++ % queries.size()];
        benchmark::DoNotOptimize(tree.qbegin(bgi::intersects(query)) != tree.qend());
      }
    }
    state.PauseTiming();
    tree.clear();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Windows that contain about ten rects.
std::vector<Rect> someWindows(const std::vector<Rect>& rects) {
  const double side = kSide * std::sqrt(10 / static_cast<double>(rects.size()));
  std::vector<Rect> windows = someRects(1024, false, 78);
  for (Rect& window : windows) window.size = {side, side};
  return windows;
}

// Collects the elements in a window: the leaf entries of the tree, pruned by the window.
void BM_RTreeCollect_TQ(benchmark::State& state) {
  const auto& fixture = Fixture<16>::of(state.range(0), false);
  const std::vector<Rect> windows = someWindows(fixture.rects);
  std::vector<std::uint64_t> elements;
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    elements.clear();
    const Rect& window = windows[next++ % windows.size()];
    const auto meets = [&](const Tree::Node* node) { return node->hasEntryIntersecting(window); };
    for (const Tree::Node* node : tq::depthFirst(tq::prune(fixture.tree, meets))) {
      for (const auto entry : node->leafEntries()) {
        if (tq::RectIntersectsRect(entry.rect, window)) elements.push_back(entry.element);
      }
    }
    benchmark::DoNotOptimize(elements.data());
  }
  state.SetItemsProcessed(state.iterations());
}

// The same with a recursive function that compares the rects of directory entries.
void collectBelow(const Tree::Node* node, const Rect& window,
                  std::vector<std::uint64_t>& elements) {
  for (std::size_t i = 0; i < node->count(); ++i) {
    if (!tq::RectIntersectsRect(node->rects()[i], window)) continue;
    if (node->isLeaf()) {
      elements.push_back(node->leafEntries()[static_cast<std::ptrdiff_t>(i)].element);
    } else {
      collectBelow(node->child(i), window, elements);
    }
  }
}

void BM_RTreeCollect_Recursion(benchmark::State& state) {
  const auto& fixture = Fixture<16>::of(state.range(0), false);
  const std::vector<Rect> windows = someWindows(fixture.rects);
  std::vector<std::uint64_t> elements;
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    elements.clear();
    collectBelow(fixture.tree->root(), windows[next++ % windows.size()], elements);
    benchmark::DoNotOptimize(elements.data());
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_RTreeCollect_Boost(benchmark::State& state) {
  const auto& fixture = Fixture<16>::of(state.range(0), false);
  const std::vector<Box> windows = boxesOf(someWindows(fixture.rects));
  std::vector<Value> values;
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    values.clear();
    fixture.peer.query(bgi::intersects(windows[next++ % windows.size()]),
                       std::back_inserter(values));
    benchmark::DoNotOptimize(values.data());
  }
  state.SetItemsProcessed(state.iterations());
}

// Visits every node once and adds up what a host would read of it.
void BM_Traverse_TQ(benchmark::State& state) {
  const tq::Ref<Tree> tree = treeOf(someRects(static_cast<std::size_t>(state.range(0)), false), 16);
  std::size_t nodes = 0;
  for ([[maybe_unused]] auto _ : state) {
    std::size_t entries = 0;
    nodes = 0;
    for (const Tree::Node* node : *tree) {
      entries += node->count();
      ++nodes;
    }
    benchmark::DoNotOptimize(entries);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(nodes));
}

// The same with a recursive function.
std::size_t entriesBelow(const Tree::Node* node, std::size_t& nodes) {
  ++nodes;
  std::size_t entries = node->count();
  for (const Tree::Node* child : node->children()) entries += entriesBelow(child, nodes);
  return entries;
}

void BM_Traverse_Recursion(benchmark::State& state) {
  const tq::Ref<Tree> tree = treeOf(someRects(static_cast<std::size_t>(state.range(0)), false), 16);
  std::size_t nodes = 0;
  for ([[maybe_unused]] auto _ : state) {
    nodes = 0;
    benchmark::DoNotOptimize(entriesBelow(tree->root(), nodes));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(nodes));
}

void insertions(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rects", "place"})
      ->ArgsProduct({{1'000, 10'000, 100'000, 1'000'000}, {0, 1}})
      ->Unit(benchmark::kMillisecond);
}

void queries(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"hit", "rects", "place"})
      ->ArgsProduct({{0, 1}, {1'000, 10'000, 100'000, 1'000'000}, {0, 1}});
}

void growth(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rects", "place", "queries"})
      ->ArgsProduct({{1'000, 10'000, 100'000}, {0}, {1, 10}})
      ->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_RTreeInsert_TQ<8>)->Apply(insertions);
BENCHMARK(BM_RTreeInsert_Boost<8>)->Apply(insertions);
BENCHMARK(BM_RTreeInsert_TQ<16>)->Apply(insertions);
BENCHMARK(BM_RTreeInsert_Boost<16>)->Apply(insertions);
BENCHMARK(BM_RTreeIntersects_TQ<8>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_Boost<8>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_BoostBulk<8>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_TQ<16>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_Boost<16>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_BoostBulk<16>)->Apply(queries);
BENCHMARK(BM_RTreeGrowAndQuery_TQ)->Apply(growth);
BENCHMARK(BM_RTreeGrowAndQuery_Boost)->Apply(growth);
BENCHMARK(BM_RTreeCollect_TQ)->ArgName("rects")->Arg(10'000)->Arg(1'000'000);
BENCHMARK(BM_RTreeCollect_Recursion)->ArgName("rects")->Arg(10'000)->Arg(1'000'000);
BENCHMARK(BM_RTreeCollect_Boost)->ArgName("rects")->Arg(10'000)->Arg(1'000'000);
BENCHMARK(BM_Traverse_TQ)->ArgName("rects")->Arg(100'000)->Arg(1'000'000);
BENCHMARK(BM_Traverse_Recursion)->ArgName("rects")->Arg(100'000)->Arg(1'000'000);

}  // namespace
