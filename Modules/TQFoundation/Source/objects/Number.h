#pragma once

/// @file Number.h
/// Numbers with a kind, boxed and unboxed.

#include <bit>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// How a number is stored. The letter is the one that type signatures use.
enum class NumberKind : std::uint8_t {
  boolean,  ///< 'c'; separate from int8, so that a stored boolean is read as a boolean
  int8,     ///< 'c'
  int16,    ///< 's'
  int32,    ///< 'i'
  int64,    ///< 'q'
  uint64,   ///< 'Q'; only for values above 2^63 - 1
  float32,  ///< 'f'
  float64,  ///< 'd'
};

/// An unboxed number: 16 bytes, trivially copyable. Number is the boxed form.
///
/// The kind follows the C++ type. Unsigned types use the next larger signed kind, so that every
/// value fits: unsigned char and short are int16, unsigned short and int are int32, unsigned int
/// and long are int64. Unsigned long is int64 if the value fits, else uint64.
class NumberValue {
 public:
  constexpr NumberValue() noexcept : NumberValue(std::int64_t{0}) {}

  /// Uses the smallest signed kind that holds every value of T: an 8-bit unsigned integer becomes
  /// an int16. A 64-bit unsigned integer becomes uint64 only if it does not fit int64.
  template <class T>
  requires std::is_arithmetic_v<T>
  constexpr NumberValue(T value) noexcept  // NOLINT: a number is a number
      : kind_(kindFor(value)),
        bits_(std::floating_point<T> ? std::bit_cast<std::uint64_t>(static_cast<double>(value))
                                     : static_cast<std::uint64_t>(value)) {}

  /// Creates a number of the given kind from its bits, for stores and packed arrays.
  [[nodiscard]] static constexpr NumberValue withKind(NumberKind kind,
                                                      std::uint64_t bits) noexcept {
    NumberValue value;
    value.kind_ = kind;
    value.bits_ = bits;
    return value;
  }

  /// The kind of the number.
  [[nodiscard]] constexpr NumberKind kind() const noexcept { return kind_; }

  /// The letter of the kind: c s i q Q f d.
  [[nodiscard]] constexpr char typeCode() const noexcept {
    return "ccsiqQfd"[static_cast<std::size_t>(kind_)];
  }

  /// True if it was created from a bool.
  [[nodiscard]] constexpr bool isBoolean() const noexcept { return kind_ == NumberKind::boolean; }
  /// True for a float or a double.
  [[nodiscard]] constexpr bool isFloating() const noexcept { return kind_ >= NumberKind::float32; }

  /// Returns integers in two's complement, floating kinds as the bits of a double.
  [[nodiscard]] constexpr std::uint64_t bits() const noexcept { return bits_; }

  /// Returns false for 0, true for everything else, also for 0.5 and NaN.
  [[nodiscard]] constexpr bool boolValue() const noexcept {
    return isFloating() ? floating() != 0 : bits_ != 0;
  }

  /// Returns the value truncated toward zero and clamped to the range; NaN is 0.
  [[nodiscard]] constexpr std::int64_t integerValue() const noexcept {
    if (kind_ == NumberKind::uint64) return std::numeric_limits<std::int64_t>::max();
    if (!isFloating()) return static_cast<std::int64_t>(bits_);
    const double value = floating();
    if (value != value) return 0;
    if (value >= 0x1p63) return std::numeric_limits<std::int64_t>::max();
    if (value <= -0x1p63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
  }

  /// Returns the nearest double.
  [[nodiscard]] constexpr double doubleValue() const noexcept {
    if (isFloating()) return floating();
    return kind_ == NumberKind::uint64 ? static_cast<double>(bits_)
                                       : static_cast<double>(static_cast<std::int64_t>(bits_));
  }

  /// Compares by value across kinds. Two integers are compared exactly, an integer and a floating
  /// number as doubles. NaN equals NaN.
  [[nodiscard]] TQ_EXPORT bool isEqual(NumberValue other) const noexcept;

  /// Equal numbers have equal hashes.
  [[nodiscard]] TQ_EXPORT std::size_t hash() const noexcept;

  /// Returns decimal text: integers plain, float with 7 significant digits, double with 16, in the
  /// form of %g; "nan", "inf", "-inf". Independent of the locale. Examples: "0.5600000000000001"
  /// for 0.56, "100" for 100.0, "-0" for -0.0.
  [[nodiscard]] TQ_EXPORT std::string text() const;

  /// Writes the same into a buffer of kNumberTextCapacity characters. @return the end of the text
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

  /// Creates an object. Equal numbers can be different objects: compare with isEqual().
  [[nodiscard]] static Ref<Number> numberWith(NumberValue value);

  /// Returns the unboxed number.
  [[nodiscard]] NumberValue value() const noexcept {
    return NumberValue::withKind(static_cast<NumberKind>(headerDetail()), bits_);
  }
  /// Converted as documented at NumberValue.
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
