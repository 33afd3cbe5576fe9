// Compares the R-tree with Boost.Geometry's quadratic R-tree of the same capacity, on the same
// rects. `place` is 0 for uniform rects and 1 for clusters. `hit` is 1 for queries that usually
// find something. `visited` is the number of nodes visited per query: the splits determine the
// shape of the tree, so compare times per node.

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/index/detail/rtree/utilities/view.hpp>
#include <boost/geometry/index/rtree.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <utility>
#include <vector>

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

/// Returns positions of the rects themselves, or points between them where nothing lies.
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

/// Returns the number of nodes visited until the first hit, including the leaf with the hit.
bool countVisited(const Tree::Node* node, const Rect& query, std::size_t& visited) {
  ++visited;
  for (std::size_t i = 0; i < node->count(); ++i) {
    if (!tq::RectIntersectsRect(node->rects()[i], query)) continue;
    if (node->isLeaf()) return true;
    if (countVisited(node->child(i), query, visited)) return true;
  }
  return false;
}

/// The same for the peer, through its visitor interface.
template <class Members>
struct PeerVisits
    : bgi::detail::rtree::visitor<typename Members::value_type, typename Members::parameters_type,
                                  typename Members::box_type, typename Members::allocators_type,
                                  typename Members::node_tag, true>::type {
  using Internal = typename bgi::detail::rtree::internal_node<
      typename Members::value_type, typename Members::parameters_type, typename Members::box_type,
      typename Members::allocators_type, typename Members::node_tag>::type;
  using Leaf = typename bgi::detail::rtree::leaf<
      typename Members::value_type, typename Members::parameters_type, typename Members::box_type,
      typename Members::allocators_type, typename Members::node_tag>::type;

  explicit PeerVisits(const Box& wanted) : query(wanted) {}

  void operator()(const Internal& node) {
    ++visited;
    for (const auto& [box, child] : bgi::detail::rtree::elements(node)) {
      if (found) return;
      if (bg::intersects(box, query)) bgi::detail::rtree::apply_visitor(*this, *child);
    }
  }
  void operator()(const Leaf& node) {
    ++visited;
    for (const auto& value : bgi::detail::rtree::elements(node)) {
      found = found || bg::intersects(value.first, query);
    }
  }

  Box query;
  std::size_t visited = 0;
  bool found = false;
};

template <class Queries, class Visits>
double visitedPerQuery(const Queries& queries, const Visits& visits) {
  std::size_t sum = 0;
  for (const auto& query : queries) sum += visits(query);
  return static_cast<double>(sum) / static_cast<double>(queries.size());
}

/// Reports the time per visited node and the number of visited nodes.
void report(benchmark::State& state, double visited) {
  state.SetItemsProcessed(state.iterations());
  state.counters["visited"] = visited;
  state.counters["perNode"] = benchmark::Counter(
      visited, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
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

  Fixture(std::size_t rectCount, bool inClusters) : count(rectCount), clustered(inClusters) {
    for (const Value& value : valuesOf(rects)) peer.insert(value);
  }

  static const Fixture& of(const benchmark::State& state) {
    static std::unique_ptr<Fixture> last;
    const auto count = static_cast<std::size_t>(state.range(1));
    const bool clustered = state.range(2) != 0;
    if (last == nullptr || last->count != count || last->clustered != clustered) {
      last = nullptr;
      last = std::make_unique<Fixture>(count, clustered);
    }
    return *last;
  }
};

// Tests whether any rect intersects a query.
template <std::size_t capacity>
void BM_RTreeIntersects_TQ(benchmark::State& state) {
  const auto& fixture = Fixture<capacity>::of(state);
  const std::vector<Rect> queries = someQueries(*fixture.tree, fixture.rects, state.range(0) != 0);
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(fixture.tree->intersects(queries[next++ % queries.size()]));
  }
  report(state, visitedPerQuery(queries, [&](const Rect& query) {
           std::size_t visited = 0;
           countVisited(fixture.tree->root(), query, visited);
           return visited;
         }));
}

// The peer's fastest solution: test whether its query iterator has a first value.
template <std::size_t capacity>
void BM_RTreeIntersects_Boost(benchmark::State& state) {
  const auto& fixture = Fixture<capacity>::of(state);
  std::vector<Box> queries;
  for (const Rect& query : someQueries(*fixture.tree, fixture.rects, state.range(0) != 0)) {
    queries.push_back(boxOf(query));
  }
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    const Box& query = queries[next++ % queries.size()];
    benchmark::DoNotOptimize(fixture.peer.qbegin(bgi::intersects(query)) != fixture.peer.qend());
  }
  using View = bgi::detail::rtree::utilities::view<Peer<capacity>>;
  report(state, visitedPerQuery(queries, [&](const Box& query) {
           PeerVisits<typename View::members_holder> visits(query);
           View(fixture.peer).apply_visitor(visits);
           return visits.visited;
         }));
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

BENCHMARK(BM_RTreeInsert_TQ<8>)->Apply(insertions);
BENCHMARK(BM_RTreeInsert_Boost<8>)->Apply(insertions);
BENCHMARK(BM_RTreeInsert_TQ<16>)->Apply(insertions);
BENCHMARK(BM_RTreeInsert_Boost<16>)->Apply(insertions);
BENCHMARK(BM_RTreeIntersects_TQ<8>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_Boost<8>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_TQ<16>)->Apply(queries);
BENCHMARK(BM_RTreeIntersects_Boost<16>)->Apply(queries);
BENCHMARK(BM_Traverse_TQ)->ArgName("rects")->Arg(100'000)->Arg(1'000'000);
BENCHMARK(BM_Traverse_Recursion)->ArgName("rects")->Arg(100'000)->Arg(1'000'000);

}  // namespace
