#pragma once

/// @file TQRectOrder.h
/// Which of two rects comes first: along an axis, and in reading order.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// 1 when the raw origin of `a` on the axis is greater, -1 when it is smaller, 0 when they are
/// equal or one is NaN. Every axis value but `horizontal` compares y.
[[nodiscard]] constexpr int TQRectCompare(Axis axis, const Rect& a, const Rect& b) noexcept {
  const double one = axis == Axis::horizontal ? a.origin.x : a.origin.y;
  const double other = axis == Axis::horizontal ? b.origin.x : b.origin.y;
  return one > other ? 1 : one < other ? -1 : 0;
}

/// Which rect is read first: -1 for `a`, 1 for `b`, 0 when all four edges agree within the double
/// epsilon. Rects that overlap by more than a fifth of the smaller height are in one row.
///
/// @param options  one of eight symmetries of the plane, applied to both rects first: 0 reads rows
///                 from minimum y to maximum y, each from minimum x to maximum x. Bit 0 and bit 2
///                 turn x and y round, bit 1 swaps them (2: columns). Values above 7 count as 0.
///
/// Not an order that sorting functions may rely on: it is not transitive, and it never answers 0
/// for rects without height or width, which share no row even with themselves: -1 for two equal
/// rects of no height, 1 for two of no width. Meant so: hand it to an insertion sort, never to
/// std::sort. A coordinate that is NaN fails every comparison.
[[nodiscard]] TQ_EXPORT int TQRectFuzzyCompareWithOptions(unsigned options, const Rect& a,
                                                          const Rect& b) noexcept;

}  // namespace tq
