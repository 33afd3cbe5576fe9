#include "Svg/Scanner.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <system_error>

#include <TQFoundation/objects/String.h>

namespace tqdoc {

std::string_view trimmed(std::string_view text) noexcept {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
  return text;
}

char Scanner::next() noexcept {
  const char c = peek();
  if (!rest_.empty()) rest_.remove_prefix(1);
  return c;
}

void Scanner::skipSpace() noexcept {
  while (!rest_.empty() && isSpace(rest_.front())) rest_.remove_prefix(1);
}

void Scanner::skipSeparator() noexcept {
  skipSpace();
  if (take(",")) skipSpace();
}

bool Scanner::take(std::string_view text) noexcept {
  if (!rest_.starts_with(text)) return false;
  rest_.remove_prefix(text.size());
  return true;
}

std::string_view Scanner::takeUntil(char stop) noexcept {
  const std::size_t at = std::min(rest_.find(stop), rest_.size());
  const std::string_view before = rest_.substr(0, at);
  rest_.remove_prefix(std::min(at + 1, rest_.size()));
  return before;
}

std::string_view Scanner::takeName() noexcept {
  std::size_t length = 0;
  while (length < rest_.size()) {
    const char c = rest_[length];
    const bool inName =
        isLetter(c) || isDigit(c) || c == '-' || c == '_' || static_cast<unsigned char>(c) >= 0x80;
    if (!inName) break;
    ++length;
  }
  const std::string_view name = rest_.substr(0, length);
  rest_.remove_prefix(length);
  return name;
}

std::optional<double> Scanner::takeNumber() noexcept {
  const auto [value, end] = tq::scanDouble(rest_.data(), rest_.data() + rest_.size());
  if (end == rest_.data()) return std::nullopt;
  rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
  return std::clamp(value, -kNumberLimit, kNumberLimit);
}

std::optional<bool> Scanner::takeFlag() noexcept {
  if (peek() != '0' && peek() != '1') return std::nullopt;
  return next() == '1';
}

std::optional<std::vector<double>> parseNumbers(std::string_view text) {
  Scanner scanner(text);
  std::vector<double> numbers;
  scanner.skipSpace();
  while (!scanner.atEnd()) {
    const auto number = scanner.takeNumber();
    if (!number) return std::nullopt;
    numbers.push_back(*number);
    scanner.skipSeparator();
  }
  return numbers;
}

std::optional<double> parseLength(std::string_view text, Viewport viewport,
                                  Extent extent) noexcept {
  Scanner scanner(trimmed(text));
  const auto number = scanner.takeNumber();
  if (!number) return std::nullopt;
  const std::string_view unit = scanner.rest();
  if (unit == "%") {
    const double whole = extent == Extent::horizontal ? viewport.width
                         : extent == Extent::vertical
                             ? viewport.height
                             : std::hypot(viewport.width, viewport.height) / std::sqrt(2.0);
    return *number * whole / 100;
  }
  const struct {
    std::string_view unit;
    double pixels;
  } kUnits[] = {{"", 1},
                {"px", 1},
                {"pt", 96.0 / 72},
                {"pc", 16},
                {"mm", 96 / 25.4},
                {"cm", 96 / 2.54},
                {"in", 96},
                {"em", viewport.fontSize},
                {"ex", viewport.fontSize / 2}};
  for (const auto& known : kUnits) {
    if (unit == known.unit) return *number * known.pixels;
  }
  return std::nullopt;
}

std::optional<double> parseAngle(std::string_view text, bool unitless) noexcept {
  Scanner scanner(trimmed(text));
  const auto number = scanner.takeNumber();
  if (!number) return std::nullopt;
  const std::string_view unit = scanner.rest();
  if (unit.empty()) return unitless || *number == 0 ? number : std::nullopt;
  constexpr struct {
    std::string_view unit;
    double degrees;
  } kUnits[] = {{"deg", 1}, {"grad", 0.9}, {"rad", 180 / std::numbers::pi}, {"turn", 360}};
  for (const auto& known : kUnits) {
    if (unit == known.unit) return *number * known.degrees;
  }
  return std::nullopt;
}

std::optional<double> parseFraction(std::string_view text) noexcept {
  Scanner scanner(trimmed(text));
  const auto number = scanner.takeNumber();
  if (!number) return std::nullopt;
  if (scanner.take("%")) return scanner.atEnd() ? std::optional(*number / 100) : std::nullopt;
  return scanner.atEnd() ? number : std::nullopt;
}

}  // namespace tqdoc
