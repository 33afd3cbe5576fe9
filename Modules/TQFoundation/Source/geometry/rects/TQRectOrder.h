#pragma once

/// @file TQRectOrder.h
/// Orders rects along an axis, and in reading order.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Compares the raw origins on the axis. Returns 1 if that of `a` is greater, -1 if it is smaller,
/// and 0 if they are equal or one is NaN. Every axis value but `horizontal` compares y.
[[nodiscard]] constexpr int TQRectCompare(Axis axis, const Rect& a, const Rect& b) noexcept {
  const double one = axis == Axis::horizontal ? a.origin.x : a.origin.y;
  const double other = axis == Axis::horizontal ? b.origin.x : b.origin.y;
  return one > other ? 1 : one < other ? -1 : 0;
}

/// Compares two rects in reading order. Returns -1 if `a` comes first, 1 if `b` comes first, and 0
/// if all four edges are equal within the double epsilon. Rects that overlap vertically by more
/// than a fifth of the smaller height are in one row.
///
/// @param options  one of eight symmetries of the plane, applied to both rects first. 0 reads rows
///                 from minimum y to maximum y, each from minimum x to maximum x. Bit 0 reverses x,
///                 bit 2 reverses y, and bit 1 exchanges x and y (so 2 reads columns). Values above
///                 7 count as 0.
///
/// This is not a strict weak ordering, on purpose: it is not transitive, and rects without height
/// or width are in no row, not even their own. Two equal rects return -1 if their height is 0, and
/// 1 if only their width is 0. Use it with an insertion sort, never with std::sort. Every
/// comparison with a NaN coordinate is false.
[[nodiscard]] TQ_EXPORT int TQRectFuzzyCompareWithOptions(unsigned options, const Rect& a,
                                                          const Rect& b) noexcept;

}  // namespace tq
