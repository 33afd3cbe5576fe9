#include <TQFoundation/geometry/curves/TQBezierSegmentIterator.h>

namespace tq {

std::optional<TQBezierSegment> TQBezierSegmentIterator::next() noexcept {
  while (at_ != end_) {
    const auto [type, points] = *at_;
    ++at_;
    const Point from = current_;
    current_ = points.empty() ? subpathStart_ : points.back();
    switch (type) {
      case PathElementType::move:
        subpathStart_ = current_;
        break;
      case PathElementType::line:
        return TQBezierSegment::straight(from, current_);
      case PathElementType::quadratic:
        return TQBezierSegment::quadratic(from, points[0], current_);
      case PathElementType::cubic:
        return TQBezierSegment::cubic(from, points[0], points[1], current_);
      case PathElementType::close:
        if (from != current_) return TQBezierSegment::straight(from, current_);
        break;
    }
  }
  return std::nullopt;
}

}  // namespace tq
