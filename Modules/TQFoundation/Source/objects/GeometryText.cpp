#include <TQFoundation/objects/GeometryText.h>

#include <span>

#include <TQFoundation/base/NumberText.h>
#include <TQFoundation/objects/String.h>

namespace tq {
namespace {

void append(std::string& text, double value) {
  char buffer[kNumberTextCapacity];
  text.append(buffer, writeDouble17(buffer, value));
}

std::string pair(double a, double b) {
  std::string text = "{";
  append(text, a);
  text += ", ";
  append(text, b);
  return text += "}";
}

/// Fills `numbers` from the text. Elements without a number in the text are unchanged.
void scanNumbers(std::string_view text, std::span<double> numbers) noexcept {
  const char* at = text.data();
  const char* const end = at + text.size();
  for (double& number : numbers) {
    for (;; ++at) {
      if (at == end) return;
      const ScannedDouble found = scanDouble(at, end);
      if (found.end == at) continue;
      number = found.value;
      at = found.end;
      break;
    }
  }
}

}  // namespace

std::string textFromPoint(Point point) { return pair(point.x, point.y); }
std::string textFromSize(Size size) { return pair(size.width, size.height); }
std::string textFromRect(const Rect& rect) {
  return "{" + textFromPoint(rect.origin) + ", " + textFromSize(rect.size) + "}";
}

Point pointFromText(std::string_view text) noexcept {
  double numbers[2] = {};
  scanNumbers(text, numbers);
  return {numbers[0], numbers[1]};
}

Size sizeFromText(std::string_view text) noexcept {
  const Point numbers = pointFromText(text);
  return {numbers.x, numbers.y};
}

Rect rectFromText(std::string_view text) noexcept {
  double numbers[4] = {};
  scanNumbers(text, numbers);
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

}  // namespace tq
