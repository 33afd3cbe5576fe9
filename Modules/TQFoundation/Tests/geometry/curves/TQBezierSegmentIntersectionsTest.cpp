#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include "support/RandomBezier.h"

namespace {

using Offsets = std::vector<TQBezierSegmentOffsets>;

constexpr double kLeaf = 0x1p-14;

struct Found {
  Offsets offsets;
  bool isComplete = false;
};

Found intersections(const TQBezierSegment& a, const TQBezierSegment& b) {
  Found found;
  found.isComplete = TQBezierSegmentIntersections(a, b, [&](double s, double t) {
    found.offsets.push_back({s, t});
  });
  return found;
}

double gap(const TQBezierSegment& a, const TQBezierSegment& b, TQBezierSegmentOffsets at) {
  const Point p = TQBezierSegmentPointAtOffset(a, at.a);
  const Point q = TQBezierSegmentPointAtOffset(b, at.b);
  return std::hypot(p.x - q.x, p.y - q.y);
}

/// Returns a function that is true for offsets within `distance` of `place`.
auto isNear(TQBezierSegmentOffsets place, double distance) {
  return [=](TQBezierSegmentOffsets at) {
    return std::fabs(at.a - place.a) <= distance && std::fabs(at.b - place.b) <= distance;
  };
}

/// Returns the mirror image at the diagonal, scaled. With a power of two nothing is rounded.
TQBezierSegment mirrored(TQBezierSegment segment, double scale = 1) {
  for (Point& point : segment.points) point = {scale * point.y, scale * point.x};
  return segment;
}

/// Returns the crossings of two polygons with `legs` sides each, by testing every pair.
Offsets sampledCrossings(const TQBezierSegment& a, const TQBezierSegment& b, int legs) {
  std::vector<Point> onA, onB;
  for (double i = 0; i <= legs; ++i) {
    onA.push_back(TQBezierSegmentPointAtOffset(a, i / legs));
    onB.push_back(TQBezierSegmentPointAtOffset(b, i / legs));
  }
  const auto side = [](Point p, Point q, Point r) {
    return (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x) > 0;
  };
  Offsets found;
  for (std::size_t i = 0; i + 1 < onA.size(); ++i) {
    for (std::size_t k = 0; k + 1 < onB.size(); ++k) {
      if (side(onA[i], onA[i + 1], onB[k]) != side(onA[i], onA[i + 1], onB[k + 1]) &&
          side(onB[k], onB[k + 1], onA[i]) != side(onB[k], onB[k + 1], onA[i + 1])) {
        found.push_back(
            {(static_cast<double>(i) + 0.5) / legs, (static_cast<double>(k) + 0.5) / legs});
      }
    }
  }
  return found;
}

TEST(BezierIntersections, AreTheCrossingsOfFinePolygons) {
  RandomBezier random(20);
  constexpr int kLegs = 256;
  std::size_t crossings = 0;
  for (int i = 0; i < 100; ++i) {
    for (const TQBezierDegree degree : kDegrees) {
      const TQBezierSegment a = random.segment(degree, 100);
      const TQBezierSegment b = random.segment(kDegrees[i % 3], 100);
      const Found found = intersections(a, b);
      ASSERT_TRUE(found.isComplete);
      const auto sampled = sampledCrossings(a, b, kLegs);
      crossings += sampled.size();
      for (const auto& expected : sampled) {
        ASSERT_TRUE(std::ranges::any_of(found.offsets, isNear(expected, 2.0 / kLegs)));
      }
      for (const auto& offsets : found.offsets) {
        const auto refined = TQBezierSegmentRefineIntersection(a, b, offsets);
        // The other reports are near-tangents: only the bounds of the smallest pieces intersect.
        ASSERT_LE(gap(a, b, offsets), 3 * 600 * kLeaf);  // 600: the length of the longest polygon
        ASSERT_LE(gap(a, b, refined), gap(a, b, offsets));
        ASSERT_TRUE(gap(a, b, refined) >= 1e-9 || isNear(refined, 0.50001 * kLeaf)(offsets));
      }
      const auto ascends = [](auto x, auto y) { return x.a < y.a; };
      ASSERT_TRUE(found.offsets.size() != sampled.size() ||
                  std::ranges::is_sorted(found.offsets, ascends));
    }
  }
  EXPECT_GT(crossings, 150U);
}

TEST(BezierIntersections, GiveCommonEndsExactlyAndOnce) {
  const Point p{0.1, 0.7};
  const auto a = cubic({-3, -2}, {-1, 3}, {-0.3, 0.2}, p);
  const auto b = quadratic(p, {0.9, 0.9}, {4, 7});
  EXPECT_EQ(intersections(a, b).offsets, (Offsets{{1, 0}}));
  // A closed leaf shape: both ends are common.
  const auto there = cubic({0, 0}, {0.3, 2}, {1.7, 2}, {2, 0});
  const auto back = cubic({2, 0}, {1.7, -2}, {0.3, -2}, {0, 0});
  EXPECT_EQ(intersections(there, back).offsets, (Offsets{{0, 1}, {1, 0}}));
}

TEST(BezierIntersections, NineCrossingsOfTwoCubicsAreNine) {
  // y = T3(x) and x = T3(y), with the third Chebyshev polynomial T3, intersect where T9(x) = x.
  // These are the cosines of the multiples of π/4 and of π/5; two of them are the common ends.
  const auto a = cubic({-1, -1}, {-1.0 / 3, 5}, {1.0 / 3, -5}, {1, 1});
  const auto b = cubic({-1, -1}, {5, -1.0 / 3}, {-5, 1.0 / 3}, {1, 1});
  std::vector<double> expected;
  for (const double k : {1.0, 4 / 5.0, 3 / 4.0, 3 / 5.0, 2 / 4.0, 2 / 5.0, 1 / 4.0, 1 / 5.0, 0.0}) {
    expected.push_back((1 + std::cos(k * std::numbers::pi)) / 2);
  }
  const Found found = intersections(a, b);
  ASSERT_EQ(found.offsets.size(), expected.size());
  EXPECT_EQ(found.offsets.front(), (TQBezierSegmentOffsets{0, 0}));
  EXPECT_EQ(found.offsets.back(), (TQBezierSegmentOffsets{1, 1}));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(found.offsets[i].a, expected[i], kLeaf);
    EXPECT_NEAR(TQBezierSegmentRefineIntersection(a, b, found.offsets[i]).a, expected[i], 1e-14);
  }
}

TEST(BezierIntersections, DegeneratePairsEndWithinTheBoundOfWork) {
  const auto wave = cubic({0, 0}, {1, 3}, {2, -1}, {4, 1});
  const auto reversed = cubic({4, 1}, {2, -1}, {1, 3}, {0, 0});
  const auto point = cubic({2, 2}, {2, 2}, {2, 2}, {2, 2});
  const auto line = straight({0, 0}, {4, 4});
  const Rows<const char*, TQBezierSegment, TQBezierSegment, Offsets> cases{
      {"identical", wave, wave, {{0, 0}, {1, 1}}},
      {"reversed", wave, reversed, {{0, 1}, {1, 0}}},
      {"two points at one place", point, point, {{0, 0}}},
      {"two points apart", point, straight({2, 3}, {2, 3}), {}},
      {"collinear, end to end", line, straight({4, 4}, {9, 9}), {{1, 0}}},
      // At 0.4 and 0.6.
      {"two crossings and less than a piece apart between them",
       straight({0, 0}, {1000, 1000}),
       quadratic({0, 0.96}, {500, 498.96}, {1000, 1000.96}),
       {{6553.5 * kLeaf, 6553.5 * kLeaf}, {9830.5 * kLeaf, 9830.5 * kLeaf}}},
      // The first at 0.04577 and 0.79294.
      {"the same, and pieces that meet on and off",
       quadratic({0, 0}, {50, 10.02}, {100, 20}),
       straight({-7, -1.399}, {117, 23.409}),
       {{749.5 * kLeaf, 1529.5 * kLeaf}, {12991.5 * kLeaf, 11401.5 * kLeaf}}},
  };
  for (const auto& [name, a, b, expected] : cases) {
    SCOPED_TRACE(name);
    const Found found = intersections(a, b);
    EXPECT_TRUE(found.isComplete);
    EXPECT_EQ(found.offsets, expected);
  }

  // Touches of the second and the third order: many small pieces meet, but only one report remains.
  const std::pair<TQBezierSegment, TQBezierSegment> touches[] = {
      {quadratic({-1, 0}, {0.1, 2}, {1.2, 0}), straight({-3, 1}, {4, 1})},
      {cubic({0, -1}, {1, 2}, {2, 1}, {3, 4}), straight({0, 0}, {3, 3})},
  };
  for (const auto& [curve, tangent] : touches) {
    const Found touch = intersections(curve, tangent);
    ASSERT_EQ(touch.offsets.size(), 1U);
    EXPECT_NEAR(touch.offsets[0].a, 0.5, 0.03);
  }
}

/// Returns the first `left` points of de Casteljau's scheme, with more digits than the library.
/// @param at  returns the offset of the step that leaves n points
template <class Offset>
auto reduced(const TQBezierSegment& segment, std::size_t left, const Offset& at) {
  std::array<std::array<long double, 2>, 4> p{};
  std::size_t n = 0;
  for (const Point point : segment.used()) p[n++] = {point.x, point.y};
  while (n-- > left) {
    const long double t = at(n);
    for (std::size_t i = 0; i < n; ++i) {
      for (const std::size_t axis : {0U, 1U}) p[i][axis] += t * (p[i + 1][axis] - p[i][axis]);
    }
  }
  return p;
}

/// Returns the piece of a segment between two offsets, rounded.
TQBezierSegment pieceOf(const TQBezierSegment& segment, double from, double to) {
  TQBezierSegment piece = segment;
  for (std::size_t k = 0; k < segment.used().size(); ++k) {
    const auto [x, y] = reduced(segment, 1, [=](auto n) { return n > k ? from : to; })[0];
    piece.points[k] = {static_cast<double>(x), static_cast<double>(y)};
  }
  return piece;
}

/// Returns the same curve with one point more.
TQBezierSegment elevated(const TQBezierSegment& s) {
  const auto& [p, q, r, last] = s.points;
  const auto mix = [](Point a, Point b, double t) { return a + t * (b - a); };
  if (s.degree == TQBezierDegree::straight) return quadratic(p, mix(p, q, 0.5), q);
  return cubic(p, mix(p, q, 2.0 / 3), mix(r, q, 2.0 / 3), r);
}

TEST(BezierIntersections, OverlapsAreTheirTwoEnds) {
  const auto wave = cubic({0, 0}, {1, 3}, {2, -1}, {4, 1});
  const Found own = intersections(wave, pieceOf(wave, 0, 0.3));
  ASSERT_EQ(own.offsets.size(), 2U);
  EXPECT_EQ(own.offsets[0], (TQBezierSegmentOffsets{0, 0}));
  EXPECT_NEAR(own.offsets[1].a, 0.3, 1e-15);
  EXPECT_EQ(own.offsets[1].b, 1);

  RandomBezier random(21);
  for (int i = 0; i < 3000; ++i) {
    SCOPED_TRACE(i);
    TQBezierSegment curve = random.segment(kDegrees[i % 3], 100);
    if (i % 21 == 2) curve.points[1] = curve.points[0];  // starts with speed 0
    const double low = i % 4 < 2 ? 0 : random.number(0, 0.4);
    const double high = i % 4 < 2 ? 1 : random.number(0.6, 1);
    const double from = i % 5 == 0 ? low : random.number(0, 1);
    const double to = i % 5 == 1 ? high : random.number(0, 1);
    const double first = std::max(low, std::min(from, to));
    const double last = std::min(high, std::max(from, to));
    if (last - first < 0.01) continue;
    TQBezierSegment a = i % 4 == 0 ? curve : pieceOf(curve, low, high);
    TQBezierSegment b = pieceOf(curve, from, to);
    for (TQBezierSegment* const each : {&a, &b}) {
      while (each->degree != TQBezierDegree::cubic && random.number(0, 1) < 0.5) {
        *each = elevated(*each);
      }
    }
    Offsets ends;
    for (const double end : {first, last}) {
      ends.push_back({(end - low) / (high - low), (end - from) / (to - from)});
    }
    const Found found = intersections(a, b);
    const Found swapped = intersections(b, a);
    ASSERT_EQ(found.offsets.size(), swapped.offsets.size());
    // A cubic that is a loop also crosses itself.
    ASSERT_TRUE(found.offsets.size() == 2 || (i % 3 == 2 && found.offsets.size() <= 4));
    for (const auto& end : ends) {
      EXPECT_TRUE(std::ranges::any_of(found.offsets, isNear(end, 1e-12)));
      EXPECT_TRUE(std::ranges::any_of(swapped.offsets, isNear({end.b, end.a}, 1e-12)));
    }
    for (const auto& at : found.offsets) EXPECT_LT(gap(a, b, at), 0.05);
  }
}

TEST(BezierIntersections, OverlapsOfLoopsAndOfCurvesThatTurnBack) {
  // This loop crosses itself at 1/2 ± √3/4.
  const auto loop = cubic({0, 0}, {3, 2}, {-2, 2}, {1, 0});
  const double u = 0.5 - std::sqrt(3) / 4;
  const auto closed = cubic({0, 0}, {3, 2}, {-2, 3}, {0, 0});
  const auto turning = quadratic({0, 0}, {10, 20}, {0, 0});  // at (5, 10)
  const auto folded = cubic({0, 0}, {40, 0}, {-30, 0}, {10, 0});
  const auto line = straight({0, 0}, {4, 4});
  const Rows<const char*, TQBezierSegment, TQBezierSegment, Offsets> cases{
      {"loop", loop, loop, {{0, 0}, {u, 1 - u}, {1 - u, u}, {1, 1}}},
      {"a piece of the loop", loop, pieceOf(loop, 0, 0.5), {{0, 0}, {0.5, 1}, {1 - u, 2 * u}}},
      {"closed", closed, closed, {{0, 0}, {0, 1}, {1, 0}, {1, 1}}},
      {"pieces that continue each other",
       pieceOf(loop, 0.2, 0.5),
       pieceOf(loop, 0.5, 0.8),
       {{1, 0}}},
      {"pieces apart", pieceOf(loop, 0.2, 0.4), pieceOf(loop, 0.5, 0.8), {}},
      {"turning back", turning, straight({0, 0}, {5, 10}), {{0, 0}, {0.5, 1}, {1, 0}}},
      {"beyond the turn", turning, straight({6, 12}, {0, 0}), {{0, 1}, {0.5, 1.0 / 6}, {1, 1}}},
      {"turns that touch",
       cubic({0, 0}, {2, 0}, {2, 0}, {0, 0}),
       cubic({3, 0}, {1, 0}, {1, 0}, {3, 0}),
       {{0.5, 0.5}}},
      {"lines in part", line, straight({1, 1}, {9, 9}), {{0.25, 0}, {1, 0.375}}},
      {"level", straight({0, 2}, {4, 2}), straight({1, 2}, {9, 2}), {{0.25, 0}, {1, 0.375}}},
      {"almost, but the bounds are apart",
       straight({1e6, 0}, {1e6 + 1, 0}),
       straight({1e6, 3e-9}, {1e6 + 1, 3e-9}),
       {}},
  };
  for (const auto& [name, a, b, expected] : cases) {
    SCOPED_TRACE(name);
    const Found found = intersections(a, b);
    EXPECT_TRUE(found.isComplete);
    EXPECT_EQ(intersections(mirrored(a), mirrored(b)).offsets, found.offsets);
    ASSERT_EQ(found.offsets.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const bool isLoop = expected[i].a == u || expected[i].a == 1 - u;
      EXPECT_TRUE(isNear(expected[i], isLoop ? 0.50001 * kLeaf : 1e-15)(found.offsets[i]));
    }
  }
  const Found folds = intersections(folded, folded);
  EXPECT_TRUE(folds.isComplete);
  EXPECT_EQ(folds.offsets.front(), (TQBezierSegmentOffsets{0, 0}));
  EXPECT_EQ(folds.offsets.back(), (TQBezierSegmentOffsets{1, 1}));
  EXPECT_GE(folds.offsets.size(), 4U);
  for (const auto& at : folds.offsets) EXPECT_LT(gap(folded, folded, at), 1e-13);
}

/// Evaluates with more digits.
struct Evaluated {
  long double x, y, dx, dy;
};
Evaluated evaluated(const TQBezierSegment& segment, long double t) {
  const auto p = reduced(segment, 2, [=](auto) { return t; });
  const auto degree = static_cast<long double>(segment.used().size() - 1);
  const auto [x, y] = p[0];
  const long double dx = p[1][0] - x, dy = p[1][1] - y;
  return {x + t * dx, y + t * dy, degree * dx, degree * dy};
}

/// Returns the crossings of two curves that almost coincide: the sign changes of the distance of
/// the first one from the second one, refined by bisection.
Offsets slowCrossings(const TQBezierSegment& a, const TQBezierSegment& b) {
  constexpr int kSteps = 64;
  long double t = 0;
  const auto side = [&](long double s) {  // moves t to the nearest point
    const Evaluated p = evaluated(a, s);
    for (int i = 0; i < 5; ++i) {
      const Evaluated q = evaluated(b, t);
      t += ((p.x - q.x) * q.dx + (p.y - q.y) * q.dy) / (q.dx * q.dx + q.dy * q.dy);
    }
    const Evaluated q = evaluated(b, t);
    return q.dx * (p.y - q.y) > q.dy * (p.x - q.x);
  };
  Offsets found;
  bool before = side(0);
  for (int i = 1; i <= kSteps; ++i) {
    long double low = (i - 1.0L) / kSteps, high = static_cast<long double>(i) / kSteps;
    const bool now = side(t = high);
    if (std::exchange(before, now) == now) continue;
    while (high - low > 1e-13L) {
      const long double middle = (low + high) / 2;
      (side(t = middle) == now ? high : low) = middle;
    }
    const Evaluated p = evaluated(a, high), q = evaluated(b, t);
    const bool isInside = t >= 0 && t <= 1;
    const bool isCrossing = std::hypot(p.x - q.x, p.y - q.y) < 1e-11L;
    const long double angle =
        std::fabs(p.dx * q.dy - p.dy * q.dx) / (std::hypot(p.dx, p.dy) * std::hypot(q.dx, q.dy));
    if (isInside && isCrossing && angle > 1e-7L) {
      found.push_back({static_cast<double>(high), static_cast<double>(t)});
    }
  }
  return found;
}

TEST(BezierIntersections, AlmostCoincidentCurvesKeepTheAccuracy) {
  RandomBezier random(22);
  std::size_t crossings = 0;
  for (int i = 0; i < 80; ++i) {
    SCOPED_TRACE(i);
    const TQBezierSegment a = random.segment(kDegrees[1 + i % 2], 100);
    TQBezierSegment b = a;
    const double extent = std::pow(10, random.number(-3, 1));
    for (Point& point : b.points) point = point + (random.point(extent) - Point{});
    const auto expected = slowCrossings(a, b);
    const Found found = intersections(a, b);
    for (const auto& each : expected) {
      if (std::ranges::count_if(expected, isNear(each, 2 * kLeaf)) > 1) continue;
      ++crossings;
      EXPECT_TRUE(std::ranges::any_of(found.offsets, isNear(each, 0.50001 * kLeaf)));
    }
    if (i % 8 > 1) continue;
    const double scale = i % 16 < 8 ? 0x1p-20 : 0x1p+20;
    EXPECT_EQ(intersections(mirrored(a, scale), mirrored(b, scale)).offsets, found.offsets);
  }
  EXPECT_GT(crossings, 80U);
}

TEST(BezierIntersections, StraightSegmentsKeepTheAccuracyFarAwayAndOfDifferentLengths) {
  // The expected offsets were computed with rational numbers.
  const Rows<const char*, TQBezierSegment, TQBezierSegment, TQBezierSegmentOffsets> cases{
      {"1.4e-7 rad at 1e3",
       straight({995.7758666171129, 1002.4915424995439}, {997.8876799389157, 992.0900153574918}),
       straight({996.9808434839157, 996.5565483841712}, {997.0327305873052, 996.3009837862965}),
       {0.5738536552883186, 0.13288325518058786}},
      {"6.4e-7 rad at 1e6",
       straight({999997.7304809917, 1000009.1409520615}, {1000002.5119303189, 999995.7614127635}),
       straight({1000000.4749445675, 1000001.4613440708}, {1000000.5657650745, 1000001.2072079447}),
       {0.5878736234572965, 0.7313806953410462}},
      {"160 times as long",
       straight({0, 0}, {16, 16}),
       straight({7.95, 7.95005}, {8.05, 8.04995}),
       {0.5, 0.5}},
  };
  for (const auto& [name, a, b, expected] : cases) {
    SCOPED_TRACE(name);
    const Found found = intersections(a, b), swapped = intersections(b, a);
    ASSERT_EQ(found.offsets.size(), 1U);
    ASSERT_EQ(swapped.offsets.size(), 1U);
    EXPECT_TRUE(isNear(expected, 0.50001 * kLeaf)(found.offsets[0]));
    EXPECT_TRUE(isNear({expected.b, expected.a}, 0.50001 * kLeaf)(swapped.offsets[0]));
  }
}

TEST(BezierIntersections, RoundingHidesNoTurningPoint) {
  const auto curve = cubic({0, 3}, {0.001, 6}, {0.002, 0.9}, {0.003, 0.7});
  const double y = 3.942915617606791;  // one unit in the last place below the greatest y
  EXPECT_EQ(intersections(curve, straight({-1, y}, {1, y})).offsets.size(), 1U);
}

TEST(BezierIntersections, APointOnACurveIsFoundForAllDegrees) {
  RandomBezier random(24);
  for (const TQBezierSegment& curve :
       {straight({-1, -2}, {3, 6}), quadratic({-1, 1}, {0, -1}, {1, 1}),
        cubic({-1, -3}, {1, 2}, {-1, -2}, {1, 3})}) {
    const double t = curve.degree == TQBezierDegree::straight ? 0.25 : 0.5;  // of the origin
    for (const TQBezierDegree degree : kDegrees) {
      const TQBezierSegment origin = random.segment(degree, 0);
      const Found found = intersections(origin, curve), swapped = intersections(curve, origin);
      ASSERT_FALSE(found.offsets.empty());
      ASSERT_EQ(found.offsets.size(), swapped.offsets.size());
      for (const auto& at : found.offsets) EXPECT_NEAR(at.b, t, kLeaf);
      for (const auto& at : swapped.offsets) EXPECT_NEAR(at.a, t, kLeaf);
      EXPECT_EQ(intersections(origin, mirrored(origin)).offsets, (Offsets{{0, 0}}));
    }
  }
}

TEST(BezierIntersections, RefiningStopsWhereTheTangentsAreParallel) {
  const TQBezierSegmentOffsets middles{0.5, 0.5};
  EXPECT_EQ(TQBezierSegmentRefineIntersection(straight({0, 0}, {4, 0}), straight({0, 1}, {4, 1}),
                                              middles),
            middles);
}

TEST(BezierIntersections, BadSegmentsMeetNothing) {
  const auto line = straight({0, 0}, {4, 4});
  auto unknown = line;
  unknown.degree = TQBezierDegree{9};
  EXPECT_EQ(intersections(line, straight({0, 4}, {kNaN, 0})).offsets, Offsets());
  EXPECT_EQ(intersections(line, unknown).offsets, Offsets());
  for (const double bad : {kNaN, kInf, -kInf}) {
    EXPECT_EQ(intersections(line, quadratic({0, 4}, {bad, 0}, {4, 0})).offsets, Offsets());
    const auto touching = quadratic({4, 4}, {0, bad}, {4, 0});
    EXPECT_EQ(intersections(line, touching).offsets, (Offsets{{1, 0}}));
    EXPECT_EQ(intersections(touching, line).offsets, (Offsets{{0, 1}}));
  }
  const auto huge = straight({-1e308, -1e308}, {1e308, 1e308});
  (void)intersections(huge, straight({-1e308, 1e308}, {1e308, -1e308}));
  // One unit in the last place long: every piece soon becomes a point.
  const auto tiny = straight({1e16, 0}, {1e16 + 2, 0});
  EXPECT_TRUE(intersections(tiny, tiny).isComplete);
}

}  // namespace
