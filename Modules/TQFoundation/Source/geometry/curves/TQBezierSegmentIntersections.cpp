#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

#include <TQFoundation/geometry/curves/detail/BezierAxis.h>
#include <TQFoundation/geometry/curves/detail/BezierSplit.h>

namespace tq {
namespace {

using detail::Pair;

constexpr double kSmallestLength = 0.0001;
constexpr double kLeaf = 0x1p-14;  // pieces of this length in t are not halved
constexpr double kSamePoint = 2.220446049250313e-16;
constexpr std::size_t kMostPairs = 1 << 20;
constexpr std::size_t kMostCrossings = 64;
constexpr double kReach = 0x1p-8;      // greatest distance of reports of one intersection
constexpr double kSharp = 0x1p-24;     // least sine of an angle, greatest last step
constexpr std::size_t kMostSharp = 9;  // crossings of two cubics that do not overlap (Bézout)

/// A piece of a segment, with its position in the whole segment.
struct Piece {
  TQBezierSegment segment;
  double offset = 0;
  double length = 1;
  Rect bounds = TQBezierSegmentGetBounds(segment);

  [[nodiscard]] double last() const noexcept { return offset + length; }
  [[nodiscard]] double middle() const noexcept { return offset + length / 2; }
  /// True if the tight bounds have no extent: halving such a piece returns the same piece again.
  [[nodiscard]] bool isPoint() const noexcept { return bounds.size == Size{}; }
  [[nodiscard]] bool canBeHalved() const noexcept { return length > kSmallestLength; }
};

struct Halves {
  Piece left;
  Piece right;
};

Halves halved(const Piece& piece) noexcept {
  TQBezierSegment left, right;
  detail::split(piece.segment, 0.5, &left, &right);
  const double length = piece.length / 2;
  return {{left, piece.offset, length}, {right, piece.offset + length, length}};
}

double gapSquared(const TQBezierSegment& a, const TQBezierSegment& b,
                  TQBezierSegmentOffsets at) noexcept {
  const Point p = TQBezierSegmentPointAtOffset(a, at.a);
  const Point q = TQBezierSegmentPointAtOffset(b, at.b);
  return (p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y);
}

detail::BezierValue<Pair> evaluated(const TQBezierSegment& segment, double t) noexcept {
  const Pair both{t, t};
  switch (segment.degree) {
    case TQBezierDegree::straight:
      return detail::evaluate<2, Pair>(detail::bothAxes<2>(segment), both);
    case TQBezierDegree::quadratic:
      return detail::evaluate<3, Pair>(detail::bothAxes<3>(segment), both);
    case TQBezierDegree::cubic:
      return detail::evaluate<4, Pair>(detail::bothAxes<4>(segment), both);
  }
  return {Pair{}, Pair{}};
}

double cross(Pair u, Pair v) noexcept { return u[0] * v[1] - u[1] * v[0]; }

/// Returns one step of Newton's method on a(s) - b(t) = 0, or nullopt if the tangents are parallel.
std::optional<TQBezierSegmentOffsets> newtonStep(const TQBezierSegment& a, const TQBezierSegment& b,
                                                 TQBezierSegmentOffsets at) noexcept {
  const auto [p, da] = evaluated(a, at.a);
  const auto [q, db] = evaluated(b, at.b);
  const double determinant = cross(da, db);
  const double s = at.a + cross(q - p, db) / determinant;
  const double t = at.b + cross(q - p, da) / determinant;
  if (!std::isfinite(s) || !std::isfinite(t)) return std::nullopt;
  return TQBezierSegmentOffsets{std::clamp(s, 0.0, 1.0), std::clamp(t, 0.0, 1.0)};
}

TQBezierSegmentOffsets refined(const TQBezierSegment& a, const TQBezierSegment& b,
                               TQBezierSegmentOffsets offsets) noexcept {
  constexpr int kSteps = 32;  // at a touch each step halves the error
  double gap = gapSquared(a, b, offsets);
  for (int i = 0; i < kSteps && gap > 0; ++i) {
    const auto next = newtonStep(a, b, offsets);
    if (!next) break;
    const double nextGap = gapSquared(a, b, *next);
    if (!(nextGap < gap)) break;
    offsets = *next;
    gap = nextGap;
  }
  return offsets;
}

/// Returns the greater of the differences on both segments.
double distance(TQBezierSegmentOffsets p, TQBezierSegmentOffsets q) noexcept {
  return std::max(std::fabs(p.a - q.a), std::fabs(p.b - q.b));
}

/// Returns whether the segments cross here at an angle. Then no other crossing is near. Segments
/// that overlap along a stretch have no such crossing there.
bool isSharp(const TQBezierSegment& a, const TQBezierSegment& b,
             TQBezierSegmentOffsets at) noexcept {
  const Pair da = evaluated(a, at.a).derivative;
  const Pair db = evaluated(b, at.b).derivative;
  const auto next = newtonStep(a, b, at);
  return next && distance(*next, at) <= kSharp &&
         std::fabs(cross(da, db)) > kSharp * std::hypot(da[0], da[1]) * std::hypot(db[0], db[1]);
}

/// A crossing at an angle, and the report nearest to it.
struct SharpCrossing {
  TQBezierSegmentOffsets place;
  TQBezierSegmentOffsets report;
};

/// A closed interval of offsets.
struct Interval {
  double first = 0;
  double last = 0;

  [[nodiscard]] bool isNear(Interval other) const noexcept {
    return first <= other.last + kReach && other.first <= last + kReach;
  }
  [[nodiscard]] bool contains(double offset) const noexcept {
    return first <= offset && offset <= last;
  }
  void include(Interval other) noexcept {
    first = std::min(first, other.first);
    last = std::max(last, other.last);
  }
};

/// A group of merged reports: the range of their offsets, and the offsets to pass to the caller.
struct Crossing {
  Interval a;
  Interval b;
  TQBezierSegmentOffsets first;  ///< the first common end, or the best report if there is none
  TQBezierSegmentOffsets last;   ///< the last common end; else the same as `first`
  double gap = 0;                ///< squared distance of the points of `first`; -1 for a common end

  [[nodiscard]] bool isNear(const Crossing& other) const noexcept {
    return a.isNear(other.a) && b.isNear(other.b);
  }
  [[nodiscard]] bool contains(TQBezierSegmentOffsets at) const noexcept {
    return a.contains(at.a) && b.contains(at.b);
  }
  void include(const Crossing& other) noexcept {
    a.include(other.a);
    b.include(other.b);
    if (gap < 0 && other.gap < 0) {
      if (other.first.a < first.a) first = other.first;
      if (other.last.a > last.a) last = other.last;
    } else if (other.gap < gap) {
      first = other.first;
      last = other.last;
      gap = other.gap;
    }
  }
};

/// Collects the reports of one search of `a` and `b`.
class Crossings {
 public:
  Crossings(const TQBezierSegment& a, const TQBezierSegment& b,
            const TQBezierSegmentIntersectionCallback& callback)
      : a_(a), b_(b), callback_(callback) {}

  /// Adds a report. It may merge two groups that were separate until now.
  void add(Crossing report) {
    noteSharp(report.first);
    for (std::size_t i = 0; i < count_;) {
      if (!found_[i].isNear(report)) {
        ++i;
        continue;
      }
      report.include(found_[i]);
      found_[i] = found_[--count_];
      i = 0;  // the group is larger now
    }
    if (count_ == kMostCrossings) tell({&found_[--count_], 1});
    found_[count_++] = report;
  }

  void tellAll() { tell({found_.data(), count_}); }

 private:
  /// Returns the offsets to report: at most two common ends for each group, and each sharp crossing
  /// once.
  struct Reported {
    std::array<TQBezierSegmentOffsets, 2 * kMostCrossings + kMostSharp> offsets;
    std::size_t count = 0;
    std::array<bool, kMostSharp> hasSharp{};

    void add(TQBezierSegmentOffsets at) noexcept { offsets[count++] = at; }
  };

  /// Where segments are nearly tangent, their smallest pieces meet in many places, and one group
  /// can contain several crossings. Newton's method finds the pieces that contain one.
  void noteSharp(TQBezierSegmentOffsets report) {
    const auto next = newtonStep(a_, b_, report);
    if (!next || distance(*next, report) > 2 * kLeaf) return;
    SharpCrossing* known = sharpNear(*next);
    const auto place = known != nullptr ? known->place : refined(a_, b_, *next);
    if (known == nullptr) known = sharpNear(place);
    if (known != nullptr) {
      const double nearest = distance(known->report, known->place);
      if (distance(report, known->place) < nearest) known->report = report;
    } else if (distance(report, place) <= 2 * kLeaf && sharpCount_ < kMostSharp &&
               isSharp(a_, b_, place)) {
      sharp_[sharpCount_++] = {place, report};
    }
  }

  std::span<SharpCrossing> sharp() noexcept { return {sharp_.data(), sharpCount_}; }

  SharpCrossing* sharpNear(TQBezierSegmentOffsets at) noexcept {
    for (SharpCrossing& sharp : sharp()) {
      if (distance(sharp.place, at) <= kLeaf) return &sharp;
    }
    return nullptr;
  }

  void tell(std::span<const Crossing> crossings) {
    Reported reported;
    for (const Crossing& crossing : crossings) gather(crossing, reported);
    const auto begin = reported.offsets.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(reported.count);
    std::sort(begin, end, [](TQBezierSegmentOffsets x, TQBezierSegmentOffsets y) {
      return x.a != y.a ? x.a < y.a : x.b < y.b;
    });
    std::for_each(begin, std::unique(begin, end),
                  [this](TQBezierSegmentOffsets at) { callback_(at.a, at.b); });
  }

  /// Returns the common ends and the sharp crossings elsewhere, or the best report if there are
  /// none.
  void gather(const Crossing& crossing, Reported& reported) {
    const std::size_t before = reported.count;
    if (crossing.gap < 0) {
      reported.add(crossing.first);
      reported.add(crossing.last);
    }
    for (std::size_t i = 0; i < sharpCount_; ++i) {
      const SharpCrossing& sharp = sharp_[i];
      if (!crossing.contains(sharp.report) || std::exchange(reported.hasSharp[i], true)) continue;
      const bool isCommonEnd =
          crossing.gap < 0 && std::min(distance(sharp.place, crossing.first),
                                       distance(sharp.place, crossing.last)) <= kLeaf;
      if (!isCommonEnd) reported.add(sharp.report);
    }
    if (reported.count == before) reported.add(crossing.first);
  }

  const TQBezierSegment& a_;
  const TQBezierSegment& b_;
  const TQBezierSegmentIntersectionCallback& callback_;
  std::array<Crossing, kMostCrossings> found_;
  std::size_t count_ = 0;
  std::array<SharpCrossing, kMostSharp> sharp_;
  std::size_t sharpCount_ = 0;
};

/// The recursive search. Pieces whose closed bounds intersect are halved, at most fourteen times;
/// the depth has no other limit. No crossing is lost, because the halves join exactly and their
/// bounds contain them.
class IntersectionSearch {
 public:
  explicit IntersectionSearch(Crossings& crossings) : crossings_(crossings) {}

  /// Returns false if the limit of pairs was reached.
  bool search(const Piece& a, const Piece& b) {
    if (++pairs_ > kMostPairs) return false;
    if (!RectIntersectsRect(a.bounds, b.bounds)) {
      // Their bounds are apart, but within rounding they can still share an end.
      forCommonEnds(a, b, [this](TQBezierSegmentOffsets at) { reportCommonEnd(at); });
      return true;
    }
    const bool halvesA = a.canBeHalved() && !a.isPoint();
    const bool halvesB = b.canBeHalved() && !b.isPoint();
    const bool isSmall = !a.canBeHalved() || !b.canBeHalved();
    if (isSmall || (!halvesA && !halvesB)) {
      reportMeeting(a, b);
      return true;
    }
    if (!halvesA)
      return searchHalves(halved(b), [&](const Piece& half) { return search(a, half); });
    if (!halvesB)
      return searchHalves(halved(a), [&](const Piece& half) { return search(half, b); });
    const Halves ofB = halved(b);
    return searchHalves(halved(a), [&](const Piece& half) {
      return search(half, ofB.left) && search(half, ofB.right);
    });
  }

 private:
  template <class Search>
  static bool searchHalves(const Halves& halves, Search&& search) {
    return search(halves.left) && search(halves.right);
  }

  /// Calls `use` for each pair of ends that are the same point.
  template <class Use>
  static void forCommonEnds(const Piece& a, const Piece& b, Use&& use) {
    const auto pairUp = [&](Point p, double offsetA, Point q, double offsetB) {
      if (std::fabs(p.x - q.x) <= kSamePoint && std::fabs(p.y - q.y) <= kSamePoint) {
        use(TQBezierSegmentOffsets{offsetA, offsetB});
      }
    };
    const Point startA = a.segment.start(), endA = a.segment.end();
    const Point startB = b.segment.start(), endB = b.segment.end();
    pairUp(startA, a.offset, startB, b.offset);
    pairUp(startA, a.offset, endB, b.last());
    pairUp(endA, a.last(), startB, b.offset);
    pairUp(endA, a.last(), endB, b.last());
  }

  void reportCommonEnd(TQBezierSegmentOffsets at) {
    crossings_.add({{at.a, at.a}, {at.b, at.b}, at, at, -1});
  }

  /// Adds one report: a common end of the whole segments, else of the pieces, else their middles.
  void reportMeeting(const Piece& a, const Piece& b) {
    const auto isEnd = [](double offset) { return offset == 0 || offset == 1; };
    std::optional<TQBezierSegmentOffsets> best;
    forCommonEnds(a, b, [&](TQBezierSegmentOffsets at) {
      const bool isOfBoth = isEnd(at.a) && isEnd(at.b);
      if (!best || (isOfBoth && !(isEnd(best->a) && isEnd(best->b)))) best = at;
    });
    best ? reportCommonEnd(*best) : reportMiddles(a, b);
  }

  void reportMiddles(const Piece& a, const Piece& b) {
    const Point p = TQBezierSegmentPointAtOffset(a.segment, 0.5);
    const Point q = TQBezierSegmentPointAtOffset(b.segment, 0.5);
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    const TQBezierSegmentOffsets middles{a.middle(), b.middle()};
    crossings_.add(
        {{a.offset, a.last()}, {b.offset, b.last()}, middles, middles, dx * dx + dy * dy});
  }

  Crossings& crossings_;
  std::size_t pairs_ = 0;
};

}  // namespace

bool TQBezierSegmentIntersections(const TQBezierSegment& a, const TQBezierSegment& b,
                                  const TQBezierSegmentIntersectionCallback& callback) {
  if (a.used().empty() || b.used().empty()) return true;
  Crossings crossings(a, b, callback);
  const bool isComplete = IntersectionSearch(crossings).search({a}, {b});
  crossings.tellAll();
  return isComplete;
}

TQBezierSegmentOffsets TQBezierSegmentRefineIntersection(const TQBezierSegment& a,
                                                         const TQBezierSegment& b,
                                                         TQBezierSegmentOffsets offsets) noexcept {
  return refined(a, b, offsets);
}

}  // namespace tq
