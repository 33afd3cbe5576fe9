#include <TQFoundation/geometry/curves/Path.h>

#include <TQFoundation/geometry/curves/CGContext+TQFoundation.h>
#include <TQFoundation/geometry/curves/TQBezierSegmentIterator.h>

#include "support/Iterators.h"

namespace {

struct Element {
  PathElementType type;
  std::vector<Point> points;
  bool operator==(const Element&) const = default;
};

std::vector<Element> elements(const Path& path) {
  std::vector<Element> result;
  for (const auto& [type, points] : path) result.push_back({type, {points.begin(), points.end()}});
  return result;
}

std::vector<TQBezierSegment> segments(const Path& path) {
  std::vector<TQBezierSegment> result;
  for (auto it = TQBezierSegmentIteratorMake(path); const auto segment = it.next();) {
    result.push_back(*segment);
  }
  return result;
}

Path example() {
  Path path;
  path.moveTo({0, 0});
  path.lineTo({4, 0});
  path.quadraticTo({6, 2}, {4, 4});
  path.close();
  path.cubicTo({1, 3}, {2, 3}, {3, 0});  // starts a new subpath at the last one's start
  path.moveTo({50, 50});
  return path;
}

TEST(Path, KeepsItsElementsInOrder) {
  using enum PathElementType;
  const std::vector<Element> once{{move, {{0, 0}}},
                                  {line, {{4, 0}}},
                                  {quadratic, {{6, 2}, {4, 4}}},
                                  {close, {}},
                                  {cubic, {{1, 3}, {2, 3}, {3, 0}}},
                                  {move, {{50, 50}}}};
  Path path;
  path.append(example());
  EXPECT_EQ(elements(path), once);
  expectIterators(path, 6, [&](std::ptrdiff_t i, const PathElement& element) {
    return element.type == once[static_cast<std::size_t>(i)].type;
  });
  path.append(path);
  path.append(Path());
  path.close();
  std::vector<Element> expected = once;
  expected.insert(expected.end(), once.begin(), once.end());
  expected.push_back({close, {}});
  EXPECT_EQ(elements(path), expected);
  EXPECT_EQ(path.currentPoint(), (Point{50, 50}));
  EXPECT_EQ(Path().currentPoint(), std::nullopt);
  EXPECT_EQ(Path().transformed({1, 0, 0, 1, 5, 7}), Path());
}

TEST(Path, SegmentsAreWhatItDraws) {
  EXPECT_THAT(segments(example()),
              testing::ElementsAre(TQBezierSegment::straight({0, 0}, {4, 0}),
                                   TQBezierSegment::quadratic({4, 0}, {6, 2}, {4, 4}),
                                   TQBezierSegment::straight({4, 4}, {0, 0}),
                                   TQBezierSegment::cubic({0, 0}, {1, 3}, {2, 3}, {3, 0})));
  Path closedTwice = Path::pathWithRect({0, 0, 2, 2});
  closedTwice.close();  // already there: draws nothing
  EXPECT_EQ(segments(closedTwice).size(), 4U);
}

TEST(Path, BoundsAreTightAndLeaveALoneMoveOut) {
  EXPECT_EQ(example().bounds(), (Rect{0, 0, 5, 4}));
  EXPECT_EQ(example().controlPointBounds(), (Rect{0, 0, 50, 50}));
  EXPECT_TRUE(RectIsNull(Path().bounds()));
  const Path moved =
      example().transformed({0, 1, -1, 0, 10, 20});  // rotated by a quarter turn, then moved
  EXPECT_EQ(moved.bounds(), (Rect{6, 20, 4, 5}));
  EXPECT_EQ(moved.currentPoint(), (Point{-40, 70}));
}

TEST(PathDeathTest, DrawingNeedsACurrentPoint) {
  Path path;
  const auto stops = testing::KilledBySignal(SIGABRT);
  EXPECT_EXIT(path.lineTo({1, 1}), stops, "isEmpty.*function lineTo, file .*Source/Path, line");
  EXPECT_EXIT(path.quadraticTo({1, 1}, {2, 2}), stops, "function quadraticTo");
  EXPECT_EXIT(path.cubicTo({1, 1}, {2, 2}, {3, 3}), stops, "function cubicTo");
  EXPECT_EXIT(path.close(), stops, "function close");
}

constexpr Rect kRect{0, 0, 100, 60};

Path rounded(const Rect& rect, double radiusX, double radiusY) {
  return CGPathCreateWithRoundedRectSafeCorners(rect, radiusX, radiusY);
}

TEST(RoundedRect, HasTenElementsInTheDocumentedOrder) {
  // The controls are 0.5522847498 · 10 beyond the ends of the sides.
  const double k = 5.522847498;
  using enum PathElementType;
  const std::vector<Element> expected{
      {move, {{100, 30}}},
      {line, {{100, 50}}},
      {cubic, {{100, 50 + k}, {90 + k, 60}, {90, 60}}},
      {line, {{10, 60}}},
      {cubic, {{10 - k, 60}, {0, 50 + k}, {0, 50}}},
      {line, {{0, 10}}},
      {cubic, {{0, 10 - k}, {10 - k, 0}, {10, 0}}},
      {line, {{90, 0}}},
      {cubic, {{90 + k, 0}, {100, 10 - k}, {100, 10}}},
      {close, {}},
  };
  EXPECT_EQ(elements(rounded(kRect, 10, 10)), expected);
  EXPECT_EQ(elements(rounded({100, 60, -100, -60}, 10, 10)), expected);
  const AffineTransform transform{1, 0, 0, 2, 3, 4};
  EXPECT_EQ(CGPathCreateWithRoundedRectSafeCorners(kRect, 10, 10, &transform),
            rounded(kRect, 10, 10).transformed(transform));
}

TEST(RoundedRect, LimitsItsRadiiToHalfTheRect) {
  EXPECT_EQ(rounded(kRect, 1e9, 1e9), rounded(kRect, 50, 30));
  for (const double none : {0.0, -5.0, kNaN}) {
    EXPECT_EQ(rounded(kRect, none, 10), Path::pathWithRect(kRect));
    EXPECT_EQ(rounded(kRect, 10, none), Path::pathWithRect(kRect));
  }
  EXPECT_TRUE(rounded(RectNull, 1, 1).isEmpty());
}

}  // namespace
