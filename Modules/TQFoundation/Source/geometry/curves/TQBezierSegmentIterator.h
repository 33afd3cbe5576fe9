#pragma once

/// @file TQBezierSegmentIterator.h
/// Iterates over the segments of a path.

#include <optional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/curves/Path.h>
#include <TQFoundation/geometry/curves/TQBezierSegment.h>

namespace tq {

/// Iterates over the segments that a path draws.
///
///     for (auto segments = TQBezierSegmentIteratorMake(path); auto segment = segments.next();) …
///
/// Moves draw nothing. Close draws a straight segment back to the start of the subpath, unless the
/// current point is already there. The path must outlive the iterator and must not change
/// meanwhile.
class TQBezierSegmentIterator {
 public:
  /// Starts before the first segment. The path must outlive the iterator and must not change.
  explicit TQBezierSegmentIterator(const Path& path) noexcept
      : at_(path.begin()), end_(path.end()) {}

  /// Returns the next segment, or nullopt at the end.
  [[nodiscard]] TQ_EXPORT std::optional<TQBezierSegment> next() noexcept;

 private:
  Path::Iterator at_;
  Path::Iterator end_;
  Point current_;
  Point subpathStart_;
};

/// An alias of the constructor.
[[nodiscard]] inline TQBezierSegmentIterator TQBezierSegmentIteratorMake(
    const Path& path) noexcept {
  return TQBezierSegmentIterator(path);
}
TQBezierSegmentIterator TQBezierSegmentIteratorMake(Path&&) = delete;  // would dangle

}  // namespace tq
