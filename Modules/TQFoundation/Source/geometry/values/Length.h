#pragma once

/// @file Length.h
/// Lengths with a unit, and their conversion.

#include <optional>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Units of length. A point is 1/72 inch, a pica is 12 points. The resolution determines the size
/// of a pixel.
enum class LengthUnit : int { px = 0, pt = 1, pc = 2, mm = 3, cm = 4, in = 5 };

/// Returns "px", "pt", "pc", "mm", "cm" or "in", or an empty text for an unknown unit.
[[nodiscard]] TQ_EXPORT std::string_view LengthUnitSymbol(LengthUnit unit) noexcept;

/// Returns the unit with exactly this symbol, or nullopt.
[[nodiscard]] TQ_EXPORT std::optional<LengthUnit> LengthUnitFromSymbol(
    std::string_view symbol) noexcept;

/// A number with its unit. The number may be negative or NaN.
struct Length {
  double value = 0;                  ///< in units of `unit`
  LengthUnit unit = LengthUnit::px;  ///< the unit of `value`

  /// Returns the same length in another unit: value × (units of `to` per inch) / (units of `unit`
  /// per inch), evaluated from left to right. If the units are the same, the number is unchanged.
  ///
  /// @param pixelsPerInch  the resolution; only used if one of the units is px
  /// @return a value of NaN for an unknown unit; for a resolution of 0 the result of the formula
  [[nodiscard]] TQ_EXPORT Length converted(LengthUnit to, double pixelsPerInch) const noexcept;

  /// Returns the number that converted() to px has.
  [[nodiscard]] double inPixels(double pixelsPerInch) const noexcept {
    return converted(LengthUnit::px, pixelsPerInch).value;
  }

  /// Equal if both the number and the unit are equal: 1 in and 72 pt differ.
  friend constexpr bool operator==(Length, Length) noexcept = default;
};

}  // namespace tq
