#include "Svg/SvgTransform.h"

#include <cmath>
#include <numbers>
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

}  // namespace tqdoc
