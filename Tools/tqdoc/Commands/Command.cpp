#include "Commands/Command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <utility>
#include <vector>

#include "Preferences/Preferences.h"
#include "Render/Canvas.h"

namespace tqdoc {

Outcome reportError(std::string_view message) {
  std::cerr << "tqdoc: " << printable(message) << '\n';
  return Outcome::error;
}

SvgDrawing openNamedDrawing(const std::string& path, tq::Ref<tq::Error>* error) {
  SvgDrawing drawing = openDrawing(path, error);
  if (drawing.document) rememberDrawing(path);
  return drawing;
}

int preferredWidth() {
  return static_cast<int>(
      std::clamp<std::int64_t>(preferences::width.value(), 0, Canvas::kSideLimit));
}

std::string printable(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  }
  return result;
}

std::string shortText(double number) {
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number + 0.0,
                                 std::chars_format::general, 6);
  return {text.data(), end.ptr};
}

std::string shortText(const tq::Rect& rect) {
  if (tq::RectIsNull(rect)) return "nowhere";
  return "{{" + shortText(rect.origin.x) + ", " + shortText(rect.origin.y) + "}, {" +
         shortText(rect.size.width) + ", " + shortText(rect.size.height) + "}}";
}

std::string grouped(std::size_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::string summary(const Features& leftOut) {
  std::vector<std::pair<std::string, std::size_t>> counts;
  for (const auto& [name, feature] : leftOut) counts.emplace_back(name, feature.count);
  std::ranges::stable_sort(counts, std::ranges::greater(), [](const auto& c) { return c.second; });
  std::string text;
  for (const auto& [name, count] : counts) {
    if (!text.empty()) text += ", ";
    text += printable(name) + " " + std::to_string(count);
  }
  return text.empty() ? "none" : text;
}

}  // namespace tqdoc
