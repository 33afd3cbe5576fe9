#pragma once

/// @file Number.h
/// Numbers, boxed and unboxed, that remember what they were made from.

#include <bit>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// How a number is stored: its bits, and for messages the letter that type signatures use.
enum class NumberKind : std::uint8_t {
  boolean,  ///< 'c'; told from int8 so that stores can give a boolean back as one
  int8,     ///< 'c'
  int16,    ///< 's'
  int32,    ///< 'i'
  int64,    ///< 'q'
  uint64,   ///< 'Q'; only for values above 2^63 - 1
  float32,  ///< 'f'
  float64,  ///< 'd'
};

/// A number by value: 16 bytes, trivially copyable. The unboxed twin of Number.
///
/// The kind follows the type it is made from; unsigned types go one kind up, so that every value of
/// theirs fits: unsigned char and short are int16, unsigned short and int are int32, unsigned int
/// and long are int64, and unsigned long is int64 as far as that reaches, uint64 beyond.
class NumberValue {
 public:
  constexpr NumberValue() noexcept : NumberValue(std::int64_t{0}) {}

  /// Keeps the smallest signed kind that holds every value of T: an 8-bit unsigned integer becomes
  /// an int16. Of the 64-bit unsigned ones only those beyond int64 are kept as uint64.
  template <class T>
  requires std::is_arithmetic_v<T>
  constexpr NumberValue(T value) noexcept  // NOLINT: a number is a number
      : kind_(kindFor(value)),
        bits_(std::floating_point<T> ? std::bit_cast<std::uint64_t>(static_cast<double>(value))
                                     : static_cast<std::uint64_t>(value)) {}

  /// Any integral value under a kind of one's choice, as stores and packed arrays need it.
  [[nodiscard]] static constexpr NumberValue withKind(NumberKind kind,
                                                      std::uint64_t bits) noexcept {
    NumberValue value;
    value.kind_ = kind;
    value.bits_ = bits;
    return value;
  }

  /// The kind that it was made with.
  [[nodiscard]] constexpr NumberKind kind() const noexcept { return kind_; }

  /// The letter of the kind: c s i q Q f d.
  [[nodiscard]] constexpr char typeCode() const noexcept {
    return "ccsiqQfd"[static_cast<std::size_t>(kind_)];
  }

  /// Made from a bool.
  [[nodiscard]] constexpr bool isBoolean() const noexcept { return kind_ == NumberKind::boolean; }
  /// A float or a double.
  [[nodiscard]] constexpr bool isFloating() const noexcept { return kind_ >= NumberKind::float32; }

  /// Integers in two's complement, floating kinds as the bits of a double.
  [[nodiscard]] constexpr std::uint64_t bits() const noexcept { return bits_; }

  /// True for everything but 0; 0.5 and NaN are true.
  [[nodiscard]] constexpr bool boolValue() const noexcept {
    return isFloating() ? floating() != 0 : bits_ != 0;
  }

  /// Truncated toward zero; saturates at the ends of the range; NaN is 0.
  [[nodiscard]] constexpr std::int64_t integerValue() const noexcept {
    if (kind_ == NumberKind::uint64) return std::numeric_limits<std::int64_t>::max();
    if (!isFloating()) return static_cast<std::int64_t>(bits_);
    const double value = floating();
    if (value != value) return 0;
    if (value >= 0x1p63) return std::numeric_limits<std::int64_t>::max();
    if (value <= -0x1p63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
  }

  /// The nearest double.
  [[nodiscard]] constexpr double doubleValue() const noexcept {
    if (isFloating()) return floating();
    return kind_ == NumberKind::uint64 ? static_cast<double>(bits_)
                                       : static_cast<double>(static_cast<std::int64_t>(bits_));
  }

  /// By value across kinds. Integers compare exactly, an integer and a floating number as doubles,
  /// NaN equals NaN.
  [[nodiscard]] TQ_EXPORT bool isEqual(NumberValue other) const noexcept;

  /// Equal numbers have equal hashes.
  [[nodiscard]] TQ_EXPORT std::size_t hash() const noexcept;

  /// Decimal text: integers plain, float with 7 significant digits, double with 16, as %g forms
  /// them; "nan", "inf", "-inf". Never by locale. 0.56 is 0.5600000000000001, 100.0 is 100, -0.0 is
  /// -0.
  [[nodiscard]] TQ_EXPORT std::string text() const;

  /// The same into room for kNumberTextCapacity characters. @return its end
  TQ_EXPORT char* writeText(char* to) const noexcept;

 private:
  template <class T>
  [[nodiscard]] static constexpr NumberKind kindFor(T value) noexcept {
    if constexpr (std::same_as<T, bool>) return NumberKind::boolean;
    if constexpr (std::same_as<T, float>) return NumberKind::float32;
    if constexpr (std::floating_point<T>) return NumberKind::float64;
    constexpr std::size_t kHeld = sizeof(T) * (std::is_unsigned_v<T> ? 2 : 1);
    if constexpr (kHeld == 1) return NumberKind::int8;
    if constexpr (kHeld == 2) return NumberKind::int16;
    if constexpr (kHeld == 4) return NumberKind::int32;
    if constexpr (kHeld == 8) return NumberKind::int64;
    return static_cast<std::uint64_t>(value) >
                   static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
               ? NumberKind::uint64
               : NumberKind::int64;
  }

  [[nodiscard]] constexpr double floating() const noexcept { return std::bit_cast<double>(bits_); }

  NumberKind kind_;
  std::uint64_t bits_;
};

/// A NumberValue as an object. Threads: any; immutable.
class TQ_EXPORT Number final : public Subclass<Number> {
 public:
  static constexpr std::string_view className = "Number";
  static constexpr std::string_view codingName = "NSNumber";

  /// A new box. Equal numbers have boxes of their own: compare with isEqual().
  [[nodiscard]] static Ref<Number> numberWith(NumberValue value);

  /// The number with its kind.
  [[nodiscard]] NumberValue value() const noexcept {
    return NumberValue::withKind(static_cast<NumberKind>(headerDetail()), bits_);
  }
  /// The value's, converted as NumberValue says.
  [[nodiscard]] bool boolValue() const noexcept { return value().boolValue(); }
  [[nodiscard]] std::int64_t integerValue() const noexcept { return value().integerValue(); }
  [[nodiscard]] double doubleValue() const noexcept { return value().doubleValue(); }

  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override { return value().hash(); }
  [[nodiscard]] std::string description() const override { return value().text(); }

 private:
  explicit Number(NumberValue value) noexcept
      : Subclass(ObjectKind::number, static_cast<std::uint8_t>(value.kind())),
        bits_(value.bits()) {}

  const std::uint64_t bits_;
};

}  // namespace tq
