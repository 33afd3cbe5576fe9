#include <TQFoundation/base/NumberText.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

// A double is converted in one of three ways, all exact:
//   1. whole numbers below 10^P: integer formatting;
//   2. fractions above 1e-11: value = m · 2^e with m < 2^53. The P wanted digits are the integer
//      m · 5^k / 2^(-e-k), for the k that gives it P digits. 5^27 < 2^63, so the product fits
//      128 bits; the division is a shift, and its remainder decides the rounding, half to even;
//   3. the rest, through std::to_chars, which prints what printf prints.
// The second way does not branch on what differs from number to number without a pattern: whether
// the last digit is rounded up, and how many zeros are at the end.

namespace tq {
namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kMaxPowerOf5 = 27;

struct PowersOf5 {
  std::uint64_t of[kMaxPowerOf5 + 1];
};

constexpr PowersOf5 kPowersOf5 = [] {
  PowersOf5 powers{};
  powers.of[0] = 1;
  for (int i = 1; i <= kMaxPowerOf5; ++i) powers.of[i] = powers.of[i - 1] * 5;
  return powers;
}();

constexpr std::uint64_t powerOf10(int exponent) {
  std::uint64_t power = 1;
  while (exponent-- > 0) power *= 10;
  return power;
}

/// The eight decimal digits of a number below 10^8, one in each byte, the first in the lowest byte.
///
/// Divides in parallel: by 10^4 into two lanes, each by 100 into two, each by 10 into two. The
/// factors are reciprocals that are exact for the lanes' ranges (x · 10486 >> 20 = x / 100 below
/// 10^4, x · 103 >> 10 = x / 10 below 100).
std::uint64_t eightDigits(std::uint32_t value) noexcept {
  const std::uint64_t fours = value / 10000 | (static_cast<std::uint64_t>(value % 10000) << 32);
  const std::uint64_t hundreds = ((fours * 10486) >> 20) & 0x0000'007F'0000'007F;
  const std::uint64_t twos = hundreds + ((fours - hundreds * 100) << 16);
  const std::uint64_t tens = ((twos * 103) >> 10) & 0x000F'000F'000F'000F;
  return tens + ((twos - tens * 10) << 8);
}

/// Returns digits as characters.
constexpr std::uint64_t charactersOf(std::uint64_t digits) noexcept {
  return digits | 0x3030'3030'3030'3030;
}

/// Writes eight characters.
void writeCharacters(char* to, std::uint64_t characters) noexcept {
  if constexpr (std::endian::native == std::endian::big) {
    characters = __builtin_bswap64(characters);
  }
  std::memcpy(to, &characters, sizeof characters);
}

/// Returns eight characters with a point in front of the one at `place`, without the last one. At
/// 8, the characters are unchanged.
std::uint64_t withPoint(std::uint64_t characters, int place) noexcept {
  const int half = 4 * place;  // a shift by 64 is not defined
  const std::uint64_t after = ~std::uint64_t{0} << half << half;
  const std::uint64_t point = std::uint64_t{'.'} << half << half;
  return (characters & ~after) | point | (characters & after) << 8;
}

/// Returns the number of zeros at the end of eight digits, 7 if all are 0.
int trailingZeros(std::uint64_t digits) noexcept { return std::countl_zero(digits | 1) / 8; }

/// Writes a whole number.
inline char* writeWhole(char* to, std::uint64_t value) noexcept {
  if (value >= powerOf10(8)) return std::to_chars(to, to + kNumberTextCapacity, value).ptr;
  const std::uint64_t digits = eightDigits(static_cast<std::uint32_t>(value));
  const int zeros = std::countr_zero(digits | 1ull << 56) / 8;  // in front; 0 has one digit
  writeCharacters(to, charactersOf(digits) >> (8 * zeros));
  return to + 8 - zeros;
}

template <class Value>
char* viaLibrary(char* to, Value value, int digits) noexcept {
  if (std::isnan(value)) return static_cast<char*>(std::memcpy(to, "nan", 3)) + 3;
  return std::to_chars(to, to + kNumberTextCapacity, value, std::chars_format::general, digits).ptr;
}

/// The digits of a number as one integer of exactly `Digits` digits, and the power of ten of the
/// first.
struct Scaled {
  std::uint64_t digits = 0;
  int exponent = 0;
};

// 1e-11 … 1e16, each the nearest double.
constexpr double kPowersOf10[] = {1e-11, 1e-10, 1e-9, 1e-8, 1e-7, 1e-6, 1e-5, 1e-4, 1e-3, 1e-2,
                                  1e-1,  1e0,   1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,
                                  1e9,   1e10,  1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17};

/// Requires 1e-11 < value < 10^Digits and a fraction. (The double 1e-11 itself is below 10^-11.)
template <int Digits>
Scaled scale(double value) noexcept {
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(value);
  const std::uint64_t mantissa = (bits & ((1ull << 52) - 1)) | (1ull << 52);
  const int binaryExponent = static_cast<int>(bits >> 52) - 1075;  // value = mantissa · 2^this

  // floor(log10(2^(binaryExponent + 52))) is the exponent of ten or one too small. The comparison
  // corrects that, except where a negative power of ten is itself rounded up; there the loop does.
  int exponent = ((binaryExponent + 52) * 78913) >> 18;
  exponent += value > kPowersOf10[exponent + 12] ? 1 : 0;  // the loop handles a power of ten itself
  for (;; ++exponent) {
    const int power = Digits - 1 - exponent;
    const Wide product = static_cast<Wide>(mantissa) * kPowersOf5.of[power];
    const auto high = static_cast<std::uint64_t>(product >> 64);
    const auto low = static_cast<std::uint64_t>(product);
    const int shift = -(binaryExponent + power);  // 0 … 63 for a quotient of as many digits
    if (shift < 0) continue;
    std::uint64_t digits = (high << 1 << (63 - shift)) | (low >> shift);
    if (high >> shift != 0 || digits >= powerOf10(Digits)) continue;
    const std::uint64_t rest = low << 1 << (63 - shift);
    constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
    digits += static_cast<std::uint64_t>(rest > kHalf) |
              (static_cast<std::uint64_t>(rest == kHalf) & digits & 1);
    if (digits == powerOf10(Digits)) return {powerOf10(Digits - 1), exponent + 1};
    return {digits, exponent};
  }
}

/// Writes sixteen characters, with a point in front of the one at `place`.
void writeWithPoint(char* to, std::uint64_t first, std::uint64_t second, int place) noexcept {
  if (place < 8) {
    writeCharacters(to, withPoint(first, place));
    writeCharacters(to + 8, second << 8 | first >> 56);
  } else {
    writeCharacters(to, first);
    writeCharacters(to + 8, withPoint(second, place - 8));
  }
  to[16] = static_cast<char>(second >> 56);
}

/// Writes in the form that %g chooses. Up to 24 bytes are written, also past the end of the text.
template <int Digits>
char* writeDouble(char* to, double value) noexcept {
  const double magnitude = std::fabs(value);
  if (!(magnitude < static_cast<double>(powerOf10(Digits)))) return viaLibrary(to, value, Digits);
  *to = '-';
  to += std::signbit(value) ? 1 : 0;
  const auto whole = static_cast<std::int64_t>(magnitude);
  if (static_cast<double>(whole) == magnitude) {
    return writeWhole(to, static_cast<std::uint64_t>(whole));
  }
  if (!(magnitude > 1e-11)) return viaLibrary(to, magnitude, Digits);

  auto [rest, exponent] = scale<Digits>(magnitude);
  char leading = '0';  // the first of 17 digits
  if constexpr (Digits == 17) {
    leading = static_cast<char>('0' + rest / powerOf10(16));
    rest %= powerOf10(16);
  }
  const std::uint64_t high = eightDigits(static_cast<std::uint32_t>(rest / powerOf10(8)));
  const std::uint64_t low = eightDigits(static_cast<std::uint32_t>(rest % powerOf10(8)));
  const std::uint64_t first = charactersOf(high);
  const std::uint64_t second = charactersOf(low);
  // Not a branch: it cannot be predicted which numbers are short. Only 17 digits can end with 16
  // zeros.
  const std::uint64_t isShort = low == 0 ? 1 : 0;
  const int zeros = trailingZeros(low | (high & (0 - isShort))) + 8 * static_cast<int>(isShort) +
                    (Digits == 17 && (low | high) == 0 ? 1 : 0);
  const int count = Digits - zeros;

  const bool isSmall = exponent < 0 && exponent >= -4;
  if (isSmall) {
    std::memcpy(to, "0.000", 5);
    to += 1 - exponent;
    if constexpr (Digits == 17) *to = leading;
    writeCharacters(to + Digits - 16, first);
    writeCharacters(to + Digits - 8, second);
    return to + count;
  }
  const int place = exponent < 0 ? 0 : exponent;  // of the digit before the point
  if constexpr (Digits == 17) *to = leading;
  writeWithPoint(to + Digits - 16, first, second, place + 17 - Digits);
  to += count > place + 1 ? count + 1 : place + 1;
  if (exponent >= 0) return to;
  std::memcpy(to, "e-", 2);  // -11 is the least
  to[2] = static_cast<char>('0' + -exponent / 10);
  to[3] = static_cast<char>('0' + -exponent % 10);
  return to + 4;
}

}  // namespace

char* writeDouble16(char* to, double value) noexcept { return writeDouble<16>(to, value); }

char* writeDouble17(char* to, double value) noexcept { return writeDouble<17>(to, value); }

char* writeFloat7(char* to, float value) noexcept { return viaLibrary(to, value, 7); }

char* writeUnsigned(char* to, std::uint64_t value) noexcept { return writeWhole(to, value); }

char* writeInteger(char* to, std::int64_t value) noexcept {
  *to = '-';
  const auto magnitude = static_cast<std::uint64_t>(value);
  return value < 0 ? writeWhole(to + 1, 0 - magnitude) : writeWhole(to, magnitude);
}

}  // namespace tq
