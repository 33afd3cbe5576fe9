#include "Commands/Command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>

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

}  // namespace tqdoc
