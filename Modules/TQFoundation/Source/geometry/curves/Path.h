#pragma once

/// @file Path.h
/// Paths: any number of subpaths of straight lines and Bézier curves.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <vector>

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The types of path elements. Their numbers are fixed.
enum class PathElementType : std::uint8_t {
  move = 0,
  line = 1,
  quadratic = 2,
  cubic = 3,
  close = 4
};

/// Returns the number of points of an element: 1, 1, 2, 3, 0.
[[nodiscard]] constexpr std::size_t PathElementPointCount(PathElementType type) noexcept {
  constexpr std::size_t kCounts[] = {1, 1, 2, 3, 0};
  return kCounts[static_cast<std::size_t>(type)];
}

/// One element of a path. The path owns the points; they are valid until it changes.
struct PathElement {
  PathElementType type;  ///< determines the number of points
  /// The control points, then the end point. Empty for close.
  std::span<const Point> points;
};

/// A path, stored by value as a list of elements.
///
/// Each element starts at the current point, the end of the previous element. After close, the
/// current point is the start of the subpath; the next element then starts a new subpath there.
/// Threads: one at a time while it changes; any number may read it.
class TQ_EXPORT Path {
 public:
  /// Iterates over the elements. Valid until the path changes.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using iterator_concept = std::forward_iterator_tag;
    using value_type = PathElement;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;
    /// At the element with this type and this first point.
    Iterator(const PathElementType* type, const Point* points) noexcept
        : type_(type), points_(points) {}

    PathElement operator*() const noexcept {
      return {*type_, {points_, PathElementPointCount(*type_)}};
    }
    Iterator& operator++() noexcept {
      points_ += PathElementPointCount(*type_++);
      return *this;
    }
    Iterator operator++(int) noexcept {
      const Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(Iterator x, Iterator y) noexcept { return x.type_ == y.type_; }

   private:
    const PathElementType* type_ = nullptr;
    const Point* points_ = nullptr;
  };

  Path() noexcept = default;

  /// Returns move (minX, minY), lines to (maxX, minY), (maxX, maxY), (minX, maxY), close. The null
  /// rect returns an empty path.
  [[nodiscard]] static Path pathWithRect(const Rect& rect);

  /// Starts a new subpath.
  void moveTo(Point point);
  /// These four require a current point. An empty path has none; then they stop the process.
  void lineTo(Point point);
  void quadraticTo(Point control, Point end);
  void cubicTo(Point control1, Point control2, Point end);
  void close();

  /// Appends the elements of `other` unchanged.
  void append(const Path& other);

  [[nodiscard]] bool isEmpty() const noexcept { return types_.empty(); }
  /// The number of elements; close elements count too.
  [[nodiscard]] std::size_t elementCount() const noexcept { return types_.size(); }
  /// Returns the point where the next element starts, or nullopt for an empty path.
  [[nodiscard]] std::optional<Point> currentPoint() const noexcept;

  /// The elements in order, as PathElement values.
  [[nodiscard]] Iterator begin() const noexcept { return {types_.data(), points_.data()}; }
  [[nodiscard]] Iterator end() const noexcept {
    return {types_.data() + types_.size(), points_.data() + points_.size()};
  }

  /// Returns the tight bounds of the segments. A move without a segment after it does not count.
  /// Returns the null rect if there are no segments. A union of segments is rounded like
  /// RectUnion(), so a point may be outside by that.
  [[nodiscard]] Rect bounds() const noexcept;
  /// Returns the bounds of all points, including control points and moves without segments. Returns
  /// the null rect for an empty path.
  [[nodiscard]] Rect controlPointBounds() const noexcept;

  /// Returns the path with the transform applied to every point.
  [[nodiscard]] Path transformed(const AffineTransform& transform) const;

  /// Equal if the elements have the same types and equal points.
  friend bool operator==(const Path& a, const Path& b) noexcept {
    return a.types_ == b.types_ && a.points_ == b.points_;
  }

 private:
  void add(PathElementType type, std::span<const Point> points);

  std::vector<PathElementType> types_;
  std::vector<Point> points_;
  Point subpathStart_;
};

}  // namespace tq
