#include <TQFoundation/platform/text/PrintableText.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include <TQFoundation/objects/UTF.h>

namespace tq {
namespace {

/// Returns whether a character could break the line, control the terminal, or make a text look like
/// another one.
bool isDisruptive(char32_t point) noexcept {
  const auto isBetween = [point](char32_t first, char32_t last) {
    return point >= first && point <= last;
  };
  return point < U' ' || isBetween(0x7F, 0x9F) || isBetween(0x2028, 0x202E) ||
         isBetween(0x2066, 0x2069);
}

void appendEscaped(std::string& line, char32_t value, bool isByte) {
  constexpr std::pair<char32_t, const char*> kShort[] = {
      {U'\n', "\\n"}, {U'\r', "\\r"}, {U'\t', "\\t"}};
  for (const auto& [point, escape] : kShort) {
    if (point == value) {
      line += escape;
      return;
    }
  }
  const auto number = static_cast<std::uint32_t>(value);
  line += isByte ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{:04x}", number);
}

}  // namespace

std::string printableText(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const detail::DecodedPoint point = detail::decodePoint(text);
    const std::size_t length = std::max<std::size_t>(point.byteCount, 1);
    if (point.byteCount == 0) {
      appendEscaped(line, static_cast<unsigned char>(text[0]), true);
    } else if (isDisruptive(point.value) || point.isSurrogate()) {
      appendEscaped(line, point.value, length == 1);
    } else {
      line += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return line;
}

}  // namespace tq
