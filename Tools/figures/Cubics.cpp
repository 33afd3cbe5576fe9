#include <string>
#include <vector>

#include <TQFoundation/geometry/curves/TQBezierSegment.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include "Drawing.h"
#include "Figures.h"

namespace figures {
namespace {

using namespace tq;

/// Control points in a unit square; y points up.
struct Case {
  const char* name;
  Point controls[4];
};

constexpr Case kCases[] = {
    {"arch", {{0, 0.1}, {0.2, 1}, {0.8, 1}, {1, 0.1}}},
    {"one inflection", {{0, 0.2}, {0.35, 1.1}, {0.65, 0.05}, {1, 0.95}}},
    {"two inflections", {{0, 0.1}, {0.8, 1.1}, {0.2, 1.1}, {1, 0.1}}},
    {"cusp", {{0, 0.1}, {1, 1.1}, {0, 1.1}, {1, 0.1}}},
    {"loop", {{0.1, 0.1}, {1.25, 1.1}, {-0.25, 1.1}, {0.9, 0.1}}},
    {"straight", {{0, 0.1}, {0.3, 0.37}, {0.7, 0.73}, {1, 1}}},
};

constexpr Size kPanel{240, 230};

TQBezierSegment placed(const Case& shape, Point origin) {
  const auto place = [origin](Point p) {
    return Point{origin.x + 45 + 150 * p.x, origin.y + 195 - 130 * p.y};
  };
  const Point* const p = shape.controls;
  return TQBezierSegment::cubic(place(p[0]), place(p[1]), place(p[2]), place(p[3]));
}

/// Returns the self-intersection: the intersection of the two halves, other than their shared end.
std::vector<Point> ownCrossings(const TQBezierSegment& segment) {
  TQBezierSegment left;
  TQBezierSegment right;
  TQBezierSegmentSplit(segment, 0.5, &left, &right);
  std::vector<Point> crossings;
  TQBezierSegmentIntersections(left, right, [&](double t, double u) {
    const auto refined = TQBezierSegmentRefineIntersection(left, right, {t, u});
    if (refined.a < 0.999) crossings.push_back(TQBezierSegmentPointAtOffset(left, refined.a));
  });
  return crossings;
}

std::string told(const TQBezierSegment& segment, const TQPolynomialRoots& inflections,
                 std::size_t crossings) {
  if (crossings != 0) return "no inflection, crosses itself";
  if (inflections.count == 0) return "no inflection";
  const bool isCusp =
      VectorGetLength(TQBezierSegmentDerivative(segment, inflections.roots[0])) < 1e-6;
  std::string words = isCusp                   ? "cusp at t = "
                      : inflections.count == 1 ? "inflection at t = "
                                               : "inflections at t = ";
  const char* separator = "";
  for (const double t : inflections) {
    words += separator + numberText(t, 2);
    separator = " and ";
  }
  return words;
}

void drawCase(Drawing& drawing, const Case& shape, Point origin) {
  const TQBezierSegment segment = placed(shape, origin);
  drawing.rect(TQBezierSegmentGetBounds(segment),
               {.stroke = ink::green, .width = 1, .dash = "4 4"});
  drawing.polyline(segment.used(), {.stroke = ink::faint});
  drawing.curve(segment, {.stroke = ink::blue, .width = 3});
  for (const Point control : segment.used()) {
    drawing.circle(control, 3.5, {.stroke = ink::quiet, .fill = ink::paper});
  }

  const TQPolynomialRoots inflections = TQBezierSegmentInflectionOffsets(segment);
  for (const double t : inflections) {
    drawing.circle(TQBezierSegmentPointAtOffset(segment, t), 5,
                   {.stroke = ink::paper, .width = 2, .fill = ink::red});
  }
  const std::vector<Point> crossings = ownCrossings(segment);
  for (const Point crossing : crossings) {
    drawing.circle(crossing, 5, {.stroke = ink::paper, .width = 2, .fill = ink::amber});
  }
  const Point middle{origin.x + kPanel.width / 2, origin.y};
  drawing.text(shape.name, {middle.x, middle.y + 22}, {.isBold = true});
  drawing.text(told(segment, inflections, crossings.size()), {middle.x, middle.y + 210},
               {.fill = ink::quiet, .size = 11});
}

}  // namespace

std::string cubics() {
  Drawing drawing({3 * kPanel.width, 2 * kPanel.height + 40},
                  "A cubic's cases: control polygons, tight bounds and inflections");
  for (int i = 0; i < 6; ++i) {
    drawCase(drawing, kCases[i], {(i % 3) * kPanel.width, (i / 3) * kPanel.height});
  }
  const double y = 2 * kPanel.height + 14;
  drawing.polyline(std::vector<Point>{{60, y}, {90, y}}, {.stroke = ink::faint});
  drawing.circle({75, y}, 3.5, {.stroke = ink::quiet, .fill = ink::paper});
  drawing.text("control polygon", {100, y}, {.size = 11, .anchor = "start"});
  drawing.rect({240, y - 7, 26, 14}, {.stroke = ink::green, .width = 1, .dash = "4 4"});
  drawing.text("tight bounds", {276, y}, {.size = 11, .anchor = "start"});
  drawing.circle({408, y}, 5, {.stroke = ink::paper, .width = 2, .fill = ink::red});
  drawing.text("inflection, or cusp", {420, y}, {.size = 11, .anchor = "start"});
  drawing.circle({578, y}, 5, {.stroke = ink::paper, .width = 2, .fill = ink::amber});
  drawing.text("crossing", {590, y}, {.size = 11, .anchor = "start"});
  return drawing.svg();
}

}  // namespace figures
