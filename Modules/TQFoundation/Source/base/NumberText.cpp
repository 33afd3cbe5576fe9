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

/// Writes eight digits as characters.
void writeDigits(char* to, std::uint64_t digits) noexcept {
  digits |= 0x3030'3030'3030'3030;
  if constexpr (std::endian::native == std::endian::big) digits = __builtin_bswap64(digits);
  std::memcpy(to, &digits, sizeof digits);
}

/// Returns the number of zeros at the end of eight digits.
int trailingZeros(std::uint64_t digits) noexcept { return std::countl_zero(digits) / 8; }

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
    digits += rest > kHalf || (rest == kHalf && (digits & 1) != 0) ? 1 : 0;
    if (digits == powerOf10(Digits)) return {powerOf10(Digits - 1), exponent + 1};
    return {digits, exponent};
  }
}

/// Writes d.ddd · 10^exponent in the form that %g chooses. The last of the `count` digits is not 0.
/// 24 more bytes after them must be readable, and copies of fixed size may write past the end of
/// the text.
template <int Digits>
char* layOut(char* to, const char* digits, int count, int exponent) noexcept {
  if (exponent < -4) {  // whole numbers are handled elsewhere, so no exponent is large
    *to = digits[0];
    to[1] = '.';
    std::memcpy(to + 2, digits + 1, 16);
    to += count > 1 ? count + 1 : 1;
    std::memcpy(to, "e-", 2);
    to[2] = static_cast<char>('0' + -exponent / 10);
    to[3] = static_cast<char>('0' + -exponent % 10);
    return to + 4;
  }
  if (exponent < 0) {
    std::memcpy(to, "0.000", 5);
    std::memcpy(to + 1 - exponent, digits, 24);
    return to + 1 - exponent + count;
  }
  std::memcpy(to, digits, 16);
  std::memcpy(to + exponent + 2, digits + exponent + 1, 16);
  to[exponent + 1] = '.';
  return to + (count > exponent + 1 ? count + 1 : exponent + 1);
}

template <int Digits>
char* writeDouble(char* to, double value) noexcept {
  const double magnitude = std::fabs(value);
  if (!(magnitude < static_cast<double>(powerOf10(Digits)))) return viaLibrary(to, value, Digits);
  *to = '-';
  to += std::signbit(value) ? 1 : 0;
  const auto whole = static_cast<std::int64_t>(magnitude);
  if (static_cast<double>(whole) == magnitude) return writeInteger(to, whole);
  if (!(magnitude > 1e-11)) return viaLibrary(to, magnitude, Digits);

  const Scaled scaled = scale<Digits>(magnitude);
  char digits[48];
  char* first = digits;
  std::uint64_t rest = scaled.digits;
  if constexpr (Digits == 17) {
    *first++ = static_cast<char>('0' + rest / powerOf10(16));
    rest %= powerOf10(16);
  }
  const std::uint64_t high = eightDigits(static_cast<std::uint32_t>(rest / powerOf10(8)));
  const std::uint64_t low = eightDigits(static_cast<std::uint32_t>(rest % powerOf10(8)));
  writeDigits(first, high);
  writeDigits(first + 8, low);
  const int zeros = low != 0 ? trailingZeros(low) : 8 + trailingZeros(high);
  return layOut<Digits>(to, digits, Digits - zeros, scaled.exponent);
}

}  // namespace

char* writeDouble16(char* to, double value) noexcept { return writeDouble<16>(to, value); }

char* writeDouble17(char* to, double value) noexcept { return writeDouble<17>(to, value); }

char* writeFloat7(char* to, float value) noexcept { return viaLibrary(to, value, 7); }

char* writeUnsigned(char* to, std::uint64_t value) noexcept {
  return std::to_chars(to, to + kNumberTextCapacity, value).ptr;
}

char* writeInteger(char* to, std::int64_t value) noexcept {
  return std::to_chars(to, to + kNumberTextCapacity, value).ptr;
}

}  // namespace tq
