#include "Svg/SvgTextStyle.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "Model/Numbers.h"

namespace tqdoc {
namespace {

using Words = std::span<const std::string_view>;
constexpr std::string_view kSlants[] = {"normal", "italic", "oblique"};
constexpr std::string_view kVariants[] = {"normal", "small-caps"};
constexpr std::string_view kStretches[] = {"normal",    "ultra-condensed", "extra-condensed",
                                           "condensed", "semi-condensed",  "semi-expanded",
                                           "expanded",  "extra-expanded",  "ultra-expanded"};
constexpr std::string_view kAnchors[] = {"start", "middle", "end"};
constexpr std::string_view kDirections[] = {"ltr", "rtl"};

/// The words outlive the style, unlike `value`.
[[nodiscard]] bool setWord(std::string_view& word, Words words, std::string_view value) {
  const auto found = std::ranges::find(words, value);
  if (found == words.end()) return false;
  word = *found;
  return true;
}

[[nodiscard]] bool setFamily(TextStyle& style, std::string_view value) {
  // Names may be quoted. In the model, as in lists of fonts, they are not.
  std::string family;
  for (Scanner list(value); !list.atEnd();) {
    std::string_view name = trimmed(list.takeUntil(','));
    if (name.size() >= 2 && (name.front() == '\'' || name.front() == '"')) {
      name = trimmed(name.substr(1, name.size() - 2));
    }
    if (!name.empty()) family += (family.empty() ? "" : ", ") + std::string(name);
  }
  if (!family.empty()) style.family = family;
  return !family.empty();
}

[[nodiscard]] bool setWeight(TextStyle& style, const TextStyle& parent, std::string_view value) {
  const bool isHeavy = parent.weight >= 600;
  if (value == "normal") {
    style.weight = 400;
  } else if (value == "bold") {
    style.weight = 700;
  } else if (value == "bolder") {
    style.weight = parent.weight < 350 ? 400 : isHeavy ? 900 : 700;
  } else if (value == "lighter") {
    style.weight = parent.weight < 550 ? 100 : parent.weight < 750 ? 400 : 700;
  } else {
    const auto number = parseNumbers(value);
    if (!number || number->size() != 1 || !(number->front() >= 1 && number->front() <= 1000)) {
      return false;
    }
    style.weight = number->front();
  }
  return true;
}

[[nodiscard]] bool setSpacing(double& spacing, std::string_view value, Viewport viewport) {
  const auto length = value == "normal" ? 0 : parseLength(value, viewport, Extent::horizontal);
  if (length) spacing = *length;
  return length.has_value();
}

[[nodiscard]] bool setBaselineShift(TextStyle& style, const TextStyle& parent,
                                    std::string_view value, Viewport viewport) {
  std::optional<double> shift;
  if (value == "baseline") {
    shift = 0;
  } else if (value == "super") {
    shift = 0.4 * viewport.fontSize;
  } else if (value == "sub") {
    shift = -0.2 * viewport.fontSize;
  } else if (value.ends_with('%')) {
    if (const auto part = parseFraction(value)) shift = *part * viewport.fontSize;
  } else {
    shift = parseLength(value, viewport, Extent::vertical);
  }
  if (shift) style.baselineShift = parent.baselineShift + *shift;
  return shift.has_value();
}

/// The tag of a language, such as "de-AT".
[[nodiscard]] bool setLanguage(TextStyle& style, std::string_view value) {
  constexpr std::size_t kLongest = 35;
  const bool isTag =
      value.size() <= kLongest && std::ranges::all_of(value, [](char c) {
        return isDigit(c) || c == '-' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
      });
  if (isTag) style.language = value;
  return isTag;
}

[[nodiscard]] bool setDecoration(TextStyle& style, const TextStyle& parent,
                                 std::string_view value) {
  style.isUnderlined = parent.isUnderlined;
  style.isOverlined = parent.isOverlined;
  style.isStruckThrough = parent.isStruckThrough;
  bool isValid = true;
  for (Scanner words(value); !words.atEnd(); words.skipSpace()) {
    const std::string_view word = words.takeName();
    style.isUnderlined |= word == "underline";
    style.isOverlined |= word == "overline";
    style.isStruckThrough |= word == "line-through";
    isValid &= word == "none" || word == "underline" || word == "overline" ||
               word == "line-through" || word == "solid";
    if (word.empty()) break;
  }
  return isValid;
}

constexpr std::string_view kNames[] = {
    "font-family",     "font-style",           "font-variant", "font-weight", "font-stretch",
    "letter-spacing",  "word-spacing",         "text-anchor",  "direction",   "baseline-shift",
    "text-decoration", "text-decoration-line", "xml:lang",     "lang"};

}  // namespace

bool isTextProperty(std::string_view name) noexcept {
  return std::ranges::find(kNames, name) != std::end(kNames);
}

std::optional<bool> setTextProperty(TextStyle& style, const TextStyle& parent,
                                    std::string_view name, std::string_view value,
                                    Viewport viewport) {
  if (!isTextProperty(name)) return std::nullopt;
  if (value == "inherit") return true;  // the style began as a copy of the parent's
  if (name == "font-family") return setFamily(style, value);
  if (name == "font-style") return setWord(style.slant, kSlants, value);
  if (name == "font-variant") return setWord(style.variant, kVariants, value);
  if (name == "font-stretch") return setWord(style.stretch, kStretches, value);
  if (name == "font-weight") return setWeight(style, parent, value);
  if (name == "letter-spacing") return setSpacing(style.letterSpacing, value, viewport);
  if (name == "word-spacing") return setSpacing(style.wordSpacing, value, viewport);
  if (name == "text-anchor") return setWord(style.anchor, kAnchors, value);
  if (name == "direction") return setWord(style.direction, kDirections, value);
  if (name == "baseline-shift") return setBaselineShift(style, parent, value, viewport);
  if (name == "xml:lang" || name == "lang") return setLanguage(style, value);
  return setDecoration(style, parent, value);
}

std::optional<double> parseFontSize(std::string_view value, Viewport parent) noexcept {
  constexpr double kStep = 1.2;
  constexpr std::string_view kSizes[] = {"xx-small", "x-small", "small",   "medium",
                                         "large",    "x-large", "xx-large"};
  const auto* named = std::ranges::find(kSizes, value);
  if (named != std::end(kSizes)) return 16 * std::pow(kStep, named - kSizes - 3);
  if (value == "smaller") return parent.fontSize / kStep;
  if (value == "larger") return parent.fontSize * kStep;
  if (value.ends_with('%')) {
    const auto part = parseFraction(value);
    return part ? std::optional(std::max(0.0, *part) * parent.fontSize) : std::nullopt;
  }
  const auto size = parseLength(value, parent, Extent::diagonal);
  return size ? std::optional(std::max(0.0, *size)) : std::nullopt;
}

std::optional<double> setFont(TextStyle& style, std::string_view value, Viewport parent) {
  TextStyle font = style;
  font.slant = font.variant = font.stretch = "normal";
  font.weight = 400;
  Scanner scanner(value);
  for (;;) {
    scanner.skipSpace();
    if (scanner.atEnd()) return std::nullopt;
    const std::string_view before = scanner.rest();
    while (!scanner.atEnd() && !isSpace(scanner.peek()) && scanner.peek() != '/') scanner.next();
    const std::string_view word = before.substr(0, before.size() - scanner.rest().size());
    const bool isNumber = isDigit(word.empty() ? '\0' : word.front());
    const bool isWeight = isNumber && word.size() == 3 && word.ends_with("00");
    if (setWord(font.slant, kSlants, word) || setWord(font.variant, kVariants, word) ||
        setWord(font.stretch, kStretches, word) ||
        ((isWeight || !isNumber) && setWeight(font, style, word))) {
      continue;
    }
    const auto size = parseFontSize(word, parent);
    if (!size) return std::nullopt;
    scanner.skipSpace();
    if (scanner.take("/")) {  // a line height
      scanner.skipSpace();
      while (!scanner.atEnd() && !isSpace(scanner.peek())) scanner.next();
    }
    if (!setFamily(font, scanner.rest())) return std::nullopt;
    style = font;
    return size;
  }
}

void addTextStyle(tq::MutableDictionary& to, const TextStyle& style, double fontSize) {
  const auto word = [&](std::string_view text, std::string_view initial, std::string_view key) {
    if (text != initial) to.setObject(tq::String::stringWithUTF8Repaired(text), key);
  };
  const auto measure = [&](double number, double initial, std::string_view key) {
    if (number == initial) return;
    to.setObject(tq::Number::numberWith(tq::NumberValue(archivable(number))), key);
  };
  word(style.family, "", "fontFamily");
  measure(fontSize, 16, "fontSize");
  word(style.slant, "normal", "fontStyle");
  measure(style.weight, 400, "fontWeight");
  word(style.stretch, "normal", "fontStretch");
  word(style.variant, "normal", "fontVariant");
  measure(style.letterSpacing, 0, "letterSpacing");
  measure(style.wordSpacing, 0, "wordSpacing");
  word(style.anchor, "start", "anchor");
  word(style.direction, "ltr", "direction");
  word(style.language == "en" ? "" : style.language, "", "language");
  measure(style.baselineShift, 0, "baselineShift");
  std::string decoration;
  const auto decorate = [&](bool is, const char* name) {
    if (is) decoration += (decoration.empty() ? "" : " ") + std::string(name);
  };
  decorate(style.isUnderlined, "underline");
  decorate(style.isOverlined, "overline");
  decorate(style.isStruckThrough, "line-through");
  word(decoration, "", "decoration");
}

}  // namespace tqdoc
