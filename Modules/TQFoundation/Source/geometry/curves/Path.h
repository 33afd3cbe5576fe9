#pragma once

/// @file Path.h
/// Paths: any number of subpaths made of straight lines and Bézier curves.

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

/// The kinds of elements. Their numbers are fixed.
enum class PathElementType : std::uint8_t {
  move = 0,
  line = 1,
  quadratic = 2,
  cubic = 3,
  close = 4
};

/// How many points an element of a type carries: 1, 1, 2, 3, 0.
[[nodiscard]] constexpr std::size_t PathElementPointCount(PathElementType type) noexcept {
  constexpr std::size_t kCounts[] = {1, 1, 2, 3, 0};
  return kCounts[static_cast<std::size_t>(type)];
}

/// One step of a path. The points lie in the path and stay valid until it changes.
struct PathElement {
  PathElementType type;  ///< which also says how many points there are
  /// Controls first, the end last; none for close.
  std::span<const Point> points;
};

/// A path by value: elements in the order they were added.
///
/// Each element starts at the current point, the end of the one before; after close that is the
/// start of the subpath, where the next element then begins a new one. Threads: one at a time while
/// it changes, any number to look at it.
class TQ_EXPORT Path {
 public:
  /// Goes over the elements; good until the path changes.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using iterator_concept = std::forward_iterator_tag;
    using value_type = PathElement;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;
    /// At the element of this type and its first point.
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

  /// move (minX, minY), lines to (maxX, minY), (maxX, maxY), (minX, maxY), close. The null rect
  /// gives an empty path.
  [[nodiscard]] static Path pathWithRect(const Rect& rect);

  /// Begins a new subpath.
  void moveTo(Point point);
  /// All but moveTo need a current point; without one they stop the process.
  void lineTo(Point point);
  void quadraticTo(Point control, Point end);
  void cubicTo(Point control1, Point control2, Point end);
  void close();

  /// Appends the other's elements as they are.
  void append(const Path& other);

  [[nodiscard]] bool isEmpty() const noexcept { return types_.empty(); }
  /// Closes count, as every other element does.
  [[nodiscard]] std::size_t elementCount() const noexcept { return types_.size(); }
  /// Where the next element starts; none for an empty path.
  [[nodiscard]] std::optional<Point> currentPoint() const noexcept;

  /// Elements in order, as PathElement by value.
  [[nodiscard]] Iterator begin() const noexcept { return {types_.data(), points_.data()}; }
  [[nodiscard]] Iterator end() const noexcept {
    return {types_.data() + types_.size(), points_.data() + points_.size()};
  }

  /// Tight bounds of what is drawn: a move without a segment after it does not count. The null rect
  /// when nothing is.
  [[nodiscard]] Rect bounds() const noexcept;
  /// Bounds of all points, controls and lone moves included; the null rect for an empty path.
  [[nodiscard]] Rect controlPointBounds() const noexcept;

  /// The path with the transform applied to every point.
  [[nodiscard]] Path transformed(const AffineTransform& transform) const;

  /// Same elements with equal points.
  friend bool operator==(const Path&, const Path&) noexcept = default;

 private:
  void add(PathElementType type, std::span<const Point> points);

  std::vector<PathElementType> types_;
  std::vector<Point> points_;
  Point subpathStart_;
};

}  // namespace tq
