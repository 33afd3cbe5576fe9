#pragma once

/// @file TQAxis.h
/// Creates and flips axes and axis masks.

#include <TQFoundation/base/Axis.h>

namespace tq {

/// Returns the mask of the axes that are true.
[[nodiscard]] constexpr AxisMask TQAxisMaskMake(bool horizontal, bool vertical) noexcept {
  return static_cast<AxisMask>((vertical ? 2U : 0U) + (horizontal ? 1U : 0U));
}

/// Returns the mask of this axis alone: bit (1 << axis). It is empty for a value of 32 or more.
[[nodiscard]] constexpr AxisMask TQAxisMaskFromAxis(Axis axis) noexcept {
  const auto bit = static_cast<unsigned>(axis);
  return bit < 32 ? static_cast<AxisMask>(1U << bit) : AxisMask::none;
}

/// Returns the other axis. An unknown value v becomes 1 - v, so that flipping twice restores it.
[[nodiscard]] constexpr Axis TQAxisFlip(Axis axis) noexcept {
  return static_cast<Axis>(static_cast<int>(1U - static_cast<unsigned>(axis)));
}

/// Returns the axes that are not in the mask. Unknown bits are kept.
[[nodiscard]] constexpr AxisMask TQAxisMaskFlip(AxisMask mask) noexcept {
  return static_cast<AxisMask>(static_cast<unsigned>(mask) ^ 3U);
}

}  // namespace tq
