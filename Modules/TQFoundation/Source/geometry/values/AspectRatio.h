#pragma once

/// @file AspectRatio.h
/// Aspect ratios, and rects with a given aspect ratio.

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/geometry/rects/TQRectFitting.h>

namespace tq {

/// An aspect ratio, stored as the two numbers that it was made from. So 16 to 9 is used without the
/// rounding of 16 / 9.
struct AspectRatio {
  /// The two numbers, unchanged; see isValid().
  double width = 1;
  double height = 1;

  /// Returns the aspect ratio of a size's raw fields.
  [[nodiscard]] static constexpr AspectRatio ofSize(Size size) noexcept {
    return {size.width, size.height};
  }

  /// Returns width / height.
  [[nodiscard]] constexpr double value() const noexcept { return width / height; }

  /// Returns whether both numbers are finite and above 0. If not, the functions below return
  /// meaningless numbers.
  [[nodiscard]] constexpr bool isValid() const noexcept {
    return width > 0 && height > 0 && width - width == 0 && height - height == 0;
  }

  /// Returns height to width.
  [[nodiscard]] constexpr AspectRatio flipped() const noexcept { return {height, width}; }

  /// Returns wanted × width / height, or wanted × height / width, evaluated from left to right.
  [[nodiscard]] constexpr double widthForHeight(double wanted) const noexcept {
    return wanted * width / height;
  }
  [[nodiscard]] constexpr double heightForWidth(double wanted) const noexcept {
    return wanted * height / width;
  }

  /// Returns the largest rect of this ratio inside `rect`, centred; see
  /// TQRectWithSizeProportionallyInRect().
  [[nodiscard]] Rect fitted(const Rect& rect) const noexcept {
    return TQRectWithSizeProportionallyInRect({width, height}, rect);
  }

  /// Returns the smallest rect of this ratio that covers `rect`, centred; see
  /// TQRectWithSizeProportionallyAroundRect().
  [[nodiscard]] Rect filled(const Rect& rect) const noexcept {
    return TQRectWithSizeProportionallyAroundRect({width, height}, rect);
  }

  /// Equal if the ratios are equal: 4 to 2 equals 2 to 1. Undefined if the product of a width and a
  /// height overflows or becomes 0.
  friend constexpr bool operator==(AspectRatio a, AspectRatio b) noexcept {
    return a.width * b.height == b.width * a.height;
  }
};

}  // namespace tq
