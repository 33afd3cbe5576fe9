#include <TQFoundation/geometry/rects/TQRectRounding.h>

namespace tq {

// Here and not inline: rounding adds to the product, which no caller's compiler may fuse.
Rect TQRectByRoundingRectToStep(const Rect& rect, double step) noexcept {
  const double perUnit = 1 / step;
  const auto rounded = [=](double value) {
    return TQFloatRoundHalfAwayFromZero(value * perUnit) * step;
  };
  return {rounded(rect.origin.x), rounded(rect.origin.y), rounded(rect.size.width),
          rounded(rect.size.height)};
}

}  // namespace tq
