#pragma once

/// @file RTreePair.h
/// Operations on two doubles at once, in one instruction where the processor supports it.

#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <TQFoundation/spatial/detail/RTreeNodeCore.h>

namespace tq::detail {

using Pair = double __attribute__((vector_size(16)));
using PairMask = std::int64_t __attribute__((vector_size(16)));

[[nodiscard]] inline Pair load(const double* from) noexcept {
  Pair pair;
  std::memcpy(&pair, from, sizeof pair);
  return pair;
}

[[nodiscard]] inline Pair both(double value) noexcept { return Pair{value, value}; }

/// Returns a < b ? a : b in each lane, so `b` if either is NaN.
[[nodiscard]] inline Pair lesser(Pair a, Pair b) noexcept {
#ifdef __SSE2__
  return Pair(_mm_min_pd(__m128d(a), __m128d(b)));
#else
  return Pair{a[0] < b[0] ? a[0] : b[0], a[1] < b[1] ? a[1] : b[1]};
#endif
}

/// Returns a > b ? a : b in each lane, so `b` if either is NaN.
[[nodiscard]] inline Pair greater(Pair a, Pair b) noexcept {
#ifdef __SSE2__
  return Pair(_mm_max_pd(__m128d(a), __m128d(b)));
#else
  return Pair{a[0] > b[0] ? a[0] : b[0], a[1] > b[1] ? a[1] : b[1]};
#endif
}

/// Returns in bit 0 and bit 1 whether the comparison is true in each lane.
[[nodiscard]] inline unsigned laneBits(PairMask mask) noexcept {
#ifdef __SSE2__
  return static_cast<unsigned>(_mm_movemask_pd(__m128d(mask)));
#else
  return static_cast<unsigned>((mask[0] & 1) | (mask[1] & 2));
#endif
}

/// Returns width times height of the union of `bounds` with each of the two.
[[nodiscard]] inline Pair unionArea(const RTreeBoundsPair& two,
                                    const RTreeBounds& bounds) noexcept {
  const Pair width =
      greater(load(two.maxX), both(bounds.maxX)) - lesser(load(two.minX), both(bounds.minX));
  const Pair height =
      greater(load(two.maxY), both(bounds.maxY)) - lesser(load(two.minY), both(bounds.minY));
  return width * height;
}

/// Returns which of the two intersect `bounds`. All edges are closed. Never true if a bound is NaN.
[[nodiscard]] inline PairMask meet(const RTreeBoundsPair& two, const RTreeBounds& bounds) noexcept {
  return (load(two.minX) <= both(bounds.maxX)) & (both(bounds.minX) <= load(two.maxX)) &
         (load(two.minY) <= both(bounds.maxY)) & (both(bounds.minY) <= load(two.maxY));
}

}  // namespace tq::detail
