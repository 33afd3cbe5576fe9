#pragma once

/// @file TQAxis.h
/// Making and turning axes and sets of axes.

#include <TQFoundation/base/Axis.h>

namespace tq {

/// The set of the axes asked for.
[[nodiscard]] constexpr AxisMask TQAxisMaskMake(bool horizontal, bool vertical) noexcept {
  return static_cast<AxisMask>((vertical ? 2U : 0U) + (horizontal ? 1U : 0U));
}

/// The set of this axis alone: bit (1 << axis). Empty for a value beyond the bits of a mask.
[[nodiscard]] constexpr AxisMask TQAxisMaskFromAxis(Axis axis) noexcept {
  const auto bit = static_cast<unsigned>(axis);
  return bit < 32 ? static_cast<AxisMask>(1U << bit) : AxisMask::none;
}

/// The other axis. Any other value v becomes 1 - v, so that flipping twice gives it back.
[[nodiscard]] constexpr Axis TQAxisFlip(Axis axis) noexcept {
  return static_cast<Axis>(static_cast<int>(1U - static_cast<unsigned>(axis)));
}

/// The axes that are not in the set. Unknown bits stay.
[[nodiscard]] constexpr AxisMask TQAxisMaskFlip(AxisMask mask) noexcept {
  return static_cast<AxisMask>(static_cast<unsigned>(mask) ^ 3U);
}

}  // namespace tq
