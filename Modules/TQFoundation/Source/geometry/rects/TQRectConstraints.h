#pragma once

/// @file TQRectConstraints.h
/// Rects carried along when the area that they lie in changes its size.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// What stays as it is on each axis when the area is resized: the distance to the minimum edge, the
/// size, the distance to the maximum edge. What is not pinned is flexible.
enum class TQRectConstraints : unsigned {
  none = 0,
  minX = 1,
  width = 2,
  maxX = 4,
  minY = 8,
  height = 16,
  maxY = 32,
};

/// What is pinned by either.
[[nodiscard]] constexpr TQRectConstraints operator|(TQRectConstraints a,
                                                    TQRectConstraints b) noexcept {
  return static_cast<TQRectConstraints>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// Where `rect` is once its area, (0, 0) to `fromSize`, has become (0, 0) to `toSize`.
///
/// An axis has three parts: the distance before the rect, its extent, the distance behind it.
///
/// | pinned | the rect |
/// |---|---|
/// | nothing | is scaled with the area |
/// | min | keeps its distance to the minimum; extent and rest share what is left |
/// | size | keeps its extent; the distances share what is left |
/// | max | keeps its distance to the maximum; the others share |
/// | min, max | takes up the whole change |
/// | min, size | does not change |
/// | size, max | follows the maximum edge |
/// | all three | as min, size: the maximum edge gives way |
///
/// Flexible parts share in proportion to their lengths, or equally when these add up to 0 or less.
/// No extent falls below 0: an area smaller than TQMinumumSizeForRectWithConstraints() is
/// overrun at the maximum edge, at the minimum edge if of the two edges only the maximum is pinned.
/// Standardised; null stays null; bits beyond the six are ignored; NaN flows through.
[[nodiscard]] TQ_EXPORT Rect TQRectScaledRelativeToSizeWithConstraints(
    const Rect& rect, Size fromSize, Size toSize, TQRectConstraints constraints) noexcept;

/// The least size of the area that leaves every pinned part as it is and no flexible one negative:
/// the sum of the pinned parts, 0 at least. (0, 0) for a null rect.
/// @param fromSize  the size of the area in which the rect lies now
[[nodiscard]] TQ_EXPORT Size TQMinumumSizeForRectWithConstraints(
    const Rect& rect, Size fromSize, TQRectConstraints constraints) noexcept;

}  // namespace tq
