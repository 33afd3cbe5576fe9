#pragma once

/// @file BezierSplit.h
/// De Casteljau's algorithm, inline for the library's own loops.

#include <array>
#include <cstddef>

#include <TQFoundation/geometry/curves/TQBezierSegment.h>
#include <TQFoundation/geometry/curves/detail/BezierAxis.h>

namespace tq::detail {

/// Returns the point (1 - t)·a + t·b.
[[nodiscard]] inline Point between(Point a, Point b, double t) noexcept {
  return {(1 - t) * a.x + t * b.x, (1 - t) * a.y + t * b.y};
}

[[nodiscard]] inline Point along(Point a, Point b, double t) noexcept {
  return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}

/// Like TQBezierSegmentSplit. All points are computed before the first is written.
inline void split(const TQBezierSegment& segment, double t, TQBezierSegment* left,
                  TQBezierSegment* right) noexcept {
  const auto give = [&](const TQBezierSegment& first, const TQBezierSegment& second) {
    if (left != nullptr) *left = first;
    if (right != nullptr) *right = second;
  };
  const auto [p0, p1, p2, p3] = segment.points;
  switch (segment.degree) {
    case TQBezierDegree::straight: {
      const Point middle = along(p0, p1, t);
      return give(TQBezierSegment::straight(p0, middle), TQBezierSegment::straight(middle, p1));
    }
    case TQBezierDegree::quadratic: {
      const Point p01 = between(p0, p1, t);
      const Point p12 = between(p1, p2, t);
      const Point middle = between(p01, p12, t);
      return give(TQBezierSegment::quadratic(p0, p01, middle),
                  TQBezierSegment::quadratic(middle, p12, p2));
    }
    case TQBezierDegree::cubic: {
      const Point p01 = between(p0, p1, t);
      const Point p12 = between(p1, p2, t);
      const Point p23 = between(p2, p3, t);
      const Point p012 = between(p01, p12, t);
      const Point p123 = between(p12, p23, t);
      const Point middle = between(p012, p123, t);
      return give(TQBezierSegment::cubic(p0, p01, p012, middle),
                  TQBezierSegment::cubic(middle, p123, p23, p3));
    }
  }
  give(TQBezierSegment(segment), TQBezierSegment(segment));
}

/// Halves a curve: the points of split() at 0.5, bit for bit.
template <std::size_t N>
inline void halve(const BezierAxis<N, Pair>& p, BezierAxis<N, Pair>& left,
                  BezierAxis<N, Pair>& right) noexcept {
  const auto middle = [](Pair a, Pair b) { return 0.5 * a + 0.5 * b; };
  if constexpr (N == 2) {
    const Pair m = p[0] + 0.5 * (p[1] - p[0]);
    left = {p[0], m};
    right = {m, p[1]};
  } else if constexpr (N == 3) {
    const Pair p01 = middle(p[0], p[1]);
    const Pair p12 = middle(p[1], p[2]);
    const Pair m = middle(p01, p12);
    left = {p[0], p01, m};
    right = {m, p12, p[2]};
  } else {
    const Pair p01 = middle(p[0], p[1]);
    const Pair p12 = middle(p[1], p[2]);
    const Pair p23 = middle(p[2], p[3]);
    const Pair p012 = middle(p01, p12);
    const Pair p123 = middle(p12, p23);
    const Pair m = middle(p012, p123);
    left = {p[0], p01, p012, m};
    right = {m, p123, p23, p[3]};
  }
}

}  // namespace tq::detail
