#include "Svg/SvgShapes.h"

#include <algorithm>
#include <string>

#include "Svg/SvgPath.h"
#include "Svg/SvgTransform.h"

namespace tqdoc {
namespace {

constexpr std::string_view kOutlines[] = {"path", "rect",     "circle", "ellipse",
                                          "line", "polyline", "polygon"};

void leaveOutAttribute(SvgContext& context, pugi::xml_node node, std::string_view attribute) {
  context.leaveOut("invalid " + std::string(attribute) + " of " +
                   std::string(context.nameOf(node)));
}

void addEllipse(tq::Point centre, tq::Size radii, PathBuilder& path) {
  if (!(radii.width > 0 && radii.height > 0)) return;
  const tq::Point right{centre.x + radii.width, centre.y};
  const tq::Point left{centre.x - radii.width, centre.y};
  path.moveTo(right);
  path.arcTo(radii, 0, false, true, left);
  path.arcTo(radii, 0, false, true, right);
  path.close();
}

void addRect(const tq::Rect& rect, tq::Size radii, PathBuilder& path) {
  const double width = rect.size.width;
  const double height = rect.size.height;
  if (!(width > 0 && height > 0)) return;
  const double rx = std::min(radii.width, width / 2);
  const double ry = std::min(radii.height, height / 2);
  const double left = rect.origin.x;
  const double top = rect.origin.y;
  const double right = left + width;
  const double bottom = top + height;
  if (!(rx > 0 && ry > 0)) {
    path.moveTo({left, top});
    path.lineTo({right, top});
    path.lineTo({right, bottom});
    path.lineTo({left, bottom});
    return path.close();
  }
  const tq::Size corner{rx, ry};
  path.moveTo({left + rx, top});
  path.lineTo({right - rx, top});
  path.arcTo(corner, 0, false, true, {right, top + ry});
  path.lineTo({right, bottom - ry});
  path.arcTo(corner, 0, false, true, {right - rx, bottom});
  path.lineTo({left + rx, bottom});
  path.arcTo(corner, 0, false, true, {left, bottom - ry});
  path.lineTo({left, top + ry});
  path.arcTo(corner, 0, false, true, {left + rx, top});
  path.close();
}

/// An absent radius equals the other one.
[[nodiscard]] tq::Size cornerOf(SvgContext& context, pugi::xml_node node, Viewport viewport) {
  double rx = lengthOf(context, node, "rx", viewport, Extent::horizontal, -1);
  double ry = lengthOf(context, node, "ry", viewport, Extent::vertical, -1);
  if (rx < 0) rx = ry;
  if (ry < 0) ry = rx;
  return {std::max(rx, 0.0), std::max(ry, 0.0)};
}

/// Returns the points before the first error, as for path data.
void addPoints(SvgContext& context, pugi::xml_node node, bool closed, PathBuilder& path) {
  Scanner scanner(attributeOf(node, "points"));
  scanner.skipSpace();
  for (bool first = true; !scanner.atEnd(); first = false) {
    const auto x = scanner.takeNumber();
    scanner.skipSeparator();
    const auto y = x ? scanner.takeNumber() : std::nullopt;
    if (!y) {
      leaveOutAttribute(context, node, "points");
      break;
    }
    scanner.skipSeparator();
    first ? path.moveTo({*x, *y}) : path.lineTo({*x, *y});
  }
  if (closed) path.close();
}

}  // namespace

bool isOutline(std::string_view name) noexcept {
  return std::ranges::find(kOutlines, name) != std::end(kOutlines);
}

tq::Ref<PathData> readOutline(SvgContext& context, pugi::xml_node node, Viewport viewport) {
  const auto across = [&](const char* name) {
    return lengthOf(context, node, name, viewport, Extent::horizontal);
  };
  const auto down = [&](const char* name) {
    return lengthOf(context, node, name, viewport, Extent::vertical);
  };
  PathBuilder path;
  const std::string_view name = context.nameOf(node);
  if (name == "path") {
    if (parsePath(attributeOf(node, "d"), path) != std::string_view::npos) {
      leaveOutAttribute(context, node, "d");
    }
  } else if (name == "rect") {
    addRect(frameOf(context, node, viewport), cornerOf(context, node, viewport), path);
  } else if (name == "circle") {
    const double r = lengthOf(context, node, "r", viewport, Extent::diagonal);
    addEllipse({across("cx"), down("cy")}, {r, r}, path);
  } else if (name == "ellipse") {
    addEllipse({across("cx"), down("cy")}, cornerOf(context, node, viewport), path);
  } else if (name == "line") {
    path.moveTo({across("x1"), down("y1")});
    path.lineTo({across("x2"), down("y2")});
  } else {
    addPoints(context, node, name == "polygon", path);
  }
  context.charge(path.coordinateCount(), node);
  return path.take();
}

tq::Ref<PathData> rectanglePath(const tq::Rect& rect) {
  PathBuilder path;
  addRect(rect, {}, path);
  return path.take();
}

double lengthOf(SvgContext& context, pugi::xml_node node, const char* attribute, Viewport viewport,
                Extent extent, double otherwise) {
  const std::string_view text = attributeOf(node, attribute);
  if (text.empty() || text == "auto") return otherwise;
  const auto length = parseLength(text, viewport, extent);
  if (!length) leaveOutAttribute(context, node, attribute);
  return length.value_or(otherwise);
}

tq::AffineTransform transformOf(SvgContext& context, pugi::xml_node node, const char* attribute) {
  const auto transform = parseTransform(attributeOf(node, attribute));
  if (!transform) leaveOutAttribute(context, node, attribute);
  return transform.value_or(tq::AffineTransformIdentity);
}

std::optional<tq::Rect> viewBoxOf(SvgContext& context, pugi::xml_node node) {
  const std::string_view text = attributeOf(node, "viewBox");
  if (trimmed(text).empty()) return std::nullopt;
  const auto box = parseNumbers(text);
  if (box && box->size() == 4 && (*box)[2] > 0 && (*box)[3] > 0) {
    return tq::Rect((*box)[0], (*box)[1], (*box)[2], (*box)[3]);
  }
  leaveOutAttribute(context, node, "viewBox");
  return std::nullopt;
}

tq::Rect frameOf(SvgContext& context, pugi::xml_node node, Viewport viewport, tq::Size otherwise) {
  return {lengthOf(context, node, "x", viewport, Extent::horizontal),
          lengthOf(context, node, "y", viewport, Extent::vertical),
          lengthOf(context, node, "width", viewport, Extent::horizontal, otherwise.width),
          lengthOf(context, node, "height", viewport, Extent::vertical, otherwise.height)};
}

}  // namespace tqdoc
