#include <cstddef>
#include <string>

#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include "Drawing.h"
#include "Figures.h"

namespace figures {
namespace {

using namespace tq;

constexpr Rect kRect(230, 100, 260, 200);

/// The position of a point's label relative to the point.
struct Label {
  const char* name;
  Vector offset;
  std::string_view anchor;
};

constexpr Label kLabels[] = {
    {"minXMinY", {-14, -12}, "end"},  {"maxXMinY", {14, -12}, "start"},
    {"minXMaxY", {-14, 12}, "end"},   {"maxXMaxY", {14, 12}, "start"},
    {"midXMinY", {0, -30}, "middle"}, {"minXMidY", {-14, 0}, "end"},
    {"maxXMidY", {14, 0}, "start"},   {"midXMaxY", {0, 30}, "middle"},
    {"center", {0, 26}, "middle"},
};

void drawCorner(Drawing& drawing, int code) {
  const auto corner = static_cast<TQCorner>(code);
  const Point at = TQRectPointForCorner(kRect, corner);
  const Label& label = kLabels[code];
  const Point first = at + label.offset + Vector{0, -8};
  const Point second = at + label.offset + Vector{0, 8};
  const std::string words = std::to_string(code) + " " + label.name;
  drawing.text(words, first, {.anchor = label.anchor, .isBold = true});
  drawing.text("mask " + std::to_string(TQCornerMaskFromCorner(corner)), second,
               {.fill = ink::quiet, .size = 11, .anchor = label.anchor});
  drawing.circle(at, 5, {.stroke = ink::paper, .width = 2, .fill = ink::blue});
}

/// A place inside the rect, along the edge, at a third of the distance from its middle.
void drawEdge(Drawing& drawing, Edge edge, std::string_view name) {
  const Point middle = TQRectGetMidOfEdge(kRect, edge);
  const Point center = TQRectPointForCorner(kRect, TQCorner::center);
  const Vector inwards = VectorNormalise(center - middle) * 16;
  const bool isVertical = edge == Edge::minX || edge == Edge::maxX;
  drawing.text("edge " + std::to_string(static_cast<int>(edge)) + " " + std::string(name),
               middle + inwards,
               {.fill = ink::green, .size = 12, .turnDegrees = isVertical ? -90.0 : 0});
}

}  // namespace

std::string corners() {
  Drawing drawing({720, 400}, "The nine points of a rect, its edges, and their codes");
  drawing.arrow({40, 40}, {110, 40}, {.stroke = ink::quiet});
  drawing.arrow({40, 40}, {40, 110}, {.stroke = ink::quiet});
  drawing.text("x", {122, 40}, {.fill = ink::quiet});
  drawing.text("y", {40, 122}, {.fill = ink::quiet});

  drawing.rect(kRect, {.fill = ink::blue, .fillOpacity = 0.06});
  drawEdge(drawing, Edge::minX, "minX");
  drawEdge(drawing, Edge::minY, "minY");
  drawEdge(drawing, Edge::maxX, "maxX");
  drawEdge(drawing, Edge::maxY, "maxY");
  for (int code = 0; code <= static_cast<int>(TQCorner::center); ++code) drawCorner(drawing, code);
  return drawing.svg();
}

}  // namespace figures
