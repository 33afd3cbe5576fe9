#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <TQFoundation/geometry/rects/TQRectAxis.h>
#include <TQFoundation/geometry/rects/TQRectFitting.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include "support/RandomBezier.h"
#include "support/Roots.h"

namespace {

constexpr TQBezierDegree kUnknown{7};

/// Returns random segments of every degree, and each quadratic also as a cubic.
std::vector<TQBezierSegment> segments(std::uint64_t seed, int count) {
  RandomBezier random(seed);
  std::vector<TQBezierSegment> result;
  for (int i = 0; i < count; ++i) {
    for (const TQBezierDegree degree : kDegrees) result.push_back(random.segment(degree, 100));
    const auto [p0, p1, p2, unused] = result[result.size() - 2].points;
    const auto toP1 = [&, control = p1](Point p) { return p + 2 * (control - p) / 3; };
    result.push_back(cubic(p0, toP1(p0), toP1(p2), p2));
  }
  return result;
}

TEST(BezierSegment, PartsJoinExactlyAndLieOnTheWholeAndTheChordOnTheXAxis) {
  RandomBezier random(10);
  const auto at = TQBezierSegmentPointAtOffset;
  for (const TQBezierSegment& segment : segments(11, 500)) {
    const double t = random.number(-0.5, 1.5);
    TQBezierSegment left = segment, right;
    TQBezierSegmentSplit(left, t, &left, &right);  // also works in place
    ASSERT_EQ(left.start(), segment.start());
    ASSERT_EQ(right.end(), segment.end());
    ASSERT_EQ(left.end(), right.start());
    ASSERT_EQ(left.end(), at(segment, t));
    ASSERT_LT(VectorGetLength(at(right, 0.3) - at(segment, t + 0.3 * (1 - t))), 1e-11);

    constexpr double kStep = 1e-5;
    const Vector slope = (at(segment, t + kStep) - at(segment, t - kStep)) / (2 * kStep);
    ASSERT_LT(VectorGetLength(TQBezierSegmentDerivative(segment, t) - slope), 1e-4);

    const TQBezierSegment aligned = TQBezierSegmentApplyAffineTransform(
        segment, TQBezierSegmentTransformForAligningToXAxis(segment));
    const double chord = VectorGetLength(segment.end() - segment.start());
    ASSERT_LT(VectorGetLength(aligned.start() - Point{}), 1e-12);
    ASSERT_LT(VectorGetLength(aligned.end() - Point{chord, 0}), 1e-12);
  }
  const auto point = straight({3, 4}, {3, 4});
  EXPECT_EQ(TQBezierSegmentTransformForAligningToXAxis(point),
            (AffineTransform{1, 0, 0, 1, -3, -4}));
  for (const double extreme : {1.5e308, 5e-324}) {
    const auto diagonal = straight({0, 0}, {extreme, extreme});
    EXPECT_DOUBLE_EQ(TQBezierSegmentTransformForAligningToXAxis(diagonal).a, std::sqrt(0.5));
  }
  EXPECT_TRUE(TQBezierSegmentIsPoint(point));
  EXPECT_FALSE(TQBezierSegmentIsPoint(quadratic({1, 1}, {2, 1}, {1, 1})));
}

TEST(BezierSegment, EveryDegreeUpToFourIsEvaluated) {
  const std::array<Point, 5> points{{{0, 0}, {1, 4}, {2, 6}, {3, 4}, {4, 0}}};
  const auto at = [&](unsigned degree, Point* left, Point* right) {
    return TQBezierSegmentBezierWithPoints(0.25, degree, points.data(), left, right);
  };
  TQBezierSegment left, right, expectedLeft, expectedRight;
  left.degree = right.degree = TQBezierDegree::cubic;
  TQBezierSegmentSplit(cubic(points[0], points[1], points[2], points[3]), 0.25, &expectedLeft,
                       &expectedRight);
  EXPECT_EQ(at(3, left.points, right.points), expectedLeft.end());
  EXPECT_EQ(left, expectedLeft);
  EXPECT_EQ(right, expectedRight);
  EXPECT_EQ(at(4, nullptr, nullptr), (Point{1, 3.140625}));
  EXPECT_EQ(at(0, nullptr, nullptr), points[0]);
  EXPECT_EXIT((void)at(5, nullptr, nullptr), testing::KilledBySignal(SIGABRT),
              "Assertion failed: \\(degree < 5\\), function TQBezierSegmentBezierWithPoints, file "
              "Modules/TQFoundation/Source/TQBezierSegment, line [0-9]+\\.");
}

/// Returns the maximum of `value` on [0, 1]: of samples, then of samples around the best one.
template <class Value>
double maximum(const Value& value) {
  double best = 0.5, reach = 0.5;
  for (const int samples : {500, 100, 100}) {
    const double middle = best;
    for (int i = -samples; i <= samples; ++i) {
      const double t = std::clamp(middle + reach * i / samples, 0.0, 1.0);
      if (value(t) > value(best)) best = t;
    }
    reach /= samples;
  }
  return value(best);
}

TEST(BezierSegment, BoundsHoldEverySampleAndAreTouched) {
  for (const TQBezierSegment& segment : segments(14, 150)) {
    const Rect bounds = TQBezierSegmentGetBounds(segment);
    const Rect hull = TQBezierSegmentGetControlPointBounds(segment);
    const auto at = [&](double t) { return TQBezierSegmentPointAtOffset(segment, t); };
    constexpr double kRounding = 1e-13;
    for (const auto& [edge, reached] :
         {std::pair(-RectGetMinX(bounds), maximum([&](double t) { return -at(t).x; })),
          {-RectGetMinY(bounds), maximum([&](double t) { return -at(t).y; })},
          {RectGetMaxX(bounds), maximum([&](double t) { return at(t).x; })},
          {RectGetMaxY(bounds), maximum([&](double t) { return at(t).y; })}}) {
      ASSERT_GE(edge, reached - kRounding);
      ASSERT_LE(edge, reached + 1e-8);
    }
    // The line along an edge of the bounds touches the segment, within rounding.
    ASSERT_GE(TQBezierSegmentIntersectionsWithHorizontalLine(segment, bounds.origin.y).count, 1);
    ASSERT_GE(RectGetMaxX(bounds), segment.end().x);  // origin + extent is not below an end
    for (const Axis axis : {Axis::horizontal, Axis::vertical}) {
      ASSERT_TRUE(TQRectContainsRectOnAxis(axis, TQRectExpand(hull, kRounding), bounds));
    }
  }
}

TEST(BezierSegment, BoundsOfKnownCurvesAreExact) {
  const auto bounds = TQBezierSegmentGetBounds;
  EXPECT_EQ(bounds(cubic({0, 0}, {0, 4}, {4, 4}, {4, 0})), (Rect{0, 0, 4, 3}));
  EXPECT_EQ(bounds(quadratic({0, 0}, {2, -4}, {4, 0})), (Rect{0, -2, 4, 2}));
  EXPECT_EQ(bounds(cubic({5, 5}, {5, 5}, {5, 5}, {5, 5})), (Rect{5, 5, 0, 0}));
}

TEST(BezierSegment, BadInputGivesTheDocumentedValue) {
  for (const TQBezierSegment& segment :
       {cubic({0, 0}, {1, 1}, {2, 2}, {kNaN, 3}), cubic({0, 0}, {kNaN, 1}, {2, 2}, {3, 3}),
        straight({0, 0}, {kNaN, 1})}) {
    EXPECT_TRUE(std::isnan(TQBezierSegmentGetBounds(segment).origin.x));
    EXPECT_EQ(TQBezierSegmentGetBounds(segment).origin.y, 0);
    EXPECT_EQ(TQBezierSegmentIntersectionsWithVerticalLine(segment, 1).count, 0);
  }
  const auto huge = cubic({-1e308, 0}, {1e308, 1}, {-1e308, 2}, {1e308, 3});
  EXPECT_EQ(TQBezierSegmentGetBounds(huge).origin.x, -1e308);
  EXPECT_FALSE(std::isfinite(TQBezierSegmentGetBounds(huge).size.width));

  TQBezierSegment unknown = huge;
  unknown.degree = kUnknown;
  TQBezierSegment left;
  TQBezierSegmentSplit(unknown, 0.5, &left, nullptr);
  EXPECT_EQ(left, unknown);
  EXPECT_TRUE(RectIsNull(TQBezierSegmentGetBounds(unknown)));
  EXPECT_EQ(TQBezierSegmentPointAtOffset(unknown, 0.5), Point{});
  EXPECT_EQ(TQBezierSegmentLengthSquared(unknown), 0);
  EXPECT_FALSE(TQBezierSegmentIsPoint(unknown));
  EXPECT_EQ(TQBezierSegmentIntersectionsWithHorizontalLine(unknown, 1).count, 0);
}

TEST(BezierSegment, FlatnessOfAQuadraticIsThatOfItsCubic) {
  EXPECT_EQ(TQBezierSegmentFlatness(cubic({0, 0}, {1, 5}, {7, 3}, {8, 0})), 5 * 5 + 15 * 15);
  EXPECT_EQ(TQBezierSegmentFlatness(cubic({1, 2}, {9, 9}, {3, 5}, {4, 8})), 21 * 21 + 15 * 15);
  EXPECT_EQ(TQBezierSegmentFlatness(cubic({4, 8}, {3, 5}, {9, 9}, {1, 2})), 21 * 21 + 15 * 15);
  EXPECT_EQ(TQBezierSegmentFlatness(straight({1, 2}, {4, 8})), 0);
  EXPECT_EQ(TQBezierSegmentFlatness(quadratic({0, 0}, {3, 6}, {6, 0})), 144);
}

TEST(BezierSegment, LengthsAreThoseOfAFinePolygon) {
  EXPECT_EQ(TQBezierSegmentControlSplineLengthSquared(cubic({0, 0}, {3, 4}, {3, 10}, {0, 10})),
            25 + 36 + 9);
  auto all = segments(15, 20);
  all.push_back(cubic({0, 0}, {30, 0}, {-20, 0}, {10, 0}));  // folds back
  for (const TQBezierSegment& segment : all) {
    double length = 0;
    Point from = segment.start();
    constexpr int kLegs = 100'000;
    for (double i = 1; i <= kLegs; ++i) {
      const Point to = TQBezierSegmentPointAtOffset(segment, i / kLegs);
      length += std::hypot(to.x - from.x, to.y - from.y);
      from = to;
    }
    EXPECT_NEAR(std::sqrt(TQBezierSegmentLengthSquared(segment)), length, 2e-8 * length);
  }
  // The first turns back at 1/3 and 3/8. The other lengths were computed by 80-bit quadrature.
  const Rows<TQBezierSegment, double> folds{
      {cubic({-5, 0}, {1, 0}, {-10, 0}, {10, 0}), 15 + 1 / 288.0},
      {cubic({8, 0}, {7, 1e-4}, {-8, 0}, {-7.9, 0}), 15.900995501406344},
      {quadratic({-7, 0}, {4, 0}, {4.2, 1e-5}), 11.200000000024432},
  };
  for (const auto& [segment, length] : folds) {
    EXPECT_NEAR(std::sqrt(TQBezierSegmentLengthSquared(segment)), length, 1e-10 * length);
  }
}

/// Returns the sign of a cubic's curvature at t, times a positive number.
double bend(const TQBezierSegment& s, double t) {
  return VectorCrossProduct(TQBezierSegmentDerivative(s, t - 1e-4),
                            TQBezierSegmentDerivative(s, t + 1e-4));
}

TEST(BezierSegment, InflectionsAreWhereTheBendChangesSides) {
  RandomBezier random(17);
  std::array<int, 3> seen{};
  for (int i = 0; i < 2000; ++i) {
    const TQBezierSegment curve = random.segment(TQBezierDegree::cubic, 100);
    const TQPolynomialRoots offsets = TQBezierSegmentInflectionOffsets(curve);
    ++seen.at(static_cast<std::size_t>(offsets.count));
    double from = 0;
    for (const double t : offsets) {
      ASSERT_TRUE(t >= from && t < 1);
      const bool isNearOther = t - from <= 0.01 || t >= 0.99;
      ASSERT_TRUE(isNearOther || bend(curve, t - 0.003) * bend(curve, t + 0.003) < 0);
      from = t;
    }
  }
  EXPECT_GT(seen[1], 100);
  EXPECT_GT(seen[2], 20);
  const Rows<const char*, TQBezierSegment, std::vector<double>> cases{
      {"cusp", cubic({0, 0}, {-2, -4}, {1, -3}, {-3, 9}), {1 / 3.0}},
      {"t² = 1e-9", cubic({0, 0}, {1e-9, 0}, {2e-9, 1}, {1 + 3e-9, 3}), {3.1622777e-5}},
      {"straight", cubic({0.1, 0.2}, {0.4, 0.8}, {0.3, 0.6}, {0.7, 1.4}), {}},
      {"quadratic", cubic({0, 0}, {0.1, 0.2}, {0.3, 0.2}, {0.6, 0}), {}},
  };
  for (const auto& [name, curve, offsets] : cases) {
    EXPECT_THAT(used(TQBezierSegmentInflectionOffsets(curve)),
                testing::Pointwise(testing::DoubleNear(1e-12), offsets))
        << name;
  }
}

// The exact bend is P·s² + Q·s·t + R·t² with P = d0 × d1, Q = d0 × d2 and R = d1 × d2. If the last
// two points are equal, only P·s² is left, which never changes its sign. If the last three are on a
// line, R is 0 and the bend changes its sign inside if P and Q differ in sign.
TEST(BezierSegment, InflectionsMirrorWhenTheCurveIsReversed) {
  constexpr int kEqualEnd = 1, kAlignedEnd = 2;
  RandomBezier random(23);
  for (int i = 0; i < 30'000; ++i) {
    const int kind = i % 3;
    auto curve = random.segment(TQBezierDegree::cubic, i % 2 == 0 ? 100 : 1e-3);
    auto& [p0, p1, p2, p3] = curve.points;
    if (kind == kEqualEnd) p2 = p3;
    if (kind == kAlignedEnd) p2 = p1 + random.number(-1, 2) * (p3 - p1);
    const auto found = TQBezierSegmentInflectionOffsets(curve);
    const auto reversed = TQBezierSegmentInflectionOffsets(cubic(p3, p2, p1, p0));
    ASSERT_EQ(found.count, reversed.count) << i;
    for (int k = 0; k < found.count; ++k) {
      ASSERT_NEAR(found.roots[k], 1 - reversed.roots[found.count - 1 - k], 1e-15) << i;
    }
    const double changes =
        VectorCrossProduct(p1 - p0, p2 - p1) * VectorCrossProduct(p1 - p0, p3 - p2);
    ASSERT_TRUE(kind == 0 || found.count == (kind == kAlignedEnd && changes < 0 ? 1 : 0)) << i;
  }
}

TEST(BezierSegment, LineCrossingsAreTheSignChangesOfItsSamples) {
  RandomBezier random(18);
  for (const TQBezierSegment& segment : segments(19, 500)) {
    const double y = random.number(-100, 100);
    const TQPolynomialRoots found = TQBezierSegmentIntersectionsWithHorizontalLine(segment, y);
    for (const double t : found) {
      ASSERT_TRUE(t >= 0 && t <= 1);
      ASSERT_NEAR(TQBezierSegmentPointAtOffset(segment, t).y, y, 1e-12);
    }
    std::vector<double> sampled;
    bool wasBelow = segment.start().y < y;
    for (int i = 1; i <= 1000; ++i) {
      const double t = i / 1000.0;
      const bool isBelow = TQBezierSegmentPointAtOffset(segment, t).y < y;
      if (isBelow != wasBelow) sampled.push_back(t);
      wasBelow = isBelow;
    }
    // Two crossings may be between two samples.
    if (used(found).size() == sampled.size() + 2) continue;
    ASSERT_THAT(used(found), testing::Pointwise(testing::DoubleNear(1.1e-3), sampled));
  }
}

TEST(BezierSegment, LineCrossingsGiveEndsExactlyAndTouchesOnce) {
  const auto arch = cubic({0.1, 0}, {0.7, 4}, {4, 4}, {4.3, 0});
  const auto flat = straight({0, 2}, {5, 2});
  const Rows<const char*, TQBezierSegment, double, std::vector<double>> cases{
      {"both ends", arch, 0, {0, 1}},
      {"touch in the middle", arch, 3, {0.5}},
      {"in the line", flat, 2, {}},
      {"triple", cubic({0, -1}, {1, 1}, {2, -1}, {3, 1}), 0, {0.5}},
      // Rounding puts the turning point slightly before 1.
      {"level at its end", cubic({0, 76}, {1, 83}, {2, 100}, {3, 100}), 100, {1}},
      {"again", cubic({0, 91}, {1, 101}, {2, 100}, {3, 100}), 100, {0.75, 1}},
      {"an end just behind the line", straight({0, -1}, {1, 6e-17}), 0, {0x1.fffffffffffffp-1}},
      {"level but for a bit", quadratic({0, 2}, {1, 2 + 4e-16}, {2, 1}), 2, {0}},
  };
  for (const auto& [name, segment, y, offsets] : cases) {
    EXPECT_EQ(used(TQBezierSegmentIntersectionsWithHorizontalLine(segment, y)), offsets) << name;
  }
  EXPECT_EQ(TQBezierSegmentIntersectionsWithHorizontalLine(arch, 2.9999999).count, 2);
  EXPECT_EQ(used(TQBezierSegmentIntersectionsWithVerticalLine(arch, 0.1)), std::vector<double>{0});
  EXPECT_EQ(used(TQBezierSegmentIntersectionsWithVerticalLine(flat, 5)), std::vector<double>{1});
}

}  // namespace
