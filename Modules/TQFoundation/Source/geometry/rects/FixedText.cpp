#include <TQFoundation/geometry/rects/detail/FixedText.h>

#include <charconv>
#include <cmath>

namespace tq::detail {

std::string fixedText(std::initializer_list<LabelledNumber> numbers) {
  std::string text;
  for (const auto& [label, value] : numbers) {
    if (!text.empty()) text += ' ';
    text.append(label).append(":");
    if (std::isnan(value)) {
      text += "nan";
      continue;
    }
    char digits[320];  // the longest double: sign, 309 digits, point, six decimals
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6);
    text.append(digits, end.ptr);
  }
  return text;
}

std::string fixedText(const Rect& rect) {
  return fixedText({{"x", rect.origin.x},
                    {"y", rect.origin.y},
                    {"w", rect.size.width},
                    {"h", rect.size.height}});
}

}  // namespace tq::detail
