#include <TQFoundation/geometry/rects/TQRectRounding.h>

namespace tq {

// Not inline, because rounding adds to the product and a caller's compiler could fuse both.
Rect TQRectByRoundingRectToStep(const Rect& rect, double step) noexcept {
  const double perUnit = 1 / step;
  const auto rounded = [=](double value) {
    return TQFloatRoundHalfAwayFromZero(value * perUnit) * step;
  };
  return {rounded(rect.origin.x), rounded(rect.origin.y), rounded(rect.size.width),
          rounded(rect.size.height)};
}

}  // namespace tq
