#include <TQFoundation/geometry/TQRectEquality.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace tq {
namespace {

bool within(double a, double b, double accuracy) noexcept { return !(std::fabs(a - b) > accuracy); }

bool nearlyEqual(double a, double b) noexcept {
  if (!(a < b) && !(a > b)) return true;  // equal, or unordered
  const auto one = std::bit_cast<std::uint64_t>(a);
  const auto other = std::bit_cast<std::uint64_t>(b);
  if (((one ^ other) >> 63) != 0) return false;
  // Of one sign, the patterns are as far apart as the signed integers that they spell.
  return (one > other ? one - other : other - one) <= 255;
}

bool fuzzyEqual(double a, double b) noexcept { return std::fabs(a - b) < 0.001; }

}  // namespace

bool TQPointEqualToPointWithAccuracy(Point a, Point b, double accuracy) noexcept {
  return within(a.x, b.x, accuracy) && within(a.y, b.y, accuracy);
}

bool TQSizeEqualToSizeWithAccuracy(Size a, Size b, double accuracy) noexcept {
  return within(a.width, b.width, accuracy) && within(a.height, b.height, accuracy);
}

bool TQRectEqualToRectWithAccuracy(const Rect& a, const Rect& b, double accuracy) noexcept {
  return TQPointEqualToPointWithAccuracy(a.origin, b.origin, accuracy) &&
         TQSizeEqualToSizeWithAccuracy(a.size, b.size, accuracy);
}

bool TQPointApproximatelyEqual(Point a, Point b) noexcept {
  return nearlyEqual(a.x, b.x) && nearlyEqual(a.y, b.y);
}

bool TQSizeApproximatelyEqual(Size a, Size b) noexcept {
  return nearlyEqual(a.width, b.width) && nearlyEqual(a.height, b.height);
}

bool TQRectApproximatelyEqual(const Rect& a, const Rect& b) noexcept {
  return TQPointApproximatelyEqual(a.origin, b.origin) && TQSizeApproximatelyEqual(a.size, b.size);
}

bool TQRectFuzzyEqualToRect(const Rect& a, const Rect& b) noexcept {
  return fuzzyEqual(a.origin.x, b.origin.x) && fuzzyEqual(a.origin.y, b.origin.y) &&
         fuzzyEqual(a.size.width, b.size.width) && fuzzyEqual(a.size.height, b.size.height);
}

}  // namespace tq
