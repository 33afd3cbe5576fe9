#pragma once

/// @file AspectRatio.h
/// The proportion of a width to a height, and what it makes of rects.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/geometry/rects/TQRectFitting.h>

namespace tq {

/// A proportion, kept as the two numbers that it was made from: 16 to 9 fits without the rounding
/// of 16 / 9.
struct AspectRatio {
  /// The two numbers as given; see isValid().
  double width = 1;
  double height = 1;

  /// The proportion of a size's fields, signs included.
  [[nodiscard]] static constexpr AspectRatio ofSize(Size size) noexcept {
    return {size.width, size.height};
  }

  /// width / height
  [[nodiscard]] constexpr double value() const noexcept { return width / height; }

  /// True when both numbers are finite and above 0; only then do the calls below mean something.
  [[nodiscard]] constexpr bool isValid() const noexcept {
    return width > 0 && height > 0 && width - width == 0 && height - height == 0;
  }

  /// The same proportion lying down, or standing up.
  [[nodiscard]] constexpr AspectRatio flipped() const noexcept { return {height, width}; }

  /// The extent that goes with the wanted one: wanted × width / height, or × height / width, in
  /// this order.
  [[nodiscard]] constexpr double widthForHeight(double wanted) const noexcept {
    return wanted * width / height;
  }
  [[nodiscard]] constexpr double heightForWidth(double wanted) const noexcept {
    return wanted * height / width;
  }

  /// The largest rect of this proportion inside, centred; see TQRectWithSizeProportionallyInRect().
  [[nodiscard]] Rect fitted(const Rect& rect) const noexcept {
    return TQRectWithSizeProportionallyInRect({width, height}, rect);
  }

  /// The smallest one around, centred; see TQRectWithSizeProportionallyAroundRect().
  [[nodiscard]] Rect filled(const Rect& rect) const noexcept {
    return TQRectWithSizeProportionallyAroundRect({width, height}, rect);
  }

  /// The same proportion, whatever the numbers: 4 to 2 equals 2 to 1.
  friend constexpr bool operator==(AspectRatio a, AspectRatio b) noexcept {
    return a.width * b.height == b.width * a.height;
  }
};

}  // namespace tq
