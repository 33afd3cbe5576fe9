#pragma once

/// @file Scanner.h
/// Reads the small languages inside attributes: numbers, words, lengths.

#include <optional>
#include <string_view>
#include <vector>

namespace tqdoc {

/// ASCII white space, as SVG and style sheets have it.
[[nodiscard]] constexpr bool isSpace(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}
[[nodiscard]] constexpr bool isLetter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
[[nodiscard]] constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
[[nodiscard]] std::string_view trimmed(std::string_view text) noexcept;

/// No number read from a drawing is larger than this; larger ones are taken for it.
inline constexpr double kNumberLimit = 1e12;

/// Goes over a text from left to right. A reading that fails consumes nothing.
class Scanner {
 public:
  explicit Scanner(std::string_view text) noexcept : rest_(text) {}

  [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }
  [[nodiscard]] std::string_view rest() const noexcept { return rest_; }
  /// The next character; '\0' at the end.
  [[nodiscard]] char peek() const noexcept { return rest_.empty() ? '\0' : rest_.front(); }
  char next() noexcept;

  void skipSpace() noexcept;
  /// White space with one comma in it at the most.
  void skipSeparator() noexcept;
  /// Consumes `text` when it is next.
  bool take(std::string_view text) noexcept;
  /// Everything before the next `stop`, which is consumed too; the whole rest when there is none.
  [[nodiscard]] std::string_view takeUntil(char stop) noexcept;
  /// Letters, digits, "-" and "_" and everything beyond ASCII; may be empty.
  [[nodiscard]] std::string_view takeName() noexcept;

  /// A decimal number, within kNumberLimit. Never by locale.
  [[nodiscard]] std::optional<double> takeNumber() noexcept;
  /// One character, 0 or 1; what follows may touch it.
  [[nodiscard]] std::optional<bool> takeFlag() noexcept;

 private:
  std::string_view rest_;
};

/// Numbers between separators; none when anything else is in the text.
[[nodiscard]] std::optional<std::vector<double>> parseNumbers(std::string_view text);

/// What relative lengths are relative to, in pixels.
struct Viewport {
  double width = 0;
  double height = 0;
  double fontSize = 16;
};

enum class Extent { horizontal, vertical, diagonal };

/// A length in pixels of 1/96 inch; percentages of the viewport's extent, em and ex
/// (half of it) of the font size.
/// None for anything else.
[[nodiscard]] std::optional<double> parseLength(std::string_view text, Viewport viewport,
                                                Extent extent) noexcept;

/// A plain number, or a percentage as its hundredth.
[[nodiscard]] std::optional<double> parseFraction(std::string_view text) noexcept;

}  // namespace tqdoc
