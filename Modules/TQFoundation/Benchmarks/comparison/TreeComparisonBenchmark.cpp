// Compares two versions of a document whose objects have ten properties each, with a delegate that
// compares all of them. The peer, Delegate, is the minimum for any comparison: for each pair, one
// call of isObject() and one of propertiesOfObject(), without a search and without a report.

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <TQFoundation/comparison/TQTreeComparison.h>

namespace {

struct Node final : tq::Subclass<Node> {
  static constexpr std::string_view className = "Node";
  explicit Node(std::uint64_t identity)
      : id(identity), name("layer object " + std::to_string(identity)) {}

  std::uint64_t id;
  std::string name;
  std::array<double, 8> values{};
  bool hidden = false;
  tq::Ref<tq::MutableArray> children = tq::MutableArray::array();
};

const Node& nodeOf(const tq::Object& object) { return static_cast<const Node&>(object); }

/// A tree. Each node above the leaves has twenty children.
tq::Ref<Node> grow(std::uint64_t& next, int levels) {
  auto node = tq::makeRef<Node>(next++);
  for (int i = 0; levels > 0 && i < 20; ++i) node->children->addObject(grow(next, levels - 1));
  return node;
}

void collect(Node& node, std::vector<Node*>& all) {
  all.push_back(&node);
  for (tq::Object& child : *node.children) collect(static_cast<Node&>(child), all);
}

struct Delegate final : tq::Subclass<Delegate>, tq::TQTreeComparisonDelegate {
  static constexpr std::string_view className = "Delegate";

  std::vector<std::string> propertiesOfObject(tq::TQTreeComparison&, tq::Object& a,
                                              tq::Object& b) override {
    return differing(nodeOf(a), nodeOf(b));
  }
  void compareChildrenOf(tq::TQTreeComparison& comparison, tq::Object& a, tq::Object& b) override {
    comparison.compareOldArray(*nodeOf(a).children, *nodeOf(b).children, "children");
  }
  bool isObject(tq::TQTreeComparison&, tq::Object& a, tq::Object& b) override {
    return areSame(nodeOf(a), nodeOf(b));
  }

  // Not inlined: in a host, these functions are behind a virtual call anyway.
  [[gnu::noinline]] static std::vector<std::string> differing(const Node& a, const Node& b) {
    std::vector<std::string> names;
    if (a.name != b.name) names.emplace_back("name");
    if (a.hidden != b.hidden) names.emplace_back("hidden");
    for (std::size_t i = 0; i < a.values.size(); ++i) {
      if (a.values[i] != b.values[i]) names.push_back("value" + std::to_string(i));
    }
    return names;
  }
  [[gnu::noinline]] static bool areSame(const Node& a, const Node& b) { return a.id == b.id; }
};

/// A document, and a copy with a hundred changed values at random places.
struct Workload {
  tq::Ref<Node> before;
  tq::Ref<Node> after;

  explicit Workload(int levels) {
    std::uint64_t next = 0;
    before = grow(next, levels);
    next = 0;
    after = grow(next, levels);
    std::vector<Node*> all;
    collect(*after, all);
    std::mt19937 random(1);
    for (int i = 0; i < 100; ++i) all[random() % all.size()]->values[random() % 8] += 1;
  }
};

void BM_TreeComparison_TQ(benchmark::State& state) {
  const Workload work(static_cast<int>(state.range(0)));
  const auto delegate = tq::makeRef<Delegate>();
  std::size_t found = 0;
  for ([[maybe_unused]] auto _ : state) {
    found = tq::TQTreeComparison::initWithRoot1(work.before, work.after, true, delegate)
                ->changes()
                .size();
  }
  state.counters["changes"] = static_cast<double>(found);
}

std::size_t walk(const Node& a, const Node& b) {
  std::size_t found = Delegate::differing(a, b).size();
  for (std::size_t i = 0; i < a.children->count(); ++i) {
    const Node& x = nodeOf(a.children->objectAtIndex(i));
    const Node& y = nodeOf(b.children->objectAtIndex(i));
    if (Delegate::areSame(x, y)) found += walk(x, y);
  }
  return found;
}

void BM_TreeComparison_Delegate(benchmark::State& state) {
  const Workload work(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(walk(*work.before, *work.after));
  }
}

// 8,421 and 168,421 objects.
BENCHMARK(BM_TreeComparison_TQ)->ArgName("levels")->Arg(3)->Arg(4)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TreeComparison_Delegate)
    ->ArgName("levels")
    ->Arg(3)
    ->Arg(4)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
