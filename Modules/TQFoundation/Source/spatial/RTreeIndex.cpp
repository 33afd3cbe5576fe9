#include <TQFoundation/spatial/detail/RTreeIndex.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include <TQFoundation/spatial/detail/RTreePair.h>

// The tree searches its nodes recursively. Its directories are split by position, so they overlap,
// and the recursion visits many. An index stores the bounds of the elements alone, packed by place.
// A query must return the result of the recursion, which is not always that of a scan:
//
// - Nothing intersects. The recursion compares the rects of leaf entries exactly as the index does,
//   so it finds nothing either. This holds for any input.
// - An element e intersects the query q. The recursion finds e if q also intersects every directory
//   rect D on the path to e. D is a union, computed entry by entry as (min, max - min), and its
//   maximum is read as min + extent. Minima are never rounded: D.min <= e.min <= q.max. A maximum
//   is rounded in each step: with t the greater maximum, t' = fl(min + fl(t - min)), so
//   |t' - t| <= u (|t - min| + |t'|) <= 3 u C, where u is half a unit in the last place of 1 and C
//   the largest magnitude of all bounds. The first entry of a node is taken as it is; so with at
//   most n entries in a node and h levels, D.max >= e.max - 3 u C (n - 1) (h - 1). The margin
//   below is 4 u C n h; the rest covers the rounding of q.min + margin, and C growing by less than
//   a part in 10^9. Hence e is found if e.max >= q.min + margin on both axes.
// - Bounds that are whole multiples of 2^-10 up to 2^41 have exact sums and differences: no margin.
// - Everything else is unsure: only the recursion can decide. With NaN, with infinite bounds, and
//   with bounds so large that an extent may overflow, no margin is enough.
//
// A run is packed by sort-tile-recursive (Leutenegger, Lopez, Edgington, "STR: A Simple and
// Efficient Algorithm for R-Tree Packing", 1997). Inner bounds are single precision. They need not
// be rounded outwards: subtracting the origin, clamping and rounding are monotonic functions, and
// they are applied to the query too, so bounds that intersect still do.
//
//   level 2   inner          16 children
//   level 1   inner inner …  16 buckets each
//             bucket bucket bucket …   8 elements each, in double precision: 32 bytes for each

namespace tq::detail {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr float kNone = std::numeric_limits<float>::infinity();
constexpr std::size_t kBucketSize = 8;

/// For bounds below this magnitude, sums and differences stay finite.
constexpr double kLargestTame = 1e300;

/// Returns whether sums and differences of such bounds are exact.
bool isOnGrid(double bound) noexcept {
  const double scaled = bound * 0x1p10;
  return std::fabs(bound) <= 0x1p41 && scaled == std::nearbyint(scaled);
}

bool hasNaN(const RTreeBounds& bounds) noexcept {
  return std::isnan(bounds.minX) || std::isnan(bounds.minY) || std::isnan(bounds.maxX) ||
         std::isnan(bounds.maxY);
}

bool isNull(const RTreeBounds& bounds) noexcept {
  return bounds.minX == kInf && bounds.maxX == -kInf;
}

using Quad = float __attribute__((vector_size(16)));
using QuadMask = std::int32_t __attribute__((vector_size(16)));

Quad load(const float* from) noexcept {
  Quad quad;
  std::memcpy(&quad, from, sizeof quad);
  return quad;
}

Quad all(float value) noexcept { return Quad{value, value, value, value}; }

/// Returns in bits 0 to 3 whether the comparison is true in each lane.
unsigned laneBits(QuadMask mask) noexcept {
#ifdef __SSE2__
  return static_cast<unsigned>(_mm_movemask_ps(__m128(mask)));
#else
  return static_cast<unsigned>((mask[0] & 1) | (mask[1] & 2) | (mask[2] & 4) | (mask[3] & 8));
#endif
}

float narrow(double value) noexcept {
  constexpr double most = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(value, -most, most));
}

/// Collects the bounds of all elements below `root`. Not recursive: a tree can be very high.
template <class Add>
void forEachElement(const RTreeNodeCore& root, const Add& add) {
  std::vector<const RTreeNodeCore*> pending{&root};
  while (!pending.empty()) {
    const RTreeNodeCore& node = *pending.back();
    pending.pop_back();
    pending.insert(pending.end(), node.childArray().begin(), node.childArray().end());
    if (!node.isLeaf()) continue;
    for (const Rect& rect : node.rects()) add(RTreeBounds::of(rect));
  }
}

}  // namespace

/// The bounds of a query or of a child as Inner stores them.
struct NarrowBounds {
  float minX, minY, maxX, maxY;
};

void RTreePrecision::add(const RTreeBounds& bounds) noexcept {
  if (isNull(bounds)) return;
  for (const double bound : {bounds.minX, bounds.minY, bounds.maxX, bounds.maxY}) {
    if (!(std::fabs(bound) <= kLargestTame)) isWild_ = true;  // also NaN
    isExact_ = isExact_ && isOnGrid(bound);
    largest_ = std::max(largest_, std::fabs(bound));
  }
}

double RTreePrecision::margin(std::size_t height, std::size_t entries) const noexcept {
  if (isWild_) return std::numeric_limits<double>::quiet_NaN();
  if (isExact_) return 0;
  return 2 * std::numeric_limits<double>::epsilon() * largest_ * static_cast<double>(height) *
         static_cast<double>(entries);
}

RTreeBucket::RTreeBucket() noexcept {
  std::fill(std::begin(pairs), std::end(pairs),
            RTreeBoundsPair{{kInf, kInf}, {kInf, kInf}, {-kInf, -kInf}, {-kInf, -kInf}});
}

void RTreeBucket::set(std::size_t index, const RTreeBounds& bounds) noexcept {
  RTreeBoundsPair& pair = pairs[index / 2];
  const std::size_t lane = index % 2;
  pair.minX[lane] = bounds.minX;
  pair.minY[lane] = bounds.minY;
  pair.maxX[lane] = bounds.maxX;
  pair.maxY[lane] = bounds.maxY;
}

RTreeBounds RTreeBucket::at(std::size_t index) const noexcept {
  const RTreeBoundsPair& pair = pairs[index / 2];
  const std::size_t lane = index % 2;
  return {pair.minX[lane], pair.minY[lane], pair.maxX[lane], pair.maxY[lane]};
}

RTreeFinding RTreeBucket::find(const RTreeQuery& query) const noexcept {
  const PairMask hits[4] = {meet(pairs[0], query.bounds), meet(pairs[1], query.bounds),
                            meet(pairs[2], query.bounds), meet(pairs[3], query.bounds)};
  if (laneBits((hits[0] | hits[1]) | (hits[2] | hits[3])) == 0) return RTreeFinding::none;
  PairMask sure{};
  for (std::size_t i = 0; i < 4; ++i) {
    sure |= hits[i] & (both(query.sureMinX) <= load(pairs[i].maxX)) &
            (both(query.sureMinY) <= load(pairs[i].maxY));
  }
  return laneBits(sure) != 0 ? RTreeFinding::found : RTreeFinding::unsure;
}

RTreeRun::Inner::Inner() noexcept {
  constexpr float inf = std::numeric_limits<float>::infinity();
  std::fill(std::begin(minX), std::end(minX), inf);
  std::fill(std::begin(minY), std::end(minY), inf);
  std::fill(std::begin(maxX), std::end(maxX), -inf);
  std::fill(std::begin(maxY), std::end(maxY), -inf);
}

unsigned RTreeRun::Inner::hits(const NarrowBounds& bounds) const noexcept {
  unsigned bits = 0;
  for (std::size_t i = 0; i < kWidth; i += 4) {
    bits |= laneBits((load(minX + i) <= all(bounds.maxX)) & (all(bounds.minX) <= load(maxX + i)) &
                     (load(minY + i) <= all(bounds.maxY)) & (all(bounds.minY) <= load(maxY + i)))
            << i;
  }
  return bits;
}

NarrowBounds RTreeRun::narrowed(const RTreeBounds& bounds) const noexcept {
  return {narrow(bounds.minX - originX_), narrow(bounds.minY - originY_),
          narrow(bounds.maxX - originX_), narrow(bounds.maxY - originY_)};
}

/// Sorts the bounds into slices by x, and each slice by y. A slice is a whole number of inner
/// nodes.
RTreeRun::RTreeRun(std::vector<RTreeBounds> bounds) : count_(bounds.size()) {
  const auto byX = [](const RTreeBounds& a, const RTreeBounds& b) {
    return a.minX + a.maxX < b.minX + b.maxX;
  };
  const auto byY = [](const RTreeBounds& a, const RTreeBounds& b) {
    return a.minY + a.maxY < b.minY + b.maxY;
  };
  const std::size_t bucketCount = (count_ + kBucketSize - 1) / kBucketSize;
  const auto side = static_cast<std::size_t>(std::sqrt(static_cast<double>(bucketCount)));
  const std::size_t slice = (side / kWidth + 1) * kWidth * kBucketSize;
  std::ranges::sort(bounds, byX);
  for (std::size_t from = 0; from < count_; from += slice) {
    std::ranges::sort(std::span(bounds).subspan(from, std::min(slice, count_ - from)), byY);
  }
  // The origin is one of the elements, so an outlier loses precision for itself alone.
  const RTreeBounds& middle = bounds[count_ / 2];
  if (std::fabs(middle.minX) < kLargestTame) originX_ = middle.minX;
  if (std::fabs(middle.minY) < kLargestTame) originY_ = middle.minY;

  buckets_.resize(bucketCount);
  std::vector<NarrowBounds> level(bucketCount, NarrowBounds{kNone, kNone, -kNone, -kNone});
  const auto unite = [](NarrowBounds& united, const NarrowBounds& other) {
    united = {std::min(united.minX, other.minX), std::min(united.minY, other.minY),
              std::max(united.maxX, other.maxX), std::max(united.maxY, other.maxY)};
  };
  for (std::size_t i = 0; i < count_; ++i) {
    buckets_[i / kBucketSize].set(i % kBucketSize, bounds[i]);
    unite(level[i / kBucketSize], narrowed(bounds[i]));
  }
  do {
    const std::size_t start = inner_.size();
    levelStarts_[levelCount_++] = static_cast<std::uint32_t>(start);
    const std::size_t nodeCount = (level.size() + kWidth - 1) / kWidth;
    inner_.resize(start + nodeCount);
    std::vector<NarrowBounds> above(nodeCount, NarrowBounds{kNone, kNone, -kNone, -kNone});
    for (std::size_t i = 0; i < level.size(); ++i) {
      Inner& node = inner_[start + i / kWidth];
      node.minX[i % kWidth] = level[i].minX;
      node.minY[i % kWidth] = level[i].minY;
      node.maxX[i % kWidth] = level[i].maxX;
      node.maxY[i % kWidth] = level[i].maxY;
      unite(above[i / kWidth], level[i]);
    }
    level.swap(above);
  } while (level.size() > 1);
  inner_.shrink_to_fit();
}

RTreeFinding RTreeRun::find(const RTreeQuery& query) const noexcept {
  struct Frame {
    std::uint32_t node;
    unsigned untried;
  };
  std::array<Frame, std::tuple_size_v<decltype(levelStarts_)>> frames;
  const NarrowBounds narrow = narrowed(query.bounds);
  const std::size_t top = levelCount_ - 1;
  std::size_t level = top;
  frames[top] = {0, inner_[levelStarts_[top]].hits(narrow)};
  RTreeFinding result = RTreeFinding::none;
  for (;;) {
    Frame& frame = frames[level];
    if (level == 0) {
      const RTreeBucket* buckets = &buckets_[std::size_t{frame.node} * kWidth];
      for (unsigned rest = frame.untried; rest != 0; rest &= rest - 1) {
        for (const RTreeBoundsPair& pair : buckets[std::countr_zero(rest)].pairs) {
          __builtin_prefetch(&pair);
        }
      }
      for (unsigned rest = frame.untried; rest != 0; rest &= rest - 1) {
        const RTreeFinding finding = buckets[std::countr_zero(rest)].find(query);
        if (finding == RTreeFinding::found) return finding;
        result = std::max(result, finding);
      }
      frame.untried = 0;
    }
    while (frames[level].untried == 0) {
      if (level == top) return result;
      ++level;
    }
    Frame& parent = frames[level];
    const auto child = static_cast<std::uint32_t>(
        parent.node * kWidth + static_cast<unsigned>(std::countr_zero(parent.untried)));
    parent.untried &= parent.untried - 1;
    --level;
    frames[level] = {child, inner_[levelStarts_[level] + child].hits(narrow)};
  }
}

void RTreeRun::appendTo(std::vector<RTreeBounds>& bounds) const {
  for (std::size_t i = 0; i < count_; ++i) {
    bounds.push_back(buckets_[i / kBucketSize].at(i % kBucketSize));
  }
}

RTreeIndex::RTreeIndex(const RTreeNodeCore& root) {
  std::size_t count = 0;
  forEachElement(root, [&](const RTreeBounds&) { ++count; });
  std::vector<RTreeBounds> bounds;
  bounds.reserve(count);
  forEachElement(root, [&](const RTreeBounds& element) {
    precision_.add(element);
    if (!isNull(element) && !hasNaN(element)) bounds.push_back(element);
  });
  if (!bounds.empty()) runs_.push_back(std::make_shared<const RTreeRun>(std::move(bounds)));
}

RTreeFinding RTreeIndex::find(const RTreeBounds& bounds, std::size_t height,
                              std::size_t entries) const noexcept {
  const double margin = precision_.margin(height, entries);
  const RTreeQuery query{bounds, bounds.minX + margin, bounds.minY + margin};
  RTreeFinding result = RTreeFinding::none;
  for (const auto& run : runs_) {
    result = std::max(result, run->find(query));
    if (result == RTreeFinding::found) return result;
  }
  for (const RTreeBucket& bucket : tail_) {
    result = std::max(result, bucket.find(query));
    if (result == RTreeFinding::found) return result;
  }
  return result;
}

void RTreeIndex::append(const Rect& rect) {
  const RTreeBounds bounds = RTreeBounds::of(rect);
  if (!isNull(bounds) && !hasNaN(bounds)) {
    if (tailCount_ % kBucketSize == 0) tail_.emplace_back();
    tail_.back().set(tailCount_ % kBucketSize, bounds);
    ++tailCount_;
  }
  precision_.add(bounds);
}

std::unique_ptr<RTreeIndex> RTreeIndex::packed(std::size_t limit) const {
  std::unique_ptr<RTreeIndex> result(new RTreeIndex);
  result->precision_ = precision_;
  result->runs_ = runs_;
  std::size_t count = tailCount_;
  std::size_t kept = runs_.size();
  while (kept > 0 && runs_[kept - 1]->count() < 2 * count &&
         count - tailCount_ + runs_[kept - 1]->count() <= limit) {
    count += runs_[--kept]->count();
  }
  std::vector<RTreeBounds> bounds;
  bounds.reserve(count);
  for (std::size_t i = kept; i < runs_.size(); ++i) runs_[i]->appendTo(bounds);
  for (std::size_t i = 0; i < tailCount_; ++i) {
    bounds.push_back(tail_[i / kBucketSize].at(i % kBucketSize));
  }
  result->runs_.resize(kept);
  if (count > 0) result->runs_.push_back(std::make_shared<const RTreeRun>(std::move(bounds)));
  return result;
}

}  // namespace tq::detail
