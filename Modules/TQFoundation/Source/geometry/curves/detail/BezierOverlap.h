#pragma once

/// @file BezierOverlap.h
/// Recognises segments that run along each other.

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>

#include <TQFoundation/geometry/curves/TQBezierSegment.h>
#include <TQFoundation/geometry/curves/detail/BezierAxis.h>

namespace tq::detail {

/// The length in t of the smallest pieces of the search. Closer offsets are one place.
inline constexpr double kBezierLeaf = 0x1p-14;

/// The greatest difference of the coordinates of two ends that are the same point.
inline constexpr double kSamePoint = 2.220446049250313e-16;

/// Calls `use(isEndA, isEndB)` for each pair of ends of two curves that are the same point.
template <class Use>
inline void forCommonEnds(Pair startA, Pair endA, Pair startB, Pair endB, Use&& use) {
  const auto tryPair = [&](Pair p, bool isEndA, Pair q, bool isEndB) {
    const Pair distance = magnitude(p - q);
    if (distance[0] <= kSamePoint && distance[1] <= kSamePoint) use(isEndA, isEndB);
  };
  tryPair(startA, false, startB, false);
  tryPair(startA, false, endB, true);
  tryPair(endA, true, startB, false);
  tryPair(endA, true, endB, true);
}

/// Pairs of offsets, each at another place.
class BezierPlaces {
 public:
  /// Ignores a pair that is at the place of an earlier one.
  void add(TQBezierSegmentOffsets at) noexcept;
  [[nodiscard]] std::span<TQBezierSegmentOffsets> all() noexcept {
    return {places_.data(), count_};
  }

 private:
  // Four common ends, two ends for each pair of the three monotone stretches of two straight
  // cubics, and two crossings of a loop.
  std::array<TQBezierSegmentOffsets, 4 + 2 * 9 + 2> places_;
  std::size_t count_ = 0;
};

/// Returns all places where two segments meet that run along each other, or nullopt if they do not.
/// TQBezierSegmentIntersections() says what is recognised and reported.
[[nodiscard]] std::optional<BezierPlaces> placesOfOverlap(const TQBezierSegment& a,
                                                          const TQBezierSegment& b) noexcept;

/// Returns the middle of the smallest piece at an offset in [0, 1].
[[nodiscard]] inline double leafMiddle(double offset) noexcept {
  return (std::fmin(std::floor(offset / kBezierLeaf), 1 / kBezierLeaf - 1) + 0.5) * kBezierLeaf;
}

}  // namespace tq::detail
