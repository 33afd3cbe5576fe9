#pragma once

/// @file Straight.h
/// The concept of straight objects: infinite lines, segments, and lines parallel to an axis.

#include <concepts>
#include <optional>
#include <string>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>

namespace tq {

struct TQLine;
struct TQLineSegment;

/// A straight object: an infinite line or a segment.
///
///     direction()        the direction, not normalised
///     isInfinite()       whether it has no ends
///     infinite()         the infinite line that contains it
///     intersection(with) the point that it shares with `with`; nullopt if they do not meet or are
///                        parallel. The ends of segments count.
///     clipped(to)        the part inside a rect, border included; nullopt if it misses the rect
///     pointClosestTo(p)  its point nearest to p
///     distance(from)     Euclidean distance to a point or a rect: 0 for a rect that it meets,
///                        +infinity for the null rect
///     passes(through, comparator)
///                        whether `comparator` returns true for each coordinate of `through` and of
///                        the point nearest to it
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
