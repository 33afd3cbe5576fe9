#include "Svg/SvgStyle.h"

#include <algorithm>

#include "Svg/SvgForeign.h"
#include "Svg/SvgTransform.h"

namespace tqdoc {
namespace {

/// Parses "url(#id)", with or without quotes, and the rest. The id is empty for any other text.
struct Reference {
  std::string_view id;
  std::string_view rest;
};

[[nodiscard]] Reference parseReference(std::string_view text) {
  Scanner scanner(text);
  if (!scanner.take("url(") || scanner.rest().find(')') == text.npos) return {};
  std::string_view inside = trimmed(scanner.takeUntil(')'));
  if (inside.size() >= 2 && (inside.front() == '"' || inside.front() == '\'')) {
    inside = inside.substr(1, inside.size() - 2);
  }
  if (!inside.starts_with('#')) return {};
  return {inside.substr(1), trimmed(scanner.rest())};
}

// A setter returns false for an invalid value.
using Setter = bool (*)(Style&, const Style& parent, std::string_view value, Viewport);
using Inheritor = void (*)(Style&, const Style& parent);

template <auto member>
bool setPaint(Style& style, const Style&, std::string_view value, Viewport) {
  Paint paint;
  const Reference reference = parseReference(value);
  paint.server = reference.id;
  const std::string_view plain = reference.id.empty() ? value : reference.rest;
  if (plain == "currentColor" || plain == "currentcolor") {
    paint.currentColor = true;
  } else if (!plain.empty() && plain != "none") {
    paint.color = parseColor(plain);
    if (!paint.color) return false;
  }
  style.*member = paint;
  return true;
}

template <auto member>
bool setFraction(Style& style, const Style&, std::string_view value, Viewport) {
  const auto fraction = parseFraction(value);
  if (fraction) style.*member = std::clamp(*fraction, 0.0, 1.0);
  return fraction.has_value();
}

template <auto member>
bool setLength(Style& style, const Style&, std::string_view value, Viewport viewport) {
  const auto length = parseLength(value, viewport, Extent::diagonal);
  if (length) style.*member = *length;
  return length.has_value();
}

template <auto member>
bool setColor(Style& style, const Style&, std::string_view value, Viewport) {
  const auto color = parseColor(value);
  if (color) style.*member = *color;
  return color.has_value();
}

template <auto member>
bool setRule(Style& style, const Style&, std::string_view value, Viewport) {
  style.*member = value == "evenodd";
  return value == "evenodd" || value == "nonzero";
}

template <auto member, auto isCurrent>
bool setColorOrCurrent(Style& style, const Style& parent, std::string_view value,
                       Viewport viewport) {
  style.*isCurrent = value == "currentColor" || value == "currentcolor";
  return style.*isCurrent || setColor<member>(style, parent, value, viewport);
}

bool setFontSize(Style& style, const Style& parent, std::string_view value, Viewport viewport) {
  viewport.fontSize = parent.fontSize;
  const auto size = parseFontSize(value, viewport);
  if (size) style.fontSize = *size;
  return size.has_value();
}

bool setFont(Style& style, const Style& parent, std::string_view value, Viewport viewport) {
  viewport.fontSize = parent.fontSize;
  const auto size = setFont(style.text, value, viewport);
  if (size) style.fontSize = *size;
  return size.has_value();
}

bool setDashes(Style& style, const Style&, std::string_view value, Viewport viewport) {
  std::vector<double> dashes;
  Scanner scanner(value == "none" ? std::string_view() : value);
  while (!scanner.atEnd()) {
    const std::string_view before = scanner.rest();
    while (!scanner.atEnd() && !isSpace(scanner.peek()) && scanner.peek() != ',') scanner.next();
    const auto length = parseLength(before.substr(0, before.size() - scanner.rest().size()),
                                    viewport, Extent::diagonal);
    if (!length || *length < 0) return false;
    dashes.push_back(*length);
    scanner.skipSeparator();
  }
  const bool solid = std::ranges::all_of(dashes, [](double dash) { return dash == 0; });
  style.dashes = solid ? std::vector<double>() : dashes;
  return true;
}

template <auto member>
bool setWord(Style& style, std::initializer_list<std::string_view> words, std::string_view value) {
  if (std::ranges::find(words, value) == words.end()) return false;
  style.*member = value;
  return true;
}

bool setLineCap(Style& style, const Style&, std::string_view value, Viewport) {
  return setWord<&Style::lineCap>(style, {"butt", "round", "square"}, value);
}

bool setLineJoin(Style& style, const Style&, std::string_view value, Viewport) {
  return setWord<&Style::lineJoin>(style, {"miter", "round", "bevel"}, value);
}

bool setMiterLimit(Style& style, const Style&, std::string_view value, Viewport) {
  const auto limit = parseFraction(value);
  if (!limit || *limit < 1) return false;
  style.miterLimit = *limit;
  return true;
}

/// What is missing in the value follows in the usual order.
bool setPaintOrder(Style& style, const Style&, std::string_view value, Viewport) {
  std::vector<std::string_view> missing{"fill", "stroke", "markers"};
  std::string order;
  const auto add = [&](std::string_view part) {
    order += (order.empty() ? "" : " ") + std::string(part);
  };
  for (Scanner scanner(value == "normal" ? std::string_view() : value); !scanner.atEnd();) {
    const std::string_view part = scanner.takeName();
    if (std::erase(missing, part) == 0) return false;
    add(part);
    scanner.skipSpace();
  }
  for (const std::string_view part : missing) add(part);
  style.paintOrder = order == "fill stroke markers" ? std::string() : order;
  return true;
}

/// Of a list of references and functions, such as a filter may have, only one reference is known.
template <auto member>
bool setReference(Style& style, const Style&, std::string_view value, Viewport) {
  const auto [id, rest] = parseReference(value);
  style.*member = rest.empty() ? id : std::string_view();
  return !(style.*member).empty() || value == "none";
}

bool setMaskType(Style& style, const Style&, std::string_view value, Viewport) {
  style.alphaMask = value == "alpha";
  return style.alphaMask || value == "luminance";
}

bool setFilterColors(Style& style, const Style&, std::string_view value, Viewport) {
  style.linearFilters = value != "sRGB";
  return value == "sRGB" || value == "linearRGB" || value == "auto";
}

template <auto... members>
bool setMarker(Style& style, const Style&, std::string_view value, Viewport) {
  const std::string_view id = parseReference(value).id;
  if (id.empty() && value != "none") return false;
  ((style.*members = id), ...);
  return true;
}

bool setVectorEffect(Style& style, const Style&, std::string_view value, Viewport) {
  style.strokeScales = value != "non-scaling-stroke";
  return value == "none" || !style.strokeScales;
}

bool setDisplay(Style& style, const Style&, std::string_view value, Viewport) {
  style.displayed = value != "none";
  return true;
}

bool setVisibility(Style& style, const Style&, std::string_view value, Viewport) {
  style.visible = value == "visible";
  return style.visible || value == "hidden" || value == "collapse";
}

bool setOverflow(Style& style, const Style&, std::string_view value, Viewport) {
  style.overflows = value == "visible" || value == "auto";
  return true;
}

bool setBlend(Style& style, const Style&, std::string_view value, Viewport) {
  const auto blend = blendNamed(value);
  if (blend) style.blend = *blend;
  return blend.has_value();
}

bool setIsolation(Style& style, const Style&, std::string_view value, Viewport) {
  style.isolated = value == "isolate";
  return style.isolated || value == "auto";
}

bool setTransform(Style& style, const Style&, std::string_view value, Viewport viewport) {
  if (!parseStyleTransform(value, viewport)) return false;
  style.transform = value;
  return true;
}

bool setTransformOrigin(Style& style, const Style&, std::string_view value, Viewport viewport) {
  if (!parseTransformOrigin(value, viewport)) return false;
  style.transformOrigin = value;
  return true;
}

bool setTransformBox(Style& style, const Style&, std::string_view value, Viewport) {
  style.transformsInBounds = value == "fill-box" || value == "content-box";
  return style.transformsInBounds || value == "view-box";
}

template <auto... members>
void inherit(Style& style, const Style& parent) {
  ((style.*members = parent.*members), ...);
}

struct Property {
  std::string_view name;
  Setter set;
  Inheritor inheritFrom;
};

constexpr Property kProperties[] = {
    {"fill", setPaint<&Style::fill>, inherit<&Style::fill>},
    {"stroke", setPaint<&Style::stroke>, inherit<&Style::stroke>},
    {"fill-opacity", setFraction<&Style::fillOpacity>, inherit<&Style::fillOpacity>},
    {"stroke-opacity", setFraction<&Style::strokeOpacity>, inherit<&Style::strokeOpacity>},
    {"stroke-width", setLength<&Style::strokeWidth>, inherit<&Style::strokeWidth>},
    {"stroke-miterlimit", setMiterLimit, inherit<&Style::miterLimit>},
    {"stroke-dasharray", setDashes, inherit<&Style::dashes>},
    {"stroke-dashoffset", setLength<&Style::dashOffset>, inherit<&Style::dashOffset>},
    {"stroke-linecap", setLineCap, inherit<&Style::lineCap>},
    {"stroke-linejoin", setLineJoin, inherit<&Style::lineJoin>},
    {"fill-rule", setRule<&Style::fillEvenOdd>, inherit<&Style::fillEvenOdd>},
    {"clip-rule", setRule<&Style::clipEvenOdd>, inherit<&Style::clipEvenOdd>},
    {"paint-order", setPaintOrder, inherit<&Style::paintOrder>},
    {"marker", setMarker<&Style::markerStart, &Style::markerMid, &Style::markerEnd>,
     inherit<&Style::markerStart, &Style::markerMid, &Style::markerEnd>},
    {"marker-start", setMarker<&Style::markerStart>, inherit<&Style::markerStart>},
    {"marker-mid", setMarker<&Style::markerMid>, inherit<&Style::markerMid>},
    {"marker-end", setMarker<&Style::markerEnd>, inherit<&Style::markerEnd>},
    {"vector-effect", setVectorEffect, inherit<&Style::strokeScales>},
    {"visibility", setVisibility, inherit<&Style::visible>},
    {"color", setColor<&Style::color>, inherit<&Style::color>},
    {"font-size", setFontSize, inherit<&Style::fontSize>},
    {"font", setFont, inherit<&Style::fontSize, &Style::text>},
    {"opacity", setFraction<&Style::opacity>, inherit<&Style::opacity>},
    {"display", setDisplay, inherit<&Style::displayed>},
    {"overflow", setOverflow, inherit<&Style::overflows>},
    {"clip-path", setReference<&Style::clipPath>, inherit<&Style::clipPath>},
    {"filter", setReference<&Style::filter>, inherit<&Style::filter>},
    {"mask", setReference<&Style::mask>, inherit<&Style::mask>},
    {"mask-type", setMaskType, inherit<&Style::alphaMask>},
    {"color-interpolation-filters", setFilterColors, inherit<&Style::linearFilters>},
    {"mix-blend-mode", setBlend, inherit<&Style::blend>},
    {"isolation", setIsolation, inherit<&Style::isolated>},
    {"transform", setTransform, inherit<&Style::transform>},
    {"transform-origin", setTransformOrigin, inherit<&Style::transformOrigin>},
    {"transform-box", setTransformBox, inherit<&Style::transformsInBounds>},
    {"stop-color", setColorOrCurrent<&Style::stopColor, &Style::stopIsCurrentColor>,
     inherit<&Style::stopColor, &Style::stopIsCurrentColor>},
    {"stop-opacity", setFraction<&Style::stopOpacity>, inherit<&Style::stopOpacity>},
    {"flood-color", setColorOrCurrent<&Style::floodColor, &Style::floodIsCurrentColor>,
     inherit<&Style::floodColor, &Style::floodIsCurrentColor>},
    {"flood-opacity", setFraction<&Style::floodOpacity>, inherit<&Style::floodOpacity>},
};

}  // namespace

Style Style::inherited() const {
  Style child = *this;
  inherit<&Style::opacity, &Style::displayed, &Style::overflows, &Style::clipPath,
          &Style::stopColor, &Style::stopIsCurrentColor, &Style::stopOpacity, &Style::filter,
          &Style::mask, &Style::alphaMask, &Style::floodColor, &Style::floodIsCurrentColor,
          &Style::floodOpacity, &Style::strokeScales, &Style::blend, &Style::isolated,
          &Style::transform, &Style::transformOrigin, &Style::transformsInBounds>(child, Style());
  return child;
}

Understood setProperty(Style& style, const Style& parent, std::string_view name,
                       std::string_view value, Viewport viewport) {
  const auto known = std::ranges::find(kProperties, name, &Property::name);
  if (known != std::end(kProperties)) {
    if (value == "inherit") {
      known->inheritFrom(style, parent);
      return Understood::yes;
    }
    viewport.fontSize = style.fontSize;
    return known->set(style, parent, value, viewport) ? Understood::yes : Understood::notTheValue;
  }
  viewport.fontSize = style.fontSize;
  if (const auto valid = setTextProperty(style.text, parent.text, name, value, viewport)) {
    return *valid ? Understood::yes : Understood::notTheValue;
  }
  const auto idle = isIdleDeclaration(name, value);
  return !idle ? Understood::notTheProperty : *idle ? Understood::yes : Understood::notTheValue;
}

bool isProperty(std::string_view name) noexcept {
  // Properties that are not attributes, and attributes of other syntax.
  constexpr std::string_view kOthers[] = {"transform", "font", "marker", "mix-blend-mode",
                                          "isolation"};
  if (std::ranges::find(kOthers, name) != std::end(kOthers)) return false;
  return std::ranges::find(kProperties, name, &Property::name) != std::end(kProperties) ||
         isTextProperty(name) || isForeignAttribute(name);
}

}  // namespace tqdoc
