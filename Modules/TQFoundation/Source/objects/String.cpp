#include <TQFoundation/objects/String.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/UTF.h>

namespace tq {

String::String(std::size_t byteCount, std::uint8_t form)
    : Subclass(ObjectKind::string, form), byteCount_(static_cast<std::uint32_t>(byteCount)) {}

Ref<String> String::make(std::string_view checkedBytes, std::uint8_t form) {
  if (checkedBytes.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw Exception(RangeException, "A string holds at most 4 GiB of text.");
  }
  auto string =
      Ref<String>::adopt(new (Trailing{checkedBytes.size()}) String(checkedBytes.size(), form));
  if (!checkedBytes.empty()) std::memcpy(string->bytes(), checkedBytes.data(), checkedBytes.size());
  return string;
}

Ref<String> String::stringWithUTF8(std::string_view bytes) {
  if (detail::firstMalformedByte(bytes)) return nullptr;
  return make(bytes, kWellFormed);
}

Ref<String> String::stringWithUTF8Repaired(std::string_view bytes) {
  std::string text;
  while (const auto malformed = detail::firstMalformedByte(bytes)) {
    text.append(bytes.substr(0, *malformed));
    detail::appendPoint(text, U'\uFFFD');
    bytes.remove_prefix(*malformed + 1);
  }
  return make(text.append(bytes), kWellFormed);
}

Ref<String> String::stringWithGeneralisedUTF8(std::string_view bytes) {
  if (!detail::firstMalformedByte(bytes)) return make(bytes, kWellFormed);
  bool afterHigh = false;
  for (std::string_view rest = bytes; !rest.empty();) {
    const detail::DecodedPoint point = detail::decodePoint(rest);
    const bool isLow = point.isSurrogate() && point.value >= 0xDC00;
    if (point.byteCount == 0 || (afterHigh && isLow)) return nullptr;
    afterHigh = point.isSurrogate() && !isLow;
    rest.remove_prefix(point.byteCount);
  }
  return make(bytes, kIllFormed);
}

Ref<String> String::stringWithUTF16(std::u16string_view units) {
  bool wellFormed = true;
  const std::string bytes = detail::utf8FromUnits(units, wellFormed);
  return make(bytes, wellFormed ? kWellFormed : kIllFormed);
}

Ref<String> String::of(std::string_view text) {
  TQ_ASSERT(!detail::firstMalformedByte(text));
  return make(text, kWellFormed);
}

std::size_t String::length() const noexcept {
  std::size_t units = 0;
  for (const char c : view()) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0) != 0x80) units += byte >= 0xF0 ? 2 : 1;
  }
  return units;
}

std::u16string String::utf16() const {
  std::u16string units;
  for (std::string_view rest = view(); !rest.empty();) {
    const detail::DecodedPoint point = detail::decodePoint(rest);
    detail::appendUnits(units, point.value);
    rest.remove_prefix(point.byteCount);
  }
  return units;
}

std::int64_t String::integerValue() const noexcept { return lenientInteger(view()); }
double String::doubleValue() const noexcept { return lenientDouble(view()); }
bool String::boolValue() const noexcept { return lenientBool(view()); }

bool String::isEqual(const Object& other) const {
  return other.kind() == ObjectKind::string && view() == static_cast<const String&>(other).view();
}

std::string String::description() const {
  if (isWellFormed()) return std::string(view());
  std::string text;
  for (std::string_view rest = view(); !rest.empty();) {
    const detail::DecodedPoint point = detail::decodePoint(rest);
    detail::appendPoint(text, point.isSurrogate() ? U'\uFFFD' : point.value);
    rest.remove_prefix(point.byteCount);
  }
  return text;
}

std::size_t String::hashOf(std::string_view text) noexcept { return detail::hashOfBytes(text); }

namespace {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::string_view skipSpace(std::string_view text) noexcept {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

const char* skipDigits(const char* at, const char* end) noexcept {
  while (at != end && isDigit(*at)) ++at;
  return at;
}

/// Returns the end of the number at `begin`: sign, digits, "." digits, exponent with a digit.
/// Returns `begin` if it has no digit.
const char* endOfDecimal(const char* begin, const char* end) noexcept {
  const char* at = begin;
  if (at != end && (*at == '+' || *at == '-')) ++at;
  const char* whole = at;
  at = skipDigits(at, end);
  std::ptrdiff_t digits = at - whole;
  if (at != end && *at == '.') {
    const char* fraction = at + 1;
    at = skipDigits(fraction, end);
    digits += at - fraction;
  }
  if (digits == 0) return begin;
  if (at != end && (*at == 'e' || *at == 'E')) {
    const char* exponent = at + 1;
    if (exponent != end && (*exponent == '+' || *exponent == '-')) ++exponent;
    const char* exponentEnd = skipDigits(exponent, end);
    if (exponentEnd != exponent) at = exponentEnd;
  }
  return at;
}

/// Returns the value of a decimal outside the range of doubles: infinity or 0, depending on the
/// position of its first digit other than 0. std::from_chars does not distinguish the two.
double outOfRange(const char* begin, const char* end) noexcept {
  const char* exponentMark = begin;
  while (exponentMark != end && *exponentMark != 'e' && *exponentMark != 'E') ++exponentMark;
  long long magnitude = 0;  // decimal exponent of the first digit other than 0
  const char* point = begin;
  while (point != exponentMark && *point != '.') ++point;
  for (const char* at = begin; at != exponentMark; ++at) {
    if (*at >= '1' && *at <= '9') {
      magnitude = at < point ? point - at - 1 : point - at;
      break;
    }
  }
  if (exponentMark != end) {
    constexpr std::int64_t kBeyondAnyText = std::int64_t{1} << 48;
    const std::string_view exponent(exponentMark + 1,
                                    static_cast<std::size_t>(end - exponentMark - 1));
    magnitude += std::clamp(lenientInteger(exponent), -kBeyondAnyText, kBeyondAnyText);
  }
  return magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

/// Reads all of the text, a decimal, as std::from_chars does. libc++ has that function for integers
/// only; there, a long text is copied to the heap.
std::errc readDecimal(const char* begin, const char* end, double& value) {
#ifdef __cpp_lib_to_chars
  return std::from_chars(begin, end, value).ec;
#else
  static const locale_t kPlain = newlocale(LC_ALL_MASK, "C", nullptr);
  errno = 0;
  value = strtod_l(std::string(begin, end).c_str(), nullptr, kPlain);
  const bool isOutside = errno == ERANGE && (value == 0 || std::isinf(value));
  return isOutside ? std::errc::result_out_of_range : std::errc();
#endif
}

}  // namespace

std::int64_t lenientInteger(std::string_view text) noexcept {
  text = skipSpace(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  constexpr std::uint64_t kLimit = std::numeric_limits<std::int64_t>::max();
  const std::uint64_t limit = negative ? kLimit + 1 : kLimit;
  std::uint64_t magnitude = 0;
  for (const char c : text) {
    if (!isDigit(c)) break;
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (magnitude > (limit - digit) / 10) {
      magnitude = limit;
      break;
    }
    magnitude = magnitude * 10 + digit;
  }
  return static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
}

ScannedDouble scanDouble(const char* begin, const char* end) noexcept {
  const char* last = endOfDecimal(begin, end);
  if (last == begin) return {0, begin};
  const bool negative = *begin == '-';
  const char* digits = begin + (negative || *begin == '+' ? 1 : 0);
  double value = 0;
  if (readDecimal(digits, last, value) == std::errc::result_out_of_range) {
    value = outOfRange(digits, last);
  }
  return {negative ? -value : value, last};
}

double lenientDouble(std::string_view text) noexcept {
  text = skipSpace(text);
  return scanDouble(text.data(), text.data() + text.size()).value;
}

bool lenientBool(std::string_view text) noexcept {
  text = skipSpace(text);
  if (text.empty()) return false;
  if (text[0] == 't' || text[0] == 'T' || text[0] == 'y' || text[0] == 'Y') return true;
  if (text[0] == '+' || text[0] == '-') text.remove_prefix(1);
  const std::size_t first = text.find_first_not_of('0');
  return first != std::string_view::npos && isDigit(text[first]);
}

}  // namespace tq
