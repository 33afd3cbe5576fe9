#pragma once

/// @file Length.h
/// Lengths with their unit, and what they are in another one.

#include <optional>
#include <string_view>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Points are of 1/72 inch, picas of 12 points. A pixel is as large as the resolution makes it.
enum class LengthUnit : int { px = 0, pt = 1, pc = 2, mm = 3, cm = 4, in = 5 };

/// "px", "pt", "pc", "mm", "cm", "in"; empty for an unknown unit.
[[nodiscard]] TQ_EXPORT std::string_view LengthUnitSymbol(LengthUnit unit) noexcept;

/// The unit of exactly this symbol.
[[nodiscard]] TQ_EXPORT std::optional<LengthUnit> LengthUnitFromSymbol(
    std::string_view symbol) noexcept;

/// A number with its unit. Any number, negative and NaN included.
struct Length {
  double value = 0;                  ///< in units of `unit`
  LengthUnit unit = LengthUnit::px;  ///< as the number was given

  /// The same length in another unit. In its own unit it is the very same number; otherwise it is
  /// value × (units of `to` per inch) / (units of its own per inch), in that order.
  ///
  /// @param pixelsPerInch  the resolution; only read when one of the units is px
  /// An unknown unit gives NaN; a resolution of 0 gives what the formula gives.
  [[nodiscard]] TQ_EXPORT Length converted(LengthUnit to, double pixelsPerInch) const noexcept;

  /// converted() to px: the number alone.
  [[nodiscard]] double inPixels(double pixelsPerInch) const noexcept {
    return converted(LengthUnit::px, pixelsPerInch).value;
  }

  /// Same number and same unit: 1 in and 72 pt differ until one is converted.
  friend constexpr bool operator==(Length, Length) noexcept = default;
};

}  // namespace tq
