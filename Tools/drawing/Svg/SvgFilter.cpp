#include "Svg/SvgFilter.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Svg/SvgShapes.h"

namespace tqdoc {
namespace {

using Kind = FilterStep::Kind;

/// The rows of red, green and blue; alpha stays as it is.
[[nodiscard]] std::vector<double> colorRows(std::initializer_list<double> rgb) {
  std::vector<double> matrix(20);
  for (std::size_t i = 0; i < 9; ++i) matrix[i / 3 * 5 + i % 3] = rgb.begin()[i];
  matrix[18] = 1;
  return matrix;
}

// The luminance of red, green and blue, and the rotation of hues around it, as in Filter Effects
// (W3C, 2018), feColorMatrix.
constexpr double kRed = 0.213, kGreen = 0.715, kBlue = 0.072;

[[nodiscard]] std::vector<double> saturation(double s) {
  const double r = kRed * (1 - s), g = kGreen * (1 - s), b = kBlue * (1 - s);
  return colorRows({r + s, g, b, r, g + s, b, r, g, b + s});
}

[[nodiscard]] std::vector<double> hueRotation(double degrees) {
  const double angle = std::fmod(degrees, 360) * std::numbers::pi / 180;
  const double c = std::cos(angle), s = std::sin(angle);
  const double keep = 1 - c;
  return colorRows(
      {kRed * keep + c - s * kRed, kGreen * keep - s * kGreen, kBlue * keep + s * (1 - kBlue),
       kRed * keep + s * 0.143, kGreen * keep + c + s * 0.140, kBlue * keep - s * 0.283,
       kRed * keep - s * (1 - kRed), kGreen * keep + s * kGreen, kBlue * keep + c + s * kBlue});
}

[[nodiscard]] bool areSame(const tq::Rect& a, const tq::Rect& b) {
  return a.origin == b.origin && a.size == b.size;
}

/// Reads the primitives of one filter.
class FilterReader {
 public:
  FilterReader(SvgContext& context, SvgStyleSheet& sheet, pugi::xml_node filter,
               const tq::Rect& bounds, Viewport viewport)
      : context_(context),
        sheet_(sheet),
        filter_(filter),
        bounds_(bounds),
        viewport_(viewport),
        region_(regionOf(context, filter, "filterUnits", bounds, viewport)),
        inFractions_(attributeOf(filter, "primitiveUnits") == "objectBoundingBox") {}

  /// Returns null if the filter cannot be drawn.
  [[nodiscard]] tq::Ref<Filter> read() {
    if (!hrefOf(filter_).empty()) context_.leaveOut("href of filter");
    if (filter_.attribute("filterRes")) context_.leaveOut("filterRes of filter");
    const Style style = sheet_.styleOf(filter_, sheet_.styleAround(filter_, viewport_), viewport_);
    for (const pugi::xml_node node : filter_.children()) {
      const std::string_view name = context_.nameOf(node);
      if (!name.starts_with("fe")) {
        if (!name.empty() && !isDefinition(name)) context_.leaveOut("<" + std::string(name) + ">");
        continue;
      }
      context_.leaveOutContent(node, "feMergeNode");
      const Style own = sheet_.styleOf(node, style, viewport_);
      const std::size_t before = steps_.size();
      if (!addPrimitive(node, name, own)) {
        context_.leaveOut("<" + std::string(name) + ">");
        return nullptr;
      }
      for (std::size_t i = before; i < steps_.size(); ++i) steps_[i].linear = own.linearFilters;
      results_[std::string(attributeOf(node, "result"))] = lastStep();
    }
    if (steps_.empty()) steps_.emplace_back();  // a filter without primitives makes nothing
    if (!Filter::areValid(steps_)) {
      context_.leaveOut("filter of too many steps");
      return nullptr;
    }
    return tq::makeRef<Filter>(region_, std::move(steps_));
  }

 private:
  [[nodiscard]] int lastStep() const { return static_cast<int>(steps_.size()) - 1; }

  /// An unknown name means the step before, or the node itself for the first one.
  [[nodiscard]] int inputOf(pugi::xml_node node, const char* attribute = "in") {
    const std::string_view name = attributeOf(node, attribute);
    if (name == "SourceGraphic") return FilterStep::kSource;
    if (name == "SourceAlpha") return FilterStep::kSourceAlpha;
    if (name == "BackgroundImage" || name == "BackgroundAlpha" || name == "FillPaint" ||
        name == "StrokePaint") {
      context_.leaveOut("filter input " + std::string(name));
      return FilterStep::kNothing;
    }
    const auto found = name.empty() ? results_.end() : results_.find(std::string(name));
    if (found != results_.end()) return found->second;
    return steps_.empty() ? FilterStep::kSource : lastStep();
  }

  /// Returns `count` numbers; absent ones repeat the last one, or are `otherwise`.
  [[nodiscard]] std::vector<double> numbersOf(pugi::xml_node node, const char* attribute,
                                              std::size_t count, double otherwise = 0) {
    const std::string_view text = attributeOf(node, attribute);
    auto numbers = parseNumbers(text).value_or(std::vector<double>());
    if (numbers.size() > count || (numbers.empty() && !text.empty())) {
      context_.leaveOut("invalid " + std::string(attribute) + " of " +
                        std::string(context_.nameOf(node)));
      numbers.clear();
    }
    numbers.resize(count, numbers.empty() ? otherwise : numbers.back());
    return numbers;
  }

  /// Two lengths, along both axes.
  [[nodiscard]] std::vector<double> lengths(double x, double y) const {
    if (!inFractions_) return {x, y};
    return {x * bounds_.size.width, y * bounds_.size.height};
  }

  void add(Kind kind, std::vector<int> inputs, std::vector<double> numbers = {},
           std::string mode = {}) {
    FilterStep step{kind, std::move(inputs), std::move(numbers), std::move(mode), {}, true};
    regions_.push_back(region_);
    steps_.push_back(std::move(step));
  }

  /// Adds the steps of a primitive. Returns false if it is not supported.
  [[nodiscard]] bool addPrimitive(pugi::xml_node node, std::string_view name, const Style& style) {
    std::vector<int> inputs;
    const auto modeOf = [&](Kind kind, const char* attribute) {
      const auto modes = modesOf(kind);
      const auto found = std::ranges::find(modes, attributeOf(node, attribute));
      return std::string(found != modes.end() ? *found : modes.front());
    };
    if (name == "feMerge") {
      for (const pugi::xml_node child : node.children()) {
        if (context_.nameOf(child) == "feMergeNode") inputs.push_back(inputOf(child));
      }
      context_.charge(inputs.size(), node);
    } else if (name == "feBlend" || name == "feComposite") {
      inputs = {inputOf(node), inputOf(node, "in2")};
    } else if (name != "feFlood") {
      inputs = {inputOf(node)};
    }
    const tq::Rect region = regionOfPrimitive(node, inputs);

    if (name == "feGaussianBlur") {
      const auto deviation = numbersOf(node, "stdDeviation", 2);
      const std::string_view edges = attributeOf(node, "edgeMode");
      if (!edges.empty() && edges != "none") context_.leaveOut("edgeMode of feGaussianBlur");
      add(Kind::blur, inputs, lengths(deviation[0], deviation[1]));
    } else if (name == "feOffset") {
      add(Kind::offset, inputs, offsetOf(node, 0));
    } else if (name == "feFlood") {
      addFlood(style);
    } else if (name == "feMerge") {
      add(Kind::merge, inputs);
    } else if (name == "feBlend") {
      add(Kind::blend, inputs, {}, modeOf(Kind::blend, "mode"));
    } else if (name == "feComposite") {
      const std::string mode = modeOf(Kind::composite, "operator");
      std::vector<double> factors;
      for (const char* k : {"k1", "k2", "k3", "k4"}) {
        if (mode == "arithmetic") factors.push_back(numbersOf(node, k, 1)[0]);
      }
      add(Kind::composite, inputs, factors, mode);
    } else if (name == "feColorMatrix") {
      add(Kind::colorMatrix, inputs, colorMatrixOf(node));
    } else if (name == "feMorphology") {
      const auto radius = numbersOf(node, "radius", 2);
      add(Kind::morphology, inputs, lengths(radius[0], radius[1]),
          modeOf(Kind::morphology, "operator"));
    } else if (name == "feDropShadow") {
      addDropShadow(node, inputs[0], style);
    } else {
      return false;
    }
    regions_.back() = region;
    if (!areSame(region, region_)) steps_.back().region = region;
    return true;
  }

  [[nodiscard]] std::vector<double> offsetOf(pugi::xml_node node, double otherwise) {
    return lengths(numbersOf(node, "dx", 1, otherwise)[0], numbersOf(node, "dy", 1, otherwise)[0]);
  }

  void addFlood(const Style& style) {
    const Color color = style.floodIsCurrentColor ? style.color : style.floodColor;
    add(Kind::flood, {}, {color.red, color.green, color.blue, color.alpha * style.floodOpacity});
  }

  void addDropShadow(pugi::xml_node node, int input, const Style& style) {
    const auto deviation = numbersOf(node, "stdDeviation", 2, 2);
    add(Kind::blur, {input}, lengths(deviation[0], deviation[1]));
    add(Kind::offset, {lastStep()}, offsetOf(node, 2));
    const int shadow = lastStep();
    addFlood(style);
    add(Kind::composite, {lastStep(), shadow}, {}, "in");
    add(Kind::merge, {lastStep(), input});
  }

  [[nodiscard]] std::vector<double> colorMatrixOf(pugi::xml_node node) {
    const std::string_view type = attributeOf(node, "type");
    if (type == "saturate") return saturation(numbersOf(node, "values", 1, 1)[0]);
    if (type == "hueRotate") return hueRotation(numbersOf(node, "values", 1)[0]);
    if (type == "luminanceToAlpha") {
      std::vector<double> matrix(20);
      std::ranges::copy(std::initializer_list<double>{0.2125, 0.7154, 0.0721}, &matrix[15]);
      return matrix;
    }
    const std::string_view text = attributeOf(node, "values");
    auto matrix = parseNumbers(text);
    if (matrix && matrix->size() == 20) return *std::move(matrix);
    if (!text.empty()) context_.leaveOut("invalid values of feColorMatrix");
    return saturation(1);
  }

  /// The default is the union of the regions of the inputs, or the filter's region.
  [[nodiscard]] tq::Rect regionOfPrimitive(pugi::xml_node node, const std::vector<int>& inputs) {
    const auto regionOfInput = [&](int input) {
      return input < 0 ? region_ : regions_[static_cast<std::size_t>(input)];
    };
    tq::Rect whole = inputs.empty() ? region_ : regionOfInput(inputs.front());
    for (const int input : inputs) {
      const tq::Rect next = regionOfInput(input);
      if (!areSame(whole, next)) whole = tq::RectUnion(whole, next);  // a union rounds
    }
    const auto along = [&](const char* name, Extent extent, double start, double length,
                           double otherwise) {
      if (node.attribute(name).empty()) return otherwise;
      if (!inFractions_) return lengthOf(context_, node, name, viewport_, extent);
      return start + length * lengthOf(context_, node, name, {1, 1, viewport_.fontSize}, extent);
    };
    const auto [origin, size] = bounds_;
    using enum Extent;
    return {along("x", horizontal, origin.x, size.width, whole.origin.x),
            along("y", vertical, origin.y, size.height, whole.origin.y),
            along("width", horizontal, 0, size.width, whole.size.width),
            along("height", vertical, 0, size.height, whole.size.height)};
  }

  SvgContext& context_;
  SvgStyleSheet& sheet_;
  pugi::xml_node filter_;
  tq::Rect bounds_;
  Viewport viewport_;
  tq::Rect region_;
  bool inFractions_;
  std::vector<FilterStep> steps_;
  std::vector<tq::Rect> regions_;  // of the steps
  std::unordered_map<std::string, int> results_;
};

}  // namespace

tq::Ref<Filter> readFilter(SvgContext& context, SvgStyleSheet& sheet, const Style& style,
                           const std::function<tq::Rect()>& bounds, Viewport viewport) {
  if (style.filter.empty()) return nullptr;
  const pugi::xml_node node = context.find(style.filter);
  if (context.nameOf(node) != "filter") {
    context.leaveOut("filter without a target");
    return nullptr;
  }
  return FilterReader(context, sheet, node, bounds(), viewport).read();
}

tq::Rect regionOf(SvgContext& context, pugi::xml_node node, const char* unitsAttribute,
                  const tq::Rect& bounds, Viewport viewport) {
  const bool inFractions = attributeOf(node, unitsAttribute) != "userSpaceOnUse";
  if (inFractions && tq::RectIsEmpty(bounds)) return {};
  if (inFractions) viewport = {1, 1, viewport.fontSize};
  const tq::Rect rect(
      lengthOf(context, node, "x", viewport, Extent::horizontal, -0.1 * viewport.width),
      lengthOf(context, node, "y", viewport, Extent::vertical, -0.1 * viewport.height),
      lengthOf(context, node, "width", viewport, Extent::horizontal, 1.2 * viewport.width),
      lengthOf(context, node, "height", viewport, Extent::vertical, 1.2 * viewport.height));
  return inFractions ? tq::RectApplyAffineTransform(rect, unitTransform(bounds)) : rect;
}

tq::AffineTransform unitTransform(const tq::Rect& bounds) noexcept {
  return {bounds.size.width, 0, 0, bounds.size.height, bounds.origin.x, bounds.origin.y};
}

}  // namespace tqdoc
