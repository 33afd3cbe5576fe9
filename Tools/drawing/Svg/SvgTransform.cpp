#include "Svg/SvgTransform.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "Svg/Scanner.h"

namespace tqdoc {
namespace {

[[nodiscard]] double radians(double degrees) noexcept {
  return std::fmod(degrees, 360) * std::numbers::pi / 180;
}

/// Parses one function. Returns no value for an unknown name or invalid arguments.
[[nodiscard]] std::optional<tq::AffineTransform> oneTransform(std::string_view name,
                                                              const std::vector<double>& n) {
  const std::size_t count = n.size();
  if (name == "matrix" && count == 6) {
    return tq::AffineTransform{n[0], n[1], n[2], n[3], n[4], n[5]};
  }
  if (name == "translate" && (count == 1 || count == 2)) {
    return tq::AffineTransform{1, 0, 0, 1, n[0], count == 2 ? n[1] : 0};
  }
  if (name == "scale" && (count == 1 || count == 2)) {
    return tq::AffineTransform{n[0], 0, 0, n[count - 1], 0, 0};
  }
  if (name == "rotate" && (count == 1 || count == 3)) {
    const tq::Point centre = count == 3 ? tq::Point{n[1], n[2]} : tq::Point{};
    const tq::AffineTransform there{1, 0, 0, 1, centre.x, centre.y};
    return tq::AffineTransformTranslate(tq::AffineTransformRotate(there, radians(n[0])), -centre.x,
                                        -centre.y);
  }
  if (name == "skewX" && count == 1) {
    return tq::AffineTransform{1, 0, std::tan(radians(n[0])), 1, 0, 0};
  }
  if (name == "skewY" && count == 1) {
    return tq::AffineTransform{1, std::tan(radians(n[0])), 0, 1, 0, 0};
  }
  return std::nullopt;
}

/// Parses a function of a style sheet. Its arguments become those of an attribute: pixels, degrees
/// and numbers.
[[nodiscard]] std::optional<tq::AffineTransform> oneStyleTransform(std::string_view name,
                                                                   std::string_view arguments,
                                                                   Viewport viewport) {
  const bool isRotation = name == "rotate" || name.starts_with("skew");
  std::vector<double> numbers;
  for (std::string_view rest = arguments; !rest.empty();) {
    const std::size_t comma = std::min(rest.find(','), rest.size());
    const std::string_view text = rest.substr(0, comma);
    rest.remove_prefix(std::min(comma + 1, rest.size()));
    const bool isVertical = name == "translateY" || !numbers.empty();
    const auto number =
        isRotation ? parseAngle(text)
        : name.starts_with("translate")
            ? parseLength(text, viewport, isVertical ? Extent::vertical : Extent::horizontal)
            : parseFraction(text);
    if (!number) return std::nullopt;
    numbers.push_back(*number);
  }
  const bool isAlone = numbers.size() == 1;
  if (name == "translateX" && isAlone) return oneTransform("translate", numbers);
  if (name == "translateY" && isAlone) return oneTransform("translate", {0, numbers[0]});
  if (name == "scaleX" && isAlone) return oneTransform("scale", {numbers[0], 1});
  if (name == "scaleY" && isAlone) return oneTransform("scale", {1, numbers[0]});
  if (name == "skew" && isAlone) return oneTransform("skewX", numbers);
  if (name == "skew" && numbers.size() == 2) {
    return tq::AffineTransform{
        1, std::tan(radians(numbers[1])), std::tan(radians(numbers[0])), 1, 0, 0};
  }
  if (name == "rotate" && !isAlone) return std::nullopt;
  return oneTransform(name, numbers);
}

}  // namespace

std::optional<tq::AffineTransform> parseTransform(std::string_view text) {
  Scanner scanner(text);
  tq::AffineTransform combined;
  scanner.skipSpace();
  while (!scanner.atEnd()) {
    const std::string_view name = scanner.takeName();
    scanner.skipSpace();
    if (!scanner.take("(") || scanner.rest().find(')') == text.npos) return std::nullopt;
    const auto numbers = parseNumbers(scanner.takeUntil(')'));
    const auto one = numbers ? oneTransform(name, *numbers) : std::nullopt;
    if (!one) return std::nullopt;
    combined = tq::AffineTransformConcat(*one, combined);
    scanner.skipSeparator();
  }
  return combined;
}

std::optional<tq::AffineTransform> parseStyleTransform(std::string_view text, Viewport viewport) {
  tq::AffineTransform combined;
  if (trimmed(text) == "none") return combined;
  Scanner scanner(trimmed(text));
  while (!scanner.atEnd()) {
    const std::string_view name = scanner.takeName();
    if (!scanner.take("(") || scanner.rest().find(')') == text.npos) return std::nullopt;
    const auto one = oneStyleTransform(name, scanner.takeUntil(')'), viewport);
    if (!one) return std::nullopt;
    combined = tq::AffineTransformConcat(*one, combined);
    scanner.skipSpace();
  }
  return combined;
}

std::optional<tq::Point> parseTransformOrigin(std::string_view text, Viewport viewport) {
  const std::size_t gap = std::min(trimmed(text).find_first_of(" \t\r\n"), trimmed(text).size());
  std::string_view first = trimmed(text).substr(0, gap);
  std::string_view second = trimmed(trimmed(text).substr(gap));
  if (first.empty()) return tq::Point{};
  if (second.empty()) second = "center";
  const bool isSwapped =
      first == "top" || first == "bottom" || second == "left" || second == "right";
  if (isSwapped) std::swap(first, second);
  if (first == "top" || first == "bottom") return std::nullopt;
  const auto position = [&](std::string_view word, Extent extent) {
    const bool isStart = word == "left" || word == "top";
    const bool isEnd = word == "right" || word == "bottom";
    return parseLength(isStart            ? "0"
                       : isEnd            ? "100%"
                       : word == "center" ? "50%"
                                          : word,
                       viewport, extent);
  };
  const auto x = position(first, Extent::horizontal);
  const auto y = position(second, Extent::vertical);
  return x && y ? std::optional(tq::Point{*x, *y}) : std::nullopt;
}

}  // namespace tqdoc
