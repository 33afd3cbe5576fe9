#pragma once

/// @file TQSize.h
/// Measures, flips, scales and compares sizes.

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns √(width² + height²). The squares overflow above 1e154 and become 0 below 1e-162.
[[nodiscard]] TQ_EXPORT double TQSizeGetMagnitude(Size size) noexcept;

/// Returns the size with width and height exchanged.
[[nodiscard]] constexpr Size TQSizeFlip(Size size) noexcept { return {size.height, size.width}; }

/// Multiplies both extents by `factor`, which may be negative.
[[nodiscard]] constexpr Size TQSizeScale(Size size, double factor) noexcept {
  return {size.width * factor, size.height * factor};
}

/// Divides the size by its magnitude. Returns it unchanged if the magnitude is below 1e-09 or NaN.
[[nodiscard]] TQ_EXPORT Size TQSizeNormalise(Size size) noexcept;

/// Returns whether `inner` is at most as wide and as high as `outer`. Compares raw fields; false
/// with NaN.
[[nodiscard]] constexpr bool TQSizeContainsSize(Size outer, Size inner) noexcept {
  return outer.width >= inner.width && outer.height >= inner.height;
}

}  // namespace tq
