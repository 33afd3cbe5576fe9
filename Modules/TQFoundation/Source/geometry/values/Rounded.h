#pragma once

/// @file Rounded.h
/// Rounded numbers that keep their grid.

#include <concepts>
#include <cstddef>
#include <functional>

namespace tq {

/// A multiple of a grid's step: `integral` steps of the length `multiplier`.
///
/// If no grid was applied (the increment was 0 or NaN), `integral` is the value itself and
/// `multiplier` is 1. Equality and hash use both fields: 1 step of 2 is not equal to 2 steps of 1,
/// although their values are. Both zeros are equal, and NaN equals nothing.
template <std::floating_point Value>
struct Rounded {
  Value integral = 0;    ///< number of steps; a whole number if a grid was applied
  Value multiplier = 1;  ///< length of a step; 1 if no grid was applied

  /// Returns integral × multiplier. It is bit for bit what Rounder::round() returns.
  [[nodiscard]] constexpr Value value() const noexcept { return integral * multiplier; }

  friend constexpr bool operator==(Rounded, Rounded) noexcept = default;
};

}  // namespace tq

// Consistent with ==, so that rounded values can be keys.
/// @cond
template <class Value>
struct std::hash<tq::Rounded<Value>> {
  std::size_t operator()(tq::Rounded<Value> rounded) const noexcept {
    const std::size_t integral = std::hash<Value>{}(rounded.integral);
    return integral * 1000003 ^ std::hash<Value>{}(rounded.multiplier);
  }
};
/// @endcond
