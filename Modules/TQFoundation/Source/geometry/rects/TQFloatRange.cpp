#include <TQFoundation/geometry/rects/TQFloatRange.h>

#include <TQFoundation/base/Rect.h>

namespace tq {
namespace {

// Represents a range as a rect of height 0, so that ranges and rects follow the same rules.
constexpr Rect rectOf(TQFloatRange range) noexcept {
  return RectStandardize({range.location, 0, range.length, 0});
}

}  // namespace

TQFloatRange TQFloatRangeUnion(TQFloatRange a, TQFloatRange b) noexcept {
  const Rect one = rectOf(a);
  const Rect other = rectOf(b);
  const double oneMax = one.origin.x + one.size.width;
  const double otherMax = other.origin.x + other.size.width;
  const double min = one.origin.x < other.origin.x ? one.origin.x : other.origin.x;
  const double max = oneMax > otherMax ? oneMax : otherMax;
  return {min, max - min};
}

TQFloatRange TQFloatRangeIntersection(TQFloatRange a, TQFloatRange b) noexcept {
  const Rect one = rectOf(a);
  const Rect other = rectOf(b);
  const detail::Overlap common =
      detail::overlap(one.origin.x, one.size.width, other.origin.x, other.size.width);
  return {common.origin, common.extent};
}

Ref<Value> valueWithTQFloatRange(TQFloatRange range) {
  return Value::valueWith(TQFloatRangeType, range);
}

std::optional<TQFloatRange> TQFloatRangeValue(const Value& value) noexcept {
  return value.as<TQFloatRange>(TQFloatRangeType);
}

}  // namespace tq
