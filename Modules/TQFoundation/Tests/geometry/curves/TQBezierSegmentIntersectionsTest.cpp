#include <gmock/gmock.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include "support/Expectations.h"
#include "support/RandomBezier.h"

namespace tq {
namespace {

using namespace test;

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kLeaf = 0x1p-14;

struct Found {
  std::vector<TQBezierSegmentOffsets> offsets;
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

/// Returns the crossings of two polygons with `legs` sides each, by testing every pair.
std::vector<TQBezierSegmentOffsets> sampledCrossings(const TQBezierSegment& a,
                                                     const TQBezierSegment& b, int legs) {
  std::vector<Point> onA, onB;
  for (int i = 0; i <= legs; ++i) {
    onA.push_back(TQBezierSegmentPointAtOffset(a, static_cast<double>(i) / legs));
    onB.push_back(TQBezierSegmentPointAtOffset(b, static_cast<double>(i) / legs));
  }
  const auto side = [](Point p, Point q, Point r) {
    return (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x) > 0;
  };
  std::vector<TQBezierSegmentOffsets> found;
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
        ASSERT_TRUE(std::any_of(found.offsets.begin(), found.offsets.end(), [&](auto offsets) {
          return std::fabs(offsets.a - expected.a) <= 2.0 / kLegs &&
                 std::fabs(offsets.b - expected.b) <= 2.0 / kLegs;
        }));
      }
      for (const auto& offsets : found.offsets) {
        const auto refined = TQBezierSegmentRefineIntersection(a, b, offsets);
        // The other reports are near-tangents: only the bounds of the smallest pieces intersect.
        ASSERT_LE(gap(a, b, offsets),
                  600 * 3 * kLeaf);  // three times the length of the longest polygon
        ASSERT_LE(gap(a, b, refined), gap(a, b, offsets));
        if (gap(a, b, refined) < 1e-9) {
          ASSERT_NEAR(offsets.a, refined.a, 0.50001 * kLeaf);
          ASSERT_NEAR(offsets.b, refined.b, 0.50001 * kLeaf);
        }
      }
      const auto ascends = [](auto x, auto y) { return x.a < y.a; };
      ASSERT_TRUE(found.offsets.size() != sampled.size() ||
                  std::is_sorted(found.offsets.begin(), found.offsets.end(), ascends));
    }
  }
  EXPECT_GT(crossings, 150U);
}

TEST(BezierIntersections, GiveCommonEndsExactlyAndOnce) {
  const Point p{0.1, 0.7};
  const auto a = TQBezierSegment::cubic({-3, -2}, {-1, 3}, {-0.3, 0.2}, p);
  const auto b = TQBezierSegment::quadratic(p, {0.9, 0.9}, {4, 7});
  EXPECT_THAT(intersections(a, b).offsets, ElementsAre(TQBezierSegmentOffsets{1, 0}));
  // A closed leaf shape: both ends are common.
  const auto there = TQBezierSegment::cubic({0, 0}, {0.3, 2}, {1.7, 2}, {2, 0});
  const auto back = TQBezierSegment::cubic({2, 0}, {1.7, -2}, {0.3, -2}, {0, 0});
  EXPECT_THAT(intersections(there, back).offsets,
              ElementsAre(TQBezierSegmentOffsets{0, 1}, TQBezierSegmentOffsets{1, 0}));
}

TEST(BezierIntersections, NineCrossingsOfTwoCubicsAreNine) {
  // y = T3(x) and x = T3(y), with the third Chebyshev polynomial T3, intersect where T9(x) = x.
  // These are the cosines of the multiples of π/4 and of π/5; two of them are the common ends.
  const auto a = TQBezierSegment::cubic({-1, -1}, {-1.0 / 3, 5}, {1.0 / 3, -5}, {1, 1});
  const auto b = TQBezierSegment::cubic({-1, -1}, {5, -1.0 / 3}, {-5, 1.0 / 3}, {1, 1});
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
  const auto cubic = TQBezierSegment::cubic({0, 0}, {1, 3}, {2, -1}, {4, 1});
  const auto reversed = TQBezierSegment::cubic({4, 1}, {2, -1}, {1, 3}, {0, 0});
  const auto point = TQBezierSegment::cubic({2, 2}, {2, 2}, {2, 2}, {2, 2});
  const auto line = TQBezierSegment::straight({0, 0}, {4, 4});
  const Rows<const char*, TQBezierSegment, TQBezierSegment, std::vector<TQBezierSegmentOffsets>>
      cases{
          {"identical", cubic, cubic, {{0, 0}, {1, 1}}},
          {"reversed", cubic, reversed, {{0, 1}, {1, 0}}},
          {"two points at one place", point, point, {{0, 0}}},
          {"two points apart", point, TQBezierSegment::straight({2, 3}, {2, 3}), {}},
          {"collinear, end to end", line, TQBezierSegment::straight({4, 4}, {9, 9}), {{1, 0}}},
          {"two crossings and less than a piece apart between them",
           TQBezierSegment::straight({0, 0}, {1000, 1000}),
           TQBezierSegment::quadratic({0, 0.96}, {500, 498.96}, {1000, 1000.96}),
           {{6553.5 * kLeaf, 6553.5 * kLeaf}, {9830.5 * kLeaf, 9830.5 * kLeaf}}},  // at 0.4 and 0.6
          {"the same, and pieces that meet on and off",
           TQBezierSegment::quadratic({0, 0}, {50, 10.02}, {100, 20}),
           TQBezierSegment::straight({-7, -1.399},
                                     {117, 23.409}),  // the first at 0.04577 and 0.79294
           {{749.5 * kLeaf, 1529.5 * kLeaf}, {12991.5 * kLeaf, 11401.5 * kLeaf}}},
      };
  for (const auto& [name, a, b, expected] : cases) {
    SCOPED_TRACE(name);
    const Found found = intersections(a, b);
    EXPECT_TRUE(found.isComplete);
    EXPECT_EQ(found.offsets, expected);
  }

  const auto overlapping = TQBezierSegment::straight({1.1, 1.1}, {9, 9});
  const Found overlap = intersections(line, overlapping);
  EXPECT_TRUE(overlap.isComplete);
  ASSERT_FALSE(overlap.offsets.empty());  // rounding decides which ends are common
  ASSERT_LE(overlap.offsets.size(), 2U);
  for (const auto offsets : overlap.offsets) EXPECT_LT(gap(line, overlapping, offsets), 1e-3);

  // Touches of the second and the third order: many small pieces meet, but only one report remains.
  const std::pair<TQBezierSegment, TQBezierSegment> touches[] = {
      {TQBezierSegment::quadratic({-1, 0}, {0.1, 2}, {1.2, 0}),
       TQBezierSegment::straight({-3, 1}, {4, 1})},
      {TQBezierSegment::cubic({0, -1}, {1, 2}, {2, 1}, {3, 4}),
       TQBezierSegment::straight({0, 0}, {3, 3})},
  };
  for (const auto& [curve, tangent] : touches) {
    const Found touch = intersections(curve, tangent);
    ASSERT_EQ(touch.offsets.size(), 1U);
    EXPECT_NEAR(touch.offsets[0].a, 0.5, 0.03);
  }

  // Both fold back and run along each other three times: this needs more work than the limit
  // allows.
  const auto folded = TQBezierSegment::cubic({0, 0}, {40, 0}, {-30, 0}, {10, 0});
  EXPECT_FALSE(intersections(folded, folded).offsets.empty());
}

TEST(BezierIntersections, BadSegmentsMeetNothing) {
  const auto line = TQBezierSegment::straight({0, 0}, {4, 4});
  auto unknown = line;
  unknown.degree = TQBezierDegree{9};
  EXPECT_THAT(intersections(line, TQBezierSegment::straight({0, 4}, {kNaN, 0})).offsets, IsEmpty());
  EXPECT_THAT(intersections(line, unknown).offsets, IsEmpty());
  const auto huge = TQBezierSegment::straight({-1e308, -1e308}, {1e308, 1e308});
  (void)intersections(huge, TQBezierSegment::straight({-1e308, 1e308}, {1e308, -1e308}));
  // One unit in the last place long: every piece soon becomes a point.
  const auto tiny = TQBezierSegment::straight({1e16, 0}, {1e16 + 2, 0});
  EXPECT_TRUE(intersections(tiny, tiny).isComplete);
}

}  // namespace
}  // namespace tq
