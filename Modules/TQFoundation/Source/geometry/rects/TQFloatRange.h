#pragma once

/// @file TQFloatRange.h
/// One-dimensional ranges (location and length): comparison, union, intersection, boxing.

#include <optional>
#include <string_view>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/Value.h>

namespace tq {

/// The range from `location` to `location + length`. A negative length is stored unchanged.
struct TQFloatRange {
  double location = 0;  ///< the start, unless the length is negative
  double length = 0;    ///< may be negative
};
static_assert(std::is_trivially_copyable_v<TQFloatRange>, "boxed by copying its bytes");

/// The type signature of a boxed range.
inline constexpr std::string_view TQFloatRangeType = "{?=dd}";

/// Returns whether both fields are equal. +0 equals -0, and NaN equals nothing.
[[nodiscard]] constexpr bool TQFloatRangeEqualToRange(TQFloatRange a, TQFloatRange b) noexcept {
  return a.location == b.location && a.length == b.length;
}

/// Returns the smallest range that contains both. Its length is 0 or more. A range of negative
/// length is read from its lower end, and a range of length 0 counts as a point. Where a bound of
/// `a` is NaN, the bound of `b` is used. The length is rounded: the upper end may differ by half a
/// unit in its last place.
[[nodiscard]] TQ_EXPORT TQFloatRange TQFloatRangeUnion(TQFloatRange a, TQFloatRange b) noexcept;

/// Returns the part that both ranges have in common. Ranges are closed: two ranges that touch in a
/// point have a range of length 0 in common, at that point. Disjoint ranges, and any NaN, return
/// the range (0, 0).
[[nodiscard]] TQ_EXPORT TQFloatRange TQFloatRangeIntersection(TQFloatRange a,
                                                              TQFloatRange b) noexcept;

/// Returns whether every index of `inner` is in `outer`. An empty inner range is contained if its
/// location is inside the outer range or at its end. The result is exact even if location + length
/// exceeds 64 bits.
[[nodiscard]] constexpr bool TQRangeContainsRange(Range outer, Range inner) noexcept {
  if (inner.location < outer.location) return false;
  const auto offset = inner.location - outer.location;
  return offset <= outer.length && inner.length <= outer.length - offset;
}

/// Returns the range, boxed with the signature TQFloatRangeType.
[[nodiscard]] TQ_EXPORT Ref<Value> valueWithTQFloatRange(TQFloatRange range);

/// Returns the range that valueWithTQFloatRange() boxed, or nullopt for a value of another
/// signature.
[[nodiscard]] TQ_EXPORT std::optional<TQFloatRange> TQFloatRangeValue(const Value& value) noexcept;

}  // namespace tq
