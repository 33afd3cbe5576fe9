#pragma once

#include <TQFoundation/base/Rect.h>

#include "support/Test.h"

namespace tq::test {

/// Typical distributions of rects in an index.
enum class RectKind {
  uniform,     ///< small rects anywhere, fractional
  clustered,   ///< near one of eight centres
  grid,        ///< whole numbers and many ties
  degenerate,  ///< points, lines, negative extents, many equal rects
  wild,        ///< all of these with null rects, NaN, infinities and huge numbers
};

inline constexpr RectKind kAllKinds[] = {RectKind::uniform, RectKind::clustered, RectKind::grid,
                                         RectKind::degenerate, RectKind::wild};

class RandomRects {
 public:
  RandomRects(RectKind kind, unsigned seed) : kind_(kind), random_(seed) {}

  Rect next() {
    switch (kind_) {
      case RectKind::uniform:
        return {real(0, 1000), real(0, 1000), real(0, 10), real(0, 10)};
      case RectKind::clustered: {
        const int centre = whole(0, 7);
        std::normal_distribution<double> offset(0, 5);
        return {centre * 137 % 1000 + offset(random_), centre * 411 % 1000 + offset(random_),
                real(0, 2), real(0, 2)};
      }
      case RectKind::grid:
        return gridRect();
      case RectKind::degenerate: {
        Rect rect = gridRect();
        if (whole(0, 1) == 0) rect.size.width = whole(-1, 0) * rect.size.width;
        if (whole(0, 1) == 0) rect.size.height = whole(-1, 0) * rect.size.height;
        return rect;
      }
      case RectKind::wild:
        break;
    }
    const int choice = whole(0, 30);
    if (choice == 0) return RectNull;
    Rect rect =
        RandomRects(static_cast<RectKind>(whole(0, 3)), static_cast<unsigned>(random_())).next();
    if (choice > 3) return rect;
    const double values[] = {kNaN, kInf, -kInf, 1e308, -1e200, 1e160, -0.0};
    double* const fields[] = {&rect.origin.x, &rect.origin.y, &rect.size.width, &rect.size.height};
    *fields[whole(0, 3)] = values[whole(0, 6)];
    return rect;
  }

 private:
  double real(double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random_);
  }
  int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }
  Rect gridRect() {
    return {whole(0, 40) * 1.0, whole(0, 40) * 1.0, whole(0, 4) * 1.0, whole(0, 4) * 1.0};
  }

  RectKind kind_;
  std::mt19937 random_;
};

}  // namespace tq::test
