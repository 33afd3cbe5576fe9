#pragma once

/// @file Rounded.h
/// A rounded number that remembers its grid.

#include <concepts>
#include <cstddef>
#include <functional>

namespace tq {

/// A multiple of a grid's step: `integral` steps of `multiplier`.
///
/// A value that no grid applied to (its increment was 0 or NaN) is itself, times 1. Equality and
/// hash look at both fields: 1 step of 2 is not 2 steps of 1, although their values are equal. Both
/// zeros are equal, NaN equals nothing.
template <std::floating_point Value>
struct Rounded {
  Value integral = 0;    ///< how many steps; a whole number unless no grid applied
  Value multiplier = 1;  ///< how large a step is; 1 when no grid applied

  /// integral × multiplier: what rounding to the grid answered, to the last bit.
  [[nodiscard]] constexpr Value value() const noexcept { return integral * multiplier; }

  friend constexpr bool operator==(Rounded, Rounded) noexcept = default;
};

}  // namespace tq

// Goes with ==, so that rounded values can be keys.
/// @cond
template <class Value>
struct std::hash<tq::Rounded<Value>> {
  std::size_t operator()(tq::Rounded<Value> rounded) const noexcept {
    const std::size_t integral = std::hash<Value>{}(rounded.integral);
    return integral * 1000003 ^ std::hash<Value>{}(rounded.multiplier);
  }
};
/// @endcond
