#pragma once

/// @file Straight.h
/// What all straight things share: infinite lines, segments, and lines parallel to an axis.

#include <concepts>
#include <optional>
#include <string>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>

namespace tq {

struct TQLine;
struct TQLineSegment;

/// Anything with a direction.
///
///     direction()        along it, not normalised
///     isInfinite()       whether it has no ends
///     infinite()         the infinite line through it
///     intersection(with) where it meets another one, both with their ends; none when parallel
///     clipped(to)        the part inside a rect, border included; none when it misses the rect
///     pointClosestTo(p)  its point nearest to p
///     distance(from)     to a point or a rect, Euclidean; 0 for a rect that it meets, +infinity
///                        for the null rect
///     passes(through, comparator)
///                        whether `comparator` takes each coordinate of the point and of the
///                        nearest point of the straight thing for equal
template <class T>
concept Straight = requires(const T& straight, const TQLine& line, const TQLineSegment& segment,
                            Point point, const Rect& rect, bool (*comparator)(double, double)) {
  { straight.direction() } -> std::same_as<Vector>;
  { straight.isInfinite() } -> std::same_as<bool>;
  { straight.infinite() } -> std::same_as<TQLine>;
  { straight.intersection(line) } -> std::same_as<std::optional<Point>>;
  { straight.intersection(segment) } -> std::same_as<std::optional<Point>>;
  { straight.clipped(rect) } -> std::same_as<std::optional<TQLineSegment>>;
  { straight.pointClosestTo(point) } -> std::same_as<Point>;
  { straight.distance(point) } -> std::same_as<double>;
  { straight.distance(rect) } -> std::same_as<double>;
  { straight.passes(point, comparator) } -> std::same_as<bool>;
  { straight.debugDescription() } -> std::same_as<std::string>;
};

}  // namespace tq
