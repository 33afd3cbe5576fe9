#include "Svg/SvgColor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "Svg/Scanner.h"

namespace tqdoc {
namespace {

struct NamedColor {
  std::string_view name;
  std::uint32_t rgb;
};

constexpr NamedColor kNamedColors[] = {{"aliceblue", 0xf0f8ff},
                                       {"antiquewhite", 0xfaebd7},
                                       {"aqua", 0x00ffff},
                                       {"aquamarine", 0x7fffd4},
                                       {"azure", 0xf0ffff},
                                       {"beige", 0xf5f5dc},
                                       {"bisque", 0xffe4c4},
                                       {"black", 0x000000},
                                       {"blanchedalmond", 0xffebcd},
                                       {"blue", 0x0000ff},
                                       {"blueviolet", 0x8a2be2},
                                       {"brown", 0xa52a2a},
                                       {"burlywood", 0xdeb887},
                                       {"cadetblue", 0x5f9ea0},
                                       {"chartreuse", 0x7fff00},
                                       {"chocolate", 0xd2691e},
                                       {"coral", 0xff7f50},
                                       {"cornflowerblue", 0x6495ed},
                                       {"cornsilk", 0xfff8dc},
                                       {"crimson", 0xdc143c},
                                       {"cyan", 0x00ffff},
                                       {"darkblue", 0x00008b},
                                       {"darkcyan", 0x008b8b},
                                       {"darkgoldenrod", 0xb8860b},
                                       {"darkgray", 0xa9a9a9},
                                       {"darkgreen", 0x006400},
                                       {"darkgrey", 0xa9a9a9},
                                       {"darkkhaki", 0xbdb76b},
                                       {"darkmagenta", 0x8b008b},
                                       {"darkolivegreen", 0x556b2f},
                                       {"darkorange", 0xff8c00},
                                       {"darkorchid", 0x9932cc},
                                       {"darkred", 0x8b0000},
                                       {"darksalmon", 0xe9967a},
                                       {"darkseagreen", 0x8fbc8f},
                                       {"darkslateblue", 0x483d8b},
                                       {"darkslategray", 0x2f4f4f},
                                       {"darkslategrey", 0x2f4f4f},
                                       {"darkturquoise", 0x00ced1},
                                       {"darkviolet", 0x9400d3},
                                       {"deeppink", 0xff1493},
                                       {"deepskyblue", 0x00bfff},
                                       {"dimgray", 0x696969},
                                       {"dimgrey", 0x696969},
                                       {"dodgerblue", 0x1e90ff},
                                       {"firebrick", 0xb22222},
                                       {"floralwhite", 0xfffaf0},
                                       {"forestgreen", 0x228b22},
                                       {"fuchsia", 0xff00ff},
                                       {"gainsboro", 0xdcdcdc},
                                       {"ghostwhite", 0xf8f8ff},
                                       {"gold", 0xffd700},
                                       {"goldenrod", 0xdaa520},
                                       {"gray", 0x808080},
                                       {"green", 0x008000},
                                       {"greenyellow", 0xadff2f},
                                       {"grey", 0x808080},
                                       {"honeydew", 0xf0fff0},
                                       {"hotpink", 0xff69b4},
                                       {"indianred", 0xcd5c5c},
                                       {"indigo", 0x4b0082},
                                       {"ivory", 0xfffff0},
                                       {"khaki", 0xf0e68c},
                                       {"lavender", 0xe6e6fa},
                                       {"lavenderblush", 0xfff0f5},
                                       {"lawngreen", 0x7cfc00},
                                       {"lemonchiffon", 0xfffacd},
                                       {"lightblue", 0xadd8e6},
                                       {"lightcoral", 0xf08080},
                                       {"lightcyan", 0xe0ffff},
                                       {"lightgoldenrodyellow", 0xfafad2},
                                       {"lightgray", 0xd3d3d3},
                                       {"lightgreen", 0x90ee90},
                                       {"lightgrey", 0xd3d3d3},
                                       {"lightpink", 0xffb6c1},
                                       {"lightsalmon", 0xffa07a},
                                       {"lightseagreen", 0x20b2aa},
                                       {"lightskyblue", 0x87cefa},
                                       {"lightslategray", 0x778899},
                                       {"lightslategrey", 0x778899},
                                       {"lightsteelblue", 0xb0c4de},
                                       {"lightyellow", 0xffffe0},
                                       {"lime", 0x00ff00},
                                       {"limegreen", 0x32cd32},
                                       {"linen", 0xfaf0e6},
                                       {"magenta", 0xff00ff},
                                       {"maroon", 0x800000},
                                       {"mediumaquamarine", 0x66cdaa},
                                       {"mediumblue", 0x0000cd},
                                       {"mediumorchid", 0xba55d3},
                                       {"mediumpurple", 0x9370db},
                                       {"mediumseagreen", 0x3cb371},
                                       {"mediumslateblue", 0x7b68ee},
                                       {"mediumspringgreen", 0x00fa9a},
                                       {"mediumturquoise", 0x48d1cc},
                                       {"mediumvioletred", 0xc71585},
                                       {"midnightblue", 0x191970},
                                       {"mintcream", 0xf5fffa},
                                       {"mistyrose", 0xffe4e1},
                                       {"moccasin", 0xffe4b5},
                                       {"navajowhite", 0xffdead},
                                       {"navy", 0x000080},
                                       {"oldlace", 0xfdf5e6},
                                       {"olive", 0x808000},
                                       {"olivedrab", 0x6b8e23},
                                       {"orange", 0xffa500},
                                       {"orangered", 0xff4500},
                                       {"orchid", 0xda70d6},
                                       {"palegoldenrod", 0xeee8aa},
                                       {"palegreen", 0x98fb98},
                                       {"paleturquoise", 0xafeeee},
                                       {"palevioletred", 0xdb7093},
                                       {"papayawhip", 0xffefd5},
                                       {"peachpuff", 0xffdab9},
                                       {"peru", 0xcd853f},
                                       {"pink", 0xffc0cb},
                                       {"plum", 0xdda0dd},
                                       {"powderblue", 0xb0e0e6},
                                       {"purple", 0x800080},
                                       {"red", 0xff0000},
                                       {"rosybrown", 0xbc8f8f},
                                       {"royalblue", 0x4169e1},
                                       {"saddlebrown", 0x8b4513},
                                       {"salmon", 0xfa8072},
                                       {"sandybrown", 0xf4a460},
                                       {"seagreen", 0x2e8b57},
                                       {"seashell", 0xfff5ee},
                                       {"sienna", 0xa0522d},
                                       {"silver", 0xc0c0c0},
                                       {"skyblue", 0x87ceeb},
                                       {"slateblue", 0x6a5acd},
                                       {"slategray", 0x708090},
                                       {"slategrey", 0x708090},
                                       {"snow", 0xfffafa},
                                       {"springgreen", 0x00ff7f},
                                       {"steelblue", 0x4682b4},
                                       {"tan", 0xd2b48c},
                                       {"teal", 0x008080},
                                       {"thistle", 0xd8bfd8},
                                       {"tomato", 0xff6347},
                                       {"turquoise", 0x40e0d0},
                                       {"violet", 0xee82ee},
                                       {"wheat", 0xf5deb3},
                                       {"white", 0xffffff},
                                       {"whitesmoke", 0xf5f5f5},
                                       {"yellow", 0xffff00},
                                       {"yellowgreen", 0x9acd32}};
static_assert(std::ranges::is_sorted(kNamedColors, {}, &NamedColor::name), "searched by halving");

[[nodiscard]] Color fromBytes(std::uint32_t rgb) noexcept {
  return {((rgb >> 16) & 255) / 255.0, ((rgb >> 8) & 255) / 255.0, (rgb & 255) / 255.0, 1};
}

/// Parses the digits after "#": 3 or 6, or 4 or 8 with alpha.
[[nodiscard]] std::optional<Color> fromHex(std::string_view digits) {
  std::uint32_t bits = 0;
  const char* const end = digits.data() + digits.size();
  const auto [after, fault] = std::from_chars(digits.data(), end, bits, 16);
  if (fault != std::errc() || after != end) return std::nullopt;
  if (digits.size() == 3 || digits.size() == 4) {  // each digit is doubled
    std::uint32_t wide = 0;
    for (std::size_t i = digits.size(); i-- > 0;) wide = wide << 8 | ((bits >> (4 * i)) & 15) * 17;
    bits = wide;
  } else if (digits.size() != 6 && digits.size() != 8) {
    return std::nullopt;
  }
  if (digits.size() % 4 != 0) return fromBytes(bits);
  Color color = fromBytes(bits >> 8);
  color.alpha = (bits & 255) / 255.0;
  return color;
}

/// Parses the arguments of rgb() and rgba(): three numbers up to 255 or percentages, optional
/// alpha.
[[nodiscard]] std::optional<Color> fromComponents(std::string_view arguments) {
  Scanner scanner(arguments);
  std::array<double, 4> parts{0, 0, 0, 1};
  std::size_t count = 0;
  scanner.skipSpace();
  for (; count < parts.size() && !scanner.atEnd(); ++count) {
    const auto number = scanner.takeNumber();
    if (!number) return std::nullopt;
    const double whole = scanner.take("%") ? 100 : count < 3 ? 255 : 1;
    parts[count] = std::clamp(*number / whole, 0.0, 1.0);
    scanner.skipSeparator();
    if (scanner.take("/")) scanner.skipSpace();
  }
  if (count < 3 || !scanner.atEnd()) return std::nullopt;
  return Color{parts[0], parts[1], parts[2], parts[3]};
}

/// Returns a pure colour of the colour wheel.
[[nodiscard]] Color fromHue(double degrees) {
  const double turn = std::fmod(degrees, 360) / 60 + (degrees < 0 ? 6 : 0);  // 0...6
  return {std::clamp(std::abs(turn - 3) - 1, 0.0, 1.0),
          std::clamp(2 - std::abs(turn - 2), 0.0, 1.0),
          std::clamp(2 - std::abs(turn - 4), 0.0, 1.0), 1};
}

/// Parses the arguments of hsl(), hsla() and hwb(): an angle, two percentages, optional alpha.
/// Source: CSS Color Module Level 4, sections 7 and 8.
[[nodiscard]] std::optional<Color> fromWheel(std::string_view arguments, bool isHwb) {
  Scanner scanner(arguments);
  scanner.skipSpace();
  const std::string_view before = scanner.rest();
  while (!scanner.atEnd() && !isSpace(scanner.peek()) && scanner.peek() != ',') scanner.next();
  const auto degrees = parseAngle(before.substr(0, before.size() - scanner.rest().size()), true);
  std::array<double, 3> parts{0, 0, 1};
  std::size_t count = 0;
  scanner.skipSeparator();
  for (; count < parts.size() && !scanner.atEnd(); ++count) {
    const auto number = scanner.takeNumber();
    const bool isPercentage = scanner.take("%");
    if (!number || (count < 2 && !isPercentage)) return std::nullopt;
    parts[count] = std::clamp(isPercentage ? *number / 100 : *number, 0.0, 1.0);
    scanner.skipSeparator();
    if (scanner.take("/")) scanner.skipSpace();
  }
  if (!degrees || count < 2 || !scanner.atEnd()) return std::nullopt;
  const auto [first, second, alpha] = parts;
  // The pure colour's share, and the grey that it is mixed with.
  double share = 0, least = 0;
  if (isHwb) {
    const double sum = std::max(1.0, first + second);
    share = 1 - (first + second) / sum;
    least = first / sum;
  } else {
    share = first * (1 - std::abs(2 * second - 1));
    least = second - share / 2;
  }
  const Color hue = fromHue(*degrees);
  return Color{least + share * hue.red, least + share * hue.green, least + share * hue.blue, alpha};
}

[[nodiscard]] std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

}  // namespace

std::optional<Color> parseColor(std::string_view text) {
  text = trimmed(text);
  if (const std::size_t profile = text.find("icc-color"); profile != text.npos) {
    text = trimmed(text.substr(0, profile));
  }
  if (text.starts_with('#')) return fromHex(text.substr(1));
  const std::string name = lowered(text);
  if (const std::size_t open = name.find('('); open != name.npos && name.ends_with(')')) {
    const std::string_view function = std::string_view(name).substr(0, open);
    const std::string_view arguments =
        std::string_view(name).substr(open + 1, name.size() - open - 2);
    if (function == "rgb" || function == "rgba") return fromComponents(arguments);
    const bool isHwb = function == "hwb";
    if (isHwb || function == "hsl" || function == "hsla") return fromWheel(arguments, isHwb);
    return std::nullopt;
  }
  if (name == "transparent") return Color{0, 0, 0, 0};
  const auto found =
      std::ranges::lower_bound(kNamedColors, std::string_view(name), {}, &NamedColor::name);
  if (found == std::end(kNamedColors) || found->name != name) return std::nullopt;
  return fromBytes(found->rgb);
}

std::string colorText(const Color& color) {
  const auto byte = [](double part) { return static_cast<unsigned>(std::lround(part * 255)); };
  std::array<char, 8> text;
  std::snprintf(text.data(), text.size(), "#%02x%02x%02x", byte(color.red), byte(color.green),
                byte(color.blue));
  return text.data();
}

}  // namespace tqdoc
