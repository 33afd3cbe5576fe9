#include <2geom/line.h>
#include <2geom/rect.h>
#include <TQFoundation/geometry/lines/TQLine.h>
#include <benchmark/benchmark.h>

#include <random>
#include <utility>
#include <vector>

// Random segments in a square of 200 units, against each other and against the middle of the
// square.

namespace tq {
namespace {

constexpr std::size_t kSegments = 4096;
constexpr Rect kRect{-50, -50, 100, 100};

const std::vector<TQLineSegment>& segments() {
  static const std::vector<TQLineSegment> made = [] {
    std::mt19937_64 engine(9);
    std::uniform_real_distribution<double> coordinate(-100, 100);
    std::vector<TQLineSegment> result(kSegments);
    for (auto& [start, delta] : result) {
      start = {coordinate(engine), coordinate(engine)};
      delta = {coordinate(engine), coordinate(engine)};
    }
    return result;
  }();
  return made;
}

const std::vector<Geom::LineSegment>& peerSegments() {
  static const std::vector<Geom::LineSegment> made = [] {
    std::vector<Geom::LineSegment> result;
    for (const TQLineSegment& s : segments()) {
      result.emplace_back(Geom::Point(s.start.x, s.start.y), Geom::Point(s.end().x, s.end().y));
    }
    return result;
  }();
  return made;
}

template <class Segments, class Use>
void run(benchmark::State& state, const Segments& all, Use&& use) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(use(all[i % kSegments], all[(i + 1) % kSegments]));
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_LineSegment_Intersection_TQ(benchmark::State& state) {
  run(state, segments(), [](const TQLineSegment& a, const TQLineSegment& b) {
    return TQLineSegmentIntersection(a, b);
  });
}
BENCHMARK(BM_LineSegment_Intersection_TQ);

void BM_LineSegment_Intersection_2geom(benchmark::State& state) {
  run(state, peerSegments(), [](const Geom::LineSegment& a, const Geom::LineSegment& b) {
    return Geom::intersection(a, b);
  });
}
BENCHMARK(BM_LineSegment_Intersection_2geom);

void BM_LineSegment_ClippedToRect_TQ(benchmark::State& state) {
  run(state, segments(),
      [](const TQLineSegment& a, const TQLineSegment&) { return a.clipped(kRect); });
}
BENCHMARK(BM_LineSegment_ClippedToRect_TQ);

void BM_LineSegment_ClippedToRect_2geom(benchmark::State& state) {
  const Geom::Rect rect(-50, -50, 50, 50);
  run(state, peerSegments(), [&](const Geom::LineSegment& a, const Geom::LineSegment&) {
    return Geom::Line(a.initialPoint(), a.finalPoint()).clip(rect);
  });
}
BENCHMARK(BM_LineSegment_ClippedToRect_2geom);

}  // namespace
}  // namespace tq
