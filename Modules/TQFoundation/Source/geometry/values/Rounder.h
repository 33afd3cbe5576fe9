#pragma once

/// @file Rounder.h
/// Values, points, sizes and vectors snapped to a grid.

#include <concepts>

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQRectRounding.h>
#include <TQFoundation/geometry/values/Rounded.h>

namespace tq {

/// Rounds to multiples of an increment, ties away from zero.
///
/// An increment of 0 or NaN rounds nothing; an infinite one makes NaN of every value, as the
/// formula has it; a negative one is as good as its magnitude, but for the direction in which a
/// minimum magnitude is sought. Points, sizes and vectors are for doubles only; the mask names the
/// components to change. Small negatives round to -0. Threads: as any plain value.
template <std::floating_point Value>
class Rounder {
 public:
  /// Steps towards a minimum magnitude that are taken one by one.
  static constexpr int kStepLimit = 1 << 24;

  Rounder() noexcept = default;  ///< whole numbers
  /// Multiples of `increment`; see above for 0, NaN and negative ones.
  explicit constexpr Rounder(Value increment) noexcept : increment_(increment) {}

  /// As given, sign included.
  [[nodiscard]] constexpr Value roundingIncrement() const noexcept { return increment_; }
  constexpr void setRoundingIncrement(Value increment) noexcept { increment_ = increment; }

  /// The multiple of the increment nearest to `value`: rounded(value / increment) × increment.
  [[nodiscard]] Value round(Value value) const noexcept { return rounded(value).value(); }
  void roundInPlace(Value& value) const noexcept { value = round(value); }

  /// The same, with the grid. Its value() is what round() answers.
  [[nodiscard]] Rounded<Value> rounded(Value value) const noexcept {
    if (roundsNothing()) return {value, 1};
    if (increment_ == 1) return {TQFloatRoundHalfAwayFromZero(value), 1};
    return {TQFloatRoundHalfAwayFromZero(value / increment_), increment_};
  }

  /// The nearest value on the grid that starts at `base`. With an increment of 0 or NaN the value
  /// still goes through value - base + base.
  [[nodiscard]] Value align(Value value, Value to) const noexcept;
  void alignInPlace(Value& value, Value to) const noexcept { value = align(value, to); }

  /// The same, but where its magnitude is below `minimumMagnitude` it steps on along the grid,
  /// upwards for a value of 0 or more and downwards for any other, until it is not.
  ///
  /// An increment of 0 gives the minimum itself with the sign of the direction; one of NaN gives
  /// NaN. After kStepLimit steps the rest is jumped over at once; where steps are too small to be
  /// told apart there, or the minimum is infinite, the answer is the minimum with the sign of the
  /// direction.
  [[nodiscard]] Value align(Value value, Value to, Value minimumMagnitude) const noexcept;
  void alignInPlace(Value& value, Value to, Value minimumMagnitude) const noexcept {
    value = align(value, to, minimumMagnitude);
  }

  /// round() of each component in the mask; the others stay as they are.
  [[nodiscard]] Point round(Point point, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    return {contains(mask, Axis::horizontal) ? round(point.x) : point.x,
            contains(mask, Axis::vertical) ? round(point.y) : point.y};
  }
  void roundInPlace(Point& point, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    point = round(point, mask);
  }

  /// Each component to the one of `to`. An increment of 0 or NaN leaves the point as it is, to the
  /// bit.
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

  /// round() of each component in the mask; the others stay as they are.
  [[nodiscard]] Size round(Size size, AxisMask mask = AxisMask::both)
      const noexcept requires std::same_as<Value, double> {
    return {contains(mask, Axis::horizontal) ? round(size.width) : size.width,
            contains(mask, Axis::vertical) ? round(size.height) : size.height};
  }

  /// round() of each component in the mask; the others stay as they are.
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

// The additions live in the library, compiled without fusing: results do not depend on who calls.
extern template class TQ_EXPORT Rounder<float>;
extern template class TQ_EXPORT Rounder<double>;
extern template class TQ_EXPORT Rounder<long double>;

/// The value rounded to multiples of the increment, with the grid.
template <std::floating_point Value>
[[nodiscard]] Rounded<Value> rounded(Value value, Value toNearest) noexcept {
  return Rounder<Value>(toNearest).rounded(value);
}

}  // namespace tq
