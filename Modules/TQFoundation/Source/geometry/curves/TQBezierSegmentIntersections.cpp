#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

#include <TQFoundation/geometry/curves/detail/BezierAxis.h>
#include <TQFoundation/geometry/curves/detail/BezierBounds.h>
#include <TQFoundation/geometry/curves/detail/BezierOverlap.h>
#include <TQFoundation/geometry/curves/detail/BezierSplit.h>

namespace tq {
namespace {

using detail::BezierAxis;
using detail::kBezierLeaf;
using detail::leafMiddle;
using detail::Pair;

constexpr double kSmallestLength = 0.0001;  // pieces of this length in t are not halved
constexpr std::size_t kMostPairs = 1 << 20;
constexpr std::size_t kMostCrossings = 64;
constexpr double kReach = 0x1p-8;      // greatest distance of reports of one intersection
constexpr double kSharp = 0x1p-24;     // least sine of an angle, greatest last step
constexpr double kNoise = 0x1p-50;     // rounding error of a point, relative to its segment's reach
constexpr std::size_t kMostSharp = 9;  // crossings of two cubics that do not overlap (Bézout)

double gapSquared(const TQBezierSegment& a, const TQBezierSegment& b,
                  TQBezierSegmentOffsets at) noexcept {
  const Point p = TQBezierSegmentPointAtOffset(a, at.a);
  const Point q = TQBezierSegmentPointAtOffset(b, at.b);
  return (p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y);
}

detail::BezierValue<Pair> evaluated(const TQBezierSegment& segment, double t) noexcept {
  return detail::withBothAxes(segment, detail::BezierValue<Pair>{}, [t](const auto& p) {
    return detail::evaluate(p, Pair{t, t});
  });
}

double cross(Pair u, Pair v) noexcept { return u[0] * v[1] - u[1] * v[0]; }

double lengthOf(Pair v) noexcept { return std::hypot(v[0], v[1]); }

/// Returns the greatest magnitude of the coordinates on each axis.
template <std::size_t N>
Pair reachOf(const BezierAxis<N, Pair>& p) noexcept {
  Pair reach{};
  for (const Pair point : p) reach = detail::larger(reach, detail::magnitude(point));
  return reach;
}

double reachOf(const TQBezierSegment& segment) noexcept {
  const Pair reach =
      detail::withBothAxes(segment, Pair{}, [](const auto& p) { return reachOf(p); });
  return std::max(reach[0], reach[1]);
}

/// Returns the segment moved by -origin. Then rounding errors grow with the extent, and no longer
/// with the distance from (0, 0). Moving adds no greater ones.
TQBezierSegment moved(TQBezierSegment segment, Point origin) noexcept {
  for (std::size_t i = 0; i < segment.used().size(); ++i) {
    segment.points[i] = {segment.points[i].x - origin.x, segment.points[i].y - origin.y};
  }
  return segment;
}

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
  const double speedA = lengthOf(da), speedB = lengthOf(db);
  const double sine = std::fabs(cross(da, db)) / (speedA * speedB);
  const double noise = kNoise * (reachOf(a) + reachOf(b)) / (sine * std::min(speedA, speedB));
  const auto next = newtonStep(a, b, at);
  return next && sine > kSharp && distance(*next, at) <= std::clamp(noise, kSharp, kBezierLeaf / 4);
}

/// A crossing at an angle, and the report nearest to it.
struct SharpCrossing {
  TQBezierSegmentOffsets place;
  TQBezierSegmentOffsets report;

  /// Returns the report. Curves that almost coincide may report only a neighbour of the pieces that
  /// cross; then these pieces' middles.
  [[nodiscard]] TQBezierSegmentOffsets offsets() const noexcept {
    if (distance(report, place) <= kBezierLeaf / 2) return report;
    return {leafMiddle(place.a), leafMiddle(place.b)};
  }
};

/// A closed interval of offsets.
struct Interval {
  double first = 0;
  double last = 0;

  [[nodiscard]] double middle() const noexcept { return (first + last) / 2; }
  [[nodiscard]] bool isNear(Interval other, double reach) const noexcept {
    return first <= other.last + reach && other.first <= last + reach;
  }
  [[nodiscard]] bool contains(double offset) const noexcept {
    return first <= offset && offset <= last;
  }
  void include(Interval other) noexcept {
    first = std::min(first, other.first);
    last = std::max(last, other.last);
  }
};

/// The ends of a piece: their offsets in the whole curve, and their points.
struct Ends {
  Interval offsets;
  Pair start;
  Pair end;
};

/// Calls `use` for each pair of ends that are the same point.
template <class Use>
void withCommonEnds(const Ends& a, const Ends& b, Use&& use) {
  detail::forCommonEnds(a.start, a.end, b.start, b.end, [&](bool isEndA, bool isEndB) {
    use(TQBezierSegmentOffsets{isEndA ? a.offsets.last : a.offsets.first,
                               isEndB ? b.offsets.last : b.offsets.first});
  });
}

/// A group of merged reports: the range of their offsets, and the offsets to pass to the caller.
struct Crossing {
  Interval a;
  Interval b;
  TQBezierSegmentOffsets first;  ///< the first common end, or the best report if there is none
  TQBezierSegmentOffsets last;   ///< the last common end; else the same as `first`
  double gap = 0;                ///< squared distance of the points of `first`; -1 for a common end

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

/// Calls the callback once for each of the different offsets.
void tellAscending(std::span<TQBezierSegmentOffsets> offsets,
                   const TQBezierSegmentIntersectionCallback& callback) {
  std::ranges::sort(offsets, [](TQBezierSegmentOffsets x, TQBezierSegmentOffsets y) {
    return x.a != y.a ? x.a < y.a : x.b < y.b;
  });
  const auto repeated = std::ranges::unique(offsets);
  std::for_each(offsets.begin(), repeated.begin(),
                [&](TQBezierSegmentOffsets at) { callback(at.a, at.b); });
}

/// Collects the reports of one search of `a` and `b`. It has copies of them, because the callback
/// may destroy the caller's.
class Crossings {
 public:
  Crossings(const TQBezierSegment& a, const TQBezierSegment& b,
            const TQBezierSegmentIntersectionCallback& callback)
      : a_(moved(a, a.start())), b_(moved(b, a.start())), callback_(callback) {
    const double ratio = std::sqrt(TQBezierSegmentControlSplineLengthSquared(a_) /
                                   TQBezierSegmentControlSplineLengthSquared(b_));
    reachA_ = std::fmax(kReach, 2 * kBezierLeaf / ratio);
    reachB_ = std::fmax(kReach, 2 * kBezierLeaf * ratio);
  }

  /// Adds a report for each pair of ends that are the same point.
  void addCommonEnds(const Ends& a, const Ends& b) {
    withCommonEnds(a, b, [this](TQBezierSegmentOffsets at) { addCommonEnd(at); });
  }

  /// Adds one report for pieces that meet: a common end of the whole segments, else of the pieces,
  /// else their middles.
  /// @param between  the difference of the points in the middle of both
  void addMeeting(const Ends& a, const Ends& b, Pair between) {
    const auto isEnd = [](double offset) { return offset == 0 || offset == 1; };
    const auto isOfBoth = [&](TQBezierSegmentOffsets at) { return isEnd(at.a) && isEnd(at.b); };
    std::optional<TQBezierSegmentOffsets> best;
    withCommonEnds(a, b, [&](TQBezierSegmentOffsets at) {
      if (!best || (isOfBoth(at) && !isOfBoth(*best))) best = at;
    });
    if (best) return addCommonEnd(*best);
    const TQBezierSegmentOffsets middles{a.offsets.middle(), b.offsets.middle()};
    add({a.offsets, b.offsets, middles, middles,
         between[0] * between[0] + between[1] * between[1]});
  }

  void tellAll() { tell({found_.data(), count_}); }

 private:
  void addCommonEnd(TQBezierSegmentOffsets at) { add({{at.a, at.a}, {at.b, at.b}, at, at, -1}); }

  /// Adds a report. It may merge two groups that were separate until now.
  void add(Crossing report) {
    noteSharp(report.first);
    for (std::size_t i = 0; i < count_;) {
      if (!isNear(found_[i], report)) {
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

  [[nodiscard]] bool isNear(const Crossing& one, const Crossing& other) const noexcept {
    return one.a.isNear(other.a, reachA_) && one.b.isNear(other.b, reachB_);
  }

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
    if (!next || distance(*next, report) > 2 * kBezierLeaf) return;
    SharpCrossing* known = sharpNear(*next);
    const auto place = known != nullptr ? known->place : refined(a_, b_, *next);
    if (known == nullptr) known = sharpNear(place);
    if (known != nullptr) {
      const double nearest = distance(known->report, known->place);
      if (distance(report, known->place) < nearest) known->report = report;
    } else if (distance(report, place) <= 2 * kBezierLeaf && sharpCount_ < kMostSharp &&
               isSharp(a_, b_, place)) {
      sharp_[sharpCount_++] = {place, report};
    }
  }

  std::span<SharpCrossing> sharp() noexcept { return {sharp_.data(), sharpCount_}; }

  SharpCrossing* sharpNear(TQBezierSegmentOffsets at) noexcept {
    for (SharpCrossing& sharp : sharp()) {
      if (distance(sharp.place, at) <= kBezierLeaf) return &sharp;
    }
    return nullptr;
  }

  void tell(std::span<const Crossing> crossings) {
    Reported reported;
    for (const Crossing& crossing : crossings) gather(crossing, reported);
    tellAscending({reported.offsets.data(), reported.count}, callback_);
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
                                       distance(sharp.place, crossing.last)) <= kBezierLeaf;
      if (!isCommonEnd) reported.add(sharp.offsets());
    }
    if (reported.count == before) reported.add(crossing.first);
  }

  const TQBezierSegment a_;
  const TQBezierSegment b_;
  const TQBezierSegmentIntersectionCallback& callback_;
  // Greatest distances of reports of one intersection. A smallest piece of a much longer segment
  // meets many pieces of the shorter one, and the next piece meets them two such lengths further.
  double reachA_;
  double reachB_;
  std::array<Crossing, kMostCrossings> found_;
  std::size_t count_ = 0;
  std::array<SharpCrossing, kMostSharp> sharp_;
  std::size_t sharpCount_ = 0;
};

/// What the pieces of a curve have in common.
struct Precision {
  bool isOrdinary;  ///< no piece can overflow, so that no bounds need a test
  Pair noise;       ///< rounding error of a point

  template <std::size_t N>
  explicit Precision(const BezierAxis<N, Pair>& whole) noexcept
      : isOrdinary(detail::isOrdinary(whole)), noise(kNoise * reachOf(whole)) {}
};

/// A piece of a curve, with its position in the whole curve.
template <std::size_t N>
struct Piece {
  BezierAxis<N, Pair> points;
  double offset;
  double length;
  Pair minimum;
  Pair maximum;

  /// Sets the position and the bounds. The points are set before.
  void place(double startsAt, double lasts, const Precision& precision) noexcept {
    offset = startsAt;
    length = lasts;
    const detail::BezierBounds bounds = precision.isOrdinary
                                            ? detail::ordinaryBounds(points, precision.noise)
                                            : detail::tightBounds(points);
    minimum = bounds.origin;
    maximum = bounds.origin + bounds.extent;
  }

  [[nodiscard]] double middle() const noexcept { return offset + length / 2; }
  [[nodiscard]] Ends ends() const noexcept {
    return {{offset, offset + length}, points.front(), points.back()};
  }
  [[nodiscard]] Pair middlePoint() const noexcept {
    return detail::evaluate(points, Pair{0.5, 0.5}).value;
  }
  /// True if the tight bounds have no extent: halving such a piece returns the same piece again.
  [[nodiscard]] bool isPoint() const noexcept { return !detail::holdsAnywhere(minimum != maximum); }
  [[nodiscard]] bool isSmallest() const noexcept { return length <= kSmallestLength; }
};

template <std::size_t N>
struct Halves {
  Piece<N> left;
  Piece<N> right;

  Halves(const Piece<N>& piece, const Precision& precision) noexcept {
    detail::halve(piece.points, left.points, right.points);
    left.place(piece.offset, piece.length / 2, precision);
    right.place(piece.middle(), piece.length / 2, precision);
  }
};

/// The recursive search. Pieces whose closed bounds intersect are halved, at most fourteen times;
/// the depth has no other limit. No crossing is lost, because the halves join exactly and their
/// bounds contain them; only curves that barely touch may be separated by the rounding of points.
template <std::size_t M, std::size_t N>
class IntersectionSearch {
 public:
  IntersectionSearch(const BezierAxis<M, Pair>& a, const BezierAxis<N, Pair>& b)
      : ofA_(a), ofB_(b) {
    one_.points = a;
    other_.points = b;
    one_.place(0, 1, ofA_);
    other_.place(0, 1, ofB_);
  }

  [[nodiscard]] Ends endsOfA() const noexcept { return one_.ends(); }
  [[nodiscard]] Ends endsOfB() const noexcept { return other_.ends(); }

  /// Returns false if the segments cannot meet but in their ends.
  [[nodiscard]] bool canMeet() const noexcept {
    return detail::isFinite(one_.points) && detail::isFinite(other_.points) &&
           doIntersect(gapBetween(one_, other_));
  }

  /// Returns false if the limit of pairs was reached.
  [[nodiscard]] bool run(Crossings& crossings) {
    crossings_ = &crossings;
    search(one_, other_);
    return pairs_ <= kMostPairs;
  }

 private:
  /// Returns the distance of the bounds on each axis, 0 or less if they intersect there.
  static Pair gapBetween(const Piece<M>& a, const Piece<N>& b) noexcept {
    return detail::larger(a.minimum - b.maximum, b.minimum - a.maximum);
  }
  static bool doIntersect(Pair gap) noexcept { return !detail::holdsAnywhere(!(gap <= Pair{})); }

  void search(const Piece<M>& a, const Piece<N>& b) {
    if (++pairs_ > kMostPairs) return;
    const Pair gap = gapBetween(a, b);
    if (doIntersect(gap)) {
      searchHalves(a, b);
    } else if (!detail::holdsAnywhere(gap > detail::kSamePoint)) {
      // Their bounds are apart, but within rounding they can still share an end.
      crossings_->addCommonEnds(a.ends(), b.ends());
    }
  }

  void searchHalves(const Piece<M>& a, const Piece<N>& b) {
    if (a.isSmallest() || b.isSmallest() || (a.isPoint() && b.isPoint())) {
      return crossings_->addMeeting(a.ends(), b.ends(), a.middlePoint() - b.middlePoint());
    }
    if (a.isPoint()) {
      const Halves<N> ofB(b, ofB_);
      search(a, ofB.left);
      search(a, ofB.right);
    } else if (b.isPoint()) {
      const Halves<M> ofA(a, ofA_);
      search(ofA.left, b);
      search(ofA.right, b);
    } else {
      const Halves<M> ofA(a, ofA_);
      const Halves<N> ofB(b, ofB_);
      search(ofA.left, ofB.left);
      search(ofA.left, ofB.right);
      search(ofA.right, ofB.left);
      search(ofA.right, ofB.right);
    }
  }

  Precision ofA_;
  Precision ofB_;
  Piece<M> one_;
  Piece<N> other_;
  Crossings* crossings_ = nullptr;
  std::size_t pairs_ = 0;
};

/// Calls the callback for each pair of ends that are the same point.
void tellCommonEnds(const Ends& a, const Ends& b,
                    const TQBezierSegmentIntersectionCallback& callback) {
  std::array<TQBezierSegmentOffsets, 4> offsets;
  std::size_t count = 0;
  withCommonEnds(a, b, [&](TQBezierSegmentOffsets at) { offsets[count++] = at; });
  tellAscending({offsets.data(), count}, callback);
}

}  // namespace

bool TQBezierSegmentIntersections(const TQBezierSegment& a, const TQBezierSegment& b,
                                  const TQBezierSegmentIntersectionCallback& callback) {
  if (a.used().empty() || b.used().empty()) return true;
  return detail::withBothAxes(a, true, [&](const auto& p) {
    return detail::withBothAxes(b, true, [&](const auto& q) {
      IntersectionSearch search(p, q);
      if (!search.canMeet()) {
        tellCommonEnds(search.endsOfA(), search.endsOfB(), callback);
        return true;
      }
      if (auto places = detail::placesOfOverlap(a, b)) {
        tellAscending(places->all(), callback);
        return true;
      }
      Crossings crossings(a, b, callback);
      const bool isComplete = search.run(crossings);
      crossings.tellAll();
      return isComplete;
    });
  });
}

TQBezierSegmentOffsets TQBezierSegmentRefineIntersection(const TQBezierSegment& a,
                                                         const TQBezierSegment& b,
                                                         TQBezierSegmentOffsets offsets) noexcept {
  return refined(a, b, offsets);
}

}  // namespace tq
