// Array differences, compared with dtl. Elements are objects compared by identity; the peer's
// elements are the addresses of the same objects. `changes` is the number of random changes; a
// third of them are replacements, which take two edits.

#include <benchmark/benchmark.h>

#include <dtl/dtl.hpp>

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/objects/Number.h>

namespace {

using Elements = std::vector<tq::Ref<tq::Object>>;

tq::Ref<tq::Object> element(std::size_t i) {
  return tq::Number::numberWith(static_cast<std::int64_t>(i));
}

/// An array and a changed copy of it.
struct Workload {
  Elements before;
  Elements after;

  Workload(std::size_t count, std::size_t changes) {
    for (std::size_t i = 0; i < count; ++i) before.push_back(element(i));
    // The changes are at different positions and are made from the back to the front, so that no
    // change moves another.
    std::mt19937 random(1);
    std::vector<std::size_t> places(count);
    for (std::size_t i = 0; i < count; ++i) places[i] = i;
    std::ranges::shuffle(places, random);
    places.resize(changes);
    std::ranges::sort(places);
    std::size_t next = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const bool isChanged = next < places.size() && places[next] == i;
      const unsigned kind = isChanged ? ++next, static_cast<unsigned>(random() % 3) : 3U;
      if (kind == 0 || kind == 1) after.push_back(element(count + i));  // inserted; replaced
      if (kind == 0 || kind == 3) after.push_back(before[i]);
    }
  }

  [[nodiscard]] static std::vector<const tq::Object*> addresses(const Elements& elements) {
    std::vector<const tq::Object*> all;
    for (const auto& each : elements) all.push_back(each.get());
    return all;
  }
};

Workload workload(const benchmark::State& state) {
  return {static_cast<std::size_t>(state.range(0)), static_cast<std::size_t>(state.range(1))};
}

bool isIdentical(const tq::Object& a, std::size_t, const tq::Object& b, std::size_t) {
  return &a == &b;
}

// Times the list of changes, without moves.
void BM_Difference_TQ(benchmark::State& state) {
  const Workload work = workload(state);
  const tq::Ref<tq::Array> before = tq::Array::arrayWithObjects(work.before);
  const tq::Ref<tq::Array> after = tq::Array::arrayWithObjects(work.after);
  std::size_t edits = 0;
  for ([[maybe_unused]] auto _ : state) {
    const auto changes =
        tq::editSequenceTo(*before, *after, false, [](auto&&... of) { return isIdentical(of...); });
    edits = changes->size();
  }
  state.counters["edits"] = static_cast<double>(edits);
}

// Times the peer's shortest edit script.
void BM_Difference_dtl(benchmark::State& state) {
  const Workload work = workload(state);
  const auto before = Workload::addresses(work.before);
  const auto after = Workload::addresses(work.after);
  for ([[maybe_unused]] auto _ : state) {
    dtl::Diff<const tq::Object*, std::vector<const tq::Object*>> difference(before, after);
    difference.onHuge();
    difference.compose();
    benchmark::DoNotOptimize(difference.getEditDistance());
  }
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"elements", "changes"})
      ->ArgsProduct({{1'000, 10'000, 100'000, 1'000'000}, {10, 100, 1'000}})
      ->Unit(benchmark::kMicrosecond);
}
BENCHMARK(BM_Difference_TQ)->Apply(sizes);
BENCHMARK(BM_Difference_dtl)->Apply(sizes);

}  // namespace
