#pragma once

/// @file TQRectFitting.h
/// Fits sizes into rects proportionally, and maps rects between coordinate spaces.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns the largest rect with the proportions of `size` that fits in `rect`, centred. Uses raw
/// fields, for extents of 0 or more.
///
/// Equal proportions fill the whole height. If a width is 0, the result has width 0 and is in the
/// middle. It has the full height if the width of `size` is 0, and height 0 if only that of `rect`
/// is. A height of 0 is treated in the same way.
[[nodiscard]] constexpr Rect TQRectWithSizeProportionallyInRect(Size size,
                                                                const Rect& rect) noexcept {
  const auto [x, y] = rect.origin;
  const auto [width, height] = rect.size;
  if (size.width == 0 || width == 0) [[unlikely]] {
    if (size.width == 0) return {x + width / 2, y, 0, height};
    return {x + width / 2, y + height / 2, 0, 0};
  }
  if (size.height == 0 || height == 0) [[unlikely]] {
    if (size.height == 0) return {x, y + height / 2, width, 0};
    return {x + width / 2, y + height / 2, 0, 0};
  }
  if (size.width / width <= size.height / height) {
    const double fitted = size.width * height / size.height;
    return {x + (width - fitted) / 2, y, fitted, height};
  }
  const double fitted = size.height * width / size.width;
  return {x, y + (height - fitted) / 2, width, fitted};
}

/// Returns the smallest rect with the proportions of `size` that covers `rect` within rounding,
/// centred. It is the fitted rect, scaled up. Uses raw fields, for extents of 0 or more. A size
/// with an extent of 0 cannot cover a rect of positive extents: that extent of the result is NaN (0
/// × infinity), the other infinite.
[[nodiscard]] TQ_EXPORT Rect TQRectWithSizeProportionallyAroundRect(Size size,
                                                                    const Rect& rect) noexcept;

/// Sets the raw width and scales the height with it. If the width was 0, the height is kept. The
/// origin is kept.
[[nodiscard]] TQ_EXPORT Rect TQRectWithWidthRespectingProportions(double width,
                                                                  const Rect& rect) noexcept;

/// Sets the raw height and scales the width with it. If the height was 0, the width is kept. The
/// origin is kept.
[[nodiscard]] TQ_EXPORT Rect TQRectWithHeightRespectingProportions(double height,
                                                                   const Rect& rect) noexcept;

/// Sets the raw extent on the axis to `size` and computes the other one. The origin is kept.
/// @param aspectRatio  width / height. 0 and NaN return the result of the division.
[[nodiscard]] TQ_EXPORT Rect TQRectWithSizeOnAxisAspectRatio(Axis axis, double size,
                                                             double aspectRatio,
                                                             const Rect& rect) noexcept;

/// Multiplies all four raw fields by `factor`: the rect is scaled about (0, 0). A null rect returns
/// the null rect.
[[nodiscard]] TQ_EXPORT Rect TQRectScale(const Rect& rect, double factor) noexcept;

/// Moves each edge outwards by `margin`. A negative margin moves the edges inwards. They stop in
/// the middle, where the extent becomes 0. The result is standardised. A null rect returns the null
/// rect.
[[nodiscard]] TQ_EXPORT Rect TQRectExpand(const Rect& rect, double margin) noexcept;

/// Maps a rect from the unit space of `reference` to the space of `reference`: (0, 0, 1, 1) becomes
/// the standardised reference. Negative extents stay negative. A null rect returns the null rect.
[[nodiscard]] TQ_EXPORT Rect TQRectAbsolute(const Rect& unitRect, const Rect& reference) noexcept;

/// The inverse of TQRectAbsolute(), within rounding: the reference becomes (0, 0, 1, 1). If an
/// extent of the reference is 0, the result has infinities or NaN on that axis. A null rect returns
/// the null rect.
[[nodiscard]] TQ_EXPORT Rect TQRectRelative(const Rect& rect, const Rect& reference) noexcept;

/// Applies to `rect` the translation and scaling that map `from` to `to`. `from` and `to` are
/// standardised.
[[nodiscard]] TQ_EXPORT Rect TQRectFromCoordinateSpaceRectToRect(const Rect& rect, const Rect& from,
                                                                 const Rect& to) noexcept;

}  // namespace tq
