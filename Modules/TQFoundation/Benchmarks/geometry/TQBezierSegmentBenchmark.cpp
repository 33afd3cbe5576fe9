#include <2geom/bezier-curve.h>
#include <TQFoundation/geometry/curves/TQBezierSegment.h>
#include <benchmark/benchmark.h>
#include <cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <utility>
#include <vector>

// Cubics with control points uniform in a square of 200 units, the same for every library. 1024 of
// them are used in turn, so that the branch predictor cannot learn them.

namespace tq {
namespace {

constexpr std::size_t kCubics = 1024;

const std::vector<TQBezierSegment>& cubics() {
  static const std::vector<TQBezierSegment> made = [] {
    std::mt19937_64 engine(8);
    std::uniform_real_distribution<double> coordinate(-100, 100);
    std::vector<TQBezierSegment> result(kCubics);
    for (TQBezierSegment& segment : result) {
      segment.degree = TQBezierDegree::cubic;
      for (Point& point : segment.points) point = {coordinate(engine), coordinate(engine)};
    }
    return result;
  }();
  return made;
}

const std::vector<Geom::CubicBezier>& peerCubics() {
  static const std::vector<Geom::CubicBezier> made = [] {
    std::vector<Geom::CubicBezier> result;
    for (const TQBezierSegment& s : cubics()) {
      const auto at = [&s](int i) { return Geom::Point(s.points[i].x, s.points[i].y); };
      result.emplace_back(at(0), at(1), at(2), at(3));
    }
    return result;
  }();
  return made;
}

template <class Curves, class Use>
void run(benchmark::State& state, const Curves& curves, Use&& use) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(use(curves[i % kCubics], curves[(i + 1) % kCubics]));
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_Cubic_Bounds_TQ(benchmark::State& state) {
  run(state, cubics(), [](const auto& a, const auto&) { return TQBezierSegmentGetBounds(a); });
}
BENCHMARK(BM_Cubic_Bounds_TQ);

void BM_Cubic_Bounds_2geom(benchmark::State& state) {
  run(state, peerCubics(), [](const auto& a, const auto&) { return a.boundsExact(); });
}
BENCHMARK(BM_Cubic_Bounds_2geom);

// cairo flattens the path. The path is built each time, as for our library.
void BM_Cubic_Bounds_cairo(benchmark::State& state) {
  const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1), cairo_surface_destroy);
  const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()),
                                                                   cairo_destroy);
  run(state, cubics(), [&](const TQBezierSegment& a, const auto&) {
    cairo_t* const cr = context.get();
    const auto& [p0, p1, p2, p3] = a.points;
    std::array<double, 4> extents{};
    cairo_new_path(cr);
    cairo_move_to(cr, p0.x, p0.y);
    cairo_curve_to(cr, p1.x, p1.y, p2.x, p2.y, p3.x, p3.y);
    cairo_path_extents(cr, &extents[0], &extents[1], &extents[2], &extents[3]);
    return extents;
  });
}
BENCHMARK(BM_Cubic_Bounds_cairo);

void BM_Cubic_Split_TQ(benchmark::State& state) {
  run(state, cubics(), [](const auto& a, const auto&) {
    std::pair<TQBezierSegment, TQBezierSegment> halves;
    TQBezierSegmentSplit(a, 0.3, &halves.first, &halves.second);
    return halves;
  });
}
BENCHMARK(BM_Cubic_Split_TQ);

void BM_Cubic_Split_2geom(benchmark::State& state) {
  run(state, peerCubics(), [](const auto& a, const auto&) { return a.subdivide(0.3); });
}
BENCHMARK(BM_Cubic_Split_2geom);

void BM_Cubic_Length_TQ(benchmark::State& state) {
  run(state, cubics(),
      [](const auto& a, const auto&) { return std::sqrt(TQBezierSegmentLengthSquared(a)); });
}
BENCHMARK(BM_Cubic_Length_TQ);

// To the accuracy that our library documents: 1e-9 of the control polygon, whose sides are about
// 100 long.
void BM_Cubic_Length_2geom(benchmark::State& state) {
  run(state, peerCubics(), [](const auto& a, const auto&) { return a.length(3e-7); });
}
BENCHMARK(BM_Cubic_Length_2geom);

void BM_Cubic_LineCrossings_TQ(benchmark::State& state) {
  run(state, cubics(), [](const auto& a, const auto&) {
    return TQBezierSegmentIntersectionsWithHorizontalLine(a, 12.5);
  });
}
BENCHMARK(BM_Cubic_LineCrossings_TQ);

// The peer's own solution for an axis-parallel line: the roots of one coordinate.
void BM_Cubic_LineCrossings_2geomRoots(benchmark::State& state) {
  run(state, peerCubics(), [](const auto& a, const auto&) { return a.roots(12.5, Geom::Y); });
}
BENCHMARK(BM_Cubic_LineCrossings_2geomRoots);

// The peer's solution for any line: the curve against a segment across the square.
void BM_Cubic_LineCrossings_2geomSegment(benchmark::State& state) {
  const Geom::LineSegment line(Geom::Point(-200, 12.5), Geom::Point(200, 12.5));
  run(state, peerCubics(), [&](const auto& a, const auto&) { return a.intersect(line); });
}
BENCHMARK(BM_Cubic_LineCrossings_2geomSegment);

std::vector<Point> crossings(const TQBezierSegment& a, const TQBezierSegment& b) {
  std::vector<Point> result;
  TQBezierSegmentIntersections(
      a, b, [&](double s, double) { result.push_back(TQBezierSegmentPointAtOffset(a, s)); });
  return result;
}

void BM_Cubic_Intersections_TQ(benchmark::State& state) {
  run(state, cubics(), [](const auto& a, const auto& b) { return crossings(a, b); });
}
BENCHMARK(BM_Cubic_Intersections_TQ);

void BM_Cubic_IntersectionsRefined_TQ(benchmark::State& state) {
  run(state, cubics(), [](const auto& a, const auto& b) {
    std::vector<TQBezierSegmentOffsets> result;
    TQBezierSegmentIntersections(a, b, [&](double s, double t) {
      result.push_back(TQBezierSegmentRefineIntersection(a, b, {s, t}));
    });
    return result;
  });
}
BENCHMARK(BM_Cubic_IntersectionsRefined_TQ);

// Counts, over all pairs, the points that both libraries found within 0.05 of each other, and those
// that only one of them found. Also reports the greatest distance of the common ones.
void BM_Cubic_Intersections_2geom(benchmark::State& state) {
  run(state, peerCubics(), [](const auto& a, const auto& b) { return a.intersect(b); });
  double both = 0, oursAlone = 0, theirsAlone = 0, farthest = 0;
  for (std::size_t i = 0; i < kCubics; ++i) {
    const std::size_t next = (i + 1) % kCubics;
    std::vector<Point> ours = crossings(cubics()[i], cubics()[next]);
    for (const auto& crossing : peerCubics()[i].intersect(peerCubics()[next])) {
      const Geom::Point p = crossing.point();
      const auto distance = [&p](Point q) { return std::hypot(p.x() - q.x, p.y() - q.y); };
      const auto nearest = std::min_element(
          ours.begin(), ours.end(), [&](Point q, Point r) { return distance(q) < distance(r); });
      if (nearest == ours.end() || distance(*nearest) > 0.05) {
        ++theirsAlone;
        continue;
      }
      ++both;
      farthest = std::max(farthest, distance(*nearest));
      ours.erase(nearest);
    }
    oursAlone += static_cast<double>(ours.size());
  }
  state.counters["both"] = both;
  state.counters["ours_alone"] = oursAlone;
  state.counters["theirs_alone"] = theirsAlone;
  state.counters["farthest"] = farthest;
}
BENCHMARK(BM_Cubic_Intersections_2geom);

// Identical curves, which are recognised before the search.
void BM_Cubic_IntersectionsWithItself_TQ(benchmark::State& state) {
  run(state, cubics(), [](const auto& a, const auto&) { return crossings(a, a); });
}
BENCHMARK(BM_Cubic_IntersectionsWithItself_TQ);

}  // namespace
}  // namespace tq
