#pragma once

/// @file TQFloatRange.h
/// Ranges on one axis: where they start and how long they are, and how two combine.

#include <optional>
#include <string_view>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/Value.h>

namespace tq {

/// The numbers from `location` to `location + length`. A negative length is kept as it is.
struct TQFloatRange {
  double location = 0;  ///< where it starts, unless the length is negative
  double length = 0;    ///< as given; may be negative
};
static_assert(std::is_trivially_copyable_v<TQFloatRange>, "boxed by copying its bytes");

/// The signature under which a range is boxed.
inline constexpr std::string_view TQFloatRangeType = "{?=dd}";

/// The same two fields: +0 equals -0, NaN equals nothing.
[[nodiscard]] constexpr bool TQFloatRangeEqualToRange(TQFloatRange a, TQFloatRange b) noexcept {
  return a.location == b.location && a.length == b.length;
}

/// Smallest range that holds both; its length is never negative, and a negative length counts from
/// its lower end. A range of length 0 counts as a point. Where a bound of `a` is NaN, that of `b`
/// is taken.
[[nodiscard]] TQ_EXPORT TQFloatRange TQFloatRangeUnion(TQFloatRange a, TQFloatRange b) noexcept;

/// What both hold. Ranges are closed: two that only touch have a range of length 0 in common, at
/// the point where they touch. Disjoint ranges, and any NaN, give the range (0, 0).
[[nodiscard]] TQ_EXPORT TQFloatRange TQFloatRangeIntersection(TQFloatRange a,
                                                              TQFloatRange b) noexcept;

/// True when every index of `inner` is in `outer`. An empty range is inside where its location is
/// in, or at the end of, the outer one. Exact up to the largest 64-bit ends and beyond.
[[nodiscard]] constexpr bool TQRangeContainsRange(Range outer, Range inner) noexcept {
  if (inner.location < outer.location) return false;
  const auto offset = inner.location - outer.location;
  return offset <= outer.length && inner.length <= outer.length - offset;
}

/// The range, boxed under TQFloatRangeType.
[[nodiscard]] TQ_EXPORT Ref<Value> valueWithTQFloatRange(TQFloatRange range);

/// The range that valueWithTQFloatRange() boxed; none for a value of another signature.
[[nodiscard]] TQ_EXPORT std::optional<TQFloatRange> TQFloatRangeValue(const Value& value) noexcept;

}  // namespace tq
