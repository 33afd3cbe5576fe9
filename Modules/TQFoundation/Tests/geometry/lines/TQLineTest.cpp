#include <TQFoundation/geometry/lines/TQLine.h>

#include <TQFoundation/geometry/lines/TQOrthogonalLine.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include "support/RandomBezier.h"

namespace {

constexpr Rect kRect{0, 0, 10, 10};

TQLineSegment between(Point from, Point to) { return {from, {to.x - from.x, to.y - from.y}}; }

TEST(Line, CoordinatesFollowTheEquation) {
  EXPECT_EQ(TQLineGetPointForX({2, 4, 8}, 1), (Point{1, 1.5}));
  EXPECT_EQ(TQLineGetYForX({0, 2, 8}, kInf), 4);  // 0 · ∞ is not computed
  EXPECT_EQ(TQLineGetXForY({2, 0, 8}, 3), 4);
  for (const double y : {kInf, -kInf, kNaN}) {  // but 0 · ∞ is, for x
    EXPECT_TRUE(std::isnan(TQLineGetXForY({2, 0, 8}, y)));
    EXPECT_TRUE(std::isnan(TQLineGetPointForY({2, 0, 8}, y).x));
  }
  EXPECT_TRUE(TQLineIntersectsRect({2, 0, 8}, {0, -kInf, 10, 5}));  // x = 4, without the product
  EXPECT_TRUE(std::isnan(TQLineGetYForX({1, 0, 5}, 1)));
}

TEST(Line, RelationsKeepTheirThresholds) {
  for (const TQLine& other : {TQLine{1e-9, 0, 0}, TQLine{0, 1e-9, 0}, TQLine{0, 0, 1e-9}}) {
    EXPECT_FALSE(TQLineEqualToLine({0, 0, 0}, other));
  }
  EXPECT_FALSE(TQLineEqualToLine({0, 1, 0}, {0, 1 + 1.1e-9, 0}));
  EXPECT_TRUE(TQLineEqualToLine({1, 1, 1}, {1, 1, 1 + 9e-10}));
  EXPECT_TRUE(TQLineIsCollinearWithLine({1, 0, 0}, {2, 0, 5}));
  EXPECT_FALSE(TQLineIsCollinearWithLine({1, 0, 0}, {-1, 0, 0}));
  EXPECT_TRUE(TQLineIsPerpendicularToLine({3, 4, 1}, {-8, 6, 2}));
  EXPECT_FALSE(TQLineIsPerpendicularToLine({1, 0, 0}, {0.01, 1, 0}));
  EXPECT_TRUE(TQLineIsPerpendicularToLine({1, 0, 0}, {0.001, std::sqrt(1 - 1e-6), 0}));
  EXPECT_EQ(TQLineDotProduct({1e-10, 0, 0}, {5, 0, 0}), 1e-10);  // too short to normalise
  EXPECT_TRUE(TQLineIsParallelToLine({1, 0.001, 0}, {-5, 0, 0}));
  EXPECT_FALSE(TQLineIsParallelToLine({1, 2, 0}, {1, -2, 0}));
  EXPECT_FALSE(TQLineIsParallelToLine({1, 0.001, 0}, {1, 1, 0}));
}

TEST(Line, AnglesStayInRange) {
  EXPECT_DOUBLE_EQ(TQLineAngleBetween({1, 0, 0}, {0, 1, 0}), kPi / 2);
  // The product is one bit above 1, so its arccos is NaN. This is documented.
  EXPECT_TRUE(std::isnan(TQLineAngleBetween({1, 5, 0}, {1, 5, 0})));
  EXPECT_EQ(TQLineSignedAngleFromXAxis({0, -1, 0}), 0);
  EXPECT_EQ(TQLineSignedAngleFromXAxis({0, 1, 0}), kPi);
  EXPECT_EQ(TQLineSignedAngleFromXAxis({-0.0, 1, 0}), -kPi);
  EXPECT_DOUBLE_EQ(TQLineSignedAngleBetween({-1, -1, 0}, {1, -1, 0}), -kPi / 2);  // across ±π
  RandomBezier random(3);
  for (int i = 0; i < 10'000; ++i) {
    const auto [a1, b1] = random.point(1);
    const auto [a2, b2] = random.point(1);
    const double angle = TQLineSignedAngleBetween({a1, b1, 0}, {a2, b2, 0});
    ASSERT_LE(std::fabs(angle), kPi);
    const double product = (a2 * b1 - a1 * b2) / std::hypot(a1, b1) / std::hypot(a2, b2);
    ASSERT_NEAR(std::sin(angle), product, 1e-14);
  }
}

TEST(Line, SegmentsMeetWithBothEndsIncluded) {
  EXPECT_EQ(TQLineIntersection({1, 1, 0}, {2, 2, 5}), TQLineNoIntersection);
  const Rows<const char*, TQLineSegment, TQLineSegment, Point> cases{
      {"crossing", between({0, 0}, {4, 4}), between({0, 4}, {4, 0}), {2, 2}},
      {"end on the other", between({1, 0}, {1, 3}), between({0, 0}, {2, 0}), {1, 0}},
      {"both ends", between({0, 0}, {2, 0}), between({2, -2}, {2, 0}), {2, 0}},
      {"short of it", between({0, 0}, {1.999, 0}), between({2, -1}, {2, 1}), TQLineNoIntersection},
      {"overlapping", between({0, 0}, {2, 2}), between({1, 1}, {3, 3}), TQLineNoIntersection},
      {"a point", between({2, 2}, {2, 2}), between({0, 0}, {4, 4}), TQLineNoIntersection},
  };
  for (const auto& [name, s1, s2, expected] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(TQLineSegmentIntersection(s1, s2), expected);
    EXPECT_EQ(TQLineSegmentIntersection(s2, s1), expected);
    EXPECT_EQ(s1.intersection(s2).has_value(), expected != TQLineNoIntersection);
  }
  EXPECT_EQ(TQLineIntersectionWithSegment({0, 1, 5}, between({0, 0}, {4, 4})),
            TQLineNoIntersection);
}

TEST(Line, RandomOnesFollowTheirEquation) {
  RandomBezier random(11);
  for (int i = 0; i < 10'000; ++i) {
    const auto [a, b] = random.point(1);
    const Point on = random.point(15), point = random.point(15);
    const TQLine line{a, b, a * on.x + b * on.y};
    const auto height = [&](Point p) { return line.a * p.x + line.b * p.y - line.c; };
    const Point foot = line.pointClosestTo(point);
    ASSERT_NEAR(height(foot), 0, 1e-12);
    ASSERT_NEAR((foot.x - point.x) * b, (foot.y - point.y) * a, 1e-12) << "along the normal";
    const double corners[] = {height({-4, 3}), height({8, 3}), height({-4, 9}), height({8, 9})};
    const auto [lowest, highest] = std::ranges::minmax(corners);
    if (std::fabs(lowest) < 1e-9 || std::fabs(highest) < 1e-9) continue;
    ASSERT_EQ(TQLineIntersectsRect(line, {-4, 3, 12, 6}), lowest < 0 && highest > 0);
  }
}

TEST(Line, ClippedToARectRunsFromMinYToMaxY) {
  const Rows<const char*, TQLine, bool, TQLineSegment> cases{
      {"horizontal", {0, 2, 6}, true, {{0, 3}, {10, 0}}},
      {"falling, leaves the rect", {1, 1, 5}, true, {{5, 0}, {5, -5}}},
      {"steep", {2, -1, 5}, true, {{2.5, 0}, {5, 10}}},
      {"vertical", {2, 0, 10}, true, {{5, 0}, {0, 10}}},
      {"falling, from above the rect", {1, 1, 15}, true, {{0, 15}, {5, -5}}},
      // Both ends are put on a side, and neither is inside.
      {"beside", {1, 1, -5}, false, {{0, -5}, {10, -10}}},
      {"above", {0, 1, 10.5}, false, {{0, 10.5}, {10, 0}}},
  };
  for (const auto& [name, line, meets, inRect] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(TQLineIntersectsRect(line, kRect), meets);
    EXPECT_EQ(TQLineIntersectsRect(line, {10, 10, -10, -10}), meets);
    EXPECT_EQ(TQLineSegmentInRect(line, kRect), inRect);
    EXPECT_EQ(line.clipped(kRect).has_value(), meets);
  }
  EXPECT_TRUE(std::isnan(TQLineSegmentInRect({0, 0, 1}, kRect).start.y));
  EXPECT_FALSE(TQLine({1, -1, 0}).clipped(RectNull).has_value());
  EXPECT_EQ(TQLine({1, 1, 5}).clipped(kRect), (TQLineSegment{{5, 0}, {-5, 5}}));
  EXPECT_EQ(TQLine({1, 1, 15}).clipped(kRect), (TQLineSegment{{10, 5}, {-5, 5}}));
  EXPECT_EQ(TQLine({1, 1, 0}).clipped(kRect), (TQLineSegment{{0, 0}, {0, 0}}));  // a corner
  // Almost along the left side: x is rounded, and the line meets the side far above the rect.
  const Rect beside{-81.68801005772718, 9.255881570338964, 1, 2.490759688029906};
  const auto touch = TQLine({1, -6.049014748177263e-16, -81.6880100577272}).clipped(beside);
  EXPECT_EQ(touch, (TQLineSegment{{beside.origin.x, RectGetMaxY(beside)}, {0, 0}}));
}

TEST(LineSegment, IntersectsARectWhenAPointOfItIsInside) {
  RandomBezier random(4);
  int hits = 0;
  for (int i = 0; i < 5000; ++i) {
    const TQLineSegment segment = between(random.point(20), random.point(20));
    const auto clipped = segment.clipped(kRect);
    int sampled = 0;
    for (int k = 0; k <= 400; ++k) {
      const Point p = segment.start + segment.delta * (k / 400.0);
      sampled += p.x >= 0 && p.x <= 10 && p.y >= 0 && p.y <= 10;
    }
    ASSERT_EQ(TQLineSegmentIntersectsRect(segment, kRect), clipped.has_value());
    ASSERT_TRUE(clipped || sampled == 0);
    const double length = clipped ? VectorGetLength(clipped->delta) : 0;
    const double leg = VectorGetLength(segment.delta) / 400;
    ASSERT_GE(length, (sampled - 1) * leg - 1e-9);
    ASSERT_LE(length, (sampled + 1) * leg + 1e-9);
    for (const Point p : {clipped.value_or(segment).start, clipped.value_or(segment).end()}) {
      ASSERT_NEAR(segment.infinite().distance(p), 0, 1e-12);
    }
    hits += clipped.has_value();
  }
  EXPECT_GT(hits, 500);
}

TEST(LineSegment, TouchesAndDegenerateOnesFollowTheClosedRect) {
  const Rows<const char*, TQLineSegment, Rect, bool> cases{
      {"ends on an edge", between({-5, 5}, {0, 5}), kRect, true},
      {"grazes a corner", between({-1, 1}, {1, -1}), kRect, true},
      {"along an edge", between({-5, 10}, {15, 10}), kRect, true},
      {"a point inside", between({5, 5}, {5, 5}), kRect, true},
      {"rect without extent", between({0, 0}, {10, 10}), {5, 5, 0, 0}, true},
      {"negative extents", between({5, 5}, {6, 6}), {10, 10, -10, -10}, true},
      {"null rect", between({0, 0}, {10, 10}), RectNull, false},
      {"NaN delta", {{5, 5}, {kNaN, 1}}, kRect, false},
      {"infinite delta", {{5, 5}, {kInf, 0}}, kRect, true},
  };
  for (const auto& [name, segment, rect, meets] : cases) {
    EXPECT_EQ(TQLineSegmentIntersectsRect(segment, rect), meets) << name;
  }
  for (const Vector delta : {Vector{kInf, 0}, {-kInf, 1}, {1, kInf}, {0, -kInf}, {kNaN, 1}}) {
    EXPECT_FALSE(TQLineSegment({5, 5}, delta).clipped(kRect).has_value());
  }
}

TEST(Line, TransformIsAMotionThatBringsItOntoTheXAxis) {
  RandomBezier random(5);
  for (int i = 0; i < 5000; ++i) {
    const auto [a, b] = random.point(1);
    const TQLine line{a, b, random.number(-100, 100)};
    const AffineTransform transform = TQLineTransformToXAxis(line);
    for (const Point p : {TQLineGetPointForX(line, random.number(-100, 100)), random.point(100)}) {
      const double size = std::fabs(line.c / a) + std::fabs(p.x) + std::fabs(p.y) + 200;
      const double height = std::fabs(PointApplyAffineTransform(p, transform).y);
      ASSERT_NEAR(height, line.distance(p), 1e-14 * size);
    }
  }
  EXPECT_EQ(TQLineTransformToXAxis({1e-8, 2, 6}), (AffineTransform{1, 0, 0, 1, 0, -3}));
  const Point crossing = PointApplyAffineTransform({7, 0}, TQLineTransformToXAxis({1, 3, 7}));
  EXPECT_NEAR(crossing.x, 7, 1e-14);  // the point on the x axis does not move
}

TEST(Line, PolarAnglesAreBroughtIntoATurn) {
  const double turn = 2 * kPi;
  EXPECT_EQ(TQNormalizePolar(-kPi / 2), -kPi / 2 + turn);
  EXPECT_EQ(TQNormalizePolar(-1e-20), turn);  // adding 2π rounds to 2π
  EXPECT_EQ(TQNormalizePolar(3 * turn), ((3 * turn) - turn) - turn);
  EXPECT_LE(std::fabs(TQNormalizePolar(-1e300) - kPi), kPi);
  EXPECT_DOUBLE_EQ(LRAngleBetweenVectors({1, 0}, {0, 0}, {0, -1}), 1.5 * kPi);
  EXPECT_DOUBLE_EQ(LRAngleBetweenPoints({0, -1}, {0, 0}, {1, 0}), -1.5 * kPi);
  EXPECT_EXIT((void)TQNormalizePolar(kNaN), testing::KilledBySignal(SIGABRT),
              "Assertion failed: \\(FALSE\\), function TQNormalizePolar, file "
              "Modules/TQFoundation/Source/TQLine, line [0-9]+\\.");
}

TEST(Line, PointsAreFoundByDistanceAndBySide) {
  EXPECT_FALSE(LRTriangleIsClockwise({0, 0}, {1, 1}, {2, 2}));
  RandomBezier random(7);
  for (int i = 0; i < 100; ++i) {
    const Point p = random.point(9), q = random.point(9), r = random.point(9);
    const double twiceTheArea = (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x);
    if (std::fabs(twiceTheArea) < 1e-9) continue;
    EXPECT_EQ(LRTriangleIsClockwise(p, q, r), twiceTheArea < 0);
  }
  const Point beside = TQPointAtDistanceAndSlopeFromPoint(2, kPi / 6, {1, 1});
  EXPECT_DOUBLE_EQ(beside.x, 1 + std::sqrt(3));
  EXPECT_DOUBLE_EQ(beside.y, 2);
  const std::vector<Point> points{{kNaN, 0}, {3, 0}, {0, 3}, {-4, 0}};
  EXPECT_EQ(TQIndexOfPointClosestToPoint(points, {0, 0}), 1);  // the first of two equally near ones
  EXPECT_EQ(TQIndexOfPointClosestToPoint(points, {-1e308, 0}), 1);  // all are equally far
  EXPECT_EQ(TQIndexOfPointClosestToPoint({points.data(), 1}, {0, 0}), -1);
}

TEST(Line, DescriptionIsAnEquation) {
  const Rows<TQLine, const char*> cases{
      {{0, -1, 3}, "-1y = 3"},
      {{1, 0, -0.0}, "x = -0"},
      {{1, 1, 0.56}, "x + y = 0.5600000000000001"},
      {{1, -1, 0}, "x - 1y = 0"},
      {{-3, 1, 1}, "-3x + y = 1"},
      {{2, -0.5, 1}, "2x - 0.5y = 1"},
      {{kNaN, kNaN, 0}, "nanx + nany = 0"},
  };
  for (const auto& [line, text] : cases) EXPECT_EQ(TQLineDescription(line), text);
  EXPECT_EQ(between({1, 2}, {3, 5}).debugDescription(), "{1, 2} -> {3, 5}");
}

TEST(Straight, AllThreeAnswerAlike) {
  const TQOrthogonalLine guide{Axis::horizontal, 4};
  const TQLine line{3, -4, 4};
  const TQLineSegment segment = between({0, 2}, {4, 5});
  EXPECT_EQ(segment.infinite().direction(), (Vector{4, 3}));
  EXPECT_EQ(between({1, 2}, {1, 5}).infinite(), (TQLine{1, 0, 1}));
  EXPECT_EQ(line.intersection(guide), guide.intersection(line));
  EXPECT_EQ(guide.intersection(segment), segment.intersection(guide));
  EXPECT_EQ(guide.clipped(kRect), (TQLineSegment{{0, 4}, {10, 0}}));

  const auto roughly = [](double a, double b) { return std::fabs(a - b) < 0.01; };
  EXPECT_TRUE(line.passes({4, 2.001}, roughly));
  EXPECT_TRUE(segment.passes({4.001, 5}, roughly));
  EXPECT_FALSE(segment.passes({8, 8}, roughly));  // beyond the end
  for (const double scale : {1e-200, 1e200}) {
    EXPECT_EQ(TQLine({scale, 0, scale}).pointClosestTo({5, 2}), (Point{1, 2}));
    EXPECT_EQ(between({0, 0}, {scale, 0}).pointClosestTo({scale / 2, scale}),
              (Point{scale / 2, 0}));
  }

  EXPECT_DOUBLE_EQ(segment.distance(Point{7, 9}), 5);
  EXPECT_EQ(between({1, 1}, {1, 1}).distance(Point{4, 5}), 5);
  EXPECT_EQ(guide.distance(Rect{0, 7, 5, 5}), 3);
  EXPECT_DOUBLE_EQ(segment.distance(Rect{7, 9, 1, 1}), 5);
  EXPECT_EQ(between({0, -3}, {100, -3}).distance(kRect), 3);
  for (const Rect& rect : {kRect, RectNull}) {
    const double distance = RectIsNull(rect) ? kInf : 0;
    EXPECT_EQ(line.distance(rect), distance);
    EXPECT_EQ(segment.distance(rect), distance);
  }
}

}  // namespace
