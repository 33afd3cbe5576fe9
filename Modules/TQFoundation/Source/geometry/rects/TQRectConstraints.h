#pragma once

/// @file TQRectConstraints.h
/// Moves and resizes a rect when the area that contains it changes its size.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The distances that are fixed on each axis when the area is resized: the distance to the minimum
/// edge, the extent, the distance to the maximum edge. A distance that is not pinned is flexible.
enum class TQRectConstraints : unsigned {
  none = 0,
  minX = 1,
  width = 2,
  maxX = 4,
  minY = 8,
  height = 16,
  maxY = 32,
};

/// Returns the constraints of both.
[[nodiscard]] constexpr TQRectConstraints operator|(TQRectConstraints a,
                                                    TQRectConstraints b) noexcept {
  return static_cast<TQRectConstraints>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// Returns the new place of `rect` when its area changes from (0, 0, `fromSize`) to (0, 0,
/// `toSize`).
///
/// Each axis has three parts: the distance before the rect, its extent, the distance after it.
/// In the table, the parts that "share" divide the rest of the axis among them.
///
/// | pinned | the rect |
/// |---|---|
/// | nothing | is scaled with the area |
/// | min | keeps its distance to the minimum; its extent and the distance after it share |
/// | size | keeps its extent; the two distances share |
/// | max | keeps its distance to the maximum; the distance before it and its extent share |
/// | min, max | grows or shrinks by the whole change |
/// | min, size | does not change |
/// | size, max | follows the maximum edge |
/// | all three | does not change, like min, size |
///
/// Flexible parts share the rest in proportion to their lengths. If these add up to 0 or less, each
/// takes an equal part of the change of the area, so that a distance may stay negative. No extent
/// becomes negative. If the area is smaller than TQMinumumSizeForRectWithConstraints(), the pinned
/// parts do not fit. Then a rect with pinned min starts where it should, and a rect with pinned max
/// and flexible min ends where it should; its other edge may be outside the area. The result is
/// standardised. A null rect returns the null rect. Bits beyond the six are ignored. NaN
/// propagates.
[[nodiscard]] TQ_EXPORT Rect TQRectScaledRelativeToSizeWithConstraints(
    const Rect& rect, Size fromSize, Size toSize, TQRectConstraints constraints) noexcept;

/// Returns the smallest area size that leaves every pinned part unchanged and, if they add up to
/// more than 0, no flexible part negative: the sum of the pinned parts, but at least 0. Returns (0,
/// 0) for a null rect.
/// @param fromSize  the current size of the area
[[nodiscard]] TQ_EXPORT Size TQMinumumSizeForRectWithConstraints(
    const Rect& rect, Size fromSize, TQRectConstraints constraints) noexcept;

}  // namespace tq
