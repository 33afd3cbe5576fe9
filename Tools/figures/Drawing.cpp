#include "Drawing.h"

#include <charconv>
#include <cmath>

#include <TQFoundation/geometry/values/VectorAlgebra.h>

namespace figures {
namespace {

/// Returns ` name="value"`.
std::string attribute(std::string_view name, std::string_view value) {
  return std::string(" ").append(name).append("=\"").append(value).append("\"");
}
std::string attribute(std::string_view name, double value) {
  return attribute(name, numberText(value));
}

std::string pairText(tq::Point point) { return numberText(point.x) + " " + numberText(point.y); }

std::string escaped(std::string_view words) {
  std::string text;
  for (const char c : words) {
    if (c == '<') {
      text += "&lt;";
    } else if (c == '&') {
      text += "&amp;";
    } else {
      text += c;
    }
  }
  return text;
}

}  // namespace

std::string numberText(double number, int digits) {
  char text[64];
  const double scale = std::pow(10, digits);
  const double rounded = std::round(number * scale) / scale;
  return {text, std::to_chars(text, text + sizeof text, rounded + 0.0).ptr};
}

Drawing::Drawing(tq::Size size, std::string_view title) {
  svg_ = "<svg xmlns=\"http://www.w3.org/2000/svg\"" + attribute("width", size.width) +
         attribute("height", size.height) + " viewBox=\"0 0 " + numberText(size.width) + " " +
         numberText(size.height) + "\" font-family=\"DejaVu Sans, Verdana, sans-serif\"" +
         " stroke-linecap=\"round\" stroke-linejoin=\"round\">\n<title>" + escaped(title) +
         "</title>\n";
  rect({0, 0, size.width, size.height}, {.stroke = "none", .fill = ink::paper}, 8);
}

void Drawing::finish(const Style& style) {
  svg_ += attribute("fill", style.fill);
  if (style.fillOpacity != 1) svg_ += attribute("fill-opacity", numberText(style.fillOpacity, 2));
  if (style.stroke != "none") {
    svg_ += attribute("stroke", style.stroke) + attribute("stroke-width", style.width);
  }
  if (!style.dash.empty()) svg_ += attribute("stroke-dasharray", style.dash);
  svg_ += "/>\n";
}

void Drawing::line(tq::Point from, tq::Point to, const Style& style) {
  svg_ += "<path d=\"M" + pairText(from) + "L" + pairText(to) + "\"";
  finish(style);
}

void Drawing::arrow(tq::Point from, tq::Point to, const Style& style) {
  using namespace tq;
  const Vector along = VectorNormalise(to - from);
  const Vector across = VectorGetPerpendicular(along);
  const double head = 3 + 2.5 * style.width;
  const Point base = to - along * head;
  line(from, base, style);
  const Point left = base + across * (head * 0.5);
  const Point right = base - across * (head * 0.5);
  svg_ += "<path d=\"M" + pairText(to) + "L" + pairText(left) + "L" + pairText(right) + "Z\"";
  finish({.stroke = "none", .fill = style.stroke});
}

void Drawing::rect(const tq::Rect& rect, const Style& style, double radius) {
  svg_ += "<rect" + attribute("x", tq::RectGetMinX(rect)) + attribute("y", tq::RectGetMinY(rect)) +
          attribute("width", tq::RectGetWidth(rect)) + attribute("height", tq::RectGetHeight(rect));
  if (radius != 0) svg_ += attribute("rx", radius);
  finish(style);
}

void Drawing::circle(tq::Point center, double radius, const Style& style) {
  svg_ +=
      "<circle" + attribute("cx", center.x) + attribute("cy", center.y) + attribute("r", radius);
  finish(style);
}

void Drawing::polyline(std::span<const tq::Point> points, const Style& style) {
  svg_ += "<path d=\"";
  char command = 'M';
  for (const tq::Point point : points) {
    svg_ += command + pairText(point);
    command = 'L';
  }
  svg_ += "\"";
  finish(style);
}

void Drawing::curve(const tq::TQBezierSegment& segment, const Style& style) {
  constexpr char kCommands[] = {'L', 'Q', 'C'};
  svg_ += "<path d=\"M" + pairText(segment.start());
  char command = kCommands[static_cast<std::size_t>(segment.degree)];
  for (const tq::Point point : segment.used().subspan(1)) {
    svg_ += command + pairText(point);
    command = ' ';
  }
  svg_ += "\"";
  finish(style);
}

void Drawing::text(std::string_view words, tq::Point at, const TextStyle& style) {
  // The middle of lower-case letters is a third of the font size above the baseline.
  svg_ += "<text";
  if (style.turnDegrees == 0) {
    svg_ += attribute("x", at.x) + attribute("y", at.y + 0.35 * style.size);
  } else {
    svg_ += attribute("transform", "translate(" + pairText(at) + ") rotate(" +
                                       numberText(style.turnDegrees) + ")") +
            attribute("y", 0.35 * style.size);
  }
  svg_ += attribute("font-size", style.size) + attribute("text-anchor", style.anchor) +
          attribute("fill", style.fill);
  if (style.isBold) svg_ += attribute("font-weight", "bold");
  svg_ += ">" + escaped(words) + "</text>\n";
}

std::string Drawing::svg() const { return svg_ + "</svg>\n"; }

}  // namespace figures
