#pragma once

/// @file TQSize.h
/// Sizes measured, turned, scaled and compared.

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// √(width² + height²). The squares overflow beyond 1e154 and vanish below 1e-162.
[[nodiscard]] TQ_EXPORT double TQSizeGetMagnitude(Size size) noexcept;

/// Width and height exchanged.
[[nodiscard]] constexpr Size TQSizeFlip(Size size) noexcept { return {size.height, size.width}; }

/// Both extents times `factor`, which may be negative.
[[nodiscard]] constexpr Size TQSizeScale(Size size, double factor) noexcept {
  return {size.width * factor, size.height * factor};
}

/// Divided by its magnitude; unchanged when that is below 1e-09 or NaN.
[[nodiscard]] TQ_EXPORT Size TQSizeNormalise(Size size) noexcept;

/// True when `inner` is no wider and no higher than `outer`. Raw fields; false with NaN.
[[nodiscard]] constexpr bool TQSizeContainsSize(Size outer, Size inner) noexcept {
  return outer.width >= inner.width && outer.height >= inner.height;
}

}  // namespace tq
