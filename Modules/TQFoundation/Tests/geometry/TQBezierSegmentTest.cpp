#include <TQFoundation/geometry/TQBezierSegment.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <support/RandomBezier.h>
#include <support/Roots.h>

namespace tq {
namespace {

using test::used;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr TQBezierDegree kUnknown{7};

/// Random segments of every degree, each also as a cubic that is one only by rounding.
std::vector<TQBezierSegment> segments(std::uint64_t seed, int count) {
  test::RandomBezier random(seed);
  std::vector<TQBezierSegment> result;
  for (int i = 0; i < count; ++i) {
    for (const TQBezierDegree degree : test::kDegrees)
      result.push_back(random.segment(degree, 100));
    const auto [p0, p1, p2, unused] = result[result.size() - 2].points;
    const auto toP1 = [&, control = p1](Point p) {
      return Point{p.x + 2 * (control.x - p.x) / 3, p.y + 2 * (control.y - p.y) / 3};
    };
    result.push_back(TQBezierSegment::cubic(p0, toP1(p0), toP1(p2), p2));
  }
  return result;
}

TEST(BezierSegment, SplitHalvesJoinExactlyAndLieOnTheWhole) {
  test::RandomBezier random(10);
  for (const TQBezierSegment& segment : segments(11, 500)) {
    const double t = random.number(-0.5, 1.5);
    TQBezierSegment left, right;
    TQBezierSegmentSplit(segment, t, &left, &right);
    ASSERT_EQ(left.start(), segment.start());
    ASSERT_EQ(right.end(), segment.end());
    ASSERT_EQ(left.end(), right.start());
    ASSERT_EQ(left.end(), TQBezierSegmentPointAtOffset(segment, t));
    ASSERT_EQ(left.degree, segment.degree);
    const double u = random.number(0, 1);
    const Point whole = TQBezierSegmentPointAtOffset(segment, t + u * (1 - t));
    const Point part = TQBezierSegmentPointAtOffset(right, u);
    ASSERT_NEAR(part.x, whole.x, 1e-11);
    ASSERT_NEAR(part.y, whole.y, 1e-11);
    TQBezierSegment self = segment;
    TQBezierSegmentSplit(self, t, &self, nullptr);
    ASSERT_EQ(self, left);
  }
}

TEST(BezierSegment, DegreesZeroToFourAreEvaluatedAndSplitAlike) {
  test::RandomBezier random(12);
  for (const TQBezierDegree code : {TQBezierDegree::quadratic, TQBezierDegree::cubic}) {
    const TQBezierSegment segment = random.segment(code, 10);
    const unsigned degree = static_cast<unsigned>(code) + 1;
    TQBezierSegment left, right, expectedLeft, expectedRight;
    left.degree = right.degree = code;
    TQBezierSegmentSplit(segment, 0.3, &expectedLeft, &expectedRight);
    EXPECT_EQ(
        TQBezierSegmentBezierWithPoints(0.3, degree, segment.points, left.points, right.points),
        expectedLeft.end());
    EXPECT_EQ(left, expectedLeft);
    EXPECT_EQ(right, expectedRight);
  }
  const std::array<Point, 5> points{{{0, 0}, {1, 4}, {2, 6}, {3, 4}, {4, 0}}};
  EXPECT_EQ(TQBezierSegmentBezierWithPoints(0.5, 4, points.data(), nullptr, nullptr),
            (Point{2, 4.25}));
  EXPECT_EQ(TQBezierSegmentBezierWithPoints(0.5, 0, points.data() + 1, nullptr, nullptr),
            points[1]);
  EXPECT_EXIT((void)TQBezierSegmentBezierWithPoints(0.5, 5, points.data(), nullptr, nullptr),
              testing::KilledBySignal(SIGABRT),
              "Assertion failed: \\(degree < 5\\), function TQBezierSegmentBezierWithPoints, file "
              "Modules/TQFoundation/Source/TQBezierSegment, line [0-9]+\\.");
}

TEST(BezierSegment, DerivativeIsTheLimitOfDifferences) {
  for (const TQBezierSegment& segment : segments(13, 200)) {
    constexpr double kStep = 1e-5;
    const Point before = TQBezierSegmentPointAtOffset(segment, 0.4 - kStep);
    const Point after = TQBezierSegmentPointAtOffset(segment, 0.4 + kStep);
    const Vector derivative = TQBezierSegmentDerivative(segment, 0.4);
    ASSERT_NEAR(derivative.dx, (after.x - before.x) / (2 * kStep), 1e-5);
    ASSERT_NEAR(derivative.dy, (after.y - before.y) / (2 * kStep), 1e-5);
  }
}

TEST(BezierSegment, BoundsHoldEverySampleAndAreTouched) {
  for (const TQBezierSegment& segment : segments(14, 500)) {
    const Rect bounds = TQBezierSegmentGetBounds(segment);
    const Rect hull = TQBezierSegmentGetControlPointBounds(segment);
    double minX = kInf, maxX = -kInf, minY = kInf, maxY = -kInf;
    constexpr int kSamples = 2000;
    for (int i = 0; i <= kSamples; ++i) {
      const Point p = TQBezierSegmentPointAtOffset(segment, static_cast<double>(i) / kSamples);
      minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
      minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
    }
    constexpr double kRounding = 1e-13;
    constexpr double kBetweenSamples = 1e-3;  // a turn is missed by curvature · (1/4000)² / 2
    ASSERT_LE(RectGetMinX(bounds), minX + kRounding);
    ASSERT_LE(RectGetMinY(bounds), minY + kRounding);
    ASSERT_GE(RectGetMaxX(bounds), maxX - kRounding);
    ASSERT_GE(RectGetMaxY(bounds), maxY - kRounding);
    ASSERT_NEAR(RectGetMinX(bounds), minX, kBetweenSamples);
    ASSERT_NEAR(RectGetMinY(bounds), minY, kBetweenSamples);
    ASSERT_NEAR(RectGetMaxX(bounds), maxX, kBetweenSamples);
    ASSERT_NEAR(RectGetMaxY(bounds), maxY, kBetweenSamples);
    // Read back, not a bit short of an end point.
    for (const Point end : {segment.start(), segment.end()}) {
      ASSERT_GE(RectGetMaxX(bounds), end.x);
      ASSERT_GE(RectGetMaxY(bounds), end.y);
    }
    ASSERT_LE(RectGetMaxX(bounds), RectGetMaxX(hull) + kRounding);
    ASSERT_GE(RectGetMinY(bounds), RectGetMinY(hull) - kRounding);
  }
}

TEST(BezierSegment, BoundsOfKnownCurvesAreExact) {
  EXPECT_EQ(TQBezierSegmentGetBounds(TQBezierSegment::cubic({0, 0}, {0, 4}, {4, 4}, {4, 0})),
            (Rect{0, 0, 4, 3}));
  EXPECT_EQ(TQBezierSegmentGetBounds(TQBezierSegment::quadratic({0, 0}, {2, -4}, {4, 0})),
            (Rect{0, -2, 4, 2}));
  EXPECT_EQ(TQBezierSegmentGetBounds(TQBezierSegment::straight({3, 1}, {-1, 5})),
            (Rect{-1, 1, 4, 4}));
  EXPECT_EQ(TQBezierSegmentGetBounds(TQBezierSegment::cubic({5, 5}, {5, 5}, {5, 5}, {5, 5})),
            (Rect{5, 5, 0, 0}));
}

TEST(BezierSegment, BadInputGivesTheDocumentedValue) {
  for (const TQBezierSegment& segment : {TQBezierSegment::cubic({kNaN, 0}, {1, 1}, {2, 2}, {3, 3}),
                                         TQBezierSegment::cubic({0, 0}, {1, 1}, {2, 2}, {kNaN, 3}),
                                         TQBezierSegment::cubic({0, 0}, {kNaN, 1}, {2, 2}, {3, 3}),
                                         TQBezierSegment::straight({0, 0}, {kNaN, 1})}) {
    EXPECT_TRUE(std::isnan(TQBezierSegmentGetBounds(segment).origin.x));
    EXPECT_EQ(TQBezierSegmentGetBounds(segment).origin.y, 0);
    EXPECT_EQ(TQBezierSegmentIntersectionsWithVerticalLine(segment, 1).count, 0);
  }
  const auto huge = TQBezierSegment::cubic({-1e308, 0}, {1e308, 1}, {-1e308, 2}, {1e308, 3});
  EXPECT_EQ(TQBezierSegmentGetBounds(huge).origin.x, -1e308);
  EXPECT_FALSE(std::isfinite(TQBezierSegmentGetBounds(huge).size.width));

  TQBezierSegment unknown = huge;
  unknown.degree = kUnknown;
  TQBezierSegment left;
  TQBezierSegmentSplit(unknown, 0.5, &left, nullptr);
  EXPECT_EQ(left, unknown);
  EXPECT_TRUE(RectIsNull(TQBezierSegmentGetBounds(unknown)));
  EXPECT_TRUE(RectIsNull(TQBezierSegmentGetControlPointBounds(unknown)));
  EXPECT_EQ(TQBezierSegmentPointAtOffset(unknown, 0.5), Point{});
  EXPECT_EQ(TQBezierSegmentDerivative(unknown, 0.5), Vector{});
  EXPECT_FALSE(TQBezierSegmentIsPoint(unknown));
  EXPECT_EQ(TQBezierSegmentFlatness(unknown), 0);
  EXPECT_EQ(TQBezierSegmentLengthSquared(unknown), 0);
  EXPECT_EQ(TQBezierSegmentControlSplineLengthSquared(unknown), 0);
  EXPECT_EQ(TQBezierSegmentIntersectionsWithHorizontalLine(unknown, 1).count, 0);
}

TEST(BezierSegment, FlatnessOfAQuadraticIsThatOfItsCubic) {
  const auto cubic = TQBezierSegment::cubic({0, 0}, {1, 5}, {7, 3}, {8, 0});
  EXPECT_EQ(TQBezierSegmentFlatness(cubic), 5 * 5 + 15 * 15);
  EXPECT_EQ(TQBezierSegmentFlatness(TQBezierSegment::quadratic({0, 0}, {3, 6}, {6, 0})), 144);
  EXPECT_EQ(TQBezierSegmentFlatness(TQBezierSegment::cubic({0, 0}, {2, 4}, {4, 4}, {6, 0})), 144);
  EXPECT_EQ(TQBezierSegmentFlatness(TQBezierSegment::straight({0, 0}, {3, 6})), 0);
}

TEST(BezierSegment, LengthsAreThoseOfAFinePolygon) {
  const auto cubic = TQBezierSegment::cubic({0, 0}, {3, 4}, {3, 10}, {0, 10});
  EXPECT_EQ(TQBezierSegmentControlSplineLengthSquared(cubic), 25 + 36 + 9);
  EXPECT_EQ(TQBezierSegmentLengthSquared(TQBezierSegment::straight({1, 1}, {4, 5})), 25);
  auto all = segments(15, 20);
  all.push_back(TQBezierSegment::cubic({0, 0}, {10, 10}, {0, 10}, {10, 0}));  // a cusp
  all.push_back(TQBezierSegment::cubic({0, 0}, {30, 0}, {-20, 0}, {10, 0}));  // there and back
  for (const TQBezierSegment& segment : all) {
    double length = 0;
    Point from = segment.start();
    constexpr int kLegs = 100'000;
    for (int i = 1; i <= kLegs; ++i) {
      const Point to = TQBezierSegmentPointAtOffset(segment, static_cast<double>(i) / kLegs);
      length += std::hypot(to.x - from.x, to.y - from.y);
      from = to;
    }
    EXPECT_NEAR(std::sqrt(TQBezierSegmentLengthSquared(segment)), length, 2e-8 * length);
  }
}

TEST(BezierSegment, AligningPutsTheChordOnTheXAxis) {
  for (const TQBezierSegment& segment : segments(16, 100)) {
    const AffineTransform transform = TQBezierSegmentTransformForAligningToXAxis(segment);
    const TQBezierSegment aligned = TQBezierSegmentApplyAffineTransform(segment, transform);
    const Point chord{segment.end().x - segment.start().x, segment.end().y - segment.start().y};
    EXPECT_NEAR(aligned.start().x, 0, 1e-13);
    EXPECT_NEAR(aligned.start().y, 0, 1e-13);
    EXPECT_NEAR(aligned.end().x, std::hypot(chord.x, chord.y), 1e-12);
    EXPECT_NEAR(aligned.end().y, 0, 1e-13);
  }
  const auto point = TQBezierSegment::straight({3, 4}, {3, 4});
  EXPECT_EQ(TQBezierSegmentTransformForAligningToXAxis(point),
            (AffineTransform{1, 0, 0, 1, -3, -4}));
  EXPECT_TRUE(TQBezierSegmentIsPoint(point));
  EXPECT_FALSE(TQBezierSegmentIsPoint(TQBezierSegment::quadratic({1, 1}, {2, 1}, {1, 1})));
  // Unused points stay 0.
  EXPECT_EQ(TQBezierSegmentApplyAffineTransform(point, {1, 0, 0, 1, 5, 5}),
            TQBezierSegment::straight({8, 9}, {8, 9}));
}

/// Which way a cubic bends at t.
double bend(const TQBezierSegment& s, double t) {
  constexpr double kStep = 1e-4;
  const Vector v = TQBezierSegmentDerivative(s, t);
  const Vector before = TQBezierSegmentDerivative(s, t - kStep);
  const Vector after = TQBezierSegmentDerivative(s, t + kStep);
  return v.dx * (after.dy - before.dy) - v.dy * (after.dx - before.dx);
}

TEST(BezierSegment, InflectionsAreWhereTheBendChangesSides) {
  test::RandomBezier random(17);
  std::array<int, 3> seen{};
  for (int i = 0; i < 2000; ++i) {
    const TQBezierSegment cubic = random.segment(TQBezierDegree::cubic, 100);
    const TQPolynomialRoots offsets = TQBezierSegmentInflectionOffsets(cubic);
    ++seen.at(static_cast<std::size_t>(offsets.count));
    double from = 0;
    for (const double t : offsets) {
      ASSERT_GE(t, from);
      if (t - from > 0.01 && t < 0.99) {
        ASSERT_LT(bend(cubic, t - 0.003) * bend(cubic, t + 0.003), 0);
      }
      from = t;
    }
  }
  EXPECT_GT(seen[1], 100);
  EXPECT_GT(seen[2], 20);
  const auto letter = TQBezierSegment::cubic({0, 0}, {1, 1}, {2, -1}, {3, 0});
  EXPECT_THAT(used(TQBezierSegmentInflectionOffsets(letter)), testing::ElementsAre(0.5));
  const auto cusp = TQBezierSegment::cubic({0, 0}, {1, 1}, {0, 1}, {1, 0});
  EXPECT_THAT(used(TQBezierSegmentInflectionOffsets(cusp)), testing::ElementsAre(0.5));
  const auto line = TQBezierSegment::cubic({0.1, 0.2}, {0.4, 0.8}, {0.3, 0.6}, {0.7, 1.4});
  EXPECT_EQ(TQBezierSegmentInflectionOffsets(line).count, 0);
}

TEST(BezierSegment, LineCrossingsAreTheSignChangesOfItsSamples) {
  test::RandomBezier random(18);
  for (const TQBezierSegment& segment : segments(19, 500)) {
    const double y = random.number(-100, 100);
    const TQPolynomialRoots found = TQBezierSegmentIntersectionsWithHorizontalLine(segment, y);
    for (const double t : found) {
      ASSERT_TRUE(t >= 0 && t <= 1);
      ASSERT_NEAR(TQBezierSegmentPointAtOffset(segment, t).y, y, 1e-12);
    }
    std::vector<double> sampled;
    constexpr int kSamples = 1000;
    for (int i = 0; i < kSamples; ++i) {
      const double t = static_cast<double>(i) / kSamples;
      const double here = TQBezierSegmentPointAtOffset(segment, t).y - y;
      const double next = TQBezierSegmentPointAtOffset(segment, t + 1.0 / kSamples).y - y;
      if ((here < 0) != (next < 0)) sampled.push_back(t + 0.5 / kSamples);
    }
    ASSERT_EQ(used(found).size() % 2, sampled.size() % 2);
    ASSERT_GE(used(found).size(), sampled.size());
    if (used(found).size() == sampled.size()) {
      ASSERT_THAT(used(found), testing::Pointwise(testing::DoubleNear(1e-3), sampled));
    } else {  // two crossings between the same two samples
      ASSERT_LT(found.roots[found.count - 1] - found.roots[0], 1.0 + 1.0 / kSamples);
    }
  }
}

TEST(BezierSegment, LineCrossingsGiveEndsExactlyAndTouchesOnce) {
  const auto arch = TQBezierSegment::cubic({0.1, 0}, {0.7, 4}, {4, 4}, {4.3, 0});
  EXPECT_THAT(used(TQBezierSegmentIntersectionsWithHorizontalLine(arch, 0)),
              testing::ElementsAre(0, 1));
  EXPECT_THAT(used(TQBezierSegmentIntersectionsWithVerticalLine(arch, 0.1)),
              testing::ElementsAre(0));
  EXPECT_THAT(used(TQBezierSegmentIntersectionsWithHorizontalLine(arch, 3)),
              testing::ElementsAre(0.5));
  EXPECT_EQ(TQBezierSegmentIntersectionsWithHorizontalLine(arch, 3.0000001).count, 0);
  EXPECT_EQ(TQBezierSegmentIntersectionsWithHorizontalLine(arch, 2.9999999).count, 2);
  const auto wave = TQBezierSegment::cubic({0, 0}, {1, 3}, {2, -3}, {3, 0});
  EXPECT_THAT(used(TQBezierSegmentIntersectionsWithHorizontalLine(wave, 0)),
              testing::ElementsAre(0, 0.5, 1));
  const auto flat = TQBezierSegment::straight({0, 2}, {5, 2});
  EXPECT_EQ(TQBezierSegmentIntersectionsWithHorizontalLine(flat, 2).count, 0);
  EXPECT_THAT(used(TQBezierSegmentIntersectionsWithVerticalLine(flat, 5)), testing::ElementsAre(1));
  const auto triple = TQBezierSegment::cubic({0, -1}, {1, 1}, {2, -1}, {3, 1});
  EXPECT_THAT(used(TQBezierSegmentIntersectionsWithHorizontalLine(triple, 0)),
              testing::ElementsAre(testing::DoubleNear(0.5, 1e-5)));
}

}  // namespace
}  // namespace tq
