#pragma once

/// @file TQBezierSegmentIterator.h
/// The segments of a path, one after the other.

#include <optional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/curves/Path.h>
#include <TQFoundation/geometry/curves/TQBezierSegment.h>

namespace tq {

/// Goes over the segments that a path draws.
///
///     for (auto segments = TQBezierSegmentIteratorMake(path); auto segment = segments.next();) …
///
/// Moves draw nothing. Close draws a straight segment back to the subpath's start, unless the
/// current point is there already. The path has to outlive the iterator and may not change
/// meanwhile.
class TQBezierSegmentIterator {
 public:
  /// Before the path's first segment. The path must outlive the iterator and stay as it is.
  explicit TQBezierSegmentIterator(const Path& path) noexcept
      : at_(path.begin()), end_(path.end()) {}

  /// The next segment; none at the end.
  [[nodiscard]] TQ_EXPORT std::optional<TQBezierSegment> next() noexcept;

 private:
  Path::Iterator at_;
  Path::Iterator end_;
  Point current_;
  Point subpathStart_;
};

/// The same under its older name.
[[nodiscard]] inline TQBezierSegmentIterator TQBezierSegmentIteratorMake(
    const Path& path) noexcept {
  return TQBezierSegmentIterator(path);
}
TQBezierSegmentIterator TQBezierSegmentIteratorMake(Path&&) = delete;  // would dangle

}  // namespace tq
