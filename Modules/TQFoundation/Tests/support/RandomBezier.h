#pragma once

#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include "support/Test.h"

namespace tq::test {

/// Random numbers and Bézier segments from a seed. A failing assertion prints the seed.
class RandomBezier {
 public:
  explicit RandomBezier(std::uint64_t seed)
      : trace_(__FILE__, __LINE__, testing::Message() << "seed " << seed), engine_(seed) {}

  double number(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(engine_);
  }
  Point point(double extent) {
    const double x = number(-extent, extent);
    return {x, number(-extent, extent)};
  }
  TQBezierSegment segment(TQBezierDegree degree, double extent) {
    TQBezierSegment segment;
    segment.degree = degree;
    for (std::size_t i = 0; i < segment.used().size(); ++i) segment.points[i] = point(extent);
    return segment;
  }

 private:
  testing::ScopedTrace trace_;
  std::mt19937_64 engine_;
};

inline constexpr auto straight = TQBezierSegment::straight;
inline constexpr auto quadratic = TQBezierSegment::quadratic;
inline constexpr auto cubic = TQBezierSegment::cubic;
inline constexpr TQBezierDegree kDegrees[] = {TQBezierDegree::straight, TQBezierDegree::quadratic,
                                              TQBezierDegree::cubic};

}  // namespace tq::test
