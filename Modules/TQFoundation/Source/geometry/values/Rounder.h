#pragma once

/// @file Rounder.h
/// Rounds values, points, sizes and vectors to a grid.

#include <concepts>
#include <type_traits>

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQRectRounding.h>
#include <TQFoundation/geometry/values/Rounded.h>

namespace tq {

/// Rounds to multiples of an increment. Ties round away from zero.
///
/// An increment of 0 or NaN rounds nothing. An infinite one returns NaN for every value, by the
/// formula. A negative one rounds like its magnitude, but it reverses the direction in which
/// align() searches a minimum magnitude. Points, sizes and vectors require doubles; the mask
/// selects the components that are changed. Small negative values round to -0. Threads: any, like a
/// plain value.
template <std::floating_point Value>
class Rounder {
 public:
  /// The number of steps towards a minimum magnitude that are taken one by one.
  static constexpr int kStepLimit = 1 << 24;

  Rounder() noexcept = default;  ///< rounds to whole numbers
  /// Rounds to multiples of `increment`; see above for 0, NaN and negative ones.
  explicit constexpr Rounder(Value increment) noexcept : increment_(increment) {}

  /// The increment, sign included.
  [[nodiscard]] constexpr Value roundingIncrement() const noexcept { return increment_; }
  constexpr void setRoundingIncrement(Value increment) noexcept { increment_ = increment; }

  /// Returns the multiple of the increment nearest to `value`: rounded(value / increment) ×
  /// increment.
  [[nodiscard]] Value round(Value value) const noexcept { return rounded(value).value(); }
  void roundInPlace(Value& value) const noexcept { value = round(value); }

  /// Like round(), but returns the grid too. value() of the result is what round() returns.
  [[nodiscard]] Rounded<Value> rounded(Value value) const noexcept {
    if (roundsNothing()) return {value, 1};
    if (increment_ == 1) return {TQFloatRoundHalfAwayFromZero(value), 1};
    return {TQFloatRoundHalfAwayFromZero(value / increment_), increment_};
  }

  /// Returns the nearest value on the grid that starts at `to`. An increment of 0 or NaN returns
  /// value - to + to.
  [[nodiscard]] Value align(Value value, Value to) const noexcept;
  void alignInPlace(Value& value, Value to) const noexcept { value = align(value, to); }

  /// Like align(value, to), but the magnitude of the result is at least `minimumMagnitude`. If it
  /// is below, the result moves along the grid until it is not: upwards if `value` is 0 or more,
  /// else downwards.
  ///
  /// An increment of 0 returns the minimum itself with the sign of the direction; one of NaN
  /// returns NaN. After kStepLimit steps the remaining ones are taken at once. If the steps are too
  /// small to change the number there, or the minimum is infinite, the result is the minimum with
  /// the sign of the direction.
  [[nodiscard]] Value align(Value value, Value to, Value minimumMagnitude) const noexcept;
  void alignInPlace(Value& value, Value to, Value minimumMagnitude) const noexcept {
    value = align(value, to, minimumMagnitude);
  }

  /// Applies round() to each component in the mask; the others are kept.
  [[nodiscard]] Point round(Point point, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    return {contains(mask, Axis::horizontal) ? round(point.x) : point.x,
            contains(mask, Axis::vertical) ? round(point.y) : point.y};
  }
  void roundInPlace(Point& point, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    point = round(point, mask);
  }

  /// Applies align() to each component in the mask. An increment of 0 or NaN returns the point
  /// unchanged, bit for bit.
  [[nodiscard]] Point align(Point point, Point to, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    if (roundsNothing()) return point;
    return {contains(mask, Axis::horizontal) ? align(point.x, to.x) : point.x,
            contains(mask, Axis::vertical) ? align(point.y, to.y) : point.y};
  }
  void alignInPlace(Point& point, Point to, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    point = align(point, to, mask);
  }

  /// Applies round() to each component in the mask; the others are kept.
  [[nodiscard]] Size round(Size size, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    return {contains(mask, Axis::horizontal) ? round(size.width) : size.width,
            contains(mask, Axis::vertical) ? round(size.height) : size.height};
  }

  /// Applies round() to each component in the mask; the others are kept.
  [[nodiscard]] Vector round(Vector vector, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    return {contains(mask, Axis::horizontal) ? round(vector.dx) : vector.dx,
            contains(mask, Axis::vertical) ? round(vector.dy) : vector.dy};
  }

 private:
  [[nodiscard]] constexpr bool roundsNothing() const noexcept {
    return increment_ == 0 || increment_ != increment_;
  }

  Value increment_ = 1;
};

// The additions are compiled in the library without fusing, so that results do not depend on the
// caller's flags.
extern template class TQ_EXPORT Rounder<float>;
extern template class TQ_EXPORT Rounder<double>;
extern template class TQ_EXPORT Rounder<long double>;

/// Returns the value rounded to multiples of `toNearest`, with the grid. `toNearest` is converted
/// to the type of the value: `rounded(2.4, 1)` has the value 2.
template <std::floating_point Value>
[[nodiscard]] Rounded<Value> rounded(Value value, std::type_identity_t<Value> toNearest) noexcept {
  return Rounder<Value>(toNearest).rounded(value);
}

}  // namespace tq
