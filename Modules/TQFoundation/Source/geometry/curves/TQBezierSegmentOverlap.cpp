#include <TQFoundation/geometry/curves/detail/BezierOverlap.h>

#include <algorithm>
#include <initializer_list>

// Two curves that run along each other are pieces of one curve: the offsets on one of them are a
// linear function of those on the other. This function follows from the coefficients of both, and
// is then fitted to all control points. The overlap is accepted if the pieces that it predicts have
// the same control points within rounding. So a wrong guess can only leave an overlap to the
// search, which finds it more slowly.
//
// A curve on a line is the exception: its offsets may be any function of the place. There the
// overlaps follow from one coordinate, cut where the curve turns back.

namespace tq::detail {
namespace {

using Cubic = BezierAxis<4, Pair>;

// Relative to the largest coordinate.
constexpr double kRounding = 0x1p-48;  // greatest difference of points that are the same
constexpr double kNoise = 0x1p-44;     // error of a coefficient

// Relative to the extent of an overlap. Two curves that cross at a greater angle do not overlap.
constexpr double kSlope = 0x1p-24;

constexpr double kShortest = 0x1p-12;  // length in t of an overlap

double cross(Pair u, Pair v) noexcept { return u[0] * v[1] - u[1] * v[0]; }
double dot(Pair u, Pair v) noexcept { return u[0] * v[0] + u[1] * v[1]; }
double sizeOf(Pair v) noexcept { return std::fmax(std::fabs(v[0]), std::fabs(v[1])); }
Pair between(Pair p, Pair q, double t) noexcept { return (1 - t) * p + t * q; }

Cubic cubicOf(const TQBezierSegment& segment) noexcept {
  const auto p = bothAxes<4>(segment);
  switch (segment.degree) {
    case TQBezierDegree::straight:
      return {p[0], between(p[0], p[1], 1.0 / 3), between(p[0], p[1], 2.0 / 3), p[1]};
    case TQBezierDegree::quadratic:
      return {p[0], between(p[0], p[1], 2.0 / 3), between(p[2], p[1], 2.0 / 3), p[2]};
    case TQBezierDegree::cubic:
      break;
  }
  return p;
}

double reachOf(const Cubic& p) noexcept {
  double reach = 0;
  for (const Pair point : p) reach = std::fmax(reach, sizeOf(point));
  return reach;
}

double extentOf(const Cubic& p) noexcept {
  return std::fmax(sizeOf(p[3] - p[0]), std::fmax(sizeOf(p[1] - p[0]), sizeOf(p[2] - p[0])));
}

/// The curve as (a·t³ + b·t² + c·t) + its start.
struct Powers {
  Pair a;
  Pair b;
  Pair c;

  explicit Powers(const Cubic& p) noexcept
      : a((p[3] - p[0]) - 3.0 * (p[2] - p[1])),
        b(3.0 * ((p[2] - p[1]) - (p[1] - p[0]))),
        c(3.0 * (p[1] - p[0])) {}
};

/// The control points of the piece of a cubic from u to v, and a third of its derivative at both
/// ends and between them. Source: Ramshaw, Blossoms are polar forms, CAGD 6 (1989).
struct Piece {
  Cubic points;
  std::array<Pair, 3> slopes;

  Piece(const Cubic& p, double u, double v) noexcept {
    const std::array<Pair, 3> atU{between(p[0], p[1], u), between(p[1], p[2], u),
                                  between(p[2], p[3], u)};
    const std::array<Pair, 3> atV{between(p[0], p[1], v), between(p[1], p[2], v),
                                  between(p[2], p[3], v)};
    const Pair uu0 = between(atU[0], atU[1], u), uu1 = between(atU[1], atU[2], u);
    const Pair uv0 = between(atU[0], atU[1], v), uv1 = between(atU[1], atU[2], v);
    const Pair vv0 = between(atV[0], atV[1], v), vv1 = between(atV[1], atV[2], v);
    points = {between(uu0, uu1, u), between(uu0, uu1, v), between(uv0, uv1, v),
              between(vv0, vv1, v)};
    slopes = {uu1 - uu0, uv1 - uv0, vv1 - vv0};
  }
};

/// The offsets on one curve where another one starts and ends, if both are continued.
struct Image {
  double start = 0;
  double end = 0;

  [[nodiscard]] double otherAt(double offset) const noexcept {
    return (offset - start) / (end - start);
  }
};

/// Improves the image by the Gauss-Newton method: the least squares of the differences of the
/// control points.
Image fitted(const Cubic& whole, const Cubic& part, Image image) noexcept {
  constexpr int kSteps = 8;
  for (int i = 0; i < kSteps; ++i) {
    const Piece piece(whole, image.start, image.end);
    const auto& [d0, d1, d2] = piece.slopes;
    const Cubic byStart{3.0 * d0, 2.0 * d1, d2, Pair{}};
    const Cubic byEnd{Pair{}, d0, 2.0 * d1, 3.0 * d2};
    double ss = 0, se = 0, ee = 0, sr = 0, er = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      const Pair error = part[k] - piece.points[k];
      ss += dot(byStart[k], byStart[k]);
      se += dot(byStart[k], byEnd[k]);
      ee += dot(byEnd[k], byEnd[k]);
      sr += dot(byStart[k], error);
      er += dot(byEnd[k], error);
    }
    const double determinant = ss * ee - se * se;
    const double start = (sr * ee - er * se) / determinant;
    const double end = (er * ss - sr * se) / determinant;
    image.start += start;
    image.end += end;
    if (!(std::fabs(start) + std::fabs(end) > 0x1p-50)) break;  // also if NaN
  }
  return image;
}

/// Two curves, of which `part` is the smaller one or as large as `whole`.
class Coincidence {
 public:
  Coincidence(const Cubic& whole, const Cubic& part, double reach) noexcept
      : whole_(whole), part_(part), reach_(reach) {}

  /// Returns where `part` lies on `whole`, or nullopt if it does not or if they only touch.
  [[nodiscard]] std::optional<Image> image() const noexcept {
    const Powers p(whole_), q(part_);
    const double noise = kNoise * reach_;
    std::optional<Image> image;
    const auto tryScale = [&](Pair lead, Pair next, Pair otherNext, double scale, double power) {
      // The next coefficient of the part is scale^power · (next + (power + 1) · start · lead).
      if (image) return;
      const double start = (dot(otherNext, lead) / std::pow(scale, power) - dot(next, lead)) /
                           ((power + 1) * dot(lead, lead));
      image = accepted(fitted(whole_, part_, {start, start + scale}));
    };
    if (sizeOf(p.a) > noise && sizeOf(q.a) > noise) {
      tryScale(p.a, p.b, q.b, std::cbrt(dot(q.a, p.a) / dot(p.a, p.a)), 2);
    }
    if (sizeOf(p.b) > noise && sizeOf(q.b) > noise) {
      const double scale = std::sqrt(sizeOf(q.b) / sizeOf(p.b));
      tryScale(p.b, p.c, q.c, scale, 1);
      tryScale(p.b, p.c, q.c, -scale, 1);
    }
    return image;
  }

 private:
  /// Returns the image with ends that are the curve's own, if both pieces are the same.
  [[nodiscard]] std::optional<Image> accepted(Image image) const noexcept {
    image = {snapped(image.start, part_[0]), snapped(image.end, part_[3])};
    const double low = std::fmax(0, std::fmin(image.start, image.end));
    const double high = std::fmin(1, std::fmax(image.start, image.end));
    const double length = std::fabs(image.end - image.start);
    if (!(high - low > kShortest && high - low > kShortest * length)) return std::nullopt;
    const Cubic one = Piece(whole_, low, high).points;
    const Cubic other = Piece(part_, image.otherAt(low), image.otherAt(high)).points;
    const double limit = std::fmin(kRounding * reach_, kSlope * extentOf(one));
    for (std::size_t i = 0; i < 4; ++i) {
      if (!(sizeOf(one[i] - other[i]) <= limit)) return std::nullopt;
    }
    return image;
  }

  /// Returns 0 or 1 if the point is that end of `whole` within rounding.
  [[nodiscard]] double snapped(double offset, Pair point) const noexcept {
    const double near = 16 * kRounding * reach_ / extentOf(whole_);
    const auto isAt = [&](double end, Pair p) {
      return std::fabs(offset - end) <= near && sizeOf(point - p) <= kRounding * reach_;
    };
    return isAt(0, whole_[0]) ? 0 : isAt(1, whole_[3]) ? 1 : offset;
  }

  const Cubic& whole_;
  const Cubic& part_;
  double reach_;
};

/// Adds the two places where a cubic that is a loop crosses itself. With offsets u and v there,
/// a·(u² + u·v + v²) + b·(u + v) + c = 0, so u + v and u·v follow from the coefficients.
template <class Add>
void addLoop(const Cubic& whole, const Image& image, Add&& add) {
  constexpr double kTiny = 0x1p-40;  // the error of an offset
  const Powers p(whole);
  const double sum = -cross(p.a, p.c) / cross(p.a, p.b);
  const double product = sum * sum + dot(sum * p.b + p.c, p.a) / dot(p.a, p.a);
  const double difference = std::sqrt(sum * sum - 4 * product);
  if (!(difference > 2 * kBezierLeaf)) return;  // a cusp, or no loop
  const auto isInside = [](double offset) { return offset >= -kTiny && offset <= 1 + kTiny; };
  for (const double sign : {-1.0, 1.0}) {
    const double u = (sum + sign * difference) / 2;
    const double v = image.otherAt((sum - sign * difference) / 2);
    if (isInside(u) && isInside(v)) {
      add(leafMiddle(std::clamp(u, 0.0, 1.0)), leafMiddle(std::clamp(v, 0.0, 1.0)));
    }
  }
}

/// A stretch of one coordinate of a cubic without a turn.
struct Monotone {
  BezierAxis<4> coordinates;
  double from;
  double to;

  [[nodiscard]] double valueAt(double t) const noexcept {
    return evaluate<4, double>(coordinates, t).value;  // exact at 0 and 1
  }
  [[nodiscard]] double low() const noexcept { return std::fmin(valueAt(from), valueAt(to)); }
  [[nodiscard]] double high() const noexcept { return std::fmax(valueAt(from), valueAt(to)); }

  /// Returns the offset of a value between low() and high(), by bisection down to the last bit.
  [[nodiscard]] double offsetOf(double value) const noexcept {
    if (value == valueAt(from)) return from;
    if (value == valueAt(to)) return to;
    const bool rises = valueAt(from) < valueAt(to);
    double below = from, above = to;
    for (;;) {
      const double middle = below + (above - below) / 2;
      if (!(below < middle && middle < above)) return above;
      ((valueAt(middle) < value) == rises ? below : above) = middle;
    }
  }
};

using Stretches = std::array<Monotone, 3>;

/// Returns the stretches of a curve on a line, by the coordinate on one axis.
Stretches stretchesOf(const Cubic& p, std::size_t axis) noexcept {
  const BezierAxis<4> coordinates{p[0][axis], p[1][axis], p[2][axis], p[3][axis]};
  const auto [first, second] = turns<4, double>(coordinates);
  const double low = std::fmin(first, second);
  const double high = std::fmax(first, second);
  return {Monotone{coordinates, 0, low}, {coordinates, low, high}, {coordinates, high, 1}};
}

/// Returns the axis that is closer to the line on which all points lie, or nullopt if the distance
/// of one of them from it is greater than `tolerance`.
std::optional<std::size_t> axisOfLine(const Cubic& a, const Cubic& b, double tolerance) noexcept {
  const Pair size = magnitude(a[3] - a[0]) + magnitude(a[1] - a[0]) + magnitude(a[2] - a[0]);
  const std::size_t axis = size[0] >= size[1] ? 0 : 1;
  Pair first = a[0], last = a[0];
  for (const Cubic* const curve : {&a, &b}) {
    for (const Pair p : *curve) {
      if (p[axis] < first[axis]) first = p;
      if (p[axis] > last[axis]) last = p;
    }
  }
  const double limit = tolerance * sizeOf(last - first);
  for (const Cubic* const curve : {&a, &b}) {
    for (const Pair p : *curve) {
      if (!(std::fabs(cross(p - first, last - first)) <= limit)) return std::nullopt;
    }
  }
  return axis;
}

/// Adds the ends of all overlaps of two curves on one line.
template <class Add>
void addStretches(const Stretches& a, const Stretches& b, Add&& add) {
  for (const Monotone& one : a) {
    for (const Monotone& other : b) {
      if (one.from == one.to || other.from == other.to) continue;
      const double low = std::fmax(one.low(), other.low());
      const double high = std::fmin(one.high(), other.high());
      if (!(low <= high)) continue;
      add(one.offsetOf(low), other.offsetOf(low));
      add(one.offsetOf(high), other.offsetOf(high));
    }
  }
}

}  // namespace

void BezierPlaces::add(TQBezierSegmentOffsets at) noexcept {
  const bool isKnown = std::ranges::any_of(all(), [&](TQBezierSegmentOffsets other) {
    return std::fabs(at.a - other.a) <= kBezierLeaf && std::fabs(at.b - other.b) <= kBezierLeaf;
  });
  if (!isKnown && count_ < places_.size()) places_[count_++] = at;
}

std::optional<BezierPlaces> placesOfOverlap(const TQBezierSegment& a,
                                            const TQBezierSegment& b) noexcept {
  const Cubic p = cubicOf(a), q = cubicOf(b);
  const Pair leadA = Powers(p).a, leadB = Powers(q).a;
  const double reach = std::fmax(reachOf(p), reachOf(q));
  // Most pairs end here: the leading coefficients of pieces of one curve are parallel.
  if (!(std::fabs(cross(leadA, leadB)) <= kNoise * reach * (sizeOf(leadA) + sizeOf(leadB)))) {
    return std::nullopt;
  }
  const double extentA = extentOf(p), extentB = extentOf(q);
  const double smaller = std::fmin(extentA, extentB);
  if (!(smaller > 0x1p-200 && reach < 0x1p+200)) return std::nullopt;

  const auto axis = axisOfLine(p, q, std::fmin(kRounding * reach, kSlope * smaller));
  const bool isSwapped = extentB > extentA;
  const Cubic& whole = isSwapped ? q : p;
  const auto image = axis ? std::nullopt : Coincidence(whole, isSwapped ? p : q, reach).image();
  if (!axis && !image) return std::nullopt;

  BezierPlaces places;
  forCommonEnds(p[0], p[3], q[0], q[3], [&](bool isEndA, bool isEndB) {
    places.add({isEndA ? 1.0 : 0.0, isEndB ? 1.0 : 0.0});
  });
  if (axis) {
    addStretches(stretchesOf(p, *axis), stretchesOf(q, *axis), [&](double s, double t) {
      places.add({s, t});
    });
    return places;
  }
  const auto add = [&](double onWhole, double onPart) {
    if (!(onWhole >= 0 && onWhole <= 1 && onPart >= 0 && onPart <= 1)) return;
    places.add(isSwapped ? TQBezierSegmentOffsets{onPart, onWhole}
                         : TQBezierSegmentOffsets{onWhole, onPart});
  };
  add(image->start, 0);
  add(image->end, 1);
  add(0, image->otherAt(0));
  add(1, image->otherAt(1));
  addLoop(whole, *image, add);
  return places;
}

}  // namespace tq::detail
