#include <TQFoundation/objects/UTF.h>

#include <cstdint>
#include <cstring>

namespace tq::detail {

DecodedPoint decodePoint(std::string_view text) noexcept {
  if (text.empty()) return {};
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t count = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < count) return {};
  char32_t point = lead & (0x7Fu >> count);
  for (std::size_t i = 1; i < count; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {};
    point = (point << 6) | (byte(i) & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (point < kSmallest[count] || point > 0x10FFFF) return {};
  return {point, count};
}

std::optional<std::size_t> firstMalformedByte(std::string_view bytes) noexcept {
  std::size_t i = 0;
  while (i < bytes.size()) {
    // Eight ASCII bytes at a time.
    while (i + 8 <= bytes.size()) {
      std::uint64_t word;
      std::memcpy(&word, bytes.data() + i, sizeof word);
      if ((word & 0x8080808080808080u) != 0) break;
      i += 8;
    }
    if (i == bytes.size()) break;
    const DecodedPoint point = decodePoint(bytes.substr(i));
    if (point.byteCount == 0 || point.isSurrogate()) return i;
    i += point.byteCount;
  }
  return std::nullopt;
}

void appendPoint(std::string& text, char32_t point) {
  const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xC0 | (point >> 6));
    put(0x80 | (point & 0x3F));
  } else if (point < 0x10000) {
    put(0xE0 | (point >> 12));
    put(0x80 | ((point >> 6) & 0x3F));
    put(0x80 | (point & 0x3F));
  } else {
    put(0xF0 | (point >> 18));
    put(0x80 | ((point >> 12) & 0x3F));
    put(0x80 | ((point >> 6) & 0x3F));
    put(0x80 | (point & 0x3F));
  }
}

void appendUnits(std::u16string& units, char32_t point) {
  if (point < 0x10000) {
    units.push_back(static_cast<char16_t>(point));
  } else {
    units.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
    units.push_back(static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF)));
  }
}

std::string utf8FromUnits(std::u16string_view units, bool& wellFormed) {
  std::string text;
  text.reserve(units.size());
  wellFormed = true;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t point = units[i];
    const bool high = point >= 0xD800 && point <= 0xDBFF;
    if (high && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
      point = 0x10000 + ((point - 0xD800) << 10) + (units[++i] - 0xDC00u);
    } else if (high || (point >= 0xDC00 && point <= 0xDFFF)) {
      wellFormed = false;
    }
    appendPoint(text, point);
  }
  return text;
}

}  // namespace tq::detail
