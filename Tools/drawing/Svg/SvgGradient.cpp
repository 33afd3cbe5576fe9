#include "Svg/SvgGradient.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "Model/Gradient.h"
#include "Svg/SvgShapes.h"

namespace tqdoc {
namespace {

[[nodiscard]] ModelPaint plain(const Color& color) {
  return {tq::String::of(colorText(color)), color.alpha};
}

/// A gradient and the chain of gradients from which it inherits attributes and stops.
class GradientReader {
 public:
  GradientReader(SvgContext& context, SvgStyleSheet& sheet, pugi::xml_node gradient,
                 Viewport viewport)
      : context_(context), sheet_(sheet), viewport_(viewport) {
    constexpr std::size_t kChainLimit = 32;
    for (pugi::xml_node node = gradient; node;) {
      if (!isGradient(node)) break;
      if (chain_.size() == kChainLimit || std::ranges::find(chain_, node) != chain_.end()) {
        context_.leaveOut("gradient that refers to itself");
        break;
      }
      chain_.push_back(node);
      const std::string_view href = hrefOf(node);
      node = context_.find(localReference(href));
      if (!href.empty() && !node) context_.leaveOut("gradient href without a target");
    }
  }

  [[nodiscard]] ModelPaint read(const tq::Rect& bounds) {
    std::vector<GradientStop> stops = readStops();
    if (stops.empty()) return {};
    const GradientStop last = stops.back();
    const ModelPaint solid = plain({last.red, last.green, last.blue, last.alpha});
    if (stops.size() == 1) return solid;

    GradientGeometry geometry;
    geometry.transform = transformOf(context_, having("gradientTransform"), "gradientTransform");
    geometry.spread = readSpread();
    if (attributeOf(having("gradientUnits"), "gradientUnits") != "userSpaceOnUse") {
      // Coordinates are fractions of the bounds. Nothing is drawn if the bounds are empty.
      if (tq::RectIsEmpty(bounds)) return {};
      viewport_ = {1, 1, viewport_.fontSize};
      const tq::AffineTransform unit{bounds.size.width, 0, 0, bounds.size.height, bounds.origin.x,
                                     bounds.origin.y};
      geometry.transform = tq::AffineTransformConcat(geometry.transform, unit);
    }
    geometry.radial = context_.nameOf(chain_.front()) == "radialGradient";
    if (geometry.radial) {
      readCircle(geometry);
      if (!(geometry.radius > 0)) return solid;
    } else {
      geometry.start = {across("x1", 0), down("y1", 0)};
      geometry.end = {across("x2", viewport_.width), down("y2", 0)};
      if (geometry.start == geometry.end) return solid;
    }
    return {tq::makeRef<Gradient>(geometry, std::move(stops)), 1};
  }

  [[nodiscard]] bool isGradient(pugi::xml_node node) const {
    const std::string_view name = context_.nameOf(node);
    return name == "linearGradient" || name == "radialGradient";
  }

 private:
  /// Returns the first gradient of the chain with this attribute.
  [[nodiscard]] pugi::xml_node having(const char* attribute) const {
    const auto found = std::ranges::find_if(
        chain_, [&](pugi::xml_node node) { return !node.attribute(attribute).empty(); });
    return found != chain_.end() ? *found : chain_.front();
  }

  [[nodiscard]] double across(const char* name, double otherwise) {
    return lengthOf(context_, having(name), name, viewport_, Extent::horizontal, otherwise);
  }
  [[nodiscard]] double down(const char* name, double otherwise) {
    return lengthOf(context_, having(name), name, viewport_, Extent::vertical, otherwise);
  }

  void readCircle(GradientGeometry& geometry) {
    const double half = std::hypot(viewport_.width, viewport_.height) / std::sqrt(2.0) / 2;
    geometry.end = {across("cx", viewport_.width / 2), down("cy", viewport_.height / 2)};
    geometry.radius = lengthOf(context_, having("r"), "r", viewport_, Extent::diagonal, half);
    geometry.start = {across("fx", geometry.end.x), down("fy", geometry.end.y)};
    const double focalRadius = lengthOf(context_, having("fr"), "fr", viewport_, Extent::diagonal);
    geometry.focalRadius = std::max(focalRadius, 0.0);
    // A focus outside the circle is moved just inside its edge, so that every ray meets the circle.
    const double dx = geometry.start.x - geometry.end.x;
    const double dy = geometry.start.y - geometry.end.y;
    const double reach = 0.999 * geometry.radius;
    if (const double distance = std::hypot(dx, dy); distance > reach) {
      geometry.start = {geometry.end.x + dx * reach / distance,
                        geometry.end.y + dy * reach / distance};
    }
  }

  [[nodiscard]] Spread readSpread() {
    const std::string_view text = attributeOf(having("spreadMethod"), "spreadMethod");
    return text == "reflect" ? Spread::reflect : text == "repeat" ? Spread::repeat : Spread::pad;
  }

  [[nodiscard]] std::vector<GradientStop> readStops() {
    std::vector<GradientStop> stops;
    for (const pugi::xml_node gradient : chain_) {
      const Style style =
          sheet_.styleOf(gradient, sheet_.styleAround(gradient, viewport_), viewport_);
      context_.leaveOutContent(gradient, "stop");
      for (const pugi::xml_node child : gradient.children()) {
        if (context_.nameOf(child) == "stop") stops.push_back(readStop(style, child, stops));
      }
      if (!stops.empty()) break;
    }
    return stops;
  }

  [[nodiscard]] GradientStop readStop(const Style& gradient, pugi::xml_node node,
                                      const std::vector<GradientStop>& before) {
    const Style style = sheet_.styleOf(node, gradient, viewport_);
    const Color color = style.stopIsCurrentColor ? style.color : style.stopColor;
    const std::string_view place = attributeOf(node, "offset");
    const auto offset = parseFraction(place);
    if (!offset && !place.empty()) context_.leaveOut("invalid offset of stop");
    const double least = before.empty() ? 0 : before.back().offset;
    return {std::max(least, std::clamp(offset.value_or(0), 0.0, 1.0)), color.red, color.green,
            color.blue, color.alpha * style.stopOpacity};
  }

  SvgContext& context_;
  SvgStyleSheet& sheet_;
  Viewport viewport_;
  std::vector<pugi::xml_node> chain_;
};

}  // namespace

ModelPaint readPaint(SvgContext& context, SvgStyleSheet& sheet, const Paint& paint,
                     const Style& style, const tq::Rect& bounds, Viewport viewport) {
  if (!paint.server.empty()) {
    const pugi::xml_node server = context.find(paint.server);
    GradientReader reader(context, sheet, server, viewport);
    if (reader.isGradient(server)) return reader.read(bounds);
    context.leaveOut(server ? "paint by " + std::string(context.nameOf(server))
                            : std::string("paint without a target"));
  }
  if (paint.currentColor) return plain(style.color);
  return paint.color ? plain(*paint.color) : ModelPaint();
}

}  // namespace tqdoc
