#pragma once

/// @file Scanner.h
/// Scans numbers, words and lengths in attributes.

#include <optional>
#include <string_view>
#include <vector>

namespace tqdoc {

/// White space of SVG and style sheets (ASCII).
[[nodiscard]] constexpr bool isSpace(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}
[[nodiscard]] constexpr bool isLetter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
[[nodiscard]] constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
[[nodiscard]] std::string_view trimmed(std::string_view text) noexcept;

/// The largest magnitude of a number from a drawing; larger ones are clamped.
inline constexpr double kNumberLimit = 1e12;

/// Scans a text from left to right. A failed read consumes nothing.
class Scanner {
 public:
  explicit Scanner(std::string_view text) noexcept : rest_(text) {}

  [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }
  [[nodiscard]] std::string_view rest() const noexcept { return rest_; }
  /// Returns the next character, or '\0' at the end.
  [[nodiscard]] char peek() const noexcept { return rest_.empty() ? '\0' : rest_.front(); }
  char next() noexcept;

  void skipSpace() noexcept;
  /// Consumes white space with at most one comma.
  void skipSeparator() noexcept;
  /// Consumes `text` if it is next.
  bool take(std::string_view text) noexcept;
  /// Returns the text before the next `stop` and consumes both; without a `stop`, the rest.
  [[nodiscard]] std::string_view takeUntil(char stop) noexcept;
  /// Reads letters, digits, "-", "_" and all characters beyond ASCII; may be empty.
  [[nodiscard]] std::string_view takeName() noexcept;

  /// Reads a decimal number, clamped to kNumberLimit. Independent of the locale.
  [[nodiscard]] std::optional<double> takeNumber() noexcept;
  /// Reads one character, 0 or 1. No separator is needed after it.
  [[nodiscard]] std::optional<bool> takeFlag() noexcept;

 private:
  std::string_view rest_;
};

/// Returns the numbers of a list, or no value if the text contains anything else.
[[nodiscard]] std::optional<std::vector<double>> parseNumbers(std::string_view text);

/// The reference values of relative lengths, in pixels.
struct Viewport {
  double width = 0;
  double height = 0;
  double fontSize = 16;
};

enum class Extent { horizontal, vertical, diagonal };

/// Returns a length in pixels of 1/96 inch. Percentages are relative to the viewport, em and ex
/// (half an em) to the font size. No value for anything else.
[[nodiscard]] std::optional<double> parseLength(std::string_view text, Viewport viewport,
                                                Extent extent) noexcept;

/// Returns an angle in degrees, from deg, grad, rad and turn. 0 needs no unit.
/// @param unitless  a number without a unit is in degrees
[[nodiscard]] std::optional<double> parseAngle(std::string_view text,
                                               bool unitless = false) noexcept;

/// Returns a number; a percentage is divided by 100.
[[nodiscard]] std::optional<double> parseFraction(std::string_view text) noexcept;

}  // namespace tqdoc
