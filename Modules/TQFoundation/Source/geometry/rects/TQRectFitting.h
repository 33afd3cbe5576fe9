#pragma once

/// @file TQRectFitting.h
/// Sizes fitted into rects with their proportions kept, and rects mapped between reference rects.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The largest rect of the proportions of `size` that lies in `rect`, centred. Raw fields; meant
/// for extents of 0 or more.
///
/// Equal proportions fill the whole height. A width of 0 on either side gives a width of 0 in the
/// middle, over the full height if the size has none and without height if only the rect has none;
/// a height of 0 likewise.
[[nodiscard]] TQ_EXPORT Rect TQRectWithSizeProportionallyInRect(Size size,
                                                                const Rect& rect) noexcept;

/// The smallest rect of the proportions of `size` that covers `rect`, centred: the fitted one
/// scaled up. Raw fields; meant for extents of 0 or more. A size without width or height cannot
/// cover a rect that has them: the extent of 0 becomes 0 × infinity, NaN, and the other infinite.
[[nodiscard]] TQ_EXPORT Rect TQRectWithSizeProportionallyAroundRect(Size size,
                                                                    const Rect& rect) noexcept;

/// The raw width set to `width` and the height scaled with it. Without a width to scale from, the
/// height stays. The origin stays.
[[nodiscard]] TQ_EXPORT Rect TQRectWithWidthRespectingProportions(double width,
                                                                  const Rect& rect) noexcept;

/// The raw height set to `height` and the width scaled with it. Without a height to scale from, the
/// width stays. The origin stays.
[[nodiscard]] TQ_EXPORT Rect TQRectWithHeightRespectingProportions(double height,
                                                                   const Rect& rect) noexcept;

/// The raw extent on the axis set to `size`, the other one derived from it. The origin stays.
/// @param aspectRatio  width / height; 0 and NaN give what the division gives
[[nodiscard]] TQ_EXPORT Rect TQRectWithSizeOnAxisAspectRatio(Axis axis, double size,
                                                             double aspectRatio,
                                                             const Rect& rect) noexcept;

/// All four raw fields times `factor`: scaled about (0, 0). Null stays null.
[[nodiscard]] TQ_EXPORT Rect TQRectScale(const Rect& rect, double factor) noexcept;

/// Each edge moved outwards by `margin`. A negative margin moves them inwards, to the middle at
/// most, where the extent is then 0. Standardised; null stays null.
[[nodiscard]] TQ_EXPORT Rect TQRectExpand(const Rect& rect, double margin) noexcept;

/// A rect of the unit space of `reference` in the space where `reference` lies: (0, 0, 1, 1)
/// becomes the standardised reference. Extents may be negative and stay so. Null stays null.
[[nodiscard]] TQ_EXPORT Rect TQRectAbsolute(const Rect& unitRect, const Rect& reference) noexcept;

/// The opposite: the reference becomes (0, 0, 1, 1). TQRectAbsolute() undoes it within rounding. A
/// reference without extent on an axis gives infinities or NaN there. Null stays null.
[[nodiscard]] TQ_EXPORT Rect TQRectRelative(const Rect& rect, const Rect& reference) noexcept;

/// The rect moved and scaled as `from` must be to become `to`; both are standardised.
[[nodiscard]] TQ_EXPORT Rect TQRectFromCoordinateSpaceRectToRect(const Rect& rect, const Rect& from,
                                                                 const Rect& to) noexcept;

}  // namespace tq
