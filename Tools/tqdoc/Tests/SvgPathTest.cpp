#include "Svg/SvgPath.h"

#include "Support.h"

namespace tqdoc {
namespace {

struct Parsed {
  tq::Ref<PathData> path;
  std::size_t fault;
  std::string text = {};  ///< steps and points
};

[[nodiscard]] Parsed parse(std::string_view data) {
  PathBuilder builder;
  const std::size_t fault = parsePath(data, builder);
  Parsed parsed{builder.take(), fault};
  parsed.path->forEach([&text = parsed.text](char step, const tq::Point* points) {
    text += step;
    for (int i = 0; i < PathData::pointsOf(step); ++i) {
      text += tq::NumberValue(points[i].x).text() + "," + tq::NumberValue(points[i].y).text() + " ";
    }
  });
  return parsed;
}

TEST(SvgPath, ReadsEveryCommandUpToTheFirstError) {
  constexpr std::size_t kNone = std::string_view::npos;
  const tq::test::Rows<std::string, const char*, std::size_t> cases{
      {"", "", kNone},
      {"M1 2L3 4", "M1,2 L3,4 ", kNone},
      {" M 1,2 , 3 , 4 ", "M1,2 L3,4 ", kNone},
      {"M1 2 3 4 5 6", "M1,2 L3,4 L5,6 ", kNone},
      {"m1 2 3 4 5 6z", "M1,2 L4,6 L9,12 Z", kNone},
      {"M1-2.5.5.5", "M1,-2.5 L0.5,0.5 ", kNone},
      {"M1e1 2E-1+3+4", "M10,0.2 L3,4 ", kNone},
      {"M1 1H5V6h-1v-2", "M1,1 L5,1 L5,6 L4,6 L4,4 ", kNone},
      {"M1 1C1 2 3 4 5 6c1 1 2 2 3 3", "M1,1 C1,2 3,4 5,6 C6,7 7,8 8,9 ", kNone},
      {"M0 0C0 1 2 3 4 4S7 7 8 8", "M0,0 C0,1 2,3 4,4 C6,5 7,7 8,8 ", kNone},
      {"M1 1S7 7 8 8", "M1,1 C1,1 7,7 8,8 ", kNone},
      {"M0 0C0 1 2 3 4 4L5 5s1 1 2 2", "M0,0 C0,1 2,3 4,4 L5,5 C5,5 6,6 7,7 ", kNone},
      {"M0 0Q3 3 6 0", "M0,0 C2,2 4,2 6,0 ", kNone},
      {"M0 0Q3 3 6 0T12 0", "M0,0 C2,2 4,2 6,0 C8,-2 10,-2 12,0 ", kNone},
      {"M0 0q3 3 6 0Z", "M0,0 C2,2 4,2 6,0 Z", kNone},
      {"M1 1L2 2ZL3 3", "M1,1 L2,2 ZM1,1 L3,3 ", kNone},
      {"M1 1L2 2zm1 1l1 0", "M1,1 L2,2 ZM2,2 L3,2 ", kNone},
      {"M0 0A0 5 0 0 1 3 4", "M0,0 L3,4 ", kNone},
      {"M2 2A5 5 0 0 1 2 2L3 3", "M2,2 L3,3 ", kNone},
      {"M1e999-1e999 1e-999 0", "M1000000000000,-1000000000000 L0,0 ", kNone},
      {"M0 0" + std::string(400, '9') + " 1", "M0,1000000000000 ", 0},
      {"L1 1", "", 0},
      {"M1 1 2", "M1,1 ", 0},
      {"M1 1 L2 2 X 3 3", "M1,1 L2,2 ", 10},
      {"M1 1L", "M1,1 ", 4},
      {"M1 1L2 nan", "M1,1 ", 4},
      {"M1 1C1 1 2 2", "M1,1 ", 4},
      {"M1 1A1 1 0 2 0 3 3", "M1,1 ", 4},
  };
  for (const auto& [data, text, fault] : cases) {
    const Parsed parsed = parse(data);
    EXPECT_EQ(parsed.text, text) << data;
    EXPECT_EQ(parsed.fault, fault) << data;
  }
}

/// Returns the largest distance of the outline from the ellipse, relative to the radius.
[[nodiscard]] double strayFromEllipse(const PathData& path, tq::Point centre, tq::Size radii,
                                      double degrees) {
  const double phi = degrees * std::numbers::pi / 180;
  double worst = 0;
  const tq::Path outline = path.outline({});
  for (auto all = tq::TQBezierSegmentIteratorMake(outline); auto segment = all.next();) {
    for (int i = 0; i <= 16; ++i) {
      const tq::Point at = tq::TQBezierSegmentPointAtOffset(*segment, i / 16.0);
      const double x = at.x - centre.x, y = at.y - centre.y;
      const double u = (std::cos(phi) * x + std::sin(phi) * y) / radii.width;
      const double v = (-std::sin(phi) * x + std::cos(phi) * y) / radii.height;
      worst = std::max(worst, std::abs(std::hypot(u, v) - 1));
    }
  }
  return worst;
}

TEST(SvgPath, ArcsFollowTheirEllipse) {
  const tq::test::Rows<const char*, tq::Point, tq::Size, double, int> cases{
      {"M10 0A10 10 0 0 1 0 10", {0, 0}, {10, 10}, 0, 1},
      {"M10 0A10 10 0 1 0 0 10", {0, 0}, {10, 10}, 0, 3},
      {"M10 0A10 10 0 0 0 0 10", {10, 10}, {10, 10}, 0, 1},
      {"M10 0A10 10 0 1 1 0 10", {10, 10}, {10, 10}, 0, 3},
      {"M0 0A1 1 0 0 1 10 0", {5, 0}, {5, 5}, 0, 2},      // radii too short
      {"M-20 0A20-5 0 0 1 20 0", {0, 0}, {20, 5}, 0, 2},  // a negative radius
      {"M0-20A20 5 90 1 1 0 20", {0, 0}, {20, 5}, 90, 2},
      {"M10 0A10 10 0 000 10", {10, 10}, {10, 10}, 0, 1},  // flags without separators
  };
  for (const auto& [data, centre, radii, degrees, cubics] : cases) {
    SCOPED_TRACE(data);
    const Parsed parsed = parse(data);
    EXPECT_EQ(parsed.fault, std::string_view::npos);
    EXPECT_EQ(std::ranges::count(parsed.path->steps(), 'C'), cubics);
    EXPECT_LT(strayFromEllipse(*parsed.path, centre, radii, degrees), 3e-4);
  }
}

TEST(PathData, BoundsAreTight) {
  const tq::test::Rows<const char*, tq::AffineTransform, tq::Rect> cases{
      {"", {}, tq::RectNull},
      {"M3 4", {}, tq::RectNull},
      {"M0 0C0 4 4 4 4 0", {}, {0, 0, 4, 3}},
      {"M0 0Q2 4 4 0", {2, 0, 0, -1, 1, 0}, {1, -2, 8, 2}},
      {"M0 0C9-6-7-6 2 0", {}, {-0.852026, -4.5, 3.704052, 4.5}},  // x from a million samples
  };
  for (const auto& [data, transform, bounds] : cases) {
    SCOPED_TRACE(data);
    expectNear(parse(data).path->tightBounds(transform), bounds, 1e-6);
  }
}

}  // namespace
}  // namespace tqdoc
